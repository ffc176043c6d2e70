// The entry point of the test programs that run under Wine.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr UINT kCrashed = 5;
constexpr UINT kHung = 99;
// STATUS_INVALID_UNWIND_TARGET, which the toolchain's headers lack.
constexpr DWORD kInvalidUnwindTarget = 0xC0000029;

std::string Narrow(const wchar_t* text) {
    char narrow[512] = {};
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow, sizeof narrow - 1, nullptr, nullptr);
    return narrow;
}

void PrintCurrentTest() {
    if (const auto* test = testing::UnitTest::GetInstance()->current_test_info()) {
        std::printf("in %s.%s\n", test->test_suite_name(), test->name());
    }
}

// The latest fault: the runtime's own handlers may replace it before it gets to ReportCrash.
EXCEPTION_RECORD last_fault;

// Reads and writes where nothing is. The system keeps those in a window procedure to itself.
std::atomic<int> violations = 0;

LONG CALLBACK NoteFault(EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
        ++violations;
    }
    // Severity "error", raised by the processor.
    if ((exception->ExceptionRecord->ExceptionCode & 0xFFFF0000) == 0xC0000000 &&
        exception->ExceptionRecord->ExceptionCode != kInvalidUnwindTarget) {
        last_fault = *exception->ExceptionRecord;
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

class NoHiddenCrashes : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { violations = 0; }
    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_EQ(violations, 0) << "access violations, the last one at " << last_fault.ExceptionAddress;
    }
};

// A crash ends the program here, with the place, instead of in the system's debugger.
LONG WINAPI ReportCrash(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = last_fault.ExceptionCode != 0 ? last_fault : *exception->ExceptionRecord;
    wchar_t path[MAX_PATH] = L"?";
    HMODULE module = nullptr;
    if (GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(record.ExceptionAddress), &module)) {
        GetModuleFileNameW(module, path, MAX_PATH);
    }
    std::printf("CRASH: exception %08lx at %s + 0x%llx", record.ExceptionCode, Narrow(path).c_str(),
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(record.ExceptionAddress) -
                                                reinterpret_cast<std::uintptr_t>(module)));
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2) {
        std::printf(", %s %#llx", record.ExceptionInformation[0] == 0 ? "reading" : "writing",
                    static_cast<unsigned long long>(record.ExceptionInformation[1]));
    }
    std::printf("\n");
    PrintCurrentTest();
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), kCrashed);
    return EXCEPTION_EXECUTE_HANDLER;
}

BOOL CALLBACK PrintWindow(HWND window, LPARAM parameter) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId() && IsWindowVisible(window)) {
        wchar_t text[256] = {};
        InternalGetWindowText(window, text, 255);
        wchar_t kind[64] = {};
        GetClassNameW(window, kind, 63);
        std::printf("%s window %s \"%s\"\n", parameter == 0 ? "open" : "  with", Narrow(kind).c_str(),
                    Narrow(text).c_str());
        if (parameter == 0) {
            EnumChildWindows(window, &PrintWindow, 1);
        }
    }
    return TRUE;
}

BOOL CALLBACK PrintDesktop(LPWSTR name, LPARAM) {
    if (HDESK desktop = OpenDesktopW(name, 0, FALSE, DESKTOP_READOBJECTS | DESKTOP_ENUMERATE)) {
        EnumDesktopWindows(desktop, &PrintWindow, 0);
        CloseDesktop(desktop);
    }
    return TRUE;
}

struct Watchdog {
    DWORD milliseconds;
    HANDLE started;
};

// Ends a run that hangs, and tells which windows wait for an answer.
DWORD WINAPI Watch(LPVOID parameter) {
    const Watchdog watchdog = *static_cast<const Watchdog*>(parameter);
    SetEvent(watchdog.started);
    Sleep(watchdog.milliseconds);
    std::printf("HUNG: out of time\n");
    PrintCurrentTest();
    EnumDesktopsW(GetProcessWindowStation(), &PrintDesktop, 0);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), kHung);
    return 0;
}

void StartWatchdog(int seconds) {
    Watchdog watchdog{static_cast<DWORD>(seconds) * 1000, CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CloseHandle(CreateThread(nullptr, 0, &Watch, &watchdog, 0, nullptr));
    // Its start must not be a thread attach of a DLL under test.
    WaitForSingleObject(watchdog.started, INFINITE);
    CloseHandle(watchdog.started);
}

}  // namespace

int main(int argc, char** argv) {
    AddVectoredExceptionHandler(1, &NoteFault);
    SetUnhandledExceptionFilter(&ReportCrash);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new NoHiddenCrashes);
    // What the plug-in may leave at the root of the current drive stays in the prefix.
    SetCurrentDirectoryW(L"C:\\");
    const char* seconds = std::getenv("KVMR72_TEST_SECONDS");
    if (const int limit = seconds == nullptr ? 0 : std::atoi(seconds); limit > 0) {
        StartWatchdog(limit);
    }
    return RUN_ALL_TESTS();
}
