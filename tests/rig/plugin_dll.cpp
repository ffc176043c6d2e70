#include "rig/plugin_dll.h"

#include <gtest/gtest.h>

#include "rig/environment.h"

namespace rig {

std::filesystem::path PluginPath() {
    if (const wchar_t* chosen = _wgetenv(L"KVMR72_PLUGIN"); chosen != nullptr && *chosen != L'\0') {
        return chosen;
    }
    return BuildPath(KVMR72_DEFAULT_PLUGIN);
}

PluginDll::PluginDll(const std::filesystem::path& path) {
    module_ = LoadLibraryW(path.c_str());
    EXPECT_NE(module_, nullptr) << path << ", error " << GetLastError();
}

PluginDll::~PluginDll() {
    Unload();
}

FARPROC PluginDll::Export(const char* name) const {
    return GetProcAddress(module_, name);
}

HRESULT PluginDll::GetClassObject(REFCLSID clsid, REFIID iid, void** object) const {
    using Function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(Export("DllGetClassObject")));
    return function == nullptr ? E_UNEXPECTED : function(clsid, iid, object);
}

HRESULT PluginDll::CanUnloadNow() const {
    using Function = HRESULT(STDAPICALLTYPE*)();
    const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(Export("DllCanUnloadNow")));
    return function == nullptr ? E_UNEXPECTED : function();
}

ComRef<IClassFactory> PluginDll::CreateFactory() const {
    ComRef<IClassFactory> factory;
    EXPECT_EQ(GetClassObject(kClsidOemUI, IID_IClassFactory, factory.out()), S_OK);
    return factory;
}

ComRef<IPrintOemUI> PluginDll::CreateObject() const {
    ComRef<IPrintOemUI> object;
    if (const auto factory = CreateFactory()) {
        EXPECT_EQ(factory->CreateInstance(nullptr, kIidPrintOemUI, object.out()), S_OK);
    }
    return object;
}

bool PluginDll::Unload() {
    if (module_ == nullptr) {
        return true;
    }
    HMODULE module = module_;
    module_ = nullptr;
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(module, path, MAX_PATH);
    FreeLibrary(module);
    return GetModuleHandleW(path) == nullptr;
}

}  // namespace rig
