// The conversion to 24 bits from file to file.
#pragma once

#include <windows.h>

#include <optional>

#include "docpages/water_mark_layout.h"

// As the water mark page tells them apart in its messages.
enum class BitmapFileResult { kFailed = 0, kConverted = 1, kCannotCreate = 2 };

// Makes `destination` a 24-bit copy of a 1-, 8- or 24-bit bitmap file, replacing what was there. After a
// failure it may be left empty or unfinished. The two may not be the same file: it cannot be created then.
BitmapFileResult ChangeTo24Bitmap(const wchar_t* source, const wchar_t* destination) noexcept;

// The size of the picture in an open file of 1, 8 or 24 bits that is uncompressed and whole, otherwise
// nothing. Reads from where the file stands.
std::optional<PixelSize> WholeBitmapSize(HANDLE file) noexcept;
