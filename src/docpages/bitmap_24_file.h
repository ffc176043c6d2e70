// The conversion to 24 bits from file to file.
#pragma once

#include <windows.h>

#include <optional>

#include "docpages/water_mark_layout.h"
#include "intrface/win/handles.h"

// As the water mark page tells them apart in its messages.
enum class BitmapFileResult { kFailed = 0, kConverted = 1, kCannotCreate = 2 };

// Opens a file while others may do with it what `share` says. Who listens behind a pipe's name learns who
// asks, but cannot act in that name.
FileHandle OpenToRead(const wchar_t* file, DWORD share) noexcept;

// Makes `destination` a 24-bit copy of a 1-, 8- or 24-bit bitmap file, replacing what was there. What is not
// on a disk, or larger than any picture, fails. After a failure the copy may be left empty or unfinished. The
// two may not be the same file: it cannot be created then.
BitmapFileResult ChangeTo24Bitmap(const wchar_t* source, const wchar_t* destination) noexcept;

// The size of the picture in an open file of 1, 8 or 24 bits that is on a disk, uncompressed and whole,
// otherwise nothing. Reads from where the file stands.
std::optional<PixelSize> WholeBitmapSize(HANDLE file) noexcept;
