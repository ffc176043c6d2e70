// Bitmap files of logos: what is read of their headers, how far a file is read, where its pixels are, and the
// files that conversions fill.
#include "printer/logo_bitmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "logo_pictures.h"

namespace {

using pictures::Bytes;
using pictures::Set;
using pictures::operator+;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

// Headers

// No two bytes are the same.
Bytes CountedBytes() {
    Bytes file(62);
    for (std::size_t i = 0; i < file.size(); ++i) {
        file[i] = static_cast<std::uint8_t>(0x81 + i);
    }
    return file;
}

TEST(BitmapHeaders, EachFieldHasItsPlace) {
    const BitmapHeaders headers = ReadBitmapHeaders(CountedBytes());
    EXPECT_EQ(headers.type, 0x8281);
    EXPECT_EQ(headers.pixelOffset, 0x8E8D8C8Bu);
    EXPECT_EQ(headers.width, static_cast<std::int32_t>(0x96959493));
    EXPECT_EQ(headers.height, static_cast<std::int32_t>(0x9A999897));
    EXPECT_EQ(headers.bitCount, 0x9E9D);
    EXPECT_EQ(headers.compression, 0xA2A1A09Fu);
}

TEST(BitmapHeaders, BytesThatAreMissingAreZero) {
    const Bytes whole = CountedBytes();
    // As much of a field as there is in the first `length` bytes.
    const auto cut = [](std::uint32_t value, std::size_t at, std::size_t size, std::size_t length) {
        const std::size_t held = std::min(size, length - std::min(length, at));
        return held == 0 ? 0 : value & 0xFFFFFFFF >> 8 * (4 - held);
    };
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        // In memory of its own, where a byte too many is noticed.
        const Bytes file(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const BitmapHeaders headers = ReadBitmapHeaders(file);
        EXPECT_EQ(headers.type, cut(0x8281, 0, 2, length));
        EXPECT_EQ(headers.pixelOffset, cut(0x8E8D8C8B, 10, 4, length));
        EXPECT_EQ(static_cast<std::uint32_t>(headers.width), cut(0x96959493, 18, 4, length));
        EXPECT_EQ(static_cast<std::uint32_t>(headers.height), cut(0x9A999897, 22, 4, length));
        EXPECT_EQ(headers.bitCount, cut(0x9E9D, 28, 2, length));
        EXPECT_EQ(headers.compression, cut(0xA2A1A09F, 30, 4, length));
    }
}

TEST(BitmapRows, ArePaddedToFourBytes) {
    EXPECT_EQ(BitmapRowBytes(1, 1), 4u);
    EXPECT_EQ(BitmapRowBytes(10, 1), 4u);
    EXPECT_EQ(BitmapRowBytes(32, 1), 4u);
    EXPECT_EQ(BitmapRowBytes(33, 1), 8u);
    EXPECT_EQ(BitmapRowBytes(1024, 1), 128u);
    EXPECT_EQ(BitmapRowBytes(1, 8), 4u);
    EXPECT_EQ(BitmapRowBytes(4, 8), 4u);
    EXPECT_EQ(BitmapRowBytes(5, 8), 8u);
    EXPECT_EQ(BitmapRowBytes(1, 24), 4u);
    EXPECT_EQ(BitmapRowBytes(2, 24), 8u);
    EXPECT_EQ(BitmapRowBytes(4, 24), 12u);
    EXPECT_EQ(BitmapRowBytes(5, 24), 16u);
}

// How far a file is read

std::uint64_t Used(std::uint32_t pixelOffset, std::int32_t width, std::int32_t height, unsigned bits) {
    return UsedBytes({.type = 19778,
                      .pixelOffset = pixelOffset,
                      .width = width,
                      .height = height,
                      .bitCount = static_cast<std::uint16_t>(bits),
                      .compression = 0});
}

TEST(UsedBytes, ReachBehindTheLastRow) {
    EXPECT_EQ(Used(62, 10, 8, 1), 62u + 8 * 4);
    EXPECT_EQ(Used(118, 9, 2, 4), 118u + 2 * 8);
    EXPECT_EQ(Used(1078, 5, 3, 8), 1078u + 3 * 8);
    EXPECT_EQ(Used(54, 1, 1, 24), 58u);
    EXPECT_EQ(Used(54, 1024, 768, 24), 54u + 768 * 3072);
    EXPECT_EQ(Used(54, 3, 2, 16), 54u + 2 * 8);
    EXPECT_EQ(Used(54, 3, 2, 32), 54u + 2 * 12);
    EXPECT_EQ(Used(62, 10, -8, 1), 62u + 8 * 4);
}

// The conversions read from where a plain file has its pixels, the preview from where the header says.
TEST(UsedBytes, CountFromTheLaterOfBothPlaces) {
    EXPECT_EQ(Used(0, 10, 8, 1), 62u + 32);
    EXPECT_EQ(Used(63, 10, 8, 1), 63u + 32);
    EXPECT_EQ(Used(62, 5, 3, 8), 1078u + 24);
    EXPECT_EQ(Used(2000, 5, 3, 8), 2000u + 24);
    EXPECT_EQ(Used(0, 1, 1, 24), 58u);
    EXPECT_EQ(Used(0, 9, 2, 4), 118u + 16);
    EXPECT_EQ(Used(0xFFFFFFFF, 1, 1, 24), 0x100000003u);
}

TEST(UsedBytes, WithoutPixelsTheHeadersAreLeft) {
    EXPECT_EQ(Used(54, 0, 8, 24), 54u);
    EXPECT_EQ(Used(54, -1, 8, 24), 54u);
    EXPECT_EQ(Used(54, kSmallest, kSmallest, 24), 54u);
    EXPECT_EQ(Used(54, 8, 0, 24), 54u);
    // A pixel of no bits has one value.
    EXPECT_EQ(Used(0, 8, 8, 0), 58u);
}

TEST(UsedBytes, DoNotWrap) {
    // (2^31 - 1) * 24 bits are 6442450944 bytes with the padding.
    EXPECT_EQ(Used(54, kLargest, kLargest, 24), 6442450944u * 2147483647u + 54);
    // 4 * (2^31 - 1) * (2^31 - 1) = 2^64 - 2^34 + 4
    EXPECT_EQ(Used(0xFFFFFFFF, kLargest, kLargest, 32), 0ull - (1ull << 34) + 4 + 0xFFFFFFFF);
    // 4 * (2^31 - 1) * 2^31 = 2^64 - 2^33
    EXPECT_EQ(Used(54, kLargest, kSmallest, 32), 0ull - (1ull << 33) + 54);
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    // 8858370044 bytes a row
    EXPECT_EQ(Used(54, kLargest, kSmallest, 33), kMost);
    EXPECT_EQ(Used(54, kLargest, kLargest, 0xFFFF), kMost);
    EXPECT_EQ(Used(0xFFFFFFFF, kLargest, kSmallest, 0xFFFF), kMost);
}

// Pictures

bool IsRead(const Bytes& file) {
    return LogoPicture::Read(file).has_value();
}

TEST(LogoPicture, PixelsAreWhereAPlainFileHasThem) {
    const struct {
        unsigned bits;
        std::size_t offset;
        std::size_t rowBytes;
    } depths[] = {{1, 62, 4}, {8, 1078, 12}, {24, 54, 32}};
    for (const auto& [bits, offset, rowBytes] : depths) {
        SCOPED_TRACE(bits);
        // The header says that they are elsewhere.
        Bytes file = pictures::Front(10, 3, bits);
        ASSERT_EQ(file.size(), offset);
        file.resize(offset + 3 * rowBytes, 0x77);
        const auto picture = LogoPicture::Read(file);
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->BitCount(), bits);
        EXPECT_EQ(picture->Width(), 10u);
        EXPECT_EQ(picture->Rows(), 3u);
        EXPECT_FALSE(picture->IsTopDown());
        EXPECT_EQ(picture->RowBytes(), rowBytes);
        for (std::size_t row = 0; row < 3; ++row) {
            EXPECT_EQ(picture->Row(row), file.data() + offset + row * rowBytes) << "in the file itself";
        }
    }
}

