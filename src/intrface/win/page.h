// What every page's dialog procedure does the same way.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <string>

#include "base/platform.h"

// The page's creation parameter. WM_INITDIALOG brings it and keeps it in the dialog; every other message
// reads it back. Null when it is missing: the error line is then traced with the procedure's name, and the
// message is ignored.
template <typename Context>
Context* PageContext(HWND dialog, UINT message, LPARAM lParam, const wchar_t* missingLine) noexcept {
    if (message == WM_INITDIALOG) {
        const auto* page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
        const LPARAM context = page != nullptr ? page->lParam : 0;
        // What it was told first stays.
        if (GetWindowLongPtrW(dialog, DWLP_USER) == 0) {
            SetWindowLongPtrW(dialog, DWLP_USER, context);
            // A page that cannot be told again whose it is must not make what it could not give back.
            if (GetWindowLongPtrW(dialog, DWLP_USER) == 0) {
                return nullptr;
            }
        }
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

// A radio button otherwise reports a click whenever it gets the focus, which would change the record when the
// user only moves through the page.
inline void SetClickedByUserOnly(HWND dialog, int radio) noexcept {
    SendDlgItemMessageW(dialog, radio, BM_SETDONTCLICK, TRUE, 0);
}

// The index of a list's selection, or `otherwise` where nothing is selected.
inline int SelectedItem(HWND dialog, int list, int otherwise) noexcept {
    const LRESULT index = SendDlgItemMessageW(dialog, list, CB_GETCURSEL, 0, 0);
    return index == CB_ERR ? otherwise : static_cast<int>(index);
}

// The text of a list's selection; empty where nothing is selected. May throw bad_alloc.
inline std::wstring SelectedText(HWND dialog, int list) {
    const auto index = static_cast<WPARAM>(SendDlgItemMessageW(dialog, list, CB_GETCURSEL, 0, 0));
    const LRESULT length = SendDlgItemMessageW(dialog, list, CB_GETLBTEXTLEN, index, 0);
    if (length == CB_ERR || length == 0) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    SendDlgItemMessageW(dialog, list, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    return text;
}

inline bool HasItems(HWND dialog, int list) noexcept {
    return SendDlgItemMessageW(dialog, list, CB_GETCOUNT, 0, 0) > 0;
}

inline void AddItem(HWND dialog, int list, const wchar_t* text) noexcept {
    SendDlgItemMessageW(dialog, list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
}

// Shows the text of a record's field, which need not be terminated. May throw bad_alloc.
template <std::size_t N>
void ShowField(HWND dialog, int control, const wchar_t (&field)[N]) {
    SetDlgItemTextW(dialog, control, std::wstring(FieldText(field)).c_str());
}

// Answers a notification that the page has dealt with.
inline INT_PTR AnswerNotification(HWND dialog, LONG_PTR answer) noexcept {
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, answer);
    return TRUE;
}

// Answers what the sheet notifies of: runs `apply` when it applies its pages, and reports success for that
// and for a change of page. `header` is the message's parameter; what has none, and all else, is the
// platform's.
template <typename Apply>
INT_PTR AnswerSheet(HWND dialog, LPARAM header, Apply&& apply) {
    if (header == 0) {
        return FALSE;
    }
    switch (reinterpret_cast<const NMHDR*>(header)->code) {
        case PSN_APPLY:
            apply();
            return AnswerNotification(dialog, PSNRET_NOERROR);
        case PSN_KILLACTIVE:
        case PSN_SETACTIVE:
            return AnswerNotification(dialog, 0);
        default:
            return FALSE;
    }
}

// Messages that no page deals with: these two go to the window's own default, all others to the dialog's.
inline INT_PTR PassOn(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    return message == WM_SYSCOMMAND || message == WM_SETICON ? DefWindowProcW(dialog, message, wParam, lParam)
                                                             : FALSE;
}

// An index that the list does not have leaves nothing selected.
inline void SelectItem(HWND dialog, int list, int index) noexcept {
    if (SendDlgItemMessageW(dialog, list, CB_SETCURSEL, static_cast<WPARAM>(index), 0) == CB_ERR) {
        SendDlgItemMessageW(dialog, list, CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    }
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
