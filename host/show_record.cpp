#include "show_record.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "base/platform.h"
#include "devmode/devmode_record.h"
#include "devmode/oemdev.h"
#include "devmode/operation_settings.h"
#include "docpages/barcode_1d_texts.h"
#include "docpages/barcode_2d_texts.h"
#include "docpages/layout_page_texts.h"
#include "docpages/layout_rules.h"
#include "docpages/operation_dialog_texts.h"
#include "docpages/water_mark_layout.h"
#include "docpages/water_mark_page_texts.h"
#include "printer/barcode_commands.h"
#include "printer/barcode_fonts.h"
#include "printer/barcode_height.h"
#include "record_fields.h"
#include "utf8.h"

namespace {

using ByteSpan = std::span<const std::uint8_t>;

// A DEVMODE counts the bytes behind it in 16 bits.
constexpr std::uint32_t kLargestSize = 0xFFFF;
constexpr std::uint32_t kLargestVersion = 0xFFFF;

// More than anybody reads: a file of nothing but headers holds a million records.
constexpr std::size_t kMostTold = 100;

// The page keeps this bound beside its arrows: what can be typed is in layout_rules.h.
constexpr std::int32_t kMostScaleByArrows = 200;
// The page's own words for these, the same in all languages.
constexpr const char* kQrEccLevels[] = {"L", "M", "H", "Q"};
constexpr std::size_t kQrModels = 2;
// The language file's words; the text table's default for the last one is another text.
constexpr const char* kAlignments[] = {"Left", "Centered", "Right"};

// What is said of a value.
struct Remark {
    std::string text;
    bool isOutOfRange = false;
    std::vector<std::string> below = {};  // lines of their own
};

Remark OutOfRange(std::string text) {
    return {std::move(text), true};
}

std::string Number(std::int64_t number) {
    return std::to_string(number);
}

std::string RangeText(std::int64_t least, std::int64_t most) {
    return Number(least) + " to " + Number(most);
}

Remark NotInList(std::int64_t least, std::int64_t most) {
    return OutOfRange("not in the list (" + RangeText(least, most) +
                      "): shows as nothing selected, stays until the user chooses");
}

// `first` is the number of the list's first entry.
Remark ListText(std::uint8_t value, std::span<const TextEntry> texts, ListTexts list,
                std::uint8_t first = 0) {
    if (value < first || value - first >= static_cast<int>(list.count)) {
        return NotInList(first, first + static_cast<std::int64_t>(list.count) - 1);
    }
    return {ToUtf8(texts[list.first + value - first].english)};
}

std::string CaptionOf(std::span<const TextEntry> texts, int control) {
    const auto entry = std::ranges::find(texts, control, &TextEntry::control);
    return entry != texts.end() ? ToUtf8(entry->english) : std::string();
}

Remark CheckBox(std::uint8_t value) {
    if (value > 1) {
        return OutOfRange("neither 0 nor 1: shows as not checked");
    }
    return {value == 1 ? "on" : "off"};
}

// One of two radio buttons, where anything but 0 is the second.
Remark Either(std::int64_t value, const std::string& none, const std::string& other) {
    if (value != 0 && value != 1) {
        return OutOfRange("neither 0 nor 1: counts as " + other);
    }
    return {value == 0 ? none : other};
}

// A number that shows as the nearer end of its range, and is stored like that at `until`.
Remark InRangeOf(std::int64_t value, std::int64_t least, std::int64_t most, const std::string& meaning,
                 const std::string& until = "the box is changed") {
    if (value < least || value > most) {
        return OutOfRange("outside " + RangeText(least, most) + ": shows as " +
                          Number(std::clamp(value, least, most)) + ", stays until " + until);
    }
    return {meaning};
}

template <std::size_t N>
Remark Text(const Char16 (&field)[N], const std::string& whenEmpty) {
    const std::size_t length = FieldText(field).size();
    if (length == N) {
        return OutOfRange("without an end: counts as all " + Number(N) + " units of the field");
    }
    return {length == 0 ? whenEmpty : std::string()};
}

// Characters that order, join or hide others, and the two line ends among them: on a terminal a text with
// these could pass for another.
struct CodeRange {
    std::uint32_t first;
    std::uint32_t last;
};
constexpr CodeRange kFormatCharacters[] = {
    {0x00AD, 0x00AD},   {0x0600, 0x0605},   {0x061C, 0x061C},   {0x06DD, 0x06DD},   {0x070F, 0x070F},
    {0x0890, 0x0891},   {0x08E2, 0x08E2},   {0x180E, 0x180E},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F},   {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},   {0x110BD, 0x110BD}, {0x110CD, 0x110CD},
    {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0001, 0xE007F},
};

