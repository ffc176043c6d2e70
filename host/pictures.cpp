#include "pictures.h"

#include "plugin_pages.h"
#include "resources/resource.h"

namespace {

struct MomentPicture {
    int button;
    const wchar_t* file;
};

constexpr MomentPicture kMoments[] = {
    {IDC_OPERATION_PAGE_DOC_START, L"operation-start-of-document.bmp"},
    {IDC_OPERATION_PAGE_PAGE_START, L"operation-start-of-page.bmp"},
    {IDC_OPERATION_PAGE_PAGE_END, L"operation-end-of-page.bmp"},
    {IDC_OPERATION_PAGE_DOC_END, L"operation-end-of-document.bmp"},
};

void TakeControlFont(const UiDriver& driver, const Window& page, const std::filesystem::path& folder) {
    const Window table = OpenControlFont(driver, page);
    SelectControlFontRow(table, L'A');
    table.Screenshot(folder / L"control-font-table.bmp");
    const Window command = table.OpenDialog(IDC_CONTROL_TABLE_EDIT);
    command.Screenshot(folder / L"control-font-command.bmp");
    command.PressAndWaitClosed(IDCANCEL);
    table.PressAndWaitClosed(IDCANCEL);
}

}  // namespace

void TakePictures(const UiDriver& driver, const Sheet& sheet, const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    const int count = sheet.TabCount();
    for (int index = kHostTabCount; index < count; ++index) {
        const Window page = sheet.SelectPage(index);
        sheet.Screenshot(folder / (PageName(page, index) + L".bmp"));
        for (const MomentPicture& moment : kMoments) {
            if (page.HasControl(moment.button)) {
                const Window dialog = page.OpenDialog(moment.button);
                dialog.Screenshot(folder / moment.file);
                dialog.PressAndWaitClosed(IDCANCEL);
            }
        }
        if (page.HasControl(IDC_UTILITY_PAPERS)) {
            TakeControlFont(driver, page, folder);
        }
    }
    sheet.SelectPage(kHostTabCount);
}
