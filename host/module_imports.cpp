#include "module_imports.h"

#include <windows.h>

#include <winternl.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace {

// What the loader tells when a DLL has been mapped and its imports are bound, before its entry point runs.
struct LoaderNotification {
    ULONG flags;
    const UNICODE_STRING* full_name;
    const UNICODE_STRING* base_name;
    void* base;
    ULONG size;
};
constexpr ULONG kDllLoaded = 1;
constexpr ULONG kDllUnloaded = 2;
using Notify = VOID(CALLBACK*)(ULONG reason, const LoaderNotification* notification, void* context);
using RegisterNotification = NTSTATUS(NTAPI*)(ULONG flags, Notify notify, void* context, void** cookie);
using UnregisterNotification = NTSTATUS(NTAPI*)(void* cookie);

template <typename Function>
Function LoaderFunction(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

// Calls action(dll name, function name, slot) for each function imported by name.
template <typename Action>
void ForEachImport(HMODULE module, Action action) {
    auto* base = reinterpret_cast<std::uint8_t*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt =
        reinterpret_cast<const IMAGE_NT_HEADERS64*>(static_cast<const void*>(base + dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) {
        return;
    }
    const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
        static_cast<const void*>(base + directory.VirtualAddress));
    for (; import->Name != 0; ++import) {
        const auto* dll = reinterpret_cast<const char*>(base + import->Name);
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA64*>(
            static_cast<void*>(base + import->OriginalFirstThunk));
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA64*>(static_cast<void*>(base + import->FirstThunk));
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal)) {
                continue;
            }
            const auto* by_name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(
                static_cast<const void*>(base + name->u1.AddressOfData));
            action(dll, reinterpret_cast<const char*>(by_name->Name),
                   reinterpret_cast<void**>(&slot->u1.Function));
        }
    }
}

void WriteSlot(void** slot, void* value) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof *slot, protection, &protection);
}

std::wstring BaseName(HMODULE module) {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(module, path, MAX_PATH);
    const wchar_t* slash = std::wcsrchr(path, L'\\');
    return slash == nullptr ? path : slash + 1;
}

bool SameName(const wchar_t* wide, const std::string& narrow) {
    return _wcsicmp(wide, std::wstring(narrow.begin(), narrow.end()).c_str()) == 0;
}

}  // namespace

struct ModuleImports::State {
    struct Entry {
        std::string dll;
        std::string function;
        void* replacement;
        int bound = 0;
    };
    struct Patched {
        void** slot;
        void* real;
    };

    // GetProcAddress has no context: it answers for all of them, the latest first.
    static inline std::vector<State*> active;

    std::wstring module_name;
    HMODULE module = nullptr;
    void* cookie = nullptr;
    std::vector<Entry> entries;
    std::vector<Patched> patched;

    void Patch(HMODULE loaded) {
        module = loaded;
        ForEachImport(loaded, [this](const char* dll, const char* function, void** slot) {
            if (std::strcmp(function, "GetProcAddress") == 0 && Find(dll, function) == nullptr) {
                Replace(slot, reinterpret_cast<void*>(&State::GetProcAddressHook));
            } else if (Entry* entry = Find(dll, function); entry != nullptr && *slot != entry->replacement) {
                Replace(slot, entry->replacement);
                ++entry->bound;
            }
        });
    }

    void Replace(void** slot, void* replacement) {
        if (*slot != replacement) {
            patched.push_back({slot, *slot});
            WriteSlot(slot, replacement);
        }
    }

    void Restore() {
        // Last first: a slot that was replaced twice ends with the real function.
        for (auto slot = patched.rbegin(); slot != patched.rend(); ++slot) {
            WriteSlot(slot->slot, slot->real);
        }
        patched.clear();
    }

    Entry* Find(const char* dll, const char* function) {
        for (Entry& entry : entries) {
            if (entry.function == function && _stricmp(entry.dll.c_str(), dll) == 0) {
                return &entry;
            }
        }
        return nullptr;
    }

    static FARPROC WINAPI GetProcAddressHook(HMODULE from, LPCSTR function) {
        // Small numbers are ordinals.
        if ((reinterpret_cast<ULONG_PTR>(function) >> 16) != 0) {
            const std::wstring name = BaseName(from);
            for (auto state = active.rbegin(); state != active.rend(); ++state) {
                for (Entry& entry : (*state)->entries) {
                    if (entry.function == function && SameName(name.c_str(), entry.dll)) {
                        ++entry.bound;
                        return reinterpret_cast<FARPROC>(entry.replacement);
                    }
                }
            }
        }
        return ::GetProcAddress(from, function);
    }

    static VOID CALLBACK Loaded(ULONG reason, const LoaderNotification* notification, void* context) {
        auto* state = static_cast<State*>(context);
        const std::wstring name(notification->base_name->Buffer,
                                notification->base_name->Length / sizeof(wchar_t));
        if (_wcsicmp(name.c_str(), state->module_name.c_str()) != 0) {
            return;
        }
        if (reason == kDllLoaded) {
            state->Patch(static_cast<HMODULE>(notification->base));
        } else if (reason == kDllUnloaded && state->module == notification->base) {
            state->patched.clear();
            state->module = nullptr;
        }
    }
};

ModuleImports::ModuleImports(std::wstring module) : state_(std::make_unique<State>()) {
    state_->module_name = std::move(module);
    State::active.push_back(state_.get());
    LoaderFunction<RegisterNotification>("LdrRegisterDllNotification")(0, &State::Loaded, state_.get(),
                                                                       &state_->cookie);
    if (HMODULE loaded = GetModuleHandleW(state_->module_name.c_str()); loaded != nullptr) {
        state_->Patch(loaded);
    }
}

ModuleImports::~ModuleImports() {
    LoaderFunction<UnregisterNotification>("LdrUnregisterDllNotification")(state_->cookie);
    state_->Restore();
    std::erase(State::active, state_.get());
    // Another one may have relied on this one's GetProcAddress.
    for (State* other : State::active) {
        if (other->module != nullptr) {
            other->Patch(other->module);
        }
    }
}

void* ModuleImports::ReplaceAny(const char* dll, const char* function, void* replacement) {
    HMODULE owner = LoadLibraryA(dll);
    void* real = reinterpret_cast<void*>(::GetProcAddress(owner, function));
    state_->entries.push_back({dll, function, replacement});
    if (state_->module != nullptr) {
        state_->Patch(state_->module);
    }
    // The module stays, as what it exports was handed out.
    // cppcheck-suppress resourceLeak
    return real;
}

int ModuleImports::Bound(const char* function) const {
    int bound = 0;
    for (const State::Entry& entry : state_->entries) {
        bound += entry.function == function ? entry.bound : 0;
    }
    return bound;
}
