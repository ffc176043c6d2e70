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

// Makes a window known as a page while it lives: each page calls both, the first when it is initialised, the
// second with its last message. FALSE when it is one already, and has nothing to initialise.
bool MarkPage(HWND dialog, DevicePage page) noexcept;
void UnmarkPage(HWND dialog) noexcept;

// The window of a page in a sheet; null while the page was not shown.
HWND FindPage(HWND sheet, DevicePage page) noexcept;

// Reports a page's success to the host. There is nothing that the printer side would have to store then.
void ReportDeviceApplied(HWND dialog, const DeviceSheetContext& context) noexcept;
