// Settings records in words: what is said of each value, and what of files that hold no record, several, or
// one that nobody wrote.
#include <windows.h>

#include <algorithm>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "plugin/default_record.h"
#include "program_fixture.h"
#include "record_fields.h"
#include "rig/guarded_record.h"
#include "show_record.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

Bytes DefaultRecord() {
    Bytes record(kRecordSize);
    PutHeader(record, kRecordSize, kSignature, 1);
    PutDefaults(record);
    return record;
}

Bytes With(std::size_t offset, std::size_t size, std::int64_t value) {
    Bytes record = DefaultRecord();
    for (std::size_t i = 0; i < size; ++i) {
        record[offset + i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> 8 * i);
    }
    return record;
}

// Nothing may be read behind the file's last byte.
std::string Describe(const Bytes& file) {
    const rig::GuardedRecord guarded{std::span<const std::uint8_t>(file)};
    return DescribeRecords({guarded.data(), guarded.size()});
}

RecordSearch Find(const Bytes& file) {
    const rig::GuardedRecord guarded{std::span<const std::uint8_t>(file)};
    return FindRecords({guarded.data(), guarded.size()});
}

std::string Refusal(const Bytes& file) {
    try {
        Describe(file);
    } catch (const NoRecordError& error) {
        return error.what();
    }
    ADD_FAILURE() << "shown";
    return {};
}

