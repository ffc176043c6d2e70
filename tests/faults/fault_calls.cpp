#include "faults/fault_calls.h"

#include <commctrl.h>
#include <commdlg.h>
#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <type_traits>

namespace faults {
namespace {

constexpr char kRegistry[] = "ADVAPI32.dll";
constexpr char kControls[] = "COMCTL32.dll";
constexpr char kGdi[] = "GDI32.dll";
constexpr char kKernel[] = "KERNEL32.dll";
constexpr char kRuntime[] = "msvcrt.dll";
constexpr char kShell[] = "SHELL32.dll";
constexpr char kUser[] = "USER32.dll";
constexpr char kSpooler[] = "WINSPOOL.DRV";

struct Block {
    std::size_t size;
    std::uintptr_t caller;
};

// One at a time. The plug-in's own thread counts, threads that come and go free what they had.
struct State {
    mutable std::mutex mutex;
    FaultPlan plan;
    int calls = 0;
    int memory_calls = 0;
    std::string failed;
    std::string function;
    std::string step;
    std::string failed_step;
    int failed_call = 0;
    std::map<std::string, int> step_calls;
    std::map<StepCall, int> called;
    std::map<std::string, int> open;
    std::map<std::uintptr_t, Block> blocks;
    std::map<HDC, HGDIOBJ> before_selection;
    std::vector<std::wstring> boxes;
    int stray_frees = 0;
    FaultCalls* owner = nullptr;
    const void* caller = nullptr;  // of the latest call, in the plug-in
};

State state;

struct Row {
    std::string dll;
    std::string function;
    DWORD error;
    bool is_memory;
    void (*hook)(rig::ImportHooks& hooks);
    void* stand_in;
};

// A function's name as a template argument: each function gets a stand-in of its own.
template <std::size_t kSize>
struct Name {
    char text[kSize] = {};

    consteval Name(const char (&name)[kSize]) { std::copy_n(name, kSize, text); }
};

template <Name kName, typename Result, typename... Arguments>
struct StandIn {
    using Function = Result WINAPI(Arguments...);

    static inline const char* dll = nullptr;
    static inline DWORD error = ERROR_SUCCESS;
    static inline bool is_memory = false;
    static inline Result failed = {};
    static inline Function* fails = nullptr;
    static inline Function* instead = nullptr;
    static inline Function* original = nullptr;

    static Result WINAPI Call(Arguments... arguments) {
        if (FaultCalls::Counts(kName.text, error, is_memory, __builtin_return_address(0))) {
            SetLastError(error);
            return fails != nullptr ? fails(arguments...) : failed;
        }
        const Result result = instead != nullptr ? instead(arguments...) : original(arguments...);
        if (result != failed) {
            FaultCalls::Opened(kName.text);
        }
        return result;
    }

