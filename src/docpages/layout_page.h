// The Main page: how a job is laid out, the paper, the driver's log, and the language of the user interface.
#pragma once

#include <windows.h>

#include "docpages/layout_page_texts.h"
#include "language/text_table.h"

TextTable& LayoutPageTexts() noexcept;
TextTable& LayoutPageHelp() noexcept;

INT_PTR CALLBACK LayoutPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
