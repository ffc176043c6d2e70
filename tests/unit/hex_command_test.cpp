// Hexadecimal command text: known examples, every character, and a plain walk over the text as reference.
#include "printer/hex_command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kUntouched = 0xA5;

// A heap block of exactly the text's units, so that the address sanitizer sees reads behind it.
class ExactText {
  public:
    explicit ExactText(std::u16string_view text)
        : units_(std::make_unique<char16_t[]>(text.size())), length_(text.size()) {
        std::copy(text.begin(), text.end(), units_.get());
    }
    StringView16 View() const { return {units_.get(), length_}; }

  private:
    std::unique_ptr<char16_t[]> units_;
    std::size_t length_;
};

std::uint8_t SlowDigit(char16_t character) {
    static constexpr std::u16string_view kLower = u"0123456789abcdef";
    static constexpr std::u16string_view kUpper = u"0123456789ABCDEF";
    const std::size_t at = std::min(kLower.find(character), kUpper.find(character));
    return at == std::u16string_view::npos ? std::uint8_t{0} : static_cast<std::uint8_t>(at);
}

// Cuts the text at its blanks and each piece into pairs; what is left over of a piece is a byte of its own. A
// digit takes a blank for its partner nowhere, and a blank is never a partner's start.
Bytes SlowParse(std::u16string_view text) {
    Bytes bytes;
    std::u16string piece;
    const auto flush = [&] {
        for (std::size_t i = 0; i < piece.size(); i += 2) {
            const bool isPair = i + 1 < piece.size();
            bytes.push_back(static_cast<std::uint8_t>(
                isPair ? SlowDigit(piece[i]) * 16 + SlowDigit(piece[i + 1]) : SlowDigit(piece[i])));
        }
        piece.clear();
    };
    for (const char16_t character : text) {
        if (character == u' ') {
            flush();
        } else {
            piece += character;
        }
    }
    flush();
    return bytes;
}

// Parses into `capacity` bytes of an exactly sized block; gives the count and what was written.
struct Parsed {
    std::size_t count;
    Bytes written;
};
Parsed Parse(std::u16string_view text, std::size_t capacity) {
    const ExactText exact(text);
    auto block = std::make_unique<std::uint8_t[]>(capacity);
    std::fill_n(block.get(), capacity, kUntouched);
    const std::size_t count = ParseHexCommand({block.get(), capacity}, exact.View());
    return {count, Bytes(block.get(), block.get() + capacity)};
}

// What `capacity` bytes must hold after `bytes` were written to them.
Bytes Held(Bytes bytes, std::size_t capacity) {
    bytes.resize(std::min(bytes.size(), capacity));
    bytes.resize(capacity, kUntouched);
    return bytes;
}

void ExpectParse(std::u16string_view text, const Bytes& expected) {
    for (const std::size_t capacity : {0u, 1u, 128u, 500u}) {
        const Parsed parsed = Parse(text, capacity);
        EXPECT_EQ(parsed.count, expected.size()) << testing::PrintToString(text) << " into " << capacity;
        EXPECT_EQ(parsed.written, Held(expected, capacity))
            << testing::PrintToString(text) << " into " << capacity;
    }
}

std::u16string Pairs(std::size_t count, std::u16string_view separator) {
    std::u16string text;
    for (std::size_t i = 0; i < count; ++i) {
        constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
        text += kDigits[(i >> 4) & 15];
        text += kDigits[i & 15];
        text += separator;
    }
    return text;
}

TEST(HexDigitValueTest, EveryCharacter) {
    std::array<std::uint8_t, 0x10000> expected{};
    for (std::size_t i = 0; i < 10; ++i) {
        expected[0x30 + i] = static_cast<std::uint8_t>(i);
    }
    for (std::size_t i = 0; i < 6; ++i) {
        expected[0x41 + i] = static_cast<std::uint8_t>(10 + i);
        expected[0x61 + i] = static_cast<std::uint8_t>(10 + i);
    }
    for (std::size_t character = 0; character < expected.size(); ++character) {
        EXPECT_EQ(HexDigitValue(static_cast<Char16>(character)), expected[character]) << character;
    }
}

