// The control font's table: every row, every limit, and a profile file that looks keys up as the platform
// does.
#include "devpages/control_font.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "language/message_texts.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Pair = std::pair<std::u16string, std::u16string>;

constexpr std::u16string_view kDigits = u"0123456789ABCDEF";

std::u16string KeyOfCode(std::size_t code) {
    return {kDigits[code / 16], kDigits[code % 16]};
}

std::u16string Pairs(std::size_t count) {
    std::u16string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += KeyOfCode(i % 256);
        text += u' ';
    }
    return text;
}

Bytes Counted(std::size_t count) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i));
    }
    return bytes;
}

std::u16string Repeated(std::u16string_view piece, std::size_t length) {
    std::u16string text;
    while (text.size() < length) {
        text += piece;
    }
    text.resize(length);
    return text;
}

// The file that saved pairs make: the section's header and a line for each.
std::string FileBytes(const std::vector<Pair>& pairs) {
    std::string bytes = pairs.empty() ? "" : "[Character Translation Table]\r\n";
    for (const auto& [key, value] : pairs) {
        bytes.append(key.begin(), key.end());
        bytes += '=';
        bytes.append(value.begin(), value.end());
        bytes += "\r\n";
    }
    return bytes;
}

std::u16string Lowered(std::u16string text) {
    for (char16_t& unit : text) {
        if (unit >= u'A' && unit <= u'Z') {
            unit = static_cast<char16_t>(unit + 32);
        }
    }
    return text;
}

// Looks keys up without case and answers with the first, as the platform does.
class FakeFile final : public ControlFontFile {
  public:
    explicit FakeFile(std::vector<Pair> pairs = {}) : pairs_(std::move(pairs)) {}

    String16 Keys() override {
        String16 keys;
        for (const Pair& pair : pairs_) {
            keys += pair.first;
            keys += u'\0';
        }
        return keys;
    }

    std::size_t Read(const Char16* key, std::span<Char16> value) noexcept override {
        rooms_.insert(value.size());
        const std::size_t length = std::min(Value(key).size(), value.size() - 1);
        std::copy_n(Value(key).begin(), length, value.begin());
        value[length] = u'\0';
        return length;
    }

    void Remove() noexcept override {
        ++removals_;
        pairs_.clear();
    }

    bool Write(const Char16* key, const Char16* value) noexcept override {
        ++writes_;
        if (writes_ - 1 == failing_) {
            return false;
        }
        pairs_.emplace_back(key, value);
        return true;
    }

    void FailWrite(int number) {
        failing_ = number;
        writes_ = 0;
    }

    const std::vector<Pair>& Content() const { return pairs_; }
    int Writes() const { return writes_; }
    int Removals() const { return removals_; }
    const std::set<std::size_t>& Rooms() const { return rooms_; }

  private:
    std::u16string Value(std::u16string_view key) const {
        for (const Pair& pair : pairs_) {
            if (Lowered(pair.first) == Lowered(std::u16string(key))) {
                return pair.second;
            }
        }
        return {};
    }

    std::vector<Pair> pairs_;
    int failing_ = -1;
    int writes_ = 0;
    int removals_ = 0;
    std::set<std::size_t> rooms_;
};

// Answers every read with a length of its own, and fills the room with no terminator.
class BrokenFile final : public ControlFontFile {
  public:
    explicit BrokenFile(std::size_t answer) : answer_(answer) {}
    String16 Keys() override { return u"20"; }
    std::size_t Read(const Char16*, std::span<Char16> value) noexcept override {
        std::fill(value.begin(), value.end(), u'1');
        return answer_;
    }
    void Remove() noexcept override {}
    bool Write(const Char16*, const Char16*) noexcept override { return true; }

  private:
    std::size_t answer_;
};

ControlFont Loaded(FakeFile& file) {
    ControlFont font;
    font.Load(file);
    return font;
}

ControlFont Loaded(std::vector<Pair> pairs) {
    FakeFile file(std::move(pairs));
    return Loaded(file);
}

int RowOf(char character) {
    return character - ' ';
}