bool IsFormatCharacter(std::uint32_t code) {
    return std::ranges::any_of(kFormatCharacters, [code](const CodeRange& range) {
        return code >= range.first && code <= range.last;
    });
}

// A field's value with format characters as FormatField shows control characters: each unit as \u and four
// digits.
std::string ValueText(const RecordField& field, RecordBytes record) {
    std::string value = FormatField(field, record);
    if (field.kind != FieldKind::kText) {
        return value;
    }
    const std::wstring text = FromUtf8(value);
    std::wstring shown;
    for (std::size_t i = 0, units = 1; i < text.size(); i += units) {
        std::uint32_t code = text[i];
        units = IS_HIGH_SURROGATE(text[i]) ? 2 : 1;  // FormatField leaves no half of a pair
        if (units == 2) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[i + 1] - 0xDC00u);
        }
        const std::wstring character = text.substr(i, units);
        if (!IsFormatCharacter(code)) {
            shown += character;
            continue;
        }
        for (const wchar_t unit : character) {
            shown += L"\\u";
            for (int shift = 12; shift >= 0; shift -= 4) {
                shown += L"0123456789ABCDEF"[unit >> shift & 15];
            }
        }
    }
    return ToUtf8(shown);
}

// Sixteen bytes a line, with the characters that they are.
std::vector<std::string> HexView(ByteSpan bytes) {
    constexpr std::size_t kPerLine = 16;
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < bytes.size(); begin += kPerLine) {
        std::string hex;
        std::string characters;
        for (const std::uint8_t byte : bytes.subspan(begin, std::min(kPerLine, bytes.size() - begin))) {
            hex += {kDigits[byte >> 4], kDigits[byte & 15], ' '};
            characters += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
        }
        hex.resize(3 * kPerLine, ' ');
        lines.push_back({kDigits[begin >> 4 & 15], kDigits[begin & 15], ' ', ' '});
        lines.back() += hex + " " + characters;
    }
    return lines;
}

// What a rule looks at, and the bytes of the one field that it is for.
template <typename Subject>
struct Rule {
    const char* name;  // as in the record; a moment's name where the star is
    Remark (*remark)(const Subject& subject, ByteSpan field);
};

// Header

struct WholeRecord {
    OEMDEV claimed;  // as it is in the file, 0 behind its size and its header
    OEMDEV merged;   // what the plug-in makes of it
};

constexpr Rule<WholeRecord> kHeaderRules[] = {
    {"dmOEMExtra.dwSize",
     [](const WholeRecord& record, ByteSpan) -> Remark {
         const std::uint32_t size = record.claimed.dmOEMExtra.dwSize;
         if (size < kOemRecordSize) {
             return OutOfRange("of another version: the plug-in takes these " + Number(size) +
                               " bytes, and defaults behind them");
         }
         if (size > kOemRecordSize) {
             return OutOfRange("of another version: the plug-in takes the first " + Number(kOemRecordSize) +
                               " bytes");
         }
         return {Number(size) + " bytes"};
     }},
    {"dmOEMExtra.dwSignature", [](const WholeRecord&, ByteSpan) -> Remark { return {"this driver's"}; }},
    {"dmOEMExtra.dwVersion",
     [](const WholeRecord& record, ByteSpan) -> Remark {
         const std::uint32_t merged = record.merged.dmOEMExtra.dwVersion;
         if (record.claimed.dmOEMExtra.dwVersion != merged) {
             return OutOfRange("another format: becomes " + Number(merged) + " when the record is merged");
         }
         return {"format " + Number(merged)};
     }},
    {"dwDriverData",
     [](const WholeRecord& record, ByteSpan) -> Remark {
         const std::int32_t merged = record.merged.dwDriverData;
         if (record.claimed.dwDriverData != merged) {
             return OutOfRange("becomes " + Number(merged) + " when the record is merged");
         }
         return {"for the driver"};
     }},
};

