// The private settings record: 1976 bytes behind the public DEVMODE of every job. The spooler stores it,
// other versions of this driver wrote it and the rendering side reads it, so every offset below is a
// contract.
//
//      0  header, driver data          596  eight 1D barcode fonts, 36 bytes each
//     16  start of document            884  two 2D barcode fonts, 24 bytes each
//    161  start of page                932  reserved
//    308  end of document              998  layout and watermark
//    452  end of page                 1462  zoom flag, driver log            1976  end
//
// Integers are little-endian, text is UTF-16 terminated inside its field, flags are 0 or 1, selections are
// list indices. Reserved bytes belong to the format; nothing reads them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "base/text.h"

// "R72" from the highest byte down; GetInfo reports the same value.
constexpr std::uint32_t kOemSignature = 0x00523732;
constexpr std::uint32_t kOemVersion = 1;
constexpr std::uint32_t kOemRecordSize = 1976;

// Room for the user command of one operation block.
constexpr std::size_t kCommandSize = 128;

struct OemDevHeader {
    std::uint32_t dwSize;
    std::uint32_t dwSignature;
    std::uint32_t dwVersion;
};

struct BarcodeFont1D {
    std::uint8_t bType;
    std::uint8_t bElementWidth;
    std::uint8_t reserved2[2];
    std::int32_t dwElementHeight;
    std::uint8_t bHriPosition;
    std::uint8_t bHriFont;
    std::uint8_t reserved10[2];
    std::int32_t dwFontWidth;
    std::int32_t dwFontHeight;
    std::uint8_t bGs1ElementWidth;
    std::uint8_t reserved21[3];
    std::int32_t dwGs1RowHeight;
    std::int32_t dwGs1CompositeRowHeight;
    std::uint8_t bGs1SeparatorHeight;
    std::uint8_t bGs1Hri;
    std::uint8_t bGs1ExpandedAi;
    std::uint8_t reserved35;
};

struct BarcodeFont2D {
    std::uint8_t bType2D;
    std::uint8_t bPdfModuleWidth;
    std::uint8_t bPdfModuleHeight;
    std::uint8_t bPdfColumns;
    std::uint8_t bPdfRows;
    std::uint8_t bPdfEccLevel;
    std::uint8_t bGs1ElementWidth2D;
    std::uint8_t reserved7;
    std::int32_t dwGs1RowHeight2D;
    std::int32_t dwGs1CompositeRowHeight2D;
    std::uint8_t bGs1SeparatorHeight2D;
    std::uint8_t bGs1SegmentCount;
    std::uint8_t bGs1Hri2D;
    std::uint8_t bGs1ExpandedAi2D;
    std::uint8_t bQrModuleWidth;
    std::uint8_t bQrLanguage;
    std::uint8_t bQrModel;
    std::uint8_t bQrEccLevel;
};

struct OEMDEV {
    OemDevHeader dmOEMExtra;
    std::int32_t dwDriverData;

    // Start of document: the herald stands before the drawer-or-herald choice, the buzzer volume behind it.
    std::uint8_t bDocStart;
    std::uint8_t bDocStartFeedToPosition;
    std::uint8_t bDocStart_Cmd[kCommandSize];
    std::uint8_t bDocStart_CmdLen;
    std::uint8_t bDocStart_Cashdrawer;
    std::uint8_t bDocStart_CutPaper;
    std::uint8_t bDocStart_Feed;
    std::uint8_t bDocStart_Herald;
    std::uint8_t reserved151;
    std::int32_t dwDocStart_DrawerOrHerald;
    std::uint8_t bDocStart_BuzzerVolume;
    std::uint8_t bDocStart_Buzzer;
    std::uint8_t bDocStart_Logo;
    std::uint8_t bDocStart_LogoAlign;
    std::uint8_t bDocStart_LogoPosition;

    std::uint8_t bPageStart;
    std::uint8_t bPageStartFeedToPosition;
    std::uint8_t bPageStart_Cmd[kCommandSize];
    std::uint8_t bPageStart_CmdLen;
    std::uint8_t bPageStart_Cashdrawer;
    std::uint8_t bPageStart_CutPaper;
    std::uint8_t bPageStart_Feed;
    std::uint8_t bPageStart_BuzzerVolume;
    std::uint8_t bPageStart_Herald;
    std::uint8_t reserved297[3];
    std::int32_t dwPageStart_DrawerOrHerald;
    std::uint8_t bPageStart_Buzzer;
    std::uint8_t bPageStart_Logo;
    std::uint8_t bPageStart_LogoAlign;
    std::uint8_t bPageStart_LogoPosition;

