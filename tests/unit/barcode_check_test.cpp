// The check of barcode data: each symbology's lengths and bytes written out, known examples, and Code128
// packing against a plain reference that cuts the text at its braces.
#include "printer/barcode_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform_recorder.h"

// Only the address sanitizer can be asked to tell of allocations.
#if defined(__SANITIZE_ADDRESS__)
#define HAS_ALLOCATION_HOOKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HAS_ALLOCATION_HOOKS 1
#endif
#endif
#if defined(HAS_ALLOCATION_HOOKS)
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
#endif

namespace {

// Data and what is left of it live in strings: most of it is text, a byte is a char.
std::string Repeated(std::string_view text, std::size_t length) {
    std::string repeated;
    while (repeated.size() < length) {
        repeated += text;
    }
    repeated.resize(length);
    return repeated;
}

// A byte that the data must not hold when the check is done.
constexpr std::uint8_t kUntouched = 0xA5;

// Checks a heap block of exactly the data's bytes, so that the address sanitizer sees reads behind it. Gives
// what is to be printed. Refused data, and what lies behind packed data, must be as it was.
std::optional<std::string> Check(std::uint32_t code, std::string_view data) {
    auto block = std::make_unique<std::uint8_t[]>(data.size());
    std::copy(data.begin(), data.end(), block.get());
    auto length = static_cast<std::uint32_t>(data.size());
    const bool isAccepted = CheckBarcodeData(code, block.get(), &length);
    const std::string left(block.get(), block.get() + data.size());
    EXPECT_LE(length, data.size());
    if (!isAccepted) {
        EXPECT_EQ(length, data.size()) << code << " " << testing::PrintToString(data);
        EXPECT_EQ(left, data) << code;
        return std::nullopt;
    }
    EXPECT_EQ(left.substr(length), data.substr(length)) << code;
    return left.substr(0, length);
}

bool IsAccepted(std::uint32_t code, std::string_view data) {
    const std::optional<std::string> printed = Check(code, data);
    if (printed && code != 73) {
        EXPECT_EQ(*printed, data) << code;
    }
    return printed.has_value();
}

std::string AllBytes(int from, int to) {
    std::string bytes;
    for (int byte = from; byte <= to; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

const std::string kCapitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::string kDigits = "0123456789";
const std::string kDataBar =
    " !\"%&'()*+,-./0123456789:;<=>?ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz{|";

struct Symbology {
    std::uint32_t code;
    int row;
    std::size_t least;
    std::size_t most;
    std::string allowed;
    std::string start;  // what its data begins with; the byte behind it repeats up to the end
    char filler;
    bool isLengthOnly = false;
};

const std::vector<Symbology>& Symbologies() {
    static const std::vector<Symbology> symbologies = {
        {0, 0, 11, 12, kDigits, "", '7'},
        {1, 1, 11, 12, kDigits, "0", '7'},
        {2, 2, 12, 13, kDigits, "", '7'},
        {3, 3, 7, 8, kDigits, "", '7'},
        {4, 4, 1, 255, " $%*+-./" + kDigits + kCapitals, "", 'Q'},
        {5, 5, 1, 255, kDigits, "", '7'},
        {6, 6, 1, 255, "$*+-./" + kDigits + ":ABCDENT", "", 'B'},
        {72, 7, 1, 255, AllBytes(0, 127), "", 'q'},
        {73, 8, 2, 255, AllBytes(0, 127), "{B", 'q'},
        {9, 9, 1, 40, kDataBar, "", '('},
        {10, 10, 1, 40, kDataBar, "", '('},
        {11, 11, 1, 40, kDataBar, "", '('},
        {12, 12, 1, 40, kDataBar, "", '('},
        {13, 13, 1, 255, AllBytes(0, 255), "", '\x80', true},
        {14, 14, 1, 40, kDataBar, "", ')'},
        {15, 15, 1, 40, kDataBar, "", ')'},
        {16, 16, 1, 40, kDataBar, "", ')'},
        {17, 17, 1, 255, AllBytes(0, 255), "", '\xFF', true},
        {18, 18, 1, 84, AllBytes(0, 255), "", '\x00', true},
    };
    return symbologies;
}

std::string DataOf(const Symbology& symbology, std::size_t length) {
    std::string data = symbology.start;
    data.resize(length, symbology.filler);
    return data;
}

class CheckBarcodeDataTest : public PlatformTest {
  protected:
    // Bulk tests would keep millions of lines.
    void SetUp() override {
        PlatformTest::SetUp();
        gDebugLevel = 2;
    }
};

TEST_F(CheckBarcodeDataTest, EveryLengthOfEverySymbology) {
    for (const Symbology& symbology : Symbologies()) {
        for (std::size_t length = 0; length <= 520; ++length) {
            const bool isRight = length >= symbology.least && length <= symbology.most;
            EXPECT_EQ(IsAccepted(symbology.code, DataOf(symbology, length)), isRight)
                << symbology.code << " with " << length;
        }
    }
}

// Nothing is read for a length that no symbology has.
TEST_F(CheckBarcodeDataTest, LengthsBeyondTheData) {
    for (const Symbology& symbology : Symbologies()) {
        for (const std::uint32_t claimed : {256u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu}) {
            const auto byte = std::make_unique<std::uint8_t[]>(1);
            byte[0] = '0';
            std::uint32_t length = claimed;
            EXPECT_FALSE(CheckBarcodeData(symbology.code, byte.get(), &length)) << symbology.code;
            EXPECT_EQ(length, claimed);
        }
    }
}

// The byte stands where a symbology has no rule of its own for it: before a Codabar's last byte, behind all
// starts.
TEST_F(CheckBarcodeDataTest, EveryByteInEverySymbology) {
    for (const Symbology& symbology : Symbologies()) {
        for (int value = 0; value < 256; ++value) {
            const char byte = static_cast<char>(value);
            const bool isAllowed = symbology.allowed.find(byte) != std::string::npos;
            for (const std::size_t length : {std::max(symbology.least, std::size_t{4}), symbology.most}) {
                std::string data = DataOf(symbology, length);
                data[length - 2] = byte;
                EXPECT_EQ(IsAccepted(symbology.code, data), isAllowed) << symbology.code << " " << value;
            }
        }
    }
}

TEST_F(CheckBarcodeDataTest, EveryByteAtTheStart) {
    for (const Symbology& symbology : Symbologies()) {
        std::string allowed = symbology.allowed;
        allowed = symbology.code == 1 ? "0" : symbology.code == 6 ? "ABCD" : allowed;
        allowed = symbology.code == 73 ? "{" : allowed;
        for (int value = 0; value < 256; ++value) {
            std::string data = DataOf(symbology, symbology.most);
            data[0] = static_cast<char>(value);
            EXPECT_EQ(IsAccepted(symbology.code, data), allowed.find(data[0]) != std::string::npos)
                << symbology.code << " " << value;
        }
    }
}

TEST_F(CheckBarcodeDataTest, EveryByteAtTheEnd) {
    for (const Symbology& symbology : Symbologies()) {
        const std::string allowed = symbology.code == 6 ? "*ABCDENT" : symbology.allowed;
        for (int value = 0; value < 256; ++value) {
            std::string data = DataOf(symbology, symbology.most);
            data.back() = static_cast<char>(value);
            EXPECT_EQ(IsAccepted(symbology.code, data), allowed.find(data.back()) != std::string::npos)
                << symbology.code << " " << value;
        }
    }
}

// A lone byte is first and last.
TEST_F(CheckBarcodeDataTest, CodabarOfOneByte) {
    for (int value = 0; value < 256; ++value) {
        const std::string data(1, static_cast<char>(value));
        EXPECT_EQ(IsAccepted(6, data), value >= 'A' && value <= 'D') << value;
    }
}

TEST_F(CheckBarcodeDataTest, Examples) {
    EXPECT_TRUE(IsAccepted(1, "023456789012"));
    EXPECT_FALSE(IsAccepted(1, "123456789012"));
    EXPECT_TRUE(IsAccepted(0, "123456789012"));
    EXPECT_TRUE(IsAccepted(5, "123456789"));
    EXPECT_TRUE(IsAccepted(6, "A123456789A"));
    EXPECT_FALSE(IsAccepted(6, "A123"));
    EXPECT_TRUE(IsAccepted(6, "A12*"));
    EXPECT_TRUE(IsAccepted(12, "(01)01234567890123"));
    EXPECT_TRUE(IsAccepted(9, "a{|"));
    EXPECT_FALSE(IsAccepted(9, "a}"));
    EXPECT_FALSE(IsAccepted(72, "A\x80"));
    EXPECT_FALSE(IsAccepted(73, "{A\x80"));
}

// Codes below 72 are rows, others are rows plus 65. There are 19 rows; only 73 itself is Code128 to pack.
TEST_F(CheckBarcodeDataTest, CodesWithoutARule) {
    for (std::uint32_t code = 0; code < 1000; ++code) {
        const std::uint32_t row = code < 72 ? code : code - 65;
        bool isAnyAccepted = false;
        for (const Symbology& symbology : Symbologies()) {
            isAnyAccepted |= IsAccepted(code, DataOf(symbology, symbology.most));
        }
        EXPECT_EQ(isAnyAccepted, row <= 18) << code;
    }
    for (const std::uint32_t code : {0x7FFFFFFFu, 0x80000000u, 0x80000048u, 0xFFFFFFBFu, 0xFFFFFFFFu}) {
        EXPECT_FALSE(IsAccepted(code, "0")) << code;
    }
    EXPECT_TRUE(IsAccepted(7, "plain"));
    EXPECT_TRUE(IsAccepted(8, "plain"));
    EXPECT_EQ(Check(8, "{C1234"), "{C1234");
}

TEST_F(CheckBarcodeDataTest, NullPointers) {
    for (std::uint32_t code = 0; code < 100; ++code) {
        std::uint8_t byte = kUntouched;
        std::uint32_t length = 1;
        EXPECT_FALSE(CheckBarcodeData(code, nullptr, nullptr)) << code;
        EXPECT_FALSE(CheckBarcodeData(code, &byte, nullptr)) << code;
        EXPECT_FALSE(CheckBarcodeData(code, nullptr, &length)) << code;
        EXPECT_EQ(byte, kUntouched);
        EXPECT_EQ(length, 1u);
    }
}

// Digits of set C are bytes of 0 to 99.
TEST_F(CheckBarcodeDataTest, Code128Examples) {
    using std::string_literals::operator""s;
    EXPECT_EQ(Check(73, "{A1234"), "{A1234");
    EXPECT_EQ(Check(73, "{C1234"), "{C\x0C\x22");
    EXPECT_EQ(Check(73, "{C123"), std::nullopt);
    EXPECT_EQ(Check(73, "{C12{B"), "{C\x0C{B");
    EXPECT_EQ(Check(73, "1234"), std::nullopt);
    EXPECT_EQ(Check(73, "{C"), "{C");
    EXPECT_EQ(Check(73, "{C00990110"), "{C\0\x63\x01\x0A"s);
    EXPECT_EQ(Check(73, "{C1"), std::nullopt);
    EXPECT_EQ(Check(73, "{C1{B"), std::nullopt);
    EXPECT_EQ(Check(73, "{C1{C1"), std::nullopt);
    EXPECT_EQ(Check(73, "{C1A"), std::nullopt);
    EXPECT_EQ(Check(73, "{CA1"), std::nullopt);
    EXPECT_EQ(Check(73, "{C/1"), std::nullopt);
    EXPECT_EQ(Check(73, "{C:1"), std::nullopt);
    EXPECT_EQ(Check(73, "{C1/"), std::nullopt);
    EXPECT_EQ(Check(73, "{C1:"), std::nullopt);
    EXPECT_EQ(Check(73, "{D12"), std::nullopt);
    EXPECT_EQ(Check(73, "{@12"), std::nullopt);
    EXPECT_EQ(Check(73, "{c12"), std::nullopt);
    EXPECT_EQ(Check(73, "A{C12"), std::nullopt);
    EXPECT_EQ(Check(73, "{Bab123{C4567{A89"), "{Bab123{C\x2D\x43{A89");
    EXPECT_EQ(Check(73, "{A1{C23{C45{B6"), "{A1{C\x17{C\x2D{B6");
    // Any other letter leaves set C.
    EXPECT_EQ(Check(73, "{C12{13"), "{C\x0C{13");
    EXPECT_EQ(Check(73, "{B1{S2{C34"), "{B1{S2{C\x22");
    // A brace's letter may be a brace; what follows that is data.
    EXPECT_EQ(Check(73, "{A{{C12"), "{A{{C12");
    EXPECT_EQ(Check(73, "{C12{{34"), "{C\x0C{{34");
    EXPECT_EQ(Check(73, "{A{{{C12"), "{A{{{C\x0C");
    // A brace at the end has no letter.
    EXPECT_EQ(Check(73, "{A{"), "{A{");
    EXPECT_EQ(Check(73, "{C{"), "{C{");
    EXPECT_EQ(Check(73, "{C12{"), "{C\x0C{");
    EXPECT_EQ(Check(73, "{C123{"), std::nullopt);
}

#if defined(HAS_ALLOCATION_HOOKS)
std::size_t allocations = 0;

// The check runs in the middle of a click in somebody else's program: there is nothing that it could fail for
// but the data.
TEST_F(CheckBarcodeDataTest, NothingIsAllocated) {
    ASSERT_NE(__sanitizer_install_malloc_and_free_hooks(
                  [](const volatile void*, std::size_t) { ++allocations; }, [](const volatile void*) {}),
              0);
    const auto seen = std::make_unique<std::uint8_t[]>(1);
    ASSERT_GT(allocations, 0u) << "the hook does not work";
    for (const Symbology& symbology : Symbologies()) {
        std::string data = DataOf(symbology, symbology.most);
        auto length = static_cast<std::uint32_t>(data.size());
        auto* const bytes = reinterpret_cast<std::uint8_t*>(data.data());
        allocations = 0;
        const bool isAccepted = CheckBarcodeData(symbology.code, bytes, &length);
        EXPECT_EQ(allocations, 0u) << symbology.code;
        EXPECT_TRUE(isAccepted) << symbology.code;
    }
    std::string packed = "{C" + Repeated("12", 252);
    std::uint32_t length = 254;
    allocations = 0;
    const bool isAccepted = CheckBarcodeData(73, reinterpret_cast<std::uint8_t*>(packed.data()), &length);
    EXPECT_EQ(allocations, 0u);
    EXPECT_TRUE(isAccepted);
}
#endif

TEST_F(CheckBarcodeDataTest, LongestCode128) {
    EXPECT_EQ(Check(73, Repeated("{C", 255)), Repeated("{C", 255));
    EXPECT_EQ(Check(73, Repeated("{C", 254)), Repeated("{C", 254));
    EXPECT_EQ(Check(73, Repeated("{C", 256)), std::nullopt);
    EXPECT_EQ(Check(73, "{C" + Repeated("12", 252)), "{C" + Repeated("\x0C", 126));
    EXPECT_EQ(Check(73, "{C" + Repeated("12", 253)), std::nullopt);
    EXPECT_EQ(Check(73, "{B" + Repeated("12", 253)), "{B" + Repeated("12", 253));
    EXPECT_EQ(Check(73, Repeated("{C12", 255)), std::nullopt);
    EXPECT_EQ(Check(73, Repeated("{C12", 253)), Repeated("{C\x0C", 190));
}

// The packed form of a text, cut into runs: a brace, the letter behind it, and all up to the next brace.
// Appends to `packed`; FALSE where the text is refused.
bool PackPlainly(std::string_view text, std::string& packed) {
    if (text.size() < 2 || text.size() > 255 || text[0] != '{' || (text[1] < 'A' || text[1] > 'C')) {
        return false;
    }
    for (const char character : text) {
        if (static_cast<unsigned char>(character) > 127) {
            return false;
        }
    }
    while (!text.empty()) {
        const std::string_view start = text.substr(0, 2);
        text.remove_prefix(start.size());
        const std::string_view run = text.substr(0, text.find('{'));
        text.remove_prefix(run.size());
        packed += start;
        if (start != "{C") {
            packed += run;
            continue;
        }
        if (run.size() % 2 != 0 || run.find_first_not_of("0123456789") != std::string_view::npos) {
            return false;
        }
        for (std::size_t i = 0; i < run.size(); i += 2) {
            packed += static_cast<char>((run[i] - '0') * 10 + (run[i + 1] - '0'));
        }
    }
    return true;
}

// Runs of a brace, a set's letter and what follows, most of them as they should be: pairs of digits behind
// "{C", anything behind another. Of four texts one is spoiled: a byte in it is another. Gives the length.
std::size_t DrawText(std::mt19937& random, std::span<char> text) {
    constexpr std::string_view kLetters = "ABCCCCC{";
    constexpr std::string_view kOther = "0123456789ABCxyz";
    const std::uint32_t shape = static_cast<std::uint32_t>(random());
    // Up to 15 bytes, now and then up to all.
    const std::size_t length = shape % 4096 == 0 ? shape / 4096 % text.size() : shape / 4096 % 16;
    std::size_t i = 0;
    const auto put = [&](char character) {
        if (i < length) {
            text[i++] = character;
        }
    };
    while (i < length) {
        std::uint32_t draw = static_cast<std::uint32_t>(random());
        const auto take = [&draw](std::size_t choices) {
            const std::size_t taken = draw % choices;
            draw /= static_cast<std::uint32_t>(choices);
            return taken;
        };
        const char letter = kLetters[take(i == 0 ? 7 : 8)];
        put('{');
        put(letter);
        // Set C has an even count.
        for (std::size_t more = take(4) * 2 + (letter == 'C' ? 0 : take(2)); more > 0; --more) {
            put(letter == 'C' ? static_cast<char>('0' + take(10)) : kOther[take(kOther.size())]);
        }
    }
    const std::uint32_t spoil = static_cast<std::uint32_t>(random());
    if (spoil % 4 == 0 && length > 0) {
        text[spoil / 4 % length] = static_cast<char>(spoil >> 24);
    }
    return length;
}

TEST_F(CheckBarcodeDataTest, RandomCode128TextsPackAsPlainly) {
    constexpr int kTexts = 1'200'000;
    std::mt19937 random(20231121);
    std::array<char, 300> text{};
    std::array<std::uint8_t, 300> block{};
    std::string packed;
    int accepted = 0;
    int shortened = 0;
    for (int n = 0; n < kTexts; ++n) {
        const std::size_t size = DrawText(random, text);
        const std::string_view data(text.data(), size);
        std::copy(data.begin(), data.end(), block.begin());
        block[size] = kUntouched;
        packed.clear();
        const bool isExpected = PackPlainly(data, packed);

        auto length = static_cast<std::uint32_t>(size);
        const bool isAccepted = CheckBarcodeData(73, block.data(), &length);
        ASSERT_EQ(isAccepted, isExpected) << testing::PrintToString(data);
        if (!isAccepted) {
            packed = data;
        }
        ASSERT_EQ(length, packed.size()) << testing::PrintToString(data);
        // Behind what was packed lies what was there.
        ASSERT_EQ(std::memcmp(block.data(), packed.data(), length), 0) << testing::PrintToString(data);
        ASSERT_EQ(std::memcmp(block.data() + length, data.data() + length, size - length), 0);
        ASSERT_EQ(block[size], kUntouched);
        accepted += isAccepted ? 1 : 0;
        shortened += packed.size() < size ? 1 : 0;
    }
    EXPECT_GT(accepted, kTexts / 4);
    EXPECT_GT(kTexts - accepted, kTexts / 4);
    EXPECT_GT(shortened, kTexts / 8);
}

class CheckBarcodeTraceTest : public PlatformTest {
  protected:
    static std::vector<std::u16string> LinesOf(std::uint32_t code, std::string_view data) {
        platform_recorder::TakeLines();
        Check(code, data);
        return platform_recorder::TakeLines();
    }

    // The first `steps` lines that a check of this row writes.
    static std::vector<std::u16string> Lines(const std::u16string& row, std::size_t steps) {
        std::vector<std::u16string> lines = {
            u"UI:  CheckBarcodeData() entry!\r\n",
            u"UI:  CheckBarcodeData() Idex = " + row + u"!\r\n",
            u"UI:  CheckBarcodeData() 00000000000000000000000!\r\n",
            u"UI:  CheckBarcodeData() 1111111111111111111111!\r\n",
            u"UI:  CheckBarcodeData() 22222222222222222!\r\n",
        };
        lines.resize(steps);
        return lines;
    }
};

TEST_F(CheckBarcodeTraceTest, EverySymbologyAccepted) {
    for (const Symbology& symbology : Symbologies()) {
        const std::string row = std::to_string(symbology.row);
        EXPECT_EQ(LinesOf(symbology.code, DataOf(symbology, symbology.most)),
                  Lines({row.begin(), row.end()}, symbology.isLengthOnly ? 2 : 5))
            << symbology.code;
    }
}

TEST_F(CheckBarcodeTraceTest, EachStepThatRefuses) {
    EXPECT_EQ(LinesOf(73, ""), Lines(u"8", 2));
    EXPECT_EQ(LinesOf(73, "{"), Lines(u"8", 2));
    EXPECT_EQ(LinesOf(18, std::string(85, 'A')), Lines(u"18", 2));
    EXPECT_EQ(LinesOf(1, "123456789012"), Lines(u"1", 3));
    EXPECT_EQ(LinesOf(6, "E123456789A"), Lines(u"6", 3));
    EXPECT_EQ(LinesOf(6, "A1234567893"), Lines(u"6", 3));
    EXPECT_EQ(LinesOf(0, "12345678901A"), Lines(u"0", 4));
    EXPECT_EQ(LinesOf(73, "{A\x80"), Lines(u"8", 4));
    EXPECT_EQ(LinesOf(73, "1234"), Lines(u"8", 5));
    EXPECT_EQ(LinesOf(73, "{C123"), Lines(u"8", 5));
    EXPECT_EQ(LinesOf(19, "1"), Lines(u"19", 2));
    EXPECT_EQ(LinesOf(84, "1"), Lines(u"19", 2));
    EXPECT_EQ(LinesOf(0xFFFFFFFF, "1"), Lines(u"-66", 2));
}

TEST_F(CheckBarcodeTraceTest, NullPointers) {
    platform_recorder::TakeLines();
    CheckBarcodeData(72, nullptr, nullptr);
    EXPECT_EQ(platform_recorder::TakeLines(), Lines(u"7", 2));
}

TEST_F(CheckBarcodeTraceTest, OnlyWhenVerbose) {
    for (const std::int32_t level : {2, 3, 4, 5, 100}) {
        gDebugLevel = level;
        EXPECT_TRUE(LinesOf(73, "{C1234").empty()) << level;
    }
    for (const std::int32_t level : {1, 0, -1}) {
        gDebugLevel = level;
        EXPECT_EQ(LinesOf(73, "{C1234"), Lines(u"8", 5)) << level;
    }
}

}  // namespace
