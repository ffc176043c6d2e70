// The Utility page in the real sheet, with a virtual printer behind it: what it lists of the server's forms,
// what each of its buttons asks of the spooler and shows of the answer, and what is left on the page and on
// the server when any of these calls fails. Alone: each call of its procedure.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "captions.h"
#include "help_reader.h"
#include "lone_printer_page.h"
#include "printer_fixture.h"
#include "real_input.h"
#include "rig/process_objects.h"
#include "utf8.h"

namespace pages {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::wstring>;
using Lines = std::vector<std::string>;
using Ids = std::vector<int>;
using Forms = std::vector<Form>;

constexpr int kTemplate = 114;

constexpr int kSelfTest = 1036;
constexpr int kControlFont = 1045;
constexpr int kSave = 1046;
constexpr int kWidth = 1047;
constexpr int kHeight = 1048;
constexpr int kDelete = 1049;
constexpr int kName = 1052;
constexpr int kWidthSpin = 1053;
constexpr int kHeightSpin = 1054;
constexpr int kWidthRange = 1057;
constexpr int kHeightRange = 1058;
constexpr int kPapers = 1094;

struct Caption {
    int control;
    const wchar_t* key;
    const wchar_t* english;
    std::size_t length;
};

constexpr Caption kCaptions[] = {
    {1036, L"RC_SELFTEST", L"SelfTest", 20},
    {1151, L"RC_STATIC_SELFTEST", L"Print a self-test page", 50},
    {1152, L"RC_STATIC_CHECKCOMM", L"Check that communication settings is correct first", 100},
    {1169, L"RC_STATIC_CUSTOMSIZE", L"User Defined Paper Size", 50},
    {1049, L"RC_BUTTON_DELETE", L"Delete Paper Size", 20},
    {1046, L"RC_BUTTON_SAVE", L"Save Paper Size", 50},
    {1153, L"RC_STATIC_FORMNAME", L"Form Name:", 20},
    {1154, L"RC_STATIC_FORMWIDTH", L"Width:", 50},
    {1155, L"RC_STATIC_FORMHEIGHT", L"Height:", 20},
};

constexpr Caption kHelps[] = {
    {kSelfTest, L"CTEXT_SELFTEST", L"Print Self-test page.", 1024},
    {kPapers, L"CTEXT_LIST_PAPERSIZE",
     L"List shows the user defined paper size. You can select one paper size from the list and edit its "
     L"name, "
     L"width and height, and you can also define a new paper size.",
     1024},
    {kDelete, L"CTEXT_BUTTON_DELETE", L"Delete the selected user defined paper size in the list.", 1024},
    {kSave, L"CTEXT_BUTTON_SAVE",
     L"Save user defined paper size. The user defined paper size will be saved if this button is clicked. If "
     L"the paper size you edited is already in the list, then the width and height of the paper size will be "
     L"rewritten.",
     1024},
    {kName, L"CTEXT_EDIT_FORMNAME",
     L"Specify the name of paper size you want to save. The maximum length of the name is 18 characters.",
     1024},
    {kWidth, L"CTEXT_EDIT_WIDTH", L"Specify the paper width.", 1024},
    {kHeight, L"CTEXT_EDIT_HEIGHT", L"Specify the paper height.", 1024},
};

// The same in every language.
constexpr wchar_t kWidthRangeText[] = L"[ 410 - 720 (0.1mm) ]";
constexpr wchar_t kHeightRangeText[] = L"[ 254 - 32760 (0.1mm) ]";
constexpr wchar_t kHeightRangeOfTemplate[] = L"[ 500 - 2970 (0.1mm) ]";

// Forms, and the calls that read and change them

const Form kDefault = WholeSheet(L"Custom Paper-R72", 72000, 297000);
const Form kShop = WholeSheet(L"Custom Paper-Shop", 50000, 100000);
const Form kMiddle = WholeSheet(L"My Custom Paper-A4", 60000, 200000);
const Form kLast = WholeSheet(L"Custom Paper-Z", 41000, 25400);
const Form kForeign = WholeSheet(L"Label", 10000, 20000);

// What every server has, and these.
Forms Server(std::initializer_list<Form> own) {
    Forms forms = BuiltInForms();
    forms.insert(forms.end(), own);
    return forms;
}

const Forms kUsual = Server({kShop, kForeign, kDefault, kMiddle, kLast});
const Texts kUsualList = {L"Custom Paper-R72", L"Custom Paper-Shop", L"My Custom Paper-A4",
                          L"Custom Paper-Z"};

std::size_t SizeOf(const Forms& forms) {
    std::size_t bytes = 0;
    for (const Form& form : forms) {
        bytes += 40 + 2 * (form.name.size() + 1);
    }
    return bytes;
}

std::string Asked(const Forms& forms, const std::string& handle = "printer") {
    return "EnumFormsW(" + handle + ", 1, buffer of 40 bytes) -> FALSE, error 122, " +
           std::to_string(SizeOf(forms)) + " bytes needed";
}

std::string Told(const Forms& forms, const std::string& handle = "printer") {
    return "EnumFormsW(" + handle + ", 1, buffer of " + std::to_string(SizeOf(forms)) + " bytes) -> TRUE, " +
           std::to_string(forms.size()) + " forms";
}

Lines ReadOf(const Forms& forms, const std::string& handle = "printer") {
    return {Asked(forms, handle), Told(forms, handle)};
}

std::string Described(const Form& form) {
    const std::string width = std::to_string(form.size.cx);
    const std::string height = std::to_string(form.size.cy);
    return "1, \"" + ToUtf8(form.name) + "\", flags 0, " + width + " x " + height + ", area 0 0 " + width +
           " " + height + ") -> ";
}

std::string AddOf(const Form& form, const std::string& result = "TRUE") {
    return "AddFormW(printer, " + Described(form) + result;
}

std::string SetOf(const Form& form, const std::string& result = "TRUE") {
    return "SetFormW(printer, \"" + ToUtf8(form.name) + "\", " + Described(form) + result;
}

std::string DeleteOf(const std::wstring& name, const std::string& result = "TRUE") {
    return "DeleteFormW(printer, \"" + ToUtf8(name) + "\") -> " + result;
}

Lines operator+(Lines lines, const Lines& others) {
    lines.insert(lines.end(), others.begin(), others.end());
    return lines;
}

constexpr char kDenied[] = "FALSE, error 5";
const std::string kAskDenied = "EnumFormsW(printer, 1, buffer of 40 bytes) -> FALSE, error 5";

std::string ReadDenied(const Forms& forms) {
    return "EnumFormsW(printer, 1, buffer of " + std::to_string(SizeOf(forms)) + " bytes) -> FALSE, error 5";
}

// The page

// All that changes on it.
struct State {
    Texts papers;
    int selection;
    std::wstring name;
    std::wstring width;
    std::wstring height;
    bool can_delete;
    bool operator==(const State&) const = default;
};

void PrintTo(const State& state, std::ostream* out) {
    *out << testing::PrintToString(state.papers) << ", selected " << state.selection << ", "
         << testing::PrintToString(state.name) << " of " << testing::PrintToString(state.width) << " x "
         << testing::PrintToString(state.height) << (state.can_delete ? ", can" : ", cannot")
         << " be deleted";
}

State StateOf(const Window& page) {
    return {page.ListItems(kPapers), page.ListSelection(kPapers), page.Text(kName),
            page.Text(kWidth),       page.Text(kHeight),          page.IsEnabled(kDelete)};
}

const State kUnopened = {{}, -1, L"", L"", L"", false};
const State kUsualState = {kUsualList, 0, L"R72", L"720", L"2970", false};

void PutText(const Window& page, int edit, const std::wstring& text) {
    page.Send(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

using Range = std::pair<int, int>;

Range RangeOf(const Window& page, int spin) {
    Range range;
    page.Send(spin, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&range.first),
              reinterpret_cast<LPARAM>(&range.second));
    return range;
}

// The tooltips of the page's thread; the only other page that was made is the host's.
int TipsBeside(const Window& page) {
    int tips = 0;
    EnumThreadWindows(
        GetWindowThreadProcessId(page.handle(), nullptr),
        [](HWND window, LPARAM count) -> BOOL {
            *reinterpret_cast<int*>(count) += IsTip(window) ? 1 : 0;
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&tips));
    return tips;
}

// Nothing was set up but the captions.
void ExpectAsInTemplate(const Window& page) {
    EXPECT_EQ(StateOf(page), kUnopened);
    EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
    EXPECT_EQ(page.Text(kHeightRange), kHeightRangeOfTemplate);
    for (const int edit : {kName, kWidth, kHeight}) {
        EXPECT_GT(page.Send(edit, EM_GETLIMITTEXT), 1000) << edit;
    }
    EXPECT_NE(RangeOf(page, kWidthSpin), Range(410, 720));
    EXPECT_NE(RangeOf(page, kHeightSpin), Range(254, 32760));
    EXPECT_EQ(TipsBeside(page), 0);
}

void ExpectLimits(const Window& page) {
    EXPECT_EQ(page.Send(kName, EM_GETLIMITTEXT), 18);
    EXPECT_EQ(page.Send(kWidth, EM_GETLIMITTEXT), 3);
    EXPECT_EQ(page.Send(kHeight, EM_GETLIMITTEXT), 5);
    EXPECT_EQ(RangeOf(page, kWidthSpin), Range(410, 720));
    EXPECT_EQ(RangeOf(page, kHeightSpin), Range(254, 32760));
    EXPECT_EQ(page.Text(kWidthRange), kWidthRangeText);
    EXPECT_EQ(page.Text(kHeightRange), kHeightRangeText);
}

const Lines kSelfTestCalls = {
    "StartDocPrinterW(printer, 1, \"SELFTEST\", output none, \"RAW\") -> 1",
    "StartPagePrinter(printer) -> TRUE",
    "WritePrinter(printer, 4 bytes: 1B 63 3B 01) -> TRUE, 4 written",
    "WritePrinter(printer, 7 bytes: 1D 28 41 02 00 00 02) -> TRUE, 7 written",
    "WritePrinter(printer, 4 bytes: 1B 63 3B 00) -> TRUE, 4 written",
    "EndPagePrinter(printer) -> TRUE",
    "EndDocPrinter(printer) -> TRUE",
};

class UtilityPageTest : public PrinterPageTest {
  protected:
    void SetUp() override {
        PrinterPageTest::SetUp();
        printer().SetForms(kUsual);
        hooks_.On("USER32.dll", "GetDC", &GetDC, [this](auto original, HWND window) {
            const HDC dc = refuses_contexts_ ? nullptr : original(window);
            contexts_ += dc != nullptr ? 1 : 0;
            return dc;
        });
        hooks_.On("USER32.dll", "ReleaseDC", &ReleaseDC, [this](auto original, HWND window, HDC dc) {
            --contexts_;
            return original(window, dc);
        });
    }

    // The page in its sheet. Whatever happens there is no change for the sheet to apply, and none of the
    // record.
    void OpenPage(const std::function<void(UiDriver&, Sheet&, const Window& page)>& script) {
        if (!has_own_host_) {
            PrinterHost();
        }
        const Bytes record = Record();
        OpenSheet(
            [&](UiDriver& ui, Sheet& sheet) {
                TakeCalls();
                script(ui, sheet, SelectPage(sheet, kUtilityTab));
                if (sheet.IsOpen()) {
                    EXPECT_FALSE(sheet.IsApplyEnabled());
                    sheet.PressCancel();
                }
            },
            SheetKind::kPrinter);
        EXPECT_EQ(Differences(record, Record()), "");
    }

    // A host of another printer, or of none.
    void StartHostOf(HANDLE handle) {
        has_own_host_ = true;
        HostSettings settings;
        settings.printer = handle;
        StartHost(std::move(settings));
    }

    // The spooler's calls since the last time.
    Lines TakeCalls() {
        const Lines log = printer().Log();
        const Lines fresh(log.begin() + static_cast<std::ptrdiff_t>(seen_), log.end());
        seen_ = log.size();
        return fresh;
    }

    // One message, about a paper that was not saved.
    void ExpectMessage(HWND owner, const wchar_t* title = L"Error",
                       const wchar_t* text = L"Set custom paper size failed!") {
        ASSERT_EQ(boxes_.size(), 1u);
        EXPECT_EQ(boxes_[0].owner, owner);
        EXPECT_EQ(boxes_[0].title, title);
        EXPECT_EQ(boxes_[0].text, text);
        EXPECT_EQ(boxes_[0].type, UINT{MB_OK | MB_ICONERROR});
        boxes_.clear();
    }

    // The description of the page as the host gets it.
    Bytes Description() {
        FakeSheet sheet;
        EXPECT_EQ(PrinterHost().CommonUIProp(OEMCUIP_PRNPROP), S_OK);
        EXPECT_EQ(Host().plugin().DevicePropertySheets(&sheet.info, 0), S_OK);
        TakeCalls();
        return sheet.PageOf(kTemplate).page;
    }

    bool is_list_full_ = false;
    bool refuses_contexts_ = false;
    int contexts_ = 0;  // taken and not given back

  private:
    bool has_own_host_ = false;
    std::size_t seen_ = 0;
};

// Texts

TEST_F(UtilityPageTest, ShowsItsTextsInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
            EXPECT_EQ(sheet.TabTitles().at(static_cast<std::size_t>(sheet.CurrentIndex())),
                      SourceText(file, L"UTILITY", L"RC_UTILITYFORM"));
            EXPECT_EQ(CaptionsOf(page, kCaptions), SourceCaptions(file, L"UTILITY", kCaptions));
            ExpectLimits(page);
        });
    }
}

