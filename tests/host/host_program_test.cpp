// The finished host program as another program starts it: exit codes, record file, and what it plays.
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "files.h"
#include "pages/page_fixture.h"
#include "plugin/default_record.h"
#include "program_fixture.h"
#include "utf8.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(HostProgramTest, EndsWithTwoForAWrongCommandLine) {
    for (const wchar_t* arguments : {L"--wrong", L"--record", L"--watermark", L"--language DEU",
                                     L"--help --wrong", L"--sheet printer --prints list.tsv"}) {
        SCOPED_TRACE(ToUtf8(arguments));
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(run.exit_code, 2u);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: "), HasSubstr("--help")));
    }
}

TEST_F(HostProgramTest, PrintsHelpAndVersion) {
    const ProgramRun help = Run(L"--help");
    EXPECT_EQ(help.exit_code, 0u);
    EXPECT_THAT(help.output, AllOf(StartsWith("usage: KVMR72Host"), HasSubstr("--record FILE"),
                                   HasSubstr("--headless"), HasSubstr("Exit codes: 0")));
    EXPECT_EQ(help.errors, "");

    const ProgramRun version = Run(L"--version");
    EXPECT_EQ(version.exit_code, 0u);
    EXPECT_THAT(version.output, testing::MatchesRegex("KVMR72Host \\d+\\.\\d+\\.\\d+\\s+"));
    EXPECT_EQ(version.errors, "");
}

TEST_F(HostProgramTest, FailsWithoutThePlugin) {
    const ProgramRun run = Run(L"--dll missing.dll --play");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: "), HasSubstr("missing.dll")));
}

TEST_F(HostProgramTest, LeavesARefusedRecordFileAlone) {
    Bytes foreign = PatternRecord(17);
    Put32(foreign, 4, 0x12345678);
    Bytes cut = PatternRecord(17);
    cut.resize(1000);
    for (const Bytes& content : {foreign, cut, Bytes{1, 2, 3}, Bytes{}, Bytes(65537)}) {
        SCOPED_TRACE(content.size());
        rig::WriteBytes(File(L"record.bin"), content);
        const ProgramRun run = Run(L"--play --record record.bin");
        EXPECT_EQ(run.exit_code, 1u);
        EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: "), HasSubstr("record.bin")));
        EXPECT_EQ(rig::ReadBytes(File(L"record.bin")), content);
    }
}

// Before the sheet opens, not when its work is done and lost.
TEST_F(HostProgramTest, FailsAtTheStartWhereNothingCanBeWritten) {
    std::filesystem::create_directory(File(L"folder"));
    const Bytes record = Record();
    rig::WriteBytes(File(L"sealed.bin"), record);
    SetFileAttributesW(File(L"sealed.bin").c_str(), FILE_ATTRIBUTE_READONLY);
    const struct {
        const wchar_t* option;
        const wchar_t* file;
    } kCases[] = {{L"--trace ", L"folder"},
                  {L"--trace ", L"missing/trace.txt"},
                  {L"--record ", L"folder"},
                  {L"--record ", L"missing/record.bin"},
                  {L"--record ", L"sealed.bin"}};
    for (const auto& refused : kCases) {
        const ProgramRun run = Run(std::wstring(L"--play ") + refused.option + refused.file);
        EXPECT_EQ(run.exit_code, 1u);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "KVMR72Host: cannot write " + ToUtf8(refused.file) + "\r\n");
    }
    EXPECT_TRUE(std::filesystem::is_empty(File(L"folder")));
    EXPECT_EQ(rig::ReadBytes(File(L"sealed.bin")), record);
    SetFileAttributesW(File(L"sealed.bin").c_str(), FILE_ATTRIBUTE_NORMAL);
}

// What stands for a device is never written over: as administrator that could take the device away.
TEST_F(HostProgramTest, KnowsDevices) {
    std::filesystem::create_directory(File(L"folder"));
    rig::WriteBytes(File(L"file"), Record());
    EXPECT_TRUE(IsDevice(L"NUL"));
    EXPECT_FALSE(IsDevice(File(L"file")));
    EXPECT_FALSE(IsDevice(File(L"folder")));
    EXPECT_FALSE(IsDevice(File(L"missing")));
}

