// A language file: INI sections of "key=value" lines, held in memory after one read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/text.h"

// A file larger than this is not a language file; it reads as empty.
constexpr std::size_t kMaxLanguageFileSize = 16u << 20;

// Bytes of a language file as text. UTF-16 needs its byte-order mark; everything else is in the system's ANSI
// code page, which `decodeAnsi` knows.
using AnsiDecoder = String16 (*)(std::span<const std::byte>);
String16 DecodeLanguageFile(std::span<const std::byte> bytes, AnsiDecoder decodeAnsi);

// Look-ups behave as the platform's profile functions do: sections and keys compare without case and without
// the blanks around them; of sections of one name only the first is searched, and in it the first of two
// equal keys counts, even one without '='. Blanks around a value and one pair of equal quotes around it fall
// away. Lines that begin with ';' are comments. A zero unit ends the name or value that holds it.
class LanguageFile {
  public:
    LanguageFile() = default;
    explicit LanguageFile(String16 text);

    // The value, or nothing where section, key or '=' is missing; "key=" has an empty value. Valid as long as
    // this object stays where it is.
    std::optional<StringView16> Find(StringView16 section, StringView16 key) const noexcept;

  private:
    // A named place of the text: a section's header (its scope is kSectionNames) or a key of a section.
    struct Entry {
        std::uint64_t order;        // hash of scope and name above, the name's offset in text_ below
        std::uint32_t scope;        // the number of the section that a key stands in
        std::uint32_t name_length;  // the name itself lies folded in text_
        std::uint32_t value;        // offset of a key's value or kNoValue; a header's section number
        std::uint32_t value_length;
    };

    void AddLine(std::size_t begin, std::size_t end);
    void AddEntry(std::uint32_t scope, StringView16 name, std::uint32_t value, std::uint32_t value_length);
    const Entry* Look(std::uint32_t scope, StringView16 name) const noexcept;

    String16 text_;
    // Sorted by `order`: of equal names the one that stands first in the file comes first.
    std::vector<Entry> entries_;
    std::uint32_t sections_ = 0;
};
