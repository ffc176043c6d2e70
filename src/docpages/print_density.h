// The driver's own print-density option, shown in the plug-in's language.
#pragma once

#include "intrface/win/sheet_context.h"
#include "language/text_table.h"

// The caption of the option and the word before each value's number.
TextTable& DensityTexts() noexcept;

// Relabels every print-density option among the host's items and tells the host. Items that read otherwise
// stay untouched. UI thread only.
void RelabelPrintDensity(const DocumentSheetContext& context);

// Drops what is known of the texts behind a sheet's items: they are as long as the host made them for that
// sheet.
void ForgetOptionTexts(const DocumentSheetContext& context) noexcept;
