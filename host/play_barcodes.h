// The part of --play on the two barcode pages.
#pragma once

#include "options.h"
#include "ui_driver.h"
#include "virtual_printer.h"

// Prints every type of the first font of the 1D Code page, then of the 2D Code page, with data that a printer
// prints. `printer`,
// unless it is null, gets the types as names of the jobs. With a folder for pictures it leaves there each
// page with each group of its controls.
void PlayBarcodes(const Sheet& sheet, const Options& options, VirtualPrinter* printer);
