#include "plugin_pages.h"

#include <commctrl.h>

namespace {

// A control that only this page has.
struct NamedPage {
    int control;
    const wchar_t* name;
};

constexpr NamedPage kNamedPages[] = {
    {IDC_MAIN_LANGUAGE_LABEL, L"main"},
    {IDC_WATERMARK_PREVIEW, L"water-mark"},
    {IDC_OPERATION_PAGE_DOC_START, L"operation"},
    {k1DCode.unique, L"barcode-1d"},
    {k2DCode.unique, L"barcode-2d"},
    {IDC_UTILITY_PAPERS, L"utility"},
    {IDC_DOWNLOAD_PATH, L"download"},
    {IDC_FONT_TREE, L"font"},
    {IDC_VERSION_LINK, L"version"},
};

}  // namespace

Window SelectPageWith(const Sheet& sheet, int control) {
    const int count = sheet.TabCount();
    for (int index = kHostTabCount; index < count; ++index) {
        const Window page = sheet.SelectPage(index);
        if (page.HasControl(control)) {
            return page;
        }
    }
    throw UiError("no page of the plug-in has control " + std::to_string(control));
}

std::wstring PageName(const Window& page, int index) {
    for (const NamedPage& named : kNamedPages) {
        if (page.HasControl(named.control)) {
            return named.name;
        }
    }
    return L"page-" + std::to_wstring(index);
}

std::optional<std::wstring> PressForMessage(const UiDriver& driver, const Sheet& sheet, const Window& page,
                                            int button) {
    // The second is answered when the first is done with, or from within a message that the page shows.
    SendNotifyMessageW(page.Control(button), BM_CLICK, 0, 0);
    SendMessageW(page.handle(), WM_NULL, 0, 0);
    if (IsWindowEnabled(sheet.handle())) {
        return std::nullopt;
    }
    const MessageBoxInfo box = driver.WaitForMessageBox();
    box.Press(IDOK);
    return box.text;
}

void ShowControlFont(const Window& utility_page) {
    for (HWND control = GetWindow(utility_page.handle(), GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        ShowWindow(control, SW_SHOW);
    }
}

Window OpenControlFont(const UiDriver& driver, const Window& utility_page) {
    PostMessageW(utility_page.handle(), WM_COMMAND, MAKEWPARAM(IDC_UTILITY_CONTROL_FONT, BN_CLICKED),
                 reinterpret_cast<LPARAM>(utility_page.Control(IDC_UTILITY_CONTROL_FONT)));
    return driver.WaitForDialog();
}

void SelectControlFontRow(const Window& table, wchar_t character) {
    constexpr wchar_t kFirstRow = L' ';
    table.SelectRow(IDC_CONTROL_TABLE_ROWS, character - kFirstRow);
}
