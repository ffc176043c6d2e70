#include "language/language_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Found = std::optional<StringView16>;

Found Text(const char16_t* text) {
    return StringView16(text);
}

std::span<const std::byte> Bytes(const std::string& bytes) {
    return std::as_bytes(std::span(bytes.data(), bytes.size()));
}

// A code page in which every byte above 7F is the Chinese character 4E00 + byte: no real one, so that a test
// sees whether the decoder was asked.
String16 DecodeTestCodePage(std::span<const std::byte> bytes) {
    String16 text;
    for (const std::byte byte : bytes) {
        const auto value = std::to_integer<unsigned>(byte);
        text += static_cast<Char16>(value < 0x80 ? value : 0x4E00 + value);
    }
    return text;
}

String16 Decode(const std::string& bytes) {
    return DecodeLanguageFile(Bytes(bytes), DecodeTestCodePage);
}

// The bytes of a UTF-16 file.
std::string Utf16File(StringView16 text, bool bigEndian = false) {
    std::string bytes;
    const auto add = [&](unsigned unit) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    };
    add(0xFEFF);
    for (const Char16 unit : text) {
        add(unit);
    }
    return bytes;
}

LanguageFile File(const String16& text) {
    return LanguageFile(text);
}

TEST(LanguageFileDecoding, LittleEndianNeedsItsMark) {
    EXPECT_EQ(Decode(std::string("\xFF\xFE\x2D\x4E\x3D\x00", 6)), u"\u4E2D=");
}

TEST(LanguageFileDecoding, BigEndianNeedsItsMark) {
    EXPECT_EQ(Decode(std::string("\xFE\xFF\x4E\x2D\x00\x3D", 6)), u"\u4E2D=");
}

TEST(LanguageFileDecoding, OtherBytesAreOfTheCodePage) {
    EXPECT_EQ(Decode("k=\xC4"), u"k=\u4EC4");
    EXPECT_EQ(Decode("\xFF"), u"\u4EFF");
    EXPECT_EQ(Decode("\xFE\xFE"), u"\u4EFE\u4EFE");
}

TEST(LanguageFileDecoding, HalfAUnitAtTheEndFallsAway) {
    EXPECT_EQ(Decode(std::string("\xFF\xFE\x41\x00\x42", 5)), u"A");
    EXPECT_EQ(Decode(std::string("\xFE\xFF\x00\x41\x00", 5)), u"A");
    EXPECT_EQ(Decode("\xFF\xFE\x41"), u"");
}

TEST(LanguageFileDecoding, EmptyFilesAndMarksAloneAreEmpty) {
    EXPECT_EQ(Decode(""), u"");
    EXPECT_EQ(Decode("\xFF\xFE"), u"");
    EXPECT_EQ(Decode("\xFE\xFF"), u"");
}

TEST(LanguageFileDecoding, SixteenMegabytesAreTheLimit) {
    std::string bytes(16u << 20, 'x');
    EXPECT_EQ(Decode(bytes).size(), 16u << 20);
    bytes += 'x';
    EXPECT_EQ(Decode(bytes), u"");
}

TEST(LanguageFile, FindsTheValueOfASectionsKey) {
    const LanguageFile file = File(u"[LAYOUT]\r\nRC_SCALE=Scale:\r\n[GPD]\r\nRC_SCALE=Other\r\n");
    EXPECT_EQ(file.Find(u"LAYOUT", u"RC_SCALE"), Text(u"Scale:"));
    EXPECT_EQ(file.Find(u"GPD", u"RC_SCALE"), Text(u"Other"));
}

TEST(LanguageFile, MissesWhatIsNotThere) {
    const LanguageFile file = File(u"[LAYOUT]\r\nRC_SCALE=Scale:\r\n");
    EXPECT_EQ(file.Find(u"LAYOUT", u"RC_SCAL"), std::nullopt);
    EXPECT_EQ(file.Find(u"LAYOUT", u"RC_SCALE2"), std::nullopt);
    EXPECT_EQ(file.Find(u"LAYOU", u"RC_SCALE"), std::nullopt);
    EXPECT_EQ(file.Find(u"LAYOUT", u"LAYOUT"), std::nullopt);
    EXPECT_EQ(file.Find(u"", u"RC_SCALE"), std::nullopt);
    EXPECT_EQ(file.Find(u"LAYOUT", u""), std::nullopt);
}

