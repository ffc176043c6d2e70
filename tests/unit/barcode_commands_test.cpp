// Test prints of barcodes: every type's pieces byte for byte, and which data each type lets through.
#include "printer/barcode_commands.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <string>
#include <string_view>

#include "platform_recorder.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes kZero = {0x00};
const Bytes kFinish = {0x0A, 0x1D, 0x56, 0x42, 0x00};

Bytes BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes RunningBytes(std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

// Values that differ from each other, from what is fixed in the commands, and from those of the other fonts.
// Reserved bytes are set too: none is sent.
BarcodeFont1D Font1D(std::uint8_t type) {
    BarcodeFont1D font;
    std::memset(&font, 0xEE, sizeof font);
    font.bType = type;
    font.bElementWidth = 0x21;
    font.dwElementHeight = 0x01020322;
    font.bHriPosition = 3;
    font.bHriFont = 1;
    font.dwFontWidth = 0x23;
    font.dwFontHeight = 0x24;
    font.bGs1ElementWidth = 0x25;
    font.dwGs1RowHeight = 0x01020326;
    font.dwGs1CompositeRowHeight = 0x01020327;
    font.bGs1SeparatorHeight = 0x28;
    font.bGs1Hri = 0x29;
    font.bGs1ExpandedAi = 0x2A;
    return font;
}

BarcodeFont2D Font2D(std::uint8_t type) {
    BarcodeFont2D font;
    std::memset(&font, 0xEE, sizeof font);
    font.bType2D = type;
    font.bPdfModuleWidth = 0x31;
    font.bPdfModuleHeight = 0x32;
    font.bPdfColumns = 0x33;
    font.bPdfRows = 0x34;
    font.bPdfEccLevel = 0x35;
    font.bGs1ElementWidth2D = 0x36;
    font.dwGs1RowHeight2D = 0x01020337;
    font.dwGs1CompositeRowHeight2D = 0x01020338;
    font.bGs1SeparatorHeight2D = 0x39;
    font.bGs1SegmentCount = 0x3A;
    font.bGs1Hri2D = 0x3B;
    font.bGs1ExpandedAi2D = 0x3C;
    font.bQrModuleWidth = 0x3D;
    font.bQrLanguage = 0x3E;
    font.bQrModel = 0x3F;
    font.bQrEccLevel = 2;
    return font;
}

// The pieces before the data.
struct Commands {
    const char* name;
    const char* sample;
    CommandPieces pieces;
};

const std::vector<Commands>& Commands1D() {
    static const std::vector<Commands> commands = {
        {"UPC-A",
         "123456789012",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 0}}},
        {"UPC-E",
         "023456789012",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 1}}},
        {"EAN8",
         "12345678",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 3}}},
        {"EAN13",
         "1234567890123",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 2}}},
        {"Code39",
         "123ABC*",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 4}}},
        {"ITF",
         "123456789",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 5}}},
        {"Codabar",
         "A123456789A",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 6}}},
        {"Code93",
         "123ABC",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 0x48},
          {0x00},
          {0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 0x48},
          {6}}},
        {"Code128",
         "{A1234",
         {{0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 0x49},
          {0x00},
          {0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 0x49},
          {6}}},
        {"GS1 DataBar Omnidirectional",
         "01234567890123",
         {{0x1D, 0x66, 0, 0x1D, 0x48, 0, 0x1D, 0x73, 1, 0x25, 0x26, 0x27, 0x28, 0x02, 0x29, 0x2A, 0x1D, 0x6B,
           0x0D}}},
        {"GS1 DataBar Truncated",
         "01234567890123",
         {{0x1D, 0x66, 0, 0x1D, 0x48, 0, 0x1D, 0x73, 2, 0x25, 0x26, 0x27, 0x28, 0x02, 0x29, 0x2A, 0x1D, 0x6B,
           0x0D}}},
        {"GS1 DataBar Limited",
         "01234567890123",
         {{0x1D, 0x66, 0, 0x1D, 0x48, 0, 0x1D, 0x73, 5, 0x25, 0x26, 0x27, 0x28, 0x02, 0x29, 0x2A, 0x1D, 0x6B,
           0x0D}}},
        {"GS1 DataBar Expanded",
         "01234567890123",
         {{0x1D, 0x66, 0, 0x1D, 0x48, 0, 0x1D, 0x73, 6, 0x25, 0x26, 0x27, 0x28, 0x02, 0x29, 0x2A, 0x1D, 0x6B,
           0x0D}}},
    };
    return commands;
}

