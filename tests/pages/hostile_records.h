// Records that no version of the driver wrote, and the way of one through the whole document sheet: every
// page must open on it without a word and change nothing by that; OK in the settings dialog must leave
// everything outside its block alone and make the block a valid one; applying must store what the pages show,
// and nothing else.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "operation_block.h"
#include "page_fixture.h"
#include "rig/import_hooks.h"
#include "ui_thread.h"

namespace pages {

// Answers every dialog that the window's thread opens, as soon as it waits for its user, without a second
// thread. A modal dialog that has nothing to do tells its owner.
class DialogAnswerer {
  public:
    // On the thread of `owner`. `answer` gets each dialog and ends it.
    DialogAnswerer(HWND owner, std::function<void(HWND)> answer) : owner_(owner), answer_(std::move(answer)) {
        active_ = this;
        previous_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(owner_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DialogAnswerer::Handle)));
    }
    ~DialogAnswerer() {
        SetWindowLongPtrW(owner_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_));
        active_ = nullptr;
    }
    DialogAnswerer(const DialogAnswerer&) = delete;
    DialogAnswerer& operator=(const DialogAnswerer&) = delete;

  private:
    static LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        DialogAnswerer& self = *active_;
        if (message == WM_ENTERIDLE && wparam == MSGF_DIALOGBOX) {
            self.answer_(reinterpret_cast<HWND>(lparam));
            return 0;
        }
        return CallWindowProcW(self.previous_, window, message, wparam, lparam);
    }

    static inline DialogAnswerer* active_ = nullptr;
    HWND owner_;
    std::function<void(HWND)> answer_;
    WNDPROC previous_ = nullptr;
};

// What OK without any change makes of a moment's block, item by item.
inline Bytes AfterOk(Bytes record, Moment moment) {
    const BlockOffsets& at = kBlockOffsets[moment];
    // Only 1 is checked.
    record[at.send_command] = record[at.send_command] == 1 ? 1 : 0;
    record[at.feed_to_position] = record[at.feed_to_position] == 1 ? 1 : 0;
    // What lies behind the command goes, and no command is longer than its room.
    record[at.command_length] = std::min<std::uint8_t>(record[at.command_length], kCommandRoom);
    for (std::size_t i = record[at.command_length]; i < kCommandRoom; ++i) {
        record[at.command + i] = 0;
    }
    record[at.feed] = std::min<std::uint8_t>(record[at.feed], 100);
    std::int32_t choice = 0;
    std::memcpy(&choice, &record[at.drawer_or_herald], sizeof choice);
    choice = choice == 0 ? 0 : 1;
    std::memcpy(&record[at.drawer_or_herald], &choice, sizeof choice);
    // No radio is checked for an alignment beyond its three, and then it counts as the last.
    record[at.logo_align] = std::min<std::uint8_t>(record[at.logo_align], 2);
    record[at.logo_position] = record[at.logo_position] == 0 ? 0 : 1;
    return record;
}

constexpr std::size_t kPrintAsImage = 998;
constexpr std::size_t kPictureName = 1000;
constexpr std::size_t kPictureNameUnits = 125;
constexpr std::size_t kKind = 1250;
constexpr std::size_t kText = 1252;
constexpr std::size_t kTextUnits = 16;
constexpr std::size_t kFace = 1284;
constexpr std::size_t kFaceUnits = 50;
constexpr std::size_t kFontSize = 1384;
constexpr std::size_t kAngle = 1388;
constexpr std::size_t kPosition = 1392;
constexpr std::size_t kSize = 1393;
constexpr std::size_t kRotate = 1396;
constexpr std::size_t kFormName = 1398;
constexpr std::size_t kFormNameUnits = 32;
constexpr std::size_t kZoom = 1462;
constexpr std::size_t kLogPath = 1464;
constexpr std::size_t kLogPathUnits = 256;