TEST(LanguageFile, EmptyObjectsHaveNothing) {
    EXPECT_EQ(LanguageFile().Find(u"S", u"k"), std::nullopt);
    EXPECT_EQ(File(u"").Find(u"S", u"k"), std::nullopt);
    EXPECT_EQ(File(u"").Find(u"", u""), std::nullopt);
}

TEST(LanguageFile, ComparesWithoutCase) {
    const LanguageFile file =
        File(u"[SeC\u00C4]\nK\u00E9y=Value\n[\u00D7]\nk=v\n[\u8BED\u8A00]\n\u952E=\u503C\n");
    EXPECT_EQ(file.Find(u"sEc\u00E4", u"kEY"), std::nullopt);
    EXPECT_EQ(file.Find(u"sEc\u00E4", u"k\u00C9Y"), Text(u"Value"));
    EXPECT_EQ(file.Find(u"\u00F7", u"k"), std::nullopt) << "the signs for times and divided are no pair";
    EXPECT_EQ(file.Find(u"\u8BED\u8A00", u"\u952E"), Text(u"\u503C"));
}

TEST(LanguageFile, KeepsTheCaseOfValues) {
    EXPECT_EQ(File(u"[S]\nk=MiXed \u00C4\n").Find(u"S", u"k"), Text(u"MiXed \u00C4"));
}

TEST(LanguageFile, DropsBlanksAroundNamesAndValues) {
    const LanguageFile file = File(u" \t[ S ]\t\r\n \v k a \f = \t v  w \x1A \r\n");
    EXPECT_EQ(file.Find(u"S", u"k a"), Text(u"v  w"));
    EXPECT_EQ(file.Find(u" S\t", u" k a "), Text(u"v  w"));
    EXPECT_EQ(File(u"[S]\nk=\u3000v\u00A0\n").Find(u"S", u"k"), Text(u"\u3000v\u00A0"))
        << "wide and fixed blanks are text";
}

TEST(LanguageFile, RemovesOnePairOfEqualQuotes) {
    const auto value = [](const char16_t* line) {
        return String16(File(String16(u"[S]\nk=") + line).Find(u"S", u"k").value_or(u"missing"));
    };
    EXPECT_EQ(value(u"\" v \""), u" v ");
    EXPECT_EQ(value(u"'v'"), u"v");
    EXPECT_EQ(value(u"\"\"v\"\""), u"\"v\"");
    EXPECT_EQ(value(u"\"\""), u"");
    EXPECT_EQ(value(u"\""), u"\"");
    EXPECT_EQ(value(u"'v\""), u"'v\"");
    EXPECT_EQ(value(u"\"v\" x"), u"\"v\" x");
    EXPECT_EQ(value(u"'All the data' will not"), u"'All the data' will not");
    EXPECT_EQ(value(u"'a' or 'b'"), u"a' or 'b");
}

TEST(LanguageFile, AnEmptyValueIsAValue) {
    EXPECT_EQ(File(u"[S]\nk=\n").Find(u"S", u"k"), Text(u""));
    EXPECT_EQ(File(u"[S]\nk=  \t").Find(u"S", u"k"), Text(u""));
    EXPECT_EQ(File(u"[S]\nk").Find(u"S", u"k"), std::nullopt);
}

TEST(LanguageFile, TheFirstEqualsSignDivides) {
    EXPECT_EQ(File(u"[S]\nk=b=c\n").Find(u"S", u"k"), Text(u"b=c"));
    EXPECT_EQ(File(u"[S]\nk==v\n").Find(u"S", u"k"), Text(u"=v"));
    EXPECT_EQ(File(u"[S]\n=v\nk=1\n").Find(u"S", u"k"), Text(u"1"));
}

TEST(LanguageFile, OfEqualKeysTheFirstCounts) {
    EXPECT_EQ(File(u"[S]\nk=1\nK=2\n").Find(u"S", u"k"), Text(u"1"));
    EXPECT_EQ(File(u"[S]\nk=\nk=2\n").Find(u"S", u"k"), Text(u""));
    EXPECT_EQ(File(u"[S]\nk\nk=2\n").Find(u"S", u"k"), std::nullopt) << "a key without '=' has no value";
}

