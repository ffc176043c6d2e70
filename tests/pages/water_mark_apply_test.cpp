// How the Water Mark page gets a file, what applying stores, and what it makes of records, messages and a
// system that are not as they should be. The file dialog in the real sheet; the rest on the page alone, under
// a window of no meaning, where each call of its procedure can be looked at.
#include "rig/trace_capture.h"
#include "water_mark_fixture.h"

namespace pages::water_mark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr wchar_t kDenied[] = L"Please check if user has administrator privileges!";
constexpr wchar_t kDepth[] = L"Make sure the specified bitmap is 1/8/24/ bits!";
constexpr wchar_t kNoName[] = L"No filename is specified!";
constexpr wchar_t kTooLong[] = L"The path is too long!";

// The file dialog

class WaterMarkFileTest : public WaterMarkPageTest {
  protected:
    // The user picks this path.
    void WillChoose(const std::wstring& path) {
        chooser_ = [path](OPENFILENAMEW& dialog) {
            EXPECT_LT(path.size(), dialog.nMaxFile);
            std::copy_n(path.c_str(), path.size() + 1, dialog.lpstrFile);
            return TRUE;
        };
    }

    void ExpectStored(const Sheet& sheet, const Window& page, Bytes& record, const char* name,
                      const Path& file) {
        PutText(record, kFileAt, kFileUnits, file.native());
        WillChoose(file.native());
        Step(sheet, page, name, record, [&] { page.Click(kBrowse); });
        EXPECT_EQ(page.Text(kFile), file.native()) << name;
        EXPECT_THAT(boxes_, IsEmpty()) << name;
    }

    // Nothing happens but what is said.
    void ExpectRefused(const Sheet& sheet, const Window& page, const char* name, const std::wstring& file,
                       const wchar_t* message) {
        const Bytes record = Record();
        const std::wstring shown = page.Text(kFile);
        SendMessageW(sheet.handle(), PSM_UNCHANGED, reinterpret_cast<WPARAM>(page.handle()), 0);
        WillChoose(file);
        page.Click(kBrowse);
        Settle(page);
        EXPECT_THAT(boxes_, ElementsAre(Error(page, message))) << name;
        EXPECT_EQ(page.Text(kFile), shown) << name;
        EXPECT_EQ(Differences(record, Record()), "") << name;
        EXPECT_FALSE(sheet.IsApplyEnabled()) << name;
        boxes_.clear();
    }

    // An existing picture with a path of so many units.
    Path PictureOfLength(std::size_t units) const {
        const std::size_t folder = folder_.native().size() + 1;
        EXPECT_GT(units, folder + 4);
        return WriteFile(std::wstring(units - folder - 4, L'p') + L".bmp", BitmapFile(24, 0));
    }
};

TEST_F(WaterMarkFileTest, AsksForBitmaps) {
    const Bytes record = RecordOf(kImage);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        OPENFILENAMEW asked = {};
        std::wstring filter;
        std::wstring first;
        chooser_ = [&](OPENFILENAMEW& dialog) {
            asked = dialog;
            const wchar_t* end = dialog.lpstrFilter;
            while (end[0] != L'\0' || end[1] != L'\0') {
                ++end;
            }
            filter.assign(dialog.lpstrFilter, end);
            first = dialog.lpstrFile;
            return FALSE;
        };
        page.Click(kBrowse);
        EXPECT_EQ(choosers_, 1);
        EXPECT_EQ(asked.lStructSize, sizeof asked);
        EXPECT_EQ(asked.hwndOwner, page.handle());
        EXPECT_EQ(filter, std::wstring(L"*.bmp\0*.bmp", 11));
        EXPECT_EQ(first, L"");
        EXPECT_GE(asked.nMaxFile, 260u);
        EXPECT_NE(asked.Flags & OFN_NOCHANGEDIR, 0u) << "the program keeps its current folder";
        // Cancelled.
        EXPECT_EQ(page.Text(kFile), picture_.native());
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_THAT(boxes_, IsEmpty());
    });
}