TEST_F(HostProgramTest, TriesAFileWithoutTouchingIt) {
    const Bytes record = Record();
    rig::WriteBytes(File(L"record.bin"), record);
    EXPECT_EQ(Run(L"--dll missing.dll --record record.bin").exit_code, 1u);
    EXPECT_EQ(Run(L"--dll missing.dll --record new.bin").exit_code, 1u);
    EXPECT_EQ(rig::ReadBytes(File(L"record.bin")), record);
    for (const auto& entry : std::filesystem::directory_iterator(File(L""))) {
        EXPECT_NE(entry.path().filename(), L"new.bin");
        EXPECT_NE(entry.path().extension(), L".part");
    }
}

// What is played

// A picture file of the program, 24 bits to the pixel, rows from the bottom.
class Picture {
  public:
    explicit Picture(const std::filesystem::path& path) {
        bytes_ = rig::ReadBytes(path).value_or(Bytes());
        EXPECT_THAT(bytes_, testing::SizeIs(testing::Gt(kHeaders))) << path;
        bytes_.resize(std::max(bytes_.size(), kHeaders));
        std::memcpy(&width_, &bytes_[18], sizeof width_);
        std::memcpy(&height_, &bytes_[22], sizeof height_);
        EXPECT_EQ(bytes_.size(), kHeaders + Stride() * static_cast<std::size_t>(height_)) << path;
    }

    bool operator==(const Picture& other) const { return bytes_ == other.bytes_; }

    // Pixels of this colour.
    int Count(std::array<std::uint8_t, 3> blue_green_red) const {
        int count = 0;
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x) {
                count += std::equal(blue_green_red.begin(), blue_green_red.end(), Pixel(x, y)) ? 1 : 0;
            }
        }
        return count;
    }

    // The rows of pixels under a sheet's frame, which tells whether it has the focus.
    Bytes UnderTheFrame() const {
        constexpr int kFrame = 26;
        const auto rows = static_cast<std::ptrdiff_t>(std::max(height_ - kFrame, 0));
        const auto first = bytes_.begin() + kHeaders;
        return {first, first + rows * static_cast<std::ptrdiff_t>(Stride())};
    }

  private:
    static constexpr std::size_t kHeaders = 54;

    std::size_t Stride() const { return (static_cast<std::size_t>(width_) * 3 + 3) / 4 * 4; }
    const std::uint8_t* Pixel(int x, int y) const {
        return &bytes_[kHeaders + Stride() * static_cast<std::size_t>(y) + static_cast<std::size_t>(x) * 3];
    }

    Bytes bytes_;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
};

// A bitmap file of 16 by 12 pixels of one colour that stands nowhere on a page.
Bytes WaterMarkFile(std::uint16_t bits = 24) {
    Bytes file(54 + 16 * 3 * 12);
    file[0] = 'B';
    file[1] = 'M';
    Put32(file, 2, static_cast<std::uint32_t>(file.size()));
    Put32(file, 10, 54);
    Put32(file, 14, 40);
    Put32(file, 18, 16);
    Put32(file, 22, 12);
    file[26] = 1;
    file[28] = static_cast<std::uint8_t>(bits);
    for (std::size_t at = 54; at < file.size(); at += 3) {
        file[at] = 200;
        file[at + 1] = 10;
        file[at + 2] = 90;
    }
    return file;
}
// Raised by the brightness of a new record, 50.
constexpr std::array<std::uint8_t, 3> kShownWaterMark = {250, 60, 140};
constexpr std::array<std::uint8_t, 3> kShownText = {50, 50, 50};

void PutText(Bytes& record, std::size_t offset, const std::wstring& text) {
    for (const wchar_t unit : text) {
        record.at(offset++) = static_cast<std::uint8_t>(unit & 0xFF);
        record.at(offset++) = static_cast<std::uint8_t>(unit >> 8);
    }
}

