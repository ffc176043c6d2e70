// Keeps an edit box to hexadecimal text while it is typed into. Pasted text passes as it is.
#pragma once

#include <windows.h>

// Puts the filter in front of an edit box of a dialog. Tab still moves to the next control.
void InstallHexKeyFilter(HWND edit) noexcept;
