// Grey rows to bits: thresholds at every level, the matrices as they print, error diffusion worked out by
// hand.
#include "printer/logo_halftone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Row = std::array<int, 16>;

Bytes Padded(Bytes grey) {
    // Beyond the width lies what would be white.
    grey.resize(PaddedWidth(grey.size()), 255);
    return grey;
}

template <typename Pack>
Bytes Bits(Pack pack, const Thresholds& thresholds, const Bytes& grey) {
    Bytes bits(PaddedWidth(grey.size()) / 8, 0xEE);
    pack(thresholds, Padded(grey).data(), grey.size(), bits.data());
    return bits;
}

Bytes Diffused(ErrorDiffusion& diffusion, const Bytes& grey) {
    Bytes bits(PaddedWidth(grey.size()) / 8, 0xEE);
    diffusion.Pack(Padded(grey).data(), bits.data());
    return bits;
}

Row RowOf(const Thresholds& thresholds) {
    Row row;
    std::copy(thresholds.begin(), thresholds.end(), row.begin());
    return row;
}

TEST(Pack, EachLevelMeetsEachThreshold) {
    for (unsigned threshold = 0; threshold < 256; ++threshold) {
        Thresholds thresholds;
        thresholds.fill(static_cast<std::uint8_t>(threshold));
        for (unsigned level = 0; level < 256; ++level) {
            const Bytes grey(1, static_cast<std::uint8_t>(level));
            ASSERT_EQ(Bits(PackAtLeast, thresholds, grey)[0], level >= threshold ? 0x80 : 0)
                << level << ", " << threshold;
            ASSERT_EQ(Bits(PackAbove, thresholds, grey)[0], level > threshold ? 0x80 : 0)
                << level << ", " << threshold;
        }
    }
}

TEST(Pack, TheLeftmostPixelIsTheHighestBit) {
    Thresholds thresholds;
    thresholds.fill(100);
    for (std::size_t x = 0; x < 64; ++x) {
        Bytes grey(64, 0);
        grey[x] = 200;
        Bytes expected(8, 0);
        expected[x / 8] = static_cast<std::uint8_t>(0x80 >> x % 8);
        EXPECT_EQ(Bits(PackAtLeast, thresholds, grey), expected) << x;
        EXPECT_EQ(Bits(PackAbove, thresholds, grey), expected) << x;
    }
}

TEST(Pack, ThresholdsRepeatAlongTheRow) {
    Thresholds thresholds;
    thresholds.fill(100);
    thresholds[3] = 200;
    thresholds[8] = 200;
    const Bytes grey(40, 150);
    EXPECT_EQ(Bits(PackAtLeast, thresholds, grey), (Bytes{0xEF, 0x7F, 0xEF, 0x7F, 0xEF, 0, 0, 0}));
    EXPECT_EQ(Bits(PackAbove, thresholds, grey), (Bytes{0xEF, 0x7F, 0xEF, 0x7F, 0xEF, 0, 0, 0}));
}

TEST(Pack, NothingBeyondTheWidthIsSet) {
    Thresholds thresholds;
    thresholds.fill(0);
    for (std::size_t width = 1; width <= 70; ++width) {
        Bytes expected(PaddedWidth(width) / 8, 0);
        for (std::size_t x = 0; x < width; ++x) {
            expected[x / 8] = static_cast<std::uint8_t>(expected[x / 8] | 0x80 >> x % 8);
        }
        const Bytes grey(width, 255);
        EXPECT_EQ(Bits(PackAtLeast, thresholds, grey), expected) << width;
        EXPECT_EQ(Bits(PackAbove, thresholds, grey), expected) << width;
        ErrorDiffusion diffusion(width);
        EXPECT_EQ(Diffused(diffusion, grey), expected) << width;
    }
}

