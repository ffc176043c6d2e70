#include "screenshot.h"

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "files.h"

namespace {

constexpr UINT kPaintTimeout = 10000;  // milliseconds

struct Bitmap {
    BITMAPINFOHEADER header = {};
    std::vector<std::uint8_t> pixels;
};

Bitmap CopyWindow(HWND window) {
    RECT frame = {};
    GetWindowRect(window, &frame);
    Bitmap bitmap;
    bitmap.header.biSize = sizeof bitmap.header;
    bitmap.header.biWidth = frame.right - frame.left;
    bitmap.header.biHeight = frame.bottom - frame.top;
    bitmap.header.biPlanes = 1;
    bitmap.header.biBitCount = 24;
    if (bitmap.header.biWidth <= 0 || bitmap.header.biHeight <= 0) {
        throw std::runtime_error("a screenshot was asked of a window that is gone or empty");
    }
    const auto stride = (static_cast<std::size_t>(bitmap.header.biWidth) * 3 + 3) / 4 * 4;
    bitmap.pixels.resize(stride * static_cast<std::size_t>(bitmap.header.biHeight));

    const HDC source = GetWindowDC(window);
    const HDC target = CreateCompatibleDC(source);
    const HBITMAP copy = CreateCompatibleBitmap(source, bitmap.header.biWidth, bitmap.header.biHeight);
    const HGDIOBJ previous = SelectObject(target, copy);
    const bool copied =
        BitBlt(target, 0, 0, bitmap.header.biWidth, bitmap.header.biHeight, source, 0, 0, SRCCOPY) != FALSE;
    SelectObject(target, previous);
    BITMAPINFO info = {};
    info.bmiHeader = bitmap.header;
    const int rows = GetDIBits(target, copy, 0, static_cast<UINT>(bitmap.header.biHeight),
                               bitmap.pixels.data(), &info, DIB_RGB_COLORS);
    DeleteObject(copy);
    DeleteDC(target);
    ReleaseDC(window, source);
    if (!copied || rows != bitmap.header.biHeight) {
        throw std::runtime_error("the pixels of a window could not be read");
    }
    return bitmap;
}

}  // namespace

void SaveScreenshot(HWND window, const std::filesystem::path& bmp) {
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    DWORD_PTR answer = 0;
    // The window's thread answers only when it has painted.
    if (SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kPaintTimeout, &answer) == 0) {
        throw std::runtime_error("a window did not paint itself for its screenshot");
    }
    const Bitmap bitmap = CopyWindow(window);

    BITMAPFILEHEADER file_header = {};
    file_header.bfType = 0x4D42;  // "BM"
    file_header.bfOffBits = sizeof file_header + sizeof bitmap.header;
    file_header.bfSize = file_header.bfOffBits + static_cast<DWORD>(bitmap.pixels.size());
    std::vector<std::uint8_t> file;
    const auto append = [&file](const void* data, std::size_t size) {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        file.insert(file.end(), bytes, bytes + size);
    };
    append(&file_header, sizeof file_header);
    append(&bitmap.header, sizeof bitmap.header);
    append(bitmap.pixels.data(), bitmap.pixels.size());
    WriteWholeFile(bmp, file);
}
