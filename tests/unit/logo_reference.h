// The conversions of logos the plain way: a pixel at a time, each step as it is described, with nothing
// shared with the code under test. Sources are whole bitmap files with all their pixel bytes and rows from
// the bottom.
#pragma once

#include <cstdint>
#include <vector>

namespace reference {

using Bytes = std::vector<std::uint8_t>;

int Tone(int value, int contrast, int brightness);
int CentredTone(int value, int mean, int contrast, int brightness);

Bytes GreyFile(const Bytes& source, int contrast, int brightness);

// Halftones are the printer driver's numbers: 0 none, 1 and 2 the dither matrices, 3 error diffusion.
Bytes MonoFile(const Bytes& source, int halftone, int contrast, int brightness);

// Of what GreyFile and MonoFile give.
Bytes GreyRaster(const Bytes& file);
Bytes MonoRaster(const Bytes& file);

}  // namespace reference