TEST(LanguageFile, OfEqualSectionsOnlyTheFirstIsSearched) {
    const LanguageFile file = File(u"[S]\na=1\n[T]\nt=1\n[s]\na=2\nb=2\n");
    EXPECT_EQ(file.Find(u"S", u"a"), Text(u"1"));
    EXPECT_EQ(file.Find(u"S", u"b"), std::nullopt);
    EXPECT_EQ(file.Find(u"T", u"t"), Text(u"1"));
}

TEST(LanguageFile, LinesBeforeTheFirstHeaderHaveTheEmptySection) {
    const LanguageFile file = File(u"k=v\n[S]\nk=w\n[]\nj=1\n");
    EXPECT_EQ(file.Find(u"", u"k"), Text(u"v"));
    EXPECT_EQ(file.Find(u"S", u"k"), Text(u"w"));
    EXPECT_EQ(file.Find(u"", u"j"), std::nullopt) << "the empty section was there first";
}

TEST(LanguageFile, HeadersEndAtTheLastBracket) {
    EXPECT_EQ(File(u"[S] and more\nk=v").Find(u"S", u"k"), Text(u"v"));
    EXPECT_EQ(File(u"[S]x]\nk=v").Find(u"S]x", u"k"), Text(u"v"));
    EXPECT_EQ(File(u"[S]=v\nk=v").Find(u"S", u"k"), Text(u"v"));
}

TEST(LanguageFile, AHeaderWithoutItsBracketIsAKey) {
    const LanguageFile file = File(u"[A]\na=1\n[S\nk=v\n[T=4\n");
    EXPECT_EQ(file.Find(u"A", u"k"), Text(u"v"));
    EXPECT_EQ(file.Find(u"A", u"[T"), Text(u"4"));
    EXPECT_EQ(file.Find(u"S", u"k"), std::nullopt);
}

TEST(LanguageFile, SemicolonsBeginComments) {
    const LanguageFile file = File(u"[S]\n;k=1\n  ; [T]\nk=2 ; no comment\n");
    EXPECT_EQ(file.Find(u"S", u"k"), Text(u"2 ; no comment"));
    EXPECT_EQ(file.Find(u"S", u";k"), std::nullopt);
    EXPECT_EQ(file.Find(u"T", u"k"), std::nullopt);
}

TEST(LanguageFile, EveryKindOfLineEndCounts) {
    for (const char16_t* text :
         {u"[S]\r\nk=v\r\nj=2", u"[S]\nk=v\nj=2\n", u"[S]\rk=v\rj=2\r", u"[S]\n\rk=v\n\rj=2"}) {
        EXPECT_EQ(File(text).Find(u"S", u"k"), Text(u"v"));
        EXPECT_EQ(File(text).Find(u"S", u"j"), Text(u"2"));
    }
}

TEST(LanguageFile, AZeroUnitEndsItsNameOrValue) {
    using namespace std::string_literals;
    const LanguageFile file(u"[S\0T]\nk=a\0b\nj\0x=2\nq=\"a\0b\"\nz=\0a\n\0n=1\nl=3"s);
    EXPECT_EQ(file.Find(u"S", u"k"), Text(u"a"));
    EXPECT_EQ(file.Find(u"S", u"j"), Text(u"2"));
    EXPECT_EQ(file.Find(u"S", u"q"), Text(u"\"a"));
    EXPECT_EQ(file.Find(u"S", u"z"), Text(u""));
    EXPECT_EQ(file.Find(u"S", u"n"), std::nullopt);
    EXPECT_EQ(file.Find(u"S", u"l"), Text(u"3"));
}

TEST(LanguageFile, LongLinesAreWhole) {
    const String16 longText(100000, u'x');
    const LanguageFile file(u"[S]\n" + longText + u"=1\nk=" + longText + u"\nj=2\n");
    EXPECT_EQ(file.Find(u"S", longText), Text(u"1"));
    EXPECT_EQ(file.Find(u"S", u"k"), Found(longText));
    EXPECT_EQ(file.Find(u"S", u"j"), Text(u"2"));
}

TEST(LanguageFile, SurvivesBeingMoved) {
    // Short enough to lie inside the string object itself.
    LanguageFile first = File(u"[S]\nk=v");
    const LanguageFile second = std::move(first);
    EXPECT_EQ(second.Find(u"S", u"k"), Text(u"v"));
}