    std::uint8_t bDocEnd;
    std::uint8_t bDocEndFeedToPosition;
    std::uint8_t bDocEnd_Cmd[kCommandSize];
    std::uint8_t bDocEnd_CmdLen;
    std::uint8_t bDocEnd_Cashdrawer;
    std::uint8_t bDocEnd_CutPaper;
    std::uint8_t bDocEnd_Feed;
    std::uint8_t bDocEnd_BuzzerVolume;
    std::uint8_t bDocEnd_Herald;
    std::int32_t dwDocEnd_DrawerOrHerald;
    std::uint8_t bDocEnd_Buzzer;
    std::uint8_t bDocEnd_Logo;
    std::uint8_t bDocEnd_LogoAlign;
    std::uint8_t bDocEnd_LogoPosition;

    std::uint8_t bPageEnd;
    std::uint8_t bPageEndFeedToPosition;
    std::uint8_t bPageEnd_Cmd[kCommandSize];
    std::uint8_t bPageEnd_CmdLen;
    std::uint8_t bPageEnd_Cashdrawer;
    std::uint8_t bPageEnd_CutPaper;
    std::uint8_t bPageEnd_Feed;
    std::uint8_t bPageEnd_BuzzerVolume;
    std::uint8_t bPageEnd_Herald;
    std::int32_t dwPageEnd_DrawerOrHerald;
    std::uint8_t bPageEnd_Buzzer;
    std::uint8_t bPageEnd_Logo;
    std::uint8_t bPageEnd_LogoAlign;
    std::uint8_t bPageEnd_LogoPosition;

    BarcodeFont1D Barcode1D[8];
    BarcodeFont2D Barcode2D[2];

    std::uint8_t reserved932;
    std::uint8_t reserved933;
    std::uint8_t reserved934[32];
    std::uint8_t reserved966[32];

    std::uint8_t bPrintAsImage;
    std::uint8_t reserved999;
    Char16 WaterMarkPicName[125];
    std::uint8_t iWaterMarkType;
    std::uint8_t reserved1251;
    Char16 szWaterMarkText[16];
    Char16 szWaterMarkFont[50];
    std::uint8_t iWaterMarkFontSize;
    std::uint8_t iWaterMarkFontStyle;
    std::uint8_t reserved1386[2];
    std::int32_t iWaterMarkAngle;
    std::uint8_t iWaterMarkPosition;
    std::uint8_t iWaterMarkSize;
    std::uint8_t iWaterMarkBrightness;
    std::uint8_t iScale;
    std::uint8_t bRotate180;
    std::uint8_t reserved1397;
    Char16 szFormName[32];
    std::uint8_t bZoom;
    std::uint8_t LOGRecord;
    Char16 szLogPath[256];
};

using POEMDEV = OEMDEV*;

static_assert(std::endian::native == std::endian::little,
              "the record is little-endian and is shared as it lies");
static_assert(std::is_trivially_copyable_v<OEMDEV> && std::is_standard_layout_v<OEMDEV>);
static_assert(sizeof(BarcodeFont1D) == 36 && sizeof(BarcodeFont2D) == 24);
static_assert(sizeof(OEMDEV) == kOemRecordSize);

