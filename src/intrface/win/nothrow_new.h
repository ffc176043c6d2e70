// Creation that answers a lack of memory with null.
#pragma once

#include <cstdlib>
#include <new>

// Base of objects made with `new (std::nothrow)`. The runtime's own form throws and catches inside, and a
// throw needs memory itself.
struct NothrowNew {
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
    // Of what the one above made, too.
    // NOLINTNEXTLINE(misc-new-delete-overloads,cert-dcl54-cpp)
    static void operator delete(void* memory) noexcept { std::free(memory); }
    static void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
};
