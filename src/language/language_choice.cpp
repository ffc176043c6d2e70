#include "language/language_choice.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::uint16_t kChinesePrc = 2052;
constexpr std::uint16_t kChineseTaiwan = 1028;
constexpr std::uint16_t kChineseHongKong = 3076;
constexpr std::uint16_t kChineseSingapore = 4100;

constexpr StringView16 kNotInFileNames = TEXT16("\\/:*?\"<>|");

// Names that open a device, with any extension.
constexpr StringView16 kDevices[] = {TEXT16("CON"),    TEXT16("PRN"),     TEXT16("AUX"), TEXT16("NUL"),
                                     TEXT16("CONIN$"), TEXT16("CONOUT$"), TEXT16("COM"), TEXT16("LPT")};
constexpr std::size_t kNumberedDevices = 6;  // from here on with a digit behind
// The system takes some superscript ones for digits too.
constexpr StringView16 kDeviceDigits = TEXT16("0123456789\u00B9\u00B2\u00B3");

bool IsDevice(StringView16 name) noexcept {
    StringView16 stem = name.substr(0, name.find('.'));
    while (!stem.empty() && stem.back() == ' ') {
        stem.remove_suffix(1);
    }
    for (std::size_t i = 0; i < std::size(kDevices); ++i) {
        const StringView16 device = kDevices[i];
        const bool begins =
            stem.size() >= device.size() &&
            std::equal(device.begin(), device.end(), stem.begin(), [](Char16 upper, Char16 unit) {
                return unit == upper || (upper >= 'A' && unit == upper + 0x20);
            });
        const std::size_t digits = i < kNumberedDevices ? 0 : 1;
        if (begins && stem.size() == device.size() + digits &&
            (digits == 0 || kDeviceDigits.find(stem.back()) != StringView16::npos)) {
            return true;
        }
    }
    return false;
}

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
                        name.back() != ' ' && std::none_of(name.begin(), name.end(), isForbidden) &&
                        !IsDevice(name);
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
