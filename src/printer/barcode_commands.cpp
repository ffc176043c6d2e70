// The commands, a byte for each letter and parameter:
//
//      GS f font         font of the text beside the bars (HRI): 0 A, 1 B
//      GS H position     of that text: 0 none, 1 above, 2 below, 3 both
//      GS w width        of an element, in dots
//      GS h height       of the bars, in dots
//      GS s ...          GS1 DataBar: kind, element width, row height, composite row height,
//                        height of the separator, segments in a row, HRI content, application identifiers
//      GS p 1 1 ...      PDF417: rows, columns, element width, element height
//      GS q level        error correction of PDF417; 0 for Maxi Code
//      GS o 0 ...        QR Code: element width, language, model
//      GS k symbology    prints what follows: up to a zero byte, for Code93 and Code128 as many bytes as the
//                        first one says
//      GS V B 0          feeds to the cutter and cuts
#include "printer/barcode_commands.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <utility>

namespace {

using Piece = std::vector<std::uint8_t>;

constexpr std::uint8_t kGs = 0x1D;
constexpr std::uint8_t kLineFeed = 0x0A;

// What follows GS.
constexpr std::uint8_t kHriFont = 'f';
constexpr std::uint8_t kHriPosition = 'H';
constexpr std::uint8_t kElementWidth = 'w';
constexpr std::uint8_t kBarHeight = 'h';
constexpr std::uint8_t kDataBarParameters = 's';
constexpr std::uint8_t kPdf417Parameters = 'p';
constexpr std::uint8_t kErrorCorrection = 'q';
constexpr std::uint8_t kQrParameters = 'o';
constexpr std::uint8_t kPrintBarcode = 'k';
constexpr std::uint8_t kCut = 'V';

constexpr std::uint8_t kFontA = 0;
constexpr std::uint8_t kFontB = 1;
constexpr std::uint8_t kNoHri = 0;
constexpr std::uint8_t kHriAboveAndBelow = 3;

// Symbologies of GS k besides the 1D ones.
constexpr std::uint8_t kPrintPdf417 = 0x0A;
constexpr std::uint8_t kPrintQrCode = 0x0B;
constexpr std::uint8_t kPrintMaxiCode = 0x0C;
constexpr std::uint8_t kPrintDataBar = 0x0D;

// The kinds of the 1D page are not stacked; this is what they send for the segments in a row.
constexpr std::uint8_t kFewestSegments = 2;

// In the order of the page's list.
constexpr std::uint8_t kQrLevels[] = {'L', 'M', 'H', 'Q'};
// Stands between a QR Code's level and its data.
constexpr std::uint8_t kQrDataMode = 'A';
constexpr std::uint8_t kQrSeparator = ',';

constexpr std::uint8_t kFeedAndCut = 'B';
constexpr std::uint8_t kEndOfData = 0;

std::uint8_t LowByte(std::int32_t value) noexcept {
    return static_cast<std::uint8_t>(value & 0xFF);
}

Piece Joined(std::initializer_list<Piece> commands) {
    Piece joined;
    for (const Piece& command : commands) {
        joined.insert(joined.end(), command.begin(), command.end());
    }
    return joined;
}

Piece SizeAndPrintCommands(const BarcodeFont1D& font, std::uint8_t symbology) {
    return Joined({
        {kGs, kElementWidth, font.bElementWidth},
        {kGs, kBarHeight, LowByte(font.dwElementHeight)},
        {kGs, kPrintBarcode, symbology},
    });
}

Piece Commands1D(const BarcodeFont1D& font, std::uint8_t symbology) {
    const std::uint8_t hriFont = font.bHriFont != 0 ? kFontB : kFontA;
    const std::uint8_t position = font.bHriPosition <= kHriAboveAndBelow ? font.bHriPosition : kNoHri;
    return Joined({
        {kGs, kHriFont, hriFont},
        {kGs, kHriPosition, position},
        SizeAndPrintCommands(font, symbology),
    });
}

struct DataBar {
    std::uint8_t kind;
    std::uint8_t elementWidth;
    std::int32_t rowHeight;
    std::int32_t compositeRowHeight;
    std::uint8_t separatorHeight;
    std::uint8_t segments;
    std::uint8_t hri;
    std::uint8_t expandedAi;
};

// A GS1 DataBar says in its own parameters which text it prints: the ordinary HRI stays off.
Piece DataBarCommands(const DataBar& bar) {
    return Joined({
        {kGs, kHriFont, kFontA},
        {kGs, kHriPosition, kNoHri},
        {kGs, kDataBarParameters, bar.kind, bar.elementWidth, LowByte(bar.rowHeight),
         LowByte(bar.compositeRowHeight), bar.separatorHeight, bar.segments, bar.hri, bar.expandedAi},
        {kGs, kPrintBarcode, kPrintDataBar},
    });
}

Piece Pdf417Commands(const BarcodeFont2D& font) {
    return Joined({
        {kGs, kPdf417Parameters, 1, 1, font.bPdfRows, font.bPdfColumns, font.bPdfModuleWidth,
         font.bPdfModuleHeight},
        {kGs, kErrorCorrection, font.bPdfEccLevel},
        {kGs, kPrintBarcode, kPrintPdf417},
    });
}

// A level that is not in the list counts as its first.
Piece QrCommands(const BarcodeFont2D& font) {
    const std::uint8_t level = kQrLevels[font.bQrEccLevel < std::size(kQrLevels) ? font.bQrEccLevel : 0];
    return Joined({
        {kGs, kQrParameters, 0, font.bQrModuleWidth, font.bQrLanguage, font.bQrModel},
        {kGs, kPrintBarcode, kPrintQrCode, level, kQrDataMode, kQrSeparator},
    });
}

Piece MaxiCodeCommands() {
    return Joined({
        {kGs, kErrorCorrection, 0},
        {kGs, kPrintBarcode, kPrintMaxiCode},
    });
}

Piece Commands2D(const BarcodeFont2D& font) {
    const auto dataBar = [&font](std::uint8_t kind) {
        return DataBarCommands({kind, font.bGs1ElementWidth2D, font.dwGs1RowHeight2D,
                                font.dwGs1CompositeRowHeight2D, font.bGs1SeparatorHeight2D,
                                font.bGs1SegmentCount, font.bGs1Hri2D, font.bGs1ExpandedAi2D});
    };
    switch (font.bType2D) {
        case kPdf417:
            return Pdf417Commands(font);
        case kDataBarStacked:
            return dataBar(kStackedKind);
        case kDataBarStackedOmnidirectional:
            return dataBar(kStackedOmnidirectionalKind);
        case kDataBarExpandedStacked:
            return dataBar(kExpandedStackedKind);
        case kQrCode:
            return QrCommands(font);
        case kMaxiCode:
            return MaxiCodeCommands();
        default:
            return {};
    }
}

// A test print from its command to the cut; `commands` are the pieces before the data.
CommandPieces Finished(CommandPieces commands, std::span<const std::uint8_t> data) {
    commands.emplace_back(data.begin(), data.end());
    commands.push_back({kEndOfData});
    commands.push_back({kLineFeed, kGs, kCut, kFeedAndCut, 0});
    return commands;
}

// The printer takes the first command's zero length for its end. The second command has the data.
CommandPieces CountedPrint(const BarcodeFont1D& font, std::uint8_t symbology,
                           std::span<const std::uint8_t> data) {
    constexpr std::uint8_t kNoData = 0;
    if (data.size() > std::numeric_limits<std::uint8_t>::max()) {
        return {};
    }
    const auto length = static_cast<std::uint8_t>(data.size());
    return Finished({Commands1D(font, symbology), {kNoData}, SizeAndPrintCommands(font, symbology), {length}},
                    data);
}

// Longer data than the check can be told of is too long for all its rules.
bool IsAccepted(std::uint32_t code, std::vector<std::uint8_t>& data) noexcept {
    constexpr std::size_t kLongest = std::numeric_limits<std::uint32_t>::max();
    auto length = static_cast<std::uint32_t>(std::min(data.size(), kLongest));
    const bool isAccepted = CheckBarcodeData(code, data.data(), &length);
    if (isAccepted) {
        data.resize(length);
    }
    return isAccepted;
}

}  // namespace

