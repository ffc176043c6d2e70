#include "printer/barcode_height.h"

#include <algorithm>
#include <cmath>
#include <iterator>

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

// The nearest tenth of what a number of 0 to 2^33 is exactly, a half to the even one; at least five
// characters.
String16 Format(double value) {
    constexpr int kMantissaBits = 53;
    constexpr std::size_t kWidth = 5;
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);
    // In units of 2^-shift.
    const auto tenTimes = static_cast<std::uint64_t>(std::ldexp(fraction, kMantissaBits)) * 10;
    const int shift = kMantissaBits - exponent;
    const std::uint64_t half = std::uint64_t{1} << (shift - 1);
    std::uint64_t tenths = tenTimes >> shift;
    const std::uint64_t rest = tenTimes & (2 * half - 1);
    if (rest > half || (rest == half && tenths % 2 == 1)) {
        ++tenths;
    }
    String16 text = NumberText(tenths / 10);
    text.push_back(Char16{'.'});
    text.push_back(static_cast<Char16>('0' + tenths % 10));
    return String16(kWidth - std::min(kWidth, text.size()), Char16{' '}).append(text);
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
