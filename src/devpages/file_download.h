// A file on its way to the printer: which ones the user is offered, and reading one whole.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The rows of the open-file dialog's list of file types, as that dialog takes them. They come with the
// language file that is in use, by its name; any but the Chinese ones has the English rows.
std::wstring DownloadFilter(std::wstring_view languageFile);

enum class FileReadResult { kRead, kCannotOpen, kNoSize, kNoMemory, kNoStart, kNotRead };

// Reads a file of a disk whole, in one read, with nobody else in it meanwhile. A file whose size 32 bits
// cannot count has no size here. `bytes` holds nothing unless the answer is kRead.
FileReadResult ReadFileToSend(const wchar_t* path, std::vector<std::uint8_t>& bytes) noexcept;
