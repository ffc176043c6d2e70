// What --play does in an open sheet: a person's visit to every page on which something can be set.
#pragma once

#include "options.h"
#include "ui_driver.h"
#include "virtual_printer.h"

// Main: another paper size, zoom with a scale. Water Mark: the bitmap of `options`, if there is one, at a
// position and tiled, then a text at an angle. Operation: the typical event. 1D Code and 2D Code: a test
// print of every type, which is the job's label on `printer` unless that is null. Main again: another
// language, applied, then the one that was there. Ends the sheet with OK.
//
// With a folder for pictures it leaves there the Water Mark page with each kind of watermark, the barcode
// pages with each group of their controls, and Main page and print-density option right after the change of
// language. Any record may be the start; what a page says on the way is answered with OK.
void Play(const UiDriver& driver, const Sheet& sheet, const Options& options, VirtualPrinter* printer);