// Operation

Remark OfOperationList(std::uint8_t value, ListTexts list) {
    return ListText(value, kOperationDialogTexts, list);
}

std::string OperationCaption(int control) {
    return CaptionOf(kOperationDialogTexts, control);
}

Remark OfCommand(const OperationSettings& settings, ByteSpan field) {
    const ByteSpan counted = field.first(settings.commandLength);
    const ByteSpan rest = field.subspan(settings.commandLength);
    const auto strays = std::ranges::count_if(rest, [](std::uint8_t byte) { return byte != 0; });
    Remark remark{Number(settings.commandLength) + " bytes", false, HexView(counted)};
    if (strays != 0) {
        remark.isOutOfRange = true;
        remark.text += "; bytes behind them that do not count: " + Number(strays) +
                       ", become 0 when the dialog ends with OK";
    }
    return remark;
}

constexpr Rule<OperationSettings> kOperationRules[] = {
    {"b*", [](const OperationSettings& settings, ByteSpan) { return CheckBox(settings.sendCommand); }},
    {"b*_Cmd", OfCommand},
    {"b*_CmdLen",
     [](const OperationSettings& settings, ByteSpan field) -> Remark {
         if (field[0] != settings.commandLength) {
             return OutOfRange("more than a block holds: counts as " + Number(settings.commandLength));
         }
         return {"bytes of the command"};
     }},
    {"dw*_DrawerOrHerald",
     [](const OperationSettings& settings, ByteSpan) {
         return Either(settings.drawerOrHerald, OperationCaption(IDC_OPERATION_OPEN_DRAWER),
                       OperationCaption(IDC_OPERATION_USE_HERALD));
     }},
    {"b*_Cashdrawer", [](const OperationSettings& settings,
                         ByteSpan) { return OfOperationList(settings.cashDrawer, kDrawerList); }},
    {"b*_Herald", [](const OperationSettings& settings,
                     ByteSpan) { return OfOperationList(settings.herald, kHeraldList); }},
    {"b*_Buzzer", [](const OperationSettings& settings,
                     ByteSpan) { return OfOperationList(settings.buzzer, kBuzzerList); }},
    {"b*_BuzzerVolume",
     [](const OperationSettings& settings, ByteSpan) {
         return InRangeOf(settings.buzzerVolume, 0, kMaxBuzzerVolume, "of " + Number(kMaxBuzzerVolume));
     }},
    {"b*_Feed",
     [](const OperationSettings& settings, ByteSpan) {
         return InRangeOf(settings.feed, 0, kMaxFeed, "mm", "the dialog ends with OK");
     }},
    {"b*FeedToPosition",
     [](const OperationSettings& settings, ByteSpan) { return CheckBox(settings.feedToPosition); }},
    {"b*_CutPaper", [](const OperationSettings& settings,
                       ByteSpan) { return OfOperationList(settings.cutPaper, kCutList); }},
    {"b*_Logo",
     [](const OperationSettings& settings, ByteSpan) { return OfOperationList(settings.logo, kLogoList); }},
    {"b*_LogoAlign",
     [](const OperationSettings& settings, ByteSpan) -> Remark {
         if (settings.logoAlign >= std::size(kAlignments)) {
             return OutOfRange("no button of the row shows as checked; OK in the dialog stores 2");
         }
         return {kAlignments[settings.logoAlign]};
     }},
    {"b*_LogoPosition",
     [](const OperationSettings& settings, ByteSpan) {
         return Either(settings.logoPosition, OperationCaption(IDC_OPERATION_BEFORE_CUT),
                       OperationCaption(IDC_OPERATION_AFTER_CUT));
     }},
};

struct MomentName {
    Moment moment;
    const char* name;
};
// In the order in which a job comes to them.
constexpr MomentName kMoments[] = {{Moment::kDocStart, "DocStart"},
                                   {Moment::kPageStart, "PageStart"},
                                   {Moment::kPageEnd, "PageEnd"},
                                   {Moment::kDocEnd, "DocEnd"}};

// Barcode fonts

