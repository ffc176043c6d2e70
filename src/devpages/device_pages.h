// The pages of the printer sheet: what adds them, and what finds them again in an open sheet.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

#include "intrface/win/sheet_context.h"
#include "language/text_table.h"

// In the order of their tabs, which are the sheet's last.
enum class DevicePage { kUtility, kDownload, kFont, kVersion, kCount };

struct DevicePageEntry {
    DevicePage page;
    int templateId;
    TextTable& (*texts)() noexcept;
    std::size_t titleRow;
    DLGPROC procedure;
};

std::span<const DevicePageEntry> DevicePages() noexcept;

// Every page calls it for each message: the window is known as that page while it lives.
void TrackPage(HWND dialog, UINT message, DevicePage page) noexcept;

// The window of a page in a sheet; null while the page was not shown.
HWND FindPage(HWND sheet, DevicePage page) noexcept;

// Reports a page's success to the host. There is nothing that the printer side would have to store then.
void ReportDeviceApplied(HWND dialog, const DeviceSheetContext& context) noexcept;
