// Parts of the host program: its command line, its reading of the record, what it takes from a record file,
// and when it keeps what a sheet did.
#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "options.h"
#include "pages/page_fixture.h"
#include "plugin/default_record.h"
#include "plugin_host.h"
#include "record_fields.h"
#include "utf8.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

// Command line

std::string UsageErrorOf(const std::vector<std::wstring>& arguments) {
    try {
        ParseOptions(arguments);
    } catch (const UsageError& error) {
        return error.what();
    }
    ADD_FAILURE() << "accepted " << (arguments.empty() ? "nothing" : ToUtf8(arguments.front()));
    return {};
}

TEST(HostOptionsTest, NothingIsChosenWithoutOptions) {
    const Options options = ParseOptions({});
    EXPECT_EQ(options.sheet, SheetKind::kDocument);
    EXPECT_FALSE(options.dll || options.record || options.pictures || options.watermark || options.trace ||
                 options.language || options.jobs || options.forms || options.prints || options.download ||
                 options.printer);
    EXPECT_EQ(options.logos.size(), 0u);
    EXPECT_FALSE(options.control_font || options.play || options.help || options.version);
}

TEST(HostOptionsTest, TakesEveryOption) {
    const Options options = ParseOptions({L"--dll",       L"C:\\a b\\x.dll",
                                          L"--record",    L"r.bin",
                                          L"--pictures",  L"p",
                                          L"--watermark", L"w.bmp",
                                          L"--trace",     L"t.txt",
                                          L"--language",  L"CHF",
                                          L"--jobs",      L"j",
                                          L"--forms",     L"f.txt",
                                          L"--prints",    L"l.tsv",
                                          L"--sheet",     L"document",
                                          L"--play",      L"--help",
                                          L"--version"});
    EXPECT_EQ(options.dll, std::filesystem::path(L"C:\\a b\\x.dll"));
    EXPECT_EQ(options.record, std::filesystem::path(L"r.bin"));
    EXPECT_EQ(options.pictures, std::filesystem::path(L"p"));
    EXPECT_EQ(options.watermark, std::filesystem::path(L"w.bmp"));
    EXPECT_EQ(options.trace, std::filesystem::path(L"t.txt"));
    EXPECT_EQ(options.language, L"CHF");
    EXPECT_EQ(options.jobs, std::filesystem::path(L"j"));
    EXPECT_EQ(options.forms, std::filesystem::path(L"f.txt"));
    EXPECT_EQ(options.prints, std::filesystem::path(L"l.tsv"));
    EXPECT_EQ(options.sheet, SheetKind::kDocument);
    EXPECT_EQ(ParseOptions({L"--printer", L"Office 2"}).printer, L"Office 2");
    EXPECT_TRUE(options.play);
    EXPECT_TRUE(options.help);
    EXPECT_TRUE(options.version);
}

TEST(HostOptionsTest, EachOptionStandsAlone) {
    EXPECT_TRUE(ParseOptions({L"--play"}).play);
    EXPECT_FALSE(ParseOptions({L"--play"}).pictures);
    EXPECT_FALSE(ParseOptions({L"--pictures", L"p"}).play);
    EXPECT_FALSE(ParseOptions({L"--watermark", L"w.bmp"}).play);
    EXPECT_FALSE(ParseOptions({L"--help"}).version);
    EXPECT_FALSE(ParseOptions({L"--version"}).help);
    for (const wchar_t* language : {L"ENG", L"CHN", L"CHF"}) {
        EXPECT_EQ(ParseOptions({L"--language", language}).language, language);
    }
    EXPECT_EQ(ParseOptions({L"--sheet", L"printer"}).sheet, SheetKind::kPrinter);
    EXPECT_EQ(ParseOptions({L"--sheet", L"document"}).sheet, SheetKind::kDocument);
    EXPECT_TRUE(ParseOptions({L"--sheet", L"printer", L"--control-font"}).control_font);
}

TEST(HostOptionsTest, HeadlessPlaysAndTakesPictures) {
    const Options plain = ParseOptions({L"--headless"});
    EXPECT_TRUE(plain.play);
    EXPECT_EQ(plain.pictures, std::filesystem::path(L"pictures"));
    // A named folder counts wherever it stands.
    EXPECT_EQ(ParseOptions({L"--pictures", L"p", L"--headless"}).pictures, std::filesystem::path(L"p"));
    EXPECT_EQ(ParseOptions({L"--headless", L"--pictures", L"p"}).pictures, std::filesystem::path(L"p"));
}

