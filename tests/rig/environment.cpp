#include "rig/environment.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace rig {
namespace {

class Key {
  public:
    explicit Key(REGSAM access) {
        if (RegOpenKeyExW(HKEY_CURRENT_USER, kLanguageKey, 0, access, &key_) != ERROR_SUCCESS) {
            key_ = nullptr;
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (key_ != nullptr) {
            RegCloseKey(key_);
        }
    }
    HKEY get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

constexpr const wchar_t* kLanguageFiles[] = {L"ENG_KVMR72.res", L"CHN_KVMR72.res", L"CHF_KVMR72.res",
                                             L"LANGUAGE_KVMR72.DAT"};

void MakeWritable(const std::filesystem::path& path) {
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

}  // namespace

std::filesystem::path BuildPath(const char* path) {
    std::string windows = path;
    if (!windows.empty() && windows.front() == '/') {
        windows.insert(0, "Z:");
    }
    std::replace(windows.begin(), windows.end(), '/', '\\');
    return std::filesystem::u8path(windows);
}

std::filesystem::path LanguageSource() {
    return BuildPath(KVMR72_LANGUAGE_FOLDER);
}

std::filesystem::path UserFolder() {
    wchar_t path[MAX_PATH] = {};
    EXPECT_TRUE(SHGetSpecialFolderPathW(nullptr, path, CSIDL_APPDATA, TRUE));
    return std::filesystem::path(path) / L"Pavane";
}

std::filesystem::path DriverFolder() {
    wchar_t path[MAX_PATH] = {};
    EXPECT_NE(GetWindowsDirectoryW(path, MAX_PATH), 0u);
    return std::filesystem::path(path) / L"system32\\spool\\drivers\\x64\\3";
}

void ResetToInstalled() {
    RemoveLanguageKey();
    RemoveUserFolder();
    // Where the per-user folder lies when the shell does not say.
    std::filesystem::remove_all(L"C:\\Pavane");
    InstallLanguageFiles();
}

void RemoveLanguageKey() {
    const LONG result = RegDeleteTreeW(HKEY_CURRENT_USER, L"SOFTWARE\\KESTREL");
    EXPECT_TRUE(result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) << result;
}

void RemoveUserFolder() {
    const std::filesystem::path folder = UserFolder();
    std::error_code error;
    if (std::filesystem::is_directory(folder, error)) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            MakeWritable(entry.path());
        }
    }
    std::filesystem::remove_all(folder, error);
    EXPECT_FALSE(std::filesystem::exists(folder, error)) << folder;
}

void RemoveLanguageFiles() {
    for (const wchar_t* name : kLanguageFiles) {
        const std::filesystem::path file = DriverFolder() / name;
        MakeWritable(file);
        std::error_code error;
        std::filesystem::remove(file, error);
        EXPECT_FALSE(std::filesystem::exists(file, error)) << file;
    }
}

void InstallLanguageFiles() {
    RemoveLanguageFiles();
    std::error_code error;
    std::filesystem::create_directories(DriverFolder(), error);
    for (const wchar_t* name : kLanguageFiles) {
        const std::filesystem::path source = LanguageSource() / name;
        EXPECT_TRUE(CopyFileW(source.c_str(), (DriverFolder() / name).c_str(), FALSE))
            << source << ", error " << GetLastError();
    }
}

bool LanguageKeyExists() {
    return Key(KEY_READ).get() != nullptr;
}

void CreateLanguageKey() {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kLanguageKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                              nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
}

void SetLanguageValue(const wchar_t* name, const std::wstring& text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.c_str());
    SetLanguageValueBytes(name, REG_SZ, {bytes, (text.size() + 1) * sizeof(wchar_t)});
}

void SetLanguageValueBytes(const wchar_t* name, DWORD type, std::span<const std::uint8_t> bytes) {
    CreateLanguageKey();
    // Wine adds a terminator that it finds behind the bytes of a string.
    std::vector<std::uint8_t> followed(bytes.begin(), bytes.end());
    followed.resize(bytes.size() + 2, 0xFF);
    EXPECT_EQ(RegSetValueExW(Key(KEY_SET_VALUE).get(), name, 0, type, followed.data(),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
}

std::optional<std::vector<std::uint8_t>> LanguageValueBytes(const wchar_t* name) {
    const Key key(KEY_QUERY_VALUE);
    DWORD size = 0;
    if (key.get() == nullptr ||
        RegQueryValueExW(key.get(), name, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(size);
    EXPECT_EQ(RegQueryValueExW(key.get(), name, nullptr, nullptr, bytes.data(), &size), ERROR_SUCCESS);
    return bytes;
}

std::optional<std::wstring> LanguageValue(const wchar_t* name) {
    const auto bytes = LanguageValueBytes(name);
    if (!bytes) {
        return std::nullopt;
    }
    std::wstring text;
    for (std::size_t i = 0; i + 1 < bytes->size(); i += 2) {
        const auto unit = static_cast<wchar_t>((*bytes)[i] | (*bytes)[i + 1] << 8);
        if (unit == L'\0') {
            break;
        }
        text.push_back(unit);
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> ReadBytes(const std::filesystem::path& path) {
    std::FILE* file = _wfopen(path.c_str(), L"rb");
    if (file == nullptr) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    std::uint8_t block[4096];
    for (std::size_t count = 0; (count = std::fread(block, 1, sizeof block, file)) != 0;) {
        bytes.insert(bytes.end(), block, block + count);
    }
    std::fclose(file);
    return bytes;
}

void WriteBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    std::FILE* file = _wfopen(path.c_str(), L"wb");
    ASSERT_NE(file, nullptr) << path;
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size()) << path;
    std::fclose(file);
}

void WriteUtf16(const std::filesystem::path& path, const std::wstring& text) {
    const std::wstring marked = L"\xFEFF" + text;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(marked.data());
    WriteBytes(path, {bytes, marked.size() * sizeof(wchar_t)});
}

}  // namespace rig
