// Pictures of windows, taken from the window's own device context: true to the pixel whatever lies in front
// of it, and where there is no screen at all.
#pragma once

#include <windows.h>

#include <filesystem>

// Repaints `window` with all its children and writes it, frame included, as a 24-bit BMP. Call it from a
// thread other than the window's, whose messages must be served. Throws std::runtime_error.
void SaveScreenshot(HWND window, const std::filesystem::path& bmp);
