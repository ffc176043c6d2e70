// What portable code asks of the system, answered by Win32.
#include <windows.h>

#include <cstdarg>
#include <cstdio>

#include "base/platform.h"

std::int32_t gDebugLevel = 1;

// Formats as printf has them.
// NOLINTNEXTLINE(cert-dcl50-cpp)
bool DebugTrace(const Char16* format, ...) noexcept {
    if (format == nullptr) {
        return false;
    }
    wchar_t line[kTraceLength + 1] = {};
    va_list arguments;
    va_start(arguments, format);
    // The platform's own printf: "%s" is wide in it. A line that does not fit comes back without its
    // terminator.
    const int written = _vsnwprintf(line, kTraceLength, format, arguments);
    va_end(arguments);
    line[written < 0 ? kTraceLength : static_cast<std::size_t>(written)] = L'\0';
    OutputDebugStringW(line);
    return true;
}

void SystemDirectory(Char16 (&path)[kPathLength]) noexcept {
    const UINT length = GetSystemDirectoryW(path, kPathLength);
    if (length == 0 || length >= kPathLength) {
        path[0] = L'\0';
    }
}
