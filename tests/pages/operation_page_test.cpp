// The Operation page: its captions in every language, the four buttons and what they leave in the record,
// what it tells the sheet and the host. In the real sheet, and alone under a window that keeps what it is
// told.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include "page_fixture.h"
#include "rig/import_hooks.h"
#include "sheet_window.h"

namespace {

using pages::Bytes;
using pages::ChooseLanguage;
using pages::CloseDialog;
using pages::Differences;
using pages::FakeSheet;
using pages::kEnglish;
using pages::kSimplifiedChinese;
using pages::kTraditionalChinese;
using pages::SheetWindow;
using pages::SourceText;
using pages::WriteUserFile;
using rig::Lines;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kTemplate = 103;

using Captions = std::vector<std::pair<int, std::wstring>>;

const Captions kEnglishCaptions = {
    {1011, L"Start of Document"},
    {1012, L"Start of Page"},
    {1013, L"End of Page"},
    {1014, L"End of Document"},
    {1142, L"Operation when document starts"},
    {1143, L"Operation when page starts"},
    {1144, L"Operation when page ends"},
    {1145, L"Operation when document ends"},
};

constexpr std::pair<int, const wchar_t*> kCaptionKeys[] = {
    {1011, L"RC_STARTDOC"},       {1012, L"RC_STARTPAGE"},     {1013, L"RC_ENDPAGE"},
    {1014, L"RC_ENDDOC"},         {1142, L"RC_STATIC_SDOC"},   {1143, L"RC_STATIC_SPAGE"},
    {1144, L"RC_STATIC_ENDPAGE"}, {1145, L"RC_STATIC_ENDDOC"},
};

Captions CaptionsOf(const Window& page) {
    Captions captions;
    for (const auto& [control, text] : kEnglishCaptions) {
        captions.emplace_back(control, page.Text(control));
    }
    return captions;
}

Captions SourceCaptions(const wchar_t* file) {
    Captions captions;
    for (const auto& [control, key] : kCaptionKeys) {
        captions.emplace_back(control, SourceText(file, L"OPERATION", key));
    }
    return captions;
}

// The four moments: button, title of the dialog, trace line, and where the record holds the block.
struct MomentCase {
    const char* name;
    int button;
    const wchar_t* title;
    const wchar_t* line;
    std::size_t send_command;
    std::size_t feed_to_position;
    std::size_t command;
    std::size_t command_length;
    std::size_t drawer;
    std::size_t cut;
    std::size_t feed;
    std::size_t volume;
    std::size_t herald;
    std::size_t choice;
    std::size_t buzzer;
    std::size_t logo;
    std::size_t align;
    std::size_t position;
};

const MomentCase kMoments[] = {
    {"DocStart", 1011, L"Start Document Operation", L"UI:  Start of document buttion is clicked\r\n", 16, 17,
     18, 146, 147, 148, 149, 156, 150, 152, 157, 158, 159, 160},
    {"PageStart", 1012, L"Start Page Operation", L"UI:  Start of page buttion is clicked\r\n", 161, 162, 163,
     291, 292, 293, 294, 295, 296, 300, 304, 305, 306, 307},
    {"PageEnd", 1013, L"End Page Operation", L"UI:  End of page buttion is clicked\r\n", 452, 453, 454, 582,
     583, 584, 585, 586, 587, 588, 592, 593, 594, 595},
    {"DocEnd", 1014, L"End Document Operation", L"UI:  End of document buttion is clicked\r\n", 308, 309, 310,
     438, 439, 440, 441, 442, 443, 444, 448, 449, 450, 451},
};

void PutChoice(Bytes& record, std::size_t offset, std::int32_t value) {
    std::memcpy(record.data() + offset, &value, sizeof value);
}

// Every byte differs from what the plug-in would write by itself, most are outside of what a list has.
Bytes OddRecord() {
    return pages::FilledRecord(
        [](std::size_t offset) { return static_cast<std::uint8_t>(offset * 7 + 131); });
}

// The same with blocks that a user could have made, each with values of its own.
Bytes RecordWithValidBlocks() {
    Bytes record = OddRecord();
    for (std::size_t i = 0; i < std::size(kMoments); ++i) {
        const MomentCase& moment = kMoments[i];
        const auto n = static_cast<std::uint8_t>(i);
        record[moment.send_command] = 1;
        record[moment.feed_to_position] = n % 2;
        record[moment.command_length] = static_cast<std::uint8_t>(n + 2);
        record[moment.drawer] = static_cast<std::uint8_t>(n + 1);
        record[moment.cut] = n % 3;
        record[moment.feed] = static_cast<std::uint8_t>(n * 20 + 5);
        record[moment.volume] = static_cast<std::uint8_t>(n * 60 + 40);
        record[moment.herald] = static_cast<std::uint8_t>((n + 1) % 2);
        PutChoice(record, moment.choice, n / 2);
        record[moment.buzzer] = static_cast<std::uint8_t>(n + 1);
        record[moment.logo] = static_cast<std::uint8_t>(n + 4);
        record[moment.align] = n % 3;
        record[moment.position] = static_cast<std::uint8_t>((n + 1) % 2);
    }
    return record;
}

class OperationPageTest : public pages::PageTest {
  protected:
    void OpenPage(const std::function<void(Sheet&, const Window&)>& script) {
        OpenSheet([&](UiDriver&, Sheet& sheet) { script(sheet, sheet.SelectTab(title_)); });
    }

