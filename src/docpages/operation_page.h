// The Operation page: what the printer does at four moments of every job, one button a moment.
#pragma once

#include <windows.h>

#include "docpages/operation_page_texts.h"
#include "language/text_table.h"

TextTable& OperationPageTexts() noexcept;

INT_PTR CALLBACK DocOperationPropPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