TEST_F(UtilityPageTest, ShowsEnglishWithoutAnyFile) {
    RemoveAllLanguageFiles();
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(static_cast<std::size_t>(sheet.CurrentIndex())), L"Utility");
        EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
        ExpectLimits(page);
        page.SelectList(kPapers, 1);
        for (const Caption& help : kHelps) {
            ExpectHelp(ui, page, help.control, CentreOf(page.Control(help.control)), help.english);
        }
    });
}

TEST_F(UtilityPageTest, KnowsItsTextsBeforeItIsPainted) {
    ChooseLanguage(kTraditionalChinese);
    LonePrinterPage lone(Description(), printer().handle());
    ShowWindow(lone.sheet.handle, SW_HIDE);
    lone.Make();
    EXPECT_EQ(CaptionsOf(lone.Page(), kCaptions), SourceCaptions(kTraditionalChinese, L"UTILITY", kCaptions));
    for (const Caption& help : kHelps) {
        const HWND control = GetDlgItem(lone.handle(), help.control);
        const POINT centre = CentreOf(control);
        SetCursorPos(centre.x, centre.y);
        SendMessageW(control, WM_MOUSEMOVE, 0, 0);
        EXPECT_EQ(HelpTextOf(control), SourceText(kTraditionalChinese, L"UTILITY", help.key));
    }
}

TEST_F(UtilityPageTest, CutsATextThatIsTooLong) {
    std::wstring file = L"[UTILITY]\r\nRC_UTILITYFORM=" + std::wstring(30, L't') + L"\r\n";
    Texts expected;
    for (const Caption& caption : kCaptions) {
        const std::wstring text = caption.key + std::wstring(300, L'x');
        file += std::wstring(caption.key) + L"=" + text + L"\r\n";
        expected.push_back(text.substr(0, caption.length - 1));
    }
    PrinterHost();
    WriteUserFile(kEnglish, file);
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(static_cast<std::size_t>(sheet.CurrentIndex())),
                  std::wstring(19, L't'));
        EXPECT_EQ(CaptionsOf(page, kCaptions), expected);
    });
}

TEST_F(UtilityPageTest, FollowsTheLanguageWhileItIsOpen) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 1);
        page.TypeText(kName, L"typed");
        TakeCalls();
        for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese, kEnglish}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            ChooseLanguage(file);
            Repaint(page);
            EXPECT_EQ(CaptionsOf(page, kCaptions), SourceCaptions(file, L"UTILITY", kCaptions));
            ExpectLimits(page);
            EXPECT_EQ(StateOf(page), (State{kUsualList, 1, L"typed", L"500", L"1000", true}));
        }
        EXPECT_FALSE(GetUpdateRect(page.handle(), nullptr, FALSE)) << "painted";
        EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
        EXPECT_THAT(TakeCalls(), IsEmpty());
    });
}

TEST_F(UtilityPageTest, SevenControlsHaveHelp) {
    OpenPage([&](UiDriver& ui, Sheet&, const Window& page) {
        page.SelectList(kPapers, 1);
        HWND tip = nullptr;
        for (const Caption& help : kHelps) {
            EXPECT_EQ(SourceText(kEnglish, L"UTILITY", help.key), help.english);
            ExpectHelp(ui, page, help.control, CentreOf(page.Control(help.control)), help.english);
            tip = tip != nullptr ? tip : TipFor(page.Control(help.control));
            EXPECT_EQ(TipFor(page.Control(help.control)), tip);
        }
        EXPECT_EQ(HelpedBeside(page.Control(kSave)), 7u);
        EXPECT_EQ(TipsBeside(page), 1);
        for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese}) {
            ChooseLanguage(file);
            Repaint(page);
            for (const Caption& help : kHelps) {
                ExpectHelp(ui, page, help.control, CentreOf(page.Control(help.control)),
                           SourceText(file, L"UTILITY", help.key));
            }
        }
    });
}

// The template

struct Template {
    int control;
    const wchar_t* kind;
    const wchar_t* text;
    bool visible;
    bool is_stop;  // of the TAB key
};

constexpr Template kControls[] = {
    {kSelfTest, L"Button", L"SelfTest", true, true},
    {1151, L"Static", L"Print a self-test page", true, false},
    {1152, L"Static", L"Check that communication settings is correct firest", true, false},
    {1169, L"Button", L"User Defined Paper Size", true, false},
    {kPapers, L"ListBox", L"", true, true},
    {1153, L"Static", L"Form Name:", true, false},
    {kName, L"Edit", L"", true, true},
    {1154, L"Static", L"Width:", true, false},
    {kWidth, L"Edit", L"", true, true},
    {kWidthSpin, UPDOWN_CLASSW, L"", true, false},
    {kWidthRange, L"Static", L"[ 410 - 720 (0.1mm) ]", true, false},
    {1155, L"Static", L"Height:", true, false},
    {kHeight, L"Edit", L"", true, true},
    {kHeightSpin, UPDOWN_CLASSW, L"", true, false},
    {kHeightRange, L"Static", kHeightRangeOfTemplate, true, false},
    {kDelete, L"Button", L"Delete Paper Size", true, true},
    {kSave, L"Button", L"Save Paper Size", true, true},
    {kControlFont, L"Button", L"Control Font", false, true},
    {-1, L"Static", L"Control Font Setting", false, false},
    {-1, L"Static", L"Edit control font character translation table", false, false},
};

