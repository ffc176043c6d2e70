// Texts in what the spooler tells: they stand in the block behind the structures that point to them.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

// The text that a structure in the block points to, when it lies there whole, with its terminator: the view's
// data then ends with it. Otherwise an empty one.
inline std::wstring_view TextIn(const void* block, std::size_t size, const wchar_t* text) noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(block);
    const auto address = reinterpret_cast<std::uintptr_t>(text);
    if (address < first || address >= first + size || address % alignof(wchar_t) != 0) {
        return L"";
    }
    const std::wstring_view rest(text, (first + size - address) / sizeof(wchar_t));
    const std::size_t length = rest.find(L'\0');
    return length == std::wstring_view::npos ? L"" : rest.substr(0, length);
}
