#include "intrface/oem_ui.h"

#include <algorithm>
#include <cassert>
#include <cwchar>

#include "base/platform.h"
#include "devpages/device_sheet.h"
#include "docpages/document_sheet.h"
#include "intrface/devmode_call.h"
#include "intrface/win/trace_value.h"

LONG gObjectCount = 0;
LONG gLockCount = 0;

namespace {

constexpr DWORD kPluginVersion = 1;

constexpr wchar_t kColorProfile[] = L"OEMPROFILE.icm";
// Taken and told in the caller's unit, which counts room and never less than the name needs.
constexpr ULONG kColorProfileSize = 32;
static_assert(sizeof kColorProfile <= kColorProfileSize);
constexpr FLONG kProfileIsFileName = 2;

HRESULT Fail(DWORD lastError) noexcept {
    SetLastError(lastError);
    return E_FAIL;
}

// The plug-in adds no option items to the host's pages: its settings live on its own.
HRESULT hrOEMPropertyPage(DWORD dwMode, POEMCUIPPARAM pOEMUIParam) noexcept {
    TRACE_VERBOSE(L"UI:  hrOEMPropertyPage(%d) entry.\r\n", dwMode);
    if (dwMode == OEMCUIP_DOCPROP) {
        TRACE_VERBOSE(L"UI:  Invoke hrDocumentPropertyPage\r\n");
        return S_OK;
    }
    if (dwMode != OEMCUIP_PRNPROP || pOEMUIParam == nullptr) {
        TRACE_ERROR(L"ERROR UI:  hrOEMPropertyPage() ERROR_INVALID_PARAMETER.\r\n");
        TRACE_VERBOSE(L"UI:  \tdwMode = %d, pOEMUIParam = %#lx.\r\n", dwMode, TraceValue(pOEMUIParam));
        return Fail(ERROR_INVALID_PARAMETER);
    }
    TRACE_VERBOSE(L"UI:  Invoke hrPrinterPropertyPage\r\n");
    if (pOEMUIParam->pOEMOptItems == nullptr) {
        pOEMUIParam->cOEMOptItems = 0;
        TRACE_VERBOSE(L"UI:  Fill in the number of OptItems to create for OEM printer property UI\r\n");
        TRACE_VERBOSE(L"UI:  hrPrinterPropertyPage() requesting %d number of items.\r\n",
                      pOEMUIParam->cOEMOptItems);
    } else {
        TRACE_VERBOSE(L"UI:  hrPrinterPropertyPage() fill out %d items.\r\n", pOEMUIParam->cOEMOptItems);
    }
    return S_OK;
}

}  // namespace

IOemUI::~IOemUI() {
    if (m_pDriverHelper != nullptr) {
        m_pDriverHelper->Release();
        m_pDriverHelper = nullptr;
    }
    assert(0 == m_cRef);
}

HRESULT IOemUI::QueryInterface(REFIID riid, void** ppv) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:QueryInterface entry.\r\n\r\n");
    if (ppv == nullptr) {
        return E_POINTER;
    }
    if (IsEqualIID(riid, IID_IUnknown)) {
        *ppv = this;
        TRACE_VERBOSE(L"UI:  IOemUI:Return pointer to IUnknown.\r\n\r\n");
    } else if (IsEqualIID(riid, kIidPrintOemUI)) {
        *ppv = this;
        TRACE_VERBOSE(L"UI:  IOemUI:Return pointer to IPrintOemUI.\r\n");
    } else {
        *ppv = nullptr;
        TRACE_WARNING(L"UI:  IOemUI:No Interface. Return NULL.\r\n");
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG IOemUI::AddRef() noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:AddRef entry.\r\n");
    return static_cast<ULONG>(InterlockedIncrement(&m_cRef));
}

ULONG IOemUI::Release() noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:Release entry.\r\n");
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count != 0) {
        return static_cast<ULONG>(count);
    }
    delete this;
    return 0;
}

