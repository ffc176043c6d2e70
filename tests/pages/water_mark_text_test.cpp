// The picture of a text watermark: its file, whole, against one drawn from the formulas here; where the ink
// lies; when it is written; and how the frame shows it.
#include <windows.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "page_fixture.h"
#include "resources/resource.h"
#include "water_mark_frame.h"

namespace pages::preview {
namespace {

using testing::IsEmpty;

constexpr Size kFile = {300, 300};
constexpr wchar_t kFace[] = L"Tahoma";

struct Text {
    std::wstring text = L"DRAFT";
    std::wstring face = kFace;
    std::uint8_t size = 30;
    std::uint8_t style = 0;
    std::int32_t angle = 0;
};

double Radians(std::int32_t angle) {
    return angle * 2 * 3.141592654 / 360;
}

HFONT FontOf(const Text& text, bool turned) {
    LOGFONTW font = {};
    // The screen of the tests has 96 dots an inch.
    font.lfHeight = -MulDiv(text.size, 96, 72);
    font.lfEscapement = font.lfOrientation = turned ? text.angle * 10 : 0;
    font.lfWeight = text.style == 2 || text.style == 3 ? 700 : 400;
    font.lfItalic = text.style == 1 || text.style == 3 ? 1 : 0;
    font.lfCharSet = DEFAULT_CHARSET;
    font.lfClipPrecision = CLIP_LH_ANGLES;
    text.face.copy(font.lfFaceName, LF_FACESIZE - 1);
    return CreateFontIndirectW(&font);
}

Picture Reference(const Text& text) {
    return Drawn(kFile, [&](HDC dc) {
        const RECT all = {0, 0, 300, 300};
        FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
        const HFONT font = FontOf(text, true);
        const HGDIOBJ previous = SelectObject(dc, font);
        SIZE extent = {};
        const auto length = static_cast<int>(text.text.size());
        GetTextExtentPoint32W(dc, text.text.c_str(), length, &extent);
        const double a = Radians(text.angle);
        const double hw = extent.cx / 2.0;
        const double hh = extent.cy / 2.0;
        SetTextAlign(dc, TA_BASELINE);
        SetBkMode(dc, OPAQUE);
        EXPECT_TRUE(TextOutW(dc, static_cast<int>(std::lround(150 - (std::cos(a) * hw - std::sin(a) * hh))),
                             static_cast<int>(std::lround(150 + (std::sin(a) * hw + std::cos(a) * hh))),
                             text.text.c_str(), length));
        SelectObject(dc, previous);
        DeleteObject(font);
    });
}

// Where anything is drawn, in real coordinates of pixel edges.
struct Ink {
    double left, top, right, bottom;
};

Ink InkOf(const Picture& picture) {
    Ink ink = {1000, 1000, -1, -1};
    for (int y = 0; y < picture.size.height; ++y) {
        for (int x = 0; x < picture.size.width; ++x) {
            if (picture.At(x, y) != kWhite) {
                ink = {std::min<double>(ink.left, x), std::min<double>(ink.top, y),
                       std::max<double>(ink.right, x + 1), std::max<double>(ink.bottom, y + 1)};
            }
        }
    }
    return ink;
}

class WaterMarkTextTest : public WaterMarkTest {
  protected:
    void SetUp() override {
        WaterMarkTest::SetUp();
        Stored().iWaterMarkType = kText;
        StoreText({});
    }

    void StoreText(const Text& text) {
        CopyInto(Stored().szWaterMarkText, text.text);
        CopyInto(Stored().szWaterMarkFont, text.face);
        Stored().iWaterMarkFontSize = text.size;
        Stored().iWaterMarkFontStyle = text.style;
        Stored().iWaterMarkAngle = text.angle;
    }

    Path File() const {
        const std::vector<Path> files = TemporaryFiles();
        EXPECT_EQ(files.size(), 1u);
        return files.empty() ? Path() : files[0];
    }

