#include "trace_capture.h"

#include <windows.h>

#include <mutex>

namespace {

std::mutex gMutex;
std::vector<std::wstring> gLines;

// The exception carries the text's length with its terminator and its address.
constexpr DWORD kTextParameters = 2;

void Keep(std::wstring line) {
    const std::lock_guard lock(gMutex);
    gLines.push_back(std::move(line));
}

std::wstring FromAnsi(const char* text, int length) {
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    wide.resize(static_cast<std::size_t>(
        length == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, text, length, wide.data(), length)));
    return wide;
}

// Continuing tells the system that a debugger took the text; it then does not send the narrow form of a wide
// text.
LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) noexcept {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    const bool is_wide = record.ExceptionCode == DBG_PRINTEXCEPTION_WIDE_C;
    if ((!is_wide && record.ExceptionCode != DBG_PRINTEXCEPTION_C) ||
        record.NumberParameters < kTextParameters) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    const std::size_t length = record.ExceptionInformation[0] == 0 ? 0 : record.ExceptionInformation[0] - 1;
    const auto* text = reinterpret_cast<const void*>(record.ExceptionInformation[1]);
    try {
        Keep(is_wide ? std::wstring(static_cast<const wchar_t*>(text), length)
                     : FromAnsi(static_cast<const char*>(text), static_cast<int>(length)));
    } catch (...) {
        return EXCEPTION_CONTINUE_EXECUTION;  // no memory for a line: the line is lost, the program is not
    }
    return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

TraceCapture::TraceCapture() : handler_(AddVectoredExceptionHandler(1, OnException)) {
    Clear();
}

TraceCapture::~TraceCapture() {
    RemoveVectoredExceptionHandler(handler_);
}

std::vector<std::wstring> TraceCapture::Lines() const {
    const std::lock_guard lock(gMutex);
    return gLines;
}

void TraceCapture::Clear() {
    const std::lock_guard lock(gMutex);
    gLines.clear();
}
