#include "rig/trace_capture.h"

#include <algorithm>
#include <cstring>

namespace rig {
namespace {

TraceCapture* active_capture = nullptr;

// Where the function lives; kernel32 only forwards to it.
std::uint8_t* DebugOutput() {
    return reinterpret_cast<std::uint8_t*>(
        GetProcAddress(GetModuleHandleW(L"kernelbase.dll"), "OutputDebugStringW"));
}

}  // namespace

TraceCapture::TraceCapture() : outer_(active_capture) {
    InitializeCriticalSection(&lock_);
    active_capture = this;
    // mov rax, Record; jmp rax
    Code jump = {0x48, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xE0};
    const auto target = reinterpret_cast<std::uintptr_t>(&TraceCapture::Record);
    std::memcpy(&jump[2], &target, sizeof target);
    replaced_ = Patch(jump);
}

TraceCapture::~TraceCapture() {
    Patch(replaced_);
    active_capture = outer_;
    DeleteCriticalSection(&lock_);
}

TraceCapture::Code TraceCapture::Patch(const Code& code) {
    std::uint8_t* function = DebugOutput();
    Code before{};
    DWORD protection = 0;
    VirtualProtect(function, kJumpSize, PAGE_EXECUTE_READWRITE, &protection);
    std::copy_n(function, kJumpSize, before.begin());
    std::copy(code.begin(), code.end(), function);
    VirtualProtect(function, kJumpSize, protection, &protection);
    FlushInstructionCache(GetCurrentProcess(), function, kJumpSize);
    return before;
}

VOID WINAPI TraceCapture::Record(LPCWSTR text) {
    if (active_capture != nullptr && text != nullptr) {
        active_capture->Add(text);
    }
}

void TraceCapture::Add(const wchar_t* text) {
    // A trace must not disturb its caller.
    const DWORD error = GetLastError();
    EnterCriticalSection(&lock_);
    lines_.push_back({GetCurrentThreadId(), text});
    LeaveCriticalSection(&lock_);
    SetLastError(error);
}

Lines TraceCapture::Take() {
    Lines taken;
    EnterCriticalSection(&lock_);
    for (Line& line : lines_) {
        taken.push_back(std::move(line.text));
    }
    lines_.clear();
    LeaveCriticalSection(&lock_);
    return taken;
}

Lines TraceCapture::TakeOf(DWORD thread) {
    Lines taken;
    EnterCriticalSection(&lock_);
    for (Line& line : lines_) {
        if (line.thread == thread) {
            taken.push_back(std::move(line.text));
        }
    }
    lines_.clear();
    LeaveCriticalSection(&lock_);
    return taken;
}

std::wstring Hex(std::uint64_t value) {
    const auto low = static_cast<std::uint32_t>(value);
    if (low == 0) {
        return L"0";
    }
    std::wstring digits;
    for (std::uint32_t rest = low; rest != 0; rest >>= 4) {
        digits.insert(digits.begin(), L"0123456789abcdef"[rest & 15]);
    }
    return L"0x" + digits;
}

std::wstring Hex(const void* pointer) {
    return Hex(reinterpret_cast<std::uintptr_t>(pointer));
}

}  // namespace rig
