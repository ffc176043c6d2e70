// Logos small enough to be fuzzed, as the plain reference of the unit tests takes them.
#pragma once

#include <vector>

#include "fuzz_input.h"
#include "printer/bitmap_headers.h"
#include "printer/logo_bitmap.h"

using LogoBytes = std::vector<std::uint8_t>;

// A picture that is converted takes time for each pixel. Those between the two are left to the unit tests;
// above the second no file of a fuzzer's size is accepted.
constexpr std::uint64_t kMostConverted = 1u << 14;
constexpr std::uint64_t kLeastRefused = 1u << 22;

inline std::uint64_t PixelsOf(const BitmapHeaders& headers) {
    const std::int64_t width = headers.width;
    const std::int64_t height = headers.height;
    return static_cast<std::uint64_t>((width < 0 ? -width : width) * (height < 0 ? -height : height));
}

inline bool IsQuick(FuzzBytes file) {
    const std::uint64_t pixels = PixelsOf(ReadBitmapHeaders(file));
    return pixels <= kMostConverted || pixels >= kLeastRefused;
}

// The file with rows from the bottom and every byte of its pixels.
inline LogoBytes WholeFile(FuzzBytes file, const LogoPicture& picture, bool turnsRows) {
    LogoBytes whole(file.begin(), file.end());
    const std::size_t offset = picture.BitCount() == kColourBits ? 54
                               : picture.BitCount() == kGreyBits ? 1078
                                                                 : 62;
    const std::size_t rowBytes = picture.RowBytes();
    whole.resize(offset + rowBytes * picture.Rows());
    bitmap_file::Put32(&whole[bitmap_file::kHeightAt], static_cast<std::uint32_t>(picture.Rows()));
    if (turnsRows) {
        for (std::size_t top = 0, bottom = picture.Rows() - 1; top < bottom; ++top, --bottom) {
            std::swap_ranges(whole.begin() + static_cast<std::ptrdiff_t>(offset + top * rowBytes),
                             whole.begin() + static_cast<std::ptrdiff_t>(offset + (top + 1) * rowBytes),
                             whole.begin() + static_cast<std::ptrdiff_t>(offset + bottom * rowBytes));
        }
    }
    return whole;
}