    // The tab's title in the language that the sheet is opened in.
    std::wstring title_ = L"Operation";
};

// Captions

TEST_F(OperationPageTest, ShowsEnglish) {
    OpenPage([](Sheet& sheet, const Window& page) {
        EXPECT_EQ(CaptionsOf(page), kEnglishCaptions);
        sheet.PressCancel();
    });
}

TEST_F(OperationPageTest, ShowsEnglishWithoutAnyFile) {
    Host();
    pages::RemoveAllLanguageFiles();
    OpenPage([](Sheet& sheet, const Window& page) {
        EXPECT_EQ(CaptionsOf(page), kEnglishCaptions);
        sheet.PressCancel();
    });
}

TEST_F(OperationPageTest, ShowsSimplifiedChinese) {
    ChooseLanguage(kSimplifiedChinese);
    title_ = SourceText(kSimplifiedChinese, L"OPERATION", L"RC_OPERATIONFORM");
    OpenPage([](Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.Text(1011), L"文档开始");
        EXPECT_EQ(page.Text(1142), L"文档开始时的操作");
        EXPECT_EQ(CaptionsOf(page), SourceCaptions(kSimplifiedChinese));
        sheet.PressCancel();
    });
}

TEST_F(OperationPageTest, ShowsTraditionalChinese) {
    ChooseLanguage(kTraditionalChinese);
    title_ = SourceText(kTraditionalChinese, L"OPERATION", L"RC_OPERATIONFORM");
    OpenPage([](Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.Text(1011), L"文件開始");
        EXPECT_EQ(page.Text(1142), L"文件開始時的操作");
        EXPECT_EQ(CaptionsOf(page), SourceCaptions(kTraditionalChinese));
        sheet.PressCancel();
    });
}

TEST_F(OperationPageTest, FollowsTheRegistryAtEachRepaint) {
    OpenPage([](Sheet& sheet, const Window& page) {
        pages::Repaint(page);
        ChooseLanguage(kSimplifiedChinese);
        EXPECT_EQ(CaptionsOf(page), kEnglishCaptions) << "nothing happens before it is painted";
        pages::Repaint(page);
        EXPECT_EQ(CaptionsOf(page), SourceCaptions(kSimplifiedChinese));
        ChooseLanguage(kTraditionalChinese);
        pages::Repaint(page);
        EXPECT_EQ(CaptionsOf(page), SourceCaptions(kTraditionalChinese));
        const Window dialog = page.OpenDialog(1011);
        EXPECT_EQ(dialog.Title(), L"文件開始操作");
        CloseDialog(dialog, IDCANCEL, page);
        ChooseLanguage(kEnglish);
        pages::Repaint(page);
        EXPECT_EQ(CaptionsOf(page), kEnglishCaptions);
        sheet.PressCancel();
    });
}