TEST_F(UtilityPageTest, HasTheControlsOfItsTemplate) {
    PrinterHost();
    const HWND raw = CreateDialogParamW(
        Host().module(), MAKEINTRESOURCEW(kTemplate), GetDesktopWindow(),
        [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
    ASSERT_NE(raw, nullptr);
    HWND control = GetWindow(raw, GW_CHILD);
    for (const Template& expected : kControls) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(expected.text)));
        ASSERT_NE(control, nullptr);
        wchar_t kind[64] = {};
        GetClassNameW(control, kind, 64);
        wchar_t text[64] = {};
        GetWindowTextW(control, text, 64);
        const LONG_PTR style = GetWindowLongPtrW(control, GWL_STYLE);
        EXPECT_EQ(static_cast<short>(GetDlgCtrlID(control)), expected.control);
        EXPECT_EQ(lstrcmpiW(kind, expected.kind), 0) << testing::PrintToString(std::wstring(kind));
        EXPECT_EQ(std::wstring(text), expected.text);
        EXPECT_EQ((style & WS_VISIBLE) != 0, expected.visible);
        EXPECT_EQ((style & WS_TABSTOP) != 0, expected.is_stop);
        // A sign in front of a number can be typed.
        EXPECT_TRUE(lstrcmpiW(kind, L"Edit") != 0 || (style & ES_NUMBER) == 0);
        control = GetWindow(control, GW_HWNDNEXT);
    }
    EXPECT_EQ(control, nullptr);
    EXPECT_EQ(GetWindowLongPtrW(GetDlgItem(raw, kPapers), GWL_STYLE) & LBS_SORT, 0);
    DestroyWindow(raw);
}

// In the order in which a person reads the page, and nothing that is hidden or switched off.
TEST_F(UtilityPageTest, TabGoesThroughWhatCanBeUsed) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        const auto order = [&] {
            SetForegroundWindow(sheet.handle());
            ui.WaitUntil([&] { return GetForegroundWindow() == sheet.handle(); }, "the sheet in front");
            page.Focus(kSelfTest);
            WaitForFocus(ui, page, kSelfTest);
            Ids ids;
            for (HWND focus = FocusOf(page); IsChild(page.handle(), focus) && ids.size() < 20;
                 focus = FocusOf(page)) {
                ids.push_back(GetDlgCtrlID(focus));
                PressKey(VK_TAB);
                ui.WaitUntil([&] { return FocusOf(page) != focus; }, "the focus to go on");
            }
            return ids;
        };
        EXPECT_EQ(order(), (Ids{kSelfTest, kPapers, kName, kWidth, kHeight, kSave}));
        page.SelectList(kPapers, 1);
        EXPECT_EQ(order(), (Ids{kSelfTest, kPapers, kName, kWidth, kHeight, kDelete, kSave}));
    });
}

// Nobody sees the button, but its command opens the table.
TEST_F(UtilityPageTest, TheControlFontIsHidden) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        EXPECT_FALSE(page.IsVisible(kControlFont));
        EXPECT_TRUE(page.IsEnabled(kControlFont));
        PostMessageW(page.Control(kControlFont), BM_CLICK, 0, 0);
        const Window dialog = ui.WaitForDialog();
        EXPECT_EQ(dialog.Title(), L"Control Font Character Translation Table");
        EXPECT_EQ(GetWindow(dialog.handle(), GW_OWNER), sheet.handle());
        EXPECT_FALSE(IsWindowEnabled(sheet.handle()));
        CloseDialog(dialog, IDCANCEL, page);
        EXPECT_TRUE(IsWindowEnabled(sheet.handle()));
        EXPECT_FALSE(page.IsVisible(kControlFont));
        // Not when it is merely told of.
        page.Send(kControlFont, BM_SETSTYLE, BS_PUSHBUTTON | BS_NOTIFY);
        SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kControlFont, BN_SETFOCUS),
                     reinterpret_cast<LPARAM>(page.Control(kControlFont)));
        EXPECT_TRUE(IsWindowEnabled(sheet.handle()));
    });
}

// Opening

TEST_F(UtilityPageTest, MakesTheDefaultPaperWhereItIsMissing) {
    const Forms before = Server({});
    printer().SetForms(before);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        const Forms after = Server({kDefault});
        EXPECT_EQ(TakeCalls(), ReadOf(before) + Lines{AddOf(kDefault)} + ReadOf(after));
        EXPECT_EQ(printer().Forms(), after);
        EXPECT_EQ(StateOf(page), (State{{L"Custom Paper-R72"}, 0, L"R72", L"720", L"2970", false}));
        EXPECT_EQ(TipsBeside(page), 1);
        ExpectLimits(page);
    });
    // Once.
    OpenPage([&](UiDriver&, Sheet&, const Window&) {
        const Forms forms = Server({kDefault});
        EXPECT_EQ(TakeCalls(), ReadOf(forms) + ReadOf(forms));
    });
    EXPECT_THAT(boxes_, IsEmpty());
}

// One whose name is nearly the default paper's does not stand for it.
TEST_F(UtilityPageTest, MakesTheDefaultPaperByItsExactName) {
    const Form lower = WholeSheet(L"Custom Paper-r72", 41000, 25400);
    const Form longer = WholeSheet(L"Custom Paper-R722", 41000, 25400);
    const Form later = WholeSheet(L"XCustom Paper-R72", 41000, 25400);
    printer().SetForms(Server({lower, longer, later}));
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(printer().Forms(), Server({lower, longer, later, kDefault}));
        EXPECT_EQ(
            StateOf(page),
            (State{{kDefault.name, lower.name, longer.name, later.name}, 0, L"R72", L"720", L"2970", false}));
    });
}

TEST_F(UtilityPageTest, ListsTheDefaultPaperAndThenTheOthersOfTheServer) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + ReadOf(kUsual));
        EXPECT_EQ(StateOf(page), kUsualState);
        EXPECT_EQ(page.SpinPosition(kWidthSpin), 720);
        EXPECT_EQ(page.SpinPosition(kHeightSpin), 2970);
        ExpectLimits(page);
    });
    EXPECT_EQ(printer().Forms(), kUsual);
}

TEST_F(UtilityPageTest, ShowsTheDefaultPapersSizeAsItIs) {
    struct Case {
        LONG width, height;
        const wchar_t* shown_width;
        const wchar_t* shown_height;
    };
    // The last ones are not the page's; the arrows then stay at an end of theirs.
    for (const Case& size : {Case{50000, 100000, L"500", L"1000"}, Case{41099, 25499, L"410", L"254"},
                             Case{800000, 4000000, L"8000", L"40000"}, Case{100, 99, L"1", L"0"}}) {
        SCOPED_TRACE(size.width);
        printer().SetForms(Server({WholeSheet(L"Custom Paper-R72", size.width, size.height)}));
        OpenPage([&](UiDriver&, Sheet&, const Window& page) {
            EXPECT_EQ(StateOf(page),
                      (State{{L"Custom Paper-R72"}, 0, L"R72", size.shown_width, size.shown_height, false}));
        });
    }
}

// Also when the box has no number to start from.
TEST_F(UtilityPageTest, ArrowsStartAtTheDefaultPaper) {
    printer().SetForms(Server({WholeSheet(L"Custom Paper-R72", 50000, 100000)}));
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        PutText(page, kWidth, L"");
        page.SpinUp(kWidthSpin);
        EXPECT_EQ(page.Text(kWidth), L"501");
        PutText(page, kHeight, L"");
        page.SpinDown(kHeightSpin);
        EXPECT_EQ(page.Text(kHeight), L"999");
    });
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(page.SpinPosition(kWidthSpin), 500);
        EXPECT_EQ(page.SpinPosition(kHeightSpin), 1000);
    });
}

// Without the right to make the default paper.
TEST_F(UtilityPageTest, OpensNoFurtherWithoutTheDefaultPaper) {
    const Forms forms = Server({kShop});
    printer().SetForms(forms);
    printer().AllowFormChanges(false);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(TakeCalls(), ReadOf(forms) + Lines{AddOf(kDefault, kDenied)});
        ExpectAsInTemplate(page);
        EXPECT_THAT(boxes_, IsEmpty());
        // What is there works.
        page.Click(kSelfTest);
        EXPECT_EQ(TakeCalls(), kSelfTestCalls);
        page.TypeText(kName, L"Shop");
        PutText(page, kWidth, L"600");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(),
                  ReadOf(forms) + Lines{SetOf(WholeSheet(L"Custom Paper-Shop", 60000, 25400), kDenied)});
        ExpectMessage(page.handle());
        EXPECT_EQ(StateOf(page), (State{{}, -1, L"Shop", L"600", L"254", false}));
    });
    EXPECT_EQ(printer().Forms(), forms);
}

TEST_F(UtilityPageTest, EachCallOfTheOpeningFails) {
    const Forms before = Server({kShop});
    const Forms after = Server({kShop, kDefault});
    const Lines calls[] = {
        {kAskDenied},
        {Asked(before), ReadDenied(before)},
        ReadOf(before) + Lines{AddOf(kDefault, kDenied)},
        ReadOf(before) + Lines{AddOf(kDefault), kAskDenied},
        ReadOf(before) + Lines{AddOf(kDefault), Asked(after), ReadDenied(after)},
    };
    for (std::size_t failing = 0; failing < std::size(calls); ++failing) {
        SCOPED_TRACE(failing);
        printer().SetForms(before);
        PrinterHost();
        OpenSheet(
            [&](UiDriver&, Sheet& sheet) {
                TakeCalls();
                printer().FailCall(static_cast<int>(failing) + 1, ERROR_ACCESS_DENIED);
                const Window page = SelectPage(sheet, kUtilityTab);
                EXPECT_EQ(TakeCalls(), calls[failing]);
                if (failing < 3) {
                    ExpectAsInTemplate(page);
                } else {
                    EXPECT_EQ(StateOf(page), kUnopened);
                    EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
                    ExpectLimits(page);
                    EXPECT_EQ(TipsBeside(page), 0);
                }
                EXPECT_EQ(printer().Forms(), failing < 3 ? before : after);
                sheet.PressCancel();
            },
            SheetKind::kPrinter);
        EXPECT_THAT(boxes_, IsEmpty());
    }
}

