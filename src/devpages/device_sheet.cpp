#include "devpages/device_sheet.h"

#include "base/platform.h"
#include "intrface/win/property_sheet.h"
#include "intrface/win/trace_value.h"

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
        TRACE_VERBOSE(L"UI:  initialize device property sheet\r\n");
        pSheetContext->hComPropSheet = pPSUIInfo->hComPropSheet;
        pSheetContext->pfnComPropSheet = pPSUIInfo->pfnComPropSheet;
        return S_OK;
    }
    AnswerSheetReason(*pPSUIInfo, lParam);
    return S_OK;
}
