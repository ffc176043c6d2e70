// The 2D Code page edits the record's two 2D barcode fonts, one at a time. PDF417, GS1 DataBar and QR Code
// have a group of controls each, in one place. Showing a font stores nothing.
#include "docpages/barcode_2d_page.h"

#include <iterator>
#include <string>
#include <vector>

#include "base/platform.h"
#include "docpages/barcode_page.h"
#include "intrface/win/help_tips.h"
#include "intrface/win/page.h"
#include "intrface/win/property_sheet.h"
#include "language/messages.h"
#include "printer/barcode_commands.h"
#include "printer/raw_job.h"

namespace {

constexpr wchar_t kFontName[] = L"2D Code";

// The same in all languages.
constexpr const wchar_t* kQrModels[] = {L"1", L"2"};
constexpr const wchar_t* kQrEccLevels[] = {L"L", L"M", L"H", L"Q"};

struct NumberRow {
    Number2D number;
    NumberControls controls;
};

constexpr NumberControls kSegments = {IDC_BARCODE2D_GS1_SEGMENTS, IDC_BARCODE2D_GS1_SEGMENTS_SPIN,
                                      IDC_BARCODE2D_GS1_SEGMENTS_RANGE};

constexpr NumberRow kNumbers[] = {
    {Number2D::kPdfColumns,
     {IDC_BARCODE2D_PDF_COLUMNS, IDC_BARCODE2D_PDF_COLUMNS_SPIN, IDC_BARCODE2D_PDF_COLUMNS_RANGE}},
    {Number2D::kPdfModuleWidth,
     {IDC_BARCODE2D_PDF_WIDTH, IDC_BARCODE2D_PDF_WIDTH_SPIN, IDC_BARCODE2D_PDF_WIDTH_RANGE}},
    {Number2D::kPdfRows, {IDC_BARCODE2D_PDF_ROWS, IDC_BARCODE2D_PDF_ROWS_SPIN, IDC_BARCODE2D_PDF_ROWS_RANGE}},
    {Number2D::kPdfModuleHeight,
     {IDC_BARCODE2D_PDF_HEIGHT, IDC_BARCODE2D_PDF_HEIGHT_SPIN, IDC_BARCODE2D_PDF_HEIGHT_RANGE}},
    {Number2D::kGs1ElementWidth, {IDC_BARCODE2D_GS1_WIDTH, IDC_BARCODE2D_GS1_WIDTH_SPIN, 0}},
    {Number2D::kGs1RowHeight, {IDC_BARCODE2D_GS1_ROW, IDC_BARCODE2D_GS1_ROW_SPIN, 0}},
    {Number2D::kGs1CompositeRowHeight,
     {IDC_BARCODE2D_GS1_COMPOSITE_ROW, IDC_BARCODE2D_GS1_COMPOSITE_ROW_SPIN, 0}},
    {Number2D::kGs1SeparatorHeight, {IDC_BARCODE2D_GS1_SEPARATOR, IDC_BARCODE2D_GS1_SEPARATOR_SPIN, 0}},
    {Number2D::kGs1Segments, kSegments},
    {Number2D::kQrModuleWidth,
     {IDC_BARCODE2D_QR_WIDTH, IDC_BARCODE2D_QR_WIDTH_SPIN, IDC_BARCODE2D_QR_WIDTH_RANGE}},
};
static_assert(std::size(kNumbers) == static_cast<std::size_t>(Number2D::kCount));

constexpr FontList<BarcodeFont2D> kLists[] = {
    {IDC_BARCODE2D_PDF_ECC, &BarcodeFont2D::bPdfEccLevel, 0},
    {IDC_BARCODE2D_GS1_HRI, &BarcodeFont2D::bGs1Hri2D, kFirstGs1Hri},
    {IDC_BARCODE2D_GS1_EXPANDED, &BarcodeFont2D::bGs1ExpandedAi2D, 0},
    {IDC_BARCODE2D_QR_LANGUAGE, &BarcodeFont2D::bQrLanguage, 0},
    {IDC_BARCODE2D_QR_MODEL, &BarcodeFont2D::bQrModel, kFirstQrModel},
    {IDC_BARCODE2D_QR_ECC, &BarcodeFont2D::bQrEccLevel, 0},
};

// Onto the place of the GS1 DataBar group.
constexpr ControlPlace kPdfControls[] = {
    {IDC_BARCODE2D_PDF_GROUP, 26, 83},           {IDC_BARCODE2D_PDF_COLUMNS_LABEL, 33, 108},
    {IDC_BARCODE2D_PDF_COLUMNS, 130, 104},       {IDC_BARCODE2D_PDF_COLUMNS_SPIN, 166, 104},
    {IDC_BARCODE2D_PDF_COLUMNS_RANGE, 192, 108}, {IDC_BARCODE2D_PDF_WIDTH_LABEL, 33, 140},
    {IDC_BARCODE2D_PDF_WIDTH, 130, 137},         {IDC_BARCODE2D_PDF_WIDTH_SPIN, 166, 137},
    {IDC_BARCODE2D_PDF_WIDTH_RANGE, 192, 140},   {IDC_BARCODE2D_PDF_ROWS_LABEL, 33, 173},
    {IDC_BARCODE2D_PDF_ROWS, 130, 170},          {IDC_BARCODE2D_PDF_ROWS_SPIN, 166, 170},
    {IDC_BARCODE2D_PDF_ROWS_RANGE, 192, 173},    {IDC_BARCODE2D_PDF_HEIGHT_LABEL, 33, 206},
    {IDC_BARCODE2D_PDF_HEIGHT, 130, 203},        {IDC_BARCODE2D_PDF_HEIGHT_SPIN, 166, 203},
    {IDC_BARCODE2D_PDF_HEIGHT_RANGE, 192, 206},  {IDC_BARCODE2D_PDF_ECC_LABEL, 33, 239},
    {IDC_BARCODE2D_PDF_ECC, 130, 236},
};

constexpr ControlPlace kQrControls[] = {
    {IDC_BARCODE2D_QR_GROUP, 26, 83},         {IDC_BARCODE2D_QR_WIDTH_LABEL, 33, 118},
    {IDC_BARCODE2D_QR_WIDTH, 130, 115},       {IDC_BARCODE2D_QR_WIDTH_SPIN, 163, 115},
    {IDC_BARCODE2D_QR_WIDTH_RANGE, 190, 118}, {IDC_BARCODE2D_QR_LANGUAGE_LABEL, 33, 156},
    {IDC_BARCODE2D_QR_LANGUAGE, 130, 153},    {IDC_BARCODE2D_QR_MODEL_LABEL, 33, 194},
    {IDC_BARCODE2D_QR_MODEL, 130, 191},       {IDC_BARCODE2D_QR_ECC_LABEL, 33, 232},
    {IDC_BARCODE2D_QR_ECC, 130, 229},
};

constexpr int kGs1Controls[] = {
    IDC_BARCODE2D_GS1_GROUP,
    IDC_BARCODE2D_GS1_KIND_LABEL,
    IDC_BARCODE2D_GS1_INDEPENDENT,
    IDC_BARCODE2D_GS1_COMPOSITE,
    IDC_BARCODE2D_GS1_WIDTH_LABEL,
    IDC_BARCODE2D_GS1_WIDTH,
    IDC_BARCODE2D_GS1_WIDTH_SPIN,
    IDC_BARCODE2D_GS1_WIDTH_RANGE,
    IDC_BARCODE2D_GS1_ROW_LABEL,
    IDC_BARCODE2D_GS1_ROW,
    IDC_BARCODE2D_GS1_ROW_SPIN,
    IDC_BARCODE2D_GS1_ROW_RANGE,
    IDC_BARCODE2D_GS1_COMPOSITE_ROW_LABEL,
    IDC_BARCODE2D_GS1_COMPOSITE_ROW,
    IDC_BARCODE2D_GS1_COMPOSITE_ROW_SPIN,
    IDC_BARCODE2D_GS1_COMPOSITE_ROW_RANGE,
    IDC_BARCODE2D_GS1_SEPARATOR_LABEL,
    IDC_BARCODE2D_GS1_SEPARATOR,
    IDC_BARCODE2D_GS1_SEPARATOR_SPIN,
    IDC_BARCODE2D_GS1_SEPARATOR_RANGE,
    IDC_BARCODE2D_GS1_SEGMENTS_LABEL,
    IDC_BARCODE2D_GS1_SEGMENTS,
    IDC_BARCODE2D_GS1_SEGMENTS_SPIN,
    IDC_BARCODE2D_GS1_SEGMENTS_RANGE,
    IDC_BARCODE2D_GS1_HRI_LABEL,
    IDC_BARCODE2D_GS1_HRI,
    IDC_BARCODE2D_GS1_EXPANDED_LABEL,
    IDC_BARCODE2D_GS1_EXPANDED,
};

// What Maxi Code, which has nothing to set, has no use for.
constexpr int kPdfInputs[] = {
    IDC_BARCODE2D_PDF_COLUMNS,   IDC_BARCODE2D_PDF_COLUMNS_SPIN, IDC_BARCODE2D_PDF_ROWS,
    IDC_BARCODE2D_PDF_ROWS_SPIN, IDC_BARCODE2D_PDF_WIDTH,        IDC_BARCODE2D_PDF_WIDTH_SPIN,
    IDC_BARCODE2D_PDF_HEIGHT,    IDC_BARCODE2D_PDF_HEIGHT_SPIN,  IDC_BARCODE2D_PDF_ECC,
};
constexpr int kExpandedStackedInputs[] = {IDC_BARCODE2D_GS1_SEGMENTS, IDC_BARCODE2D_GS1_SEGMENTS_SPIN,
                                          IDC_BARCODE2D_GS1_EXPANDED};

LRESULT CALLBACK Barcode2DHelpProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleHelp(Barcode2DPageHelp(), control, message, wParam, lParam);
}