TEST_F(OperationPageTest, TakesTheEnglishFileWithoutAValueAtEachRepaint) {
    ChooseLanguage(kSimplifiedChinese);
    title_ = SourceText(kSimplifiedChinese, L"OPERATION", L"RC_OPERATIONFORM");
    OpenPage([](Sheet& sheet, const Window& page) {
        WriteUserFile(kEnglish, L"[OPERATION]\r\nRC_ENDDOC=From the file\r\n");
        rig::RemoveLanguageKey();
        pages::Repaint(page);
        EXPECT_EQ(page.Text(1014), L"From the file");
        EXPECT_EQ(page.Text(1013), L"End of Page");
        sheet.PressCancel();
    });
}

TEST_F(OperationPageTest, FollowsTheFileAtEachRepaint) {
    OpenPage([](Sheet& sheet, const Window& page) {
        WriteUserFile(kEnglish,
                      L"[OPERATION]\r\nRC_STARTPAGE=abcdefghijklmnopqrstuvwxyz\r\nRC_STATIC_ENDDOC="
                      L"0123456789012345678901234567890123456789012345678901234567890\r\n");
        pages::Repaint(page);
        Captions expected = kEnglishCaptions;
        expected[1].second = L"abcdefghijklmnopqrs";
        expected[7].second = L"0123456789012345678901234567890123456789012345678";
        EXPECT_EQ(CaptionsOf(page), expected);
        pages::RemoveAllLanguageFiles();
        pages::Repaint(page);
        EXPECT_EQ(CaptionsOf(page), kEnglishCaptions);
        pages::InstallUserFile(kEnglish);
        sheet.PressCancel();
    });
}

// The four moments

class MomentTest : public OperationPageTest, public testing::WithParamInterface<MomentCase> {};

