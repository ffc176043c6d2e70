// The Main page edits print-as-image, zoom with its scale, the paper form, and the driver's log in the
// record; rotation is there too, hidden until a printer can do it. It selects the form in the driver's own
// option and keeps the driver's density option in the user's language. The language itself is taken on apply:
// the tabs are relabelled then, and every page reloads its captions when it is painted next.
#include "docpages/layout_page.h"

#include <objbase.h>
#include <shellapi.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/platform.h"
#include "docpages/layout_rules.h"
#include "docpages/paper_forms.h"
#include "docpages/print_density.h"
#include "docpages/tab_captions.h"
#include "intrface/win/help_tips.h"
#include "intrface/win/page.h"
#include "intrface/win/property_sheet.h"
#include "intrface/win/sheet_context.h"
#include "intrface/win/shell_functions.h"
#include "language/language_list.h"
#include "language/language_setup.h"
#include "language/messages.h"
#include "language/registry_choice.h"
#include "language/text_lookup.h"

namespace {

constexpr int kScaleDigits = 3;
// Typing stops at 100, the arrows go on.
constexpr std::int32_t kMinScale = 10;
constexpr std::int32_t kMaxScaleByArrows = 200;

constexpr wchar_t kViewerProgram[] = L"VELDDriverlog\\VELDDriverlogViewer.exe";
// "C:\".
constexpr std::size_t kDriveRootLength = 3;

LRESULT CALLBACK LayoutHelpProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleHelp(LayoutPageHelp(), control, message, wParam, lParam);
}

void ShowAnswer(HWND dialog, const LayoutAnswer& answer) {
    if (answer.yesChecked) {
        CheckItem(dialog, IDC_MAIN_AS_IMAGE_YES, *answer.yesChecked);
        CheckItem(dialog, IDC_MAIN_AS_IMAGE_NO, !*answer.yesChecked);
    }
    if (answer.radiosEnabled) {
        EnableItem(dialog, IDC_MAIN_AS_IMAGE_YES, *answer.radiosEnabled);
        EnableItem(dialog, IDC_MAIN_AS_IMAGE_NO, *answer.radiosEnabled);
    }
    if (answer.zoomChecked) {
        CheckItem(dialog, IDC_MAIN_ZOOM, *answer.zoomChecked);
    }
    if (answer.scaleEnabled) {
        for (const int control : {IDC_MAIN_SCALE_LABEL, IDC_MAIN_SCALE, IDC_MAIN_SCALE_SPIN}) {
            EnableItem(dialog, control, *answer.scaleEnabled);
        }
    }
    if (answer.rotate180Checked) {
        CheckItem(dialog, IDC_MAIN_NORMAL, !*answer.rotate180Checked);
        CheckItem(dialog, IDC_MAIN_ROTATE_180, *answer.rotate180Checked);
    }
    if (answer.showsInformation) {
        ShowMessage(dialog, Message::kLayoutAsImage, MessageTitle::kInformation, MessageIcon::kOfTitle);
    }
}

void Follow(HWND dialog, DocumentSheetContext& context, OEMDEV& record, LayoutAction action) {
    ShowAnswer(dialog, FollowLayoutAction(record, context.waterMarkRemoved, action));
}

void EnableLog(HWND dialog, bool enabled) {
    for (const int control : {IDC_MAIN_LOG_PATH, IDC_MAIN_LOG_BROWSE, IDC_MAIN_LOG_VIEWER}) {
        EnableItem(dialog, control, enabled);
    }
}

