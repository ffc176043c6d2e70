// The logos of the Download page on their way to the printer: what its two buttons send, down to the byte,
// and what becomes of the page when something fails.
#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>
#include <tuple>
#include <utility>

#include "lone_printer_page.h"
#include "printer_fixture.h"
#include "unit/logo_pictures.h"
#include "utf8.h"

namespace pages {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Path = std::filesystem::path;
using Texts = std::vector<std::wstring>;
using Log = std::vector<std::string>;

constexpr int kTemplate = 113;
constexpr int kList = 1041;
constexpr int kAdd = 1042;
constexpr int kDelete = 1043;
constexpr int kSend = 1044;
constexpr int kClear = 1045;
constexpr int kOriginalType = 1087;
constexpr int kMonoType = 1061;
constexpr int kGreyType = 1088;
constexpr int kNoHalftone = 1089;
constexpr int kDitherM3 = 1090;
constexpr int kDitherM4 = 1091;
constexpr int kDiffuse = 1092;
constexpr int kContrast = 1095;
constexpr int kContrastValue = 1096;
constexpr int kBrightness = 1083;
constexpr int kBrightnessValue = 1086;

constexpr const wchar_t* kLanguages[] = {kEnglish, kSimplifiedChinese, kTraditionalChinese};

// A picture by the grey level of each pixel, rows counted from the top.
struct Picture {
    int width;
    int height;
    std::function<int(int x, int y)> level;
};

// Black and white only, which no halftone but the dither matrices changes; never all white.
Picture Blots(int width, int height, int seed) {
    return {width, height, [seed](int x, int y) {
                return (x == 0 && y == 0) || (7 * x + 5 * y + x * y + seed) % 3 == 0 ? 0 : 255;
            }};
}

Picture Shades(int width, int height, int seed) {
    return {width, height, [seed](int x, int y) { return (17 * x + 31 * y + 13 * seed) % 256; }};
}

enum class Palette { kBlackAndWhite, kWhiteAndBlack, kOther };

Bytes FileOf(const Picture& picture, unsigned bits, Palette palette = Palette::kBlackAndWhite) {
    const auto level = [&picture](int x, int stored) {
        return picture.level(x, picture.height - 1 - stored);
    };
    if (bits != 1) {
        return pictures::File(picture.width, picture.height, bits,
                              [&](int x, int y, int) { return static_cast<std::uint8_t>(level(x, y)); });
    }
    Bytes file = pictures::Front(picture.width, picture.height, 1);
    const Bytes black = {0, 0, 0, 0};
    const Bytes white = {255, 255, 255, 0};
    const bool is_black_first = palette == Palette::kBlackAndWhite;
    std::ranges::copy(is_black_first ? black : white, file.begin() + 54);
    std::ranges::copy(is_black_first ? white : black, file.begin() + 58);
    if (palette == Palette::kOther) {
        file[55] = 254;
    }
    // A set bit has the second colour; what pads a row is set as well.
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < (picture.width + 31) / 32 * 32; x += 8) {
            int byte = 0;
            for (int i = x; i < x + 8; ++i) {
                const bool is_white = i >= picture.width || level(i, y) != 0;
                byte = 2 * byte + (is_white == is_black_first || i >= picture.width ? 1 : 0);
            }
            file.push_back(static_cast<std::uint8_t>(byte));
        }
    }
    return file;
}

void PutSize(Bytes& bytes, int size) {
    bytes.push_back(static_cast<std::uint8_t>(size % 256));
    bytes.push_back(static_cast<std::uint8_t>(size / 256));
}

// A logo as the printer gets it in black and white: columns from the left, each from the top, where rows that
// fill up the first byte are empty.
Bytes MonoLogo(const Picture& picture, const std::function<bool(int x, int y)>& is_black) {
    const int across = (picture.width + 31) / 32 * 4;
    const int down = (picture.height + 7) / 8;
    Bytes bytes;
    PutSize(bytes, across);
    PutSize(bytes, down);
    for (int x = 0; x < across * 8; ++x) {
        for (int first = 0; first < down * 8; first += 8) {
            int byte = 0;
            for (int dot = first; dot < first + 8; ++dot) {
                const int y = dot - (down * 8 - picture.height);
                byte = 2 * byte + (x < picture.width && y >= 0 && is_black(x, y) ? 1 : 0);
            }
            bytes.push_back(static_cast<std::uint8_t>(byte));
        }
    }
    return bytes;
}

Bytes MonoLogo(const Picture& picture) {
    return MonoLogo(picture, [&](int x, int y) { return picture.level(x, y) == 0; });
}

// The first dither matrix turns one place in 8 x 8 round. Which one depends on the source: 24 bits have a
// white pixel where the matrix is 0, 8 bits a black one where it is 63. Rows count from the bottom there.
Bytes DitheredLogo(const Picture& picture, unsigned bits) {
    return MonoLogo(picture, [&](int x, int y) {
        const int stored = picture.height - 1 - y;
        if (bits == 24 && x % 8 == 0 && stored % 8 == 0) {
            return false;
        }
        return (bits == 8 && x % 8 == 0 && stored % 8 == 7) || picture.level(x, y) == 0;
    });
}