template <auto number, typename Font>
Remark OfFontNumber(const Font& font, ByteSpan) {
    const NumberRange range = BoxOf(number).range;
    return InRangeOf(ReadNumber(font, number), range.least, range.most, "");
}

Remark OfFontWidth(const BarcodeFont1D& font, ByteSpan) {
    BarcodeFont1D stored = font;
    StoreNumber(stored, Number1D::kElementWidth, ReadNumber(font, Number1D::kElementWidth));
    if (stored.dwFontWidth != font.dwFontWidth) {
        return OutOfRange("not what the element width makes it: becomes " + Number(stored.dwFontWidth) +
                          " when that is typed");
    }
    return {"dots, eight elements"};
}

Remark OfFontHeight(const BarcodeFont1D& font, ByteSpan) {
    const std::int32_t dots = FontHeight(font);
    const std::int32_t snapped = SnappedFontHeight(dots);
    if (font.dwFontHeight != dots && font.dwFontHeight != snapped) {
        return OutOfRange("not what bars and text make it: becomes " + Number(snapped) +
                          " when one of those is changed");
    }
    const FontHeightTexts texts = TextsOfFontHeight(font.dwFontHeight);
    const auto trimmed = [](const String16& text) {
        return ToUtf8(text.substr(text.find_first_not_of(L' ')));
    };
    return {trimmed(texts.millimetres) + " mm, " + trimmed(texts.points) + " points"};
}

constexpr Rule<BarcodeFont1D> kFont1DRules[] = {
    {"bType",
     [](const BarcodeFont1D& font, ByteSpan) -> Remark {
         return font.bType < std::size(kBarcodeTypes1D)
                    ? Remark{ToUtf8(kBarcodeTypes1D[font.bType].name)}
                    : NotInList(0, static_cast<std::int64_t>(std::size(kBarcodeTypes1D)) - 1);
     }},
    {"bElementWidth", OfFontNumber<Number1D::kElementWidth, BarcodeFont1D>},
    {"dwElementHeight", OfFontNumber<Number1D::kElementHeight, BarcodeFont1D>},
    {"bHriPosition",
     [](const BarcodeFont1D& font, ByteSpan) {
         return ListText(font.bHriPosition, kBarcode1DPageTexts, kHriPositionList);
     }},
    {"bHriFont",
     [](const BarcodeFont1D& font, ByteSpan) { return Either(font.bHriFont, "Font A", "Font B"); }},
    {"dwFontWidth", OfFontWidth},
    {"dwFontHeight", OfFontHeight},
    {"bGs1ElementWidth", OfFontNumber<Number1D::kGs1ElementWidth, BarcodeFont1D>},
    {"dwGs1RowHeight", OfFontNumber<Number1D::kGs1RowHeight, BarcodeFont1D>},
    {"dwGs1CompositeRowHeight", OfFontNumber<Number1D::kGs1CompositeRowHeight, BarcodeFont1D>},
    {"bGs1SeparatorHeight", OfFontNumber<Number1D::kGs1SeparatorHeight, BarcodeFont1D>},
    {"bGs1Hri",
     [](const BarcodeFont1D& font, ByteSpan) {
         return ListText(font.bGs1Hri, kBarcode1DPageTexts, kGs1HriList1D, kFirstGs1Hri);
     }},
    {"bGs1ExpandedAi",
     [](const BarcodeFont1D& font, ByteSpan) {
         return ListText(font.bGs1ExpandedAi, kBarcode1DPageTexts, kGs1ExpandedList1D);
     }},
};

