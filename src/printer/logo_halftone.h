// Grey rows in black and white, one bit a pixel, the leftmost in the highest bit of a byte; a set bit is
// white.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Rows are packed 32 pixels at a time, into the bytes of a file's row: a grey row has room for so many. What
// lies there beyond the width is not printed.
constexpr std::size_t PaddedWidth(std::size_t width) noexcept {
    return (width + 31) / 32 * 32;
}

// Of sixteen columns, again and again along a row.
using Thresholds = std::array<std::uint8_t, 16>;

// White is what reaches its threshold.
void PackAtLeast(const Thresholds& thresholds, const std::uint8_t* grey, std::size_t width,
                 std::uint8_t* bits) noexcept;

// White is what exceeds its threshold.
void PackAbove(const Thresholds& thresholds, const std::uint8_t* grey, std::size_t width,
               std::uint8_t* bits) noexcept;

// The 8 x 8 matrix has 64 steps of four grey levels. As thresholds for PackAtLeast and for PackAbove.
const Thresholds& DitherM3AtLeast(std::size_t row) noexcept;
const Thresholds& DitherM3Above(std::size_t row) noexcept;

// The 16 x 16 matrix has a step for each grey level.
const Thresholds& DitherM4(std::size_t row) noexcept;

// What a pixel's grey level and the black or white that is printed for it differ by goes to its neighbours:
// three eighths each to the next one and to the one in the next row, a quarter to the one diagonally ahead in
// the next row. Rows are walked from the right and from the left in turn.
class ErrorDiffusion {
  public:
    // May throw bad_alloc.
    explicit ErrorDiffusion(std::size_t width);

    // The picture's next row.
    void Pack(const std::uint8_t* grey, std::uint8_t* bits) noexcept;

  private:
    std::size_t width_;
    bool isFromRight_ = true;
    // A pixel's grey level and what it was given, of this row and the one before it; a margin on both sides.
    std::vector<std::int16_t> sums_;
    std::vector<std::int16_t> previous_;
};
