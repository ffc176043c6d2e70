// Test prints of the barcode fonts: which data may be sent, and the bytes that print it.
#pragma once

#include <cstdint>
#include <iterator>
#include <span>
#include <vector>

#include "base/text.h"
#include "devmode/oemdev.h"
#include "printer/barcode_check.h"
#include "printer/command_pieces.h"

// How a symbology's data follows its command.
enum class BarcodeForm : std::uint8_t {
    kTerminated,  // up to a zero byte
    kCounted,     // behind its length
    kDataBar,     // GS1 DataBar: parameters of its own, up to a zero byte
};

// The printer's numbers of the GS1 DataBar kinds.
enum DataBarKind : std::uint8_t {
    kOmnidirectionalKind = 1,
    kTruncatedKind,
    kStackedKind,
    kStackedOmnidirectionalKind,
    kLimitedKind,
    kExpandedKind,
    kExpandedStackedKind,
};

struct BarcodeType1D {
    const Char16* name;  // the same in all languages
    BarcodeForm form;
    std::uint8_t number;   // the printer's, of the symbology or the GS1 DataBar kind
    const Char16* sample;  // data to begin with
};

// The 1D page's list; `bType` is an index of it. The printer numbers EAN13 before EAN8.
inline constexpr BarcodeType1D kBarcodeTypes1D[] = {
    {TEXT16("UPC-A"), BarcodeForm::kTerminated, kUpcA, TEXT16("123456789012")},
    {TEXT16("UPC-E"), BarcodeForm::kTerminated, kUpcE, TEXT16("023456789012")},
    {TEXT16("EAN8"), BarcodeForm::kTerminated, kEan8, TEXT16("12345678")},
    {TEXT16("EAN13"), BarcodeForm::kTerminated, kEan13, TEXT16("1234567890123")},
    {TEXT16("Code39"), BarcodeForm::kTerminated, kCode39, TEXT16("123ABC*")},
    {TEXT16("ITF"), BarcodeForm::kTerminated, kItf, TEXT16("123456789")},
    {TEXT16("Codabar"), BarcodeForm::kTerminated, kCodabar, TEXT16("A123456789A")},
    {TEXT16("Code93"), BarcodeForm::kCounted, kCode93, TEXT16("123ABC")},
    {TEXT16("Code128"), BarcodeForm::kCounted, kCode128, TEXT16("{A1234")},
    {TEXT16("GS1 DataBar Omnidirectional"), BarcodeForm::kDataBar, kOmnidirectionalKind,
     TEXT16("01234567890123")},
    {TEXT16("GS1 DataBar Truncated"), BarcodeForm::kDataBar, kTruncatedKind, TEXT16("01234567890123")},
    {TEXT16("GS1 DataBar Limited"), BarcodeForm::kDataBar, kLimitedKind, TEXT16("01234567890123")},
    {TEXT16("GS1 DataBar Expanded"), BarcodeForm::kDataBar, kExpandedKind, TEXT16("01234567890123")},
};
// From here on the list has GS1 DataBar types only.
constexpr std::uint8_t kFirstDataBar1D = 9;
constexpr std::uint8_t kDataBarExpanded1D = 12;

// The data to begin with of a type of this list; none for another.
constexpr const Char16* SampleOf(const BarcodeFont1D& font) noexcept {
    return font.bType < std::size(kBarcodeTypes1D) ? kBarcodeTypes1D[font.bType].sample : TEXT16("");
}

// The 2D page's list; `bType2D` is an index of it.
enum BarcodeType2D : std::uint8_t {
    kPdf417,
    kDataBarStacked,
    kDataBarStackedOmnidirectional,
    kDataBarExpandedStacked,
    kQrCode,
    kMaxiCode,
};
inline constexpr const Char16* kBarcodeNames2D[] = {
    TEXT16("PDF417"),
    TEXT16("GS1 DataBar Stacked"),
    TEXT16("GS1 DataBar Stacked Omnidirectional"),
    TEXT16("GS1 DataBar Expanded Stacked"),
    TEXT16("QR Code"),
    TEXT16("Maxi Code"),
};
inline constexpr const Char16* kBarcodeSample2D = TEXT16("01234567890123");

// Whether `data` may be printed in a font's symbology. Accepted Code128 data is packed as the printer takes
// it. A type that is not in the list accepts nothing.
bool AcceptsTestData(const BarcodeFont1D& font, std::vector<std::uint8_t>& data) noexcept;

// `sameFont1D` is the 1D font of the same index, and its type has a say: while it is one of the first four,
// GS1 DataBar data is checked too, and nothing but PDF417 may begin with a byte above 128.
bool AcceptsTestData(const BarcodeFont2D& font, const BarcodeFont1D& sameFont1D,
                     std::vector<std::uint8_t>& data) noexcept;

// The pieces for accepted data. None for a type that is not in the list, and for data whose length does not
// fit into the byte that tells it.
CommandPieces TestPrint(const BarcodeFont1D& font, std::span<const std::uint8_t> data);
CommandPieces TestPrint(const BarcodeFont2D& font, std::span<const std::uint8_t> data);
