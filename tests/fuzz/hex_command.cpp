// Commands as hexadecimal text, typed or out of a file.
#include "printer/hex_command.h"

#include <algorithm>
#include <vector>

#include "devpages/control_font.h"
#include "fuzz_input.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

int PlainDigit(Char16 unit) {
    constexpr StringView16 kUpper = TEXT16("0123456789ABCDEF");
    constexpr StringView16 kLower = TEXT16("0123456789abcdef");
    const std::size_t place = std::min(kUpper.find(unit), kLower.find(unit));
    return place == StringView16::npos ? 0 : static_cast<int>(place);
}

// Word by word, two characters a byte.
Bytes PlainParse(const String16& text) {
    Bytes bytes;
    String16 word;
    const auto end_word = [&] {
        for (std::size_t i = 0; i < word.size(); i += 2) {
            int value = PlainDigit(word[i]);
            if (i + 1 < word.size()) {
                value = value * 16 + PlainDigit(word[i + 1]);
            }
            bytes.push_back(static_cast<std::uint8_t>(value));
        }
        word.clear();
    };
    for (const Char16 unit : text) {
        if (unit == TEXT16(' ')) {
            end_word();
        } else {
            word += unit;
        }
    }
    end_word();
    return bytes;
}

void CheckParse(const String16& text, const Bytes& expected, std::size_t room) {
    constexpr std::uint8_t kUntouched = 0xA5;
    Bytes output(room, kUntouched);
    Require(ParseHexCommand(output, text) == expected.size(), "a text stands for another number of bytes");
    const std::size_t written = std::min(room, expected.size());
    Require(
        std::equal(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(written), expected.begin()),
        "a text stands for other bytes");
    Require(std::count(output.begin() + static_cast<std::ptrdiff_t>(written), output.end(), kUntouched) ==
                static_cast<std::ptrdiff_t>(room - written),
            "bytes behind the command are written");
}

}  // namespace

void FuzzHexCommand(FuzzBytes bytes) {
    const std::size_t room = TakeByte(bytes);
    const String16 text = room % 2 == 0 ? NarrowText(bytes) : WideText(bytes);
    const Bytes expected = PlainParse(text);
    CheckParse(text, expected, room);
    CheckParse(text, expected, expected.size());

    String16 formatted;
    FormatHexCommand(formatted, expected);
    Require(formatted.size() == 3 * expected.size(), "a byte does not have two digits and a blank");
    Require(std::all_of(formatted.begin(), formatted.end(), IsCommandCharacter),
            "a command is shown with a character that the box does not take");
    CheckParse(formatted, expected, expected.size());

    const auto command = ParseControlCommand(text);
    Require(command.has_value() == (expected.size() <= kControlCommandSize),
            "a control command fits, or does not, against its length");
    if (command) {
        Require(command->length == expected.size() &&
                    std::equal(expected.begin(), expected.end(), command->bytes.begin()),
                "a control command has other bytes");
        Require(ParseControlCommand(ControlCommandText(*command)) == command,
                "a control command changes when it is shown");
    }
    Require(ParseTypedControlCommand(text) == ParseControlCommand(text.substr(0, 400)),
            "a typed command is read for another length");
}
