// Mouse and keyboard as the system delivers them: to whatever window is under the pointer or has the focus.
// Only on a desktop of the test's own.
#pragma once

#include <windows.h>

#include <initializer_list>

#include "page_fixture.h"

namespace pages {

inline void SendKey(WORD key, bool down) {
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
    EXPECT_EQ(SendInput(1, &input, sizeof input), 1u);
}

inline void PressKey(WORD key) {
    SendKey(key, true);
    SendKey(key, false);
}

inline void PressKeys(std::initializer_list<WORD> keys) {
    for (const WORD key : keys) {
        PressKey(key);
    }
}

// Shift and Control are held while the key is pressed.
inline void PressWith(WORD held, WORD key) {
    SendKey(held, true);
    PressKey(key);
    SendKey(held, false);
}

inline void MovePointer(POINT point) {
    INPUT input = {};
    input.type = INPUT_MOUSE;
    // The system scales the full range of 65536 to the screen, rounding down.
    input.mi.dx = (point.x * 65536 + 32768) / GetSystemMetrics(SM_CXSCREEN);
    input.mi.dy = (point.y * 65536 + 32768) / GetSystemMetrics(SM_CYSCREEN);
    input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    EXPECT_EQ(SendInput(1, &input, sizeof input), 1u);
}

inline HWND FocusOf(const Window& dialog) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(dialog.handle(), nullptr), &info);
    return info.hwndFocus;
}

inline void WaitForFocus(const UiDriver& ui, const Window& dialog, int control) {
    ui.WaitUntil([&] { return FocusOf(dialog) == dialog.Control(control); }, "the focus");
}

// Makes the dialog the one that the keyboard works on, and a control the one in it.
inline void FocusForKeys(const UiDriver& ui, const Window& dialog, int control) {
    SetForegroundWindow(dialog.handle());
    ui.WaitUntil([&] { return GetForegroundWindow() == dialog.handle(); }, "the dialog in the foreground");
    dialog.Focus(control);
    WaitForFocus(ui, dialog, control);
}

}  // namespace pages
