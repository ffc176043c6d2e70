// Data typed for a test print: the check, and what would be sent of what it accepts.
#include "printer/barcode_check.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "printer/barcode_commands.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kCode39 = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ $%*+-./";
constexpr std::string_view kCodabar = "0123456789$*+-./:ABCDENT";
constexpr std::string_view kDataBar =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz{| !\"%&'()*+,-./:;<=>?_";

bool HasOnly(const Bytes& data, std::string_view allowed) {
    return std::all_of(data.begin(), data.end(), [&](std::uint8_t byte) {
        return allowed.find(static_cast<char>(byte)) != std::string_view::npos;
    });
}

bool IsAscii(const Bytes& data) {
    return std::all_of(data.begin(), data.end(), [](std::uint8_t byte) { return byte < 128; });
}

bool HasLength(const Bytes& data, std::size_t least, std::size_t most) {
    return data.size() >= least && data.size() <= most;
}

bool EndsWithOneOf(const Bytes& data, std::string_view letters) {
    return letters.find(static_cast<char>(data.back())) != std::string_view::npos;
}

// In set C two digits are a byte, everything else stays; a set is chosen by '{' and a letter.
std::optional<Bytes> PlainPacked(const Bytes& data) {
    if (data.size() < 2 || data[0] != '{' || data[1] < 'A' || data[1] > 'C') {
        return std::nullopt;
    }
    Bytes packed;
    Bytes digits;
    bool is_set_c = false;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (data[i] == '{' && i + 1 < data.size()) {
            if (digits.size() % 2 != 0) {
                return std::nullopt;
            }
            packed.push_back('{');
            packed.push_back(data[++i]);
            is_set_c = data[i] == 'C';
        } else if (data[i] == '{' || !is_set_c) {
            packed.push_back(data[i]);
        } else if (data[i] < '0' || data[i] > '9') {
            return std::nullopt;
        } else {
            digits.push_back(static_cast<std::uint8_t>(data[i] - '0'));
            if (digits.size() % 2 == 0) {
                packed.push_back(static_cast<std::uint8_t>(digits[digits.size() - 2] * 10 + digits.back()));
            }
        }
    }
    return digits.size() % 2 == 0 ? std::optional(packed) : std::nullopt;
}

// What is left of accepted data. The check's codes from 72 on stand for those from 7 on.
std::optional<Bytes> PlainCheck(std::uint32_t code, const Bytes& data) {
    const auto as_it_is = [&data](bool isAccepted) {
        return isAccepted ? std::optional(data) : std::nullopt;
    };
    switch (code < 72 ? code : code - 65) {
        case 0:
            return as_it_is(HasLength(data, 11, 12) && HasOnly(data, kDigits));
        case 1:
            return as_it_is(HasLength(data, 11, 12) && HasOnly(data, kDigits) && data.front() == '0');
        case 2:
            return as_it_is(HasLength(data, 12, 13) && HasOnly(data, kDigits));
        case 3:
            return as_it_is(HasLength(data, 7, 8) && HasOnly(data, kDigits));
        case 4:
            return as_it_is(HasLength(data, 1, 255) && HasOnly(data, kCode39));
        case 5:
            return as_it_is(HasLength(data, 1, 255) && HasOnly(data, kDigits));
        case 6:
            return as_it_is(HasLength(data, 1, 255) && HasOnly(data, kCodabar) && data.front() >= 'A' &&
                            data.front() <= 'D' && EndsWithOneOf(data, "ABCDE*NT"));
        case 7:
            return as_it_is(HasLength(data, 1, 255) && IsAscii(data));
        case 8:
            if (!HasLength(data, 2, 255) || !IsAscii(data)) {
                return std::nullopt;
            }
            return code == 73 ? PlainPacked(data) : std::optional(data);
        case 13:
        case 17:
            return as_it_is(HasLength(data, 1, 255));
        case 18:
            return as_it_is(HasLength(data, 1, 84));
        case 9:
        case 10:
        case 11:
        case 12:
        case 14:
        case 15:
        case 16:
            return as_it_is(HasLength(data, 1, 40) && HasOnly(data, kDataBar));
        default:
            return std::nullopt;
    }
}