const std::vector<Commands>& Commands2D() {
    static const std::vector<Commands> commands = {
        {"PDF417",
         "01234567890123",
         {{0x1D, 0x70, 1, 1, 0x34, 0x33, 0x31, 0x32, 0x1D, 0x71, 0x35, 0x1D, 0x6B, 0x0A}}},
        {"GS1 DataBar Stacked",
         "01234567890123",
         {{0x1D, 0x66, 0, 0x1D, 0x48, 0, 0x1D, 0x73, 3, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x1D, 0x6B,
           0x0D}}},
        {"GS1 DataBar Stacked Omnidirectional",
         "01234567890123",
         {{0x1D, 0x66, 0, 0x1D, 0x48, 0, 0x1D, 0x73, 4, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x1D, 0x6B,
           0x0D}}},
        {"GS1 DataBar Expanded Stacked",
         "01234567890123",
         {{0x1D, 0x66, 0, 0x1D, 0x48, 0, 0x1D, 0x73, 7, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x1D, 0x6B,
           0x0D}}},
        {"QR Code",
         "01234567890123",
         {{0x1D, 0x6F, 0, 0x3D, 0x3E, 0x3F, 0x1D, 0x6B, 0x0B, 0x48, 0x41, 0x2C}}},
        {"Maxi Code", "01234567890123", {{0x1D, 0x71, 0, 0x1D, 0x6B, 0x0C}}},
    };
    return commands;
}

// A whole test print.
CommandPieces Print(CommandPieces commands, const Bytes& data) {
    commands.insert(commands.end(), {data, kZero, kFinish});
    return commands;
}

std::u16string Wide(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(BarcodeTypesTest, NamesAndSamples) {
    ASSERT_EQ(std::size(kBarcodeTypes1D), 13u);
    for (std::size_t i = 0; i < 13; ++i) {
        EXPECT_EQ(kBarcodeTypes1D[i].name, Wide(Commands1D()[i].name));
        EXPECT_EQ(kBarcodeTypes1D[i].sample, Wide(Commands1D()[i].sample));
    }
    ASSERT_EQ(std::size(kBarcodeNames2D), 6u);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(kBarcodeNames2D[i], Wide(Commands2D()[i].name));
        EXPECT_EQ(kBarcodeSample2D, Wide(Commands2D()[i].sample));
    }
}

TEST(BarcodeTypesTest, SampleOfEveryByte) {
    for (int type = 0; type < 256; ++type) {
        EXPECT_EQ(SampleOf(Font1D(static_cast<std::uint8_t>(type))),
                  type < 13 ? Wide(Commands1D()[static_cast<std::size_t>(type)].sample) : u"")
            << type;
    }
}

// The list has EAN8 before EAN13, the printer counts EAN13 before EAN8.
TEST(TestPrintTest, Ean8AndEan13AreCrossed) {
    EXPECT_EQ(TestPrint(Font1D(2), {})[0].back(), 3);
    EXPECT_EQ(TestPrint(Font1D(3), {})[0].back(), 2);
    Bytes eight = BytesOf("12345678");
    EXPECT_TRUE(AcceptsTestData(Font1D(2), eight));
    EXPECT_FALSE(AcceptsTestData(Font1D(3), eight));
    Bytes thirteen = BytesOf("1234567890123");
    EXPECT_FALSE(AcceptsTestData(Font1D(2), thirteen));
    EXPECT_TRUE(AcceptsTestData(Font1D(3), thirteen));
}

// The printer expects the commands of Code93 and Code128 twice: a zero length closes the first, which sets
// the HRI text; the second, from the width on, has the data.
TEST(TestPrintTest, Code93AndCode128StartTwice) {
    for (const std::uint8_t type : {std::uint8_t{7}, std::uint8_t{8}}) {
        const CommandPieces pieces = TestPrint(Font1D(type), BytesOf("{B12"));
        ASSERT_EQ(pieces.size(), 7u);
        ASSERT_EQ(pieces[0].size(), 15u);
        EXPECT_EQ(pieces[1], kZero);
        EXPECT_EQ(pieces[2], Bytes(pieces[0].begin() + 6, pieces[0].end()));
        EXPECT_EQ(pieces[3], Bytes{4});
        EXPECT_EQ(pieces[4], BytesOf("{B12"));
        EXPECT_EQ(pieces[5], kZero);
        EXPECT_EQ(pieces[6], kFinish);
    }
}

