// A window in the sheet's place, for a page that is made as a sheet makes it but without one.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <functional>
#include <vector>

namespace pages {

// Keeps the messages of property sheets that the page sends.
struct SheetWindow {
    struct Message {
        UINT message;
        WPARAM wparam;
        LPARAM lparam = 0;
        bool operator==(const Message&) const = default;
    };

    SheetWindow() = default;
    SheetWindow(const SheetWindow&) = delete;
    SheetWindow& operator=(const SheetWindow&) = delete;
    ~SheetWindow() { DestroyWindow(handle); }

    // Made when the test has its desktop, not before.
    void Create() {
        WNDCLASSW window_class = {};
        window_class.lpfnWndProc = &Procedure;
        window_class.hInstance = GetModuleHandleW(nullptr);
        window_class.lpszClassName = L"SheetOfTheTests";
        RegisterClassW(&window_class);
        handle = CreateWindowExW(0, window_class.lpszClassName, L"", WS_OVERLAPPEDWINDOW, 0, 0, 600, 500,
                                 nullptr, nullptr, window_class.hInstance, this);
        ShowWindow(handle, SW_SHOWNA);
    }

    HWND handle = nullptr;
    std::vector<Message> messages;
    std::function<void(UINT)> on_message;

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message == WM_CREATE) {
            const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lparam);
            SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
        }
        auto* self = reinterpret_cast<SheetWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self != nullptr && message >= PSM_SETCURSEL && message <= WM_USER + 200) {
            self->messages.push_back({message, wparam, lparam});
            if (self->on_message) {
                self->on_message(message);
            }
            return 0;
        }
        return DefWindowProcW(window, message, wparam, lparam);
    }
};

}  // namespace pages
