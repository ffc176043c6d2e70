// The Water Mark page edits the watermark in the record: none, a bitmap file, or a text with font and angle,
// each with position, size and brightness. Either kind prints as image, which the Main page shows when it
// comes to the front. Every change is drawn at once in the preview.
#include "docpages/water_mark_page.h"

#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "base/platform.h"
#include "docpages/bitmap_24_file.h"
#include "docpages/layout_rules.h"
#include "docpages/water_mark_layout.h"
#include "docpages/water_mark_preview.h"
#include "intrface/win/gdi.h"
#include "intrface/win/help_tips.h"
#include "intrface/win/open_file.h"
#include "intrface/win/page.h"
#include "intrface/win/property_sheet.h"
#include "intrface/win/sheet_context.h"
#include "language/messages.h"

namespace {

// Units of the record's field, terminator included.
constexpr std::size_t kFileLength = std::size(OEMDEV{}.WaterMarkPicName);

constexpr int kTextLimit = 16;
constexpr int kTypedTextLength = 39;
constexpr int kFontSizeDigits = 2;

// The last of the notifications of a slider that move it.
constexpr WORD kLastSliderCode = TB_BOTTOM;

// What the text list offers, the same in every language.
constexpr std::wstring_view kPresetTexts[] = {L"CONFIDENTIAL", L"DO NOT COPY", L"TOP SECRET", L"DRAFT",
                                              L"PROOF",        L"FINAL",       L"COPY",       L"FILE COPY"};

struct Slider {
    int control;
    int value;  // where the position shows as a number
    int maximum;
};
constexpr Slider kAngleSlider = {IDC_WATERMARK_ANGLE, IDC_WATERMARK_ANGLE_VALUE, kMaxAngle};
constexpr Slider kSizeSlider = {IDC_WATERMARK_SIZE, IDC_WATERMARK_SIZE_VALUE, kMaxWaterMarkSize};
constexpr Slider kBrightnessSlider = {IDC_WATERMARK_BRIGHTNESS, IDC_WATERMARK_BRIGHTNESS_VALUE, 255};

constexpr int kImageControls[] = {IDC_WATERMARK_FILE, IDC_WATERMARK_BROWSE};
constexpr int kTextControls[] = {IDC_WATERMARK_TEXT,      IDC_WATERMARK_FONT,           IDC_WATERMARK_STYLE,
                                 IDC_WATERMARK_FONT_SIZE, IDC_WATERMARK_FONT_SIZE_SPIN, IDC_WATERMARK_ANGLE};
constexpr int kPlacementControls[] = {IDC_WATERMARK_POSITION, IDC_WATERMARK_SIZE, IDC_WATERMARK_BRIGHTNESS};

// What an open page keeps beside its controls: the record's state is what they show once it is there.
struct PageState {
    WaterMarkPreview preview;
    // The user has just chosen a bitmap, so its faults are said. A repaint for any other reason is silent:
    // the box would come again with every one of them.
    bool tellsFault = false;
};

constexpr wchar_t kStateProperty[] = L"KVMR72.WaterMark";

// Null until the page is filled: what its controls report before that is no user's doing.
PageState* StateOf(HWND dialog) noexcept {
    return static_cast<PageState*>(GetPropW(dialog, kStateProperty));
}

// FALSE once the page went while a box was open over it, and the host's record with it.
bool IsOpen(HWND dialog) noexcept {
    return StateOf(dialog) != nullptr;
}

LRESULT CALLBACK WaterMarkHelpProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleHelp(WaterMarkPageHelp(), control, message, wParam, lParam);
}

void EnableForKind(HWND dialog, std::uint8_t kind) {
    const WaterMarkControls uses = ControlsOfWaterMark(kind);
    for (const int control : kImageControls) {
        EnableItem(dialog, control, uses.image);
    }
    for (const int control : kTextControls) {
        EnableItem(dialog, control, uses.text);
    }
    for (const int control : kPlacementControls) {
        EnableItem(dialog, control, uses.placement);
    }
}

