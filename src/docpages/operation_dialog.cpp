// The Operation settings dialog records, for one moment of a job, a user command, drawer or herald, buzzer,
// feed, cut and logo as list indices and numbers; the rendering side turns them into printer commands. A
// picture shows the paper's end that results. The edit buffer changes only on OK.
#include "docpages/operation_dialog.h"

#include <windows.h>

#include <commctrl.h>

#include <algorithm>

#include "base/platform.h"
#include "docpages/operation_dialog_texts.h"
#include "docpages/operation_preview.h"
#include "intrface/win/help_tips.h"
#include "intrface/win/hex_key_filter.h"
#include "intrface/win/module.h"
#include "intrface/win/page.h"
#include "language/messages.h"
#include "language/text_lookup.h"
#include "printer/hex_command.h"
#include "resources/resource.h"

namespace {

// What the command box is read for, and room for what that stands for at most.
constexpr int kCommandTextLength = 399;
constexpr std::size_t kParsedCommandSize = 500;

constexpr int kNumberDigits = 3;

// Default list entries.
constexpr int kNoDrawer = 0;
constexpr int kBothDrawersLongestPulse = 12;
constexpr int kNoCut = 0;
constexpr int kPartialCut = 1;

struct DialogList {
    int control;
    ListTexts texts;
    std::uint8_t OperationSettings::*selection;
};

constexpr DialogList kLists[] = {
    {IDC_OPERATION_DRAWER, kDrawerList, &OperationSettings::cashDrawer},
    {IDC_OPERATION_HERALD, kHeraldList, &OperationSettings::herald},
    {IDC_OPERATION_CUT, kCutList, &OperationSettings::cutPaper},
    {IDC_OPERATION_BUZZER, kBuzzerList, &OperationSettings::buzzer},
    {IDC_OPERATION_LOGO, kLogoList, &OperationSettings::logo},
};

struct DialogNumber {
    int edit;
    int spin;
    std::uint8_t maximum;
    std::uint8_t OperationSettings::*value;
};

constexpr DialogNumber kFeedNumber = {IDC_OPERATION_FEED, IDC_OPERATION_FEED_SPIN, kMaxFeed,
                                      &OperationSettings::feed};
constexpr DialogNumber kVolumeNumber = {IDC_OPERATION_VOLUME, IDC_OPERATION_VOLUME_SPIN, kMaxBuzzerVolume,
                                        &OperationSettings::buzzerVolume};

constexpr int kAlignments[] = {IDC_OPERATION_ALIGN_LEFT, IDC_OPERATION_ALIGN_CENTERED,
                               IDC_OPERATION_ALIGN_RIGHT};
constexpr int kLogoRadios[] = {IDC_OPERATION_ALIGN_LEFT, IDC_OPERATION_ALIGN_CENTERED,
                               IDC_OPERATION_ALIGN_RIGHT, IDC_OPERATION_BEFORE_CUT, IDC_OPERATION_AFTER_CUT};

// What the dialog edits, kept in it while it is open.
OperationEditBuffer& BufferOf(HWND dialog) {
    return *reinterpret_cast<OperationEditBuffer*>(GetWindowLongPtrW(dialog, DWLP_USER));
}

LRESULT CALLBACK OperationHelpProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleHelp(OperationDialogHelp(), control, message, wParam, lParam);
}

// A list's choice. A stored value that the list does not have shows as no selection, and stays unless another
// is chosen.
int ChosenItem(HWND dialog, int list, std::uint8_t OperationSettings::*stored) {
    return SelectedItem(dialog, list, BufferOf(dialog).settings.*stored);
}

void EnableForBuzzer(HWND dialog) {
    const bool on = ChosenItem(dialog, IDC_OPERATION_BUZZER, &OperationSettings::buzzer) != 0;
    EnableItem(dialog, IDC_OPERATION_VOLUME, on);
    EnableItem(dialog, IDC_OPERATION_VOLUME_SPIN, on);
}

void EnableForLogo(HWND dialog) {
    const bool logo = ChosenItem(dialog, IDC_OPERATION_LOGO, &OperationSettings::logo) != 0;
    for (const int radio : kLogoRadios) {
        EnableItem(dialog, radio, logo);
    }
}

void ChooseDrawerOrHerald(HWND dialog, bool herald) {
    CheckRadioButton(dialog, IDC_OPERATION_OPEN_DRAWER, IDC_OPERATION_USE_HERALD,
                     herald ? IDC_OPERATION_USE_HERALD : IDC_OPERATION_OPEN_DRAWER);
    EnableItem(dialog, IDC_OPERATION_DRAWER, !herald);
    EnableItem(dialog, IDC_OPERATION_HERALD, herald);
}