TEST(DitherM3, RowsHaveTheMatrixInStepsOfFour) {
    EXPECT_EQ(RowOf(DitherM3AtLeast(0)),
              (Row{0, 128, 32, 160, 8, 136, 40, 168, 0, 128, 32, 160, 8, 136, 40, 168}));
    EXPECT_EQ(RowOf(DitherM3AtLeast(7)),
              (Row{252, 124, 220, 92, 244, 116, 212, 84, 252, 124, 220, 92, 244, 116, 212, 84}));
    EXPECT_EQ(DitherM3AtLeast(8), DitherM3AtLeast(0));
    EXPECT_EQ(RowOf(DitherM3Above(0)),
              (Row{3, 131, 35, 163, 11, 139, 43, 171, 3, 131, 35, 163, 11, 139, 43, 171}));
    EXPECT_EQ(DitherM3Above(15), DitherM3Above(7));
}

TEST(DitherM4, HasFourQuarters) {
    EXPECT_EQ(RowOf(DitherM4(0)), (Row{0, 128, 32, 160, 8, 136, 40, 168, 3, 131, 35, 163, 11, 139, 43, 171}));
    EXPECT_EQ(RowOf(DitherM4(9)),
              (Row{194, 66, 226, 98, 202, 74, 234, 106, 193, 65, 225, 97, 201, 73, 233, 105}));
    EXPECT_EQ(DitherM4(16), DitherM4(0));
    std::array<int, 256> count{};
    for (std::size_t row = 0; row < 16; ++row) {
        for (const std::uint8_t threshold : DitherM4(row)) {
            ++count[threshold];
        }
    }
    EXPECT_TRUE(std::all_of(count.begin(), count.end(), [](int times) { return times == 1; }));
}

TEST(ErrorDiffusion, APixelIsWhiteFrom129On) {
    ErrorDiffusion black(1);
    EXPECT_EQ(Diffused(black, {128}), (Bytes{0, 0, 0, 0}));
    ErrorDiffusion white(1);
    EXPECT_EQ(Diffused(white, {129}), (Bytes{0x80, 0, 0, 0}));
}

// Three rows of grey 100. What each pixel passes on: ahead and down 3/8, diagonally 1/4.
//
//      row 0, from the right    100 black: 37, 25
//                               137 white, -118: -44, -29
//                               56 black: 21, 14
//      given to row 1           21 - 29 = -8, -44 + 25 = -19, 37
//      row 1, from the left     92 black: 34, 23
//                               100 - 19 + 34 = 115 black: 43, 28
//                               100 + 37 + 43 = 180 white, -75: -28
//      given to row 2           34, 43 + 23 = 66, -28 + 28 = 0
//      row 2, from the right    100 black: 37
//                               100 + 66 + 37 = 203 white, -52: -19
//                               100 + 34 - 19 = 115 black
TEST(ErrorDiffusion, WalksFromTheRightAndFromTheLeftInTurn) {
    ErrorDiffusion diffusion(3);
    const Bytes grey(3, 100);
    EXPECT_EQ(Diffused(diffusion, grey), (Bytes{0x40, 0, 0, 0}));
    EXPECT_EQ(Diffused(diffusion, grey), (Bytes{0x20, 0, 0, 0}));
    EXPECT_EQ(Diffused(diffusion, grey), (Bytes{0x40, 0, 0, 0}));
}

// Each sum is 128 or 129: a share too many or too few would show. Beyond the width the grey row is white, and
// nothing comes of it.
TEST(ErrorDiffusion, SharesBeyondTheEndsAreLost) {
    ErrorDiffusion diffusion(2);
    // From the right: 0; 128 black, 48 down.
    EXPECT_EQ(Diffused(diffusion, {128, 0}), (Bytes{0, 0, 0, 0}));
    // From the left: 80 + 48 black, 48 ahead and down, 32 diagonally; 80 + 48 black, 48 down.
    EXPECT_EQ(Diffused(diffusion, {80, 80}), (Bytes{0, 0, 0, 0}));
    // From the right: 48 + 80 black, 48 ahead and down, 32 diagonally; 32 + 48 + 48 black, 48 down.
    EXPECT_EQ(Diffused(diffusion, {32, 48}), (Bytes{0, 0, 0, 0}));
    // From the left: 49 + 80 white, -47 ahead; 128 + 48 - 47 white.
    EXPECT_EQ(Diffused(diffusion, {49, 128}), (Bytes{0xC0, 0, 0, 0}));
}

}  // namespace
