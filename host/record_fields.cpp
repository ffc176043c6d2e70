#include "record_fields.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

struct Row {
    const char* name;
    std::size_t offset;
    std::size_t size;
    FieldKind kind;
};

#define ROW(type, field, kind)                                              \
    Row {                                                                   \
#field, offsetof(type, field), sizeof(type::field), FieldKind::kind \
    }
#define FONT_1D(field, kind) ROW(BarcodeFont1D, field, kind)
#define FONT_2D(field, kind) ROW(BarcodeFont2D, field, kind)
#define RECORD(field, kind) ROW(OEMDEV, field, kind)
#define HEADER(field)                                                                          \
    Row {                                                                                      \
        "dmOEMExtra." #field, offsetof(OEMDEV, dmOEMExtra.field), sizeof(OemDevHeader::field), \
            FieldKind::kHexNumber                                                              \
    }

constexpr Row kFont1DRows[] = {
    FONT_1D(bType, kNumber),
    FONT_1D(bElementWidth, kNumber),
    FONT_1D(reserved2, kBytes),
    FONT_1D(dwElementHeight, kSignedNumber),
    FONT_1D(bHriPosition, kNumber),
    FONT_1D(bHriFont, kNumber),
    FONT_1D(reserved10, kBytes),
    FONT_1D(dwFontWidth, kSignedNumber),
    FONT_1D(dwFontHeight, kSignedNumber),
    FONT_1D(bGs1ElementWidth, kNumber),
    FONT_1D(reserved21, kBytes),
    FONT_1D(dwGs1RowHeight, kSignedNumber),
    FONT_1D(dwGs1CompositeRowHeight, kSignedNumber),
    FONT_1D(bGs1SeparatorHeight, kNumber),
    FONT_1D(bGs1Hri, kNumber),
    FONT_1D(bGs1ExpandedAi, kNumber),
    FONT_1D(reserved35, kNumber),
};

constexpr Row kFont2DRows[] = {
    FONT_2D(bType2D, kNumber),
    FONT_2D(bPdfModuleWidth, kNumber),
    FONT_2D(bPdfModuleHeight, kNumber),
    FONT_2D(bPdfColumns, kNumber),
    FONT_2D(bPdfRows, kNumber),
    FONT_2D(bPdfEccLevel, kNumber),
    FONT_2D(bGs1ElementWidth2D, kNumber),
    FONT_2D(reserved7, kNumber),
    FONT_2D(dwGs1RowHeight2D, kSignedNumber),
    FONT_2D(dwGs1CompositeRowHeight2D, kSignedNumber),
    FONT_2D(bGs1SeparatorHeight2D, kNumber),
    FONT_2D(bGs1SegmentCount, kNumber),
    FONT_2D(bGs1Hri2D, kNumber),
    FONT_2D(bGs1ExpandedAi2D, kNumber),
    FONT_2D(bQrModuleWidth, kNumber),
    FONT_2D(bQrLanguage, kNumber),
    FONT_2D(bQrModel, kNumber),
    FONT_2D(bQrEccLevel, kNumber),
};

