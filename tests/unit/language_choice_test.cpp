#include "language/language_choice.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

namespace {

TEST(LanguageOfSystem, SimplifiedChineseForThePrc) {
    EXPECT_EQ(LanguageOfSystem(2052).file, u"CHN_KVMR72.res");
    EXPECT_EQ(LanguageOfSystem(2052).label, u"\u7CFB\u7EDF\u8BED\u8A00(System)");
}

TEST(LanguageOfSystem, TraditionalChineseForTaiwanHongKongAndSingapore) {
    for (const std::uint16_t identifier : std::initializer_list<std::uint16_t>{1028, 3076, 4100}) {
        EXPECT_EQ(LanguageOfSystem(identifier).file, u"CHF_KVMR72.res") << identifier;
        EXPECT_EQ(LanguageOfSystem(identifier).label, u"\u7CFB\u7D71\u8A9E\u8A00(System)") << identifier;
    }
}

TEST(LanguageOfSystem, EnglishForAllOthers) {
    // United States, Germany, Japan, Macao, none, and the primary language of the Chinese ones alone.
    for (const std::uint16_t identifier :
         std::initializer_list<std::uint16_t>{1033, 1031, 1041, 5124, 0, 4, 0xFFFF}) {
        EXPECT_EQ(LanguageOfSystem(identifier).file, u"ENG_KVMR72.res") << identifier;
        EXPECT_EQ(LanguageOfSystem(identifier).label, u"System Language") << identifier;
    }
}

TEST(UsableLanguageName, KeepsFileNames) {
    for (const char16_t* name : {u"CHN_KVMR72.res", u"a", u".res", u"\u4E2D\u6587.res", u"a b.c"}) {
        EXPECT_EQ(UsableLanguageName(name), name);
    }
}

TEST(UsableLanguageName, EnglishForNothing) {
    EXPECT_EQ(UsableLanguageName(u""), u"ENG_KVMR72.res");
}

TEST(UsableLanguageName, TwentyNineUnitsFit) {
    const String16 fits(29, u'n');
    EXPECT_EQ(UsableLanguageName(fits), fits);
    EXPECT_EQ(UsableLanguageName(fits + u'n'), u"ENG_KVMR72.res");
    EXPECT_EQ(UsableLanguageName(String16(127, u'n')), u"ENG_KVMR72.res");
}

TEST(UsableLanguageName, EnglishForWhatLeadsOutOfTheFolder) {
    for (const char16_t* name :
         {u"..\\x.res", u"../x.res", u"C:x.res", u"\\x.res", u"x.res:stream", u".", u"..", u"x.res.",
          u"x.res ", u"x?.res", u"*", u"x\t.res", u"x\n", u"\"x\"", u"<", u"|"}) {
        EXPECT_EQ(UsableLanguageName(name), u"ENG_KVMR72.res") << String16(name).size();
    }
    EXPECT_EQ(UsableLanguageName(StringView16(u"x\0y", 3)), u"ENG_KVMR72.res");
}

TEST(FollowsSystem, LooksForTrueAnywhere) {
    EXPECT_TRUE(FollowsSystem(u"TRUE"));
    EXPECT_TRUE(FollowsSystem(u"is TRUE now"));
    EXPECT_FALSE(FollowsSystem(u"FALSE"));
    EXPECT_FALSE(FollowsSystem(u"true"));
    EXPECT_FALSE(FollowsSystem(u"TRU"));
    EXPECT_FALSE(FollowsSystem(u""));
}

TEST(ReplacesUserCopy, UnlessTheUsersIsNewer) {
    EXPECT_TRUE(ReplacesUserCopy(2, 1));
    EXPECT_TRUE(ReplacesUserCopy(2, 2));
    EXPECT_FALSE(ReplacesUserCopy(2, 3));
    EXPECT_TRUE(ReplacesUserCopy(99999, 0));
    EXPECT_FALSE(ReplacesUserCopy(std::numeric_limits<std::int32_t>::min(), -1));
    EXPECT_TRUE(
        ReplacesUserCopy(std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()));
}

TEST(JoinText, WritesThePartsAndZeroes) {
    std::array<Char16, 8> buffer;
    buffer.fill(u'#');
    EXPECT_TRUE(JoinText(buffer.data(), 7, {u"ab", u"", u"cd"}));
    EXPECT_EQ(StringView16(buffer.data(), 8), StringView16(u"abcd\0\0\0#", 8));
}

TEST(JoinText, TheTerminatorMustFit) {
    std::array<Char16, 6> buffer;
    buffer.fill(u'#');
    EXPECT_TRUE(JoinText(buffer.data(), 5, {u"ab", u"cd"}));
    EXPECT_EQ(StringView16(buffer.data(), 6), StringView16(u"abcd\0#", 6));
    buffer.fill(u'#');
    EXPECT_FALSE(JoinText(buffer.data(), 4, {u"ab", u"cd"}));
    EXPECT_EQ(StringView16(buffer.data(), 6), StringView16(u"\0\0\0\0##", 6));
    EXPECT_FALSE(JoinText(buffer.data(), 4, {String16(1000, u'x'), u"a"}));
    EXPECT_FALSE(JoinText(buffer.data(), 4, {u"a", String16(1000, u'x')}));
}

TEST(JoinText, NoPartsAreEmptyAndNoRoomIsAFailure) {
    std::array<Char16, 2> buffer{u'#', u'#'};
    EXPECT_FALSE(JoinText(buffer.data(), 0, {}));
    EXPECT_EQ(buffer[0], u'#');
    EXPECT_TRUE(JoinText(buffer.data(), 1, {}));
    EXPECT_EQ(buffer[0], u'\0');
    EXPECT_EQ(buffer[1], u'#');
}

TEST(UsableLanguageNameTest, RefusesDevices) {
    for (const Char16* name :
         {TEXT16("CON"), TEXT16("con.res"), TEXT16("Prn.a.b"), TEXT16("AUX .res"), TEXT16("nul"),
          TEXT16("COM1"), TEXT16("com0.res"), TEXT16("LPT9.res"), TEXT16("COM\u00B9.res"),
          TEXT16("com\u00B2"), TEXT16("lpt\u00B3.res"), TEXT16("CONIN$"), TEXT16("conout$.res")}) {
        EXPECT_EQ(UsableLanguageName(name), kEnglishFile) << StringView16(name).size();
    }
    for (const Char16* name :
         {TEXT16("CONS.res"), TEXT16("COM.res"), TEXT16("COM12.res"), TEXT16("COMA.res"), TEXT16("XNUL.res"),
          TEXT16("LP.res"), TEXT16("COM\u2074.res"), TEXT16("conind.res"), TEXT16("CONIN.res")}) {
        EXPECT_EQ(UsableLanguageName(name), StringView16(name));
    }
}

}  // namespace
