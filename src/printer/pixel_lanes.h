// Sixteen pixels at a time, with the vector instructions that every x86-64 has (SSE2).
#pragma once

#include <emmintrin.h>

#include <cstdint>

// Before a loop: its body is to stand there so many times. Compilers that have no such wish decide
// themselves.
#if defined(__GNUC__)
#define UNROLL_PRAGMA(text) _Pragma(#text)
#define UNROLL(times) UNROLL_PRAGMA(GCC unroll times)
#else
#define UNROLL(times)
#endif

inline __m128i LoadLanes(const void* from) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// Rows are packed with the leftmost pixel in the highest bit; the processor gathers lanes from the lowest bit
// on. So each eight lanes are turned round before.
inline __m128i TurnEights(__m128i lanes) noexcept {
    const __m128i pairs = _mm_or_si128(_mm_slli_epi16(lanes, 8), _mm_srli_epi16(lanes, 8));
    constexpr int kBackwards = _MM_SHUFFLE(0, 1, 2, 3);
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(pairs, kBackwards), kBackwards);
}

// The highest bit of each lane; the first eight lanes are the low byte.
inline std::uint32_t HighBits(__m128i lanes) noexcept {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(lanes));
}

// What each lane's bit is worth in the byte of its eight.
inline __m128i BitWorths() noexcept {
    return _mm_set1_epi64x(0x0102040810204080);
}

// The bytes of pixels in a row, 32 bits each. Each lane has its bit's worth, or nothing: a byte is the sum of
// eight.
inline __m128i SumsOfWorths(__m128i first, __m128i second) noexcept {
    const __m128i none = _mm_setzero_si128();
    return _mm_packs_epi32(_mm_sad_epu8(first, none), _mm_sad_epu8(second, none));
}

// 32 pixels as the four bytes of a row, by their worths.
inline std::uint32_t PackedWorths(__m128i first, __m128i second) noexcept {
    const __m128i sums = SumsOfWorths(first, second);
    const __m128i words = _mm_packs_epi32(sums, sums);
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
}

// 64 pixels as eight bytes.
inline std::uint64_t PackedWorths(__m128i first, __m128i second, __m128i third, __m128i fourth) noexcept {
    const __m128i words = _mm_packs_epi32(SumsOfWorths(first, second), SumsOfWorths(third, fourth));
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(words, words)));
}
