#include "docpages/water_mark_preview.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "base/platform.h"
#include "docpages/bitmap_24_file.h"
#include "docpages/layout_rules.h"
#include "language/language_choice.h"

namespace {

// A file on a server that is gone fails slowly (in milliseconds). Repaints ask for it again, but not so often
// that the page cannot be used.
constexpr ULONGLONG kSlowFailure = 500;
constexpr ULONGLONG kPatience = 10;

constexpr wchar_t kImageFile[] = L"KVMR72WaterMark1.bmp";
constexpr wchar_t kTextFile[] = L"KVMR72WaterMarkText1.bmp";

bool TemporaryFile(const wchar_t* name, wchar_t (&path)[kPathLength]) noexcept {
    wchar_t folder[kPathLength];
    const DWORD length = GetTempPathW(static_cast<DWORD>(kPathLength), folder);
    path[0] = L'\0';
    return length != 0 && length < kPathLength && JoinText(path, {folder, name});
}

Bitmap LoadBitmapFile(const wchar_t* file) noexcept {
    return Bitmap(static_cast<HBITMAP>(
        LoadImageW(nullptr, file, IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION)));
}

PixelSize SizeOf(const Bitmap& bitmap) noexcept {
    BITMAP description{};
    GetObjectW(bitmap.Get(), sizeof description, &description);
    return {description.bmWidth, description.bmHeight};
}

// A bitmap of 32 bits a pixel, rows from the bottom, and its pixels.
struct Canvas {
    Bitmap bitmap;
    std::span<std::uint8_t> pixels;
};

Canvas CreateCanvas(HDC dc, PixelSize size) noexcept {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size.width;
    info.bmiHeader.biHeight = size.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pixels = nullptr;
    Bitmap bitmap(CreateDIBSection(dc, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (!bitmap) {
        return {};
    }
    const auto bytes = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 4;
    return {std::move(bitmap), {static_cast<std::uint8_t*>(pixels), bytes}};
}

Font CreateWaterMarkFont(HDC screen, const WaterMark& mark) noexcept {
    const WaterMarkFont looks =
        FontOfWaterMark(mark.fontSize, mark.style, mark.angle, GetDeviceCaps(screen, LOGPIXELSY));
    LOGFONTW font{};
    font.lfHeight = looks.height;
    font.lfEscapement = looks.escapement;
    font.lfOrientation = looks.escapement;
    font.lfWeight = looks.weight;
    font.lfItalic = looks.italic ? TRUE : FALSE;
    font.lfCharSet = DEFAULT_CHARSET;
    font.lfClipPrecision = CLIP_LH_ANGLES;
    CopyText(font.lfFaceName, mark.face);
    return Font(CreateFontIndirectW(&font));
}

constexpr PixelSize kTextImageSize = {kTextImageSide, kTextImageSide};

// The text on white, its centre on the picture's, made as pale as it is to print. Empty when the system lacks
// something.
Canvas RenderText(const WaterMark& mark) noexcept {
    const MemoryDc dc(CreateCompatibleDC(nullptr));
    Canvas canvas = CreateCanvas(dc.Get(), kTextImageSize);
    const Font font = CreateWaterMarkFont(dc.Get(), mark);
    if (!dc || !canvas.bitmap || !font) {
        return {};
    }
    {
        const Selection intoBitmap(dc.Get(), canvas.bitmap.Get());
        const Selection withFont(dc.Get(), font.Get());
        const int length = static_cast<int>(mark.text.size());
        SIZE extent{};
        if (!intoBitmap || !withFont || !PatBlt(dc.Get(), 0, 0, kTextImageSide, kTextImageSide, WHITENESS) ||
            !GetTextExtentPoint32W(dc.Get(), mark.text.c_str(), length, &extent)) {
            return {};
        }
        const TextStart start = TextStartPoint(mark.angle, {extent.cx, extent.cy});
        SetTextAlign(dc.Get(), TA_BASELINE);
        SetBkMode(dc.Get(), OPAQUE);
        if (!TextOutW(dc.Get(), start.x, start.y, mark.text.c_str(), length)) {
            return {};
        }
        GdiFlush();
    }
    Brighten(canvas.pixels, mark.brightness);
    return canvas;
}

bool WriteTextFile(const Canvas& canvas) {
    wchar_t path[kPathLength];
    if (!canvas.bitmap || !TemporaryFile(kTextFile, path)) {
        return false;
    }
    const std::vector<std::uint8_t> bytes = TextImageFile(canvas.pixels.first<kTextImageBytes>());
    const FileHandle file(
        CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file && WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

// Whether two places show the same pixels.
bool IsSameTile(const Placement& one, const Placement& other) noexcept {
    return one.width == other.width && one.height == other.height && one.imageRows == other.imageRows;
}

// Stretches a picture, if there is one, to its places in the selected bitmap. FALSE when the system fails.
bool Place(HDC target, PixelSize area, const Bitmap& picture, const WaterMark& mark) {
    if (!picture) {
        return true;
    }
    const MemoryDc source(CreateCompatibleDC(target));
    const Selection fromPicture(source.Get(), picture.Get());
    if (!fromPicture) {
        return false;
    }
    const PixelSize size = SizeOf(picture);
    // Whole pixels of the picture, as the printer's dots will show them.
    SetStretchBltMode(target, COLORONCOLOR);
    const auto places = PlaceWaterMark(area, size, mark.position, mark.size);
    const Placement* drawn = nullptr;
    return std::all_of(places.begin(), places.end(), [&](const Placement& place) {
        // A large picture takes long to stretch: further tiles are taken from the first of their size.
        if (drawn != nullptr && IsSameTile(*drawn, place)) {
            return BitBlt(target, place.left, place.top, place.width, place.height, target, drawn->left,
                          drawn->top, SRCCOPY) != FALSE;
        }
        drawn = &place;
        return StretchBlt(target, place.left, place.top, place.width, place.height, source.Get(), 0, 0,
                          size.width, place.imageRows, SRCCOPY) != FALSE;
    });
}

}  // namespace

bool WaterMarkPreview::CopiedImagePath(wchar_t (&path)[kPathLength]) noexcept {
    return TemporaryFile(kImageFile, path);
}

bool WaterMarkPreview::SaveText(const WaterMark& mark) {
    return WriteTextFile(RenderText(mark));
}

std::optional<PictureFault> WaterMarkPreview::LoadPicture(const wchar_t* file) {
    picture_.Reset();
    wchar_t copy[kPathLength];
    if (!CopiedImagePath(copy)) {
        return PictureFault::kSilent;
    }
    const std::optional<PixelSize> size = WholeBitmapSize(OpenToRead(file, FILE_SHARE_READ).Get());
    if (!size) {
        return PictureFault::kMissing;
    }
    if (IsTooBig(size->width, size->height)) {
        bitmapChanged_ = false;
        return PictureFault::kTooBig;
    }
    const BitmapFileResult result = ChangeTo24Bitmap(file, copy);
    if (result != BitmapFileResult::kConverted) {
        return result == BitmapFileResult::kCannotCreate ? PictureFault::kDenied : PictureFault::kMissing;
    }
    {
        // The system's loader believes what headers say and reads past a file's end, so it is given our own
        // copy only, once that is known to be whole. While it is open here no other sheet can replace it:
        // others may read it, but neither write it nor take it away.
        const FileHandle whole = OpenToRead(copy, FILE_SHARE_READ);
        if (WholeBitmapSize(whole.Get())) {
            picture_ = LoadBitmapFile(copy);
        }
    }
    if (!picture_) {
        return PictureFault::kMissing;
    }
    bitmapChanged_ = false;
    return std::nullopt;
}

std::optional<PictureFault> WaterMarkPreview::Render(HDC frame, PixelSize area, const WaterMark& mark) {
    Canvas canvas = CreateCanvas(frame, area);
    const MemoryDc dc(CreateCompatibleDC(frame));
    if (!canvas.bitmap || !dc) {
        return PictureFault::kSilent;
    }
    std::optional<PictureFault> fault;
    Canvas text;
    if (mark.kind == kTextWaterMark) {
        text = RenderText(mark);
        if (!WriteTextFile(text)) {
            text = {};
            fault = PictureFault::kSilent;
        }
    }
    {
        const Selection intoBitmap(dc.Get(), canvas.bitmap.Get());
        const Bitmap none;
        const Bitmap& picture = mark.kind == kTextWaterMark    ? text.bitmap
                                : mark.kind == kImageWaterMark ? picture_
                                                               : none;
        if (!intoBitmap || !PatBlt(dc.Get(), 0, 0, area.width, area.height, WHITENESS) ||
            !Place(dc.Get(), area, picture, mark)) {
            return PictureFault::kSilent;
        }
        GdiFlush();
    }
    if (mark.kind == kImageWaterMark) {
        // The same as to raise the picture's own bytes first, since stretching only picks pixels, but for
        // fewer of them; the white around it stays white.
        Brighten(canvas.pixels, mark.brightness);
    }
    drawn_ = std::move(canvas.bitmap);
    return fault;
}

std::optional<PictureFault> WaterMarkPreview::Draw(HDC frame, PixelSize area, const WaterMark& mark) {
    std::optional<PictureFault> fault;
    bool isNew = area != drawnArea_ || mark != drawnMark_;
    if (mark.kind == kImageWaterMark && bitmapChanged_ && GetTickCount64() >= nextTry_) {
        const ULONGLONG start = GetTickCount64();
        fault = LoadPicture(mark.file.c_str());
        const ULONGLONG end = GetTickCount64();
        const bool isSlow = fault && end - start >= kSlowFailure;
        nextTry_ = isSlow ? end + kPatience * (end - start) : 0;
        isNew = true;
    }
    if (isNew) {
        drawn_.Reset();
        drawnMark_.reset();
        const auto renderFault = Render(frame, area, mark);
        if (!renderFault) {
            drawnArea_ = area;
            drawnMark_ = mark;
        } else if (!fault) {
            fault = renderFault;
        }
    }
    const MemoryDc dc(CreateCompatibleDC(frame));
    const Selection fromDrawn(dc.Get(), drawn_.Get());
    if (!fromDrawn || !BitBlt(frame, 0, 0, area.width, area.height, dc.Get(), 0, 0, SRCCOPY)) {
        PatBlt(frame, 0, 0, area.width, area.height, WHITENESS);
    }
    return fault;
}