// The text of a GS1 DataBar is chosen by its own parameter. The printer expects the ordinary HRI text, font
// and position, to be off whatever the font has for the other symbologies.
TEST(TestPrintTest, DataBarsLeaveTheOrdinaryHriOff) {
    for (std::uint8_t type = 9; type < 13; ++type) {
        for (const std::uint8_t position :
             {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}}) {
            for (const std::uint8_t hriFont : {std::uint8_t{0}, std::uint8_t{1}}) {
                BarcodeFont1D font = Font1D(type);
                font.bHriPosition = position;
                font.bHriFont = hriFont;
                const Bytes header = TestPrint(font, {})[0];
                EXPECT_EQ(Bytes(header.begin(), header.begin() + 6), (Bytes{0x1D, 0x66, 0, 0x1D, 0x48, 0}));
            }
        }
    }
}

// The number of segments in a row goes out as it is stored, as one that only typing lets in does: 3 is too
// few for a composite symbol, 2 for the printer's own idea of one.
TEST(TestPrintTest, SegmentsAreSentAsTheyAreStored) {
    for (int segments = 0; segments < 256; ++segments) {
        BarcodeFont2D font = Font2D(3);
        font.bGs1SegmentCount = static_cast<std::uint8_t>(segments);
        EXPECT_EQ(TestPrint(font, {})[0][13], segments);
    }
}

TEST(TestPrintTest, Every1DTypeWithItsSample) {
    for (std::uint8_t type = 0; type < 13; ++type) {
        const Commands& commands = Commands1D()[type];
        Bytes data = BytesOf(commands.sample);
        EXPECT_TRUE(AcceptsTestData(Font1D(type), data)) << commands.name;
        EXPECT_EQ(data, BytesOf(commands.sample)) << commands.name;
        EXPECT_EQ(TestPrint(Font1D(type), data), Print(commands.pieces, BytesOf(commands.sample)))
            << commands.name;
    }
}

TEST(TestPrintTest, Every2DTypeWithItsSample) {
    for (std::uint8_t type = 0; type < 6; ++type) {
        const Commands& commands = Commands2D()[type];
        Bytes data = BytesOf(commands.sample);
        EXPECT_TRUE(AcceptsTestData(Font2D(type), Font1D(0), data)) << commands.name;
        EXPECT_EQ(data, BytesOf(commands.sample)) << commands.name;
        EXPECT_EQ(TestPrint(Font2D(type), data), Print(commands.pieces, BytesOf(commands.sample)))
            << commands.name;
    }
}

// Packed data goes out with its packed length: 12 and 34 are 0C and 22.
TEST(TestPrintTest, PackedCode128) {
    Bytes data = BytesOf("{C1234");
    ASSERT_TRUE(AcceptsTestData(Font1D(8), data));
    const CommandPieces expected = {
        {0x1D, 0x66, 1, 0x1D, 0x48, 3, 0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 0x49},
        {0x00},
        {0x1D, 0x77, 0x21, 0x1D, 0x68, 0x22, 0x1D, 0x6B, 0x49},
        {0x04},
        {0x7B, 0x43, 0x0C, 0x22},
        {0x00},
        {0x0A, 0x1D, 0x56, 0x42, 0x00},
    };
    EXPECT_EQ(TestPrint(Font1D(8), data), expected);
}

// The data's piece is there even when it is empty. Only Code93 and Code128 need a length that fits a byte.
TEST(TestPrintTest, DataOfAllLengths) {
    for (const std::size_t length : {0u, 1u, 255u, 256u, 400u, 800u}) {
        const Bytes data = RunningBytes(length);
        for (std::uint8_t type = 0; type < 13; ++type) {
            CommandPieces commands = Commands1D()[type].pieces;
            if (commands.size() > 1) {
                commands[3] = {static_cast<std::uint8_t>(length)};
            }
            const bool isTooLong = commands.size() > 1 && length > 255;
            EXPECT_EQ(TestPrint(Font1D(type), data), isTooLong ? CommandPieces() : Print(commands, data))
                << int{type} << " " << length;
        }
        for (std::uint8_t type = 0; type < 6; ++type) {
            EXPECT_EQ(TestPrint(Font2D(type), data), Print(Commands2D()[type].pieces, data))
                << int{type} << " " << length;
        }
    }
}

