// The Utility page prints the printer's self test and keeps the user's paper sizes, which are forms of the
// print server: they are written and deleted by the buttons, at once, and Cancel does not bring them back. A
// hidden button opens the control font's table. Nothing here touches the settings record.
#include "devpages/utility_page.h"

#include <commctrl.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "devpages/control_font_dialog.h"
#include "devpages/device_pages.h"
#include "devpages/paper_sizes.h"
#include "devpages/printer_forms.h"
#include "intrface/win/gdi.h"
#include "intrface/win/help_tips.h"
#include "intrface/win/page.h"
#include "intrface/win/property_sheet.h"
#include "intrface/win/sheet_context.h"
#include "language/messages.h"
#include "printer/printer_commands.h"
#include "printer/raw_job.h"

namespace {

struct SizeControls {
    int edit;
    int spin;
    int range;
};

constexpr SizeControls kWidthControls = {IDC_UTILITY_WIDTH, IDC_UTILITY_WIDTH_SPIN, IDC_UTILITY_WIDTH_RANGE};
constexpr SizeControls kHeightControls = {IDC_UTILITY_HEIGHT, IDC_UTILITY_HEIGHT_SPIN,
                                          IDC_UTILITY_HEIGHT_RANGE};

LRESULT CALLBACK UtilityHelpProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleHelp(UtilityPageHelp(), control, message, wParam, lParam);
}

LRESULT SendList(HWND dialog, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) noexcept {
    return SendDlgItemMessageW(dialog, IDC_UTILITY_PAPERS, message, wParam, lParam);
}

// The index of the list's selection; nothing where nothing is selected.
std::optional<std::size_t> SelectedPaper(HWND dialog) noexcept {
    const LRESULT index = SendList(dialog, LB_GETCURSEL);
    return index == LB_ERR ? std::nullopt : std::optional(static_cast<std::size_t>(index));
}

// The form's name that is selected; nothing where nothing is selected.
std::optional<std::wstring> SelectedName(HWND dialog) {
    const auto index = SelectedPaper(dialog);
    const LRESULT length = index ? SendList(dialog, LB_GETTEXTLEN, *index) : LB_ERR;
    if (length == LB_ERR) {
        return std::nullopt;
    }
    std::wstring name(static_cast<std::size_t>(length) + 1, L'\0');
    SendList(dialog, LB_GETTEXT, *index, reinterpret_cast<LPARAM>(name.data()));
    name.resize(static_cast<std::size_t>(length));
    return name;
}

std::wstring TypedName(HWND dialog) {
    wchar_t name[kReadNameLength + 1] = {};
    GetDlgItemTextW(dialog, IDC_UTILITY_FORM_NAME, name, static_cast<int>(std::size(name)));
    return name;
}

// A button that is switched off would keep the keyboard to itself.
void EnableDelete(HWND dialog) {
    const auto name = SelectedName(dialog);
    const bool canDelete = CanDelete(name ? std::optional<StringView16>(*name) : std::nullopt);
    // A greyed button would keep the keyboard to itself.
    if (!canDelete && GetFocus() == GetDlgItem(dialog, IDC_UTILITY_DELETE)) {
        SetFocus(GetDlgItem(dialog, IDC_UTILITY_PAPERS));
    }
    EnableItem(dialog, IDC_UTILITY_DELETE, canDelete);
}

void ShowSize(HWND dialog, PaperSize size) noexcept {
    SetDlgItemInt(dialog, IDC_UTILITY_WIDTH, static_cast<UINT>(size.width), TRUE);
    SetDlgItemInt(dialog, IDC_UTILITY_HEIGHT, static_cast<UINT>(size.height), TRUE);
}

// The box tells of its text, also of the same one, and Delete is switched then.
void ShowSelectedName(HWND dialog) {
    const std::wstring name = SelectedName(dialog).value_or(std::wstring());
    SetDlgItemTextW(dialog, IDC_UTILITY_FORM_NAME, std::wstring(ShownName(name)).c_str());
}

void ShowSelectedSize(HWND dialog, HANDLE printer) {
    const auto name = SelectedName(dialog);
    std::vector<PaperForm> forms;
    if (!name || !ReadForms(printer, forms)) {
        return;
    }
    if (const PaperForm* const form = FindForm(forms, *name)) {
        ShowSize(dialog, SizeOf(*form));
    }
}