void ShowCommand(HWND dialog, const OperationSettings& settings) {
    String16 text;
    FormatHexCommand(text, std::span(settings.command).first(settings.commandLength));
    TRACE_VERBOSE(L"UI:  OperationDlgProc str=%ws\r\n", text.c_str());
    SetDlgItemTextW(dialog, IDC_OPERATION_COMMAND, text.c_str());
    // What is not read must not be typed.
    SendDlgItemMessageW(dialog, IDC_OPERATION_COMMAND, EM_LIMITTEXT, kCommandTextLength, 0);
}

void FillLists(HWND dialog, const OperationSettings& settings) {
    for (const DialogList& list : kLists) {
        for (std::size_t i = 0; i < list.texts.count; ++i) {
            AddItem(dialog, list.control, OperationDialogTexts()[list.texts.first + i]);
        }
        SelectItem(dialog, list.control, settings.*list.selection);
    }
}

void ShowNumber(HWND dialog, const OperationSettings& settings, const DialogNumber& number) {
    SendDlgItemMessageW(dialog, number.edit, EM_LIMITTEXT, kNumberDigits, 0);
    SendDlgItemMessageW(dialog, number.spin, UDM_SETRANGE32, 0, number.maximum);
    SendDlgItemMessageW(dialog, number.spin, UDM_SETPOS32, 0, settings.*number.value);
}

void DialogOpened(HWND dialog) {
    const OperationSettings& settings = BufferOf(dialog).settings;
    RefreshLanguageFile();
    OperationDialogTexts().LoadIfChanged();
    OperationDialogHelp().LoadIfChanged();
    InstallHexKeyFilter(GetDlgItem(dialog, IDC_OPERATION_COMMAND));
    ShowCommand(dialog, settings);
    SetWindowTextW(dialog, OperationDialogTexts()[static_cast<std::size_t>(BufferOf(dialog).moment)]);
    OperationDialogTexts().ApplyTo(dialog);
    CheckItem(dialog, IDC_OPERATION_SEND_COMMAND, settings.sendCommand == 1);
    EnableItem(dialog, IDC_OPERATION_COMMAND, settings.sendCommand == 1);
    CheckItem(dialog, IDC_OPERATION_FEED_TO_POSITION, settings.feedToPosition == 1);
    FillLists(dialog, settings);
    ShowNumber(dialog, settings, kFeedNumber);
    ShowNumber(dialog, settings, kVolumeNumber);
    EnableForBuzzer(dialog);
    ChooseDrawerOrHerald(dialog, settings.drawerOrHerald != kOpenDrawer);
    if (settings.logoAlign < std::size(kAlignments)) {
        CheckRadioButton(dialog, IDC_OPERATION_ALIGN_LEFT, IDC_OPERATION_ALIGN_RIGHT,
                         kAlignments[settings.logoAlign]);
    }
    CheckRadioButton(dialog, IDC_OPERATION_BEFORE_CUT, IDC_OPERATION_AFTER_CUT,
                     settings.logoPosition != 0 ? IDC_OPERATION_AFTER_CUT : IDC_OPERATION_BEFORE_CUT);
    EnableForLogo(dialog);
    AttachHelp(dialog, OperationDialogHelp(), OperationHelpProc);
}

// Stretches the picture for the present choice over the frame.
void DrawPreview(HWND dialog, HDC frame) {
    const bool cut = ChosenItem(dialog, IDC_OPERATION_CUT, &OperationSettings::cutPaper) != kNoCut;
    const bool feed = IsItemChecked(dialog, IDC_OPERATION_FEED_TO_POSITION);
    const int id = OperationPreviewBitmap(BufferOf(dialog).moment, feed, cut);
    const HBITMAP bitmap = LoadBitmapW(ghInstance, MAKEINTRESOURCEW(id));
    const HDC memory = CreateCompatibleDC(frame);
    BITMAP size{};
    if (bitmap != nullptr && memory != nullptr && GetObjectW(bitmap, sizeof size, &size) != 0) {
        RECT area{};
        GetClientRect(GetDlgItem(dialog, IDC_OPERATION_PREVIEW), &area);
        const HGDIOBJ old = SelectObject(memory, bitmap);
        SetStretchBltMode(frame, COLORONCOLOR);
        StretchBlt(frame, 0, 0, area.right, area.bottom, memory, 0, 0, size.bmWidth, size.bmHeight, SRCCOPY);
        SelectObject(memory, old);
    }
    DeleteDC(memory);
    DeleteObject(bitmap);
}

