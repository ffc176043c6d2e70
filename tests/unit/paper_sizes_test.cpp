// Sizes at and around their limits, names of every length around the prefix's, and what happens to the list.
#include "devpages/paper_sizes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::u16string>;

std::vector<PaperForm> Forms(const Names& names) {
    std::vector<PaperForm> forms;
    for (const std::u16string& name : names) {
        // A size of its own for each, to tell which was found.
        const auto number = static_cast<std::int32_t>(forms.size());
        forms.push_back({name, 10000 + number, 20000 + number});
    }
    return forms;
}

Names NamesOf(const std::vector<PaperForm>& forms) {
    Names names;
    for (const PaperForm& form : forms) {
        names.push_back(form.name);
    }
    return names;
}

// The place of what was found, or -1.
std::ptrdiff_t PlaceOf(const PaperForm* found, const std::vector<PaperForm>& forms) {
    return found == nullptr ? -1 : found - forms.data();
}

std::ptrdiff_t Rewritten(const Names& names, const std::u16string& shown) {
    const std::vector<PaperForm> forms = Forms(names);
    return PlaceOf(FormToRewrite(forms, shown), forms);
}

std::ptrdiff_t Found(const Names& names, const std::u16string& name) {
    const std::vector<PaperForm> forms = Forms(names);
    return PlaceOf(FindForm(forms, name), forms);
}

void ExpectTyped(const PaperSizeBox& box, std::int32_t typed, std::int32_t size) {
    const TypedSize actual = ClampPaperSize(box, typed);
    if (actual.size != size || actual.isReplaced != (size != typed)) {
        ADD_FAILURE() << "typed " << typed << ": " << actual.size << " instead of " << size
                      << (actual.isReplaced ? ", replaced" : ", kept");
    }
}

// What a person would say: below is the least, above and negative the most.
void ExpectRange(const PaperSizeBox& box, std::int32_t least, std::int32_t most) {
    for (std::int32_t typed = -70000; typed < 0; ++typed) {
        ExpectTyped(box, typed, most);
    }
    for (std::int32_t typed = 0; typed < least; ++typed) {
        ExpectTyped(box, typed, least);
    }
    for (std::int32_t typed = least; typed <= most; ++typed) {
        ExpectTyped(box, typed, typed);
    }
    for (std::int32_t typed = most + 1; typed <= 140000; ++typed) {
        ExpectTyped(box, typed, most);
    }
    // Numbers whose low 16 bits, or whose negative, would be in range.
    for (const std::int32_t typed :
         {0x10000 + least, -0x10000 + least, -least, -most, INT32_MAX - 1, INT32_MAX, INT32_MIN,
          INT32_MIN + 1, INT32_MIN + least, INT32_MIN + most}) {
        ExpectTyped(box, typed, most);
    }
}

TEST(PaperSizeBoxTest, WhatTheBoxesTakeAndSay) {
    EXPECT_EQ(kPaperWidth.least, 410);
    EXPECT_EQ(kPaperWidth.most, 720);
    EXPECT_EQ(kPaperWidth.digits, 3);
    EXPECT_EQ(std::u16string(kPaperWidth.rangeText), u"[ 410 - 720 (0.1mm) ]");
    EXPECT_EQ(kPaperHeight.least, 254);
    EXPECT_EQ(kPaperHeight.most, 32760);
    EXPECT_EQ(kPaperHeight.digits, 5);
    EXPECT_EQ(std::u16string(kPaperHeight.rangeText), u"[ 254 - 32760 (0.1mm) ]");
    EXPECT_EQ(kTypedNameLength, 18);
    EXPECT_EQ(kReadNameLength, 255u);
}

TEST(ClampPaperSizeTest, Widths) {
    ExpectTyped(kPaperWidth, 50, 410);
    ExpectTyped(kPaperWidth, 409, 410);
    ExpectTyped(kPaperWidth, 410, 410);
    ExpectTyped(kPaperWidth, 720, 720);
    ExpectTyped(kPaperWidth, 721, 720);
    ExpectTyped(kPaperWidth, -1, 720);
    ExpectRange(kPaperWidth, 410, 720);
}

