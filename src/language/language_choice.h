// Which language file is current: decisions only, nothing of the registry or the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "base/text.h"

constexpr StringView16 kEnglishFile = TEXT16("ENG_KVMR72.res");
constexpr StringView16 kSimplifiedChineseFile = TEXT16("CHN_KVMR72.res");
constexpr StringView16 kTraditionalChineseFile = TEXT16("CHF_KVMR72.res");
constexpr StringView16 kLanguageListFile = TEXT16("LANGUAGE_KVMR72.DAT");

// Units that a language file's name can fill, terminator included.
constexpr std::size_t kLanguageNameLength = 30;

struct SystemLanguage {
    StringView16 file;   // the language file that follows the system
    StringView16 label;  // how the list of languages names "follow the system"
};

// What a system of this language identifier gets. Singapore reads traditional Chinese.
SystemLanguage LanguageOfSystem(std::uint16_t languageIdentifier) noexcept;

// A language file's name as it may be used: the name itself, or English's where it is empty, does not fit, or
// could lead out of the language folder.
StringView16 UsableLanguageName(StringView16 name) noexcept;

// Whether the language follows the system ("TRUE" anywhere in the registry's value).
bool FollowsSystem(StringView16 isFirstRun) noexcept;

// Whether the driver's copy of a file replaces the user's: unless the user's is newer.
bool ReplacesUserCopy(std::int32_t driverVersion, std::int32_t userVersion) noexcept;

// Writes the parts one after another, terminated and zero behind. What does not fit whole leaves the buffer
// empty and gives FALSE: a path that was cut would name another file. The parts lie outside the buffer.
bool JoinText(Char16* buffer, std::size_t capacity, std::initializer_list<StringView16> parts) noexcept;

template <std::size_t N>
bool JoinText(Char16 (&buffer)[N], std::initializer_list<StringView16> parts) noexcept {
    return JoinText(buffer, N, parts);
}