void DialogPainted(HWND dialog) {
    PAINTSTRUCT paint{};
    BeginPaint(dialog, &paint);
    EndPaint(dialog, &paint);
    const HWND frame = GetDlgItem(dialog, IDC_OPERATION_PREVIEW);
    if (const HDC dc = GetDC(frame); dc != nullptr) {
        DrawPreview(dialog, dc);
        ReleaseDC(frame, dc);
    }
}

void RepaintPreview(HWND dialog) {
    SendMessageW(dialog, WM_PAINT, 0, 0);
}

// Reads the command box; FALSE, with the user told, when it holds more than a block can.
bool TakeCommand(HWND dialog, OperationSettings& settings) {
    wchar_t text[kCommandTextLength + 1] = {};
    const UINT length = GetDlgItemTextW(dialog, IDC_OPERATION_COMMAND, text, kCommandTextLength + 1);
    if (length == 0 && GetWindowTextLengthW(GetDlgItem(dialog, IDC_OPERATION_COMMAND)) != 0) {
        // The box did not answer: what it holds must not turn into no command.
        return false;
    }
    std::uint8_t parsed[kParsedCommandSize] = {};
    const std::size_t count = ParseHexCommand(parsed, {text, length});
    if (count > kCommandSize) {
        ShowMessage(dialog, Message::kCommandLength, MessageTitle::kError, MessageIcon::kNone);
        return false;
    }
    settings.commandLength = static_cast<std::uint8_t>(count);
    settings.command.fill(0);
    std::copy_n(parsed, count, settings.command.begin());
    return true;
}

std::uint8_t TakeNumber(HWND dialog, const DialogNumber& number) {
    return static_cast<std::uint8_t>(
        std::min<UINT>(GetDlgItemInt(dialog, number.edit, nullptr, FALSE), number.maximum));
}

void OkPressed(HWND dialog) {
    OperationSettings settings = BufferOf(dialog).settings;
    if (!TakeCommand(dialog, settings)) {
        return;
    }
    settings.sendCommand = IsItemChecked(dialog, IDC_OPERATION_SEND_COMMAND) ? 1 : 0;
    settings.feedToPosition = IsItemChecked(dialog, IDC_OPERATION_FEED_TO_POSITION) ? 1 : 0;
    for (const DialogList& list : kLists) {
        settings.*list.selection =
            static_cast<std::uint8_t>(ChosenItem(dialog, list.control, list.selection));
    }
    settings.feed = TakeNumber(dialog, kFeedNumber);
    settings.buzzerVolume = TakeNumber(dialog, kVolumeNumber);
    settings.drawerOrHerald = IsItemChecked(dialog, IDC_OPERATION_OPEN_DRAWER) ? kOpenDrawer : kHerald;
    settings.logoAlign = IsItemChecked(dialog, IDC_OPERATION_ALIGN_LEFT)       ? 0
                         : IsItemChecked(dialog, IDC_OPERATION_ALIGN_CENTERED) ? 1
                                                                               : 2;
    settings.logoPosition = IsItemChecked(dialog, IDC_OPERATION_BEFORE_CUT) ? 0 : 1;
    BufferOf(dialog).settings = settings;
    EndDialog(dialog, IDOK);
}

// The factory operation: both drawers with the longest pulse when a document starts, feed and partial cut
// when it ends, nothing in between.
void DefaultPressed(HWND dialog) {
    const bool docStart = BufferOf(dialog).moment == Moment::kDocStart;
    const bool docEnd = BufferOf(dialog).moment == Moment::kDocEnd;
    CheckItem(dialog, IDC_OPERATION_SEND_COMMAND, false);
    SetDlgItemTextW(dialog, IDC_OPERATION_COMMAND, L"");
    EnableItem(dialog, IDC_OPERATION_COMMAND, false);
    CheckItem(dialog, IDC_OPERATION_FEED_TO_POSITION, docEnd);
    SelectItem(dialog, IDC_OPERATION_DRAWER, docStart ? kBothDrawersLongestPulse : kNoDrawer);
    SelectItem(dialog, IDC_OPERATION_HERALD, 0);
    ChooseDrawerOrHerald(dialog, false);
    SendDlgItemMessageW(dialog, IDC_OPERATION_FEED_SPIN, UDM_SETPOS32, 0, 0);
    SelectItem(dialog, IDC_OPERATION_CUT, docEnd ? kPartialCut : kNoCut);
    SelectItem(dialog, IDC_OPERATION_BUZZER, 0);
    SelectItem(dialog, IDC_OPERATION_LOGO, 0);
    EnableForLogo(dialog);
    EnableForBuzzer(dialog);
    SendDlgItemMessageW(dialog, IDC_OPERATION_VOLUME_SPIN, UDM_SETPOS32, 0, 0);
    CheckRadioButton(dialog, IDC_OPERATION_ALIGN_LEFT, IDC_OPERATION_ALIGN_RIGHT, IDC_OPERATION_ALIGN_LEFT);
    CheckRadioButton(dialog, IDC_OPERATION_BEFORE_CUT, IDC_OPERATION_AFTER_CUT, IDC_OPERATION_BEFORE_CUT);
    RepaintPreview(dialog);
}

