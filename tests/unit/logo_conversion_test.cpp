// Whole conversions of logos: files written out by hand, files that lie, then the plain way bit for bit.
//
// KVMR72_WHOLE_MATRIX=1 compares all of the sizes, which takes a quarter of an hour without sanitizers;
// otherwise each size meets a part of the pictures and tones.
#include "printer/logo_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "logo_pictures.h"
#include "logo_reference.h"
#include "printer/logo_bitmap.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
constexpr LogoTone kAsIs = {0, 0};

constexpr Halftone kHalftones[] = {Halftone::kNone, Halftone::kDitherM3, Halftone::kDitherM4,
                                   Halftone::kErrorDiffuse};

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Grey(const Bytes& source, unsigned bits, const LogoTone& tone = kAsIs) {
    Bytes output;
    EXPECT_EQ(ConvertToGrey(source, bits, tone, output), LogoConversion::kConverted);
    return output;
}

Bytes Mono(const Bytes& source, unsigned bits, Halftone halftone, const LogoTone& tone = kAsIs) {
    Bytes output;
    EXPECT_EQ(ConvertToMono(source, bits, halftone, tone, output), LogoConversion::kConverted);
    return output;
}

// What follows headers and palette.
Bytes RowsOf(const Bytes& file, unsigned bits) {
    return {file.begin() + (bits == 8 ? 1078 : 62), file.end()};
}

Bytes GreyRows(const Bytes& source, unsigned bits, const LogoTone& tone = kAsIs) {
    return RowsOf(Grey(source, bits, tone), 8);
}

Bytes MonoRows(const Bytes& source, unsigned bits, Halftone halftone, const LogoTone& tone = kAsIs) {
    return RowsOf(Mono(source, bits, halftone, tone), 1);
}

LogoConversion GreyResult(const Bytes& source, unsigned bits) {
    Bytes output = {1, 2, 3};
    const LogoConversion result = ConvertToGrey(source, bits, kAsIs, output);
    EXPECT_EQ(output == (Bytes{1, 2, 3}), result != LogoConversion::kConverted);
    return result;
}

LogoConversion MonoResult(const Bytes& source, unsigned bits, Halftone halftone = Halftone::kNone) {
    Bytes output = {1, 2, 3};
    const LogoConversion result = ConvertToMono(source, bits, halftone, kAsIs, output);
    EXPECT_EQ(output == (Bytes{1, 2, 3}), result != LogoConversion::kConverted);
    return result;
}

// Two rows of three pixels.
const Bytes kColourRows = {
    255, 0,   0,   0,  255, 0,  0,   0,   255, 9, 9, 9,  // blue, green, red
    255, 255, 255, 10, 20,  30, 100, 100, 100, 9, 9, 9,  // white, dark, grey
};
const Bytes kColours = pictures::Front(3, 2, 24) + kColourRows;

TEST(ConvertToGrey, WritesAFileWithAPaletteOfGreys) {
    const Bytes file = Grey(kColours, 24);
    const Bytes headers = {'B', 'M', 0x3E, 4, 0, 0, 0, 0, 0, 0, 0x36, 4, 0, 0,  // 1086 bytes, rows from 1078
                           40,  0,   0,    0, 3, 0, 0, 0, 2, 0, 0,    0, 1, 0, 8, 0, 0, 0, 0, 0,
                           8,   0,   0,    0, 0, 0, 0, 0, 0, 0, 0,    0, 0, 0, 0, 0, 0, 0, 0, 0};
    Bytes palette;
    for (unsigned i = 0; i < 256; ++i) {
        const auto level = static_cast<std::uint8_t>(i);
        palette = palette + Bytes{level, level, level, 0};
    }
    // 255 * 114 / 1000 = 29.07, 255 * 587 / 1000 = 149.7, 255 * 299 / 1000 = 76.2;
    // (1140 + 11740 + 8970) / 1000 = 21.85
    EXPECT_EQ(file, headers + palette + (Bytes{29, 149, 76, 0, 255, 21, 100, 0}));
}

TEST(ConvertToGrey, CurvesEachColourBeforeItCounts) {
    // At 50 the dark pixel's colours are all below; 100 becomes 50 * 255 / 155 = 82.3.
    EXPECT_EQ(GreyRows(kColours, 24, {50, 0}), (Bytes{29, 149, 76, 0, 255, 0, 82, 0}));
    // 10 more for 0 and none for 255: (29070 + 5870 + 2990) / 1000 = 37.93,
    // (1140 + 149685 + 2990) / 1000 = 153.8, (1140 + 5870 + 76245) / 1000 = 83.3
    EXPECT_EQ(GreyRows(kColours, 24, {0, 10}), (Bytes{37, 153, 83, 0, 255, 31, 110, 0}));
}

