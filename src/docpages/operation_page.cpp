// The Operation page has four buttons, one for each moment of a job. A button copies its moment's block out
// of the record into the edit buffer and opens the settings dialog on it; OK there copies the buffer back.
// Nothing else on this page writes the record, and apply only confirms.
#include "docpages/operation_page.h"

#include "base/platform.h"
#include "docpages/operation_dialog.h"
#include "intrface/win/activation_context.h"
#include "intrface/win/page.h"
#include "intrface/win/property_sheet.h"
#include "intrface/win/sheet_context.h"

namespace {

struct MomentButton {
    int control;
    Moment moment;
    const wchar_t* traceLine;
};

constexpr MomentButton kMomentButtons[] = {
    {IDC_OPERATION_PAGE_DOC_START, Moment::kDocStart, L"UI:  Start of document buttion is clicked\r\n"},
    {IDC_OPERATION_PAGE_PAGE_START, Moment::kPageStart, L"UI:  Start of page buttion is clicked\r\n"},
    {IDC_OPERATION_PAGE_PAGE_END, Moment::kPageEnd, L"UI:  End of page buttion is clicked\r\n"},
    {IDC_OPERATION_PAGE_DOC_END, Moment::kDocEnd, L"UI:  End of document buttion is clicked\r\n"},
};

void MomentChosen(HWND dialog, const DocumentSheetContext& context, const MomentButton& button) {
    TRACE_VERBOSE(button.traceLine);
    OEMDEV* const record = context.Record();
    if (record == nullptr) {
        return;
    }
    OperationEditBuffer buffer{button.moment, ReadOperation(*record, button.moment)};
    if (RunDialog(IDD_OPERATION_DIALOG, dialog, OperationDlgProc, reinterpret_cast<LPARAM>(&buffer)) ==
        IDOK) {
        WriteOperation(*record, button.moment, buffer.settings);
        MarkChanged(dialog);
    }
}

INT_PTR ButtonClicked(HWND dialog, const DocumentSheetContext& context, int control) {
    for (const MomentButton& button : kMomentButtons) {
        if (button.control == control) {
            MomentChosen(dialog, context, button);
            return TRUE;
        }
    }
    return FALSE;
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    TRACE_VERBOSE(L"UI:  DocOperationPropPageProc() entry, Reason is %d.\r\n", message);
    const auto* context = PageContext<DocumentSheetContext>(
        dialog, message, lParam, L"ERROR UI:  DocOperationPropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    if (context == nullptr) {
        return FALSE;
    }
    switch (message) {
        case WM_INITDIALOG:
            TRACE_VERBOSE(L"UI:  Initialize operation page callback function\r\n");
            OperationPageTexts().ApplyTo(dialog);
            return FALSE;
        case WM_PAINT:
            ReloadTexts(dialog, OperationPageTexts());
            return FALSE;
        case WM_COMMAND:
            return HIWORD(wParam) == BN_CLICKED ? ButtonClicked(dialog, *context, LOWORD(wParam)) : FALSE;
        case WM_NOTIFY:
            return AnswerSheet(dialog, lParam, [&] {
                ReportApplied(context->pfnComPropSheet, context->hComPropSheet,
                              context->PageHandle(DocumentPage::kOperation), dialog);
            });
        default:
            return PassOn(dialog, message, wParam, lParam);
    }
}

constinit TextTable gTexts(L"OPERATION", kOperationPageTexts);

}  // namespace

TextTable& OperationPageTexts() noexcept {
    return gTexts;
}

INT_PTR CALLBACK DocOperationPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
