#include "printer/logo_halftone.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "printer/pixel_lanes.h"

namespace {

constexpr std::size_t kLanes = 16;

constexpr std::uint8_t kDitherM3[8][8] = {
    {0, 32, 8, 40, 2, 34, 10, 42},    {48, 16, 56, 24, 50, 18, 58, 26}, {12, 44, 4, 36, 14, 46, 6, 38},
    {60, 28, 52, 20, 62, 30, 54, 22}, {3, 35, 11, 43, 1, 33, 9, 41},    {51, 19, 59, 27, 49, 17, 57, 25},
    {15, 47, 7, 39, 13, 45, 5, 37},   {63, 31, 55, 23, 61, 29, 53, 21},
};

// Rows of thresholds by their entries.
template <std::size_t kRows, typename EntryOf>
constexpr std::array<Thresholds, kRows> MatrixOf(const EntryOf& entryOf) noexcept {
    std::array<Thresholds, kRows> rows{};
    for (std::size_t y = 0; y < kRows; ++y) {
        for (std::size_t x = 0; x < rows[y].size(); ++x) {
            rows[y][x] = static_cast<std::uint8_t>(entryOf(y, x));
        }
    }
    return rows;
}

// Packs a row by what `whiteOf` gives for sixteen pixels: the bit's worth in the lane of a white one, 0 in
// that of a black one. Pixels beyond the width stay black.
template <typename WhiteOf>
void PackRow(std::size_t width, std::uint8_t* bits, const WhiteOf& whiteOf) noexcept {
    const std::size_t rowBytes = PaddedWidth(width) / 8;
    std::size_t byte = 0;
    for (; byte + 8 <= rowBytes; byte += 8) {
        const std::size_t x = 8 * byte;
        const std::uint64_t white =
            PackedWorths(whiteOf(x), whiteOf(x + kLanes), whiteOf(x + 2 * kLanes), whiteOf(x + 3 * kLanes));
        std::memcpy(bits + byte, &white, sizeof(white));
    }
    if (byte < rowBytes) {
        const std::uint32_t white = PackedWorths(whiteOf(8 * byte), whiteOf(8 * byte + kLanes));
        std::memcpy(bits + byte, &white, sizeof(white));
    }
    if (width % 8 != 0) {
        bits[width / 8] = static_cast<std::uint8_t>(bits[width / 8] & (0xFF00 >> width % 8));
    }
    const std::size_t used = (width + 7) / 8;
    std::fill(bits + used, bits + rowBytes, std::uint8_t{0});
}

}  // namespace

// Both are bound by seven instructions for sixteen pixels.
void PackAtLeast(const Thresholds& thresholds, const std::uint8_t* grey, std::size_t width,
                 std::uint8_t* bits) noexcept {
    const __m128i all = _mm_set1_epi8(-1);
    // What reaches the threshold reaches the highest level when it is given what the threshold lacks of that.
    const __m128i lacking = _mm_xor_si128(LoadLanes(thresholds.data()), all);
    PackRow(width, bits, [&](std::size_t x) {
        const __m128i raised = _mm_adds_epu8(LoadLanes(grey + x), lacking);
        return _mm_and_si128(_mm_cmpeq_epi8(raised, all), BitWorths());
    });
}

void PackAbove(const Thresholds& thresholds, const std::uint8_t* grey, std::size_t width,
               std::uint8_t* bits) noexcept {
    const __m128i most = LoadLanes(thresholds.data());
    PackRow(width, bits, [&](std::size_t x) {
        const __m128i excess = _mm_subs_epu8(LoadLanes(grey + x), most);
        return _mm_andnot_si128(_mm_cmpeq_epi8(excess, _mm_setzero_si128()), BitWorths());
    });
}

const Thresholds& DitherM3AtLeast(std::size_t row) noexcept {
    static constexpr auto kRows =
        MatrixOf<8>([](std::size_t y, std::size_t x) { return 4 * kDitherM3[y][x % 8]; });
    return kRows[row % kRows.size()];
}

// A step is exceeded when its four levels are.
const Thresholds& DitherM3Above(std::size_t row) noexcept {
    static constexpr auto kRows =
        MatrixOf<8>([](std::size_t y, std::size_t x) { return 4 * kDitherM3[y][x % 8] + 3; });
    return kRows[row % kRows.size()];
}

// The smaller matrix four times, a quarter of its step apart.
const Thresholds& DitherM4(std::size_t row) noexcept {
    static constexpr auto kRows = MatrixOf<16>([](std::size_t y, std::size_t x) {
        constexpr int kQuarters[2][2] = {{0, 3}, {2, 1}};
        return 4 * kDitherM3[y % 8][x % 8] + kQuarters[y / 8][x / 8];
    });
    return kRows[row % kRows.size()];
}