TEST(ClampPaperSizeTest, Heights) {
    ExpectTyped(kPaperHeight, 0, 254);
    ExpectTyped(kPaperHeight, 253, 254);
    ExpectTyped(kPaperHeight, 254, 254);
    ExpectTyped(kPaperHeight, 32760, 32760);
    ExpectTyped(kPaperHeight, 32761, 32760);
    ExpectTyped(kPaperHeight, 99999, 32760);
    ExpectTyped(kPaperHeight, -1, 32760);
    ExpectRange(kPaperHeight, 254, 32760);
}

TEST(PaperGeometryTest, TheWholeSheetInThousandths) {
    EXPECT_EQ(kDefaultPaperSize, (PaperSize{720, 2970}));
    EXPECT_EQ(GeometryOf(kDefaultPaperSize), (FormGeometry{72000, 297000, 0, 0, 72000, 297000}));
    EXPECT_EQ(GeometryOf({410, 254}), (FormGeometry{41000, 25400, 0, 0, 41000, 25400}));
    EXPECT_EQ(GeometryOf({720, 32760}), (FormGeometry{72000, 3276000, 0, 0, 72000, 3276000}));
    EXPECT_EQ(GeometryOf({411, 255}), (FormGeometry{41100, 25500, 0, 0, 41100, 25500}));
}

TEST(PaperGeometryTest, EverySizeInRangeComesBack) {
    for (std::int32_t height = 254; height <= 32760; ++height) {
        const PaperSize size = {410 + height % 311, height};
        const FormGeometry geometry = GeometryOf(size);
        ASSERT_EQ(SizeOf({u"", geometry.width, geometry.height}), size);
    }
}

// The server's other forms are of any size, and another program may have written this one.
TEST(PaperGeometryTest, AFormsRestIsNotShown) {
    EXPECT_EQ(SizeOf({u"", 72000, 297000}), (PaperSize{720, 2970}));
    EXPECT_EQ(SizeOf({u"", 72099, 297001}), (PaperSize{720, 2970}));
    EXPECT_EQ(SizeOf({u"", 71999, 296999}), (PaperSize{719, 2969}));
    EXPECT_EQ(SizeOf({u"", 99, 100}), (PaperSize{0, 1}));
    EXPECT_EQ(SizeOf({u"", 0, -99}), (PaperSize{0, 0}));
    EXPECT_EQ(SizeOf({u"", -100, -199}), (PaperSize{-1, -1}));
    EXPECT_EQ(SizeOf({u"", INT32_MAX, INT32_MIN}), (PaperSize{21474836, -21474836}));
}

TEST(PaperNameTest, ThePrefixStandsAnywhere) {
    EXPECT_EQ(std::u16string(kPaperPrefix), u"Custom Paper-");
    EXPECT_EQ(std::u16string(kDefaultPaper), u"Custom Paper-R72");
    for (const std::u16string& name : Names{
             u"Custom Paper-",
             u"Custom Paper-R72",
             u"My Custom Paper-A4",
             u"Custom Custom Paper-",
             u"Custom PaperCustom Paper-",
             std::u16string(287, u'a') + u"Custom Paper-",
             u"Custom Paper-" + std::u16string(287, u'a'),
             u"\xD83D"
             u"Custom Paper-\xDE00",
         }) {
        EXPECT_TRUE(IsCustomPaper(name)) << testing::PrintToString(name);
    }
    for (const std::u16string& name : Names{
             u"",
             u"A",
             u"A4",
             u"Custom Paper",
             u"ustom Paper-R72",
             u"custom paper-R72",
             u"Custom paper-R72",
             u"CUSTOM PAPER-R72",
             u"Custom  Paper-R72",
             u"Custom Paper R72",
             u"Custom Pape\xD83Dr-",
             u"Custom Paper\x2010R72",
             u"\xFF23ustom Paper-R72",
             std::u16string(300, u'-'),
         }) {
        EXPECT_FALSE(IsCustomPaper(name)) << testing::PrintToString(name);
    }
}

