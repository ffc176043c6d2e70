// Placement, brightness, font and text picture of a watermark: figures worked out by hand, then a plain
// reference over many frames, images and sizes.
#include "docpages/water_mark_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace {

using Placements = std::vector<Placement>;

TEST(BrightenTest, EveryByteByEveryBrightness) {
    for (int brightness = 0; brightness < 256; ++brightness) {
        std::vector<std::uint8_t> pixels(256);
        for (std::size_t i = 0; i < 256; ++i) {
            pixels[i] = static_cast<std::uint8_t>(i);
        }
        Brighten(pixels, static_cast<std::uint8_t>(brightness));
        for (int i = 0; i < 256; ++i) {
            const int expected = i + brightness > 255 ? 255 : i + brightness;
            EXPECT_EQ(pixels[static_cast<std::size_t>(i)], expected) << i << " by " << brightness;
        }
    }
}

TEST(BrightenTest, AnyLengthAndNothingBehind) {
    for (std::size_t length = 0; length < 70; ++length) {
        std::vector<std::uint8_t> pixels(length + 1, 100);
        Brighten(std::span(pixels).first(length), 50);
        std::vector<std::uint8_t> expected(length, 150);
        expected.push_back(100);
        EXPECT_EQ(pixels, expected);
    }
}

// 400 x 300 at 50 percent of 200 x 150: 100 wide, 200 x 50 x 300 / 40000 = 75 high.
TEST(PlaceWaterMarkTest, NinePositions) {
    const int lefts[] = {0, 50, 100};
    const int tops[] = {0, 37, 75};
    for (std::uint8_t position = 0; position < 9; ++position) {
        const Placements expected = {{lefts[position % 3], tops[position / 3], 100, 75, 300}};
        EXPECT_EQ(PlaceWaterMark({200, 150}, {400, 300}, position, 50), expected) << int{position};
    }
}

// 203 x 33 / 100 = 66.99, 203 x 33 x 5 / 700 = 47.85; (203 - 66) / 2 = 68.5, (151 - 47) / 2 = 52.
TEST(PlaceWaterMarkTest, NinePositionsThatDoNotDivide) {
    const int lefts[] = {0, 68, 137};
    const int tops[] = {0, 52, 104};
    for (std::uint8_t position = 0; position < 9; ++position) {
        const Placements expected = {{lefts[position % 3], tops[position / 3], 66, 47, 5}};
        EXPECT_EQ(PlaceWaterMark({203, 151}, {7, 5}, position, 33), expected) << int{position};
    }
}

TEST(PlaceWaterMarkTest, FullSizeFillsTheWidth) {
    EXPECT_EQ(PlaceWaterMark({200, 150}, {400, 200}, 4, 100), (Placements{{0, 25, 200, 100, 200}}));
    EXPECT_EQ(PlaceWaterMark({200, 150}, {400, 300}, 8, 100), (Placements{{0, 0, 200, 150, 300}}));
    EXPECT_EQ(PlaceWaterMark({200, 150}, {400, 300}, 9, 100), (Placements{{0, 0, 200, 150, 300}}));
}

// 100 x 50 x 1000 / 1000 = 5000, but the frame has 80.
TEST(PlaceWaterMarkTest, HighImagesEndWithTheFrame) {
    EXPECT_EQ(PlaceWaterMark({100, 80}, {10, 1000}, 0, 50), (Placements{{0, 0, 50, 80, 1000}}));
    EXPECT_EQ(PlaceWaterMark({100, 80}, {10, 1000}, 7, 50), (Placements{{25, 0, 50, 80, 1000}}));
    EXPECT_EQ(PlaceWaterMark({100, 80}, {10, 1000}, 9, 50),
              (Placements{{0, 0, 50, 80, 1000}, {50, 0, 50, 80, 1000}}));
}

// 100 / 33 = 3 columns at 0, 66.99, 133.98; 151 / 47 = 3 rows; 10 left, 10 x 5 / 47 = 1.06 rows of the image.
TEST(PlaceWaterMarkTest, TilesThatDoNotDivide) {
    EXPECT_EQ(PlaceWaterMark({203, 151}, {7, 5}, 9, 33), (Placements{
                                                             {0, 0, 66, 47, 5},
                                                             {66, 0, 66, 47, 5},
                                                             {133, 0, 66, 47, 5},
                                                             {0, 47, 66, 47, 5},
                                                             {66, 47, 66, 47, 5},
                                                             {133, 47, 66, 47, 5},
                                                             {0, 94, 66, 47, 5},
                                                             {66, 94, 66, 47, 5},
                                                             {133, 94, 66, 47, 5},
                                                             {0, 141, 66, 10, 1},
                                                             {66, 141, 66, 10, 1},
                                                             {133, 141, 66, 10, 1},
                                                         }));
}

