// The 1D Code page edits the record's eight 1D barcode fonts, one at a time. GS1 DataBar types have a group
// of controls of their own in the place of the general one. Showing a font stores nothing.
#include "docpages/barcode_1d_page.h"

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
#include "printer/barcode_height.h"
#include "printer/raw_job.h"

namespace {

constexpr wchar_t kFontName[] = L"1D Code";

struct NumberRow {
    Number1D number;
    NumberControls controls;
};

constexpr NumberRow kNumbers[] = {
    {Number1D::kElementWidth, {IDC_BARCODE1D_WIDTH, IDC_BARCODE1D_WIDTH_SPIN, IDC_BARCODE1D_WIDTH_RANGE}},
    {Number1D::kElementHeight, {IDC_BARCODE1D_HEIGHT, IDC_BARCODE1D_HEIGHT_SPIN, IDC_BARCODE1D_HEIGHT_RANGE}},
    {Number1D::kGs1ElementWidth,
     {IDC_BARCODE1D_GS1_WIDTH, IDC_BARCODE1D_GS1_WIDTH_SPIN, IDC_BARCODE1D_GS1_WIDTH_RANGE}},
    {Number1D::kGs1RowHeight,
     {IDC_BARCODE1D_GS1_ROW, IDC_BARCODE1D_GS1_ROW_SPIN, IDC_BARCODE1D_GS1_ROW_RANGE}},
    {Number1D::kGs1CompositeRowHeight,
     {IDC_BARCODE1D_GS1_COMPOSITE_ROW, IDC_BARCODE1D_GS1_COMPOSITE_ROW_SPIN,
      IDC_BARCODE1D_GS1_COMPOSITE_ROW_RANGE}},
    {Number1D::kGs1SeparatorHeight,
     {IDC_BARCODE1D_GS1_SEPARATOR, IDC_BARCODE1D_GS1_SEPARATOR_SPIN, IDC_BARCODE1D_GS1_SEPARATOR_RANGE}},
};
static_assert(std::size(kNumbers) == static_cast<std::size_t>(Number1D::kCount));

constexpr FontList<BarcodeFont1D> kHriPositions = {IDC_BARCODE1D_HRI_POSITION, &BarcodeFont1D::bHriPosition,
                                                   0};
constexpr FontList<BarcodeFont1D> kGs1Lists[] = {
    {IDC_BARCODE1D_GS1_HRI, &BarcodeFont1D::bGs1Hri, kFirstGs1Hri},
    {IDC_BARCODE1D_GS1_EXPANDED, &BarcodeFont1D::bGs1ExpandedAi, 0},
};

constexpr int kGeneralControls[] = {
    IDC_BARCODE1D_GENERAL_GROUP,
    IDC_BARCODE1D_WIDTH_LABEL,
    IDC_BARCODE1D_WIDTH,
    IDC_BARCODE1D_WIDTH_SPIN,
    IDC_BARCODE1D_WIDTH_RANGE,
    IDC_BARCODE1D_HEIGHT_LABEL,
    IDC_BARCODE1D_HEIGHT,
    IDC_BARCODE1D_HEIGHT_SPIN,
    IDC_BARCODE1D_HEIGHT_RANGE,
    IDC_BARCODE1D_MILLIMETRES,
    IDC_BARCODE1D_MILLIMETRES_LABEL,
    IDC_BARCODE1D_POINTS,
    IDC_BARCODE1D_POINTS_LABEL,
    IDC_BARCODE1D_NOTICE,
    IDC_BARCODE1D_HRI_POSITION_LABEL,
    IDC_BARCODE1D_HRI_POSITION,
    IDC_BARCODE1D_HRI_FONT_LABEL,
    IDC_BARCODE1D_HRI_FONT_A,
    IDC_BARCODE1D_HRI_FONT_B,
};

// All of the GS1 DataBar group, onto the place of the general one.
constexpr ControlPlace kGs1Controls[] = {
    {IDC_BARCODE1D_GS1_GROUP, 26, 62},
    {IDC_BARCODE1D_GS1_KIND_LABEL, 33, 83},
    {IDC_BARCODE1D_GS1_INDEPENDENT, 131, 83},
    {IDC_BARCODE1D_GS1_COMPOSITE, 231, 83},
    {IDC_BARCODE1D_GS1_WIDTH_LABEL, 33, 122},
    {IDC_BARCODE1D_GS1_WIDTH, 132, 119},
    {IDC_BARCODE1D_GS1_WIDTH_SPIN, 158, 119},
    {IDC_BARCODE1D_GS1_WIDTH_RANGE, 183, 122},
    {IDC_BARCODE1D_GS1_ROW_LABEL, 228, 122},
    {IDC_BARCODE1D_GS1_ROW, 327, 119},
    {IDC_BARCODE1D_GS1_ROW_SPIN, 352, 119},
    {IDC_BARCODE1D_GS1_ROW_RANGE, 378, 122},
    {IDC_BARCODE1D_GS1_COMPOSITE_ROW_LABEL, 33, 161},
    {IDC_BARCODE1D_GS1_COMPOSITE_ROW, 132, 158},
    {IDC_BARCODE1D_GS1_COMPOSITE_ROW_SPIN, 158, 158},
    {IDC_BARCODE1D_GS1_COMPOSITE_ROW_RANGE, 183, 161},
    {IDC_BARCODE1D_GS1_SEPARATOR_LABEL, 228, 161},
    {IDC_BARCODE1D_GS1_SEPARATOR, 327, 158},
    {IDC_BARCODE1D_GS1_SEPARATOR_SPIN, 353, 158},
    {IDC_BARCODE1D_GS1_SEPARATOR_RANGE, 378, 161},
    {IDC_BARCODE1D_GS1_HRI_LABEL, 33, 200},
    {IDC_BARCODE1D_GS1_HRI, 132, 197},
    {IDC_BARCODE1D_GS1_EXPANDED_LABEL, 33, 239},
    {IDC_BARCODE1D_GS1_EXPANDED, 132, 236},
};

LRESULT CALLBACK Barcode1DHelpProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleHelp(Barcode1DPageHelp(), control, message, wParam, lParam);
}