void CheckOneCode(std::uint32_t code, const Bytes& data) {
    Bytes checked = data;
    auto length = static_cast<std::uint32_t>(data.size());
    const bool isAccepted = CheckBarcodeData(code, checked.data(), &length);
    const auto expected = PlainCheck(code, data);
    Require(isAccepted == expected.has_value(), "data is accepted, or not, against its rule");
    Require(length <= data.size(), "accepted data has grown");
    const std::size_t rest = data.size() - length;
    checked.resize(length);
    Require(checked == expected.value_or(data) && (isAccepted || rest == 0), "data is changed otherwise");
    CheckBarcodeData(code, nullptr, &length);
    CheckBarcodeData(code, checked.data(), nullptr);
}

// The data's piece comes before its end and the cut; what comes before it is the commands.
void CheckPieces(const CommandPieces& pieces, const Bytes& data) {
    constexpr std::size_t kAfterData = 2;
    Require(pieces.size() > kAfterData + 1, "a test print lacks a piece");
    const auto at = pieces.end() - static_cast<std::ptrdiff_t>(kAfterData + 1);
    Require(at[0] == data && at[1] == Bytes{0} && at[2] == Bytes{0x0A, 0x1D, 'V', 'B', 0},
            "a test print does not end with its data and the cut");
    Require(pieces.front().size() >= 2 && pieces.front()[0] == 0x1D, "a test print begins with no command");
    std::size_t size = 0;
    for (const Bytes& piece : pieces) {
        size += piece.size();
    }
    Require(size <= 64 + data.size(), "a test print is longer than its commands");
}

void CheckPrint(const BarcodeFont1D& font, Bytes data) {
    const Bytes typed = data;
    if (!AcceptsTestData(font, data)) {
        Require(data == typed, "refused data is changed");
        return;
    }
    Require(!data.empty() && data.size() <= 255, "data is accepted that no length byte can tell");
    const CommandPieces pieces = TestPrint(font, data);
    CheckPieces(pieces, data);
    if (kBarcodeTypes1D[font.bType].form == BarcodeForm::kCounted) {
        Require(pieces.size() == 7 && pieces[1] == Bytes{0} &&
                    pieces[3] == Bytes{static_cast<std::uint8_t>(data.size())},
                "counted data has another length");
    } else {
        Require(std::count(data.begin(), data.end(), 0) == 0, "data is accepted that ends too early");
    }
}

void CheckPrint(const BarcodeFont2D& font, const BarcodeFont1D& sameFont1D, Bytes data) {
    const Bytes typed = data;
    if (AcceptsTestData(font, sameFont1D, data)) {
        CheckPieces(TestPrint(font, data), data);
    }
    Require(data == typed, "2D data is changed");
}

}  // namespace

void FuzzBarcodeCheck(FuzzBytes bytes) {
    const std::uint8_t code = TakeByte(bytes);
    BarcodeFont1D font1D;
    BarcodeFont2D font2D;
    const std::uint8_t type1D = TakeByte(bytes);
    const std::uint8_t type2D = TakeByte(bytes);
    const std::uint8_t number = TakeByte(bytes);
    std::memset(&font1D, number, sizeof font1D);
    std::memset(&font2D, number, sizeof font2D);
    font1D.bType = type1D;
    font2D.bType2D = type2D;
    // As a page hands it over, and longer than it can.
    const Bytes data(bytes.begin(), bytes.end());
    CheckOneCode(code, data);
    CheckOneCode(code * 0x01010101u, data);
    CheckPrint(font1D, data);
    CheckPrint(font2D, font1D, data);
}