TEST(PaperNameTest, NoPartOfThePrefixIsEnough) {
    // The rest of it stands right behind each text.
    const std::u16string_view prefix = u"Custom Paper-";
    for (std::size_t length = 0; length < prefix.size(); ++length) {
        EXPECT_FALSE(IsCustomPaper(prefix.substr(0, length))) << length;
        EXPECT_FALSE(IsCustomPaper(prefix.substr(1, length))) << length;
    }
}

TEST(PaperNameTest, TheDefaultPaperIsItsExactName) {
    EXPECT_TRUE(IsDefaultPaper(u"Custom Paper-R72"));
    for (const std::u16string& name :
         Names{u"", u"R72", u"Custom Paper-", u"Custom Paper-R7", u"Custom Paper-R722", u"Custom Paper-r72",
               u" Custom Paper-R72", u"Custom Paper-R72 "}) {
        EXPECT_FALSE(IsDefaultPaper(name)) << testing::PrintToString(name);
    }
}

TEST(PaperNameTest, ShownFromTheFourteenthUnitOn) {
    EXPECT_EQ(ShownName(u"Custom Paper-R72"), u"R72");
    EXPECT_EQ(ShownName(u"My Custom Paper-A4"), u"er-A4");
    EXPECT_EQ(ShownName(u"Custom Paper-Custom Paper-A4"), u"Custom Paper-A4");
    EXPECT_EQ(ShownName(u"XCustom Paper-"), u"-");
    // Half a character is a unit like any other.
    EXPECT_EQ(ShownName(u"Custom Paper-\xDE00\xD83D"), u"\xDE00\xD83D");
    EXPECT_EQ(ShownName(u"Custom Paper\xD83D\xDE00"), u"\xDE00");
    EXPECT_EQ(ShownName(u"\xD83D"
                        u"123456789012\xDE00"),
              u"\xDE00");
}

TEST(PaperNameTest, NamesOfEveryLength) {
    for (std::size_t length = 0; length <= 300; ++length) {
        std::u16string name;
        for (std::size_t i = 0; i < length; ++i) {
            name += static_cast<char16_t>(0x4E00 + i);
        }
        std::u16string shown;
        for (std::size_t i = 13; i < length; ++i) {
            shown += static_cast<char16_t>(0x4E00 + i);
        }
        ASSERT_EQ(ShownName(name), shown) << length;
        const std::u16string formName = FormNameOf(name);
        ASSERT_EQ(formName, u"Custom Paper-" + name) << length;
        ASSERT_EQ(ShownName(formName), name) << length;
        ASSERT_TRUE(IsCustomPaper(formName)) << length;
    }
}

TEST(PaperNameTest, NamesOfNewForms) {
    EXPECT_EQ(FormNameOf(u""), u"Custom Paper-");
    EXPECT_EQ(FormNameOf(u"R72"), kDefaultPaper);
    EXPECT_EQ(FormNameOf(u"Custom Paper-A"), u"Custom Paper-Custom Paper-A");
    EXPECT_EQ(FormNameOf(u"\xDE00"), u"Custom Paper-\xDE00");
}

TEST(PaperListTest, TheDefaultPaperThenTheOthersInTheirOrder) {
    EXPECT_EQ(NamesOf(CustomPapersOf({})), Names{});
    EXPECT_EQ(NamesOf(CustomPapersOf(Forms({u"A4", u"Letter", u""}))), Names{});
    EXPECT_EQ(NamesOf(CustomPapersOf(Forms({u"A4", u"Custom Paper-Z", u"Letter", u"My Custom Paper-A4",
                                            u"Custom Paper-a", u"Custom Paper-R72", u"Custom Paper-", u"A5",
                                            u"Custom Paper-R7", u"Custom Paper-r72"}))),
              (Names{u"Custom Paper-R72", u"Custom Paper-Z", u"My Custom Paper-A4", u"Custom Paper-a",
                     u"Custom Paper-", u"Custom Paper-R7", u"Custom Paper-r72"}));
}