std::uint32_t NumberShown(const BarcodeFont1D& font, Number1D number) noexcept {
    return InRange(ReadNumber(font, number), BoxOf(number).range);
}

BarcodeFont1D& SelectedFont(HWND dialog, OEMDEV& record) noexcept {
    const auto index = static_cast<std::size_t>(SelectedItem(dialog, IDC_BARCODE1D_FONT, 0));
    return record.Barcode1D[index < std::size(record.Barcode1D) ? index : 0];
}

void ApplyLists(HWND dialog) {
    Barcode1DPageTexts().ApplyToList(GetDlgItem(dialog, IDC_BARCODE1D_HRI_POSITION), kHriPositionList);
    Barcode1DPageTexts().ApplyToList(GetDlgItem(dialog, IDC_BARCODE1D_GS1_HRI), kGs1HriList1D);
    Barcode1DPageTexts().ApplyToList(GetDlgItem(dialog, IDC_BARCODE1D_GS1_EXPANDED), kGs1ExpandedList1D);
}

void ShowFontHeight(HWND dialog, const FontHeightTexts& texts) noexcept {
    SetTextIfChanged(GetDlgItem(dialog, IDC_BARCODE1D_MILLIMETRES), texts.millimetres.c_str());
    SetTextIfChanged(GetDlgItem(dialog, IDC_BARCODE1D_POINTS), texts.points.c_str());
}

// What the type decides: the group that shows, and what can be used in it.
void ShowType(HWND dialog, const BarcodeFont1D& font) noexcept {
    const Controls1D uses = ControlsOf(font);
    ShowControls(dialog, kGeneralControls, !uses.dataBar);
    ShowControls(dialog, kGs1Controls, uses.dataBar);
    EnableItem(dialog, IDC_BARCODE1D_GS1_EXPANDED, uses.expandedAi);
    SetDlgItemTextW(dialog, IDC_BARCODE1D_DATA, SampleOf(font));
}

void EnableHriFont(HWND dialog, const BarcodeFont1D& font) noexcept {
    const bool isUsed = ControlsOf(font).hriFont;
    EnableItem(dialog, IDC_BARCODE1D_HRI_FONT_A, isUsed);
    EnableItem(dialog, IDC_BARCODE1D_HRI_FONT_B, isUsed);
}