constexpr Row kRowsBeforeFonts[] = {
    HEADER(dwSize),
    HEADER(dwSignature),
    HEADER(dwVersion),
    RECORD(dwDriverData, kSignedNumber),
    RECORD(bDocStart, kNumber),
    RECORD(bDocStartFeedToPosition, kNumber),
    RECORD(bDocStart_Cmd, kBytes),
    RECORD(bDocStart_CmdLen, kNumber),
    RECORD(bDocStart_Cashdrawer, kNumber),
    RECORD(bDocStart_CutPaper, kNumber),
    RECORD(bDocStart_Feed, kNumber),
    RECORD(bDocStart_Herald, kNumber),
    RECORD(reserved151, kNumber),
    RECORD(dwDocStart_DrawerOrHerald, kSignedNumber),
    RECORD(bDocStart_BuzzerVolume, kNumber),
    RECORD(bDocStart_Buzzer, kNumber),
    RECORD(bDocStart_Logo, kNumber),
    RECORD(bDocStart_LogoAlign, kNumber),
    RECORD(bDocStart_LogoPosition, kNumber),
    RECORD(bPageStart, kNumber),
    RECORD(bPageStartFeedToPosition, kNumber),
    RECORD(bPageStart_Cmd, kBytes),
    RECORD(bPageStart_CmdLen, kNumber),
    RECORD(bPageStart_Cashdrawer, kNumber),
    RECORD(bPageStart_CutPaper, kNumber),
    RECORD(bPageStart_Feed, kNumber),
    RECORD(bPageStart_BuzzerVolume, kNumber),
    RECORD(bPageStart_Herald, kNumber),
    RECORD(reserved297, kBytes),
    RECORD(dwPageStart_DrawerOrHerald, kSignedNumber),
    RECORD(bPageStart_Buzzer, kNumber),
    RECORD(bPageStart_Logo, kNumber),
    RECORD(bPageStart_LogoAlign, kNumber),
    RECORD(bPageStart_LogoPosition, kNumber),
    RECORD(bDocEnd, kNumber),
    RECORD(bDocEndFeedToPosition, kNumber),
    RECORD(bDocEnd_Cmd, kBytes),
    RECORD(bDocEnd_CmdLen, kNumber),
    RECORD(bDocEnd_Cashdrawer, kNumber),
    RECORD(bDocEnd_CutPaper, kNumber),
    RECORD(bDocEnd_Feed, kNumber),
    RECORD(bDocEnd_BuzzerVolume, kNumber),
    RECORD(bDocEnd_Herald, kNumber),
    RECORD(dwDocEnd_DrawerOrHerald, kSignedNumber),
    RECORD(bDocEnd_Buzzer, kNumber),
    RECORD(bDocEnd_Logo, kNumber),
    RECORD(bDocEnd_LogoAlign, kNumber),
    RECORD(bDocEnd_LogoPosition, kNumber),
    RECORD(bPageEnd, kNumber),
    RECORD(bPageEndFeedToPosition, kNumber),
    RECORD(bPageEnd_Cmd, kBytes),
    RECORD(bPageEnd_CmdLen, kNumber),
    RECORD(bPageEnd_Cashdrawer, kNumber),
    RECORD(bPageEnd_CutPaper, kNumber),
    RECORD(bPageEnd_Feed, kNumber),
    RECORD(bPageEnd_BuzzerVolume, kNumber),
    RECORD(bPageEnd_Herald, kNumber),
    RECORD(dwPageEnd_DrawerOrHerald, kSignedNumber),
    RECORD(bPageEnd_Buzzer, kNumber),
    RECORD(bPageEnd_Logo, kNumber),
    RECORD(bPageEnd_LogoAlign, kNumber),
    RECORD(bPageEnd_LogoPosition, kNumber),
};

constexpr Row kRowsBehindFonts[] = {
    RECORD(reserved932, kNumber),
    RECORD(reserved933, kNumber),
    RECORD(reserved934, kBytes),
    RECORD(reserved966, kBytes),
    RECORD(bPrintAsImage, kNumber),
    RECORD(reserved999, kNumber),
    RECORD(WaterMarkPicName, kText),
    RECORD(iWaterMarkType, kNumber),
    RECORD(reserved1251, kNumber),
    RECORD(szWaterMarkText, kText),
    RECORD(szWaterMarkFont, kText),
    RECORD(iWaterMarkFontSize, kNumber),
    RECORD(iWaterMarkFontStyle, kNumber),
    RECORD(reserved1386, kBytes),
    RECORD(iWaterMarkAngle, kSignedNumber),
    RECORD(iWaterMarkPosition, kNumber),
    RECORD(iWaterMarkSize, kNumber),
    RECORD(iWaterMarkBrightness, kNumber),
    RECORD(iScale, kNumber),
    RECORD(bRotate180, kNumber),
    RECORD(reserved1397, kNumber),
    RECORD(szFormName, kText),
    RECORD(bZoom, kNumber),
    RECORD(LOGRecord, kNumber),
    RECORD(szLogPath, kText),
};

// The rows follow one another from `begin` to `end` without a gap.
template <std::size_t N>
constexpr bool Covers(const Row (&rows)[N], std::size_t begin, std::size_t end) {
    for (const Row& row : rows) {
        if (row.offset != begin) {
            return false;
        }
        begin += row.size;
    }
    return begin == end;
}
static_assert(Covers(kRowsBeforeFonts, 0, offsetof(OEMDEV, Barcode1D)));
static_assert(Covers(kFont1DRows, 0, sizeof(BarcodeFont1D)));
static_assert(Covers(kFont2DRows, 0, sizeof(BarcodeFont2D)));
static_assert(offsetof(OEMDEV, Barcode1D) + sizeof(OEMDEV::Barcode1D) == offsetof(OEMDEV, Barcode2D));
static_assert(offsetof(OEMDEV, Barcode2D) + sizeof(OEMDEV::Barcode2D) == offsetof(OEMDEV, reserved932));
static_assert(Covers(kRowsBehindFonts, offsetof(OEMDEV, reserved932), kOemRecordSize));

template <std::size_t N>
void AddRows(std::vector<RecordField>& fields, const Row (&rows)[N], std::size_t base = 0,
             const std::string& prefix = {}) {
    for (const Row& row : rows) {
        fields.push_back({prefix + row.name, base + row.offset, row.size, row.kind});
    }
}