// Empty but for these rows.
void ExpectCommands(const ControlFont& font, const std::vector<std::pair<int, std::u16string>>& commands) {
    std::vector<std::u16string> expected(96);
    for (const auto& [row, text] : commands) {
        expected[static_cast<std::size_t>(row)] = text;
    }
    for (int row = 0; row < 96; ++row) {
        EXPECT_EQ(font.Command(row), expected[static_cast<std::size_t>(row)]) << row;
    }
}

// What a command must hold after `bytes` were stored.
ControlCommand Holding(const Bytes& bytes) {
    ControlCommand command{};
    std::copy(bytes.begin(), bytes.end(), command.bytes.begin());
    command.length = static_cast<std::uint8_t>(bytes.size());
    return command;
}

void ExpectParse(const std::u16string& text, const Bytes& expected) {
    // Exactly the text's units on the heap, so that the address sanitizer sees reads behind it.
    const auto exact = std::make_unique<char16_t[]>(text.size());
    std::copy(text.begin(), text.end(), exact.get());
    const std::optional<ControlCommand> command = ParseControlCommand({exact.get(), text.size()});
    ASSERT_TRUE(command.has_value()) << testing::PrintToString(text);
    EXPECT_EQ(command->length, expected.size()) << testing::PrintToString(text);
    EXPECT_EQ(*command, Holding(expected)) << testing::PrintToString(text);
}

TEST(ControlFontTest, FixedTexts) {
    EXPECT_EQ(std::u16string_view(kControlFontPath),
              u"\\system32\\spool\\drivers\\w32x86\\3\\KVMR72CONTROL.dat");
    EXPECT_EQ(std::u16string_view(kControlFontSection), u"Character Translation Table");
    EXPECT_EQ(std::u16string_view(kControlFontDenied), u"Please check if user has administrator privileges!");
    // The two dialogs say it differently.
    EXPECT_EQ(std::u16string_view(kStoredCommandTooLong), u"Command length error");
    const auto* typed = std::find_if(
        std::begin(kMessageTexts), std::end(kMessageTexts),
        [](const TextEntry& entry) { return std::u16string_view(entry.key) == u"MB_OPERATION_ERROR1"; });
    ASSERT_NE(typed, std::end(kMessageTexts));
    EXPECT_EQ(std::u16string_view(typed->english), u"Command length error!");
}

TEST(ControlFontTest, RowsAreTheCharactersFrom32To127) {
    EXPECT_EQ(kControlFontRows, 96);
    for (int row = 0; row < 96; ++row) {
        const auto code = static_cast<std::size_t>(row) + 32;
        EXPECT_TRUE(ControlFont::HasRow(row));
        EXPECT_EQ(ControlFont::Character(row), std::u16string(1, static_cast<char16_t>(code)));
        EXPECT_EQ(ControlFont::Key(row), KeyOfCode(code));
    }
    EXPECT_EQ(ControlFont::Character(0), u" ");
    EXPECT_EQ(ControlFont::Key(0), u"20");
    EXPECT_EQ(ControlFont::Character(33), u"A");
    EXPECT_EQ(ControlFont::Key(33), u"41");
    EXPECT_EQ(ControlFont::Key(42), u"4A");
    EXPECT_EQ(ControlFont::Character(95), u"\x7F");
    EXPECT_EQ(ControlFont::Key(95), u"7F");
}

TEST(ControlFontTest, RowsThatAreNotThereTakeNothing) {
    ControlFont font = Loaded({{u"20", u"1B "}, {u"7F", u"1C "}});
    for (const int row : {-1, 96, 97, -96, 2147483647, -2147483647 - 1}) {
        EXPECT_FALSE(ControlFont::HasRow(row)) << row;
        EXPECT_EQ(ControlFont::Character(row), u"") << row;
        EXPECT_EQ(ControlFont::Key(row), u"") << row;
        EXPECT_EQ(font.Command(row), u"") << row;
        font.Store(row, Holding({0x01}));
        font.Delete(row);
    }
    ExpectCommands(font, {{0, u"1B "}, {95, u"1C "}});
}

TEST(ControlFontTest, RowToShowIsTheOneAboveFromTheThirdOn) {
    const std::vector<std::pair<int, int>> expected = {{0, 0}, {1, 1}, {2, 1}, {3, 2}, {94, 93}, {95, 94}};
    for (const auto& [selected, shown] : expected) {
        EXPECT_EQ(RowToShow(selected), shown) << selected;
    }
}

