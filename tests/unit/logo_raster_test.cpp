// Rasters for the printer: bytes by hand, then all sizes against the plain way.
#include "printer/logo_raster.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "logo_pictures.h"
#include "logo_reference.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes kBlackAndWhite = {0, 0, 0, 0, 255, 255, 255, 0};
const Bytes kWhiteAndBlack = {255, 255, 255, 0, 0, 0, 0, 0};

Bytes MonoFile(int width, int height, const Bytes& palette, const Bytes& rows) {
    Bytes file = pictures::Front(width, height, 1);
    std::copy(palette.begin(), palette.end(), file.begin() + 54);
    file.insert(file.end(), rows.begin(), rows.end());
    return file;
}

Bytes GreyFile(int width, int height, const Bytes& rows) {
    Bytes file = pictures::Front(width, height, 8);
    file.insert(file.end(), rows.begin(), rows.end());
    return file;
}

Bytes MonoRaster(const Bytes& file, bool takesWhiteAndBlack = false) {
    Bytes raster(4096, 0xEE);
    EXPECT_TRUE(MonoRasterOf(file, takesWhiteAndBlack, raster));
    return raster;
}

Bytes GreyRaster(const Bytes& file) {
    Bytes raster(4096, 0xEE);
    EXPECT_TRUE(GreyRasterOf(file, raster));
    return raster;
}

bool IsRefusedAsMono(const Bytes& file, bool takesWhiteAndBlack) {
    Bytes raster(3, 0xEE);
    const bool isMade = MonoRasterOf(file, takesWhiteAndBlack, raster);
    EXPECT_EQ(raster == Bytes(3, 0xEE), !isMade);
    return !isMade;
}

bool IsRefusedAsGrey(const Bytes& file) {
    Bytes raster(3, 0xEE);
    const bool isMade = GreyRasterOf(file, raster);
    EXPECT_EQ(raster == Bytes(3, 0xEE), !isMade);
    return !isMade;
}

Bytes WithZeros(Bytes front, std::size_t size) {
    front.resize(size, 0);
    return front;
}

// Ten columns of eight dots, the last stored row on top:
//
//      X . . . . . . . . X     7F BF
//      . X . . . . . . . .     BF FF
//      . . X . . . . . . .
//      . . . X . . . . . .
//      . . . . X . . . . .
//      . . . . . X . . . .
//      . . . . . . X . . .
//      X . . . . . . X X .     7E 7F
//
// Bits and bytes beyond the width have any value.
const Bytes kTenByEight = {0x7E, 0x7F, 1, 2, 0xFD, 0xC0, 1, 2, 0xFB, 0xC0, 1, 2, 0xF7, 0xFF, 1, 2,
                           0xEF, 0xC0, 1, 2, 0xDF, 0xC0, 1, 2, 0xBF, 0xFF, 1, 2, 0x7F, 0xBF, 1, 2};

TEST(MonoRaster, HasTheColumnsFromTheLeft) {
    EXPECT_EQ(MonoRaster(MonoFile(10, 8, kBlackAndWhite, kTenByEight)),
              WithZeros({4, 0, 1, 0, 0x81, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01, 0x01, 0x80}, 4 + 32));
}

TEST(MonoRaster, APaletteTheOtherWayRoundIsNotInverted) {
    Bytes rows = kTenByEight;
    for (std::uint8_t& byte : rows) {
        byte = static_cast<std::uint8_t>(~byte);
    }
    EXPECT_EQ(MonoRaster(MonoFile(10, 8, kWhiteAndBlack, rows), true),
              MonoRaster(MonoFile(10, 8, kBlackAndWhite, kTenByEight)));
}

TEST(MonoRaster, RowsAboveThePictureAreEmpty) {
    // Three rows: two bytes a column would be a ninth row.
    EXPECT_EQ(MonoRaster(MonoFile(1, 3, kBlackAndWhite, {0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0})),
              WithZeros({4, 0, 1, 0, 0x05}, 4 + 32));
    // Nine rows: the stored ones from the bottom up are set, clear, ... clear.
    Bytes rows;
    for (int row = 0; row < 9; ++row) {
        pictures::Put(rows, 4, row == 8 || row == 0 ? 0x00 : 0x80);
    }
    EXPECT_EQ(MonoRaster(MonoFile(1, 9, kBlackAndWhite, rows)), WithZeros({4, 0, 2, 0, 0x01, 0x01}, 4 + 64));
}