// Five columns at 0, 20.2, 40.4, 60.6, 80.8; two rows of 20 and half a one.
TEST(PlaceWaterMarkTest, TheSmallestTiles) {
    Placements expected;
    for (const auto& [top, height, imageRows] : {std::array{0, 20, 10}, {20, 20, 10}, {40, 10, 5}}) {
        for (const int left : {0, 20, 40, 60, 80}) {
            expected.push_back({left, top, 20, height, imageRows});
        }
    }
    // A size below 20 is none for tiles.
    for (const std::uint8_t size : std::initializer_list<std::uint8_t>{0, 1, 10, 19, 20}) {
        EXPECT_EQ(PlaceWaterMark({101, 50}, {10, 10}, 9, size), expected) << int{size};
    }
}

TEST(PlaceWaterMarkTest, TilesThatDivideHaveNoRest) {
    // 100 x 25 x 1 / 100 = 25: four columns, two rows of a frame of 50.
    const Placements placements = PlaceWaterMark({100, 50}, {1, 1}, 9, 25);
    ASSERT_EQ(placements.size(), 8u);
    EXPECT_EQ(placements.back(), (Placement{75, 25, 25, 25, 1}));
}

// One row of the image for 100 of the frame: the rest of 50 has half a row, and shows it.
TEST(PlaceWaterMarkTest, TheRestShowsAtLeastOneRow) {
    EXPECT_EQ(PlaceWaterMark({200, 150}, {1, 1}, 9, 50),
              (Placements{
                  {0, 0, 100, 100, 1}, {100, 0, 100, 100, 1}, {0, 100, 100, 50, 1}, {100, 100, 100, 50, 1}}));
}

TEST(PlaceWaterMarkTest, NothingToDraw) {
    const auto expectNothing = [](PixelSize frame, PixelSize image, std::uint8_t size) {
        for (const std::uint8_t position : std::initializer_list<std::uint8_t>{0, 4, 8}) {
            EXPECT_TRUE(PlaceWaterMark(frame, image, position, size).empty());
        }
    };
    expectNothing({200, 150}, {400, 300}, 0);
    expectNothing({50, 50}, {10, 10}, 1);       // half a pixel wide
    expectNothing({200, 150}, {1000, 1}, 100);  // a fifth of a pixel high
    expectNothing({0, 150}, {400, 300}, 50);
    expectNothing({200, 0}, {400, 300}, 50);
    expectNothing({-200, 150}, {400, 300}, 50);
    expectNothing({200, -1}, {400, 300}, 50);
    expectNothing({200, 150}, {0, 300}, 50);
    expectNothing({200, 150}, {400, 0}, 50);
    expectNothing({200, 150}, {-400, 300}, 50);
    expectNothing({200, 150}, {400, -300}, 50);
    EXPECT_TRUE(PlaceWaterMark({200, 150}, {1000, 1}, 9, 100).empty());
    EXPECT_TRUE(PlaceWaterMark({4, 4}, {1, 1}, 9, 20).empty());
}

TEST(PlaceWaterMarkTest, PositionsThatAreNotInTheListDrawNothing) {
    for (int position = 10; position < 256; ++position) {
        EXPECT_TRUE(PlaceWaterMark({200, 150}, {400, 300}, static_cast<std::uint8_t>(position), 50).empty());
    }
}

TEST(PlaceWaterMarkTest, SizesBeyondAHundredCountAsAHundred) {
    for (const std::uint8_t size : std::initializer_list<std::uint8_t>{100, 101, 200, 255}) {
        EXPECT_EQ(PlaceWaterMark({200, 150}, {400, 200}, 0, size), (Placements{{0, 0, 200, 100, 200}}));
        EXPECT_EQ(PlaceWaterMark({200, 150}, {400, 200}, 9, size),
                  (Placements{{0, 0, 200, 100, 200}, {0, 100, 200, 50, 100}}));
    }
}

