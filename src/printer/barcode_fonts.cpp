#include "printer/barcode_fonts.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "printer/barcode_commands.h"

namespace {

constexpr std::int32_t kElementsOfCharacter = 8;
constexpr std::uint8_t kCompositeSegments = 4;

constexpr NumberRange kGs1Elements = {1, 6};
constexpr NumberRange kGs1Rows = {2, 250};
// The edits take one digit: 10 is reached with the arrows.
constexpr NumberRange kGs1CompositeRows = {1, 10};
constexpr NumberRange kGs1Separators = {1, 10};

constexpr int kAnyDigits = 0;

// A number lies in a byte or, where there is none, in a word.
template <typename Font>
struct NumberField {
    NumberBox box;
    std::uint8_t Font::*byte;
    std::int32_t Font::*word;
};

// In the order of Number1D.
constexpr NumberField<BarcodeFont1D> kFields1D[] = {
    {{{2, 6}, 1, TEXT16("[ 2. . 6 ]")}, &BarcodeFont1D::bElementWidth, nullptr},
    {{{1, 255}, 3, TEXT16("[ 1 . . 255 ]")}, nullptr, &BarcodeFont1D::dwElementHeight},
    {{kGs1Elements, 1, TEXT16("[ 1 . . 6 ]")}, &BarcodeFont1D::bGs1ElementWidth, nullptr},
    {{kGs1Rows, 3, TEXT16("[ 2 . . 250 ]")}, nullptr, &BarcodeFont1D::dwGs1RowHeight},
    {{kGs1CompositeRows, 1, TEXT16("[ 1 . . 10 ]")}, nullptr, &BarcodeFont1D::dwGs1CompositeRowHeight},
    {{kGs1Separators, 1, TEXT16("[ 1 . . 10 ]")}, &BarcodeFont1D::bGs1SeparatorHeight, nullptr},
};
static_assert(std::size(kFields1D) == static_cast<std::size_t>(Number1D::kCount));

// In the order of Number2D.
constexpr NumberField<BarcodeFont2D> kFields2D[] = {
    {{{1, 30}, kAnyDigits, TEXT16("[ 1. . 30 ]")}, &BarcodeFont2D::bPdfColumns, nullptr},
    {{{1, 7}, kAnyDigits, TEXT16("[ 1. . 7 ]")}, &BarcodeFont2D::bPdfModuleWidth, nullptr},
    {{{3, 90}, kAnyDigits, TEXT16("[ 3 . . 90 ]")}, &BarcodeFont2D::bPdfRows, nullptr},
    {{{2, 25}, kAnyDigits, TEXT16("[ 2 . . 25 ]")}, &BarcodeFont2D::bPdfModuleHeight, nullptr},
    {{kGs1Elements, kAnyDigits, nullptr}, &BarcodeFont2D::bGs1ElementWidth2D, nullptr},
    {{kGs1Rows, kAnyDigits, nullptr}, nullptr, &BarcodeFont2D::dwGs1RowHeight2D},
    {{kGs1CompositeRows, kAnyDigits, nullptr}, nullptr, &BarcodeFont2D::dwGs1CompositeRowHeight2D},
    {{kGs1Separators, kAnyDigits, nullptr}, &BarcodeFont2D::bGs1SeparatorHeight2D, nullptr},
    {{{2, 20}, 1, TEXT16("[ 2 . . 20 ]")}, &BarcodeFont2D::bGs1SegmentCount, nullptr},
    {{{1, 24}, 2, TEXT16("[ 1 . . 24 ]")}, &BarcodeFont2D::bQrModuleWidth, nullptr},
};
static_assert(std::size(kFields2D) == static_cast<std::size_t>(Number2D::kCount));

const NumberField<BarcodeFont1D>& FieldOf(Number1D number) noexcept {
    return kFields1D[static_cast<std::size_t>(number)];
}

const NumberField<BarcodeFont2D>& FieldOf(Number2D number) noexcept {
    return kFields2D[static_cast<std::size_t>(number)];
}

template <typename Font>
std::uint32_t Read(const Font& font, const NumberField<Font>& field) noexcept {
    return field.byte != nullptr ? font.*field.byte : static_cast<std::uint32_t>(font.*field.word);
}

template <typename Font>
std::uint8_t Store(Font& font, const NumberField<Font>& field, std::uint32_t typed) noexcept {
    const auto stored = static_cast<std::uint8_t>(InRange(typed, field.box.range));
    if (field.byte != nullptr) {
        font.*field.byte = stored;
    } else {
        font.*field.word = stored;
    }
    return stored;
}

}  // namespace

const NumberBox& BoxOf(Number1D number) noexcept {
    return FieldOf(number).box;
}

const NumberBox& BoxOf(Number2D number) noexcept {
    return FieldOf(number).box;
}

std::uint32_t ReadNumber(const BarcodeFont1D& font, Number1D number) noexcept {
    return Read(font, FieldOf(number));
}

std::uint32_t ReadNumber(const BarcodeFont2D& font, Number2D number) noexcept {
    return Read(font, FieldOf(number));
}

std::uint8_t StoreNumber(BarcodeFont1D& font, Number1D number, std::uint32_t typed) noexcept {
    const std::uint8_t stored = Store(font, FieldOf(number), typed);
    if (number == Number1D::kElementWidth) {
        font.dwFontWidth = stored * kElementsOfCharacter;
    }
    return stored;
}

std::uint8_t StoreNumber(BarcodeFont2D& font, Number2D number, std::uint32_t typed) noexcept {
    return Store(font, FieldOf(number), typed);
}

SegmentArrows SegmentArrowsOf(bool isComposite) noexcept {
    const NumberBox& box = BoxOf(Number2D::kGs1Segments);
    if (!isComposite) {
        return {box.range, box.rangeText};
    }
    return {{kCompositeSegments, box.range.most}, TEXT16("[ 4 . . 20 ]")};
}

Controls1D ControlsOf(const BarcodeFont1D& font) noexcept {
    return {font.bType >= kFirstDataBar1D, font.bHriPosition != 0, font.bType == kDataBarExpanded1D};
}

Controls2D ControlsOf(const BarcodeFont2D& font) noexcept {
    switch (font.bType2D) {
        case kPdf417:
            return {Group2D::kPdf417, true, false};
        case kDataBarStacked:
        case kDataBarStackedOmnidirectional:
            return {Group2D::kDataBar, true, false};
        case kDataBarExpandedStacked:
            return {Group2D::kDataBar, true, true};
        case kQrCode:
            return {Group2D::kQr, true, false};
        default:
            return {Group2D::kPdf417, false, false};
    }
}