std::string SlotName(const char* array, std::size_t slot) {
    return std::string(array) + "[" + std::to_string(slot) + "].";
}

std::vector<RecordField> BuildFields() {
    std::vector<RecordField> fields;
    AddRows(fields, kRowsBeforeFonts);
    for (std::size_t slot = 0; slot < std::size(OEMDEV{}.Barcode1D); ++slot) {
        AddRows(fields, kFont1DRows, offsetof(OEMDEV, Barcode1D) + slot * sizeof(BarcodeFont1D),
                SlotName("Barcode1D", slot));
    }
    for (std::size_t slot = 0; slot < std::size(OEMDEV{}.Barcode2D); ++slot) {
        AddRows(fields, kFont2DRows, offsetof(OEMDEV, Barcode2D) + slot * sizeof(BarcodeFont2D),
                SlotName("Barcode2D", slot));
    }
    AddRows(fields, kRowsBehindFonts);
    return fields;
}

std::uint32_t ReadNumber(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) {
        value = value << 8 | bytes[i];
    }
    return value;
}

void AppendHex(std::string& text, std::uint32_t value, int digits) {
    while (digits-- > 0) {
        text += "0123456789ABCDEF"[value >> 4 * digits & 0xF];
    }
}

std::string FormatBytes(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty() && bytes.back() == 0) {
        bytes = bytes.first(bytes.size() - 1);
    }
    if (bytes.empty()) {
        return "(none)";
    }
    std::string text;
    for (const std::uint8_t byte : bytes) {
        if (!text.empty()) {
            text += ' ';
        }
        AppendHex(text, byte, 2);
    }
    return text;
}

bool IsSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit < 0xE000;
}

// Up to the terminator or the field's end. Control characters and halves of pairs, which only broken records
// hold, show as \u and four digits.
std::string FormatText(std::span<const std::uint8_t> bytes) {
    const auto unit_at = [bytes](std::size_t i) { return ReadNumber(bytes.subspan(2 * i, 2)); };
    const std::size_t units = bytes.size() / 2;
    std::string text = "\"";
    for (std::size_t i = 0; i < units && unit_at(i) != 0; ++i) {
        std::uint32_t code = unit_at(i);
        if (code < 0xDC00 && IsSurrogate(code) && i + 1 < units && unit_at(i + 1) >= 0xDC00 &&
            IsSurrogate(unit_at(i + 1))) {
            code = 0x10000 + ((code - 0xD800) << 10) + (unit_at(++i) - 0xDC00);
        }
        const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
        const bool is_control = code < 0x20 || (code >= 0x7F && code < 0xA0);
        if (is_control || IsSurrogate(code)) {
            text += "\\u";
            AppendHex(text, code, 4);
        } else if (code < 0x80) {
            append(code);
        } else if (code < 0x800) {
            append(0xC0 | code >> 6);
            append(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            append(0xE0 | code >> 12);
            append(0x80 | (code >> 6 & 0x3F));
            append(0x80 | (code & 0x3F));
        } else {
            append(0xF0 | code >> 18);
            append(0x80 | (code >> 12 & 0x3F));
            append(0x80 | (code >> 6 & 0x3F));
            append(0x80 | (code & 0x3F));
        }
    }
    return text + '"';
}

}  // namespace

const std::vector<RecordField>& RecordFields() {
    static const std::vector<RecordField> fields = BuildFields();
    return fields;
}

std::string FormatField(const RecordField& field, RecordBytes record) {
    const auto bytes = record.subspan(field.offset, field.size);
    switch (field.kind) {
        case FieldKind::kNumber:
            return std::to_string(ReadNumber(bytes));
        case FieldKind::kSignedNumber:
            return std::to_string(static_cast<std::int32_t>(ReadNumber(bytes)));
        case FieldKind::kHexNumber: {
            std::string text = "0x";
            AppendHex(text, ReadNumber(bytes), 8);
            return text;
        }
        case FieldKind::kBytes:
            return FormatBytes(bytes);
        case FieldKind::kText:
            return FormatText(bytes);
    }
    return {};
}

std::vector<FieldChange> CompareRecords(RecordBytes before, RecordBytes after) {
    std::vector<FieldChange> changes;
    for (const RecordField& field : RecordFields()) {
        const auto old_bytes = before.subspan(field.offset, field.size);
        const auto new_bytes = after.subspan(field.offset, field.size);
        if (!std::equal(old_bytes.begin(), old_bytes.end(), new_bytes.begin())) {
            changes.push_back({field.name, FormatField(field, before), FormatField(field, after)});
        }
    }
    return changes;
}
