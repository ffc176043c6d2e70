#include "intrface/win/subclass.h"

bool Subclass(HWND control, const wchar_t* slot, WNDPROC procedure) noexcept {
    if (control == nullptr || GetPropW(control, slot) != nullptr) {
        return false;
    }
    const LONG_PTR current = GetWindowLongPtrW(control, GWLP_WNDPROC);
    // Kept first: the procedure may be called before SetWindowLongPtrW returns.
    if (current == 0 || !SetPropW(control, slot, reinterpret_cast<HANDLE>(current))) {
        return false;
    }
    SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    return true;
}

WNDPROC PreviousProcedure(HWND control, const wchar_t* slot) noexcept {
    return reinterpret_cast<WNDPROC>(GetPropW(control, slot));
}

LRESULT CallPrevious(HWND control, const wchar_t* slot, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    const WNDPROC previous = PreviousProcedure(control, slot);
    if (previous == nullptr) {
        return DefWindowProcW(control, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        RemovePropW(control, slot);
    }
    return CallWindowProcW(previous, control, message, wParam, lParam);
}
