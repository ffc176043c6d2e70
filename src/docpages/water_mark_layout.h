// Where and how a watermark shows: arithmetic of the preview, of the text's picture and of the page's ranges.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// Print positions: 0 to 8 row by row from left-top to right-bottom, then tiled.
constexpr std::uint8_t kTiledPosition = 9;

constexpr std::uint8_t kMinTiledSize = 20;  // percent
constexpr std::uint8_t kMaxWaterMarkSize = 100;
constexpr std::uint8_t kMinFontSize = 8;  // points
constexpr std::uint8_t kMaxFontSize = 72;
constexpr std::int32_t kMaxAngle = 360;  // degrees

// Pixels that a watermark's image may have.
constexpr std::int32_t kMaxImagePixels = 10 * 1024 * 1024;

// Whether an image has more pixels than are drawn; sizes without any pixel are not.
bool IsTooBig(std::int32_t width, std::int32_t height) noexcept;

// Makes pixels paler: raises every byte by `brightness`, up to 255.
void Brighten(std::span<std::uint8_t> pixels, std::uint8_t brightness) noexcept;

struct PixelSize {
    std::int32_t width;
    std::int32_t height;

    bool operator==(const PixelSize&) const = default;
};

// One drawing of the image: stretched into a rectangle of the frame.
struct Placement {
    std::int32_t left;
    std::int32_t top;
    std::int32_t width;
    std::int32_t height;
    std::int32_t imageRows;  // from the image's top; the whole image but in the last row of tiles

    bool operator==(const Placement&) const = default;
};

// What is drawn for `image` in a frame at `size` percent; all else of the frame is white. Nothing where frame
// or image is empty or too big, where the drawing would have no pixel, and at a position that is not in the
// list. A size beyond 100 counts as 100; tiles are never smaller than 20.
std::vector<Placement> PlaceWaterMark(PixelSize frame, PixelSize image, std::uint8_t position,
                                      std::uint8_t size);

// The size that goes with a position.
constexpr std::uint8_t SizeAtPosition(std::uint8_t position, std::uint8_t size) noexcept {
    return position == kTiledPosition && size < kMinTiledSize ? kMinTiledSize : size;
}

// The font size that counts while it is typed, and when its box is left.
std::uint8_t ClampTypedFontSize(std::int32_t typed) noexcept;
std::uint8_t ClampFontSize(std::int32_t typed) noexcept;

// What the logical font of a watermark's text needs.
struct WaterMarkFont {
    std::int32_t height;      // negative: of the characters, without the room above them
    std::int32_t escapement;  // tenths of degrees, counter-clockwise; orientation is the same
    std::int32_t weight;
    bool italic;

    bool operator==(const WaterMarkFont&) const = default;
};

// `dotsPerInch` is the screen's, vertically. Angles outside 0 to 360 count as the nearer end, styles that are
// not in the list as regular.
WaterMarkFont FontOfWaterMark(std::uint8_t fontSize, std::uint8_t style, std::int32_t angle,
                              std::int32_t dotsPerInch) noexcept;

// The picture that a text is drawn into: white, square, 32 bits a pixel.
constexpr std::int32_t kTextImageSide = 300;
constexpr std::size_t kTextImageBytes = std::size_t{kTextImageSide} * kTextImageSide * 4;

struct TextStart {
    std::int32_t x;
    std::int32_t y;

    bool operator==(const TextStart&) const = default;
};

// Where a text of this unrotated extent begins (baseline alignment) so that its centre falls on the
// picture's. Rounded to the nearest pixel, halves away from 0.
TextStart TextStartPoint(std::int32_t angle, PixelSize extent) noexcept;

// The picture as a 24-bit bitmap file of 270054 bytes. `pixels` has blue, green, red and an unused byte for
// each pixel, rows from the bottom, as a DIB section of positive height keeps them.
std::vector<std::uint8_t> TextImageFile(std::span<const std::uint8_t, kTextImageBytes> pixels);
