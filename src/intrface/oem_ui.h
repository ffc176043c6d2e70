// The plug-in object: the one COM object that the driver's user-interface host talks to.
#pragma once

#include <windows.h>

#include "intrface/print_oem.h"
#include "intrface/win/nothrow_new.h"
#include "intrface/win/sheet_context.h"

// Counts of the process. Live objects do not hold the module, so gObjectCount stays 0; the factory's locks
// do.
extern LONG gObjectCount;
extern LONG gLockCount;

// Created with one reference; goes with the last Release.
class IOemUI final : public IPrintOemUI, public NothrowNew {
  public:
    IOemUI() noexcept = default;
    IOemUI(const IOemUI&) = delete;
    IOemUI& operator=(const IOemUI&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize,
                                      PDWORD pcbNeeded) noexcept override;
    HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) noexcept override;
    HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown* pIUnknown) noexcept override;
    HRESULT STDMETHODCALLTYPE CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo,
                                                     LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo,
                                                   LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DevQueryPrintEx(POEMUIOBJ poemuiobj, PDEVQUERYPRINT_INFO pDQPInfo,
                                              PDEVMODEW pPublicDM, PVOID pOEMDM) noexcept override;
    HRESULT STDMETHODCALLTYPE DeviceCapabilities(POEMUIOBJ poemuiobj, HANDLE hPrinter, PWSTR pDeviceName,
                                                 WORD wCapability, PVOID pOutput, PDEVMODEW pPublicDM,
                                                 PVOID pOEMDM, DWORD dwOld,
                                                 DWORD* dwResult) noexcept override;
    HRESULT STDMETHODCALLTYPE UpgradePrinter(DWORD dwLevel, PBYTE pDriverUpgradeInfo) noexcept override;
    HRESULT STDMETHODCALLTYPE PrinterEvent(PWSTR pPrinterName, INT iDriverEvent, DWORD dwFlags,
                                           LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE DriverEvent(DWORD dwDriverEvent, DWORD dwLevel, LPBYTE pDriverInfo,
                                          LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE QueryColorProfile(HANDLE hPrinter, POEMUIOBJ poemuiobj, PDEVMODEW pPublicDM,
                                                PVOID pOEMDM, ULONG ulQueryMode, VOID* pvProfileData,
                                                ULONG* pcbProfileData,
                                                FLONG* pflProfileData) noexcept override;
    HRESULT STDMETHODCALLTYPE FontInstallerDlgProc(HWND hWnd, UINT usMsg, WPARAM wParam,
                                                   LPARAM lParam) noexcept override;
    HRESULT STDMETHODCALLTYPE UpdateExternalFonts(HANDLE hPrinter, HANDLE hHeap,
                                                  PWSTR pwstrCartridges) noexcept override;

  private:
    ~IOemUI();

    LONG m_cRef = 1;
    IPrintOemDriverUI* m_pDriverHelper = nullptr;
    DeviceSheetContext deviceSheet_;
    DocumentSheetContext documentSheet_;
};
