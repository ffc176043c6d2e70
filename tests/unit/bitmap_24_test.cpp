// Bitmaps to 24 bits: whole files written out by hand, then a plain reference over every odd size, cut files,
// hostile headers and sinks that fail.
#include "docpages/bitmap_24.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "platform_recorder.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(Bytes bytes) : bytes_(std::move(bytes)), size_(bytes_.size()) {}
    // One that says it is of another size.
    MemorySource(Bytes bytes, std::uint64_t size) : bytes_(std::move(bytes)), size_(size) {}

    std::size_t Read(std::span<std::uint8_t> buffer) noexcept override {
        const std::size_t count = std::min(buffer.size(), bytes_.size() - position_);
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer.begin());
        position_ += count;
        return count;
    }

    std::uint64_t Size() const noexcept override { return size_; }

  private:
    Bytes bytes_;
    std::uint64_t size_;
    std::size_t position_ = 0;
};

// Keeps what is written, up to a number of bytes; fails from then on.
class MemorySink final : public ByteSink {
  public:
    explicit MemorySink(std::size_t room = std::numeric_limits<std::size_t>::max()) : room_(room) {}

    bool Write(std::span<const std::uint8_t> bytes) noexcept override {
        EXPECT_FALSE(failed_) << "written to after it failed";
        const std::size_t count = std::min(bytes.size(), room_ - bytes_.size());
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        failed_ = count < bytes.size();
        return !failed_;
    }

    const Bytes& Written() const { return bytes_; }

  private:
    std::size_t room_;
    Bytes bytes_;
    bool failed_ = false;
};

struct Result {
    BitmapConversion conversion;
    Bytes file;
};

Result Convert(const Bytes& file) {
    MemorySource source(file);
    MemorySink sink;
    const BitmapConversion conversion = ConvertTo24Bitmap(source, sink);
    return {conversion, sink.Written()};
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Cut(const Bytes& file, std::size_t length) {
    return Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
}

void Set16(Bytes& bytes, std::size_t at, std::uint32_t value) {
    bytes.at(at) = static_cast<std::uint8_t>(value % 256);
    bytes.at(at + 1) = static_cast<std::uint8_t>(value / 256 % 256);
}

void Set32(Bytes& bytes, std::size_t at, std::uint32_t value) {
    Set16(bytes, at, value % 65536);
    Set16(bytes, at + 2, value / 65536);
}

// Headers in which every field that is to go over unchanged has bytes of its own.
Bytes Headers(std::uint32_t pixelOffset, unsigned bitCount, std::int32_t width, std::int32_t height) {
    Bytes bytes(54);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(0xC0 + i);
    }
    bytes[0] = 'B';
    bytes[1] = 'M';
    Set32(bytes, 10, pixelOffset);
    Set32(bytes, 18, static_cast<std::uint32_t>(width));
    Set32(bytes, 22, static_cast<std::uint32_t>(height));
    Set16(bytes, 28, bitCount);
    return bytes;
}

// What becomes of such headers.
Bytes ResultHeaders(Bytes headers, std::uint32_t totalSize, bool from8Bit) {
    Set32(headers, 2, totalSize);
    Set32(headers, 10, 54);
    Set16(headers, 28, 24);
    if (from8Bit) {
        Set32(headers, 34, 0);
    }
    return headers;
}

// Entries whose bytes tell entry and colour apart: blue, green, red, reserved.
Bytes Palette(std::size_t entries) {
    Bytes bytes;
    for (std::size_t i = 0; i < entries; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i * 7 + 1));
        bytes.push_back(static_cast<std::uint8_t>(i * 11 + 0x52));
        bytes.push_back(static_cast<std::uint8_t>(i * 13 + 0xA3));
        bytes.push_back(0xEE);
    }
    return bytes;
}

// Rows of pixel data of a length; no two neighbours alike.
Bytes Rows(std::size_t length) {
    Bytes bytes;
    for (std::size_t i = 0; i < length; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i * 167 + (i >> 8) * 29 + 13));
    }
    return bytes;
}

std::size_t RowLength8(std::size_t width) {
    return width % 4 == 0 ? width : width + 4 - width % 4;
}

std::size_t RowLength1(std::size_t width) {
    std::size_t length = width % 8 == 0 ? width / 8 : width / 8 + 1;
    while (length % 4 != 0) {
        ++length;
    }
    return length;
}

Bytes File8(std::int32_t width, std::int32_t height) {
    const std::size_t rows = height > 0 ? static_cast<std::size_t>(height) : 0;
    return Headers(1078, 8, width, height) + Palette(256) +
           Rows(rows * RowLength8(static_cast<std::size_t>(width)));
}

