// An image in the preview of the Water Mark page, pixel by pixel: where it stands, how pale it is, which
// files it comes from, and what is said of those that cannot be shown.
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "page_fixture.h"
#include "resources/resource.h"
#include "ui_thread.h"
#include "water_mark_frame.h"

namespace pages::preview {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kMissing[] = L"The specified file does not exist!";
constexpr wchar_t kDenied[] = L"Please check if user has administrator privileges!";
constexpr wchar_t kTooBig[] = L"The bitmap you selected is too big!";
constexpr wchar_t kWrongDepth[] = L"Make sure the specified bitmap is 1/8/24/ bits!";

class WaterMarkPreviewTest : public WaterMarkTest {};

// Where an image stands

TEST_F(WaterMarkPreviewTest, WithoutAWaterMarkTheFrameIsWhite) {
    Store(Write(L"image.bmp", FileOf(Image4x3())));
    // 3 is a kind that the driver does not have.
    for (const std::uint8_t kind : {kNone, std::uint8_t{3}}) {
        Stored().iWaterMarkType = kind;
        OnPage([&](const Window& page) {
            Smear(page);
            Repaint(page);
            ExpectWhite(page);
            if (kind != kNone) {
                return;
            }
            page.Click(IDC_WATERMARK_USE_IMAGE);
            EXPECT_FALSE(IsWhite(Shown(page)));
            page.Click(IDC_WATERMARK_USE_NONE);
            ExpectWhite(page);
        });
    }
    ExpectSaid({});
}

// The image is 4 x 3, so each of its pixels is a square block. A frame of 200 x 150 gives 200 x 150 at 100
// percent, 100 x 75 at 50, 40 x 30 at 20.
TEST_F(WaterMarkPreviewTest, NinePositions) {
    const Picture image = Image4x3();
    Store(Write(L"image.bmp", FileOf(image)));
    struct Case {
        int size;
        int width, height;
        int lefts[3], tops[3];
    };
    constexpr Case kCases[] = {
        {100, 200, 150, {0, 0, 0}, {0, 0, 0}},
        {50, 100, 75, {0, 50, 100}, {0, 37, 75}},
        {20, 40, 30, {0, 80, 160}, {0, 60, 120}},
    };
    OnPage([&](const Window& page) {
        Resize(page, {200, 150});
        for (const Case& tried : kCases) {
            page.SetSlider(IDC_WATERMARK_SIZE, tried.size);
            for (int position = 0; position < 9; ++position) {
                SCOPED_TRACE(testing::Message() << tried.size << " percent, position " << position);
                SelectPosition(page, position);
                Picture expected({200, 150});
                expected.Fill(
                    {tried.lefts[position % 3], tried.tops[position / 3], tried.width, tried.height}, image,
                    3);
                ExpectShows(page, expected);
            }
        }
    });
    ExpectSaid({});
}

// Of 203 x 151 and an image of 7 x 5:
//   33 percent: 203 x 33 / 100 = 66.99 and 203 x 33 x 5 / 700 = 47.85; free are 137 and 104
//   1 percent: 2.03 and 1.45; free are 201 and 150
//   100 percent: 203 and 145; free are 0 and 6
// and of 50 x 151, 1 percent is no pixel.
TEST_F(WaterMarkPreviewTest, SizesThatDoNotDivide) {
    constexpr std::uint32_t kColour = 0x1080F0;
    Store(Write(L"image.bmp", FileOf(Picture({7, 5}, kColour))));
    struct Case {
        int size;
        int width, height;
        int lefts[3], tops[3];
    };
    constexpr Case kCases[] = {
        {33, 66, 47, {0, 68, 137}, {0, 52, 104}},
        {1, 2, 1, {0, 100, 201}, {0, 75, 150}},
        {100, 203, 145, {0, 0, 0}, {0, 3, 6}},
    };
    OnPage([&](const Window& page) {
        Resize(page, {203, 151});
        for (const Case& tried : kCases) {
            page.SetSlider(IDC_WATERMARK_SIZE, tried.size);
            for (int position = 0; position < 9; ++position) {
                SCOPED_TRACE(testing::Message() << tried.size << " percent, position " << position);
                SelectPosition(page, position);
                ExpectBox(page,
                          {tried.lefts[position % 3], tried.tops[position / 3], tried.width, tried.height},
                          kColour);
            }
        }
        page.SetSlider(IDC_WATERMARK_SIZE, 0);
        for (int position = 0; position < 9; ++position) {
            SelectPosition(page, position);
            ExpectWhite(page);
        }
        page.SetSlider(IDC_WATERMARK_SIZE, 1);
        ExpectBox(page, {201, 150, 2, 1}, kColour);
        Resize(page, {50, 151});
        ExpectWhite(page);
    });
}

// 60 x 50 x 200 / 300 = 20 high; 60 x 50 x 30 / 3000 is 0 high; 3 x 600 would be 6000.
TEST_F(WaterMarkPreviewTest, HighAndFlatImages) {
    constexpr std::uint32_t kColour = 0x204060;
    const Path high = Write(L"high.bmp", FileOf(Picture({3, 600}, kColour)));
    const Path wide = Write(L"wide.bmp", FileOf(Picture({300, 200}, kColour)));
    const Path flat = Write(L"flat.bmp", FileOf(Picture({300, 3}, kColour)));
    Stored().iWaterMarkSize = 50;
    OnPage([&](const Window& page) {
        Resize(page, {60, 90});
        SelectPosition(page, 4);
        ChooseImage(page, wide);
        ExpectBox(page, {15, 35, 30, 20}, kColour);
        ChooseImage(page, high);
        ExpectBox(page, {15, 0, 30, 90}, kColour);
        SelectPosition(page, kTiled);
        ExpectBox(page, {0, 0, 60, 90}, kColour);
        ChooseImage(page, flat);
        page.SetSlider(IDC_WATERMARK_SIZE, 100);
        // 60 x 3 / 300.
        ExpectWhite(page);
        SelectPosition(page, 0);
        ExpectWhite(page);
    });
    ExpectSaid({});
}

// Ten rows of ten colours, 40 x 40 at 20 percent of 200. A height of 140 has three rows of tiles and 20 left:
// five rows of the image, each four pixels high. At 50 percent the tiles are 100 x 100: 40 left, four rows.
TEST_F(WaterMarkPreviewTest, TilesEndWithAPartOfTheImage) {
    Picture image({10, 10});
    for (int y = 0; y < 10; ++y) {
        image.Fill({0, y, 10, 1}, static_cast<std::uint32_t>(0x051525 + y * 0x141210));
        image.At(0, y) = 0;
    }
    Store(Write(L"image.bmp", FileOf(image)));
    OnPage([&](const Window& page) {
        Resize(page, {200, 140});
        page.SetSlider(IDC_WATERMARK_SIZE, 20);
        SelectPosition(page, kTiled);
        Picture expected({200, 140});
        for (const int left : {0, 40, 80, 120, 160}) {
            for (const int top : {0, 40, 80}) {
                expected.Fill({left, top, 40, 40}, image, 10);
            }
            expected.Fill({left, 120, 40, 20}, image, 5);
        }
        ExpectShows(page, expected);

        page.SetSlider(IDC_WATERMARK_SIZE, 50);
        expected = Picture({200, 140});
        for (const int left : {0, 100}) {
            expected.Fill({left, 0, 100, 100}, image, 10);
            expected.Fill({left, 100, 100, 40}, image, 4);
        }
        ExpectShows(page, expected);

        // 200 x 200: one tile, cut off to the frame's height, so all of the image is in it.
        page.SetSlider(IDC_WATERMARK_SIZE, 100);
        expected = Picture({200, 140});
        expected.Fill({0, 0, 200, 140}, image, 10);
        ExpectShows(page, expected);

        // 30 are left of 150: 7.5 rows. The eighth does not show.
        page.SetSlider(IDC_WATERMARK_SIZE, 20);
        Resize(page, {200, 150});
        const Picture shown = Shown(page);
        EXPECT_EQ(shown.At(5, 120), image.At(5, 0));
        EXPECT_EQ(shown.At(5, 149), image.At(5, 6));
    });
}

// Stretching reads all of a picture, which may be large.
TEST_F(WaterMarkPreviewTest, TilesOfOneSizeAreStretchedOnce) {
    Store(Write(L"image.bmp", FileOf(Picture({10, 10}, 0x408020))));
    Stored().iWaterMarkPosition = kTiled;
    Stored().iWaterMarkSize = 20;
    OnPage([&](const Window& page) {
        Resize(page, {200, 140});
        ExpectBox(page, {0, 0, 200, 140}, 0x408020);
        stretched_ = 0;
        page.SetSlider(IDC_WATERMARK_BRIGHTNESS, 10);
        EXPECT_EQ(stretched_, 2) << "five columns of three whole tiles and a cut one";
    });
}

// A server that is gone is asked again when the user asks, but not with each repaint.
TEST_F(WaterMarkPreviewTest, AFileThatIsMissedSlowlyIsNotAskedForAgainAtOnce) {
    lateFile_ = Write(L"image.bmp", FileOf(Image4x3()));
    Store(lateFile_);
    OnPage([&](const Window& page) {
        EXPECT_THAT(fileCalls_, ElementsAre(L"read image.bmp"));
        for (int i = 0; i < 3; ++i) {
            Repaint(page);
        }
        ExpectWhite(page);
        EXPECT_THAT(fileCalls_, ElementsAre(L"read image.bmp"));
        lateFile_.clear();
        page.Click(IDC_WATERMARK_USE_TEXT);
        page.Click(IDC_WATERMARK_USE_IMAGE);
        EXPECT_FALSE(IsWhite(Shown(page)));
    });
}

// 100 / 33 is three columns, at 0, 66.99 and 133.98, each 66 wide: one pixel stays white between the second
// and the third, and four at the end. 20 percent of 203 is five columns of 40 at 0, 40.6, 81.2, 121.8, 162.4.
TEST_F(WaterMarkPreviewTest, TilesThatDoNotDivide) {
    constexpr std::uint32_t kColour = 0x804020;
    Store(Write(L"image.bmp", FileOf(Picture({7, 5}, kColour))));
    Stored().iWaterMarkPosition = kTiled;
    // A record can hold less than the smallest tile.
    Stored().iWaterMarkSize = 10;
    const auto columns = [](Size frame, int width, std::initializer_list<int> lefts) {
        Picture picture(frame);
        for (const int left : lefts) {
            picture.Fill({left, 0, width, frame.height}, kColour);
        }
        return picture;
    };
    OnPage([&](const Window& page) {
        Resize(page, {203, 151});
        ExpectShows(page, columns({203, 151}, 40, {0, 40, 81, 121, 162}));
        page.SetSlider(IDC_WATERMARK_SIZE, 33);
        ExpectShows(page, columns({203, 151}, 66, {0, 66, 133}));
        page.SetSlider(IDC_WATERMARK_SIZE, 51);
        ExpectShows(page, columns({203, 151}, 103, {0}));
        page.SetSlider(IDC_WATERMARK_SIZE, 1);
        ExpectShows(page, columns({203, 151}, 40, {0, 40, 81, 121, 162}));
        Resize(page, {101, 53});
        ExpectShows(page, columns({101, 53}, 20, {0, 20, 40, 60, 80}));
    });
}

// Colours

TEST_F(WaterMarkPreviewTest, BrightnessRaisesEveryByteOfTheFile) {
    Picture image({4, 2});
    image.pixels = {0x000000, 0x01CDCE, 0xFFFE00, 0x64CCCD, 0x326496, 0xC80A14, 0xFFFFFF, 0x00FF32};
    Store(Write(L"image.bmp", FileOf(image)));
    OnPage([&](const Window& page) {
        Resize(page, {80, 60});
        const auto expectRaised = [&](const std::vector<std::uint32_t>& pixels) {
            Picture raised({4, 2});
            raised.pixels = pixels;
            Picture expected({80, 60});
            expected.Fill({0, 0, 80, 40}, raised, 2);
            ExpectShows(page, expected);
        };
        expectRaised(image.pixels);
        fileCalls_.clear();
        // Each time from the file's own bytes: the order does not matter.
        for (int time = 0; time < 2; ++time) {
            page.SetSlider(IDC_WATERMARK_BRIGHTNESS, 50);
            expectRaised({0x323232, 0x33FFFF, 0xFFFF32, 0x96FEFF, 0x6496C8, 0xFA3C46, 0xFFFFFF, 0x32FF64});
            page.SetSlider(IDC_WATERMARK_BRIGHTNESS, 255);
            ExpectWhite(page);
            page.SetSlider(IDC_WATERMARK_BRIGHTNESS, 254);
            expectRaised({0xFEFEFE, 0xFFFFFF, 0xFFFFFE, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFEFFFF});
            page.SetSlider(IDC_WATERMARK_BRIGHTNESS, 0);
            expectRaised(image.pixels);
        }
        page.SetSlider(IDC_WATERMARK_SIZE, 30);
        SelectPosition(page, 8);
        SelectPosition(page, kTiled);
        EXPECT_THAT(fileCalls_, IsEmpty()) << "the file is read again only when it may be another one";
    });
}

// As most programs write it: how many colours the palette has, and how many of them matter.
Bytes WithColourCount(Bytes file, std::uint32_t colours) {
    Put32(file, 46, colours);
    Put32(file, 50, colours);
    return file;
}

// Colours of a palette come with green and blue exchanged, those of 24 bits as they are.
TEST_F(WaterMarkPreviewTest, GreenAndBlueOfPalettesAreExchanged) {
    // 9 x 2: 1010 0101 1 above 0000 0001 0; rows of the file begin at the bottom.
    Bytes file1 = EmptyFile(9, 2, 1, 2);
    PutColour(file1, 54, 0xC81E0A);
    PutColour(file1, 58, 0x0A96F0);
    file1[62] = 0x01;
    file1[66] = 0xA5;
    file1[67] = 0x80;
    constexpr std::uint32_t kClear = 0xC80A1E;
    constexpr std::uint32_t kSet = 0x0AF096;
    Picture image1({9, 2}, kClear);
    for (const int x : {0, 2, 5, 7, 8}) {
        image1.At(x, 0) = kSet;
    }
    image1.At(7, 1) = kSet;

    // 3 x 2.
    Bytes file8 = EmptyFile(3, 2, 8, 256);
    PutColour(file8, 54, 0x112233);
    PutColour(file8, 54 + 4 * 200, 0xFF0080);
    PutColour(file8, 54 + 4 * 255, 0x00FF40);
    const Bytes rows = {255, 200, 0, 0xEE, 0, 255, 200, 0xEE};
    std::copy(rows.begin(), rows.end(), file8.begin() + 1078);
    Picture image8({3, 2});
    image8.pixels = {0x113322, 0x0040FF, 0xFF8000, 0x0040FF, 0xFF8000, 0x113322};

    Picture image24({3, 2});
    image24.pixels = {0x112233, 0xFF0080, 0x00FF40, 0xC81E0A, 0x0A96F0, 0x000000};

    struct Case {
        const char* name;
        Bytes file;
        const Picture& image;
    };
    const Case cases[] = {
        {"1 bit", file1, image1},
        {"1 bit, colours counted", WithColourCount(file1, 2), image1},
        {"8 bits", file8, image8},
        {"8 bits, colours counted", WithColourCount(file8, 256), image8},
        {"24 bits", FileOf(image24), image24},
    };
    const Path file = folder_ / L"image.bmp";
    OnPage([&](const Window& page) {
        Resize(page, {180, 150});
        for (const Case& tried : cases) {
            SCOPED_TRACE(tried.name);
            Write(L"image.bmp", tried.file);
            Browse(page, file);
            Picture expected({180, 150});
            expected.Fill({0, 0, 180, 180 * 2 / tried.image.size.width}, tried.image, 2);
            ExpectShows(page, expected);
            EXPECT_STREQ(Stored().WaterMarkPicName, file.c_str());
        }
    });
    ExpectSaid({});
}

// Each pixel is one of the file's; mixed ones would come of averaging, which brightness must not meet.
TEST_F(WaterMarkPreviewTest, ShrinkingPicksPixels) {
    const std::set<std::uint32_t> colours = {0x102030, 0xF0C000, 0x0080F0, 0x904070};
    Picture image({120, 90});
    for (int y = 0; y < image.size.height; ++y) {
        for (int x = 0; x < image.size.width; ++x) {
            image.At(x, y) = *std::next(colours.begin(), (x + 3 * y + x * y % 5) % 4);
        }
    }
    Store(Write(L"image.bmp", FileOf(image)));
    OnPage([&](const Window& page) {
        Resize(page, {100, 75});
        for (const int size : {100, 61, 50, 33, 7}) {
            SCOPED_TRACE(size);
            page.SetSlider(IDC_WATERMARK_SIZE, size);
            const Picture shown = Shown(page);
            std::set<std::uint32_t> seen;
            for (int y = 0; y < 75 * size / 100; ++y) {
                for (int x = 0; x < size; ++x) {
                    seen.insert(shown.At(x, y));
                }
            }
            EXPECT_EQ(seen, colours);
        }
    });
}

// Files

TEST_F(WaterMarkPreviewTest, LoadsItsCopyInItsOwnSizeWithItsPixels) {
    const Path file = Write(L"image.bmp", FileOf(Image4x3()));
    Store(file);
    OnPage([&](const Window&) {
        ASSERT_EQ(TemporaryFiles().size(), 1u);
        EXPECT_THAT(loads_, ElementsAre(Load{nullptr, TemporaryFiles()[0], IMAGE_BITMAP, 0, 0,
                                             LR_LOADFROMFILE | LR_CREATEDIBSECTION}));
    });
}

// What was found whole is what is loaded: the system's loader reads past the end of a file that is not.
TEST_F(WaterMarkPreviewTest, NobodyCanChangeTheCopyBetweenItsCheckAndItsLoading) {
    Store(Write(L"image.bmp", FileOf(Image4x3())));
    int loads = 0;
    onLoad_ = [&](const Path& copy) {
        ++loads;
        // Tries to open it, and gives the error.
        const auto open = [&](DWORD access, DWORD share) {
            const HANDLE file = CreateFileW(copy.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
            if (file == INVALID_HANDLE_VALUE) {
                return GetLastError();
            }
            CloseHandle(file);
            return DWORD{ERROR_SUCCESS};
        };
        constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        EXPECT_EQ(open(GENERIC_WRITE, kShareAll), DWORD{ERROR_SHARING_VIOLATION});
        EXPECT_EQ(open(DELETE, kShareAll), DWORD{ERROR_SHARING_VIOLATION});
        EXPECT_EQ(open(GENERIC_READ, FILE_SHARE_READ), DWORD{ERROR_SUCCESS}) << "others may read it";
        const std::wstring name = copy.filename().wstring();
        ASSERT_GE(fileCalls_.size(), 2u);
        EXPECT_EQ(fileCalls_.back(), L"load " + name);
        EXPECT_EQ(*(fileCalls_.end() - 2), L"read " + name);
        EXPECT_EQ(std::count(fileCalls_.begin(), fileCalls_.end(), L"read " + name), 1)
            << "checked as it was opened, and not opened once more";
    };
    OnPage([&](const Window& page) {
        EXPECT_FALSE(IsWhite(Shown(page)));
        EXPECT_EQ(loads, 1);
        ASSERT_EQ(TemporaryFiles().size(), 1u);
        EXPECT_TRUE(DeleteFileW(TemporaryFiles()[0].c_str())) << "it is let go once it is loaded";
    });
}

// Who has not chosen a file yet is not told that there is none, but the picture of another one goes.
TEST_F(WaterMarkPreviewTest, AnImageWithoutAFileIsNoPicture) {
    Store(Write(L"image.bmp", FileOf(Image4x3())));
    OnPage([&](const Window& page) {
        EXPECT_FALSE(IsWhite(Shown(page)));
        ChooseImage(page, L"");
        ExpectWhite(page);
        page.Click(IDC_WATERMARK_USE_TEXT);
        page.Click(IDC_WATERMARK_USE_IMAGE);
        ExpectWhite(page);
        EXPECT_EQ(loads_.size(), 1u);
    });
    ExpectSaid({});
}

TEST_F(WaterMarkPreviewTest, ADrawingThatFailsIsWhiteUntilTheNextRepaint) {
    Store(Write(L"image.bmp", FileOf(Image4x3())));
    Stored().iWaterMarkPosition = kTiled;
    Stored().iWaterMarkSize = 30;
    OnPage([&](const Window& page) {
        ExpectOutlivesFailures(page, {"CreateCompatibleDC", "SelectObject", "PatBlt", "StretchBlt", "BitBlt"},
                               [&](bool) { EXPECT_EQ(loads_.size(), 1u); });
    });
}

TEST_F(WaterMarkPreviewTest, AChosenBitmapIsConvertedForTheRecordAndForThePreview) {
    const Path of8 = Write(L"of8.bmp", PlainFile8(4, 3, 0x102030));
    const Path of24 = Write(L"of24.bmp", FileOf(Image4x3()));
    Stored().iWaterMarkType = kNone;
    // How often a source is looked at is not told here, only what is made and shown.
    const auto takeCalls = [this] {
        std::erase_if(fileCalls_, [](const std::wstring& call) { return call.starts_with(L"read "); });
        return std::exchange(fileCalls_, {});
    };
    OnPage([&](const Window& page) {
        page.Click(IDC_WATERMARK_USE_IMAGE);
        takeCalls();
        EXPECT_THAT(TemporaryFiles(), IsEmpty());
        Browse(page, of8);
        ASSERT_EQ(TemporaryFiles().size(), 1u);
        const Path copy = TemporaryFiles()[0];
        const std::wstring name = copy.filename().wstring();
        EXPECT_TRUE(name.ends_with(L"1.bmp"));
        const std::wstring write = L"write " + name;
        const std::wstring load = L"load " + name;
        EXPECT_THAT(takeCalls(), ElementsAre(write, write, load));
        EXPECT_EQ(std::filesystem::file_size(copy), 54u + 3 * 12);
        Browse(page, of24);
        EXPECT_THAT(takeCalls(), ElementsAre(write, L"copy of24.bmp", write, L"copy of24.bmp", load));
        EXPECT_EQ(rig::ReadBytes(copy), FileOf(Image4x3()));
        page.Click(IDC_WATERMARK_USE_IMAGE);
        EXPECT_THAT(takeCalls(), ElementsAre(write, L"copy of24.bmp", load));
    });
    ExpectSaid({});
}

TEST_F(WaterMarkPreviewTest, ABitmapThatChangedIsReadWhenItIsChosenAgain) {
    const Path file = Write(L"image.bmp", FileOf(Picture({2, 2}, 0x111111)));
    Store(file);
    OnPage([&](const Window& page) {
        Resize(page, {60, 60});
        ExpectBox(page, {0, 0, 60, 60}, 0x111111);
        Write(L"image.bmp", FileOf(Picture({2, 1}, 0x999999)));
        Repaint(page);
        ExpectBox(page, {0, 0, 60, 60}, 0x111111);
        page.Click(IDC_WATERMARK_USE_IMAGE);
        ExpectBox(page, {0, 0, 60, 30}, 0x999999);
        // By way of the other kind too.
        Write(L"image.bmp", FileOf(Picture({1, 1}, 0x777777)));
        page.Click(IDC_WATERMARK_USE_TEXT);
        page.Click(IDC_WATERMARK_USE_IMAGE);
        ExpectBox(page, {0, 0, 60, 60}, 0x777777);
    });
    ExpectSaid({});
}

TEST_F(WaterMarkPreviewTest, RepaintsReadNoFileAndKeepNothing) {
    Store(Write(L"image.bmp", FileOf(Image4x3())));
    Stored().iWaterMarkPosition = kTiled;
    const UiThread ui_thread;
    for (const std::uint8_t kind : {kNone, kImage, kText}) {
        SCOPED_TRACE(static_cast<int>(kind));
        Stored().iWaterMarkType = kind;
        OnPage([&](const Window& page) {
            Repaint(page);
            const Picture shown = Shown(page);
            EXPECT_EQ(IsWhite(shown), kind == kNone);
            const auto live = live_;
            fileCalls_.clear();
            drawings_ = 0;
            Smear(page);
            ui_thread.Do([&] {
                for (int i = 0; i < 200; ++i) {
                    Paint(page);
                    RedrawWindow(page.Control(IDC_WATERMARK_PREVIEW), nullptr, nullptr,
                                 RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
                }
            });
            ExpectShows(page, shown);
            EXPECT_THAT(fileCalls_, IsEmpty());
            EXPECT_EQ(drawings_, 0);
            EXPECT_EQ(live_, live);
            Smear(page);
            RedrawWindow(page.Control(IDC_WATERMARK_PREVIEW), nullptr, nullptr,
                         RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
            Settle(page);
            ExpectShows(page, shown);
        });
        EXPECT_THAT(live_, IsEmpty()) << "after the page was closed";
    }
    ExpectSaid({});
}

// Bitmaps that cannot be shown

// 10485760 pixels are 4096 x 2560.
TEST_F(WaterMarkPreviewTest, TenMegapixelsAreTheLimit) {
    Bytes most = EmptyFile(4096, 2560, 1, 2);
    PutColour(most, 54, 0x336699);
    Bytes more = EmptyFile(4096, 2561, 1, 2);
    PutColour(more, 54, 0x336699);
    const Path fits = Write(L"fits.bmp", most);
    const Path tooBig = Write(L"more.bmp", more);
    Stored().iWaterMarkSize = 50;
    Store(tooBig);
    OnPage([&](const Window& page) {
        Resize(page, {128, 100});
        ExpectWhite(page);
        ExpectSaid({});
        ChooseImage(page, fits);
        // 128 x 50 x 2560 / 409600.
        ExpectBox(page, {0, 0, 64, 40}, 0x339966);
        ExpectSaid({});
        ChooseImage(page, tooBig);
        ExpectWhite(page);
        ExpectSaid({kTooBig});
        fileCalls_.clear();
        Repaint(page);
        page.SetSlider(IDC_WATERMARK_SIZE, 60);
        ExpectWhite(page);
        ExpectSaid({});
        EXPECT_THAT(fileCalls_, IsEmpty());
        Browse(page, tooBig);
        ExpectWhite(page);
        ExpectSaid({kTooBig});
        Browse(page, fits);
        EXPECT_FALSE(IsWhite(Shown(page)));
        ExpectSaid({});
    });
}

TEST_F(WaterMarkPreviewTest, WhatCannotBeShownIsSaidOnceToWhoActs) {
    const Path good = Write(L"good.bmp", FileOf(Image4x3()));
    std::filesystem::create_directory(folder_ / L"folder.bmp");
    const Path cases[] = {
        folder_ / L"missing.bmp",
        folder_ / L"missing" / L"image.bmp",
        folder_ / L"what?.bmp",
        folder_ / L"folder.bmp",
        Write(L"4.bmp", EmptyFile(4, 3, 4, 16)),
        Write(L"16.bmp", EmptyFile(4, 3, 16, 0)),
        Write(L"32.bmp", EmptyFile(4, 3, 32, 0)),
        Write(L"200.bmp", EmptyFile(4, 3, 8, 200)),
        Write(L"text.bmp", {'t', 'e', 'x', 't'}),
        Write(L"empty.bmp", {}),
    };
    // One that is there at first, so that it is the bad one that makes the frame white.
    Store(good);
    OnPage([&](const Window& page) {
        const Picture shown = Shown(page);
        EXPECT_FALSE(IsWhite(shown));
        const auto expectNothingMore = [&] {
            Paint(page);
            Repaint(page);
            page.SetSlider(IDC_WATERMARK_SIZE, 40);
            SelectPosition(page, 3);
            ExpectWhite(page);
            SelectPosition(page, 0);
            page.SetSlider(IDC_WATERMARK_SIZE, 100);
            ExpectSaid({});
        };
        for (const Path& bad : cases) {
            SCOPED_TRACE(bad.filename());
            ChooseImage(page, bad);
            ExpectWhite(page);
            ExpectSaid({kMissing});
            expectNothingMore();
            // By way of the text, which shows no bitmap and says nothing of it.
            page.Click(IDC_WATERMARK_USE_TEXT);
            ExpectSaid({});
            page.Click(IDC_WATERMARK_USE_IMAGE);
            ExpectSaid({kMissing});
            ChooseImage(page, good);
            ExpectShows(page, shown);
            ExpectSaid({});
        }
        {
            SCOPED_TRACE("in use");
            for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
                const HANDLE other =
                    CreateFileW(good.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
                ASSERT_NE(other, INVALID_HANDLE_VALUE);
                page.Click(IDC_WATERMARK_USE_IMAGE);
                ExpectWhite(page);
                ExpectSaid({kMissing});
                expectNothingMore();
                CloseHandle(other);
            }
        }
        {
            SCOPED_TRACE("the copy cannot be made");
            refusesWriting_ = true;
            page.Click(IDC_WATERMARK_USE_IMAGE);
            ExpectWhite(page);
            ExpectSaid({kDenied});
            expectNothingMore();
            refusesWriting_ = false;
            hasTemporaryFolder_ = false;
            page.Click(IDC_WATERMARK_USE_IMAGE);
            ExpectWhite(page);
            expectNothingMore();
            hasTemporaryFolder_ = true;
        }
        page.Click(IDC_WATERMARK_USE_IMAGE);
        ExpectShows(page, shown);
        ExpectSaid({});
    });
    // Whoever only opens the page is not told.
    for (const Path& stored : {cases[0], cases[3], cases[4], good}) {
        Store(stored);
        refusesWriting_ = stored == good;
        OnPage([](const Window& page) {
            Repaint(page);
            ExpectWhite(page);
        });
    }
    ExpectSaid({});
}

// A bitmap that is refused when it is chosen leaves the one before.
TEST_F(WaterMarkPreviewTest, BrowsingForWhatCannotBeUsedKeepsThePicture) {
    const Path good = Write(L"good.bmp", FileOf(Image4x3()));
    const Path other = Write(L"other.bmp", PlainFile8(4, 3, 0x102030));
    Store(good);
    OnPage([&](const Window& page) {
        const Picture shown = Shown(page);
        const auto expectKept = [&](const wchar_t* error) {
            ExpectSaid({error});
            Repaint(page);
            ExpectShows(page, shown);
            EXPECT_STREQ(Stored().WaterMarkPicName, good.c_str());
            EXPECT_EQ(page.Text(IDC_WATERMARK_FILE), good.wstring());
        };
        for (const Bytes& file :
             {EmptyFile(4, 3, 4, 16), EmptyFile(4, 3, 32, 0), Bytes{'t', 'e', 'x', 't'}}) {
            Browse(page, Write(L"bad.bmp", file));
            expectKept(kWrongDepth);
        }
        Browse(page, folder_ / L"missing.bmp");
        expectKept(kWrongDepth);
        refusesWriting_ = true;
        Browse(page, other);
        expectKept(kDenied);
        refusesWriting_ = false;
        hasTemporaryFolder_ = false;
        Browse(page, other);
        expectKept(kDenied);
        hasTemporaryFolder_ = true;
    });
}

// Files that are not what they claim

struct Hostile {
    std::string name;
    Bytes file;
};

std::vector<Hostile> HostileFiles() {
    Bytes file1 = EmptyFile(9, 2, 1, 2);
    Bytes file8 = PlainFile8(4, 4, 0x102030);
    Bytes file24 = FileOf(Image4x3());
    std::vector<Hostile> hostile;
    const auto add = [&](const std::string& name, const Bytes& file) { hostile.push_back({name, file}); };
    for (const Bytes& whole : {file1, file8, file24}) {
        const std::string kind = std::to_string(whole[28]) + " bits, ";
        // In front of each field of both headers and inside one of them, in palette and rows.
        for (const std::size_t length : {1u,  2u,  6u,  10u, 14u, 18u, 22u, 24u, 26u,   28u,
                                         30u, 34u, 38u, 42u, 46u, 50u, 54u, 57u, 1077u, 1079u}) {
            if (length < whole.size()) {
                add(kind + "cut to " + std::to_string(length),
                    Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
            }
        }
        add(kind + "cut by one", Bytes(whole.begin(), whole.end() - 1));
        const auto addField = [&](std::size_t at, bool is32Bit, std::uint32_t value) {
            Bytes file = whole;
            is32Bit ? Put32(file, at, value) : Put16(file, at, value);
            add(kind + "field " + std::to_string(at) + " " + std::to_string(value), file);
        };
        for (const std::uint32_t value : {0u, 1u, 53u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
            // Size of the file, of the header and of the pixels, compression, resolution, colours.
            for (const std::size_t at : {2u, 10u, 14u, 18u, 22u, 30u, 34u, 38u, 46u, 50u}) {
                addField(at, true, value);
            }
            // Planes and bits.
            addField(26, false, value);
            addField(28, false, value);
        }
        struct Claim {
            std::uint32_t width, height;
        };
        for (const auto& [width, height] :
             {Claim{0, 0}, Claim{65536, 65536}, Claim{46341, 46341}, Claim{30000, 30000},
              Claim{0x7FFFFFFF, 0x7FFFFFFF}, Claim{0x80000000, 0x80000000}, Claim{4096, 2560}}) {
            Bytes file = whole;
            Put32(file, kWidthAt, width);
            Put32(file, kHeightAt, height);
            add(kind + std::to_string(width) + " x " + std::to_string(height), file);
        }
    }
    // Rows from the top: whole, and yet the 24-bit copy has headers only.
    Bytes topDown1 = EmptyFile(900, 200, 1, 2);
    Bytes topDown8 = PlainFile8(200, 200, 0x102030);
    for (Bytes* const file : {&topDown1, &topDown8}) {
        Put32(*file, kHeightAt, static_cast<std::uint32_t>(-200));
        add(std::to_string((*file)[28]) + " bits, rows from the top", *file);
    }
    return hostile;
}

// Each is shown in some way, or white with one message at most, and the page goes on.
TEST_F(WaterMarkPreviewTest, HostileFilesDoNoHarm) {
    const Path good = Write(L"good.bmp", FileOf(Image4x3()));
    Store(good);
    OnPage([&](const Window& page) {
        const Picture shown = Shown(page);
        for (const Hostile& hostile : HostileFiles()) {
            SCOPED_TRACE(hostile.name);
            ChooseImage(page, Write(L"bad.bmp", hostile.file));
            EXPECT_LE(said_.size(), 1u);
            if (!said_.empty()) {
                ExpectWhite(page);
            }
            said_.clear();
            Paint(page);
            ExpectSaid({});
        }
        // 10 GB of which no byte but the headers was ever written.
        Bytes claim = EmptyFile(4, 3, 24, 0);
        Put32(claim, kWidthAt, 60000);
        Put32(claim, kHeightAt, 58000);
        const Path huge = Write(L"huge.bmp", claim);
        std::filesystem::resize_file(huge, 54 + 180000ull * 58000);
        ChooseImage(page, huge);
        ExpectWhite(page);
        ExpectSaid({kTooBig});
        ChooseImage(page, good);
        ExpectShows(page, shown);
        ExpectSaid({});
    });
}

}  // namespace
}  // namespace pages::preview
