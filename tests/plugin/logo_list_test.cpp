// The logos of a page on their way to the printer: what keeps them from being sent, and whole jobs byte by
// byte, with files that lie and go, and a spooler that fails. The plug-in's own sources are part of this
// program.
#include "devpages/logo_list.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "logo_pictures.h"
#include "logo_reference.h"
#include "logo_system.h"

namespace {

using logo_system::Calls;
using logo_system::FakeSpooler;
using logo_system::kNever;
using logo_system::memory;
using logo_system::RefusedBlock;
using logo_system::WatchedFiles;
using pictures::Bytes;

using Writes = std::vector<Bytes>;

constexpr LogoType kTypes[] = {LogoType::kOriginal, LogoType::kTransformation, LogoType::kGrey};

const Bytes kBlackAndWhite = {0, 0, 0, 0, 255, 255, 255, 0};
const Bytes kWhiteAndBlack = {255, 255, 255, 0, 0, 0, 0, 0};

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// A source of 1 bit a pixel, its rows from the bottom.
Bytes MonoSource(int width, int height, const Bytes& palette, const Bytes& rows) {
    Bytes file = pictures::Front(width, height, 1);
    std::copy(palette.begin(), palette.end(), file.begin() + 54);
    return file + rows;
}

Bytes WithZeros(Bytes front, std::size_t size) {
    front.resize(size, 0);
    return front;
}

// Two pixels, the left one black.
const Bytes kTwoOf1 = MonoSource(2, 1, kBlackAndWhite, {0x7F, 9, 9, 9});
const Bytes kTwoOf8 = pictures::Front(2, 1, 8) + Bytes{0, 255, 9, 9};
const Bytes kTwoOf24 = pictures::Front(2, 1, 24) + Bytes{0, 0, 0, 255, 255, 255, 9, 9};

// What is sent of them: the header of 4 bytes a row and 1 a column, and the left column's lowest dot...
const Bytes kTwoAsMono = WithZeros({4, 0, 1, 0, 0x01}, 4 + 32);
// ... or 1 byte a row and 1 row of planes for eight, and four planes with the left pixel dark.
const Bytes kTwoAsGrey = {1, 0, 1, 0, 1, 0, 0x80, 0x80, 0x80, 0x80, 0, 0, 0, 0};

const Bytes kOpen = {0x1B, 0x63, 0x3B, 0x01};
const Bytes kClose = {0x1B, 0x63, 0x3B, 0x00};

class LogoListTest : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::remove_all(folder_);
        ASSERT_TRUE(std::filesystem::create_directories(folder_));
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path Path(const std::wstring& name) const { return folder_ / name; }

