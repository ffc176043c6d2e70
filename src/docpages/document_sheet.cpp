#include "docpages/document_sheet.h"

#include "base/platform.h"
#include "docpages/barcode_1d_page.h"
#include "docpages/barcode_2d_page.h"
#include "docpages/document_pages.h"
#include "docpages/layout_page.h"
#include "docpages/print_density.h"
#include "docpages/water_mark_page.h"
#include "intrface/win/activation_context.h"
#include "intrface/win/property_sheet.h"
#include "language/messages.h"
#include "language/text_lookup.h"

namespace {

// Texts of the document side that are not captions of a page.
constexpr TextTable& (*kSharedTexts[])() noexcept = {LayoutPageHelp,    WaterMarkPageHelp, Barcode1DPageHelp,
                                                     Barcode2DPageHelp, DensityTexts,      Messages};

void LoadTexts() {
    RefreshLanguageFile();
    for (const DocumentPageEntry& entry : DocumentPages()) {
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
    const auto pages = DocumentPages();
    for (auto entry = pages.rbegin(); entry != pages.rend(); ++entry) {
        TRACE_VERBOSE(entry->traceLine);
    }
    context.waterMarkRemoved = false;
    // The items are the host's for this sheet: their texts are measured anew.
    context.optionTexts.clear();
    RelabelPrintDensity(context);
    for (const DocumentPageEntry& entry : pages) {
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