struct PlayedLanguage {
    const wchar_t* name;
    const wchar_t* file;
    const wchar_t* next;  // the one that is played
};
constexpr PlayedLanguage kPlayedLanguages[] = {
    {L"ENG", pages::kEnglish, pages::kSimplifiedChinese},
    {L"CHN", pages::kSimplifiedChinese, pages::kTraditionalChinese},
    {L"CHF", pages::kTraditionalChinese, pages::kEnglish},
};

constexpr const wchar_t* kPictures[] = {L"main",
                                        L"water-mark",
                                        L"operation",
                                        L"barcode-1d",
                                        L"barcode-2d",
                                        L"version",
                                        L"operation-start-of-document",
                                        L"operation-start-of-page",
                                        L"operation-end-of-page",
                                        L"operation-end-of-document",
                                        L"water-mark-image",
                                        L"water-mark-tiled",
                                        L"water-mark-text",
                                        L"barcode-1d-general",
                                        L"barcode-1d-databar",
                                        L"barcode-2d-pdf417",
                                        L"barcode-2d-databar",
                                        L"barcode-2d-qr",
                                        L"barcode-2d-maxi-code",
                                        L"language-main",
                                        L"language-print-density"};

class HostPlayTest : public HostProgramTest {
  protected:
    // The default record with what is played in it.
    Bytes PlayedRecord(const std::wstring& watermark) {
        Bytes record = Record();
        record.at(147) = 1;    // first drawer, 10 ms
        record.at(148) = 1;    // partial cut
        record.at(596) = 12;   // 1D Code1: GS1 DataBar Expanded
        record.at(604) = 2;    // HRI below
        record.at(612) = 187;  // 163 and 24 are 74.8 points, so 75, which are 187 dots
        record.at(888) = 30;   // 2D Code1: rows and level of PDF417, model of QR Code
        record.at(889) = 2;
        record.at(906) = 2;
        record.at(884) = 5;  // 2D Code1: Maxi Code
        record.at(998) = 1;  // print as image
        PutText(record, 1000, watermark);
        record.at(1250) = 2;  // text
        PutText(record, 1252, L"COPY");
        PutText(record, 1284, L"Liberation Sans");
        record.at(1385) = 2;   // bold
        record.at(1388) = 30;  // angle
        record.at(1392) = 4;   // centre
        record.at(1393) = 90;  // size
        record.at(1395) = 80;  // scale
        PutText(record, 1398, L"64mm x 297mm");
        record.at(1462) = 1;  // zoom
        return record;
    }

    // A page of the host or the plug-in as a sheet shows it that is opened in a language with the played
    // settings.
    Picture PictureOf(const wchar_t* language, int page) {
        const std::filesystem::path file = File(L"expected.bmp");
        StopHost();
        pages::ChooseLanguage(language);
        SetRecord(PlayedRecord(L""));
        Host().options().item(DriverOptions::kForms).Sel = 2;
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            sheet.SelectPage(page);
            sheet.Screenshot(file);
        });
        StopHost();
        return Picture(file);
    }
};