INSTANTIATE_TEST_SUITE_P(All, MomentTest, testing::ValuesIn(kMoments),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(MomentTest, OpensTheDialogOfItsMoment) {
    Host();
    const DWORD ui_thread = GetCurrentThreadId();
    rig::TraceCapture trace;
    OpenPage([&](Sheet& sheet, const Window& page) {
        trace.TakeOf(ui_thread);
        const Window dialog = page.OpenDialog(GetParam().button);
        EXPECT_EQ(dialog.Title(), GetParam().title);
        CloseDialog(dialog, IDCANCEL, page);
        Lines clicked;
        for (const std::wstring& line : trace.TakeOf(ui_thread)) {
            if (line.find(L"is clicked") != std::wstring::npos) {
                clicked.push_back(line);
            }
        }
        EXPECT_THAT(clicked, ElementsAre(GetParam().line));
        sheet.PressCancel();
    });
}

TEST_P(MomentTest, CancelKeepsEveryByte) {
    const Bytes record = OddRecord();
    SetRecord(record);
    OpenPage([&](Sheet& sheet, const Window& page) {
        const Window dialog = page.OpenDialog(GetParam().button);
        dialog.SelectCombo(1020, 1);
        dialog.SelectCombo(1027, 3);
        dialog.Click(1023);
        CloseDialog(dialog, IDCANCEL, page);
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        const Window closed = page.OpenDialog(GetParam().button);
        closed.SelectCombo(1020, 1);
        PostMessageW(closed.handle(), WM_SYSCOMMAND, SC_CLOSE, 0);
        closed.WaitClosed();
        pages::Settle(page);
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_P(MomentTest, OkWithoutAChangeClearsOnlyWhatLiesBehindTheCommand) {
    const MomentCase& moment = GetParam();
    const Bytes record = RecordWithValidBlocks();
    Bytes expected = record;
    std::fill_n(
        expected.begin() + static_cast<std::ptrdiff_t>(moment.command + record[moment.command_length]),
        128 - record[moment.command_length], std::uint8_t{0});
    SetRecord(record);
    OpenPage([&](Sheet& sheet, const Window& page) {
        EXPECT_FALSE(sheet.IsApplyEnabled());
        CloseDialog(page.OpenDialog(moment.button), IDOK, page);
        EXPECT_EQ(Differences(expected, Record()), "");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(expected, Record()), "");
}

TEST_P(MomentTest, OkCopiesEverySettingOfTheBlockAndNothingElse) {
    const MomentCase& moment = GetParam();
    Bytes record = RecordWithValidBlocks();
    record[moment.logo] = 9;
    record[moment.send_command] = 1;
    record[moment.buzzer] = 5;
    PutChoice(record, moment.choice, 0);
    Bytes expected = record;
    expected[moment.send_command] = 0;
    expected[moment.feed_to_position] ^= 1;
    std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(moment.command), 128, std::uint8_t{0});
    expected[moment.command] = 0x1D;
    expected[moment.command + 1] = 0x56;
    expected[moment.command + 2] = 0x42;
    expected[moment.command + 3] = 0x00;
    expected[moment.command_length] = 4;
    expected[moment.drawer] = 12;
    expected[moment.cut] = static_cast<std::uint8_t>((record[moment.cut] + 1) % 3);
    expected[moment.feed] = 77;
    expected[moment.volume] = 211;
    expected[moment.herald] = static_cast<std::uint8_t>(1 - record[moment.herald]);
    PutChoice(expected, moment.choice, 1);
    expected[moment.buzzer] = 3;
    expected[moment.logo] = 2;
    expected[moment.align] = static_cast<std::uint8_t>((record[moment.align] + 1) % 3);
    expected[moment.position] = static_cast<std::uint8_t>(1 - record[moment.position]);
    SetRecord(record);
    OpenPage([&](Sheet& sheet, const Window& page) {
        const Window dialog = page.OpenDialog(moment.button);
        dialog.TypeText(1016, L"1D 56 42 00");
        dialog.Click(1015);
        dialog.Click(1023);
        dialog.SelectCombo(1017, 12);
        dialog.Click(1026);
        dialog.SelectCombo(1032, expected[moment.herald]);
        dialog.SelectCombo(1027, 3);
        dialog.TypeText(1024, L"211");
        dialog.TypeText(1021, L"77");
        dialog.SelectCombo(1020, expected[moment.cut]);
        dialog.SelectCombo(1028, 2);
        dialog.Click(1029 + expected[moment.align]);
        dialog.Click(1033 + expected[moment.position]);
        EXPECT_EQ(Differences(record, Record()), "") << "the record changes on OK only";
        CloseDialog(dialog, IDOK, page);
        EXPECT_EQ(Differences(expected, Record()), "");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(expected, Record()), "");
}

TEST_F(OperationPageTest, DoesTheTypicalEvent) {
    const Bytes before = Record();
    Bytes expected = before;
    expected[147] = 1;
    expected[148] = 1;
    OpenPage([](Sheet& sheet, const Window& page) {
        const Window dialog = page.OpenDialog(1011);
        dialog.SelectCombo(1017, 1);
        dialog.SelectCombo(1020, 1);
        CloseDialog(dialog, IDOK, page);
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(expected, Record()), "");
}

TEST_F(OperationPageTest, StaysAppliedAfterApply) {
    const SheetResult result = OpenSheet([&](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectTab(L"Operation");
        const Window dialog = page.OpenDialog(1014);
        dialog.SelectCombo(1020, 2);
        CloseDialog(dialog, IDOK, page);
        ASSERT_TRUE(sheet.IsApplyEnabled());
        sheet.PressApply();
        EXPECT_FALSE(sheet.IsApplyEnabled());
        sheet.PressCancel();
    });
    EXPECT_TRUE(result.kept);
    EXPECT_EQ(Record()[440], 2);
}

// The page alone

// The page, made as a sheet makes it but without one, so that each call of its procedure can be looked at.
class LonePageTest : public OperationPageTest {
  protected:
    void SetUp() override {
        OperationPageTest::SetUp();
        sheet_.Create();
        hooks_.On("USER32.dll", "DefWindowProcW", &DefWindowProcW,
                  [this](auto, HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
                      default_calls_.push_back({message, wparam, lparam});
                      EXPECT_EQ(window, page_);
                      return 0;
                  });
        hooks_.On("USER32.dll", "DialogBoxParamW", &DialogBoxParamW,
                  [this](auto original, HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                         LPARAM parameter) -> INT_PTR {
                      dialogs_.push_back({instance, reinterpret_cast<std::uintptr_t>(name), owner});
                      GetCurrentActCtx(&dialog_context_);
                      if (dialog_context_ != nullptr) {
                          ReleaseActCtx(dialog_context_);
                      }
                      return dialog_result_ ? *dialog_result_
                                            : original(instance, name, owner, procedure, parameter);
                  });
        ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
        fake_.parameters.pOEMDM = Host().record_bytes().data();
        ASSERT_EQ(Host().plugin().DocumentPropertySheets(&fake_.info, 0), S_OK);
        const Bytes page = fake_.PageOf(kTemplate).page;
        ASSERT_EQ(page.size(), sizeof description_);
        std::memcpy(&description_, page.data(), sizeof description_);
        handle_ = fake_.HandleOf(kTemplate);
        fake_.calls.clear();
        Make();
    }

    void TearDown() override {
        Unmake();
        OperationPageTest::TearDown();
    }

    void Make() {
        page_ = CreateDialogParamW(description_.hInstance, description_.pszTemplate, sheet_.handle,
                                   description_.pfnDlgProc, reinterpret_cast<LPARAM>(&description_));
        ASSERT_NE(page_, nullptr);
        sheet_.messages.clear();
    }

    void Unmake() {
        if (page_ != nullptr) {
            DestroyWindow(page_);
            page_ = nullptr;
        }
    }

    // What the dialog procedure itself returns.
    INT_PTR Call(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        return description_.pfnDlgProc(page_, message, wparam, lparam);
    }

    INT_PTR Notify(UINT code, LPARAM lparam = 0) {
        PSHNOTIFY notification = {};
        notification.hdr.hwndFrom = sheet_.handle;
        notification.hdr.code = code;
        notification.lParam = lparam;
        SetWindowLongPtrW(page_, DWLP_MSGRESULT, 0x77);
        return Call(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    }

    LONG_PTR NotifyResult() const { return GetWindowLongPtrW(page_, DWLP_MSGRESULT); }

    INT_PTR Press(int control, int notification = BN_CLICKED) {
        return Call(WM_COMMAND, MAKEWPARAM(control, notification),
                    reinterpret_cast<LPARAM>(GetDlgItem(page_, control)));
    }

    static std::wstring EntryLine(UINT message) {
        return L"UI:  DocOperationPropPageProc() entry, Reason is " + std::to_wstring(message) + L".\r\n";
    }

    struct Dialog {
        HINSTANCE instance;
        std::uintptr_t name;
        HWND owner;
    };

    FakeSheet fake_;
    SheetWindow sheet_;
    PROPSHEETPAGEW description_ = {};
    LONG_PTR handle_ = 0;
    HWND page_ = nullptr;
    std::vector<SheetWindow::Message> default_calls_;
    std::vector<Dialog> dialogs_;
    HANDLE dialog_context_ = nullptr;
    std::optional<INT_PTR> dialog_result_;
    rig::ImportHooks hooks_;
};

TEST_F(LonePageTest, TracesEveryMessage) {
    rig::TraceCapture trace;
    EXPECT_EQ(Call(WM_USER + 5), FALSE);
    EXPECT_THAT(trace.Take(), ElementsAre(L"UI:  DocOperationPropPageProc() entry, Reason is 1029.\r\n"));
    EXPECT_EQ(Call(WM_NULL), FALSE);
    EXPECT_THAT(trace.Take(), ElementsAre(L"UI:  DocOperationPropPageProc() entry, Reason is 0.\r\n"));
    EXPECT_EQ(Call(WM_TIMER), FALSE);
    EXPECT_THAT(trace.Take(), ElementsAre(L"UI:  DocOperationPropPageProc() entry, Reason is 275.\r\n"));
    EXPECT_EQ(Call(0xC123), FALSE);
    EXPECT_THAT(trace.Take(), ElementsAre(L"UI:  DocOperationPropPageProc() entry, Reason is 49443.\r\n"));
}

TEST_F(LonePageTest, KeepsItsParameterWhenItIsInitialised) {
    EXPECT_EQ(GetWindowLongPtrW(page_, DWLP_USER), description_.lParam);
    EXPECT_NE(description_.lParam, 0);
    SetWindowLongPtrW(page_, DWLP_USER, 0);
    for (const auto& [control, text] : kEnglishCaptions) {
        SetDlgItemTextW(page_, control, L"?");
    }
    rig::TraceCapture trace;
    EXPECT_EQ(Call(WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(&description_)), FALSE);
    Lines lines = trace.Take();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], L"UI:  DocOperationPropPageProc() entry, Reason is 272.\r\n");
    EXPECT_EQ(lines[1], L"UI:  Initialize operation page callback function\r\n");
    EXPECT_EQ(GetWindowLongPtrW(page_, DWLP_USER), description_.lParam);
    for (const auto& [control, expected] : kEnglishCaptions) {
        wchar_t text[100] = {};
        GetDlgItemTextW(page_, control, text, 100);
        EXPECT_EQ(text, expected) << control;
    }
}

TEST_F(LonePageTest, LeavesPaintingToTheSystem) {
    EXPECT_EQ(Call(WM_PAINT), FALSE);
}

TEST_F(LonePageTest, IgnoresMessagesWithoutItsParameter) {
    dialog_result_ = IDOK;
    const Bytes record = Record();
    SetWindowLongPtrW(page_, DWLP_USER, 0);
    ChooseLanguage(kSimplifiedChinese);
    rig::TraceCapture trace;
    const auto expect_ignored = [&](INT_PTR result, UINT message) {
        EXPECT_EQ(result, FALSE) << message;
        EXPECT_THAT(trace.Take(),
                    ElementsAre(EntryLine(message),
                                L"ERROR UI:  DocOperationPropPageProc : GetWindowLongPtr Failed (0)\r\n"));
    };
    expect_ignored(Press(1011), WM_COMMAND);
    expect_ignored(Call(WM_PAINT), WM_PAINT);
    expect_ignored(Call(WM_SYSCOMMAND, SC_MOVE), WM_SYSCOMMAND);
    expect_ignored(Call(WM_USER), WM_USER);
    PSHNOTIFY notification = {};
    notification.hdr.code = static_cast<UINT>(PSN_APPLY);
    expect_ignored(Call(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification)), WM_NOTIFY);
    EXPECT_THAT(dialogs_, IsEmpty());
    EXPECT_THAT(default_calls_, IsEmpty());
    EXPECT_THAT(fake_.calls, IsEmpty());
    EXPECT_THAT(sheet_.messages, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
    wchar_t text[100] = {};
    GetDlgItemTextW(page_, 1011, text, 100);
    EXPECT_STREQ(text, L"Start of Document");
}

TEST_F(LonePageTest, ReportsSuccessOnApply) {
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
    EXPECT_EQ(NotifyResult(), PSNRET_NOERROR);
    ASSERT_EQ(fake_.calls.size(), 1u);
    EXPECT_EQ(fake_.calls[0].sheet, &fake_);
    EXPECT_EQ(fake_.calls[0].function, UINT{CPSFUNC_SET_RESULT});
    EXPECT_EQ(fake_.calls[0].first, handle_);
    EXPECT_EQ(fake_.calls[0].second, 1);
    EXPECT_THAT(sheet_.messages,
                ElementsAre(SheetWindow::Message{PSM_UNCHANGED, reinterpret_cast<WPARAM>(page_), 0}));
}

TEST_F(LonePageTest, AppliesWithoutTouchingTheRecord) {
    const Bytes record = OddRecord();
    SetRecord(record);
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_APPLY), TRUE), TRUE);
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(LonePageTest, LetsThePageComeAndGo) {
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_SETACTIVE)), TRUE);
    EXPECT_EQ(NotifyResult(), 0);
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_KILLACTIVE)), TRUE);
    EXPECT_EQ(NotifyResult(), FALSE);
    EXPECT_THAT(fake_.calls, IsEmpty());
    EXPECT_THAT(sheet_.messages, IsEmpty());
}