Bytes File1(std::int32_t width, std::int32_t height) {
    const std::size_t rows = height > 0 ? static_cast<std::size_t>(height) : 0;
    return Headers(62, 1, width, height) + Palette(2) +
           Rows(rows * RowLength1(static_cast<std::size_t>(width)));
}

// A file as it reads where it was cut: zeros to the end of the palette, FF behind.
std::uint8_t ByteAt(const Bytes& file, std::size_t at, std::size_t pixelOffset) {
    if (at < file.size()) {
        return file[at];
    }
    return at < pixelOffset ? std::uint8_t{0} : std::uint8_t{0xFF};
}

// Pixel by pixel from the whole file, for sizes that are not hostile.
Bytes SlowConvert(const Bytes& file) {
    const auto read32 = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 4; i-- > 0;) {
            value = value * 256 + ByteAt(file, at + i, 54);
        }
        return value;
    };
    const std::size_t pixelOffset = read32(10);
    const bool is8Bit = pixelOffset == 1078;
    const auto width = static_cast<std::int32_t>(read32(18));
    const auto height = static_cast<std::int32_t>(read32(22));
    Bytes headers;
    for (std::size_t i = 0; i < 54; ++i) {
        headers.push_back(ByteAt(file, i, 54));
    }
    const std::int32_t total = (width * 3 + 3) / 4 * 4 * height + 54;
    Bytes result = ResultHeaders(headers, static_cast<std::uint32_t>(total), is8Bit);
    std::size_t at = pixelOffset;
    for (std::int32_t y = 0; y < height; ++y) {
        std::size_t x = 0;
        for (; x < static_cast<std::size_t>(width); ++x) {
            std::size_t entry = 0;
            if (is8Bit) {
                entry = ByteAt(file, at + x, pixelOffset);
            } else {
                const unsigned mask = 0x80u >> (x % 8);
                entry = (ByteAt(file, at + x / 8, pixelOffset) & mask) != 0 ? 1 : 0;
            }
            for (const std::size_t colour : {1u, 0u, 2u}) {  // green, blue, red
                result.push_back(ByteAt(file, 54 + entry * 4 + colour, pixelOffset));
            }
        }
        at += is8Bit ? RowLength8(x) : RowLength1(x);
        while ((result.size() - 54) % 4 != 0) {
            result.push_back(is8Bit ? 0x00 : 0xFF);
        }
    }
    return result;
}

void ExpectConverted(const Bytes& file, const Bytes& expected) {
    const Result result = Convert(file);
    EXPECT_EQ(result.conversion, BitmapConversion::kConverted);
    EXPECT_EQ(result.file.size(), expected.size());
    EXPECT_TRUE(result.file == expected);
}

void ExpectRefused(const Bytes& file) {
    const Result result = Convert(file);
    EXPECT_EQ(result.conversion, BitmapConversion::kRefused);
    EXPECT_TRUE(result.file.empty());
}

using Bitmap24Test = PlatformTest;

TEST_F(Bitmap24Test, NineByTwoPixelsOfOneBit) {
    // 70 bytes, pixels at 62.
    const Bytes fileHeader = {'B', 'M', 0x46, 0, 0, 0, 0x11, 0x12, 0x13, 0x14, 62, 0, 0, 0};
    // Size of this header, 9 x 2, one plane, 1 bit.
    const Bytes shape = {40, 0, 0, 0, 9, 0, 0, 0, 2, 0, 0, 0, 1, 0, 1, 0};
    // No compression, 8 bytes of pixels, resolution, two colours of which two are important.
    const Bytes rest = {0, 0, 0, 0, 8, 0, 0, 0, 0x12, 0x0B, 0, 0, 0x13, 0x0B, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0};
    const Bytes palette = {0x10, 0x20, 0x30, 0x00, 0xA0, 0xB0, 0xC0, 0x00};
    // 1010 0101 1 and 0000 0001 0; all other bits are padding.
    const Bytes rows = {0xA5, 0x80, 0x55, 0xAA, 0x01, 0x7F, 0x00, 0x00};

    // 54 + 2 x 28 = 110 bytes, pixels at 54.
    const Bytes newFileHeader = {'B', 'M', 0x6E, 0, 0, 0, 0x11, 0x12, 0x13, 0x14, 54, 0, 0, 0};
    const Bytes newShape = {40, 0, 0, 0, 9, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0};
    const Bytes clear = {0x20, 0x10, 0x30};
    const Bytes set = {0xB0, 0xA0, 0xC0};
    const Bytes end = {0xFF};
    const Bytes upper = set + clear + set + clear + clear + set + clear + set + set + end;
    const Bytes lower = clear + clear + clear + clear + clear + clear + clear + set + clear + end;
    ExpectConverted(fileHeader + shape + rest + palette + rows,
                    newFileHeader + newShape + rest + upper + lower);
}

