// The user's choice of language in the registry.
#pragma once

#include <windows.h>

#include "intrface/win/handles.h"

constexpr wchar_t kLanguageValue[] = L"LANGUAGE_KVMR72";
constexpr wchar_t kFirstRunValue[] = L"IsFirstRun_KVMR72";

// Longer values are read as missing.
constexpr std::size_t kLanguageValueBytes = 256;
constexpr std::size_t kLanguageValueLength = kLanguageValueBytes / sizeof(wchar_t) + 1;

// The key under the current user, with full access; empty when it is missing.
RegistryKey OpenLanguageKey() noexcept;

// Makes the key.
void CreateLanguageKey() noexcept;

// A string value, terminated. FALSE leaves `text` empty: no key, no such value, not a string, or longer than
// 256 bytes.
bool ReadLanguageValue(const RegistryKey& key, const wchar_t* name,
                       wchar_t (&text)[kLanguageValueLength]) noexcept;

// Stores a string with the byte count that earlier drivers store: the terminator counts as one byte. Nothing
// without a key.
void WriteLanguageValue(const RegistryKey& key, const wchar_t* name, const wchar_t* text) noexcept;
