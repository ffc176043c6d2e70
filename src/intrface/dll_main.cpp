// The DLL's entry routine and its two exports.
#include <windows.h>

#include <new>

#include "base/platform.h"
#include "intrface/class_factory.h"
#include "intrface/oem_ui.h"
#include "intrface/win/activation_context.h"
#include "language/language_setup.h"

#if defined(__GLIBCXX__)
namespace __gnu_cxx {
// The runtime's own: gives back its reserve of memory for exceptions.
void __freeres();
}  // namespace __gnu_cxx
#endif

namespace {

// Hosts load and unload the DLL all day: what the linked-in runtime keeps for good would add up.
void ReleaseRuntime() noexcept {
#if defined(__GLIBCXX__)
    __gnu_cxx::__freeres();
#endif
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD reason, LPVOID reserved) {
    switch (reason) {
        case DLL_PROCESS_DETACH:
            TRACE_VERBOSE(L"UI:  Process detach.\r\n");
            ReleaseCommonControlsContext();
            // When the process ends, its memory goes as a whole.
            if (reserved == nullptr) {
                ReleaseRuntime();
            }
            break;
        case DLL_PROCESS_ATTACH:
            TRACE_VERBOSE(L"UI:  Process attach.\r\n");
            SetUpLanguage(hInstance);
            break;
        case DLL_THREAD_ATTACH:
            TRACE_VERBOSE(L"UI:  Thread attach.\r\n");
            break;
        case DLL_THREAD_DETACH:
            TRACE_VERBOSE(L"UI:  Thread detach.\r\n");
            break;
        default:
            break;
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) {
    TRACE_VERBOSE(L"UI:  DllGetClassObject:Create class factory.\r\n");
    if (!IsEqualCLSID(rclsid, kClsidOemUI)) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    auto* const factory = new (std::nothrow) OemUIClassFactory;
    if (factory == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = factory->QueryInterface(riid, ppv);
    factory->Release();
    return result;
}

STDAPI DllCanUnloadNow() {
    return gObjectCount != 0 || gLockCount != 0 ? S_FALSE : S_OK;
}