int SliderPosition(HWND dialog, const Slider& slider) {
    return static_cast<int>(SendDlgItemMessageW(dialog, slider.control, TBM_GETPOS, 0, 0));
}

void ShowSlider(HWND dialog, const Slider& slider, int position) {
    if (SliderPosition(dialog, slider) != position) {
        SendDlgItemMessageW(dialog, slider.control, TBM_SETPOS, TRUE, position);
    }
    SetDlgItemInt(dialog, slider.value, static_cast<UINT>(SliderPosition(dialog, slider)), FALSE);
}

void OpenSlider(HWND dialog, const Slider& slider, int position) {
    SendDlgItemMessageW(dialog, slider.control, TBM_SETRANGEMIN, FALSE, 0);
    SendDlgItemMessageW(dialog, slider.control, TBM_SETRANGEMAX, FALSE, slider.maximum);
    ShowSlider(dialog, slider, position);
}

void ListTextsToPrint(HWND dialog, const OEMDEV& record) {
    for (const std::wstring_view text : kPresetTexts) {
        AddItem(dialog, IDC_WATERMARK_TEXT, text.data());
    }
    SendDlgItemMessageW(dialog, IDC_WATERMARK_TEXT, CB_LIMITTEXT, kTextLimit, 0);
    const std::wstring stored(FieldText(record.szWaterMarkText));
    // Exactly so: the list's own search would take "Draft" for "DRAFT".
    const auto preset = std::ranges::find(kPresetTexts, std::wstring_view(stored));
    if (stored.empty()) {
        SelectItem(dialog, IDC_WATERMARK_TEXT, 0);
    } else if (preset != std::end(kPresetTexts)) {
        SelectItem(dialog, IDC_WATERMARK_TEXT, static_cast<int>(preset - std::begin(kPresetTexts)));
    } else {
        SetDlgItemTextW(dialog, IDC_WATERMARK_TEXT, stored.c_str());
    }
}

// As a person looks for a name in a list.
struct ByName {
    bool operator()(const std::wstring& left, const std::wstring& right) const noexcept {
        return lstrcmpiW(left.c_str(), right.c_str()) < 0;
    }
};
using Faces = std::set<std::wstring, ByName>;

// Called for each face and each of its character sets.
int CALLBACK FaceFound(const LOGFONTW* font, const TEXTMETRICW*, DWORD type, LPARAM faces) {
    if ((type & TRUETYPE_FONTTYPE) == 0) {
        return 1;
    }
    try {
        reinterpret_cast<Faces*>(faces)->emplace(font->lfFaceName);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

// Each face once; those for vertical text, which begin with '@', behind the others.
void ListFonts(HWND dialog, const OEMDEV& record) {
    Faces faces;
    const WindowDc dc(dialog);
    LOGFONTW all{};
    all.lfCharSet = DEFAULT_CHARSET;
    EnumFontFamiliesExW(dc.Get(), &all, FaceFound, reinterpret_cast<LPARAM>(&faces), 0);
    // The open list is as wide as the longest name: the system's may be longer than the closed one.
    const Selection withFont(dc.Get(), reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0)));
    LONG widest = 0;
    for (const bool vertical : {false, true}) {
        for (const std::wstring& face : faces) {
            SIZE extent{};
            if (face.starts_with(L'@') == vertical) {
                AddItem(dialog, IDC_WATERMARK_FONT, face.c_str());
                GetTextExtentPoint32W(dc.Get(), face.c_str(), static_cast<int>(face.size()), &extent);
            }
            widest = std::max(widest, extent.cx);
        }
    }
    widest += GetSystemMetrics(SM_CXVSCROLL) + 4 * GetSystemMetrics(SM_CXEDGE);
    SendDlgItemMessageW(dialog, IDC_WATERMARK_FONT, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(widest), 0);
    SelectItem(dialog, IDC_WATERMARK_FONT, 0);
    const std::wstring stored(FieldText(record.szWaterMarkFont));
    const LRESULT index =
        SendDlgItemMessageW(dialog, IDC_WATERMARK_FONT, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                            reinterpret_cast<LPARAM>(stored.c_str()));
    if (index != CB_ERR) {
        SelectItem(dialog, IDC_WATERMARK_FONT, static_cast<int>(index));
    }
}

