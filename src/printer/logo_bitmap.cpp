// A converted file:
//
//       0  2  type            "BM"
//       2  4  file size       headers, palette and rows
//       6  4  reserved        0
//      10  4  pixel offset    headers and palette
//      14  4  header size     40
//      18  4  width           of the source
//      22  4  height          of the source
//      26  2  planes          1
//      28  2  bit count       8 or 1
//      30  4  compression     0
//      34  4  image size      rows with their padding
//      38 16  resolutions and colour counts, 0
//      54     palette         blue, green, red, 0 for each colour, from black to white
//             rows
#include "printer/logo_bitmap.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "printer/bitmap_headers.h"

namespace {

using namespace bitmap_file;

// Where the pixels of a plain file begin: behind as many palette entries as a pixel has values.
constexpr std::size_t PixelOffset(unsigned bitCount) noexcept {
    return kHeadersSize + (bitCount == kColourBits ? 0 : kPaletteEntrySize << bitCount);
}
static_assert(PixelOffset(kMonoBits) == 62 && PixelOffset(kGreyBits) == 1078 &&
              PixelOffset(kColourBits) == 54);

// The first bytes of a file, with 0 for those that it lacks.
template <std::size_t N>
std::array<std::uint8_t, N> FirstBytes(std::span<const std::uint8_t> file) noexcept {
    std::array<std::uint8_t, N> bytes{};
    std::copy_n(file.begin(), std::min(file.size(), N), bytes.begin());
    return bytes;
}

}  // namespace

BitmapHeaders ReadBitmapHeaders(std::span<const std::uint8_t> file) noexcept {
    const auto bytes = FirstBytes<kHeadersSize>(file);
    return {.type = Get16(&bytes[kTypeAt]),
            .pixelOffset = Get32(&bytes[kPixelOffsetAt]),
            .width = static_cast<std::int32_t>(Get32(&bytes[kWidthAt])),
            .height = static_cast<std::int32_t>(Get32(&bytes[kHeightAt])),
            .bitCount = Get16(&bytes[kBitCountAt]),
            .compression = Get32(&bytes[kCompressionAt])};
}

std::uint64_t RowsOf(const BitmapHeaders& headers) noexcept {
    return static_cast<std::uint64_t>(std::abs(std::int64_t{headers.height}));
}

bool LacksTooMuch(std::uint64_t width, std::uint64_t rows, std::uint64_t rowBytes,
                  std::uint64_t heldBytes) noexcept {
    const std::uint64_t held = heldBytes / rowBytes;
    return held < rows && (rows - held) * width > kMaxMissingPixels;
}

std::uint64_t UsedBytes(const BitmapHeaders& headers) noexcept {
    const std::uint64_t rows = RowsOf(headers);
    const std::uint64_t rowBytes =
        BitmapRowBytes(static_cast<std::uint64_t>(std::max(headers.width, 0)), headers.bitCount);
    const std::uint64_t offset = std::max<std::uint64_t>(
        headers.pixelOffset, headers.bitCount <= kGreyBits ? PixelOffset(headers.bitCount) : kHeadersSize);
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    return rows != 0 && rowBytes > (kMost - offset) / rows ? kMost : offset + rowBytes * rows;
}