TEST(PlaceWaterMarkTest, HostileSizes) {
    EXPECT_EQ(PlaceWaterMark({32767, 32767}, {1, 10485760}, 4, 100),
              (Placements{{0, 0, 32767, 32767, 10485760}}));
    EXPECT_EQ(PlaceWaterMark({32767, 32767}, {10485760, 1}, 4, 100), Placements{});
    const PixelSize hostile[] = {{INT32_MAX, INT32_MAX}, {INT32_MAX, 1}, {1, INT32_MAX},
                                 {INT32_MIN, INT32_MIN}, {10485761, 1},  {1, 10485761}};
    for (const PixelSize size : hostile) {
        for (std::uint8_t position = 0; position < 10; ++position) {
            EXPECT_TRUE(PlaceWaterMark({200, 150}, size, position, 100).empty());
            EXPECT_TRUE(PlaceWaterMark(size, {4, 3}, position, 100).empty());
        }
    }
    EXPECT_TRUE(PlaceWaterMark({32768, 10}, {4, 3}, 0, 100).empty());
    EXPECT_TRUE(PlaceWaterMark({10, 32768}, {4, 3}, 0, 100).empty());
    // Rows of one pixel: as many as the frame is high, five columns each.
    const Placements tiles = PlaceWaterMark({300, 32767}, {60, 1}, 9, 20);
    ASSERT_EQ(tiles.size(), 5u * 32767);
    EXPECT_EQ(tiles.back(), (Placement{240, 32766, 60, 1, 1}));
}

// Counts instead of dividing.
std::int64_t Times(std::int64_t whole, std::int64_t part) {
    std::int64_t times = 0;
    while (part * (times + 1) <= whole) {
        ++times;
    }
    return times;
}

TEST(PlaceWaterMarkTest, ManyFramesImagesAndSizes) {
    const PixelSize frames[] = {{1, 1}, {3, 2}, {7, 50}, {50, 7}, {101, 53}};
    const PixelSize images[] = {{1, 1}, {10, 1}, {1, 10}, {7, 3}, {640, 480}, {3, 1000}};
    for (const PixelSize frame : frames) {
        for (const PixelSize image : images) {
            for (int size = 0; size <= 100; ++size) {
                for (int position = 0; position <= 9; ++position) {
                    const std::int64_t percent = position == 9 ? std::max(size, 20) : size;
                    const std::int64_t width = Times(frame.width * percent, 100);
                    const std::int64_t height = std::min<std::int64_t>(
                        Times(frame.width * percent * image.height, image.width * 100), frame.height);
                    Placements expected;
                    const auto add = [&](std::int64_t left, std::int64_t top, std::int64_t rowHeight,
                                         std::int64_t rows) {
                        expected.push_back({static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
                                            static_cast<std::int32_t>(width),
                                            static_cast<std::int32_t>(rowHeight),
                                            static_cast<std::int32_t>(rows)});
                    };
                    if (width > 0 && height > 0 && position < 9) {
                        const std::int64_t freeWidth = frame.width - width;
                        const std::int64_t freeHeight = frame.height - height;
                        const std::int64_t lefts[] = {0, Times(freeWidth, 2), freeWidth};
                        const std::int64_t tops[] = {0, Times(freeHeight, 2), freeHeight};
                        add(lefts[position % 3], tops[position / 3], height, image.height);
                    } else if (width > 0 && height > 0) {
                        for (std::int64_t top = 0; top < frame.height; top += height) {
                            const std::int64_t rowHeight = std::min<std::int64_t>(height, frame.height - top);
                            const std::int64_t rows =
                                rowHeight == height
                                    ? image.height
                                    : std::max<std::int64_t>(Times(rowHeight * image.height, height), 1);
                            for (std::int64_t column = 0; (column + 1) * percent <= 100; ++column) {
                                add(Times(frame.width * percent * column, 100), top, rowHeight, rows);
                            }
                        }
                    }
                    ASSERT_EQ(PlaceWaterMark(frame, image, static_cast<std::uint8_t>(position),
                                             static_cast<std::uint8_t>(size)),
                              expected)
                        << frame.width << " x " << frame.height << ", image " << image.width << " x "
                        << image.height << ", size " << size << ", position " << position;
                }
            }
        }
    }
}

TEST(IsTooBigTest, TenMegapixelsAreTheLimit) {
    EXPECT_FALSE(IsTooBig(10240, 1024));
    EXPECT_TRUE(IsTooBig(10240, 1025));
    EXPECT_FALSE(IsTooBig(1, 10485760));
    EXPECT_TRUE(IsTooBig(10485761, 1));
    EXPECT_TRUE(IsTooBig(65536, 65536));
    EXPECT_TRUE(IsTooBig(INT32_MAX, INT32_MAX));
    EXPECT_FALSE(IsTooBig(0, INT32_MAX));
    EXPECT_FALSE(IsTooBig(INT32_MIN, INT32_MIN));
}