TEST(HostOptionsTest, RefusesUnknownOptions) {
    for (const wchar_t* unknown : {L"--Play", L"-play", L"play", L"--plays", L"/?", L"", L"record.bin"}) {
        SCOPED_TRACE(ToUtf8(unknown));
        EXPECT_THAT(UsageErrorOf({unknown}), HasSubstr("\"" + ToUtf8(unknown) + "\""));
    }
    EXPECT_THAT(UsageErrorOf({L"--play", L"--中文"}), HasSubstr("\"--\xE4\xB8\xAD\xE6\x96\x87\""));
}

TEST(HostOptionsTest, RefusesMissingValues) {
    for (const wchar_t* option :
         {L"--dll", L"--record", L"--language", L"--pictures", L"--watermark", L"--trace", L"--jobs",
          L"--forms", L"--prints", L"--sheet", L"--download", L"--logo", L"--printer"}) {
        SCOPED_TRACE(ToUtf8(option));
        EXPECT_THAT(UsageErrorOf({option}), HasSubstr(ToUtf8(option)));
        EXPECT_THAT(UsageErrorOf({option, L""}), HasSubstr(ToUtf8(option)));
        EXPECT_THAT(UsageErrorOf({option, L"--play"}), HasSubstr(ToUtf8(option)));
    }
}

TEST(HostOptionsTest, RefusesOtherLanguages) {
    for (const wchar_t* language : {L"eng", L"EN", L"ENGL", L"DEU", L"ENG_KVMR72.res"}) {
        SCOPED_TRACE(ToUtf8(language));
        EXPECT_THAT(UsageErrorOf({L"--language", language}),
                    AllOf(HasSubstr("--language"), HasSubstr("\"" + ToUtf8(language) + "\"")));
    }
}

TEST(HostOptionsTest, RefusesOtherSheets) {
    for (const wchar_t* sheet : {L"Printer", L"printers", L"2"}) {
        SCOPED_TRACE(ToUtf8(sheet));
        EXPECT_EQ(UsageErrorOf({L"--sheet", sheet}),
                  "--sheet is document or printer, not \"" + ToUtf8(sheet) + "\"");
    }
}

TEST(HostOptionsTest, RefusesFilesOfAPrinterOfTheSystem) {
    for (const wchar_t* option : {L"--jobs", L"--forms"}) {
        const std::string error = ToUtf8(option) + " is for the virtual printer, not for --printer";
        EXPECT_EQ(UsageErrorOf({option, L"x", L"--printer", L"p"}), error);
        EXPECT_EQ(UsageErrorOf({L"--printer", L"p", option, L"x"}), error);
    }
}

TEST(HostOptionsTest, RefusesWhatThePrinterSheetHasNoUseFor) {
    for (const wchar_t* option : {L"--record", L"--watermark", L"--prints"}) {
        const std::string error = ToUtf8(option) + " is for the document sheet";
        EXPECT_EQ(UsageErrorOf({option, L"x", L"--sheet", L"printer"}), error);
        EXPECT_EQ(UsageErrorOf({L"--sheet", L"printer", option, L"x"}), error);
        EXPECT_NO_THROW(ParseOptions({option, L"x", L"--sheet", L"document"}));
    }
    EXPECT_EQ(UsageErrorOf({L"--download", L"x"}), "--download is for the printer sheet");
    EXPECT_EQ(UsageErrorOf({L"--control-font"}), "--control-font is for the printer sheet");
    EXPECT_EQ(UsageErrorOf({L"--logo", L"x"}), "--logo is for the printer sheet");
    EXPECT_EQ(UsageErrorOf({L"--logo", L"x", L"--sheet", L"document"}), "--logo is for the printer sheet");
    const Options options =
        ParseOptions({L"--sheet", L"printer", L"--headless", L"--jobs", L"j", L"--forms", L"f", L"--trace",
                      L"t", L"--language", L"CHN", L"--download", L"x"});
    EXPECT_TRUE(options.play && options.pictures && options.jobs && options.forms);
    EXPECT_EQ(options.download, std::filesystem::path(L"x"));
}

TEST(HostOptionsTest, TakesNineLogosInOrder) {
    std::vector<std::wstring> arguments = {L"--sheet", L"printer"};
    std::vector<std::filesystem::path> logos;
    for (int i = 1; i <= 9; ++i) {
        const std::wstring name = std::to_wstring(i) + L" logo.bmp";
        arguments.insert(arguments.end(), {L"--logo", name});
        logos.emplace_back(name);
        EXPECT_EQ(ParseOptions(arguments).logos, logos);
    }
    arguments.insert(arguments.end(), {L"--logo", L"tenth.bmp"});
    EXPECT_EQ(UsageErrorOf(arguments), "--logo is given nine times at most");
}