std::size_t SelectedIndex(HWND dialog) noexcept {
    const auto index = static_cast<std::size_t>(SelectedItem(dialog, IDC_BARCODE2D_FONT, 0));
    return index < std::size(OEMDEV{}.Barcode2D) ? index : 0;
}

std::uint32_t NumberShown(const BarcodeFont2D& font, Number2D number) noexcept {
    return InRange(ReadNumber(font, number), BoxOf(number).range);
}

void ApplyLists(HWND dialog) {
    Barcode2DPageTexts().ApplyToList(GetDlgItem(dialog, IDC_BARCODE2D_PDF_ECC), kPdfEccList);
    Barcode2DPageTexts().ApplyToList(GetDlgItem(dialog, IDC_BARCODE2D_GS1_HRI), kGs1HriList2D);
    Barcode2DPageTexts().ApplyToList(GetDlgItem(dialog, IDC_BARCODE2D_GS1_EXPANDED), kGs1ExpandedList2D);
    Barcode2DPageTexts().ApplyToList(GetDlgItem(dialog, IDC_BARCODE2D_QR_LANGUAGE), kQrLanguageList);
}

// What the type decides: the group that shows, and what can be used.
void ShowType(HWND dialog, const BarcodeFont2D& font) noexcept {
    const Controls2D uses = ControlsOf(font);
    ShowControls(dialog, kPdfControls, uses.group == Group2D::kPdf417);
    ShowControls(dialog, kGs1Controls, uses.group == Group2D::kDataBar);
    ShowControls(dialog, kQrControls, uses.group == Group2D::kQr);
    for (const int control : kPdfInputs) {
        EnableItem(dialog, control, uses.pdf417);
    }
    for (const int control : kExpandedStackedInputs) {
        EnableItem(dialog, control, uses.expandedStacked);
    }
    SetDlgItemTextW(dialog, IDC_BARCODE2D_DATA, kBarcodeSample2D);
}