std::filesystem::path ProgramFile() {
    wchar_t own_path[1024] = {};
    GetModuleFileNameW(nullptr, own_path, static_cast<DWORD>(std::size(own_path)));
    return std::filesystem::path(own_path).parent_path() / L"KVMR72Host.exe";
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// A field's line, the columns one blank apart. Of an array's fonts the first one's.
std::string LineOf(const std::string& text, const std::string& field) {
    for (const std::string& line : LinesOf(text)) {
        if (line.substr(std::min<std::size_t>(line.size(), 2)).starts_with(field + " ")) {
            return std::regex_replace(line.substr(2), std::regex(" +"), " ");
        }
    }
    return "no " + field;
}

std::vector<std::string> MarkedLines(const std::string& text) {
    std::vector<std::string> marked;
    std::ranges::copy_if(LinesOf(text), std::back_inserter(marked),
                         [](const std::string& line) { return line.starts_with("! "); });
    return marked;
}

// What is said

TEST(ShowRecordTest, FindsNothingInADefaultRecord) {
    const std::string text = Describe(DefaultRecord());
    EXPECT_THAT(text, AllOf(StartsWith("Settings record at byte 0 of 1976\n"
                                       "\n"
                                       "Header\n"
                                       "  dmOEMExtra.dwSize       0x000007B8  1976 bytes\n"
                                       "  dmOEMExtra.dwSignature  0x00523732  this driver's\n"
                                       "  dmOEMExtra.dwVersion    0x00000001  format 1\n"
                                       "  dwDriverData            0           for the driver\n"
                                       "\n"
                                       "Start Document Operation\n"),
                            EndsWith("\nNothing is out of range.\n")));
    EXPECT_THAT(MarkedLines(text), IsEmpty());
}

TEST(ShowRecordTest, HasEveryFieldOnce) {
    std::map<std::string, int> expected;
    for (const RecordField& field : RecordFields()) {
        const bool isReserved = field.name.find("reserved") != std::string::npos;
        const std::size_t slot = field.name.find("].");
        ++expected[isReserved || slot == std::string::npos ? field.name : field.name.substr(slot + 2)];
    }
    std::map<std::string, int> shown;
    for (const std::string& line : LinesOf(Describe(DefaultRecord()))) {
        if (line.starts_with("  ")) {
            ++shown[line.substr(2, line.find(' ', 2) - 2)];
        }
    }
    EXPECT_EQ(shown, expected);
}

TEST(ShowRecordTest, TellsGroupsInTheOrderOfAJobThenOfThePages) {
    std::vector<std::string> titles;
    for (const std::string& line : LinesOf(Describe(DefaultRecord()))) {
        if (!line.empty() && line[0] != ' ') {
            titles.push_back(line);
        }
    }
    EXPECT_THAT(titles, ElementsAre("Settings record at byte 0 of 1976", "Header", "Start Document Operation",
                                    "Start Page Operation", "End Page Operation", "End Document Operation",
                                    "1D Code, Barcode1D[0]", "1D Code, Barcode1D[1]", "1D Code, Barcode1D[2]",
                                    "1D Code, Barcode1D[3]", "1D Code, Barcode1D[4]", "1D Code, Barcode1D[5]",
                                    "1D Code, Barcode1D[6]", "1D Code, Barcode1D[7]", "2D Code, Barcode2D[0]",
                                    "2D Code, Barcode2D[1]", "Main", "Water Mark", "Reserved, read by nobody",
                                    "Nothing is out of range."));
}

TEST(ShowRecordTest, SaysWhatAValueMeans) {
    const struct {
        std::size_t offset;
        int value;
        const char* field;
        const char* line;
    } kCases[] = {
        {16, 1, "bDocStart", "bDocStart 1 on"},
        {147, 6, "bDocStart_Cashdrawer", "bDocStart_Cashdrawer 6 Cash Drawer #2 Waiting 20ms"},
        {152, 1, "dwDocStart_DrawerOrHerald", "dwDocStart_DrawerOrHerald 1 Herald"},
        {292, 12, "bPageStart_Cashdrawer", "bPageStart_Cashdrawer 12 Cash Drawer #1+#2 Waiting 60ms"},
        {440, 2, "bDocEnd_CutPaper", "bDocEnd_CutPaper 2 Full Cut"},
        {442, 200, "bDocEnd_BuzzerVolume", "bDocEnd_BuzzerVolume 200 of 255"},
        {441, 100, "bDocEnd_Feed", "bDocEnd_Feed 100 mm"},
        {448, 3, "bDocEnd_Buzzer", "bDocEnd_Buzzer 3 Beep five"},
        {587, 1, "bPageEnd_Herald", "bPageEnd_Herald 1 Disable"},
        {593, 9, "bPageEnd_Logo", "bPageEnd_Logo 9 Print Logo9"},
        {594, 0, "bPageEnd_LogoAlign", "bPageEnd_LogoAlign 0 Left"},
        {594, 1, "bPageEnd_LogoAlign", "bPageEnd_LogoAlign 1 Centered"},
        {594, 2, "bPageEnd_LogoAlign", "bPageEnd_LogoAlign 2 Right"},
        {595, 1, "bPageEnd_LogoPosition", "bPageEnd_LogoPosition 1 After Cut"},
        {596, 8, "bType", "bType 8 Code128"},
        {605, 1, "bHriFont", "bHriFont 1 Font B"},
        {629, 4, "bGs1Hri", "bGs1Hri 4 None"},
        {630, 0, "bGs1ExpandedAi", "bGs1ExpandedAi 0 None"},
        {884, 5, "bType2D", "bType2D 5 Maxi Code"},
        {889, 8, "bPdfEccLevel", "bPdfEccLevel 8 Error Correction Level 8"},
        {902, 2, "bGs1Hri2D", "bGs1Hri2D 2 Primary Data"},
        {905, 1, "bQrLanguage", "bQrLanguage 1 Japanese"},
        {906, 2, "bQrModel", "bQrModel 2 model 2"},
        {907, 0, "bQrEccLevel", "bQrEccLevel 0 L"},
        {907, 1, "bQrEccLevel", "bQrEccLevel 1 M"},
        {907, 2, "bQrEccLevel", "bQrEccLevel 2 H"},
        {907, 3, "bQrEccLevel", "bQrEccLevel 3 Q"},
        {998, 1, "bPrintAsImage", "bPrintAsImage 1 Yes"},
        {1250, 2, "iWaterMarkType", "iWaterMarkType 2 Text Water Mark"},
        {1385, 3, "iWaterMarkFontStyle", "iWaterMarkFontStyle 3 Bold Italic"},
        {1392, 9, "iWaterMarkPosition", "iWaterMarkPosition 9 Tiled"},
        {1395, 101, "iScale", "iScale 101 %, which only the arrows reach"},
        {1396, 1, "bRotate180", "bRotate180 1 Rotate by 180 Degrees"},
        {1463, 1, "LOGRecord", "LOGRecord 1 on"},
    };
    for (const auto& value : kCases) {
        const std::string text = Describe(With(value.offset, 1, value.value));
        EXPECT_EQ(LineOf(text, value.field), value.line);
        EXPECT_THAT(MarkedLines(text), IsEmpty());
    }
    // 163 dots of 25.4 / 180 mm are 23.0011 mm; of 0.4 points 65.2, on the grid 65.
    EXPECT_EQ(LineOf(Describe(DefaultRecord()), "dwFontHeight"), "dwFontHeight 163 23.0 mm, 65.0 points");
    EXPECT_EQ(LineOf(Describe(With(1462, 1, 1)), "bPrintAsImage"),
              "bPrintAsImage 0 No, cannot be chosen: zoom, rotation or a watermark prints as image");
    EXPECT_EQ(LineOf(Describe(DefaultRecord()), "szLogPath"), R"(szLogPath "C:\VELDDriverlog\KVM-R72")");
    EXPECT_EQ(LineOf(Describe(DefaultRecord()), "WaterMarkPicName"), R"(WaterMarkPicName "" no bitmap)");
}

// At either end of a range nothing is marked, beyond it the one field is.
TEST(ShowRecordTest, KnowsEveryRange) {
    const struct {
        std::size_t offset;
        std::size_t size;
        std::int64_t least;
        std::int64_t most;
    } kRanges[] = {
        {12, 4, INT32_MIN, 100}, {16, 1, 0, 1},      {17, 1, 0, 1},    {147, 1, 0, 12},   {148, 1, 0, 2},
        {149, 1, 0, 100},        {150, 1, 0, 1},     {152, 4, 0, 1},   {157, 1, 0, 5},    {158, 1, 0, 9},
        {159, 1, 0, 2},          {160, 1, 0, 1},     {161, 1, 0, 1},   {293, 1, 0, 2},    {304, 1, 0, 5},
        {308, 1, 0, 1},          {440, 1, 0, 2},     {449, 1, 0, 9},   {452, 1, 0, 1},    {585, 1, 0, 100},
        {595, 1, 0, 1},          {596, 1, 0, 12},    {146, 1, 0, 128}, {605, 1, 0, 1},    {616, 1, 1, 6},
        {620, 4, 2, 250},        {624, 4, 1, 10},    {628, 1, 1, 10},  {629, 1, 1, 4},    {630, 1, 0, 1},
        {848, 1, 0, 12},         {884, 1, 0, 5},     {885, 1, 1, 7},   {886, 1, 2, 25},   {887, 1, 1, 30},
        {888, 1, 3, 90},         {889, 1, 0, 8},     {890, 1, 1, 6},   {892, 4, 2, 250},  {896, 4, 1, 10},
        {900, 1, 1, 10},         {901, 1, 2, 20},    {902, 1, 1, 4},   {903, 1, 0, 1},    {904, 1, 1, 24},
        {905, 1, 0, 1},          {906, 1, 1, 2},     {907, 1, 0, 3},   {931, 1, 0, 3},    {998, 1, 0, 1},
        {1250, 1, 0, 2},         {1384, 1, 8, 72},   {1385, 1, 0, 3},  {1388, 4, 0, 360}, {1392, 1, 0, 9},
        {1393, 1, 0, 100},       {1395, 1, 10, 200}, {1396, 1, 0, 1},  {1462, 1, 0, 1},   {1463, 1, 0, 1},
    };
    for (const auto& range : kRanges) {
        const auto mark_of = [&](std::int64_t value) {
            return MarkedLines(Describe(With(range.offset, range.size, value)));
        };
        SCOPED_TRACE(range.offset);
        EXPECT_THAT(mark_of(range.least), IsEmpty());
        EXPECT_THAT(mark_of(range.most), IsEmpty());
        EXPECT_THAT(mark_of(range.most + 1), testing::SizeIs(1));
        if (range.least > 0 || (range.size == 4 && range.least > INT32_MIN)) {
            EXPECT_THAT(mark_of(range.least - 1), testing::SizeIs(1));
        }
    }
}

TEST(ShowRecordTest, SaysWhatThePluginMakesOfWhatIsOutOfRange) {
    EXPECT_EQ(LineOf(Describe(With(12, 4, 101)), "dwDriverData"),
              "dwDriverData 101 becomes 0 when the record is merged");
    EXPECT_EQ(LineOf(Describe(With(8, 4, 7)), "dmOEMExtra.dwVersion"),
              "dmOEMExtra.dwVersion 0x00000007 another format: becomes 1 when the record is merged");
    EXPECT_EQ(
        LineOf(Describe(With(148, 1, 3)), "bDocStart_CutPaper"),
        "bDocStart_CutPaper 3 not in the list (0 to 2): shows as nothing selected, stays until the user "
        "chooses");
    EXPECT_EQ(LineOf(Describe(With(149, 1, 101)), "bDocStart_Feed"),
              "bDocStart_Feed 101 outside 0 to 100: shows as 100, stays until the dialog ends with OK");
    // Without a sign it is above the range, not below.
    EXPECT_EQ(LineOf(Describe(With(620, 4, -1)), "dwGs1RowHeight"),
              "dwGs1RowHeight -1 outside 2 to 250: shows as 250, stays until the box is changed");
    // An element width of 7 dots counts as 6, and eight elements of that are 48.
    const std::string wide = Describe(With(597, 1, 7));
    EXPECT_EQ(LineOf(wide, "bElementWidth"),
              "bElementWidth 7 outside 2 to 6: shows as 6, stays until the box is changed");
    EXPECT_EQ(LineOf(wide, "dwFontWidth"),
              "dwFontWidth 24 not what the element width makes it: becomes 48 when that is typed");
    EXPECT_THAT(wide, EndsWith("\nOut of range, marked with \"!\": 2\n"));
    // 163 dots and a line of 24 are 187, 74.8 points: on the grid 75, which are 187.5.
    EXPECT_EQ(LineOf(Describe(With(604, 1, 1)), "dwFontHeight"),
              "dwFontHeight 163 not what bars and text make it: becomes 187 when one of those is changed");
    // Two lines make 211.
    Bytes both = With(612, 4, 211);
    both[604] = 3;
    EXPECT_EQ(LineOf(Describe(both), "bHriPosition"), "bHriPosition 3 Both above and below the barcode");
    EXPECT_THAT(MarkedLines(Describe(both)), IsEmpty());
    EXPECT_EQ(LineOf(Describe(With(604, 1, 4)), "bHriPosition"),
              "bHriPosition 4 not in the list (0 to 3): shows as nothing selected, stays until the user "
              "chooses");
    Bytes tiled = With(1392, 1, 9);
    tiled[1393] = 19;
    EXPECT_EQ(LineOf(Describe(tiled), "iWaterMarkSize"),
              "iWaterMarkSize 19 outside 20 to 100 at this position: is drawn as 20");
    tiled[1393] = 20;
    EXPECT_THAT(MarkedLines(Describe(tiled)), IsEmpty());
}

TEST(ShowRecordTest, ShowsCommandsInHexadecimal) {
    Bytes record = DefaultRecord();
    const std::string command = "\x1B@ticket \xFF~ABCDEFG";
    std::ranges::copy(command, record.begin() + 18);
    record[146] = 18;
    EXPECT_THAT(Describe(record),
                HasSubstr("\n"
                          "  bDocStart_Cmd                  18 bytes\n"
                          "                             00  1B 40 74 69 63 6B 65 74 20 FF 7E 41 42 43 44 45  "
                          ".@ticket .~ABCDE\n"
                          "                             10  46 47                                            "
                          "FG\n"
                          "  bDocStart_CmdLen           18  bytes of the command\n"));
    // Of its 18 bytes 3 count.
    record[146] = 3;
    const std::string text = Describe(record);
    EXPECT_EQ(LineOf(text, "bDocStart_Cmd"),
              "bDocStart_Cmd 3 bytes; bytes behind them that do not count: 15, become 0 when the dialog ends "
              "with OK");
    EXPECT_THAT(text, HasSubstr("  00  1B 40 74  "));
    EXPECT_THAT(MarkedLines(text), testing::SizeIs(1));
    record[146] = 129;
    EXPECT_EQ(LineOf(Describe(record), "bDocStart_CmdLen"),
              "bDocStart_CmdLen 129 more than a block holds: counts as 128");
}

TEST(ShowRecordTest, ShowsTextsThatDoNotEnd) {
    Bytes record = DefaultRecord();
    std::fill_n(record.begin() + 1252, 32, std::uint8_t{'A'});
    const std::string text = Describe(record);
    std::string shown;
    for (int i = 0; i < 16; ++i) {
        shown += "\xE4\x85\x81";  // U+4141
    }
    EXPECT_EQ(LineOf(text, "szWaterMarkText"),
              "szWaterMarkText \"" + shown + "\" without an end: counts as all 16 units of the field");
    EXPECT_THAT(MarkedLines(text), testing::SizeIs(1));
    // The last unit is the end's.
    record[1282] = record[1283] = 0;
    EXPECT_THAT(MarkedLines(Describe(record)), IsEmpty());
}

// Whole lines can pass for others where a text turns the writing's direction or hides what it holds.
TEST(ShowRecordTest, ShowsFormatCharactersByTheirNumbers) {
    const auto shown = [](const std::wstring& text) {
        Bytes record = DefaultRecord();
        for (std::size_t i = 0; i < text.size(); ++i) {
            record[1252 + 2 * i] = static_cast<std::uint8_t>(text[i] & 0xFF);
            record[1253 + 2 * i] = static_cast<std::uint8_t>(text[i] >> 8);
        }
        return LineOf(Describe(record), "szWaterMarkText");
    };
    EXPECT_EQ(shown(L"a\x202E\x2066z\x2028\x2029\xFEFF"),
              R"(szWaterMarkText "a\u202E\u2066z\u2028\u2029\uFEFF")");
    // U+E0001, U+E007F and U+1D173 are pairs; control characters are shown as ever.
    EXPECT_EQ(shown(L"\xDB40\xDC01 \xDB40\xDC7F \xD834\xDD73\x1B"),
              R"(szWaterMarkText "\uDB40\uDC01 \uDB40\uDC7F \uD834\uDD73\u001B")");
    EXPECT_EQ(shown(L"\x00AD\x061C\x180E\x200B\x200F\x202A\x2060\x2069\x206F\xFFF9\xFFFB"),
              R"(szWaterMarkText "\u00AD\u061C\u180E\u200B\u200F\u202A\u2060\u2069\u206F\uFFF9\uFFFB")");
    // Neighbours of those, Arabic, Chinese, and a pair that is a letter.
    for (const wchar_t* text : {L"\x00AE\x061B\x180F\x2010\x2027\x205F\x2070", L"\x0627\x0628",
                                L"\x7B80\x4F53", L"\xD835\xDC00\xDB40\xDC80"}) {
        EXPECT_EQ(shown(text), "szWaterMarkText \"" + ToUtf8(text) + "\"");
    }
}

// Records of other versions

TEST(ShowRecordTest, TakesShorterAndLongerRecordsAsThePluginDoes) {
    // Up to the first cut inclusive.
    Bytes shorter = With(148, 1, 2);
    shorter.resize(149);
    Put32(shorter, 0, 149);
    const std::string text = Describe(shorter);
    EXPECT_EQ(
        LineOf(text, "dmOEMExtra.dwSize"),
        "dmOEMExtra.dwSize 0x00000095 of another version: the plug-in takes these 149 bytes, and defaults "
        "behind them");
    EXPECT_EQ(LineOf(text, "bDocStart_CutPaper"), "bDocStart_CutPaper 2 Full Cut");
    EXPECT_EQ(LineOf(text, "iWaterMarkAngle"), "iWaterMarkAngle 45 degrees");
    EXPECT_THAT(MarkedLines(text), testing::SizeIs(1));

    Bytes longer = With(148, 1, 2);
    longer.resize(3000, 0x55);
    Put32(longer, 0, 3000);
    EXPECT_EQ(LineOf(Describe(longer), "dmOEMExtra.dwSize"),
              "dmOEMExtra.dwSize 0x00000BB8 of another version: the plug-in takes the first 1976 bytes");
    // Alone, a record may claim any size.
    EXPECT_THAT(Describe(With(0, 4, 0xFFFFFFFF)), HasSubstr("the first 1976 bytes"));
    for (const std::uint32_t size : {0u, 3u, 7u, 12u}) {
        const std::string small = Describe(With(0, 4, size));
        EXPECT_THAT(small, HasSubstr("takes these " + std::to_string(size) + " bytes"));
        EXPECT_EQ(LineOf(small, "dmOEMExtra.dwSignature"), "dmOEMExtra.dwSignature 0x00523732 this driver's");
        EXPECT_THAT(LineOf(small, "dmOEMExtra.dwVersion"), HasSubstr("format "));
    }
}

// Files

TEST(ShowRecordTest, FindsARecordBehindAnythingAtAnyOffset) {
    for (const std::size_t before : {1u, 2u, 3u, 4u, 7u, 220u, 221u}) {
        Bytes file(before, 0x32);
        const Bytes record = With(148, 1, 2);
        file.insert(file.end(), record.begin(), record.end());
        EXPECT_THAT(Find(file).whole, ElementsAre(before));
        file.resize(file.size() + 5, 0x72);
        EXPECT_THAT(Find(file).whole, ElementsAre(before));
        const std::string text = Describe(file);
        EXPECT_THAT(text, StartsWith("Settings record at byte " + std::to_string(before) + " of " +
                                     std::to_string(file.size()) + "\n"));
        EXPECT_EQ(LineOf(text, "bDocStart_CutPaper"), "bDocStart_CutPaper 2 Full Cut");
    }
}

TEST(ShowRecordTest, ShowsEachOfSeveralRecordsAndTellsOfOneThatIsCut) {
    Bytes file = With(148, 1, 2);
    const Bytes second = With(148, 1, 1);
    file.push_back(0);
    file.insert(file.end(), second.begin(), second.end());
    file.insert(file.end(), second.begin(), second.begin() + 100);
    const std::string text = Describe(file);
    EXPECT_THAT(
        text, AllOf(StartsWith("Settings record 1 of 2, at byte 0 of 4053\n"),
                    HasSubstr("\n\nSettings record 2 of 2, at byte 1977 of 4053\n"), HasSubstr(" Full Cut\n"),
                    EndsWith("\nNot shown: at byte 3953 a record of 1976 bytes begins, of which 100 are "
                             "there\n")));
    EXPECT_LT(text.find("Full Cut"), text.find("Settings record 2"));
}

// `count` headers without anything behind them, 12 bytes each.
Bytes Headers(std::size_t count, std::uint32_t size) {
    Bytes header(12);
    PutHeader(header, size, kSignature, 1);
    Bytes file;
    for (std::size_t i = 0; i < count; ++i) {
        file.insert(file.end(), header.begin(), header.end());
    }
    return file;
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(ShowRecordTest, ShowsAHundredRecordsOfMore) {
    const std::string all = Describe(Headers(100, 12));
    EXPECT_EQ(Count(all, "Settings record "), 100u);
    EXPECT_EQ(Count(all, "Not shown"), 0u);
    const std::string text = Describe(Headers(102, 12));
    EXPECT_EQ(Count(text, "Settings record "), 100u);
    EXPECT_EQ(Count(text, "\nSettings record 100 of 102, at byte 1188 of 1224\n"), 1u);
    EXPECT_EQ(LinesOf(text).back(),
              "Not shown: 2 more settings records, the first at byte 1200, the last at byte 1212");
}

TEST(ShowRecordTest, TellsAHundredBrokenRecordsOfMore) {
    Bytes file = DefaultRecord();
    const Bytes broken = Headers(102, 0xFFFF);
    file.insert(file.end(), broken.begin(), broken.end());
    const std::string text = Describe(file);
    EXPECT_EQ(Count(text, "\nNot shown: at byte "), 100u);
    EXPECT_THAT(text,
                EndsWith("\nNot shown: at byte 3164 a record of 65535 bytes begins, of which 36 are there\n"
                         "\nNot shown: 2 more broken records, the first at byte 3176, the last at byte "
                         "3188\n"));
    file.resize(file.size() - 24);
    EXPECT_THAT(
        Describe(file),
        EndsWith("\nNot shown: at byte 3164 a record of 65535 bytes begins, of which 12 are there\n"));
}

TEST(ShowRecordTest, TellsOfImpossibleSizes) {
    for (const std::uint32_t size : {0u, 11u, 65536u, 0xFFFFFFFFu}) {
        const std::string words =
            " a record of " + std::to_string(size) + " bytes begins, an impossible size: 12 to 65535 can be";
        Bytes file(1);
        const Bytes header = Headers(1, size);
        file.insert(file.end(), header.begin(), header.end());
        file.resize(70000);
        EXPECT_EQ(Refusal(file), "at byte 1" + words);
        const Bytes whole = DefaultRecord();
        file.insert(file.begin(), whole.begin(), whole.end());
        EXPECT_THAT(Describe(file), EndsWith("\nNot shown: at byte 1977" + words + "\n"));
    }
}

// A command may hold the signature's bytes, or a whole header.
TEST(ShowRecordTest, TakesNoSignatureWithinARecordForAnother) {
    Bytes record = DefaultRecord();
    std::copy_n(record.begin(), 12, record.begin() + 18);
    Bytes file = {0};
    file.insert(file.end(), record.begin(), record.end());
    file.resize(4000);
    const RecordSearch search = Find(file);
    EXPECT_THAT(search.whole, ElementsAre(1u));
    EXPECT_THAT(search.broken, IsEmpty());
}

TEST(ShowRecordTest, TakesOnlyPlausibleHeadersAmongOtherBytes) {
    const auto find = [](std::uint32_t size, std::uint32_t signature, std::uint32_t version) {
        Bytes file(70000);
        PutHeader(file, size, signature, version);
        return Find(file).whole.size();
    };
    EXPECT_EQ(find(12, 0x00523732, 1), 1u);
    EXPECT_EQ(find(65535, 0x00523732, 65535), 1u);
    EXPECT_EQ(find(11, 0x00523732, 1), 0u);
    EXPECT_EQ(find(65536, 0x00523732, 1), 0u);
    EXPECT_EQ(find(1976, 0x00523733, 1), 0u);
    EXPECT_EQ(find(1976, 0x00523732, 0), 0u);
    EXPECT_EQ(find(1976, 0x00523732, 65536), 0u);
}

TEST(ShowRecordTest, RefusesEveryShortening) {
    const Bytes record = DefaultRecord();
    for (std::size_t length = 0; length < record.size(); ++length) {
        const std::string there = std::to_string(length);
        ASSERT_EQ(Refusal({record.begin(), record.begin() + static_cast<std::ptrdiff_t>(length)}),
                  length < 12 ? "none of its " + there + " bytes begins a settings record of this driver"
                              : "at byte 0 a record of 1976 bytes begins, of which " + there + " are there");
    }
    EXPECT_EQ(Refusal(With(4, 4, 0x12345678)),
              "none of its 1976 bytes begins a settings record of this driver");
}

TEST(ShowRecordTest, StandsAnyBytes) {
    std::minstd_rand random(17);
    for (int round = 0; round < 150; ++round) {
        Bytes record(kRecordSize);
        std::ranges::generate(record, [&] { return static_cast<std::uint8_t>(random() >> 7); });
        Put32(record, 4, kSignature);
        if (round % 2 == 0) {
            Put32(record, 0, kRecordSize);
        }
        const std::string text = Describe(record);
        ASSERT_THAT(text, HasSubstr("\nWater Mark\n"));
        ASSERT_GT(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                      static_cast<int>(text.size()), nullptr, 0),
                  0)
            << "not UTF-8";
        // The longest text has 256 units, of six characters where they are shown by their number.
        for (const std::string& line : LinesOf(text)) {
            ASSERT_LT(line.size(), 256u * 6 + 200);
            ASSERT_TRUE(std::ranges::none_of(line, [](char c) { return c >= 0 && c < ' '; })) << line;
        }
    }
}

// The program

TEST_F(HostProgramTest, ShowsARecordWithoutThePlugin) {
    rig::WriteBytes(File(L"till.bin"), DefaultRecord());
    const ProgramRun run = Run(L"--show-record till.bin --dll missing.dll");
    EXPECT_EQ(run.exit_code, 0u);
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.output, AllOf(StartsWith("Settings record at byte 0 of 1976"),
                                  HasSubstr("Nothing is out of range.")));
    EXPECT_EQ(rig::ReadBytes(File(L"till.bin")), DefaultRecord());
}