void ListLanguages(HWND dialog, const std::vector<LanguageEntry>& languages) {
    const HWND list = GetDlgItem(dialog, IDC_MAIN_LANGUAGE);
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const LanguageEntry& language : languages) {
        AddItem(dialog, IDC_MAIN_LANGUAGE, language.name.c_str());
    }
    AddItem(dialog, IDC_MAIN_LANGUAGE, gSystemLanguageName);
    const auto current = CurrentLanguage(languages, gCurrentLanguageFile);
    if (!current) {
        return;
    }
    const RegistryKey key = OpenLanguageKey();
    wchar_t isFirstRun[kLanguageValueLength];
    if (!ReadLanguageValue(key, kFirstRunValue, isFirstRun)) {
        CopyText(isFirstRun, L"TRUE");
        WriteLanguageValue(key, kFirstRunValue, isFirstRun);
    }
    if (FollowsSystem(isFirstRun)) {
        SendMessageW(list, CB_SELECTSTRING, static_cast<WPARAM>(-1),
                     reinterpret_cast<LPARAM>(languages[*current].systemLabel.c_str()));
    } else {
        SendMessageW(list, CB_SETCURSEL, *current, 0);
    }
}

void ListPaperSizes(HWND dialog, const DocumentSheetContext& context, const OEMDEV& record) {
    const HWND list = GetDlgItem(dialog, IDC_MAIN_PAPER_SIZE);
    ListForms(context, list);
    const std::wstring stored(FieldText(record.szFormName));
    if (stored.empty()) {
        ShowChosenForm(context, list);
    } else {
        SendMessageW(list, CB_SELECTSTRING, static_cast<WPARAM>(-1),
                     reinterpret_cast<LPARAM>(stored.c_str()));
    }
}

void ShowRecord(HWND dialog, DocumentSheetContext& context, OEMDEV& record) {
    ListPaperSizes(dialog, context, record);
    SendDlgItemMessageW(dialog, IDC_MAIN_SCALE, EM_LIMITTEXT, kScaleDigits, 0);
    SendDlgItemMessageW(dialog, IDC_MAIN_SCALE_SPIN, UDM_SETRANGE32, kMinScale, kMaxScaleByArrows);
    SendDlgItemMessageW(dialog, IDC_MAIN_SCALE_SPIN, UDM_SETPOS32, 0, record.iScale);
    CheckItem(dialog, IDC_MAIN_LOG, record.LOGRecord == 1);
    EnableLog(dialog, record.LOGRecord == 1);
    SendDlgItemMessageW(dialog, IDC_MAIN_LOG_PATH, EM_SETREADONLY, TRUE, 0);
    ShowField(dialog, IDC_MAIN_LOG_PATH, record.szLogPath);
    Follow(dialog, context, record, LayoutAction::kMainOpened);
}

void PageOpened(HWND dialog, DocumentSheetContext& context) {
    context.languages = UpdateLanguages();
    TRACE_VERBOSE(L"UI:  Initialize Layout page callback function\r\n");
    const POEMCUIPPARAM parameter = context.pOEMCUIPParam;
    CopyText(gPrinterName,
             parameter != nullptr && parameter->pPrinterName != nullptr ? parameter->pPrinterName : L"");
    LayoutPageTexts().ApplyTo(dialog);
    for (const int radio :
         {IDC_MAIN_AS_IMAGE_YES, IDC_MAIN_AS_IMAGE_NO, IDC_MAIN_NORMAL, IDC_MAIN_ROTATE_180}) {
        SetClickedByUserOnly(dialog, radio);
    }
    ListLanguages(dialog, context.languages);
    if (OEMDEV* const record = context.Record(); record != nullptr) {
        ShowRecord(dialog, context, *record);
    }
    AttachHelp(dialog, LayoutPageHelp(), LayoutHelpProc);
}

// Whether a static control frees the bitmap that its template names differs from system to system.
void PageClosed(HWND dialog) noexcept {
    for (const int picture : {IDC_MAIN_NORMAL_PICTURE, IDC_MAIN_ROTATE_180_PICTURE}) {
        const LRESULT bitmap = SendDlgItemMessageW(dialog, picture, STM_SETIMAGE, IMAGE_BITMAP, 0);
        DeleteObject(reinterpret_cast<HGDIOBJ>(bitmap));
    }
}

