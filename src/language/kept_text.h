// Texts that stay where they are until the module goes, one of each: whoever shows one need not know when
// another thread takes up another language. There are as many as the language files have.
#pragma once

#include <string_view>

// The kept text that reads like `text`. For any thread. May throw bad_alloc.
const wchar_t* KeepText(std::wstring_view text);

// TRUE for what KeepText gave.
bool IsKeptText(const wchar_t* text) noexcept;
