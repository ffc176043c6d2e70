#include "intrface/win/property_sheet.h"

#include <windows.h>

#include <prsht.h>

#include <cstdint>

#include "base/platform.h"
#include "intrface/win/activation_context.h"
#include "intrface/win/module.h"
#include "intrface/win/trace_value.h"

void DumpSheetInfo(const PROPSHEETUI_INFO& info) noexcept {
    TRACE_VERBOSE(L"pPSUIInfo:\r\n");
    TRACE_VERBOSE(L"\tcbSize          = %d\r\n", info.cbSize);
    TRACE_VERBOSE(L"\tVersion         = %#x\r\n", info.Version);
    TRACE_VERBOSE(L"\tFlags           = %#x\r\n", info.Flags);
    TRACE_VERBOSE(L"\tReason          = %d\r\n", info.Reason);
    TRACE_VERBOSE(L"\thComPropSheet   = %#x\r\n", TraceValue(info.hComPropSheet));
    TRACE_VERBOSE(L"\tpfnComPropSheet = %#x\r\n", TraceValue(info.pfnComPropSheet));
    TRACE_VERBOSE(L"\tlParamInit      = %#x\r\n", static_cast<unsigned>(info.lParamInit));
    TRACE_VERBOSE(L"\tUserData        = %#x\r\n", static_cast<unsigned>(info.UserData));
    TRACE_VERBOSE(L"\tResult          = %#x\r\n", static_cast<unsigned>(info.Result));
}

void AnswerSheetReason(PROPSHEETUI_INFO& info, LPARAM lParam) noexcept {
    // The header's title is not const, but the host only reads it.
    static wchar_t title[] = L"OEM UI Page";
    switch (info.Reason) {
        case PROPSHEETUI_REASON_GET_INFO_HEADER:
            if (lParam != 0) {
                reinterpret_cast<PPROPSHEETUI_INFO_HEADER>(lParam)->pTitle = title;
            }
            info.Result = 1;
            break;
        case PROPSHEETUI_REASON_DESTROY:
            info.Result = 1;
            break;
        case PROPSHEETUI_REASON_SET_RESULT:
            if (lParam != 0) {
                info.Result = static_cast<ULONG_PTR>(reinterpret_cast<PSETRESULT_INFO>(lParam)->Result);
            }
            break;
        case PROPSHEETUI_REASON_GET_ICON:
            info.Result = 0;
            break;
        default:
            break;
    }
}

LONG_PTR AddPage(const PROPSHEETUI_INFO& info, const PageDescription& page) noexcept {
    if (info.pfnComPropSheet == nullptr) {
        return 0;
    }
    PROPSHEETPAGEW description{};
    description.dwSize = sizeof description;
    description.dwFlags = PSP_USETITLE;
    description.hInstance = ghInstance;
    description.pszTemplate = MAKEINTRESOURCEW(page.templateId);
    description.pszTitle = page.title;
    description.pfnDlgProc = page.procedure;
    description.lParam = page.parameter;
    description.hActCtx = CommonControlsContext();
    if (description.hActCtx != INVALID_HANDLE_VALUE) {
        description.dwFlags |= PSP_USEFUSIONCONTEXT;
    }
    return info.pfnComPropSheet(info.hComPropSheet, CPSFUNC_ADD_PROPSHEETPAGEW,
                                reinterpret_cast<LPARAM>(&description), 0);
}

void ReportApplied(PFNCOMPROPSHEET callback, HANDLE sheet, LPARAM page, HWND dialog) noexcept {
    if (callback != nullptr) {
        callback(sheet, CPSFUNC_SET_RESULT, page, CPSUI_OK);
    }
    PropSheet_UnChanged(GetParent(dialog), dialog);
}

void MarkChanged(HWND dialog) noexcept {
    PropSheet_Changed(GetParent(dialog), dialog);
}
