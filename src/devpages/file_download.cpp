#include "devpages/file_download.h"

#include <new>

#include "intrface/win/handles.h"
#include "language/language_choice.h"

namespace {

using namespace std::string_view_literals;

constexpr std::wstring_view kEnglishFilter =
    L"*.JK(Firmware)\0*.JK\0*.DAT(Data)\0*.DAT\0*.FNT(Font)\0*.FNT\0*.ZK(Font)\0*.ZK\0*.EEP(EEPROM)\0*.EEP\0"sv;
constexpr std::wstring_view kSimplifiedFilter =
    L"*.JK(监控程序文件)\0*.JK\0*.DAT(监控程序文件)\0*.DAT\0*.FNT(字库文件)\0*.FNT\0*.ZK(字库文件)\0*.ZK\0"
    L"*.EEP(EEPROM文件)\0*.EEP\0"sv;
constexpr std::wstring_view kTraditionalFilter =
    L"*.JK(監控程式文件)\0*.JK\0*.DAT(監控程式文件)\0*.DAT\0*.FNT(字庫文件)\0*.FNT\0*.ZK(字庫文件)\0*.ZK\0"
    L"*.EEP(EEPROM文件)\0*.EEP\0"sv;

FileReadResult ReadWhole(const wchar_t* path, std::vector<std::uint8_t>& bytes) {
    const FileHandle file(
        CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return FileReadResult::kCannotOpen;
    }
    // A device or a pipe has no end to read to.
    if (GetFileType(file.Get()) != FILE_TYPE_DISK) {
        return FileReadResult::kCannotOpen;
    }
    // All bits set is also a size: only with an error it is none.
    SetLastError(ERROR_SUCCESS);
    DWORD high = 0;
    const DWORD size = GetFileSize(file.Get(), &high);
    if ((size == INVALID_FILE_SIZE && GetLastError() != ERROR_SUCCESS) || high != 0) {
        return FileReadResult::kNoSize;
    }
    bytes.resize(size);
    if (SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
        return FileReadResult::kNoStart;
    }
    DWORD read = 0;
    if (!ReadFile(file.Get(), bytes.data(), size, &read, nullptr) || read < size) {
        return FileReadResult::kNotRead;
    }
    return FileReadResult::kRead;
}

}  // namespace

std::wstring DownloadFilter(std::wstring_view languageFile) {
    if (languageFile == kSimplifiedChineseFile) {
        return std::wstring(kSimplifiedFilter);
    }
    if (languageFile == kTraditionalChineseFile) {
        return std::wstring(kTraditionalFilter);
    }
    return std::wstring(kEnglishFilter);
}

FileReadResult ReadFileToSend(const wchar_t* path, std::vector<std::uint8_t>& bytes) noexcept {
    FileReadResult result = FileReadResult::kNoMemory;
    try {
        result = ReadWhole(path, bytes);
    } catch (const std::bad_alloc&) {
        // Too large for the process.
    }
    if (result != FileReadResult::kRead) {
        // Given back at once: what went wrong stands in a message box for as long as the user likes.
        std::vector<std::uint8_t>().swap(bytes);
    }
    return result;
}
