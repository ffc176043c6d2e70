// The selected logo in the frame of the Download page.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "intrface/win/gdi.h"

// Keeps what it drew, in memory that it uses again: the frame is filled at once, and again when it is
// uncovered, without reading a file.
class LogoPreview {
  public:
    // Draws the picture of a bitmap file over the whole area, whatever its proportions; a file that is none,
    // or nothing, leaves the area clear. May throw bad_alloc.
    void Draw(HWND frame, std::vector<std::uint8_t>& file);

    // From now on there is nothing to show.
    void Clear() noexcept { isDrawn_ = false; }

    // FALSE, and nothing is drawn, when there is nothing to show.
    bool Show(HWND frame, HDC dc) const noexcept;

  private:
    bool Prepare(HDC frame, const RECT& area) noexcept;

    Bitmap drawn_;
    SIZE size_ = {};
    bool isDrawn_ = false;
};