TEST_F(HostPlayTest, PlaysInEveryLanguage) {
    rig::WriteBytes(File(L"logo.bmp"), WaterMarkFile());
    const Bytes expected = PlayedRecord(File(L"logo.bmp").native());
    std::string output;
    std::map<std::wstring, std::vector<Picture>> by_name;
    for (const PlayedLanguage& language : kPlayedLanguages) {
        SCOPED_TRACE(ToUtf8(language.name));
        const std::wstring name = language.name;
        const ProgramRun run = Run(L"--headless --watermark logo.bmp --language " + name + L" --pictures " +
                                   name + L" --record " + name + L".bin --trace " + name + L".txt");
        EXPECT_EQ(run.exit_code, 0u) << run.errors;
        EXPECT_EQ(run.errors, "");
        const auto record = rig::ReadBytes(File((name + L".bin").c_str()));
        ASSERT_TRUE(record.has_value());
        EXPECT_EQ(pages::Differences(expected, *record), "");
        const std::string trace = Text((name + L".txt").c_str());
        EXPECT_THAT(trace, StartsWith("UI:  Process attach."));
        EXPECT_THAT(trace, HasSubstr("UI:  IOemUI:DocumentPropertySheets entry.\r\n"));
        // It ends in the language that it began with.
        EXPECT_EQ(rig::LanguageValue(L"LANGUAGE_KVMR72"), language.file);
        EXPECT_EQ(rig::LanguageValue(L"IsFirstRun_KVMR72"), L"FALSE");

        // What a person reads of the changes is no matter of language.
        EXPECT_THAT(run.output, AllOf(StartsWith("Printed: Barcode (UPC-A), 33 bytes\r\n"),
                                      HasSubstr("\nChanged in the record:\r\n")));
        if (output.empty()) {
            output = run.output;
        }
        EXPECT_EQ(run.output, output);
        for (const wchar_t* picture : kPictures) {
            by_name[picture].emplace_back(File(name.c_str()) / (std::wstring(picture) + L".bmp"));
        }
    }
    EXPECT_THAT(output, AllOf(HasSubstr("bDocStart_Cashdrawer       12 -> 1"),
                              HasSubstr("bPrintAsImage              0 -> 1"),
                              HasSubstr("iWaterMarkAngle            45 -> 30"),
                              HasSubstr("szFormName                 \"\" -> \"64mm x 297mm\""),
                              HasSubstr("Barcode1D[0].bType         0 -> 12"),
                              HasSubstr("Barcode2D[0].bType2D       0 -> 5")));
    // Nineteen prints, twenty fields below their headline, and nothing else.
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 19 + 1 + 20);

    for (const auto& [name, pictures] : by_name) {
        EXPECT_FALSE(pictures[0] == pictures[1] || pictures[1] == pictures[2] || pictures[0] == pictures[2])
            << ToUtf8(name) << " is the same in two languages";
    }
    // Each group of controls.
    constexpr const wchar_t* kGroups[] = {L"barcode-1d-general", L"barcode-1d-databar",
                                          L"barcode-2d-pdf417",  L"barcode-2d-databar",
                                          L"barcode-2d-qr",      L"barcode-2d-maxi-code"};
    for (const wchar_t* const one : kGroups) {
        for (const wchar_t* const other : kGroups) {
            EXPECT_TRUE(one == other || !(by_name.at(one)[0] == by_name.at(other)[0])) << ToUtf8(one);
        }
    }
}

TEST_F(HostPlayTest, PicturesEachWaterMark) {
    rig::WriteBytes(File(L"logo.bmp"), WaterMarkFile());
    const ProgramRun run = Run(L"--headless --watermark logo.bmp");
    ASSERT_EQ(run.exit_code, 0u) << run.errors;
    const auto count = [&](const wchar_t* name, std::array<std::uint8_t, 3> colour) {
        return Picture(File(L"pictures") / name).Count(colour);
    };
    EXPECT_EQ(count(L"water-mark.bmp", kShownWaterMark), 0);
    EXPECT_EQ(count(L"water-mark-text.bmp", kShownWaterMark), 0);
    const int image = count(L"water-mark-image.bmp", kShownWaterMark);
    const int tiled = count(L"water-mark-tiled.bmp", kShownWaterMark);
    // Three fifths of the frame's width; three tiles side by side and the frame's height of them.
    EXPECT_GT(image, 2000);
    EXPECT_GT(tiled, 4 * image);
    EXPECT_EQ(count(L"water-mark.bmp", kShownText), 0);
    EXPECT_EQ(count(L"water-mark-image.bmp", kShownText), 0);
    EXPECT_GT(count(L"water-mark-text.bmp", kShownText), 100);
}

