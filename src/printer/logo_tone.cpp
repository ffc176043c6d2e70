#include "printer/logo_tone.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

// Whole numbers by dropping the fraction. What is beyond every brightness stays beyond the range of a value.
template <typename Real>
std::int64_t Truncated(Real value) noexcept {
    constexpr auto kFar = static_cast<Real>(std::int64_t{1} << 40);
    return static_cast<std::int64_t>(std::clamp(value, -kFar, kFar));
}

std::uint8_t Brightened(std::int64_t value, std::int32_t brightness) noexcept {
    return static_cast<std::uint8_t>(std::clamp<std::int64_t>(value + brightness, 0, 255));
}

// Logos look as they did when each step was rounded to the precision that it has here: single where it says
// float, double otherwise.
std::int64_t Stretched(std::int64_t value, std::int64_t contrast) noexcept {
    if (value <= contrast) {
        return 0;
    }
    if (value >= 255 - contrast) {
        return 255;
    }
    const auto share = static_cast<float>(static_cast<double>(255 - 2 * contrast) / 255);
    return Truncated(static_cast<double>(value - contrast) / static_cast<double>(share));
}

std::int64_t Squeezed(std::int64_t value, std::int64_t contrast) noexcept {
    const float share = 255.0F / static_cast<float>(2 * contrast + 255);
    return Truncated(static_cast<float>(value) / share - static_cast<float>(contrast));
}

}  // namespace

ToneCurve ToneCurveOf(std::int32_t contrast, std::int32_t brightness) noexcept {
    ToneCurve curve;
    for (std::size_t i = 0; i < curve.size(); ++i) {
        const auto value = static_cast<std::int64_t>(i);
        curve[i] =
            Brightened(contrast >= 0 ? Stretched(value, contrast) : Squeezed(value, contrast), brightness);
    }
    return curve;
}

ToneCurve CentredToneCurveOf(std::int32_t mean, std::int32_t contrast, std::int32_t brightness) noexcept {
    const double change = contrast >= 0 ? contrast / 10.0 : -std::sqrt(-static_cast<double>(contrast)) / 10.0;
    const auto factor = static_cast<float>(1.0 + change);
    ToneCurve curve;
    for (std::size_t i = 0; i < curve.size(); ++i) {
        const auto distance = static_cast<float>(static_cast<std::int64_t>(i) - mean);
        curve[i] = Brightened(Truncated(static_cast<float>(mean) + distance * factor), brightness);
    }
    return curve;
}
