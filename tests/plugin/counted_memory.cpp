#include "counted_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace counted_memory {

Memory memory;

namespace {

// Before each block stands its size.
constexpr std::size_t kBlockHeader = 16;

bool IsRefused(std::size_t size) {
    return size > memory.limit || (memory.refused != kNever && memory.blocks++ == memory.refused);
}

}  // namespace

}  // namespace counted_memory

using counted_memory::kBlockHeader;
using counted_memory::memory;

void* operator new(std::size_t size) {
    void* const block = counted_memory::IsRefused(size) ? nullptr : std::malloc(kBlockHeader + size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(block) = size;
    memory.live += size;
    memory.peak = std::max(memory.peak, memory.live);
    return static_cast<std::uint8_t*>(block) + kBlockHeader;
}

void operator delete(void* pointer) noexcept {
    if (pointer != nullptr) {
        void* const block = static_cast<std::uint8_t*>(pointer) - kBlockHeader;
        memory.live -= *static_cast<std::size_t*>(block);
        std::free(block);
    }
}

void operator delete(void* pointer, std::size_t) noexcept {
    operator delete(pointer);
}
