// The driver's own paper-size option, which the Main page shows and sets.
#pragma once

#include "intrface/win/sheet_context.h"

// Fills a combo box with the names of the forms.
void ListForms(const DocumentSheetContext& context, HWND list) noexcept;

// Selects in the list what the option has selected; where that is no value of its, the list stays.
void ShowChosenForm(const DocumentSheetContext& context, HWND list) noexcept;

// Makes a form of the list the option's selection and tells the host.
void ChooseForm(const DocumentSheetContext& context, LONG index) noexcept;