// Between the question how large the list is and the list itself, or between the two lists.
TEST_F(UtilityPageTest, TheListChangesWhileThePageOpens) {
    const Form more = WholeSheet(L"Custom Paper-More", 45000, 30000);
    const Forms larger = Server({kShop, kForeign, kDefault, kMiddle, kLast, more});
    const Forms smaller = Server({kDefault});
    const Forms others = Server({kShop, kMiddle});
    const Forms built_in = BuiltInForms();
    struct Case {
        int list;  // the enumeration before which it changes, from 1
        const Forms* forms;
        State state;
    };
    const State small = {{kDefault.name}, 0, L"R72", L"720", L"2970", false};
    const State large = {kUsualList, 0, L"R72", L"720", L"2970", false};
    State with_more = large;
    with_more.papers.push_back(more.name);
    const Case cases[] = {
        {2, &larger, kUnopened},
        {3, &larger, with_more},
        {4, &larger, kUnopened},
        {2, &smaller, small},
        {3, &smaller, small},
        {4, &smaller, small},
        // Without the default paper the first of the others is shown, but no size.
        {3, &others, {{kShop.name, kMiddle.name}, 0, L"Shop", L"", L"", true}},
        {4, &others, {{kShop.name, kMiddle.name}, 0, L"Shop", L"", L"", true}},
        {3, &built_in, kUnopened},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        printer().SetForms(kUsual);
        int lists = 0;
        printer().before_call = [&](const char* function) {
            if (std::string_view(function) == "EnumFormsW" && ++lists == cases[i].list) {
                printer().SetForms(*cases[i].forms);
            }
        };
        OpenPage([&](UiDriver&, Sheet&, const Window& page) {
            EXPECT_EQ(StateOf(page), cases[i].state);
            printer().before_call = nullptr;
        });
        EXPECT_EQ(printer().Forms(), *cases[i].forms);
    }
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, OpensWithoutAPrinter) {
    StartHostOf(nullptr);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(TakeCalls(), Lines{"EnumFormsW(null, 1, buffer of 40 bytes) -> FALSE, error 6"});
        ExpectAsInTemplate(page);
        page.Click(kSelfTest);
        EXPECT_EQ(TakeCalls(),
                  Lines{"StartDocPrinterW(null, 1, \"SELFTEST\", output none, \"RAW\") -> FALSE, error 6"});
        page.TypeText(kName, L"x");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), Lines{"EnumFormsW(null, 1, buffer of 40 bytes) -> FALSE, error 6"});
        EXPECT_EQ(StateOf(page), (State{{}, -1, L"x", L"410", L"254", false}));
    });
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(printer().Forms(), kUsual);
}

// The host should keep it open; each action then fails as the spooler says.
TEST_F(UtilityPageTest, ThePrinterIsClosedMeanwhile) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 1);
        printer().Close(printer().handle());
        TakeCalls();
        const std::string stale = "EnumFormsW(printer, 1, buffer of 40 bytes) -> FALSE, error 6";
        page.Click(kSelfTest);
        EXPECT_EQ(
            TakeCalls(),
            Lines{"StartDocPrinterW(printer, 1, \"SELFTEST\", output none, \"RAW\") -> FALSE, error 6"});
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), Lines{stale});
        page.SelectList(kPapers, 2);
        EXPECT_EQ(TakeCalls(), Lines{stale});
        EXPECT_EQ(StateOf(page), (State{kUsualList, 2, L"er-A4", L"500", L"1000", true}));
        page.Click(kDelete);
        EXPECT_EQ(TakeCalls(), (Lines{DeleteOf(kMiddle.name, "FALSE, error 6"), stale}));
        EXPECT_EQ(StateOf(page),
                  (State{{kDefault.name, kShop.name, kLast.name}, 2, L"Z", L"500", L"1000", true}));
    });
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(printer().Forms(), kUsual);
}

// Many forms and long names

TEST_F(UtilityPageTest, ListsTenThousandForms) {
    Forms forms = BuiltInForms();
    Texts papers = {kDefault.name};
    for (int i = 0; i < 10000; ++i) {
        const std::size_t length = i % 3 == 0 ? 300 : 18;
        std::wstring name = (i % 2 == 0 ? L"Custom Paper-" : L"Paper ") + std::to_wstring(i) + L' ';
        name.resize(length, L'x');
        if (i % 2 == 0) {
            papers.push_back(name);
        }
        forms.push_back(WholeSheet(name, 41000 + i, 100000 + i));
    }
    forms.push_back(kDefault);
    printer().SetForms(forms);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(StateOf(page), (State{papers, 0, L"R72", L"720", L"2970", false}));
        // 50.998 mm and 109.998 mm.
        page.SelectList(kPapers, 5000);
        EXPECT_EQ(page.Text(kName), L"9998 ");
        EXPECT_EQ(page.Text(kWidth), L"509");
        EXPECT_EQ(page.Text(kHeight), L"1099");
        EXPECT_TRUE(page.IsEnabled(kDelete));
    });
}

TEST_F(UtilityPageTest, ShowsNamesOfEveryLength) {
    Forms forms = Server({kDefault, WholeSheet(L"x", 1000, 1000), WholeSheet(L"", 1000, 1000)});
    Texts papers = {kDefault.name};
    for (const std::size_t length : std::initializer_list<std::size_t>{0, 1, 18, 19, 242, 255, 256, 287}) {
        papers.push_back(L"Custom Paper-" + std::wstring(length, L'n'));
        forms.push_back(WholeSheet(papers.back(), 45600, 78900));
    }
    papers.push_back(std::wstring(287, L'b') + L"Custom Paper-");
    forms.push_back(WholeSheet(papers.back(), 45600, 78900));
    printer().SetForms(forms);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        for (int i = 1; i < static_cast<int>(papers.size()); ++i) {
            page.SelectList(kPapers, i);
            EXPECT_EQ(StateOf(page), (State{papers, i, papers[static_cast<std::size_t>(i)].substr(13), L"456",
                                            L"789", true}));
        }
    });
}

// As far as the longest name goes.
TEST_F(UtilityPageTest, ScrollsToTheEndOfALongName) {
    printer().SetForms(Server({kDefault}));
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        const HWND list = page.Control(kPapers);
        const auto width_of = [&](const std::wstring& text) {
            const HDC dc = GetDC(list);
            const HGDIOBJ before =
                SelectObject(dc, reinterpret_cast<HGDIOBJ>(page.Send(kPapers, WM_GETFONT)));
            SIZE size = {};
            GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
            SelectObject(dc, before);
            ReleaseDC(list, dc);
            return size.cx;
        };
        const auto scrolls = [&] { return (GetWindowLongPtrW(list, GWL_STYLE) & WS_HSCROLL) != 0; };
        RECT client = {};
        GetClientRect(list, &client);
        ASSERT_LT(width_of(kDefault.name), client.right);
        EXPECT_FALSE(scrolls());
        const std::wstring longest = L"Custom Paper-" + std::wstring(18, L'W');
        ASSERT_GT(width_of(longest), client.right);
        page.TypeText(kName, std::wstring(18, L'W'));
        page.Click(kSave);
        EXPECT_TRUE(scrolls());
        const LRESULT extent = page.Send(kPapers, LB_GETHORIZONTALEXTENT);
        EXPECT_GE(extent, width_of(longest));
        EXPECT_LE(extent, width_of(longest) + 20);
        // A shorter one changes nothing.
        page.TypeText(kName, L"i");
        page.Click(kSave);
        EXPECT_EQ(page.Send(kPapers, LB_GETHORIZONTALEXTENT), extent);
    });
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_NE(GetWindowLongPtrW(page.Control(kPapers), GWL_STYLE) & WS_HSCROLL, 0);
    });
}

TEST_F(UtilityPageTest, ListsWithoutADeviceContext) {
    refuses_contexts_ = true;
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(hooks_.Bound("GetDC"), 1);
        EXPECT_EQ(StateOf(page), kUsualState);
        EXPECT_EQ(page.Send(kPapers, LB_GETHORIZONTALEXTENT), 0);
        refuses_contexts_ = false;
    });
}

// Self test

TEST_F(UtilityPageTest, PrintsTheSelfTest) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        page.Click(kSelfTest);
        EXPECT_EQ(TakeCalls(), kSelfTestCalls);
        EXPECT_EQ(StateOf(page), kUsualState);
    });
    ASSERT_EQ(printer().Jobs().size(), 1u);
    const PrintJob job = printer().Jobs()[0];
    EXPECT_EQ(job.document, L"SELFTEST");
    EXPECT_TRUE(job.printed);
    EXPECT_EQ(job.bytes, (Bytes{0x1B, 0x63, 0x3B, 0x01, 0x1D, 0x28, 0x41, 0x02, 0x00, 0x00, 0x02, 0x1B, 0x63,
                                0x3B, 0x00}));
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, EachCallOfTheSelfTestFails) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        // Not every failure leaves a job behind, but each started document has had its number.
        int number = 0;
        for (std::size_t failing = 0; failing < kSelfTestCalls.size(); ++failing) {
            SCOPED_TRACE(failing);
            Lines expected(kSelfTestCalls.begin(),
                           kSelfTestCalls.begin() + static_cast<std::ptrdiff_t>(failing) + 1);
            expected.back().resize(expected.back().find("-> ") + 3);
            expected.back() += kDenied;
            if (failing > 0) {
                expected.front().back() = static_cast<char>('0' + ++number);
            }
            if (failing > 1 && failing < 5) {
                expected.push_back(kSelfTestCalls[5]);
            }
            if (failing > 0 && failing < 6) {
                expected.push_back(kSelfTestCalls[6]);
            }
            if (failing == 6) {
                expected.push_back("job " + std::to_string(number) + " was given up");
            }
            printer().FailCall(static_cast<int>(failing) + 1, ERROR_ACCESS_DENIED);
            page.Click(kSelfTest);
            EXPECT_EQ(TakeCalls(), expected);
            EXPECT_EQ(StateOf(page), kUsualState);
            EXPECT_TRUE(page.IsEnabled(kSelfTest));
        }
        // The next one starts afresh.
        page.Click(kSelfTest);
        Lines whole = kSelfTestCalls;
        whole.front().back() = static_cast<char>('0' + ++number);
        EXPECT_EQ(TakeCalls(), whole);
    });
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(printer().Forms(), kUsual);
}