// A composite symbol has a 2D part with a row height, and at least four segments in a row. Where fewer show
// the box takes four over, which stores them.
void ShowKind(HWND dialog) noexcept {
    const bool isComposite = IsItemChecked(dialog, IDC_BARCODE2D_GS1_COMPOSITE);
    EnableItem(dialog, IDC_BARCODE2D_GS1_COMPOSITE_ROW, isComposite);
    EnableItem(dialog, IDC_BARCODE2D_GS1_COMPOSITE_ROW_SPIN, isComposite);
    const SegmentArrows arrows = SegmentArrowsOf(isComposite);
    SetNumberRange(dialog, kSegments, arrows.range, arrows.rangeText);
}

void KindChosen(HWND dialog) noexcept {
    ShowKind(dialog);
    const bool isComposite = IsItemChecked(dialog, IDC_BARCODE2D_GS1_COMPOSITE);
    const std::uint8_t least = SegmentArrowsOf(isComposite).range.least;
    if (isComposite && TypedNumber(dialog, kSegments) < least) {
        ShowNumber(dialog, kSegments, least);
    }
}

void ShowFont(HWND dialog, const BarcodeFont2D& font) noexcept {
    SelectItem(dialog, IDC_BARCODE2D_TYPE, font.bType2D);
    for (const NumberRow& row : kNumbers) {
        ShowNumber(dialog, row.controls, NumberShown(font, row.number));
    }
    for (const FontList<BarcodeFont2D>& row : kLists) {
        ShowItem(dialog, row, font);
    }
    ShowType(dialog, font);
}

