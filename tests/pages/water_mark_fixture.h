// What the tests of the Water Mark page share: its controls and fields by number, records, and a system whose
// file dialog, fonts and message boxes are stand-ins, each test's own.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>
#include <prsht.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

#include "page_fixture.h"
#include "rig/import_hooks.h"

namespace pages::water_mark {

using Path = std::filesystem::path;
using Texts = std::vector<std::wstring>;
using Ids = std::vector<int>;

constexpr int kTemplate = 131;

// Where the record keeps what the page edits, and how many units its texts have.
constexpr std::size_t kAsImageAt = 998;
constexpr std::size_t kFileAt = 1000;
constexpr std::size_t kFileUnits = 125;
constexpr std::size_t kKindAt = 1250;
constexpr std::size_t kTextAt = 1252;
constexpr std::size_t kTextUnits = 16;
constexpr std::size_t kFaceAt = 1284;
constexpr std::size_t kFaceUnits = 50;
constexpr std::size_t kFontSizeAt = 1384;
constexpr std::size_t kStyleAt = 1385;
constexpr std::size_t kAngleAt = 1388;
constexpr std::size_t kPositionAt = 1392;
constexpr std::size_t kSizeAt = 1393;
constexpr std::size_t kBrightnessAt = 1394;
constexpr std::size_t kRotate180At = 1396;
constexpr std::size_t kZoomAt = 1462;

constexpr std::uint8_t kNone = 0;
constexpr std::uint8_t kImage = 1;
constexpr std::uint8_t kText = 2;

constexpr int kUseNone = 1077;
constexpr int kUseImage = 1061;
constexpr int kUseText = 1078;
constexpr int kFile = 1047;
constexpr int kBrowse = 1049;
constexpr int kTextList = 1020;
constexpr int kFontList = 1021;
constexpr int kStyleList = 1022;
constexpr int kFontSize = 1052;
constexpr int kFontSizeSpin = 1080;
constexpr int kAngle = 1018;
constexpr int kAngleValue = 1081;
constexpr int kPositionList = 1023;
constexpr int kSize = 1082;
constexpr int kSizeValue = 1084;
constexpr int kBrightness = 1083;
constexpr int kBrightnessValue = 1086;
// The edit control of an editable list.
constexpr int kListEdit = 1001;

constexpr int kKindRadios[] = {kUseNone, kUseImage, kUseText};

// The whole field: the text and zeros behind it.
inline void PutText(Bytes& record, std::size_t offset, std::size_t units, std::wstring_view text) {
    for (std::size_t i = 0; i < units; ++i) {
        const auto unit = static_cast<std::uint16_t>(i < text.size() ? text[i] : 0);
        record[offset + 2 * i] = static_cast<std::uint8_t>(unit & 0xFF);
        record[offset + 2 * i + 1] = static_cast<std::uint8_t>(unit >> 8);
    }
}

inline void PutAngle(Bytes& record, std::int32_t angle) {
    std::memcpy(&record[kAngleAt], &angle, sizeof angle);
}

// A bitmap of 2 x 2 grey pixels; `colours` of a palette move the pixels back by four bytes each.
inline Bytes BitmapFile(std::uint8_t bits, std::uint32_t colours) {
    const std::uint32_t row = bits == 24 ? 8 : 4;
    const std::uint32_t offset = 54 + 4 * colours;
    Bytes file;
    const auto put = [&file](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i, value >>= 8) {
            file.push_back(static_cast<std::uint8_t>(value & 0xFF));
        }
    };
    put(0x4D42, 2);
    put(offset + 2 * row, 4);
    put(0, 4);
    put(offset, 4);
    put(40, 4);
    put(2, 4);
    put(2, 4);
    put(1, 2);
    put(bits, 2);
    put(0, 4);
    put(2 * row, 4);
    put(0, 4);
    put(0, 4);
    put(0, 4);
    put(0, 4);
    for (std::uint32_t i = 0; i < colours; ++i) {
        put(i * 0x010101, 4);
    }
    put(0, static_cast<int>(2 * row));
    return file;
}

// The controls that a kind switches on and off, those that are on.
inline Ids EnabledControls(const Window& page) {
    Ids enabled;
    for (const int control : {kFile, kBrowse, kTextList, kFontList, kStyleList, kFontSize, kFontSizeSpin,
                              kAngle, kPositionList, kSize, kBrightness}) {
        if (page.IsEnabled(control)) {
            enabled.push_back(control);
        }
    }
    return enabled;
}

inline const Ids kEnabledFor[] = {
    {},
    {kFile, kBrowse, kPositionList, kSize, kBrightness},
    {kTextList, kFontList, kStyleList, kFontSize, kFontSizeSpin, kAngle, kPositionList, kSize, kBrightness}};

// As a choice from the open list ends.
inline void Choose(const Window& page, int list, int index) {
    ASSERT_EQ(page.Send(list, CB_SETCURSEL, static_cast<WPARAM>(index)), index);
    SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(list, CBN_SELENDOK),
                 reinterpret_cast<LPARAM>(page.Control(list)));
}

struct Face {
    std::wstring name;
    DWORD type;
};

struct Box {
    HWND owner;
    std::wstring title;
    std::wstring text;
    UINT type;
    bool operator==(const Box&) const = default;
};