TEST_F(LonePageTest, LeavesOtherNotificationsAlone) {
    for (const int code :
         {static_cast<int>(PSN_RESET), static_cast<int>(PSN_HELP), static_cast<int>(PSN_QUERYCANCEL),
          static_cast<int>(PSN_WIZNEXT), static_cast<int>(NM_CLICK), 0, 1}) {
        EXPECT_EQ(Notify(static_cast<UINT>(code)), FALSE) << code;
        EXPECT_EQ(NotifyResult(), 0x77) << code;
    }
    EXPECT_THAT(fake_.calls, IsEmpty());
    EXPECT_THAT(sheet_.messages, IsEmpty());
}

TEST_F(LonePageTest, LeavesSystemCommandsAndIconsToTheSystem) {
    Call(WM_SYSCOMMAND, SC_MOVE, 12);
    Call(WM_SETICON, ICON_BIG, 34);
    EXPECT_THAT(default_calls_, ElementsAre(SheetWindow::Message{WM_SYSCOMMAND, SC_MOVE, 12},
                                            SheetWindow::Message{WM_SETICON, ICON_BIG, 34}));
}

TEST_F(LonePageTest, OpensTheDialogInTheActivationContext) {
    dialog_result_ = IDCANCEL;
    HANDLE before = nullptr;
    GetCurrentActCtx(&before);
    ReleaseActCtx(before);
    EXPECT_EQ(Press(1011), TRUE);
    ASSERT_EQ(dialogs_.size(), 1u);
    EXPECT_EQ(dialogs_[0].instance, description_.hInstance);
    EXPECT_EQ(dialogs_[0].name, 104u);
    EXPECT_EQ(dialogs_[0].owner, page_);
    EXPECT_EQ(dialog_context_, description_.hActCtx);
    HANDLE after = nullptr;
    GetCurrentActCtx(&after);
    ReleaseActCtx(after);
    EXPECT_EQ(after, before);
}