TEST(WaterMarkRangesTest, TilesAreAtLeastTwenty) {
    EXPECT_EQ(SizeAtPosition(9, 10), 20);
    EXPECT_EQ(SizeAtPosition(9, 0), 20);
    EXPECT_EQ(SizeAtPosition(9, 19), 20);
    EXPECT_EQ(SizeAtPosition(9, 20), 20);
    EXPECT_EQ(SizeAtPosition(9, 21), 21);
    EXPECT_EQ(SizeAtPosition(9, 100), 100);
    for (const std::uint8_t position : std::initializer_list<std::uint8_t>{0, 4, 8, 10, 255}) {
        EXPECT_EQ(SizeAtPosition(position, 0), 0);
        EXPECT_EQ(SizeAtPosition(position, 19), 19);
    }
}

TEST(WaterMarkRangesTest, FontSizes) {
    EXPECT_EQ(ClampTypedFontSize(90), 72);
    EXPECT_EQ(ClampTypedFontSize(73), 72);
    EXPECT_EQ(ClampTypedFontSize(72), 72);
    EXPECT_EQ(ClampTypedFontSize(5), 5);
    EXPECT_EQ(ClampTypedFontSize(0), 0);
    EXPECT_EQ(ClampTypedFontSize(-1), 0);
    EXPECT_EQ(ClampTypedFontSize(INT32_MAX), 72);
    EXPECT_EQ(ClampTypedFontSize(INT32_MIN), 0);
    EXPECT_EQ(ClampFontSize(90), 72);
    EXPECT_EQ(ClampFontSize(72), 72);
    EXPECT_EQ(ClampFontSize(9), 9);
    EXPECT_EQ(ClampFontSize(8), 8);
    EXPECT_EQ(ClampFontSize(7), 8);
    EXPECT_EQ(ClampFontSize(5), 8);
    EXPECT_EQ(ClampFontSize(0), 8);
    EXPECT_EQ(ClampFontSize(INT32_MIN), 8);
    EXPECT_EQ(ClampFontSize(INT32_MAX), 72);
}

TEST(FontOfWaterMarkTest, Styles) {
    EXPECT_EQ(FontOfWaterMark(72, 0, 0, 96), (WaterMarkFont{-96, 0, 400, false}));
    EXPECT_EQ(FontOfWaterMark(72, 1, 0, 96), (WaterMarkFont{-96, 0, 400, true}));
    EXPECT_EQ(FontOfWaterMark(72, 2, 0, 96), (WaterMarkFont{-96, 0, 700, false}));
    EXPECT_EQ(FontOfWaterMark(72, 3, 0, 96), (WaterMarkFont{-96, 0, 700, true}));
    EXPECT_EQ(FontOfWaterMark(72, 4, 0, 96), (WaterMarkFont{-96, 0, 400, false}));
    EXPECT_EQ(FontOfWaterMark(72, 255, 0, 96), (WaterMarkFont{-96, 0, 400, false}));
}

TEST(FontOfWaterMarkTest, HeightsAreRounded) {
    const auto height = [](std::uint8_t size, std::int32_t dotsPerInch) {
        return FontOfWaterMark(size, 0, 0, dotsPerInch).height;
    };
    EXPECT_EQ(height(50, 96), -67);  // 66.67
    EXPECT_EQ(height(8, 96), -11);   // 10.67
    EXPECT_EQ(height(10, 96), -13);  // 13.33
    EXPECT_EQ(height(9, 100), -13);  // 12.5
    EXPECT_EQ(height(50, 72), -50);
    EXPECT_EQ(height(0, 96), 0);
    EXPECT_EQ(height(255, 96), -340);
    EXPECT_EQ(height(255, INT32_MAX), -INT32_MAX);
    EXPECT_EQ(height(50, 0), 0);
    EXPECT_EQ(height(50, INT32_MIN), 0);
}

TEST(FontOfWaterMarkTest, AnglesAreTenths) {
    const auto escapement = [](std::int32_t angle) { return FontOfWaterMark(50, 0, angle, 96).escapement; };
    EXPECT_EQ(escapement(45), 450);
    EXPECT_EQ(escapement(359), 3590);
    EXPECT_EQ(escapement(360), 3600);
    EXPECT_EQ(escapement(361), 3600);
    EXPECT_EQ(escapement(INT32_MAX), 3600);
    EXPECT_EQ(escapement(-1), 0);
    EXPECT_EQ(escapement(INT32_MIN), 0);
}