// Another program may delete it while the page reads.
TEST(PaperListTest, WithoutTheDefaultPaper) {
    EXPECT_EQ(NamesOf(CustomPapersOf(Forms({u"Custom Paper-B", u"A4", u"Custom Paper-A"}))),
              (Names{u"Custom Paper-B", u"Custom Paper-A"}));
}

TEST(PaperListTest, TheDefaultPaperFromEveryPlace) {
    const Names others = {u"Custom Paper-3", u"Custom Paper-1", u"Custom Paper-2", u"Custom Paper-R721"};
    Names listed = others;
    listed.insert(listed.begin(), u"Custom Paper-R72");
    for (std::ptrdiff_t place = 0; place <= std::ssize(others); ++place) {
        Names names = others;
        names.insert(names.begin() + place, u"Custom Paper-R72");
        EXPECT_EQ(NamesOf(CustomPapersOf(Forms(names))), listed) << place;
    }
}

TEST(PaperListTest, FormsKeepTheirSizes) {
    const std::vector<PaperForm> listed =
        CustomPapersOf(Forms({u"Custom Paper-A", u"A4", u"Custom Paper-R72", u"Custom Paper-B"}));
    ASSERT_EQ(listed.size(), 3u);
    const std::int32_t places[] = {2, 0, 3};
    for (std::size_t i = 0; i < listed.size(); ++i) {
        EXPECT_EQ(listed[i].width, 10000 + places[i]);
        EXPECT_EQ(listed[i].height, 20000 + places[i]);
    }
}

TEST(PaperListTest, TenThousandForms) {
    Names names;
    Names listed = {u"Custom Paper-R72"};
    for (int i = 0; i < 10000; ++i) {
        std::u16string name(i % 2 == 0 ? u"Custom Paper-" : u"Built-in ");
        name.append(static_cast<std::size_t>(i % 288), u'x');
        names.push_back(name);
        if (i % 2 == 0) {
            listed.push_back(name);
        }
    }
    names.push_back(u"Custom Paper-R72");
    EXPECT_EQ(NamesOf(CustomPapersOf(Forms(names))), listed);
}

TEST(FindFormTest, ByItsExactName) {
    const Names names = {u"A4", u"Custom Paper-a", u"Custom Paper-A", u"Custom Paper-AA", u"", u"\xD83D"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(Found(names, names[i]), static_cast<std::ptrdiff_t>(i));
    }
    for (const std::u16string& name : Names{u"a4", u"A", u"Custom Paper-", u"Custom Paper-AAA", u"\xDE00"}) {
        EXPECT_EQ(Found(names, name), -1) << testing::PrintToString(name);
    }
    EXPECT_EQ(Found({}, u""), -1);
    EXPECT_EQ(Found({u"A4", u"B", u"B"}, u"B"), 1);
}

TEST(FormToRewriteTest, TheDefaultPaperToo) {
    EXPECT_EQ(Rewritten({u"A4", u"Custom Paper-R72"}, u"R72"), 1);
    EXPECT_EQ(Rewritten({u"A4", u"Custom Paper-R72"}, u"r72"), -1);
    EXPECT_EQ(Rewritten({u"A4", u"Custom Paper-R72"}, u"R7"), -1);
    EXPECT_EQ(Rewritten({u"A4", u"Custom Paper-R72"}, u"R722"), -1);
    EXPECT_EQ(Rewritten({u"A4", u"Custom Paper-R72"}, u"R72 "), -1);
    EXPECT_EQ(Rewritten({u"A4", u"Custom Paper-R72"}, u"Custom Paper-R72"), -1);
    EXPECT_EQ(Rewritten({}, u"R72"), -1);
}

