// Every field of the record against the byte table that the rendering side reads it by: each of the 1976
// bytes is set on its own, and every field must show it exactly when the table says that the byte is its own.
#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "record_bytes.h"

namespace {

enum class Kind { kByte, kInt, kUnsigned, kUnit };

std::size_t WidthOf(Kind kind) {
    switch (kind) {
        case Kind::kByte:
            return 1;
        case Kind::kUnit:
            return 2;
        default:
            return 4;
    }
}

struct Field {
    std::string name;
    Kind kind;
    std::size_t offset;
    std::size_t count;          // elements, as the table has it
    std::size_t declaredBytes;  // what the structure has
    std::function<std::int64_t(const OEMDEV&, std::size_t)> read;
};

#define SCALAR(kind, offset, field)                                                                   \
    Field {                                                                                           \
#field, Kind::kind, offset, 1, sizeof(OEMDEV::field),                                         \
            [](const OEMDEV& record, std::size_t) { return static_cast<std::int64_t>(record.field); } \
    }
#define ARRAY(kind, offset, count, field)                                                                  \
    Field {                                                                                                \
#field, Kind::kind, offset, count, sizeof(OEMDEV::field),                                          \
            [](const OEMDEV& record, std::size_t i) { return static_cast<std::int64_t>(record.field[i]); } \
    }
#define FONT_1D(kind, relative, field)                                                            \
    Field {                                                                                       \
        "Barcode1D[" + std::to_string(n) + "]." #field, Kind::kind, 596 + 36 * n + (relative), 1, \
            sizeof(BarcodeFont1D::field), [n](const OEMDEV& record, std::size_t) {                \
                return static_cast<std::int64_t>(record.Barcode1D[n].field);                      \
            }                                                                                     \
    }
#define FONT_2D(kind, relative, field)                                                            \
    Field {                                                                                       \
        "Barcode2D[" + std::to_string(n) + "]." #field, Kind::kind, 884 + 24 * n + (relative), 1, \
            sizeof(BarcodeFont2D::field), [n](const OEMDEV& record, std::size_t) {                \
                return static_cast<std::int64_t>(record.Barcode2D[n].field);                      \
            }                                                                                     \
    }

std::vector<Field> AllFields() {
    std::vector<Field> fields = {
        SCALAR(kUnsigned, 0, dmOEMExtra.dwSize),
        SCALAR(kUnsigned, 4, dmOEMExtra.dwSignature),
        SCALAR(kUnsigned, 8, dmOEMExtra.dwVersion),
        SCALAR(kInt, 12, dwDriverData),

        SCALAR(kByte, 16, bDocStart),
        SCALAR(kByte, 17, bDocStartFeedToPosition),
        ARRAY(kByte, 18, 128, bDocStart_Cmd),
        SCALAR(kByte, 146, bDocStart_CmdLen),
        SCALAR(kByte, 147, bDocStart_Cashdrawer),
        SCALAR(kByte, 148, bDocStart_CutPaper),
        SCALAR(kByte, 149, bDocStart_Feed),
        SCALAR(kByte, 150, bDocStart_Herald),
        SCALAR(kInt, 152, dwDocStart_DrawerOrHerald),
        SCALAR(kByte, 156, bDocStart_BuzzerVolume),
        SCALAR(kByte, 157, bDocStart_Buzzer),
        SCALAR(kByte, 158, bDocStart_Logo),
        SCALAR(kByte, 159, bDocStart_LogoAlign),
        SCALAR(kByte, 160, bDocStart_LogoPosition),

        SCALAR(kByte, 161, bPageStart),
        SCALAR(kByte, 162, bPageStartFeedToPosition),
        ARRAY(kByte, 163, 128, bPageStart_Cmd),
        SCALAR(kByte, 291, bPageStart_CmdLen),
        SCALAR(kByte, 292, bPageStart_Cashdrawer),
        SCALAR(kByte, 293, bPageStart_CutPaper),
        SCALAR(kByte, 294, bPageStart_Feed),
        SCALAR(kByte, 295, bPageStart_BuzzerVolume),
        SCALAR(kByte, 296, bPageStart_Herald),
        SCALAR(kInt, 300, dwPageStart_DrawerOrHerald),
        SCALAR(kByte, 304, bPageStart_Buzzer),
        SCALAR(kByte, 305, bPageStart_Logo),
        SCALAR(kByte, 306, bPageStart_LogoAlign),
        SCALAR(kByte, 307, bPageStart_LogoPosition),

        SCALAR(kByte, 308, bDocEnd),
        SCALAR(kByte, 309, bDocEndFeedToPosition),
        ARRAY(kByte, 310, 128, bDocEnd_Cmd),
        SCALAR(kByte, 438, bDocEnd_CmdLen),
        SCALAR(kByte, 439, bDocEnd_Cashdrawer),
        SCALAR(kByte, 440, bDocEnd_CutPaper),
        SCALAR(kByte, 441, bDocEnd_Feed),
        SCALAR(kByte, 442, bDocEnd_BuzzerVolume),
        SCALAR(kByte, 443, bDocEnd_Herald),
        SCALAR(kInt, 444, dwDocEnd_DrawerOrHerald),
        SCALAR(kByte, 448, bDocEnd_Buzzer),
        SCALAR(kByte, 449, bDocEnd_Logo),
        SCALAR(kByte, 450, bDocEnd_LogoAlign),
        SCALAR(kByte, 451, bDocEnd_LogoPosition),

        SCALAR(kByte, 452, bPageEnd),
        SCALAR(kByte, 453, bPageEndFeedToPosition),
        ARRAY(kByte, 454, 128, bPageEnd_Cmd),
        SCALAR(kByte, 582, bPageEnd_CmdLen),
        SCALAR(kByte, 583, bPageEnd_Cashdrawer),
        SCALAR(kByte, 584, bPageEnd_CutPaper),
        SCALAR(kByte, 585, bPageEnd_Feed),
        SCALAR(kByte, 586, bPageEnd_BuzzerVolume),
        SCALAR(kByte, 587, bPageEnd_Herald),
        SCALAR(kInt, 588, dwPageEnd_DrawerOrHerald),
        SCALAR(kByte, 592, bPageEnd_Buzzer),
        SCALAR(kByte, 593, bPageEnd_Logo),
        SCALAR(kByte, 594, bPageEnd_LogoAlign),
        SCALAR(kByte, 595, bPageEnd_LogoPosition),

        SCALAR(kByte, 998, bPrintAsImage),
        ARRAY(kUnit, 1000, 125, WaterMarkPicName),
        SCALAR(kByte, 1250, iWaterMarkType),
        ARRAY(kUnit, 1252, 16, szWaterMarkText),
        ARRAY(kUnit, 1284, 50, szWaterMarkFont),
        SCALAR(kByte, 1384, iWaterMarkFontSize),
        SCALAR(kByte, 1385, iWaterMarkFontStyle),
        SCALAR(kInt, 1388, iWaterMarkAngle),
        SCALAR(kByte, 1392, iWaterMarkPosition),
        SCALAR(kByte, 1393, iWaterMarkSize),
        SCALAR(kByte, 1394, iWaterMarkBrightness),
        SCALAR(kByte, 1395, iScale),
        SCALAR(kByte, 1396, bRotate180),
        ARRAY(kUnit, 1398, 32, szFormName),
        SCALAR(kByte, 1462, bZoom),
        SCALAR(kByte, 1463, LOGRecord),
        ARRAY(kUnit, 1464, 256, szLogPath),
    };
    for (std::size_t n = 0; n < 8; ++n) {
        const Field font[] = {
            FONT_1D(kByte, 0, bType),
            FONT_1D(kByte, 1, bElementWidth),
            FONT_1D(kInt, 4, dwElementHeight),
            FONT_1D(kByte, 8, bHriPosition),
            FONT_1D(kByte, 9, bHriFont),
            FONT_1D(kInt, 12, dwFontWidth),
            FONT_1D(kInt, 16, dwFontHeight),
            FONT_1D(kByte, 20, bGs1ElementWidth),
            FONT_1D(kInt, 24, dwGs1RowHeight),
            FONT_1D(kInt, 28, dwGs1CompositeRowHeight),
            FONT_1D(kByte, 32, bGs1SeparatorHeight),
            FONT_1D(kByte, 33, bGs1Hri),
            FONT_1D(kByte, 34, bGs1ExpandedAi),
        };
        fields.insert(fields.end(), std::begin(font), std::end(font));
    }
    for (std::size_t n = 0; n < 2; ++n) {
        const Field font[] = {
            FONT_2D(kByte, 0, bType2D),
            FONT_2D(kByte, 1, bPdfModuleWidth),
            FONT_2D(kByte, 2, bPdfModuleHeight),
            FONT_2D(kByte, 3, bPdfColumns),
            FONT_2D(kByte, 4, bPdfRows),
            FONT_2D(kByte, 5, bPdfEccLevel),
            FONT_2D(kByte, 6, bGs1ElementWidth2D),
            FONT_2D(kInt, 8, dwGs1RowHeight2D),
            FONT_2D(kInt, 12, dwGs1CompositeRowHeight2D),
            FONT_2D(kByte, 16, bGs1SeparatorHeight2D),
            FONT_2D(kByte, 17, bGs1SegmentCount),
            FONT_2D(kByte, 18, bGs1Hri2D),
            FONT_2D(kByte, 19, bGs1ExpandedAi2D),
            FONT_2D(kByte, 20, bQrModuleWidth),
            FONT_2D(kByte, 21, bQrLanguage),
            FONT_2D(kByte, 22, bQrModel),
            FONT_2D(kByte, 23, bQrEccLevel),
        };
        fields.insert(fields.end(), std::begin(font), std::end(font));
    }
    return fields;
}

// What element `i` of `field` reads when only the record's byte `at` is set.
std::int64_t Expected(const Field& field, std::size_t i, std::size_t at, std::uint8_t value) {
    const std::size_t start = field.offset + i * WidthOf(field.kind);
    if (at < start || at >= start + WidthOf(field.kind)) {
        return 0;
    }
    const std::uint32_t bits = static_cast<std::uint32_t>(value) << (8 * (at - start));
    return field.kind == Kind::kInt ? std::int64_t{static_cast<std::int32_t>(bits)} : std::int64_t{bits};
}

TEST(OemdevLayoutTest, EachByteBelongsToItsFieldAlone) {
    const std::vector<Field> fields = AllFields();
    int mismatches = 0;
    for (std::size_t at = 0; at < kRecordBytes; ++at) {
        constexpr std::uint8_t kValue = 0xC5;
        RecordBytes bytes = Filled(0);
        bytes[at] = kValue;
        const OEMDEV record = RecordOf(bytes);
        for (const Field& field : fields) {
            for (std::size_t i = 0; i < field.count; ++i) {
                const std::int64_t expected = Expected(field, i, at, kValue);
                const std::int64_t actual = field.read(record, i);
                if (actual != expected && ++mismatches <= 10) {
                    ADD_FAILURE() << field.name << " element " << i << " reads " << actual << " instead of "
                                  << expected << " with byte " << at << " set";
                }
            }
        }
    }
    EXPECT_EQ(mismatches, 0);
}

TEST(OemdevLayoutTest, FieldsAreAsWideAsTheTableSays) {
    for (const Field& field : AllFields()) {
        EXPECT_EQ(field.declaredBytes, field.count * WidthOf(field.kind)) << field.name;
    }
    EXPECT_EQ(sizeof(OEMDEV), 1976u);
    EXPECT_EQ(sizeof(OEMDEV::Barcode1D), 8u * 36u);
    EXPECT_EQ(sizeof(OEMDEV::Barcode2D), 2u * 24u);
    EXPECT_EQ(sizeof(OEMDEV::dmOEMExtra), 12u);
}

TEST(OemdevLayoutTest, ReservedBytesAreTheOnlyOnesLeft) {
    std::vector<int> owners(kRecordBytes, 0);
    for (const Field& field : AllFields()) {
        for (std::size_t i = 0; i < field.count * WidthOf(field.kind); ++i) {
            ++owners.at(field.offset + i);
        }
    }
    std::vector<std::size_t> reserved = {151, 297, 298, 299};
    for (std::size_t n = 0; n < 8; ++n) {
        for (const std::size_t relative : {2u, 3u, 10u, 11u, 21u, 22u, 23u, 35u}) {
            reserved.push_back(596 + 36 * n + relative);
        }
    }
    reserved.push_back(884 + 7);
    reserved.push_back(908 + 7);
    for (std::size_t at = 932; at <= 997; ++at) {
        reserved.push_back(at);
    }
    for (const std::size_t at : {999u, 1251u, 1386u, 1387u, 1397u}) {
        reserved.push_back(at);
    }
    for (const std::size_t at : reserved) {
        ++owners.at(at);
    }
    for (std::size_t at = 0; at < kRecordBytes; ++at) {
        EXPECT_EQ(owners[at], 1) << "byte " << at;
    }
}

TEST(OemdevLayoutTest, ConstantsOfTheContract) {
    EXPECT_EQ(kOemSignature, 0x00523732u);
    EXPECT_EQ(kOemVersion, 1u);
    EXPECT_EQ(kOemRecordSize, 1976u);
    EXPECT_EQ(kCommandSize, 128u);
}

}  // namespace
