// The 1D Code page: eight barcode fonts, each with its symbology and geometry, and a test print.
#pragma once

#include <windows.h>

#include "docpages/barcode_1d_texts.h"
#include "language/text_table.h"

TextTable& Barcode1DPageTexts() noexcept;
TextTable& Barcode1DPageHelp() noexcept;

INT_PTR CALLBACK BarcodePropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