TEST_F(Bitmap24Test, ThreeByTwoPixelsOfEightBits) {
    Bytes palette(1024);
    const auto setColour = [&](std::size_t index, std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
        palette[index * 4] = blue;
        palette[index * 4 + 1] = green;
        palette[index * 4 + 2] = red;
    };
    setColour(0, 0x01, 0x02, 0x03);
    setColour(7, 0x11, 0x12, 0x13);
    setColour(128, 0x21, 0x22, 0x23);
    setColour(255, 0x31, 0x32, 0x33);
    // 1086 bytes, pixels at 1078.
    const Bytes fileHeader = {'B', 'M', 0x3E, 4, 0, 0, 0, 0, 0, 0, 0x36, 4, 0, 0};
    // Size of this header, 3 x 2, one plane, 8 bits.
    const Bytes shape = {40, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 0, 8, 0};
    const Bytes compression = {1, 0, 0, 0};
    const Bytes imageSize = {8, 0, 0, 0};
    const Bytes rest = {0x12, 0x0B, 0, 0, 0x13, 0x0B, 0, 0, 0, 1, 0, 0, 9, 0, 0, 0};
    const Bytes rows = {7, 0, 255, 0x99, 128, 7, 0, 0x99};

    // 54 + 2 x 12 = 78 bytes, pixels at 54.
    const Bytes newFileHeader = {'B', 'M', 0x4E, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0};
    const Bytes newShape = {40, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0};
    const Bytes noImageSize = {0, 0, 0, 0};
    const Bytes upper = {0x12, 0x11, 0x13, 0x02, 0x01, 0x03, 0x32, 0x31, 0x33, 0, 0, 0};
    const Bytes lower = {0x22, 0x21, 0x23, 0x12, 0x11, 0x13, 0x02, 0x01, 0x03, 0, 0, 0};
    ExpectConverted(fileHeader + shape + compression + imageSize + rest + palette + rows,
                    newFileHeader + newShape + compression + noImageSize + rest + upper + lower);
}

// Of every remainder by 4: no padding, 1, 2 and 3 bytes, of the layout's own value.
TEST_F(Bitmap24Test, RowsAreFilledUpByTheirLayout) {
    for (std::int32_t width = 1; width <= 4; ++width) {
        for (const bool is8Bit : {false, true}) {
            SCOPED_TRACE(testing::Message() << width << (is8Bit ? ", 8 bits" : ", 1 bit"));
            const Result result = Convert(is8Bit ? File8(width, 1) : File1(width, 1));
            const std::size_t padding[] = {0, 1, 2, 3, 0};
            const std::size_t kept = 54 + static_cast<std::size_t>(width) * 3;
            const std::size_t filled = padding[width];
            ASSERT_EQ(result.file.size(), kept + filled);
            EXPECT_EQ(Bytes(result.file.begin() + static_cast<std::ptrdiff_t>(kept), result.file.end()),
                      Bytes(filled, is8Bit ? 0x00 : 0xFF));
        }
    }
}

TEST_F(Bitmap24Test, EverySizeUpTo33) {
    for (std::int32_t width = 0; width <= 33; ++width) {
        for (const std::int32_t height : {0, 1, 2, 3, 5}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            ExpectConverted(File1(width, height), SlowConvert(File1(width, height)));
            ExpectConverted(File8(width, height), SlowConvert(File8(width, height)));
        }
    }
}

// Longer than what is held in memory at once.
TEST_F(Bitmap24Test, LongRows) {
    for (const std::int32_t width : {4095, 4096, 4097, 4127, 8192, 8193, 20001}) {
        SCOPED_TRACE(width);
        ExpectConverted(File1(width, 3), SlowConvert(File1(width, 3)));
        ExpectConverted(File8(width, 3), SlowConvert(File8(width, 3)));
    }
}

// The height is negative where the first row is the top one; the size then counts down from 54.
TEST_F(Bitmap24Test, RowsFromTheTopGiveHeadersAlone) {
    const Bytes rows(400, 0x5A);
    // 9 pixels are 28 bytes: 54 - 2 x 28 = -2; 5 pixels are 16: 54 - 3 x 16 = 6.
    ExpectConverted(Headers(62, 1, 9, -2) + Palette(2) + rows,
                    ResultHeaders(Headers(62, 1, 9, -2), 0xFFFFFFFE, false));
    ExpectConverted(Headers(1078, 8, 5, -3) + Palette(256) + rows,
                    ResultHeaders(Headers(1078, 8, 5, -3), 6, true));
    ExpectConverted(Headers(1078, 8, 1, -1) + Palette(256) + rows,
                    ResultHeaders(Headers(1078, 8, 1, -1), 50, true));
}