void EnableCompositeRow(HWND dialog) noexcept {
    const bool isComposite = IsItemChecked(dialog, IDC_BARCODE1D_GS1_COMPOSITE);
    EnableItem(dialog, IDC_BARCODE1D_GS1_COMPOSITE_ROW, isComposite);
    EnableItem(dialog, IDC_BARCODE1D_GS1_COMPOSITE_ROW_SPIN, isComposite);
}

void ShowFont(HWND dialog, const BarcodeFont1D& font) {
    SelectItem(dialog, IDC_BARCODE1D_TYPE, font.bType);
    for (const NumberRow& row : kNumbers) {
        ShowNumber(dialog, row.controls, NumberShown(font, row.number));
    }
    ShowItem(dialog, kHriPositions, font);
    EnableHriFont(dialog, font);
    CheckItem(dialog, IDC_BARCODE1D_HRI_FONT_A, font.bHriFont == 0);
    CheckItem(dialog, IDC_BARCODE1D_HRI_FONT_B, font.bHriFont != 0);
    for (const FontList<BarcodeFont1D>& row : kGs1Lists) {
        ShowItem(dialog, row, font);
    }
    ShowFontHeight(dialog, TextsOfFontHeight(FontHeight(font)));
    ShowType(dialog, font);
}

void PageOpened(HWND dialog, OEMDEV* record) {
    Barcode1DPageTexts().ApplyTo(dialog);
    ApplyLists(dialog);
    for (std::size_t i = 0; i < std::size(OEMDEV{}.Barcode1D); ++i) {
        AddItem(dialog, IDC_BARCODE1D_FONT, (kFontName + NumberText(i + 1)).c_str());
    }
    for (const BarcodeType1D& type : kBarcodeTypes1D) {
        AddItem(dialog, IDC_BARCODE1D_TYPE, type.name);
    }
    for (const NumberRow& row : kNumbers) {
        OpenNumber(dialog, row.controls, BoxOf(row.number));
    }
    SendDlgItemMessageW(dialog, IDC_BARCODE1D_DATA, EM_LIMITTEXT, kTestDataLength, 0);
    for (const int radio : {IDC_BARCODE1D_HRI_FONT_A, IDC_BARCODE1D_HRI_FONT_B, IDC_BARCODE1D_GS1_INDEPENDENT,
                            IDC_BARCODE1D_GS1_COMPOSITE}) {
        SetClickedByUserOnly(dialog, radio);
    }
    MoveControls(dialog, kGs1Controls);
    CutLabelBehind(dialog, IDC_BARCODE1D_GS1_COMPOSITE_ROW_RANGE, IDC_BARCODE1D_GS1_SEPARATOR_LABEL);
    CheckItem(dialog, IDC_BARCODE1D_GS1_INDEPENDENT, true);
    CheckItem(dialog, IDC_BARCODE1D_GS1_COMPOSITE, false);
    EnableCompositeRow(dialog);
    SelectItem(dialog, IDC_BARCODE1D_FONT, 0);
    if (record != nullptr) {
        ShowFont(dialog, record->Barcode1D[0]);
    }
    EnablePrint(dialog, IDC_BARCODE1D_DATA, IDC_BARCODE1D_PRINT);
    AttachHelp(dialog, Barcode1DPageHelp(), Barcode1DHelpProc);
}

void PagePainted(HWND dialog) {
    ReloadTexts(dialog, Barcode1DPageTexts(), Barcode1DPageHelp());
    ApplyLists(dialog);
}

void HeightChanged(HWND dialog, BarcodeFont1D& font) {
    ShowFontHeight(dialog, UpdateFontHeight(font));
    MarkChanged(dialog);
}

void TypeChosen(HWND dialog, BarcodeFont1D& font) {
    font.bType = static_cast<std::uint8_t>(SelectedItem(dialog, IDC_BARCODE1D_TYPE, font.bType));
    ShowType(dialog, font);
    MarkChanged(dialog);
}

// Also called when the page fills a box: one that shows what the record holds tells nothing new.
void NumberTyped(HWND dialog, const NumberRow& row, BarcodeFont1D& font) {
    const std::uint32_t typed = TypedNumber(dialog, row.controls);
    if (typed == NumberShown(font, row.number)) {
        return;
    }
    ShowStoredNumber(dialog, row.controls, StoreNumber(font, row.number, typed));
    if (row.number == Number1D::kElementHeight) {
        HeightChanged(dialog, font);
    } else {
        MarkChanged(dialog);
    }
}

