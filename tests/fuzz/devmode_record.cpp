// A foreign settings record: converted, merged, and read by everything that reads records.
#include "devmode/devmode_record.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "devmode/operation_settings.h"
#include "docpages/water_mark_layout.h"
#include "fuzz_input.h"
#include "printer/barcode_commands.h"
#include "printer/barcode_fonts.h"
#include "printer/barcode_height.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kHeaderSize = 12;

const OEMDEV* AsRecord(const Bytes& bytes) {
    return static_cast<const OEMDEV*>(static_cast<const void*>(bytes.data()));
}

OEMDEV* AsRecord(Bytes& bytes) {
    return static_cast<OEMDEV*>(static_cast<void*>(bytes.data()));
}

std::uint32_t Number(const Bytes& bytes, std::size_t at) {
    std::uint32_t number = 0;
    std::memcpy(&number, &bytes[at], sizeof number);
    return number;
}

void PutNumber(Bytes& bytes, std::size_t at, std::uint32_t number) {
    std::memcpy(&bytes[at], &number, sizeof number);
}

// A header, and no more bytes than it claims or a record has.
Bytes IncomingRecord(FuzzBytes rest) {
    Bytes record(rest.begin(), rest.end());
    record.resize(std::clamp(record.size(), kHeaderSize, std::size_t{kOemRecordSize}));
    const std::size_t claimed = Number(record, 0);
    if (claimed > record.size() && record.size() < kOemRecordSize) {
        PutNumber(record, 0, static_cast<std::uint32_t>(record.size()));
    } else if (claimed < record.size()) {
        record.resize(std::max(claimed, kHeaderSize));
    }
    // Exactly as long as it is: reading on is noticed.
    return Bytes(record.begin(), record.end());
}

// The default record under as much of the other one as both sides have.
Bytes PlainConversion(const Bytes& in, const Bytes& out) {
    Bytes result = out;
    SetDefaultOEMDev(AsRecord(result));
    if (Number(in, 4) != Number(out, 4)) {
        return result;
    }
    const std::size_t sizes[] = {Number(in, 0), Number(out, 0), kOemRecordSize};
    PutNumber(result, 4, Number(out, 4));
    std::copy_n(in.begin(), *std::min_element(std::begin(sizes), std::end(sizes)), result.begin());
    PutNumber(result, 0, 1976);
    PutNumber(result, 8, 1);
    return result;
}

void CheckConversion(const Bytes& in, const Bytes& out, Bytes& converted) {
    converted = out;
    Require(ConvertOEMDevmode(AsRecord(in), AsRecord(converted)), "a record is refused");
    Require(converted == PlainConversion(in, out), "a record is converted otherwise");
    Bytes again = converted;
    Require(ConvertOEMDevmode(AsRecord(again), AsRecord(again)) && again == converted,
            "a converted record changes when it is converted in place");
    SetDefaultOEMDev(AsRecord(again));
    Require(ConvertOEMDevmode(AsRecord(converted), AsRecord(again)), "a converted record is refused");
    Require(Number(converted, 4) != kOemSignature || again == converted,
            "a converted record changes when it is converted again");
}

void CheckMerge(Bytes& record) {
    Bytes expected = record;
    PutNumber(expected, 0, 1976);
    PutNumber(expected, 4, 0x00523732);
    PutNumber(expected, 8, 1);
    if (AsRecord(expected)->dwDriverData > 100) {
        PutNumber(expected, 12, 0);
    }
    for (int i = 0; i < 2; ++i) {
        Require(ValidateOEMDev(AsRecord(record)) && record == expected, "a record is validated otherwise");
    }
    Dump(AsRecord(record));
}

// Reading a moment's block and writing it back clears what stands behind the command, nothing else.
void CheckOperations(const Bytes& record) {
    constexpr std::size_t kCommandsAt[] = {18, 163, 454, 310};
    for (std::size_t i = 0; i < std::size(kCommandsAt); ++i) {
        const auto moment = static_cast<Moment>(i);
        const OperationSettings settings = ReadOperation(*AsRecord(record), moment);
        Bytes expected = record;
        std::uint8_t* const command = &expected[kCommandsAt[i]];
        command[kCommandSize] = std::min(command[kCommandSize], std::uint8_t{kCommandSize});
        std::fill(command + command[kCommandSize], command + kCommandSize, std::uint8_t{0});
        Require(settings.commandLength == command[kCommandSize], "a command has another length");
        Bytes written = record;
        WriteOperation(*AsRecord(written), moment, settings);
        Require(written == expected, "a moment's block is written otherwise");
    }
}