constexpr Rule<BarcodeFont2D> kFont2DRules[] = {
    {"bType2D",
     [](const BarcodeFont2D& font, ByteSpan) -> Remark {
         return font.bType2D < std::size(kBarcodeNames2D)
                    ? Remark{ToUtf8(kBarcodeNames2D[font.bType2D])}
                    : NotInList(0, static_cast<std::int64_t>(std::size(kBarcodeNames2D)) - 1);
     }},
    {"bPdfColumns", OfFontNumber<Number2D::kPdfColumns, BarcodeFont2D>},
    {"bPdfModuleWidth", OfFontNumber<Number2D::kPdfModuleWidth, BarcodeFont2D>},
    {"bPdfRows", OfFontNumber<Number2D::kPdfRows, BarcodeFont2D>},
    {"bPdfModuleHeight", OfFontNumber<Number2D::kPdfModuleHeight, BarcodeFont2D>},
    {"bPdfEccLevel", [](const BarcodeFont2D& font,
                        ByteSpan) { return ListText(font.bPdfEccLevel, kBarcode2DPageTexts, kPdfEccList); }},
    {"bGs1ElementWidth2D", OfFontNumber<Number2D::kGs1ElementWidth, BarcodeFont2D>},
    {"dwGs1RowHeight2D", OfFontNumber<Number2D::kGs1RowHeight, BarcodeFont2D>},
    {"dwGs1CompositeRowHeight2D", OfFontNumber<Number2D::kGs1CompositeRowHeight, BarcodeFont2D>},
    {"bGs1SeparatorHeight2D", OfFontNumber<Number2D::kGs1SeparatorHeight, BarcodeFont2D>},
    {"bGs1SegmentCount", OfFontNumber<Number2D::kGs1Segments, BarcodeFont2D>},
    {"bGs1Hri2D",
     [](const BarcodeFont2D& font, ByteSpan) {
         return ListText(font.bGs1Hri2D, kBarcode2DPageTexts, kGs1HriList2D, kFirstGs1Hri);
     }},
    {"bGs1ExpandedAi2D",
     [](const BarcodeFont2D& font, ByteSpan) {
         return ListText(font.bGs1ExpandedAi2D, kBarcode2DPageTexts, kGs1ExpandedList2D);
     }},
    {"bQrModuleWidth", OfFontNumber<Number2D::kQrModuleWidth, BarcodeFont2D>},
    {"bQrLanguage",
     [](const BarcodeFont2D& font, ByteSpan) {
         return ListText(font.bQrLanguage, kBarcode2DPageTexts, kQrLanguageList);
     }},
    {"bQrModel",
     [](const BarcodeFont2D& font, ByteSpan) -> Remark {
         constexpr int kLast = kFirstQrModel + static_cast<int>(kQrModels) - 1;
         return font.bQrModel < kFirstQrModel || font.bQrModel > kLast
                    ? NotInList(kFirstQrModel, kLast)
                    : Remark{"model " + Number(font.bQrModel)};
     }},
    {"bQrEccLevel",
     [](const BarcodeFont2D& font, ByteSpan) -> Remark {
         return font.bQrEccLevel < std::size(kQrEccLevels)
                    ? Remark{kQrEccLevels[font.bQrEccLevel]}
                    : NotInList(0, static_cast<std::int64_t>(std::size(kQrEccLevels)) - 1);
     }},
};

// Main and Water Mark

// What the Main page shows of a record when it opens.
LayoutAnswer ShownByMain(OEMDEV record) {
    bool waterMarkRemoved = false;
    return FollowLayoutAction(record, waterMarkRemoved, LayoutAction::kMainOpened);
}

constexpr Rule<OEMDEV> kMainRules[] = {
    {"bPrintAsImage",
     [](const OEMDEV& record, ByteSpan) -> Remark {
         if (record.bPrintAsImage > 1) {
             return OutOfRange("neither 0 nor 1: shows as No");
         }
         std::string text = record.bPrintAsImage == 1 ? "Yes" : "No";
         if (ShownByMain(record).radiosEnabled == false) {
             text += ", cannot be chosen: zoom, rotation or a watermark prints as image";
         }
         return {text};
     }},
    {"bZoom",
     [](const OEMDEV& record, ByteSpan) {
         Remark remark = CheckBox(record.bZoom);
         if (remark.isOutOfRange) {
             remark.text += ", prints as image all the same";
         }
         return remark;
     }},
    {"iScale",
     [](const OEMDEV& record, ByteSpan) {
         const std::int32_t mostTyped = ClampScale(INT32_MAX);
         return InRangeOf(record.iScale, ClampScale(0), kMostScaleByArrows,
                          record.iScale > mostTyped ? "%, which only the arrows reach" : "%",
                          "the box is left");
     }},
    {"bRotate180",
     [](const OEMDEV& record, ByteSpan) -> Remark {
         if (record.bRotate180 > 1) {
             return OutOfRange("neither 0 nor 1: shows as " + CaptionOf(kLayoutPageTexts, IDC_MAIN_NORMAL) +
                               ", becomes 0 when the page is applied");
         }
         return {CaptionOf(kLayoutPageTexts, record.bRotate180 == 1 ? IDC_MAIN_ROTATE_180 : IDC_MAIN_NORMAL)};
     }},
    {"szFormName",
     [](const OEMDEV& record, ByteSpan) { return Text(record.szFormName, "the paper size of the driver"); }},
    {"LOGRecord", [](const OEMDEV& record, ByteSpan) { return CheckBox(record.LOGRecord); }},
    {"szLogPath", [](const OEMDEV& record, ByteSpan) { return Text(record.szLogPath, "no folder"); }},
};

