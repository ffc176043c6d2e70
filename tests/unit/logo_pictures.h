// Bitmap files of made-up logos.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace pictures {

using Bytes = std::vector<std::uint8_t>;

inline void Put(Bytes& file, std::size_t bytes, std::uint32_t value) {
    for (std::size_t i = 0; i < bytes; ++i) {
        file.push_back(static_cast<std::uint8_t>(value >> 8 * i & 0xFF));
    }
}

// A number among a file's bytes.
inline void Set(Bytes& file, std::size_t at, std::size_t bytes, std::uint32_t value) {
    for (std::size_t i = 0; i < bytes; ++i) {
        file[at + i] = static_cast<std::uint8_t>(value >> 8 * i & 0xFF);
    }
}

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// Headers and palette. What is not read has a value that would show.
inline Bytes Front(std::int32_t width, std::int32_t height, unsigned bits) {
    Bytes file = {'B', 'M'};
    Put(file, 4, 0x11111111);
    Put(file, 4, 0x22222222);
    Put(file, 4, 0x33333333);
    Put(file, 4, 40);
    Put(file, 4, static_cast<std::uint32_t>(width));
    Put(file, 4, static_cast<std::uint32_t>(height));
    Put(file, 2, 1);
    Put(file, 2, bits);
    Put(file, 4, 0);
    for (int i = 0; i < 5; ++i) {
        Put(file, 4, 0x44444444);
    }
    file.resize(bits == 24 ? 54 : bits == 8 ? 1078 : 62, 0x55);
    return file;
}

// The value of a colour (0 blue, 1 green, 2 red) at a place. A picture of 8 bits has the green ones.
using ValueAt = std::function<std::uint8_t(int x, int y, int colour)>;

// Rows are padded with what is neither black nor white.
inline Bytes File(int width, int height, unsigned bits, const ValueAt& valueAt) {
    Bytes file = Front(width, height, bits);
    for (int y = 0; y < height; ++y) {
        const std::size_t start = file.size();
        for (int x = 0; x < width; ++x) {
            if (bits == 8) {
                file.push_back(valueAt(x, y, 1));
                continue;
            }
            for (int colour = 0; colour < 3; ++colour) {
                file.push_back(valueAt(x, y, colour));
            }
        }
        file.resize(start + (file.size() - start + 3) / 4 * 4, 0xA5);
    }
    return file;
}

inline ValueAt Random(unsigned seed) {
    return [random = std::mt19937(seed)](int, int, int) mutable {
        return static_cast<std::uint8_t>(random() & 0xFF);
    };
}

inline ValueAt Flat(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
    return [=](int, int, int colour) { return colour == 0 ? blue : colour == 1 ? green : red; };
}

// Each colour in another direction.
inline ValueAt Gradient() {
    return [](int x, int y, int colour) {
        return static_cast<std::uint8_t>((colour == 0   ? 3 * x + y
                                          : colour == 1 ? x + 2 * y
                                                        : 5 * y - x) &
                                         0xFF);
    };
}

// Soft light, edges and noise.
inline ValueAt Photo(unsigned seed) {
    return [random = std::mt19937(seed)](int x, int y, int colour) mutable {
        const double light = 120 + 60 * std::sin(x / 97.0 + colour) + 50 * std::cos(y / 61.0 - x / 211.0);
        const bool isInShade = (x / 40 + y / 56) % 3 == 0;
        const double value = light * (isInShade ? 0.45 : 1) + static_cast<double>(random() % 17) - 8;
        return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
    };
}

}  // namespace pictures
