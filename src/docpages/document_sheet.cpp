#include "docpages/document_sheet.h"

#include <iterator>

#include "base/platform.h"
#include "docpages/operation_page.h"
#include "docpages/print_density.h"
#include "intrface/win/activation_context.h"
#include "intrface/win/property_sheet.h"
#include "language/messages.h"
#include "language/text_lookup.h"
#include "resources/resource.h"

namespace {

struct DocumentPageEntry {
    DocumentPage page;
    int templateId;
    TextTable& (*texts)() noexcept;
    std::size_t titleRow;
    DLGPROC procedure;
    const wchar_t* traceLine;
};

// In the order of the tabs.
constexpr DocumentPageEntry kPages[] = {
    {DocumentPage::kOperation, IDD_OPERATION_PAGE, OperationPageTexts, kOperationPageTitle,
     DocOperationPropPageProc, L"UI:  Init operation property page\r\n"},
};
static_assert(std::size(kPages) == static_cast<std::size_t>(DocumentPage::kCount));

// Texts of the document side that belong to no page.
constexpr TextTable& (*kSharedTexts[])() noexcept = {DensityTexts, DocumentMessages};

void LoadTexts() {
    RefreshLanguageFile();
    for (const DocumentPageEntry& entry : kPages) {
        entry.texts().Load();
    }
    for (const auto texts : kSharedTexts) {
        texts().Load();
    }
}

void Initialize(PROPSHEETUI_INFO& info, DocumentSheetContext& context) {
    context.hComPropSheet = info.hComPropSheet;
    context.lParamInit = reinterpret_cast<POEMUIPSPARAM>(info.lParamInit);
    context.pfnComPropSheet = info.pfnComPropSheet;
    RegisterCommonControls();
    LoadTexts();
    TRACE_VERBOSE(L"UI:  initialize doc property sheet\r\n");
    for (auto entry = std::rbegin(kPages); entry != std::rend(kPages); ++entry) {
        TRACE_VERBOSE(entry->traceLine);
    }
    // The items are the host's for this sheet: their texts are measured anew.
    context.optionTexts.clear();
    RelabelPrintDensity(context);
    for (const DocumentPageEntry& entry : kPages) {
        LONG_PTR& page = context.pages[static_cast<std::size_t>(entry.page)];
        page = AddPage(info, {entry.templateId, entry.texts()[entry.titleRow], entry.procedure,
                              reinterpret_cast<LPARAM>(&context)});
        info.Result = static_cast<ULONG_PTR>(page);
    }
}

}  // namespace

HRESULT hrOEMDocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam,
                                    DocumentSheetContext* pSheetContext) noexcept {
    if (pPSUIInfo == nullptr || pPSUIInfo->Version != kSheetInfoVersion) {
        TRACE_ERROR(L"ERROR UI:  hrOEMDocumentPropertySheets() ERROR_INVALID_PARAMETER.\r\n");
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    DumpSheetInfo(*pPSUIInfo);
    if (pPSUIInfo->Reason == PROPSHEETUI_REASON_INIT) {
        try {
            Initialize(*pPSUIInfo, *pSheetContext);
        } catch (...) {
            // Out of memory: the sheet opens with the pages added so far.
            pPSUIInfo->Result = 0;
        }
        return S_OK;
    }
    if (pPSUIInfo->Reason == PROPSHEETUI_REASON_DESTROY) {
        pSheetContext->optionTexts.clear();
    }
    AnswerSheetReason(*pPSUIInfo, lParam);
    return S_OK;
}