TEST(ConvertToGrey, TakesAnIndexOfEightBitsForTheLevel) {
    const Bytes source = pictures::Front(3, 2, 8) + Bytes{0, 128, 255, 77, 10, 20, 30, 77};
    EXPECT_EQ(GreyRows(source, 8), (Bytes{0, 128, 255, 0, 10, 20, 30, 0}));
    EXPECT_EQ(GreyRows(source, 8, {-50, 1}), (Bytes{51, 128, 206, 0, 57, 63, 69, 0}));
}

TEST(ConvertToGrey, TakesSetBitsForWhite) {
    const Bytes source = pictures::Front(10, 2, 1) + Bytes{0x81, 0x7F, 9, 9, 0x00, 0x80, 9, 9};
    EXPECT_EQ(GreyRows(source, 1), (Bytes{255, 0, 0, 0, 0, 0, 0, 255, 0,   255, 0, 0,  //
                                          0,   0, 0, 0, 0, 0, 0, 0,   255, 0,   0, 0}));
    EXPECT_EQ(GreyRows(source, 1, {-50, 1}), (Bytes{206, 51, 51, 51, 51, 51, 51, 206, 51,  206, 0, 0,  //
                                                    51,  51, 51, 51, 51, 51, 51, 51,  206, 51,  0, 0}));
}

TEST(ConvertToMono, WritesAFileOfBlackAndWhite) {
    const Bytes headers = {'B', 'M', 70, 0, 0, 0, 0, 0, 0, 0, 62, 0, 0, 0,  //
                           40,  0,   0,  0, 3, 0, 0, 0, 2, 0, 0,  0, 1, 0, 1, 0, 0, 0, 0, 0,
                           8,   0,   0,  0, 0, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0};
    const Bytes palette = {0, 0, 0, 0, 255, 255, 255, 0};
    // Means: blue (255 + 255 + 10 + 100) / 6 = 103, green 630 / 6 = 105, red 640 / 6 = 106; as grey
    // (11742 + 61635 + 31694) / 1000 = 105.
    EXPECT_EQ(Mono(kColours, 24, Halftone::kNone), headers + palette + (Bytes{0x40, 0, 0, 0, 0x80, 0, 0, 0}));
}