TEST_F(WaterMarkFileTest, StoresAPictureOfEachDepth) {
    Bytes record = RecordOf(kImage);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        ExpectStored(sheet, page, record, "1 bit", WriteFile(L"one.bmp", BitmapFile(1, 2)));
        ExpectStored(sheet, page, record, "8 bits", WriteFile(L"eight.bmp", BitmapFile(8, 256)));
        ExpectStored(sheet, page, record, "24 bits", WriteFile(L"many.bmp", BitmapFile(24, 0)));
        ExpectStored(sheet, page, record, "the longest", PictureOfLength(124));
        const std::vector<Path> files = TemporaryFiles();
        ASSERT_THAT(files, SizeIs(1));
        EXPECT_TRUE(files[0].native().ends_with(L"1.bmp"));
        EXPECT_EQ(rig::ReadBytes(files[0]), BitmapFile(24, 0));
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkFileTest, RefusesWhatItCannotUse) {
    OpenPage(RecordOf(kImage), [&](UiDriver&, Sheet& sheet, const Window& page) {
        ExpectRefused(sheet, page, "4 bits", WriteFile(L"four.bmp", BitmapFile(4, 16)), kDepth);
        ExpectRefused(sheet, page, "32 bits", WriteFile(L"full.bmp", BitmapFile(32, 0)), kDepth);
        ExpectRefused(sheet, page, "no bitmap", WriteFile(L"text.bmp", Bytes(200, 'x')), kDepth);
        ExpectRefused(sheet, page, "empty", WriteFile(L"empty.bmp", {}), kDepth);
        ExpectRefused(sheet, page, "missing", folder_ / L"missing.bmp", kDepth);
        ExpectRefused(sheet, page, "no name", L"", kDepth);
        ExpectRefused(sheet, page, "a unit too long", PictureOfLength(125), kTooLong);
        ExpectRefused(sheet, page, "much too long", PictureOfLength(200), kTooLong);
    });
}

TEST_F(WaterMarkFileTest, SaysWhenItsCopyCannotBeWritten) {
    const Path other = WriteFile(L"other.bmp", BitmapFile(24, 0));
    Bytes record = RecordOf(kImage);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        ExpectStored(sheet, page, record, "at first", other);
        ASSERT_THAT(TemporaryFiles(), SizeIs(1));
        const Path copy = TemporaryFiles()[0];
        const HANDLE held = CreateFileW(copy.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        ExpectRefused(sheet, page, "held by somebody", picture_, kDenied);
        CloseHandle(held);
        ASSERT_TRUE(DeleteFileW(copy.c_str()));
        std::filesystem::create_directory(copy);
        ExpectRefused(sheet, page, "folder of that name", picture_, kDenied);
        SetEnvironmentVariableW(L"TMP", (folder_ / L"nowhere").c_str());
        ExpectRefused(sheet, page, "no such folder", picture_, kDenied);
        SetEnvironmentVariableW(L"TMP", (folder_ / L"temp").c_str());
        std::filesystem::remove(copy);
        ExpectStored(sheet, page, record, "again", picture_);
    });
}

TEST_F(WaterMarkFileTest, SaysWhenThereIsNoTemporaryFolder) {
    bool fails = false;
    hooks_.On("KERNEL32.dll", "GetTempPathW", &GetTempPathW, [&](auto original, DWORD length, LPWSTR path) {
        return fails ? DWORD{0} : original(length, path);
    });
    OpenPage(RecordOf(kImage), [&](UiDriver&, Sheet& sheet, const Window& page) {
        fails = true;
        ExpectRefused(sheet, page, "none", picture_, kDenied);
    });
}

// The box that shows the path gives nothing back.
TEST_F(WaterMarkFileTest, SaysWhenNoNameIsLeft) {
    bool fails = false;
    hooks_.On("USER32.dll", "GetDlgItemTextW", &GetDlgItemTextW,
              [&](auto original, HWND dialog, int control, LPWSTR text, int length) -> UINT {
                  if (fails && control == kFile) {
                      text[0] = L'\0';
                      return 0;
                  }
                  return original(dialog, control, text, length);
              });
    const Bytes record = RecordOf(kImage);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        fails = true;
        WillChoose(WriteFile(L"other.bmp", BitmapFile(24, 0)));
        page.Click(kBrowse);
        EXPECT_THAT(boxes_, ElementsAre(Error(page, kNoName)));
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
    });
}

