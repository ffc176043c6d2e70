#include "default_record.h"

#include <algorithm>

namespace {

// `count` bytes of `value` at `offset`.
struct Fill {
    std::size_t offset;
    std::size_t count;
    std::uint8_t value;
};

// The gaps have no default: bytes 151 to 155, 160, 297 to 303, 307, 444 to 447, 451, 588 to 591 and 595 of
// the event blocks, and reserved bytes further on.
constexpr Fill kEventDefaults[] = {
    // Start of document: flags, command and its length; the drawer selection; cut, feed, herald; buzzer and
    // logo.
    {16, 131, 0},
    {147, 1, 12},
    {148, 3, 0},
    {156, 4, 0},
    // Start of page.
    {161, 136, 0},
    {304, 3, 0},
    // End of document: feed to the cut position, and cut.
    {308, 1, 0},
    {309, 1, 1},
    {310, 130, 0},
    {440, 1, 1},
    {441, 3, 0},
    {448, 3, 0},
    // End of page.
    {452, 136, 0},
    {592, 3, 0},
};

constexpr std::uint8_t kTypes1D[8] = {0, 1, 3, 4, 5, 6, 7, 8};

constexpr Fill kFont1D[] = {
    {1, 1, 3},                 // module width
    {4, 1, 163},  {5, 3, 0},   // bar height
    {8, 2, 0},                 // text position and font
    {12, 1, 24},  {13, 3, 0},  // eight times the module width
    {16, 1, 163}, {17, 3, 0},  // height with text
    {20, 1, 2},                // GS1 module width
    {24, 1, 100}, {25, 3, 0},  // GS1 row height
    {28, 1, 2},   {29, 3, 0},  // composite row height
    {32, 3, 1},                // separator, text, application identifiers
};

constexpr Fill kFont2D[] = {
    {0, 1, 0},                            // PDF417
    {1, 4, 3},                            // module width and height, columns, rows
    {5, 1, 5},                            // error correction
    {6, 1, 2},                            // GS1 element width
    {8, 1, 100}, {9, 3, 0},               // GS1 row height
    {12, 1, 2},  {13, 3, 0},              // composite row height
    {16, 1, 2},  {17, 1, 4},              // separator, segments
    {18, 2, 1},                           // text, application identifiers
    {20, 1, 3},  {21, 1, 0}, {22, 2, 1},  // QR module, language, model and level
};

constexpr Fill kLayoutDefaults[] = {
    {932, 1, 0},    {933, 1, 3},    {934, 64, 0},  // reserved, kept for readers of old records
    {998, 1, 0},    {999, 1, 1},                   // print as image
    {1000, 250, 0},                                // watermark picture
    {1250, 1, 0},                                  // no watermark
    {1252, 32, 0},  {1284, 100, 0},                // its text and font
    {1384, 1, 50},  {1385, 1, 0},                  // font size and style
    {1388, 1, 45},  {1389, 3, 0},                  // angle
    {1392, 1, 4},   {1393, 1, 100}, {1394, 1, 50}, {1395, 1, 100}, {1396, 1, 0},  // zoom per cent, rotation
    {1398, 64, 0},                                                                // form
    {1462, 1, 0},   {1463, 1, 0},                                                 // zoom, log
    {1464, 512, 0},                                                               // log path, written below
};

template <std::size_t N>
void PutFills(Bytes& record, std::size_t base, const Fill (&fills)[N]) {
    for (const Fill& fill : fills) {
        std::fill_n(record.begin() + static_cast<std::ptrdiff_t>(base + fill.offset), fill.count, fill.value);
    }
}

}  // namespace

void Put32(Bytes& record, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        record.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

void PutHeader(Bytes& record, std::uint32_t size, std::uint32_t signature, std::uint32_t version) {
    Put32(record, 0, size);
    Put32(record, 4, signature);
    Put32(record, 8, version);
}

void PutDefaults(Bytes& record, const std::wstring& log_path) {
    PutHeader(record, 1976, 0x00523732, 1);
    Put32(record, 12, 0);
    PutFills(record, 0, kEventDefaults);
    for (std::size_t n = 0; n < 8; ++n) {
        record.at(596 + 36 * n) = kTypes1D[n];
        PutFills(record, 596 + 36 * n, kFont1D);
    }
    PutFills(record, 884, kFont2D);
    PutFills(record, 908, kFont2D);
    PutFills(record, 0, kLayoutDefaults);
    for (std::size_t i = 0; i < log_path.size(); ++i) {
        record.at(1464 + 2 * i) = static_cast<std::uint8_t>(log_path[i]);
        record.at(1465 + 2 * i) = static_cast<std::uint8_t>(log_path[i] >> 8);
    }
}

Bytes PatternRecord(std::uint8_t seed, std::uint32_t size, std::uint32_t signature) {
    Bytes record(kRecordSize);
    std::uint8_t value = seed;
    for (std::uint8_t& byte : record) {
        // Odd steps reach every value; the top bit keeps clear of the defaults, all of which are below 128
        // but 163.
        value = static_cast<std::uint8_t>(value + 37);
        byte = static_cast<std::uint8_t>(value | 0x80);
        if (byte == 163) {
            byte = 0xFE;
        }
    }
    PutHeader(record, size, signature, 7);
    return record;
}
