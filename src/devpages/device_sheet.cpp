#include "devpages/device_sheet.h"

#include "base/platform.h"
#include "devpages/device_pages.h"
#include "devpages/download_page.h"
#include "devpages/printer_port.h"
#include "devpages/utility_page.h"
#include "intrface/win/activation_context.h"
#include "intrface/win/property_sheet.h"
#include "intrface/win/trace_value.h"
#include "language/messages.h"
#include "language/registry_choice.h"
#include "language/text_lookup.h"

namespace {

// Texts of the printer side that are not captions of a page.
constexpr TextTable& (*kSharedTexts[])() noexcept = {UtilityPageHelp, DownloadPageHelp, Messages};

// Each port that a sheet was opened for has a value beside the chosen language. It holds the name of the
// choice, not the choice.
void RecordPort(const wchar_t* port) noexcept {
    WriteLanguageValue(OpenLanguageKey(), port, kLanguageValue);
}

void LoadTexts() {
    for (const DevicePageEntry& entry : DevicePages()) {
        entry.texts().Load();
    }
    for (const auto texts : kSharedTexts) {
        texts().Load();
    }
}

void Initialize(PROPSHEETUI_INFO& info, DeviceSheetContext& context) {
    {
        const PrinterPort port(context.Printer());
        RefreshLanguageFile();
        RecordPort(port.Name());
    }
    RegisterCommonControls();
    LoadTexts();
    TRACE_VERBOSE(L"UI:  initialize device property sheet\r\n");
    context.hComPropSheet = info.hComPropSheet;
    context.pfnComPropSheet = info.pfnComPropSheet;
    LONG_PTR page = 0;
    for (const DevicePageEntry& entry : DevicePages()) {
        page = AddPage(info, {entry.templateId, entry.texts()[entry.titleRow], entry.procedure,
                              reinterpret_cast<LPARAM>(&context)});
        context.hLastPage = reinterpret_cast<HANDLE>(page);
    }
    TRACE_VERBOSE(L"UI:  hrOEMDevicePropertySheets() pfnComPropSheet returned %d.\r\n",
                  static_cast<int>(page));
    info.Result = static_cast<ULONG_PTR>(page);
}

}  // namespace

HRESULT hrOEMDevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam,
                                  DeviceSheetContext* pSheetContext) noexcept {
    TRACE_VERBOSE(L"UI:  hrOEMDevicePropertySheets(%#x, %#x) entry\r\n", TraceValue(pPSUIInfo),
                  static_cast<unsigned>(lParam));
    if (pPSUIInfo == nullptr || pPSUIInfo->Version != kSheetInfoVersion) {
        TRACE_ERROR(L"ERROR UI:  hrOEMDevicePropertySheets() ERROR_INVALID_PARAMETER.\r\n");
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    DumpSheetInfo(*pPSUIInfo);
    if (pPSUIInfo->Reason == PROPSHEETUI_REASON_INIT) {
        try {
            Initialize(*pPSUIInfo, *pSheetContext);
        } catch (...) {
            // Out of memory: the sheet opens with the host's own pages.
            pPSUIInfo->Result = 0;
        }
        return S_OK;
    }
    AnswerSheetReason(*pPSUIInfo, lParam);
    return S_OK;
}
