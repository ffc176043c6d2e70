#include "devmode/devmode_record.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/platform.h"
#include "devmode/operation_settings.h"

namespace {

constexpr std::int32_t kMaxDriverData = 100;
// "C:\": what the log's folder keeps of the system directory.
constexpr std::size_t kDriveRootLength = 3;

constexpr std::uint8_t kPartialCut = 1;
constexpr std::uint8_t kBothDrawersLongestPulse = 12;

constexpr std::uint8_t kDefaultTypes1D[] = {0, 1, 3, 4, 5, 6, 7, 8};

void SetDefaultOperation(OEMDEV& record, Moment moment) noexcept {
    OperationSettings settings{};
    // These two have no default: what the record held stays.
    const OperationSettings held = ReadOperation(record, moment);
    settings.drawerOrHerald = held.drawerOrHerald;
    settings.logoPosition = held.logoPosition;
    if (moment == Moment::kDocStart) {
        settings.cashDrawer = kBothDrawersLongestPulse;
    } else if (moment == Moment::kDocEnd) {
        settings.feedToPosition = 1;
        settings.cutPaper = kPartialCut;
    }
    WriteOperation(record, moment, settings);
}

void SetDefault1D(BarcodeFont1D& font, std::uint8_t type) noexcept {
    font.bType = type;
    font.bElementWidth = 3;
    font.dwElementHeight = 163;
    font.bHriPosition = 0;
    font.bHriFont = 0;
    font.dwFontWidth = 24;
    font.dwFontHeight = 163;
    font.bGs1ElementWidth = 2;
    font.dwGs1RowHeight = 100;
    font.dwGs1CompositeRowHeight = 2;
    font.bGs1SeparatorHeight = 1;
    font.bGs1Hri = 1;
    font.bGs1ExpandedAi = 1;
}

void SetDefault2D(BarcodeFont2D& font) noexcept {
    font.bType2D = 0;
    font.bPdfModuleWidth = 3;
    font.bPdfModuleHeight = 3;
    font.bPdfColumns = 3;
    font.bPdfRows = 3;
    font.bPdfEccLevel = 5;
    font.bGs1ElementWidth2D = 2;
    font.dwGs1RowHeight2D = 100;
    font.dwGs1CompositeRowHeight2D = 2;
    font.bGs1SeparatorHeight2D = 2;
    font.bGs1SegmentCount = 4;
    font.bGs1Hri2D = 1;
    font.bGs1ExpandedAi2D = 1;
    font.bQrModuleWidth = 3;
    font.bQrLanguage = 0;
    font.bQrModel = 1;
    font.bQrEccLevel = 1;
}

// The root of the system drive followed by the log's folder.
void SetDefaultLogPath(OEMDEV& record) noexcept {
    Char16 path[kPathLength] = {};
    SystemDirectory(path);
    std::fill(path + kDriveRootLength, path + kPathLength, Char16{});
    const std::size_t root = FieldText(path).size();
    CopyText(path + root, kPathLength - root, kLogSubFolder);
    CopyText(record.szLogPath, FieldText(path));
}

// Everything behind the header.
void SetDefaultBody(OEMDEV& record) noexcept {
    record.dwDriverData = 0;
    for (const Moment moment : {Moment::kDocStart, Moment::kPageStart, Moment::kPageEnd, Moment::kDocEnd}) {
        SetDefaultOperation(record, moment);
    }
    for (std::size_t i = 0; i < std::size(record.Barcode1D); ++i) {
        SetDefault1D(record.Barcode1D[i], kDefaultTypes1D[i]);
    }
    for (BarcodeFont2D& font : record.Barcode2D) {
        SetDefault2D(font);
    }
    record.reserved932 = 0;
    // The rendering side of older drivers left these two values here; a default record stays the same byte
    // for byte.
    record.reserved933 = 3;
    record.reserved999 = 1;
    std::fill(std::begin(record.reserved934), std::end(record.reserved934), std::uint8_t{0});
    std::fill(std::begin(record.reserved966), std::end(record.reserved966), std::uint8_t{0});
    record.bPrintAsImage = 0;
    CopyText(record.szWaterMarkText, {});
    CopyText(record.szWaterMarkFont, {});
    record.iWaterMarkType = 0;
    record.iWaterMarkAngle = 45;
    record.iWaterMarkFontStyle = 0;
    record.iWaterMarkFontSize = 50;
    record.iWaterMarkPosition = 4;
    record.iWaterMarkSize = 100;
    record.iWaterMarkBrightness = 50;
    record.iScale = 100;
    record.bRotate180 = 0;
    record.bZoom = 0;
    record.LOGRecord = 0;
    SetDefaultLogPath(record);
    CopyText(record.WaterMarkPicName, {});
    CopyText(record.szFormName, {});
}

void SetHeader(OEMDEV& record) noexcept {
    record.dmOEMExtra = {kOemRecordSize, kOemSignature, kOemVersion};
}

void DumpByte(const Char16* format, std::uint8_t byte) noexcept {
    TRACE_VERBOSE(format, static_cast<unsigned>(byte));
}

}  // namespace

