// The recorder must read formats as the platform does, or the trace tests prove nothing.
#include "platform_recorder.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using PlatformRecorderTest = PlatformTest;

TEST_F(PlatformRecorderTest, FormatsNumbers) {
    DebugTrace(u"%d|%d|%#x|%#x|%x|%X", 1976, -5, 0x00523732, 0, 0xABCu, 0xABCu);
    DebugTrace(u"%#lx|100%%", 0x80004005u);
    EXPECT_THAT(platform_recorder::TakeLines(),
                ElementsAre(u"1976|-5|0x523732|0|abc|ABC", u"0x80004005|100%"));
}

TEST_F(PlatformRecorderTest, FormatsText) {
    DebugTrace(u"%s and %ws and %c\r\n", u"wide", u"wider", u'w');
    EXPECT_THAT(platform_recorder::TakeLines(), ElementsAre(u"wide and wider and w\r\n"));
}

TEST_F(PlatformRecorderTest, CutsLongLines) {
    const std::u16string text(300, u'x');
    EXPECT_TRUE(DebugTrace(u"%s\r\n", text.c_str()));
    EXPECT_THAT(platform_recorder::TakeLines(), ElementsAre(std::u16string(260, u'x')));
}

TEST_F(PlatformRecorderTest, NullFormatWritesNothing) {
    EXPECT_FALSE(DebugTrace(nullptr));
    EXPECT_THAT(platform_recorder::TakeLines(), IsEmpty());
}

TEST_F(PlatformRecorderTest, SeveritiesFollowTheLevel) {
    struct Row {
        std::int32_t level;
        std::vector<std::u16string> lines;
    };
    const Row rows[] = {
        {0, {u"verbose", u"warning", u"error"}},
        {1, {u"verbose", u"warning", u"error"}},
        {2, {u"warning", u"error"}},
        {3, {u"warning", u"error"}},
        {4, {u"error"}},
        {5, {}},
        {-1, {u"verbose", u"warning", u"error"}},
    };
    EXPECT_EQ(gDebugLevel, 1);
    for (const Row& row : rows) {
        gDebugLevel = row.level;
        TRACE_VERBOSE(u"verbose");
        TRACE_WARNING(u"warning");
        TRACE_ERROR(u"error");
        EXPECT_EQ(platform_recorder::TakeLines(), row.lines) << "level " << row.level;
    }
}

TEST_F(PlatformRecorderTest, SystemDirectoryFitsItsBuffer) {
    Char16 path[kPathLength];
    platform_recorder::SetSystemDirectory(std::u16string(400, u'y'));
    SystemDirectory(path);
    EXPECT_EQ(std::u16string(path), std::u16string(259, u'y'));
    platform_recorder::SetSystemDirectory(u"D:\\");
    SystemDirectory(path);
    EXPECT_EQ(std::u16string(path), u"D:\\");
}

}  // namespace
