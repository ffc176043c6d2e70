// Logos on the disk: a source's headers and bytes, and the converted file beside it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "printer/logo_bitmap.h"
#include "printer/logo_conversion.h"

// A path in the form in which the system takes it at any length. May throw bad_alloc.
std::wstring AtAnyLength(const std::wstring& path);

// Where a logo's converted file is kept: the path with "Temp.bmp" in place of its last four characters, which
// are the extension as a rule. May throw bad_alloc.
std::wstring ConvertedPath(const std::wstring& source);

enum class LogoHeadersResult { kRead, kCannotOpen, kNotRead };

// Reads the first 62 bytes of a file: its headers and the smallest palette. With fewer it is not read, and
// `headers` has 0 for what is missing. Unless it is opened, `headers` stays as it is.
LogoHeadersResult ReadLogoHeaders(const std::wstring& path, BitmapHeaders& headers) noexcept;

// Reads a file as far as its headers say that there is a picture, or whole where it is shorter. FALSE when it
// cannot be read, or there is no memory for it; `bytes` is nothing to rely on then. Its memory is used again.
bool ReadLogoFile(const std::wstring& path, std::vector<std::uint8_t>& bytes) noexcept;

// Memory of conversions, which one leaves to the next.
struct LogoBuffers {
    std::vector<std::uint8_t> source;
    std::vector<std::uint8_t> converted;  // what was written last
};

// What becomes of a conversion of files. "Failed" is: the source cannot be read, the converted file cannot be
// written, or there is no memory.
enum class LogoStatus : std::int32_t { kOtherFormat = -2, kFailed = -1, kWritten = 1, kAlreadyMono = 2 };

// Writes a picture of `bitCount` bits a pixel (1, 8 or 24) as a grey one. `output` gets its path. None of
// these throws; a failed one leaves no half of a file behind.
LogoStatus ChangeToGrayBitmap(const std::wstring& source, unsigned bitCount, const LogoTone& tone,
                              std::wstring& output, LogoBuffers& buffers) noexcept;

// The same as a black-and-white one, for 8 or 24 bits a pixel. Where the source is the result (it is black
// and white already, nothing is to be converted) or of another format, `output` gets the source's path.
LogoStatus ChangeToMonoBitmap(const std::wstring& source, unsigned bitCount, Halftone halftone,
                              const LogoTone& tone, std::wstring& output, LogoBuffers& buffers) noexcept;

// The same for whichever of the two the source is. For all else it fails.
LogoStatus ChangeToMonoBitmap(const std::wstring& source, Halftone halftone, const LogoTone& tone,
                              std::wstring& output, LogoBuffers& buffers) noexcept;