TEST_F(WaterMarkFileTest, SaysErrorsInTheChosenLanguage) {
    ChooseLanguage(kSimplifiedChinese);
    title_ = SourceText(kSimplifiedChinese, L"WATERMARK", L"RC_WATERMARKFORM");
    OpenPage(RecordOf(kImage), [&](UiDriver&, Sheet&, const Window& page) {
        WillChoose(WriteFile(L"four.bmp", BitmapFile(4, 16)));
        page.Click(kBrowse);
        ASSERT_THAT(boxes_, SizeIs(1));
        EXPECT_EQ(boxes_[0].title, SourceText(kSimplifiedChinese, L"MessageBox", L"MB_ERROR"));
        EXPECT_EQ(boxes_[0].text, SourceText(kSimplifiedChinese, L"MessageBox", L"MB_WATERMARK_ERROR5"));
    });
}

// The page alone

class WaterMarkLonePageTest : public WaterMarkPageTest {
  protected:
    void TearDown() override {
        Unmake();
        if (parent_ != nullptr) {
            DestroyWindow(parent_);
        }
        WaterMarkPageTest::TearDown();
    }

    void Make(const Bytes& record) {
        SetRecord(record);
        if (parent_ == nullptr) {
            ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
            fake_.parameters.pOEMDM = Host().record_bytes().data();
            ASSERT_EQ(Host().plugin().DocumentPropertySheets(&fake_.info, 0), S_OK);
            const Bytes page = fake_.PageOf(kTemplate).page;
            ASSERT_EQ(page.size(), sizeof description_);
            std::memcpy(&description_, page.data(), sizeof description_);
            parent_ = CreateWindowExW(0, L"Static", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 700, 600,
                                      nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
        }
        page_ = CreateDialogParamW(description_.hInstance, description_.pszTemplate, parent_,
                                   description_.pfnDlgProc, reinterpret_cast<LPARAM>(&description_));
        ASSERT_NE(page_, nullptr);
        ShowWindow(page_, SW_SHOW);
        EnableWindow(page_, TRUE);
        fake_.calls.clear();
    }

    void Unmake() {
        if (IsWindow(page_)) {
            DestroyWindow(page_);
        }
    }

    Window Page() const { return {driver_, page_}; }

    // What the dialog procedure itself returns.
    INT_PTR Call(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const {
        return description_.pfnDlgProc(page_, message, wparam, lparam);
    }

    INT_PTR Command(int control, int notification) const {
        return Call(WM_COMMAND, MAKEWPARAM(control, notification),
                    reinterpret_cast<LPARAM>(GetDlgItem(page_, control)));
    }

    INT_PTR Notify(UINT code) const {
        PSHNOTIFY notification = {};
        notification.hdr.hwndFrom = parent_;
        notification.hdr.code = code;
        return Call(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    }

    INT_PTR Apply() const { return Notify(static_cast<UINT>(PSN_APPLY)); }

    UiDriver driver_{GetCurrentThreadId()};
    FakeSheet fake_;
    PROPSHEETPAGEW description_ = {};
    HWND parent_ = nullptr;
    HWND page_ = nullptr;
};

TEST_F(WaterMarkLonePageTest, TracesWhatItOpensOn) {
    Bytes record = RecordOf(kText);
    PutText(record, kFileAt, kFileUnits, L"C:\\shop\\100%s.bmp");
    Make(record);
    Unmake();
    rig::TraceCapture trace;
    Make(record);
    rig::Lines lines;
    for (const std::wstring& line : trace.Take()) {
        if (line.find(L"Initialize Water Mark") != std::wstring::npos) {
            lines.push_back(line);
        }
    }
    EXPECT_THAT(lines,
                ElementsAre(L"UI:  Initialize Water Mark callback function\r\n",
                            L"UI:  Initialize Water Mark callback function pOEMDev->WaterMarkPicName = "
                            L"C:\\shop\\100%s.bmp\r\n",
                            L"UI:  Initialize Water Mark callback function pOEMDev->iWaterMarkType = 2\r\n"));
}

TEST_F(WaterMarkLonePageTest, ShowsItsTextsBeforeItIsPainted) {
    ChooseLanguage(kTraditionalChinese);
    Make(RecordOf(kText));
    EXPECT_EQ(paints_, 0);
    const Window page = Page();
    const std::pair<int, const wchar_t*> captions[] = {
        {kUseNone, L"RC_RADIO_NO"},
        {kUseImage, L"RC_RADIO_IMAGE"},
        {1171, L"RC_STATIC_WATERMARK_BMP"},
        {kBrowse, L"RC_SELECT_PICTURE"},
        {kUseText, L"RC_RADIO_TEXT"},
        {1156, L"RC_STATIC_WATERMARK_TEXT"},
        {1157, L"RC_STATIC_WATERMARK_FONTTYPE"},
        {1158, L"RC_STATIC_WATERMARK_FONTSTYLE"},
        {1168, L"RC_STATIC_WATERMARK_FONTSIZE"},
        {1159, L"RC_STATIC_WATERMARK_ANGLE"},
        {1160, L"RC_STATIC_WATERMARK_POSITION"},
        {1162, L"RC_STATIC_WATERMARK_SIZE"},
        {1161, L"RC_STATIC_WATERMARK_BRIGHTNESS"},
    };
    for (const auto& [control, key] : captions) {
        EXPECT_EQ(page.Text(control), SourceText(kTraditionalChinese, L"WATERMARK", key));
    }
    const Texts styles = page.ComboItems(kStyleList);
    ASSERT_EQ(styles.size(), 4u);
    EXPECT_EQ(styles[0], SourceText(kTraditionalChinese, L"WATERMARK", L"RC_STATIC_WATERMARK_FONTSTYLE1"));
    const Texts positions = page.ComboItems(kPositionList);
    ASSERT_EQ(positions.size(), 10u);
    EXPECT_EQ(positions[9], SourceText(kTraditionalChinese, L"WATERMARK", L"RC_STATIC_WATERMARK_POSITION10"));
}

// What the controls show when the sheet applies, whatever the record says by then.
TEST_F(WaterMarkLonePageTest, AppliesWhatTheControlsShow) {
    const Path other = WriteFile(L"other.bmp", BitmapFile(24, 0));
    for (const std::uint8_t kind : {kNone, kImage, kText}) {
        for (const std::uint8_t as_image : std::initializer_list<std::uint8_t>{0, 1}) {
            SCOPED_TRACE(testing::Message() << "kind " << +kind << ", as image " << +as_image);
            Bytes record = RecordOf(kind == kText ? kImage : kText);
            Make(record);
            const Window page = Page();
            for (std::uint8_t radio = 0; radio < 3; ++radio) {
                CheckDlgButton(page_, kKindRadios[radio], radio == kind ? BST_CHECKED : BST_UNCHECKED);
            }
            SetDlgItemTextW(page_, kFile, other.c_str());
            page.Send(kTextList, CB_SETCURSEL, 2);
            page.Send(kFontList, CB_SETCURSEL, 0);
            page.Send(kStyleList, CB_SETCURSEL, 3);
            SetDlgItemTextW(page_, kFontSize, L"5");
            page.Send(kAngle, TBM_SETPOS, TRUE, 270);
            page.Send(kPositionList, CB_SETCURSEL, 8);
            page.Send(kSize, TBM_SETPOS, TRUE, 77);
            page.Send(kBrightness, TBM_SETPOS, TRUE, 200);
            record[kAsImageAt] = as_image;
            SetRecord(record);
            for (const Path& file : TemporaryFiles()) {
                DeleteFileW(file.c_str());
            }

            record[kKindAt] = kind;
            record[kStyleAt] = 3;
            record[kFontSizeAt] = 5;
            PutAngle(record, 270);
            record[kPositionAt] = 8;
            record[kSizeAt] = 77;
            record[kBrightnessAt] = 200;
            if (kind != kNone) {
                record[kAsImageAt] = 1;
            }
            if (kind == kImage) {
                PutText(record, kFileAt, kFileUnits, other.native());
            } else if (kind == kText) {
                PutText(record, kTextAt, kTextUnits, L"TOP SECRET");
                PutText(record, kFaceAt, kFaceUnits, L"Alpha");
            }
            SetWindowLongPtrW(page_, DWLP_MSGRESULT, 0x77);
            EXPECT_EQ(Apply(), TRUE);
            EXPECT_EQ(GetWindowLongPtrW(page_, DWLP_MSGRESULT), PSNRET_NOERROR);
            EXPECT_EQ(Differences(record, Record()), "");
            ASSERT_THAT(fake_.calls, SizeIs(1));
            EXPECT_EQ(fake_.calls[0].sheet, &fake_);
            EXPECT_EQ(fake_.calls[0].function, UINT{CPSFUNC_SET_RESULT});
            // Its place among the plug-in's pages: behind the Main page.
            EXPECT_EQ(fake_.calls[0].first, FakeSheet::kFirstPage + 1);
            EXPECT_EQ(fake_.calls[0].second, 1);
            const std::vector<Path> files = TemporaryFiles();
            ASSERT_THAT(files, SizeIs(kind == kText ? 1 : 0));
            if (kind == kText) {
                EXPECT_TRUE(files[0].native().ends_with(L"1.bmp"));
                EXPECT_EQ(std::filesystem::file_size(files[0]), 270054u);
            }
            EXPECT_THAT(boxes_, IsEmpty());
            Unmake();
        }
    }
}

TEST_F(WaterMarkLonePageTest, AppliesTypedText) {
    Bytes record = RecordOf(kText);
    Make(record);
    const std::wstring typed(60, L'w');
    Page().Send(kTextList, CB_SETCURSEL, static_cast<WPARAM>(-1));
    SetDlgItemTextW(page_, kTextList, typed.c_str());
    SetRecord(record);
    Apply();
    PutText(record, kTextAt, kTextUnits, typed.substr(0, 15));
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkLonePageTest, AnswersTheOtherNotifications) {
    Make(RecordOf(kText));
    const Bytes record = Record();
    for (const int code : {static_cast<int>(PSN_SETACTIVE), static_cast<int>(PSN_KILLACTIVE)}) {
        SetWindowLongPtrW(page_, DWLP_MSGRESULT, 0x77);
        EXPECT_EQ(Notify(static_cast<UINT>(code)), TRUE);
        EXPECT_EQ(GetWindowLongPtrW(page_, DWLP_MSGRESULT), 0);
    }
    for (const int code : {static_cast<int>(PSN_RESET), static_cast<int>(PSN_HELP), 0}) {
        EXPECT_EQ(Notify(static_cast<UINT>(code)), FALSE);
    }
    EXPECT_EQ(Call(WM_NOTIFY, 0, 0), FALSE);
    EXPECT_THAT(fake_.calls, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkLonePageTest, FollowsTheSlidersAtEachMove) {
    Bytes record = RecordOf(kText);
    Make(record);
    const Window page = Page();
    for (WORD code = TB_LINEUP; code <= TB_ENDTRACK; ++code) {
        SCOPED_TRACE(code);
        page.Send(kAngle, TBM_SETPOS, TRUE, 300 + code);
        page.Send(kSize, TBM_SETPOS, TRUE, 50 + code);
        page.Send(kBrightness, TBM_SETPOS, TRUE, 240 + code);
        paints_ = 0;
        // Whichever slider moved, all three are read.
        Call(WM_HSCROLL, MAKEWPARAM(code, 0), reinterpret_cast<LPARAM>(GetDlgItem(page_, kSize)));
        const bool moves = code != TB_ENDTRACK;
        if (moves) {
            PutAngle(record, 300 + code);
            record[kSizeAt] = static_cast<std::uint8_t>(50 + code);
            record[kBrightnessAt] = static_cast<std::uint8_t>(240 + code);
        }
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_EQ(paints_ > 0, moves);
        const int last = std::min<int>(code, TB_BOTTOM);
        EXPECT_EQ(page.Text(kAngleValue), std::to_wstring(300 + last));
        EXPECT_EQ(page.Text(kSizeValue), std::to_wstring(50 + last));
        EXPECT_EQ(page.Text(kBrightnessValue), std::to_wstring(240 + last));
    }
}

TEST_F(WaterMarkLonePageTest, HeedsTheNotificationsThatStoreOnly) {
    Bytes record = RecordOf(kText);
    Make(record);
    const Window page = Page();
    page.Send(kTextList, CB_SETCURSEL, 2);
    page.Send(kFontList, CB_SETCURSEL, 0);
    page.Send(kStyleList, CB_SETCURSEL, 3);
    page.Send(kPositionList, CB_SETCURSEL, 9);
    struct Case {
        int control;
        int notification;
    };
    for (const Case& ignored :
         {Case{kTextList, CBN_SELENDOK}, Case{kTextList, CBN_EDITUPDATE}, Case{kTextList, CBN_KILLFOCUS},
          Case{kFontList, CBN_SELCHANGE}, Case{kFontList, CBN_SELENDCANCEL}, Case{kStyleList, CBN_SELCHANGE},
          Case{kStyleList, CBN_SELENDCANCEL}, Case{kPositionList, CBN_SELCHANGE},
          Case{kPositionList, CBN_SELENDCANCEL}, Case{kFontSize, EN_SETFOCUS}, Case{kFontSize, EN_UPDATE},
          Case{kUseNone, BN_SETFOCUS}, Case{kUseImage, BN_DOUBLECLICKED}, Case{kBrowse, BN_SETFOCUS},
          Case{kFile, EN_CHANGE}, Case{0, 0}, Case{1, 0}, Case{2, 0}, Case{65535, 0}}) {
        Command(ignored.control, ignored.notification);
        EXPECT_EQ(Differences(record, Record()), "") << ignored.control << " " << ignored.notification;
    }
    EXPECT_EQ(choosers_, 0);
    // The arrows tell nothing but that they were used: the number beside them counts.
    record[kFontSizeAt] = 11;
    SetRecord(record);
    record[kFontSizeAt] = 30;
    Command(kFontSizeSpin, 0);
    EXPECT_EQ(Differences(record, Record()), "");
    PutText(record, kTextAt, kTextUnits, L"TOP SECRET");
    Command(kTextList, CBN_SELCHANGE);
    EXPECT_EQ(Differences(record, Record()), "");
}

// Records that no page wrote

struct HostileRecord {
    const char* name;
    std::function<void(Bytes&)> spoil;
    // What applying makes of it; the rest is kept.
    std::function<void(Bytes&)> applied;
};

TEST_F(WaterMarkLonePageTest, KeepsHostileRecordsUntilTheyAreApplied) {
    const HostileRecord kRecords[] = {
        {"unknown choices",
         [](Bytes& record) {
             record[kKindAt] = 7;
             record[kAsImageAt] = 9;
             record[kPositionAt] = 10;
             record[kStyleAt] = 4;
         },
         [](Bytes&) {}},
        {"the highest numbers",
         [](Bytes& record) {
             record[kKindAt] = 255;
             record[kPositionAt] = 255;
             record[kStyleAt] = 255;
             record[kSizeAt] = 255;
             record[kFontSizeAt] = 255;
             PutAngle(record, 0x7FFFFFFF);
         },
         [](Bytes& record) {
             record[kSizeAt] = 100;
             record[kFontSizeAt] = 72;
             PutAngle(record, 360);
         }},
        {"below the ranges, image",
         [](Bytes& record) {
             record[kKindAt] = kImage;
             record[kAsImageAt] = 0;
             record[kFontSizeAt] = 0;
             PutAngle(record, -1);
         },
         [](Bytes& record) {
             record[kAsImageAt] = 1;
             record[kFontSizeAt] = 8;
             PutAngle(record, 0);
         }},
        {"beyond the ranges, text",
         [](Bytes& record) {
             record[kKindAt] = kText;
             record[kAsImageAt] = 255;
             record[kPositionAt] = 200;
             record[kStyleAt] = 200;
             record[kSizeAt] = 101;
             record[kFontSizeAt] = 73;
             PutAngle(record, 361);
         },
         [](Bytes& record) {
             record[kAsImageAt] = 1;
             record[kSizeAt] = 100;
             record[kFontSizeAt] = 72;
             PutAngle(record, 360);
         }},
        {"small tiles",
         [](Bytes& record) {
             record[kKindAt] = kText;
             record[kPositionAt] = 9;
             record[kSizeAt] = 0;
         },
         [](Bytes&) {}},
        {"texts without end, text",
         [](Bytes& record) {
             record[kKindAt] = kText;
             PutText(record, kFileAt, kFileUnits, std::wstring(125, L'f'));
             PutText(record, kTextAt, kTextUnits, std::wstring(16, L't'));
             PutText(record, kFaceAt, kFaceUnits, std::wstring(50, L'F'));
         },
         [](Bytes& record) {
             PutText(record, kTextAt, kTextUnits, std::wstring(15, L't'));
             // The face is not installed: the list shows its first one.
             PutText(record, kFaceAt, kFaceUnits, L"Alpha");
         }},
        {"texts without end, image",
         [](Bytes& record) {
             record[kKindAt] = kImage;
             PutText(record, kFileAt, kFileUnits, std::wstring(125, L'f'));
             PutText(record, kTextAt, kTextUnits, std::wstring(16, L'\xD800'));
             PutText(record, kFaceAt, kFaceUnits, std::wstring(50, L'\xFFFF'));
         },
         [](Bytes& record) { PutText(record, kFileAt, kFileUnits, std::wstring(124, L'f')); }},
        {"text and face empty",
         [](Bytes& record) {
             record[kKindAt] = kText;
             PutText(record, kTextAt, kTextUnits, L"");
             PutText(record, kFaceAt, kFaceUnits, L"");
         },
         [](Bytes& record) {
             PutText(record, kTextAt, kTextUnits, L"CONFIDENTIAL");
             PutText(record, kFaceAt, kFaceUnits, L"Alpha");
         }},
    };
    for (const HostileRecord& hostile : kRecords) {
        SCOPED_TRACE(hostile.name);
        Bytes record = RecordOf(kText);
        hostile.spoil(record);
        Make(record);
        for (int i = 0; i < 2; ++i) {
            RedrawWindow(page_, nullptr, nullptr,
                         RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        }
        EXPECT_EQ(EnabledControls(Page()), record[kKindAt] <= kText ? kEnabledFor[record[kKindAt]] : Ids());
        Unmake();
        EXPECT_EQ(Differences(record, Record()), "") << "opened, painted and closed";
        Make(record);
        Apply();
        hostile.applied(record);
        EXPECT_EQ(Differences(record, Record()), "") << "applied";
        EXPECT_TRUE(Host().RecordGuardsIntact());
        EXPECT_THAT(boxes_, IsEmpty());
        Unmake();
    }
}

TEST_F(WaterMarkLonePageTest, ShowsHostileValuesAsTheNearestOrNone) {
    Bytes record = RecordOf(kText);
    record[kKindAt] = 3;
    record[kPositionAt] = 10;
    record[kStyleAt] = 4;
    record[kSizeAt] = 200;
    record[kFontSizeAt] = 200;
    PutAngle(record, -45);
    Make(record);
    const Window page = Page();
    for (const int radio : kKindRadios) {
        EXPECT_FALSE(page.IsChecked(radio));
        EXPECT_TRUE(page.IsEnabled(radio));
    }
    EXPECT_EQ(page.ComboSelection(kPositionList), -1);
    EXPECT_EQ(page.ComboSelection(kStyleList), -1);
    EXPECT_EQ(page.Text(kSizeValue), L"100");
    EXPECT_EQ(page.Text(kFontSize), L"72");
    EXPECT_EQ(page.Text(kAngleValue), L"0");
}

// A careless host, a poor system

TEST_F(WaterMarkLonePageTest, DoesNothingWithoutARecord) {
    Make(RecordOf(kText));
    Unmake();
    const Bytes record = Record();
    fake_.parameters.pOEMDM = nullptr;
    Host().common_ui().pOEMDM = nullptr;
    Make(record);
    for (const int control : {kUseNone, kUseImage, kUseText, kBrowse, kFontSizeSpin}) {
        Command(control, BN_CLICKED);
    }
    for (const int list : {kTextList, kFontList, kStyleList, kPositionList}) {
        Command(list, CBN_SELCHANGE);
        Command(list, CBN_SELENDOK);
    }
    Call(WM_HSCROLL, TB_LINEUP, reinterpret_cast<LPARAM>(GetDlgItem(page_, kSize)));
    Call(WM_PAINT);
    EXPECT_EQ(Apply(), TRUE);
    EXPECT_THAT(fake_.calls, SizeIs(1)) << "the page still reports its result";
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(choosers_, 0);
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkLonePageTest, IgnoresMessagesWithoutItsParameter) {
    Make(RecordOf(kText));
    const Bytes record = Record();
    SetWindowLongPtrW(page_, DWLP_USER, 0);
    rig::TraceCapture trace;
    EXPECT_EQ(Command(kUseNone, BN_CLICKED), FALSE);
    EXPECT_THAT(trace.Take(),
                ElementsAre(L"ERROR UI:  WaterMarkPropPageProc : GetWindowLongPtr Failed (0)\r\n"));
    EXPECT_EQ(Apply(), FALSE);
    EXPECT_THAT(fake_.calls, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkLonePageTest, ASecondInitialisationAddsNothing) {
    const Bytes record = RecordOf(kText);
    Make(record);
    Call(WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(&description_));
    EXPECT_THAT(Page().ComboItems(kTextList), SizeIs(8));
    EXPECT_THAT(Page().ComboItems(kFontList), SizeIs(4));
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkLonePageTest, StaysUsableWithoutTheFileDialog) {
    bool has_library = false;
    hooks_.On("KERNEL32.dll", "LoadLibraryW", &LoadLibraryW, [&](auto original, LPCWSTR name) {
        return has_library || lstrcmpiW(name, L"comdlg32.dll") != 0 ? original(name) : HMODULE{};
    });
    const Bytes record = RecordOf(kImage);
    Make(record);
    Command(kBrowse, BN_CLICKED);
    EXPECT_EQ(choosers_, 0);
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
    Bytes removed = record;
    removed[kKindAt] = kNone;
    removed[kAsImageAt] = 0;
    Command(kUseNone, BN_CLICKED);
    EXPECT_EQ(Differences(removed, Record()), "");
}

TEST_F(WaterMarkLonePageTest, StaysUsableWhenTheLibraryHasNoFileDialog) {
    hooks_.On("KERNEL32.dll", "GetProcAddress", &GetProcAddress,
              [](auto original, HMODULE module, LPCSTR name) -> FARPROC {
                  const bool is_name = (reinterpret_cast<ULONG_PTR>(name) >> 16) != 0;
                  return is_name && std::string_view(name) == "GetOpenFileNameW" ? nullptr
                                                                                 : original(module, name);
              });
    const Bytes record = RecordOf(kImage);
    Make(record);
    Command(kBrowse, BN_CLICKED);
    EXPECT_EQ(choosers_, 0);
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
}

// The library is needed by few: it is loaded with the first press of the button.
TEST_F(WaterMarkLonePageTest, LoadsTheFileDialogWhenItIsNeeded) {
    int loads = 0;
    hooks_.On("KERNEL32.dll", "LoadLibraryW", &LoadLibraryW, [&](auto original, LPCWSTR name) {
        loads += lstrcmpiW(name, L"comdlg32.dll") == 0 ? 1 : 0;
        return original(name);
    });
    Make(RecordOf(kImage));
    EXPECT_EQ(loads, 0);
    Command(kBrowse, BN_CLICKED);
    Command(kBrowse, BN_CLICKED);
    EXPECT_EQ(loads, 1);
    EXPECT_EQ(choosers_, 2);
}

// The host tears its sheet down while something of the page is still open.
TEST_F(WaterMarkLonePageTest, SurvivesItsEndWhileTheInformationIsOpen) {
    for (const auto& [control, kind] : {std::pair(kUseImage, kImage), std::pair(kUseText, kText)}) {
        Bytes record = RecordOf(kNone);
        Make(record);
        on_box_ = [this] { Unmake(); };
        Command(control, BN_CLICKED);
        EXPECT_FALSE(IsWindow(page_));
        record[kKindAt] = kind;
        record[kAsImageAt] = 1;
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_THAT(boxes_, SizeIs(1));
        boxes_.clear();
    }
}

TEST_F(WaterMarkLonePageTest, SurvivesItsEndWhileTheFileDialogIsOpen) {
    const Bytes record = RecordOf(kImage);
    for (const bool chosen : {false, true}) {
        Make(record);
        chooser_ = [&](OPENFILENAMEW& dialog) {
            Unmake();
            std::copy_n(picture_.c_str(), picture_.native().size() + 1, dialog.lpstrFile);
            return chosen ? TRUE : FALSE;
        };
        Command(kBrowse, BN_CLICKED);
        EXPECT_FALSE(IsWindow(page_));
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_THAT(boxes_, IsEmpty()) << "nobody is left to be told";
    }
}

TEST_F(WaterMarkLonePageTest, SurvivesItsEndWhileAnErrorIsOpen) {
    const Bytes record = RecordOf(kImage);
    const Path four = WriteFile(L"four.bmp", BitmapFile(4, 16));
    Make(record);
    chooser_ = [&](OPENFILENAMEW& dialog) {
        std::copy_n(four.c_str(), four.native().size() + 1, dialog.lpstrFile);
        return TRUE;
    };
    on_box_ = [this] { Unmake(); };
    Command(kBrowse, BN_CLICKED);
    EXPECT_FALSE(IsWindow(page_));
    EXPECT_THAT(boxes_, SizeIs(1));
    EXPECT_EQ(Differences(record, Record()), "");
}

}  // namespace
}  // namespace pages::water_mark
