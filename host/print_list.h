// Test prints of the barcode pages from a list in a file, for who has many to make.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "ui_driver.h"
#include "virtual_printer.h"

struct ListedPrint {
    bool is2D;
    std::wstring type;  // as the page's list names it
    std::wstring data;
};

// Reads lines of a page ("1D" or "2D"), a type and the data, divided by tabs, in UTF-8. Throws
// std::runtime_error that names the line.
std::vector<ListedPrint> ReadPrintList(const std::filesystem::path& file);

// Types each into the first font of its page and presses Print, then ends the sheet with OK. `printer`,
// unless it is null, gets the types as names of the jobs. Throws UiError for a type that a page does not
// list, and where a page says that the data cannot be printed.
void PrintTests(const UiDriver& driver, const Sheet& sheet, const std::vector<ListedPrint>& prints,
                VirtualPrinter* printer);
