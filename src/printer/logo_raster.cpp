// Black and white:
//
//      xL xH yL yH      x bytes a row of the bitmap, y bytes a column
//      x * 8 columns    from the left, each y bytes from the top
//
// The highest bit of a byte is on top, and a set bit is printed.
//
// Grey:
//
//      1 0 xL xH yL yH  x bytes a row of one plane, y times 8 rows of planes
//      rows             from the top, each in four planes
//
// The planes are the grey level's bits from the highest on. The highest bit of a byte is on the left, and a
// set bit is dark.
#include "printer/logo_raster.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <limits>

#include "printer/logo_bitmap.h"
#include "printer/pixel_lanes.h"

namespace {

constexpr std::size_t kMostSize = std::numeric_limits<std::uint16_t>::max();

// Puts the sizes before a raster that is still to be written, behind `front`; gives its first byte.
std::uint8_t* StartRaster(std::initializer_list<std::uint8_t> front, std::size_t x, std::size_t y,
                          std::vector<std::uint8_t>& raster) {
    const auto low = [](std::size_t value) { return static_cast<std::uint8_t>(value & 0xFF); };
    const std::size_t header = front.size() + 4;
    raster.resize(header + x * y * 8);
    std::uint8_t* to = std::copy(front.begin(), front.end(), raster.data());
    for (const std::uint8_t byte : {low(x), low(x >> 8), low(y), low(y >> 8)}) {
        *to++ = byte;
    }
    return to;
}

// The row that is printed `row` rows below the picture's top.
const std::uint8_t* RowFromTop(const LogoPicture& picture, std::size_t row) noexcept {
    return picture.Row(picture.IsTopDown() ? row : picture.Rows() - 1 - row);
}

// Rows of eight pixels, the first in the highest byte, become columns.
constexpr std::uint64_t Transposed(std::uint64_t bits) noexcept {
    std::uint64_t differ = (bits ^ bits >> 7) & 0x00AA00AA00AA00AA;
    bits ^= differ ^ differ << 7;
    differ = (bits ^ bits >> 14) & 0x0000CCCC0000CCCC;
    bits ^= differ ^ differ << 14;
    differ = (bits ^ bits >> 28) & 0x00000000F0F0F0F0;
    return bits ^ differ ^ differ << 28;
}
static_assert(Transposed(0x8000000000000001) == 0x8000000000000001 &&
              Transposed(0xFF00000000000000) == 0x8080808080808080 &&
              Transposed(0x0000000000000080) == 0x0100000000000000);

// Eight rows from the top, those above the picture empty.
class Band {
  public:
    Band(const LogoPicture& picture, std::size_t band, bool isInverted) noexcept {
        const std::size_t above = (8 - picture.Rows() % 8) % 8;
        const std::size_t empty = band == 0 ? above : 0;
        mask_ = ~std::uint64_t{0} >> 8 * empty;
        inversion_ = isInverted ? ~std::uint64_t{0} : 0;
        for (std::size_t i = 0; i < 8; ++i) {
            rows_[i] = RowFromTop(picture, i < empty ? 0 : 8 * band + i - above);
        }
    }

    // The columns of a byte of each row, as far as `used` has bits for them.
    std::uint64_t Columns(std::size_t byte, std::uint64_t used) const noexcept {
        std::uint64_t bits = 0;
        UNROLL(8)
        for (const std::uint8_t* const row : rows_) {
            bits = bits << 8 | row[byte];
        }
        return Transposed((bits ^ inversion_) & mask_ & used);
    }

  private:
    std::array<const std::uint8_t*, 8> rows_;
    std::uint64_t mask_;
    std::uint64_t inversion_;
};

}  // namespace

// Bound by gathering eight bytes from eight rows and scattering them to eight columns.
bool MonoRasterOf(std::span<const std::uint8_t> file, bool takesWhiteAndBlack,
                  std::vector<std::uint8_t>& raster) {
    const auto picture = LogoPicture::Read(file);
    const MonoPalette palette = ReadMonoPalette(file);
    const bool isInverted = palette == MonoPalette::kBlackAndWhite;
    if (!picture || picture->BitCount() != kMonoBits ||
        !(isInverted || (takesWhiteAndBlack && palette == MonoPalette::kWhiteAndBlack))) {
        return false;
    }
    const std::size_t x = picture->RowBytes();
    const std::size_t y = (picture->Rows() + 7) / 8;
    if (x > kMostSize || y > kMostSize) {
        return false;
    }
    std::uint8_t* const columns = StartRaster({}, x, y, raster);
    const std::size_t used = (picture->Width() + 7) / 8;
    constexpr std::uint64_t kAllUsed = ~std::uint64_t{0};
    const std::uint64_t usedOfLast =
        (std::uint64_t{0xFF} << (8 * used - picture->Width()) & 0xFF) * 0x0101010101010101;
    for (std::size_t i = 0; i < y; ++i) {
        const Band band(*picture, i, isInverted);
        std::size_t at = i;
        for (std::size_t byte = 0; byte < used; ++byte) {
            const std::uint64_t bits = band.Columns(byte, byte + 1 < used ? kAllUsed : usedOfLast);
            UNROLL(8)
            for (int shift = 56; shift >= 0; shift -= 8, at += y) {
                columns[at] = static_cast<std::uint8_t>(bits >> shift & 0xFF);
            }
        }
    }
    std::fill(columns + 8 * used * y, columns + 8 * x * y, std::uint8_t{0});
    return true;
}

namespace {

constexpr std::size_t kPlanes = 4;
constexpr std::size_t kLanes = 16;

// The planes' next `kBytes` bytes of sixteen levels.
template <std::size_t kBytes>
void PutPlanes(const std::uint8_t* levels, std::uint8_t* to, std::size_t planeBytes) noexcept {
    __m128i dark = TurnEights(_mm_xor_si128(LoadLanes(levels), _mm_set1_epi8(-1)));
    UNROLL(4)
    for (std::size_t plane = 0; plane < kPlanes; ++plane) {
        const std::uint32_t bits = HighBits(dark);
        std::memcpy(to + plane * planeBytes, &bits, kBytes);
        // The next bit becomes the highest.
        dark = _mm_add_epi8(dark, dark);
    }
}

}  // namespace

// Bound by the instructions that turn sixteen levels round and gather four of their bits.
bool GreyRasterOf(std::span<const std::uint8_t> file, std::vector<std::uint8_t>& raster) {
    const auto picture = LogoPicture::Read(file);
    if (!picture || picture->BitCount() != kGreyBits) {
        return false;
    }
    const std::size_t x = (picture->RowBytes() + 7) / 8;
    const std::size_t y = (picture->Rows() * kPlanes + 7) / 8;
    if (x > kMostSize || y > kMostSize) {
        return false;
    }
    std::uint8_t* planes = StartRaster({1, 0}, x, y, raster);
    // Nothing is printed beside the picture.
    constexpr std::uint8_t kWhite = 255;
    std::vector<std::uint8_t> levels((x + 1) / 2 * kLanes, kWhite);
    for (std::size_t row = 0; row < picture->Rows(); ++row, planes += kPlanes * x) {
        std::copy_n(RowFromTop(*picture, row), picture->Width(), levels.begin());
        std::size_t byte = 0;
        for (; byte + 2 <= x; byte += 2) {
            PutPlanes<2>(&levels[8 * byte], planes + byte, x);
        }
        if (byte < x) {
            PutPlanes<1>(&levels[8 * byte], planes + byte, x);
        }
    }
    // Planes come two rows at a time.
    std::fill(planes, raster.data() + raster.size(), std::uint8_t{0});
    return true;
}