TEST_F(HostPlayTest, PicturesTheSheetAsInTheOtherLanguage) {
    constexpr int kDensityTab = 1;
    constexpr int kMainPage = 2;
    for (const PlayedLanguage& language : kPlayedLanguages) {
        SCOPED_TRACE(ToUtf8(language.name));
        const std::wstring name = language.name;
        const ProgramRun run = Run(L"--headless --language " + name + L" --pictures " + name);
        ASSERT_EQ(run.exit_code, 0u) << run.errors;
        const auto played = [&](const wchar_t* picture) {
            return Picture(File(name.c_str()) / picture).UnderTheFrame();
        };
        EXPECT_TRUE(played(L"language-main.bmp") == PictureOf(language.next, kMainPage).UnderTheFrame());
        EXPECT_TRUE(played(L"language-print-density.bmp") ==
                    PictureOf(language.next, kDensityTab).UnderTheFrame());
        EXPECT_FALSE(played(L"language-main.bmp") == PictureOf(language.file, kMainPage).UnderTheFrame());
        EXPECT_FALSE(played(L"language-print-density.bmp") ==
                     PictureOf(language.file, kDensityTab).UnderTheFrame());
    }
}

TEST_F(HostPlayTest, PlaysATextWithoutABitmap) {
    const Bytes expected = PlayedRecord(L"");
    const ProgramRun run = Run(L"--headless --record record.bin");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    const auto record = rig::ReadBytes(File(L"record.bin"));
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(pages::Differences(expected, *record), "");
    EXPECT_TRUE(std::filesystem::exists(File(L"pictures") / L"water-mark-text.bmp"));
    EXPECT_FALSE(std::filesystem::exists(File(L"pictures") / L"water-mark-image.bmp"));
}

// The second time everything that is played is set already, and the first time's bitmap is gone.
TEST_F(HostPlayTest, PlaysIntoWhatItPlayedBefore) {
    rig::WriteBytes(File(L"first.bmp"), WaterMarkFile());
    rig::WriteBytes(File(L"second.bmp"), WaterMarkFile());
    ASSERT_EQ(Run(L"--play --record record.bin --watermark first.bmp").exit_code, 0u);
    std::filesystem::remove(File(L"first.bmp"));
    const ProgramRun run = Run(L"--play --record record.bin --watermark second.bmp");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    const auto record = rig::ReadBytes(File(L"record.bin"));
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(pages::Differences(PlayedRecord(File(L"second.bmp").native()), *record), "");
}

TEST_F(HostPlayTest, FailsWithABitmapThatThePageRefuses) {
    rig::WriteBytes(File(L"deep.bmp"), WaterMarkFile(32));
    const std::wstring reason = pages::SourceText(pages::kEnglish, L"MessageBox", L"MB_WATERMARK_ERROR5");
    const ProgramRun run = Run(L"--play --record record.bin --watermark deep.bmp");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_THAT(run.errors,
                AllOf(StartsWith("KVMR72Host: "), HasSubstr("deep.bmp"), HasSubstr(ToUtf8(reason))));
    EXPECT_FALSE(std::filesystem::exists(File(L"record.bin")));
}

TEST_F(HostPlayTest, FailsWithoutTheBitmap) {
    const ProgramRun run = Run(L"--play --record record.bin --watermark missing.bmp");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: "), HasSubstr("missing.bmp")));
    EXPECT_FALSE(std::filesystem::exists(File(L"record.bin")));
}

TEST_F(HostPlayTest, PlaysIntoAConvertedRecordFile) {
    Bytes stored = PatternRecord(17);
    // The block of the start of the document within what its dialog can show.
    std::fill(stored.begin() + 16, stored.begin() + 161, std::uint8_t{0});
    stored.resize(600);
    Put32(stored, 0, 600);
    rig::WriteBytes(File(L"record.bin"), stored);
    const ProgramRun run = Run(L"--play --record record.bin");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("Converted a record of 600 bytes."));
    const auto record = rig::ReadBytes(File(L"record.bin"));
    ASSERT_TRUE(record.has_value());
    ASSERT_EQ(record->size(), 1976u);
    EXPECT_EQ((*record)[147], 1);
    EXPECT_EQ((*record)[148], 1);
    EXPECT_EQ((*record)[599], stored[599]);
}

}  // namespace
