// The system as fuzzing sees it: every trace line is made, and none is kept.
#include "base/platform.h"

std::int32_t gDebugLevel = 1;

bool DebugTrace(const Char16* format, ...) noexcept {
    return format != nullptr;
}

void SystemDirectory(Char16 (&path)[kPathLength]) noexcept {
    CopyText(path, TEXT16("C:\\Windows\\system32"));
}