TEST(HostOptionsTest, HelpNamesEveryOptionAndExitCode) {
    const std::string help = HelpText();
    for (const char* option :
         {"--dll PATH", "--record FILE", "--language ENG|CHN|CHF", "--play ", "--watermark BMP",
          "--pictures DIR", "--headless ", "--trace FILE", "--jobs DIR", "--forms FILE", "--prints FILE",
          "--sheet document|printer ", "--download FILE", "--logo BMP", "--control-font ", "--printer NAME",
          "--help ", "--version "}) {
        EXPECT_THAT(help, HasSubstr(std::string("\n  ") + option));
    }
    EXPECT_THAT(help, AllOf(HasSubstr("0 done"), HasSubstr("1 failed"), HasSubstr("2 wrong command line"),
                            HasSubstr("99 hung")));
    EXPECT_EQ(help.back(), '\n');
}

// Fields of the record

const RecordField& FieldAt(std::size_t offset) {
    const auto& fields = RecordFields();
    const auto field = std::find_if(fields.begin(), fields.end(), [offset](const RecordField& candidate) {
        return candidate.offset <= offset && offset < candidate.offset + candidate.size;
    });
    if (field == fields.end()) {
        throw std::out_of_range("no field at " + std::to_string(offset));
    }
    return *field;
}

class RecordFieldsTest : public testing::Test {
  protected:
    std::string Shown(std::size_t offset) const { return FormatField(FieldAt(offset), record_); }
    void PutUnits(std::size_t offset, std::u16string_view units) {
        for (const char16_t unit : units) {
            record_.at(offset++) = static_cast<std::uint8_t>(unit & 0xFF);
            record_.at(offset++) = static_cast<std::uint8_t>(unit >> 8);
        }
    }

    std::array<std::uint8_t, 1976> record_{};
};

TEST_F(RecordFieldsTest, CoverTheRecordWithoutGaps) {
    std::size_t next = 0;
    std::vector<std::string> names;
    for (const RecordField& field : RecordFields()) {
        EXPECT_EQ(field.offset, next) << field.name;
        EXPECT_GT(field.size, 0u) << field.name;
        next += field.size;
        names.push_back(field.name);
    }
    EXPECT_EQ(next, 1976u);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end()) << "a name is there twice";
}

TEST_F(RecordFieldsTest, StandWhereTheRecordHasThem) {
    struct Expected {
        std::size_t offset;
        std::size_t size;
        const char* name;
    };
    constexpr Expected kExpected[] = {
        {0, 4, "dmOEMExtra.dwSize"},       {4, 4, "dmOEMExtra.dwSignature"},
        {8, 4, "dmOEMExtra.dwVersion"},    {12, 4, "dwDriverData"},
        {18, 128, "bDocStart_Cmd"},        {147, 1, "bDocStart_Cashdrawer"},
        {148, 1, "bDocStart_CutPaper"},    {152, 4, "dwDocStart_DrawerOrHerald"},
        {309, 1, "bDocEndFeedToPosition"}, {440, 1, "bDocEnd_CutPaper"},
        {596, 1, "Barcode1D[0].bType"},    {848, 1, "Barcode1D[7].bType"},
        {884, 1, "Barcode2D[0].bType2D"},  {931, 1, "Barcode2D[1].bQrEccLevel"},
        {1000, 250, "WaterMarkPicName"},   {1252, 32, "szWaterMarkText"},
        {1284, 100, "szWaterMarkFont"},    {1388, 4, "iWaterMarkAngle"},
        {1398, 64, "szFormName"},          {1464, 512, "szLogPath"},
    };
    for (const Expected& expected : kExpected) {
        const RecordField& field = FieldAt(expected.offset);
        EXPECT_EQ(field.name, expected.name);
        EXPECT_EQ(field.offset, expected.offset) << expected.name;
        EXPECT_EQ(field.size, expected.size) << expected.name;
    }
}

TEST_F(RecordFieldsTest, ShowNumbers) {
    const std::uint8_t header[] = {0xB8, 0x07, 0, 0, 0x32, 0x37, 0x52, 0, 1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF};
    std::copy(std::begin(header), std::end(header), record_.begin());
    record_[147] = 200;
    record_[1388] = 0x2D;
    record_[1389] = 0x01;
    EXPECT_EQ(Shown(0), "0x000007B8");
    EXPECT_EQ(Shown(4), "0x00523732");
    EXPECT_EQ(Shown(8), "0x00000001");
    EXPECT_EQ(Shown(12), "-2");
    EXPECT_EQ(Shown(147), "200");
    EXPECT_EQ(Shown(1388), "301");
}

