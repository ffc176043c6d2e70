#include "intrface/class_factory.h"

#include <new>

#include "intrface/oem_ui.h"

HRESULT OemUIClassFactory::QueryInterface(REFIID riid, void** ppv) noexcept {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IClassFactory)) {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    *ppv = this;
    AddRef();
    return S_OK;
}

ULONG OemUIClassFactory::AddRef() noexcept {
    return static_cast<ULONG>(InterlockedIncrement(&m_cRef));
}

ULONG OemUIClassFactory::Release() noexcept {
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count != 0) {
        return static_cast<ULONG>(count);
    }
    delete this;
    return 0;
}

HRESULT OemUIClassFactory::CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) noexcept {
    if (pUnkOuter != nullptr) {
        return CLASS_E_NOAGGREGATION;
    }
    IOemUI* const object = new (std::nothrow) IOemUI;
    if (object == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = object->QueryInterface(riid, ppv);
    object->Release();
    return result;
}

HRESULT OemUIClassFactory::LockServer(BOOL fLock) noexcept {
    if (fLock) {
        InterlockedIncrement(&gLockCount);
    } else {
        InterlockedDecrement(&gLockCount);
    }
    return S_OK;
}
