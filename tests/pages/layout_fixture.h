// What the tests of the Main page share: its controls and fields by number, records, and its texts.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "page_fixture.h"

namespace pages::layout {

constexpr int kPaperSize = 1020;
constexpr int kLanguage = 1021;
constexpr int kScale = 1047;
constexpr int kUpdate = 1049;
constexpr int kLogPath = 1052;
constexpr int kYes = 1061;
constexpr int kNo = 1062;
constexpr int kNormal = 1070;
constexpr int kRotate180 = 1071;
constexpr int kZoom = 1073;
constexpr int kSpin = 1076;
constexpr int kScaleLabel = 1121;
constexpr int kLog = 1208;
constexpr int kBrowse = 1210;
constexpr int kViewer = 1211;

// Where the record holds what the page edits.
constexpr std::size_t kPrintAsImageAt = 998;
constexpr std::size_t kWaterMarkAt = 1250;
constexpr std::size_t kScaleAt = 1395;
constexpr std::size_t kRotateAt = 1396;
constexpr std::size_t kFormAt = 1398;
constexpr std::size_t kFormUnits = 32;
constexpr std::size_t kZoomAt = 1462;
constexpr std::size_t kLogAt = 1463;
constexpr std::size_t kLogPathAt = 1464;
constexpr std::size_t kLogPathUnits = 256;

constexpr wchar_t kLanguageValue[] = L"LANGUAGE_KVMR72";

constexpr wchar_t kAsImageText[] = L"All Text will be printed as graphics image!";

using Texts = std::vector<std::wstring>;

struct Edit {
    std::size_t offset;
    std::uint8_t value;
};

inline Bytes With(Bytes record, const std::vector<Edit>& edits) {
    for (const Edit& edit : edits) {
        record.at(edit.offset) = edit.value;
    }
    return record;
}

// A text field of `units`, zero behind the text.
inline Bytes WithText(Bytes record, std::size_t offset, std::size_t units, std::wstring_view text) {
    for (std::size_t i = 0; i < units; ++i) {
        const unsigned unit = i < text.size() ? text[i] : 0;
        record.at(offset + 2 * i) = static_cast<std::uint8_t>(unit & 0xFF);
        record.at(offset + 2 * i + 1) = static_cast<std::uint8_t>(unit >> 8);
    }
    return record;
}

inline Bytes WithForm(Bytes record, std::wstring_view form) {
    return WithText(std::move(record), kFormAt, kFormUnits, form);
}

inline Bytes WithLogPath(Bytes record, std::wstring_view path) {
    return WithText(std::move(record), kLogPathAt, kLogPathUnits, path);
}

// Everything of the page off, no form, and every byte that is none of its own odd.
inline Bytes PlainRecord() {
    Bytes record =
        FilledRecord([](std::size_t offset) { return static_cast<std::uint8_t>(offset * 7 + 131); });
    record = With(
        record,
        {{kPrintAsImageAt, 0}, {kWaterMarkAt, 0}, {kScaleAt, 50}, {kRotateAt, 0}, {kZoomAt, 0}, {kLogAt, 0}});
    return WithLogPath(WithForm(record, L""), L"C:\\Logs");
}

struct CaptionCase {
    int control;
    const wchar_t* key;
    const wchar_t* english;  // without a language file
};

inline const CaptionCase kCaptions[] = {
    {1119, L"RC_DOCSETTING", L"Document Setting"},
    {1120, L"RC_PRINT_AS_IMAGE", L"Print all text as graphics image:"},
    {kYes, L"RC_RADIO_ASGRAPHICSYES", L"Yes"},
    {kNo, L"RC_RADIO_ASGRAPHICSNO", L"No"},
    {kZoom, L"RC_CHECK_ZOOM", L"Zoom Printing"},
    {kScaleLabel, L"RC_SCALE", L"Scale:"},
    {1124, L"RC_ROTATE", L"Rotate"},
    {kNormal, L"RC_RADIO_ROTATENOMAL", L"Normal"},
    {kRotate180, L"RC_RADIO_ROTATE180", L"Rotate by 180 Degrees"},
    {1122, L"RC_PAPERSIZE", L"Paper Size:"},
    {1123, L"RC_LANGUAGE", L"Language:"},
    {1209, L"RC_STATIC_LOG", L"Main"},
    {kLog, L"RC_CHECK_LOG", L"Main"},
    {kBrowse, L"RC_BUTTON_LOG", L"Main"},
    {kViewer, L"RC_BUTTON_VIEWER", L"Main"},
};

inline Texts CaptionsOf(const Window& page) {
    Texts texts;
    for (const CaptionCase& caption : kCaptions) {
        texts.push_back(page.Text(caption.control));
    }
    return texts;
}

inline Texts DefaultCaptions() {
    Texts texts;
    for (const CaptionCase& caption : kCaptions) {
        texts.emplace_back(caption.english);
    }
    return texts;
}

inline Texts SourceCaptions(const wchar_t* file) {
    Texts texts;
    for (const CaptionCase& caption : kCaptions) {
        texts.push_back(SourceText(file, L"LAYOUT", caption.key));
    }
    return texts;
}

inline const Texts kShippedLanguages = {L"English", L"简体中文", L"繁體中文", L"System Language"};

}  // namespace pages::layout
