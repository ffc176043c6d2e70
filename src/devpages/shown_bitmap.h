// A bitmap file made safe to be shown: the system's drawing functions believe what a header says.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// An information header with its palette or colour masks, as the system's drawing functions take them, and
// where in the file the pixels are that it describes, all of them.
struct ShownBitmap {
    static constexpr std::size_t kMostColours = 256;

    alignas(4) std::array<std::uint8_t, 40 + 4 * kMostColours> info = {};
    std::int32_t width = 0;
    std::int32_t height = 0;  // positive
    std::size_t pixelsAt = 0;
};

// Reads a file of 1, 4, 8, 16, 24 or 32 bits a pixel, not compressed. Pixels that it lacks are put at its end
// as 0, as many as a logo has at most. Nothing for another file, and for one that ends before its pixels
// begin. May throw bad_alloc.
std::optional<ShownBitmap> ShowBitmap(std::vector<std::uint8_t>& file);
