// The three shell functions that the plug-in uses, found by name when the DLL is loaded and given back when
// it is unloaded: a system without them still gets its pages. A function that is missing fails as if it had
// been called.
#pragma once

#include <windows.h>

#include <shlobj.h>

#include "base/platform.h"

// SHGetSpecialFolderPathW without creating the folder. FALSE leaves `path` empty.
bool SpecialFolderPath(int folder, wchar_t (&path)[kPathLength]) noexcept;

// SHBrowseForFolderW. The caller frees the list (CoTaskMemFree). Null when cancelled.
PIDLIST_ABSOLUTE BrowseForFolder(BROWSEINFOW& info) noexcept;

// SHGetPathFromIDListW. FALSE leaves `path` empty.
bool PathFromIdList(PCIDLIST_ABSOLUTE list, wchar_t (&path)[kPathLength]) noexcept;