// Saving

// Whatever asks for it, and wherever it is listed.
TEST_F(UtilityPageTest, NeverDeletesTheDefaultPaper) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    TakeCalls();
    lone.Use(kDelete);
    EXPECT_EQ(StateOf(lone.Page()), kUsualState);
    printer().SetForms(Server({kShop}));
    lone.Use(kSave);
    EXPECT_EQ(lone.Page().ListSelection(kPapers), 4);
    TakeCalls();
    lone.Use(kDelete);
    EXPECT_EQ(lone.Page().ListItems(kPapers).size(), 5u);
    EXPECT_THAT(TakeCalls(), IsEmpty());
    EXPECT_EQ(printer().Forms(), Server({kShop, kDefault}));
}

// The paper is the server's; the selection, which a click on Delete would take, stays another's.
TEST_F(UtilityPageTest, ListsNoMoreWhenTheListIsFull) {
    hooks_.On("USER32.dll", "SendMessageW", &SendMessageW,
              [this](auto original, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
                  return message == LB_ADDSTRING && is_list_full_ ? LRESULT{LB_ERRSPACE}
                                                                  : original(window, message, wparam, lparam);
              });
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    is_list_full_ = true;
    SetDlgItemTextW(lone.handle(), kName, L"New");
    lone.Use(kSave);
    EXPECT_EQ(StateOf(lone.Page()), (State{kUsualList, 0, L"New", L"720", L"2970", false}));
    EXPECT_EQ(printer().Forms().back(), WholeSheet(L"Custom Paper-New", 72000, 297000));
    EXPECT_THAT(boxes_, IsEmpty());
}

// Somebody else deleted the default paper meanwhile: it is made as any other is.
TEST_F(UtilityPageTest, SavesTheDefaultPaperAnew) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        const Forms without = Server({kShop});
        printer().SetForms(without);
        TakeCalls();
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), ReadOf(without) + Lines{AddOf(kDefault)});
        Texts papers = kUsualList;
        papers.push_back(kDefault.name);
        EXPECT_EQ(StateOf(page), (State{papers, 4, L"R72", L"720", L"2970", true}));
    });
}

TEST_F(UtilityPageTest, SavesANewPaper) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        page.TypeText(kName, L"Till 1");
        page.TypeText(kWidth, L"580");
        page.TypeText(kHeight, L"12345");
        EXPECT_THAT(TakeCalls(), IsEmpty()) << "nothing before the button";
        page.Click(kSave);
        const Form made = WholeSheet(L"Custom Paper-Till 1", 58000, 1234500);
        EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + Lines{AddOf(made)});
        Texts papers = kUsualList;
        papers.push_back(made.name);
        EXPECT_EQ(StateOf(page), (State{papers, 4, L"Till 1", L"580", L"12345", true}));
        const Forms after = Server({kShop, kForeign, kDefault, kMiddle, kLast, made});
        EXPECT_EQ(printer().Forms(), after);
        // Again: it is there now.
        page.TypeText(kWidth, L"600");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), ReadOf(after) + Lines{SetOf(WholeSheet(made.name, 60000, 1234500))});
        EXPECT_EQ(StateOf(page), (State{papers, 4, L"Till 1", L"600", L"12345", true}));
    });
    // Cancel undid nothing.
    EXPECT_EQ(printer().Forms().back(), WholeSheet(L"Custom Paper-Till 1", 60000, 1234500));
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, RewritesTheDefaultPaper) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 3);
        TakeCalls();
        page.TypeText(kName, L"R72");
        page.TypeText(kWidth, L"410");
        page.TypeText(kHeight, L"32760");
        page.Click(kSave);
        const Form rewritten = WholeSheet(kDefault.name, 41000, 3276000);
        EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + Lines{SetOf(rewritten)});
        EXPECT_EQ(StateOf(page), (State{kUsualList, 3, L"R72", L"410", L"32760", true}));
        EXPECT_EQ(printer().Forms(), Server({kShop, kForeign, rewritten, kMiddle, kLast}));
    });
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, AnEmptyNameIsThePrefix) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        page.TypeText(kName, L"");
        page.Click(kSave);
        const Form made = WholeSheet(L"Custom Paper-", 72000, 297000);
        EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + Lines{AddOf(made)});
        Texts papers = kUsualList;
        papers.emplace_back(L"Custom Paper-");
        EXPECT_EQ(StateOf(page), (State{papers, 4, L"", L"720", L"2970", true}));
        const Forms after = Server({kShop, kForeign, kDefault, kMiddle, kLast, made});
        page.TypeText(kHeight, L"300");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), ReadOf(after) + Lines{SetOf(WholeSheet(L"Custom Paper-", 72000, 30000))});
        EXPECT_EQ(StateOf(page), (State{papers, 4, L"", L"720", L"300", true}));
    });
}

// Thirteen units go from the front, whatever they are, and what is left is what finds the form again.
TEST_F(UtilityPageTest, APrefixInTheMiddle) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 2);
        TakeCalls();
        EXPECT_EQ(StateOf(page), (State{kUsualList, 2, L"er-A4", L"600", L"2000", true}));
        page.TypeText(kWidth, L"610");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + Lines{SetOf(WholeSheet(kMiddle.name, 61000, 200000))});
        EXPECT_EQ(StateOf(page), (State{kUsualList, 2, L"er-A4", L"610", L"2000", true}));
        const Forms after =
            Server({kShop, kForeign, kDefault, WholeSheet(kMiddle.name, 61000, 200000), kLast});
        EXPECT_EQ(printer().Forms(), after);
        page.TypeText(kName, L"A4");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), ReadOf(after) + Lines{AddOf(WholeSheet(L"Custom Paper-A4", 61000, 200000))});
    });
}

TEST_F(UtilityPageTest, NamesDifferInCase) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        page.TypeText(kName, L"SHOP");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(),
                  ReadOf(kUsual) + Lines{AddOf(WholeSheet(L"Custom Paper-SHOP", 72000, 297000))});
        EXPECT_EQ(page.ListItems(kPapers).size(), 5u);
    });
}

TEST_F(UtilityPageTest, TakesEighteenCharactersOfAName) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.TypeText(kName, L"12345678901234567890");
        EXPECT_EQ(page.Text(kName), L"123456789012345678");
        page.TypeText(kWidth, L"1234");
        EXPECT_EQ(page.Text(kWidth), L"123");
        page.TypeText(kHeight, L"1234567");
        EXPECT_EQ(page.Text(kHeight), L"12345");
        TakeCalls();
        page.Click(kSave);
        EXPECT_EQ(
            TakeCalls(),
            ReadOf(kUsual) + Lines{AddOf(WholeSheet(L"Custom Paper-123456789012345678", 41000, 1234500))});
        page.TypeText(kName, L"\x5BA2\x6237 \xD83D\xDE00");
        page.Click(kSave);
        EXPECT_EQ(page.ListItems(kPapers).back(), L"Custom Paper-\x5BA2\x6237 \xD83D\xDE00");
        EXPECT_EQ(page.ListSelection(kPapers), 5);
    });
}

// Of a longer one, which another program made, 255 characters are read.
TEST_F(UtilityPageTest, ReadsTwoHundredAndFiftyFiveCharactersOfAName) {
    const Form longest = WholeSheet(L"Custom Paper-" + std::wstring(255, L'n'), 50000, 50000);
    const Form too_long = WholeSheet(L"Custom Paper-" + std::wstring(255, L'm') + L"m", 50000, 50000);
    const Forms forms = Server({kDefault, longest, too_long});
    printer().SetForms(forms);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 1);
        TakeCalls();
        page.Click(kSave);
        // The server refuses such names now; it is asked all the same.
        EXPECT_EQ(TakeCalls(), ReadOf(forms) + Lines{SetOf(longest, "FALSE, error 1902")});
        ExpectMessage(page.handle());
        page.SelectList(kPapers, 2);
        TakeCalls();
        page.Click(kSave);
        EXPECT_EQ(
            TakeCalls(),
            ReadOf(forms) + Lines{AddOf(WholeSheet(L"Custom Paper-" + std::wstring(255, L'm'), 50000, 50000),
                                        "FALSE, error 1902")});
        ExpectMessage(page.handle());
    });
    EXPECT_EQ(printer().Forms(), forms);
}

struct Typed {
    const wchar_t* text;
    int saved;
    const wchar_t* shown;
};

// Numbers in range are kept as they were typed.
constexpr Typed kWidths[] = {
    {L"50", 410, L"410"},         {L"409", 410, L"410"},
    {L"410", 410, L"410"},        {L"411", 411, L"411"},
    {L"719", 719, L"719"},        {L"720", 720, L"720"},
    {L"721", 720, L"720"},        {L"999", 720, L"720"},
    {L"0", 410, L"410"},          {L"", 410, L"410"},
    {L"-1", 720, L"720"},         {L"-99", 720, L"720"},
    {L"x", 410, L"410"},          {L"0500", 500, L"0500"},
    {L"65946", 720, L"720"},  // 410 in 16 bits
    {L"2147483646", 720, L"720"}, {L"-2147483647", 720, L"720"},
    {L"2147483648", 410, L"410"},  // no number of 32 bits with a sign
    {L"4294967295", 410, L"410"}, {L"99999999999999999999", 410, L"410"},
};