TEST(ParseControlCommandTest, Examples) {
    ExpectParse(u"1b40", {0x1B, 0x40});
    ExpectParse(u"1B 40 ", {0x1B, 0x40});
    ExpectParse(u"1 B", {0x01, 0x0B});
    ExpectParse(u"1D5", {0x1D, 0x05});
    ExpectParse(u"-.", {0x00});
    ExpectParse(u"FF", {0xFF});
    ExpectParse(u"", {});
    ExpectParse(u"   ", {});
}

TEST(ParseControlCommandTest, UpTo128Bytes) {
    for (const std::size_t count : {0u, 1u, 127u, 128u}) {
        ExpectParse(Pairs(count), Counted(count));
    }
    for (const std::size_t count : {129u, 200u, 255u, 256u, 257u, 384u, 1667u}) {
        EXPECT_EQ(ParseControlCommand(Pairs(count)), std::nullopt) << count;
        EXPECT_EQ(ParseTypedControlCommand(Pairs(count)), std::nullopt) << count;
    }
    // As few characters as they take.
    ExpectParse(std::u16string(256, u'7'), Bytes(128, 0x77));
    EXPECT_EQ(ParseControlCommand(std::u16string(257, u'7')), std::nullopt);
    ExpectParse(Repeated(u"8 ", 256), Bytes(128, 0x08));
    EXPECT_EQ(ParseControlCommand(Repeated(u"8 ", 257)), std::nullopt);
}

TEST(ParseControlCommandTest, LongTexts) {
    EXPECT_EQ(ParseControlCommand(std::u16string(399, u'7')), std::nullopt);
    EXPECT_EQ(ParseControlCommand(std::u16string(5000, u'7')), std::nullopt);
    ExpectParse(std::u16string(399, u' '), {});
    ExpectParse(std::u16string(5000, u' '), {});
    ExpectParse(std::u16string(5000, u' ') + u"1B", {0x1B});
}

TEST(ParseTypedControlCommandTest, First400CharactersCount) {
    const std::u16string command = Pairs(127);  // 381 characters
    const std::u16string padding(18, u' ');     // up to the 399th
    EXPECT_EQ(ParseTypedControlCommand(command + padding), Holding(Counted(127)));
    Bytes one = Counted(127);
    one.push_back(0x05);
    EXPECT_EQ(ParseTypedControlCommand(command + padding + u"5"), Holding(one));
    EXPECT_EQ(ParseTypedControlCommand(command + padding + u"56"), Holding(one));
    EXPECT_EQ(ParseTypedControlCommand(command + padding + u" 5"), Holding(Counted(127)));
    EXPECT_EQ(ParseTypedControlCommand(command + padding + Repeated(u" 5", 4601)), Holding(Counted(127)));

    EXPECT_EQ(ParseTypedControlCommand(std::u16string(399, u'7')), std::nullopt);
    EXPECT_EQ(ParseTypedControlCommand(std::u16string(400, u'7')), std::nullopt);
    EXPECT_EQ(ParseTypedControlCommand(std::u16string(5000, u'7')), std::nullopt);
    EXPECT_EQ(ParseTypedControlCommand(std::u16string(5000, u' ')), Holding({}));
    EXPECT_EQ(ParseTypedControlCommand({}), Holding({}));
    EXPECT_EQ(ParseTypedControlCommand(Pairs(128)), Holding(Counted(128)));
    EXPECT_EQ(ParseTypedControlCommand(u"1 B"), Holding({0x01, 0x0B}));
}

TEST(ControlCommandTextTest, PairsWithABlankBehindEach) {
    EXPECT_EQ(ControlCommandText(Holding({})), u"");
    EXPECT_EQ(ControlCommandText(Holding({0x1B, 0x40})), u"1B 40 ");
    EXPECT_EQ(ControlCommandText(Holding({0x00})), u"00 ");
    EXPECT_EQ(ControlCommandText(Holding(Counted(128))), Pairs(128));
    EXPECT_EQ(Pairs(128).size(), 384u);
    // Whatever the length says, there are 128 bytes.
    ControlCommand beyond = Holding(Counted(128));
    for (const int length : {129, 200, 255}) {
        beyond.length = static_cast<std::uint8_t>(length);
        EXPECT_EQ(ControlCommandText(beyond), Pairs(128)) << length;
    }
}