// A logo in grey: rows from the top, of each the four highest bits, highest first; set bits are dark.
Bytes GreyLogo(const Picture& picture, int brightness = 0) {
    const int across = ((picture.width + 3) / 4 * 4 + 7) / 8;
    const int down = (picture.height * 4 + 7) / 8;
    Bytes bytes = {1, 0};
    PutSize(bytes, across);
    PutSize(bytes, down);
    for (int y = 0; y < picture.height; ++y) {
        for (int place = 128; place >= 16; place /= 2) {
            for (int first = 0; first < across * 8; first += 8) {
                int byte = 0;
                for (int x = first; x < first + 8; ++x) {
                    const int level =
                        x < picture.width ? std::clamp(picture.level(x, y) + brightness, 0, 255) : 255;
                    byte = 2 * byte + (level / place % 2 == 0 ? 1 : 0);
                }
                bytes.push_back(static_cast<std::uint8_t>(byte));
            }
        }
    }
    bytes.resize(static_cast<std::size_t>(6 + across * down * 8), 0);
    return bytes;
}

enum class Kind : std::uint8_t { kMono = 0x71, kGrey = 0x72 };

Bytes Begin(Kind kind, std::size_t count) {
    return {0x1B, 0x63, 0x3B, 0x01, 0x1C, static_cast<std::uint8_t>(kind), static_cast<std::uint8_t>(count)};
}

Bytes JobOf(Kind kind, const std::vector<Bytes>& logos) {
    Bytes job = Begin(kind, logos.size());
    for (const Bytes& logo : logos) {
        job.insert(job.end(), logo.begin(), logo.end());
    }
    const Bytes end = {0x0A, 0x1B, 0x63, 0x3B, 0x00};
    job.insert(job.end(), end.begin(), end.end());
    return job;
}

const Bytes kClearJob = {0x1B, 0x63, 0x3B, 0x01, 0x1C, 0x71, 0x00, 0x00, 0x0A, 0x1B, 0x63, 0x3B, 0x00};

// The calls of a job of so many writes, of which the `failing`-th call fails.
Log CallsOf(std::size_t writes, std::size_t failing) {
    Log calls = {"StartDocPrinterW", "StartPagePrinter"};
    calls.insert(calls.end(), writes, "WritePrinter");
    if (failing <= calls.size()) {
        calls.resize(failing);
    }
    if (failing > 2) {
        calls.emplace_back("EndPagePrinter");
    }
    if (failing > 1) {
        calls.emplace_back("EndDocPrinter");
    }
    return calls;
}

constexpr std::size_t kNoFailure = 100;

class LogoDownloadTest : public PrinterPageTest {
  protected:
    void SetUp() override {
        PrinterPageTest::SetUp();
        std::filesystem::remove_all(folder_);
        ASSERT_TRUE(std::filesystem::create_directories(folder_));
        hooks_.On("comdlg32.dll", "GetOpenFileNameW", &GetOpenFileNameW,
                  [this](auto, LPOPENFILENAMEW dialog) -> BOOL {
                      chosen_.copy(dialog->lpstrFile, chosen_.size());
                      dialog->lpstrFile[chosen_.size()] = L'\0';
                      return TRUE;
                  });
        PrinterHost();
        record_ = Record();
    }

    void TearDown() override {
        EXPECT_EQ(Differences(record_, Record()), "") << "logos are not kept in the record";
        PrinterPageTest::TearDown();
        std::filesystem::remove_all(folder_);
    }

    Path Write(const std::wstring& name, const Bytes& bytes) const {
        rig::WriteBytes(folder_ / name, bytes);
        return folder_ / name;
    }
    static Path Converted(const Path& source) {
        const std::wstring path = source.native();
        return path.substr(0, path.size() - 4) + L"Temp.bmp";
    }

    void OpenPage(const std::function<void(const Window& page)>& script) {
        OpenPrinterSheet([&](UiDriver&, Sheet& sheet) {
            script(SelectPage(sheet, kDownloadTab));
            EXPECT_EQ(sheet.IsApplyEnabled(), changes_settings_) << "sending changes nothing";
            sheet.PressCancel();
        });
    }

    void Add(const Window& page, const Path& path) {
        const int rows = page.RowCount(kList);
        chosen_ = path.native();
        page.Click(kAdd);
        ASSERT_THAT(boxes_, IsEmpty());
        ASSERT_EQ(page.RowCount(kList), rows + 1);
    }

    // What is to be painted is painted, and with that converted.
    static void Paint(const Window& page) {
        UpdateWindow(page.handle());
        Settle(page);
    }
    static void Look(const Window& page, int row) {
        page.SelectRow(kList, row);
        Paint(page);
    }

