// What the Download page does with its logos: the values that come and go, each depth under each type.
#include "devpages/logo_rules.h"

#include <gtest/gtest.h>

#include <limits>

#include "printer/bitmap_headers.h"

namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

constexpr LogoType kTypes[] = {LogoType::kOriginal, LogoType::kTransformation, LogoType::kGrey};

BitmapHeaders Sized(std::int32_t width, std::int32_t height) {
    return {.type = bitmap_file::kType,
            .pixelOffset = 62,
            .width = width,
            .height = height,
            .bitCount = 1,
            .compression = 0};
}

BitmapHeaders OfDepth(unsigned type, unsigned bits) {
    return {.type = static_cast<std::uint16_t>(type),
            .pixelOffset = 0,
            .width = 8,
            .height = 8,
            .bitCount = static_cast<std::uint16_t>(bits),
            .compression = 0};
}

TEST(LogoRules, Limits) {
    EXPECT_EQ(kMaxLogos, 9u);
    EXPECT_EQ(kLogoMemory, 98304u);
    EXPECT_EQ(kMostTone, 100);
}

void ExpectSettings(const LogoSettings& settings, Halftone halftone, std::int32_t contrast,
                    std::int32_t brightness) {
    EXPECT_EQ(settings.halftone, halftone);
    EXPECT_EQ(settings.tone.contrast, contrast);
    EXPECT_EQ(settings.tone.brightness, brightness);
}

TEST(LogoRules, ALogoStartsWithoutAdjustmentAndUnderTransformationDithered) {
    ExpectSettings(LogoSettings(), Halftone::kNone, 0, 0);
    ExpectSettings(FreshSettings(LogoType::kOriginal), Halftone::kNone, 0, 0);
    ExpectSettings(FreshSettings(LogoType::kTransformation), Halftone::kDitherM3, 0, 0);
    ExpectSettings(FreshSettings(LogoType::kGrey), Halftone::kNone, 0, 0);
}

TEST(LogoRules, SettingsCountUnlessALogoIsAnOriginal) {
    const LogoSettings settings = {Halftone::kErrorDiffuse, {-100, 99}};
    ExpectSettings(EffectiveSettings(LogoType::kOriginal, settings), Halftone::kNone, 0, 0);
    ExpectSettings(EffectiveSettings(LogoType::kTransformation, settings), Halftone::kErrorDiffuse, -100, 99);
    ExpectSettings(EffectiveSettings(LogoType::kGrey, settings), Halftone::kErrorDiffuse, -100, 99);
}

TEST(LogoRules, ALogoHas1024By768PixelsAtMost) {
    EXPECT_TRUE(IsLogoSize(Sized(1024, 768)));
    EXPECT_FALSE(IsLogoSize(Sized(1025, 768)));
    EXPECT_FALSE(IsLogoSize(Sized(1025, 1)));
    EXPECT_FALSE(IsLogoSize(Sized(1024, 769)));
    EXPECT_FALSE(IsLogoSize(Sized(1, 769)));
    EXPECT_TRUE(IsLogoSize(Sized(1, 1)));
}

TEST(LogoRules, RowsCountFromEitherEnd) {
    EXPECT_TRUE(IsLogoSize(Sized(1024, -768)));
    EXPECT_FALSE(IsLogoSize(Sized(1024, -769)));
    EXPECT_FALSE(IsLogoSize(Sized(1025, -768)));
}

TEST(LogoRules, NoSizeIsBeyondTheComparison) {
    EXPECT_FALSE(IsLogoSize(Sized(kLargest, 1)));
    EXPECT_FALSE(IsLogoSize(Sized(1, kLargest)));
    EXPECT_FALSE(IsLogoSize(Sized(1, kSmallest)));
    EXPECT_FALSE(IsLogoSize(Sized(kSmallest, kSmallest)));
    // What is no picture is not too large for one.
    EXPECT_TRUE(IsLogoSize(Sized(kSmallest, 1)));
    EXPECT_TRUE(IsLogoSize(Sized(-1, -1)));
    EXPECT_TRUE(IsLogoSize(Sized(0, 0)));
}

TEST(LogoRules, WhatIsShownOfEachDepth) {
    constexpr LogoView kSource = {LogoPreviewKind::kSource, false, false};
    constexpr LogoView kMono = {LogoPreviewKind::kConverted, true, true};
    constexpr LogoView kGrey = {LogoPreviewKind::kConverted, false, true};
    constexpr LogoView kNothing = {LogoPreviewKind::kNothing, false, false};
    for (unsigned bits = 0; bits <= 64; ++bits) {
        SCOPED_TRACE(bits);
        const BitmapHeaders headers = OfDepth(19778, bits);
        EXPECT_EQ(ViewOfLogo(LogoType::kOriginal, headers), kSource);
        EXPECT_EQ(ViewOfLogo(LogoType::kTransformation, headers), bits == 8 || bits == 24 ? kMono : kSource);
        EXPECT_EQ(ViewOfLogo(LogoType::kGrey, headers),
                  bits == 1 || bits == 8 || bits == 24 ? kGrey : kNothing);
    }
}

TEST(LogoRules, WhatIsNoBitmapIsNotShown) {
    for (const unsigned type : {0u, 1u, 19777u, 19779u, 0x424Du, 0xFFFFu}) {
        for (unsigned bits = 0; bits <= 64; ++bits) {
            for (const LogoType shownAs : kTypes) {
                EXPECT_EQ(ViewOfLogo(shownAs, OfDepth(type, bits)),
                          (LogoView{LogoPreviewKind::kNothing, false, false}))
                    << type << ", " << bits;
            }
        }
    }
}

}  // namespace
