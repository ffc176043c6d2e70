// Makes plug-in objects for the host.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include "intrface/win/nothrow_new.h"

// Created with one reference; goes with the last Release.
class OemUIClassFactory final : public IClassFactory, public NothrowNew {
  public:
    OemUIClassFactory() noexcept = default;
    OemUIClassFactory(const OemUIClassFactory&) = delete;
    OemUIClassFactory& operator=(const OemUIClassFactory&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppv) noexcept override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) noexcept override;

  private:
    ~OemUIClassFactory() = default;

    LONG m_cRef = 1;
};
