// Logos as bitmap files: the pixels of a source, and the two layouts in which converted logos are kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// The bit counts of a pixel.
constexpr unsigned kMonoBits = 1;
constexpr unsigned kGreyBits = 8;
constexpr unsigned kColourBits = 24;

// What counts of a bitmap file's headers.
struct BitmapHeaders {
    std::uint16_t type;
    std::uint32_t pixelOffset;
    std::int32_t width;
    std::int32_t height;  // negative: the rows are stored from the top
    std::uint16_t bitCount;
    std::uint32_t compression;
};

// Bytes that the file lacks are 0.
BitmapHeaders ReadBitmapHeaders(std::span<const std::uint8_t> file) noexcept;

// The number of a picture's rows, whichever end they are stored from.
std::uint64_t RowsOf(const BitmapHeaders& headers) noexcept;

// Up to where a file with these headers is read, in bytes: behind its last row. All bits set for more than 64
// bits count.
std::uint64_t UsedBytes(const BitmapHeaders& headers) noexcept;

// A row's bytes, padded to a multiple of 4.
constexpr std::uint64_t BitmapRowBytes(std::uint64_t width, unsigned bitCount) noexcept {
    return (width * bitCount + 31) / 32 * 4;
}

// The most pixels that a picture may have beyond the rows that its file holds whole: a logo of the largest
// size. A few bytes do not become gigabytes.
constexpr std::uint64_t kMaxMissingPixels = 1024ULL * 768;

// TRUE for a picture that lacks more pixels than that, when its file holds `heldBytes` of its rows.
bool LacksTooMuch(std::uint64_t width, std::uint64_t rows, std::uint64_t rowBytes,
                  std::uint64_t heldBytes) noexcept;

// An uncompressed picture of 1, 8 or 24 bits. Its pixels are read from where a plain file of that depth has
// them, wherever the header says that they are. Pixel bytes that the file lacks are 0.
class LogoPicture {
  public:
    // Nothing for another format, for a size that no file has (no or a negative width, no height, more bytes
    // than a signed 32-bit size counts) and for more missing pixels than kMaxMissingPixels. The picture may
    // refer to `file`. May throw bad_alloc.
    static std::optional<LogoPicture> Read(std::span<const std::uint8_t> file);

    LogoPicture(LogoPicture&&) noexcept = default;
    LogoPicture& operator=(LogoPicture&&) noexcept = default;

    unsigned BitCount() const noexcept { return bitCount_; }
    std::size_t Width() const noexcept { return width_; }
    std::size_t Rows() const noexcept { return rows_; }
    bool IsTopDown() const noexcept { return isTopDown_; }
    std::size_t RowBytes() const noexcept { return BitmapRowBytes(width_, bitCount_); }

    // Whole, with its padding; rows count as they are stored.
    const std::uint8_t* Row(std::size_t row) const noexcept { return pixels_ + row * RowBytes(); }

  private:
    LogoPicture() = default;

    unsigned bitCount_ = 0;
    std::size_t width_ = 0;
    std::size_t rows_ = 0;
    bool isTopDown_ = false;
    std::vector<std::uint8_t> completed_;  // the pixels of a file that lacks some
    const std::uint8_t* pixels_ = nullptr;
};

// A file in the making: its headers and palette are there, its rows are black.
class LogoFile {
  public:
    // Puts the headers of a file with the same size and order of rows into `bytes`, whose memory is used
    // again. May throw bad_alloc.
    static LogoFile Grey(const LogoPicture& picture, std::vector<std::uint8_t>& bytes);
    static LogoFile Mono(const LogoPicture& picture, std::vector<std::uint8_t>& bytes);

    std::uint8_t* Row(std::size_t row) const noexcept { return rows_ + row * rowBytes_; }

  private:
    LogoFile(const LogoPicture& picture, unsigned bitCount, std::vector<std::uint8_t>& bytes);

    std::size_t rowBytes_;
    std::uint8_t* rows_;
};

// Of a file with 1 bit a pixel.
enum class MonoPalette {
    kBlackAndWhite,  // clear bits are black: this is how converted logos are kept
    kWhiteAndBlack,
    kOther,
};

// Bytes that the file lacks are 0.
MonoPalette ReadMonoPalette(std::span<const std::uint8_t> file) noexcept;
