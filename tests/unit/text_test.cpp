#include "base/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace {

constexpr char16_t kOld = u'#';

// CopyText into an exactly sized heap block that held old text.
struct Copied {
    std::size_t count;
    std::u16string field;  // all of its units
};
Copied Copy(std::size_t capacity, std::u16string_view text) {
    auto field = std::make_unique<char16_t[]>(capacity);
    std::fill_n(field.get(), capacity, kOld);
    const std::size_t count = CopyText(field.get(), capacity, text);
    return {count, std::u16string(field.get(), capacity)};
}

// A field's content: the text and zeros behind it.
std::u16string Padded(std::u16string text, std::size_t capacity) {
    text.resize(capacity, u'\0');
    return text;
}

TEST(CopyTextTest, CutsSoThatTheTerminatorFits) {
    struct Row {
        std::size_t capacity;
        std::u16string text;
        std::u16string kept;
    };
    const Row rows[] = {
        {1, u"", u""},       {1, u"a", u""},       {1, u"abcdef", u""},
        {2, u"a", u"a"},     {2, u"ab", u"a"},     {4, u"ab", u"ab"},
        {4, u"abc", u"abc"}, {4, u"abcd", u"abc"}, {4, u"abcde", u"abc"},
        {20, u"", u""},      {20, u"abc", u"abc"}, {20, u"\u5370\u8868\uFFFF", u"\u5370\u8868\uFFFF"},
    };
    for (const Row& row : rows) {
        const Copied copied = Copy(row.capacity, row.text);
        EXPECT_EQ(copied.count, row.kept.size())
            << testing::PrintToString(row.text) << " into " << row.capacity;
        EXPECT_EQ(copied.field, Padded(row.kept, row.capacity))
            << testing::PrintToString(row.text) << " into " << row.capacity;
    }
}

TEST(CopyTextTest, NoRoomWritesNothing) {
    EXPECT_EQ(CopyText(nullptr, 0, u"abc"), 0u);
    EXPECT_EQ(CopyText(nullptr, 0, {}), 0u);
    char16_t untouched = kOld;
    EXPECT_EQ(CopyText(&untouched, 0, u"abc"), 0u);
    EXPECT_EQ(untouched, kOld);
}

TEST(CopyTextTest, ReadsNoMoreThanTheText) {
    // No terminator behind it: only the view's length says where it ends.
    auto text = std::make_unique<char16_t[]>(3);
    std::fill_n(text.get(), 3, u'x');
    for (const std::size_t capacity : {1u, 3u, 4u, 8u}) {
        const Copied copied = Copy(capacity, {text.get(), 3});
        EXPECT_EQ(copied.field,
                  Padded(std::u16string(std::min<std::size_t>(3, capacity - 1), u'x'), capacity));
    }
}

TEST(CopyTextTest, KnowsTheSizeOfArrays) {
    Char16 field[5] = {kOld, kOld, kOld, kOld, kOld};
    EXPECT_EQ(CopyText(field, u"abcdefgh"), 4u);
    EXPECT_EQ(std::u16string(field, 5), Padded(u"abcd", 5));
    EXPECT_EQ(CopyText(field, u"x"), 1u);
    EXPECT_EQ(std::u16string(field, 5), Padded(u"x", 5));
}

TEST(FieldTextTest, EndsAtTheTerminatorOrTheField) {
    auto field = std::make_unique<char16_t[]>(6);
    const std::u16string_view content = u"abcdef";
    std::copy(content.begin(), content.end(), field.get());
    EXPECT_EQ(FieldText(field.get(), 6), u"abcdef") << "has no terminator";
    EXPECT_EQ(FieldText(field.get(), 3), u"abc");
    EXPECT_EQ(FieldText(field.get(), 0), u"");
    field[5] = 0;
    EXPECT_EQ(FieldText(field.get(), 6), u"abcde");
    field[2] = 0;
    EXPECT_EQ(FieldText(field.get(), 6), u"ab") << "ends at the first of two";
    field[0] = 0;
    EXPECT_EQ(FieldText(field.get(), 6), u"");
    EXPECT_EQ(FieldText(field.get(), 1), u"");
    EXPECT_EQ(FieldText(field.get(), 0), u"");
}

TEST(FieldTextTest, KnowsTheSizeOfArrays) {
    const Char16 unterminated[3] = {u'x', u'y', u'z'};
    EXPECT_EQ(FieldText(unterminated), u"xyz");
    const Char16 terminated[4] = {u'x', u'y', 0, u'z'};
    EXPECT_EQ(FieldText(terminated), u"xy");
    EXPECT_EQ(FieldText(unterminated).data(), unterminated) << "a view, not a copy";
}

TEST(NumberTextTest, WritesDecimalDigits) {
    EXPECT_EQ(NumberText(0), u"0");
    EXPECT_EQ(NumberText(9), u"9");
    EXPECT_EQ(NumberText(10), u"10");
    EXPECT_EQ(NumberText(1024), u"1024");
    EXPECT_EQ(NumberText(UINT64_MAX), u"18446744073709551615");
}

}  // namespace
