#include "intrface/win/hex_key_filter.h"

#include "intrface/win/subclass.h"
#include "printer/hex_command.h"

namespace {

constexpr wchar_t kSlot[] = L"KVMR72.HexKeyFilter";

bool IsKeyDown(int key) noexcept {
    return GetKeyState(key) < 0;
}

LRESULT CALLBACK HexKeyFilterProc(HWND edit, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_GETDLGCODE) {
        // The dialog leaves Enter, Tab and Escape to the box.
        return DLGC_WANTALLKEYS;
    }
    if (message == WM_CHAR) {
        const auto character = static_cast<wchar_t>(wParam);
        if (IsKeyDown(VK_TAB)) {
            PostMessageW(GetParent(edit), WM_NEXTDLGCTL, 0, 0);
            return 1;
        }
        // With Control held the character is a shortcut: copy, paste and the like.
        if (!IsCommandCharacter(character) && !IsKeyDown(VK_CONTROL)) {
            return 1;
        }
    }
    return CallPrevious(edit, kSlot, message, wParam, lParam);
}

}  // namespace

void InstallHexKeyFilter(HWND edit) noexcept {
    Subclass(edit, kSlot, HexKeyFilterProc);
}
