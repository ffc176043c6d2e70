// Owners of system handles: move-only, closed once, empty after a failure.
#pragma once

#include <windows.h>

#include <utility>

// `Traits` names the handle's type, its value for "none" and the call that gives it back.
template <typename Traits>
class UniqueHandle {
  public:
    using Handle = typename Traits::Handle;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Handle handle) noexcept : handle_(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.Release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        Reset(other.Release());
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { Reset(); }

    explicit operator bool() const noexcept { return handle_ != Traits::None(); }
    Handle Get() const noexcept { return handle_; }

    // Gives the handle away; the caller closes it.
    Handle Release() noexcept { return std::exchange(handle_, Traits::None()); }

    void Reset(Handle handle = Traits::None()) noexcept {
        const Handle old = std::exchange(handle_, handle);
        if (old != Traits::None() && old != handle) {
            Traits::Close(old);
        }
    }

  private:
    Handle handle_ = Traits::None();
};

struct RegistryKeyTraits {
    using Handle = HKEY;
    static Handle None() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { RegCloseKey(handle); }
};
using RegistryKey = UniqueHandle<RegistryKeyTraits>;

// What CreateFileW opens: its "none" is all bits set.
struct FileTraits {
    using Handle = HANDLE;
    static Handle None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) noexcept { CloseHandle(handle); }
};
using FileHandle = UniqueHandle<FileTraits>;

struct FileSearchTraits {
    using Handle = HANDLE;
    static Handle None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) noexcept { FindClose(handle); }
};
using FileSearch = UniqueHandle<FileSearchTraits>;

struct LibraryTraits {
    using Handle = HMODULE;
    static Handle None() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { FreeLibrary(handle); }
};
using Library = UniqueHandle<LibraryTraits>;

// Fixed memory of GlobalAlloc: the handle is its address.
struct GlobalBlockTraits {
    using Handle = HGLOBAL;
    static Handle None() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { GlobalFree(handle); }
};
using GlobalBlock = UniqueHandle<GlobalBlockTraits>;
