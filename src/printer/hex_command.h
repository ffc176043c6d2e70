// Printer commands as text: two hexadecimal digits and a blank for each byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/text.h"

// The value of a hexadecimal digit in either case; 0 for every other character.
std::uint8_t HexDigitValue(Char16 character) noexcept;

// Turns text into bytes: blanks separate, digits pair from the left, a lone digit before a blank or at the
// end is a byte of its own, any other character counts as the digit 0. Writes no more than `output` holds and
// gives the number of bytes that the whole text stands for (no more than its length), so a larger result says
// that it did not fit.
std::size_t ParseHexCommand(std::span<std::uint8_t> output, StringView16 text) noexcept;

// Appends each byte as two upper-case digits and a blank; no bytes empty the output.
void FormatHexCommand(String16& output, std::span<const std::uint8_t> bytes);

// Whether the command box takes a typed character without the Control key: hexadecimal digits, the blank,
// backspace, and "." and "-".
bool IsCommandCharacter(Char16 character) noexcept;
