// Text as the platform keeps it: 16-bit UTF-16 code units, on every system that compiles this code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#if defined(_WIN32)
using Char16 = wchar_t;
// A literal of Char16 units.
#define TEXT16(literal) L##literal
#else
using Char16 = char16_t;
#define TEXT16(literal) u##literal
#endif
static_assert(sizeof(Char16) == 2, "the record, the language files and the host all count 16-bit units");

using String16 = std::basic_string<Char16>;
using StringView16 = std::basic_string_view<Char16>;

// Copies `text` into `field` of `capacity` units, cut so that the terminator fits inside; units behind the
// terminator become 0. Gives the number of units copied without the terminator. `capacity` 0 writes nothing.
std::size_t CopyText(Char16* field, std::size_t capacity, StringView16 text) noexcept;

template <std::size_t N>
std::size_t CopyText(Char16 (&field)[N], StringView16 text) noexcept {
    return CopyText(field, N, text);
}

// The text of a fixed field, up to its terminator or, where a broken record has none, to the field's end.
StringView16 FieldText(const Char16* field, std::size_t capacity) noexcept;

template <std::size_t N>
StringView16 FieldText(const Char16 (&field)[N]) noexcept {
    return FieldText(field, N);
}

// A number in decimal digits. The standard's own function brings the whole of printf into the DLL.
String16 NumberText(std::uint64_t number);
