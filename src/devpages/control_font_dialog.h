// The control font's table and the dialog of one of its characters.
#pragma once

#include <windows.h>

// Lets the user edit the table; returns when its dialog is closed. May throw bad_alloc.
void EditControlFont(HWND owner);
