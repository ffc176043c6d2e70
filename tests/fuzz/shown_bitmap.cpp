// A bitmap file that the system's drawing functions will believe.
#include "devpages/shown_bitmap.h"

#include <algorithm>
#include <cstdlib>

#include "logo_input.h"

namespace {

using bitmap_file::Get16;
using bitmap_file::Get32;

}  // namespace

void FuzzShownBitmap(FuzzBytes bytes) {
    if (!IsQuick(bytes)) {
        return;
    }
    LogoBytes file(bytes.begin(), bytes.end());
    const auto shown = ShowBitmap(file);
    Require(file.size() >= bytes.size() && std::equal(bytes.begin(), bytes.end(), file.begin()),
            "a file that is shown is changed");
    Require(std::count(file.begin() + static_cast<std::ptrdiff_t>(bytes.size()), file.end(), 0) ==
                static_cast<std::ptrdiff_t>(file.size() - bytes.size()),
            "missing pixels are not 0");
    if (!shown) {
        Require(file.size() == bytes.size(), "a file that is not shown grows");
        return;
    }
    Require(shown->pixelsAt <= bytes.size(), "pixels begin behind the file");
    const std::uint8_t* const info = shown->info.data();
    const auto height = static_cast<std::int32_t>(Get32(info + 8));
    const unsigned bits = Get16(info + 14);
    const std::uint32_t compression = Get32(info + 16);
    Require(Get32(info) == 40 && Get16(info + 12) == 1, "the header that is shown is another one");
    Require(shown->width > 0 && shown->width == static_cast<std::int32_t>(Get32(info + 4)) &&
                shown->height > 0 && shown->height == std::abs(height),
            "the header says another size");
    const std::uint64_t rowBytes = (static_cast<std::uint64_t>(shown->width) * bits + 31) / 32 * 4;
    Require(shown->pixelsAt + rowBytes * static_cast<std::uint64_t>(shown->height) <= file.size(),
            "pixels are shown from behind the file");
    // What the drawing functions take for granted of header and palette.
    Require(bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32,
            "pixels have a depth that none has");
    Require(compression == 0 || (compression == 3 && (bits == 16 || bits == 32)), "pixels are compressed");
    Require(bits <= 8 ? Get32(info + 32) >= 1 && Get32(info + 32) <= 1u << bits : Get32(info + 32) == 0,
            "the palette has more colours than pixels");

    LogoBytes again = file;
    const auto second = ShowBitmap(again);
    Require(second && again == file && second->info == shown->info && second->pixelsAt == shown->pixelsAt,
            "a completed file is shown otherwise");
}