TEST_F(HostProgramTest, RefusesToShowWhatIsNoRecord) {
    rig::WriteBytes(File(L"empty.bin"), {});
    rig::WriteBytes(File(L"other.bin"), Bytes(1976, 0x20));
    rig::WriteBytes(File(L"huge.bin"), Bytes(16 * 1024 * 1024 + 1));
    for (const wchar_t* name : {L"empty.bin", L"other.bin", L"huge.bin", L"missing.bin"}) {
        const ProgramRun run = Run(std::wstring(L"--show-record ") + name);
        EXPECT_EQ(run.exit_code, 1u);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: "), HasSubstr(ToUtf8(name))));
    }
    const ProgramRun run = Run(L"--show-record");
    EXPECT_EQ(run.exit_code, 2u);
    EXPECT_THAT(run.errors, HasSubstr("--show-record needs a value: FILE"));
}

// Its reader would wait for bytes that nobody sends.
TEST_F(HostProgramTest, RefusesToShowAPipe) {
    const std::wstring pipe = L"\\\\.\\pipe\\kvmr72-record-" + std::to_wstring(GetCurrentProcessId());
    const HANDLE server =
        CreateNamedPipeW(pipe.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr);
    ASSERT_NE(server, INVALID_HANDLE_VALUE);
    const ProgramRun run = Run(L"--show-record " + pipe);
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "KVMR72Host: " + ToUtf8(pipe) + " is no file but a device or a pipe\r\n");
    CloseHandle(server);
}