// Adds names to the list; at its end the list can be scrolled to the end of the longest one.
class NewEntries {
  public:
    explicit NewEntries(HWND dialog) noexcept
        : list_(GetDlgItem(dialog, IDC_UTILITY_PAPERS)),
          dc_(list_),
          font_(dc_.Get(), reinterpret_cast<HGDIOBJ>(SendMessageW(list_, WM_GETFONT, 0, 0))),
          width_(static_cast<int>(SendMessageW(list_, LB_GETHORIZONTALEXTENT, 0, 0))) {}
    NewEntries(const NewEntries&) = delete;
    NewEntries& operator=(const NewEntries&) = delete;
    ~NewEntries() { SendMessageW(list_, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(width_), 0); }

    // The index of the new entry, LB_ERR or LB_ERRSPACE where the list takes no more.
    LRESULT Add(const std::wstring& name) noexcept {
        SIZE extent{};
        if (GetTextExtentPoint32W(dc_.Get(), name.c_str(), static_cast<int>(name.size()), &extent)) {
            width_ = std::max(width_, static_cast<int>(extent.cx) + 2 * GetSystemMetrics(SM_CXEDGE));
        }
        return SendMessageW(list_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
    }

  private:
    const HWND list_;
    const WindowDc dc_;
    const Selection font_;
    int width_;
};

void OpenSize(HWND dialog, const SizeControls& controls, const PaperSizeBox& box) noexcept {
    SendDlgItemMessageW(dialog, controls.edit, EM_LIMITTEXT, static_cast<WPARAM>(box.digits), 0);
    SendDlgItemMessageW(dialog, controls.spin, UDM_SETRANGE32, static_cast<WPARAM>(box.least), box.most);
    SetDlgItemTextW(dialog, controls.range, box.rangeText);
}

// TRUE when the server has the default paper, made just now where it was missing.
bool HasDefaultPaper(HANDLE printer) {
    std::vector<PaperForm> forms;
    return ReadForms(printer, forms) &&
           (FindForm(forms, kDefaultPaper) != nullptr || AddPaper(printer, kDefaultPaper, kDefaultPaperSize));
}

// FALSE, and an empty list, when the server does not tell.
bool ListPapers(HWND dialog, HANDLE printer) {
    std::vector<PaperForm> forms;
    if (!ReadForms(printer, forms)) {
        return false;
    }
    const std::vector<PaperForm> papers = CustomPapersOf(std::move(forms));
    SendList(dialog, WM_SETREDRAW, FALSE);
    {
        NewEntries entries(dialog);
        for (const PaperForm& paper : papers) {
            entries.Add(paper.name);
        }
    }
    SendList(dialog, WM_SETREDRAW, TRUE);
    SendList(dialog, LB_SETCURSEL, 0);
    ShowSelectedName(dialog);
    if (const PaperForm* const form = FindForm(papers, kDefaultPaper)) {
        const PaperSize size = SizeOf(*form);
        SendDlgItemMessageW(dialog, kWidthControls.spin, UDM_SETPOS32, 0, size.width);
        SendDlgItemMessageW(dialog, kHeightControls.spin, UDM_SETPOS32, 0, size.height);
        // The arrows keep to their range, the boxes show what the form has.
        ShowSize(dialog, size);
    }
    return true;
}

// Goes as far as the server lets it: without the default paper the page stays as its template has it, and
// help comes with the list.
void PageOpened(HWND dialog, HANDLE printer) {
    UtilityPageTexts().ApplyTo(dialog);
    if (!HasDefaultPaper(printer)) {
        return;
    }
    SendDlgItemMessageW(dialog, IDC_UTILITY_FORM_NAME, EM_LIMITTEXT, kTypedNameLength, 0);
    OpenSize(dialog, kWidthControls, kPaperWidth);
    OpenSize(dialog, kHeightControls, kPaperHeight);
    if (ListPapers(dialog, printer)) {
        AttachHelp(dialog, UtilityPageHelp(), UtilityHelpProc);
    }
}

void SelfTestClicked(HANDLE printer) {
    SendRawJob(printer, kSelfTestJob, SelfTestCommand());
}

std::int32_t TakeSize(HWND dialog, const SizeControls& controls, const PaperSizeBox& box) noexcept {
    const TypedSize typed =
        ClampPaperSize(box, static_cast<std::int32_t>(GetDlgItemInt(dialog, controls.edit, nullptr, TRUE)));
    if (typed.isReplaced) {
        SetDlgItemInt(dialog, controls.edit, static_cast<UINT>(typed.size), TRUE);
    }
    return typed.size;
}

void SaveClicked(HWND dialog, HANDLE printer) {
    const PaperSize size = {TakeSize(dialog, kWidthControls, kPaperWidth),
                            TakeSize(dialog, kHeightControls, kPaperHeight)};
    std::vector<PaperForm> forms;
    if (!ReadForms(printer, forms)) {
        return;
    }
    const std::wstring shown = TypedName(dialog);
    bool isSaved = false;
    if (const PaperForm* const form = FormToRewrite(forms, shown)) {
        isSaved = RewritePaper(printer, form->name, size);
    } else {
        const std::wstring name = FormNameOf(shown);
        isSaved = AddPaper(printer, name, size);
        const LRESULT index = isSaved ? NewEntries(dialog).Add(name) : LB_ERR;
        if (index >= 0) {
            SendList(dialog, LB_SETCURSEL, static_cast<WPARAM>(index));
            EnableItem(dialog, IDC_UTILITY_DELETE, true);
        }
    }
    if (!isSaved) {
        ShowMessage(dialog, Message::kPaperSize, MessageTitle::kError, MessageIcon::kOfTitle);
    }
}

void PaperSelected(HWND dialog, HANDLE printer) {
    ShowSelectedName(dialog);
    ShowSelectedSize(dialog, printer);
}

// The entry goes whether or not the server lets the form go. The default paper stays, wherever it is listed.
void DeleteClicked(HWND dialog, HANDLE printer) {
    const auto index = SelectedPaper(dialog);
    const std::wstring name = SelectedName(dialog).value_or(std::wstring());
    if (!index || IsDefaultPaper(name)) {
        return;
    }
    DeletePaper(printer, name);
    SendList(dialog, LB_DELETESTRING, *index);
    const auto left = static_cast<std::size_t>(SendList(dialog, LB_GETCOUNT));
    if (const auto selection = SelectionAfterDelete(*index, left)) {
        SendList(dialog, LB_SETCURSEL, *selection);
    }
    PaperSelected(dialog, printer);
}

INT_PTR ControlUsed(HWND dialog, const DeviceSheetContext& context, int control, int notification) {
    switch (control) {
        case IDC_UTILITY_SELF_TEST:
            if (notification == BN_CLICKED) {
                SelfTestClicked(context.Printer());
            }
            return TRUE;
        case IDC_UTILITY_PAPERS:
            if (notification == LBN_SELCHANGE) {
                PaperSelected(dialog, context.Printer());
            }
            return TRUE;
        case IDC_UTILITY_FORM_NAME:
            if (notification == EN_CHANGE) {
                EnableDelete(dialog);
            }
            return TRUE;
        case IDC_UTILITY_SAVE:
            if (notification == BN_CLICKED) {
                SaveClicked(dialog, context.Printer());
            }
            return TRUE;
        case IDC_UTILITY_DELETE:
            if (notification == BN_CLICKED) {
                DeleteClicked(dialog, context.Printer());
            }
            return TRUE;
        case IDC_UTILITY_CONTROL_FONT:
            // One table at a time: an open one has the sheet disabled.
            if (notification == BN_CLICKED && IsWindowEnabled(GetParent(dialog))) {
                EditControlFont(dialog);
            }
            return TRUE;
        default:
            return FALSE;
    }
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* context = PageContext<DeviceSheetContext>(
        dialog, message, lParam, L"ERROR UI:  DevicePropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    if (context == nullptr) {
        return FALSE;
    }
    switch (message) {
        case WM_INITDIALOG:
            if (MarkPage(dialog, DevicePage::kUtility)) {
                PageOpened(dialog, context->Printer());
            }
            return FALSE;
        case WM_PAINT:
            ReloadTexts(dialog, UtilityPageTexts(), UtilityPageHelp());
            return FALSE;
        case WM_COMMAND:
            return ControlUsed(dialog, *context, LOWORD(wParam), HIWORD(wParam));
        case WM_NOTIFY:
            return AnswerSheet(dialog, lParam, [&] { ReportDeviceApplied(dialog, *context); });
        case WM_NCDESTROY:
            UnmarkPage(dialog);
            return FALSE;
        default:
            return FALSE;
    }
}

constinit TextTable gTexts(L"UTILITY", kUtilityPageTexts);
constinit TextTable gHelp(L"UTILITY", kUtilityPageHelp);

}  // namespace

TextTable& UtilityPageTexts() noexcept {
    return gTexts;
}

TextTable& UtilityPageHelp() noexcept {
    return gHelp;
}

INT_PTR CALLBACK utility_page::DevicePropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
