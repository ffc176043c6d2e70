// What the targets share: bytes taken from the front of an input, and how they object.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>

#include "base/text.h"
#include "targets.h"

// Nobody catches it in a fuzzing program, which keeps the input then; a test reports it.
inline void Require(bool holds, const char* what) {
    if (!holds) {
        throw std::logic_error(what);
    }
}

// 0 where the input has ended.
inline std::uint8_t TakeByte(FuzzBytes& bytes) {
    if (bytes.empty()) {
        return 0;
    }
    const std::uint8_t byte = bytes.front();
    bytes = bytes.subspan(1);
    return byte;
}

// Each byte as a unit of its own.
inline String16 NarrowText(FuzzBytes bytes) {
    String16 text;
    std::transform(bytes.begin(), bytes.end(), std::back_inserter(text),
                   [](std::uint8_t byte) { return static_cast<Char16>(byte); });
    return text;
}

// Two bytes a unit; an odd one at the end is left out.
inline String16 WideText(FuzzBytes bytes) {
    String16 text;
    for (std::size_t i = 0; i + 2 <= bytes.size(); i += 2) {
        text.push_back(static_cast<Char16>(bytes[i] | bytes[i + 1] << 8));
    }
    return text;
}