// Each field with its offset.
#define PIN_OFFSET(type, field, offset) static_assert(offsetof(type, field) == (offset))
PIN_OFFSET(OEMDEV, dmOEMExtra.dwSize, 0);
PIN_OFFSET(OEMDEV, dmOEMExtra.dwSignature, 4);
PIN_OFFSET(OEMDEV, dmOEMExtra.dwVersion, 8);
PIN_OFFSET(OEMDEV, dwDriverData, 12);
PIN_OFFSET(OEMDEV, bDocStart, 16);
PIN_OFFSET(OEMDEV, bDocStartFeedToPosition, 17);
PIN_OFFSET(OEMDEV, bDocStart_Cmd, 18);
PIN_OFFSET(OEMDEV, bDocStart_CmdLen, 146);
PIN_OFFSET(OEMDEV, bDocStart_Cashdrawer, 147);
PIN_OFFSET(OEMDEV, bDocStart_CutPaper, 148);
PIN_OFFSET(OEMDEV, bDocStart_Feed, 149);
PIN_OFFSET(OEMDEV, bDocStart_Herald, 150);
PIN_OFFSET(OEMDEV, dwDocStart_DrawerOrHerald, 152);
PIN_OFFSET(OEMDEV, bDocStart_BuzzerVolume, 156);
PIN_OFFSET(OEMDEV, bDocStart_Buzzer, 157);
PIN_OFFSET(OEMDEV, bDocStart_Logo, 158);
PIN_OFFSET(OEMDEV, bDocStart_LogoAlign, 159);
PIN_OFFSET(OEMDEV, bDocStart_LogoPosition, 160);
PIN_OFFSET(OEMDEV, bPageStart, 161);
PIN_OFFSET(OEMDEV, bPageStartFeedToPosition, 162);
PIN_OFFSET(OEMDEV, bPageStart_Cmd, 163);
PIN_OFFSET(OEMDEV, bPageStart_CmdLen, 291);
PIN_OFFSET(OEMDEV, bPageStart_Cashdrawer, 292);
PIN_OFFSET(OEMDEV, bPageStart_CutPaper, 293);
PIN_OFFSET(OEMDEV, bPageStart_Feed, 294);
PIN_OFFSET(OEMDEV, bPageStart_BuzzerVolume, 295);
PIN_OFFSET(OEMDEV, bPageStart_Herald, 296);
PIN_OFFSET(OEMDEV, dwPageStart_DrawerOrHerald, 300);
PIN_OFFSET(OEMDEV, bPageStart_Buzzer, 304);
PIN_OFFSET(OEMDEV, bPageStart_Logo, 305);
PIN_OFFSET(OEMDEV, bPageStart_LogoAlign, 306);
PIN_OFFSET(OEMDEV, bPageStart_LogoPosition, 307);
PIN_OFFSET(OEMDEV, bDocEnd, 308);
PIN_OFFSET(OEMDEV, bDocEndFeedToPosition, 309);
PIN_OFFSET(OEMDEV, bDocEnd_Cmd, 310);
PIN_OFFSET(OEMDEV, bDocEnd_CmdLen, 438);
PIN_OFFSET(OEMDEV, bDocEnd_Cashdrawer, 439);
PIN_OFFSET(OEMDEV, bDocEnd_CutPaper, 440);
PIN_OFFSET(OEMDEV, bDocEnd_Feed, 441);
PIN_OFFSET(OEMDEV, bDocEnd_BuzzerVolume, 442);
PIN_OFFSET(OEMDEV, bDocEnd_Herald, 443);
PIN_OFFSET(OEMDEV, dwDocEnd_DrawerOrHerald, 444);
PIN_OFFSET(OEMDEV, bDocEnd_Buzzer, 448);
PIN_OFFSET(OEMDEV, bDocEnd_Logo, 449);
PIN_OFFSET(OEMDEV, bDocEnd_LogoAlign, 450);
PIN_OFFSET(OEMDEV, bDocEnd_LogoPosition, 451);
PIN_OFFSET(OEMDEV, bPageEnd, 452);
PIN_OFFSET(OEMDEV, bPageEndFeedToPosition, 453);
PIN_OFFSET(OEMDEV, bPageEnd_Cmd, 454);
PIN_OFFSET(OEMDEV, bPageEnd_CmdLen, 582);
PIN_OFFSET(OEMDEV, bPageEnd_Cashdrawer, 583);
PIN_OFFSET(OEMDEV, bPageEnd_CutPaper, 584);
PIN_OFFSET(OEMDEV, bPageEnd_Feed, 585);
PIN_OFFSET(OEMDEV, bPageEnd_BuzzerVolume, 586);
PIN_OFFSET(OEMDEV, bPageEnd_Herald, 587);
PIN_OFFSET(OEMDEV, dwPageEnd_DrawerOrHerald, 588);
PIN_OFFSET(OEMDEV, bPageEnd_Buzzer, 592);
PIN_OFFSET(OEMDEV, bPageEnd_Logo, 593);
PIN_OFFSET(OEMDEV, bPageEnd_LogoAlign, 594);
PIN_OFFSET(OEMDEV, bPageEnd_LogoPosition, 595);
PIN_OFFSET(OEMDEV, Barcode1D, 596);
PIN_OFFSET(OEMDEV, Barcode2D, 884);
PIN_OFFSET(OEMDEV, reserved932, 932);
PIN_OFFSET(OEMDEV, reserved933, 933);
PIN_OFFSET(OEMDEV, reserved934, 934);
PIN_OFFSET(OEMDEV, reserved966, 966);
PIN_OFFSET(OEMDEV, bPrintAsImage, 998);
PIN_OFFSET(OEMDEV, reserved999, 999);
PIN_OFFSET(OEMDEV, WaterMarkPicName, 1000);
PIN_OFFSET(OEMDEV, iWaterMarkType, 1250);
PIN_OFFSET(OEMDEV, reserved1251, 1251);
PIN_OFFSET(OEMDEV, szWaterMarkText, 1252);
PIN_OFFSET(OEMDEV, szWaterMarkFont, 1284);
PIN_OFFSET(OEMDEV, iWaterMarkFontSize, 1384);
PIN_OFFSET(OEMDEV, iWaterMarkFontStyle, 1385);
PIN_OFFSET(OEMDEV, reserved1386, 1386);
PIN_OFFSET(OEMDEV, iWaterMarkAngle, 1388);
PIN_OFFSET(OEMDEV, iWaterMarkPosition, 1392);
PIN_OFFSET(OEMDEV, iWaterMarkSize, 1393);
PIN_OFFSET(OEMDEV, iWaterMarkBrightness, 1394);
PIN_OFFSET(OEMDEV, iScale, 1395);
PIN_OFFSET(OEMDEV, bRotate180, 1396);
PIN_OFFSET(OEMDEV, reserved1397, 1397);
PIN_OFFSET(OEMDEV, szFormName, 1398);
PIN_OFFSET(OEMDEV, bZoom, 1462);
PIN_OFFSET(OEMDEV, LOGRecord, 1463);
PIN_OFFSET(OEMDEV, szLogPath, 1464);

