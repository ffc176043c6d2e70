// Where a bitmap file keeps what counts: its file header of 14 bytes and its information header of 40.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bitmap_file {

constexpr std::size_t kFileHeaderSize = 14;
constexpr std::uint32_t kInfoSize = 40;
constexpr std::size_t kHeadersSize = kFileHeaderSize + kInfoSize;

constexpr std::size_t kTypeAt = 0;
constexpr std::size_t kFileSizeAt = 2;
constexpr std::size_t kPixelOffsetAt = 10;
constexpr std::size_t kInfoSizeAt = 14;
constexpr std::size_t kWidthAt = 18;
constexpr std::size_t kHeightAt = 22;
constexpr std::size_t kPlanesAt = 26;
constexpr std::size_t kBitCountAt = 28;
constexpr std::size_t kCompressionAt = 30;
constexpr std::size_t kImageSizeAt = 34;
constexpr std::size_t kColoursUsedAt = 46;

constexpr std::uint16_t kType = 19778;  // "BM"
constexpr std::uint32_t kUncompressed = 0;
constexpr std::size_t kPaletteEntrySize = 4;  // blue, green, red, 0

inline std::uint16_t Get16(const std::uint8_t* from) noexcept {
    return static_cast<std::uint16_t>(from[0] | from[1] << 8);
}

inline std::uint32_t Get32(const std::uint8_t* from) noexcept {
    return Get16(from) | std::uint32_t{Get16(from + 2)} << 16;
}

inline void Put16(std::uint8_t* to, std::uint32_t value) noexcept {
    to[0] = static_cast<std::uint8_t>(value & 0xFF);
    to[1] = static_cast<std::uint8_t>(value >> 8 & 0xFF);
}

inline void Put32(std::uint8_t* to, std::uint32_t value) noexcept {
    Put16(to, value);
    Put16(to + 2, value >> 16);
}

}  // namespace bitmap_file
