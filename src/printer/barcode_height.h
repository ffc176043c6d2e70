// How high text in a barcode font is: the bars and the text beside them (HRI), on the printer's 180 dots an
// inch. Applications choose the height as a font size, on a grid of half points.
#pragma once

#include <cstdint>

#include "base/text.h"
#include "devmode/oemdev.h"

// Bars and HRI text in dots. A position that is not in the list has no text.
std::int32_t FontHeight(const BarcodeFont1D& font) noexcept;

// What the page shows for a height of `dots`: millimetres as they are, points on the grid, "%5.1f".
struct FontHeightTexts {
    String16 millimetres;
    String16 points;
};
FontHeightTexts TextsOfFontHeight(std::int32_t dots);

// The height that the shown points stand for, in whole dots and never 0. This is what the record keeps.
std::int32_t SnappedFontHeight(std::int32_t dots) noexcept;

// After a change of the height, the HRI position or the HRI font: stores the snapped height and gives what
// the page shows, which is of the height before that.
FontHeightTexts UpdateFontHeight(BarcodeFont1D& font);
