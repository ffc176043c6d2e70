// The Download page: a file of firmware, data or fonts for the printer, and logos.
#pragma once

#include <windows.h>

#include "devpages/download_page_texts.h"
#include "language/text_table.h"

TextTable& DownloadPageTexts() noexcept;
TextTable& DownloadPageHelp() noexcept;

namespace download_page {

INT_PTR CALLBACK DevicePropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace download_page