TEST_F(HostProgramTest, FailsWhenItsOutputCannotBeWritten) {
    rig::WriteBytes(File(L"till.bin"), DefaultRecord());
    rig::WriteBytes(File(L"errors.txt"), {});
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const auto open = [&](const wchar_t* name, DWORD access) {
        return CreateFileW(File(name).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                           OPEN_EXISTING, 0, nullptr);
    };
    for (const wchar_t* arguments : {L"--show-record till.bin", L"--help", L"--version"}) {
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = INVALID_HANDLE_VALUE;
        // Only to be read.
        startup.hStdOutput = open(L"till.bin", GENERIC_READ);
        startup.hStdError = open(L"errors.txt", GENERIC_WRITE);
        std::wstring command = L"KVMR72Host.exe " + std::wstring(arguments);
        PROCESS_INFORMATION process = {};
        ASSERT_TRUE(CreateProcessW(ProgramFile().c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                   File(L"").c_str(), &startup, &process));
        DWORD exit_code = 0;
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 90000), WAIT_OBJECT_0);
        GetExitCodeProcess(process.hProcess, &exit_code);
        for (const HANDLE handle :
             {process.hThread, process.hProcess, startup.hStdOutput, startup.hStdError}) {
            CloseHandle(handle);
        }
        EXPECT_EQ(exit_code, 1u) << ToUtf8(arguments);
        EXPECT_EQ(Text(L"errors.txt"), "KVMR72Host: cannot write the output\r\n");
        EXPECT_EQ(rig::ReadBytes(File(L"till.bin")), DefaultRecord());
    }
}

}  // namespace
