#include "rig/process_objects.h"

#include <windows.h>

#include <winternl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace rig {
namespace {

bool IsIcon(HICON handle) {
    ICONINFO info = {};
    if (!GetIconInfo(handle, &info)) {
        return false;
    }
    DeleteObject(info.hbmMask);
    DeleteObject(info.hbmColor);
    return true;
}

bool IsOwnWindow(HWND window) {
    DWORD process = 0;
    return GetWindowThreadProcessId(window, &process) != 0 && process == GetCurrentProcessId();
}

}  // namespace

// The table of all GDI objects that the process environment block points at; Wine counts nowhere else.
int CountGdiObjects() {
    struct Entry {
        void* object;
        std::uint32_t owner;
        std::uint16_t unique;
        std::uint8_t type;
        std::uint8_t flags;
        void* user;
    };
    constexpr std::size_t kTableOffset = 0xF8;
    constexpr std::size_t kTableEntries = 16384;
    PROCESS_BASIC_INFORMATION process = {};
    NtQueryInformationProcess(GetCurrentProcess(), ProcessBasicInformation, &process, sizeof process,
                              nullptr);
    const Entry* table = nullptr;
    std::memcpy(&table, reinterpret_cast<const std::byte*>(process.PebBaseAddress) + kTableOffset,
                sizeof table);
    return static_cast<int>(
        std::count_if(table, table + kTableEntries, [](const Entry& entry) { return entry.type != 0; }));
}

// The low half of their handles counts through one table, and the system takes it alone.
int CountUserObjects() {
    constexpr std::uintptr_t kFirst = 0x20;
    constexpr std::uintptr_t kEntries = 2048;
    int count = 0;
    for (std::uintptr_t entry = 0; entry < kEntries; ++entry) {
        const std::uintptr_t handle = kFirst + 2 * entry;
        count += IsOwnWindow(reinterpret_cast<HWND>(handle)) || IsMenu(reinterpret_cast<HMENU>(handle)) ||
                         IsIcon(reinterpret_cast<HICON>(handle))
                     ? 1
                     : 0;
    }
    return count;
}

// The next free handle does not tell: it lies below one that was made, and left, while others were open.
int CountHandles() {
    constexpr std::uintptr_t kEntries = 1024;
    int count = 0;
    for (std::uintptr_t entry = 1; entry <= kEntries; ++entry) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(4 * entry), &flags) ? 1 : 0;
    }
    return count;
}

}  // namespace rig
