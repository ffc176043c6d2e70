// The Utility page: self test, the user's paper sizes, and the way to the control font.
#pragma once

#include <windows.h>

#include "devpages/utility_page_texts.h"
#include "language/text_table.h"

TextTable& UtilityPageTexts() noexcept;
TextTable& UtilityPageHelp() noexcept;

namespace utility_page {

INT_PTR CALLBACK DevicePropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace utility_page
