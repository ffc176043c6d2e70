// Bitmap files made safe for the system's drawing functions: the header that they are given byte by byte,
// then files that lie.
#include "devpages/shown_bitmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <random>
#include <vector>

#include "logo_pictures.h"

namespace {

using pictures::Bytes;
using pictures::Set;
using pictures::operator+;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

// What a file says of itself.
struct Claims {
    std::int32_t width = 3;
    std::int32_t height = 2;
    std::uint32_t bits = 24;
    std::uint32_t compression = 0;
    std::uint32_t coloursUsed = 0;
    std::uint32_t infoSize = 40;
    std::uint32_t pixelOffset = 54;
    std::uint32_t planes = 1;
};

// Up to the end of the information header. What is not read has a value that would show.
Bytes HeadersOf(const Claims& claims) {
    Bytes file(14 + std::max(claims.infoSize, 40u), 0x66);
    file[0] = 'B';
    file[1] = 'M';
    Set(file, 10, 4, claims.pixelOffset);
    Set(file, 14, 4, claims.infoSize);
    Set(file, 18, 4, static_cast<std::uint32_t>(claims.width));
    Set(file, 22, 4, static_cast<std::uint32_t>(claims.height));
    Set(file, 26, 2, claims.planes);
    Set(file, 28, 2, claims.bits);
    Set(file, 30, 4, claims.compression);
    Set(file, 46, 4, claims.coloursUsed);
    return file;
}

// The header that the system is given: 40 bytes, the sizes as in the file, one plane.
Bytes InfoOf(const Claims& claims, std::uint32_t colours) {
    Bytes info;
    pictures::Put(info, 4, 40);
    pictures::Put(info, 4, static_cast<std::uint32_t>(claims.width));
    pictures::Put(info, 4, static_cast<std::uint32_t>(claims.height));
    pictures::Put(info, 2, 1);
    pictures::Put(info, 2, claims.bits);
    pictures::Put(info, 4, claims.compression);
    info.resize(32);  // image size and resolutions
    pictures::Put(info, 4, colours);
    info.resize(40);
    return info;
}

Bytes Counted(std::size_t size, unsigned first) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>((first + i) % 251);
    }
    return bytes;
}

// The file is shown with this header and palette, its pixels where `at` says, and `file` as it was.
void ExpectShown(const Claims& claims, Bytes file, const Bytes& info, std::size_t at) {
    const Bytes before = file;
    const auto shown = ShowBitmap(file);
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->width, claims.width);
    EXPECT_EQ(shown->height, std::abs(claims.height));
    EXPECT_EQ(shown->pixelsAt, at);
    EXPECT_TRUE(file == before);
    Bytes expected = info;
    expected.resize(shown->info.size(), 0);
    EXPECT_EQ(Bytes(shown->info.begin(), shown->info.end()), expected);
}

bool IsShown(Bytes file) {
    const Bytes before = file;
    const bool isShown = ShowBitmap(file).has_value();
    EXPECT_TRUE(isShown || file == before);
    return isShown;
}

bool IsShown(const Claims& claims, std::size_t rest) {
    return IsShown(HeadersOf(claims) + Bytes(rest));
}

TEST(ShownBitmap, ColoursOf24BitsNeedNoPalette) {
    const Claims claims;
    ExpectShown(claims, HeadersOf(claims) + Bytes(24), InfoOf(claims, 0), 54);
}

TEST(ShownBitmap, RowsFromTheTopStaySo) {
    Claims claims;
    claims.height = -2;
    ExpectShown(claims, HeadersOf(claims) + Bytes(24), InfoOf(claims, 0), 54);
}

TEST(ShownBitmap, ThePaletteComesAlong) {
    for (const std::uint32_t bits : {1u, 4u, 8u}) {
        SCOPED_TRACE(bits);
        const std::uint32_t colours = 1u << bits;
        const Bytes palette = Counted(4 * colours, 1);
        const Claims claims = {.bits = bits, .pixelOffset = 54 + 4 * colours};
        ExpectShown(claims, HeadersOf(claims) + palette + Bytes(8), InfoOf(claims, colours) + palette,
                    54 + 4 * colours);
    }
}

TEST(ShownBitmap, APaletteMayBeShort) {
    const Bytes palette = Counted(12, 1);
    const Claims claims = {.bits = 8, .coloursUsed = 3, .pixelOffset = 66};
    ExpectShown(claims, HeadersOf(claims) + palette + Bytes(8), InfoOf(claims, 3) + palette, 66);
}