TEST(ControlFontLoadTest, EmptyWithoutFile) {
    ExpectCommands(ControlFont(), {});
    ExpectCommands(Loaded(std::vector<Pair>{}), {});
}

TEST(ControlFontLoadTest, EveryRowReadsItsKey) {
    for (int row = 0; row < 96; ++row) {
        const auto code = static_cast<std::size_t>(row) + 32;
        ExpectCommands(Loaded({{KeyOfCode(code), u"1B 40 "}}), {{row, u"1B 40 "}});
    }
    // All at once, in falling order.
    std::vector<Pair> pairs;
    std::vector<std::pair<int, std::u16string>> expected;
    for (int row = 95; row >= 0; --row) {
        const std::u16string key = KeyOfCode(static_cast<std::size_t>(row) + 32);
        pairs.emplace_back(key, key + u" 00");
        expected.emplace_back(row, key + u" 00");
    }
    ExpectCommands(Loaded(pairs), expected);
}

TEST(ControlFontLoadTest, OtherKeysAreNeverFound) {
    ExpectCommands(Loaded({{u"4a", u"01"},
                           {u"041", u"02"},
                           {u"0x41", u"03"},
                           {u"1F", u"04"},
                           {u"80", u"05"},
                           {u"A", u"06"},
                           {u"4", u"07"},
                           {u"411", u"08"},
                           {u"", u"09"},
                           {u"7f", u"0A"},
                           {u"004B", u"0B"},
                           {u"\uFF14\uFF11", u"0C"}}),
                   {});
    ExpectCommands(Loaded({{u"4a", u"01"}, {u"4B", u"02"}, {u"041", u"03"}, {u"42", u"04"}}),
                   {{RowOf('K'), u"02"}, {RowOf('B'), u"04"}});
    // Every key that has a lower case.
    std::vector<Pair> lower;
    for (std::size_t code = 32; code <= 127; ++code) {
        if (Lowered(KeyOfCode(code)) != KeyOfCode(code)) {
            lower.emplace_back(Lowered(KeyOfCode(code)), u"1B ");
        }
    }
    EXPECT_EQ(lower.size(), 36u);
    ExpectCommands(Loaded(lower), {});
}

TEST(ControlFontLoadTest, AnotherSpellingHidesWhatStandsBehindIt) {
    // The platform's answer for 4A is the value of 4a, which is not ours.
    ExpectCommands(Loaded({{u"4a", u"01"}, {u"4A", u"02"}}), {});
    ExpectCommands(Loaded({{u"4A", u"02"}, {u"4a", u"01"}}), {{RowOf('J'), u"02"}});
    ExpectCommands(Loaded({{u"41", u"01"}, {u"41", u"02"}}), {{RowOf('A'), u"01"}});
}

TEST(ControlFontLoadTest, ValuesStayAsRead) {
    for (const std::u16string value : {u"1b40", u"1B 40", u"1 B", u"  1B", u"zz", u" ", u"\"1B\""}) {
        ExpectCommands(Loaded({{u"41", value}}), {{RowOf('A'), value}});
    }
    for (const std::size_t count : {0u, 1u, 128u, 129u}) {
        ExpectCommands(Loaded({{u"41", Pairs(count)}}), {{RowOf('A'), Pairs(count)}});
    }
    // 200 bytes fit into the room as lone digits only.
    const std::u16string lone = Repeated(u"8 ", 399);
    ExpectCommands(Loaded({{u"41", lone}}), {{RowOf('A'), lone}});
    EXPECT_EQ(ParseControlCommand(lone), std::nullopt);
    ExpectCommands(Loaded({{u"41", Pairs(200)}}), {{RowOf('A'), Pairs(200).substr(0, 399)}});
}

