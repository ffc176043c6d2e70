// Memory that is handed to the plug-in: exactly as long as the plug-in may use it, between guard bytes that
// tell whether anything wrote before or behind it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

class GuardedBlock {
  public:
    // `size` zero bytes, aligned as memory from the heap is.
    explicit GuardedBlock(std::size_t size) : size_(size), bytes_(new std::uint8_t[size + 2 * kGuard]) {
        std::fill_n(bytes_.get(), size + 2 * kGuard, kGuardByte);
        std::fill_n(data(), size, std::uint8_t{0});
    }

    std::uint8_t* data() const noexcept { return bytes_.get() + kGuard; }
    std::size_t size() const noexcept { return size_; }
    std::span<std::uint8_t> bytes() const noexcept { return {data(), size_}; }

    // The block read as a T; the block must be large enough for it.
    template <typename T>
    T* As() const noexcept {
        return static_cast<T*>(static_cast<void*>(data()));
    }

    bool Intact() const noexcept {
        const auto untouched = [](std::uint8_t guard) { return guard == kGuardByte; };
        return std::all_of(bytes_.get(), bytes_.get() + kGuard, untouched) &&
               std::all_of(data() + size_, data() + size_ + kGuard, untouched);
    }

  private:
    static constexpr std::size_t kGuard = 64;  // a multiple of the heap's alignment
    static constexpr std::uint8_t kGuardByte = 0xA5;

    std::size_t size_;
    std::unique_ptr<std::uint8_t[]> bytes_;
};
