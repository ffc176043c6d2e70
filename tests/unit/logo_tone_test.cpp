// Contrast and brightness: values worked out by hand, then all of them against the plain way.
#include "printer/logo_tone.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>

#include "logo_reference.h"

namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

TEST(ToneCurve, ContrastAndBrightnessOfZeroChangeNothing) {
    const ToneCurve curve = ToneCurveOf(0, 0);
    for (std::size_t value = 0; value < 256; ++value) {
        EXPECT_EQ(curve[value], value);
    }
}

TEST(ToneCurve, PositiveContrastStretches) {
    const ToneCurve curve = ToneCurveOf(50, 0);
    EXPECT_EQ(curve[0], 0);
    EXPECT_EQ(curve[50], 0);
    EXPECT_EQ(curve[51], 1);     // 1 * 255 / 155 = 1.6
    EXPECT_EQ(curve[128], 128);  // 78 * 255 / 155 = 128.3
    EXPECT_EQ(curve[204], 253);  // 154 * 255 / 155 = 253.4
    EXPECT_EQ(curve[205], 255);
    EXPECT_EQ(curve[255], 255);
}

TEST(ToneCurve, TheStrongestContrastLeaves54Steps) {
    const ToneCurve curve = ToneCurveOf(100, 0);
    EXPECT_EQ(curve[100], 0);
    EXPECT_EQ(curve[101], 4);    // 255 / 55 = 4.6
    EXPECT_EQ(curve[154], 250);  // 54 * 255 / 55 = 250.4
    EXPECT_EQ(curve[155], 255);
}

TEST(ToneCurve, NegativeContrastSqueezes) {
    const ToneCurve mild = ToneCurveOf(-50, 0);
    EXPECT_EQ(mild[0], 50);
    EXPECT_EQ(mild[128], 127);  // 128 * 155 / 255 + 50 = 127.8
    EXPECT_EQ(mild[255], 205);
    const ToneCurve strong = ToneCurveOf(-100, 0);
    EXPECT_EQ(strong[0], 100);
    EXPECT_EQ(strong[128], 127);  // 128 * 55 / 255 + 100 = 127.6
    EXPECT_EQ(strong[255], 155);
}

TEST(ToneCurve, BrightnessShiftsAndStaysInRange) {
    EXPECT_EQ(ToneCurveOf(0, 100)[20], 120);
    EXPECT_EQ(ToneCurveOf(0, 100)[155], 255);
    EXPECT_EQ(ToneCurveOf(0, 100)[156], 255);
    EXPECT_EQ(ToneCurveOf(0, -100)[100], 0);
    EXPECT_EQ(ToneCurveOf(0, -100)[99], 0);
    EXPECT_EQ(ToneCurveOf(0, -100)[101], 1);
    // After the contrast: 255 as stretched, not more, loses 10.
    EXPECT_EQ(ToneCurveOf(50, -10)[230], 245);
}

TEST(ToneCurve, IsThePlainWaysForEachPositionOfTheSliders) {
    for (int contrast = -100; contrast <= 100; ++contrast) {
        for (const int brightness : {-100, -50, -1, 0, 1, 50, 100}) {
            const ToneCurve curve = ToneCurveOf(contrast, brightness);
            for (int value = 0; value < 256; ++value) {
                ASSERT_EQ(curve[static_cast<std::size_t>(value)],
                          reference::Tone(value, contrast, brightness))
                    << value << " at " << contrast << ", " << brightness;
            }
        }
    }
}

TEST(ToneCurve, TakesAnyNumber) {
    // Nothing lies above such a contrast.
    EXPECT_EQ(ToneCurveOf(255, 0)[255], 0);
    EXPECT_EQ(ToneCurveOf(kLargest, 0)[255], 0);
    EXPECT_EQ(ToneCurveOf(0, kLargest)[0], 255);
    EXPECT_EQ(ToneCurveOf(0, kSmallest)[255], 0);
    // 255 + 2 * contrast is the sign of the slope.
    EXPECT_EQ(ToneCurveOf(kSmallest, 0)[0], 255);
    EXPECT_EQ(ToneCurveOf(kSmallest, 0)[255], 0);
    EXPECT_EQ(ToneCurveOf(kSmallest, kSmallest)[0], 0);  // 2147483648 - 2147483648
}

TEST(CentredToneCurve, TakesAnyNumber) {
    const ToneCurve most = CentredToneCurveOf(100, kLargest, 0);
    EXPECT_EQ(most[99], 0);
    EXPECT_EQ(most[100], 100);
    EXPECT_EQ(most[101], 255);
    // 1 - 4634 is as good as the other way round.
    const ToneCurve least = CentredToneCurveOf(100, kSmallest, 0);
    EXPECT_EQ(least[99], 255);
    EXPECT_EQ(least[101], 0);
    EXPECT_EQ(CentredToneCurveOf(kSmallest, 0, 0)[255], 255);
    EXPECT_EQ(CentredToneCurveOf(kSmallest, -1, 0)[255], 0);
    EXPECT_EQ(CentredToneCurveOf(kLargest, -100, kLargest)[0], 255);
}

TEST(CentredToneCurve, MultipliesTheDistanceFromTheMean) {
    const ToneCurve twice = CentredToneCurveOf(100, 10, 0);
    EXPECT_EQ(twice[100], 100);
    EXPECT_EQ(twice[101], 102);
    EXPECT_EQ(twice[50], 0);
    EXPECT_EQ(twice[49], 0);
    EXPECT_EQ(twice[177], 254);
    EXPECT_EQ(twice[178], 255);
    const ToneCurve half = CentredToneCurveOf(100, -25, 0);  // 1 - 5 / 10
    EXPECT_EQ(half[0], 50);
    EXPECT_EQ(half[99], 99);  // 99.5
    EXPECT_EQ(half[101], 100);
    EXPECT_EQ(half[255], 177);                           // 177.5
    EXPECT_EQ(CentredToneCurveOf(100, 5, 0)[111], 116);  // 100 + 11 * 1.5 = 116.5
}

TEST(CentredToneCurve, TheLeastContrastLeavesTheMean) {
    const ToneCurve curve = CentredToneCurveOf(77, -100, 0);
    EXPECT_EQ(curve[0], 77);
    EXPECT_EQ(curve[255], 77);
}

TEST(CentredToneCurve, BrightnessShiftsAndStaysInRange) {
    EXPECT_EQ(CentredToneCurveOf(100, 0, 30)[100], 130);
    EXPECT_EQ(CentredToneCurveOf(100, 0, 100)[200], 255);
    EXPECT_EQ(CentredToneCurveOf(100, 0, -100)[50], 0);
    // Contrast may leave the range for brightness to bring back: 2 * (40 - 100) + 100 = -20.
    EXPECT_EQ(CentredToneCurveOf(100, 10, 50)[40], 30);
}

TEST(CentredToneCurve, IsThePlainWaysForEachPositionOfTheSliders) {
    for (int mean = 0; mean < 256; mean += 5) {
        for (int contrast = -100; contrast <= 100; ++contrast) {
            for (const int brightness : {-100, 0, 1}) {
                const ToneCurve curve = CentredToneCurveOf(mean, contrast, brightness);
                for (int value = 0; value < 256; ++value) {
                    ASSERT_EQ(curve[static_cast<std::size_t>(value)],
                              reference::CentredTone(value, mean, contrast, brightness))
                        << value << " around " << mean << " at " << contrast << ", " << brightness;
                }
            }
        }
    }
}

}  // namespace
