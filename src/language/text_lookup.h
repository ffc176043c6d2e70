// The texts of the current language, from one read of its file. Look-ups touch neither disk nor registry. For
// any thread.
#pragma once

#include <cstddef>
#include <cstdint>

// Reads the chosen language from the registry and makes its file current; reads the file when it is another
// one than before or has changed on disk (time or size). TRUE when the texts may have changed.
bool RefreshLanguageFile() noexcept;

// Grows each time RefreshLanguageFile gives TRUE, so that each page can tell whether its captions are of
// today.
std::uint32_t LanguageGeneration() noexcept;

// The text of a key, or its English default where file, section or key is missing. Always terminated, cut to
// `length` - 1 units. Gives the units written without the terminator. A key with nothing behind its '=' has
// an empty text.
std::size_t LoadText(const wchar_t* section, const wchar_t* key, const wchar_t* englishDefault,
                     wchar_t* buffer, std::size_t length) noexcept;

template <std::size_t N>
std::size_t LoadText(const wchar_t* section, const wchar_t* key, const wchar_t* englishDefault,
                     wchar_t (&buffer)[N]) noexcept {
    return LoadText(section, key, englishDefault, buffer, N);
}