TEST(LogoPicture, RowsFromTheTopKeepTheirOrder) {
    const Bytes file = pictures::Front(1, -2, 1) + Bytes{1, 2, 3, 4, 5, 6, 7, 8};
    const auto picture = LogoPicture::Read(file);
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->IsTopDown());
    EXPECT_EQ(picture->Rows(), 2u);
    EXPECT_EQ(*picture->Row(0), 1);
    EXPECT_EQ(*picture->Row(1), 5);
}

TEST(LogoPicture, OtherFormatsAreNotRead) {
    const Bytes good = pictures::File(4, 2, 24, pictures::Flat(1, 2, 3));
    ASSERT_TRUE(IsRead(good));
    for (const std::uint32_t type : {0u, 19777u, 19779u, 0x424Du, 0xFFFFu}) {
        Bytes file = good;
        Set(file, 0, 2, type);
        EXPECT_FALSE(IsRead(file)) << type;
    }
    for (const std::uint32_t compression : {1u, 2u, 3u, 4u, 5u, 0x100u, 0x10000u, 0x80000000u}) {
        Bytes file = good;
        Set(file, 30, 4, compression);
        EXPECT_FALSE(IsRead(file)) << compression;
    }
    for (unsigned bits = 0; bits <= 64; ++bits) {
        Bytes file = good;
        Set(file, 28, 2, bits);
        EXPECT_EQ(IsRead(file), bits == 1 || bits == 8 || bits == 24) << bits;
    }
    for (const std::uint32_t bits : {0x0101u, 0x1800u, 0x1818u, 0xFFFFu}) {
        Bytes file = good;
        Set(file, 28, 2, bits);
        EXPECT_FALSE(IsRead(file)) << bits;
    }
}