    static void Hook(rig::ImportHooks& hooks) { hooks.Hook(dll, kName.text, &Call, &original); }
};

// A call that fails with `failed` and the last error `error`. `instead` does its work in the tests.
template <Name kName, typename Result, typename... Arguments>
Row Fallible(const char* dll, Result(WINAPI*)(Arguments...), std::type_identity_t<Result> failed, DWORD error,
             std::type_identity_t<Result(WINAPI*)(Arguments...)> instead = nullptr) {
    using Own = StandIn<kName, Result, Arguments...>;
    Own::dll = dll;
    Own::error = error;
    Own::failed = failed;
    Own::instead = instead;
    return {dll, kName.text, error, false, &Own::Hook, reinterpret_cast<void*>(&Own::Call)};
}

// A call that answers what `fails` answers when it fails.
template <Name kName, typename Result, typename... Arguments>
Row FallibleAs(const char* dll, Result(WINAPI* function)(Arguments...),
               std::type_identity_t<Result(WINAPI*)(Arguments...)> fails, DWORD error) {
    StandIn<kName, Result, Arguments...>::fails = fails;
    return Fallible<kName>(dll, function, Result{}, error);
}

// A call for memory, which fails with none.
template <Name kName, typename Result, typename... Arguments>
Row Memory(const char* dll, Result(WINAPI* function)(Arguments...),
           std::type_identity_t<Result(WINAPI*)(Arguments...)> instead) {
    StandIn<kName, Result, Arguments...>::is_memory = true;
    Row row = Fallible<kName>(dll, function, nullptr, ERROR_NOT_ENOUGH_MEMORY, instead);
    row.is_memory = true;
    return row;
}

// Where in the plug-in a call comes from, as an offset in the DLL.
std::uintptr_t OffsetOf(const void* caller) {
    return reinterpret_cast<std::uintptr_t>(caller) -
           reinterpret_cast<std::uintptr_t>(GetModuleHandleW(L"KVMR72UI.dll"));
}

void* Keep(void* block, std::size_t size) {
    const std::lock_guard lock(state.mutex);
    if (block != nullptr) {
        state.blocks[reinterpret_cast<std::uintptr_t>(block)] = {size, OffsetOf(state.caller)};
    }
    return block;
}

void* Malloc(std::size_t size) {
    return Keep(std::malloc(size), size);
}

void* Calloc(std::size_t count, std::size_t size) {
    return Keep(std::calloc(count, size), count * size);
}

void Forget(std::uintptr_t block) {
    const std::lock_guard lock(state.mutex);
    if (block != 0 && state.blocks.erase(block) == 0) {
        ++state.stray_frees;
    }
}

void* Realloc(void* block, std::size_t size) {
    const auto before = reinterpret_cast<std::uintptr_t>(block);
    void* const moved = std::realloc(block, size);
    if (moved != nullptr) {
        Forget(before);
    }
    return Keep(moved, size);
}

void Free(void* block) {
    Forget(reinterpret_cast<std::uintptr_t>(block));
    std::free(block);
}

FARPROC WINAPI FindFunction(HMODULE library, LPCSTR name);

// What is selected before is what comes back: that always succeeds.
HGDIOBJ WINAPI SelectOrFail(HDC dc, HGDIOBJ object) {
    bool comes_back = false;
    {
        const std::lock_guard lock(state.mutex);
        const auto before = state.before_selection.find(dc);
        comes_back = before != state.before_selection.end() && before->second == object;
        if (comes_back) {
            state.before_selection.erase(before);
        }
    }
    if (!comes_back &&
        FaultCalls::Counts("SelectObject", ERROR_INVALID_HANDLE, false, __builtin_return_address(0))) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    const HGDIOBJ before = SelectObject(dc, object);
    if (!comes_back && before != nullptr) {
        const std::lock_guard lock(state.mutex);
        state.before_selection[dc] = before;
    }
    return before;
}

constexpr wchar_t kNoFile[] = L"C:\\there is no such folder\\file";

// The profile functions tell nothing of a failure: the default comes.
UINT WINAPI DefaultNumber(LPCWSTR, LPCWSTR, INT otherwise, LPCWSTR) {
    return static_cast<UINT>(otherwise);
}

DWORD WINAPI DefaultText(LPCWSTR section, LPCWSTR key, LPCWSTR otherwise, LPWSTR text, DWORD size, LPCWSTR) {
    return GetPrivateProfileStringW(section, key, otherwise, text, size, kNoFile);
}

HINSTANCE WINAPI PretendToOpen(HWND, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR, INT) {
    if (!state.owner->answers.finds_programs) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return reinterpret_cast<HINSTANCE>(SE_ERR_FNF);
    }
    constexpr INT_PTR kAnySuccess = 42;
    return reinterpret_cast<HINSTANCE>(kAnySuccess);
}

int WINAPI NoteBox(HWND, LPCWSTR text, LPCWSTR, UINT) {
    const std::lock_guard lock(state.mutex);
    state.boxes.emplace_back(text);
    return IDOK;
}

BOOL WINAPI ChooseFile(LPOPENFILENAMEW dialog) {
    const std::wstring& file = state.owner->answers.file;
    if (file.empty() || file.size() >= dialog->nMaxFile) {
        return FALSE;
    }
    std::copy_n(file.c_str(), file.size() + 1, dialog->lpstrFile);
    return TRUE;
}

PIDLIST_ABSOLUTE WINAPI ChooseFolder(LPBROWSEINFOW) {
    PIDLIST_ABSOLUTE list = nullptr;
    SHParseDisplayName(state.owner->answers.folder.c_str(), nullptr, &list, 0, nullptr);
    return list;
}

// A pointer that really moves has messages of its own, whenever they come.
BOOL WINAPI TellPointer(POINT* pointer) {
    *pointer = state.owner->answers.pointer;
    return TRUE;
}

SHORT WINAPI TellKey(int key) {
    constexpr SHORT kDown = -128;
    return key == state.owner->answers.held_key ? kDown : 0;
}

const std::vector<Row>& Rows() {
    static const std::vector<Row> rows = {
        Fallible<"RegCreateKeyExW">(kRegistry, &RegCreateKeyExW, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED),
        Fallible<"RegOpenKeyExW">(kRegistry, &RegOpenKeyExW, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED),
        Fallible<"RegQueryValueExW">(kRegistry, &RegQueryValueExW, ERROR_FILE_NOT_FOUND,
                                     ERROR_FILE_NOT_FOUND),
        Fallible<"RegSetValueExW">(kRegistry, &RegSetValueExW, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED),

        Fallible<"ImageList_Create">(kControls, &ImageList_Create, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"ImageList_ReplaceIcon">(kControls, &ImageList_ReplaceIcon, -1, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"InitCommonControlsEx">(kControls, &InitCommonControlsEx, FALSE, ERROR_NOT_ENOUGH_MEMORY),

        Fallible<"BitBlt">(kGdi, &BitBlt, FALSE, ERROR_INVALID_HANDLE),
        Fallible<"CreateCompatibleBitmap">(kGdi, &CreateCompatibleBitmap, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CreateCompatibleDC">(kGdi, &CreateCompatibleDC, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CreateDIBSection">(kGdi, &CreateDIBSection, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CreateFontIndirectW">(kGdi, &CreateFontIndirectW, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CreateFontW">(kGdi, &CreateFontW, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CreateRectRgn">(kGdi, &CreateRectRgn, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"EnumFontFamiliesExW">(kGdi, &EnumFontFamiliesExW, 0, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"GetDeviceCaps">(kGdi, &GetDeviceCaps, 0, ERROR_INVALID_HANDLE),
        Fallible<"GetObjectW">(kGdi, &GetObjectW, 0, ERROR_INVALID_HANDLE),
        Fallible<"GetTextExtentPoint32W">(kGdi, &GetTextExtentPoint32W, FALSE, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"PatBlt">(kGdi, &PatBlt, FALSE, ERROR_INVALID_HANDLE),
        Fallible<"SetBkMode">(kGdi, &SetBkMode, 0, ERROR_INVALID_HANDLE),
        Fallible<"SetStretchBltMode">(kGdi, &SetStretchBltMode, 0, ERROR_INVALID_HANDLE),
        Fallible<"SetTextAlign">(kGdi, &SetTextAlign, GDI_ERROR, ERROR_INVALID_HANDLE),
        Fallible<"StretchBlt">(kGdi, &StretchBlt, FALSE, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"StretchDIBits">(kGdi, &StretchDIBits, 0, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"TextOutW">(kGdi, &TextOutW, FALSE, ERROR_NOT_ENOUGH_MEMORY),

        Fallible<"ActivateActCtx">(kKernel, &ActivateActCtx, FALSE, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CopyFileW">(kKernel, &CopyFileW, FALSE, ERROR_ACCESS_DENIED),
        Fallible<"CreateActCtxW">(kKernel, &CreateActCtxW, INVALID_HANDLE_VALUE, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CreateDirectoryW">(kKernel, &CreateDirectoryW, FALSE, ERROR_ACCESS_DENIED),
        Fallible<"CreateFileW">(kKernel, &CreateFileW, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED),
        Fallible<"DeleteFileW">(kKernel, &DeleteFileW, FALSE, ERROR_ACCESS_DENIED),
        Fallible<"FindFirstFileW">(kKernel, &FindFirstFileW, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED),
        Fallible<"GetFileAttributesExW">(kKernel, &GetFileAttributesExW, FALSE, ERROR_ACCESS_DENIED),
        Fallible<"GetFileAttributesW">(kKernel, &GetFileAttributesW, INVALID_FILE_ATTRIBUTES,
                                       ERROR_ACCESS_DENIED),
        Fallible<"GetFileSize">(kKernel, &GetFileSize, INVALID_FILE_SIZE, ERROR_INVALID_HANDLE),
        Fallible<"GetFileSizeEx">(kKernel, &GetFileSizeEx, FALSE, ERROR_INVALID_HANDLE),
        Fallible<"GetFileType">(kKernel, &GetFileType, FILE_TYPE_UNKNOWN, ERROR_INVALID_HANDLE),
        Fallible<"GetModuleFileNameW">(kKernel, &GetModuleFileNameW, 0, ERROR_INVALID_HANDLE),
        FallibleAs<"GetPrivateProfileIntW">(kKernel, &GetPrivateProfileIntW, &DefaultNumber,
                                            ERROR_FILE_NOT_FOUND),
        FallibleAs<"GetPrivateProfileStringW">(kKernel, &GetPrivateProfileStringW, &DefaultText,
                                               ERROR_FILE_NOT_FOUND),
        Fallible<"GetProcAddress">(kKernel, &GetProcAddress, nullptr, ERROR_PROC_NOT_FOUND, &FindFunction),
        Fallible<"GetSystemDirectoryW">(kKernel, &GetSystemDirectoryW, 0, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"GetTempPathW">(kKernel, &GetTempPathW, 0, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"GetWindowsDirectoryW">(kKernel, &GetWindowsDirectoryW, 0, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"GlobalAlloc">(kKernel, &GlobalAlloc, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"LoadLibraryW">(kKernel, &LoadLibraryW, nullptr, ERROR_MOD_NOT_FOUND),
        Fallible<"MultiByteToWideChar">(kKernel, &MultiByteToWideChar, 0, ERROR_NO_UNICODE_TRANSLATION),
        Fallible<"ReadFile">(kKernel, &ReadFile, FALSE, ERROR_READ_FAULT),
        Fallible<"SetEndOfFile">(kKernel, &SetEndOfFile, FALSE, ERROR_DISK_FULL),
        Fallible<"SetFileAttributesW">(kKernel, &SetFileAttributesW, FALSE, ERROR_ACCESS_DENIED),
        Fallible<"SetFilePointer">(kKernel, &SetFilePointer, INVALID_SET_FILE_POINTER, ERROR_INVALID_HANDLE),
        Fallible<"VerifyVersionInfoW">(kKernel, &VerifyVersionInfoW, FALSE, ERROR_OLD_WIN_VERSION),
        Fallible<"VirtualQuery">(kKernel, &VirtualQuery, 0, ERROR_INVALID_PARAMETER),
        Fallible<"WideCharToMultiByte">(kKernel, &WideCharToMultiByte, 0, ERROR_INVALID_PARAMETER),
        Fallible<"WriteFile">(kKernel, &WriteFile, FALSE, ERROR_DISK_FULL),
        Fallible<"WritePrivateProfileStringW">(kKernel, &WritePrivateProfileStringW, FALSE,
                                               ERROR_ACCESS_DENIED),

        Memory<"malloc">(kRuntime, &std::malloc, &Malloc),
        Memory<"calloc">(kRuntime, &std::calloc, &Calloc),
        Memory<"realloc">(kRuntime, &std::realloc, &Realloc),

        Fallible<"ShellExecuteW">(kShell, &ShellExecuteW, reinterpret_cast<HINSTANCE>(SE_ERR_FNF),
                                  ERROR_FILE_NOT_FOUND, &PretendToOpen),
        Fallible<"SHGetSpecialFolderPathW">(kShell, &SHGetSpecialFolderPathW, FALSE, ERROR_FILE_NOT_FOUND),
        Fallible<"SHBrowseForFolderW">(kShell, &SHBrowseForFolderW, nullptr, ERROR_CANCELLED, &ChooseFolder),
        Fallible<"SHGetPathFromIDListW">(kShell, &SHGetPathFromIDListW, FALSE, ERROR_INVALID_PARAMETER),
        Fallible<"GetOpenFileNameW">("comdlg32.dll", &GetOpenFileNameW, FALSE, ERROR_NOT_ENOUGH_MEMORY,
                                     &ChooseFile),

        Fallible<"BeginPaint">(kUser, &BeginPaint, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"CreateWindowExW">(kUser, &CreateWindowExW, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"DialogBoxParamW">(kUser, &DialogBoxParamW, -1, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"EnumChildWindows">(kUser, &EnumChildWindows, FALSE, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"EnumWindows">(kUser, &EnumWindows, FALSE, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"GetClientRect">(kUser, &GetClientRect, FALSE, ERROR_INVALID_WINDOW_HANDLE),
        Fallible<"GetCursorPos">(kUser, &GetCursorPos, FALSE, ERROR_ACCESS_DENIED, &TellPointer),
        Fallible<"GetDC">(kUser, &GetDC, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"GetWindowRect">(kUser, &GetWindowRect, FALSE, ERROR_INVALID_WINDOW_HANDLE),
        Fallible<"LoadBitmapW">(kUser, &LoadBitmapW, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"LoadCursorW">(kUser, &LoadCursorW, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"LoadImageW">(kUser, &LoadImageW, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"MessageBoxW">(kUser, &MessageBoxW, 0, ERROR_NOT_ENOUGH_MEMORY, &NoteBox),
        Fallible<"PostMessageW">(kUser, &PostMessageW, FALSE, ERROR_NOT_ENOUGH_QUOTA),
        Fallible<"SendMessageTimeoutW">(kUser, &SendMessageTimeoutW, 0, ERROR_TIMEOUT),
        Fallible<"SetPropW">(kUser, &SetPropW, FALSE, ERROR_NOT_ENOUGH_MEMORY),
        Fallible<"SetWindowLongPtrW">(kUser, &SetWindowLongPtrW, 0, ERROR_INVALID_WINDOW_HANDLE),
        Fallible<"SetWindowRgn">(kUser, &SetWindowRgn, 0, ERROR_INVALID_HANDLE),
    };
    return rows;
}

// The virtual printer stands in for these; it asks before each call.
constexpr const char* kSpoolerCalls[] = {
    "AddFormW",    "DeleteFormW", "EndDocPrinter",    "EndPagePrinter",   "EnumFormsW",
    "GetPrinterW", "SetFormW",    "StartDocPrinterW", "StartPagePrinter", "WritePrinter"};

// What one call makes and another gives back.
struct Pair {
    const char* opens;
    const char* closes;
};
constexpr Pair kPairs[] = {{"GetDC", "ReleaseDC"},
                           {"BeginPaint", "EndPaint"},
                           {"CreateActCtxW", "ReleaseActCtx"},
                           {"ActivateActCtx", "DeactivateActCtx"},
                           {"FindFirstFileW", "FindClose"},
                           {"GlobalAlloc", "GlobalFree"},
                           {"ImageList_Create", "ImageList_Destroy"},
                           {"SHBrowseForFolderW", "CoTaskMemFree"}};

template <Name kName, typename Result, typename... Arguments>
struct Closer {
    static inline Result(WINAPI* original)(Arguments...) = nullptr;
    static Result WINAPI Call(Arguments... arguments) {
        FaultCalls::Closed(kName.text);
        return original(arguments...);
    }
};

template <Name kName, typename Result, typename... Arguments>
void HookCloser(rig::ImportHooks& hooks, const char* dll, Result(WINAPI*)(Arguments...)) {
    using Own = Closer<kName, Result, Arguments...>;
    hooks.Hook(dll, kName.text, &Own::Call, &Own::original);
}

void HookPairs(rig::ImportHooks& hooks) {
    HookCloser<"ReleaseDC">(hooks, kUser, &ReleaseDC);
    HookCloser<"EndPaint">(hooks, kUser, &EndPaint);
    HookCloser<"ReleaseActCtx">(hooks, kKernel, &ReleaseActCtx);
    HookCloser<"DeactivateActCtx">(hooks, kKernel, &DeactivateActCtx);
    HookCloser<"FindClose">(hooks, kKernel, &FindClose);
    HookCloser<"GlobalFree">(hooks, kKernel, &GlobalFree);
    HookCloser<"ImageList_Destroy">(hooks, kControls, &ImageList_Destroy);
    HookCloser<"CoTaskMemFree">(hooks, "ole32.dll", &CoTaskMemFree);
}

FARPROC WINAPI FindFunction(HMODULE library, LPCSTR name) {
    const FARPROC real = GetProcAddress(library, name);
    const auto row = std::ranges::find(Rows(), std::string(name), &Row::function);
    return real != nullptr && row != Rows().end() ? reinterpret_cast<FARPROC>(row->stand_in) : real;
}

struct Group {
    const char* dll;
    std::vector<const char*> functions;
};

// Not made to fail. Most only give back, compare or show: the user sees what is missing. Those that ask a
// window (GetWindowLongPtrW, GetPropW, GetDlgItem and the like) fail for one that is gone. The plug-in looks
// at what they answer, but nearly every message asks them, and no single one fails alone: the page tests have
// windows go. SendMessageW and SendDlgItemMessageW answer what the window does; one that refuses is not
// played here.
const std::vector<Group>& HarmlessGroups() {
    static const std::vector<Group> groups = {
        {kRegistry, {"RegCloseKey"}},
        {kControls, {"ImageList_Destroy"}},
        {kGdi, {"DeleteDC", "DeleteObject", "GdiFlush"}},
        {kKernel,
         {"CloseHandle", "DeactivateActCtx", "FindClose", "FreeLibrary", "GetCurrentProcessId",
          "AcquireSRWLockExclusive", "ReleaseSRWLockExclusive", "GetLastError", "GetSystemDefaultLangID",
          "GetSystemInfo", "GetTickCount64", "GlobalFree", "MulDiv", "OutputDebugStringW", "ReleaseActCtx",
          "SetLastError", "VerSetConditionMask", "lstrcmpW", "lstrcmpiW"}},
        {kRuntime,
         {"_vsnwprintf", "free", "memchr", "memcmp", "memcpy", "memmove", "memset", "strlen", "wcslen"}},
        {"ole32.dll", {"CoTaskMemFree"}},
        {kUser,
         {"CallWindowProcW",
          "CheckDlgButton",
          "CheckRadioButton",
          "DefWindowProcW",
          "DestroyIcon",
          "EnableWindow",
          "EndDialog",
          "EndPaint",
          "FillRect",
          "FindWindowExW",
          "GetAncestor",
          "GetClassNameW",
          "GetDlgCtrlID",
          "GetDlgItem",
          "GetDlgItemInt",
          "GetDlgItemTextW",
          "GetFocus",
          "GetKeyState",
          "GetParent",
          "GetPropW",
          "GetSystemMetrics",
          "GetWindowLongPtrW",
          "GetWindowTextLengthW",
          "GetWindowTextW",
          "GetWindowThreadProcessId",
          "InternalGetWindowText",
          "InvalidateRect",
          "IsDlgButtonChecked",
          "IsWindow",
          "IsWindowEnabled",
          "IsWindowVisible",
          "PtInRect",
          "RedrawWindow",
          "ReleaseDC",
          "RemovePropW",
          "SendDlgItemMessageW",
          "SendMessageW",
          "SetCursor",
          "SetDlgItemInt",
          "SetDlgItemTextW",
          "SetFocus",
          "SetWindowPos",
          "SetWindowTextW",
          "ShowWindow"}},
    };
    return groups;
}

// Of the compiler's start-up code and exceptions.
const std::vector<Group>& RuntimeGroups() {
    static const std::vector<Group> groups = {
        {kRegistry, {"CryptAcquireContextA", "CryptGenRandom", "CryptReleaseContext"}},
        {kKernel,
         {"DeleteCriticalSection", "EnterCriticalSection", "GetModuleHandleW", "InitializeCriticalSection",
          "LeaveCriticalSection", "RaiseException", "RtlCaptureContext", "RtlLookupFunctionEntry",
          "RtlUnwindEx", "RtlVirtualUnwind", "Sleep", "TlsGetValue", "VirtualProtect"}},
        {kRuntime,
         {"__iob_func", "__setusermatherr", "_amsg_exit", "_close", "_errno", "_exit", "_initterm", "_lock",
          "_open", "_read", "_unlock", "_write", "abort", "fwrite", "strcmp", "strncmp", "vfprintf"}},
    };
    return groups;
}

std::vector<FunctionName> NamesOf(const std::vector<Group>& groups) {
    std::vector<FunctionName> names;
    for (const Group& group : groups) {
        for (const char* function : group.functions) {
            names.push_back(std::string(group.dll) + '!' + function);
        }
    }
    return names;
}

std::string Described(const char* function, DWORD error, const void* caller) {
    std::string text = std::string(function) + " (error " + std::to_string(error) + ")";
    if (caller != nullptr) {
        char place[32];
        std::snprintf(place, sizeof place, " at +%#llx", static_cast<unsigned long long>(OffsetOf(caller)));
        text += place;
    }
    return text;
}

}  // namespace

FaultCalls::FaultCalls(VirtualPrinter& printer, const FaultPlan& plan) {
    {
        const std::lock_guard lock(state.mutex);
        state.plan = plan;
        state.calls = 0;
        state.memory_calls = 0;
        state.failed.clear();
        state.function.clear();
        state.step.clear();
        state.failed_step.clear();
        state.failed_call = 0;
        state.step_calls.clear();
        state.called.clear();
        state.open.clear();
        state.blocks.clear();
        state.before_selection.clear();
        state.boxes.clear();
        state.stray_frees = 0;
        state.owner = this;
    }
    for (const Row& row : Rows()) {
        row.hook(hooks_);
    }
    hooks_.Hook(kGdi, "SelectObject", &SelectOrFail);
    hooks_.Hook(kRuntime, "free", &Free);
    hooks_.Hook(kUser, "GetKeyState", &TellKey);
    HookPairs(hooks_);
    printer.before_call = [&printer](const char* function) {
        constexpr DWORD kServerGone = RPC_S_SERVER_UNAVAILABLE;
        if (Counts(function, kServerGone, false, nullptr)) {
            printer.FailCall(1, kServerGone);
        }
    };
}

FaultCalls::~FaultCalls() {
    const std::lock_guard lock(state.mutex);
    state.plan = {};
    state.owner = nullptr;
}

int FaultCalls::calls() const {
    const std::lock_guard lock(state.mutex);
    return state.calls;
}

int FaultCalls::memory_calls() const {
    const std::lock_guard lock(state.mutex);
    return state.memory_calls;
}

std::string FaultCalls::failed() const {
    const std::lock_guard lock(state.mutex);
    return state.failed;
}

std::string_view FaultCalls::failed_function() const {
    return state.function;
}

std::string_view FaultCalls::failed_step() const {
    return state.failed_step;
}

int FaultCalls::failed_call() const {
    return state.failed_call;
}

std::map<StepCall, int> FaultCalls::called() const {
    const std::lock_guard lock(state.mutex);
    return state.called;
}

void FaultCalls::EnterStep(const char* step) {
    const std::lock_guard lock(state.mutex);
    state.step = step;
    state.step_calls.clear();
}

std::map<std::string, int> FaultCalls::Left() const {
    const std::lock_guard lock(state.mutex);
    std::map<std::string, int> left;
    for (const auto& [function, count] : state.open) {
        // What could not be begun may be ended all the same.
        if (count > 0) {
            left[function] = count;
        }
    }
    for (const auto& [block, made] : state.blocks) {
        char text[64];
        std::snprintf(text, sizeof text, "%llu bytes at +%#llx", static_cast<unsigned long long>(made.size),
                      static_cast<unsigned long long>(made.caller));
        ++left[text];
    }
    return left;
}

std::vector<std::wstring> FaultCalls::boxes() const {
    const std::lock_guard lock(state.mutex);
    return state.boxes;
}

int FaultCalls::stray_frees() const {
    const std::lock_guard lock(state.mutex);
    return state.stray_frees;
}

bool FaultCalls::Counts(const char* function, DWORD error, bool is_memory, const void* caller) {
    const std::lock_guard lock(state.mutex);
    state.caller = caller;
    if (state.owner == nullptr) {
        return false;
    }
    ++state.calls;
    state.memory_calls += is_memory ? 1 : 0;
    const int step_call = ++state.step_calls[function];
    int& most = state.called[{state.step, function}];
    most = std::max(most, step_call);
    if (state.plan.memory_only && !is_memory) {
        return false;
    }
    const int number = state.plan.memory_only ? state.memory_calls : state.calls;
    if (state.plan.first == 0 || number < state.plan.first || number - state.plan.first >= state.plan.count) {
        return false;
    }
    if (state.failed.empty()) {
        state.failed = Described(function, error, caller);
        state.function = function;
        state.failed_step = state.step;
        state.failed_call = step_call;
    }
    return true;
}

void FaultCalls::Opened(const char* function) {
    const auto* const pair = std::ranges::find(kPairs, std::string_view(function), &Pair::opens);
    if (pair != std::end(kPairs)) {
        const std::lock_guard lock(state.mutex);
        ++state.open[pair->opens];
    }
}

void FaultCalls::Closed(const char* function) {
    const auto* const pair = std::ranges::find(kPairs, std::string_view(function), &Pair::closes);
    if (pair != std::end(kPairs)) {
        const std::lock_guard lock(state.mutex);
        --state.open[pair->opens];
    }
}

std::vector<FunctionName> FallibleFunctions() {
    std::vector<FunctionName> names;
    for (const Row& row : Rows()) {
        names.push_back(row.dll + '!' + row.function);
    }
    for (const char* function : kSpoolerCalls) {
        names.push_back(std::string(kSpooler) + '!' + function);
    }
    names.push_back(std::string(kGdi) + "!SelectObject");
    return names;
}

std::vector<FunctionName> HarmlessFunctions() {
    return NamesOf(HarmlessGroups());
}

bool IsFoundByName(const FunctionName& function) {
    constexpr std::string_view kFound[] = {
        "SHELL32.dll!SHGetSpecialFolderPathW", "SHELL32.dll!SHBrowseForFolderW",
        "SHELL32.dll!SHGetPathFromIDListW", "comdlg32.dll!GetOpenFileNameW"};
    return std::ranges::find(kFound, function) != std::end(kFound);
}

std::vector<FunctionName> RuntimeFunctions() {
    return NamesOf(RuntimeGroups());
}

}  // namespace faults
