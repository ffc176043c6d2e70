#include "devpages/logo_preview.h"

#include "devpages/shown_bitmap.h"

namespace {

// Paper: the colour of the system that FillRect finds under this value.
HBRUSH PaperBrush() noexcept {
    constexpr std::uintptr_t kBrushValue = 15;
    return reinterpret_cast<HBRUSH>(kBrushValue);
}

RECT AreaOf(HWND frame) noexcept {
    RECT area{};
    GetClientRect(frame, &area);
    return area;
}

void Stretch(HDC dc, const RECT& area, const ShownBitmap& bitmap, const std::uint8_t* pixels) noexcept {
    SetStretchBltMode(dc, COLORONCOLOR);
    StretchDIBits(dc, 0, 0, area.right, area.bottom, 0, 0, bitmap.width, bitmap.height, pixels,
                  reinterpret_cast<const BITMAPINFO*>(bitmap.info.data()), DIB_RGB_COLORS, SRCCOPY);
}

}  // namespace

// The kept bitmap is as large as the area, and made anew only when that is not.
bool LogoPreview::Prepare(HDC frame, const RECT& area) noexcept {
    if (!drawn_ || size_.cx != area.right || size_.cy != area.bottom) {
        drawn_.Reset(CreateCompatibleBitmap(frame, area.right, area.bottom));
        size_ = {area.right, area.bottom};
    }
    return static_cast<bool>(drawn_);
}

void LogoPreview::Draw(HWND frame, std::vector<std::uint8_t>& file) {
    Clear();
    const RECT area = AreaOf(frame);
    const auto bitmap = ShowBitmap(file);
    const WindowDc target(frame);
    const MemoryDc dc(CreateCompatibleDC(target.Get()));
    if (!target || !dc || !Prepare(target.Get(), area)) {
        return;
    }
    {
        const Selection intoDrawn(dc.Get(), drawn_.Get());
        if (!intoDrawn) {
            return;
        }
        FillRect(dc.Get(), &area, PaperBrush());
        if (bitmap) {
            Stretch(dc.Get(), area, *bitmap, file.data() + bitmap->pixelsAt);
        }
    }
    isDrawn_ = true;
    Show(frame, target.Get());
}

bool LogoPreview::Show(HWND frame, HDC dc) const noexcept {
    if (!isDrawn_) {
        return false;
    }
    const RECT area = AreaOf(frame);
    const MemoryDc source(CreateCompatibleDC(dc));
    const Selection fromDrawn(source.Get(), drawn_.Get());
    return fromDrawn && BitBlt(dc, 0, 0, area.right, area.bottom, source.Get(), 0, 0, SRCCOPY);
}