TEST(LogoPicture, OtherFieldsDoNotCount) {
    Bytes file = pictures::File(4, 2, 24, pictures::Flat(1, 2, 3));
    for (const std::uint32_t value : {0u, 0xFFFFFFFFu}) {
        for (const std::size_t at :
             {std::size_t{2}, std::size_t{6}, std::size_t{10}, std::size_t{14}, std::size_t{34},
              std::size_t{38}, std::size_t{42}, std::size_t{46}, std::size_t{50}}) {
            Set(file, at, 4, value);
        }
        Set(file, 26, 2, value);  // planes
        EXPECT_TRUE(IsRead(file)) << value;
    }
}

TEST(LogoPicture, SizesOfNoPictureAreNotRead) {
    for (const unsigned bits : {1u, 8u, 24u}) {
        for (const std::int32_t other : {1, 100, -1, kLargest, kSmallest}) {
            for (const std::int32_t width : {0, -1, -10, kSmallest}) {
                EXPECT_FALSE(IsRead(pictures::Front(width, other, bits))) << width << " x " << other;
            }
            EXPECT_FALSE(IsRead(pictures::Front(std::max(other, 1), 0, bits))) << other << " x 0";
        }
        for (const std::int32_t width : {1, 100, kLargest}) {
            EXPECT_FALSE(IsRead(pictures::Front(width, kLargest, bits))) << width;
            EXPECT_FALSE(IsRead(pictures::Front(width, kSmallest, bits))) << width;
        }
        EXPECT_FALSE(IsRead(pictures::Front(kLargest, 1, bits)));
        EXPECT_FALSE(IsRead(pictures::Front(kLargest, -1, bits)));
    }
}

