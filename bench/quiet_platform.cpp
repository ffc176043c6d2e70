// The system as the native benchmarks see it: nothing is traced, as in a driver that is installed.
#include "base/platform.h"

std::int32_t gDebugLevel = static_cast<std::int32_t>(Severity::kError);

bool DebugTrace(const Char16* format, ...) noexcept {
    return format != nullptr;
}

void SystemDirectory(Char16 (&path)[kPathLength]) noexcept {
    path[0] = 0;
}
