// The DLL's own module handle: where its dialogs, bitmaps, icons and manifest are loaded from.
#pragma once

#include <windows.h>

// Set at process attach.
extern HINSTANCE ghInstance;
