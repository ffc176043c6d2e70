// The plug-in's pages in a sheet, found and named by what is on them: their titles change with the language.
#pragma once

#include <optional>
#include <string>

#include "resources/resource.h"
#include "ui_driver.h"

// The host's own tabs stand before the plug-in's, in either sheet.
constexpr int kHostTabCount = 2;
// The one of the printing preferences with the driver's print-density option, which the plug-in relabels.
constexpr int kDensityTab = 1;

// A barcode page's controls for a test print of its first font.
struct BarcodePage {
    int unique;  // no other page has it
    int types;
    int data;
    int print;
};
constexpr BarcodePage k1DCode = {IDC_BARCODE1D_GENERAL_GROUP, IDC_BARCODE1D_TYPE, IDC_BARCODE1D_DATA,
                                 IDC_BARCODE1D_PRINT};
constexpr BarcodePage k2DCode = {IDC_BARCODE2D_QR_GROUP, IDC_BARCODE2D_TYPE, IDC_BARCODE2D_DATA,
                                 IDC_BARCODE2D_PRINT};

// Selects the plug-in's page that has this control. Throws UiError when there is none.
Window SelectPageWith(const Sheet& sheet, int control);

// A name for files: "operation", or "page-4" for a page at that position that has no name here.
std::wstring PageName(const Window& page, int index);

// Presses a button of a page; gives what the page says in a message box about that, answered with OK.
std::optional<std::wstring> PressForMessage(const UiDriver& driver, const Sheet& sheet, const Window& page,
                                            int button);

// Shows a person what the Utility page hides: the control font's button, and what it says of it.
void ShowControlFont(const Window& utility_page);

// Opens the control font's table from the Utility page. The page hears of its hidden button as of one that a
// person presses.
Window OpenControlFont(const UiDriver& driver, const Window& utility_page);
// Selects a character's row in it.
void SelectControlFontRow(const Window& table, wchar_t character);
