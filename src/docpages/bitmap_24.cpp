#include "docpages/bitmap_24.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "base/platform.h"
#include "printer/bitmap_headers.h"

namespace {

using namespace bitmap_file;

// Both headers as they lie in the file.
using Headers = std::array<std::uint8_t, kHeadersSize>;

constexpr std::uint16_t kBitCount24 = 24;

// Where the pixels of each layout begin.
constexpr std::uint32_t kOffset1Bit = 62;
constexpr std::uint32_t kOffset8Bit = 1078;
constexpr std::uint32_t kOffset24Bit = 54;

// A palette entry in the file.
struct PaletteEntry {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
    std::uint8_t reserved;
};

// The three bytes of a pixel in the result.
using Pixel = std::array<std::uint8_t, 3>;

// A 24-bit file keeps blue, green, red; a palette's colours go out with green and blue exchanged all the
// same. That is how watermarks of this driver look, so they keep looking like it. Black, white and greys are
// the same either way.
Pixel ExchangeGreenAndBlue(const PaletteEntry& entry) noexcept {
    return {entry.green, entry.blue, entry.red};
}

// A layout with a palette.
struct Layout {
    unsigned bits;         // of a pixel
    std::uint8_t padding;  // the byte that fills a row of the result up to a multiple of 4
};
constexpr Layout k1Bit = {1, 0xFF};
constexpr Layout k8Bit = {8, 0x00};

constexpr std::size_t kMaxColours = 256;

// The most pixels of rows that the source does not hold.
constexpr std::uint64_t kMaxMissingPixels = 10ULL * 1024 * 1024;

// Rows go through in pieces of this many pixels, whatever the header says of their width. A multiple of 32,
// so that every piece but a row's last begins and ends with whole bytes and no padding.
constexpr std::size_t kPiecePixels = 4096;

struct Size {
    std::uint32_t width;
    std::uint32_t rows;       // that the result holds: none for a negative height
    std::uint32_t totalSize;  // as the header's 32 bits hold it
};

// FALSE for a size that no file has: a negative width, or more bytes than a signed 32-bit size counts.
bool ResultSize(const Headers& headers, Size& size) noexcept {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::int64_t width = static_cast<std::int32_t>(Get32(&headers[kWidthAt]));
    const std::int64_t height = static_cast<std::int32_t>(Get32(&headers[kHeightAt]));
    const std::int64_t rowBytes = (width * 3 + 3) / 4 * 4;
    if (width < 0 || rowBytes > kMost) {
        return false;
    }
    const std::int64_t total = rowBytes * height + static_cast<std::int64_t>(kHeadersSize);
    if (total > kMost || total < std::numeric_limits<std::int32_t>::min()) {
        return false;
    }
    size.width = static_cast<std::uint32_t>(width);
    size.rows = width > 0 && height > 0 ? static_cast<std::uint32_t>(height) : 0;
    size.totalSize = static_cast<std::uint32_t>(total);
    return true;
}

// The pixels of rows that the source does not hold whole.
std::uint64_t MissingPixels(std::uint64_t sourceSize, std::uint32_t pixelOffset, const Size& size,
                            const Layout& layout) noexcept {
    if (size.rows == 0 || sourceSize < pixelOffset) {
        return std::uint64_t{size.rows} * size.width;
    }
    const std::uint64_t rowBytes = (std::uint64_t{size.width} * layout.bits + 31) / 32 * 4;
    const std::uint64_t held = std::min<std::uint64_t>((sourceSize - pixelOffset) / rowBytes, size.rows);
    return (size.rows - held) * size.width;
}

// The palette behind the headers; entries that the source lacks are black.
template <std::size_t N>
std::array<PaletteEntry, N> ReadPalette(ByteSource& source) noexcept {
    std::array<std::uint8_t, N * sizeof(PaletteEntry)> bytes{};
    source.Read(bytes);
    std::array<PaletteEntry, N> palette;
    for (std::size_t i = 0; i < N; ++i) {
        palette[i] = {bytes[4 * i], bytes[4 * i + 1], bytes[4 * i + 2], bytes[4 * i + 3]};
    }
    return palette;
}

// Rows in the source's order, each padded to a multiple of 4 bytes on both sides. `colours` has one for every
// value of a pixel.
bool ConvertRows(ByteSource& source, ByteSink& sink, const Size& size, const Layout& layout,
                 std::span<const Pixel> colours) noexcept {
    std::array<std::uint8_t, kPiecePixels> indices;
    std::array<std::uint8_t, kPiecePixels * 3> pixels;
    const std::size_t perByte = 8 / layout.bits;
    const auto wholeWords = [](std::size_t bytes) { return (bytes + 3) / 4 * 4; };
    for (std::uint32_t row = 0; row < size.rows; ++row) {
        for (std::size_t begin = 0; begin < size.width; begin += kPiecePixels) {
            const std::size_t count = std::min<std::size_t>(kPiecePixels, size.width - begin);
            const std::size_t sourceBytes = wholeWords((count + perByte - 1) / perByte);
            const auto piece = std::span(indices).first(sourceBytes);
            std::fill(piece.begin(), piece.end(), std::uint8_t{0xFF});
            source.Read(piece);
            const std::size_t end = wholeWords(count * 3);
            std::fill(pixels.begin() + static_cast<std::ptrdiff_t>(count * 3),
                      pixels.begin() + static_cast<std::ptrdiff_t>(end), layout.padding);
            for (std::size_t i = 0; i < count; ++i) {
                const unsigned index = layout.bits == 1 ? indices[i / 8] >> (7 - i % 8) & 1u : indices[i];
                std::copy_n(colours[index].begin(), 3, pixels.begin() + static_cast<std::ptrdiff_t>(i * 3));
            }
            if (!sink.Write(std::span(pixels).first(end))) {
                return false;
            }
        }
    }
    return true;
}

void TracePalette(const std::array<PaletteEntry, 2>& palette) noexcept {
    TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap palette[0].rgbRed =%X\r\n"), palette[0].red);
    TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap palette[0].rgbGreen =%X\r\n"), palette[0].green);
    TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap palette[0].rgbBlue =%X\r\n"), palette[0].blue);
    TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap palette[1].rgbRed =%X\r\n"), palette[1].red);
    TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap palette[1].rgbGreen =%X\r\n"), palette[1].green);
    TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap palette[1].rgbBlue =%X\r\n"), palette[1].blue);
}

}  // namespace