constexpr Typed kHeights[] = {
    {L"0", 254, L"254"},
    {L"253", 254, L"254"},
    {L"254", 254, L"254"},
    {L"255", 255, L"255"},
    {L"32759", 32759, L"32759"},
    {L"32760", 32760, L"32760"},
    {L"32761", 32760, L"32760"},
    {L"99999", 32760, L"32760"},
    {L"", 254, L"254"},
    {L"-1", 32760, L"32760"},
    {L"-9999", 32760, L"32760"},
    {L"-", 254, L"254"},
    {L"00254", 254, L"00254"},
    {L"-254", 32760, L"32760"},
    {L"65790", 32760, L"32760"},
    {L"99999999999", 254, L"254"},
    {L"-2147483647", 32760, L"32760"},
};

TEST_F(UtilityPageTest, SavesSizesInTheirRange) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        Form saved = kDefault;
        const auto save = [&](const Typed& typed, int edit, int other, const wchar_t* kept) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(typed.text)));
            const Forms before = printer().Forms();
            TakeCalls();
            page.Click(kSave);
            EXPECT_EQ(TakeCalls(), ReadOf(before) + Lines{SetOf(saved)});
            EXPECT_EQ(page.Text(edit), typed.shown);
            EXPECT_EQ(page.Text(other), kept);
        };
        for (const Typed& typed : kWidths) {
            PutText(page, kWidth, typed.text);
            saved = WholeSheet(kDefault.name, typed.saved * 100, 297000);
            save(typed, kWidth, kHeight, L"2970");
        }
        page.TypeText(kWidth, L"600");
        for (const Typed& typed : kHeights) {
            PutText(page, kHeight, typed.text);
            saved = WholeSheet(kDefault.name, 60000, typed.saved * 100);
            save(typed, kHeight, kWidth, L"600");
        }
        // As far as it can be typed.
        page.TypeText(kWidth, L"-1");
        EXPECT_EQ(page.Text(kWidth), L"-1");
        page.TypeText(kHeight, L"99999");
        saved = WholeSheet(kDefault.name, 72000, 3276000);
        save({L"", 0, L"720"}, kWidth, kHeight, L"32760");
    });
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, TellsThatAPaperWasNotSaved) {
    printer().AllowFormChanges(false);
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        const std::wstring title = SourceText(file, L"MessageBox", L"MB_ERROR");
        const std::wstring text = SourceText(file, L"MessageBox", L"MB_UTILITY_ERROR1");
        OpenPage([&](UiDriver&, Sheet&, const Window& page) {
            page.SelectList(kPapers, 1);
            TakeCalls();
            page.Click(kSave);
            EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + Lines{SetOf(kShop, kDenied)});
            ExpectMessage(page.handle(), title.c_str(), text.c_str());
            EXPECT_EQ(StateOf(page), (State{kUsualList, 1, L"Shop", L"500", L"1000", true}));
            page.TypeText(kName, L"New");
            page.Click(kSave);
            EXPECT_EQ(TakeCalls(),
                      ReadOf(kUsual) + Lines{AddOf(WholeSheet(L"Custom Paper-New", 50000, 100000), kDenied)});
            ExpectMessage(page.handle(), title.c_str(), text.c_str());
            EXPECT_EQ(StateOf(page), (State{kUsualList, 1, L"New", L"500", L"1000", true}));
        });
    }
    RemoveAllLanguageFiles();
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.Click(kSave);
        ExpectMessage(page.handle(), L"Error", L"Set custom paper size failed!");
    });
    EXPECT_EQ(printer().Forms(), kUsual);
}

TEST_F(UtilityPageTest, ShowsItsMessageInARealBox) {
    printer().AllowFormChanges(false);
    shows_boxes_ = true;
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        const MessageBoxInfo box = page.OpenMessageBox(kSave);
        EXPECT_EQ(box.title, L"Error");
        EXPECT_EQ(box.text, L"Set custom paper size failed!");
        EXPECT_THAT(box.buttons, ElementsAre(IDOK));
        box.Press(IDOK);
        EXPECT_TRUE(page.IsEnabled(kSave));
        EXPECT_EQ(StateOf(page), kUsualState);
    });
}

TEST_F(UtilityPageTest, EachCallOfSavingFails) {
    const Form made = WholeSheet(L"Custom Paper-New", 41000, 32760 * 100);
    const Form rewritten = WholeSheet(kDefault.name, 41000, 32760 * 100);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        for (const bool is_new : {true, false}) {
            const Lines calls[] = {
                {kAskDenied},
                {Asked(kUsual), ReadDenied(kUsual)},
                ReadOf(kUsual) + Lines{is_new ? AddOf(made, kDenied) : SetOf(rewritten, kDenied)},
            };
            for (std::size_t failing = 0; failing < std::size(calls); ++failing) {
                SCOPED_TRACE(failing);
                PutText(page, kName, is_new ? L"New" : L"R72");
                PutText(page, kWidth, L"1");
                PutText(page, kHeight, L"99999");
                TakeCalls();
                printer().FailCall(static_cast<int>(failing) + 1, ERROR_ACCESS_DENIED);
                page.Click(kSave);
                EXPECT_EQ(TakeCalls(), calls[failing]);
                if (failing == 2) {
                    ExpectMessage(page.handle());
                }
                EXPECT_THAT(boxes_, IsEmpty());
                // The sizes were taken before the server was asked.
                EXPECT_EQ(StateOf(page),
                          (State{kUsualList, 0, is_new ? L"New" : L"R72", L"410", L"32760", false}));
                EXPECT_EQ(printer().Forms(), kUsual);
            }
        }
    });
}

// Another user was quicker.
TEST_F(UtilityPageTest, TheServerChangesBeforeASave) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        const Forms others = Server({kDefault, WholeSheet(L"Custom Paper-New", 41000, 25400)});
        printer().SetForms(others);
        TakeCalls();
        page.TypeText(kName, L"New");
        page.Click(kSave);
        EXPECT_EQ(TakeCalls(), ReadOf(others) + Lines{SetOf(WholeSheet(L"Custom Paper-New", 72000, 297000))});
        EXPECT_EQ(page.ListItems(kPapers), kUsualList) << "the list is of when the page was opened";
        page.TypeText(kName, L"Shop");
        page.Click(kSave);
        Texts papers = kUsualList;
        papers.push_back(kShop.name);
        EXPECT_EQ(StateOf(page), (State{papers, 4, L"Shop", L"720", L"2970", true}));
    });
}

// Deleting

TEST_F(UtilityPageTest, DeletesTheSelectedPaper) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 1);
        // Whatever the box says.
        page.TypeText(kName, L"Z");
        TakeCalls();
        page.Click(kDelete);
        Forms after = Server({kForeign, kDefault, kMiddle, kLast});
        EXPECT_EQ(TakeCalls(), Lines{DeleteOf(kShop.name)} + ReadOf(after));
        EXPECT_EQ(StateOf(page),
                  (State{{kDefault.name, kMiddle.name, kLast.name}, 1, L"er-A4", L"600", L"2000", true}));
        EXPECT_EQ(printer().Forms(), after);
        // The last one: the one before it is selected.
        page.SelectList(kPapers, 2);
        TakeCalls();
        page.Click(kDelete);
        after = Server({kForeign, kDefault, kMiddle});
        EXPECT_EQ(TakeCalls(), Lines{DeleteOf(kLast.name)} + ReadOf(after));
        EXPECT_EQ(StateOf(page), (State{{kDefault.name, kMiddle.name}, 1, L"er-A4", L"600", L"2000", true}));
        page.Click(kDelete);
        after = Server({kForeign, kDefault});
        EXPECT_EQ(TakeCalls(), Lines{DeleteOf(kMiddle.name)} + ReadOf(after));
        EXPECT_EQ(StateOf(page), (State{{kDefault.name}, 0, L"R72", L"720", L"2970", false}));
        EXPECT_EQ(printer().Forms(), after);
    });
    EXPECT_THAT(boxes_, IsEmpty());
}

// The button goes grey under the keyboard, which then goes on in the list.
TEST_F(UtilityPageTest, TheKeyboardLeavesAButtonThatGoesGrey) {
    printer().SetForms(Server({kDefault, kShop}));
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        page.SelectList(kPapers, 1);
        SetForegroundWindow(sheet.handle());
        ui.WaitUntil([&] { return GetForegroundWindow() == sheet.handle(); }, "the sheet in front");
        page.Focus(kDelete);
        WaitForFocus(ui, page, kDelete);
        PressKey(VK_SPACE);
        ui.WaitUntil([&] { return !page.IsEnabled(kDelete); }, "the paper to be deleted");
        WaitForFocus(ui, page, kPapers);
        // Elsewhere it stays where it is.
        page.TypeText(kName, L"Other");
        page.Click(kSave);
        page.Focus(kName);
        WaitForFocus(ui, page, kName);
        page.SelectList(kPapers, 0);
        EXPECT_FALSE(page.IsEnabled(kDelete));
        WaitForFocus(ui, page, kName);
        PressKey('X');
        ui.WaitUntil([&] { return page.Text(kName) != L"R72"; }, "the key");
    });
}

