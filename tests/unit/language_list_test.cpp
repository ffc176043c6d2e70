// The list of languages: what is read from a list file that is whole, broken or missing, and what a chosen
// text stands for.
#include "language/language_list.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using List = std::vector<LanguageEntry>;

const LanguageEntry kDefault = {u"English", u"ENG_KVMR72.res", u"System Language"};

List Read(const std::u16string& text) {
    return ReadLanguageList(LanguageFile(text));
}

List ReadCount(const std::u16string& count) {
    return Read(u"[LANGUAGE]\r\nCOUNT=" + count + u"\r\n");
}

TEST(ReadLanguageListTest, ThreeLanguages) {
    const List list = Read(
        u"[LANGUAGE]\r\nCUR_INI=ENG_KVMR72.res\r\nCOUNT=3\r\n"
        u"Language0=English\r\nINI0=ENG_KVMR72.res\r\nSYSLANG0=System Language\r\n"
        u"Language1=\u7B80\u4F53\u4E2D\u6587\r\nINI1=CHN_KVMR72.res\r\nSYSLANG1=\u7CFB\u7EDF\u8BED\u8A00("
        u"System)\r\n"
        u"Language2=\u7E41\u9AD4\u4E2D\u6587\r\nINI2=CHF_KVMR72.res\r\nSYSLANG2=\u7CFB\u7D71\u8A9E\u8A00("
        u"System)\r\n");
    const List expected = {
        {u"English", u"ENG_KVMR72.res", u"System Language"},
        {u"\u7B80\u4F53\u4E2D\u6587", u"CHN_KVMR72.res", u"\u7CFB\u7EDF\u8BED\u8A00(System)"},
        {u"\u7E41\u9AD4\u4E2D\u6587", u"CHF_KVMR72.res", u"\u7CFB\u7D71\u8A9E\u8A00(System)"},
    };
    EXPECT_EQ(list, expected);
}

TEST(ReadLanguageListTest, WithoutAFileThereAreTwoEnglishEntries) {
    EXPECT_EQ(ReadLanguageList(LanguageFile()), (List{kDefault, kDefault}));
    EXPECT_EQ(Read(u"[OTHER]\r\nCOUNT=5\r\n"), (List{kDefault, kDefault}));
}

TEST(ReadLanguageListTest, EachMissingTextHasItsDefault) {
    const List list = Read(u"[LANGUAGE]\nCOUNT=3\nLanguage0=A\nINI1=B.res\nSYSLANG2=C\nSYSLANG3=D\n");
    const List expected = {{u"A", u"ENG_KVMR72.res", u"System Language"},
                           {u"English", u"B.res", u"System Language"},
                           {u"English", u"ENG_KVMR72.res", u"C"}};
    EXPECT_EQ(list, expected);
}

TEST(ReadLanguageListTest, EmptyTextsStayEmpty) {
    EXPECT_EQ(Read(u"[LANGUAGE]\nCOUNT=1\nLanguage0=\nINI0=\nSYSLANG0=\n"), (List{{u"", u"", u""}}));
}

TEST(ReadLanguageListTest, TextsBelongToTheirSection) {
    EXPECT_EQ(Read(u"[OTHER]\nLanguage0=A\n[LANGUAGE]\nCOUNT=1\n"), List{kDefault});
}

TEST(ReadLanguageListTest, IndicesAreDecimal) {
    std::u16string text =
        u"[LANGUAGE]\nCOUNT=100\nLanguage9=nine\nLanguage09=no\nLanguage10=ten\nINI42=x\nSYSLANG99=last\n";
    const List list = Read(text);
    ASSERT_EQ(list.size(), 100u);
    for (std::size_t i = 0; i < list.size(); ++i) {
        LanguageEntry expected = kDefault;
        if (i == 9) {
            expected.name = u"nine";
        } else if (i == 10) {
            expected.name = u"ten";
        } else if (i == 42) {
            expected.file = u"x";
        } else if (i == 99) {
            expected.systemLabel = u"last";
        }
        EXPECT_EQ(list[i], expected) << i;
    }
}

TEST(ReadLanguageListTest, CountsAreReadAsThePlatformReadsThem) {
    EXPECT_EQ(ReadCount(u"0").size(), 0u);
    EXPECT_EQ(ReadCount(u"1").size(), 1u);
    EXPECT_EQ(ReadCount(u"-1").size(), 0u);
    EXPECT_EQ(ReadCount(u"-2147483648").size(), 0u);
    EXPECT_EQ(ReadCount(u"2147483648").size(), 0u) << "negative in 32 bits";
    EXPECT_EQ(ReadCount(u"garbage").size(), 0u);
    EXPECT_EQ(ReadCount(u"3 languages").size(), 3u);
    EXPECT_EQ(ReadCount(u"0x10").size(), 16u);
    EXPECT_EQ(ReadCount(u"\"4\"").size(), 4u);
    EXPECT_EQ(ReadCount(u"").size(), 2u);
    EXPECT_EQ(Read(u"[LANGUAGE]\nCOUNT\n").size(), 2u);
}

TEST(ReadLanguageListTest, AHundredIsTheMost) {
    EXPECT_EQ(ReadCount(u"99").size(), 99u);
    EXPECT_EQ(ReadCount(u"100").size(), 100u);
    EXPECT_EQ(ReadCount(u"101").size(), 100u);
    EXPECT_EQ(ReadCount(u"1000").size(), 100u);
    EXPECT_EQ(ReadCount(u"2147483647").size(), 100u);
}

