// What portable code asks of the system it runs on. The DLL answers from Win32
// (intrface/win/platform_win.cpp), native tests with recorders of their own.
#pragma once

#include <cstdint>

#include "base/text.h"

// How much is traced: a line is written when its severity's bound lies above the level.
extern std::int32_t gDebugLevel;

enum class Severity : std::int32_t { kVerbose = 2, kWarning = 4, kError = 5 };

inline bool IsTraced(Severity severity) noexcept {
    return gDebugLevel < static_cast<std::int32_t>(severity);
}

// The longest line that reaches the debugger, in units without the terminator; longer ones are cut.
constexpr std::size_t kTraceLength = 260;

// Formats a line as the platform's wide printf does ("%s" and "%ws" take wide text) and hands it to the
// debugger. FALSE (and nothing written) when `format` is null. Never fails the caller.
bool DebugTrace(const Char16* format, ...) noexcept;

// DebugTrace at a severity.
#define TRACE(severity, ...)         \
    do {                             \
        if (IsTraced(severity)) {    \
            DebugTrace(__VA_ARGS__); \
        }                            \
    } while (false)
#define TRACE_VERBOSE(...) TRACE(Severity::kVerbose, __VA_ARGS__)
#define TRACE_WARNING(...) TRACE(Severity::kWarning, __VA_ARGS__)
#define TRACE_ERROR(...) TRACE(Severity::kError, __VA_ARGS__)

// The units that a system path can fill, terminator included.
constexpr std::size_t kPathLength = 260;

// The system directory ("C:\Windows\system32"), terminated; empty when the system does not say.
void SystemDirectory(Char16 (&path)[kPathLength]) noexcept;
