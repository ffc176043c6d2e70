// Reads hover help as a person does: the real pointer moves about on a control until the page's tooltip has a
// text for it. Only on a desktop of the test's own.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <iterator>
#include <string>
#include <string_view>

#include "page_fixture.h"
#include "real_input.h"

namespace pages {

inline bool IsTip(HWND window) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, static_cast<int>(std::size(name)));
    return std::wstring_view(name) == TOOLTIPS_CLASSW;
}

inline POINT CentreOf(HWND control) {
    RECT area = {};
    GetWindowRect(control, &area);
    return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

// The tooltip that has a text for a control; null when none has.
inline HWND TipFor(HWND control) {
    struct Search {
        HWND control;
        HWND found;
    } search = {control, nullptr};
    EnumThreadWindows(
        GetWindowThreadProcessId(control, nullptr),
        [](HWND window, LPARAM parameter) -> BOOL {
            auto& wanted = *reinterpret_cast<Search*>(parameter);
            TTTOOLINFOW tool = {};
            tool.cbSize = sizeof tool;
            tool.hwnd = wanted.control;
            if (IsTip(window) &&
                SendMessageW(window, TTM_GETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&tool)) != 0) {
                wanted.found = window;
            }
            return wanted.found == nullptr;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

// What that tooltip says; empty without one.
inline std::wstring HelpTextOf(HWND control) {
    std::wstring text(2048, L'\0');
    TTTOOLINFOW tool = {};
    tool.cbSize = sizeof tool;
    tool.hwnd = control;
    tool.lpszText = text.data();
    SendMessageW(TipFor(control), TTM_GETTEXTW, text.size(), reinterpret_cast<LPARAM>(&tool));
    return text.c_str();
}

// How many controls the tooltip of this one has texts for.
inline std::size_t HelpedBeside(HWND control) {
    return static_cast<std::size_t>(SendMessageW(TipFor(control), TTM_GETTOOLCOUNT, 0, 0));
}

// Moves the pointer about at a point of the screen until `done`. Each move is one pixel, as only a moved
// pointer is told to a window.
inline void HoverUntil(const UiDriver& ui, const Window& page, POINT point, const std::function<bool()>& done,
                       const std::string& awaited) {
    int move = 0;
    ui.WaitUntil(
        [&] {
            MovePointer({point.x + move++ % 2, point.y});
            SendMessageW(page.handle(), WM_NULL, 0, 0);
            return done();
        },
        awaited);
}

// Hovers over a control at a point of the screen, and expects that text: of a control that had none yet, or
// in place of another one. A disabled control gets no pointer.
inline void ExpectHelp(const UiDriver& ui, const Window& page, int control, POINT point,
                       const std::wstring& text) {
    SCOPED_TRACE(control);
    // A text that is another one may still be the one before.
    constexpr int kMovesToChange = 50;
    const HWND window = page.Control(control);
    int moves = 0;
    HoverUntil(
        ui, page, point,
        [&] {
            return TipFor(window) != nullptr && (HelpTextOf(window) == text || ++moves == kMovesToChange);
        },
        "the help of control " + std::to_string(control));
    EXPECT_EQ(HelpTextOf(window), text);
}

}  // namespace pages