TEST_F(LonePageTest, TakesTheBufferOverOnOkOnly) {
    const Bytes record = RecordWithValidBlocks();
    for (const MomentCase& moment : kMoments) {
        SCOPED_TRACE(moment.name);
        for (const INT_PTR result : {INT_PTR{IDCANCEL}, INT_PTR{-1}, INT_PTR{0}, INT_PTR{IDYES}}) {
            SetRecord(record);
            dialog_result_ = result;
            Press(moment.button);
            EXPECT_EQ(Differences(record, Record()), "") << result;
            EXPECT_THAT(sheet_.messages, IsEmpty()) << result;
        }
        Bytes expected = record;
        const std::size_t length = record[moment.command_length];
        std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(moment.command + length), 128 - length,
                    std::uint8_t{0});
        dialog_result_ = IDOK;
        Press(moment.button);
        EXPECT_EQ(Differences(expected, Record()), "");
        EXPECT_THAT(sheet_.messages,
                    ElementsAre(SheetWindow::Message{PSM_CHANGED, reinterpret_cast<WPARAM>(page_), 0}));
        sheet_.messages.clear();
    }
    EXPECT_THAT(fake_.calls, IsEmpty());
}

// Values that no list has pass through as they are, each at its own place.
TEST_F(LonePageTest, CopiesOddValuesAsTheyAre) {
    for (const MomentCase& moment : kMoments) {
        SCOPED_TRACE(moment.name);
        Bytes record = OddRecord();
        record[moment.command_length] = 128;
        SetRecord(record);
        dialog_result_ = IDOK;
        Press(moment.button);
        EXPECT_EQ(Differences(record, Record()), "");
    }
}