    // Its headers byte for byte, its size, and then what it shows.
    Picture ReadFile() const {
        EXPECT_TRUE(File().wstring().ends_with(L"1.bmp"));
        const Bytes file = rig::ReadBytes(File()).value_or(Bytes{});
        Picture picture(kFile);
        EXPECT_EQ(file.size(), 270054u);
        if (file.size() != 270054) {
            return picture;
        }
        const std::array<std::uint8_t, 54> headers = {
            'B',  'M',  0xE6, 0x1E, 4,    0, 0, 0, 0, 0, 54, 0, 0, 0,  // 270054 bytes, pixels at 54
            40,   0,    0,    0,                                       // information header
            0x2C, 1,    0,    0,    0x2C, 1, 0, 0,                     // 300 x 300
            1,    0,    24,   0,    0,    0, 0, 0,                     // planes, bits, not compressed
            0xB0, 0x1E, 4,    0,                                       // 270000 bytes of pixels
        };
        EXPECT_TRUE(std::equal(headers.begin(), headers.end(), file.begin()));
        for (int y = 0; y < 300; ++y) {
            for (int x = 0; x < 300; ++x) {
                const auto at = static_cast<std::size_t>(54 + (299 - y) * 900 + x * 3);
                picture.At(x, y) =
                    static_cast<std::uint32_t>(file[at] | file[at + 1] << 8 | file[at + 2] << 16);
            }
        }
        return picture;
    }
};

TEST_F(WaterMarkTextTest, TheFileIsTheTextAroundTheCentre) {
    constexpr wchar_t kChinese[] = L"\u6536\u636E\u526F\u672C";
    std::vector<Text> texts = {
        {},
        {.text = L"FIFTEEN LETTERS"},
        {.text = kChinese, .face = L"SimSun"},
        {.text = kChinese, .angle = 45},
        {.face = L"No Such Face At All"},
        {.text = L"gjpqy"},
        {.text = L"FIFTEEN LETTERS", .size = 8},
        {.size = 72},
        {.text = L"FIFTEEN LETTERS", .size = 72, .style = 3, .angle = 33},
    };
    for (const std::uint8_t style : {std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}}) {
        texts.push_back({.style = style});
    }
    for (const std::int32_t angle : {1, 45, 90, 180, 270, 359, 360}) {
        texts.push_back({.angle = angle});
        texts.push_back({.size = 19, .style = 3, .angle = angle});
    }
    OnPage([&](const Window& page) {
        std::vector<std::vector<std::uint32_t>> seen;
        for (const Text& text : texts) {
            SCOPED_TRACE(testing::Message()
                         << testing::PrintToString(text.text) << ", size " << int{text.size} << ", style "
                         << int{text.style} << ", angle " << text.angle);
            StoreText(text);
            Paint(page);
            const Picture picture = ReadFile();
            EXPECT_FALSE(IsWhite(picture));
            EXPECT_EQ(Difference(Reference(text), picture), "");
            seen.push_back(picture.pixels);
        }
        // A full turn is none; all others differ, or the above would say little.
        std::sort(seen.begin(), seen.end());
        const auto different = std::unique(seen.begin(), seen.end()) - seen.begin();
        EXPECT_EQ(static_cast<std::size_t>(different), texts.size() - 1);
    });
    ExpectSaid({});
}

// The formula puts the middle between the ends and between the line's upper edge and its lower one, counted
// from the base line, on the centre. Of an H only what stands on the base line is ink: its middle lies lower
// by half of what the line is higher, along the turned letters. Bearings, rounding and grey edges are 2.
TEST_F(WaterMarkTextTest, TheInkLiesWhereTheFormulaPutsIt) {
    OnPage([&](const Window& page) {
        for (const std::uint8_t size : {std::uint8_t{8}, std::uint8_t{30}, std::uint8_t{72}}) {
            for (const std::int32_t angle : {0, 45, 90, 135, 180, 270, 359, 360}) {
                SCOPED_TRACE(testing::Message() << int{size} << " points, " << angle << " degrees");
                const Text text = {.text = L"HH", .size = size, .angle = angle};
                double lower = 0;
                Drawn({1, 1}, [&](HDC dc) {
                    const HFONT font = FontOf(text, false);
                    const HGDIOBJ previous = SelectObject(dc, font);
                    SIZE line = {};
                    GetTextExtentPoint32W(dc, L"HH", 2, &line);
                    GLYPHMETRICS letter = {};
                    const MAT2 same = {{0, 1}, {0, 0}, {0, 0}, {0, 1}};
                    EXPECT_NE(GetGlyphOutlineW(dc, L'H', GGO_METRICS, &letter, 0, nullptr, &same), GDI_ERROR);
                    lower = (static_cast<double>(line.cy) - letter.gmBlackBoxY) / 2;
                    SelectObject(dc, previous);
                    DeleteObject(font);
                });
                EXPECT_GT(lower, 0);
                StoreText(text);
                Paint(page);
                const Ink ink = InkOf(ReadFile());
                EXPECT_NEAR((ink.left + ink.right) / 2, 150 + std::sin(Radians(angle)) * lower, 2);
                EXPECT_NEAR((ink.top + ink.bottom) / 2, 150 + std::cos(Radians(angle)) * lower, 2);
            }
        }
    });
}

TEST_F(WaterMarkTextTest, FollowsEveryControlAtOnce) {
    OnPage([&](const Window& page) {
        Text text;
        const auto expectFile = [&] { EXPECT_EQ(Difference(Reference(text), ReadFile()), ""); };
        expectFile();
        page.SelectCombo(IDC_WATERMARK_TEXT, 5);
        text.text = L"FINAL";
        expectFile();
        page.SelectCombo(IDC_WATERMARK_STYLE, 3);
        text.style = 3;
        expectFile();
        page.SetSlider(IDC_WATERMARK_ANGLE, 77);
        text.angle = 77;
        expectFile();
        page.TypeText(IDC_WATERMARK_FONT_SIZE, L"44");
        text.size = 44;
        expectFile();
        const Texts faces = page.ComboItems(IDC_WATERMARK_FONT);
        const auto face = std::find(faces.begin(), faces.end(), L"Liberation Serif");
        ASSERT_NE(face, faces.end());
        page.SelectCombo(IDC_WATERMARK_FONT, static_cast<int>(face - faces.begin()));
        text.face = L"Liberation Serif";
        expectFile();
        page.Send(IDC_WATERMARK_TEXT, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"Mine"));
        SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(IDC_WATERMARK_TEXT, CBN_EDITCHANGE),
                     reinterpret_cast<LPARAM>(page.Control(IDC_WATERMARK_TEXT)));
        text.text = L"Mine";
        expectFile();
        page.Send(IDC_WATERMARK_TEXT, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L""));
        SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(IDC_WATERMARK_TEXT, CBN_EDITCHANGE),
                     reinterpret_cast<LPARAM>(page.Control(IDC_WATERMARK_TEXT)));
        EXPECT_TRUE(IsWhite(ReadFile()));
        ExpectWhite(page);
    });
    ExpectSaid({});
}