// Everything that is shown in the user's language and can be seen from here, or is said by any page.
void PagePainted(HWND dialog, DocumentSheetContext& context) {
    RefreshLanguageFile();
    for (TextTable* const texts : {&LayoutPageTexts(), &LayoutPageHelp(), &DensityTexts(), &Messages()}) {
        texts->LoadIfChanged();
    }
    LayoutPageTexts().ApplyTo(dialog);
    RelabelPrintDensity(context);
}

// Without a selection option and record keep what they have.
void TakePaperSize(HWND dialog, const DocumentSheetContext& context, OEMDEV& record) {
    const int index = SelectedItem(dialog, IDC_MAIN_PAPER_SIZE, -1);
    if (index >= 0) {
        ChooseForm(context, index);
        CopyText(record.szFormName, SelectedText(dialog, IDC_MAIN_PAPER_SIZE));
    }
}

std::int32_t TypedScale(HWND dialog) {
    return static_cast<std::int32_t>(GetDlgItemInt(dialog, IDC_MAIN_SCALE, nullptr, TRUE));
}

void ScaleLeft(HWND dialog, OEMDEV& record) {
    record.iScale = ClampScale(TypedScale(dialog));
    SendDlgItemMessageW(dialog, IDC_MAIN_SCALE_SPIN, UDM_SETPOS32, 0, record.iScale);
    MarkChanged(dialog);
}

void ScaleStepped(HWND dialog, OEMDEV& record) {
    const LRESULT position = SendDlgItemMessageW(dialog, IDC_MAIN_SCALE_SPIN, UDM_GETPOS32, 0, 0);
    record.iScale = static_cast<std::uint8_t>(std::clamp<LRESULT>(position, kMinScale, kMaxScaleByArrows));
    MarkChanged(dialog);
}

void LogClicked(HWND dialog, OEMDEV& record) {
    MarkChanged(dialog);
    const bool isOn = IsItemChecked(dialog, IDC_MAIN_LOG);
    EnableLog(dialog, isOn);
    record.LOGRecord = isOn ? 1 : 0;
}

void BrowseClicked(HWND dialog, OEMDEV& record) {
    MarkChanged(dialog);
    BROWSEINFOW info{};
    info.hwndOwner = dialog;
    info.lpszTitle = L"";
    info.ulFlags = BIF_RETURNONLYFSDIRS;
    const PIDLIST_ABSOLUTE folder = BrowseForFolder(info);
    if (folder == nullptr) {
        return;
    }
    wchar_t path[kPathLength];
    const bool hasPath = PathFromIdList(folder, path);
    CoTaskMemFree(folder);
    // The page may be gone, and the host's record with it.
    if (!hasPath || !IsWindow(dialog)) {
        return;
    }
    if (FieldText(path).size() >= std::size(record.szLogPath)) {
        ShowMessage(dialog, Message::kPathTooLong, MessageTitle::kError, MessageIcon::kOfTitle);
        return;
    }
    SetDlgItemTextW(dialog, IDC_MAIN_LOG_PATH, path);
    CopyText(record.szLogPath, path);
}

bool IsSystemVersion50() noexcept {
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof version;
    version.dwMajorVersion = 5;
    version.dwMinorVersion = 0;
    DWORDLONG equal = VerSetConditionMask(0, VER_MAJORVERSION, VER_EQUAL);
    equal = VerSetConditionMask(equal, VER_MINORVERSION, VER_EQUAL);
    return VerifyVersionInfoW(&version, VER_MAJORVERSION | VER_MINORVERSION, equal) != FALSE;
}

// The viewer is installed at the root of the system's drive.
void ViewerClicked(HWND dialog, const OEMDEV& record) {
    wchar_t system[kPathLength];
    SystemDirectory(system);
    const std::wstring program = std::wstring(FieldText(system).substr(0, kDriveRootLength)) + kViewerProgram;
    const std::wstring parameters = L"\"R72\" \"" + std::wstring(FieldText(record.szLogPath)) + L"\"";
    SetLastError(ERROR_SUCCESS);
    ShellExecuteW(dialog, L"open", program.c_str(), parameters.c_str(), nullptr, SW_SHOW);
    if (GetLastError() == ERROR_FILE_NOT_FOUND && !IsSystemVersion50()) {
        ShowMessage(dialog, Message::kLayoutViewer, MessageTitle::kError, MessageIcon::kNone);
    }
}

