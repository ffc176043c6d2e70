// The lines that the DLL writes for the debugger, taken where they leave the process, those of process attach
// included.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace rig {

using Lines = std::vector<std::wstring>;

// While it lives, collects every line that this process writes with OutputDebugStringW, whoever imports it.
// The function itself is replaced: what a debugger receives from Wine is narrow text, without the Chinese
// characters.
class TraceCapture {
  public:
    TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture();

    // The lines written since the last call; each call forgets all of them.
    // Of every thread, in the order written. The system starts threads of its own, whose coming and going the
    // DLL traces: where the lines are compared whole, take those of one thread.
    Lines Take();
    Lines TakeOf(DWORD thread);
    Lines TakeOwn() { return TakeOf(GetCurrentThreadId()); }

  private:
    struct Line {
        DWORD thread;
        std::wstring text;
    };
    static constexpr std::size_t kJumpSize = 12;
    using Code = std::array<std::uint8_t, kJumpSize>;

    static VOID WINAPI Record(LPCWSTR text);
    static Code Patch(const Code& code);
    void Add(const wchar_t* text);

    TraceCapture* outer_ = nullptr;
    Code replaced_{};
    CRITICAL_SECTION lock_;
    std::vector<Line> lines_;
};

// A value as the trace prints it with "%#x": the low 32 bits, no prefix for zero.
std::wstring Hex(std::uint64_t value);
std::wstring Hex(const void* pointer);

}  // namespace rig
