// The Operation settings dialog: edits one moment's block in the edit buffer.
#pragma once

#include <windows.h>

#include "devmode/operation_settings.h"
#include "language/text_table.h"

// What the Operation page and its dialog share while the dialog is open, by address as the dialog's
// parameter. The dialog changes it only on OK.
struct OperationEditBuffer {
    Moment moment;
    OperationSettings settings;
};

TextTable& OperationDialogTexts() noexcept;
TextTable& OperationDialogHelp() noexcept;

// Ends with IDOK or IDCANCEL.
INT_PTR CALLBACK OperationDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
