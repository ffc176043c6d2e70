#include "language/registry_choice.h"

#include <cwchar>

namespace {

constexpr wchar_t kLanguageKey[] = L"SOFTWARE\\KESTREL\\LANGUAGE\\";

}  // namespace

RegistryKey OpenLanguageKey() noexcept {
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, kLanguageKey, 0, KEY_ALL_ACCESS, &key);
    return RegistryKey(status == ERROR_SUCCESS ? key : nullptr);
}

void CreateLanguageKey() noexcept {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, kLanguageKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, &key, nullptr) == ERROR_SUCCESS) {
        RegCloseKey(key);
    }
}

bool ReadLanguageValue(const RegistryKey& key, const wchar_t* name,
                       wchar_t (&text)[kLanguageValueLength]) noexcept {
    text[0] = 0;
    if (!key) {
        return false;
    }
    DWORD type = REG_NONE;
    DWORD bytes = kLanguageValueBytes;
    const LSTATUS status =
        RegQueryValueExW(key.Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(text), &bytes);
    if (status != ERROR_SUCCESS || type != REG_SZ || bytes > kLanguageValueBytes) {
        text[0] = 0;
        return false;
    }
    // Stored strings need not be terminated, and half a unit may stand at their end.
    text[bytes / sizeof(wchar_t)] = 0;
    return true;
}

void WriteLanguageValue(const RegistryKey& key, const wchar_t* name, const wchar_t* text) noexcept {
    if (key) {
        const std::size_t bytes = 2 * std::wcslen(text) + 1;
        RegSetValueExW(key.Get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                       static_cast<DWORD>(bytes));
    }
}