TEST(TestPrintTest, TypesThatAreInNoList) {
    const Bytes sample = BytesOf("01234567890123");
    for (int type = 0; type < 256; ++type) {
        const auto byte = static_cast<std::uint8_t>(type);
        EXPECT_EQ(TestPrint(Font1D(byte), sample).empty(), type > 12) << type;
        EXPECT_EQ(TestPrint(Font2D(byte), sample).empty(), type > 5) << type;
        for (const char* text : {"", "0", "01234567", "{A12", "0123456789012"}) {
            Bytes data = BytesOf(text);
            if (type > 12) {
                EXPECT_FALSE(AcceptsTestData(Font1D(byte), data)) << type;
            }
            for (const std::uint8_t type1D : std::initializer_list<std::uint8_t>{0, 3, 4, 255}) {
                if (type > 5) {
                    EXPECT_FALSE(AcceptsTestData(Font2D(byte), Font1D(type1D), data)) << type;
                }
            }
            EXPECT_EQ(data, BytesOf(text));
        }
    }
}

// Any font but 0 is B, a position that is not in the list is none.
TEST(TestPrintTest, HriBytesOfEveryFontAndPosition) {
    for (int value = 0; value < 256; ++value) {
        BarcodeFont1D font = Font1D(0);
        font.bHriFont = static_cast<std::uint8_t>(value);
        font.bHriPosition = static_cast<std::uint8_t>(value);
        Bytes expected = Commands1D()[0].pieces[0];
        expected[2] = value == 0 ? 0 : 1;
        expected[5] = static_cast<std::uint8_t>(value <= 3 ? value : 0);
        EXPECT_EQ(TestPrint(font, {})[0], expected) << value;
        font.bType = 8;
        expected[14] = 0x49;
        EXPECT_EQ(TestPrint(font, {})[0], expected) << value;
        font.bType = 12;
        EXPECT_EQ(TestPrint(font, {})[0], Commands1D()[12].pieces[0]) << value;
    }
}

TEST(TestPrintTest, HeightsWithoutASignSendTheirLowByte) {
    BarcodeFont1D font = Font1D(7);
    font.dwElementHeight = -2;
    font.dwGs1RowHeight = -3;
    font.dwGs1CompositeRowHeight = INT32_MIN;
    EXPECT_EQ(TestPrint(font, {})[0][11], 0xFE);
    EXPECT_EQ(TestPrint(font, {})[2][5], 0xFE);
    font.bType = 9;
    EXPECT_EQ(TestPrint(font, {})[0][10], 0xFD);
    EXPECT_EQ(TestPrint(font, {})[0][11], 0x00);
}

// Level by level in the order of the list; one that is not in it counts as the first.
TEST(TestPrintTest, QrLevels) {
    for (int level = 0; level < 256; ++level) {
        BarcodeFont2D font = Font2D(4);
        font.bQrEccLevel = static_cast<std::uint8_t>(level);
        Bytes expected = Commands2D()[4].pieces[0];
        expected[9] = level == 1 ? 0x4D : level == 2 ? 0x48 : level == 3 ? 0x51 : 0x4C;
        EXPECT_EQ(TestPrint(font, {})[0], expected) << level;
    }
}

class AcceptsTestDataTest : public PlatformTest {
  protected:
    // Whether the data is let through, and if so unchanged.
    template <typename... Fonts>
    static bool Accepts(const Bytes& data, const Fonts&... fonts) {
        Bytes copy = data;
        const bool isAccepted = AcceptsTestData(fonts..., copy);
        EXPECT_EQ(copy, data);
        return isAccepted;
    }

    // The row that the check traces as the one it goes by; none where nothing is checked.
    template <typename... Fonts>
    static std::u16string CheckedRow(const Fonts&... fonts) {
        platform_recorder::TakeLines();
        Bytes data = {'0'};
        AcceptsTestData(fonts..., data);
        const std::vector<std::u16string> lines = platform_recorder::TakeLines();
        constexpr std::u16string_view kBefore = u"UI:  CheckBarcodeData() Idex = ";
        if (lines.size() < 2 || !lines[1].starts_with(kBefore)) {
            return u"none";
        }
        return lines[1].substr(kBefore.size(), lines[1].find(u'!') - kBefore.size());
    }
};