// A few bytes do not become gigabytes: at most 1024 x 768 pixels are not in the file.
TEST(LogoPicture, MissingRowsAreThoseOfALogoAtMost) {
    EXPECT_TRUE(IsRead(pictures::Front(1024, 768, 1)));
    EXPECT_TRUE(IsRead(pictures::Front(1024, -768, 8)));
    EXPECT_TRUE(IsRead(pictures::Front(768, 1024, 24)));
    EXPECT_FALSE(IsRead(pictures::Front(1024, 769, 1)));
    EXPECT_FALSE(IsRead(pictures::Front(1, 786433, 1)));
    EXPECT_TRUE(IsRead(pictures::Front(1, 786432, 1)));
    // One row of 128 bytes whole, and all but.
    EXPECT_TRUE(IsRead(pictures::Front(1024, 769, 1) + Bytes(128)));
    EXPECT_FALSE(IsRead(pictures::Front(1024, 769, 1) + Bytes(127)));
}

// The largest file that comes of it, 1078 bytes before rows of a byte a pixel, is still counted by 31 bits.
TEST(LogoPicture, NoPictureIsTooLargeForItsConvertedFile) {
    // (2^31 - 1 - 1078) / 32 = 67108830.3 rows of four bytes, and of 32 in grey. Memory that nobody touches.
    constexpr std::size_t kSize = 62 + 4 * std::size_t{67108831};
    const std::unique_ptr<void, decltype(&std::free)> memory(std::calloc(kSize, 1), std::free);
    ASSERT_TRUE(memory);
    auto* const bytes = static_cast<std::uint8_t*>(memory.get());
    for (const auto& [rows, isRead] : {std::pair(67108830, true), std::pair(67108831, false)}) {
        const Bytes front = pictures::Front(32, rows, 1);
        std::copy(front.begin(), front.end(), bytes);
        EXPECT_EQ(LogoPicture::Read({bytes, kSize}).has_value(), isRead) << rows;
    }
}

TEST(LogoPicture, PixelsThatAreMissingAreZero) {
    const Bytes whole = pictures::Front(2, 3, 1) + Bytes(12, 0xEE);
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        const Bytes file(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const auto picture = LogoPicture::Read(file);
        // The bit count's low byte is the 29th.
        ASSERT_EQ(picture.has_value(), length >= 29);
        if (picture) {
            Bytes pixels(picture->Row(0), picture->Row(0) + 12);
            Bytes expected(length > 62 ? length - 62 : 0, 0xEE);
            expected.resize(12, 0);
            EXPECT_EQ(pixels, expected);
        }
    }
}

TEST(LogoPicture, MayBeMovedWithThePixelsThatItCompleted) {
    const Bytes file = pictures::Front(8, 2, 1) + Bytes{0xAA};
    auto picture = LogoPicture::Read(file);
    ASSERT_TRUE(picture);
    const LogoPicture moved = std::move(*picture);
    EXPECT_EQ(Bytes(moved.Row(0), moved.Row(0) + 8), (Bytes{0xAA, 0, 0, 0, 0, 0, 0, 0}));
}

// Files in the making