BitmapConversion ConvertTo24Bitmap(ByteSource& source, ByteSink& sink) noexcept {
    Headers headers{};
    source.Read(std::span(headers).first(kFileHeaderSize));
    const std::uint32_t offset = Get32(&headers[kPixelOffsetAt]);
    if (Get16(&headers[kTypeAt]) != kType ||
        (offset != kOffset1Bit && offset != kOffset8Bit && offset != kOffset24Bit)) {
        return BitmapConversion::kRefused;
    }
    source.Read(std::span(headers).subspan(kFileHeaderSize));
    if (offset == kOffset24Bit) {
        if (Get16(&headers[kBitCountAt]) != kBitCount24) {
            TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap not 24 bitcount\r\n"));
            return BitmapConversion::kRefused;
        }
        return BitmapConversion::kCopyWhole;
    }
    const Layout& layout = offset == kOffset1Bit ? k1Bit : k8Bit;
    Size size;
    if (!ResultSize(headers, size) ||
        MissingPixels(source.Size(), offset, size, layout) > kMaxMissingPixels) {
        return BitmapConversion::kRefused;
    }
    Put32(&headers[kFileSizeAt], size.totalSize);
    Put32(&headers[kPixelOffsetAt], kOffset24Bit);
    Put16(&headers[kBitCountAt], kBitCount24);
    if (offset == kOffset8Bit) {
        Put32(&headers[kImageSizeAt], 0);
    }
    if (!sink.Write(headers)) {
        return BitmapConversion::kRefused;
    }
    std::array<Pixel, kMaxColours> colours;
    const auto setColours = [&](const auto& palette) {
        std::transform(palette.begin(), palette.end(), colours.begin(), ExchangeGreenAndBlue);
    };
    if (offset == kOffset1Bit) {
        const auto palette = ReadPalette<2>(source);
        TracePalette(palette);
        TRACE_VERBOSE(TEXT16("UI:  ChangeTo24Bitmap bf.bfOffBits =%d\r\n"), static_cast<int>(offset));
        setColours(palette);
    } else {
        setColours(ReadPalette<kMaxColours>(source));
    }
    return ConvertRows(source, sink, size, layout, colours) ? BitmapConversion::kConverted
                                                            : BitmapConversion::kRefused;
}

std::optional<PixelSize> WholeBitmapSize(ByteSource& source) noexcept {
    Headers headers{};
    source.Read(headers);
    const std::uint32_t offset = Get32(&headers[kPixelOffsetAt]);
    const unsigned bits = Get16(&headers[kBitCountAt]);
    const bool isLayout = (offset == kOffset1Bit && bits == k1Bit.bits) ||
                          (offset == kOffset8Bit && bits == k8Bit.bits) ||
                          (offset == kOffset24Bit && bits == kBitCount24);
    if (Get16(&headers[kTypeAt]) != kType || Get32(&headers[kInfoSizeAt]) != kInfoSize || !isLayout ||
        Get16(&headers[kPlanesAt]) != 1 || Get32(&headers[kCompressionAt]) != kUncompressed) {
        return std::nullopt;
    }
    const auto width = static_cast<std::int32_t>(Get32(&headers[kWidthAt]));
    const auto height = static_cast<std::int32_t>(Get32(&headers[kHeightAt]));
    if (width <= 0 || height == 0 || height == std::numeric_limits<std::int32_t>::min()) {
        return std::nullopt;
    }
    const std::int32_t rows = std::abs(height);
    const std::uint64_t rowBytes = (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4;
    if (rowBytes * static_cast<std::uint64_t>(rows) + offset > source.Size()) {
        return std::nullopt;
    }
    return PixelSize{width, rows};
}
