// The Version page of both sheets: what is installed, and the maker's web address as a link.
#pragma once

#include <windows.h>

#include "devpages/version_page_texts.h"
#include "language/text_table.h"

TextTable& VersionPageTexts() noexcept;

INT_PTR CALLBACK DeviceVersionPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
