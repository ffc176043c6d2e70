#include "driver_helper.h"

HRESULT DriverHelper::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (riid == __uuidof(IUnknown) || riid == kIidPrintOemDriverUI) {
        *object = this;
        AddRef();
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG DriverHelper::AddRef() {
    return ++references_;
}

ULONG DriverHelper::Release() {
    return --references_;
}

HRESULT DriverHelper::DrvGetDriverSetting(PVOID pci, PCSTR, PVOID, DWORD, PDWORD, PDWORD) {
    calls_.push_back({.method = "DrvGetDriverSetting", .context = pci});
    return E_NOTIMPL;
}

HRESULT DriverHelper::DrvUpgradeRegistrySetting(HANDLE, PCSTR, PCSTR) {
    calls_.push_back({.method = "DrvUpgradeRegistrySetting"});
    return E_NOTIMPL;
}

HRESULT DriverHelper::DrvUpdateUISetting(PVOID pci, PVOID option_item, DWORD previous_selection, DWORD mode) {
    calls_.push_back({.method = "DrvUpdateUISetting",
                      .context = pci,
                      .option = static_cast<const OPTITEM*>(option_item),
                      .previous_selection = previous_selection,
                      .mode = mode});
    return S_OK;
}
