#include "printer/hex_command.h"

std::uint8_t HexDigitValue(Char16 character) noexcept {
    if (character >= TEXT16('0') && character <= TEXT16('9')) {
        return static_cast<std::uint8_t>(character - TEXT16('0'));
    }
    if (character >= TEXT16('A') && character <= TEXT16('F')) {
        return static_cast<std::uint8_t>(character - TEXT16('A') + 10);
    }
    if (character >= TEXT16('a') && character <= TEXT16('f')) {
        return static_cast<std::uint8_t>(character - TEXT16('a') + 10);
    }
    return 0;
}

std::size_t ParseHexCommand(std::span<std::uint8_t> output, StringView16 text) noexcept {
    std::size_t count = 0;
    const auto put = [&](unsigned value) {
        if (count < output.size()) {
            output[count] = static_cast<std::uint8_t>(value);
        }
        ++count;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == TEXT16(' ')) {
            continue;
        }
        const unsigned high = HexDigitValue(text[i]);
        if (i + 1 == text.size() || text[i + 1] == TEXT16(' ')) {
            put(high);
        } else {
            put(high * 16u + HexDigitValue(text[i + 1]));
            ++i;
        }
    }
    return count;
}

void FormatHexCommand(String16& output, std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) {
        output.clear();
        return;
    }
    constexpr StringView16 kDigits = TEXT16("0123456789ABCDEF");
    for (const std::uint8_t byte : bytes) {
        output += kDigits[byte >> 4];
        output += kDigits[byte & 0x0F];
        output += TEXT16(' ');
    }
}

bool IsCommandCharacter(Char16 character) noexcept {
    constexpr Char16 kBackspace = 8;
    return character == kBackspace || character == TEXT16('.') || character == TEXT16('-') ||
           StringView16(TEXT16("0123456789abcdefABCDEF ")).find(character) != StringView16::npos;
}