    void Adjust(const Window& page, int slider, int value) {
        changes_settings_ = true;
        page.SetSlider(slider, value);
    }

    // The printer's calls since the last look.
    Log TakeLog() {
        const Log all = printer().Log();
        const Log news(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end());
        seen_ = all.size();
        return news;
    }
    Log TakeCalls() {
        Log calls;
        for (const std::string& line : TakeLog()) {
            if (line.find('(') != std::string::npos) {
                calls.push_back(line.substr(0, line.find('(')));
            }
        }
        return calls;
    }

    // Presses a button that sends one whole job, which it does without a word.
    void ExpectJob(const Window& page, int button, const wchar_t* name, const Bytes& bytes,
                   const std::vector<std::size_t>& writes) {
        const std::size_t before = printer().Jobs().size();
        TakeLog();
        page.Click(button);
        EXPECT_THAT(boxes_, IsEmpty());
        const std::vector<PrintJob> jobs = printer().Jobs();
        ASSERT_EQ(jobs.size(), before + 1);
        EXPECT_EQ(jobs.back().document, name);
        EXPECT_TRUE(jobs.back().printed);
        ASSERT_EQ(jobs.back().bytes.size(), bytes.size());
        const auto differ = std::ranges::mismatch(jobs.back().bytes, bytes);
        EXPECT_TRUE(differ.in1 == jobs.back().bytes.end())
            << "at byte " << differ.in1 - jobs.back().bytes.begin();
        const Log log = TakeLog();
        ASSERT_EQ(log.size(), writes.size() + 4);
        EXPECT_EQ(log[0], "StartDocPrinterW(printer, 1, \"" + ToUtf8(name) + "\", output none, \"RAW\") -> " +
                              std::to_string(jobs.back().number));
        EXPECT_EQ(log[1], "StartPagePrinter(printer) -> TRUE");
        for (std::size_t i = 0; i < writes.size(); ++i) {
            EXPECT_TRUE(
                log[2 + i].starts_with("WritePrinter(printer, " + std::to_string(writes[i]) + " bytes:"))
                << log[2 + i];
        }
        EXPECT_EQ(log[log.size() - 2], "EndPagePrinter(printer) -> TRUE");
        EXPECT_EQ(log[log.size() - 1], "EndDocPrinter(printer) -> TRUE");
    }

    // Frame, number of logos, each logo with its size, line feed, frame.
    void ExpectLogos(const Window& page, Kind kind, const std::vector<Bytes>& logos) {
        std::vector<std::size_t> writes = {4, 3};
        for (const Bytes& logo : logos) {
            writes.push_back(logo.size());
        }
        writes.insert(writes.end(), {1, 4});
        ExpectJob(page, kSend, L"LOGO", JobOf(kind, logos), writes);
    }

    // A press after which the job ends before it has all.
    void ExpectBroken(const Window& page, const Bytes& bytes, std::size_t writes) {
        const std::size_t before = printer().Jobs().size();
        TakeLog();
        page.Click(kSend);
        EXPECT_THAT(boxes_, IsEmpty());
        EXPECT_EQ(TakeCalls(), CallsOf(writes, kNoFailure));
        ASSERT_EQ(printer().Jobs().size(), before + 1);
        EXPECT_TRUE(printer().Jobs().back().bytes == bytes);
    }

    void ExpectRefused(const Window& page, int number, const wchar_t* english) {
        boxes_.clear();
        TakeLog();
        page.Click(kSend);
        const std::wstring key = L"MB_DOWNLOAD_ERROR" + std::to_wstring(number);
        ASSERT_EQ(boxes_.size(), 1u);
        EXPECT_EQ(boxes_[0].owner, page.handle());
        EXPECT_EQ(boxes_[0].title, SourceText(language_, L"MessageBox", L"MB_ERROR"));
        EXPECT_EQ(boxes_[0].text, SourceText(language_, L"MessageBox", key.c_str()));
        if (std::wstring_view(language_) == kEnglish) {
            EXPECT_EQ(boxes_[0].title, L"Error");
            EXPECT_EQ(boxes_[0].text, english);
        }
        EXPECT_EQ(boxes_[0].type, UINT{MB_OK}) << "no icon";
        EXPECT_THAT(TakeLog(), IsEmpty());
        boxes_.clear();
    }
    void ExpectNoLogos(const Window& page) { ExpectRefused(page, 5, L"Please select logos first!"); }
    void ExpectNoSize(const Window& page) { ExpectRefused(page, 6, L"Failed to get the size of logo!"); }
    void ExpectTooMuch(const Window& page) {
        ExpectRefused(page, 7, L"The total sizes of all the logos is greater 96K!");
    }

