// The Version page edits nothing. Its web address answers the mouse: underlined while the pointer is over it,
// opened by a click. The address is a static text, so the dialog below it gets the mouse messages.
#include "devpages/version_page.h"

#include <shellapi.h>
#include <windowsx.h>

#include <cwchar>

#include "base/platform.h"
#include "devpages/device_pages.h"
#include "intrface/win/gdi.h"
#include "intrface/win/page.h"
#include "language/text_lookup.h"

namespace {

// The underlined or plain font that the link was given; a page whose link was never hovered has none.
constexpr wchar_t kFontProperty[] = L"KVMR72.LinkFont";
constexpr wchar_t kUnderlinedProperty[] = L"KVMR72.LinkUnderlined";

// The area of the link is fixed by these, whatever the font: the dialog's template is made to them.
constexpr int kLinkTopBelowBottom = 42;
constexpr int kLinkHeightBelowControl = 33;
constexpr int kLinkWidthOf20 = 112;  // of 20 characters

constexpr int kLinkFontHeight = 13;

// In client pixels of the dialog.
RECT LinkArea(HWND dialog) noexcept {
    const HWND link = GetDlgItem(dialog, IDC_VERSION_LINK);
    RECT dialogBounds{};
    RECT dialogClient{};
    RECT linkBounds{};
    RECT linkClient{};
    GetWindowRect(dialog, &dialogBounds);
    GetClientRect(dialog, &dialogClient);
    GetWindowRect(link, &linkBounds);
    GetClientRect(link, &linkClient);
    const auto characters = static_cast<int>(std::wcslen(VersionPageTexts()[kVersionPageLink]));
    RECT area;
    area.left = linkBounds.left - dialogBounds.left;
    area.top = dialogClient.bottom - (dialogBounds.bottom - linkBounds.bottom) - kLinkTopBelowBottom;
    area.right = area.left + characters * kLinkWidthOf20 / 20;
    area.bottom = area.top + linkClient.bottom - kLinkHeightBelowControl;
    return area;
}

bool IsOverLink(HWND dialog, LPARAM position) noexcept {
    const RECT area = LinkArea(dialog);
    return PtInRect(&area, {GET_X_LPARAM(position), GET_Y_LPARAM(position)}) != FALSE;
}

void SetPointer(const wchar_t* cursor) noexcept {
    SetCursor(LoadCursorW(nullptr, cursor));
}

// The font before goes once the link has the new one; the last goes with the page.
void ShowUnderlined(HWND dialog, bool underlined) noexcept {
    Font font(CreateFontW(kLinkFontHeight, 0, 0, 0, FW_NORMAL, FALSE, underlined ? TRUE : FALSE, FALSE,
                          DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                          DEFAULT_PITCH | FF_SWISS, L"MS Shell Dlg"));
    if (!font) {
        return;
    }
    const Font previous(static_cast<HFONT>(GetPropW(dialog, kFontProperty)));
    SendDlgItemMessageW(dialog, IDC_VERSION_LINK, WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), TRUE);
    if (SetPropW(dialog, kFontProperty, font.Get())) {
        // The dialog owns it.
        font.Release();
    } else {
        // No room to remember it: the link goes back to the dialog's own font.
        RemovePropW(dialog, kFontProperty);
        SendDlgItemMessageW(dialog, IDC_VERSION_LINK, WM_SETFONT,
                            static_cast<WPARAM>(SendMessageW(dialog, WM_GETFONT, 0, 0)), TRUE);
    }
    SetPropW(dialog, kUnderlinedProperty, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(underlined)));
}

bool IsUnderlined(HWND dialog) noexcept {
    return GetPropW(dialog, kUnderlinedProperty) != nullptr;
}

void PointerMoved(HWND dialog, LPARAM position) noexcept {
    if (IsOverLink(dialog, position)) {
        SetPointer(IDC_HAND);
        if (!IsUnderlined(dialog)) {
            ShowUnderlined(dialog, true);
        }
    } else if (IsUnderlined(dialog)) {
        SetPointer(IDC_ARROW);
        ShowUnderlined(dialog, false);
    }
}

void PageClicked(HWND dialog, LPARAM position) noexcept {
    if (IsOverLink(dialog, position)) {
        ShellExecuteW(dialog, L"open", VersionPageTexts()[kVersionPageLink], nullptr, nullptr, SW_SHOW);
        SetPointer(IDC_HAND);
    } else {
        SetPointer(IDC_ARROW);
    }
}

// The captions stay those that were loaded when the sheet was assembled.
void PagePainted(HWND dialog) {
    RefreshLanguageFile();
    VersionPageTexts().ApplyTo(dialog);
}

INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCDESTROY) {
        UnmarkPage(dialog);
        RemovePropW(dialog, kUnderlinedProperty);
        // Its control is gone already.
        const Font font(static_cast<HFONT>(RemovePropW(dialog, kFontProperty)));
        return FALSE;
    }
    if (PageContext<const void>(dialog, message, lParam,
                                L"ERROR UI:  DeviceVersionPropPageProc : GetWindowLongPtr Failed (%d)\r\n") ==
        nullptr) {
        return FALSE;
    }
    switch (message) {
        case WM_INITDIALOG:
            // Also on the document sheet, where nobody looks for it.
            MarkPage(dialog, DevicePage::kVersion);
            VersionPageTexts().ApplyTo(dialog);
            return FALSE;
        case WM_PAINT:
            PagePainted(dialog);
            return FALSE;
        case WM_COMMAND:
            return HIWORD(wParam) == 0 ? TRUE : FALSE;
        case WM_NOTIFY:
            return AnswerSheet(dialog, lParam, [] {});
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_RBUTTONDOWN:
        case WM_RBUTTONUP:
        case WM_RBUTTONDBLCLK:
            PointerMoved(dialog, lParam);
            return FALSE;
        case WM_LBUTTONUP:
            PageClicked(dialog, lParam);
            return FALSE;
        default:
            return FALSE;
    }
}

constinit TextTable gTexts(L"VERSION", kVersionPageTexts);

}  // namespace

TextTable& VersionPageTexts() noexcept {
    return gTexts;
}

INT_PTR CALLBACK DeviceVersionPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, wParam, lParam); });
}