HRESULT IOemUI::GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI::GetInfo(%d) entry.\r\r\n", dwMode);
    if (pcbNeeded == nullptr ||
        (dwMode != OEMGI_GETSIGNATURE && dwMode != OEMGI_GETVERSION && dwMode != OEMGI_GETPUBLISHERINFO)) {
        TRACE_WARNING(L"UI:  IOemUI::GetInfo() exit pcbNeeded is NULL! ERROR_INVALID_PARAMETER\r\r\n");
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *pcbNeeded = sizeof(DWORD);
    if (cbSize < sizeof(DWORD) || pBuffer == nullptr) {
        TRACE_WARNING(L"UI:  IOemUI::GetInfo() exit insufficient buffer!\r\r\n");
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (dwMode == OEMGI_GETPUBLISHERINFO) {
        TRACE_WARNING(L"UI:  IOemUI::GetInfo() exit mode not supported.\r\r\n");
        *pcbNeeded = 0;
        return Fail(ERROR_NOT_SUPPORTED);
    }
    DWORD& answer = *static_cast<DWORD*>(pBuffer);
    answer = dwMode == OEMGI_GETSIGNATURE ? kOemSignature : kPluginVersion;
    TRACE_VERBOSE(L"UI:  IOemUI::GetInfo() exit S_OK, (*pBuffer is %#x).\r\r\n", answer);
    return S_OK;
}

HRESULT IOemUI::DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:DevMode(%d, %#x) entry.\r\n", dwMode, TraceValue(pOemDMParam));
    return hrDevModeRecord(dwMode, pOemDMParam);
}

HRESULT IOemUI::PublishDriverInterface(IUnknown* pIUnknown) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:PublishDriverInterface entry.\r\n");
    if (m_pDriverHelper != nullptr) {
        return S_OK;
    }
    void* helper = nullptr;
    if (pIUnknown == nullptr || FAILED(pIUnknown->QueryInterface(kIidPrintOemDriverUI, &helper))) {
        return E_FAIL;
    }
    m_pDriverHelper = static_cast<IPrintOemDriverUI*>(helper);
    return S_OK;
}

HRESULT IOemUI::CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:CommonUIProp entry.\r\n");
    deviceSheet_.pOEMCUIPParam = pOemCUIPParam;
    documentSheet_.pOEMCUIPParam = pOemCUIPParam;
    return hrOEMPropertyPage(dwMode, pOemCUIPParam);
}

HRESULT IOemUI::DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:DocumentPropertySheets entry.\r\n");
    documentSheet_.pDriverHelper = m_pDriverHelper;
    return hrOEMDocumentPropertySheets(pPSUIInfo, lParam, &documentSheet_);
}

HRESULT IOemUI::DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:DevicePropertySheets entry.\r\n");
    deviceSheet_.pDriverHelper = m_pDriverHelper;
    return hrOEMDevicePropertySheets(pPSUIInfo, lParam, &deviceSheet_);
}

HRESULT IOemUI::DevQueryPrintEx(POEMUIOBJ, PDEVQUERYPRINT_INFO, PDEVMODEW pPublicDM, PVOID) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:DevQueryPrintEx entry.\r\n");
    if (pPublicDM != nullptr) {
        TRACE_VERBOSE(L"UI:  IOemUI:DevQueryPrintEx entry.pPublicDM->dmPaperLength = %d\r\n",
                      pPublicDM->dmPaperLength);
    }
    return E_NOTIMPL;
}

HRESULT IOemUI::DeviceCapabilities(POEMUIOBJ, HANDLE, PWSTR, WORD, PVOID, PDEVMODEW, PVOID, DWORD,
                                   DWORD*) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:DeviceCapabilities entry.\r\n");
    return E_NOTIMPL;
}

HRESULT IOemUI::UpgradePrinter(DWORD, PBYTE) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:UpgradePrinter entry.\r\n");
    return E_NOTIMPL;
}

HRESULT IOemUI::PrinterEvent(PWSTR, INT, DWORD, LPARAM) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:PrinterEvent entry.\r\n");
    return E_NOTIMPL;
}

HRESULT IOemUI::DriverEvent(DWORD, DWORD, LPBYTE, LPARAM) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:DriverEvent entry.\r\n");
    return E_NOTIMPL;
}

HRESULT IOemUI::QueryColorProfile(HANDLE, POEMUIOBJ, PDEVMODEW, PVOID, ULONG ulQueryMode, VOID* pvProfileData,
                                  ULONG* pcbProfileData, FLONG* pflProfileData) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:QueryColorProfile entry.\r\n");
    if (ulQueryMode != 0) {
        return E_FAIL;
    }
    if (pcbProfileData == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (pvProfileData == nullptr || *pcbProfileData < kColorProfileSize) {
        *pcbProfileData = kColorProfileSize;
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (pflProfileData == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    std::copy(std::begin(kColorProfile), std::end(kColorProfile), static_cast<wchar_t*>(pvProfileData));
    *pcbProfileData = kColorProfileSize;
    *pflProfileData = kProfileIsFileName;
    return S_OK;
}

HRESULT IOemUI::FontInstallerDlgProc(HWND, UINT, WPARAM, LPARAM) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:FontInstallerDlgProc entry.\r\n");
    return E_NOTIMPL;
}

HRESULT IOemUI::UpdateExternalFonts(HANDLE, HANDLE, PWSTR) noexcept {
    TRACE_VERBOSE(L"UI:  IOemUI:UpdateExternalFonts entry.\r\n");
    return E_NOTIMPL;
}