bool AcceptsTestData(const BarcodeFont1D& font, std::vector<std::uint8_t>& data) noexcept {
    if (font.bType >= std::size(kBarcodeTypes1D)) {
        return false;
    }
    // A GS1 DataBar is checked by its place in the list: its kind is another symbology's number.
    const BarcodeType1D& type = kBarcodeTypes1D[font.bType];
    return IsAccepted(type.form == BarcodeForm::kDataBar ? font.bType : type.number, data);
}

bool AcceptsTestData(const BarcodeFont2D& font, const BarcodeFont1D& sameFont1D,
                     std::vector<std::uint8_t>& data) noexcept {
    constexpr std::uint8_t kLastDecidingType1D = 3;
    constexpr std::uint8_t kHighestFirstByte = 128;
    if (font.bType2D >= std::size(kBarcodeNames2D)) {
        return false;
    }
    const std::uint32_t code = kFirstCheck2D + font.bType2D;
    if (font.bType2D != kPdf417 && sameFont1D.bType <= kLastDecidingType1D) {
        return IsAccepted(code, data) && data.front() <= kHighestFirstByte;
    }
    const bool isDataBar = font.bType2D >= kDataBarStacked && font.bType2D <= kDataBarExpandedStacked;
    return isDataBar || IsAccepted(code, data);
}

CommandPieces TestPrint(const BarcodeFont1D& font, std::span<const std::uint8_t> data) {
    if (font.bType >= std::size(kBarcodeTypes1D)) {
        return {};
    }
    const BarcodeType1D& type = kBarcodeTypes1D[font.bType];
    switch (type.form) {
        case BarcodeForm::kTerminated:
            return Finished({Commands1D(font, type.number)}, data);
        case BarcodeForm::kCounted:
            return CountedPrint(font, type.number, data);
        case BarcodeForm::kDataBar:
            return Finished({DataBarCommands({type.number, font.bGs1ElementWidth, font.dwGs1RowHeight,
                                              font.dwGs1CompositeRowHeight, font.bGs1SeparatorHeight,
                                              kFewestSegments, font.bGs1Hri, font.bGs1ExpandedAi})},
                            data);
    }
    return {};
}

CommandPieces TestPrint(const BarcodeFont2D& font, std::span<const std::uint8_t> data) {
    Piece commands = Commands2D(font);
    return commands.empty() ? CommandPieces() : Finished({std::move(commands)}, data);
}
