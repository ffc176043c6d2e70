// The Font page: which point size an application has to ask for to get a font of the printer's own.
#pragma once

#include <windows.h>

#include "devpages/font_page_texts.h"
#include "language/text_table.h"

TextTable& FontPageTexts() noexcept;

INT_PTR CALLBACK SupportedFontPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
