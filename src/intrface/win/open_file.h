// The system's dialog for opening a file.
#pragma once

#include <windows.h>

#include <string>

// Lets the user choose an existing file. `filter` is what the system's dialog takes: pairs of a name and a
// pattern, each ended by 0, and 0 behind the last. Without `title` it has the system's own. FALSE when
// cancelled or where the system has no such dialog. The program's current folder stays what it is. May throw
// bad_alloc.
bool AskForFile(HWND owner, const wchar_t* title, const wchar_t* filter, std::wstring& path);
