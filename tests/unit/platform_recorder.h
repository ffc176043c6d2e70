// The system as native tests see it: trace lines are kept instead of shown, the system directory is what a
// test says.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/platform.h"

namespace platform_recorder {

// The built-in trace level, no lines, system directory "C:\Windows\system32".
void Reset();

// The lines traced since the last call or reset, each cut at kTraceLength units.
std::vector<std::u16string> TakeLines();

// What SystemDirectory answers, cut at the 259 units that fit.
void SetSystemDirectory(std::u16string_view directory);

}  // namespace platform_recorder

// A test that starts from a fresh system.
class PlatformTest : public testing::Test {
  protected:
    void SetUp() override { platform_recorder::Reset(); }
    void TearDown() override { platform_recorder::Reset(); }
};