TEST(ReadLanguageListTest, LongTextsAreCutAt49) {
    const std::u16string long49(49, u'x');
    for (const std::size_t length : {48u, 49u, 50u, 51u, 5000u}) {
        const std::u16string text(length, u'x');
        const List list =
            Read(u"[LANGUAGE]\nCOUNT=1\nLanguage0=" + text + u"\nINI0=" + text + u"\nSYSLANG0=" + text);
        const std::u16string expected = length < 49 ? text : long49;
        EXPECT_EQ(list, (List{{expected, expected, expected}})) << length;
    }
}

// What the platform's function gave for each of these values.
TEST(ProfileIntegerTest, AsThePlatform) {
    const std::pair<const char16_t*, std::int32_t> values[] = {
        {u"", 0},
        {u"3", 3},
        {u" 7 ", 7},
        {u"-1", -1},
        {u"+5", 5},
        {u"--1", 0},
        {u"abc", 0},
        {u"12abc", 12},
        {u"0x10", 16},
        {u"0X10", 0},
        {u"0b11", 3},
        {u"0o17", 15},
        {u"017", 17},
        {u"1000", 1000},
        {u"4294967298", 2},
        {u"2147483648", INT32_MIN},
        {u"3;x", 3},
        {u"- 3", 0},
        {u"-0x5", -5},
        {u"1.9", 1},
        {u"+", 0},
        {u"0x", 0},
        {u"0xAbCdEf", 11259375},
        {u"0xfg", 15},
        {u"0b12", 1},
        {u"0o8", 0},
        {u"\t4", 4},
        {u"99999999999999999999", 1661992959},
        {u"-2147483648", INT32_MIN},
    };
    for (const auto& [text, expected] : values) {
        EXPECT_EQ(ProfileInteger(text), expected) << testing::PrintToString(std::u16string(text));
    }
}

const List kList = {
    {u"English", u"ENG_KVMR72.res", u"System Language"},
    {u"Deutsch", u"GER.res", u"Systemsprache"},
    {u"English", u"ENG2.res", u"System Language"},
    {u"Both", u"BOTH.res", u"Both"},
};

TEST(CurrentLanguageTest, TheFirstOfTheNameExactly) {
    EXPECT_EQ(CurrentLanguage(kList, u"ENG_KVMR72.res"), 0u);
    EXPECT_EQ(CurrentLanguage(kList, u"GER.res"), 1u);
    EXPECT_EQ(CurrentLanguage(kList, u"BOTH.res"), 3u);
    EXPECT_EQ(CurrentLanguage(kList, u"ger.res"), std::nullopt);
    EXPECT_EQ(CurrentLanguage(kList, u"GER.re"), std::nullopt);
    EXPECT_EQ(CurrentLanguage(kList, u"GER.res2"), std::nullopt);
    EXPECT_EQ(CurrentLanguage(kList, u""), std::nullopt);
    EXPECT_EQ(CurrentLanguage({}, u"GER.res"), std::nullopt);
    const List twice = {kList[1], {u"x", u"GER.res", u"y"}};
    EXPECT_EQ(CurrentLanguage(twice, u"GER.res"), 0u);
}

TEST(ChooseLanguageTest, NamesStopFollowingTheSystemAndLabelsStart) {
    EXPECT_EQ(ChooseLanguage(kList, u"Deutsch"), (LanguageChoice{u"GER.res", false}));
    EXPECT_EQ(ChooseLanguage(kList, u"Systemsprache"), (LanguageChoice{u"GER.res", true}));
}

TEST(ChooseLanguageTest, TheLastMatchWins) {
    EXPECT_EQ(ChooseLanguage(kList, u"English"), (LanguageChoice{u"ENG2.res", false}));
    EXPECT_EQ(ChooseLanguage(kList, u"System Language"), (LanguageChoice{u"ENG2.res", true}));
    EXPECT_EQ(ChooseLanguage(kList, u"Both"), (LanguageChoice{u"BOTH.res", true}));
    const List crossed = {{u"A", u"1.res", u"B"}, {u"B", u"2.res", u"C"}};
    EXPECT_EQ(ChooseLanguage(crossed, u"B"), (LanguageChoice{u"2.res", false}));
}

TEST(ChooseLanguageTest, OtherTextsChooseNothing) {
    EXPECT_EQ(ChooseLanguage(kList, u"english"), std::nullopt);
    EXPECT_EQ(ChooseLanguage(kList, u"Deutsc"), std::nullopt);
    EXPECT_EQ(ChooseLanguage(kList, u"GER.res"), std::nullopt);
    EXPECT_EQ(ChooseLanguage(kList, u""), std::nullopt);
    EXPECT_EQ(ChooseLanguage({}, u"English"), std::nullopt);
}

// Without a list file both entries are alike, and the choice of either is English.
TEST(ChooseLanguageTest, ListOfDefaults) {
    const List list = ReadLanguageList(LanguageFile());
    EXPECT_EQ(ChooseLanguage(list, u"English"), (LanguageChoice{u"ENG_KVMR72.res", false}));
    EXPECT_EQ(ChooseLanguage(list, u"System Language"), (LanguageChoice{u"ENG_KVMR72.res", true}));
    EXPECT_EQ(CurrentLanguage(list, u"ENG_KVMR72.res"), 0u);
}

}  // namespace