TEST_F(LonePageTest, HeedsClicksOfItsButtonsOnly) {
    dialog_result_ = IDOK;
    for (const MomentCase& moment : kMoments) {
        for (const int notification : {BN_SETFOCUS, BN_KILLFOCUS, BN_DOUBLECLICKED, BN_PUSHED}) {
            EXPECT_EQ(Press(moment.button, notification), FALSE) << moment.name << " " << notification;
        }
    }
    for (const int control : {0, 1, 2, 1010, 1015, 1142, 1145, 65535}) {
        EXPECT_EQ(Press(control), FALSE) << control;
    }
    EXPECT_THAT(dialogs_, IsEmpty());
    EXPECT_THAT(sheet_.messages, IsEmpty());
}

TEST_F(LonePageTest, TracesTheButton) {
    dialog_result_ = IDCANCEL;
    for (const MomentCase& moment : kMoments) {
        rig::TraceCapture trace;
        Press(moment.button);
        EXPECT_THAT(trace.Take(), ElementsAre(EntryLine(WM_COMMAND), moment.line));
    }
}

TEST_F(LonePageTest, SurvivesAHostWithoutARecord) {
    dialog_result_ = IDOK;
    fake_.parameters.pOEMDM = nullptr;
    Host().common_ui().pOEMDM = nullptr;
    for (const MomentCase& moment : kMoments) {
        Press(moment.button);
    }
    EXPECT_THAT(sheet_.messages, IsEmpty());
}

}  // namespace