TEST(MonoRaster, TheLastByteKeepsItsColumnsOnly) {
    for (int width = 1; width <= 40; ++width) {
        const Bytes rows(static_cast<std::size_t>((width + 31) / 32 * 4), 0);
        const Bytes raster = MonoRaster(MonoFile(width, 1, kBlackAndWhite, rows));
        EXPECT_EQ(std::count(raster.begin() + 4, raster.end(), 1), width);
        EXPECT_TRUE(
            std::all_of(raster.begin() + 4, raster.begin() + 4 + width, [](int byte) { return byte == 1; }));
    }
}

TEST(MonoRaster, OtherPalettesAreRefused) {
    const Bytes rows(4, 0);
    EXPECT_TRUE(IsRefusedAsMono(MonoFile(8, 1, kWhiteAndBlack, rows), false));
    EXPECT_FALSE(IsRefusedAsMono(MonoFile(8, 1, kWhiteAndBlack, rows), true));
    EXPECT_FALSE(IsRefusedAsMono(MonoFile(8, 1, kBlackAndWhite, rows), true));
    for (std::size_t at = 0; at < 8; ++at) {
        for (const Bytes& palette : {kBlackAndWhite, kWhiteAndBlack}) {
            Bytes other = palette;
            other[at] = static_cast<std::uint8_t>(other[at] == 0 ? 1 : 254);
            // The fourth byte of a colour is none.
            EXPECT_EQ(IsRefusedAsMono(MonoFile(8, 1, other, rows), true), at % 4 != 3) << at;
        }
    }
    EXPECT_TRUE(IsRefusedAsMono(MonoFile(8, 1, {0, 0, 0, 0, 0, 0, 0, 0}, rows), true));
    EXPECT_TRUE(IsRefusedAsMono(MonoFile(8, 1, {255, 255, 255, 0, 255, 255, 255, 0}, rows), true));
}

TEST(Rasters, OtherFilesAreRefused) {
    const Bytes mono = MonoFile(8, 1, kBlackAndWhite, Bytes(4, 0));
    const Bytes grey = GreyFile(8, 1, Bytes(8, 0));
    EXPECT_TRUE(IsRefusedAsMono(grey, true));
    EXPECT_TRUE(IsRefusedAsGrey(mono));
    EXPECT_TRUE(IsRefusedAsGrey(pictures::File(8, 1, 24, pictures::Flat(0, 0, 0))));
    Bytes noBitmap = mono;
    noBitmap[1] = 'X';
    EXPECT_TRUE(IsRefusedAsMono(noBitmap, true));
    EXPECT_TRUE(IsRefusedAsMono({}, true));
    EXPECT_TRUE(IsRefusedAsGrey({}));
}

TEST(Rasters, SizesBeyond16BitsAreRefused) {
    // 65532 and 65536 bytes a row.
    EXPECT_FALSE(IsRefusedAsMono(MonoFile(65532 * 8, 1, kBlackAndWhite, {}), false));
    EXPECT_TRUE(IsRefusedAsMono(MonoFile(65532 * 8 + 1, 1, kBlackAndWhite, {}), false));
    // 65535 and 65536 bytes a column.
    EXPECT_FALSE(IsRefusedAsMono(MonoFile(1, 65535 * 8, kBlackAndWhite, {}), false));
    EXPECT_TRUE(IsRefusedAsMono(MonoFile(1, 65535 * 8 + 1, kBlackAndWhite, {}), false));
    EXPECT_FALSE(IsRefusedAsGrey(GreyFile(65535 * 8, 1, {})));
    EXPECT_TRUE(IsRefusedAsGrey(GreyFile(65535 * 8 + 1, 1, {})));
    EXPECT_FALSE(IsRefusedAsGrey(GreyFile(1, 65535 * 2, {})));
    EXPECT_TRUE(IsRefusedAsGrey(GreyFile(1, 65535 * 2 + 1, {})));
}

TEST(MonoRaster, SizesAreTwoBytesEach) {
    const Bytes raster =
        MonoRaster(MonoFile(256 * 8 + 1, 257 * 8, kBlackAndWhite, Bytes(260 * 257 * 8, 0xFF)));
    EXPECT_EQ(raster, WithZeros({0x04, 0x01, 0x01, 0x01}, 4 + 260 * 257 * 8));
}

// Levels from the left, in a file's last row and so on top: 0F 1F 2F 4F 8F FF 00 F0, then A5.
TEST(GreyRaster, HasFourPlanesOfEachRowFromTheTop) {
    const Bytes rows = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3,
                        0x0F, 0x1F, 0x2F, 0x4F, 0x8F, 0xFF, 0x00, 0xF0, 0xA5, 1, 2, 3};
    EXPECT_EQ(GreyRaster(GreyFile(9, 2, rows)), (Bytes{1,    0,    2,    0,    1, 0,  //
                                                       0xF2, 0,    0xEA, 0x80,        //
                                                       0xDA, 0,    0xBA, 0x80,        //
                                                       0,    0x80, 0,    0,    0, 0, 0, 0}));
}