void ApplyLists(HWND dialog) {
    WaterMarkPageTexts().ApplyToList(GetDlgItem(dialog, IDC_WATERMARK_STYLE), kFontStyleList);
    WaterMarkPageTexts().ApplyToList(GetDlgItem(dialog, IDC_WATERMARK_POSITION), kPositionList);
}

void ShowRecord(HWND dialog, const OEMDEV& record) {
    // Unchecking takes a button out of TAB's way: of a kind that is not in the list none would be left.
    if (record.iWaterMarkType <= kTextWaterMark) {
        CheckItem(dialog, IDC_WATERMARK_USE_NONE, record.iWaterMarkType == kNoWaterMark);
        CheckItem(dialog, IDC_WATERMARK_USE_IMAGE, record.iWaterMarkType == kImageWaterMark);
        CheckItem(dialog, IDC_WATERMARK_USE_TEXT, record.iWaterMarkType == kTextWaterMark);
    }
    EnableForKind(dialog, record.iWaterMarkType);
    SendDlgItemMessageW(dialog, IDC_WATERMARK_FILE, EM_SETREADONLY, TRUE, 0);
    ShowField(dialog, IDC_WATERMARK_FILE, record.WaterMarkPicName);
    ListTextsToPrint(dialog, record);
    ListFonts(dialog, record);
    SelectItem(dialog, IDC_WATERMARK_STYLE, record.iWaterMarkFontStyle);
    SendDlgItemMessageW(dialog, IDC_WATERMARK_FONT_SIZE, EM_LIMITTEXT, kFontSizeDigits, 0);
    SendDlgItemMessageW(dialog, IDC_WATERMARK_FONT_SIZE_SPIN, UDM_SETRANGE32, kMinFontSize, kMaxFontSize);
    SendDlgItemMessageW(dialog, IDC_WATERMARK_FONT_SIZE_SPIN, UDM_SETPOS32, 0, record.iWaterMarkFontSize);
    OpenSlider(dialog, kAngleSlider, record.iWaterMarkAngle);
    OpenSlider(dialog, kSizeSlider, record.iWaterMarkSize);
    OpenSlider(dialog, kBrightnessSlider, record.iWaterMarkBrightness);
    SelectItem(dialog, IDC_WATERMARK_POSITION, record.iWaterMarkPosition);
}

void PageOpened(HWND dialog, const OEMDEV* record) {
    TRACE_VERBOSE(L"UI:  Initialize Water Mark callback function\r\n");
    WaterMarkPageTexts().ApplyTo(dialog);
    ApplyLists(dialog);
    for (const int radio : {IDC_WATERMARK_USE_NONE, IDC_WATERMARK_USE_IMAGE, IDC_WATERMARK_USE_TEXT}) {
        SetClickedByUserOnly(dialog, radio);
    }
    if (record != nullptr) {
        TRACE_VERBOSE(L"UI:  Initialize Water Mark callback function pOEMDev->WaterMarkPicName = %s\r\n",
                      std::wstring(FieldText(record->WaterMarkPicName)).c_str());
        TRACE_VERBOSE(L"UI:  Initialize Water Mark callback function pOEMDev->iWaterMarkType = %d\r\n",
                      record->iWaterMarkType);
        ShowRecord(dialog, *record);
        auto state = std::make_unique<PageState>();
        if (SetPropW(dialog, kStateProperty, state.get())) {
            static_cast<void>(state.release());
        }
    }
    AttachHelp(dialog, WaterMarkPageHelp(), WaterMarkHelpProc);
}

