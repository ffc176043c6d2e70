// The instruments of the other tests: a hook that does not bind or a guard that does not guard proves
// nothing.
#include <gtest/gtest.h>

#include "rig/environment.h"
#include "rig/guarded_record.h"
#include "rig/import_hooks.h"
#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"

namespace {

using rig::Lines;

TEST(ImportHooks, SeeProcessAttachAndGiveBackTheRealFunction) {
    rig::PluginDll* loaded = nullptr;
    int calls = 0;
    {
        rig::ImportHooks hooks;
        hooks.On("KERNEL32.dll", "OutputDebugStringW", &OutputDebugStringW, [&](auto original, LPCWSTR text) {
            ++calls;
            original(text);
        });
        loaded = new rig::PluginDll;
        EXPECT_EQ(hooks.Bound("OutputDebugStringW"), 1);
        EXPECT_EQ(calls, 1) << "process attach";
        loaded->CreateFactory();
        EXPECT_EQ(calls, 2);
        OutputDebugStringW(L"the test's own calls stay real");
        EXPECT_EQ(calls, 2);
    }
    rig::TraceCapture trace;
    loaded->CreateFactory();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(trace.TakeOwn().size(), 1u);
    delete loaded;
}

TEST(ImportHooks, BindToADllThatIsLoaded) {
    rig::PluginDll dll;
    rig::TraceCapture trace;
    rig::ImportHooks hooks;
    hooks.On("kernel32.DLL", "OutputDebugStringW", &OutputDebugStringW,
             [](auto original, LPCWSTR) { original(L"replaced"); });
    EXPECT_EQ(hooks.Bound("OutputDebugStringW"), 1);
    dll.CreateFactory();
    EXPECT_EQ(trace.TakeOwn(), Lines{L"replaced"});
}

// Whether touching the byte is a fault.
bool Faults(const std::uint8_t* byte) {
    MEMORY_BASIC_INFORMATION information{};
    VirtualQuery(byte, &information, sizeof information);
    return information.State != MEM_COMMIT || information.Protect == PAGE_NOACCESS;
}

TEST(GuardedRecord, EndsAtAFaultAndNoticesWritesBefore) {
    for (const std::size_t size : {4u, 12u, 1976u, 4095u, 4096u, 4097u}) {
        rig::GuardedRecord record(size, 0x11);
        EXPECT_FALSE(Faults(record.data()));
        EXPECT_FALSE(Faults(record.data() + size - 1));
        EXPECT_TRUE(Faults(record.data() + size));
        EXPECT_TRUE(record.Intact());
        record.data()[-1] = 0;
        EXPECT_FALSE(record.Intact());
    }
}

TEST(Environment, KeepsWhatIsWritten) {
    rig::RemoveLanguageKey();
    EXPECT_FALSE(rig::LanguageKeyExists());
    EXPECT_EQ(rig::LanguageValue(L"LANGUAGE_KVMR72"), std::nullopt);
    rig::SetLanguageValue(L"LANGUAGE_KVMR72", L"CHN_KVMR72.res");
    EXPECT_EQ(rig::LanguageValue(L"LANGUAGE_KVMR72"), L"CHN_KVMR72.res");
    EXPECT_EQ(rig::LanguageValueBytes(L"LANGUAGE_KVMR72")->size(), 30u);
    const std::uint8_t odd[] = {'T', 0, 'R', 0, 0};
    rig::SetLanguageValueBytes(L"IsFirstRun_KVMR72", REG_SZ, odd);
    EXPECT_EQ(rig::LanguageValueBytes(L"IsFirstRun_KVMR72")->size(), 5u);
    EXPECT_EQ(rig::LanguageValue(L"IsFirstRun_KVMR72"), L"TR");
    rig::RemoveLanguageKey();
    EXPECT_FALSE(rig::LanguageKeyExists());
}

TEST(Environment, ResetsToAFreshInstallation) {
    { rig::PluginDll dll; }
    EXPECT_TRUE(std::filesystem::exists(rig::UserFolder()));
    SetFileAttributesW((rig::UserFolder() / "LANGUAGE_KVMR72.DAT").c_str(), FILE_ATTRIBUTE_READONLY);
    rig::ResetToInstalled();
    EXPECT_FALSE(std::filesystem::exists(rig::UserFolder()));
    EXPECT_FALSE(rig::LanguageKeyExists());
    EXPECT_EQ(rig::ReadBytes(rig::DriverFolder() / "ENG_KVMR72.res"),
              rig::ReadBytes(rig::LanguageSource() / "ENG_KVMR72.res"));
    EXPECT_NE(rig::ReadBytes(rig::LanguageSource() / "ENG_KVMR72.res"), std::nullopt);
}

}  // namespace