    void Put(const std::wstring& name, const Bytes& bytes) const {
        std::ofstream file(Path(name), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        ASSERT_TRUE(file.flush());
    }

    Bytes Get(const std::wstring& name) const {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    // A row of the list.
    Logo LogoOf(const std::wstring& name, const LogoSettings& settings = {}) const {
        return {Path(name).wstring(), settings};
    }

    // The same with its file.
    Logo Made(const std::wstring& name, const Bytes& bytes, const LogoSettings& settings = {}) const {
        Put(name, bytes);
        return LogoOf(name, settings);
    }

    // The job of these logos, whole.
    static void ExpectSent(const Logos& logos, LogoType type, const Writes& rasters) {
        FakeSpooler spooler;
        SendLogos(FakeSpooler::Printer(), logos, type);
        Writes expected = {kOpen,
                           {0x1C, static_cast<std::uint8_t>(type == LogoType::kGrey ? 0x72 : 0x71),
                            static_cast<std::uint8_t>(logos.size())}};
        expected.insert(expected.end(), rasters.begin(), rasters.end());
        expected.push_back({0x0A});
        expected.push_back(kClose);
        ExpectWrites(spooler, expected);
        Calls calls = {L"start LOGO RAW", L"page"};
        calls.insert(calls.end(), expected.size(), L"write");
        calls.insert(calls.end(), {L"end page", L"end"});
        EXPECT_EQ(spooler.calls, calls);
    }

    // One that ends behind so many rasters, its page and document with it or not.
    static void ExpectCutShort(const Logos& logos, LogoType type, const Writes& rasters, bool isEnded) {
        FakeSpooler spooler;
        SendLogos(FakeSpooler::Printer(), logos, type);
        Writes expected = {kOpen,
                           {0x1C, static_cast<std::uint8_t>(type == LogoType::kGrey ? 0x72 : 0x71),
                            static_cast<std::uint8_t>(logos.size())}};
        expected.insert(expected.end(), rasters.begin(), rasters.end());
        ExpectWrites(spooler, expected);
        Calls calls = {L"start LOGO RAW", L"page"};
        calls.insert(calls.end(), expected.size(), L"write");
        if (isEnded) {
            calls.insert(calls.end(), {L"end page", L"end"});
        }
        EXPECT_EQ(spooler.calls, calls);
    }

    static void ExpectEnded(const Logos& logos, LogoType type, const Writes& rasters = {}) {
        ExpectCutShort(logos, type, rasters, true);
    }
    static void ExpectLeft(const Logos& logos, LogoType type, const Writes& rasters = {}) {
        ExpectCutShort(logos, type, rasters, false);
    }

    static void ExpectWrites(const FakeSpooler& spooler, const Writes& expected) {
        ASSERT_EQ(spooler.writes.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (expected[i].size() < 100) {
                EXPECT_EQ(spooler.writes[i], expected[i]) << i;
            } else {
                EXPECT_TRUE(spooler.writes[i] == expected[i]) << i;
            }
        }
    }

    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "kvmr72-logo-list";
    LogoBuffers buffers_;
};

// Conversions by type

TEST_F(LogoListTest, EachTypeHasItsConversion) {
    const LogoSettings settings = {Halftone::kErrorDiffuse, {20, -30}};
    for (const unsigned bits : {8u, 24u}) {
        SCOPED_TRACE(bits);
        const Bytes picture = pictures::File(30, 20, bits, pictures::Photo(3));
        const Logo logo = Made(L"shop.bmp", picture, settings);
        const Bytes expected[] = {reference::MonoFile(picture, 0, 0, 0),
                                  reference::MonoFile(picture, 3, 20, -30),
                                  reference::GreyFile(picture, 20, -30)};
        for (const LogoType type : kTypes) {
            SCOPED_TRACE(static_cast<int>(type));
            std::wstring output;
            EXPECT_EQ(ConvertLogo(logo, type, output, buffers_), LogoStatus::kWritten);
            EXPECT_EQ(output, Path(L"shopTemp.bmp").wstring());
            EXPECT_TRUE(Get(L"shopTemp.bmp") == expected[static_cast<std::size_t>(type)]);
        }
    }
}

TEST_F(LogoListTest, OnlyGreyConvertsBlackAndWhite) {
    Bytes picture = MonoSource(13, 3, kBlackAndWhite, Bytes(12, 0x5A));
    const Logo logo = Made(L"shop.bmp", picture, {Halftone::kNone, {20, -30}});
    std::wstring output;
    EXPECT_EQ(ConvertLogo(logo, LogoType::kOriginal, output, buffers_), LogoStatus::kFailed);
    EXPECT_EQ(ConvertLogo(logo, LogoType::kTransformation, output, buffers_), LogoStatus::kFailed);
    EXPECT_TRUE(output.empty());
    EXPECT_FALSE(std::filesystem::exists(Path(L"shopTemp.bmp")));
    EXPECT_EQ(ConvertLogo(logo, LogoType::kGrey, output, buffers_), LogoStatus::kWritten);
    EXPECT_TRUE(Get(L"shopTemp.bmp") == reference::GreyFile(picture, 20, -30));
}

TEST_F(LogoListTest, OtherDepthsAndNoFileAreNotConverted) {
    std::wstring output;
    for (const LogoType type : kTypes) {
        const Logo other = Made(L"other.bmp", pictures::Front(2, 2, 32) + Bytes(100));
        EXPECT_EQ(ConvertLogo(other, type, output, buffers_),
                  type == LogoType::kGrey ? LogoStatus::kOtherFormat : LogoStatus::kFailed);
        EXPECT_EQ(ConvertLogo(LogoOf(L"missing.bmp"), type, output, buffers_), LogoStatus::kFailed);
    }
    EXPECT_FALSE(std::filesystem::exists(Path(L"otherTemp.bmp")));
}

// What keeps logos from being sent

TEST_F(LogoListTest, ThereHaveToBeLogos) {
    EXPECT_EQ(ReasonNotToSend({}), Message::kLogoNone);
}

TEST_F(LogoListTest, TogetherTheyStayBelow96K) {
    const struct {
        std::size_t size;
        std::optional<Message> reason;
    } cases[] = {
        {1, std::nullopt}, {98303, std::nullopt}, {98304, Message::kLogoTotal}, {98305, Message::kLogoTotal}};
    for (const auto& [size, reason] : cases) {
        SCOPED_TRACE(size);
        // A converted file's size counts, not the source's.
        Put(L"a.bmp", Bytes(200000));
        Put(L"aTemp.bmp", Bytes(size));
        EXPECT_EQ(ReasonNotToSend({LogoOf(L"a.bmp")}), reason);
        // Where there is none, the source's.
        Put(L"b.bmp", Bytes(size));
        EXPECT_EQ(ReasonNotToSend({LogoOf(L"b.bmp")}), reason);
        // A folder is no file.
        std::filesystem::create_directory(Path(L"bTemp.bmp"));
        EXPECT_EQ(ReasonNotToSend({LogoOf(L"b.bmp")}), reason);
        // A source is not needed where there is a converted file.
        std::filesystem::remove(Path(L"a.bmp"));
        EXPECT_EQ(ReasonNotToSend({LogoOf(L"a.bmp")}), reason);
    }
}

TEST_F(LogoListTest, NineFilesAddUp) {
    Logos logos;
    for (int i = 0; i < 9; ++i) {
        const std::wstring name(1, static_cast<wchar_t>(L'a' + i));
        // 9 * 10922 = 98298
        Put(name + L".bmp", Bytes(i % 2 == 0 ? 20000 : 10922));
        if (i % 2 == 0) {
            Put(name + L"Temp.bmp", Bytes(10922));
        }
        logos.push_back(LogoOf(name + L".bmp"));
    }
    EXPECT_EQ(ReasonNotToSend(logos), std::nullopt);
    Put(L"b.bmp", Bytes(10927));
    EXPECT_EQ(ReasonNotToSend(logos), std::nullopt);
    Put(L"iTemp.bmp", Bytes(10923));
    EXPECT_EQ(ReasonNotToSend(logos), Message::kLogoTotal);
}

TEST_F(LogoListTest, EachSizeHasToBeKnown) {
    Put(L"a.bmp", Bytes(100000));
    EXPECT_EQ(ReasonNotToSend({LogoOf(L"missing.bmp")}), Message::kLogoSize);
    EXPECT_EQ(ReasonNotToSend({LogoOf(L"a.bmp"), LogoOf(L"missing.bmp")}), Message::kLogoSize)
        << "whatever the others add up to";
    std::filesystem::create_directory(Path(L"folder.bmp"));
    EXPECT_EQ(ReasonNotToSend({LogoOf(L"folder.bmp")}), Message::kLogoSize);
    std::filesystem::create_directory(Path(L"folderTemp.bmp"));
    EXPECT_EQ(ReasonNotToSend({LogoOf(L"folder.bmp")}), Message::kLogoSize);
}

TEST_F(LogoListTest, SizesAreAskedForOnceAndDoNotWrap) {
    Put(L"a.bmp", Bytes(10));
    Put(L"b.bmp", Bytes(10));
    Put(L"bTemp.bmp", Bytes(10));
    const Logos logos = {LogoOf(L"a.bmp"), LogoOf(L"b.bmp")};
    WatchedFiles files;
    EXPECT_EQ(ReasonNotToSend(logos), std::nullopt);
    EXPECT_EQ(files.calls, (Calls{L"attributes aTemp.bmp", L"attributes a.bmp", L"attributes bTemp.bmp"}));
    for (const LONGLONG size :
         {0x100000000ll, 0x100000001ll, LONGLONG{-1}, std::numeric_limits<LONGLONG>::min()}) {
        files.size = [size](LONGLONG) { return size; };
        EXPECT_EQ(ReasonNotToSend(logos), Message::kLogoTotal) << size;
    }
}

TEST_F(LogoListTest, SizesOfLongPathsAreFound) {
    const std::wstring folder = Path(std::wstring(200, L'f')).wstring();
    std::filesystem::create_directory(folder);
    const std::wstring path = folder + L'\\' + std::wstring(100, L'x') + L".bmp";
    const HANDLE file =
        CreateFileW((L"\\\\?\\" + path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    EXPECT_EQ(ReasonNotToSend({{path, {}}}), std::nullopt);
    DeleteFileW((L"\\\\?\\" + path).c_str());
    EXPECT_EQ(ReasonNotToSend({{path, {}}}), Message::kLogoSize);
}

// Jobs

// From the left: a diagonal of eight dots from the top, a full column, an empty one. Rows from the bottom;
// what is beyond the tenth column, and the padding, is not printed.
constexpr std::uint8_t kDiagonalClear[] = {0xFE, 0xFD, 0xFB, 0xF7, 0xEF, 0xDF, 0xBF, 0x7F};
const Bytes kTenByEight =
    WithZeros({4, 0, 1, 0, 0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01, 0xFF, 0x00}, 4 + 32);

Bytes TenByEight(const Bytes& palette, bool isBlackSet) {
    Bytes rows;
    for (const std::uint8_t clear : kDiagonalClear) {
        // Of the second byte's upper two bits the first is black.
        const auto first = static_cast<std::uint8_t>(isBlackSet ? ~clear & 0xFF : clear);
        rows = rows + Bytes{first, static_cast<std::uint8_t>(isBlackSet ? 0xAA : 0x6A), 0xA5, 0x5A};
    }
    return MonoSource(10, 8, palette, rows);
}

TEST_F(LogoListTest, TenPixelsAreFourBytesARow) {
    const Logo logo = Made(L"shop.bmp", TenByEight(kBlackAndWhite, false));
    ExpectSent({logo}, LogoType::kOriginal, {kTenByEight});
    ExpectSent({logo}, LogoType::kTransformation, {kTenByEight});
    EXPECT_FALSE(std::filesystem::exists(Path(L"shopTemp.bmp"))) << "nothing is converted for it";
}

TEST_F(LogoListTest, TheOppositePaletteIsSentUnderTransformationOnly) {
    const Logo logo = Made(L"shop.bmp", TenByEight(kWhiteAndBlack, true));
    ExpectSent({logo}, LogoType::kTransformation, {kTenByEight});
    ExpectEnded({logo}, LogoType::kOriginal);
}

TEST_F(LogoListTest, OtherPalettesEndTheJob) {
    for (const Bytes& palette : {Bytes(8, 0), Bytes(8, 255), Bytes{0, 0, 0, 0, 254, 255, 255, 0},
                                 Bytes{0, 0, 1, 0, 255, 255, 255, 0}, Bytes{255, 254, 255, 0, 0, 0, 0, 0}}) {
        const Logo logo = Made(L"shop.bmp", TenByEight(palette, false));
        ExpectEnded({logo}, LogoType::kOriginal);
        ExpectEnded({logo}, LogoType::kTransformation);
    }
}

// A row of black pixels: its columns have their lowest dot.
TEST_F(LogoListTest, TheLastByteHasItsColumnsOnly) {
    for (int width = 1; width <= 33; ++width) {
        SCOPED_TRACE(width);
        const std::size_t rowBytes = width <= 32 ? 4 : 8;
        const Logo logo = Made(L"shop.bmp", MonoSource(width, 1, kBlackAndWhite, Bytes(rowBytes, 0)));
        Bytes raster = {static_cast<std::uint8_t>(rowBytes), 0, 1, 0};
        raster.resize(4 + static_cast<std::size_t>(width), 0x01);
        raster.resize(4 + 8 * rowBytes, 0);
        ExpectSent({logo}, LogoType::kOriginal, {raster});
        ExpectSent({logo}, LogoType::kTransformation, {raster});
    }
}

// Nine rows: two bytes a column, of which the first has the top row alone in its lowest bit.
TEST_F(LogoListTest, RowsAboveALogoAreEmpty) {
    Bytes rows;
    for (int row = 0; row < 9; ++row) {
        rows = rows + Bytes{static_cast<std::uint8_t>(row == 8 || row == 0 ? 0x7F : 0xFF), 0, 0, 0};
    }
    const Logo logo = Made(L"shop.bmp", MonoSource(1, 9, kBlackAndWhite, rows));
    ExpectSent({logo}, LogoType::kOriginal, {WithZeros({4, 0, 2, 0, 0x01, 0x01}, 4 + 64)});
}

TEST_F(LogoListTest, TwoLogosFollowEachOther) {
    const Logos logos = {Made(L"ten.bmp", TenByEight(kBlackAndWhite, false)), Made(L"two.bmp", kTwoOf1)};
    ExpectSent(logos, LogoType::kOriginal, {kTenByEight, kTwoAsMono});
    ExpectSent({logos[1], logos[0]}, LogoType::kTransformation, {kTwoAsMono, kTenByEight});
}

TEST_F(LogoListTest, NineLogosKeepTheirOrder) {
    Logos logos;
    Writes mono;
    Writes grey;
    for (std::uint8_t i = 0; i < 9; ++i) {
        // Eight pixels, black where the number has a bit.
        const std::wstring name = std::wstring(1, static_cast<wchar_t>(L'1' + i)) + L".bmp";
        const auto number = static_cast<std::uint8_t>(0x11 * i + 1);
        logos.push_back(Made(
            name, MonoSource(8, 1, kBlackAndWhite, {static_cast<std::uint8_t>(~number & 0xFF), 0, 0, 0})));
        Bytes raster = {4, 0, 1, 0};
        for (int bit = 7; bit >= 0; --bit) {
            raster.push_back(number >> bit & 1);
        }
        mono.push_back(WithZeros(raster, 4 + 32));
        grey.push_back({1, 0, 1, 0, 1, 0, number, number, number, number, 0, 0, 0, 0});
    }
    ExpectSent(logos, LogoType::kOriginal, mono);
    ExpectSent(logos, LogoType::kTransformation, mono);
    ExpectSent(logos, LogoType::kGrey, grey);
}

// As a list has it whose types were never changed: converted when they were added.
TEST_F(LogoListTest, EachDepthIsSentUnderTransformationAndGrey) {
    const LogoSettings none = {Halftone::kNone, {0, 0}};
    for (const Bytes& source : {kTwoOf1, kTwoOf8, kTwoOf24}) {
        for (const bool isConverted : {true, false}) {
            SCOPED_TRACE(testing::Message() << source.size() << " bytes, converted " << isConverted);
            const Logo logo = Made(L"shop.bmp", source, none);
            std::wstring output;
            if (isConverted) {
                ConvertLogo(logo, LogoType::kTransformation, output, buffers_);
            }
            ExpectSent({logo}, LogoType::kTransformation, {kTwoAsMono});
            std::filesystem::remove(Path(L"shopTemp.bmp"));
            if (isConverted) {
                ConvertLogo(logo, LogoType::kGrey, output, buffers_);
            }
            ExpectSent({logo}, LogoType::kGrey, {kTwoAsGrey});
            std::filesystem::remove(Path(L"shopTemp.bmp"));
        }
    }
}

// 64 brighter: 64 = 0100 0000 is dark in all planes but the second.
TEST_F(LogoListTest, GreyIsAdjusted) {
    for (const Bytes& source : {kTwoOf1, kTwoOf8, kTwoOf24}) {
        const Logo logo = Made(L"shop.bmp", source, {Halftone::kNone, {0, 64}});
        ExpectSent({logo}, LogoType::kGrey, {{1, 0, 1, 0, 1, 0, 0x80, 0x00, 0x80, 0x80, 0, 0, 0, 0}});
        std::filesystem::remove(Path(L"shopTemp.bmp"));
    }
}

// Nine grey pixels in two rows: 12 columns with the padding, two bytes a plane; the top row comes first.
TEST_F(LogoListTest, GreyPaddingIsWhite) {
    const Bytes source =
        pictures::Front(9, 2, 8) + Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3,  //
                                         0x0F, 0x1F, 0x2F, 0x4F, 0x8F, 0xFF, 0x00, 0xF0, 0xA5, 1, 2, 3};
    const Logo logo = Made(L"shop.bmp", source);
    ExpectSent({logo}, LogoType::kGrey, {{1,    0,    2,    0,    1, 0,  //
                                          0xF2, 0,    0xEA, 0x80,        //
                                          0xDA, 0,    0xBA, 0x80,        //
                                          0,    0x80, 0,    0,    0, 0, 0, 0}});
}

// Mean 127: the white pixel alone is above it, whatever is set for the other types.
TEST_F(LogoListTest, AnOriginalOf24BitsIsConvertedWithoutAdjusting) {
    const Logo logo = Made(L"shop.bmp", kTwoOf24, {Halftone::kErrorDiffuse, {100, 100}});
    ExpectSent({logo}, LogoType::kOriginal, {kTwoAsMono});
    // Also where a converted file is there, of whatever.
    Put(L"shopTemp.bmp", TenByEight(kBlackAndWhite, false));
    ExpectSent({logo}, LogoType::kOriginal, {kTwoAsMono});
    EXPECT_TRUE(Get(L"shopTemp.bmp") == reference::MonoFile(kTwoOf24, 0, 0, 0));
}

TEST_F(LogoListTest, SettingsCountUnderTransformation) {
    const Bytes picture = pictures::File(20, 12, 24, pictures::Photo(4));
    for (const int halftone : {0, 1, 2, 3}) {
        const Logo logo = Made(L"shop.bmp", picture, {static_cast<Halftone>(halftone), {20, -30}});
        ExpectSent({logo}, LogoType::kTransformation,
                   {reference::MonoRaster(reference::MonoFile(picture, halftone, 20, -30))});
        std::filesystem::remove(Path(L"shopTemp.bmp"));
    }
}

TEST_F(LogoListTest, AConvertedFileIsSentAsItIs) {
    // Neither is what the source would give.
    const Logo logo = Made(L"shop.bmp", kTwoOf24);
    Put(L"shopTemp.bmp", TenByEight(kBlackAndWhite, false));
    ExpectSent({logo}, LogoType::kTransformation, {kTenByEight});
    Put(L"shopTemp.bmp", pictures::Front(1, 1, 8) + Bytes{0x7F, 0, 0, 0});
    ExpectSent({logo}, LogoType::kGrey, {{1, 0, 1, 0, 1, 0, 0x80, 0, 0, 0, 0, 0, 0, 0}});
    // With or without the source.
    std::filesystem::remove(Path(L"shop.bmp"));
    ExpectSent({logo}, LogoType::kGrey, {{1, 0, 1, 0, 1, 0, 0x80, 0, 0, 0, 0, 0, 0, 0}});
    Put(L"shopTemp.bmp", TenByEight(kBlackAndWhite, false));
    ExpectSent({logo}, LogoType::kTransformation, {kTenByEight});
}

TEST_F(LogoListTest, ABlackAndWhiteSourceIsSentWhateverIsBesideIt) {
    const Logo logo = Made(L"shop.bmp", kTwoOf1);
    Put(L"shopTemp.bmp", TenByEight(kBlackAndWhite, false));
    ExpectSent({logo}, LogoType::kTransformation, {kTwoAsMono});
    ExpectSent({logo}, LogoType::kOriginal, {kTwoAsMono});
}

// Files that cannot be sent

// The spooler's page and document stay as they are where a file is not black and white.
TEST_F(LogoListTest, AFileThatIsNotBlackAndWhiteLeavesTheJob) {
    const Logo good = Made(L"good.bmp", kTwoOf1);
    const Logo eight = Made(L"eight.bmp", kTwoOf8);
    ExpectLeft({eight}, LogoType::kOriginal);
    ExpectLeft({good, eight, good}, LogoType::kOriginal, {kTwoAsMono});
    for (const unsigned bits : {0u, 2u, 4u, 16u, 32u}) {
        ExpectLeft({Made(L"other.bmp", pictures::Front(2, 1, bits) + Bytes(100))}, LogoType::kOriginal);
    }
    Bytes noBitmap = kTwoOf1;
    noBitmap[0] = 'X';
    const Logo none = Made(L"none.bmp", noBitmap);
    ExpectLeft({none}, LogoType::kOriginal);
    ExpectLeft({good, none}, LogoType::kTransformation, {kTwoAsMono});
    ExpectLeft({Made(L"empty.bmp", {})}, LogoType::kOriginal);
    // What is in the converted file's place.
    Put(L"eightTemp.bmp", pictures::File(2, 1, 8, pictures::Flat(0, 0, 0)));
    ExpectLeft({good, eight}, LogoType::kTransformation, {kTwoAsMono});
}

TEST_F(LogoListTest, AFileThatIsNotGreyEndsTheJob) {
    const Logo good = Made(L"good.bmp", kTwoOf8);
    Put(L"badTemp.bmp", kTwoOf1);
    ExpectEnded({good, Made(L"bad.bmp", kTwoOf8), good}, LogoType::kGrey, {kTwoAsGrey});
    ExpectEnded({Made(L"other.bmp", pictures::Front(2, 1, 32) + Bytes(100))}, LogoType::kGrey);
    ExpectEnded({Made(L"empty.bmp", {})}, LogoType::kGrey);
}

TEST_F(LogoListTest, AFileThatIsNotThereEndsTheJob) {
    const Logo good = Made(L"good.bmp", kTwoOf1);
    for (const LogoType type : kTypes) {
        ExpectEnded({LogoOf(L"missing.bmp")}, type);
        ExpectEnded({good, LogoOf(L"missing.bmp"), good}, type,
                    {type == LogoType::kGrey ? kTwoAsGrey : kTwoAsMono});
    }
    std::filesystem::create_directory(Path(L"folder.bmp"));
    for (const LogoType type : kTypes) {
        ExpectEnded({LogoOf(L"folder.bmp")}, type);
    }
}

TEST_F(LogoListTest, AFileThatCannotBeConvertedEndsTheJob) {
    std::filesystem::create_directory(Path(L"shopTemp.bmp"));
    const Logo logo = Made(L"shop.bmp", kTwoOf24);
    for (const LogoType type : kTypes) {
        ExpectEnded({logo}, type);
    }
    ExpectEnded({Made(L"other.bmp", pictures::Front(2, 1, 32) + Bytes(100))}, LogoType::kTransformation);
}

// The source could not be opened when its depth was asked for: nothing is known of it.
TEST_F(LogoListTest, AnOriginalThatOpensTooLateEndsTheJob) {
    const Logo logo = Made(L"shop.bmp", kTwoOf24);
    WatchedFiles files;
    files.failing = 0;
    ExpectEnded({logo}, LogoType::kOriginal);
}

// A black-and-white source is sent itself: what another type left beside it is not its picture.
TEST_F(LogoListTest, WhatLiesBesideASourceThatCannotBeReadEndsTheJob) {
    const Logo logo = Made(L"shop.bmp", kTwoOf1);
    Put(L"shopTemp.bmp", kTwoOf8);
    for (const int failing : {0, 2}) {
        WatchedFiles files;
        files.failing = failing;
        ExpectEnded({logo}, LogoType::kTransformation);
        EXPECT_TRUE(
            files.calls.at(static_cast<std::size_t>(failing)).starts_with(failing == 0 ? L"open" : L"read"))
            << testing::PrintToString(files.calls);
    }
    ExpectSent({logo}, LogoType::kTransformation, {kTwoAsMono});
    std::filesystem::remove(Path(L"shop.bmp"));
    ExpectEnded({logo}, LogoType::kTransformation);
}

// While the first logo is written, the second one's files go.
TEST_F(LogoListTest, FilesThatGoMeanwhileEndTheJob) {
    for (const LogoType type : kTypes) {
        const Logos logos = {Made(L"a.bmp", kTwoOf24, {Halftone::kNone, {0, 0}}), Made(L"b.bmp", kTwoOf24)};
        FakeSpooler spooler;
        spooler.onWrite = [&] { std::filesystem::remove(Path(L"b.bmp")); };
        SendLogos(FakeSpooler::Printer(), logos, type);
        std::filesystem::remove(Path(L"aTemp.bmp"));
        EXPECT_EQ(spooler.calls,
                  (Calls{L"start LOGO RAW", L"page", L"write", L"write", L"write", L"end page", L"end"}));
    }
}

TEST_F(LogoListTest, ConvertedFilesThatGoMeanwhileAreMadeAgain) {
    const Logos logos = {Made(L"a.bmp", kTwoOf8), Made(L"b.bmp", kTwoOf24)};
    for (const LogoType type : {LogoType::kTransformation, LogoType::kGrey}) {
        std::wstring output;
        for (const Logo& logo : logos) {
            ConvertLogo(logo, type, output, buffers_);
        }
        FakeSpooler spooler;
        spooler.onWrite = [&] { std::filesystem::remove(Path(L"bTemp.bmp")); };
        SendLogos(FakeSpooler::Printer(), logos, type);
        ASSERT_EQ(spooler.writes.size(), 6u);
        EXPECT_EQ(spooler.writes[3], type == LogoType::kGrey ? kTwoAsGrey : kTwoAsMono);
    }
}

// Headers that promise more than the file has: what is missing is black, as long as it could be a logo's.
TEST_F(LogoListTest, PixelsThatAreMissingAreBlack) {
    const Logo cut = Made(L"cut.bmp", MonoSource(8, 2, kBlackAndWhite, {0xFF}));
    ExpectSent({cut}, LogoType::kOriginal, {WithZeros({4, 0, 1, 0, 2, 2, 2, 2, 2, 2, 2, 2}, 4 + 32)});
    const Logo lying = Made(L"lying.bmp", MonoSource(0x7FFFFFFF, 0x7FFFFFFF, kBlackAndWhite, {0xFF}));
    const std::size_t before = memory.live;
    memory.peak = before;
    ExpectEnded({lying}, LogoType::kOriginal);
    ExpectEnded({lying}, LogoType::kTransformation);
    ExpectEnded({lying}, LogoType::kGrey);
    EXPECT_LT(memory.peak - before, 20000u);
}

// The spooler

TEST_F(LogoListTest, AFailingSpoolerEndsTheJob) {
    const Logos logos = {Made(L"a.bmp", kTwoOf1), Made(L"b.bmp", kTwoOf1)};
    const Calls whole = {L"start LOGO RAW", L"page",  L"write", L"write",    L"write",
                         L"write",          L"write", L"write", L"end page", L"end"};
    for (const LogoType type : kTypes) {
        for (int failing = 0; failing < static_cast<int>(whole.size()); ++failing) {
            SCOPED_TRACE(failing);
            FakeSpooler spooler;
            spooler.failing = failing;
            SendLogos(FakeSpooler::Printer(), logos, type);
            Calls expected(whole.begin(), whole.begin() + failing + 1);
            if (failing >= 2 && failing < 8) {
                expected.push_back(L"end page");
            }
            if (failing >= 1 && failing < 9) {
                expected.push_back(L"end");
            }
            EXPECT_EQ(spooler.calls, expected);
        }
    }
}

// Without a job nothing is read and converted.
TEST_F(LogoListTest, WithoutASpoolerFilesStayAsTheyAre) {
    const Logo logo = Made(L"shop.bmp", kTwoOf24);
    for (const int failing : {0, 1, 2, 3}) {
        FakeSpooler spooler;
        spooler.failing = failing;
        WatchedFiles files;
        SendLogos(FakeSpooler::Printer(), {logo}, LogoType::kOriginal);
        EXPECT_EQ(files.calls, Calls()) << failing;
    }
    WatchedFiles files;
    SendLogos(nullptr, {logo}, LogoType::kGrey);
    EXPECT_EQ(files.calls, Calls());
}

// Memory

TEST_F(LogoListTest, WithoutMemoryTheJobIsEnded) {
    const Logos logos = {Made(L"a.bmp", kTwoOf24), Made(L"b.bmp", kTwoOf24)};
    for (const LogoType type : kTypes) {
        int refused = 0;
        for (;; ++refused) {
            ASSERT_LT(refused, 300);
            SCOPED_TRACE(refused);
            std::filesystem::remove(Path(L"aTemp.bmp"));
            std::filesystem::remove(Path(L"bTemp.bmp"));
            FakeSpooler spooler;
            bool isRefused = false;
            {
                const RefusedBlock block(refused);
                try {
                    SendLogos(FakeSpooler::Printer(), logos, type);
                } catch (const std::bad_alloc&) {
                }
                isRefused = RefusedBlock::WasAskedFor();
            }
            ASSERT_GE(spooler.calls.size(), 4u);
            EXPECT_EQ(Calls(spooler.calls.begin(), spooler.calls.begin() + 2),
                      (Calls{L"start LOGO RAW", L"page"}));
            EXPECT_EQ(Calls(spooler.calls.end() - 2, spooler.calls.end()), (Calls{L"end page", L"end"}));
            if (!isRefused) {
                EXPECT_EQ(spooler.writes.size(), 6u);
                break;
            }
            EXPECT_LE(spooler.writes.size(), 6u);
        }
        EXPECT_GE(refused, 5);
    }
}

// One logo at a time: its source, its converted file in both places, its raster.
TEST_F(LogoListTest, NineLargeLogosTakeTheMemoryOfOne) {
    constexpr std::size_t kMonoFile = 62 + 128 * 760;
    constexpr std::size_t kGreyFile = 1078 + 1024 * 760;
    constexpr std::size_t kSource = 54 + 3072 * 760;
    constexpr std::size_t kMonoSent = 4 + 128 * 760;
    constexpr std::size_t kGreySent = 6 + 512 * 760;
    constexpr std::size_t kSmall = 20000;
    Logos colours;
    Logos mono;
    for (int i = 0; i < 9; ++i) {
        const std::wstring name(1, static_cast<wchar_t>(L'a' + i));
        colours.push_back(Made(name + L".bmp", pictures::Front(1024, 760, 24) + Bytes(3072 * 760, 0x66)));
        mono.push_back(Made(name + L"1.bmp", MonoSource(1024, 760, kBlackAndWhite, Bytes(128 * 760, 0x66))));
    }
    const struct {
        const Logos& logos;
        LogoType type;
        std::size_t most;
    } cases[] = {
        {mono, LogoType::kOriginal, kMonoFile + kMonoSent},
        {mono, LogoType::kTransformation, kMonoFile + kMonoSent},
        {colours, LogoType::kOriginal, kSource + 2 * kMonoFile + kMonoSent},
        {colours, LogoType::kGrey, kSource + 2 * kGreyFile + kGreySent},
    };
    for (const auto& [logos, type, most] : cases) {
        FakeSpooler spooler;
        spooler.keepsWrites = false;
        std::size_t writes = 0;
        spooler.onWrite = [&] { ++writes; };
        const std::size_t before = memory.live;
        memory.peak = before;
        SendLogos(FakeSpooler::Printer(), logos, type);
        EXPECT_LT(memory.peak - before, most + kSmall);
        EXPECT_GT(memory.peak - before, most - kSmall);
        EXPECT_EQ(writes, 13u);
        for (const Logo& logo : logos) {
            std::filesystem::remove(ConvertedPath(logo.path));
        }
    }
}

}  // namespace