std::wstring TypedText(HWND dialog) {
    wchar_t text[kTypedTextLength + 1] = {};
    GetDlgItemTextW(dialog, IDC_WATERMARK_TEXT, text, kTypedTextLength + 1);
    return text;
}

// What the lists show stands for a text or face that the record does not have yet.
WaterMark ShownWaterMark(HWND dialog, const OEMDEV& record) {
    WaterMark mark = {};
    mark.kind = record.iWaterMarkType;
    mark.position = record.iWaterMarkPosition;
    mark.size = record.iWaterMarkSize;
    mark.brightness = record.iWaterMarkBrightness;
    if (mark.kind == kImageWaterMark) {
        mark.file = FieldText(record.WaterMarkPicName);
    } else if (mark.kind == kTextWaterMark) {
        mark.text = FieldText(record.szWaterMarkText);
        if (mark.text.empty()) {
            mark.text = TypedText(dialog);
        }
        mark.face = FieldText(record.szWaterMarkFont);
        if (mark.face.empty()) {
            mark.face = SelectedText(dialog, IDC_WATERMARK_FONT);
        }
        mark.fontSize = record.iWaterMarkFontSize;
        mark.style = record.iWaterMarkFontStyle;
        mark.angle = record.iWaterMarkAngle;
    }
    return mark;
}

Message MessageOf(PictureFault fault) {
    switch (fault) {
        case PictureFault::kDenied:
            return Message::kWaterMarkDenied;
        case PictureFault::kTooBig:
            return Message::kWaterMarkTooBig;
        case PictureFault::kMissing:
        case PictureFault::kSilent:
            break;
    }
    return Message::kWaterMarkMissing;
}

// Gives what is to be said of the picture.
std::optional<PictureFault> DrawPreview(HWND dialog, HDC frame, const OEMDEV& record) {
    PageState* const state = StateOf(dialog);
    if (state == nullptr) {
        return std::nullopt;
    }
    RECT area{};
    GetClientRect(GetDlgItem(dialog, IDC_WATERMARK_PREVIEW), &area);
    return state->preview.Draw(frame, {area.right, area.bottom}, ShownWaterMark(dialog, record));
}

void PagePainted(HWND dialog, const OEMDEV* record) {
    ReloadTexts(dialog, WaterMarkPageTexts(), WaterMarkPageHelp());
    ApplyLists(dialog);
    PAINTSTRUCT paint{};
    BeginPaint(dialog, &paint);
    EndPaint(dialog, &paint);
    if (record == nullptr) {
        return;
    }
    std::optional<PictureFault> fault;
    if (const WindowDc frame(GetDlgItem(dialog, IDC_WATERMARK_PREVIEW)); frame) {
        fault = DrawPreview(dialog, frame.Get(), *record);
    }
    PageState* const state = StateOf(dialog);
    if (state != nullptr && std::exchange(state->tellsFault, false) && fault &&
        *fault != PictureFault::kSilent) {
        ShowMessage(dialog, MessageOf(*fault), MessageTitle::kError, MessageIcon::kOfTitle);
    }
}

void RepaintPreview(HWND dialog) {
    SendMessageW(dialog, WM_PAINT, 0, 0);
}

void RepaintAndMark(HWND dialog) {
    RepaintPreview(dialog);
    MarkChanged(dialog);
}

// Has the picture read anew, and said what is wrong with it. Who has not chosen one yet need not be told that
// there is none.
void BitmapChanged(HWND dialog, const OEMDEV& record) noexcept {
    if (PageState* const state = StateOf(dialog); state != nullptr) {
        state->preview.MarkBitmapChanged();
        state->tellsFault = record.WaterMarkPicName[0] != L'\0';
    }
}

void KindChosen(HWND dialog, DocumentSheetContext& context, OEMDEV& record, LayoutAction action) {
    const LayoutAnswer answer = FollowLayoutAction(record, context.waterMarkRemoved, action);
    EnableForKind(dialog, record.iWaterMarkType);
    if (answer.showsInformation) {
        ShowMessage(dialog, Message::kWaterMarkAsImage, MessageTitle::kInformation, MessageIcon::kOfTitle);
    }
    if (!IsOpen(dialog)) {
        return;
    }
    if (action != LayoutAction::kNoWaterMarkChosen) {
        BitmapChanged(dialog, record);
    }
    RepaintAndMark(dialog);
}

