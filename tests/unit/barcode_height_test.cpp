// Font heights of barcode fonts: known heights, then every height against fractions of whole numbers.
#include "printer/barcode_height.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int kHriRoom[4][2] = {{0, 0}, {24, 17}, {24, 17}, {48, 34}};

BarcodeFont1D Font(std::int32_t height, std::uint8_t position, std::uint8_t hriFont) {
    BarcodeFont1D font{};
    font.dwElementHeight = height;
    font.bHriPosition = position;
    font.bHriFont = hriFont;
    return font;
}

std::u16string Wide(const std::string& text) {
    return {text.begin(), text.end()};
}

// Tenths as "%5.1f" writes them.
std::u16string TenthsText(int tenths) {
    std::string text = std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
    text.insert(0, text.size() < 5 ? 5 - text.size() : 0, ' ');
    return Wide(text);
}

// Points are 72/180 = 2/5 of a dot, so their fraction f is `fifths` / 5.
int PlainHalfPoints(int dots) {
    const int whole = dots * 2 / 5;
    const int fifths = dots * 2 % 5;
    if (fifths * 10 < 4 * 5) {  // f < 4/10
        return whole * 2;
    }
    if (fifths * 10 < 7 * 5) {  // f < 7/10
        return whole * 2 + 1;
    }
    return whole * 2 + 2;
}

// Millimetres are 25.4/180 = 127/900 of a dot. Their nearest tenth is the exact one's, but for the three
// heights up to 303 whose exact value lies in the middle of two: there the binary number decides. 6.35 is
// kept as a little less, 19.05 as a little more; 31.75 is kept exactly and goes to the even tenth.
int PlainTenthsOfMillimetres(int dots) {
    switch (dots) {
        case 45:
            return 63;
        case 135:
            return 191;
        case 225:
            return 318;
        default:
            return (2 * dots * 127 + 90) / (2 * 90);
    }
}

void ExpectHeight(int dots, std::u16string_view millimetres, std::u16string_view points, int stored) {
    const FontHeightTexts texts = TextsOfFontHeight(dots);
    EXPECT_EQ(texts.millimetres, millimetres) << dots;
    EXPECT_EQ(texts.points, points) << dots;
    EXPECT_EQ(SnappedFontHeight(dots), stored) << dots;
}

// 124 x 25.4 / 180 = 17.49 mm, 124 x 0.4 = 49.6 points, 49.5 x 2.5 = 123.75 dots.
TEST(BarcodeHeightTest, KnownHeights) {
    EXPECT_EQ(FontHeight(Font(100, 2, 0)), 124);
    ExpectHeight(124, u" 17.5", u" 49.5", 123);
    ExpectHeight(1, u"  0.1", u"  0.5", 1);      // 0.4 points
    ExpectHeight(0, u"  0.0", u"  0.0", 2);      // none is stored as 2
    ExpectHeight(2, u"  0.3", u"  1.0", 2);      // 0.8
    ExpectHeight(3, u"  0.4", u"  1.0", 2);      // 1.2
    ExpectHeight(4, u"  0.6", u"  1.5", 3);      // 1.6
    ExpectHeight(5, u"  0.7", u"  2.0", 5);      // 2
    ExpectHeight(163, u" 23.0", u" 65.0", 162);  // 65.2, 162.5: a new record's
    ExpectHeight(255, u" 36.0", u"102.0", 255);
    ExpectHeight(303, u" 42.8", u"121.0", 302);  // 121.2, 302.5: the highest
}

// Every fifth height is 0.4 points above a whole one, and goes up to the half. In floating point 2.4 - 2 is
// less than 0.4 (6, 41, 46, ... 156 dots) and 4.4 - 4 more (11, 16, ... and again from 161 dots).
TEST(BarcodeHeightTest, FourTenthsOfAPointAreExact) {
    ExpectHeight(6, u"  0.8", u"  2.5", 6);      // 2.5 x 2.5 = 6.25
    ExpectHeight(11, u"  1.6", u"  4.5", 11);    // 11.25
    ExpectHeight(41, u"  5.8", u" 16.5", 41);    // 41.25
    ExpectHeight(156, u" 22.0", u" 62.5", 156);  // 156.25
    ExpectHeight(161, u" 22.7", u" 64.5", 161);  // 161.25
    for (int dots = 1; dots <= 303; dots += 5) {
        EXPECT_EQ(TextsOfFontHeight(dots).points, TenthsText(dots / 5 * 20 + 5)) << dots;
        EXPECT_EQ(SnappedFontHeight(dots), dots) << dots;
    }
}