// The entry goes all the same, and nobody is told.
TEST_F(UtilityPageTest, TheServerKeepsADeletedPaper) {
    printer().AllowFormChanges(false);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 3);
        TakeCalls();
        page.Click(kDelete);
        EXPECT_EQ(TakeCalls(), Lines{DeleteOf(kLast.name, kDenied)} + ReadOf(kUsual));
        EXPECT_EQ(StateOf(page),
                  (State{{kDefault.name, kShop.name, kMiddle.name}, 2, L"er-A4", L"600", L"2000", true}));
    });
    EXPECT_EQ(printer().Forms(), kUsual);
    EXPECT_THAT(boxes_, IsEmpty());
    // It is back when the page opens again.
    OpenPage([&](UiDriver&, Sheet&, const Window& page) { EXPECT_EQ(StateOf(page), kUsualState); });
}

TEST_F(UtilityPageTest, EachCallOfDeletingFails) {
    const Forms after = Server({kForeign, kDefault, kMiddle, kLast});
    const Lines calls[] = {
        Lines{DeleteOf(kShop.name, kDenied)} + ReadOf(kUsual),
        {DeleteOf(kShop.name), kAskDenied},
        {DeleteOf(kShop.name), Asked(after), ReadDenied(after)},
    };
    for (std::size_t failing = 0; failing < std::size(calls); ++failing) {
        SCOPED_TRACE(failing);
        printer().SetForms(kUsual);
        OpenPage([&](UiDriver&, Sheet&, const Window& page) {
            page.SelectList(kPapers, 1);
            TakeCalls();
            printer().FailCall(static_cast<int>(failing) + 1, ERROR_ACCESS_DENIED);
            page.Click(kDelete);
            EXPECT_EQ(TakeCalls(), calls[failing]);
            // Where the server does not tell the size the one before stays.
            EXPECT_EQ(StateOf(page), (State{{kDefault.name, kMiddle.name, kLast.name},
                                            1,
                                            L"er-A4",
                                            failing == 0 ? L"600" : L"500",
                                            failing == 0 ? L"2000" : L"1000",
                                            true}));
            EXPECT_EQ(printer().Forms(), failing == 0 ? kUsual : after);
        });
        EXPECT_THAT(boxes_, IsEmpty());
    }
}

TEST_F(UtilityPageTest, DeletesALongName) {
    const std::wstring name = L"Custom Paper-" + std::wstring(287, L'n');
    const Forms forms = Server({kDefault, WholeSheet(name, 50000, 50000)});
    printer().SetForms(forms);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 1);
        TakeCalls();
        page.Click(kDelete);
        EXPECT_EQ(TakeCalls(), Lines{DeleteOf(name)} + ReadOf(Server({kDefault})));
        EXPECT_EQ(StateOf(page), (State{{kDefault.name}, 0, L"R72", L"720", L"2970", false}));
    });
}

// Nothing that a person can bring about, but a program that works the page.
TEST_F(UtilityPageTest, WithoutASelectionNothingIsDeleted) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.SelectList(kPapers, 1);
        page.Send(kPapers, LB_SETCURSEL, static_cast<WPARAM>(-1));
        TakeCalls();
        page.Click(kDelete);
        EXPECT_EQ(StateOf(page), (State{kUsualList, -1, L"Shop", L"500", L"1000", true}));
        page.AppendText(kName, L"x");
        EXPECT_EQ(StateOf(page), (State{kUsualList, -1, L"xShop", L"500", L"1000", false}));
        SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kPapers, LBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(page.Control(kPapers)));
        EXPECT_EQ(StateOf(page), (State{kUsualList, -1, L"", L"500", L"1000", false}));
        EXPECT_THAT(TakeCalls(), IsEmpty());
    });
    EXPECT_EQ(printer().Forms(), kUsual);
}

// Selecting

TEST_F(UtilityPageTest, ShowsTheSelectedPaper) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        const State states[] = {
            kUsualState,
            {kUsualList, 1, L"Shop", L"500", L"1000", true},
            {kUsualList, 2, L"er-A4", L"600", L"2000", true},
            {kUsualList, 3, L"Z", L"410", L"254", true},
        };
        for (const int selected : {1, 3, 0, 2, 1, 0}) {
            page.TypeText(kName, L"typed");
            page.SelectList(kPapers, selected);
            EXPECT_EQ(StateOf(page), states[selected]);
            EXPECT_EQ(TakeCalls(), ReadOf(kUsual));
        }
        page.PressKey(kPapers, VK_DOWN);
        EXPECT_EQ(StateOf(page), states[1]);
        page.PressKey(kPapers, VK_END);
        EXPECT_EQ(StateOf(page), states[3]);
        EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + ReadOf(kUsual));
        // Telling the list's other news is no selection.
        for (const int news : {LBN_DBLCLK, LBN_SETFOCUS, LBN_KILLFOCUS, LBN_SELCANCEL}) {
            SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kPapers, news),
                         reinterpret_cast<LPARAM>(page.Control(kPapers)));
        }
        EXPECT_THAT(TakeCalls(), IsEmpty());
    });
}

// As the server has it now.
TEST_F(UtilityPageTest, ShowsWhatAnotherUserMadeOfAPaper) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        // 99.99 mm, and a rest in the height; a form of the same name in other letters stands before it.
        printer().SetForms(Server(
            {WholeSheet(L"custom paper-shop", 1, 1), kDefault, WholeSheet(kShop.name, 99990, 123499)}));
        page.SelectList(kPapers, 1);
        EXPECT_EQ(StateOf(page), (State{kUsualList, 1, L"Shop", L"999", L"1234", true}));
        // Those that are gone keep the size that was shown.
        page.SelectList(kPapers, 3);
        EXPECT_EQ(StateOf(page), (State{kUsualList, 3, L"Z", L"999", L"1234", true}));
        page.Click(kDelete);
        EXPECT_EQ(StateOf(page),
                  (State{{kDefault.name, kShop.name, kMiddle.name}, 2, L"er-A4", L"999", L"1234", true}));
        // No smaller sheet, and one that only a fault can have.
        printer().SetForms(
            Server({WholeSheet(kDefault.name, 0, -100), WholeSheet(kShop.name, -99, INT32_MAX)}));
        page.SelectList(kPapers, 0);
        EXPECT_EQ(page.Text(kWidth), L"0");
        EXPECT_EQ(page.Text(kHeight), L"-1");
        page.SelectList(kPapers, 1);
        EXPECT_EQ(page.Text(kWidth), L"0");
        EXPECT_EQ(page.Text(kHeight), L"21474836");
    });
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, EachCallOfASelectionFails) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        const Lines calls[] = {{kAskDenied}, {Asked(kUsual), ReadDenied(kUsual)}};
        for (std::size_t failing = 0; failing < std::size(calls); ++failing) {
            SCOPED_TRACE(failing);
            page.SelectList(kPapers, 0);
            TakeCalls();
            printer().FailCall(static_cast<int>(failing) + 1, ERROR_ACCESS_DENIED);
            page.SelectList(kPapers, 1);
            EXPECT_EQ(TakeCalls(), calls[failing]);
            EXPECT_EQ(StateOf(page), (State{kUsualList, 1, L"Shop", L"720", L"2970", true}));
        }
    });
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(printer().Forms(), kUsual);
}

// Typing

// By the selection of the list, not by what is typed.
TEST_F(UtilityPageTest, ATypedNameEnablesByTheSelection) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        const HWND button = page.Control(kDelete);
        page.TypeText(kName, L"Shop");
        EXPECT_FALSE(page.IsEnabled(kDelete));
        EnableWindow(button, TRUE);
        page.AppendText(kName, L"x");
        EXPECT_FALSE(page.IsEnabled(kDelete));
        TakeCalls();
        page.SelectList(kPapers, 1);
        page.TypeText(kName, L"R72");
        EXPECT_TRUE(page.IsEnabled(kDelete));
        EnableWindow(button, FALSE);
        page.AppendText(kName, L"x");
        EXPECT_TRUE(page.IsEnabled(kDelete));
        EnableWindow(button, FALSE);
        page.TypeText(kName, L"");
        EXPECT_TRUE(page.IsEnabled(kDelete));
        // Other news of the box is none, and the sizes have none to tell.
        EnableWindow(button, FALSE);
        for (const int news : {EN_SETFOCUS, EN_KILLFOCUS, EN_UPDATE}) {
            SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kName, news),
                         reinterpret_cast<LPARAM>(page.Control(kName)));
        }
        page.TypeText(kWidth, L"500");
        EXPECT_FALSE(page.IsEnabled(kDelete));
        EXPECT_EQ(TakeCalls(), ReadOf(kUsual)) << "of the selection alone";
    });
}

TEST_F(UtilityPageTest, ArrowsStayInTheirRange) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeCalls();
        const auto step = [&](int edit, const wchar_t* from, const std::function<void()>& action,
                              const wchar_t* to) {
            page.TypeText(edit, from);
            action();
            EXPECT_EQ(page.Text(edit), to) << testing::PrintToString(std::wstring(from));
        };
        const auto up = [&](int spin) { return [&page, spin] { page.SpinUp(spin); }; };
        const auto down = [&](int spin) { return [&page, spin] { page.SpinDown(spin); }; };
        step(kWidth, L"500", up(kWidthSpin), L"501");
        step(kWidth, L"500", down(kWidthSpin), L"499");
        step(kWidth, L"720", up(kWidthSpin), L"720");
        step(kWidth, L"719", up(kWidthSpin), L"720");
        step(kWidth, L"410", down(kWidthSpin), L"410");
        step(kWidth, L"411", down(kWidthSpin), L"410");
        step(
            kWidth, L"500", [&] { page.PressKey(kWidth, VK_UP); }, L"501");
        step(kHeight, L"254", down(kHeightSpin), L"254");
        step(kHeight, L"255", down(kHeightSpin), L"254");
        step(kHeight, L"32759", up(kHeightSpin), L"32760");
        step(kHeight, L"32760", up(kHeightSpin), L"32760");
        step(kHeight, L"999", up(kHeightSpin), L"1000");
        step(
            kHeight, L"1000", [&] { page.PressKey(kHeight, VK_DOWN); }, L"999");
        EXPECT_EQ(page.Text(kWidth), L"501") << "each arrow has its own box";
        EXPECT_THAT(TakeCalls(), IsEmpty());
    });
}

