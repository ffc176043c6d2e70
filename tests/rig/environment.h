// The user's and the machine's state that the plug-in reads when it is loaded: registry key, per-user folder,
// driver directory. For a prefix of the tests' own; everything here is deleted and overwritten without
// asking.
#pragma once

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace rig {

// The path under which Windows programs reach a file of the machine that built the tests.
std::filesystem::path BuildPath(const char* path);

// The folder of the language files in the sources.
std::filesystem::path LanguageSource();
// %APPDATA%\Pavane
std::filesystem::path UserFolder();
// C:\windows\system32\spool\drivers\x64\3
std::filesystem::path DriverFolder();

// As on a machine where the driver was just installed and the user has never seen it: no key, no per-user
// folder, all language files of the sources in the driver directory.
void ResetToInstalled();

void RemoveLanguageKey();
void RemoveUserFolder();
// Removes the driver directory's language files and puts in those of the sources.
void InstallLanguageFiles();
void RemoveLanguageFiles();

// HKCU\SOFTWARE\KESTREL\LANGUAGE
constexpr wchar_t kLanguageKey[] = L"SOFTWARE\\KESTREL\\LANGUAGE";
bool LanguageKeyExists();
void CreateLanguageKey();
// Writes a string value with its terminator.
void SetLanguageValue(const wchar_t* name, const std::wstring& text);
void SetLanguageValueBytes(const wchar_t* name, DWORD type, std::span<const std::uint8_t> bytes);
// The text up to its terminator; nothing when there is no such value.
std::optional<std::wstring> LanguageValue(const wchar_t* name);
// The bytes as stored, an odd count included.
std::optional<std::vector<std::uint8_t>> LanguageValueBytes(const wchar_t* name);

std::optional<std::vector<std::uint8_t>> ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);
// UTF-16 with a byte-order mark, as the language files are.
void WriteUtf16(const std::filesystem::path& path, const std::wstring& text);

}  // namespace rig
