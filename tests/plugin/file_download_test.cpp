// Reading a file for the printer, call by call: what is asked of the file system, and what is left open or
// allocated when one of the calls fails. The plug-in's own source is part of this program.
#include "devpages/file_download.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "counted_memory.h"
#include "rig/replaced.h"

// Where this program's import table keeps the file system's functions.
extern "C" {
extern decltype(&CloseHandle) __imp_CloseHandle;
extern decltype(&CreateFileW) __imp_CreateFileW;
extern decltype(&GetFileSize) __imp_GetFileSize;
extern decltype(&ReadFile) __imp_ReadFile;
extern decltype(&SetFilePointer) __imp_SetFilePointer;
}

namespace {

using counted_memory::kNoLimit;
using counted_memory::memory;
using rig::Replaced;

using Bytes = std::vector<std::uint8_t>;
using Calls = std::vector<std::wstring>;

enum class Call { kNone, kCreate, kSize, kPosition, kRead };

// A file of the disk, whose calls are watched and can be made to fail or to answer something else.
class WatchedFiles {
  public:
    WatchedFiles() { current_ = this; }
    WatchedFiles(const WatchedFiles&) = delete;
    WatchedFiles& operator=(const WatchedFiles&) = delete;
    ~WatchedFiles() { current_ = nullptr; }

    Call failing = Call::kNone;
    // What the size query answers instead, and the error that it sets then.
    bool has_size = false;
    DWORD size_low = 0;
    DWORD size_high = 0;
    DWORD size_error = ERROR_SUCCESS;
    // So many bytes fewer are read than asked for.
    DWORD missing = 0;

    Calls calls;
    int open = 0;  // handles

  private:
    static HANDLE WINAPI Create(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                DWORD creation, DWORD flags, HANDLE pattern) {
        WatchedFiles& files = *current_;
        files.calls.push_back(L"CreateFileW(" + std::filesystem::path(path).filename().wstring() + L", " +
                              std::to_wstring(access) + L", " + std::to_wstring(share) + L", " +
                              (security == nullptr ? L"null" : L"?") + L", " + std::to_wstring(creation) +
                              L", " + std::to_wstring(flags) + L", " + (pattern == nullptr ? L"null" : L"?") +
                              L")");
        if (files.failing == Call::kCreate) {
            SetLastError(ERROR_ACCESS_DENIED);
            return INVALID_HANDLE_VALUE;
        }
        const HANDLE file = files.create_.Real()(path, access, share, security, creation, flags, pattern);
        files.open += file == INVALID_HANDLE_VALUE ? 0 : 1;
        // Nobody promises that success clears the error of before.
        SetLastError(file == INVALID_HANDLE_VALUE ? ERROR_FILE_NOT_FOUND : ERROR_ALREADY_EXISTS);
        return file;
    }

    static DWORD WINAPI Size(HANDLE file, LPDWORD high) {
        WatchedFiles& files = *current_;
        files.calls.emplace_back(L"GetFileSize");
        if (files.failing == Call::kSize) {
            SetLastError(ERROR_INVALID_FUNCTION);
            return INVALID_FILE_SIZE;
        }
        if (!files.has_size) {
            return files.size_.Real()(file, high);
        }
        // As the platform does: nothing is said of success.
        if (files.size_error != ERROR_SUCCESS) {
            SetLastError(files.size_error);
        }
        if (high != nullptr) {
            *high = files.size_high;
        }
        return files.size_low;
    }

    static DWORD WINAPI Position(HANDLE file, LONG low, PLONG high, DWORD method) {
        WatchedFiles& files = *current_;
        files.calls.push_back(L"SetFilePointer(" + std::to_wstring(low) + L", " +
                              (high == nullptr ? L"null" : L"?") + L", " + std::to_wstring(method) + L")");
        if (files.failing == Call::kPosition) {
            SetLastError(ERROR_SEEK);
            return INVALID_SET_FILE_POINTER;
        }
        return files.position_.Real()(file, low, high, method);
    }

