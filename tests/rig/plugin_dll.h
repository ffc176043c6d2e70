// The built plug-in, loaded as the host loads it.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <filesystem>
#include <string>

#include "intrface/print_oem.h"

namespace rig {

// A counted reference; released when it goes.
template <typename Interface>
class ComRef {
  public:
    ComRef() = default;
    explicit ComRef(Interface* owned) : pointer_(owned) {}
    ComRef(ComRef&& other) noexcept : pointer_(other.Detach()) {}
    ComRef& operator=(ComRef&& other) noexcept {
        Reset(other.Detach());
        return *this;
    }
    ~ComRef() { Reset(); }

    Interface* get() const { return pointer_; }
    Interface* operator->() const { return pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }
    // For calls that hand out a reference.
    void** out() {
        Reset();
        return reinterpret_cast<void**>(&pointer_);
    }
    Interface* Detach() {
        Interface* detached = pointer_;
        pointer_ = nullptr;
        return detached;
    }
    void Reset(Interface* owned = nullptr) {
        if (pointer_ != nullptr) {
            pointer_->Release();
        }
        pointer_ = owned;
    }

  private:
    Interface* pointer_ = nullptr;
};

// KVMR72_PLUGIN, or the DLL of this build.
std::filesystem::path PluginPath();

class PluginDll {
  public:
    // Loads the DLL; process attach runs here unless it was loaded before. A test fails when that fails.
    explicit PluginDll(const std::filesystem::path& path = PluginPath());
    PluginDll(const PluginDll&) = delete;
    PluginDll& operator=(const PluginDll&) = delete;
    ~PluginDll();

    HMODULE module() const { return module_; }
    FARPROC Export(const char* name) const;
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) const;
    HRESULT CanUnloadNow() const;

    ComRef<IClassFactory> CreateFactory() const;
    // A plug-in object with one reference.
    ComRef<IPrintOemUI> CreateObject() const;

    // Gives up this reference; true when the DLL has left the process.
    bool Unload();

  private:
    HMODULE module_ = nullptr;
};

}  // namespace rig
