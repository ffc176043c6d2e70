// Logos as the printer takes them for its memory.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// The raster of a bitmap file of 1 bit a pixel, behind its size. Clear bits are black, or, where
// `takesWhiteAndBlack`, with the opposite palette white. FALSE for another file or palette, and for a picture
// that is too large for the size's 16 bits: `raster` stays as it is then; its memory is used again. May throw
// bad_alloc.
bool MonoRasterOf(std::span<const std::uint8_t> file, bool takesWhiteAndBlack,
                  std::vector<std::uint8_t>& raster);

// The same for a bitmap file of 8 bits a pixel whose values are grey levels; the printer has 16 of them.
bool GreyRasterOf(std::span<const std::uint8_t> file, std::vector<std::uint8_t>& raster);
