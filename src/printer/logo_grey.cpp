#include "printer/logo_grey.h"

#include <algorithm>
#include <cstring>

#include "printer/pixel_lanes.h"

namespace {

// Levels are summed as fractions of 24 bits. Each summand is rounded by half a bit at most; weighted sums lie
// a thousandth of a level apart, so half of that keeps the three roundings from reaching the next level or
// the one before.
constexpr unsigned kShift = 24;
constexpr std::uint64_t kLevel = std::uint64_t{1} << kShift;
constexpr std::uint32_t kHalfStep = kLevel / 1000 / 2;
static_assert(kHalfStep > 3 && (255 * kLevel + kHalfStep + 3) >> 32 == 0);

constexpr std::size_t kLanes = 16;

}  // namespace

GreyTables::GreyTables(const std::array<ToneCurve, kColours>& curves, const GreyWeights& weights) noexcept {
    for (std::size_t colour = 0; colour < kColours; ++colour) {
        std::transform(curves[colour].begin(), curves[colour].end(), tables_[colour].begin(),
                       [weight = weights[colour]](std::uint8_t value) {
                           return static_cast<std::uint32_t>((kLevel * value * weight + 500) / 1000);
                       });
    }
    for (std::uint32_t& entry : tables_[0]) {
        entry += kHalfStep;
    }
}

// Bound by its five loads a pixel. So two colours come in one, and vectors gather sixteen levels for a store.
void GreyTables::GreyOfRow(const std::uint8_t* pixels, std::size_t width, std::uint8_t* grey) const noexcept {
    const auto sumOf = [this](const std::uint8_t* pixel) {
        std::uint16_t others;
        std::memcpy(&others, pixel + 1, sizeof(others));
        const std::size_t both = others;
        return tables_[0][*pixel] + tables_[1][both % 256] + tables_[2][both / 256];
    };
    const auto twoSums = [&sumOf](const std::uint8_t* pixel) {
        return _mm_cvtsi64_si128(std::int64_t{sumOf(pixel + kColours)} << 32 | sumOf(pixel));
    };
    std::size_t x = 0;
    for (; x + kLanes <= width; x += kLanes) {
        __m128i fours[4];
        UNROLL(4)
        for (__m128i& four : fours) {
            const __m128i sums = _mm_unpacklo_epi64(twoSums(pixels), twoSums(pixels + 2 * kColours));
            four = _mm_srli_epi32(sums, kShift);
            pixels += 4 * kColours;
        }
        const __m128i levels =
            _mm_packus_epi16(_mm_packs_epi32(fours[0], fours[1]), _mm_packs_epi32(fours[2], fours[3]));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(grey + x), levels);
    }
    for (; x < width; ++x, pixels += kColours) {
        grey[x] = static_cast<std::uint8_t>(sumOf(pixels) >> kShift);
    }
}

// Bound by two loads and a store a pixel.
void GreyOfRow8(const ToneCurve& curve, const std::uint8_t* pixels, std::size_t rowBytes,
                std::uint8_t* grey) noexcept {
    for (std::size_t x = 0; x < rowBytes; x += 4) {
        UNROLL(4)
        for (std::size_t i = 0; i < 4; ++i) {
            grey[x + i] = curve[pixels[x + i]];
        }
    }
}

void GreyOfRow1(const ToneCurve& curve, const std::uint8_t* pixels, std::size_t width,
                std::uint8_t* grey) noexcept {
    for (std::size_t x = 0; x < width; ++x) {
        const bool isSet = (pixels[x / 8] >> (7 - x % 8) & 1) != 0;
        grey[x] = isSet ? curve.back() : curve.front();
    }
}

std::uint32_t SumOfRow(const std::uint8_t* grey, std::size_t width) noexcept {
    const __m128i none = _mm_setzero_si128();
    __m128i first = none;
    __m128i second = none;
    std::size_t x = 0;
    for (; x + 2 * kLanes <= width; x += 2 * kLanes) {
        first = _mm_add_epi32(first, _mm_sad_epu8(LoadLanes(grey + x), none));
        second = _mm_add_epi32(second, _mm_sad_epu8(LoadLanes(grey + x + kLanes), none));
    }
    // Each has a partial sum for either half of the lanes.
    const __m128i halves = _mm_add_epi32(first, second);
    auto total =
        static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_add_epi32(halves, _mm_srli_si128(halves, 8))));
    for (; x < width; ++x) {
        total += grey[x];
    }
    return total;
}

namespace {

// Sums of bytes, lane by lane. Even and odd bytes are summed together as 16 bits, and the odd ones once more:
// what those count in the first sum is taken off at the end.
class LaneSums {
  public:
    // The sums of so many fit into 16 bits.
    static constexpr std::size_t kMostAdds = 65535 / 255;

    void Add(__m128i bytes) noexcept {
        both_ = _mm_add_epi16(both_, bytes);
        odd_ = _mm_add_epi16(odd_, _mm_srli_epi16(bytes, 8));
    }

    void Store(std::uint16_t* lanes) const noexcept {
        const __m128i even = _mm_sub_epi16(both_, _mm_slli_epi16(odd_, 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), _mm_unpacklo_epi16(even, odd_));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes + kLanes / 2), _mm_unpackhi_epi16(even, odd_));
    }

  private:
    __m128i both_ = _mm_setzero_si128();
    __m128i odd_ = _mm_setzero_si128();
};

template <typename Value>
void AddPixels(ColourSums& total, const Value* pixels, std::size_t count) noexcept {
    for (const Value* const end = pixels + count * kColours; pixels != end; pixels += kColours) {
        total[0] += pixels[0];
        total[1] += pixels[1];
        total[2] += pixels[2];
    }
}

}  // namespace

// Sixteen pixels are 48 bytes: behind them the colours stand in the same lanes again. So the lanes are
// summed, and told apart by colour before they are full.
ColourSums PlainSumsOfRow(const std::uint8_t* pixels, std::size_t width) noexcept {
    ColourSums total{};
    for (std::size_t groups = width / kLanes; groups > 0;) {
        const std::size_t count = std::min(groups, LaneSums::kMostAdds);
        groups -= count;
        LaneSums first;
        LaneSums second;
        LaneSums third;
        UNROLL(4)
        for (std::size_t i = 0; i < count; ++i, pixels += kLanes * kColours) {
            first.Add(LoadLanes(pixels));
            second.Add(LoadLanes(pixels + kLanes));
            third.Add(LoadLanes(pixels + 2 * kLanes));
        }
        std::uint16_t lanes[kLanes * kColours];
        first.Store(lanes);
        second.Store(lanes + kLanes);
        third.Store(lanes + 2 * kLanes);
        AddPixels(total, lanes, kLanes);
    }
    AddPixels(total, pixels, width % kLanes);
    return total;
}

ColourSums CurvedSumsOfRow(const ToneCurve& curve, const std::uint8_t* pixels, std::size_t width) noexcept {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::uint32_t third = 0;
    UNROLL(4)
    for (std::size_t x = 0; x < width; ++x, pixels += kColours) {
        first += curve[pixels[0]];
        second += curve[pixels[1]];
        third += curve[pixels[2]];
    }
    return {first, second, third};
}
