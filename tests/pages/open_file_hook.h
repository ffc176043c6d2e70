// What the plug-in asks of the system's open-file dialog, and what a test chooses there.
#pragma once

#include <windows.h>

#include <commdlg.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "rig/import_hooks.h"

namespace pages {

struct Chooser {
    HWND owner;
    std::wstring title;
    std::wstring filter;  // up to the empty text behind the last pair
    std::wstring start;
    DWORD flags;
};

// Set before the plug-in is loaded.
struct OpenFileHook {
    explicit OpenFileHook(rig::ImportHooks& hooks) {
        hooks.On("comdlg32.dll", "GetOpenFileNameW", &GetOpenFileNameW,
                 [this](auto original, LPOPENFILENAMEW dialog) {
                     const wchar_t* end = dialog->lpstrFilter;
                     while (*end != L'\0') {
                         end += std::wstring_view(end).size() + 1;
                     }
                     choosers.push_back({dialog->hwndOwner,
                                         dialog->lpstrTitle,
                                         {dialog->lpstrFilter, end},
                                         dialog->lpstrFile,
                                         dialog->Flags});
                     return choose ? choose(*dialog) : original(dialog);
                 });
    }
    OpenFileHook(const OpenFileHook&) = delete;
    OpenFileHook& operator=(const OpenFileHook&) = delete;

    std::vector<Chooser> choosers;
    // In the dialog's place.
    std::function<BOOL(OPENFILENAMEW&)> choose;
};

}  // namespace pages