namespace {

// A pixel from here on is white, and brighter than it is by so much.
constexpr int kLeastWhite = 129;
constexpr int kWhite = 255;

// An error lies between -126 (129 as white) and 128 (as black). What a pixel is given is at most the whole of
// such an error, so no sum leaves these bounds, and no error those.
constexpr int kLeastSum = kLeastWhite - kWhite;
constexpr int kMostSum = kWhite + kLeastWhite - 1;

constexpr int ErrorOf(int sum) noexcept {
    return sum >= kLeastWhite ? sum - kWhite : sum;
}

// Three eighths of the error, for each sum.
constexpr auto kCarries = [] {
    std::array<std::int8_t, kMostSum - kLeastSum + 1> carries{};
    for (int sum = kLeastSum; sum <= kMostSum; ++sum) {
        carries[static_cast<std::size_t>(sum - kLeastSum)] = static_cast<std::int8_t>(ErrorOf(sum) * 3 / 8);
    }
    return carries;
}();

// Eight sums are one vector; the margin keeps them aligned.
constexpr std::size_t kSumLanes = 8;
constexpr std::size_t kMargin = kSumLanes;

// Walks `count` pixels and adds to each what the one before it carries over.
//
// A sum waits for the one before it. So the row is walked in parts at once, each but the first as if nothing
// were carried into it; then the head of each is put right, as far as that makes a difference: mostly a few
// pixels.
template <int kStep>
void Walk(std::int16_t* sums, std::size_t count) noexcept {
    constexpr std::size_t kParts = 4;
    const std::int8_t* const carries = kCarries.data() - kLeastSum;
    const auto length = static_cast<std::ptrdiff_t>(count / kParts) * kStep;
    std::array<std::ptrdiff_t, kParts> carry{};
    for (std::ptrdiff_t x = 0; x != length; x += kStep) {
        UNROLL(4)
        for (std::size_t part = 0; part < kParts; ++part) {
            std::int16_t* const at = sums + static_cast<std::ptrdiff_t>(part) * length + x;
            const std::ptrdiff_t sum = *at + carry[part];
            *at = static_cast<std::int16_t>(sum);
            carry[part] = carries[sum];
        }
    }
    std::int16_t* at = sums + static_cast<std::ptrdiff_t>(kParts) * length;
    for (std::size_t rest = count % kParts; rest > 0; --rest, at += kStep) {
        *at = static_cast<std::int16_t>(*at + carry.back());
        carry.back() = carries[*at];
    }
    // From the second part on: what was carried (`old`) gives way to what is.
    std::ptrdiff_t now = carry[0];
    for (std::size_t part = 1; part < kParts; ++part) {
        at = sums + static_cast<std::ptrdiff_t>(part) * length;
        std::ptrdiff_t old = 0;
        std::size_t left = part + 1 < kParts ? count / kParts : count / kParts + count % kParts;
        for (; left > 0 && now != old; --left, at += kStep) {
            const std::ptrdiff_t sum = *at - old + now;
            old = carries[*at];
            *at = static_cast<std::int16_t>(sum);
            now = carries[sum];
        }
        if (now == old) {
            now = carry[part];
        }
    }
}

__m128i WhiteOf(__m128i sums) noexcept {
    return _mm_cmpgt_epi16(sums, _mm_set1_epi16(kLeastWhite - 1));
}

__m128i ErrorsOf(__m128i sums) noexcept {
    return _mm_sub_epi16(sums, _mm_and_si128(WhiteOf(sums), _mm_set1_epi16(kWhite)));
}

// Division by 2 to the power of kShift, rounded to zero, of values whose highest bits are all their sign.
template <int kShift>
__m128i Shifted(__m128i values) noexcept {
    const __m128i roundUp = _mm_srli_epi16(values, 16 - kShift);
    return _mm_srai_epi16(_mm_add_epi16(values, roundUp), kShift);
}

}  // namespace

ErrorDiffusion::ErrorDiffusion(std::size_t width)
    : width_(width), sums_(PaddedWidth(width) + 2 * kMargin), previous_(PaddedWidth(width) + 2 * kMargin) {}

// Bound by its ten instructions a pixel, since the walk is in four parts: half of them are the walk's, the
// others work on eight pixels at a time.
void ErrorDiffusion::Pack(const std::uint8_t* grey, std::uint8_t* bits) noexcept {
    std::swap(sums_, previous_);
    std::int16_t* const sums = sums_.data() + kMargin;
    const std::int16_t* const above = previous_.data() + kMargin;
    // The row above was walked from the other side: there a pixel's diagonal share comes from.
    const std::int16_t* const diagonal = isFromRight_ ? above - 1 : above + 1;
    for (std::size_t x = 0; x < width_; x += kSumLanes) {
        const __m128i errors = ErrorsOf(LoadLanes(above + x));
        const __m128i threefold = _mm_add_epi16(errors, _mm_add_epi16(errors, errors));
        const __m128i shares =
            _mm_add_epi16(Shifted<3>(threefold), Shifted<2>(ErrorsOf(LoadLanes(diagonal + x))));
        const __m128i levels = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(grey + x)),
                                                 _mm_setzero_si128());
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sums + x), _mm_add_epi16(levels, shares));
    }
    // No share comes from beyond the row's end.
    sums[width_] = 0;
    if (isFromRight_) {
        Walk<-1>(sums + width_ - 1, width_);
    } else {
        Walk<1>(sums, width_);
    }
    isFromRight_ = !isFromRight_;
    PackRow(width_, bits, [sums](std::size_t x) {
        const __m128i white =
            _mm_packs_epi16(WhiteOf(LoadLanes(sums + x)), WhiteOf(LoadLanes(sums + x + kSumLanes)));
        return _mm_and_si128(white, BitWorths());
    });
}