// The sheet

// Everything is written by its button: what the sheet's own buttons do makes no difference.
TEST_F(UtilityPageTest, TheSheetsButtonsWriteNothing) {
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        page.TypeText(kName, L"typed");
        page.TypeText(kWidth, L"1");
        TakeCalls();
        SendMessageW(sheet.handle(), PSM_CHANGED, reinterpret_cast<WPARAM>(page.handle()), 0);
        sheet.PressApply();
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(page.Text(kWidth), L"1");
        EXPECT_EQ(page.Text(kName), L"typed");
        // Away and back.
        SelectPage(sheet, kVersionTab);
        EXPECT_EQ(SelectPage(sheet, kUtilityTab).handle(), page.handle());
        EXPECT_EQ(page.Text(kName), L"typed");
        sheet.PressOk();
        EXPECT_THAT(TakeCalls(), IsEmpty());
    });
    EXPECT_EQ(printer().Forms(), kUsual);
}

TEST_F(UtilityPageTest, HundredOpeningsLeaveNothingBehind) {
    const auto open = [&](int times) {
        for (int i = 0; i < times; ++i) {
            OpenPage([&](UiDriver&, Sheet&, const Window& page) {
                page.SelectList(kPapers, 1);
                page.Click(kSave);
            });
        }
        return rig::CountHandles();
    };
    const int handles = open(3);
    EXPECT_LT(open(100), handles + 50);
    EXPECT_EQ(hooks_.Bound("GetDC"), 1);
    EXPECT_EQ(hooks_.Bound("ReleaseDC"), 1);
    EXPECT_EQ(contexts_, 0);
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM) -> BOOL {
            EXPECT_FALSE(IsTip(window));
            return TRUE;
        },
        0);
}

// Each call of the procedure

TEST_F(UtilityPageTest, ReportsToSheetAndHost) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    TakeCalls();
    lone.ExpectAnswersToTheSheet();
    EXPECT_THAT(TakeCalls(), IsEmpty());
}

TEST_F(UtilityPageTest, IgnoresMessagesWithoutItsParameter) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    const HWND window = lone.MakeTemplate();
    ASSERT_NE(window, nullptr);
    TakeCalls();
    for (const int control : {kSelfTest, kSave, kDelete, kControlFont}) {
        EXPECT_EQ(lone.Ask(window, WM_COMMAND, MAKEWPARAM(control, BN_CLICKED), 0), FALSE);
    }
    DestroyWindow(window);
    EXPECT_THAT(TakeCalls(), IsEmpty());
    LonePrinterPage(Description(), printer().handle()).ExpectNothingWithoutParameter(L"DevicePropPageProc");
    EXPECT_THAT(boxes_, IsEmpty());
}

// Every message, and controls that it has, and some that it has not, that tell of anything.
TEST_F(UtilityPageTest, TakesAnyMessage) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    lone.Page().SelectList(kPapers, 2);
    const State state = StateOf(lone.Page());
    TakeCalls();
    rig::TraceCapture trace;
    for (UINT message = 0; message < 0x10000; message += message < 0x800 ? 1 : 0x1F) {
        if (message != WM_INITDIALOG) {
            EXPECT_EQ(lone.Ask(lone.handle(), message), FALSE) << message;
        }
    }
    for (int control = 1000; control < 1320; ++control) {
        for (const int notification : {2, 0x200, 0x400, 0x8000}) {
            lone.Use(control, notification);
        }
    }
    EXPECT_EQ(lone.Use(IDOK), FALSE);
    EXPECT_EQ(lone.Use(IDCANCEL), FALSE);
    EXPECT_EQ(StateOf(lone.Page()), state);
    EXPECT_THAT(TakeCalls(), IsEmpty());
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_THAT(lone.sheet.messages, IsEmpty());
    EXPECT_THAT(trace.TakeOwn(), IsEmpty());
    // What the page does deal with it says so of.
    for (const int control : {kSelfTest, kSave, kDelete}) {
        EXPECT_EQ(lone.Use(control), TRUE);
    }
    EXPECT_EQ(lone.Use(kPapers, LBN_SELCHANGE), TRUE);
    EXPECT_EQ(lone.Use(kName, EN_CHANGE), TRUE);
    EXPECT_THAT(trace.TakeOwn(), IsEmpty());
    EXPECT_THAT(lone.sheet.messages, IsEmpty());
}

TEST_F(UtilityPageTest, ASecondInitialisationAddsNothing) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    lone.Page().SelectList(kPapers, 1);
    const State state = StateOf(lone.Page());
    TakeCalls();
    EXPECT_EQ(lone.Ask(lone.handle(), WM_INITDIALOG, 0, lone.Description()), FALSE);
    EXPECT_EQ(StateOf(lone.Page()), state);
    EXPECT_THAT(TakeCalls(), IsEmpty());
    EXPECT_EQ(TipsBeside(lone.Page()), 1);
}

// A host without common parameters has no printer either.
TEST_F(UtilityPageTest, OpensWithoutCommonParameters) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.LoseCommonParameters();
    lone.Make();
    EXPECT_EQ(TakeCalls(), Lines{"EnumFormsW(null, 1, buffer of 40 bytes) -> FALSE, error 6"});
    ExpectAsInTemplate(lone.Page());
    lone.Page().Click(kSelfTest);
    lone.Page().Click(kSave);
    // Without a selection there is nothing to delete or to show.
    TakeCalls();
    EXPECT_EQ(lone.Use(kDelete), TRUE);
    EXPECT_EQ(lone.Use(kPapers, LBN_SELCHANGE), TRUE);
    EXPECT_EQ(lone.Use(kName, EN_CHANGE), TRUE);
    EXPECT_THAT(TakeCalls(), IsEmpty());
    EXPECT_EQ(StateOf(lone.Page()), (State{{}, -1, L"", L"410", L"254", false}));
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, MayGoWhileItsMessageIsOpen) {
    for (const wchar_t* name : {L"New", L"R72"}) {
        LonePrinterPage lone(Description(), printer().handle());
        lone.Make();
        PutText(lone.Page(), kName, name);
        printer().AllowFormChanges(false);
        on_box_ = [&] { lone.Unmake(); };
        EXPECT_EQ(lone.Use(kSave), TRUE);
        EXPECT_EQ(boxes_.size(), 1u);
        EXPECT_FALSE(IsWindow(lone.handle()));
        boxes_.clear();
        printer().AllowFormChanges(true);
    }
    EXPECT_EQ(printer().Forms(), kUsual);
}

// Before each call of each action: what was asked of the server is done, and nothing else happens.
TEST_F(UtilityPageTest, MayGoWhileTheServerAnswers) {
    const Bytes description = Description();
    const std::pair<int, int> actions[] = {
        {kSave, BN_CLICKED}, {kDelete, BN_CLICKED}, {kPapers, LBN_SELCHANGE}, {kSelfTest, BN_CLICKED}};
    for (const auto& [control, notification] : actions) {
        for (int at = 1; at <= 7; ++at) {
            SCOPED_TRACE(std::to_string(control) + " " + std::to_string(at));
            printer().SetForms(kUsual);
            LonePrinterPage lone(description, printer().handle());
            lone.Make();
            lone.Page().SelectList(kPapers, 1);
            int calls = 0;
            printer().before_call = [&](const char*) {
                if (++calls == at) {
                    lone.Unmake();
                }
            };
            EXPECT_EQ(lone.Use(control, notification), TRUE);
            EXPECT_EQ(IsWindow(lone.handle()) == FALSE, calls >= at);
            printer().before_call = nullptr;
        }
    }
    // And while it opens.
    for (int at = 1; at <= 4; ++at) {
        LonePrinterPage lone(description, printer().handle());
        const HWND window = lone.MakeTemplate();
        int calls = 0;
        printer().before_call = [&](const char*) {
            if (++calls == at) {
                DestroyWindow(window);
            }
        };
        EXPECT_EQ(lone.Ask(window, WM_INITDIALOG, 0, lone.Description()), FALSE);
        EXPECT_FALSE(IsWindow(window));
        printer().before_call = nullptr;
    }
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(UtilityPageTest, TwoSheetsKeepToTheirOwnPrinters) {
    const Bytes description = Description();
    const HANDLE other = printer().NewPrinter({.name = L"Other"});
    LonePrinterPage first(description, printer().handle());
    LonePrinterPage second(description, other);
    first.Make();
    TakeCalls();
    second.Make();
    EXPECT_EQ(TakeCalls(), ReadOf(kUsual, "printer 2") + ReadOf(kUsual, "printer 2"));
    first.Page().SelectList(kPapers, 1);
    second.Page().SelectList(kPapers, 3);
    EXPECT_EQ(TakeCalls(), ReadOf(kUsual) + ReadOf(kUsual, "printer 2"));
    EXPECT_EQ(StateOf(first.Page()), (State{kUsualList, 1, L"Shop", L"500", L"1000", true}));
    EXPECT_EQ(StateOf(second.Page()), (State{kUsualList, 3, L"Z", L"410", L"254", true}));
    second.Page().Click(kDelete);
    second.Unmake();
    TakeCalls();
    first.Page().Click(kSelfTest);
    EXPECT_EQ(TakeCalls(), kSelfTestCalls);
    // What the other has deleted is listed until this page opens again.
    EXPECT_EQ(first.Page().ListItems(kPapers), kUsualList);
}

}  // namespace
}  // namespace pages
