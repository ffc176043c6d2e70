// What is fuzzed: each function has a decoder read bytes that come from outside, and holds what it makes of
// them against a plain reading or against what its callers rely on.
#pragma once

#include <cstdint>
#include <span>

using FuzzBytes = std::span<const std::uint8_t>;

// The first record of 1976 bytes is the host's buffer, the rest is the record to be converted.
void FuzzDevmodeRecord(FuzzBytes bytes);

// Room for the command, then its text.
void FuzzHexCommand(FuzzBytes bytes);

// How the file system behaves, then "key=value" lines of the control font's section.
void FuzzControlFont(FuzzBytes bytes);

// The check's code, the fonts' types and their numbers, then the barcode's data.
void FuzzBarcodeCheck(FuzzBytes bytes);

// Whole files.
void FuzzLanguageFile(FuzzBytes bytes);
void FuzzLanguageList(FuzzBytes bytes);

// How much the sink takes and whether the source knows its size, then a file.
void FuzzBitmap24(FuzzBytes bytes);

// Halftone, contrast and brightness, then a file.
void FuzzLogoConversion(FuzzBytes bytes);

// Which palettes are taken, then a file.
void FuzzLogoRaster(FuzzBytes bytes);

// A whole file.
void FuzzShownBitmap(FuzzBytes bytes);

struct FuzzTarget {
    const char* name;  // also of its folders with seeds and with finds
    void (*run)(FuzzBytes bytes);
};

inline constexpr FuzzTarget kFuzzTargets[] = {
    {"devmode_record", FuzzDevmodeRecord}, {"hex_command", FuzzHexCommand},
    {"control_font", FuzzControlFont},     {"barcode_check", FuzzBarcodeCheck},
    {"language_file", FuzzLanguageFile},   {"language_list", FuzzLanguageList},
    {"bitmap_24", FuzzBitmap24},           {"logo_conversion", FuzzLogoConversion},
    {"logo_raster", FuzzLogoRaster},       {"shown_bitmap", FuzzShownBitmap},
};
