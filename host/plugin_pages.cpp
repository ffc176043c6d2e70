#include "plugin_pages.h"

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