void CheckFonts(OEMDEV& record) {
    Bytes data = {'1', '2', '3'};
    for (std::size_t i = 0; i < std::size(record.Barcode1D); ++i) {
        BarcodeFont1D& font = record.Barcode1D[i];
        Require(TestPrint(font, data).empty() == (font.bType >= std::size(kBarcodeTypes1D)),
                "a 1D type is printed that is not in the list");
        const FontHeightTexts texts = UpdateFontHeight(font);
        Require(texts.millimetres.size() >= 5 && texts.points.size() >= 5, "a height has a short text");
        Require(font.dwFontHeight != 0, "a font has no height");
        ControlsOf(font);
        for (int number = 0; number < static_cast<int>(Number1D::kCount); ++number) {
            const auto which = static_cast<Number1D>(number);
            const NumberRange range = BoxOf(which).range;
            const std::uint8_t stored = StoreNumber(font, which, ReadNumber(font, which));
            Require(stored >= range.least && stored <= range.most && ReadNumber(font, which) == stored,
                    "a 1D number is out of range");
        }
    }
    for (BarcodeFont2D& font : record.Barcode2D) {
        Require(TestPrint(font, data).empty() == (font.bType2D >= std::size(kBarcodeNames2D)),
                "a 2D type is printed that is not in the list");
        ControlsOf(font);
        for (int number = 0; number < static_cast<int>(Number2D::kCount); ++number) {
            const auto which = static_cast<Number2D>(number);
            const std::uint8_t stored = StoreNumber(font, which, ReadNumber(font, which));
            Require(ReadNumber(font, which) == stored, "a 2D number is not stored");
        }
    }
}

void CheckWaterMark(const OEMDEV& record) {
    constexpr PixelSize kFrame = {200, 283};
    // Any numbers of the record, as sizes of an image.
    const PixelSize image = {record.dwDocStart_DrawerOrHerald, record.dwPageStart_DrawerOrHerald};
    for (const PixelSize size : {PixelSize{50, 20}, image}) {
        for (const Placement& placed :
             PlaceWaterMark(kFrame, size, record.iWaterMarkPosition, record.iWaterMarkSize)) {
            Require(placed.width > 0 && placed.height > 0 && placed.imageRows > 0 &&
                        placed.imageRows <= size.height,
                    "nothing of a watermark is drawn");
        }
    }
    FontOfWaterMark(record.iWaterMarkFontSize, record.iWaterMarkFontStyle, record.iWaterMarkAngle, 96);
    TextStartPoint(record.iWaterMarkAngle, {record.iWaterMarkSize, record.iWaterMarkFontSize});
}

void CheckTexts(const OEMDEV& record) {
    Require(FieldText(record.WaterMarkPicName).size() <= std::size(record.WaterMarkPicName) &&
                FieldText(record.szWaterMarkText).size() <= std::size(record.szWaterMarkText) &&
                FieldText(record.szWaterMarkFont).size() <= std::size(record.szWaterMarkFont) &&
                FieldText(record.szFormName).size() <= std::size(record.szFormName) &&
                FieldText(record.szLogPath).size() <= std::size(record.szLogPath),
            "a text is longer than its field");
}

}  // namespace

void FuzzDevmodeRecord(FuzzBytes bytes) {
    const std::size_t held = std::min<std::size_t>(bytes.size(), kOemRecordSize);
    Bytes out(kOemRecordSize);
    std::copy_n(bytes.begin(), held, out.begin());
    const Bytes in = IncomingRecord(bytes.subspan(held));
    Bytes record;
    CheckConversion(in, out, record);
    CheckMerge(record);
    CheckOperations(record);
    CheckTexts(*AsRecord(record));
    CheckWaterMark(*AsRecord(record));
    CheckFonts(*AsRecord(record));
}
