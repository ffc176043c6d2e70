// The numbers of barcode fonts at and around their limits, and the controls of every type.
#include "printer/barcode_fonts.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// Each byte differs from what a number could be stored as.
template <typename Font>
Font Untouched() {
    Font font;
    std::memset(&font, 0xEE, sizeof font);
    return font;
}

template <typename Font>
std::string BytesOf(const Font& font) {
    std::string bytes(sizeof font, '\0');
    std::memcpy(bytes.data(), &font, sizeof font);
    return bytes;
}

template <typename Number>
struct Expected {
    Number number;
    std::size_t offset;  // in the font's bytes
    std::size_t size;
    std::uint32_t least;
    std::uint32_t most;
    int digits;
    const char16_t* rangeText;
};

constexpr Expected<Number1D> kNumbers1D[] = {
    {Number1D::kElementWidth, 1, 1, 2, 6, 1, u"[ 2. . 6 ]"},
    {Number1D::kElementHeight, 4, 4, 1, 255, 3, u"[ 1 . . 255 ]"},
    {Number1D::kGs1ElementWidth, 20, 1, 1, 6, 1, u"[ 1 . . 6 ]"},
    {Number1D::kGs1RowHeight, 24, 4, 2, 250, 3, u"[ 2 . . 250 ]"},
    {Number1D::kGs1CompositeRowHeight, 28, 4, 1, 10, 1, u"[ 1 . . 10 ]"},
    {Number1D::kGs1SeparatorHeight, 32, 1, 1, 10, 1, u"[ 1 . . 10 ]"},
};

constexpr Expected<Number2D> kNumbers2D[] = {
    {Number2D::kPdfColumns, 3, 1, 1, 30, 0, u"[ 1. . 30 ]"},
    {Number2D::kPdfModuleWidth, 1, 1, 1, 7, 0, u"[ 1. . 7 ]"},
    {Number2D::kPdfRows, 4, 1, 3, 90, 0, u"[ 3 . . 90 ]"},
    {Number2D::kPdfModuleHeight, 2, 1, 2, 25, 0, u"[ 2 . . 25 ]"},
    {Number2D::kGs1ElementWidth, 6, 1, 1, 6, 0, nullptr},
    {Number2D::kGs1RowHeight, 8, 4, 2, 250, 0, nullptr},
    {Number2D::kGs1CompositeRowHeight, 12, 4, 1, 10, 0, nullptr},
    {Number2D::kGs1SeparatorHeight, 16, 1, 1, 10, 0, nullptr},
    {Number2D::kGs1Segments, 17, 1, 2, 20, 1, u"[ 2 . . 20 ]"},
    {Number2D::kQrModuleWidth, 20, 1, 1, 24, 2, u"[ 1 . . 24 ]"},
};

void ExpectText(const Char16* text, const char16_t* expected) {
    if (expected == nullptr) {
        EXPECT_EQ(text, nullptr);
    } else {
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(std::u16string(text), expected);
    }
}

template <typename Number>
void ExpectBox(const Expected<Number>& expected) {
    const NumberBox& box = BoxOf(expected.number);
    EXPECT_EQ(box.range.least, expected.least);
    EXPECT_EQ(box.range.most, expected.most);
    EXPECT_EQ(box.digits, expected.digits);
    ExpectText(box.rangeText, expected.rangeText);
}

// What is stored, in the font's bytes and back.
template <typename Font, typename Number>
void ExpectStored(const Expected<Number>& expected, std::uint32_t typed) {
    SCOPED_TRACE("number " + std::to_string(static_cast<int>(expected.number)) + ", typed " +
                 std::to_string(typed));
    const std::uint32_t stored = typed < expected.least  ? expected.least
                                 : typed > expected.most ? expected.most
                                                         : typed;
    std::string bytes(sizeof(Font), '\xEE');
    bytes.replace(expected.offset, expected.size, expected.size, '\0');
    bytes[expected.offset] = static_cast<char>(stored);
    if (expected.offset == 1 && sizeof(Font) == 36) {
        // The element width of a 1D font takes the width of the font along.
        bytes.replace(12, 4, std::string{static_cast<char>(stored * 8), '\0', '\0', '\0'});
    }
    Font font = Untouched<Font>();
    EXPECT_EQ(StoreNumber(font, expected.number, typed), stored);
    EXPECT_EQ(BytesOf(font), bytes);
    EXPECT_EQ(ReadNumber(font, expected.number), stored);
}

constexpr std::uint32_t kFarValues[] = {999, 0x7FFFFFFF, 0x80000000, 0xFFFFFF01, 0xFFFFFFFF};

TEST(BarcodeNumberTest, BoxesOf1DFonts) {
    ASSERT_EQ(std::size(kNumbers1D), static_cast<std::size_t>(Number1D::kCount));
    for (const auto& number : kNumbers1D) {
        ExpectBox(number);
    }
}

TEST(BarcodeNumberTest, BoxesOf2DFonts) {
    ASSERT_EQ(std::size(kNumbers2D), static_cast<std::size_t>(Number2D::kCount));
    for (const auto& number : kNumbers2D) {
        ExpectBox(number);
    }
}