TEST(TextStartPointTest, QuarterTurns) {
    EXPECT_EQ(TextStartPoint(0, {100, 20}), (TextStart{100, 160}));
    EXPECT_EQ(TextStartPoint(90, {100, 20}), (TextStart{160, 200}));
    EXPECT_EQ(TextStartPoint(180, {100, 20}), (TextStart{200, 140}));
    EXPECT_EQ(TextStartPoint(270, {100, 20}), (TextStart{140, 100}));
    EXPECT_EQ(TextStartPoint(360, {100, 20}), (TextStart{100, 160}));
}

TEST(TextStartPointTest, OtherAngles) {
    // cos and sin 0.8660, 0.5: 150 - (43.30 - 5), 150 + (25 + 8.66).
    EXPECT_EQ(TextStartPoint(30, {100, 20}), (TextStart{112, 184}));
    // Both 0.7071: 150 - (35.36 - 7.07), 150 + (35.36 + 7.07).
    EXPECT_EQ(TextStartPoint(45, {100, 20}), (TextStart{122, 192}));
    // 0.9998, -0.0175: 150 - (49.99 + 0.17), 150 + (-0.87 + 10.00).
    EXPECT_EQ(TextStartPoint(359, {100, 20}), (TextStart{100, 159}));
}

TEST(TextStartPointTest, HalvesGoAwayFromZero) {
    EXPECT_EQ(TextStartPoint(0, {101, 21}), (TextStart{100, 161}));  // 99.5, 160.5
    EXPECT_EQ(TextStartPoint(0, {401, 1}), (TextStart{-51, 151}));   // -50.5, 150.5
    EXPECT_EQ(TextStartPoint(0, {0, 0}), (TextStart{150, 150}));
}

TEST(TextStartPointTest, HostileInput) {
    EXPECT_EQ(TextStartPoint(INT32_MIN, {100, 20}), (TextStart{100, 160}));
    EXPECT_EQ(TextStartPoint(-90, {100, 20}), (TextStart{100, 160}));
    EXPECT_EQ(TextStartPoint(INT32_MAX, {100, 20}), (TextStart{100, 160}));
    // Half of 2147483647 is 1073741823.5.
    EXPECT_EQ(TextStartPoint(0, {INT32_MAX, INT32_MAX}), (TextStart{-1073741674, 1073741974}));
    EXPECT_EQ(TextStartPoint(0, {INT32_MIN, INT32_MIN}), (TextStart{1073741974, -1073741674}));
    // 0.7071 x 2147483647 = 1518500249.4 (0.70710678118 x 2147483647).
    EXPECT_NEAR(TextStartPoint(45, {INT32_MAX, INT32_MAX}).y, 1518500399, 2);
}

TEST(TextImageFileTest, HeadersAndPixels) {
    std::vector<std::uint8_t> pixels(360000);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i % 4 == 3 ? 0xEE : i * 31 + i / 1200);
    }
    const std::vector<std::uint8_t> file =
        TextImageFile(std::span<const std::uint8_t, 360000>(pixels.data(), 360000));
    ASSERT_EQ(file.size(), 270054u);
    const std::vector<std::uint8_t> headers = {
        'B',  'M',  0xE6, 0x1E, 0x04, 0,           // 270054 bytes
        0,    0,    0,    0,    54,   0,    0, 0,  // pixels at 54
        40,   0,    0,    0,                       // information header
        0x2C, 0x01, 0,    0,    0x2C, 0x01, 0, 0,  // 300 x 300, from the bottom
        1,    0,    24,   0,    0,    0,    0, 0,  // one plane, 24 bits, not compressed
        0xB0, 0x1E, 0x04, 0,                       // 270000 bytes of pixels
        0,    0,    0,    0,    0,    0,    0, 0,  // resolution
        0,    0,    0,    0,    0,    0,    0, 0,  // colours
    };
    EXPECT_EQ(std::vector<std::uint8_t>(file.begin(), file.begin() + 54), headers);
    for (std::size_t pixel = 0; pixel < 90000; ++pixel) {
        for (std::size_t colour = 0; colour < 3; ++colour) {
            ASSERT_EQ(file[54 + pixel * 3 + colour], pixels[pixel * 4 + colour]) << pixel << ", " << colour;
        }
    }
}

}  // namespace