INT_PTR ControlUsed(HWND dialog, DocumentSheetContext& context, OEMDEV& record, int control,
                    int notification) {
    const auto follow = [&](LayoutAction action) { Follow(dialog, context, record, action); };
    const auto choose = [&](LayoutAction action) {
        if (notification == BN_CLICKED) {
            follow(action);
            MarkChanged(dialog);
        }
    };
    switch (control) {
        case IDC_MAIN_PAPER_SIZE:
            if (notification == CBN_SELCHANGE) {
                TakePaperSize(dialog, context, record);
                MarkChanged(dialog);
            }
            return TRUE;
        case IDC_MAIN_LANGUAGE:
            if (notification == CBN_SELCHANGE) {
                MarkChanged(dialog);
            }
            return TRUE;
        case IDC_MAIN_SCALE:
            // A sheet that closes takes the focus away after the settings were applied.
            if (notification == EN_KILLFOCUS && IsWindowVisible(GetParent(dialog))) {
                ScaleLeft(dialog, record);
            }
            return TRUE;
        case IDC_MAIN_SCALE_SPIN:
            ScaleStepped(dialog, record);
            return TRUE;
        case IDC_MAIN_AS_IMAGE_YES:
            choose(LayoutAction::kYesChosen);
            return TRUE;
        case IDC_MAIN_AS_IMAGE_NO:
            choose(LayoutAction::kNoChosen);
            return TRUE;
        case IDC_MAIN_NORMAL:
            choose(LayoutAction::kNormalChosen);
            return TRUE;
        case IDC_MAIN_ROTATE_180:
            choose(LayoutAction::kRotate180Chosen);
            return TRUE;
        case IDC_MAIN_ZOOM:
            if (notification == BN_CLICKED) {
                MarkChanged(dialog);
                follow(IsItemChecked(dialog, IDC_MAIN_ZOOM) ? LayoutAction::kZoomChecked
                                                            : LayoutAction::kZoomUnchecked);
            }
            return TRUE;
        case IDC_MAIN_LOG:
            TRACE_VERBOSE(L"check_log1:  LOGRecord = %S\n", record.LOGRecord != 0 ? "1" : "0");
            if (notification == BN_CLICKED) {
                LogClicked(dialog, record);
            }
            return TRUE;
        case IDC_MAIN_LOG_BROWSE:
            if (notification == BN_CLICKED) {
                BrowseClicked(dialog, record);
            }
            return TRUE;
        case IDC_MAIN_LOG_VIEWER:
            if (notification == BN_CLICKED) {
                ViewerClicked(dialog, record);
            }
            return TRUE;
        default:
            return FALSE;
    }
}

// Without a selection, or one that is no language's, the choice stays as it is.
void TakeLanguage(HWND dialog, const std::vector<LanguageEntry>& languages) {
    if (SelectedItem(dialog, IDC_MAIN_LANGUAGE, -1) < 0) {
        return;
    }
    const auto choice = ChooseLanguage(languages, SelectedText(dialog, IDC_MAIN_LANGUAGE));
    if (!choice) {
        return;
    }
    const RegistryKey key = OpenLanguageKey();
    WriteLanguageValue(key, kLanguageValue, std::wstring(choice->file).c_str());
    WriteLanguageValue(key, kFirstRunValue, choice->followsSystem ? L"TRUE" : L"FALSE");
}