TEST(ConvertToMono, OnePixelIsFourBytesWithAnyHalftone) {
    const Bytes dark = pictures::Front(1, 2, 24) + Bytes{1, 1, 1, 9, 1, 1, 1, 9};
    for (const Halftone halftone : {Halftone::kNone, Halftone::kErrorDiffuse}) {
        EXPECT_EQ(MonoRows(dark, 24, halftone), Bytes(8, 0));
    }
    // The matrices' first entry is 0.
    EXPECT_EQ(MonoRows(dark, 24, Halftone::kDitherM4), (Bytes{0x80, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(ConvertToMono, NothingOfOneGreyIsAboveItsMean) {
    for (const std::uint8_t level : Bytes{0, 1, 127, 128, 255}) {
        EXPECT_EQ(
            MonoRows(pictures::File(20, 3, 24, pictures::Flat(level, level, level)), 24, Halftone::kNone),
            Bytes(12, 0));
        EXPECT_EQ(MonoRows(pictures::File(20, 3, 8, pictures::Flat(level, level, level)), 8, Halftone::kNone),
                  Bytes(12, 0));
    }
}

// The mean is that of the curved values, not the curved one of the values.
TEST(ConvertToMono, TheMeanIsOfCurvedValues) {
    const Bytes source = pictures::Front(4, 1, 8) + Bytes{0, 84, 255, 102};
    // 84: 34 * 255 / 155 = 55; 102: 52 * 255 / 155 = 85; (55 + 255 + 85) / 4 = 98
    EXPECT_EQ(MonoRows(source, 8, Halftone::kNone, {50, 0}), (Bytes{0x20, 0, 0, 0}));
    // As they are: 441 / 4 = 110
    EXPECT_EQ(MonoRows(source, 8, Halftone::kNone), (Bytes{0x20, 0, 0, 0}));
    // 40 darker: 0, 44, 215, 62; 321 / 4 = 80
    EXPECT_EQ(MonoRows(source, 8, Halftone::kNone, {0, -40}), (Bytes{0x20, 0, 0, 0}));
    // 100 brighter: 100, 184, 255, 202; 741 / 4 = 185
    EXPECT_EQ(MonoRows(source, 8, Halftone::kNone, {0, 100}), (Bytes{0x30, 0, 0, 0}));
}

// 32 / 4 = 8, 35 / 4 = 8: the entry of column 2 in row 0. The same level, equal to its threshold.
TEST(ConvertToMono, EqualIsWhiteOf24BitsAndBlackOfEight) {
    for (const int level : {32, 35}) {
        const auto flat = pictures::Flat(static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level),
                                         static_cast<std::uint8_t>(level));
        // 0 32 8 40 2 34 10 42 against 8
        EXPECT_EQ(MonoRows(pictures::File(8, 1, 24, flat), 24, Halftone::kDitherM3), (Bytes{0xA8, 0, 0, 0}));
        EXPECT_EQ(MonoRows(pictures::File(8, 1, 8, flat), 8, Halftone::kDitherM3), (Bytes{0x88, 0, 0, 0}));
    }
    // 0 128 32 160 8 136 40 168 3 131 35 163 11 139 43 171 against 35
    const auto flat = pictures::Flat(35, 35, 35);
    EXPECT_EQ(MonoRows(pictures::File(16, 1, 24, flat), 24, Halftone::kDitherM4), (Bytes{0xA8, 0xA8, 0, 0}));
    EXPECT_EQ(MonoRows(pictures::File(16, 1, 8, flat), 8, Halftone::kDitherM4), (Bytes{0xA8, 0x88, 0, 0}));
}

// Red and blue change places: 200 red alone counts 114 of a thousand and is 22.8, of which only the first
// column's 0 and the ninth's 3 are below; 200 blue alone counts 299 and is 59.8.
TEST(ConvertToMono, DitherM4Of24BitsCrossesRedAndBlue) {
    EXPECT_EQ(MonoRows(pictures::File(16, 1, 24, pictures::Flat(0, 0, 200)), 24, Halftone::kDitherM4),
              (Bytes{0x88, 0x88, 0, 0}));
    EXPECT_EQ(MonoRows(pictures::File(16, 1, 24, pictures::Flat(200, 0, 0)), 24, Halftone::kDitherM4),
              (Bytes{0xAA, 0xAA, 0, 0}));
}

// With contrast 10, twice the distance: red 100 around blue's mean 20 is 180, blue 20 around red's 100 is -60
// and so 0; grey 180 * 114 / 1000 = 20.5. Around their own means they would stay 100 and 20: 17.4.
TEST(ConvertToMono, DitherM4Of24BitsCrossesTheMeans) {
    // 0 128 32 160 8 136 40 168 3 131 35 163 11 139 43 171 against 20
    EXPECT_EQ(
        MonoRows(pictures::File(16, 1, 24, pictures::Flat(20, 0, 100)), 24, Halftone::kDitherM4, {10, 0}),
        (Bytes{0x88, 0x88, 0, 0}));
    // Row 9: 194 66 226 98 202 74 234 106 193 65 225 97 201 73 233 105; red 200 around 120 is 280 and so 255,
    // blue 120 around 200 is 40: (29070 + 11960) / 1000 = 41. Green 100 stays: 99.7 together.
    const Bytes source = pictures::File(16, 10, 24, pictures::Flat(120, 100, 200));
    const Bytes rows = MonoRows(source, 24, Halftone::kDitherM4, {10, 0});
    EXPECT_EQ(Bytes(rows.end() - 4, rows.end()), (Bytes{0x54, 0x54, 0, 0}));
}

TEST(ConvertToMono, PassesThroughWhatItCouldConvert) {
    EXPECT_EQ(MonoResult(kColours, 24, Halftone::kPassThrough), LogoConversion::kPassedThrough);
    const Bytes levels = pictures::File(5, 5, 8, pictures::Gradient());
    EXPECT_EQ(MonoResult(levels, 8, Halftone::kPassThrough), LogoConversion::kPassedThrough);
    EXPECT_EQ(MonoResult(levels, 24, Halftone::kPassThrough), LogoConversion::kOtherFormat);
}

TEST(ConvertToMono, LeavesWhatIsBlackAndWhite) {
    const Bytes mono = pictures::Front(8, 1, 1) + Bytes{1, 2, 3, 4};
    EXPECT_EQ(MonoResult(mono, 24), LogoConversion::kAlreadyMono);
    EXPECT_EQ(MonoResult(mono, 8), LogoConversion::kAlreadyMono);
    Bytes compressed = mono;
    compressed[30] = 1;
    EXPECT_EQ(MonoResult(compressed, 8), LogoConversion::kOtherFormat);
    Bytes noBitmap = mono;
    noBitmap[1] = 'X';
    EXPECT_EQ(MonoResult(noBitmap, 8), LogoConversion::kOtherFormat);
}

TEST(LogoFormat, OtherDepthsAndCompressedOnesAreRefused) {
    const Bytes levels = pictures::File(5, 5, 8, pictures::Gradient());
    EXPECT_EQ(GreyResult(levels, 24), LogoConversion::kOtherFormat);
    EXPECT_EQ(GreyResult(levels, 1), LogoConversion::kOtherFormat);
    EXPECT_EQ(GreyResult(kColours, 8), LogoConversion::kOtherFormat);
    EXPECT_EQ(MonoResult(levels, 24), LogoConversion::kOtherFormat);
    EXPECT_EQ(MonoResult(kColours, 8), LogoConversion::kOtherFormat);
    EXPECT_EQ(MonoResult(kColours, 1), LogoConversion::kOtherFormat);
    for (const std::uint8_t bits : Bytes{0, 4, 16, 32}) {
        Bytes other = kColours;
        other[28] = bits;
        EXPECT_EQ(GreyResult(other, bits), LogoConversion::kOtherFormat);
        EXPECT_EQ(MonoResult(other, bits), LogoConversion::kOtherFormat);
        EXPECT_EQ(GreyResult(other, 24), LogoConversion::kOtherFormat);
    }
    Bytes compressed = levels;
    compressed[30] = 1;
    EXPECT_EQ(GreyResult(compressed, 8), LogoConversion::kOtherFormat);
    EXPECT_EQ(MonoResult(compressed, 8), LogoConversion::kOtherFormat);
    Bytes noBitmap = levels;
    noBitmap[0] = 'b';
    EXPECT_EQ(GreyResult(noBitmap, 8), LogoConversion::kOtherFormat);
    EXPECT_EQ(MonoResult(noBitmap, 8), LogoConversion::kOtherFormat);
}

TEST(LogoFormat, SizesThatNoFileHasAreRefused) {
    const std::pair<std::int32_t, std::int32_t> sizes[] = {
        {0, 1},         {1, 0},         {-1, 1},       {kSmallest, 1},        {kLargest, kLargest},
        {1, kLargest},  {1, kSmallest}, {kLargest, 1}, {kLargest, kSmallest}, {65536, 65536},
        {46340, 46340}, {1024, 769},    {1024, -769},  {786433, 1},
    };
    for (const auto& [width, height] : sizes) {
        for (const unsigned bits : {1u, 8u, 24u}) {
            EXPECT_EQ(GreyResult(pictures::Front(width, height, bits), bits), LogoConversion::kOtherFormat)
                << width << " x " << height << ", " << bits;
        }
    }
}

TEST(LogoFormat, AFewBytesAreNoPicture) {
    for (std::size_t size = 0; size < 54; ++size) {
        const Bytes file(kColours.begin(), kColours.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(GreyResult(file, 24) == LogoConversion::kConverted, size >= 29) << size;
    }
}

// Nothing but the headers is read, so that the rest need not be there.
bool IsPicture(const Bytes& headers, std::size_t size) {
    return LogoPicture::Read({headers.data(), size}).has_value();
}

TEST(LogoFormat, AResultIsASize32BitsCount) {
    constexpr std::size_t kHeld = std::size_t{1} << 33;
    // With headers and palette 2147482678 and 2147483702 bytes.
    EXPECT_TRUE(IsPicture(pictures::Front(1024, 2097150, 8), kHeld));
    EXPECT_FALSE(IsPicture(pictures::Front(1024, 2097151, 8), kHeld));
    EXPECT_FALSE(IsPicture(pictures::Front(1024, 699051, 24), kHeld));
    // As grey levels eight times as much as the source.
    EXPECT_TRUE(IsPicture(pictures::Front(1024, 2097150, 1), kHeld));
    EXPECT_FALSE(IsPicture(pictures::Front(1024, 2097151, 1), kHeld));
}

TEST(LogoFormat, MissingPixelsAreBlack) {
    for (const unsigned bits : {8u, 24u}) {
        for (const int width : {12, 13}) {
            const Bytes whole = pictures::File(width, 5, bits, pictures::Random(7));
            const std::size_t front = bits == 8 ? 1078 : 54;
            for (std::size_t size = front - 10; size <= whole.size(); ++size) {
                Bytes cut = whole;
                cut.resize(size);
                cut.shrink_to_fit();
                Bytes filled = cut;
                filled.resize(whole.size(), 0);
                ASSERT_EQ(Grey(cut, bits), reference::GreyFile(filled, 0, 0)) << bits << ", " << size;
                ASSERT_EQ(Mono(cut, bits, Halftone::kErrorDiffuse), reference::MonoFile(filled, 3, 0, 0))
                    << bits << ", " << size;
            }
        }
    }
    // As large as a logo can be, and nothing there.
    EXPECT_EQ(GreyRows(pictures::Front(1024, 768, 24), 24), Bytes(1024 * 768, 0));
    // Larger, with little missing.
    Bytes large = pictures::File(1024, 1000, 8, pictures::Flat(7, 7, 7));
    large.resize(large.size() - 1024 * 768);
    EXPECT_EQ(GreyRows(large, 8), Bytes(1024 * 232, 7) + Bytes(1024 * 768, 0));
    large.pop_back();
    EXPECT_EQ(GreyResult(large, 8), LogoConversion::kOtherFormat);
}

TEST(LogoFormat, RowsFromTheTopStayInTheirOrder) {
    Bytes source = pictures::File(9, 4, 24, pictures::Random(3));
    const Bytes mono = Mono(source, 24, Halftone::kErrorDiffuse);
    const Bytes grey = Grey(source, 24);
    source[22] = 0xFC;  // -4
    source[23] = source[24] = source[25] = 0xFF;
    Bytes expected = mono;
    std::copy_n(source.begin() + 22, 4, expected.begin() + 22);
    EXPECT_EQ(Mono(source, 24, Halftone::kErrorDiffuse), expected);
    expected = grey;
    std::copy_n(source.begin() + 22, 4, expected.begin() + 22);
    EXPECT_EQ(Grey(source, 24), expected);
}

TEST(LogoFormat, WidthsHaveNoBound) {
    for (const int width : {4097, 70001, 200003}) {
        const Bytes source = pictures::File(width, 2, 24, pictures::Photo(5));
        for (const Halftone halftone : kHalftones) {
            EXPECT_TRUE(Mono(source, 24, halftone, {20, 5}) ==
                        reference::MonoFile(source, static_cast<int>(halftone), 20, 5))
                << width;
        }
    }
}

// More pixels than 16 bits can sum: the mean is 255, and without contrast all pixels are.
TEST(LogoFormat, WideWhiteRowsHaveAWhiteMean) {
    const Bytes source = pictures::File(4800, 1, 24, pictures::Flat(255, 255, 255));
    EXPECT_EQ(MonoRows(source, 24, Halftone::kDitherM4, {-100, 0}), Bytes(600, 0xFF));
}

TEST(LogoFormat, OutputIsUsedAgain) {
    Bytes output(2000, 0xEE);
    ASSERT_EQ(ConvertToMono(kColours, 24, Halftone::kNone, kAsIs, output), LogoConversion::kConverted);
    EXPECT_EQ(output, Mono(kColours, 24, Halftone::kNone));
    const auto* const memory = output.data();
    ASSERT_EQ(ConvertToGrey(kColours, 24, kAsIs, output), LogoConversion::kConverted);
    EXPECT_EQ(output, Grey(kColours, 24));
    EXPECT_EQ(output.data(), memory);
}

// A sum of 4200 * 2048 pixels of 255 is 2193408000 and wraps to -2101559296: the mean is -244, and black is
// above it.
TEST(ConvertToMono, SumsWrapAt32Bits) {
    Bytes white = pictures::File(4200, 2048, 8, pictures::Flat(255, 255, 255));
    white[1078] = 0;
    EXPECT_EQ(MonoRows(white, 8, Halftone::kNone)[0], 0xFF);
    Bytes lessWhite = pictures::File(4200, 2000, 8, pictures::Flat(255, 255, 255));
    lessWhite[1078] = 0;
    EXPECT_EQ(MonoRows(lessWhite, 8, Halftone::kNone)[0], 0x7F);
}

// Shares are rounded to zero and end at the borders; the tone of a picture stays.
TEST(ConvertToMono, ErrorDiffusionKeepsTheTone) {
    for (const unsigned seed : {1u, 2u, 3u}) {
        for (const unsigned bits : {8u, 24u}) {
            const Bytes source = pictures::File(1024, 768, bits, pictures::Photo(seed));
            double sum = 0;
            for (const std::uint8_t level : RowsOf(reference::GreyFile(source, 0, 0), 8)) {
                sum += level;
            }
            std::size_t white = 0;
            for (unsigned packed : MonoRows(source, bits, Halftone::kErrorDiffuse)) {
                for (; packed != 0; packed &= packed - 1) {
                    ++white;
                }
            }
            const double mean = sum / (1024 * 768);
            const double printed = static_cast<double>(white) * 255 / (1024 * 768);
            EXPECT_NEAR(printed, mean, mean / 100) << seed << ", " << bits << " bits";
        }
    }
}

TEST(ConvertToGrey, OneBitIsThePlainWay) {
    for (int width = 1; width <= 1024; width = width == 130 ? 1023 : width + 1) {
        const Bytes levels = pictures::File(width, 3, 8, pictures::Random(static_cast<unsigned>(width)));
        const Bytes source = reference::MonoFile(levels, 1, 0, 0);
        const LogoTone tone = {width % 201 - 100, width % 7 * 30 - 90};
        Bytes output;
        ASSERT_EQ(ConvertToGrey(source, 1, tone, output), LogoConversion::kConverted);
        ASSERT_TRUE(output == reference::GreyFile(source, tone.contrast, tone.brightness)) << width;
    }
}

struct Made {
    const char* name;
    pictures::ValueAt valueAt;
};

std::vector<Made> MadePictures() {
    return {{"random", pictures::Random(42)},
            {"flat", pictures::Flat(90, 140, 200)},
            {"gradient", pictures::Gradient()},
            {"photo", pictures::Photo(42)}};
}

constexpr int kPositions[] = {-100, -50, -1, 0, 1, 50, 100};

void ExpectThePlainWay(const Bytes& source, unsigned bits, int contrast, int brightness,
                       const std::string& what) {
    const LogoTone tone = {contrast, brightness};
    const std::string where = what + ", " + std::to_string(bits) + " bits, " + std::to_string(contrast) +
                              ", " + std::to_string(brightness);
    Bytes output;
    ASSERT_EQ(ConvertToGrey(source, bits, tone, output), LogoConversion::kConverted);
    ASSERT_TRUE(output == reference::GreyFile(source, contrast, brightness)) << where;
    for (const Halftone halftone : kHalftones) {
        ASSERT_EQ(ConvertToMono(source, bits, halftone, tone, output), LogoConversion::kConverted);
        ASSERT_TRUE(output == reference::MonoFile(source, static_cast<int>(halftone), contrast, brightness))
            << where << ", halftone " << static_cast<int>(halftone);
    }
}

TEST(LogoMatrix, IsThePlainWayBitForBit) {
    const bool isWhole = std::getenv("KVMR72_WHOLE_MATRIX") != nullptr;
    std::vector<int> widths;
    for (int width = 1; width <= 130; ++width) {
        widths.push_back(width);
    }
    widths.insert(widths.end(), {1023, 1024});
    std::vector<int> heights;
    for (int height = 1; height <= 20; ++height) {
        heights.push_back(height);
    }
    heights.push_back(768);
    unsigned turn = 0;
    for (const int width : widths) {
        for (const int height : heights) {
            if (!isWhole && height == 768 && width != 1 && width != 31 && width != 130) {
                continue;
            }
            for (const Made& made : MadePictures()) {
                // The parts are of sizes without a common factor, so that each meets each.
                const bool isDrawn = isWhole || turn % 5 == 0;
                ++turn;
                if (!isDrawn) {
                    continue;
                }
                const std::string what =
                    made.name + (" " + std::to_string(width)) + " x " + std::to_string(height);
                for (const unsigned bits : {8u, 24u}) {
                    const Bytes source = pictures::File(width, height, bits, made.valueAt);
                    for (std::size_t i = 0; i < 49; ++i) {
                        if (isWhole || i == turn * 3 % 49) {
                            ExpectThePlainWay(source, bits, kPositions[i / 7], kPositions[i % 7], what);
                            if (testing::Test::HasFatalFailure()) {
                                return;
                            }
                        }
                    }
                }
            }
        }
    }
}

}  // namespace
