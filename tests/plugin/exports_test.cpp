// What the host meets first: the DLL's entry routine, its two exports and the class factory.
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "rig/import_hooks.h"
#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"

namespace {

using rig::Lines;

const Lines kFactoryLine = {L"UI:  DllGetClassObject:Create class factory.\r\n"};
constexpr GUID kIidUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr GUID kIidClassFactory = {1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr GUID kClsid = {0xABCE80D7, 0x9F46, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
void* const kSentinel = reinterpret_cast<void*>(0x5E47);

// Counts what the DLL takes from the heap, and refuses it on demand.
class HeapHooks {
  public:
    HeapHooks() {
        hooks_.On("msvcrt.dll", "malloc", static_cast<void*(WINAPI*)(std::size_t)>(&std::malloc),
                  [this](auto original, std::size_t size) {
                      ++allocations;
                      // A runtime that needs memory to report that there is none would ask for ever.
                      void* block = refuse && ++refused < 100 ? nullptr : original(size);
                      live += block != nullptr;
                      return block;
                  });
        hooks_.On("msvcrt.dll", "free", static_cast<void(WINAPI*)(void*)>(&std::free),
                  [this](auto original, void* block) {
                      live -= block != nullptr;
                      original(block);
                  });
    }

    bool Bound() const { return hooks_.Bound("malloc") > 0 && hooks_.Bound("free") > 0; }
    void Restart() { allocations = live = 0; }

    bool refuse = false;
    int refused = 0;
    int allocations = 0;
    int live = 0;

  private:
    rig::ImportHooks hooks_;
};

TEST(Exports, AreTheTwoOfAComServer) {
    rig::PluginDll dll;
    auto* base = reinterpret_cast<const std::uint8_t*>(dll.module());
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = static_cast<const IMAGE_NT_HEADERS64*>(static_cast<const void*>(base + dos->e_lfanew));
    const auto* exports = static_cast<const IMAGE_EXPORT_DIRECTORY*>(static_cast<const void*>(
        base + nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress));
    const auto* names = static_cast<const DWORD*>(static_cast<const void*>(base + exports->AddressOfNames));
    std::set<std::string> found;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        found.insert(reinterpret_cast<const char*>(base + names[i]));
    }
    EXPECT_EQ(found, (std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject"}));
    EXPECT_EQ(exports->NumberOfFunctions, 2u);
}

TEST(Entry, TracesProcessAttachAndDetach) {
    rig::TraceCapture trace;
    rig::PluginDll dll;
    EXPECT_EQ(trace.TakeOwn(), Lines{L"UI:  Process attach.\r\n"});
    EXPECT_TRUE(dll.Unload());
    EXPECT_EQ(trace.TakeOwn(), Lines{L"UI:  Process detach.\r\n"});
}

TEST(Entry, LoadsAgainAfterUnloading) {
    for (int round = 0; round < 3; ++round) {
        rig::TraceCapture trace;
        rig::PluginDll dll;
        EXPECT_TRUE(dll.CreateObject());
        EXPECT_EQ(dll.CanUnloadNow(), S_OK);
        const Lines lines = trace.TakeOwn();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.front(), L"UI:  Process attach.\r\n");
        EXPECT_TRUE(dll.Unload()) << "something holds the DLL";
    }
}

TEST(Entry, SecondReferenceIsNoSecondAttach) {
    rig::PluginDll first;
    rig::TraceCapture trace;
    rig::PluginDll second;
    EXPECT_EQ(first.module(), second.module());
    EXPECT_FALSE(second.Unload());
    EXPECT_EQ(trace.TakeOwn(), Lines{});
}

TEST(Entry, TracesThreadAttachAndDetach) {
    rig::PluginDll dll;
    rig::TraceCapture trace;
    DWORD thread = 0;
    HANDLE handle = CreateThread(
        nullptr, 0, [](LPVOID) -> DWORD { return 0; }, nullptr, 0, &thread);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(WaitForSingleObject(handle, 10000), WAIT_OBJECT_0);
    CloseHandle(handle);
    EXPECT_EQ(trace.TakeOf(thread), (Lines{L"UI:  Thread attach.\r\n", L"UI:  Thread detach.\r\n"}));
}

TEST(ClassObject, OtherClassLeavesTheOutputAlone) {
    rig::PluginDll dll;
    rig::TraceCapture trace;
    void* object = kSentinel;
    GUID close = kClsid;
    close.Data4[7] ^= 1;
    for (const GUID& clsid : {close, kIidUnknown, kIidClassFactory, GUID{}}) {
        EXPECT_EQ(dll.GetClassObject(clsid, kIidClassFactory, &object), static_cast<HRESULT>(0x80040111));
        EXPECT_EQ(object, kSentinel);
        EXPECT_EQ(trace.TakeOwn(), kFactoryLine);
    }
}

TEST(ClassObject, HandsOutAFactoryWithOneReference) {
    rig::PluginDll dll;
    for (const GUID& iid : {kIidUnknown, kIidClassFactory}) {
        rig::TraceCapture trace;
        void* object = nullptr;
        ASSERT_EQ(dll.GetClassObject(kClsid, iid, &object), S_OK);
        EXPECT_EQ(trace.TakeOwn(), kFactoryLine);
        auto* factory = static_cast<IClassFactory*>(object);
        EXPECT_EQ(factory->AddRef(), 2u);
        EXPECT_EQ(factory->AddRef(), 3u);
        EXPECT_EQ(factory->Release(), 2u);
        EXPECT_EQ(factory->Release(), 1u);
        EXPECT_EQ(factory->Release(), 0u);
        EXPECT_EQ(trace.TakeOwn(), Lines{});
    }
}

TEST(ClassObject, UnknownInterfaceLeavesNoFactory) {
    HeapHooks heap;
    rig::PluginDll dll;
    ASSERT_TRUE(heap.Bound());
    heap.Restart();
    void* object = kSentinel;
    EXPECT_EQ(dll.GetClassObject(kClsid, kIidPrintOemUI, &object), static_cast<HRESULT>(0x80004002));
    EXPECT_EQ(object, nullptr);
    EXPECT_GE(heap.allocations, 1);
    EXPECT_EQ(heap.live, 0);
}

TEST(ClassObject, OutOfMemory) {
    HeapHooks heap;
    rig::PluginDll dll;
    ASSERT_TRUE(heap.Bound());
    heap.refuse = true;
    void* object = nullptr;
    EXPECT_EQ(dll.GetClassObject(kClsid, kIidClassFactory, &object), static_cast<HRESULT>(0x8007000E));
    heap.refuse = false;
    EXPECT_EQ(heap.refused, 1);
    EXPECT_EQ(object, nullptr);
}

TEST(ClassObject, NullOutputFails) {
    rig::PluginDll dll;
    EXPECT_TRUE(FAILED(dll.GetClassObject(kClsid, kIidClassFactory, nullptr)));
    EXPECT_TRUE(FAILED(dll.GetClassObject(kIidUnknown, kIidClassFactory, nullptr)));
}

TEST(Factory, QueryInterface) {
    rig::PluginDll dll;
    const auto factory = dll.CreateFactory();
    rig::TraceCapture trace;
    for (const GUID& iid : {kIidUnknown, kIidClassFactory}) {
        void* object = nullptr;
        EXPECT_EQ(factory->QueryInterface(iid, &object), S_OK);
        EXPECT_EQ(object, factory.get());
        EXPECT_EQ(factory->Release(), 1u);
    }
    void* object = kSentinel;
    EXPECT_EQ(factory->QueryInterface(kIidPrintOemUI, &object), static_cast<HRESULT>(0x80004002));
    EXPECT_EQ(object, nullptr);
    EXPECT_TRUE(FAILED(factory->QueryInterface(kIidUnknown, nullptr)));
    EXPECT_EQ(factory->AddRef(), 2u);
    EXPECT_EQ(factory->Release(), 1u);
    EXPECT_EQ(trace.TakeOwn(), Lines{});
}

TEST(Factory, IsItsTableAndItsCount) {
    rig::PluginDll dll;
    const auto factory = dll.CreateFactory();
    const struct Layout {
        void** table;
        std::int32_t references;
    }& layout = *reinterpret_cast<const Layout*>(factory.get());
    EXPECT_EQ(layout.references, 1);

    // CreateInstance and LockServer are slots 4 and 5 of the table.
    using CreateInstance = HRESULT(STDMETHODCALLTYPE*)(void*, IUnknown*, REFIID, void**);
    using LockServer = HRESULT(STDMETHODCALLTYPE*)(void*, BOOL);
    rig::ComRef<IUnknown> object;
    EXPECT_EQ(
        reinterpret_cast<CreateInstance>(layout.table[3])(factory.get(), nullptr, kIidUnknown, object.out()),
        S_OK);
    EXPECT_TRUE(object);
    EXPECT_EQ(reinterpret_cast<LockServer>(layout.table[4])(factory.get(), TRUE), S_OK);
    EXPECT_EQ(dll.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(reinterpret_cast<LockServer>(layout.table[4])(factory.get(), FALSE), S_OK);
}

TEST(Factory, CreatesObjectsWithOneReference) {
    rig::PluginDll dll;
    const auto factory = dll.CreateFactory();
    rig::TraceCapture trace;
    rig::ComRef<IPrintOemUI> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, kIidPrintOemUI, object.out()), S_OK);
    EXPECT_EQ(trace.TakeOwn(), (Lines{L"UI:  IOemUI:QueryInterface entry.\r\n\r\n",
                                      L"UI:  IOemUI:Return pointer to IPrintOemUI.\r\n",
                                      L"UI:  IOemUI:AddRef entry.\r\n", L"UI:  IOemUI:Release entry.\r\n"}));
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    rig::ComRef<IPrintOemUI> other;
    ASSERT_EQ(factory->CreateInstance(nullptr, kIidUnknown, other.out()), S_OK);
    EXPECT_NE(other.get(), object.get());
}

TEST(Factory, RefusesAggregationWithoutAllocating) {
    HeapHooks heap;
    rig::PluginDll dll;
    ASSERT_TRUE(heap.Bound());
    const auto factory = dll.CreateFactory();
    rig::TraceCapture trace;
    heap.Restart();
    void* object = kSentinel;
    EXPECT_EQ(factory->CreateInstance(factory.get(), kIidPrintOemUI, &object),
              static_cast<HRESULT>(0x80040110));
    EXPECT_EQ(heap.allocations, 0);
    EXPECT_EQ(trace.TakeOwn(), Lines{});
    EXPECT_EQ(factory->AddRef(), 2u);
    EXPECT_EQ(factory->Release(), 1u);
}

TEST(Factory, UnknownInterfaceDestroysTheNewObject) {
    HeapHooks heap;
    rig::PluginDll dll;
    ASSERT_TRUE(heap.Bound());
    const auto factory = dll.CreateFactory();
    rig::TraceCapture trace;
    heap.Restart();
    void* object = kSentinel;
    EXPECT_EQ(factory->CreateInstance(nullptr, kIidClassFactory, &object), static_cast<HRESULT>(0x80004002));
    EXPECT_EQ(object, nullptr);
    EXPECT_GE(heap.allocations, 1);
    EXPECT_EQ(heap.live, 0);
    EXPECT_EQ(trace.TakeOwn(),
              (Lines{L"UI:  IOemUI:QueryInterface entry.\r\n\r\n",
                     L"UI:  IOemUI:No Interface. Return NULL.\r\n", L"UI:  IOemUI:Release entry.\r\n"}));
}

TEST(Factory, OutOfMemory) {
    HeapHooks heap;
    rig::PluginDll dll;
    ASSERT_TRUE(heap.Bound());
    const auto factory = dll.CreateFactory();
    rig::TraceCapture trace;
    heap.refuse = true;
    void* object = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, kIidPrintOemUI, &object), static_cast<HRESULT>(0x8007000E));
    heap.refuse = false;
    EXPECT_EQ(heap.refused, 1);
    EXPECT_EQ(trace.TakeOwn(), Lines{});
}

