// Handles and pointers as the trace prints them: "%#x" takes 32 bits, so the low ones.
#pragma once

#include <cstdint>

template <typename Pointer>
unsigned TraceValue(Pointer pointer) noexcept {
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer));
}
