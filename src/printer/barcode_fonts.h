// What the pages let a barcode font hold: its numbers with their limits, and the controls that its type uses.
// Font widths and heights follow from them; heights are in barcode_height.h.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/text.h"
#include "devmode/oemdev.h"

// Both ends belong to it.
struct NumberRange {
    std::uint8_t least;
    std::uint8_t most;
};

constexpr std::uint32_t InRange(std::uint32_t number, NumberRange range) noexcept {
    return std::clamp<std::uint32_t>(number, range.least, range.most);
}

// An edit with arrows.
struct NumberBox {
    NumberRange range;
    int digits;               // how many can be typed, as EM_LIMITTEXT takes it: 0 for any
    const Char16* rangeText;  // the same in all languages; null where the dialog's own stays
};

enum class Number1D {
    kElementWidth,
    kElementHeight,
    kGs1ElementWidth,
    kGs1RowHeight,
    kGs1CompositeRowHeight,
    kGs1SeparatorHeight,
    kCount,
};

enum class Number2D {
    kPdfColumns,
    kPdfModuleWidth,
    kPdfRows,
    kPdfModuleHeight,
    kGs1ElementWidth,
    kGs1RowHeight,
    kGs1CompositeRowHeight,
    kGs1SeparatorHeight,
    kGs1Segments,  // its arrows and text: SegmentArrows
    kQrModuleWidth,
    kCount,
};

const NumberBox& BoxOf(Number1D number) noexcept;
const NumberBox& BoxOf(Number2D number) noexcept;

// What the record holds, in range or not. It has no sign.
std::uint32_t ReadNumber(const BarcodeFont1D& font, Number1D number) noexcept;
std::uint32_t ReadNumber(const BarcodeFont2D& font, Number2D number) noexcept;

// Stores what an edit holds, brought into range, and gives what is stored. With the element width goes the
// font's width: a character is eight elements wide.
std::uint8_t StoreNumber(BarcodeFont1D& font, Number1D number, std::uint32_t typed) noexcept;
std::uint8_t StoreNumber(BarcodeFont2D& font, Number2D number, std::uint32_t typed) noexcept;

// A composite symbol has at least four segments in a row. The arrows keep to that, and so does the edit at
// the moment when "Composite" is chosen. Typing does not: StoreNumber takes 2 and 3 at any time.
struct SegmentArrows {
    NumberRange range;
    const Char16* rangeText;
};
SegmentArrows SegmentArrowsOf(bool isComposite) noexcept;

// The box of the text to print.
constexpr int kTestDataLength = 400;

// The only size of the 2D fonts, in points.
inline constexpr const Char16* kFontSize2D = TEXT16("9.5");

// These lists store their selection counted from 1.
constexpr std::uint8_t kFirstGs1Hri = 1;
constexpr std::uint8_t kFirstQrModel = 1;

// The row height of a composite symbol is no matter of the type: "Composite" enables it.
struct Controls1D {
    bool dataBar;     // shows the GS1 DataBar group instead of the general one
    bool hriFont;     // Font A and Font B can be chosen
    bool expandedAi;  // the list of application identifiers can be
};
Controls1D ControlsOf(const BarcodeFont1D& font) noexcept;

enum class Group2D { kPdf417, kDataBar, kQr };

struct Controls2D {
    Group2D group;         // the one that shows
    bool pdf417;           // its edits, arrows and list can be used
    bool expandedStacked;  // the segments and the list of application identifiers can be
};
// Maxi Code, and a type that is not in the list, have nothing to set: a group without use shows.
Controls2D ControlsOf(const BarcodeFont2D& font) noexcept;
