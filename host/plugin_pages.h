// The plug-in's pages in a sheet, found and named by what is on them: their titles change with the language.
#pragma once

#include <string>

#include "ui_driver.h"

// The host's own tabs stand before the plug-in's.
constexpr int kHostTabCount = 2;
// The one of them with the driver's print-density option, which the plug-in relabels.
constexpr int kDensityTab = 1;

// Selects the plug-in's page that has this control. Throws UiError when there is none.
Window SelectPageWith(const Sheet& sheet, int control);

// A name for files: "operation", or "page-4" for a page at that position that has no name here.
std::wstring PageName(const Window& page, int index);