TEST_F(RecordFieldsTest, ShowBytesUpToTheLastThatIsNotZero) {
    EXPECT_EQ(Shown(18), "(none)");
    record_[18] = 0x1D;
    record_[20] = 0x0A;
    EXPECT_EQ(Shown(18), "1D 00 0A");
    record_[145] = 0xFF;
    EXPECT_EQ(Shown(18).size(), 128u * 3 - 1);
    EXPECT_THAT(Shown(18), testing::EndsWith("00 FF"));
}

TEST_F(RecordFieldsTest, ShowTextUpToItsTerminator) {
    EXPECT_EQ(Shown(1252), "\"\"");
    PutUnits(1252, u"A\u00E9\u4E2D");
    PutUnits(1260, u"behind");
    EXPECT_EQ(Shown(1252), "\"A\xC3\xA9\xE4\xB8\xAD\"");
    PutUnits(1252, u"a\nb");
    EXPECT_EQ(Shown(1252), "\"a\\u000Ab\"");
}

TEST_F(RecordFieldsTest, ShowTextWithoutTerminatorUpToTheFieldsEnd) {
    std::fill(record_.begin() + 1252, record_.end(), std::uint8_t{0x41});
    // 0x4141, which is U+4141: E4 85 81.
    std::string expected;
    for (int i = 0; i < 16; ++i) {
        expected += "\xE4\x85\x81";
    }
    EXPECT_EQ(Shown(1252), '"' + expected + '"');
    EXPECT_EQ(Shown(1464).size(), 256u * 3 + 2) << "the record's last field";
}

TEST_F(RecordFieldsTest, ShowPairsAsOneCharacterAndHalvesAsNumbers) {
    PutUnits(1252, std::u16string_view(u"\xD83D\xDE00", 2));
    EXPECT_EQ(Shown(1252), "\"\xF0\x9F\x98\x80\"");
    PutUnits(1252, std::u16string_view(u"\xD83Dx\xDE00y\xDE00\xD83D\0", 7));
    EXPECT_EQ(Shown(1252), "\"\\uD83Dx\\uDE00y\\uDE00\\uD83D\"");
    PutUnits(1252, std::u16string_view(u"\xD83D\xD83D\xDE00\0", 4));
    EXPECT_EQ(Shown(1252), "\"\\uD83D\xF0\x9F\x98\x80\"");
}

TEST_F(RecordFieldsTest, DoNotJoinAHalfWithTheNextField) {
    PutUnits(1252, u"123456789012345");
    PutUnits(1282, std::u16string_view(u"\xD83D", 1));
    PutUnits(1284, std::u16string_view(u"\xDE00", 1));
    EXPECT_EQ(Shown(1252), "\"123456789012345\\uD83D\"");
    // The record's very last unit.
    std::fill(record_.begin() + 1464, record_.end(), std::uint8_t{0x20});
    PutUnits(1974, std::u16string_view(u"\xD83D", 1));
    EXPECT_THAT(Shown(1464), testing::EndsWith("\\uD83D\""));
}

TEST_F(RecordFieldsTest, EveryChangedByteIsReportedInItsField) {
    EXPECT_TRUE(CompareRecords(record_, record_).empty());
    for (std::size_t offset = 0; offset < record_.size(); ++offset) {
        auto changed = record_;
        changed[offset] = 0x5A;
        const std::vector<FieldChange> changes = CompareRecords(record_, changed);
        ASSERT_EQ(changes.size(), 1u) << offset;
        EXPECT_EQ(changes[0].name, FieldAt(offset).name) << offset;
    }
}

TEST_F(RecordFieldsTest, ChangesComeInOrderWithBothValues) {
    auto changed = record_;
    record_[147] = 12;
    changed[147] = 1;
    changed[1462] = 1;
    changed[18] = 0x1B;
    const std::vector<FieldChange> changes = CompareRecords(record_, changed);
    ASSERT_EQ(changes.size(), 3u);
    EXPECT_EQ(changes[0].name, "bDocStart_Cmd");
    EXPECT_EQ(changes[0].before, "(none)");
    EXPECT_EQ(changes[0].after, "1B");
    EXPECT_EQ(changes[1].name, "bDocStart_Cashdrawer");
    EXPECT_EQ(changes[1].before, "12");
    EXPECT_EQ(changes[1].after, "1");
    EXPECT_EQ(changes[2].name, "bZoom");
}

// Stored records

