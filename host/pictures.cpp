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

}  // namespace

void TakePictures(const Sheet& sheet, const std::filesystem::path& folder) {
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
    }
    sheet.SelectPage(kHostTabCount);
}