TEST(BarcodeNumberTest, NumbersOf1DFontsAreBroughtIntoRange) {
    for (const auto& number : kNumbers1D) {
        for (std::uint32_t typed = 0; typed <= 520; ++typed) {
            ExpectStored<BarcodeFont1D>(number, typed);
        }
        for (const std::uint32_t typed : kFarValues) {
            ExpectStored<BarcodeFont1D>(number, typed);
        }
    }
}

TEST(BarcodeNumberTest, NumbersOf2DFontsAreBroughtIntoRange) {
    for (const auto& number : kNumbers2D) {
        for (std::uint32_t typed = 0; typed <= 520; ++typed) {
            ExpectStored<BarcodeFont2D>(number, typed);
        }
        for (const std::uint32_t typed : kFarValues) {
            ExpectStored<BarcodeFont2D>(number, typed);
        }
    }
}

// Another program may have written the record.
TEST(BarcodeNumberTest, StoredNumbersAreReadAsTheyAre) {
    BarcodeFont1D font1D = Untouched<BarcodeFont1D>();
    EXPECT_EQ(ReadNumber(font1D, Number1D::kElementWidth), 0xEEu);
    EXPECT_EQ(ReadNumber(font1D, Number1D::kElementHeight), 0xEEEEEEEEu);
    font1D.dwGs1RowHeight = -1;
    EXPECT_EQ(ReadNumber(font1D, Number1D::kGs1RowHeight), 0xFFFFFFFFu);
    BarcodeFont2D font2D = Untouched<BarcodeFont2D>();
    font2D.bGs1SegmentCount = 0;
    EXPECT_EQ(ReadNumber(font2D, Number2D::kGs1Segments), 0u);
    EXPECT_EQ(ReadNumber(font2D, Number2D::kGs1CompositeRowHeight), 0xEEEEEEEEu);
}

TEST(SegmentsTest, ArrowsFollowTheChoiceOfComposite) {
    const SegmentArrows independent = SegmentArrowsOf(false);
    EXPECT_EQ(independent.range.least, 2);
    EXPECT_EQ(independent.range.most, 20);
    ExpectText(independent.rangeText, u"[ 2 . . 20 ]");
    const SegmentArrows composite = SegmentArrowsOf(true);
    EXPECT_EQ(composite.range.least, 4);
    EXPECT_EQ(composite.range.most, 20);
    ExpectText(composite.rangeText, u"[ 4 . . 20 ]");
}

// Choosing "Composite" raises the number that is there, and no more: the choice is not stored, so a number
// that is typed later knows nothing of it.
TEST(SegmentsTest, TheLeastOfCompositeBindsTheArrowsOnly) {
    BarcodeFont2D font = Untouched<BarcodeFont2D>();
    EXPECT_EQ(StoreNumber(font, Number2D::kGs1Segments, SegmentArrowsOf(true).range.least), 4);
    EXPECT_EQ(StoreNumber(font, Number2D::kGs1Segments, 3), 3);
    EXPECT_EQ(font.bGs1SegmentCount, 3);
    EXPECT_EQ(StoreNumber(font, Number2D::kGs1Segments, 2), 2);
    EXPECT_EQ(StoreNumber(font, Number2D::kGs1Segments, 1), 2);
}

TEST(BarcodeControlsTest, ControlsOfEvery1DType) {
    for (int type = 0; type < 256; ++type) {
        BarcodeFont1D font = Untouched<BarcodeFont1D>();
        font.bType = static_cast<std::uint8_t>(type);
        EXPECT_EQ(ControlsOf(font).dataBar, type >= 9) << type;
        EXPECT_EQ(ControlsOf(font).expandedAi, type == 12) << type;
    }
}

// Text that is not printed has no font.
TEST(BarcodeControlsTest, TheHriFontNeedsAnHriPosition) {
    for (int position = 0; position < 256; ++position) {
        for (const std::uint8_t type : {std::uint8_t{0}, std::uint8_t{12}}) {
            BarcodeFont1D font = Untouched<BarcodeFont1D>();
            font.bType = type;
            font.bHriPosition = static_cast<std::uint8_t>(position);
            EXPECT_EQ(ControlsOf(font).hriFont, position != 0) << position;
        }
    }
}

TEST(BarcodeControlsTest, ControlsOfEvery2DType) {
    for (int type = 0; type < 256; ++type) {
        BarcodeFont2D font = Untouched<BarcodeFont2D>();
        font.bType2D = static_cast<std::uint8_t>(type);
        const Controls2D controls = ControlsOf(font);
        const bool isDataBar = type == 1 || type == 2 || type == 3;
        EXPECT_EQ(controls.group, isDataBar   ? Group2D::kDataBar
                                  : type == 4 ? Group2D::kQr
                                              : Group2D::kPdf417)
            << type;
        EXPECT_EQ(controls.pdf417, type <= 4) << type;
        EXPECT_EQ(controls.expandedStacked, type == 3) << type;
    }
}

TEST(BarcodeControlsTest, FixedTextsAndFirstEntries) {
    ExpectText(kFontSize2D, u"9.5");
    EXPECT_EQ(kTestDataLength, 400);
    EXPECT_EQ(kFirstGs1Hri, 1);
    EXPECT_EQ(kFirstQrModel, 1);
}

}  // namespace
