#include "docpages/water_mark_layout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// No window's client area is wider or higher.
constexpr std::int32_t kMaxFrameSide = 32767;

constexpr std::int32_t kWeightNormal = 400;
constexpr std::int32_t kWeightBold = 700;
constexpr std::uint8_t kStyleItalic = 1;
constexpr std::uint8_t kStyleBold = 2;
constexpr std::uint8_t kStyleBoldItalic = 3;

constexpr std::int32_t kPointsPerInch = 72;

// What the formulas of the text's start were fixed with.
constexpr double kPi = 3.141592654;

constexpr std::size_t kBitmapHeadersSize = 54;

bool HasPixels(PixelSize size) noexcept {
    return size.width > 0 && size.height > 0;
}

// The image at a percentage of the frame's width, its shape kept unless it is higher than the frame.
PixelSize DrawnSize(PixelSize frame, PixelSize image, std::int64_t size) noexcept {
    const std::int64_t width = frame.width * size / 100;
    const std::int64_t height = frame.width * size * image.height / (std::int64_t{image.width} * 100);
    return {static_cast<std::int32_t>(width),
            static_cast<std::int32_t>(std::min<std::int64_t>(height, frame.height))};
}

void PlaceTiles(std::vector<Placement>& placements, PixelSize frame, PixelSize image, PixelSize drawn,
                std::int64_t size) {
    const auto columns = static_cast<std::int32_t>(100 / size);
    const std::int32_t rows = frame.height / drawn.height;
    const auto placeRow = [&](std::int32_t top, std::int32_t height, std::int32_t imageRows) {
        for (std::int32_t column = 0; column < columns; ++column) {
            const auto left = static_cast<std::int32_t>(frame.width * size * column / 100);
            placements.push_back({left, top, drawn.width, height, imageRows});
        }
    };
    for (std::int32_t row = 0; row < rows; ++row) {
        placeRow(drawn.height * row, drawn.height, image.height);
    }
    const std::int32_t rest = frame.height - drawn.height * rows;
    if (rest > 0) {
        // A small image stretched far may have less than a row for the rest; it fills it all the same.
        const std::int64_t imageRows = std::int64_t{image.height} * rest / drawn.height;
        placeRow(drawn.height * rows, rest, static_cast<std::int32_t>(std::max<std::int64_t>(imageRows, 1)));
    }
}

// Half of an extent, turned, stays within 31 bits.
std::int32_t ToPixel(double coordinate) noexcept {
    return static_cast<std::int32_t>(std::round(coordinate));
}

void Append16(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8 & 0xFF));
}

void Append32(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    Append16(bytes, value & 0xFFFF);
    Append16(bytes, value >> 16);
}

}  // namespace

bool IsTooBig(std::int32_t width, std::int32_t height) noexcept {
    return HasPixels({width, height}) && std::int64_t{width} * height > kMaxImagePixels;
}

void Brighten(std::span<std::uint8_t> pixels, std::uint8_t brightness) noexcept {
    for (std::uint8_t& byte : pixels) {
        byte = static_cast<std::uint8_t>(std::min(byte + brightness, 255));
    }
}

std::vector<Placement> PlaceWaterMark(PixelSize frame, PixelSize image, std::uint8_t position,
                                      std::uint8_t size) {
    std::vector<Placement> placements;
    if (!HasPixels(frame) || frame.width > kMaxFrameSide || frame.height > kMaxFrameSide ||
        !HasPixels(image) || IsTooBig(image.width, image.height) || position > kTiledPosition) {
        return placements;
    }
    const std::int64_t percent = std::min(SizeAtPosition(position, size), kMaxWaterMarkSize);
    const PixelSize drawn = DrawnSize(frame, image, percent);
    if (!HasPixels(drawn)) {
        return placements;
    }
    if (position == kTiledPosition) {
        PlaceTiles(placements, frame, image, drawn, percent);
    } else {
        // Column and row 0, 1 or 2: flush, centred, flush.
        const std::int32_t left = (frame.width - drawn.width) * (position % 3) / 2;
        const std::int32_t top = (frame.height - drawn.height) * (position / 3) / 2;
        placements.push_back({left, top, drawn.width, drawn.height, image.height});
    }
    return placements;
}

std::uint8_t ClampTypedFontSize(std::int32_t typed) noexcept {
    return static_cast<std::uint8_t>(std::clamp(typed, std::int32_t{0}, std::int32_t{kMaxFontSize}));
}

std::uint8_t ClampFontSize(std::int32_t typed) noexcept {
    return std::max(ClampTypedFontSize(typed), kMinFontSize);
}

WaterMarkFont FontOfWaterMark(std::uint8_t fontSize, std::uint8_t style, std::int32_t angle,
                              std::int32_t dotsPerInch) noexcept {
    // As the platform's MulDiv rounds.
    const std::int64_t dots = std::max(dotsPerInch, 0);
    const std::int64_t height = (fontSize * dots + kPointsPerInch / 2) / kPointsPerInch;
    constexpr std::int64_t kMostHeight = std::numeric_limits<std::int32_t>::max();
    return {static_cast<std::int32_t>(-std::min(height, kMostHeight)),
            std::clamp(angle, std::int32_t{0}, kMaxAngle) * 10,
            style == kStyleBold || style == kStyleBoldItalic ? kWeightBold : kWeightNormal,
            style == kStyleItalic || style == kStyleBoldItalic};
}

TextStart TextStartPoint(std::int32_t angle, PixelSize extent) noexcept {
    const double radians = std::clamp(angle, std::int32_t{0}, kMaxAngle) * 2 * kPi / 360;
    const double halfWidth = extent.width / 2.0;
    const double halfHeight = extent.height / 2.0;
    constexpr double kCentre = kTextImageSide / 2.0;
    return {ToPixel(kCentre - (std::cos(radians) * halfWidth - std::sin(radians) * halfHeight)),
            ToPixel(kCentre + (std::sin(radians) * halfWidth + std::cos(radians) * halfHeight))};
}

std::vector<std::uint8_t> TextImageFile(std::span<const std::uint8_t, kTextImageBytes> pixels) {
    constexpr std::uint32_t kPixelBytes = kTextImageBytes / 4 * 3;
    constexpr auto kSide = static_cast<std::uint32_t>(kTextImageSide);
    static_assert(kSide * 3 % 4 == 0, "rows need no padding");
    std::vector<std::uint8_t> file;
    file.reserve(kBitmapHeadersSize + kPixelBytes);
    file.push_back('B');
    file.push_back('M');
    Append32(file, kBitmapHeadersSize + kPixelBytes);
    Append32(file, 0);                   // reserved
    Append32(file, kBitmapHeadersSize);  // where the pixels begin
    Append32(file, 40);                  // size of the information header
    Append32(file, kSide);
    Append32(file, kSide);
    Append16(file, 1);   // planes
    Append16(file, 24);  // bits a pixel
    Append32(file, 0);   // not compressed
    Append32(file, kPixelBytes);
    Append32(file, 0);  // no resolution
    Append32(file, 0);
    Append32(file, 0);  // no palette
    Append32(file, 0);
    for (std::size_t i = 0; i < kTextImageBytes; i += 4) {
        file.insert(file.end(), {pixels[i], pixels[i + 1], pixels[i + 2]});
    }
    return file;
}
