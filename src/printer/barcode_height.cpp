#include "printer/barcode_height.h"

#include <array>
#include <cstdio>
#include <iterator>
#include <string>

namespace {

constexpr std::uint32_t kHriDotsA = 24;
constexpr std::uint32_t kHriDotsB = 17;
// Stored instead of no height.
constexpr std::int32_t kLeastHeight = 2;

// Lines of HRI text by position: none, above, below, both.
constexpr std::uint32_t kHriLines[] = {0, 1, 1, 2};

// Font size in half points. A dot is 4 tenths of a point: whole numbers keep the grid's limits of 4 and 7
// tenths exact, where 2.4 - 2 in floating point falls below 0.4.
std::uint64_t HalfPoints(std::int32_t dots) noexcept {
    const std::uint64_t tenths = std::uint64_t{4} * static_cast<std::uint32_t>(dots);
    const std::uint64_t fraction = tenths % 10;
    return tenths / 10 * 2 + (fraction < 4 ? 0 : fraction < 7 ? 1 : 2);
}

String16 Format(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%5.1f", value);
    return {text.data(), text.data() + std::char_traits<char>::length(text.data())};
}

}  // namespace

std::int32_t FontHeight(const BarcodeFont1D& font) noexcept {
    const std::uint32_t lines = font.bHriPosition < std::size(kHriLines) ? kHriLines[font.bHriPosition] : 0;
    const std::uint32_t line = font.bHriFont == 0 ? kHriDotsA : kHriDotsB;
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(font.dwElementHeight) + lines * line);
}

FontHeightTexts TextsOfFontHeight(std::int32_t dots) {
    return {Format(static_cast<std::uint32_t>(dots) * 25.4 / 180),
            Format(static_cast<double>(HalfPoints(dots)) / 2)};
}

// Half a point is 5 quarters of a dot.
std::int32_t SnappedFontHeight(std::int32_t dots) noexcept {
    const auto snapped = static_cast<std::int32_t>(HalfPoints(dots) * 5 / 4);
    return snapped == 0 ? kLeastHeight : snapped;
}

FontHeightTexts UpdateFontHeight(BarcodeFont1D& font) {
    const std::int32_t dots = FontHeight(font);
    font.dwFontHeight = SnappedFontHeight(dots);
    return TextsOfFontHeight(dots);
}
