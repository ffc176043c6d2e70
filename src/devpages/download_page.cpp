// The Download page sends a file to the printer as it is: firmware, data, fonts or the EEPROM's content.
// Below that it has the logos (logo_group). It stores nothing, and what the spooler says of a job is not
// shown.
#include "devpages/download_page.h"

#include <iterator>
#include <string>
#include <vector>

#include "devpages/device_pages.h"
#include "devpages/file_download.h"
#include "devpages/logo_group.h"
#include "intrface/win/help_tips.h"
#include "intrface/win/open_file.h"
#include "intrface/win/page.h"
#include "intrface/win/property_sheet.h"
#include "intrface/win/sheet_context.h"
#include "language/language_setup.h"
#include "language/messages.h"
#include "printer/raw_job.h"

namespace {

// What the path's box is read for.
constexpr std::size_t kReadPathLength = 1024;

LRESULT CALLBACK DownloadHelpProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleHelp(DownloadPageHelp(), control, message, wParam, lParam);
}

void EnableSend(HWND dialog) noexcept {
    EnableItem(dialog, IDC_DOWNLOAD_SEND,
               SendDlgItemMessageW(dialog, IDC_DOWNLOAD_PATH, WM_GETTEXTLENGTH, 0, 0) > 0);
}

void PageOpened(HWND dialog) {
    DownloadPageTexts().ApplyTo(dialog);
    // What is not read must not be typed: a path that is cut may be another file's.
    SendDlgItemMessageW(dialog, IDC_DOWNLOAD_PATH, EM_LIMITTEXT, kReadPathLength, 0);
    LogoGroupOpened(dialog);
    AttachHelp(dialog, DownloadPageHelp(), DownloadHelpProc);
}

void BrowseClicked(HWND dialog) {
    // A repaint behind the open dialog may load the texts anew.
    const std::wstring title = DownloadPageTexts()[kDownloadPageOpenTitle];
    std::wstring chosen;
    if (!AskForFile(dialog, title.c_str(), DownloadFilter(gCurrentLanguageFile).c_str(), chosen)) {
        return;
    }
    if (chosen.size() > kReadPathLength) {
        ShowMessage(dialog, Message::kPathTooLong, MessageTitle::kError, MessageIcon::kNone);
        return;
    }
    // The box tells of its new text, as when it is typed.
    SetDlgItemTextW(dialog, IDC_DOWNLOAD_PATH, chosen.c_str());
}

Message MessageOf(FileReadResult result) noexcept {
    switch (result) {
        case FileReadResult::kRead:
        case FileReadResult::kCannotOpen:
            break;
        case FileReadResult::kNoSize:
            return Message::kFileSize;
        case FileReadResult::kNoMemory:
            return Message::kFileMemory;
        case FileReadResult::kNoStart:
            return Message::kFileStart;
        case FileReadResult::kNotRead:
            return Message::kFileRead;
    }
    return Message::kFileOpen;
}

void SendClicked(HWND dialog, HANDLE printer) {
    wchar_t path[kReadPathLength + 1] = {};
    GetDlgItemTextW(dialog, IDC_DOWNLOAD_PATH, path, static_cast<int>(std::size(path)));
    if (path[0] == L'\0') {
        return;
    }
    std::vector<std::uint8_t> file;
    const FileReadResult result = ReadFileToSend(path, file);
    if (result == FileReadResult::kRead) {
        SendRawJob(printer, kFirmwareJob, {&file, 1});
    } else {
        ShowMessage(dialog, MessageOf(result), MessageTitle::kError, MessageIcon::kNone);
    }
}

INT_PTR ControlUsed(HWND dialog, const DeviceSheetContext& context, int control, int notification) {
    switch (control) {
        case IDC_DOWNLOAD_PATH:
            if (notification == EN_CHANGE) {
                EnableSend(dialog);
            }
            return TRUE;
        case IDC_DOWNLOAD_BROWSE:
            if (notification == BN_CLICKED) {
                BrowseClicked(dialog);
            }
            return TRUE;
        case IDC_DOWNLOAD_SEND:
            if (notification == BN_CLICKED) {
                SendClicked(dialog, context.Printer());
            }
            return TRUE;
        default:
            return LogoControlUsed(dialog, context.Printer(), control, notification) ? TRUE : FALSE;
    }
}

// The preview is drawn over the page once that is painted.
void PagePainted(HWND dialog) {
    ReloadTexts(dialog, DownloadPageTexts(), DownloadPageHelp());
    PAINTSTRUCT paint{};
    BeginPaint(dialog, &paint);
    EndPaint(dialog, &paint);
    LogoGroupPainted(dialog);
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* context = PageContext<DeviceSheetContext>(
        dialog, message, lParam, L"ERROR UI:  DevicePropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    if (context == nullptr) {
        return FALSE;
    }
    switch (message) {
        case WM_INITDIALOG:
            if (MarkPage(dialog, DevicePage::kDownload)) {
                PageOpened(dialog);
            }
            return FALSE;
        case WM_PAINT:
            PagePainted(dialog);
            return TRUE;
        case WM_DRAWITEM:
            return lParam != 0 &&
                   LogoFrameUncovered(dialog, *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        case WM_COMMAND:
            return ControlUsed(dialog, *context, LOWORD(wParam), HIWORD(wParam));
        case WM_HSCROLL:
            LogoSliderMoved(dialog, reinterpret_cast<HWND>(lParam), LOWORD(wParam));
            return TRUE;
        case WM_NOTIFY:
            if (lParam != 0 && LogoNotified(dialog, *reinterpret_cast<const NMHDR*>(lParam))) {
                return TRUE;
            }
            return AnswerSheet(dialog, lParam, [&] { ReportDeviceApplied(dialog, *context); });
        case WM_NCDESTROY:
            LogoGroupClosed(dialog);
            UnmarkPage(dialog);
            return FALSE;
        default:
            return FALSE;
    }
}

constinit TextTable gTexts(L"DOWNLOAD", kDownloadPageTexts);
constinit TextTable gHelp(L"DOWNLOAD", kDownloadPageHelp);

}  // namespace

TextTable& DownloadPageTexts() noexcept {
    return gTexts;
}

TextTable& DownloadPageHelp() noexcept {
    return gHelp;
}

INT_PTR CALLBACK download_page::DevicePropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