// UPC-A and UPC-E as they stand, EAN8 by row 3 and EAN13 by row 2, Code93 and Code128 by 7 and 8, GS1 DataBar
// by its place in the list.
TEST_F(AcceptsTestDataTest, RowOfEvery1DType) {
    const char16_t* const rows[] = {u"0", u"1", u"3", u"2",  u"4",  u"5", u"6",
                                    u"7", u"8", u"9", u"10", u"11", u"12"};
    for (int type = 0; type < 256; ++type) {
        EXPECT_EQ(CheckedRow(Font1D(static_cast<std::uint8_t>(type))), type <= 12 ? rows[type] : u"none")
            << type;
    }
}

TEST_F(AcceptsTestDataTest, RowOfEvery2DTypeBesideEvery1DType) {
    const char16_t* const rows[] = {u"13", u"14", u"15", u"16", u"17", u"18"};
    for (int type1D = 0; type1D < 256; ++type1D) {
        for (int type = 0; type < 256; ++type) {
            const bool isUnchecked = type > 5 || (type >= 1 && type <= 3 && type1D > 3);
            EXPECT_EQ(CheckedRow(Font2D(static_cast<std::uint8_t>(type)),
                                 Font1D(static_cast<std::uint8_t>(type1D))),
                      isUnchecked ? u"none" : rows[type])
                << type << " beside " << type1D;
        }
    }
}

TEST_F(AcceptsTestDataTest, OneDimensionalData) {
    EXPECT_TRUE(Accepts(BytesOf("1234567"), Font1D(2)));
    EXPECT_FALSE(Accepts(BytesOf("1234567890123"), Font1D(2)));
    EXPECT_TRUE(Accepts(BytesOf("1234567890123"), Font1D(3)));
    EXPECT_FALSE(Accepts(BytesOf("12345678"), Font1D(3)));
    EXPECT_FALSE(Accepts(BytesOf("1234"), Font1D(8)));
    EXPECT_TRUE(Accepts(BytesOf("1234"), Font1D(7)));
    EXPECT_TRUE(Accepts(Bytes(40, '('), Font1D(9)));
    EXPECT_FALSE(Accepts(Bytes(41, '('), Font1D(9)));
    EXPECT_FALSE(Accepts(BytesOf("{C123"), Font1D(8)));
    for (std::uint8_t type = 0; type < 13; ++type) {
        EXPECT_FALSE(Accepts({}, Font1D(type))) << int{type};
        EXPECT_FALSE(Accepts(Bytes(400, '0'), Font1D(type))) << int{type};
    }
}

// Which 2D types take the data beside a 1D type of the first four, and beside another. The 1D font of the
// same index decides: the driver's fonts come in pairs, and where its 1D font prints digits only the 2D data
// is checked in full.
TEST_F(AcceptsTestDataTest, TwoDimensionalData) {
    struct Case {
        const char* name;
        Bytes data;
        std::string_view besideFirstFour;
        std::string_view besideOthers;
    };
    const Case cases[] = {
        {"none", {}, "", "123"},
        {"a digit", {'0'}, "012345", "012345"},
        {"40 bytes", Bytes(40, 'a'), "012345", "012345"},
        {"41 bytes", Bytes(41, 'a'), "045", "012345"},
        {"84 bytes", Bytes(84, 'a'), "045", "012345"},
        {"85 bytes", Bytes(85, 'a'), "04", "01234"},
        {"255 bytes", Bytes(255, 'a'), "04", "01234"},
        {"256 bytes", Bytes(256, 'a'), "", "123"},
        {"400 bytes", Bytes(400, 'a'), "", "123"},
        {"127 first", {127, 'a'}, "045", "012345"},
        {"128 first", {128, 'a'}, "045", "012345"},
        {"129 first", {129, 'a'}, "0", "012345"},
        {"255 first", {255, 'a'}, "0", "012345"},
        {"129 second", {'a', 129}, "045", "012345"},
        {"a control byte", {'a', 10}, "045", "012345"},
    };
    gDebugLevel = 2;
    for (const Case& each : cases) {
        for (int type1D = 0; type1D < 256; ++type1D) {
            std::string accepting;
            for (std::uint8_t type = 0; type < 6; ++type) {
                if (Accepts(each.data, Font2D(type), Font1D(static_cast<std::uint8_t>(type1D)))) {
                    accepting += static_cast<char>('0' + type);
                }
            }
            EXPECT_EQ(accepting, type1D < 4 ? each.besideFirstFour : each.besideOthers)
                << each.name << " beside " << type1D;
        }
    }
}

}  // namespace