TEST(ControlFontLoadTest, LongValuesAreCutAt399) {
    for (const std::size_t length : {398u, 399u, 400u, 5000u}) {
        FakeFile file({{u"41", Repeated(u"1B40", length)}, {u"42", u"1C "}});
        const ControlFont font = Loaded(file);
        EXPECT_EQ(file.Rooms(), std::set<std::size_t>{400});
        ExpectCommands(font, {{RowOf('A'), Repeated(u"1B40", std::min<std::size_t>(length, 399))},
                              {RowOf('B'), u"1C "}});
    }
    // What is cut away is no part of the command: 128 bytes and blanks up to the room's end.
    const std::u16string value = Pairs(128) + std::u16string(15, u' ');
    const ControlFont font = Loaded({{u"41", value + Pairs(100)}});
    EXPECT_EQ(font.Command(RowOf('A')), value);
    EXPECT_EQ(ParseControlCommand(font.Command(RowOf('A'))), Holding(Counted(128)));
}

TEST(ControlFontLoadTest, AnswersOfABrokenFileAreBounded) {
    const std::vector<std::pair<std::size_t, std::size_t>> lengths = {
        {0, 0}, {3, 3}, {399, 399}, {400, 399}, {5000, 399}, {static_cast<std::size_t>(-1), 399}};
    for (const auto& [answer, length] : lengths) {
        BrokenFile file(answer);
        ControlFont font;
        font.Load(file);
        ExpectCommands(font, {{0, std::u16string(length, u'1')}});
    }
}

TEST(ControlFontLoadTest, ValueEndsAtItsTerminator) {
    ExpectCommands(Loaded({{u"41", std::u16string(u"1B\0 40", 6)}}), {{RowOf('A'), u"1B"}});
}

TEST(ControlFontLoadTest, ReplacesWhatWasThere) {
    FakeFile file(std::vector<Pair>{{u"41", u"1B "}});
    ControlFont font = Loaded(file);
    font.Store(RowOf('Z'), Holding({0x01}));
    FakeFile other(std::vector<Pair>{{u"42", u"1C "}});
    font.Load(other);
    ExpectCommands(font, {{RowOf('B'), u"1C "}});
}

TEST(ControlFontSaveTest, EditedRowsInPairsOthersAsRead) {
    FakeFile file({{u"43", u"1b40"}, {u"41", u"1b40"}, {u"4a", u"01"}, {u"042", u"02"}, {u"20", u" 1 B"}});
    ControlFont font = Loaded(file);
    const std::optional<ControlCommand> command = ParseControlCommand(font.Command(RowOf('A')));
    ASSERT_TRUE(command.has_value());
    font.Store(RowOf('A'), *command);
    EXPECT_TRUE(font.Save(file));
    EXPECT_EQ(FileBytes(file.Content()),
              "[Character Translation Table]\r\n20= 1 B\r\n41=1B 40 \r\n43=1b40\r\n");
    EXPECT_EQ(file.Removals(), 1);
    EXPECT_EQ(file.Writes(), 3);

    const ControlFont again = Loaded(file);
    ExpectCommands(again, {{0, u" 1 B"}, {RowOf('A'), u"1B 40 "}, {RowOf('C'), u"1b40"}});
}

TEST(ControlFontSaveTest, LongCommandsStayAsRead) {
    const std::u16string lone = Repeated(u"8 ", 399);
    FakeFile file({{u"7F", lone}, {u"7E", Pairs(129)}, {u"7D", Repeated(u"1B40", 5000)}});
    EXPECT_TRUE(Loaded(file).Save(file));
    EXPECT_EQ(file.Content(),
              (std::vector<Pair>{{u"7D", Repeated(u"1B40", 399)}, {u"7E", Pairs(129)}, {u"7F", lone}}));
}

TEST(ControlFontSaveTest, NoCommandLeavesNoFile) {
    FakeFile file({{u"20", u"1B"}, {u"41", u"1B 40 "}, {u"7F", u"1C"}});
    ControlFont font = Loaded(file);
    font.Delete(0);
    font.Delete(RowOf('A'));
    font.Store(95, Holding({}));
    ExpectCommands(font, {});
    EXPECT_TRUE(font.Save(file));
    EXPECT_EQ(FileBytes(file.Content()), "");
    EXPECT_EQ(file.Removals(), 1);
    EXPECT_EQ(file.Writes(), 0);
}

