// The system around logos on the disk and on their way to the printer: memory that runs out, calls of the
// file system and of the spooler that are watched and can be made to fail.
#pragma once

#include <windows.h>

#include <winspool.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "counted_memory.h"
#include "rig/replaced.h"

// Where this program's import table keeps the functions.
extern "C" {
extern decltype(&CloseHandle) __imp_CloseHandle;
extern decltype(&CreateFileW) __imp_CreateFileW;
extern decltype(&DeleteFileW) __imp_DeleteFileW;
extern decltype(&GetFileAttributesExW) __imp_GetFileAttributesExW;
extern decltype(&GetFileSizeEx) __imp_GetFileSizeEx;
extern decltype(&GetFileType) __imp_GetFileType;
extern decltype(&ReadFile) __imp_ReadFile;
extern decltype(&SetEndOfFile) __imp_SetEndOfFile;
extern decltype(&WriteFile) __imp_WriteFile;
extern decltype(&EndDocPrinter) __imp_EndDocPrinter;
extern decltype(&EndPagePrinter) __imp_EndPagePrinter;
extern decltype(&StartDocPrinterW) __imp_StartDocPrinterW;
extern decltype(&StartPagePrinter) __imp_StartPagePrinter;
extern decltype(&WritePrinter) __imp_WritePrinter;
}

namespace logo_system {

using rig::Replaced;

using Bytes = std::vector<std::uint8_t>;
using Calls = std::vector<std::wstring>;

using counted_memory::kNever;
using counted_memory::memory;
using counted_memory::Memory;

// While it lives, the program's next block but `index` is refused.
class RefusedBlock {
  public:
    explicit RefusedBlock(int index) {
        memory.blocks = 0;
        memory.refused = index;
    }
    RefusedBlock(const RefusedBlock&) = delete;
    RefusedBlock& operator=(const RefusedBlock&) = delete;
    ~RefusedBlock() { memory.refused = kNever; }

    // Whether the program has asked for it.
    static bool WasAskedFor() { return memory.blocks > memory.refused; }
};

// Blocks for the tests' own records are given.
class OwnMemory {
  public:
    OwnMemory() : before_(memory) { memory.refused = kNever; }
    OwnMemory(const OwnMemory&) = delete;
    OwnMemory& operator=(const OwnMemory&) = delete;
    ~OwnMemory() {
        memory.refused = before_.refused;
        memory.blocks = before_.blocks;
    }

  private:
    const Memory before_;
};

// The files of the disk. One at a time; it keeps the calls of the code under test, and of nobody else as long
// as a test asks for nothing in between.
class WatchedFiles {
  public:
    WatchedFiles() { current_ = this; }
    WatchedFiles(const WatchedFiles&) = delete;
    WatchedFiles& operator=(const WatchedFiles&) = delete;
    ~WatchedFiles() { current_ = nullptr; }

    Calls calls;
    int open = 0;          // handles
    int failing = kNever;  // the call that fails, counted from 0
    DWORD unread = 0;      // so many bytes fewer are read than asked for
    DWORD unwritten = 0;
    std::function<LONGLONG(LONGLONG)> size;  // what is said of a file's size, where not the truth
    std::function<void(const std::wstring& call)> onCall;  // what happens right before it

  private:
    bool Fails(const std::wstring& call) {
        if (onCall) {
            onCall(call);
        }
        calls.push_back(call);
        const bool fails = static_cast<int>(calls.size()) - 1 == failing;
        SetLastError(fails ? ERROR_GEN_FAILURE : ERROR_SUCCESS);
        return fails;
    }

    static std::wstring NameOf(const std::wstring& path) { return path.substr(path.find_last_of(L'\\') + 1); }

    static BOOL WINAPI Close(HANDLE handle) {
        const OwnMemory own;
        // Whatever it says, the handle is gone.
        const BOOL closed = current_->close_.Real()(handle);
        --current_->open;
        return current_->Fails(L"close") ? FALSE : closed;
    }

    static HANDLE WINAPI Create(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                DWORD creation, DWORD flags, HANDLE pattern) {
        const OwnMemory own;
        if (current_->Fails(L"open " + NameOf(path) + L" " + std::to_wstring(access) + L" " +
                            std::to_wstring(share) + L" " + std::to_wstring(creation))) {
            return INVALID_HANDLE_VALUE;
        }
        const HANDLE file = current_->create_.Real()(path, access, share, security, creation, flags, pattern);
        current_->open += file == INVALID_HANDLE_VALUE ? 0 : 1;
        return file;
    }

    static BOOL WINAPI Delete(LPCWSTR path) {
        const OwnMemory own;
        return current_->Fails(L"delete " + NameOf(path)) ? FALSE : current_->delete_.Real()(path);
    }

    static BOOL WINAPI Attributes(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID information) {
        const OwnMemory own;
        if (current_->Fails(L"attributes " + NameOf(path)) ||
            !current_->attributes_.Real()(path, level, information)) {
            return FALSE;
        }
        auto& data = *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(information);
        if (current_->size) {
            const auto told = static_cast<std::uint64_t>(current_->size(data.nFileSizeLow));
            data.nFileSizeLow = static_cast<DWORD>(told & 0xFFFFFFFF);
            data.nFileSizeHigh = static_cast<DWORD>(told >> 32);
        }
        return TRUE;
    }

