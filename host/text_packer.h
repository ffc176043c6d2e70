// A buffer as the spooler's functions fill it: structures, and behind them the texts that they point to.
#pragma once

#include <windows.h>

#include <cstring>
#include <string>

class TextPacker {
  public:
    // Room for `structures` bytes is left at the start. The buffer need not be aligned.
    TextPacker(void* buffer, std::size_t structures)
        : start_(static_cast<char*>(buffer)), next_(start_ + structures) {}

    // What a text takes.
    static std::size_t SizeOf(const std::wstring& text) noexcept {
        return (text.size() + 1) * sizeof(wchar_t);
    }

    wchar_t* Put(const std::wstring& text) noexcept {
        char* const placed = next_;
        std::memcpy(placed, text.c_str(), SizeOf(text));
        next_ += SizeOf(text);
        return static_cast<wchar_t*>(static_cast<void*>(placed));
    }

    template <typename Structure>
    void PutStructure(const Structure& structure, std::size_t index = 0) noexcept {
        std::memcpy(start_ + index * sizeof structure, &structure, sizeof structure);
    }

  private:
    char* start_;
    char* next_;
};

// Whether a buffer can be filled: the answer of every function that tells the size it needs.
inline DWORD CheckBuffer(const void* buffer, DWORD size, DWORD needed) noexcept {
    if (buffer == nullptr && size != 0) {
        return ERROR_INVALID_USER_BUFFER;
    }
    return size < needed ? ERROR_INSUFFICIENT_BUFFER : ERROR_SUCCESS;
}
