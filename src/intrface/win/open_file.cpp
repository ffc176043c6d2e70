#include "intrface/win/open_file.h"

#include <commdlg.h>

#include "intrface/win/handles.h"

namespace {

// The longest path that the system knows.
constexpr std::size_t kLongestPath = 32767;

using OpenFileFunction = decltype(&GetOpenFileNameW);

// Loaded when a file is chosen for the first time: most programs that print never need it.
Library gDialogs;

OpenFileFunction OpenFileDialog() noexcept {
    if (!gDialogs) {
        gDialogs.Reset(LoadLibraryW(L"comdlg32.dll"));
    }
    return gDialogs ? reinterpret_cast<OpenFileFunction>(
                          reinterpret_cast<void*>(GetProcAddress(gDialogs.Get(), "GetOpenFileNameW")))
                    : nullptr;
}

}  // namespace

bool AskForFile(HWND owner, const wchar_t* title, const wchar_t* filter, std::wstring& path) {
    const OpenFileFunction openFile = OpenFileDialog();
    if (openFile == nullptr) {
        return false;
    }
    std::wstring buffer(kLongestPath + 1, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = filter;
    dialog.lpstrTitle = title;
    dialog.lpstrFile = buffer.data();
    dialog.nMaxFile = static_cast<DWORD>(buffer.size());
    dialog.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!openFile(&dialog)) {
        return false;
    }
    path.assign(buffer, 0, buffer.find(L'\0'));
    return true;
}