inline std::wstring FieldText(const Bytes& record, std::size_t offset, std::size_t units) {
    std::wstring text(units, L'\0');
    std::memcpy(text.data(), &record[offset], units * sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}

// The text with its terminator, and no trace of an old text behind it.
inline void PutText(Bytes& record, std::size_t offset, std::size_t units, std::wstring text) {
    text.resize(std::min(text.size(), units - 1));
    text.resize(units, L'\0');
    std::memcpy(&record[offset], text.data(), units * sizeof(wchar_t));
}

// What applying makes of a record whose pages were shown and not touched. `form` is the host's, `face` the
// one that the list of fonts shows.
inline Bytes AfterApply(Bytes record, const std::wstring& form, const std::wstring& face) {
    // One direction is always checked.
    record[kRotate] = record[kRotate] == 1 ? 1 : 0;
    PutText(record, kFormName, kFormNameUnits, form);
    // Sliders and arrows show the nearer end of their range.
    record[kSize] = std::min<std::uint8_t>(record[kSize], 100);
    record[kFontSize] = std::clamp<std::uint8_t>(record[kFontSize], 8, 72);
    std::int32_t angle = 0;
    std::memcpy(&angle, &record[kAngle], sizeof angle);
    angle = std::clamp(angle, 0, 360);
    std::memcpy(&record[kAngle], &angle, sizeof angle);
    if (record[kKind] == 1 || record[kKind] == 2) {
        record[kPrintAsImage] = 1;
    }
    if (record[kKind] == 1) {
        PutText(record, kPictureName, kPictureNameUnits, FieldText(record, kPictureName, kPictureNameUnits));
    } else if (record[kKind] == 2) {
        const std::wstring text = FieldText(record, kText, kTextUnits);
        PutText(record, kText, kTextUnits, text.empty() ? L"CONFIDENTIAL" : text);
        PutText(record, kFace, kFaceUnits, face);
    }
    return record;
}

constexpr int kFirstTab = 2;

// The barcode pages show one font at a time.
struct FontList {
    int tab;
    int list;
    int fonts;
};
constexpr FontList kFontLists[] = {{5, 1020, 8}, {6, 1201, 2}};

constexpr int kWaterMarkFonts = 1021;
constexpr int kWaterMarkPicture = 1085;

class HostileRecordsTest : public OperationTest {
  protected:
    void SetUp() override {
        OperationTest::SetUp();
        hooks_.On("USER32.dll", "MessageBoxW", &MessageBoxW, [this](auto, HWND, LPCWSTR, LPCWSTR, UINT) {
            ++boxes_;
            return IDOK;
        });
        StartHost();
        ASSERT_EQ(hooks_.Bound("MessageBoxW"), 1);
    }

    // Opens a sheet on each record, shows and paints every page, opens the settings dialog at each moment,
    // presses OK and applies.
    void Survive(const std::vector<Bytes>& records, const std::string& name) {
        SCOPED_TRACE(name);
        ASSERT_FALSE(records.empty());
        for (std::size_t i = 0; i < records.size() && !HasFailure(); ++i) {
            SCOPED_TRACE("record " + std::to_string(i));
            SurviveOne(records[i]);
        }
    }

    static Bytes Filled(std::uint8_t value) { return Bytes(kOemRecordSize, value); }

  private:
    void SurviveOne(const Bytes& record) {
        const UiThread ui_thread;
        SetRecord(record);
        Bytes expected = record;
        const SheetResult result = OpenSheet([&](UiDriver&, Sheet& sheet) {
            ui_thread.Do([&] { UseEveryPage(sheet, expected); });
            sheet.PressOk();
        });
        EXPECT_TRUE(result.kept);
        EXPECT_EQ(Differences(expected, Record()), "") << "OK after applying";
        EXPECT_TRUE(Host().GuardsIntact());
        EXPECT_EQ(boxes_, 0) << "nobody asked for a message";
    }

    // On the sheet's thread. Leaves in `expected` what the record is to be.
    void UseEveryPage(const Sheet& sheet, Bytes& expected) {
        int pages = 0;
        std::wstring face;
        const auto tabs = reinterpret_cast<HWND>(SendMessageW(sheet.handle(), PSM_GETTABCONTROL, 0, 0));
        const auto count = static_cast<int>(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
        for (int tab = kFirstTab; tab < count; ++tab) {
            SCOPED_TRACE("tab " + std::to_string(tab));
            SendMessageW(sheet.handle(), PSM_SETCURSEL, static_cast<WPARAM>(tab), 0);
            const auto page =
                reinterpret_cast<HWND>(SendMessageW(sheet.handle(), PSM_GETCURRENTPAGEHWND, 0, 0));
            ASSERT_NE(page, nullptr);
            ++pages;
            RedrawWindow(page, nullptr, nullptr,
                         RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
            ShowEveryFont(tab, page);
            EXPECT_EQ(Differences(expected, Record()), "") << "showing";
            if (tab == kOperationTab) {
                UseMoments(sheet, page, expected);
            }
            if (GetDlgItem(page, kWaterMarkPicture) != nullptr) {
                wchar_t text[LF_FACESIZE] = {};
                GetDlgItemTextW(page, kWaterMarkFonts, text, LF_FACESIZE);
                face = text;
            }
        }
        EXPECT_EQ(pages, 6);
        SendMessageW(sheet.handle(), PSM_APPLY, 0, 0);
        const DriverOptions& options = Host().options();
        const auto selected = static_cast<std::size_t>(options.item(DriverOptions::kForms).Sel);
        expected = AfterApply(std::move(expected), options.Values(DriverOptions::kForms).at(selected), face);
        EXPECT_EQ(Differences(expected, Record()), "") << "applying";
    }

    static void ShowEveryFont(int tab, HWND page) {
        for (const FontList& each : kFontLists) {
            for (int font = each.fonts - 1; each.tab == tab && font >= 0; --font) {
                const HWND list = GetDlgItem(page, each.list);
                EXPECT_EQ(SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(font), 0), font);
                SendMessageW(page, WM_COMMAND, MAKEWPARAM(each.list, CBN_SELCHANGE),
                             reinterpret_cast<LPARAM>(list));
            }
        }
    }

    void UseMoments(const Sheet& sheet, HWND page, Bytes& expected) {
        std::size_t dialogs = 0;
        const DialogAnswerer answerer(sheet.handle(), [&](HWND dialog) {
            if (GetDlgItem(dialog, 1016) == nullptr) {
                ADD_FAILURE() << "an unexpected dialog";
                EndDialog(dialog, IDCANCEL);
                return;
            }
            // What depends on the record is the picture; the rest of a repaint takes most of the time.
            SendMessageW(dialog, WM_PAINT, 0, 0);
            if (++dialogs == std::size(kMoments)) {
                RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
            }
            SendMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
        });
        for (const Moment moment : kMoments) {
            SCOPED_TRACE(moment);
            SendMessageW(GetDlgItem(page, MomentButton(moment)), BM_CLICK, 0, 0);
            expected = AfterOk(std::move(expected), moment);
            EXPECT_EQ(Differences(expected, Record()), "");
            EXPECT_TRUE(Host().RecordGuardsIntact());
        }
        EXPECT_EQ(dialogs, std::size(kMoments));
    }

    std::atomic<int> boxes_ = 0;
    rig::ImportHooks hooks_;
};

struct TextField {
    std::size_t offset;
    std::size_t units;
};

constexpr TextField kTextFields[] = {{kPictureName, kPictureNameUnits},
                                     {kText, kTextUnits},
                                     {kFace, kFaceUnits},
                                     {kFormName, kFormNameUnits},
                                     {kLogPath, kLogPathUnits}};

// Of a text that may be shown: letters, Chinese, halves of surrogate pairs, control characters with the
// terminator among them. Not of the scripts that are shaped: random ones fault in Wine's own text output.
inline std::uint16_t RandomUnit(std::mt19937& random) {
    const auto unit = [&random](unsigned first, unsigned count) {
        return static_cast<std::uint16_t>(first + random() % count);
    };
    switch (random() % 8) {
        case 0:
            return unit(0, 0x20);
        case 1:
            return unit(0xD800, 0x800);
        case 2:
        case 3:
            return unit(0x4E00, 0x5200);
        default:
            return unit(0x20, 0x5F);
    }
}

inline std::vector<Bytes> RandomRecords(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    std::vector<Bytes> records(count, Bytes(kOemRecordSize));
    for (std::size_t i = 0; i < records.size(); ++i) {
        Bytes& record = records[i];
        for (std::uint8_t& byte : record) {
            byte = static_cast<std::uint8_t>(random());
        }
        for (const TextField& field : kTextFields) {
            for (std::size_t unit = 0; unit < field.units; ++unit) {
                const std::uint16_t value = RandomUnit(random);
                std::memcpy(&record[field.offset + 2 * unit], &value, sizeof value);
            }
        }
        // Few bytes are a kind or a position of watermark by chance, and without them nothing is drawn.
        if (i % 4 != 0) {
            record[kKind] = i % 2 != 0 ? 2 : 1;
            record[kPosition] %= 10;
        }
    }
    return records;
}

}  // namespace pages
