// The languages that the user can choose from, as the language list file names them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/text.h"
#include "language/language_file.h"

// What one entry of the list file says, each text cut to 49 units. The file name is as it stands there: ask
// UsableLanguageName before it becomes part of a path.
struct LanguageEntry {
    String16 name;
    String16 file;
    String16 systemLabel;  // "follow the system" in this language

    bool operator==(const LanguageEntry&) const = default;
};

// No list of languages is longer; a file that claims more gives this many.
constexpr std::size_t kMaxLanguages = 100;

// The list, in its order; what the file lacks has the defaults of a list of two English entries. A count
// below 0 gives none.
std::vector<LanguageEntry> ReadLanguageList(const LanguageFile& file);

// The index of the first entry of this file name, compared exactly.
std::optional<std::size_t> CurrentLanguage(const std::vector<LanguageEntry>& list,
                                           StringView16 fileName) noexcept;

// What is stored when the user leaves the list with a text chosen.
struct LanguageChoice {
    StringView16 file;  // of an entry of the list
    bool followsSystem;

    bool operator==(const LanguageChoice&) const = default;
};

// An entry is chosen by its name, or by its label with the system followed; where both are equal the label
// counts, and of several entries the last. Nothing when no entry has the text.
std::optional<LanguageChoice> ChooseLanguage(const std::vector<LanguageEntry>& list,
                                             StringView16 text) noexcept;

// A value as the platform's profile functions read a number: blanks, a sign, digits after "0x", "0o" or "0b"
// or decimal ones, up to the first that is none; 32 bits are kept. Without a digit 0.
std::int32_t ProfileInteger(StringView16 value) noexcept;
