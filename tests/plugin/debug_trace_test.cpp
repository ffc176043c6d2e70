// The trace routine itself, compiled into the test: bounds, formats and levels.
#include <gtest/gtest.h>

#include <string>

#include "base/platform.h"
#include "rig/trace_capture.h"

namespace {

using rig::Lines;

std::wstring Repeat(std::size_t count) {
    std::wstring text;
    for (std::size_t i = 0; i < count; ++i) {
        text.push_back(static_cast<wchar_t>(L'a' + i % 26));
    }
    return text;
}

TEST(DebugTrace, LinesAreBoundedAt260Characters) {
    rig::TraceCapture trace;
    for (const std::size_t length : {0u, 1u, 259u, 260u, 261u, 5000u}) {
        const std::wstring text = Repeat(length);
        EXPECT_TRUE(DebugTrace(L"%ls", text.c_str()));
        EXPECT_EQ(trace.TakeOwn(), Lines{text.substr(0, 260)}) << length;
    }
    // The bound is of the whole message.
    EXPECT_TRUE(DebugTrace(L"UI:  %ls\r\n", Repeat(300).c_str()));
    EXPECT_EQ(trace.TakeOwn(), Lines{L"UI:  " + Repeat(255)});
    EXPECT_TRUE(DebugTrace(L"UI:  %ls\r\n", Repeat(253).c_str()));
    EXPECT_EQ(trace.TakeOwn(), Lines{L"UI:  " + Repeat(253) + L"\r\n"});
}

TEST(DebugTrace, WithoutAFormatWritesNothing) {
    rig::TraceCapture trace;
    EXPECT_FALSE(DebugTrace(nullptr));
    EXPECT_EQ(trace.TakeOwn(), Lines{});
}

TEST(DebugTrace, FormatsAsThePlatformDoes) {
    rig::TraceCapture trace;
    DebugTrace(L"%d|%d|%#x|%#x|%#lx|%ls", -1, 1976, 0u, 0x523732u, 0xABCDul, L"浓度0");
    EXPECT_EQ(trace.TakeOwn(), Lines{L"-1|1976|0|0x523732|0xabcd|浓度0"});
}

TEST(DebugTrace, LevelsChooseTheLines) {
    rig::TraceCapture trace;
    const std::int32_t built_in = gDebugLevel;
    EXPECT_EQ(built_in, 1);
    const struct {
        std::int32_t level;
        Lines written;
    } cases[] = {{-1, {L"v", L"w", L"e"}},
                 {1, {L"v", L"w", L"e"}},
                 {2, {L"w", L"e"}},
                 {3, {L"w", L"e"}},
                 {4, {L"e"}},
                 {5, {}},
                 {100, {}}};
    for (const auto& [level, written] : cases) {
        gDebugLevel = level;
        TRACE_VERBOSE(L"v");
        TRACE_WARNING(L"w");
        TRACE_ERROR(L"e");
        EXPECT_EQ(trace.TakeOwn(), written) << level;
    }
    gDebugLevel = built_in;
}

}  // namespace
