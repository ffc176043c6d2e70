#include "devpages/control_font.h"

#include <algorithm>

#include "printer/hex_command.h"

namespace {

constexpr int kFirstCharacter = 32;

std::size_t IndexOf(int row) noexcept {
    return static_cast<std::size_t>(row);
}

Char16 Folded(Char16 unit) noexcept {
    return unit >= TEXT16('a') && unit <= TEXT16('z') ? static_cast<Char16>(unit - TEXT16('a') + TEXT16('A'))
                                                      : unit;
}

bool EqualWithoutCase(StringView16 left, StringView16 right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](Char16 a, Char16 b) { return Folded(a) == Folded(b); });
}

// Whether the key that the platform finds under this name is spelled so.
bool IsSpelled(StringView16 key, StringView16 keys) noexcept {
    while (!keys.empty()) {
        const StringView16 other = keys.substr(0, keys.find(TEXT16('\0')));
        if (EqualWithoutCase(key, other)) {
            return key == other;
        }
        keys.remove_prefix(std::min(other.size() + 1, keys.size()));
    }
    return false;
}

// Of a row that there is not.
const String16 kNone;

}  // namespace

std::optional<ControlCommand> ParseControlCommand(StringView16 text) noexcept {
    ControlCommand command{};
    const std::size_t count = ParseHexCommand(command.bytes, text);
    if (count > kControlCommandSize) {
        return std::nullopt;
    }
    command.length = static_cast<std::uint8_t>(count);
    return command;
}

std::optional<ControlCommand> ParseTypedControlCommand(StringView16 text) noexcept {
    return ParseControlCommand(text.substr(0, kTypedControlLength));
}

String16 ControlCommandText(const ControlCommand& command) {
    String16 text;
    FormatHexCommand(
        text, std::span(command.bytes).first(std::min<std::size_t>(command.length, kControlCommandSize)));
    return text;
}

int RowToShow(int selected) noexcept {
    return selected < 2 ? selected : selected - 1;
}

bool ControlFont::HasRow(int row) noexcept {
    return row >= 0 && row < kControlFontRows;
}

String16 ControlFont::Character(int row) {
    if (!HasRow(row)) {
        return {};
    }
    return String16(1, static_cast<Char16>(kFirstCharacter + row));
}

String16 ControlFont::Key(int row) {
    if (!HasRow(row)) {
        return {};
    }
    // All characters have two digits.
    constexpr StringView16 kDigits = TEXT16("0123456789ABCDEF");
    const std::size_t code = IndexOf(kFirstCharacter + row);
    return {kDigits[code >> 4], kDigits[code & 0x0F]};
}

void ControlFont::Load(ControlFontFile& file) {
    const String16 keys = file.Keys();
    for (int row = 0; row < kControlFontRows; ++row) {
        String16& command = commands_[IndexOf(row)];
        command.clear();
        const String16 key = Key(row);
        if (!IsSpelled(key, keys)) {
            continue;
        }
        std::array<Char16, kControlValueRoom> value{};
        const std::size_t length = std::min(file.Read(key.c_str(), value), value.size() - 1);
        command = FieldText(value.data(), length);
    }
}

bool ControlFont::Save(ControlFontFile& file) const {
    file.Remove();
    for (int row = 0; row < kControlFontRows; ++row) {
        const String16& command = commands_[IndexOf(row)];
        if (!command.empty() && !file.Write(Key(row).c_str(), command.c_str())) {
            return false;
        }
    }
    return true;
}

const String16& ControlFont::Command(int row) const noexcept {
    // Either is an object that stays.
    // cppcheck-suppress returnTempReference
    return HasRow(row) ? commands_[IndexOf(row)] : kNone;
}

void ControlFont::Store(int row, const ControlCommand& command) {
    if (HasRow(row)) {
        commands_[IndexOf(row)] = ControlCommandText(command);
    }
}

void ControlFont::Delete(int row) noexcept {
    if (HasRow(row)) {
        commands_[IndexOf(row)].clear();
    }
}
