// Filling a list view in report style.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <iterator>

struct ListColumn {
    const wchar_t* title;
    int width;  // pixels
};

// The control takes its texts without const and does not change them.
inline wchar_t* ListText(const wchar_t* text) noexcept {
    return const_cast<wchar_t*>(text);
}

// Columns from the left, and rows that are selected over their whole width.
template <std::size_t N>
void AddColumns(HWND list, const ListColumn (&columns)[N]) noexcept {
    int position = 0;
    for (const ListColumn& column : columns) {
        LVCOLUMNW description{};
        description.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        description.pszText = ListText(column.title);
        description.cx = column.width;
        description.iSubItem = position;
        SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(position),
                     reinterpret_cast<LPARAM>(&description));
        ++position;
    }
    SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
}

// Changes a column's title, unless it is that already: the heading is painted anew for it.
inline void SetColumnTitle(HWND list, int column, const wchar_t* title) noexcept {
    wchar_t shown[256] = {};
    LVCOLUMNW description{};
    description.mask = LVCF_TEXT;
    description.pszText = shown;
    description.cchTextMax = static_cast<int>(std::size(shown));
    SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&description));
    if (lstrcmpW(shown, title) != 0) {
        description.pszText = ListText(title);
        SendMessageW(list, LVM_SETCOLUMNW, static_cast<WPARAM>(column),
                     reinterpret_cast<LPARAM>(&description));
    }
}

// A new row with the text of its first column. Gives the row, -1 where the list takes no more.
inline int AddRow(HWND list, int row, const wchar_t* text) noexcept {
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.pszText = ListText(text);
    return static_cast<int>(SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
}

inline void SetCell(HWND list, int row, int column, const wchar_t* text) noexcept {
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = ListText(text);
    SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

// -1 where nothing is selected.
inline int SelectedRow(HWND list) noexcept {
    return static_cast<int>(SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}
