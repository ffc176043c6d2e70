#include "language/language_list.h"

#include <algorithm>

#include "language/language_choice.h"

namespace {

constexpr StringView16 kSection = TEXT16("LANGUAGE");
constexpr StringView16 kCountKey = TEXT16("COUNT");
constexpr StringView16 kNameKey = TEXT16("Language");
constexpr StringView16 kFileKey = TEXT16("INI");
constexpr StringView16 kSystemLabelKey = TEXT16("SYSLANG");

constexpr StringView16 kDefaultName = TEXT16("English");
constexpr StringView16 kDefaultSystemLabel = TEXT16("System Language");
constexpr std::int32_t kDefaultCount = 2;

constexpr std::size_t kMaxEntryText = 49;

String16 KeyOfEntry(StringView16 key, std::size_t index) {
    String16 digits;
    do {
        digits.insert(digits.begin(), static_cast<Char16>(TEXT16('0') + index % 10));
        index /= 10;
    } while (index != 0);
    return String16(key) + digits;
}

String16 EntryText(const LanguageFile& file, StringView16 key, std::size_t index, StringView16 missing) {
    const StringView16 text = file.Find(kSection, KeyOfEntry(key, index)).value_or(missing);
    return String16(text.substr(0, kMaxEntryText));
}

std::size_t CountOfEntries(const LanguageFile& file) noexcept {
    const auto value = file.Find(kSection, kCountKey);
    // The profile functions take "COUNT=" for a missing one.
    const std::int32_t count = value && !value->empty() ? ProfileInteger(*value) : kDefaultCount;
    return std::min(static_cast<std::size_t>(std::max(count, 0)), kMaxLanguages);
}

// The digit's value in any base up to 16; 16 for other characters.
std::uint32_t DigitValue(Char16 unit) noexcept {
    if (unit >= TEXT16('0') && unit <= TEXT16('9')) {
        return static_cast<std::uint32_t>(unit - TEXT16('0'));
    }
    if (unit >= TEXT16('A') && unit <= TEXT16('F')) {
        return static_cast<std::uint32_t>(unit - TEXT16('A') + 10);
    }
    if (unit >= TEXT16('a') && unit <= TEXT16('f')) {
        return static_cast<std::uint32_t>(unit - TEXT16('a') + 10);
    }
    return 16;
}

}  // namespace

std::vector<LanguageEntry> ReadLanguageList(const LanguageFile& file) {
    std::vector<LanguageEntry> list(CountOfEntries(file));
    for (std::size_t i = 0; i < list.size(); ++i) {
        list[i].name = EntryText(file, kNameKey, i, kDefaultName);
        list[i].file = EntryText(file, kFileKey, i, kEnglishFile);
        list[i].systemLabel = EntryText(file, kSystemLabelKey, i, kDefaultSystemLabel);
    }
    return list;
}

std::optional<std::size_t> CurrentLanguage(const std::vector<LanguageEntry>& list,
                                           StringView16 fileName) noexcept {
    const auto entry = std::find_if(list.begin(), list.end(),
                                    [&](const LanguageEntry& each) { return each.file == fileName; });
    if (entry == list.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(entry - list.begin());
}

std::optional<LanguageChoice> ChooseLanguage(const std::vector<LanguageEntry>& list,
                                             StringView16 text) noexcept {
    std::optional<LanguageChoice> choice;
    for (const LanguageEntry& entry : list) {
        if (entry.name == text) {
            choice = {entry.file, false};
        }
        if (entry.systemLabel == text) {
            choice = {entry.file, true};
        }
    }
    return choice;
}

std::int32_t ProfileInteger(StringView16 value) noexcept {
    const auto skip = [&](std::size_t count) { value.remove_prefix(count); };
    while (!value.empty() && value.front() <= TEXT16(' ')) {
        skip(1);
    }
    const bool isNegative = value.substr(0, 1) == TEXT16("-");
    if (isNegative || value.substr(0, 1) == TEXT16("+")) {
        skip(1);
    }
    std::uint32_t base = 10;
    const StringView16 prefix = value.substr(0, 2);
    if (prefix == TEXT16("0x")) {
        base = 16;
    } else if (prefix == TEXT16("0o")) {
        base = 8;
    } else if (prefix == TEXT16("0b")) {
        base = 2;
    }
    if (base != 10) {
        skip(2);
    }
    std::uint32_t number = 0;
    for (const Char16 unit : value) {
        const std::uint32_t digit = DigitValue(unit);
        if (digit >= base) {
            break;
        }
        number = number * base + digit;
    }
    return static_cast<std::int32_t>(isNegative ? 0 - number : number);
}