void TakeText(HWND dialog, OEMDEV& record) {
    const bool isSelected = SelectedItem(dialog, IDC_WATERMARK_TEXT, -1) >= 0;
    CopyText(record.szWaterMarkText,
             isSelected ? SelectedText(dialog, IDC_WATERMARK_TEXT) : TypedText(dialog));
}

void TakeFont(HWND dialog, OEMDEV& record) {
    if (SelectedItem(dialog, IDC_WATERMARK_FONT, -1) >= 0) {
        CopyText(record.szWaterMarkFont, SelectedText(dialog, IDC_WATERMARK_FONT));
    }
}

// A stored value that a list does not have shows as no selection, and stays unless another is chosen.
void TakeSelection(HWND dialog, int list, std::uint8_t& field) {
    field = static_cast<std::uint8_t>(SelectedItem(dialog, list, field));
}

void PositionChosen(HWND dialog, OEMDEV& record) {
    TakeSelection(dialog, IDC_WATERMARK_POSITION, record.iWaterMarkPosition);
    const std::uint8_t size = SizeAtPosition(record.iWaterMarkPosition, record.iWaterMarkSize);
    if (size != record.iWaterMarkSize) {
        record.iWaterMarkSize = size;
        ShowSlider(dialog, kSizeSlider, size);
    }
}

std::int32_t TypedFontSize(HWND dialog) {
    return static_cast<std::int32_t>(GetDlgItemInt(dialog, IDC_WATERMARK_FONT_SIZE, nullptr, FALSE));
}

// Stores a font size, and shows it when it is not what was typed.
void TakeFontSize(HWND dialog, OEMDEV& record, std::uint8_t size) {
    if (size != TypedFontSize(dialog)) {
        SendDlgItemMessageW(dialog, IDC_WATERMARK_FONT_SIZE_SPIN, UDM_SETPOS32, 0, size);
        SendDlgItemMessageW(dialog, IDC_WATERMARK_FONT_SIZE, EM_SETSEL, 0x7FFF, 0x7FFF);
    }
    record.iWaterMarkFontSize = size;
}

void SlidersMoved(HWND dialog, OEMDEV& record) {
    record.iWaterMarkAngle = SliderPosition(dialog, kAngleSlider);
    ShowSlider(dialog, kAngleSlider, record.iWaterMarkAngle);
    record.iWaterMarkSize = SizeAtPosition(record.iWaterMarkPosition,
                                           static_cast<std::uint8_t>(SliderPosition(dialog, kSizeSlider)));
    ShowSlider(dialog, kSizeSlider, record.iWaterMarkSize);
    record.iWaterMarkBrightness = static_cast<std::uint8_t>(SliderPosition(dialog, kBrightnessSlider));
    ShowSlider(dialog, kBrightnessSlider, record.iWaterMarkBrightness);
    MarkChanged(dialog);
    RepaintPreview(dialog);
}

void TellError(HWND dialog, Message message) {
    ShowMessage(dialog, message, MessageTitle::kError, MessageIcon::kOfTitle);
}

