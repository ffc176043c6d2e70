#include "files.h"

#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "utf8.h"

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace

bool IsDevice(const std::filesystem::path& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool is_device = GetFileType(file) != FILE_TYPE_DISK;
    CloseHandle(file);
    return is_device;
}

std::optional<std::vector<std::uint8_t>> ReadWholeFile(const std::filesystem::path& path, std::size_t limit) {
    const File file(_wfopen(path.c_str(), L"rb"));
    if (file == nullptr) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        throw std::runtime_error("cannot open " + ToUtf8(path.native()));
    }
    std::vector<std::uint8_t> bytes(limit + 1);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get())) {
        throw std::runtime_error("cannot read " + ToUtf8(path.native()));
    }
    if (bytes.size() > limit) {
        throw std::runtime_error(ToUtf8(path.native()) + " has more than " + std::to_string(limit) +
                                 " bytes");
    }
    return bytes;
}

void WriteWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    // Replacing one would take it away.
    if (IsDevice(path)) {
        throw std::runtime_error("cannot write " + ToUtf8(path.native()));
    }
    // Beside the file, under a name of this process's own.
    const std::wstring part = path.native() + L"." + std::to_wstring(GetCurrentProcessId()) + L".part";
    File file(_wfopen(part.c_str(), L"wb"));
    bool written = file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    written = file != nullptr && std::fclose(file.release()) == 0 && written;
    if (!written || !MoveFileExW(part.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        DeleteFileW(part.c_str());
        throw std::runtime_error("cannot write " + ToUtf8(path.native()));
    }
}