void AddItems(HWND dialog, int list, std::span<const wchar_t* const> texts) noexcept {
    for (const wchar_t* const text : texts) {
        AddItem(dialog, list, text);
    }
}

void PageOpened(HWND dialog, OEMDEV* record) {
    Barcode2DPageTexts().ApplyTo(dialog);
    ApplyLists(dialog);
    for (std::size_t i = 0; i < std::size(OEMDEV{}.Barcode2D); ++i) {
        AddItem(dialog, IDC_BARCODE2D_FONT, (kFontName + NumberText(i + 1)).c_str());
    }
    AddItems(dialog, IDC_BARCODE2D_TYPE, kBarcodeNames2D);
    AddItems(dialog, IDC_BARCODE2D_QR_MODEL, kQrModels);
    AddItems(dialog, IDC_BARCODE2D_QR_ECC, kQrEccLevels);
    for (const NumberRow& row : kNumbers) {
        OpenNumber(dialog, row.controls, BoxOf(row.number));
    }
    SetDlgItemTextW(dialog, IDC_BARCODE2D_POINTS, kFontSize2D);
    SendDlgItemMessageW(dialog, IDC_BARCODE2D_DATA, EM_LIMITTEXT, kTestDataLength, 0);
    for (const int radio : {IDC_BARCODE2D_GS1_INDEPENDENT, IDC_BARCODE2D_GS1_COMPOSITE}) {
        SetClickedByUserOnly(dialog, radio);
    }
    MoveControls(dialog, kPdfControls);
    MoveControls(dialog, kQrControls);
    CheckItem(dialog, IDC_BARCODE2D_GS1_INDEPENDENT, true);
    CheckItem(dialog, IDC_BARCODE2D_GS1_COMPOSITE, false);
    ShowKind(dialog);
    SelectItem(dialog, IDC_BARCODE2D_FONT, 0);
    if (record != nullptr) {
        ShowFont(dialog, record->Barcode2D[0]);
    }
    EnablePrint(dialog, IDC_BARCODE2D_DATA, IDC_BARCODE2D_PRINT);
    AttachHelp(dialog, Barcode2DPageHelp(), Barcode2DHelpProc);
}

void PagePainted(HWND dialog) {
    ReloadTexts(dialog, Barcode2DPageTexts(), Barcode2DPageHelp());
    ApplyLists(dialog);
}

void TypeChosen(HWND dialog, BarcodeFont2D& font) noexcept {
    font.bType2D = static_cast<std::uint8_t>(SelectedItem(dialog, IDC_BARCODE2D_TYPE, font.bType2D));
    ShowType(dialog, font);
    MarkChanged(dialog);
}