    static BOOL WINAPI Size(HANDLE file, PLARGE_INTEGER size) {
        const OwnMemory own;
        if (current_->Fails(L"size") || !current_->fileSize_.Real()(file, size)) {
            return FALSE;
        }
        if (current_->size) {
            size->QuadPart = current_->size(size->QuadPart);
        }
        return TRUE;
    }

    static DWORD WINAPI Type(HANDLE file) {
        const OwnMemory own;
        return current_->Fails(L"type") ? FILE_TYPE_UNKNOWN : current_->type_.Real()(file);
    }

    static BOOL WINAPI Read(HANDLE file, LPVOID buffer, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) {
        const OwnMemory own;
        if (current_->Fails(L"read " + std::to_wstring(size))) {
            *count = size;
            return FALSE;
        }
        return current_->read_.Real()(file, buffer, size - current_->unread, count, overlapped);
    }

    static BOOL WINAPI SetEnd(HANDLE file) {
        const OwnMemory own;
        return current_->Fails(L"set end") ? FALSE : current_->setEnd_.Real()(file);
    }

    static BOOL WINAPI Write(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD count,
                             LPOVERLAPPED overlapped) {
        const OwnMemory own;
        if (current_->Fails(L"write " + std::to_wstring(size))) {
            *count = size;
            return FALSE;
        }
        return current_->write_.Real()(file, buffer, size - current_->unwritten, count, overlapped);
    }

    static inline WatchedFiles* current_ = nullptr;
    const Replaced<decltype(CloseHandle)> close_{__imp_CloseHandle, Close};
    const Replaced<decltype(CreateFileW)> create_{__imp_CreateFileW, Create};
    const Replaced<decltype(DeleteFileW)> delete_{__imp_DeleteFileW, Delete};
    const Replaced<decltype(GetFileAttributesExW)> attributes_{__imp_GetFileAttributesExW, Attributes};
    const Replaced<decltype(GetFileSizeEx)> fileSize_{__imp_GetFileSizeEx, Size};
    const Replaced<decltype(GetFileType)> type_{__imp_GetFileType, Type};
    const Replaced<decltype(ReadFile)> read_{__imp_ReadFile, Read};
    const Replaced<decltype(SetEndOfFile)> setEnd_{__imp_SetEndOfFile, SetEnd};
    const Replaced<decltype(WriteFile)> write_{__imp_WriteFile, Write};
};

// A spooler that keeps what it is given. One at a time.
class FakeSpooler {
  public:
    FakeSpooler() { current_ = this; }
    FakeSpooler(const FakeSpooler&) = delete;
    FakeSpooler& operator=(const FakeSpooler&) = delete;
    ~FakeSpooler() { current_ = nullptr; }

    static HANDLE Printer() { return reinterpret_cast<HANDLE>(std::uintptr_t{0x1234567890}); }

    Calls calls;
    std::vector<Bytes> writes;
    int failing = kNever;  // the call that fails, counted from 0
    bool keepsWrites = true;
    std::function<void()> onWrite;  // what happens in one

  private:
    bool Succeeds(HANDLE printer, const std::wstring& call) {
        calls.push_back(printer == Printer() ? call : call + L" of another handle");
        return static_cast<int>(calls.size()) - 1 != failing;
    }

    static DWORD WINAPI StartDocument(HANDLE printer, DWORD level, LPBYTE information) {
        const OwnMemory own;
        const auto& document = *reinterpret_cast<const DOC_INFO_1W*>(information);
        const bool isPlain = level == 1 && document.pOutputFile == nullptr;
        return current_->Succeeds(printer, L"start " + std::wstring(document.pDocName) + L" " +
                                               document.pDatatype + (isPlain ? L"" : L"?"));
    }

    static BOOL WINAPI StartPage(HANDLE printer) {
        const OwnMemory own;
        return current_->Succeeds(printer, L"page");
    }

    static BOOL WINAPI Write(HANDLE printer, LPVOID bytes, DWORD count, LPDWORD written) {
        const OwnMemory own;
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        if (current_->keepsWrites) {
            current_->writes.emplace_back(first, first + count);
        }
        if (current_->onWrite) {
            current_->onWrite();
        }
        *written = count;
        return current_->Succeeds(printer, L"write");
    }

    static BOOL WINAPI EndPage(HANDLE printer) {
        const OwnMemory own;
        return current_->Succeeds(printer, L"end page");
    }

    static BOOL WINAPI EndDocument(HANDLE printer) {
        const OwnMemory own;
        return current_->Succeeds(printer, L"end");
    }

    static inline FakeSpooler* current_ = nullptr;
    const Replaced<decltype(StartDocPrinterW)> startDocument_{__imp_StartDocPrinterW, StartDocument};
    const Replaced<decltype(StartPagePrinter)> startPage_{__imp_StartPagePrinter, StartPage};
    const Replaced<decltype(WritePrinter)> write_{__imp_WritePrinter, Write};
    const Replaced<decltype(EndPagePrinter)> endPage_{__imp_EndPagePrinter, EndPage};
    const Replaced<decltype(EndDocPrinter)> endDocument_{__imp_EndDocPrinter, EndDocument};
};

}  // namespace logo_system
