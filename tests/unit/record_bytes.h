// The settings record as 1976 raw bytes, with the default values at the offsets that the rendering side
// reads.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "devmode/oemdev.h"

constexpr std::size_t kRecordBytes = 1976;
using RecordBytes = std::array<std::uint8_t, kRecordBytes>;

inline RecordBytes BytesOf(const OEMDEV& record) {
    RecordBytes bytes;
    static_assert(sizeof(record) == kRecordBytes);
    std::memcpy(bytes.data(), &record, kRecordBytes);
    return bytes;
}

inline OEMDEV RecordOf(const RecordBytes& bytes) {
    OEMDEV record;
    std::memcpy(&record, bytes.data(), kRecordBytes);
    return record;
}

inline RecordBytes Filled(std::uint8_t value) {
    RecordBytes bytes;
    bytes.fill(value);
    return bytes;
}

// Neighbouring bytes differ, and so do those of records made with another `step`.
inline RecordBytes Patterned(std::uint32_t step) {
    RecordBytes bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>((i + 3) * step + (i >> 8));
    }
    return bytes;
}

inline void PutInt(RecordBytes& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

inline void PutZeros(RecordBytes& bytes, std::size_t offset, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        bytes.at(offset + i) = 0;
    }
}

inline void PutText(RecordBytes& bytes, std::size_t offset, std::size_t width, std::u16string_view text) {
    PutZeros(bytes, offset, width);
    for (std::size_t i = 0; i < text.size(); ++i) {
        bytes.at(offset + 2 * i) = static_cast<std::uint8_t>(text[i] & 0xFF);
        bytes.at(offset + 2 * i + 1) = static_cast<std::uint8_t>(text[i] >> 8);
    }
}

inline void PutHeader(RecordBytes& bytes, std::uint32_t size, std::uint32_t signature,
                      std::uint32_t version) {
    PutInt(bytes, 0, size);
    PutInt(bytes, 4, signature);
    PutInt(bytes, 8, version);
}

// Every default behind the 12 bytes of header. Bytes that have none stay: the four drawer-or-herald choices
// (152, 300, 444, 588), the four logo positions (160, 307, 451, 595) and the reserved gaps.
inline void PutBodyDefaults(RecordBytes& bytes, std::u16string_view logPath) {
    PutInt(bytes, 12, 0);

    PutZeros(bytes, 16, 135);  // start of document: flags, command, length, drawer, cut, feed, herald
    bytes[147] = 12;
    PutZeros(bytes, 156, 4);  // buzzer volume, buzzer, logo, alignment

    PutZeros(bytes, 161, 136);  // start of page: flags, command, length, drawer, cut, feed, volume, herald
    PutZeros(bytes, 304, 3);    // buzzer, logo, alignment

    PutZeros(bytes, 308, 136);  // end of document
    bytes[309] = 1;
    bytes[440] = 1;
    PutZeros(bytes, 448, 3);

    PutZeros(bytes, 452, 136);  // end of page
    PutZeros(bytes, 592, 3);

    constexpr std::uint8_t kTypes[8] = {0, 1, 3, 4, 5, 6, 7, 8};
    for (std::size_t n = 0; n < 8; ++n) {
        const std::size_t font = 596 + 36 * n;
        bytes[font + 0] = kTypes[n];
        bytes[font + 1] = 3;
        PutInt(bytes, font + 4, 163);
        bytes[font + 8] = 0;
        bytes[font + 9] = 0;
        PutInt(bytes, font + 12, 24);
        PutInt(bytes, font + 16, 163);
        bytes[font + 20] = 2;
        PutInt(bytes, font + 24, 100);
        PutInt(bytes, font + 28, 2);
        bytes[font + 32] = 1;
        bytes[font + 33] = 1;
        bytes[font + 34] = 1;
    }
    for (const std::size_t font : {884u, 908u}) {
        bytes[font + 0] = 0;
        bytes[font + 1] = 3;
        bytes[font + 2] = 3;
        bytes[font + 3] = 3;
        bytes[font + 4] = 3;
        bytes[font + 5] = 5;
        bytes[font + 6] = 2;
        PutInt(bytes, font + 8, 100);
        PutInt(bytes, font + 12, 2);
        bytes[font + 16] = 2;
        bytes[font + 17] = 4;
        bytes[font + 18] = 1;
        bytes[font + 19] = 1;
        bytes[font + 20] = 3;
        bytes[font + 21] = 0;
        bytes[font + 22] = 1;
        bytes[font + 23] = 1;
    }

    bytes[932] = 0;
    bytes[933] = 3;
    PutZeros(bytes, 934, 64);

    bytes[998] = 0;
    bytes[999] = 1;
    PutZeros(bytes, 1000, 250);
    bytes[1250] = 0;
    PutZeros(bytes, 1252, 32);
    PutZeros(bytes, 1284, 100);
    bytes[1384] = 50;
    bytes[1385] = 0;
    PutInt(bytes, 1388, 45);
    bytes[1392] = 4;
    bytes[1393] = 100;
    bytes[1394] = 50;
    bytes[1395] = 100;
    bytes[1396] = 0;
    PutZeros(bytes, 1398, 64);
    bytes[1462] = 0;
    bytes[1463] = 0;
    PutText(bytes, 1464, 512, logPath);
}

inline void PutDefaults(RecordBytes& bytes, std::u16string_view logPath) {
    PutHeader(bytes, 1976, 0x00523732, 1);
    PutBodyDefaults(bytes, logPath);
}
