#include "devpages/logo_file.h"

#include <algorithm>
#include <array>
#include <exception>
#include <span>
#include <string_view>

#include "base/platform.h"
#include "intrface/win/handles.h"
#include "printer/bitmap_headers.h"

namespace {

using namespace std::string_view_literals;

// Headers and the smallest palette.
constexpr std::size_t kFirstBytes = 62;

// No larger file is converted or shown: the largest logo has 3 MB at 32 bits a pixel, the rest is for what
// may lie before its pixels.
constexpr std::uint64_t kMostBytes = 16ULL * 1024 * 1024;

// What a user has open elsewhere can be converted all the same.
FileHandle OpenLogo(const std::wstring& path) {
    FileHandle file(CreateFileW(AtAnyLength(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    // A device or a pipe has no end to read to.
    if (file && GetFileType(file.Get()) != FILE_TYPE_DISK) {
        file.Reset();
    }
    return file;
}

// As many bytes as the file has from here on, at most the buffer's. Nothing when reading fails.
std::size_t ReadUpTo(const FileHandle& file, std::span<std::uint8_t> buffer) noexcept {
    DWORD count = 0;
    return ReadFile(file.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) ? count
                                                                                                   : 0;
}

bool ReadPicture(const std::wstring& path, std::vector<std::uint8_t>& bytes) {
    const FileHandle file = OpenLogo(path);
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.Get(), &size)) {
        return false;
    }
    std::array<std::uint8_t, kFirstBytes> first;
    const std::size_t firstCount = ReadUpTo(file, first);
    const auto fileSize = static_cast<std::uint64_t>(size.QuadPart);
    // A file of which nothing could be read is none that is short.
    if (firstCount < std::min<std::uint64_t>(fileSize, kFirstBytes)) {
        return false;
    }
    const std::uint64_t used = UsedBytes(ReadBitmapHeaders(std::span(first).first(firstCount)));
    const std::uint64_t wanted = std::max<std::uint64_t>(std::min(used, fileSize), firstCount);
    if (wanted > kMostBytes) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(wanted));
    std::copy_n(first.begin(), firstCount, bytes.begin());
    const auto rest = std::span(bytes).subspan(firstCount);
    return rest.empty() || ReadUpTo(file, rest) == rest.size();
}

bool WriteConverted(const std::wstring& path, std::span<const std::uint8_t> bytes) {
    const std::wstring name = AtAnyLength(path);
    // Every repaint of a preview writes the file: over what it held, since some file systems bring a file
    // that was emptied to the disk when it is closed, which takes longer than all the rest. Others may look
    // at it meanwhile, as makers of thumbnails do.
    FileHandle file(CreateFileW(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return false;
    }
    DWORD written = 0;
    if (WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
        written == bytes.size() && SetEndOfFile(file.Get())) {
        return true;
    }
    file.Reset();
    DeleteFileW(name.c_str());
    return false;
}

// `convert` makes the converted file of a source. Only what is for the source's own format is refused.
template <typename Convert>
LogoStatus ConvertFile(const std::wstring& source, std::wstring& output, LogoBuffers& buffers,
                       const Convert& convert) noexcept {
    try {
        if (!ReadLogoFile(source, buffers.source)) {
            return LogoStatus::kFailed;
        }
        switch (convert()) {
            case LogoConversion::kPassedThrough:
                output = source;
                return LogoStatus::kWritten;
            case LogoConversion::kAlreadyMono:
                output = source;
                return LogoStatus::kAlreadyMono;
            case LogoConversion::kOtherFormat:
                return LogoStatus::kOtherFormat;
            case LogoConversion::kConverted:
                break;
        }
        std::wstring path = ConvertedPath(source);
        if (!WriteConverted(path, buffers.converted)) {
            return LogoStatus::kFailed;
        }
        output.swap(path);
        return LogoStatus::kWritten;
    } catch (const std::exception&) {
        return LogoStatus::kFailed;
    }
}

}  // namespace

std::wstring AtAnyLength(const std::wstring& path) {
    constexpr std::wstring_view kPrefix = L"\\\\?\\"sv;
    if (path.size() < MAX_PATH || path.starts_with(kPrefix)) {
        return path;
    }
    if (path.starts_with(L"\\\\"sv)) {
        return std::wstring(kPrefix).append(L"UNC").append(path, 1);
    }
    return std::wstring(kPrefix).append(path);
}

std::wstring ConvertedPath(const std::wstring& source) {
    constexpr std::size_t kExtensionLength = 4;
    return source.substr(0, source.size() - std::min(source.size(), kExtensionLength)).append(L"Temp.bmp");
}

LogoHeadersResult ReadLogoHeaders(const std::wstring& path, BitmapHeaders& headers) noexcept {
    try {
        const FileHandle file = OpenLogo(path);
        if (!file) {
            return LogoHeadersResult::kCannotOpen;
        }
        std::array<std::uint8_t, kFirstBytes> first;
        const std::size_t count = ReadUpTo(file, first);
        headers = ReadBitmapHeaders(std::span(first).first(count));
        return count < first.size() ? LogoHeadersResult::kNotRead : LogoHeadersResult::kRead;
    } catch (const std::exception&) {
        return LogoHeadersResult::kCannotOpen;
    }
}

bool ReadLogoFile(const std::wstring& path, std::vector<std::uint8_t>& bytes) noexcept {
    try {
        return ReadPicture(path, bytes);
    } catch (const std::exception&) {
        return false;
    }
}

LogoStatus ChangeToGrayBitmap(const std::wstring& source, unsigned bitCount, const LogoTone& tone,
                              std::wstring& output, LogoBuffers& buffers) noexcept {
    return ConvertFile(source, output, buffers, [&] {
        if (bitCount == kColourBits) {
            TRACE_VERBOSE(L"\tbmInfoHead.biHeight       = %d\r\n", ReadBitmapHeaders(buffers.source).height);
        }
        return ConvertToGrey(buffers.source, bitCount, tone, buffers.converted);
    });
}

LogoStatus ChangeToMonoBitmap(const std::wstring& source, unsigned bitCount, Halftone halftone,
                              const LogoTone& tone, std::wstring& output, LogoBuffers& buffers) noexcept {
    const LogoStatus status = ConvertFile(source, output, buffers, [&] {
        return ConvertToMono(buffers.source, bitCount, halftone, tone, buffers.converted);
    });
    if (status == LogoStatus::kOtherFormat) {
        try {
            output = source;
        } catch (const std::exception&) {
            return LogoStatus::kFailed;
        }
    }
    return status;
}

LogoStatus ChangeToMonoBitmap(const std::wstring& source, Halftone halftone, const LogoTone& tone,
                              std::wstring& output, LogoBuffers& buffers) noexcept {
    BitmapHeaders headers{};
    if (ReadLogoHeaders(source, headers) == LogoHeadersResult::kCannotOpen) {
        return LogoStatus::kFailed;
    }
    TRACE_VERBOSE(L"\tbfilename       = %s\r\n", source.c_str());
    TRACE_VERBOSE(L"\tbmFileHead.bfType       = %d\r\n", headers.type);
    TRACE_VERBOSE(L"\tbmInfoHead.biBitCount       = %d\r\n", headers.bitCount);
    if (headers.type != bitmap_file::kType || headers.compression != bitmap_file::kUncompressed ||
        (headers.bitCount != kGreyBits && headers.bitCount != kColourBits)) {
        return LogoStatus::kFailed;
    }
    return ChangeToMonoBitmap(source, headers.bitCount, halftone, tone, output, buffers);
}
