// Owners of GDI objects and device contexts.
#pragma once

#include <windows.h>

#include "intrface/win/handles.h"

template <typename Object>
struct GdiObjectTraits {
    using Handle = Object;
    static Handle None() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { DeleteObject(handle); }
};
using Bitmap = UniqueHandle<GdiObjectTraits<HBITMAP>>;
using Font = UniqueHandle<GdiObjectTraits<HFONT>>;
using Region = UniqueHandle<GdiObjectTraits<HRGN>>;

struct MemoryDcTraits {
    using Handle = HDC;
    static Handle None() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { DeleteDC(handle); }
};
using MemoryDc = UniqueHandle<MemoryDcTraits>;

// A window's device context, for drawing outside WM_PAINT.
class WindowDc {
  public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(GetDC(window)) {}
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    ~WindowDc() {
        if (dc_ != nullptr) {
            ReleaseDC(window_, dc_);
        }
    }

    explicit operator bool() const noexcept { return dc_ != nullptr; }
    HDC Get() const noexcept { return dc_; }

  private:
    HWND window_;
    HDC dc_;
};

// An object selected into a device context; the one before comes back at the end.
class Selection {
  public:
    Selection(HDC dc, HGDIOBJ object) noexcept : dc_(dc), previous_(SelectObject(dc, object)) {}
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;
    ~Selection() {
        if (previous_ != nullptr) {
            SelectObject(dc_, previous_);
        }
    }

    explicit operator bool() const noexcept { return previous_ != nullptr; }

  private:
    HDC dc_;
    HGDIOBJ previous_;
};