class WaterMarkPageTest : public PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        wchar_t folder[MAX_PATH] = {};
        ASSERT_NE(GetTempPathW(MAX_PATH, folder), 0u);
        real_temp_ = folder;
        folder_ = real_temp_ / L"kvmr72-water-mark-page";
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
        std::filesystem::create_directories(folder_ / L"temp");
        SetEnvironmentVariableW(L"TMP", (folder_ / L"temp").c_str());
        picture_ = WriteFile(L"shop.bmp", BitmapFile(24, 0));
        HookSystem();
    }

    void TearDown() override {
        PageTest::TearDown();
        SetEnvironmentVariableW(L"TMP", real_temp_.c_str());
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }

    void HookSystem() {
        hooks_.On("USER32.dll", "MessageBoxW", &MessageBoxW,
                  [this](auto original, HWND owner, LPCWSTR text, LPCWSTR title, UINT type) {
                      boxes_.push_back({owner, title, text, type});
                      if (shows_boxes_) {
                          return original(owner, text, title, type);
                      }
                      if (on_box_) {
                          on_box_();
                      }
                      return IDOK;
                  });
        hooks_.On("USER32.dll", "BeginPaint", &BeginPaint,
                  [this](auto original, HWND window, LPPAINTSTRUCT paint) {
                      ++paints_;
                      return original(window, paint);
                  });
        hooks_.On("GDI32.dll", "EnumFontFamiliesExW", &EnumFontFamiliesExW,
                  [this](auto original, HDC dc, LPLOGFONTW font, FONTENUMPROCW found, LPARAM parameter,
                         DWORD flags) {
                      font_window_ = WindowFromDC(dc);
                      font_query_ = *font;
                      if (!faces_) {
                          return original(dc, font, found, parameter, flags);
                      }
                      int answer = 1;
                      for (const Face& face : *faces_) {
                          LOGFONTW reported = {};
                          lstrcpynW(reported.lfFaceName, face.name.c_str(), LF_FACESIZE);
                          const TEXTMETRICW metric = {};
                          answer = answer != 0 ? found(&reported, &metric, face.type, parameter) : 0;
                      }
                      return answer;
                  });
        hooks_.On("comdlg32.dll", "GetOpenFileNameW", &GetOpenFileNameW,
                  [this](auto, LPOPENFILENAMEW dialog) {
                      ++choosers_;
                      return chooser_ ? chooser_(*dialog) : FALSE;
                  });
    }

    // A file of the test's own folder.
    Path WriteFile(const std::wstring& name, const Bytes& bytes) const {
        rig::WriteBytes(folder_ / name, bytes);
        return folder_ / name;
    }

    std::vector<Path> TemporaryFiles() const {
        std::vector<Path> files;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder_ / L"temp", error)) {
            files.push_back(entry.path());
        }
        return files;
    }

    // Every field that the page edits has a value of its own, all other bytes are odd ones.
    Bytes RecordOf(std::uint8_t kind) const {
        Bytes record =
            FilledRecord([](std::size_t offset) { return static_cast<std::uint8_t>(offset * 7 + 131); });
        record[kAsImageAt] = kind == kNone ? 0 : 1;
        PutText(record, kFileAt, kFileUnits, picture_.native());
        record[kKindAt] = kind;
        PutText(record, kTextAt, kTextUnits, L"PROOF");
        PutText(record, kFaceAt, kFaceUnits, L"Beta");
        record[kFontSizeAt] = 30;
        record[kStyleAt] = 2;
        PutAngle(record, 90);
        record[kPositionAt] = 3;
        record[kSizeAt] = 40;
        record[kBrightnessAt] = 60;
        return record;
    }

    void OpenPage(const Bytes& record,
                  const std::function<void(UiDriver&, Sheet&, const Window& page)>& script) {
        SetRecord(record);
        OpenSheet([&](UiDriver& ui, Sheet& sheet) {
            script(ui, sheet, sheet.SelectTab(title_));
            if (sheet.IsOpen()) {
                sheet.PressCancel();
            }
        });
    }

    // Does something that the user does: it leaves exactly `expected` in the record, which is drawn, and the
    // sheet can be applied.
    void Step(const Sheet& sheet, const Window& page, const char* name, const Bytes& expected,
              const std::function<void()>& action) {
        SCOPED_TRACE(name);
        SendMessageW(sheet.handle(), PSM_UNCHANGED, reinterpret_cast<WPARAM>(page.handle()), 0);
        EXPECT_FALSE(sheet.IsApplyEnabled());
        paints_ = 0;
        action();
        Settle(page);
        EXPECT_EQ(Differences(expected, Record()), "");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        EXPECT_GE(paints_, 1);
    }

    Box Information(const Window& page) const {
        return {page.handle(), L"Information", L"All Text will be printed as graphics image!",
                MB_OK | MB_ICONINFORMATION};
    }
    Box Error(const Window& page, const wchar_t* text) const {
        return {page.handle(), L"Error", text, MB_OK | MB_ICONERROR};
    }

    std::wstring title_ = L"Water Mark";
    Path real_temp_;
    Path folder_;
    Path picture_;
    bool shows_boxes_ = false;
    std::function<void()> on_box_;
    std::vector<Box> boxes_;
    std::atomic<int> paints_ = 0;
    int choosers_ = 0;
    std::function<BOOL(OPENFILENAMEW&)> chooser_;
    // What the system reports; nothing: the real fonts.
    std::optional<std::vector<Face>> faces_ =
        std::vector<Face>{{L"Beta", TRUETYPE_FONTTYPE},
                          {L"@Beta", TRUETYPE_FONTTYPE},
                          {L"Screen", RASTER_FONTTYPE},
                          {L"Alpha Narrow", TRUETYPE_FONTTYPE},
                          {L"Alpha", TRUETYPE_FONTTYPE},
                          {L"Alpha", TRUETYPE_FONTTYPE | DEVICE_FONTTYPE},
                          {L"Plotter", 0},
                          {L"Printer", DEVICE_FONTTYPE}};
    HWND font_window_ = nullptr;
    LOGFONTW font_query_ = {};
    rig::ImportHooks hooks_;
};

}  // namespace pages::water_mark
