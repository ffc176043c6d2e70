#include "language/language_reader.h"

#include <windows.h>

#include <span>
#include <vector>

#include "intrface/win/handles.h"

namespace {

String16 DecodeAnsi(std::span<const std::byte> bytes) {
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    const int count = static_cast<int>(bytes.size());
    const int units = MultiByteToWideChar(CP_ACP, 0, text, count, nullptr, 0);
    String16 decoded(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text, count, decoded.data(), units);
    return decoded;
}

std::optional<std::vector<std::byte>> ReadWholeFile(const wchar_t* path) {
    const FileHandle file(CreateFileW(path, GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size;
    if (!file || GetFileType(file.Get()) != FILE_TYPE_DISK || !GetFileSizeEx(file.Get(), &size)) {
        return std::nullopt;
    }
    std::vector<std::byte> bytes;
    if (static_cast<std::uint64_t>(size.QuadPart) > kMaxLanguageFileSize) {
        return bytes;
    }
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    DWORD count = 0;
    if (!bytes.empty() &&
        !ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) {
        return std::nullopt;
    }
    bytes.resize(count);
    return bytes;
}

}  // namespace

std::optional<LanguageFile> ReadLanguageFile(const wchar_t* path) {
    const auto bytes = ReadWholeFile(path);
    if (!bytes) {
        return std::nullopt;
    }
    return LanguageFile(DecodeLanguageFile(*bytes, DecodeAnsi));
}