void BrowseClicked(HWND dialog, OEMDEV& record) {
    std::wstring chosen;
    wchar_t copy[kPathLength];
    if (!AskForFile(dialog, nullptr, L"*.bmp\0*.bmp\0", chosen) || !IsOpen(dialog)) {
        return;
    }
    if (chosen.size() >= kFileLength) {
        TellError(dialog, Message::kPathTooLong);
        return;
    }
    const bool hasCopy = WaterMarkPreview::CopiedImagePath(copy);
    const BitmapFileResult result =
        hasCopy ? ChangeTo24Bitmap(chosen.c_str(), copy) : BitmapFileResult::kCannotCreate;
    if (result != BitmapFileResult::kConverted) {
        TellError(dialog, result == BitmapFileResult::kCannotCreate ? Message::kWaterMarkDenied
                                                                    : Message::kWaterMarkDepth);
        return;
    }
    SetDlgItemTextW(dialog, IDC_WATERMARK_FILE, chosen.c_str());
    wchar_t shown[kFileLength] = {};
    GetDlgItemTextW(dialog, IDC_WATERMARK_FILE, shown, static_cast<int>(std::size(shown)));
    if (shown[0] == L'\0') {
        TellError(dialog, Message::kWaterMarkNoName);
        return;
    }
    CopyText(record.WaterMarkPicName, shown);
    BitmapChanged(dialog, record);
    RepaintAndMark(dialog);
}

INT_PTR ControlUsed(HWND dialog, DocumentSheetContext& context, OEMDEV& record, int control,
                    int notification) {
    const auto choose = [&](LayoutAction action) {
        if (notification == BN_CLICKED) {
            KindChosen(dialog, context, record, action);
        }
    };
    switch (control) {
        case IDC_WATERMARK_USE_NONE:
            choose(LayoutAction::kNoWaterMarkChosen);
            return TRUE;
        case IDC_WATERMARK_USE_IMAGE:
            choose(LayoutAction::kImageWaterMarkChosen);
            return TRUE;
        case IDC_WATERMARK_USE_TEXT:
            choose(LayoutAction::kTextWaterMarkChosen);
            return TRUE;
        case IDC_WATERMARK_TEXT:
            if (notification == CBN_SELCHANGE) {
                TakeText(dialog, record);
                RepaintAndMark(dialog);
            } else if (notification == CBN_EDITCHANGE) {
                // The list drops its selection only after it has told of the typing.
                CopyText(record.szWaterMarkText, TypedText(dialog));
                RepaintAndMark(dialog);
            }
            return TRUE;
        case IDC_WATERMARK_FONT:
            if (notification == CBN_SELENDOK) {
                TakeFont(dialog, record);
                RepaintAndMark(dialog);
            }
            return TRUE;
        case IDC_WATERMARK_STYLE:
            if (notification == CBN_SELENDOK) {
                TakeSelection(dialog, IDC_WATERMARK_STYLE, record.iWaterMarkFontStyle);
                RepaintAndMark(dialog);
            }
            return TRUE;
        case IDC_WATERMARK_POSITION:
            if (notification == CBN_SELENDOK) {
                PositionChosen(dialog, record);
                RepaintAndMark(dialog);
            }
            return TRUE;
        case IDC_WATERMARK_FONT_SIZE:
            if (notification == EN_CHANGE) {
                TakeFontSize(dialog, record, ClampTypedFontSize(TypedFontSize(dialog)));
                RepaintAndMark(dialog);
            } else if (notification == EN_KILLFOCUS) {
                TakeFontSize(dialog, record, ClampFontSize(TypedFontSize(dialog)));
                RepaintAndMark(dialog);
            }
            return TRUE;
        case IDC_WATERMARK_FONT_SIZE_SPIN:
            TakeFontSize(dialog, record, ClampTypedFontSize(TypedFontSize(dialog)));
            RepaintAndMark(dialog);
            return TRUE;
        case IDC_WATERMARK_BROWSE:
            if (notification == BN_CLICKED) {
                BrowseClicked(dialog, record);
            }
            return TRUE;
        default:
            return FALSE;
    }
}

// A page whose record names no kind that it has keeps it, like every field that its controls do not show.
void TakeKind(HWND dialog, DocumentSheetContext& context, OEMDEV& record) {
    struct KindRadio {
        int control;
        LayoutAction action;
    };
    constexpr KindRadio kRadios[] = {
        {IDC_WATERMARK_USE_NONE, LayoutAction::kAppliedWithoutWaterMark},
        {IDC_WATERMARK_USE_IMAGE, LayoutAction::kAppliedWithImageWaterMark},
        {IDC_WATERMARK_USE_TEXT, LayoutAction::kAppliedWithTextWaterMark},
    };
    for (const KindRadio& radio : kRadios) {
        if (IsItemChecked(dialog, radio.control)) {
            FollowLayoutAction(record, context.waterMarkRemoved, radio.action);
        }
    }
}