std::optional<LogoPicture> LogoPicture::Read(std::span<const std::uint8_t> file) {
    // The largest file that comes of a picture holds this, whatever is converted into what.
    constexpr std::uint64_t kMostBytes = std::numeric_limits<std::int32_t>::max() - 1078;
    const BitmapHeaders headers = ReadBitmapHeaders(file);
    const unsigned bits = headers.bitCount;
    const bool isDepth = bits == kMonoBits || bits == kGreyBits || bits == kColourBits;
    if (headers.type != kType || headers.compression != kUncompressed || !isDepth || headers.width <= 0 ||
        headers.height == 0) {
        return std::nullopt;
    }
    const auto width = static_cast<std::uint64_t>(headers.width);
    const std::uint64_t rows = RowsOf(headers);
    const std::uint64_t rowBytes = BitmapRowBytes(width, bits);
    // Both factors are below 2^33: the product of the larger row is not past 64 bits.
    if (std::max(rowBytes, BitmapRowBytes(width, kGreyBits)) * rows > kMostBytes) {
        return std::nullopt;
    }
    const std::uint64_t size = rowBytes * rows;
    const auto held = file.subspan(std::min(file.size(), PixelOffset(bits)));
    LogoPicture picture;
    picture.bitCount_ = bits;
    picture.width_ = static_cast<std::size_t>(width);
    picture.rows_ = static_cast<std::size_t>(rows);
    picture.isTopDown_ = headers.height < 0;
    picture.pixels_ = held.data();
    if (held.size() < size) {
        if (LacksTooMuch(width, rows, rowBytes, held.size())) {
            return std::nullopt;
        }
        picture.completed_.resize(static_cast<std::size_t>(size));
        std::copy(held.begin(), held.end(), picture.completed_.begin());
        picture.pixels_ = picture.completed_.data();
    }
    return picture;
}

LogoFile LogoFile::Grey(const LogoPicture& picture, std::vector<std::uint8_t>& bytes) {
    return {picture, kGreyBits, bytes};
}

LogoFile LogoFile::Mono(const LogoPicture& picture, std::vector<std::uint8_t>& bytes) {
    return {picture, kMonoBits, bytes};
}

LogoFile::LogoFile(const LogoPicture& picture, unsigned bitCount, std::vector<std::uint8_t>& bytes)
    : rowBytes_(BitmapRowBytes(picture.Width(), bitCount)) {
    const std::size_t offset = PixelOffset(bitCount);
    const std::size_t imageSize = rowBytes_ * picture.Rows();
    bytes.assign(offset + imageSize, 0);
    const auto rows = static_cast<std::uint32_t>(picture.Rows());
    Put16(&bytes[kTypeAt], kType);
    Put32(&bytes[kFileSizeAt], static_cast<std::uint32_t>(bytes.size()));
    Put32(&bytes[kPixelOffsetAt], static_cast<std::uint32_t>(offset));
    Put32(&bytes[kInfoSizeAt], kInfoSize);
    Put32(&bytes[kWidthAt], static_cast<std::uint32_t>(picture.Width()));
    Put32(&bytes[kHeightAt], picture.IsTopDown() ? 0 - rows : rows);
    Put16(&bytes[kPlanesAt], 1);
    Put16(&bytes[kBitCountAt], bitCount);
    Put32(&bytes[kCompressionAt], kUncompressed);
    Put32(&bytes[kImageSizeAt], static_cast<std::uint32_t>(imageSize));
    const std::size_t colours = (offset - kHeadersSize) / kPaletteEntrySize;
    for (std::size_t i = 0; i < colours; ++i) {
        std::fill_n(&bytes[kHeadersSize + i * kPaletteEntrySize], 3,
                    static_cast<std::uint8_t>(i * 255 / (colours - 1)));
    }
    rows_ = bytes.data() + offset;
}

MonoPalette ReadMonoPalette(std::span<const std::uint8_t> file) noexcept {
    const auto bytes = FirstBytes<kHeadersSize + 2 * kPaletteEntrySize>(file);
    const auto isAll = [&bytes](std::size_t entry, std::uint8_t value) {
        const auto* colour = &bytes[kHeadersSize + entry * kPaletteEntrySize];
        return std::count(colour, colour + 3, value) == 3;
    };
    constexpr std::uint8_t kBlack = 0;
    constexpr std::uint8_t kWhite = 255;
    if (isAll(0, kBlack) && isAll(1, kWhite)) {
        return MonoPalette::kBlackAndWhite;
    }
    return isAll(0, kWhite) && isAll(1, kBlack) ? MonoPalette::kWhiteAndBlack : MonoPalette::kOther;
}