TEST(LanguageFile, ReadsWhatATruncatedFileHolds) {
    const std::string whole = Utf16File(u"[S]\r\na=first\r\nb=second\r\n");
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const LanguageFile file(Decode(whole.substr(0, length)));
        const Found a = file.Find(u"S", u"a");
        const Found b = file.Find(u"S", u"b");
        EXPECT_TRUE(!a || StringView16(u"first").starts_with(*a)) << length;
        EXPECT_TRUE(!b || (a == Text(u"first") && StringView16(u"second").starts_with(*b))) << length;
    }
    // The mark, "[S]\r\na=first" and, cut in the middle of a unit, the line's end.
    EXPECT_EQ(LanguageFile(Decode(whole.substr(0, 27))).Find(u"S", u"a"), Text(u"first"));
    EXPECT_EQ(LanguageFile(Decode(whole.substr(0, 25))).Find(u"S", u"a"), Text(u"firs"));
}

TEST(LanguageFile, SurvivesRandomBytes) {
    std::mt19937 random(20240607);
    const std::string favourites("[]=;\"'\r\n \0SkSk", 14);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes(random() % 200, '\0');
        for (char& byte : bytes) {
            byte = random() % 3 ? favourites[random() % favourites.size()] : static_cast<char>(random());
        }
        if (round % 3) {
            bytes.insert(0, round % 3 == 1 ? "\xFF\xFE" : "\xFE\xFF");
        }
        const String16 text = Decode(bytes);
        const LanguageFile file(text);
        for (const char16_t* section : {u"", u"S", u"k"}) {
            const Found value = file.Find(section, u"k");
            EXPECT_TRUE(!value || text.find(*value) != String16::npos);
        }
    }
}

// Ten megabytes of anything: quadratic work anywhere would take minutes.
class LargeLanguageFile : public ::testing::TestWithParam<int> {
  protected:
    static constexpr std::size_t kSize = 10u << 20;

    static std::string Content(int kind) {
        std::string text;
        text.reserve(kSize + 32);
        std::mt19937 random(7);
        for (unsigned i = 0; text.size() < kSize; ++i) {
            switch (kind) {
                case 0:
                    text += "key" + std::to_string(i) + "=value\r\n";
                    break;
                case 1:
                    text += "same=value\n";
                    break;
                case 2:
                    text += "[section" + std::to_string(i) + "]\n";
                    break;
                case 3:
                    text += "[same]\n";
                    break;
                case 4:
                    text += "[[[[[[[[[[[[[[[[";
                    break;
                case 5:
                    text += '\n';
                    break;
                default:
                    text += static_cast<char>(random());
                    break;
            }
        }
        return text;
    }
};

TEST_P(LargeLanguageFile, IsReadToItsEnd) {
    const LanguageFile file(Decode("[before]\nk=1\n" + Content(GetParam()) + "\n[behind]\nk=2\n"));
    EXPECT_EQ(file.Find(u"before", u"k"), Text(u"1"));
    EXPECT_EQ(file.Find(u"behind", u"k"), Text(u"2"));
    for (int look = 0; look < 450; ++look) {
        EXPECT_EQ(file.Find(u"before", u"missing"), std::nullopt);
    }
}

INSTANTIATE_TEST_SUITE_P(Contents, LargeLanguageFile, ::testing::Range(0, 7));

// The files as shipped: each follows the system's list of languages.
TEST(ShippedLanguageFiles, HaveTheirTextsInTheirLanguage) {
    const auto load = [](const char* name) {
        std::ifstream stream(std::string(LANGUAGE_FOLDER "/") + name, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return LanguageFile(DecodeLanguageFile(Bytes(bytes), DecodeTestCodePage));
    };
    for (const char* name : {"ENG_KVMR72.res", "CHN_KVMR72.res", "CHF_KVMR72.res"}) {
        EXPECT_EQ(load(name).Find(u"FILEVER", u"INIVERSION"), Text(u"1")) << name;
    }
    EXPECT_EQ(load("ENG_KVMR72.res").Find(u"OPERATION", u"RC_OPERATIONFORM"), Text(u"Operation"));
}

}  // namespace
