// Whether data can be printed as a barcode, so that the printer never gets a command that it would reject.
#pragma once

#include <cstdint>

// The printer's numbers of the 1D symbologies.
constexpr std::uint8_t kUpcA = 0;
constexpr std::uint8_t kUpcE = 1;
constexpr std::uint8_t kEan13 = 2;
constexpr std::uint8_t kEan8 = 3;
constexpr std::uint8_t kCode39 = 4;
constexpr std::uint8_t kItf = 5;
constexpr std::uint8_t kCodabar = 6;
constexpr std::uint8_t kCode93 = 72;
constexpr std::uint8_t kCode128 = 73;

// Behind the 1D types follow the 2D ones: this plus the index in the 2D page's list is their code.
constexpr std::uint32_t kFirstCheck2D = 13;

// Checks `*length` bytes of `data`. `code` is one of the printer's numbers above, 9 to 12 for the GS1 DataBar
// types of the 1D page's list, or a 2D type's code; one without a rule is refused, and so is a null pointer.
//
// Accepted Code128 data is rewritten in place as the printer takes it: each pair of digits in code set C
// becomes one byte, and `*length` the number of bytes that are left. Everything else stays as it was.
bool CheckBarcodeData(std::uint32_t code, std::uint8_t* data, std::uint32_t* length) noexcept;