TEST(BarcodeHeightTest, HeightPositionAndFontAddUp) {
    for (int height = 0; height <= 255; ++height) {
        for (std::uint8_t position = 0; position < 4; ++position) {
            for (std::uint8_t hriFont = 0; hriFont < 2; ++hriFont) {
                const int dots = FontHeight(Font(height, position, hriFont));
                EXPECT_EQ(dots, height + kHriRoom[position][hriFont])
                    << height << " " << int{position} << " " << int{hriFont};
                const int halfPoints = PlainHalfPoints(dots);
                // 180 / 72 of half points.
                const int stored = halfPoints * 180 / (72 * 2);
                ExpectHeight(dots, TenthsText(PlainTenthsOfMillimetres(dots)), TenthsText(halfPoints * 5),
                             stored == 0 ? 2 : stored);
            }
        }
    }
}

TEST(BarcodeHeightTest, EveryPositionAndFont) {
    for (int position = 0; position < 256; ++position) {
        for (int hriFont = 0; hriFont < 256; ++hriFont) {
            const int room = position > 3 ? 0 : kHriRoom[position][hriFont == 0 ? 0 : 1];
            const BarcodeFont1D font =
                Font(50, static_cast<std::uint8_t>(position), static_cast<std::uint8_t>(hriFont));
            EXPECT_EQ(FontHeight(font), 50 + room) << position << " " << hriFont;
        }
    }
}

// The record's heights have no sign: -1 is 4294967295.
TEST(BarcodeHeightTest, HeightsThatNoPageStores) {
    EXPECT_EQ(FontHeight(Font(INT32_MAX, 3, 0)), INT32_MIN + 47);
    EXPECT_EQ(FontHeight(Font(-1, 1, 1)), 16);
    ExpectHeight(1000, u"141.1", u"400.0", 1000);
    // 303033803.52 mm; 858993458.8 points, and 858993459 x 2.5 = 2147483647.5 dots.
    ExpectHeight(INT32_MAX, u"303033803.5", u"858993459.0", INT32_MAX);
    // 606067607.18 mm; 1717986918 points exactly.
    ExpectHeight(-1, u"606067607.2", u"1717986918.0", -1);
}

// The height that is kept is not the one that is shown: 124 dots show as 49.5 points and stay as 123, which
// show as 49.2 snapped to 49.
// The binary number that the height is decides, as in printf.
TEST(BarcodeHeightTest, MillimetresRoundAsPrintedNumbersDo) {
    for (std::uint32_t dots = 0; dots < 100000; dots += dots < 2000 ? 1 : 45) {
        char text[32] = {};
        std::snprintf(text, sizeof text, "%5.1f", dots * 25.4 / 180);
        ASSERT_EQ(TextsOfFontHeight(static_cast<std::int32_t>(dots)).millimetres, Wide(text)) << dots;
    }
}

TEST(BarcodeHeightTest, AChangeStoresTheSnappedHeight) {
    BarcodeFont1D font = Font(100, 2, 0);
    const FontHeightTexts changed = UpdateFontHeight(font);
    EXPECT_EQ(changed.millimetres, u" 17.5");
    EXPECT_EQ(changed.points, u" 49.5");
    EXPECT_EQ(font.dwFontHeight, 123);
    EXPECT_EQ(font.dwElementHeight, 100);
    const FontHeightTexts shownLater = TextsOfFontHeight(font.dwFontHeight);
    EXPECT_EQ(shownLater.millimetres, u" 17.4");  // 17.357
    EXPECT_EQ(shownLater.points, u" 49.0");
}

TEST(BarcodeHeightTest, EveryChangeOfHeightPositionAndFont) {
    for (int height = 1; height <= 255; ++height) {
        for (std::uint8_t position = 0; position < 4; ++position) {
            for (std::uint8_t hriFont = 0; hriFont < 2; ++hriFont) {
                const int dots = height + kHriRoom[position][hriFont];
                BarcodeFont1D expected = Font(height, position, hriFont);
                expected.dwFontHeight = PlainHalfPoints(dots) * 180 / (72 * 2);
                BarcodeFont1D font = Font(height, position, hriFont);
                const FontHeightTexts texts = UpdateFontHeight(font);
                EXPECT_EQ(texts.millimetres, TenthsText(PlainTenthsOfMillimetres(dots))) << dots;
                EXPECT_EQ(texts.points, TenthsText(PlainHalfPoints(dots) * 5)) << dots;
                EXPECT_EQ(std::memcmp(&font, &expected, sizeof font), 0) << dots;
            }
        }
    }
}

TEST(BarcodeHeightTest, NothingElseOfTheFontCounts) {
    BarcodeFont1D font = Font(10, 3, 1);
    font.bType = 9;
    font.bElementWidth = 6;
    font.dwFontWidth = 1000;
    font.dwFontHeight = 1000;
    font.dwGs1RowHeight = 1000;
    EXPECT_EQ(FontHeight(font), 44);
}

}  // namespace
