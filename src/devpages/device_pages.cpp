#include "devpages/device_pages.h"

#include <iterator>

#include "devpages/download_page.h"
#include "devpages/font_page.h"
#include "devpages/utility_page.h"
#include "devpages/version_page.h"
#include "intrface/win/property_sheet.h"
#include "resources/resource.h"

namespace {

constexpr DevicePageEntry kPages[] = {
    {DevicePage::kUtility, IDD_UTILITY_PAGE, UtilityPageTexts, kUtilityPageTitle,
     utility_page::DevicePropPageProc},
    {DevicePage::kDownload, IDD_DOWNLOAD_PAGE, DownloadPageTexts, kDownloadPageTitle,
     download_page::DevicePropPageProc},
    {DevicePage::kFont, IDD_FONT_PAGE, FontPageTexts, kFontPageTitle, SupportedFontPropPageProc},
    {DevicePage::kVersion, IDD_VERSION_PAGE, VersionPageTexts, kVersionPageTitle, DeviceVersionPropPageProc},
};
static_assert(std::size(kPages) == static_cast<std::size_t>(DevicePage::kCount));

// Kept with the window, not with the process: more than one printer's sheet may be open.
constexpr wchar_t kPageProperty[] = L"KVMR72.DevicePage";

// A property of 0 would be none.
HANDLE MarkOf(DevicePage page) noexcept {
    return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(page) + 1);
}

}  // namespace

std::span<const DevicePageEntry> DevicePages() noexcept {
    return kPages;
}

bool MarkPage(HWND dialog, DevicePage page) noexcept {
    if (GetPropW(dialog, kPageProperty) != nullptr) {
        return false;
    }
    SetPropW(dialog, kPageProperty, MarkOf(page));
    return true;
}

void UnmarkPage(HWND dialog) noexcept {
    RemovePropW(dialog, kPageProperty);
}

HWND FindPage(HWND sheet, DevicePage page) noexcept {
    HWND child = nullptr;
    do {
        child = FindWindowExW(sheet, child, nullptr, nullptr);
    } while (child != nullptr && GetPropW(child, kPageProperty) != MarkOf(page));
    return child;
}

void ReportDeviceApplied(HWND dialog, const DeviceSheetContext& context) noexcept {
    ReportApplied(context.pfnComPropSheet, context.hComPropSheet, reinterpret_cast<LPARAM>(context.hLastPage),
                  dialog);
}
