// Runs functions on the thread that owns the windows, while that thread sits in a modal loop.
#pragma once

#include <windows.h>

#include <functional>

#include "page_fixture.h"

namespace pages {

// Made on the thread whose windows are meant, before it enters its modal loop.
class UiThread {
  public:
    UiThread() {
        WNDCLASSW window_class = {};
        window_class.lpfnWndProc = &UiThread::Run;
        window_class.hInstance = GetModuleHandleW(nullptr);
        window_class.lpszClassName = L"kvmr72-test-thread";
        RegisterClassW(&window_class);
        window_ = CreateWindowExW(0, window_class.lpszClassName, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE,
                                  nullptr, window_class.hInstance, nullptr);
        EXPECT_NE(window_, nullptr);
    }
    ~UiThread() { DestroyWindow(window_); }
    UiThread(const UiThread&) = delete;
    UiThread& operator=(const UiThread&) = delete;

    // Returns when `action` is done.
    void Do(const std::function<void()>& action) const {
        SendMessageW(window_, kRun, 0, reinterpret_cast<LPARAM>(&action));
    }
    // For an action that lasts: it starts when the thread next takes a message. `action` must outlive it.
    void Start(const std::function<void()>& action) const {
        PostMessageW(window_, kRun, 0, reinterpret_cast<LPARAM>(&action));
    }

  private:
    static constexpr UINT kRun = WM_APP;

    static LRESULT CALLBACK Run(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message == kRun) {
            (*reinterpret_cast<const std::function<void()>*>(lparam))();
            return 0;
        }
        return DefWindowProcW(window, message, wparam, lparam);
    }

    HWND window_;
};

}  // namespace pages