INT_PTR ControlUsed(HWND dialog, int control, int notification) {
    switch (control) {
        case IDC_OPERATION_FEED_TO_POSITION:
            if (notification == BN_CLICKED) {
                RepaintPreview(dialog);
            }
            return TRUE;
        case IDC_OPERATION_CUT:
            if (notification == CBN_SELCHANGE) {
                RepaintPreview(dialog);
            }
            return TRUE;
        case IDC_OPERATION_SEND_COMMAND:
            EnableItem(dialog, IDC_OPERATION_COMMAND, IsItemChecked(dialog, IDC_OPERATION_SEND_COMMAND));
            return TRUE;
        case IDC_OPERATION_OPEN_DRAWER:
            ChooseDrawerOrHerald(dialog, false);
            return TRUE;
        case IDC_OPERATION_USE_HERALD:
            ChooseDrawerOrHerald(dialog, true);
            return TRUE;
        case IDC_OPERATION_BUZZER:
            if (notification == CBN_SELCHANGE) {
                EnableForBuzzer(dialog);
            }
            return TRUE;
        case IDC_OPERATION_LOGO:
            EnableForLogo(dialog);
            return TRUE;
        case IDC_OPERATION_FEED:
            if (notification == EN_CHANGE) {
                CapNumber(dialog, kFeedNumber.edit, kFeedNumber.spin, kFeedNumber.maximum);
            }
            return TRUE;
        case IDC_OPERATION_VOLUME:
            if (notification == EN_CHANGE) {
                CapNumber(dialog, kVolumeNumber.edit, kVolumeNumber.spin, kVolumeNumber.maximum);
            }
            return TRUE;
        case IDOK:
            OkPressed(dialog);
            return TRUE;
        case IDCANCEL:
            EndDialog(dialog, IDCANCEL);
            return TRUE;
        case IDC_OPERATION_DEFAULT:
            DefaultPressed(dialog);
            return TRUE;
        default:
            return FALSE;
    }
}

// Fills the dialog from the buffer that it is opened with; a dialog that cannot be filled closes rather than
// letting OK store what it shows. A buffer once taken stays.
bool BufferTaken(HWND dialog, LPARAM buffer) {
    if (GetWindowLongPtrW(dialog, DWLP_USER) != 0) {
        return false;
    }
    try {
        SetWindowLongPtrW(dialog, DWLP_USER, buffer);
        if (GetWindowLongPtrW(dialog, DWLP_USER) != 0) {
            DialogOpened(dialog);
            return true;
        }
    } catch (...) {
        // Out of memory.
    }
    EndDialog(dialog, IDCANCEL);
    return false;
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    TRACE_VERBOSE(L"UI:  OperationDlgProc\r\n");
    if (message == WM_INITDIALOG) {
        return BufferTaken(dialog, lParam) ? TRUE : FALSE;
    }
    if (GetWindowLongPtrW(dialog, DWLP_USER) == 0) {
        return FALSE;
    }
    switch (message) {
        case WM_COMMAND:
            return ControlUsed(dialog, LOWORD(wParam), HIWORD(wParam));
        case WM_PAINT:
            DialogPainted(dialog);
            return TRUE;
        case WM_DRAWITEM:
            // The frame paints itself after the dialog has: the picture comes again on top.
            if (lParam != 0 && wParam == IDC_OPERATION_PREVIEW) {
                DrawPreview(dialog, reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)->hDC);
            }
            return TRUE;
        default:
            return FALSE;
    }
}

constinit TextTable gTexts(L"DOCUMENT", kOperationDialogTexts);
constinit TextTable gHelp(L"DOCUMENT", kOperationDialogHelp);

}  // namespace

TextTable& OperationDialogTexts() noexcept {
    return gTexts;
}

TextTable& OperationDialogHelp() noexcept {
    return gHelp;
}

INT_PTR CALLBACK OperationDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
