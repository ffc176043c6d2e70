#include "language/language_choice.h"

#include <algorithm>

namespace {

constexpr std::uint16_t kChinesePrc = 2052;
constexpr std::uint16_t kChineseTaiwan = 1028;
constexpr std::uint16_t kChineseHongKong = 3076;
constexpr std::uint16_t kChineseSingapore = 4100;

constexpr StringView16 kNotInFileNames = TEXT16("\\/:*?\"<>|");

}  // namespace

SystemLanguage LanguageOfSystem(std::uint16_t languageIdentifier) noexcept {
    switch (languageIdentifier) {
        case kChinesePrc:
            return {kSimplifiedChineseFile, TEXT16("系统语言(System)")};
        case kChineseTaiwan:
        case kChineseHongKong:
        case kChineseSingapore:
            return {kTraditionalChineseFile, TEXT16("系統語言(System)")};
        default:
            return {kEnglishFile, TEXT16("System Language")};
    }
}

StringView16 UsableLanguageName(StringView16 name) noexcept {
    const auto isForbidden = [](Char16 unit) {
        return unit < ' ' || kNotInFileNames.find(unit) != StringView16::npos;
    };
    // The platform drops dots and blanks at a name's end; "." and ".." are folders.
    const bool usable = !name.empty() && name.size() < kLanguageNameLength && name.back() != '.' &&
                        name.back() != ' ' && std::none_of(name.begin(), name.end(), isForbidden);
    return usable ? name : kEnglishFile;
}

bool FollowsSystem(StringView16 isFirstRun) noexcept {
    return isFirstRun.find(TEXT16("TRUE")) != StringView16::npos;
}

bool ReplacesUserCopy(std::int32_t driverVersion, std::int32_t userVersion) noexcept {
    return driverVersion >= userVersion;
}

bool JoinText(Char16* buffer, std::size_t capacity, std::initializer_list<StringView16> parts) noexcept {
    if (capacity == 0) {
        return false;
    }
    std::size_t length = 0;
    for (const StringView16 part : parts) {
        if (part.size() >= capacity - length) {
            CopyText(buffer, capacity, {});
            return false;
        }
        std::copy(part.begin(), part.end(), buffer + length);
        length += part.size();
    }
    std::fill(buffer + length, buffer + capacity, Char16{});
    return true;
}
