// The rows of a logo as grey levels, through tone curves.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "printer/logo_bitmap.h"
#include "printer/logo_tone.h"

// The colours of a pixel in the order of a file: blue, green, red.
constexpr std::size_t kColours = 3;

// What each colour counts of a thousand.
using GreyWeights = std::array<std::uint32_t, kColours>;
constexpr GreyWeights kGreyWeights = {114, 587, 299};

// Tone curve, weight and the division by a thousand in one table for each colour.
class GreyTables {
  public:
    GreyTables(const std::array<ToneCurve, kColours>& curves, const GreyWeights& weights) noexcept;

    void GreyOfRow(const std::uint8_t* pixels, std::size_t width, std::uint8_t* grey) const noexcept;

  private:
    std::array<std::array<std::uint32_t, 256>, kColours> tables_;
};

// Of a row with 8 bits a pixel, padding and all: `rowBytes` is a multiple of 4.
void GreyOfRow8(const ToneCurve& curve, const std::uint8_t* pixels, std::size_t rowBytes,
                std::uint8_t* grey) noexcept;

// Of a row with 1 bit a pixel: a set bit is white, whatever the palette says.
void GreyOfRow1(const ToneCurve& curve, const std::uint8_t* pixels, std::size_t width,
                std::uint8_t* grey) noexcept;

// Sums over a picture. They wrap at 32 bits, which takes more than eight million white pixels.
using ColourSums = std::array<std::uint32_t, kColours>;

std::uint32_t SumOfRow(const std::uint8_t* grey, std::size_t width) noexcept;
ColourSums PlainSumsOfRow(const std::uint8_t* pixels, std::size_t width) noexcept;
ColourSums CurvedSumsOfRow(const ToneCurve& curve, const std::uint8_t* pixels, std::size_t width) noexcept;