void HriPositionChosen(HWND dialog, BarcodeFont1D& font) {
    TakeItem(dialog, kHriPositions, font);
    EnableHriFont(dialog, font);
    HeightChanged(dialog, font);
}

void PrintTest(HWND dialog, const DocumentSheetContext& context, const BarcodeFont1D& font) {
    TRACE_VERBOSE(L"UI:  barcode() entry!\r\n");
    std::vector<std::uint8_t> data = TestData(dialog, IDC_BARCODE1D_DATA);
    if (!AcceptsTestData(font, data)) {
        ShowMessage(dialog, Message::kBarcode1D, MessageTitle::kError, MessageIcon::kNone);
        return;
    }
    SendTestPrint(context, kBarcodeJob, TestPrint(font, data));
}

INT_PTR ControlUsed(HWND dialog, const DocumentSheetContext& context, OEMDEV& record, int control,
                    int notification) {
    BarcodeFont1D& font = SelectedFont(dialog, record);
    if (notification == EN_CHANGE) {
        for (const NumberRow& row : kNumbers) {
            if (row.controls.edit == control) {
                NumberTyped(dialog, row, font);
                return TRUE;
            }
        }
    }
    const bool isChosen = notification == CBN_SELCHANGE;
    const bool isClicked = notification == BN_CLICKED;
    for (const FontList<BarcodeFont1D>& row : kGs1Lists) {
        if (row.list == control) {
            if (isChosen) {
                TakeItem(dialog, row, font);
                MarkChanged(dialog);
            }
            return TRUE;
        }
    }
    switch (control) {
        case IDC_BARCODE1D_FONT:
            if (isChosen) {
                ShowFont(dialog, font);
            }
            return TRUE;
        case IDC_BARCODE1D_TYPE:
            if (isChosen) {
                TypeChosen(dialog, font);
            }
            return TRUE;
        case IDC_BARCODE1D_HRI_POSITION:
            if (isChosen) {
                HriPositionChosen(dialog, font);
            }
            return TRUE;
        case IDC_BARCODE1D_HRI_FONT_A:
        case IDC_BARCODE1D_HRI_FONT_B:
            if (isClicked) {
                font.bHriFont = control == IDC_BARCODE1D_HRI_FONT_B ? 1 : 0;
                HeightChanged(dialog, font);
            }
            return TRUE;
        case IDC_BARCODE1D_GS1_INDEPENDENT:
        case IDC_BARCODE1D_GS1_COMPOSITE:
            if (isClicked) {
                EnableCompositeRow(dialog);
            }
            return TRUE;
        case IDC_BARCODE1D_DATA:
            if (notification == EN_CHANGE) {
                EnablePrint(dialog, IDC_BARCODE1D_DATA, IDC_BARCODE1D_PRINT);
            }
            return TRUE;
        case IDC_BARCODE1D_PRINT:
            if (isClicked) {
                PrintTest(dialog, context, font);
            }
            return TRUE;
        default:
            return FALSE;
    }
}

void PageApplied(HWND dialog, const DocumentSheetContext& context, OEMDEV* record) {
    if (record != nullptr) {
        ShowFontHeight(dialog, TextsOfFontHeight(SelectedFont(dialog, *record).dwFontHeight));
    }
    ReportTestPageApplied(dialog, context);
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* context = PageContext<DocumentSheetContext>(
        dialog, message, lParam, L"ERROR UI:  BarcodePropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    if (context == nullptr) {
        return FALSE;
    }
    OEMDEV* const record = context->Record();
    switch (message) {
        case WM_INITDIALOG:
            if (!HasItems(dialog, IDC_BARCODE1D_FONT)) {
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
            return AnswerSheet(dialog, lParam, [&] { PageApplied(dialog, *context, record); });
        default:
            return PassOn(dialog, message, wParam, lParam);
    }
}

constinit TextTable gTexts(L"1DCODE", kBarcode1DPageTexts);
constinit TextTable gHelp(L"1DCODE", kBarcode1DPageHelp);

}  // namespace

TextTable& Barcode1DPageTexts() noexcept {
    return gTexts;
}

TextTable& Barcode1DPageHelp() noexcept {
    return gHelp;
}

INT_PTR CALLBACK BarcodePropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