// A stored record of that many bytes, its size field saying so: the pattern's bytes and, beyond a record,
// more of the same.
Bytes StoredRecord(std::size_t size) {
    Bytes stored = PatternRecord(17);
    stored.resize(std::max(size, stored.size()), 0x99);
    Put32(stored, 0, static_cast<std::uint32_t>(size));
    Put32(stored, 12, 101);
    stored.resize(size);
    return stored;
}

class HostRecordTest : public pages::PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        held_ = PatternRecord(91);
        SetRecord(held_);
    }

    void ExpectRefused(const Bytes& stored) {
        try {
            Host().LoadRecord(stored);
            ADD_FAILURE() << "accepted";
        } catch (const HostError& error) {
            EXPECT_GT(std::string_view(error.what()).size(), 10u) << "no reason is given";
        }
        EXPECT_EQ(pages::Differences(held_, Record()), "");
    }

    // The plug-in's default record in the first `copied` bytes of which stands what was stored.
    void ExpectAccepted(const Bytes& stored, std::size_t copied) {
        ASSERT_NO_THROW(Host().LoadRecord(stored));
        Bytes expected(1976);
        PutDefaults(expected);
        std::copy_n(stored.begin(), copied, expected.begin());
        PutHeader(expected, 1976, 0x00523732, 1);
        Put32(expected, 12, 0);
        EXPECT_EQ(pages::Differences(expected, Record()), "");
        EXPECT_TRUE(Host().GuardsIntact());
    }

    Bytes held_;
};

TEST_F(HostRecordTest, RefusesWhatHasNoHeader) {
    for (const std::size_t size : {0u, 3u, 11u}) {
        SCOPED_TRACE(size);
        Bytes stored = PatternRecord(17);
        stored.resize(size);
        ExpectRefused(stored);
    }
}

TEST_F(HostRecordTest, RefusesAnotherSignature) {
    for (const std::size_t size : {16u, 600u, 1976u, 4000u}) {
        SCOPED_TRACE(size);
        Bytes stored = StoredRecord(size);
        Put32(stored, 4, 0x00523733);
        ExpectRefused(stored);
    }
}

TEST_F(HostRecordTest, RefusesASizeFieldThatIsNotTheSize) {
    Bytes cut = StoredRecord(1976);
    cut.resize(1000);
    ExpectRefused(cut);
    Bytes claimed = StoredRecord(1976);
    Put32(claimed, 0, 4000);
    ExpectRefused(claimed);
    Put32(claimed, 0, 0);
    ExpectRefused(claimed);
    Put32(claimed, 0, 0xFFFFFFFF);
    ExpectRefused(claimed);
}

TEST_F(HostRecordTest, TakesOverARecordOfThisSize) {
    ExpectAccepted(StoredRecord(1976), 1976);
}

TEST_F(HostRecordTest, ConvertsRecordsOfOtherSizes) {
    for (const std::size_t size : {16u, 600u, 1975u, 1977u, 4000u}) {
        SCOPED_TRACE(size);
        SetRecord(held_);
        ExpectAccepted(StoredRecord(size), std::min<std::size_t>(size, 1976));
    }
}

// What a sheet's end keeps

class HostSheetTest : public pages::PageTest {
  protected:
    // Changes record, public DEVMODE and a selection while the sheet is open, then closes it.
    SheetResult ChangeAndClose(bool keep) {
        return OpenSheet([&](UiDriver&, Sheet& sheet) {
            Host().record_bytes()[147] = 5;
            Host().public_devmode().dmPaperWidth = 580;
            Host().options().item(DriverOptions::kQuality).Sel = 1;
            if (keep) {
                sheet.PressOk();
            } else {
                sheet.PressCancel();
            }
        });
    }
};

TEST_F(HostSheetTest, OkKeepsTheRecord) {
    Bytes expected = Record();
    const SheetResult result = ChangeAndClose(true);
    EXPECT_TRUE(result.kept);
    expected[147] = 5;
    EXPECT_EQ(pages::Differences(expected, Record()), "");
    EXPECT_EQ(Host().public_devmode().dmPaperWidth, 580);
    EXPECT_EQ(Host().options().item(DriverOptions::kQuality).Sel, 1);
}

TEST_F(HostSheetTest, CancelPutsTheRecordBack) {
    const Bytes before = Record();
    const short width = Host().public_devmode().dmPaperWidth;
    ASSERT_EQ(Host().options().item(DriverOptions::kQuality).Sel, 0);
    const SheetResult result = ChangeAndClose(false);
    EXPECT_FALSE(result.kept);
    EXPECT_EQ(pages::Differences(before, Record()), "");
    EXPECT_EQ(Host().public_devmode().dmPaperWidth, width);
    EXPECT_EQ(Host().options().item(DriverOptions::kQuality).Sel, 0);
}

}  // namespace