TEST(Factory, NullOutputFails) {
    rig::PluginDll dll;
    const auto factory = dll.CreateFactory();
    EXPECT_TRUE(FAILED(factory->CreateInstance(nullptr, kIidPrintOemUI, nullptr)));
}

TEST(Factory, LocksKeepTheDll) {
    rig::PluginDll dll;
    const auto factory = dll.CreateFactory();
    rig::TraceCapture trace;
    EXPECT_EQ(dll.CanUnloadNow(), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(dll.CanUnloadNow(), S_FALSE);
    // Any value but zero locks.
    EXPECT_EQ(factory->LockServer(-7), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(dll.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(dll.CanUnloadNow(), S_OK);
    // One unlock too many is a count like another.
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(dll.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(dll.CanUnloadNow(), S_OK);
    EXPECT_EQ(trace.TakeOwn(), Lines{});
}

TEST(Factory, LivingObjectsDoNotKeepTheDll) {
    rig::PluginDll dll;
    const auto object = dll.CreateObject();
    ASSERT_TRUE(object);
    EXPECT_EQ(dll.CanUnloadNow(), S_OK);
}

TEST(Factory, CountsFromManyThreads) {
    rig::PluginDll dll;
    const auto factory = dll.CreateFactory();
    const auto object = dll.CreateObject();
    std::vector<std::thread> threads;
    std::atomic<int> missing = 4;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            --missing;
            while (missing != 0) {
            }
            for (int round = 0; round < 1000000; ++round) {
                factory->AddRef();
                factory->LockServer(TRUE);
                factory->Release();
                factory->LockServer(FALSE);
            }
            for (int round = 0; round < 200; ++round) {
                object->AddRef();
                object->Release();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(dll.CanUnloadNow(), S_OK);
    EXPECT_EQ(factory->AddRef(), 2u);
    EXPECT_EQ(factory->Release(), 1u);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
}

// What all heaps of the process hold.
std::size_t BusyHeapBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count && i < 64; ++i) {
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps[i], &entry)) {
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
        }
    }
    return bytes;
}

// Hosts that print all day load and unload the DLL with every job.
TEST(Loading, AgainAndAgainKeepsNoMemory) {
    constexpr int kCycles = 100;
    const auto cycle = [] { rig::PluginDll plugin; };
    for (int i = 0; i < 20; ++i) {
        cycle();
    }
    const std::size_t before = BusyHeapBytes();
    for (int i = 0; i < kCycles; ++i) {
        cycle();
    }
    EXPECT_LT(BusyHeapBytes(), before + kCycles * 1024);
}

}  // namespace