TEST(GreyRaster, AnOddHeightEndsWithAnEmptyRow) {
    EXPECT_EQ(GreyRaster(GreyFile(4, 1, {0, 0, 0, 0xFF})),
              (Bytes{1, 0, 1, 0, 1, 0, 0xE0, 0xE0, 0xE0, 0xE0, 0, 0, 0, 0}));
}

TEST(Rasters, RowsFromTheTopPrintTheSame) {
    Bytes up = MonoFile(10, 8, kBlackAndWhite, kTenByEight);
    Bytes down = pictures::Front(10, -8, 1);
    std::copy(kBlackAndWhite.begin(), kBlackAndWhite.end(), down.begin() + 54);
    for (int row = 7; row >= 0; --row) {
        down.insert(down.end(), kTenByEight.begin() + 4 * row, kTenByEight.begin() + 4 * row + 4);
    }
    EXPECT_EQ(MonoRaster(down), MonoRaster(up));
    Bytes grey = pictures::Front(4, -2, 8);
    grey.insert(grey.end(), {0, 0, 0, 0xFF, 0xFF, 0, 0, 0});
    EXPECT_EQ(GreyRaster(grey), GreyRaster(GreyFile(4, 2, {0xFF, 0, 0, 0, 0, 0, 0, 0xFF})));
}

TEST(Rasters, MissingPixelsAreZero) {
    const Bytes file = MonoFile(10, 8, kBlackAndWhite, kTenByEight);
    const Bytes cut(file.begin(), file.end() - 4);
    EXPECT_EQ(MonoRaster(cut),
              WithZeros({4, 0, 1, 0, 0x81, 0xC0, 0xA0, 0x90, 0x88, 0x84, 0x82, 0x81, 0x81, 0x80}, 4 + 32));
    EXPECT_EQ(GreyRaster(GreyFile(4, 2, {0xFF, 0xFF, 0xFF, 0xFF})),
              (Bytes{1, 0, 1, 0, 1, 0, 0xF0, 0xF0, 0xF0, 0xF0, 0, 0, 0, 0}));
}

// The same rows, stored from the top.
Bytes TopDown(const Bytes& file, int height) {
    constexpr std::size_t kPixelsAt = 62;
    const std::size_t rowBytes = (file.size() - kPixelsAt) / static_cast<std::size_t>(height);
    Bytes result(file.begin(), file.begin() + kPixelsAt);
    const auto negative = static_cast<std::uint32_t>(-height);
    for (std::size_t i = 0; i < 4; ++i) {
        result[22 + i] = static_cast<std::uint8_t>(negative >> 8 * i & 0xFF);
    }
    for (std::size_t end = file.size(); end > kPixelsAt; end -= rowBytes) {
        result.insert(result.end(), file.begin() + static_cast<std::ptrdiff_t>(end - rowBytes),
                      file.begin() + static_cast<std::ptrdiff_t>(end));
    }
    return result;
}

// The same picture with the colours exchanged, in palette and pixels.
Bytes Exchanged(Bytes file) {
    std::copy(kWhiteAndBlack.begin(), kWhiteAndBlack.end(), file.begin() + 54);
    for (std::size_t i = 62; i < file.size(); ++i) {
        file[i] = static_cast<std::uint8_t>(~file[i]);
    }
    return file;
}

TEST(Rasters, AreThePlainWayBitForBit) {
    std::vector<int> widths = {1023, 1024};
    for (int width = 1; width <= 130; ++width) {
        widths.push_back(width);
    }
    for (const int width : widths) {
        for (const int height : {1, 2, 7, 8, 9, 15, 16, 17, 20, 65}) {
            const Bytes source =
                pictures::File(width, height, 8, pictures::Random(static_cast<unsigned>(width)));
            const Bytes mono = reference::MonoFile(source, 1, 0, 0);
            const Bytes raster = reference::MonoRaster(mono);
            ASSERT_TRUE(MonoRaster(mono) == raster) << width << " x " << height;
            ASSERT_TRUE(MonoRaster(TopDown(mono, height)) == raster) << width << " x " << height;
            ASSERT_TRUE(MonoRaster(Exchanged(mono), true) == raster) << width << " x " << height;
            ASSERT_TRUE(GreyRaster(source) == reference::GreyRaster(source)) << width << " x " << height;
        }
    }
}

}  // namespace