Remark OfWaterMarkKind(const OEMDEV& record, ByteSpan) {
    constexpr int kKinds[] = {IDC_WATERMARK_USE_NONE, IDC_WATERMARK_USE_IMAGE, IDC_WATERMARK_USE_TEXT};
    if (record.iWaterMarkType >= std::size(kKinds)) {
        return OutOfRange("not in the list (0 to 2): no kind shows as chosen, prints as image all the same");
    }
    return {CaptionOf(kWaterMarkPageTexts, kKinds[record.iWaterMarkType])};
}

Remark OfWaterMarkSize(const OEMDEV& record, ByteSpan) {
    const std::uint8_t shown =
        SizeAtPosition(record.iWaterMarkPosition, std::min(record.iWaterMarkSize, kMaxWaterMarkSize));
    if (shown != record.iWaterMarkSize) {
        const std::uint8_t least = SizeAtPosition(record.iWaterMarkPosition, 0);
        return OutOfRange("outside " + RangeText(least, kMaxWaterMarkSize) +
                          " at this position: is drawn as " + Number(shown));
    }
    return {"% of the page's width"};
}

constexpr Rule<OEMDEV> kWaterMarkRules[] = {
    {"iWaterMarkType", OfWaterMarkKind},
    {"WaterMarkPicName",
     [](const OEMDEV& record, ByteSpan) { return Text(record.WaterMarkPicName, "no bitmap"); }},
    {"szWaterMarkText",
     [](const OEMDEV& record, ByteSpan) { return Text(record.szWaterMarkText, "the list's first text"); }},
    {"szWaterMarkFont",
     [](const OEMDEV& record, ByteSpan) { return Text(record.szWaterMarkFont, "the list's first font"); }},
    {"iWaterMarkFontStyle",
     [](const OEMDEV& record, ByteSpan) {
         return ListText(record.iWaterMarkFontStyle, kWaterMarkPageTexts, kFontStyleList);
     }},
    {"iWaterMarkFontSize",
     [](const OEMDEV& record, ByteSpan) {
         return InRangeOf(record.iWaterMarkFontSize, kMinFontSize, kMaxFontSize, "points");
     }},
    {"iWaterMarkAngle",
     [](const OEMDEV& record, ByteSpan) {
         return InRangeOf(record.iWaterMarkAngle, 0, kMaxAngle, "degrees", "a slider is moved");
     }},
    {"iWaterMarkPosition",
     [](const OEMDEV& record, ByteSpan) {
         return ListText(record.iWaterMarkPosition, kWaterMarkPageTexts, kPositionList);
     }},
    {"iWaterMarkSize", OfWaterMarkSize},
    {"iWaterMarkBrightness", [](const OEMDEV&, ByteSpan) -> Remark { return {"of 255, which is white"}; }},
};

// The text

struct Line {
    std::string name;
    std::string value;
    Remark remark;
};

class Description {
  public:
    explicit Description(RecordBytes record) : record_(record) {}

    // `prefix` is an array's slot, `moment` stands for the star of the rules' names.
    template <typename Subject, std::size_t N>
    void Add(const std::string& title, const Rule<Subject> (&rules)[N], const Subject& subject,
             const std::string& prefix = {}, const char* moment = "") {
        std::vector<Line> lines;
        for (const Rule<Subject>& rule : rules) {
            std::string name = prefix + rule.name;
            if (const std::size_t star = name.find('*'); star != std::string::npos) {
                name.replace(star, 1, moment);
            }
            const RecordField& field = *std::ranges::find(RecordFields(), name, &RecordField::name);
            Remark remark = rule.remark(subject, record_.subspan(field.offset, field.size));
            // Command bytes are in the hexadecimal view below.
            const std::string value = remark.below.empty() ? ValueText(field, record_) : std::string();
            lines.push_back({name.substr(prefix.size()), value, std::move(remark)});
        }
        Write(title, lines);
    }