void TakeAll(HWND dialog, DocumentSheetContext& context, OEMDEV& record) {
    TakeKind(dialog, context, record);
    TakeSelection(dialog, IDC_WATERMARK_POSITION, record.iWaterMarkPosition);
    record.iWaterMarkSize = static_cast<std::uint8_t>(SliderPosition(dialog, kSizeSlider));
    record.iWaterMarkBrightness = static_cast<std::uint8_t>(SliderPosition(dialog, kBrightnessSlider));
    record.iWaterMarkFontSize = ClampTypedFontSize(TypedFontSize(dialog));
    record.iWaterMarkAngle = SliderPosition(dialog, kAngleSlider);
    TakeSelection(dialog, IDC_WATERMARK_STYLE, record.iWaterMarkFontStyle);
    if (record.iWaterMarkType == kImageWaterMark) {
        wchar_t file[kFileLength] = {};
        GetDlgItemTextW(dialog, IDC_WATERMARK_FILE, file, static_cast<int>(std::size(file)));
        CopyText(record.WaterMarkPicName, file);
    } else if (record.iWaterMarkType == kTextWaterMark) {
        TakeText(dialog, record);
        TakeFont(dialog, record);
        WaterMarkPreview::SaveText(ShownWaterMark(dialog, record));
    }
}

void PageApplied(HWND dialog, DocumentSheetContext& context) {
    if (OEMDEV* const record = context.Record(); record != nullptr && IsOpen(dialog)) {
        TakeAll(dialog, context, *record);
    }
    ReportApplied(context.pfnComPropSheet, context.hComPropSheet,
                  context.PageHandle(DocumentPage::kWaterMark), dialog);
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCDESTROY) {
        const std::unique_ptr<PageState> state(static_cast<PageState*>(RemovePropW(dialog, kStateProperty)));
        return FALSE;
    }
    auto* const context = PageContext<DocumentSheetContext>(
        dialog, message, lParam, L"ERROR UI:  WaterMarkPropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    if (context == nullptr) {
        return FALSE;
    }
    OEMDEV* const record = context->Record();
    const bool isOpen = IsOpen(dialog);
    switch (message) {
        case WM_INITDIALOG:
            if (!isOpen) {
                PageOpened(dialog, record);
            }
            return FALSE;
        case WM_PAINT:
            PagePainted(dialog, record);
            return TRUE;
        case WM_DRAWITEM:
            // The frame paints itself after the page has: the picture comes again on top.
            if (record != nullptr && lParam != 0 && wParam == IDC_WATERMARK_PREVIEW) {
                DrawPreview(dialog, reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)->hDC, *record);
            }
            return TRUE;
        case WM_HSCROLL:
            if (record != nullptr && isOpen && LOWORD(wParam) <= kLastSliderCode) {
                SlidersMoved(dialog, *record);
            }
            return TRUE;
        case WM_COMMAND:
            return record != nullptr && isOpen
                       ? ControlUsed(dialog, *context, *record, LOWORD(wParam), HIWORD(wParam))
                       : FALSE;
        case WM_NOTIFY:
            return AnswerSheet(dialog, lParam, [&] { PageApplied(dialog, *context); });
        default:
            return PassOn(dialog, message, wParam, lParam);
    }
}

constinit TextTable gTexts(L"WATERMARK", kWaterMarkPageTexts);
constinit TextTable gHelp(L"WATERMARK", kWaterMarkPageHelp);

}  // namespace

TextTable& WaterMarkPageTexts() noexcept {
    return gTexts;
}

TextTable& WaterMarkPageHelp() noexcept {
    return gHelp;
}

INT_PTR CALLBACK WaterMarkPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