TEST(LogoFile, HasHeadersAndPaletteAndBlackRows) {
    const Bytes source = pictures::Front(9, -2, 24) + Bytes(56, 0x99);
    const auto picture = LogoPicture::Read(source);
    ASSERT_TRUE(picture);
    Bytes mono(500, 0xEE);
    const LogoFile monoFile = LogoFile::Mono(*picture, mono);
    const Bytes expected = {
        'B', 'M', 70, 0, 0,   0,   0,   0, 0,    0,    62,   0,    0, 0,                    //
        40,  0,   0,  0, 9,   0,   0,   0, 0xFE, 0xFF, 0xFF, 0xFF, 1, 0, 1, 0, 0, 0, 0, 0,  //
        8,   0,   0,  0, 0,   0,   0,   0, 0,    0,    0,    0,    0, 0, 0, 0, 0, 0, 0, 0,  //
        0,   0,   0,  0, 255, 255, 255, 0, 0,    0,    0,    0,    0, 0, 0, 0};
    EXPECT_EQ(mono, expected);
    EXPECT_EQ(monoFile.Row(0), mono.data() + 62);
    EXPECT_EQ(monoFile.Row(1), mono.data() + 66);

    Bytes grey;
    const LogoFile greyFile = LogoFile::Grey(*picture, grey);
    Bytes front = {'B', 'M', 0x4E, 4, 0, 0, 0, 0, 0,    0,    0x36, 4,    0, 0,  // 1102, 1078
                   40,  0,   0,    0, 9, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 1, 0, 8, 0, 0, 0, 0, 0,  //
                   24,  0,   0,    0, 0, 0, 0, 0, 0,    0,    0,    0,    0, 0, 0, 0, 0, 0, 0, 0};
    for (unsigned i = 0; i < 256; ++i) {
        pictures::Put(front, 4, i * 0x010101);
    }
    EXPECT_EQ(grey, front + Bytes(24, 0));
    EXPECT_EQ(greyFile.Row(0), grey.data() + 1078);
    EXPECT_EQ(greyFile.Row(1), grey.data() + 1090);
}

// Palettes

MonoPalette PaletteOf(const Bytes& palette) {
    Bytes file = pictures::Front(8, 1, 1);
    file.resize(54);
    return ReadMonoPalette(file + palette);
}

TEST(MonoPalette, IsOfBlackAndWhiteInEitherOrder) {
    EXPECT_EQ(PaletteOf({0, 0, 0, 0, 255, 255, 255, 0}), MonoPalette::kBlackAndWhite);
    EXPECT_EQ(PaletteOf({0, 0, 0, 7, 255, 255, 255, 255}), MonoPalette::kBlackAndWhite);
    EXPECT_EQ(PaletteOf({255, 255, 255, 0, 0, 0, 0, 0}), MonoPalette::kWhiteAndBlack);
    EXPECT_EQ(PaletteOf({0, 0, 0, 0, 0, 0, 0, 0}), MonoPalette::kOther);
    EXPECT_EQ(PaletteOf({255, 255, 255, 0, 255, 255, 255, 0}), MonoPalette::kOther);
    EXPECT_EQ(PaletteOf({0, 0, 0, 0, 255, 0, 0, 0}), MonoPalette::kOther);
}

TEST(MonoPalette, NearlyIsNot) {
    for (const std::size_t at : {0u, 1u, 2u, 4u, 5u, 6u}) {
        Bytes palette = {0, 0, 0, 0, 255, 255, 255, 0};
        palette[at] = at < 3 ? 1 : 254;
        EXPECT_EQ(PaletteOf(palette), MonoPalette::kOther) << at;
        palette = {255, 255, 255, 0, 0, 0, 0, 0};
        palette[at] = at < 3 ? 254 : 1;
        EXPECT_EQ(PaletteOf(palette), MonoPalette::kOther) << at;
    }
}

TEST(MonoPalette, ColoursThatAreMissingAreBlack) {
    const Bytes white = {255, 255, 255, 0, 0, 0, 0, 0};
    const Bytes black = {0, 0, 0, 0, 255, 255, 255, 0};
    for (std::ptrdiff_t length = 0; length <= 8; ++length) {
        SCOPED_TRACE(length);
        EXPECT_EQ(PaletteOf({white.begin(), white.begin() + length}),
                  length < 3 ? MonoPalette::kOther : MonoPalette::kWhiteAndBlack);
        EXPECT_EQ(PaletteOf({black.begin(), black.begin() + length}),
                  length < 7 ? MonoPalette::kOther : MonoPalette::kBlackAndWhite);
    }
    EXPECT_EQ(ReadMonoPalette({}), MonoPalette::kOther);
}

}  // namespace