TEST(ShownBitmap, APaletteHasNoMoreColoursThanAPixelHasValues) {
    for (const std::uint32_t used : {3u, 256u, 257u, 0x40000000u, 0xFFFFFFFFu}) {
        const Bytes palette = Counted(8, 1);
        const Claims claims = {.bits = 1, .coloursUsed = used, .pixelOffset = 62};
        ExpectShown(claims, HeadersOf(claims) + palette + Bytes(8), InfoOf(claims, 2) + palette, 62);
    }
    const Bytes palette = Counted(1024, 1);
    const Claims claims = {.bits = 8, .coloursUsed = 0xFFFFFFFF, .pixelOffset = 1078};
    ExpectShown(claims, HeadersOf(claims) + palette + Bytes(8), InfoOf(claims, 256) + palette, 1078);
}

TEST(ShownBitmap, ThePaletteIsBehindALongerHeader) {
    for (const std::uint32_t infoSize : {41u, 52u, 56u, 108u, 124u}) {
        const Bytes palette = Counted(8, 1);
        const Claims claims = {.bits = 1, .infoSize = infoSize, .pixelOffset = 14 + infoSize + 8};
        ExpectShown(claims, HeadersOf(claims) + palette + Bytes(8), InfoOf(claims, 2) + palette,
                    14 + infoSize + 8);
    }
}

TEST(ShownBitmap, MasksComeAlongFromTheirPlace) {
    for (const std::uint32_t bits : {16u, 32u}) {
        const Bytes masks = Counted(12, 1);
        const Claims claims = {.bits = bits, .compression = 3, .pixelOffset = 66};
        ExpectShown(claims, HeadersOf(claims) + masks + Bytes(24), InfoOf(claims, 0) + masks, 66);
        // A header that has them in it.
        const Claims longer = {.bits = bits, .compression = 3, .infoSize = 108, .pixelOffset = 122};
        ExpectShown(longer, HeadersOf(longer) + Bytes(24), InfoOf(longer, 0) + Bytes(12, 0x66), 122);
        EXPECT_FALSE(IsShown(claims, 11)) << "masks that are not there";
    }
}

TEST(ShownBitmap, OtherDepthsAndCompressionsAreNotShown) {
    for (std::uint32_t bits = 0; bits <= 64; ++bits) {
        const bool isDepth = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
        EXPECT_EQ(IsShown({.bits = bits, .pixelOffset = 54}, 2000), isDepth) << bits;
        EXPECT_EQ(IsShown({.bits = bits, .compression = 3}, 2000), bits == 16 || bits == 32) << bits;
        for (const std::uint32_t compression : {1u, 2u, 4u, 5u, 6u, 0x10000u, 0xFFFFFFFFu}) {
            EXPECT_FALSE(IsShown({.bits = bits, .compression = compression}, 2000)) << bits;
        }
    }
    EXPECT_FALSE(IsShown({.bits = 0x0101}, 2000));
    EXPECT_FALSE(IsShown({.bits = 0xFFFF}, 2000));
}

TEST(ShownBitmap, WhatIsNoBitmapIsNotShown) {
    for (const std::size_t at : {std::size_t{0}, std::size_t{1}}) {
        Bytes file = HeadersOf({}) + Bytes(24);
        ++file[at];
        EXPECT_FALSE(IsShown(file));
    }
}

TEST(ShownBitmap, HeadersOfOtherLengthsAreNotShown) {
    for (const std::uint32_t infoSize : {0u, 12u, 39u, 125u, 0x7FFFFFFFu, 0xFFFFFFF2u, 0xFFFFFFFFu}) {
        Bytes file = HeadersOf({}) + Bytes(200);
        Set(file, 14, 4, infoSize);
        EXPECT_FALSE(IsShown(file)) << infoSize;
    }
}

// Whatever it says of its planes, there is one.
TEST(ShownBitmap, PlanesDoNotCount) {
    for (const std::uint32_t planes : {0u, 2u, 0xFFFFu}) {
        const Claims claims = {.planes = planes};
        ExpectShown(claims, HeadersOf(claims) + Bytes(24), InfoOf(claims, 0), 54);
    }
}

TEST(ShownBitmap, SizesOfNoPictureAreNotShown) {
    for (const std::int32_t other : {1, -1, 100, kLargest, kSmallest}) {
        for (const std::int32_t width : {0, -1, kSmallest}) {
            EXPECT_FALSE(IsShown({.width = width, .height = other}, 2000)) << width << " x " << other;
        }
        EXPECT_FALSE(IsShown({.width = std::max(other, 1), .height = 0}, 2000)) << other << " x 0";
    }
    for (const std::uint32_t bits : {1u, 4u, 8u, 16u, 24u, 32u}) {
        EXPECT_FALSE(IsShown({.width = kLargest, .height = kLargest, .bits = bits}, 2000)) << bits;
        EXPECT_FALSE(IsShown({.width = kLargest, .height = kSmallest, .bits = bits}, 2000)) << bits;
        EXPECT_FALSE(IsShown({.width = kLargest, .height = 1, .bits = bits}, 2000)) << bits;
        EXPECT_FALSE(IsShown({.width = 1, .height = kLargest, .bits = bits}, 2000)) << bits;
        EXPECT_FALSE(IsShown({.width = 1, .height = -kLargest, .bits = bits}, 2000)) << bits;
        EXPECT_FALSE(IsShown({.width = 1, .height = kSmallest, .bits = bits}, 2000)) << bits;
    }
}

