// The contract between the driver's user-interface host and its plug-in: interfaces, parameter blocks and
// constants as the platform documents them. The toolchain's headers know the sheet engine and the option
// items but not these.
#pragma once

#include <windows.h>
// These need what stands above them.
#include <unknwn.h>
#include <winspool.h>

#include <compstui.h>
#include <winddiui.h>

// Handed through, never looked into; the toolchain's headers may lack it.
using PDEVQUERYPRINT_INFO = struct _DEVQUERYPRINT_INFO*;

constexpr DWORD OEMGI_GETSIGNATURE = 1;
constexpr DWORD OEMGI_GETINTERFACEVERSION = 2;
constexpr DWORD OEMGI_GETVERSION = 3;
constexpr DWORD OEMGI_GETPUBLISHERINFO = 4;

constexpr DWORD OEMDM_SIZE = 1;
constexpr DWORD OEMDM_DEFAULT = 2;
constexpr DWORD OEMDM_CONVERT = 3;
constexpr DWORD OEMDM_MERGE = 4;

constexpr DWORD OEMCUIP_DOCPROP = 1;
constexpr DWORD OEMCUIP_PRNPROP = 2;

struct OEM_DMEXTRAHEADER {
    DWORD dwSize;
    DWORD dwSignature;
    DWORD dwVersion;
};

struct OEMDMPARAM {
    DWORD cbSize;
    PVOID pdriverobj;
    HANDLE hPrinter;
    HANDLE hModule;
    PDEVMODEW pPublicDMIn;
    PDEVMODEW pPublicDMOut;
    PVOID pOEMDMIn;
    PVOID pOEMDMOut;
    DWORD cbBufSize;
};
using POEMDMPARAM = OEMDMPARAM*;

// Opaque to a plug-in, which only hands the pointer back.
struct OEMUIOBJ {
    DWORD cbSize;
    PVOID pOemUIProcs;
};
using POEMUIOBJ = OEMUIOBJ*;

struct OEMCUIPPARAM;
using POEMCUIPPARAM = OEMCUIPPARAM*;
using OEMCUIPCALLBACK = LONG(APIENTRY*)(PCPSUICBPARAM, POEMCUIPPARAM);

struct OEMCUIPPARAM {
    DWORD cbSize;
    POEMUIOBJ poemuiobj;
    HANDLE hPrinter;
    PWSTR pPrinterName;
    HANDLE hModule;
    HANDLE hOEMHeap;
    PDEVMODEW pPublicDM;
    PVOID pOEMDM;
    DWORD dwFlags;
    POPTITEM pDrvOptItems;
    DWORD cDrvOptItems;
    POPTITEM pOEMOptItems;
    DWORD cOEMOptItems;
    PVOID pOEMUserData;
    OEMCUIPCALLBACK OEMCUIPCallback;
};

struct OEMUIPSPARAM {
    DWORD cbSize;
    POEMUIOBJ poemuiobj;
    HANDLE hPrinter;
    PWSTR pPrinterName;
    HANDLE hModule;
    HANDLE hOEMHeap;
    PDEVMODEW pPublicDM;
    PVOID pOEMDM;
    PVOID pOEMUserData;
    DWORD dwFlags;
    PVOID pOemEntry;
};
using POEMUIPSPARAM = OEMUIPSPARAM*;

// The interface tables hold these slots in this order and nothing else: no virtual destructor belongs here.
struct IPrintOemUI : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize,
                                              PDWORD pcbNeeded) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown* pIUnknown) = 0;
    virtual HRESULT STDMETHODCALLTYPE CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DevQueryPrintEx(POEMUIOBJ poemuiobj, PDEVQUERYPRINT_INFO pDQPInfo,
                                                      PDEVMODEW pPublicDM, PVOID pOEMDM) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeviceCapabilities(POEMUIOBJ poemuiobj, HANDLE hPrinter,
                                                         PWSTR pDeviceName, WORD wCapability, PVOID pOutput,
                                                         PDEVMODEW pPublicDM, PVOID pOEMDM, DWORD dwOld,
                                                         DWORD* dwResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpgradePrinter(DWORD dwLevel, PBYTE pDriverUpgradeInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE PrinterEvent(PWSTR pPrinterName, INT iDriverEvent, DWORD dwFlags,
                                                   LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE DriverEvent(DWORD dwDriverEvent, DWORD dwLevel, LPBYTE pDriverInfo,
                                                  LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryColorProfile(HANDLE hPrinter, POEMUIOBJ poemuiobj,
                                                        PDEVMODEW pPublicDM, PVOID pOEMDM, ULONG ulQueryMode,
                                                        VOID* pvProfileData, ULONG* pcbProfileData,
                                                        FLONG* pflProfileData) = 0;
    virtual HRESULT STDMETHODCALLTYPE FontInstallerDlgProc(HWND hWnd, UINT usMsg, WPARAM wParam,
                                                           LPARAM lParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdateExternalFonts(HANDLE hPrinter, HANDLE hHeap,
                                                          PWSTR pwstrCartridges) = 0;
};

struct IPrintOemDriverUI : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID pci, PCSTR Feature, PVOID pOutput,
                                                          DWORD cbSize, PDWORD pcbNeeded,
                                                          PDWORD pdwOptionsReturned) = 0;
    virtual HRESULT STDMETHODCALLTYPE DrvUpgradeRegistrySetting(HANDLE hPrinter, PCSTR pFeature,
                                                                PCSTR pOption) = 0;
    virtual HRESULT STDMETHODCALLTYPE DrvUpdateUISetting(PVOID pci, PVOID pOptItem, DWORD dwPreviousSelection,
                                                         DWORD dwMode) = 0;
};

// Interface and class identifiers, compared as 16 raw bytes.
constexpr GUID kIidPrintOemUI = {
    0xC6A7A9D0, 0x774C, 0x11D1, {0x94, 0x7F, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};
constexpr GUID kIidPrintOemDriverUI = {
    0x92B05D50, 0x78BC, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};
constexpr GUID kClsidOemUI = {0xABCE80D7, 0x9F46, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};

static_assert(sizeof(OEMDMPARAM) == 72 && sizeof(OEMCUIPPARAM) == 120 && sizeof(OEMUIPSPARAM) == 88,
              "natural 64-bit alignment, no packing");