void SetDefaultOEMDev(POEMDEV pOEMDevOut) noexcept {
    if (pOEMDevOut == nullptr) {
        return;
    }
    SetHeader(*pOEMDevOut);
    SetDefaultBody(*pOEMDevOut);
}

bool ConvertOEMDevmode(const OEMDEV* pOEMDevIn, POEMDEV pOEMDevOut) noexcept {
    if (pOEMDevIn == nullptr || pOEMDevOut == nullptr) {
        TRACE_ERROR(TEXT16("ERROR UI:  ConvertOEMDevmode() invalid parameters.\r\n"));
        return false;
    }
    if (pOEMDevIn->dmOEMExtra.dwSignature != pOEMDevOut->dmOEMExtra.dwSignature) {
        TRACE_WARNING(TEXT16("UI:  Unknown DEVMODE signature, pOEMDMIn ignored.\r\n"));
        SetDefaultOEMDev(pOEMDevOut);
        return true;
    }
    TRACE_VERBOSE(TEXT16("UI:  Converting private OEM Devmode.\r\n"));
    TRACE_VERBOSE(TEXT16("UI:  pOEMDevIn:\r\n"));
    Dump(pOEMDevIn);

    // Set aside first: the two records may be one. Neither size is trusted beyond what a record has.
    const std::size_t count =
        std::min({pOEMDevOut->dmOEMExtra.dwSize, pOEMDevIn->dmOEMExtra.dwSize, kOemRecordSize});
    std::array<std::uint8_t, kOemRecordSize> kept;
    std::memcpy(kept.data(), pOEMDevIn, count);

    SetDefaultBody(*pOEMDevOut);
    std::memcpy(pOEMDevOut, kept.data(), count);
    pOEMDevOut->dmOEMExtra.dwSize = kOemRecordSize;
    pOEMDevOut->dmOEMExtra.dwVersion = kOemVersion;
    return true;
}

bool ValidateOEMDev(POEMDEV pOEMDev) noexcept {
    if (pOEMDev == nullptr) {
        return false;
    }
    SetHeader(*pOEMDev);
    if (pOEMDev->dwDriverData > kMaxDriverData) {
        pOEMDev->dwDriverData = 0;
    }
    return true;
}

void Dump(const OEMDEV* pOEMDev) noexcept {
    if (pOEMDev == nullptr || pOEMDev->dmOEMExtra.dwSize < kOemRecordSize ||
        pOEMDev->dmOEMExtra.dwSignature != kOemSignature) {
        TRACE_ERROR(TEXT16("ERROR UI:  Dump(POEMDEV) unknown private OEM DEVMODE.\r\n"));
        return;
    }
    const OEMDEV& record = *pOEMDev;
    TRACE_VERBOSE(TEXT16("\tdmOEMExtra.dwSize      = %d\r\n"), record.dmOEMExtra.dwSize);
    TRACE_VERBOSE(TEXT16("\tdmOEMExtra.dwSignature = %#x\r\n"), record.dmOEMExtra.dwSignature);
    TRACE_VERBOSE(TEXT16("\tdmOEMExtra.dwVersion   = %#x\r\n"), record.dmOEMExtra.dwVersion);
    TRACE_VERBOSE(TEXT16("\tdwDriverData           = %#x\r\n"), static_cast<unsigned>(record.dwDriverData));
    DumpByte(TEXT16("\tbDocStart      = %#x\r\n"), record.bDocStart);
    DumpByte(TEXT16("\tbPageStart     = %#x\r\n"), record.bPageStart);
    DumpByte(TEXT16("\tbDocEnd        = %#x\r\n"), record.bDocEnd);
    DumpByte(TEXT16("\tbPageEnd       = %#x\r\n"), record.bPageEnd);
    DumpByte(TEXT16("\tbDocStartFeedToPosition      = %#x\r\n"), record.bDocStartFeedToPosition);
    DumpByte(TEXT16("\tbPageStartFeedToPosition     = %#x\r\n"), record.bPageStartFeedToPosition);
    DumpByte(TEXT16("\tbDocEndFeedToPosition        = %#x\r\n"), record.bDocEndFeedToPosition);
    DumpByte(TEXT16("\tbPageEndFeedToPosition       = %#x\r\n"), record.bPageEndFeedToPosition);
    DumpByte(TEXT16("\tbDocStart_Cashdrawer      = %#x\r\n"), record.bDocStart_Cashdrawer);
    DumpByte(TEXT16("\tbDocStart_CutPaper     = %#x\r\n"), record.bDocStart_CutPaper);
    DumpByte(TEXT16("\tbDocEnd        = %#x\r\n"), record.bDocEnd);
    DumpByte(TEXT16("\tbPageEnd       = %#x\r\n"), record.bPageEnd);
}