TEST_F(Bitmap24Test, EmptySizesGiveHeadersAlone) {
    const Bytes rows(400, 0x5A);
    for (const auto& [width, height] :
         {std::pair{0, 0}, {0, 7}, {0, kLargest}, {0, -7}, {0, kSmallest}, {7, 0}, {715827881, 0}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        const Bytes one = Headers(62, 1, width, height);
        ExpectConverted(one + Palette(2) + rows, ResultHeaders(one, 54, false));
        const Bytes eight = Headers(1078, 8, width, height);
        ExpectConverted(eight + Palette(256) + rows, ResultHeaders(eight, 54, true));
    }
}

// The largest row that 31 bits count is 715827881 pixels: 2147483643 bytes, 2147483644 with padding.
TEST_F(Bitmap24Test, SizesThatNoFileHasAreRefusedUnwritten) {
    for (const auto& [width, height] : {std::pair{kLargest, 1},
                                        {kLargest, 0},
                                        {kLargest, kLargest},
                                        {kLargest, kSmallest},
                                        {715827882, 0},
                                        {715827881, 1},
                                        {1, 536870899},   // 4 x 536870899 + 54 = 2^31 + 2
                                        {1, -536870926},  // 54 - 4 x 536870926 = -2^31 - 2
                                        {1, kLargest},
                                        {1, kSmallest},
                                        {65536, 65536},
                                        {-1, 1},
                                        {-1, 0},
                                        {-1, -1},
                                        {-5, 3},
                                        {kSmallest, 1},
                                        {kSmallest, kSmallest}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        ExpectRefused(Headers(62, 1, width, height) + Palette(2));
        ExpectRefused(Headers(1078, 8, width, height) + Palette(256));
    }
}

// Headers and palette of a file that says it is of a size.
MemorySource HeadOfFile(unsigned bits, std::int32_t width, std::int32_t height, std::uint64_t size) {
    return bits == 1 ? MemorySource(Headers(62, 1, width, height) + Palette(2), size)
                     : MemorySource(Headers(1078, 8, width, height) + Palette(256), size);
}

// Whether a conversion would go on to the last row: a sink without room ends it before that.
bool IsBegun(unsigned bits, std::int32_t width, std::int32_t height, std::uint64_t size) {
    MemorySource source = HeadOfFile(bits, width, height, size);
    MemorySink sink(100);
    EXPECT_EQ(ConvertTo24Bitmap(source, sink), BitmapConversion::kRefused);
    EXPECT_TRUE(sink.Written().empty() || sink.Written().size() == 100);
    return !sink.Written().empty();
}

TEST_F(Bitmap24Test, LargestSizesAreBegun) {
    // 4 x 536870898 + 54 = 2^31 - 2 and 54 - 4 x 536870925 = -2^31 + 2 are the last that fit.
    constexpr std::uint64_t kWhole = 1078 + 4ull * 536870898;
    MemorySource tall = HeadOfFile(8, 1, 536870898, kWhole);
    MemorySink sink(1000);
    EXPECT_EQ(ConvertTo24Bitmap(tall, sink), BitmapConversion::kRefused);
    ASSERT_EQ(sink.Written().size(), 1000u);
    EXPECT_EQ(Cut(sink.Written(), 54), ResultHeaders(Headers(1078, 8, 1, 536870898), 0x7FFFFFFE, true));

    const Bytes fromTop = Headers(62, 1, 1, -536870925);
    ExpectConverted(fromTop + Palette(2), ResultHeaders(fromTop, 0x80000002, false));
}

// Of rows that a file does not hold whole, 10 * 1024 * 1024 = 10485760 pixels are still made.
TEST_F(Bitmap24Test, FewBytesAreNotBlownUp) {
    struct Edge {
        unsigned bits;
        std::int32_t width;
        std::int32_t height;
        std::uint64_t least;  // size with which the file converts; with a byte less it is refused
    };
    constexpr Edge kEdges[] = {
        // One row of 4096 bytes more than 10485760 / 4096 = 2560 of them; 4095 pixels have such a row too,
        // and
        // 10485760 / 4095 is 2560 and a little.
        {8, 4096, 2561, 1078 + 4096},
        {8, 4095, 2561, 1078 + 4096},
        {8, 4096, 5000, 1078 + 4096 * 2440},
        // 10485760 / 33 is 317750 and a little, in rows of 8 bytes.
        {1, 33, 317751, 62 + 8},
        {1, 33, 317760, 62 + 80},
        // 10485760 / 32 = 327680, in rows of 4 bytes.
        {1, 32, 327681, 62 + 4},
        {1, 1, 10485761, 62 + 4},
        {8, 1, 10485761, 1078 + 4},
        // One row: 10485761 / 8 is 1310720 and a little, so 1310724 bytes.
        {8, 10485761, 1, 1078 + 10485764},
        {1, 10485761, 1, 62 + 1310724},
        {8, 10485761, 2, 1078 + 2 * 10485764},
        // The tallest and, but for a byte or two of padding, the widest there are.
        {8, 1, 536870898, 1078 + 4ull * (536870898 - 10485760)},
        {1, 1, 536870898, 62 + 4ull * (536870898 - 10485760)},
        {8, 715827860, 1, 1078 + 715827860},
        {1, 715827860, 1, 62 + 89478484},
    };
    for (const auto& [bits, width, height, least] : kEdges) {
        SCOPED_TRACE(testing::Message() << bits << " bits, " << width << " x " << height);
        EXPECT_TRUE(IsBegun(bits, width, height, least));
        EXPECT_FALSE(IsBegun(bits, width, height, least - 1));
        EXPECT_FALSE(IsBegun(bits, width, height, bits == 1 ? 62 : 1078));
        EXPECT_FALSE(IsBegun(bits, width, height, 54));
        EXPECT_FALSE(IsBegun(bits, width, height, 0)) << "a size that cannot be told";
        for (const std::uint64_t large :
             {std::uint64_t{1} << 32, std::numeric_limits<std::uint64_t>::max()}) {
            EXPECT_TRUE(IsBegun(bits, width, height, large));
        }
    }
}

TEST_F(Bitmap24Test, PicturesUpToTheLimitNeedNoRows) {
    for (const auto& [width, height] : {std::pair{4096, 2560},
                                        {10485760, 1},
                                        {1, 10485760},
                                        {33, 317750},     // 10485750 pixels
                                        {3233, 3243}}) {  // 10484619 pixels
        for (const unsigned bits : {1u, 8u}) {
            for (const std::uint64_t size : {0u, 62u, 1078u, 2000u}) {
                SCOPED_TRACE(testing::Message()
                             << bits << " bits, " << width << " x " << height << ", " << size);
                EXPECT_TRUE(IsBegun(bits, width, height, size));
            }
        }
    }
}

// To the end, for both sides of the limit: 12288 bytes of a row, FF is the last colour.
TEST_F(Bitmap24Test, LargestPictureWithoutItsRows) {
    const Bytes head = Headers(1078, 8, 4096, 2560) + Palette(256);
    const Result result = Convert(head);
    EXPECT_EQ(result.conversion, BitmapConversion::kConverted);
    ASSERT_EQ(result.file.size(), 54u + 2560 * 12288);
    EXPECT_EQ(Cut(result.file, 54), ResultHeaders(Headers(1078, 8, 4096, 2560), 54 + 2560 * 12288, true));
    // Blue 255 x 7 + 1 = FA, green 255 x 11 + 52 = 47, red 255 x 13 + A3 = 96 (all modulo 256).
    Bytes pixels = {0x47, 0xFA, 0x96};
    while (pixels.size() < 12288) {
        pixels = pixels + pixels;
    }
    ASSERT_EQ(pixels.size(), 12288u);
    for (std::size_t at = 54; at < result.file.size(); at += 12288) {
        ASSERT_TRUE(
            std::equal(pixels.begin(), pixels.end(), result.file.begin() + static_cast<std::ptrdiff_t>(at)))
            << at;
    }
    ExpectRefused(Headers(1078, 8, 4096, 2561) + Palette(256));
    ExpectRefused(Headers(1078, 8, 20000, 20000) + Palette(256) + Rows(100));
    ExpectRefused(Headers(62, 1, 4096, 2561) + Palette(2));
}

// The page is the one to say that a picture is too big, so one that is there converts.
TEST_F(Bitmap24Test, PicturesBeyondTheLimitConvert) {
    ExpectConverted(File1(4100, 2600), SlowConvert(File1(4100, 2600)));
    const Bytes cut = Cut(File1(4100, 2600), 700000);
    ExpectConverted(cut, SlowConvert(cut));
}

// Whatever is missing reads as 0 in headers and palette and as FF in rows; without "BM" or without the offset
// of a layout there is nothing to convert.
TEST_F(Bitmap24Test, FilesCutAtEveryByte) {
    for (const Bytes& file : {File1(9, 3), File1(33, 2), File8(6, 3), File8(5, 1)}) {
        const bool is8Bit = file[10] == 0x36;
        for (std::size_t length = 0; length < file.size(); ++length) {
            SCOPED_TRACE(testing::Message() << length << " of " << file.size());
            const Bytes cut = Cut(file, length);
            // 62 is one byte; 1078 is two, and its first alone means 24 bits, which zeros are not.
            if (length < (is8Bit ? 12u : 11u)) {
                ExpectRefused(cut);
            } else if (length < 26 && length > 18) {
                // The size itself is cut: the reference follows what is left of it.
                ExpectConverted(cut, SlowConvert(cut));
            } else {
                const Bytes expected = SlowConvert(cut);
                ExpectConverted(cut, expected);
                EXPECT_EQ(expected.size(), length <= 18 ? 54u : SlowConvert(file).size());
            }
        }
    }
}

TEST_F(Bitmap24Test, RowBytesThatAreMissingCountAsFF) {
    // Of two rows of 5 pixels the second stops after 2; FF is the last colour.
    const Bytes file = Headers(1078, 8, 5, 2) + Palette(256) + Bytes{1, 2, 3, 4, 5, 0, 0, 0, 6, 7};
    const Bytes whole = Headers(1078, 8, 5, 2) + Palette(256) +
                        Bytes{1, 2, 3, 4, 5, 0, 0, 0, 6, 7, 0xFF, 0xFF, 0xFF, 0, 0, 0};
    EXPECT_EQ(Convert(file).file, Convert(whole).file);

    const Bytes oneBit = Headers(62, 1, 12, 2) + Palette(2) + Bytes{0x12, 0x34, 0, 0, 0x56};
    const Bytes wholeOneBit = Headers(62, 1, 12, 2) + Palette(2) + Bytes{0x12, 0x34, 0, 0, 0x56, 0xF0, 0, 0};
    EXPECT_EQ(Convert(oneBit).file, Convert(wholeOneBit).file);
}

// A file that ends inside the palette: its colours up to there, black from then on; all pixels are FF.
TEST_F(Bitmap24Test, PalettesCutShort) {
    const Bytes entry = {0x41, 0x42, 0x43, 0x44};
    const auto pixelsOf = [](const Bytes& file) {
        const Bytes converted = Convert(file).file;
        return Bytes(converted.begin() + 54, converted.end());
    };
    EXPECT_EQ(pixelsOf(Headers(62, 1, 4, 1) + entry), Bytes(12, 0));
    const Bytes oneAndAHalf = Headers(62, 1, 4, 1) + entry + Bytes{0x51, 0x52};
    EXPECT_EQ(pixelsOf(oneAndAHalf), (Bytes{0x52, 0x51, 0, 0x52, 0x51, 0, 0x52, 0x51, 0, 0x52, 0x51, 0}));
    EXPECT_EQ(pixelsOf(Headers(1078, 8, 4, 1) + Cut(Palette(256), 1020)), Bytes(12, 0));
    // The last entry: blue 255 x 7 + 1 = FA, green 255 x 11 + 52 = 47, red 255 x 13 + A3 = 96 (all modulo
    // 256).
    EXPECT_EQ(pixelsOf(Headers(1078, 8, 1, 1) + Cut(Palette(256), 1022)), (Bytes{0x47, 0xFA, 0, 0}));
    EXPECT_EQ(pixelsOf(Headers(1078, 8, 1, 1) + Cut(Palette(256), 1023)), (Bytes{0x47, 0xFA, 0x96, 0}));
}

TEST_F(Bitmap24Test, OtherPixelOffsetsAreRefused) {
    for (std::uint32_t offset = 0; offset <= 4000; ++offset) {
        if (offset == 54 || offset == 62 || offset == 1078) {
            continue;
        }
        for (const unsigned bits : {1u, 4u, 8u, 24u}) {
            SCOPED_TRACE(testing::Message() << offset << ", " << bits << " bits");
            ExpectRefused(Headers(offset, bits, 2, 1) + Palette(256) + Rows(100));
        }
    }
    for (const std::uint32_t offset : {54u + 65536, 62u + 65536, 1078u << 16, 0xFFFFFFFFu}) {
        ExpectRefused(Headers(offset, 8, 2, 1) + Palette(256) + Rows(100));
    }
    EXPECT_TRUE(platform_recorder::TakeLines().empty());
}

// The offset alone decides: what the bit count says of files with a palette is not asked.
TEST_F(Bitmap24Test, BitCountsOfPaletteFilesAreNotAsked) {
    for (const unsigned bits : {0u, 1u, 4u, 8u, 16u, 24u, 32u, 0xFFFFu}) {
        const Bytes one = Headers(62, bits, 9, 2) + Palette(2) + Rows(8);
        ExpectConverted(one, SlowConvert(one));
        const Bytes eight = Headers(1078, bits, 9, 2) + Palette(256) + Rows(24);
        ExpectConverted(eight, SlowConvert(eight));
    }
}

TEST_F(Bitmap24Test, FilesOf24BitsAreForCopying) {
    for (const auto& [width, height] : {std::pair{2, 2}, {0, 0}, {kLargest, kSmallest}, {-1, 5}}) {
        const Result result = Convert(Headers(54, 24, width, height) + Rows(16));
        EXPECT_EQ(result.conversion, BitmapConversion::kCopyWhole);
        EXPECT_TRUE(result.file.empty());
    }
    EXPECT_EQ(Convert(Cut(Headers(54, 24, 1, 1), 29)).conversion, BitmapConversion::kCopyWhole);
    EXPECT_TRUE(platform_recorder::TakeLines().empty());
}

TEST_F(Bitmap24Test, OtherBitCountsAtTheSameOffsetAreRefused) {
    for (const unsigned bits : {0u, 1u, 4u, 8u, 16u, 23u, 25u, 32u, 24u << 8, 24u + 256}) {
        SCOPED_TRACE(bits);
        ExpectRefused(Headers(54, bits, 2, 2) + Rows(16));
        EXPECT_EQ(platform_recorder::TakeLines(),
                  std::vector<std::u16string>{u"UI:  ChangeTo24Bitmap not 24 bitcount\r\n"});
    }
    ExpectRefused(Cut(Headers(54, 24, 1, 1), 28));
}

TEST_F(Bitmap24Test, FilesOfAnotherTypeAreRefused) {
    for (const Bytes& type : {Bytes{'M', 'B'}, {'b', 'm'}, {'B', 'm'}, {'A', 'M'}, {0, 0}}) {
        for (Bytes file : {File1(3, 1), File8(3, 1), Headers(54, 24, 1, 1) + Rows(4)}) {
            file[0] = type[0];
            file[1] = type[1];
            ExpectRefused(file);
        }
    }
    ExpectRefused({});
    EXPECT_TRUE(platform_recorder::TakeLines().empty());
}

// What WholeBitmapSize finds in a file of these headers and, as it is told, this length.
std::optional<PixelSize> SizeIn(const Bytes& headers, std::uint64_t length) {
    MemorySource source(headers, length);
    return WholeBitmapSize(source);
}

Bytes TrueHeaders(std::uint32_t pixelOffset, unsigned bitCount, std::int32_t width, std::int32_t height) {
    Bytes headers = Headers(pixelOffset, bitCount, width, height);
    Set32(headers, 14, 40);
    Set16(headers, 26, 1);
    Set32(headers, 30, 0);
    return headers;
}

TEST_F(Bitmap24Test, WholeFilesTellTheirSize) {
    struct Case {
        std::uint32_t offset;
        unsigned bits;
        std::int32_t width, height;
        std::uint64_t length;  // of headers, palette and rows
    };
    for (const auto& [offset, bits, width, height, length] :
         {Case{62, 1, 32, 3, 62 + 3 * 4}, Case{62, 1, 33, 3, 62 + 3 * 8}, Case{62, 1, 1, 1, 66},
          Case{1078, 8, 5, 2, 1078 + 16}, Case{1078, 8, 4, 2, 1086}, Case{54, 24, 1, 1, 58},
          Case{54, 24, 5, 7, 54 + 7 * 16}, Case{54, 24, 4, 7, 54 + 7 * 12},
          Case{54, 24, 60000, 58000, 54 + 180000ull * 58000},
          Case{54, 24, kLargest, kLargest, 54 + 6442450944ull * 2147483647}}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, " << width << " x " << height);
        for (const std::int32_t sign : {1, -1}) {
            const Bytes headers = TrueHeaders(offset, bits, width, height * sign);
            EXPECT_EQ(SizeIn(headers, length), (PixelSize{width, height}));
            EXPECT_EQ(SizeIn(headers, length + 1000), (PixelSize{width, height}));
            EXPECT_EQ(SizeIn(headers, length - 1), std::nullopt);
            EXPECT_EQ(SizeIn(headers, 0), std::nullopt);
        }
    }
}

TEST_F(Bitmap24Test, OtherFilesTellNoSize) {
    constexpr std::uint64_t kPlenty = 100000;
    struct Layout {
        std::uint32_t offset;
        unsigned bits;
    };
    for (const auto& [offset, bits] : {Layout{62, 1}, Layout{1078, 8}, Layout{54, 24}}) {
        SCOPED_TRACE(bits);
        const Bytes headers = TrueHeaders(offset, bits, 9, 9);
        ASSERT_TRUE(SizeIn(headers, kPlenty));
        for (std::size_t length = 0; length < headers.size(); ++length) {
            // All that follows the lower byte of the bit count is 0, if it is asked.
            const bool isEnough = length >= 29;
            EXPECT_EQ(SizeIn(Cut(headers, length), kPlenty).has_value(), isEnough) << length;
        }
        const auto expectNone = [&](std::size_t at, std::uint32_t value, bool is32Bit) {
            Bytes other = headers;
            is32Bit ? Set32(other, at, value) : Set16(other, at, value);
            EXPECT_EQ(SizeIn(other, kPlenty), std::nullopt) << "field " << at << ": " << value;
        };
        expectNone(0, 0x4D43, false);
        expectNone(0, 0x4C42, false);
        for (const std::uint32_t value : {0u, 1u, 53u, 55u, 61u, 63u, 118u, 0xFFFFFFFFu}) {
            expectNone(10, value, true);
        }
        for (const std::uint32_t value : {0u, 12u, 39u, 41u, 108u, 124u, 0x80000028u}) {
            expectNone(14, value, true);
        }
        for (const std::uint32_t value : {0u, 0x80000000u, 0xFFFFFFFFu}) {
            expectNone(18, value, true);
        }
        for (const std::uint32_t value : {0u, 0x80000000u}) {
            expectNone(22, value, true);
        }
        for (const std::uint32_t value : {0u, 2u, 0x101u}) {
            expectNone(26, value, false);
        }
        for (const std::uint32_t value : {0u, 4u, 16u, 32u, bits + 256}) {
            expectNone(28, value, false);
        }
        for (const std::uint32_t value : {1u, 2u, 3u, 0x10000u, 0x80000000u}) {
            expectNone(30, value, true);
        }
    }
    // Each offset goes with its own number of bits.
    EXPECT_EQ(SizeIn(TrueHeaders(62, 24, 9, 9), kPlenty), std::nullopt);
    EXPECT_EQ(SizeIn(TrueHeaders(1078, 1, 9, 9), kPlenty), std::nullopt);
    EXPECT_EQ(SizeIn(TrueHeaders(54, 8, 9, 9), kPlenty), std::nullopt);
}

TEST_F(Bitmap24Test, SinksThatFailEndTheConversion) {
    for (const Bytes& file : {File1(17, 4), File8(9, 4)}) {
        const Bytes whole = SlowConvert(file);
        for (std::size_t room = 0; room < whole.size(); ++room) {
            SCOPED_TRACE(testing::Message() << room << " of " << whole.size());
            MemorySource source(file);
            MemorySink sink(room);
            EXPECT_EQ(ConvertTo24Bitmap(source, sink), BitmapConversion::kRefused);
            EXPECT_EQ(sink.Written(), Cut(whole, room));
        }
        MemorySource source(file);
        MemorySink sink(whole.size());
        EXPECT_EQ(ConvertTo24Bitmap(source, sink), BitmapConversion::kConverted);
    }
}

TEST_F(Bitmap24Test, ThePaletteOfOneBitIsTraced) {
    Convert(Headers(62, 1, 2, 1) + Bytes{0x0A, 0x1B, 0x2C, 0x3D, 0x04, 0xFF, 0x60, 0x70} + Rows(4));
    EXPECT_EQ(platform_recorder::TakeLines(), (std::vector<std::u16string>{
                                                  u"UI:  ChangeTo24Bitmap palette[0].rgbRed =2C\r\n",
                                                  u"UI:  ChangeTo24Bitmap palette[0].rgbGreen =1B\r\n",
                                                  u"UI:  ChangeTo24Bitmap palette[0].rgbBlue =A\r\n",
                                                  u"UI:  ChangeTo24Bitmap palette[1].rgbRed =60\r\n",
                                                  u"UI:  ChangeTo24Bitmap palette[1].rgbGreen =FF\r\n",
                                                  u"UI:  ChangeTo24Bitmap palette[1].rgbBlue =4\r\n",
                                                  u"UI:  ChangeTo24Bitmap bf.bfOffBits =62\r\n",
                                              }));
    Convert(File8(3, 1));
    EXPECT_TRUE(platform_recorder::TakeLines().empty());
}

}  // namespace
