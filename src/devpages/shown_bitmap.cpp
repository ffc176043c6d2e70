#include "devpages/shown_bitmap.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "printer/bitmap_headers.h"
#include "printer/logo_bitmap.h"

namespace {

using namespace bitmap_file;

constexpr std::uint32_t kColourMasks = 3;
constexpr std::size_t kMasksSize = 3 * sizeof(std::uint32_t);

// What follows the information header: where it lies in the file, and how long it is.
struct ColourTable {
    std::size_t at;
    std::size_t size;
};

bool HasMasks(unsigned bits, std::uint32_t compression) noexcept {
    return compression == kColourMasks && (bits == 16 || bits == 32);
}

bool IsShown(unsigned bits, std::uint32_t compression) noexcept {
    constexpr unsigned kDepths[] = {1, 4, 8, 16, 24, 32};
    return std::ranges::find(kDepths, bits) != std::end(kDepths) &&
           (compression == kUncompressed || HasMasks(bits, compression));
}

ColourTable ColourTableOf(const std::uint8_t* file, std::uint32_t infoSize) noexcept {
    const unsigned bits = Get16(file + kBitCountAt);
    if (HasMasks(bits, Get32(file + kCompressionAt))) {
        // Longer headers have them inside, at the same place.
        return {kHeadersSize, kMasksSize};
    }
    if (bits > kGreyBits) {
        return {kHeadersSize, 0};
    }
    const std::size_t all = std::size_t{1} << bits;
    const std::size_t used = Get32(file + kColoursUsedAt);
    const std::size_t colours = used == 0 ? all : std::min(used, all);
    return {kFileHeaderSize + infoSize, colours * kPaletteEntrySize};
}

}  // namespace

std::optional<ShownBitmap> ShowBitmap(std::vector<std::uint8_t>& file) {
    if (file.size() < kHeadersSize || Get16(file.data()) != kType) {
        return std::nullopt;
    }
    const BitmapHeaders headers = ReadBitmapHeaders(file);
    const std::uint32_t infoSize = Get32(&file[kInfoSizeAt]);
    // The longest one that there is has 124 bytes.
    constexpr std::uint32_t kLongestInfo = 124;
    if (infoSize < kInfoSize || infoSize > kLongestInfo || headers.width <= 0 || headers.height == 0 ||
        !IsShown(headers.bitCount, headers.compression)) {
        return std::nullopt;
    }
    const ColourTable colours = ColourTableOf(file.data(), infoSize);
    const std::uint64_t end = UsedBytes(headers);
    const auto width = static_cast<std::uint64_t>(headers.width);
    const std::uint64_t rows = RowsOf(headers);
    const std::uint64_t rowBytes = BitmapRowBytes(width, headers.bitCount);
    // Pixels that begin beyond the file's end would be reached through as many bytes as the header likes.
    if (colours.at + colours.size > file.size() || headers.pixelOffset > file.size() ||
        end > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    const std::uint64_t needed = headers.pixelOffset + rowBytes * rows;
    if (needed > file.size()) {
        if (LacksTooMuch(width, rows, rowBytes, file.size() - headers.pixelOffset)) {
            return std::nullopt;
        }
        file.resize(static_cast<std::size_t>(needed), 0);
    }
    ShownBitmap shown;
    std::uint8_t* const info = shown.info.data();
    Put32(info, kInfoSize);
    // Width, height, planes, bits and compression.
    std::copy_n(&file[kWidthAt], kImageSizeAt - kWidthAt, info + kWidthAt - kFileHeaderSize);
    Put16(info + kPlanesAt - kFileHeaderSize, 1);
    if (headers.bitCount <= kGreyBits) {
        Put32(info + kColoursUsedAt - kFileHeaderSize,
              static_cast<std::uint32_t>(colours.size / kPaletteEntrySize));
    }
    std::copy_n(file.data() + colours.at, colours.size, info + kInfoSize);
    shown.width = headers.width;
    shown.height = static_cast<std::int32_t>(rows);
    shown.pixelsAt = headers.pixelOffset;
    return shown;
}
