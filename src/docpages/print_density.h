// The driver's own print-density option, shown in the plug-in's language.
#pragma once

#include "intrface/win/sheet_context.h"
#include "language/text_table.h"

// The caption of the option and the word before each value's number.
TextTable& DensityTexts() noexcept;

// Relabels every print-density option among the host's items and tells the host. Items that read otherwise
// stay untouched. UI thread only.
void RelabelPrintDensity(DocumentSheetContext& context);
