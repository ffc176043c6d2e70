// The helper interface that the driver publishes to its plug-in. It keeps a record of every call, so that a
// person or a test can see what the plug-in told the driver.
#pragma once

#include "intrface/print_oem.h"

#include <string>
#include <vector>

struct HelperCall {
    std::string method;
    const void* context = nullptr;    // `pci`: what the host gave as `poemuiobj`
    const OPTITEM* option = nullptr;  // DrvUpdateUISetting
    DWORD previous_selection = 0;     // DrvUpdateUISetting
    DWORD mode = 0;                   // DrvUpdateUISetting
};

// Lives as long as its owner, whatever the plug-in's reference count says.
class DriverHelper final : public IPrintOemDriverUI {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID pci, PCSTR feature, PVOID output, DWORD size,
                                                  PDWORD needed, PDWORD options_returned) override;
    HRESULT STDMETHODCALLTYPE DrvUpgradeRegistrySetting(HANDLE printer, PCSTR feature, PCSTR option) override;
    HRESULT STDMETHODCALLTYPE DrvUpdateUISetting(PVOID pci, PVOID option_item, DWORD previous_selection,
                                                 DWORD mode) override;

    const std::vector<HelperCall>& calls() const noexcept { return calls_; }
    void ForgetCalls() noexcept { calls_.clear(); }
    // 1 while only the owner holds it.
    ULONG references() const noexcept { return references_; }

  private:
    ULONG references_ = 1;
    std::vector<HelperCall> calls_;
};
