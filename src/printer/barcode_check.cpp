#include "printer/barcode_check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <span>

#include "base/platform.h"

namespace {

struct ByteRange {
    std::uint8_t first;
    std::uint8_t last;
};

constexpr ByteRange kDigits[] = {{'0', '9'}};
constexpr ByteRange kCode39Bytes[] = {{' ', ' '}, {'$', '%'}, {'*', '+'}, {'-', '9'}, {'A', 'Z'}};
constexpr ByteRange kCodabarBytes[] = {{'$', '$'}, {'*', '+'}, {'-', ':'},
                                       {'A', 'E'}, {'N', 'N'}, {'T', 'T'}};
constexpr ByteRange kAscii[] = {{0, 127}};
// The small letters end at '|', two behind 'z'.
constexpr ByteRange kDataBarBytes[] = {{' ', '"'}, {'%', '?'}, {'A', 'Z'}, {'_', '_'}, {'a', '|'}};

struct Rule {
    std::uint32_t minLength;
    std::uint32_t maxLength;
    std::span<const ByteRange> allowed;  // none: only the length is checked
};

constexpr Rule kRules[] = {
    {11, 12, kDigits},        //  0  UPC-A
    {11, 12, kDigits},        //  1  UPC-E
    {12, 13, kDigits},        //  2  EAN13
    {7, 8, kDigits},          //  3  EAN8
    {1, 255, kCode39Bytes},   //  4  Code39
    {1, 255, kDigits},        //  5  ITF
    {1, 255, kCodabarBytes},  //  6  Codabar
    {1, 255, kAscii},         //  7  Code93
    {2, 255, kAscii},         //  8  Code128
    {1, 40, kDataBarBytes},   //  9  GS1 DataBar Omnidirectional
    {1, 40, kDataBarBytes},   // 10  GS1 DataBar Truncated
    {1, 40, kDataBarBytes},   // 11  GS1 DataBar Limited
    {1, 40, kDataBarBytes},   // 12  GS1 DataBar Expanded
    {1, 255, {}},             // 13  PDF417
    {1, 40, kDataBarBytes},   // 14  GS1 DataBar Stacked
    {1, 40, kDataBarBytes},   // 15  GS1 DataBar Stacked Omnidirectional
    {1, 40, kDataBarBytes},   // 16  GS1 DataBar Expanded Stacked
    {1, 255, {}},             // 17  QR Code
    {1, 84, {}},              // 18  Maxi Code
};

// The rows of Code93 and Code128 close the gap in the printer's numbers.
constexpr std::uint32_t kGapBeforeCode93 = 65;
constexpr std::size_t kCode128Row = kCode128 - kGapBeforeCode93;

bool IsBetween(std::uint8_t byte, char first, char last) noexcept {
    return byte >= first && byte <= last;
}

bool IsAllowed(std::uint8_t byte, std::span<const ByteRange> allowed) noexcept {
    return std::any_of(allowed.begin(), allowed.end(),
                       [byte](ByteRange range) { return byte >= range.first && byte <= range.last; });
}

// What a symbology wants of its first and last byte.
bool HasValidEnds(std::uint32_t row, std::span<const std::uint8_t> data) noexcept {
    const std::uint8_t last = data.back();
    switch (row) {
        case kUpcE:
            return data.front() == '0';
        case kCodabar:
            return IsBetween(data.front(), 'A', 'D') &&
                   (IsBetween(last, 'A', 'E') || last == '*' || last == 'N' || last == 'T');
        default:
            return true;
    }
}

// '{' and a letter choose the code set of what follows. Only an even number of digits fits into set C; all
// other data is its own packed form. A '{' as the letter leaves set C too; one at the end has no letter.
bool PackCode128(std::span<std::uint8_t> data, std::uint32_t& length) noexcept {
    if (data[0] != '{' || !IsBetween(data[1], 'A', 'C')) {
        return false;
    }
    std::array<std::uint8_t, kRules[kCode128Row].maxLength> packed;
    std::uint32_t count = 0;
    bool isSetC = false;
    bool isHalfPair = false;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const std::uint8_t byte = data[i];
        if (byte == '{') {
            packed[count++] = byte;
            if (i + 1 < data.size()) {
                if (isHalfPair) {
                    return false;
                }
                const std::uint8_t letter = data[++i];
                isSetC = letter == 'C';
                packed[count++] = letter;
            }
        } else if (!isSetC) {
            packed[count++] = byte;
        } else if (!IsBetween(byte, '0', '9')) {
            return false;
        } else if (!isHalfPair) {
            packed[count] = static_cast<std::uint8_t>((byte - '0') * 10);
            isHalfPair = true;
        } else {
            packed[count] = static_cast<std::uint8_t>(packed[count] + byte - '0');
            ++count;
            isHalfPair = false;
        }
    }
    if (isHalfPair) {
        return false;
    }
    std::copy_n(packed.begin(), count, data.begin());
    length = count;
    return true;
}

}  // namespace

bool CheckBarcodeData(std::uint32_t code, std::uint8_t* data, std::uint32_t* length) noexcept {
    const std::uint32_t row = code < kCode93 ? code : code - kGapBeforeCode93;
    TRACE_VERBOSE(TEXT16("UI:  CheckBarcodeData() entry!\r\n"));
    TRACE_VERBOSE(TEXT16("UI:  CheckBarcodeData() Idex = %d!\r\n"), static_cast<std::int32_t>(row));
    if (data == nullptr || length == nullptr || row >= std::size(kRules)) {
        return false;
    }
    const Rule& rule = kRules[row];
    if (*length < rule.minLength || *length > rule.maxLength) {
        return false;
    }
    const std::span bytes(data, *length);
    if (rule.allowed.empty()) {
        return true;
    }
    TRACE_VERBOSE(TEXT16("UI:  CheckBarcodeData() 00000000000000000000000!\r\n"));
    if (!HasValidEnds(row, bytes)) {
        return false;
    }
    TRACE_VERBOSE(TEXT16("UI:  CheckBarcodeData() 1111111111111111111111!\r\n"));
    if (!std::all_of(bytes.begin(), bytes.end(),
                     [&rule](std::uint8_t byte) { return IsAllowed(byte, rule.allowed); })) {
        return false;
    }
    TRACE_VERBOSE(TEXT16("UI:  CheckBarcodeData() 22222222222222222!\r\n"));
    return code != kCode128 || PackCode128(bytes, *length);
}
