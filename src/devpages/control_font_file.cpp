#include "devpages/control_font_file.h"

#include "base/platform.h"

namespace {

constexpr DWORD kFirstKeysLength = 1024;
// Of a section with more, the keys that are listed so far count.
constexpr DWORD kMostKeysLength = 16 * 1024 * 1024;

}  // namespace

ControlFontFileOnDisk::ControlFontFileOnDisk() {
    wchar_t folder[kPathLength] = {};
    const UINT length = GetWindowsDirectoryW(folder, kPathLength);
    // The system's functions for such files know no longer paths.
    if (length > 0 && length + StringView16(kControlFontPath).size() < kPathLength) {
        path_ = std::wstring(folder) + kControlFontPath;
    }
}

std::wstring ControlFontFileOnDisk::Keys() {
    std::wstring keys;
    for (DWORD size = kFirstKeysLength; !path_.empty() && size <= kMostKeysLength; size *= 2) {
        keys.assign(size, L'\0');
        const DWORD length =
            GetPrivateProfileStringW(kControlFontSection, nullptr, L"", keys.data(), size, path_.c_str());
        // A list that is cut ends two short of the room.
        if (length < size - 2) {
            keys.resize(length);
            break;
        }
    }
    return keys;
}

std::size_t ControlFontFileOnDisk::Read(const wchar_t* key, std::span<wchar_t> value) noexcept {
    return GetPrivateProfileStringW(kControlFontSection, key, L"", value.data(),
                                    static_cast<DWORD>(value.size()), path_.c_str());
}

void ControlFontFileOnDisk::Remove() noexcept {
    if (!path_.empty()) {
        DeleteFileW(path_.c_str());
    }
}

bool ControlFontFileOnDisk::Write(const wchar_t* key, const wchar_t* value) noexcept {
    return !path_.empty() &&
           WritePrivateProfileStringW(kControlFontSection, key, value, path_.c_str()) != FALSE;
}