    // Bytes that nothing reads.
    void AddReserved() {
        std::vector<Line> lines;
        for (const RecordField& field : RecordFields()) {
            if (field.name.find("reserved") != std::string::npos) {
                lines.push_back({field.name, FormatField(field, record_), {}});
            }
        }
        Write("Reserved, read by nobody", lines);
    }

    std::string Finish() {
        text_ += outOfRange_ == 0 ? std::string("\nNothing is out of range.\n")
                                  : "\nOut of range, marked with \"!\": " + Number(outOfRange_) + "\n";
        return std::move(text_);
    }

  private:
    void Write(const std::string& title, const std::vector<Line>& lines) {
        std::size_t nameWidth = 0;
        std::size_t valueWidth = 0;
        for (const Line& line : lines) {
            nameWidth = std::max(nameWidth, line.name.size());
            // Texts stand at the lines' ends as a rule, and may be long.
            if (!line.value.starts_with('"')) {
                valueWidth = std::max(valueWidth, line.value.size());
            }
        }
        text_ += "\n" + title + "\n";
        for (const Line& line : lines) {
            std::string row = line.remark.isOutOfRange ? "! " : "  ";
            row += line.name + std::string(nameWidth - line.name.size() + 2, ' ') + line.value;
            row.append(valueWidth - std::min(valueWidth, line.value.size()) + 2, ' ');
            row += line.remark.text;
            row.resize(row.find_last_not_of(' ') + 1);
            text_ += row + "\n";
            for (const std::string& below : line.remark.below) {
                text_ += std::string(nameWidth + 4, ' ') + below + "\n";
            }
            outOfRange_ += line.remark.isOutOfRange ? 1 : 0;
        }
    }

    RecordBytes record_;
    std::string text_;
    int outOfRange_ = 0;
};

OemDevHeader HeaderAt(ByteSpan file, std::size_t offset) {
    OemDevHeader header;
    std::memcpy(&header, file.data() + offset, sizeof header);
    return header;
}

// How many bytes of a record the plug-in reads.
std::size_t ReadSize(const OemDevHeader& header) {
    return std::min(header.dwSize, kOemRecordSize);
}

WholeRecord ReadRecord(ByteSpan file, std::size_t offset) {
    WholeRecord record = {};
    const OemDevHeader header = HeaderAt(file, offset);
    std::memcpy(&record.claimed, file.data() + offset, ReadSize(header));
    record.claimed.dmOEMExtra = header;
    // What conversion and validation trace is for the plug-in's own trace.
    gDebugLevel = static_cast<std::int32_t>(Severity::kError);
    SetDefaultOEMDev(&record.merged);
    ConvertOEMDevmode(&record.claimed, &record.merged);
    ValidateOEMDev(&record.merged);
    return record;
}

// Header and driver data are shown as they came, everything else as the plug-in takes it.
OEMDEV ShownRecord(const WholeRecord& record) {
    OEMDEV shown = record.merged;
    shown.dmOEMExtra = record.claimed.dmOEMExtra;
    shown.dwDriverData = record.claimed.dwDriverData;
    return shown;
}

std::string TitleOf(std::span<const TextEntry> texts, std::size_t title) {
    return ToUtf8(texts[title].english);
}

