// What --play does in an open printer sheet: a person's visit to every page on which something can be done.
#pragma once

#include "options.h"
#include "ui_driver.h"

// Utility: the self test; two paper sizes, one of which is changed and one deleted; a character of the
// control font's table, where there is a folder for its file. Download: the file of `options`, if there is
// one; its logos, if there are any, in black and white and in grey, and clearing them. Ends the sheet with
// OK.
//
// With a folder for pictures it leaves there the Utility page with both paper sizes, the changed table, and
// the Download page with the file and with each logo in each of the three types. Any forms may be the start.
// Throws UiError with what a page says when it refuses something.
void PlayPrinter(const UiDriver& driver, const Sheet& sheet, const Options& options);
