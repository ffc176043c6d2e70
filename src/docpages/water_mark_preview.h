// The picture of the watermark as it will print, in the frame of the Water Mark page.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

#include "base/platform.h"
#include "docpages/water_mark_layout.h"
#include "intrface/win/gdi.h"

// All that a watermark's look depends on.
struct WaterMark {
    std::uint8_t kind;
    std::uint8_t position;
    std::uint8_t size;
    std::uint8_t brightness;
    std::wstring file;  // of an image
    std::wstring text;  // the rest is of a text
    std::wstring face;
    std::uint8_t fontSize;
    std::uint8_t style;
    std::int32_t angle;

    bool operator==(const WaterMark&) const = default;
};

// Why a picture is not shown.
enum class PictureFault {
    kMissing,  // it cannot be read as a bitmap
    kDenied,   // its 24-bit copy cannot be written
    kTooBig,
    kSilent,  // no temporary file, no memory for drawing
};

// Keeps the loaded picture and what was drawn last: a repaint that changes nothing reads no file and draws
// nothing anew. Nothing here throws but for lack of memory.
class WaterMarkPreview {
  public:
    // The picture is read again when it is drawn next.
    void MarkBitmapChanged() noexcept {
        bitmapChanged_ = true;
        nextTry_ = 0;
    }

    // Draws into a frame of `area` pixels. Where there is nothing to show it becomes white, and for an image
    // that could not be shown gives the reason, once for an image that is too big.
    std::optional<PictureFault> Draw(HDC frame, PixelSize area, const WaterMark& mark);

    // Writes the picture of a text watermark anew. FALSE when the file cannot be written.
    static bool SaveText(const WaterMark& mark);

    // Where the 24-bit copy of an image goes, in the user's folder for temporary files. FALSE, and empty,
    // where there is no such folder.
    static bool CopiedImagePath(wchar_t (&path)[kPathLength]) noexcept;

  private:
    std::optional<PictureFault> LoadPicture(const wchar_t* file);
    std::optional<PictureFault> Render(HDC frame, PixelSize area, const WaterMark& mark);

    bool bitmapChanged_ = true;
    ULONGLONG nextTry_ = 0;  // not before this tick, after a slow failure
    Bitmap picture_;         // of 24 bits a pixel

    Bitmap drawn_;
    PixelSize drawnArea_ = {};
    std::optional<WaterMark> drawnMark_;
};