TEST_F(WaterMarkTextTest, BrightnessRaisesTheFileToo) {
    OnPage([&](const Window& page) {
        Resize(page, kFile);
        const Picture dark = ReadFile();
        for (const unsigned brightness : {50u, 255u, 200u, 0u}) {
            page.SetSlider(IDC_WATERMARK_BRIGHTNESS, static_cast<int>(brightness));
            Picture expected = dark;
            for (std::uint32_t& pixel : expected.pixels) {
                pixel = Raised(pixel, brightness);
            }
            EXPECT_EQ(Difference(expected, ReadFile()), "") << brightness;
            ExpectShows(page, expected);
        }
    });
}

// At 100 percent of 300 each pixel of the file is one of the frame, at 50 percent of 600 too.
TEST_F(WaterMarkTextTest, TheFrameShowsTheFileWherePositionAndSizeSay) {
    StoreText({.text = L"FIFTEEN LETTERS", .angle = 30});
    OnPage([&](const Window& page) {
        Resize(page, {300, 450});
        const Picture file = ReadFile();
        const int tops[] = {0, 75, 150};
        for (int position = 0; position < 9; ++position) {
            SelectPosition(page, position);
            Picture expected({300, 450});
            expected.Fill({0, tops[position / 3], 300, 300}, file, 300);
            ExpectShows(page, expected);
        }
        SelectPosition(page, kTiled);
        Picture tiled({300, 450});
        tiled.Fill({0, 0, 300, 300}, file, 300);
        tiled.Fill({0, 300, 300, 150}, file, 150);
        ExpectShows(page, tiled);
        SelectPosition(page, 4);
        // Half as large: whichever of each four pixels shows, it is the file's.
        page.SetSlider(IDC_WATERMARK_SIZE, 50);
        const Picture half = Shown(page);
        int odd = 0;
        for (int y = 0; y < 450; ++y) {
            for (int x = 0; x < 300; ++x) {
                const bool inside = x >= 75 && x < 225 && y >= 150 && y < 300;
                const int column = (x - 75) * 2;
                const int row = (y - 150) * 2;
                const std::uint32_t pixel = half.At(x, y);
                const bool isRight =
                    inside ? pixel == file.At(column, row) || pixel == file.At(column + 1, row) ||
                                 pixel == file.At(column, row + 1) || pixel == file.At(column + 1, row + 1)
                           : pixel == kWhite;
                odd += isRight ? 0 : 1;
            }
        }
        EXPECT_EQ(odd, 0);
        EXPECT_FALSE(IsWhite(half));
    });
}

