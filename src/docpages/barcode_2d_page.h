// The 2D Code page: two barcode fonts, each with its symbology and parameters, and a test print.
#pragma once

#include <windows.h>

#include "docpages/barcode_2d_texts.h"
#include "language/text_table.h"

TextTable& Barcode2DPageTexts() noexcept;
TextTable& Barcode2DPageHelp() noexcept;

INT_PTR CALLBACK Barcode2DPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