    static BOOL WINAPI Read(HANDLE file, LPVOID buffer, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) {
        WatchedFiles& files = *current_;
        files.calls.push_back(L"ReadFile(" + std::to_wstring(size) + L", " +
                              (overlapped == nullptr ? L"null" : L"?") + L")");
        if (files.failing == Call::kRead) {
            *count = size;
            SetLastError(ERROR_CRC);
            return FALSE;
        }
        return files.read_.Real()(file, buffer, size - files.missing, count, overlapped);
    }

    static BOOL WINAPI Close(HANDLE handle) {
        WatchedFiles& files = *current_;
        files.calls.emplace_back(L"CloseHandle");
        --files.open;
        return files.close_.Real()(handle);
    }

    static inline WatchedFiles* current_ = nullptr;
    const Replaced<decltype(CreateFileW)> create_{__imp_CreateFileW, Create};
    const Replaced<decltype(GetFileSize)> size_{__imp_GetFileSize, Size};
    const Replaced<decltype(SetFilePointer)> position_{__imp_SetFilePointer, Position};
    const Replaced<decltype(ReadFile)> read_{__imp_ReadFile, Read};
    const Replaced<decltype(CloseHandle)> close_{__imp_CloseHandle, Close};
};

// For reading, shared with nobody, only if it exists.
constexpr wchar_t kOpened[] = L"CreateFileW(till.jk, 2147483648, 0, null, 3, 128, null)";
constexpr wchar_t kAsked[] = L"GetFileSize";
constexpr wchar_t kAtStart[] = L"SetFilePointer(0, null, 0)";
constexpr wchar_t kRead5[] = L"ReadFile(5, null)";
constexpr wchar_t kClosed[] = L"CloseHandle";

class FileDownloadTest : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::remove_all(folder_);
        ASSERT_TRUE(std::filesystem::create_directories(folder_));
        Write({0x1B, 0x00, 0x0A, 0x1A, 0xFF});
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    void Write(const Bytes& bytes) const {
        std::ofstream file(path_, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        ASSERT_TRUE(file.flush());
    }

    // Reads the file; afterwards nothing is open, and but for a file that was read nothing allocated.
    FileReadResult Read(WatchedFiles& files) {
        bytes_ = {1, 2, 3};
        files.calls.reserve(10);
        const FileReadResult result = ReadFileToSend(path_.c_str(), bytes_);
        EXPECT_EQ(files.open, 0);
        if (result != FileReadResult::kRead) {
            EXPECT_EQ(bytes_.capacity(), 0u);
        }
        return result;
    }
    FileReadResult Read() {
        WatchedFiles files;
        return Read(files);
    }

    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "kvmr72-file-download";
    const std::filesystem::path path_ = folder_ / "till.jk";
    Bytes bytes_;
};

// Call by call

TEST_F(FileDownloadTest, AsksForTheSizeAndReadsFromTheStart) {
    WatchedFiles files;
    EXPECT_EQ(Read(files), FileReadResult::kRead);
    EXPECT_EQ(files.calls, (Calls{kOpened, kAsked, kAtStart, kRead5, kClosed}));
    EXPECT_EQ(bytes_, (Bytes{0x1B, 0x00, 0x0A, 0x1A, 0xFF}));
}

TEST_F(FileDownloadTest, ClosesTheFileWhereACallFails) {
    const struct {
        Call failing;
        FileReadResult result;
        Calls calls;
    } cases[] = {
        {Call::kCreate, FileReadResult::kCannotOpen, {kOpened}},
        {Call::kSize, FileReadResult::kNoSize, {kOpened, kAsked, kClosed}},
        {Call::kPosition, FileReadResult::kNoStart, {kOpened, kAsked, kAtStart, kClosed}},
        {Call::kRead, FileReadResult::kNotRead, {kOpened, kAsked, kAtStart, kRead5, kClosed}},
    };
    for (const auto& [failing, result, calls] : cases) {
        SCOPED_TRACE(static_cast<int>(failing));
        WatchedFiles files;
        files.failing = failing;
        EXPECT_EQ(Read(files), result);
        EXPECT_EQ(files.calls, calls);
    }
}

TEST_F(FileDownloadTest, ClosesTheFileWithoutMemoryForIt) {
    Write(Bytes(100000, 0x55));
    WatchedFiles files;
    memory.limit = 99999;
    const FileReadResult result = Read(files);
    memory.limit = kNoLimit;
    EXPECT_EQ(result, FileReadResult::kNoMemory);
    EXPECT_EQ(files.calls, (Calls{kOpened, kAsked, kClosed}));
}

// The size query's "failed" is also a size, the largest: what else was wrong before does not count.
TEST_F(FileDownloadTest, TellsTheLargestSizeFromAFailure) {
    WatchedFiles files;
    files.has_size = true;
    files.size_low = 0xFFFFFFFF;
    memory.limit = 0xFFFFFFFE;
    const FileReadResult largest = Read(files);
    files.size_error = ERROR_INVALID_FUNCTION;
    const FileReadResult failed = Read(files);
    memory.limit = kNoLimit;
    EXPECT_EQ(largest, FileReadResult::kNoMemory);
    EXPECT_EQ(failed, FileReadResult::kNoSize);
}

// Its first part alone would be another file.
TEST_F(FileDownloadTest, AFileThat32BitsCannotCountHasNoSize) {
    WatchedFiles files;
    files.has_size = true;
    files.size_high = 1;
    for (const DWORD low : {DWORD{0}, DWORD{5}, DWORD{0xFFFFFFFF}}) {
        files.size_low = low;
        files.calls.clear();
        EXPECT_EQ(Read(files), FileReadResult::kNoSize);
        EXPECT_EQ(files.calls, (Calls{kOpened, kAsked, kClosed}));
    }
}

// As when it was cut after its size was known.
TEST_F(FileDownloadTest, AFileThatHasShrunkIsNotRead) {
    WatchedFiles files;
    files.has_size = true;
    files.size_low = 6;
    EXPECT_EQ(Read(files), FileReadResult::kNotRead);
    EXPECT_EQ(files.calls, (Calls{kOpened, kAsked, kAtStart, L"ReadFile(6, null)", kClosed}));
    files.has_size = false;
    for (const DWORD missing : {DWORD{1}, DWORD{5}}) {
        files.missing = missing;
        files.calls.clear();
        EXPECT_EQ(Read(files), FileReadResult::kNotRead);
        EXPECT_EQ(files.calls, (Calls{kOpened, kAsked, kAtStart, kRead5, kClosed})) << "read once";
    }
}

// Files of the disk

TEST_F(FileDownloadTest, ReadsAnEmptyFileAndOneOfAByte) {
    Write({});
    EXPECT_EQ(Read(), FileReadResult::kRead);
    EXPECT_EQ(bytes_, Bytes());
    Write({0x1A});
    EXPECT_EQ(Read(), FileReadResult::kRead);
    EXPECT_EQ(bytes_, Bytes{0x1A});
}

TEST_F(FileDownloadTest, ReadsALargeFileInOneReadAndHoldsItOnce) {
    constexpr std::size_t kSize = std::size_t{64} * 1024 * 1024;
    Bytes content(kSize);
    std::uint32_t value = 1;
    for (std::uint8_t& byte : content) {
        value = value * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(value >> 24);
    }
    Write(content);
    WatchedFiles files;
    const std::size_t before = memory.live;
    memory.peak = before;
    EXPECT_EQ(Read(files), FileReadResult::kRead);
    EXPECT_LT(memory.peak - before, kSize + 4096);
    EXPECT_EQ(files.calls, (Calls{kOpened, kAsked, kAtStart, L"ReadFile(67108864, null)", kClosed}));
    EXPECT_TRUE(bytes_ == content) << "read whole";
}

TEST_F(FileDownloadTest, WhatIsNoFileCannotBeOpened) {
    const std::filesystem::path paths[] = {
        folder_ / "missing.jk", folder_, folder_ / "missing" / "till.jk",    folder_ / "*.jk",
        folder_ / L"till.jk\\", L" ",    folder_ / std::wstring(1000, L'x'), std::wstring(1024, L'\\'),
        L"\\\\.\\nothing-there"};
    for (const std::filesystem::path& path : paths) {
        WatchedFiles files;
        EXPECT_EQ(ReadFileToSend(path.c_str(), bytes_), FileReadResult::kCannotOpen) << path;
        EXPECT_EQ(files.open, 0);
    }
    EXPECT_FALSE(std::filesystem::exists(folder_ / "missing.jk")) << "nothing is made";
}

// Somebody may be writing it.
// They have no end to read to.
TEST_F(FileDownloadTest, DevicesAndPipesCannotBeOpened) {
    constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\kvmr72-download";
    const HANDLE pipe =
        CreateNamedPipeW(kPipe, PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    for (const wchar_t* path : {L"NUL", kPipe}) {
        Bytes bytes = {1};
        EXPECT_EQ(ReadFileToSend(path, bytes), FileReadResult::kCannotOpen);
        EXPECT_TRUE(bytes.empty());
    }
    CloseHandle(pipe);
}

TEST_F(FileDownloadTest, AFileThatIsOpenElsewhereCannotBeOpened) {
    for (const DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}}) {
        const HANDLE other =
            CreateFileW(path_.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(other, INVALID_HANDLE_VALUE);
        EXPECT_EQ(Read(), FileReadResult::kCannotOpen);
        CloseHandle(other);
    }
    EXPECT_EQ(Read(), FileReadResult::kRead) << "as soon as it is closed";
}

TEST_F(FileDownloadTest, ReadsAFileThatMayNotBeWritten) {
    ASSERT_TRUE(SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(Read(), FileReadResult::kRead);
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL));
}