PIN_OFFSET(BarcodeFont1D, bType, 0);
PIN_OFFSET(BarcodeFont1D, bElementWidth, 1);
PIN_OFFSET(BarcodeFont1D, dwElementHeight, 4);
PIN_OFFSET(BarcodeFont1D, bHriPosition, 8);
PIN_OFFSET(BarcodeFont1D, bHriFont, 9);
PIN_OFFSET(BarcodeFont1D, dwFontWidth, 12);
PIN_OFFSET(BarcodeFont1D, dwFontHeight, 16);
PIN_OFFSET(BarcodeFont1D, bGs1ElementWidth, 20);
PIN_OFFSET(BarcodeFont1D, dwGs1RowHeight, 24);
PIN_OFFSET(BarcodeFont1D, dwGs1CompositeRowHeight, 28);
PIN_OFFSET(BarcodeFont1D, bGs1SeparatorHeight, 32);
PIN_OFFSET(BarcodeFont1D, bGs1Hri, 33);
PIN_OFFSET(BarcodeFont1D, bGs1ExpandedAi, 34);
PIN_OFFSET(BarcodeFont1D, reserved35, 35);

PIN_OFFSET(BarcodeFont2D, bType2D, 0);
PIN_OFFSET(BarcodeFont2D, bPdfModuleWidth, 1);
PIN_OFFSET(BarcodeFont2D, bPdfModuleHeight, 2);
PIN_OFFSET(BarcodeFont2D, bPdfColumns, 3);
PIN_OFFSET(BarcodeFont2D, bPdfRows, 4);
PIN_OFFSET(BarcodeFont2D, bPdfEccLevel, 5);
PIN_OFFSET(BarcodeFont2D, bGs1ElementWidth2D, 6);
PIN_OFFSET(BarcodeFont2D, reserved7, 7);
PIN_OFFSET(BarcodeFont2D, dwGs1RowHeight2D, 8);
PIN_OFFSET(BarcodeFont2D, dwGs1CompositeRowHeight2D, 12);
PIN_OFFSET(BarcodeFont2D, bGs1SeparatorHeight2D, 16);
PIN_OFFSET(BarcodeFont2D, bGs1SegmentCount, 17);
PIN_OFFSET(BarcodeFont2D, bGs1Hri2D, 18);
PIN_OFFSET(BarcodeFont2D, bGs1ExpandedAi2D, 19);
PIN_OFFSET(BarcodeFont2D, bQrModuleWidth, 20);
PIN_OFFSET(BarcodeFont2D, bQrLanguage, 21);
PIN_OFFSET(BarcodeFont2D, bQrModel, 22);
PIN_OFFSET(BarcodeFont2D, bQrEccLevel, 23);
#undef PIN_OFFSET
