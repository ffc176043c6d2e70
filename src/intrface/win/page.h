// What every page's dialog procedure does the same way.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include "base/platform.h"

// The page's creation parameter. WM_INITDIALOG brings it and keeps it in the dialog; every other message
// reads it back. Null when it is missing: the error line is then traced with the procedure's name, and the
// message is ignored.
template <typename Context>
Context* PageContext(HWND dialog, UINT message, LPARAM lParam, const wchar_t* missingLine) noexcept {
    if (message == WM_INITDIALOG) {
        const auto* page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
        const LPARAM context = page != nullptr ? page->lParam : 0;
        SetWindowLongPtrW(dialog, DWLP_USER, context);
        return reinterpret_cast<Context*>(context);
    }
    SetLastError(ERROR_SUCCESS);
    const LONG_PTR context = GetWindowLongPtrW(dialog, DWLP_USER);
    if (context == 0) {
        TRACE_ERROR(missingLine, GetLastError());
    }
    return reinterpret_cast<Context*>(context);
}

// Runs a dialog procedure's body so that no exception reaches the platform: the message then counts as not
// handled.
template <typename Body>
INT_PTR GuardDialog(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return FALSE;
    }
}

inline void EnableItem(HWND dialog, int control, bool enabled) noexcept {
    EnableWindow(GetDlgItem(dialog, control), enabled ? TRUE : FALSE);
}

inline void CheckItem(HWND dialog, int control, bool checked) noexcept {
    CheckDlgButton(dialog, control, checked ? BST_CHECKED : BST_UNCHECKED);
}

inline bool IsItemChecked(HWND dialog, int control) noexcept {
    return IsDlgButtonChecked(dialog, control) == BST_CHECKED;
}

// The index of a list's selection, or `otherwise` where nothing is selected.
inline int SelectedItem(HWND dialog, int list, int otherwise) noexcept {
    const LRESULT index = SendDlgItemMessageW(dialog, list, CB_GETCURSEL, 0, 0);
    return index == CB_ERR ? otherwise : static_cast<int>(index);
}

inline void SelectItem(HWND dialog, int list, int index) noexcept {
    SendDlgItemMessageW(dialog, list, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

// Reads a number edit, caps it, and shows the result through its up-down. The caret then stands where typing
// goes on.
inline void CapNumber(HWND dialog, int edit, int spin, UINT maximum) noexcept {
    const UINT typed = GetDlgItemInt(dialog, edit, nullptr, FALSE);
    const LRESULT length = SendDlgItemMessageW(dialog, edit, WM_GETTEXTLENGTH, 0, 0);
    SendDlgItemMessageW(dialog, spin, UDM_SETPOS32, 0,
                        static_cast<LPARAM>(typed < maximum ? typed : maximum));
    if (typed > maximum || length == 0) {
        SendDlgItemMessageW(dialog, edit, EM_SETSEL, 0x7FFF, 0x7FFF);
    }
}