void PageApplied(HWND dialog, DocumentSheetContext& context) {
    TRACE_VERBOSE(L"UI:  Layout page callback PSN_APPLY in\r\n");
    if (OEMDEV* const record = context.Record(); record != nullptr) {
        // Enter closes the sheet without leaving the box that is typed into.
        if (GetFocus() == GetDlgItem(dialog, IDC_MAIN_SCALE) && TypedScale(dialog) != record->iScale) {
            ScaleLeft(dialog, *record);
        }
        if (IsItemChecked(dialog, IDC_MAIN_NORMAL)) {
            Follow(dialog, context, *record, LayoutAction::kAppliedAsNormal);
        } else if (IsItemChecked(dialog, IDC_MAIN_ROTATE_180)) {
            Follow(dialog, context, *record, LayoutAction::kAppliedAsRotate180);
        }
        TakePaperSize(dialog, context, *record);
    }
    ReportApplied(context.pfnComPropSheet, context.hComPropSheet, context.PageHandle(DocumentPage::kMain),
                  dialog);
    TRACE_VERBOSE(L"UI:  Layout page callback PSN_APPLY Language set in\r\n");
    TakeLanguage(dialog, context.languages);
    RelabelSheets(dialog);
    SendMessageW(dialog, WM_PAINT, 0, 0);
    TRACE_VERBOSE(L"UI:  Layout page callback PSN_APPLY Language set out\r\n");
}

void PageActivated(HWND dialog, DocumentSheetContext& context) {
    if (OEMDEV* const record = context.Record(); record != nullptr) {
        Follow(dialog, context, *record, LayoutAction::kMainActivated);
    }
    ShowChosenForm(context, GetDlgItem(dialog, IDC_MAIN_PAPER_SIZE));
    TRACE_VERBOSE(L"UI:  Layout page callback WM_NOTIFY out\r\n");
}

INT_PTR SheetNotified(HWND dialog, DocumentSheetContext& context, UINT code) {
    TRACE_VERBOSE(L"UI:  Layout page callback WM_NOTIFY in\r\n");
    switch (code) {
        case PSN_SETACTIVE:
            PageActivated(dialog, context);
            return AnswerNotification(dialog, 0);
        case PSN_KILLACTIVE:
            return AnswerNotification(dialog, 0);
        case PSN_APPLY:
            PageApplied(dialog, context);
            return AnswerNotification(dialog, PSNRET_NOERROR);
        default:
            return FALSE;
    }
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const context = PageContext<DocumentSheetContext>(
        dialog, message, lParam, L"ERROR UI:  LayoutPropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    // Also of a page that never knew its sheet: its template made the pictures.
    if (message == WM_DESTROY) {
        PageClosed(dialog);
    }
    if (context == nullptr) {
        return FALSE;
    }
    OEMDEV* const record = context->Record();
    switch (message) {
        case WM_INITDIALOG:
            PageOpened(dialog, *context);
            return FALSE;
        case WM_PAINT:
            PagePainted(dialog, *context);
            return FALSE;
        case WM_COMMAND:
            return record != nullptr ? ControlUsed(dialog, *context, *record, LOWORD(wParam), HIWORD(wParam))
                                     : FALSE;
        case WM_VSCROLL:
            if (record != nullptr && lParam != 0 &&
                reinterpret_cast<HWND>(lParam) == GetDlgItem(dialog, IDC_MAIN_SCALE_SPIN)) {
                ScaleStepped(dialog, *record);
            }
            return FALSE;
        case WM_NOTIFY:
            return lParam != 0 ? SheetNotified(dialog, *context, reinterpret_cast<const NMHDR*>(lParam)->code)
                               : FALSE;
        default:
            return PassOn(dialog, message, wParam, lParam);
    }
}

constinit TextTable gTexts(L"LAYOUT", kLayoutPageTexts);
constinit TextTable gHelp(L"LAYOUT", kLayoutPageHelp);

}  // namespace

TextTable& LayoutPageTexts() noexcept {
    return gTexts;
}

TextTable& LayoutPageHelp() noexcept {
    return gHelp;
}

INT_PTR CALLBACK LayoutPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