std::string DescribeRecord(const WholeRecord& record) {
    const OEMDEV shown = ShownRecord(record);
    Description description(RecordBytes(reinterpret_cast<const std::uint8_t*>(&shown), kOemRecordSize));
    description.Add("Header", kHeaderRules, record);
    for (const MomentName& moment : kMoments) {
        description.Add(TitleOf(kOperationDialogTexts, static_cast<std::size_t>(moment.moment)),
                        kOperationRules, ReadOperation(shown, moment.moment), {}, moment.name);
    }
    const std::string title1D = TitleOf(kBarcode1DPageTexts, kBarcode1DPageTitle);
    for (std::size_t i = 0; i < std::size(shown.Barcode1D); ++i) {
        const std::string slot = "Barcode1D[" + std::to_string(i) + "]";
        description.Add(title1D + ", " + slot, kFont1DRules, shown.Barcode1D[i], slot + ".");
    }
    const std::string title2D = TitleOf(kBarcode2DPageTexts, kBarcode2DPageTitle);
    for (std::size_t i = 0; i < std::size(shown.Barcode2D); ++i) {
        const std::string slot = "Barcode2D[" + std::to_string(i) + "]";
        description.Add(title2D + ", " + slot, kFont2DRules, shown.Barcode2D[i], slot + ".");
    }
    description.Add(TitleOf(kLayoutPageTexts, kLayoutPageTitle), kMainRules, shown);
    description.Add(TitleOf(kWaterMarkPageTexts, kWaterMarkPageTitle), kWaterMarkRules, shown);
    description.AddReserved();
    return description.Finish();
}

bool IsPossibleSize(std::uint32_t size) {
    return size >= sizeof(OemDevHeader) && size <= kLargestSize;
}

std::string BrokenText(ByteSpan file, std::size_t offset) {
    const std::uint32_t size = HeaderAt(file, offset).dwSize;
    return "at byte " + std::to_string(offset) + " a record of " + std::to_string(size) + " bytes begins, " +
           (IsPossibleSize(size)
                ? "of which " + std::to_string(file.size() - offset) + " are there"
                : "an impossible size: " + RangeText(sizeof(OemDevHeader), kLargestSize) + " can be");
}

// One line for those of `offsets` that are too many to be told one by one.
std::string RestText(std::span<const std::size_t> offsets, const std::string& what) {
    if (offsets.size() <= kMostTold) {
        return {};
    }
    return "\nNot shown: " + std::to_string(offsets.size() - kMostTold) + " more " + what +
           ", the first at byte " + std::to_string(offsets[kMostTold]) + ", the last at byte " +
           std::to_string(offsets.back()) + "\n";
}

}  // namespace

RecordSearch FindRecords(ByteSpan file) {
    RecordSearch search;
    // A record alone may claim anything; among other bytes it must look like one.
    if (file.size() == kOemRecordSize && HeaderAt(file, 0).dwSignature == kOemSignature) {
        search.whole.push_back(0);
        return search;
    }
    for (std::size_t offset = 0; offset + sizeof(OemDevHeader) <= file.size();) {
        const OemDevHeader header = HeaderAt(file, offset);
        const bool isRecord = header.dwSignature == kOemSignature && header.dwVersion != 0 &&
                              header.dwVersion <= kLargestVersion;
        const std::size_t size = ReadSize(header);
        if (!isRecord) {
            ++offset;
        } else if (!IsPossibleSize(header.dwSize) || size > file.size() - offset) {
            search.broken.push_back(offset++);
        } else {
            search.whole.push_back(offset);
            offset += size;
        }
    }
    return search;
}

std::string DescribeRecords(ByteSpan file) {
    const RecordSearch search = FindRecords(file);
    if (search.whole.empty()) {
        throw NoRecordError(search.broken.empty() ? "none of its " + std::to_string(file.size()) +
                                                        " bytes begins a settings record of this driver"
                                                  : BrokenText(file, search.broken.front()));
    }
    std::string text;
    for (std::size_t i = 0; i < std::min(search.whole.size(), kMostTold); ++i) {
        const std::size_t offset = search.whole[i];
        text += (i == 0 ? "" : "\n") + std::string("Settings record ");
        if (search.whole.size() > 1) {
            text += std::to_string(i + 1) + " of " + std::to_string(search.whole.size()) + ", ";
        }
        text += "at byte " + std::to_string(offset) + " of " + std::to_string(file.size()) + "\n";
        text += DescribeRecord(ReadRecord(file, offset));
    }
    text += RestText(search.whole, "settings records");
    for (std::size_t i = 0; i < std::min(search.broken.size(), kMostTold); ++i) {
        text += "\nNot shown: " + BrokenText(file, search.broken[i]) + "\n";
    }
    return text + RestText(search.broken, "broken records");
}
