// The Water Mark page: what is printed under every page, with a live preview.
#pragma once

#include <windows.h>

#include "docpages/water_mark_page_texts.h"
#include "language/text_table.h"

TextTable& WaterMarkPageTexts() noexcept;
TextTable& WaterMarkPageHelp() noexcept;

INT_PTR CALLBACK WaterMarkPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
