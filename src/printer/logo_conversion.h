// A logo's bitmap file as a grey one or a black-and-white one, for its preview and for the printer.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

enum class Halftone : std::int32_t {
    kPassThrough = -1,  // converts nothing
    kNone = 0,
    kDitherM3,
    kDitherM4,
    kErrorDiffuse,
};

// Of -100 to 100 each, as the sliders stand.
struct LogoTone {
    std::int32_t contrast;
    std::int32_t brightness;
};

enum class LogoConversion {
    kConverted,      // the result is in `output`
    kPassedThrough,  // the source is the result, as was asked for
    kAlreadyMono,    // the source is the result
    kOtherFormat,    // not an uncompressed picture of the bits that were asked for
};

// Converts a picture of `bitCount` bits a pixel: 1, 8 or 24. Unless something was converted, `output` stays
// as it is; its memory is used again. May throw bad_alloc.
LogoConversion ConvertToGrey(std::span<const std::uint8_t> source, unsigned bitCount, const LogoTone& tone,
                             std::vector<std::uint8_t>& output);

// The same for 8 or 24 bits a pixel.
//
// The depths differ in more than their colours, and logos are to print as they always did: a grey level that
// equals its threshold of a dither matrix is white in a picture of 24 bits and black in one of 8 bits; and
// Dither M4 of 24 bits has contrast around the means of the colours, with red and blue exchanged.
LogoConversion ConvertToMono(std::span<const std::uint8_t> source, unsigned bitCount, Halftone halftone,
                             const LogoTone& tone, std::vector<std::uint8_t>& output);