// What the user is offered

// The rows of an open-file dialog's list: what each says, and its pattern.
using Rows = std::vector<std::pair<std::wstring, std::wstring>>;

Rows RowsOf(const std::wstring& filter) {
    Rows rows;
    const wchar_t* text = filter.c_str();
    const auto next = [&] {
        std::wstring taken = text;
        text += taken.size() + 1;
        return taken;
    };
    while (*text != L'\0') {
        std::wstring name = next();
        rows.emplace_back(std::move(name), next());
    }
    // The zero behind the last text ends the list.
    EXPECT_EQ(text, filter.c_str() + filter.size());
    return rows;
}

TEST_F(FileDownloadTest, OffersFilesInTheLanguageThatIsInUse) {
    EXPECT_EQ(RowsOf(DownloadFilter(L"CHN_KVMR72.res")), (Rows{{L"*.JK(监控程序文件)", L"*.JK"},
                                                               {L"*.DAT(监控程序文件)", L"*.DAT"},
                                                               {L"*.FNT(字库文件)", L"*.FNT"},
                                                               {L"*.ZK(字库文件)", L"*.ZK"},
                                                               {L"*.EEP(EEPROM文件)", L"*.EEP"}}));
    EXPECT_EQ(RowsOf(DownloadFilter(L"CHF_KVMR72.res")), (Rows{{L"*.JK(監控程式文件)", L"*.JK"},
                                                               {L"*.DAT(監控程式文件)", L"*.DAT"},
                                                               {L"*.FNT(字庫文件)", L"*.FNT"},
                                                               {L"*.ZK(字庫文件)", L"*.ZK"},
                                                               {L"*.EEP(EEPROM文件)", L"*.EEP"}}));
    for (const wchar_t* other :
         {L"ENG_KVMR72.res", L"", L"FRA_KVMR72.res", L"CHN_KVMR72", L"CHN_KVMR72.res2", L"xCHF_KVMR72.res"}) {
        EXPECT_EQ(RowsOf(DownloadFilter(other)), (Rows{{L"*.JK(Firmware)", L"*.JK"},
                                                       {L"*.DAT(Data)", L"*.DAT"},
                                                       {L"*.FNT(Font)", L"*.FNT"},
                                                       {L"*.ZK(Font)", L"*.ZK"},
                                                       {L"*.EEP(EEPROM)", L"*.EEP"}}))
            << testing::PrintToString(std::wstring(other));
    }
}

}  // namespace