    static std::wstring Cell(const Window& page, int row, int column) {
        wchar_t text[512] = {};
        LVITEMW item = {};
        item.iSubItem = column;
        item.pszText = text;
        item.cchTextMax = static_cast<int>(std::size(text));
        page.Send(kList, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
        return text;
    }

    // All that the group shows, row by row.
    static Texts Shown(const Window& page) {
        Texts shown;
        for (const int radio : {kOriginalType, kMonoType, kGreyType}) {
            shown.push_back(page.IsChecked(radio) ? L"chosen" : L"");
        }
        for (int row = 0; row < page.RowCount(kList); ++row) {
            Look(page, row);
            for (int column = 0; column < 3; ++column) {
                shown.push_back(Cell(page, row, column));
            }
            for (const int radio : {kNoHalftone, kDitherM3, kDitherM4, kDiffuse}) {
                shown.push_back(page.IsChecked(radio) ? L"checked" : L"");
            }
            for (const int value : {kContrastValue, kBrightnessValue}) {
                shown.push_back(page.Text(value));
            }
            for (const int slider : {kContrast, kBrightness}) {
                shown.push_back(std::to_wstring(page.SliderPosition(slider)));
            }
        }
        return shown;
    }

    void Speak(const wchar_t* file) {
        language_ = file;
        ChooseLanguage(file);
    }

    const Path folder_ = std::filesystem::temp_directory_path() / "kvmr72-logos";
    std::wstring chosen_;  // in the dialog's place
    const wchar_t* language_ = kEnglish;

  private:
    Bytes record_;
    std::size_t seen_ = 0;
    bool changes_settings_ = false;
};

// What is sent

// Ten pixels across: one row of four bytes, eight rows, which are one byte down.
//
//   #.........      A frame's corner, by hand: the columns 0 to 9, highest bit on top.
//   .#........
//   ..#.......
//   ...#......
//   ....#.....
//   .....#....
//   ......#...
//   #######..#
TEST_F(LogoDownloadTest, SendsALogoOfTenPixels) {
    const Picture picture = {10, 8, [](int x, int y) {
                                 return x == y || (y == 7 && (x < 7 || x == 9)) ? (x == 7 ? 255 : 0) : 255;
                             }};
    Bytes mono = {0x04, 0x00, 0x01, 0x00, 0x81, 0x41, 0x21, 0x11, 0x09, 0x05, 0x03, 0x00, 0x00, 0x01};
    mono.resize(4 + 32, 0);
    // Two bytes a plane, the same four times: black has no bit of its own, white all.
    Bytes grey = {0x01, 0x00, 0x02, 0x00, 0x04, 0x00};
    for (const auto& [left, right] : {std::pair{0x80, 0x00},
                                      {0x40, 0x00},
                                      {0x20, 0x00},
                                      {0x10, 0x00},
                                      {0x08, 0x00},
                                      {0x04, 0x00},
                                      {0x02, 0x00},
                                      {0xFE, 0x40}}) {
        for (int plane = 0; plane < 4; ++plane) {
            grey.push_back(static_cast<std::uint8_t>(left));
            grey.push_back(static_cast<std::uint8_t>(right));
        }
    }
    const Path path = Write(L"ten.bmp", FileOf(picture, 24));
    OpenPage([&](const Window& page) {
        Add(page, path);
        ExpectLogos(page, Kind::kMono, {mono});
        page.Click(kMonoType);
        ExpectLogos(page, Kind::kMono, {mono});
        page.Click(kGreyType);
        ExpectLogos(page, Kind::kGrey, {grey});
        page.Click(kOriginalType);
        ExpectLogos(page, Kind::kMono, {mono});
    });
}

// Sizes at which rows and columns have more, less or nothing to fill up.
constexpr int kSizes[][2] = {{3, 1},  {7, 8},   {8, 9},   {9, 15}, {31, 16},
                             {32, 1}, {33, 17}, {100, 3}, {64, 64}};
static_assert(std::size(kSizes) == 9);

Picture NinthOf(int number) {
    return Blots(kSizes[number][0], kSizes[number][1], number);
}

TEST_F(LogoDownloadTest, SendsNineOriginals) {
    std::vector<Bytes> logos;
    OpenPage([&](const Window& page) {
        for (int i = 0; i < 9; ++i) {
            // An unlucky name, and what is black and white already as it is.
            const std::wstring name = i == 4 ? L"\u6807\u5FD7 4.bmp" : std::to_wstring(i) + L".bmp";
            Add(page, Write(name, FileOf(NinthOf(i), i % 2 == 0 ? 24 : 1)));
            logos.push_back(MonoLogo(NinthOf(i)));
            if (i == 0 || i == 1 || i == 8) {
                ExpectLogos(page, Kind::kMono, logos);
            }
        }
    });
    EXPECT_EQ(printer().Jobs().size(), 3u);
}

// Nobody looks at most of the rows after the type is chosen.
TEST_F(LogoDownloadTest, SendsNineTransformations) {
    constexpr unsigned kBits[] = {24, 8, 1};
    std::vector<Bytes> plain;
    std::vector<Bytes> dithered;
    OpenPage([&](const Window& page) {
        for (int i = 0; i < 9; ++i) {
            const unsigned bits = kBits[i % 3];
            Add(page, Write(std::to_wstring(i) + L".bmp", FileOf(NinthOf(i), bits)));
            plain.push_back(MonoLogo(NinthOf(i)));
            dithered.push_back(DitheredLogo(NinthOf(i), bits));
        }
        page.Click(kMonoType);
        ExpectLogos(page, Kind::kMono, plain);
        for (int i = 0; i < 9; ++i) {
            page.SelectRow(kList, 0);
            page.Click(kDelete);
        }
        EXPECT_EQ(page.RowCount(kList), 0);
        // Added under this type they start with the first dither matrix.
        for (int i = 0; i < 9; ++i) {
            Add(page, folder_ / (std::to_wstring(i) + L".bmp"));
        }
        ExpectLogos(page, Kind::kMono, dithered);
    });
}

TEST_F(LogoDownloadTest, SendsNineInGrey) {
    std::vector<Bytes> logos;
    OpenPage([&](const Window& page) {
        for (int i = 0; i < 9; ++i) {
            const Picture picture = i % 3 == 2 ? NinthOf(i) : Shades(kSizes[i][0], kSizes[i][1], i);
            constexpr unsigned kBits[] = {24, 8, 1};
            Add(page, Write(std::to_wstring(i) + L".bmp", FileOf(picture, kBits[i % 3])));
            logos.push_back(GreyLogo(picture));
        }
        page.Click(kGreyType);
        ExpectLogos(page, Kind::kGrey, logos);
        // One from the middle goes, the others stay in order.
        page.SelectRow(kList, 3);
        page.Click(kDelete);
        logos.erase(logos.begin() + 3);
        ExpectLogos(page, Kind::kGrey, logos);
    });
}

TEST_F(LogoDownloadTest, SendsTwoWithTheirOwnSettings) {
    const Picture shades = Shades(16, 16, 5);
    const Picture blots = Blots(12, 10, 1);
    OpenPage([&](const Window& page) {
        Add(page, Write(L"shades.bmp", FileOf(shades, 8)));
        Add(page, Write(L"blots.bmp", FileOf(blots, 24)));
        page.Click(kGreyType);
        Look(page, 0);
        Adjust(page, kBrightness, 40);
        Look(page, 1);
        Adjust(page, kBrightness, -30);
        ExpectLogos(page, Kind::kGrey, {GreyLogo(shades, 40), GreyLogo(blots, -30)});
        page.Click(kMonoType);
        Paint(page);
        page.Click(kDitherM3);
        Look(page, 1);
        // Level - 30 is 0 or 225: a quarter of that, 56, is below the matrix's 57 to 63.
        const auto is_black = [&](int x, int y) {
            constexpr int kHigh[8] = {0, 0x02, 0, 0x88, 0, 0x22, 0, 0x88};
            const int stored = blots.height - 1 - y;
            const bool is_above = (kHigh[stored % 8] >> (7 - x % 8) & 1) != 0;
            const bool is_zero = x % 8 == 0 && stored % 8 == 0;
            return blots.level(x, y) == 0 ? !is_zero : is_above;
        };
        // The other has no halftone: black is what is not above the mean of level + 40.
        int sum = 0;
        const auto bright = [&](int x, int y) { return std::min(shades.level(x, y) + 40, 255); };
        for (int i = 0; i < 256; ++i) {
            sum += bright(i % 16, i / 16);
        }
        const Bytes first = MonoLogo(shades, [&](int x, int y) { return bright(x, y) <= sum / 256; });
        ExpectLogos(page, Kind::kMono, {first, MonoLogo(blots, is_black)});
        // An original is not adjusted, whatever is set.
        page.SelectRow(kList, 0);
        page.Click(kDelete);
        page.Click(kOriginalType);
        ExpectLogos(page, Kind::kMono, {MonoLogo(blots)});
    });
}

TEST_F(LogoDownloadTest, TakesTheOppositePaletteForATransformationOnly) {
    const Picture picture = Blots(20, 12, 2);
    OpenPage([&](const Window& page) {
        Add(page, Write(L"opposite.bmp", FileOf(picture, 1, Palette::kWhiteAndBlack)));
        ExpectBroken(page, Begin(Kind::kMono, 1), 2);
        page.Click(kMonoType);
        ExpectLogos(page, Kind::kMono, {MonoLogo(picture)});
    });
}

TEST_F(LogoDownloadTest, EndsTheJobAtAnotherPalette) {
    const Picture picture = Blots(20, 12, 2);
    OpenPage([&](const Window& page) {
        Add(page, Write(L"first.bmp", FileOf(picture, 1)));
        Add(page, Write(L"other.bmp", FileOf(picture, 1, Palette::kOther)));
        Bytes bytes = Begin(Kind::kMono, 2);
        const Bytes first = MonoLogo(picture);
        bytes.insert(bytes.end(), first.begin(), first.end());
        for (const int type : {kOriginalType, kMonoType}) {
            page.Click(type);
            ExpectBroken(page, bytes, 3);
        }
        page.SelectRow(kList, 1);
        page.Click(kDelete);
        ExpectLogos(page, Kind::kMono, {first});
    });
}

// Neither page nor document are ended: the spooler still has them when the next job comes.
TEST_F(LogoDownloadTest, StopsAtAnOriginalThatIsNotBlackAndWhite) {
    const Picture picture = Blots(20, 12, 2);
    OpenPage([&](const Window& page) {
        Add(page, Write(L"first.bmp", FileOf(picture, 24)));
        Add(page, Write(L"levels.bmp", FileOf(picture, 8)));
        TakeLog();
        page.Click(kSend);
        EXPECT_THAT(TakeCalls(), ElementsAre("StartDocPrinterW", "StartPagePrinter", "WritePrinter",
                                             "WritePrinter", "WritePrinter"));
        for (const int button : {kSend, kClear}) {
            page.Click(button);
            const Log log = TakeLog();
            ASSERT_EQ(log.size(), 1u);
            EXPECT_TRUE(log[0].starts_with("StartDocPrinterW(printer, 1, ") &&
                        log[0].ends_with("-> FALSE, error " + std::to_string(ERROR_INVALID_PRINTER_STATE)))
                << log[0];
        }
        EXPECT_THAT(boxes_, IsEmpty());
        EXPECT_THAT(printer().Jobs(), IsEmpty());
        EXPECT_EQ(page.RowCount(kList), 2);
    });
}

TEST_F(LogoDownloadTest, StopsAtAFileThatIsNoBitmapAnyMore) {
    OpenPage([&](const Window& page) {
        const Path path = Write(L"logo.bmp", FileOf(Blots(8, 8, 0), 1));
        Add(page, path);
        rig::WriteBytes(path, Bytes(100, 'x'));
        TakeLog();
        page.Click(kSend);
        EXPECT_THAT(TakeCalls(),
                    ElementsAre("StartDocPrinterW", "StartPagePrinter", "WritePrinter", "WritePrinter"));
        EXPECT_THAT(printer().Jobs(), IsEmpty());
        EXPECT_THAT(boxes_, IsEmpty());
    });
}

// Messages

TEST_F(LogoDownloadTest, AsksForLogosFirst) {
    for (const wchar_t* file : kLanguages) {
        Speak(file);
        OpenPage([&](const Window& page) {
            ExpectNoLogos(page);
            Add(page, Write(L"logo.bmp", FileOf(Blots(8, 8, 0), 1)));
            page.Click(kDelete);
            ExpectNoLogos(page);
        });
    }
    RemoveAllLanguageFiles();
    OpenPage([&](const Window& page) {
        page.Click(kSend);
        ASSERT_EQ(boxes_.size(), 1u);
        EXPECT_EQ(boxes_[0].text, L"Please select logos first!");
        boxes_.clear();
    });
}

// A size is the converted file's; without one the source's; without either there is none.
TEST_F(LogoDownloadTest, TellsOfALogoThatIsGone) {
    const Picture picture = Blots(8, 8, 0);
    for (const wchar_t* file : kLanguages) {
        Speak(file);
        OpenPage([&](const Window& page) {
            Add(page, Write(L"stays.bmp", FileOf(picture, 1)));
            const Path gone = Write(L"gone.bmp", FileOf(picture, 24));
            Add(page, gone);
            ASSERT_TRUE(std::filesystem::remove(Converted(gone)));
            ExpectLogos(page, Kind::kMono, {MonoLogo(picture), MonoLogo(picture)});
            ASSERT_TRUE(std::filesystem::remove(Converted(gone)));
            ASSERT_TRUE(std::filesystem::remove(gone));
            ExpectNoSize(page);
            EXPECT_EQ(page.RowCount(kList), 2);
            rig::WriteBytes(gone, FileOf(picture, 24));
            ExpectLogos(page, Kind::kMono, {MonoLogo(picture), MonoLogo(picture)});
        });
    }
}

TEST_F(LogoDownloadTest, RefusesMoreThanThePrinterKeeps) {
    const Picture picture = Blots(8, 8, 0);
    for (const wchar_t* file : kLanguages) {
        Speak(file);
        OpenPage([&](const Window& page) {
            const Path path = Write(L"logo.bmp", FileOf(picture, 24));
            Add(page, path);
            for (const std::size_t size : {98304u, 98305u}) {
                rig::WriteBytes(Converted(path), Bytes(size));
                ExpectTooMuch(page);
                EXPECT_EQ(std::filesystem::file_size(Converted(path)), size);
            }
            rig::WriteBytes(Converted(path), Bytes(98303));
            ExpectLogos(page, Kind::kMono, {MonoLogo(picture)});
        });
    }
}

TEST_F(LogoDownloadTest, AddsUpWhatNineLogosTake) {
    constexpr std::size_t kEach = 10922;
    const Picture picture = Blots(8, 8, 0);
    OpenPage([&](const Window& page) {
        std::vector<Path> paths;
        for (int i = 0; i < 9; ++i) {
            paths.push_back(Write(std::to_wstring(i) + L".bmp", FileOf(picture, 24)));
            Add(page, paths.back());
        }
        // The fifth has no converted file: its own size counts.
        const auto set_sizes = [&](std::size_t last) {
            for (std::size_t i = 0; i < 8; ++i) {
                rig::WriteBytes(Converted(paths[i]), Bytes(kEach));
            }
            std::filesystem::remove(Converted(paths[4]));
            Bytes longer = FileOf(picture, 24);
            longer.resize(kEach);
            rig::WriteBytes(paths[4], longer);
            rig::WriteBytes(Converted(paths[8]), Bytes(last));
        };
        set_sizes(98304 - 8 * kEach);
        ExpectTooMuch(page);
        set_sizes(98305 - 8 * kEach);
        ExpectTooMuch(page);
        set_sizes(98303 - 8 * kEach);
        ExpectLogos(page, Kind::kMono, std::vector<Bytes>(9, MonoLogo(picture)));
    });
}

// Failures

// The list and every setting are there afterwards, and the next press sends all.
TEST_F(LogoDownloadTest, SurvivesEveryCallThatFails) {
    const Picture first = Blots(9, 9, 0);
    const Picture second = Blots(33, 17, 1);
    const std::vector<Bytes> mono = {MonoLogo(first), DitheredLogo(second, 8)};
    const std::vector<Bytes> grey = {GreyLogo(first, 50), GreyLogo(second)};
    OpenPage([&](const Window& page) {
        Add(page, Write(L"first.bmp", FileOf(first, 24)));
        page.Click(kMonoType);
        Add(page, Write(L"second.bmp", FileOf(second, 8)));
        for (const auto& [type, kind, logos] :
             {std::tuple{kMonoType, Kind::kMono, mono}, {kGreyType, Kind::kGrey, grey}}) {
            page.Click(type);
            Look(page, 0);
            // In black and white 50 more leaves black below the mean.
            Adjust(page, kBrightness, 50);
            const Texts shown = Shown(page);
            const std::vector<std::size_t> pieces = {4, 3, logos[0].size(), logos[1].size(), 1, 4};
            const Bytes whole = JobOf(kind, logos);
            for (std::size_t failing = 1; failing <= 2 + pieces.size() + 2; ++failing) {
                SCOPED_TRACE(failing);
                const std::size_t before = printer().Jobs().size();
                TakeLog();
                printer().FailCall(static_cast<int>(failing), ERROR_PRINT_CANCELLED);
                page.Click(kSend);
                EXPECT_THAT(TakeCalls(), ElementsAreArray(CallsOf(pieces.size(), failing)));
                EXPECT_THAT(boxes_, IsEmpty());
                // Pieces before the one that fails are with the printer.
                const std::vector<PrintJob> jobs = printer().Jobs();
                ASSERT_EQ(jobs.size(), before + (failing == 1 ? 0 : 1));
                if (failing > 1) {
                    const std::size_t written = std::clamp<std::size_t>(failing, 3, 3 + pieces.size()) - 3;
                    std::size_t size = 0;
                    for (std::size_t i = 0; i < written; ++i) {
                        size += pieces[i];
                    }
                    const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
                    EXPECT_TRUE(jobs.back().bytes == Bytes(whole.begin(), end));
                }
            }
            EXPECT_EQ(Shown(page), shown);
            ExpectLogos(page, kind, logos);
        }
    });
}

TEST_F(LogoDownloadTest, SendsNothingWithoutAPrinter) {
    LonePrinterPage lone(PrinterPageDescription(Host(), kTemplate), nullptr);
    lone.Make();
    Add(lone.Page(), Write(L"logo.bmp", FileOf(Blots(8, 8, 0), 24)));
    TakeLog();
    for (const int button : {kSend, kClear}) {
        EXPECT_EQ(lone.Use(button), TRUE);
        EXPECT_THAT(TakeCalls(), ElementsAre("StartDocPrinterW"));
    }
    EXPECT_THAT(boxes_, IsEmpty());
}

// Files that change between Add and Download

TEST_F(LogoDownloadTest, MakesAConvertedFileAgainThatVanished) {
    const Picture picture = Blots(12, 12, 1);
    OpenPage([&](const Window& page) {
        const Path path = Write(L"logo.bmp", FileOf(picture, 8));
        Add(page, path);
        page.Click(kMonoType);
        Paint(page);
        ASSERT_TRUE(std::filesystem::remove(Converted(path)));
        ExpectLogos(page, Kind::kMono, {MonoLogo(picture)});
        page.Click(kGreyType);
        Paint(page);
        ASSERT_TRUE(std::filesystem::remove(Converted(path)));
        ExpectLogos(page, Kind::kGrey, {GreyLogo(picture)});
    });
}

TEST_F(LogoDownloadTest, SendsWhatWasConvertedWhenTheSourceVanished) {
    const Picture picture = Blots(12, 12, 1);
    OpenPage([&](const Window& page) {
        const Path path = Write(L"logo.bmp", FileOf(picture, 24));
        Add(page, path);
        for (const int type : {kMonoType, kGreyType}) {
            rig::WriteBytes(path, FileOf(picture, 24));
            page.Click(type);
            Paint(page);
            ASSERT_TRUE(std::filesystem::remove(path));
            if (type == kMonoType) {
                ExpectLogos(page, Kind::kMono, {MonoLogo(picture)});
            } else {
                ExpectLogos(page, Kind::kGrey, {GreyLogo(picture)});
            }
        }
        // For another type it cannot be converted then, and what it was before does not count.
        page.Click(kOriginalType);
        ExpectNoSize(page);
    });
}

TEST_F(LogoDownloadTest, SendsAnOriginalAsItIsNow) {
    const Picture small = Blots(8, 8, 1);
    const Picture large = Blots(40, 20, 2);
    OpenPage([&](const Window& page) {
        const Path path = Write(L"logo.bmp", FileOf(small, 24));
        Add(page, path);
        rig::WriteBytes(path, FileOf(large, 24));
        ExpectLogos(page, Kind::kMono, {MonoLogo(large)});
        rig::WriteBytes(path, FileOf(small, 1));
        ExpectLogos(page, Kind::kMono, {MonoLogo(small)});
    });
}

// A damaged converted file ends the job, a grey one among black and white ones leaves it.
TEST_F(LogoDownloadTest, EndsTheJobAtADamagedFile) {
    const Picture picture = Blots(12, 12, 1);
    OpenPage([&](const Window& page) {
        const Path path = Write(L"logo.bmp", FileOf(picture, 8));
        Add(page, path);
        page.Click(kGreyType);
        Paint(page);
        for (const Bytes& damaged : {Bytes(), Bytes(5000, 'x'), FileOf(picture, 1)}) {
            rig::WriteBytes(Converted(path), damaged);
            ExpectBroken(page, Begin(Kind::kGrey, 1), 2);
        }
        page.Click(kMonoType);
        Paint(page);
        rig::WriteBytes(Converted(path), FileOf(picture, 1, Palette::kOther));
        ExpectBroken(page, Begin(Kind::kMono, 1), 2);
        rig::WriteBytes(Converted(path), FileOf(picture, 8));
        TakeLog();
        page.Click(kSend);
        EXPECT_THAT(TakeCalls(),
                    ElementsAre("StartDocPrinterW", "StartPagePrinter", "WritePrinter", "WritePrinter"));
    });
}

// The printer gets what is set, also when the press comes before the page is painted.
TEST_F(LogoDownloadTest, SendsWhatIsSetBeforeItIsShown) {
    const Picture picture = Blots(16, 16, 1);
    LonePrinterPage lone(PrinterPageDescription(Host(), kTemplate), printer().handle());
    lone.Make();
    lone.Use(kMonoType);
    const Path path = Write(L"logo.bmp", FileOf(picture, 24));
    Add(lone.Page(), path);
    ExpectLogos(lone.Page(), Kind::kMono, {DitheredLogo(picture, 24)});
    lone.Use(kNoHalftone);
    ExpectLogos(lone.Page(), Kind::kMono, {MonoLogo(picture)});
}

// Clear All Logos

TEST_F(LogoDownloadTest, ClearsLogosWithoutAWord) {
    OpenPage([&](const Window& page) {
        ExpectJob(page, kClear, L"SELFTEST", kClearJob, {4, 5, 4});
        const Path path = Write(L"logo.bmp", FileOf(Blots(8, 8, 0), 24));
        Add(page, path);
        page.Click(kGreyType);
        const Texts shown = Shown(page);
        ExpectJob(page, kClear, L"SELFTEST", kClearJob, {4, 5, 4});
        EXPECT_EQ(Shown(page), shown) << "only the printer forgets";
        EXPECT_TRUE(std::filesystem::exists(Converted(path)));
        for (std::size_t failing = 1; failing <= 7; ++failing) {
            SCOPED_TRACE(failing);
            TakeLog();
            printer().FailCall(static_cast<int>(failing), ERROR_ACCESS_DENIED);
            page.Click(kClear);
            EXPECT_THAT(TakeCalls(), ElementsAreArray(CallsOf(3, failing)));
            EXPECT_THAT(boxes_, IsEmpty());
        }
        ExpectJob(page, kClear, L"SELFTEST", kClearJob, {4, 5, 4});
        EXPECT_EQ(Shown(page), shown);
    });
}

}  // namespace
}  // namespace pages