TEST(IsCommandCharacterTest, EveryCharacter) {
    const std::u16string_view accepted = u"0123456789abcdefABCDEF \b.-";
    int count = 0;
    for (std::uint32_t character = 0; character < 0x10000; ++character) {
        const auto unit = static_cast<char16_t>(character);
        EXPECT_EQ(IsCommandCharacter(unit), accepted.find(unit) != std::u16string_view::npos) << character;
        count += IsCommandCharacter(unit) ? 1 : 0;
    }
    EXPECT_EQ(count, 26);
    for (const int code : {8, 45, 46}) {
        EXPECT_TRUE(IsCommandCharacter(static_cast<Char16>(code)));
    }
    EXPECT_FALSE(IsCommandCharacter(u'g'));
    EXPECT_FALSE(IsCommandCharacter(u','));
}

TEST(ParseHexCommandTest, Examples) {
    ExpectParse(u"1D 56 42 00", {0x1D, 0x56, 0x42, 0x00});
    ExpectParse(u"1d 56 42 00 ", {0x1D, 0x56, 0x42, 0x00});
    ExpectParse(u"1D5642", {0x1D, 0x56, 0x42});
    ExpectParse(u"1D 5", {0x1D, 0x05});
    ExpectParse(u"1D5", {0x1D, 0x05});
    ExpectParse(u"123", {0x12, 0x03});
    ExpectParse(u"5 1D", {0x05, 0x1D});
    ExpectParse(u"5  1D", {0x05, 0x1D});
    ExpectParse(u" 5 ", {0x05});
    ExpectParse(u"5 6 7", {0x05, 0x06, 0x07});
    ExpectParse(u"F", {0x0F});
    ExpectParse(u"0", {0x00});
    ExpectParse(u"", {});
    ExpectParse(u" ", {});
    ExpectParse(u"     ", {});
}

TEST(ParseHexCommandTest, OtherCharactersAreZeroDigits) {
    ExpectParse(u".", {0x00});
    ExpectParse(u"-", {0x00});
    ExpectParse(u"1.", {0x10});
    ExpectParse(u"-1", {0x01});
    ExpectParse(u"1G Z9 \u00BD\u0660 1", {0x10, 0x09, 0x00, 0x01});
    ExpectParse(u"1D\t56", {0x1D, 0x05, 0x06});
    ExpectParse(u"12\r\n34", {0x12, 0x00, 0x34});
    ExpectParse(u"\uFF11\uFF11", {0x00});
    ExpectParse(u"\u0141\u0231", {0x00});  // their low bytes are an A and a 1
    ExpectParse(std::u16string_view(u"1\0002", 3), {0x10, 0x02});
}

TEST(ParseHexCommandTest, LengthsAroundTheLimit) {
    for (const std::size_t count : {127u, 128u, 129u}) {
        Bytes bytes;
        for (std::size_t i = 0; i < count; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(i));
        }
        ExpectParse(Pairs(count, u""), bytes);
        ExpectParse(Pairs(count, u" "), bytes);
    }
    EXPECT_EQ(Parse(Pairs(128, u" "), 128).count, 128u);
    EXPECT_EQ(Parse(Pairs(129, u" "), 128).count, 129u);
}

TEST(ParseHexCommandTest, LongestTextsOfTheBox) {
    // 399 characters: the box gives no more. Single digits between blanks make the most of a text's
    // separators.
    ExpectParse(std::u16string(399, u'7'), [] {
        Bytes bytes(199, 0x77);
        bytes.push_back(0x07);
        return bytes;
    }());
    ExpectParse(std::u16string(399, u' '), {});
    ExpectParse(std::u16string(399, u'.'), Bytes(200, 0x00));
    std::u16string alternating;
    while (alternating.size() < 399) {
        alternating += alternating.size() % 2 == 0 ? u'8' : u' ';
    }
    ExpectParse(alternating, Bytes(200, 0x08));
    ExpectParse(Pairs(133, u" "), SlowParse(Pairs(133, u" ")));
    EXPECT_EQ(SlowParse(Pairs(133, u" ")).size(), 133u);
}

