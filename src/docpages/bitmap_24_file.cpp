#include "docpages/bitmap_24_file.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>

#include "docpages/bitmap_24.h"

namespace {

// Rows are short and calls into the system are not cheap.
constexpr std::size_t kBufferSize = 16384;

// More than the largest picture takes: what stands behind it would only be copied.
constexpr LONGLONG kLargestFile = 64 << 20;

// A record may name a device or a pipe as well: reading from one may wait for ever.
bool IsOnDisk(HANDLE file) noexcept {
    return GetFileType(file) == FILE_TYPE_DISK;
}

bool IsTooLarge(HANDLE file) noexcept {
    LARGE_INTEGER size;
    return GetFileSizeEx(file, &size) && size.QuadPart > kLargestFile;
}

class FileSource final : public ByteSource {
  public:
    explicit FileSource(HANDLE file) noexcept : file_(file) {}

    std::size_t Read(std::span<std::uint8_t> buffer) noexcept override {
        std::size_t count = 0;
        while (count < buffer.size() && Refill()) {
            const std::size_t part = std::min(buffer.size() - count, end_ - begin_);
            std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_), part,
                        buffer.begin() + static_cast<std::ptrdiff_t>(count));
            begin_ += part;
            count += part;
        }
        return count;
    }

    std::uint64_t Size() const noexcept override {
        LARGE_INTEGER size;
        return GetFileSizeEx(file_, &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
    }

  private:
    // FALSE at the end of the file, for good.
    bool Refill() noexcept {
        if (begin_ == end_ && !ended_) {
            DWORD count = 0;
            ended_ = !ReadFile(file_, buffer_.data(), static_cast<DWORD>(buffer_.size()), &count, nullptr) ||
                     count == 0;
            begin_ = 0;
            end_ = ended_ ? 0 : count;
        }
        return begin_ != end_;
    }

    HANDLE file_;
    std::array<std::uint8_t, kBufferSize> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool ended_ = false;
};

class FileSink final : public ByteSink {
  public:
    explicit FileSink(HANDLE file) noexcept : file_(file) {}

    bool Write(std::span<const std::uint8_t> bytes) noexcept override {
        while (!bytes.empty()) {
            if (end_ == buffer_.size() && !Flush()) {
                return false;
            }
            const std::size_t part = std::min(bytes.size(), buffer_.size() - end_);
            std::copy_n(bytes.begin(), part, buffer_.begin() + static_cast<std::ptrdiff_t>(end_));
            end_ += part;
            bytes = bytes.subspan(part);
        }
        return true;
    }

    bool Flush() noexcept {
        const auto count = static_cast<DWORD>(std::exchange(end_, 0));
        DWORD written = 0;
        return count == 0 || (WriteFile(file_, buffer_.data(), count, &written, nullptr) && written == count);
    }

  private:
    HANDLE file_;
    std::array<std::uint8_t, kBufferSize> buffer_;
    std::size_t end_ = 0;
};

}  // namespace

FileHandle OpenToRead(const wchar_t* file, DWORD share) noexcept {
    return FileHandle(CreateFileW(file, GENERIC_READ, share, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
                                  nullptr));
}

BitmapFileResult ChangeTo24Bitmap(const wchar_t* source, const wchar_t* destination) noexcept {
    FileHandle sourceFile = OpenToRead(source, 0);
    if (!sourceFile || !IsOnDisk(sourceFile.Get())) {
        return BitmapFileResult::kFailed;
    }
    FileHandle destinationFile(
        CreateFileW(destination, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!destinationFile) {
        return BitmapFileResult::kCannotCreate;
    }
    FileSource from(sourceFile.Get());
    FileSink to(destinationFile.Get());
    const BitmapConversion conversion = ConvertTo24Bitmap(from, to);
    const bool isWritten = to.Flush();
    const bool isCopied = conversion == BitmapConversion::kCopyWhole && !IsTooLarge(sourceFile.Get());
    sourceFile.Reset();
    destinationFile.Reset();
    bool succeeded = conversion == BitmapConversion::kConverted && isWritten;
    if (isCopied) {
        // The copy takes the source's attributes over: a read-only one could not be replaced the next time.
        succeeded =
            CopyFileW(source, destination, FALSE) && SetFileAttributesW(destination, FILE_ATTRIBUTE_ARCHIVE);
    }
    return succeeded ? BitmapFileResult::kConverted : BitmapFileResult::kFailed;
}

std::optional<PixelSize> WholeBitmapSize(HANDLE file) noexcept {
    if (!IsOnDisk(file)) {
        return std::nullopt;
    }
    FileSource source(file);
    return WholeBitmapSize(source);
}