TEST(ControlFontSaveTest, DeleteKeepsTheOtherRows) {
    FakeFile file({{u"40", u"01 "}, {u"41", u"02 "}, {u"42", u"03 "}});
    ControlFont font = Loaded(file);
    font.Delete(RowOf('A'));
    font.Delete(RowOf('A'));
    ExpectCommands(font, {{RowOf('@'), u"01 "}, {RowOf('B'), u"03 "}});
    EXPECT_EQ(ControlFont::Character(RowOf('A')), u"A");
    EXPECT_TRUE(font.Save(file));
    EXPECT_EQ(FileBytes(file.Content()), "[Character Translation Table]\r\n40=01 \r\n42=03 \r\n");
}

TEST(ControlFontSaveTest, AllRowsInOrder) {
    ControlFont font;
    std::string expected = "[Character Translation Table]\r\n";
    for (int row = 95; row >= 0; --row) {
        font.Store(row, Holding({0x1B, static_cast<std::uint8_t>(row)}));
    }
    for (std::size_t code = 32; code <= 127; ++code) {
        const std::u16string line = KeyOfCode(code) + u"=1B " + KeyOfCode(code - 32) + u" \r\n";
        expected.append(line.begin(), line.end());
    }
    FakeFile file;
    EXPECT_TRUE(font.Save(file));
    EXPECT_EQ(FileBytes(file.Content()), expected);
    EXPECT_EQ(file.Writes(), 96);
}

TEST(ControlFontSaveTest, StopsAtTheFirstWriteThatFails) {
    ControlFont font;
    for (int row = 0; row < 96; ++row) {
        font.Store(row, Holding({static_cast<std::uint8_t>(row)}));
    }
    for (int failing = 0; failing < 96; ++failing) {
        FakeFile file({{u"20", u"old"}, {u"7F", u"old"}});
        file.FailWrite(failing);
        EXPECT_FALSE(font.Save(file)) << failing;
        EXPECT_EQ(file.Writes(), failing + 1);
        EXPECT_EQ(file.Removals(), 1);
        std::vector<Pair> expected;
        for (int row = 0; row < failing; ++row) {
            const auto index = static_cast<std::size_t>(row);
            expected.emplace_back(KeyOfCode(index + 32), KeyOfCode(index) + u" ");
        }
        EXPECT_EQ(file.Content(), expected) << failing;
        // Nothing of the table is lost, and the next save writes it all.
        file.FailWrite(-1);
        EXPECT_TRUE(font.Save(file));
        EXPECT_EQ(file.Content().size(), 96u);
    }
}

TEST(ControlFontSaveTest, FailingRowIsCountedAmongThoseWithACommand) {
    FakeFile file({{u"30", u"01 "}, {u"39", u"02 "}, {u"41", u"03 "}});
    const ControlFont font = Loaded(file);
    file.FailWrite(1);
    EXPECT_FALSE(font.Save(file));
    EXPECT_EQ(FileBytes(file.Content()), "[Character Translation Table]\r\n30=01 \r\n");
    EXPECT_EQ(file.Writes(), 2);
}

TEST(ControlFontSaveTest, StoredCommandsComeBackAfterSaveAndLoad) {
    std::mt19937 random(815);
    std::uniform_int_distribution<int> anyByte(0, 255);
    std::uniform_int_distribution<int> anyLength(0, 128);
    for (int round = 0; round < 50; ++round) {
        ControlFont font;
        std::vector<ControlCommand> stored;
        for (int row = 0; row < 96; ++row) {
            Bytes bytes(static_cast<std::size_t>(anyLength(random)));
            for (std::uint8_t& byte : bytes) {
                byte = static_cast<std::uint8_t>(anyByte(random));
            }
            stored.push_back(Holding(bytes));
            font.Store(row, stored.back());
        }
        FakeFile file;
        ASSERT_TRUE(font.Save(file));
        const ControlFont again = Loaded(file);
        for (int row = 0; row < 96; ++row) {
            ASSERT_EQ(ParseControlCommand(again.Command(row)), stored[static_cast<std::size_t>(row)]);
        }
    }
}

}  // namespace