TEST_F(WaterMarkTextTest, ApplyWritesTheFileOnceMore) {
    OpenSheet([&](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectTab(L"Water Mark");
        page.SetSlider(IDC_WATERMARK_BRIGHTNESS, 10);
        const std::wstring name = File().filename().wstring();
        const Picture picture = ReadFile();
        std::filesystem::remove(File());
        fileCalls_.clear();
        sheet.PressApply();
        EXPECT_EQ(std::count(fileCalls_.begin(), fileCalls_.end(), L"write " + name), 1);
        EXPECT_EQ(Difference(picture, ReadFile()), "");
        // Not for another kind.
        page.Click(IDC_WATERMARK_USE_NONE);
        std::filesystem::remove(File());
        sheet.PressApply();
        EXPECT_EQ(Stored().iWaterMarkType, kNone);
        EXPECT_THAT(TemporaryFiles(), IsEmpty());
        sheet.PressCancel();
    });
    ExpectSaid({});
}

TEST_F(WaterMarkTextTest, WithoutAFileTheFrameIsWhiteAndNothingIsSaid) {
    for (const bool hasFolder : {true, false}) {
        refusesWriting_ = hasFolder;
        hasTemporaryFolder_ = hasFolder;
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            const Window page = sheet.SelectTab(L"Water Mark");
            Repaint(page);
            ExpectWhite(page);
            page.Click(IDC_WATERMARK_USE_TEXT);
            page.SetSlider(IDC_WATERMARK_ANGLE, 12);
            ExpectWhite(page);
            sheet.PressApply();
            EXPECT_TRUE(sheet.IsOpen());
            EXPECT_THAT(TemporaryFiles(), IsEmpty());
            // It comes when it can be written again.
            refusesWriting_ = false;
            hasTemporaryFolder_ = true;
            Repaint(page);
            EXPECT_FALSE(IsWhite(Shown(page)));
            EXPECT_FALSE(IsWhite(ReadFile()));
            std::filesystem::remove(File());
            sheet.PressCancel();
        });
    }
    ExpectSaid({});
}

// Of a screen with other dots than the one of the tests: 10 points are 16.67 of 120 to an inch.
TEST_F(WaterMarkTextTest, AsksForItsFontInTheScreensDots) {
    struct Case {
        Text text;
        LONG height, weight;
        BYTE italic;
    };
    const Case cases[] = {
        {{.face = L"Liberation Sans", .size = 30, .style = 0, .angle = 0}, -50, 400, FALSE},
        {{.size = 8, .style = 1, .angle = 45}, -13, 400, TRUE},
        {{.face = L"No Such Face At All", .size = 10, .style = 2, .angle = 359}, -17, 700, FALSE},
        {{.size = 72, .style = 3, .angle = 360}, -120, 700, TRUE},
    };
    dotsPerInch_ = 120;
    OnPage([&](const Window& page) {
        for (const Case& each : cases) {
            SCOPED_TRACE(&each - cases);
            StoreText(each.text);
            fonts_.clear();
            Paint(page);
            ASSERT_EQ(fonts_.size(), 1u);
            const LOGFONTW& font = fonts_[0];
            EXPECT_EQ(font.lfHeight, each.height);
            EXPECT_EQ(font.lfWidth, 0);
            EXPECT_EQ(font.lfEscapement, each.text.angle * 10);
            EXPECT_EQ(font.lfOrientation, each.text.angle * 10);
            EXPECT_EQ(font.lfWeight, each.weight);
            EXPECT_EQ(font.lfItalic != 0, each.italic != 0);
            EXPECT_EQ(font.lfUnderline, 0);
            EXPECT_EQ(font.lfStrikeOut, 0);
            EXPECT_EQ(font.lfClipPrecision, CLIP_LH_ANGLES);
            EXPECT_EQ(font.lfFaceName, each.text.face);
        }
    });
}

// The new bitmap is black before anything is drawn into it; no such file may be left to print.
TEST_F(WaterMarkTextTest, ADrawingThatFailsIsWhiteUntilTheNextRepaint) {
    OnPage([&](const Window& page) {
        Stored().iWaterMarkBrightness = 7;
        Paint(page);
        const Picture right = ReadFile();
        ExpectOutlivesFailures(page,
                               {"CreateCompatibleDC", "SelectObject", "PatBlt", "GetTextExtentPoint32W",
                                "TextOutW", "StretchBlt", "BitBlt"},
                               [&](bool isRight) {
                                   if (isRight || !TemporaryFiles().empty()) {
                                       EXPECT_EQ(Difference(right, ReadFile()), "");
                                   }
                               });
    });
}

}  // namespace
}  // namespace pages::preview