TEST(ParseHexCommandTest, RandomTextsAgreeWithThePlainWalk) {
    static constexpr std::u16string_view kAlphabet =
        u"0123456789abcdefABCDEF      .-gGxX,@`/:\t\n\u0131\u0430\uFF21\xD83D";
    std::mt19937 random(4711);
    std::uniform_int_distribution<std::size_t> pick(0, kAlphabet.size() - 1);
    std::uniform_int_distribution<std::size_t> anyLength(0, 40);
    std::uniform_int_distribution<std::size_t> anyCapacity(0, 30);
    for (int round = 0; round < 100000; ++round) {
        // Some are as long as the box allows.
        std::u16string text(round % 500 == 0 ? 399 - anyLength(random) : anyLength(random), u' ');
        for (char16_t& character : text) {
            character = kAlphabet[pick(random)];
        }
        const Bytes expected = SlowParse(text);
        const std::size_t capacity = round % 3 == 0 ? 128 : anyCapacity(random);
        const Parsed parsed = Parse(text, capacity);
        ASSERT_EQ(parsed.count, expected.size()) << testing::PrintToString(text);
        ASSERT_EQ(parsed.written, Held(expected, capacity))
            << testing::PrintToString(text) << " into " << capacity;
        ASSERT_LE(parsed.count, text.size());
    }
}

TEST(ParseHexCommandTest, NothingIntoNothing) {
    EXPECT_EQ(ParseHexCommand({}, {}), 0u);
    EXPECT_EQ(ParseHexCommand({}, u"1D 56 42"), 3u);
    std::array<std::uint8_t, 2> output = {kUntouched, kUntouched};
    EXPECT_EQ(ParseHexCommand(output, {}), 0u);
    EXPECT_EQ(output, (std::array<std::uint8_t, 2>{kUntouched, kUntouched}));
}

TEST(FormatHexCommandTest, Examples) {
    String16 text;
    FormatHexCommand(text, Bytes{0x1D, 0x56, 0x42, 0x00});
    EXPECT_EQ(text, u"1D 56 42 00 ");
}

TEST(FormatHexCommandTest, EveryByte) {
    constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
    for (std::size_t value = 0; value < 256; ++value) {
        String16 text;
        FormatHexCommand(text, Bytes{static_cast<std::uint8_t>(value)});
        EXPECT_EQ(text, (std::u16string{kDigits[value / 16], kDigits[value % 16], u' '}));
    }
    String16 text;
    FormatHexCommand(text, Bytes{0x0F, 0x10, 0xFF, 0xAB});
    EXPECT_EQ(text, u"0F 10 FF AB ");
}

TEST(FormatHexCommandTest, Appends) {
    String16 text = u"before ";
    FormatHexCommand(text, Bytes{0x01});
    FormatHexCommand(text, Bytes{0xFE});
    EXPECT_EQ(text, u"before 01 FE ");
}

TEST(FormatHexCommandTest, NoBytesEmptyTheOutput) {
    String16 text = u"before ";
    FormatHexCommand(text, {});
    EXPECT_EQ(text, u"");
    FormatHexCommand(text, {});
    EXPECT_EQ(text, u"");
}

TEST(FormatHexCommandTest, ParsesBackToTheSameBytes) {
    Bytes bytes;
    for (std::size_t value = 0; value < 256; ++value) {
        bytes.push_back(static_cast<std::uint8_t>(value));
        String16 text;
        FormatHexCommand(text, bytes);
        ASSERT_EQ(text.size(), bytes.size() * 3);
        const Parsed parsed = Parse(text, 256);
        ASSERT_EQ(parsed.count, bytes.size());
        ASSERT_EQ(parsed.written, Held(bytes, 256));
    }
    // The stored form does not depend on how the text was typed.
    String16 again;
    const Parsed typed = Parse(u"1d5642 0", 128);
    FormatHexCommand(again, std::span(typed.written).first(typed.count));
    EXPECT_EQ(again, u"1D 56 42 00 ");
}

}  // namespace