// Also called when the page fills a box: one that shows what the record holds tells nothing new.
void NumberTyped(HWND dialog, const NumberRow& row, BarcodeFont2D& font) noexcept {
    const std::uint32_t typed = TypedNumber(dialog, row.controls);
    if (typed != NumberShown(font, row.number)) {
        ShowStoredNumber(dialog, row.controls, StoreNumber(font, row.number, typed));
        MarkChanged(dialog);
    }
}

void PrintTest(HWND dialog, const DocumentSheetContext& context, const OEMDEV& record) {
    TRACE_VERBOSE(L"UI:  bar2Dcode() entry!\r\n");
    const std::size_t index = SelectedIndex(dialog);
    const BarcodeFont2D& font = record.Barcode2D[index];
    std::vector<std::uint8_t> data = TestData(dialog, IDC_BARCODE2D_DATA);
    if (!AcceptsTestData(font, record.Barcode1D[index], data)) {
        ShowMessage(dialog, Message::kBarcode2D, MessageTitle::kError, MessageIcon::kNone);
        return;
    }
    SendTestPrint(context, kBarcode2DJob, TestPrint(font, data));
}

INT_PTR ControlUsed(HWND dialog, const DocumentSheetContext& context, OEMDEV& record, int control,
                    int notification) {
    BarcodeFont2D& font = record.Barcode2D[SelectedIndex(dialog)];
    if (notification == EN_CHANGE) {
        for (const NumberRow& row : kNumbers) {
            if (row.controls.edit == control) {
                NumberTyped(dialog, row, font);
                return TRUE;
            }
        }
    }
    const bool isChosen = notification == CBN_SELCHANGE;
    for (const FontList<BarcodeFont2D>& row : kLists) {
        if (row.list == control) {
            if (isChosen) {
                TakeItem(dialog, row, font);
                MarkChanged(dialog);
            }
            return TRUE;
        }
    }
    switch (control) {
        case IDC_BARCODE2D_FONT:
            if (isChosen) {
                ShowFont(dialog, font);
            }
            return TRUE;
        case IDC_BARCODE2D_TYPE:
            if (isChosen) {
                TypeChosen(dialog, font);
            }
            return TRUE;
        case IDC_BARCODE2D_GS1_INDEPENDENT:
        case IDC_BARCODE2D_GS1_COMPOSITE:
            if (notification == BN_CLICKED) {
                KindChosen(dialog);
            }
            return TRUE;
        case IDC_BARCODE2D_DATA:
            if (notification == EN_CHANGE) {
                EnablePrint(dialog, IDC_BARCODE2D_DATA, IDC_BARCODE2D_PRINT);
            }
            return TRUE;
        case IDC_BARCODE2D_PRINT:
            if (notification == BN_CLICKED) {
                PrintTest(dialog, context, record);
            }
            return TRUE;
        default:
            return FALSE;
    }
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* context = PageContext<DocumentSheetContext>(
        dialog, message, lParam, L"ERROR UI:  Barcode2DPropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    if (context == nullptr) {
        return FALSE;
    }
    OEMDEV* const record = context->Record();
    switch (message) {
        case WM_INITDIALOG:
            if (!HasItems(dialog, IDC_BARCODE2D_FONT)) {
                PageOpened(dialog, record);
            }
            return FALSE;
        case WM_PAINT:
            PagePainted(dialog);
            return FALSE;
        case WM_COMMAND:
            return record != nullptr ? ControlUsed(dialog, *context, *record, LOWORD(wParam), HIWORD(wParam))
                                     : FALSE;
        case WM_NOTIFY:
            return AnswerSheet(dialog, lParam, [&] { ReportTestPageApplied(dialog, *context); });
        default:
            return PassOn(dialog, message, wParam, lParam);
    }
}

constinit TextTable gTexts(L"2DCODE", kBarcode2DPageTexts);
constinit TextTable gHelp(L"2DCODE", kBarcode2DPageHelp);

}  // namespace

TextTable& Barcode2DPageTexts() noexcept {
    return gTexts;
}

TextTable& Barcode2DPageHelp() noexcept {
    return gHelp;
}

INT_PTR CALLBACK Barcode2DPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