TEST(FormToRewriteTest, AnEmptyNameIsThePrefixAlone) {
    EXPECT_EQ(Rewritten({u"", u"A4", u"1234567890123", u"Custom Paper-R72"}, u""), -1);
    EXPECT_EQ(Rewritten({u"", u"A4", u"Custom Paper-R72", u"Custom Paper-"}, u""), 3);
}

TEST(FormToRewriteTest, ThePrefixInTheMiddle) {
    // What its box shows is what finds it.
    EXPECT_EQ(Rewritten({u"My Custom Paper-A4"}, u"er-A4"), 0);
    EXPECT_EQ(Rewritten({u"My Custom Paper-A4"}, u"A4"), -1);
    EXPECT_EQ(Rewritten({u"My Custom Paper-A4"}, u"My Custom Paper-A4"), -1);
    // Both are shown alike; the server's first is meant.
    EXPECT_EQ(Rewritten({u"XCustom Paper-", u"Custom Paper--"}, u"-"), 0);
    EXPECT_EQ(Rewritten({u"Custom Paper--", u"XCustom Paper-"}, u"-"), 0);
    EXPECT_EQ(Rewritten({u"A4", u"Custom Paper-", u"XCustom Paper-"}, u"-"), 2);
}

TEST(FormToRewriteTest, FormsOfOthersAreLeftAlone) {
    // Shown as "A4" if they were the page's.
    EXPECT_EQ(Rewritten({u"1234567890123A4", u"custom paper-A4", u"Custom Paper A4"}, u"A4"), -1);
    EXPECT_EQ(Rewritten({u"1234567890123A4", u"custom paper-A4", u"Custom Paper-A4"}, u"A4"), 2);
}

TEST(FormToRewriteTest, NamesAreComparedUnitForUnit) {
    const std::u16string longName(287, u'n');
    const Names names = {
        u"Custom Paper-\xD83D", u"Custom Paper-\xDE00", u"Custom Paper-\xD83D\xDE00", u"Custom Paper-e\x0301",
        u"Custom Paper-\x00E9", u"Custom Paper- A",     u"Custom Paper-" + longName,
    };
    const Names shown = {u"\xD83D", u"\xDE00", u"\xD83D\xDE00", u"e\x0301", u"\x00E9", u" A", longName};
    for (std::size_t i = 0; i < shown.size(); ++i) {
        EXPECT_EQ(Rewritten(names, shown[i]), static_cast<std::ptrdiff_t>(i)) << i;
    }
    EXPECT_EQ(Rewritten(names, longName.substr(0, kReadNameLength)), -1);
    EXPECT_EQ(Rewritten(names, u"A"), -1);
    EXPECT_EQ(Rewritten(names, u"E\x0301"), -1);
}

TEST(SelectionAfterDeleteTest, TheNextOrTheNewLast) {
    EXPECT_EQ(SelectionAfterDelete(0, 0), std::nullopt);
    for (std::size_t left = 1; left <= 50; ++left) {
        for (std::size_t removed = 0; removed < left; ++removed) {
            EXPECT_EQ(SelectionAfterDelete(removed, left), removed);
        }
        EXPECT_EQ(SelectionAfterDelete(left, left), left - 1);
    }
}

TEST(CanDeleteTest, AllButTheDefaultPaper) {
    EXPECT_FALSE(CanDelete(std::nullopt));
    EXPECT_FALSE(CanDelete(u"Custom Paper-R72"));
    for (const std::u16string& name : Names{u"Custom Paper-", u"Custom Paper-R7", u"Custom Paper-r72",
                                            u"Custom Paper-R720", u"My Custom Paper-R72", u"R72", u""}) {
        EXPECT_TRUE(CanDelete(name)) << testing::PrintToString(name);
    }
}

}  // namespace
