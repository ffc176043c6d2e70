// Contrast and brightness of a logo: what becomes of each value of a colour.
#pragma once

#include <array>
#include <cstdint>

using ToneCurve = std::array<std::uint8_t, 256>;

// Positive contrast stretches the values from `contrast` to 255 - `contrast` over the whole range, negative
// contrast squeezes the whole range between -`contrast` and 255 + `contrast`; brightness shifts. 0 and 0
// change nothing. The sliders give -100 to 100; no number is too large.
ToneCurve ToneCurveOf(std::int32_t contrast, std::int32_t brightness) noexcept;

// Contrast around a mean: the distance from it is multiplied.
ToneCurve CentredToneCurveOf(std::int32_t mean, std::int32_t contrast, std::int32_t brightness) noexcept;
