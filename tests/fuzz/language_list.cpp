// The list of languages: what it offers is bounded, and its file names stay in their folder.
#include "language/language_list.h"

#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "language/language_choice.h"

namespace {

String16 FromAnsi(std::span<const std::byte> bytes) {
    String16 text;
    for (const std::byte byte : bytes) {
        text.push_back(static_cast<Char16>(byte));
    }
    return text;
}

// A number as the platform's profile functions read it, in more than its 32 bits.
std::int32_t PlainInteger(const String16& value) {
    std::size_t at = 0;
    while (at < value.size() && value[at] <= 32) {
        ++at;
    }
    const bool isNegative = at < value.size() && value[at] == TEXT16('-');
    if (isNegative || (at < value.size() && value[at] == TEXT16('+'))) {
        ++at;
    }
    std::uint64_t base = 10;
    if (at + 1 < value.size() && value[at] == TEXT16('0')) {
        const Char16 letter = value[at + 1];
        base = letter == TEXT16('x') ? 16 : letter == TEXT16('o') ? 8 : letter == TEXT16('b') ? 2 : 10;
        at += base == 10 ? 0u : 2u;
    }
    const String16 digits = String16(TEXT16("0123456789abcdef")).substr(0, base);
    std::uint64_t number = 0;
    for (; at < value.size(); ++at) {
        const Char16 unit = value[at];
        const bool isLarge = unit >= TEXT16('A') && unit <= TEXT16('F');
        const std::size_t digit = digits.find(static_cast<Char16>(isLarge ? unit + 32 : unit));
        if (digit == String16::npos) {
            break;
        }
        number = (number * base + digit) % 0x100000000;
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(isNegative ? 0 - number : number));
}

String16 PlainEntry(const LanguageFile& file, const char* key, std::size_t index, const char* missing) {
    String16 name;
    for (const char letter : std::string_view(key)) {
        name += static_cast<Char16>(letter);
    }
    if (index >= 10) {
        name += static_cast<Char16>(TEXT16('0') + index / 10);
    }
    name += static_cast<Char16>(TEXT16('0') + index % 10);
    String16 text;
    for (const char letter : std::string_view(missing)) {
        text += static_cast<Char16>(letter);
    }
    if (const auto found = file.Find(TEXT16("LANGUAGE"), name)) {
        text = *found;
    }
    return text.substr(0, 49);
}

void CheckFileName(const String16& name) {
    const StringView16 usable = UsableLanguageName(name);
    Require(usable == name || usable == StringView16(TEXT16("ENG_KVMR72.res")), "a name becomes another one");
    Require(!usable.empty() && usable.size() < 30, "a usable name does not fit");
    Require(usable.find_first_of(TEXT16("\\/:*?\"<>|")) == StringView16::npos &&
                usable.back() != TEXT16('.') && usable.find(Char16{}) == StringView16::npos,
            "a usable name leads out of its folder");
    Char16 path[16];
    const bool fits = JoinText(path, {TEXT16("C:\\"), usable});
    Require(fits == (usable.size() + 3 < 16) && FieldText(path).size() == (fits ? usable.size() + 3 : 0),
            "a path is cut");
}

}  // namespace

void FuzzLanguageList(FuzzBytes bytes) {
    const LanguageFile file(DecodeLanguageFile(std::as_bytes(bytes), FromAnsi));
    const auto count = file.Find(TEXT16("LANGUAGE"), TEXT16("COUNT"));
    const std::int32_t claimed = count && !count->empty() ? PlainInteger(String16(*count)) : 2;
    const std::vector<LanguageEntry> list = ReadLanguageList(file);
    Require(list.size() == static_cast<std::size_t>(std::clamp(claimed, 0, 100)),
            "the list has another length than it claims");
    for (std::size_t i = 0; i < list.size(); ++i) {
        const LanguageEntry& entry = list[i];
        Require(entry.name == PlainEntry(file, "Language", i, "English") &&
                    entry.file == PlainEntry(file, "INI", i, "ENG_KVMR72.res") &&
                    entry.systemLabel == PlainEntry(file, "SYSLANG", i, "System Language"),
                "an entry has other texts than its file");
        CheckFileName(entry.file);
        const auto current = CurrentLanguage(list, entry.file);
        Require(current && *current <= i && list[*current].file == entry.file, "an entry is not current");
        const auto choice = ChooseLanguage(list, entry.name);
        Require(choice && CurrentLanguage(list, choice->file).has_value(), "an entry cannot be chosen");
    }
    const String16 text = NarrowText(bytes);
    Require(ProfileInteger(text) == PlainInteger(text), "a number is read otherwise");
    CheckFileName(text);
    LanguageOfSystem(static_cast<std::uint16_t>(bytes.size()));
    FollowsSystem(text);
}
