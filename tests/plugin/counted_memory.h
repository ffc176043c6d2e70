// The memory of a program that counted_memory.cpp is part of: counted, and a block can be refused for its
// size or by its turn.
#pragma once

#include <cstddef>
#include <limits>

namespace counted_memory {

constexpr int kNever = -1;
constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

struct Memory {
    std::size_t limit = kNoLimit;  // a larger block is not given
    int refused = kNever;          // nor is this one, counted from 0
    int blocks = 0;                // how many were asked for while one is to be refused
    std::size_t live = 0;          // bytes
    std::size_t peak = 0;
};
extern Memory memory;

}  // namespace counted_memory
