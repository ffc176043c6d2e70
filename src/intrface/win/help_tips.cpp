#include "intrface/win/help_tips.h"

#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <string_view>

#include "intrface/win/activation_context.h"
#include "intrface/win/module.h"
#include "intrface/win/subclass.h"

namespace {

constexpr wchar_t kSlot[] = L"KVMR72.Help";
// What each helped control keeps: its tooltip window, and which text the tooltip has for it.
constexpr wchar_t kTipProperty[] = L"KVMR72.Tip";
constexpr wchar_t kTextProperty[] = L"KVMR72.TipText";

// The control's help; null where it has none. Called for every message to a helped control.
const wchar_t* HelpOf(const TextTable& help, HWND control) noexcept {
    const int id = GetDlgCtrlID(control);
    std::size_t row = 0;
    for (const TextEntry& entry : help.Entries()) {
        if (entry.control == id) {
            return help[row];
        }
        ++row;
    }
    return nullptr;
}

// Tells texts apart without a copy of them; never null.
HANDLE TextMark(std::wstring_view text) noexcept {
    return reinterpret_cast<HANDLE>(std::hash<std::wstring_view>()(text) | 1u);
}

// Adds the control to the tooltip at first, later keeps its text up to date.
void ShowTip(HWND tip, HWND control, const wchar_t* text) noexcept {
    const HANDLE mark = TextMark(text);
    const HANDLE known = GetPropW(control, kTextProperty);
    if (known == mark) {
        return;
    }
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_SUBCLASS;
    tool.hwnd = control;
    GetClientRect(control, &tool.rect);
    tool.hinst = ghInstance;
    // The tooltip copies the text.
    tool.lpszText = const_cast<wchar_t*>(text);
    if (known != nullptr) {
        SendMessageW(tip, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
    } else {
        SendMessageW(tip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
        SendMessageW(tip, TTM_SETDELAYTIME, TTDT_AUTOMATIC, kTipDelay);
        SendMessageW(tip, TTM_SETMAXTIPWIDTH, 0, kTipWidth);
    }
    SetPropW(control, kTextProperty, mark);
}

bool IsPointerOver(HWND control) noexcept {
    POINT pointer{};
    RECT bounds{};
    return GetCursorPos(&pointer) && GetWindowRect(control, &bounds) && PtInRect(&bounds, pointer);
}

}  // namespace

void AttachHelp(HWND dialog, const TextTable& help, WNDPROC procedure) noexcept {
    const HWND tip =
        CreateControl(WS_EX_TOPMOST, TOOLTIPS_CLASSW, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, dialog);
    for (const TextEntry& entry : help.Entries()) {
        const HWND control = GetDlgItem(dialog, entry.control);
        if (Subclass(control, kSlot, procedure) && tip != nullptr) {
            SetPropW(control, kTipProperty, tip);
        }
    }
}

LRESULT HandleHelp(const TextTable& help, HWND control, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCDESTROY) {
        RemovePropW(control, kTipProperty);
        RemovePropW(control, kTextProperty);
        return CallPrevious(control, kSlot, message, wParam, lParam);
    }
    const wchar_t* const text = HelpOf(help, control);
    if (text == nullptr) {
        return 0;
    }
    if (message == WM_MOUSEMOVE && IsPointerOver(control)) {
        const auto tip = static_cast<HWND>(GetPropW(control, kTipProperty));
        if (tip != nullptr) {
            ShowTip(tip, control, text);
        }
    }
    return CallPrevious(control, kSlot, message, wParam, lParam);
}