TEST(ShownBitmap, ShortFilesAreNotShownBeforeTheirPixels) {
    const Claims claims = {.bits = 1, .pixelOffset = 62};
    const Bytes whole = HeadersOf(claims) + Bytes{1, 2, 3, 4, 5, 6, 7, 8} + Bytes(8, 0xEE);
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        Bytes file(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const auto shown = ShowBitmap(file);
        ASSERT_EQ(shown.has_value(), length >= 62);
        if (shown) {
            Bytes expected(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            expected.resize(whole.size(), 0);
            EXPECT_EQ(file, expected) << "missing pixels are put at its end as 0";
            EXPECT_EQ(shown->pixelsAt, 62u);
        }
    }
}

// A few bytes do not become gigabytes.
TEST(ShownBitmap, MissingRowsAreThoseOfALogoAtMost) {
    EXPECT_TRUE(IsShown({.width = 1024, .height = 768}, 0));
    EXPECT_TRUE(IsShown({.width = 1024, .height = -768, .bits = 32}, 0));
    EXPECT_FALSE(IsShown({.width = 1024, .height = 769}, 0));
    EXPECT_TRUE(IsShown({.width = 1024, .height = 769}, 3072));
    EXPECT_FALSE(IsShown({.width = 1024, .height = 769}, 3071));
    EXPECT_TRUE(IsShown({.width = 1, .height = 786432}, 0));
    EXPECT_FALSE(IsShown({.width = 1, .height = 786433}, 0));
}

TEST(ShownBitmap, PixelsBeginWithinTheFile) {
    // Also where a header says that they are in the header.
    for (const std::uint32_t offset : {0u, 1u, 53u, 54u, 77u, 78u}) {
        Bytes file = HeadersOf({.pixelOffset = offset}) + Bytes(24);
        const auto shown = ShowBitmap(file);
        ASSERT_TRUE(shown) << offset;
        EXPECT_EQ(shown->pixelsAt, offset);
        EXPECT_EQ(file.size(), std::max<std::size_t>(78, offset + 24));
    }
    for (const std::uint32_t offset :
         {79u, 1000u, 0x7FFF0000u, 0x7FFFFFE7u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFE8u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(IsShown({.pixelOffset = offset}, 24)) << offset;
    }
}

// Whatever the headers say, what the system would read is in memory that the file has.
TEST(ShownBitmap, NothingIsReadBeyondAnyFile) {
    auto random = [engine = std::mt19937(20)]() mutable { return static_cast<std::uint32_t>(engine()); };
    constexpr std::uint32_t kOften[] = {0,  1,  2,  3,  4,    8,          16,        24,
                                        32, 40, 54, 62, 1078, 0x7FFFFFFF, 0x80000000};
    int shownFiles = 0;
    for (int round = 0; round < 50000; ++round) {
        Bytes file = pictures::Front(4, 4, 24);
        file.resize(14 + random() % 200, 0x5A);
        const std::size_t changes = 1 + random() % 4;
        for (std::size_t i = 0; i < changes; ++i) {
            constexpr std::size_t kFields[] = {10, 14, 18, 22, 28, 30, 46};
            const std::size_t at = kFields[random() % std::size(kFields)];
            const std::uint32_t value =
                random() % 2 == 0 ? kOften[random() % std::size(kOften)] : random() % 300;
            if (at + 4 <= file.size()) {
                Set(file, at, at == 28 ? 2 : 4, value);
            }
        }
        if (file.size() >= 14 && random() % 2 == 0) {
            Set(file, 10, 4, random() % 100);
        }
        const std::size_t before = file.size();
        const auto shown = ShowBitmap(file);
        if (!shown) {
            continue;
        }
        ++shownFiles;
        const auto field = [&shown](std::size_t at, std::size_t bytes) {
            std::uint64_t value = 0;
            for (std::size_t i = bytes; i-- > 0;) {
                value = value << 8 | shown->info[at + i];
            }
            return value;
        };
        const std::uint64_t rowBytes = (field(4, 4) * field(14, 2) + 31) / 32 * 4;
        ASSERT_LE(shown->pixelsAt + rowBytes * static_cast<std::uint64_t>(shown->height), file.size());
        ASSERT_LE(field(32, 4), 256u);
        ASSERT_LE(file.size(), before + 4 * 1024 * 768 + 4);
    }
    EXPECT_GT(shownFiles, 1000);
}

}  // namespace
