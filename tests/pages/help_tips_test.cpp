// Hover help on the Operation settings dialog: the tooltip that each helped control gets, with real pointer
// moves, and what the procedures in front of the controls leave behind.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "help_reader.h"
#include "operation_block.h"
#include "page_fixture.h"
#include "real_input.h"
#include "rig/import_hooks.h"
#include "ui_thread.h"

namespace pages {
namespace {

using testing::IsEmpty;

struct Help {
    int control;
    const wchar_t* key;
    const wchar_t* english;
};

constexpr Help kHelps[] = {
    {1015, L"CTEXT_SEND_COMMAND",
     L"The command input column is enabled if this item is selected. Edit command which needs to be sent in "
     L"the input column, this command will be sent at the document corresponding position."},
    {1016, L"CTEXT_EDIT", L"Edit the command which needs to be sent in the input column."},
    {1025, L"CTEXT_OPEN_DRAWER",
     L"Parameter of cash drawer can be set after selecting this item, and printer will control the cash "
     L"drawer at document corresponding position."},
    {1017, L"CTEXT_OPENDRAWER", L"Select the cash drawer number and pulse time for opening."},
    {1026, L"CTEXT_ORDER_MESSENGER",
     L"The print messenger can be set after selecting this item. The print messenger will give the prompts "
     L"you needed at the document corresponding position."},
    {1032, L"CTEXT_ORDERMESSENGER", L"Set the print messenger status (on/off)."},
    {1027, L"CTEXT_BUZZER", L"Whether to enable the buzzer, and set the buzzer beep time."},
    {1024, L"CTEXT_BUZZERVOLUME",
     L"Set the volume of buzzer. This item is only enabled when the buzzer is on."},
    {1021, L"CTEXT_PAPER_FEED",
     L"Set paper feed distance. Print blank for the distance needed at the document corresponding position."},
    {1023, L"CTEXT_FEEDTOPOSITION",
     L"Feed paper to the cut position before cutting. After selecting this item, the print content will be "
     L"sent out completely to avoid being cut off."},
    {1020, L"CTEXT_PAPER_CUT", L"Set the paper cut type(full cut / partial cut / no cut)."},
    {1028, L"CTEXT_PRINT_LOGO",
     L"Set the serial number of Logo to be printed. These Logos are bitmaps stored in the Flash of printer, "
     L"please confirm the needed Logo are stored in the printer before using these Logos."},
    {1029, L"CTEXT_LEFT", L"Select the Logo alignment mode to be left justification."},
    {1030, L"CTEXT_CENTERED", L"Select the Logo alignment mode to be center justification."},
    {1031, L"CTEXT_RIGHT", L"Select the Logo alignment mode to be right justification."},
    {1033, L"CTEXT_BEFORE_CUT", L"Select the Logo to be print before paper cut."},
    {1034, L"CTEXT_AFTER_CUT", L"Select the Logo to be print after paper cut."},
    {3, L"CTEXT_IDDEFAULT", L"Recovery the optional items in this interface to be default."},
    {1, L"CTEXT_IDOK", L"Confirm your settings."},
    {2, L"CTEXT_IDCANCEL", L"Cancel your settings."},
};

// The tooltip windows of the dialog's thread; those of one owner, or all.
std::vector<HWND> Tips(const Window& any, HWND owner = nullptr) {
    struct Search {
        HWND owner;
        std::vector<HWND> found;
    } search = {owner, {}};
    EnumThreadWindows(
        GetWindowThreadProcessId(any.handle(), nullptr),
        [](HWND window, LPARAM parameter) -> BOOL {
            auto& wanted = *reinterpret_cast<Search*>(parameter);
            if (IsTip(window) && (wanted.owner == nullptr || GetWindow(window, GW_OWNER) == wanted.owner)) {
                wanted.found.push_back(window);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND TipOf(const Window& dialog) {
    const std::vector<HWND> tips = Tips(dialog, dialog.handle());
    EXPECT_EQ(tips.size(), 1u);
    return tips.empty() ? nullptr : tips.front();
}

int ToolCount(HWND tip) {
    return static_cast<int>(SendMessageW(tip, TTM_GETTOOLCOUNT, 0, 0));
}

struct Tool {
    TTTOOLINFOW info = {};
    std::wstring text;
};

// The tooltip's tools by their window.
std::map<HWND, Tool> Tools(HWND tip) {
    std::map<HWND, Tool> tools;
    const int count = ToolCount(tip);
    for (int i = 0; i < count; ++i) {
        std::wstring text(2048, L'\0');
        Tool tool;
        tool.info.cbSize = sizeof tool.info;
        tool.info.lpszText = text.data();
        EXPECT_TRUE(
            SendMessageW(tip, TTM_ENUMTOOLSW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&tool.info)));
        tool.info.lpszText = text.data();
        SendMessageW(tip, TTM_GETTEXTW, text.size(), reinterpret_cast<LPARAM>(&tool.info));
        tool.text = text.c_str();
        EXPECT_TRUE(tools.emplace(tool.info.hwnd, tool).second) << "two tools for one control";
    }
    return tools;
}

// Moves the real pointer about on a control until `done`.
void HoverUntil(const UiDriver& ui, const Window& dialog, int control, const std::function<bool()>& done) {
    pages::HoverUntil(ui, dialog, CentreOf(dialog.Control(control)), done,
                      "help of control " + std::to_string(control));
}

void HoverForTool(const UiDriver& ui, const Window& dialog, int control) {
    const HWND tip = TipOf(dialog);
    const HWND window = dialog.Control(control);
    HoverUntil(ui, dialog, control, [&] { return Tools(tip).count(window) != 0; });
}

class HelpTipsTest : public OperationTest {
  protected:
    void SetUp() override {
        OperationTest::SetUp();
        SetRecord(RecordWith(BusyBlock()));
    }

    // Hovers over every helped control and compares the tools with what `text` gives.
    template <typename Text>
    void ExpectHelp(UiDriver& ui, const Window& dialog, Text text) {
        const HWND tip = TipOf(dialog);
        EXPECT_EQ(ToolCount(tip), 0);
        int count = 0;
        for (const Help& help : kHelps) {
            SCOPED_TRACE(help.control);
            if (help.control == 1032) {
                // A disabled control gets no pointer.
                dialog.Click(1026);
            }
            HoverForTool(ui, dialog, help.control);
            EXPECT_EQ(ToolCount(tip), ++count);
            const Tool tool = Tools(tip).at(dialog.Control(help.control));
            EXPECT_EQ(tool.text, text(help));
            EXPECT_EQ(tool.info.uId, 0u);
            EXPECT_EQ(tool.info.uFlags & (TTF_SUBCLASS | TTF_IDISHWND | TTF_TRACK), UINT{TTF_SUBCLASS});
            RECT area = {};
            GetClientRect(tool.info.hwnd, &area);
            EXPECT_TRUE(EqualRect(&tool.info.rect, &area));
        }
        // Once for each control, however long the pointer stays.
        HoverUntil(ui, dialog, 1015, [moves = 0]() mutable { return ++moves > 20; });
        EXPECT_EQ(ToolCount(tip), static_cast<int>(std::size(kHelps)));
    }
};

TEST_F(HelpTipsTest, EveryHelpedControlGetsItsText) {
    for (const wchar_t* file : {kEnglish, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OnDialog(kDocEnd, [&](UiDriver& ui, Window& dialog) {
            ExpectHelp(ui, dialog, [&](const Help& help) { return SourceText(file, L"DOCUMENT", help.key); });
        });
    }
}

TEST_F(HelpTipsTest, WithoutLanguageFileEveryTextIsItsDefault) {
    RemoveAllLanguageFiles();
    OnDialog(kDocStart, [&](UiDriver& ui, Window& dialog) {
        ExpectHelp(ui, dialog, [](const Help& help) { return std::wstring(help.english); });
    });
}

TEST_F(HelpTipsTest, EnglishFileSaysWhatTheDefaultsSay) {
    for (const Help& help : kHelps) {
        EXPECT_EQ(SourceText(kEnglish, L"DOCUMENT", help.key), help.english);
    }
}

TEST_F(HelpTipsTest, OtherControlsHaveNoHelp) {
    OnDialog(kDocStart, [](UiDriver& ui, Window& dialog) {
        for (const int control : {1022, 1035, 1121, 1207}) {
            HoverUntil(ui, dialog, control, [moves = 0]() mutable { return ++moves > 3; });
        }
        EXPECT_EQ(ToolCount(TipOf(dialog)), 0);
        // The pointer did get about.
        HoverForTool(ui, dialog, 1021);
        EXPECT_EQ(ToolCount(TipOf(dialog)), 1);
    });
}

TEST_F(HelpTipsTest, DelayAndWidth) {
    OnDialog(kDocStart, [](UiDriver& ui, Window& dialog) {
        const HWND tip = TipOf(dialog);
        HoverForTool(ui, dialog, 1015);
        // What an automatic delay of 1000 means: shown after as long, gone after ten times, the next
        // control's after a fifth.
        EXPECT_EQ(SendMessageW(tip, TTM_GETDELAYTIME, TTDT_INITIAL, 0), 1000);
        EXPECT_EQ(SendMessageW(tip, TTM_GETDELAYTIME, TTDT_AUTOPOP, 0), 10000);
        EXPECT_EQ(SendMessageW(tip, TTM_GETDELAYTIME, TTDT_RESHOW, 0), 200);
        EXPECT_EQ(SendMessageW(tip, TTM_GETMAXTIPWIDTH, 0, 0), 300);
        const LONG_PTR style = GetWindowLongPtrW(tip, GWL_STYLE);
        EXPECT_EQ(style & (WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP), WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP);
        EXPECT_NE(GetWindowLongPtrW(tip, GWL_EXSTYLE) & WS_EX_TOPMOST, 0);
    });
}

// The long text of the check box breaks into lines, the short one of OK does not.
TEST_F(HelpTipsTest, TipAppearsAfterItsDelayAndWraps) {
    OnDialog(kDocStart, [](UiDriver& ui, Window& dialog) {
        const HWND tip = TipOf(dialog);
        const auto show = [&](int control) {
            HoverForTool(ui, dialog, control);
            HoverUntil(ui, dialog, control, [moves = 0]() mutable { return ++moves > 2; });
            const auto rested = std::chrono::steady_clock::now();
            ui.WaitUntil([&] { return IsWindowVisible(tip) != FALSE; }, "the tip");
            EXPECT_GE(std::chrono::steady_clock::now() - rested, std::chrono::milliseconds(800));
            RECT bounds = {};
            GetWindowRect(tip, &bounds);
            return bounds;
        };
        const RECT lines = show(1015);
        // Away from every control, the tip goes.
        RECT frame = {};
        GetWindowRect(dialog.handle(), &frame);
        ui.WaitUntil(
            [&, move = 0]() mutable {
                MovePointer({frame.right - 40 + move++ % 2, frame.bottom - 60});
                return IsWindowVisible(tip) == FALSE;
            },
            "the tip to go");
        const RECT line = show(IDOK);
        EXPECT_LE(lines.right - lines.left, 300 + 20) << "its frame and margins included";
        EXPECT_GE(lines.bottom - lines.top, 2 * (line.bottom - line.top) - 10);
        EXPECT_LT(line.right - line.left, 200);
    });
}

TEST_F(HelpTipsTest, NoTipWhilePointerIsElsewhere) {
    OnDialog(kDocStart, [](UiDriver& ui, Window& dialog) {
        MovePointer({0, 0});
        ui.WaitUntil(
            [] {
                POINT pointer = {};
                GetCursorPos(&pointer);
                return pointer.x == 0 && pointer.y == 0;
            },
            "the pointer in the corner");
        for (const Help& help : kHelps) {
            // As with captured mouse input: told, but not over the control.
            dialog.Send(help.control, WM_MOUSEMOVE, 0, MAKELPARAM(2, 2));
        }
        EXPECT_EQ(ToolCount(TipOf(dialog)), 0);
        // Over the control, but no move.
        const POINT centre = CentreOf(dialog.Control(1021));
        SetCursorPos(centre.x, centre.y);
        HoverForTool(ui, dialog, 1021);
        for (const Help& help : kHelps) {
            dialog.Send(help.control, WM_MOUSEMOVE, 0, MAKELPARAM(2, 2));
        }
        EXPECT_EQ(ToolCount(TipOf(dialog)), 1);
    });
}

TEST_F(HelpTipsTest, OnlyMovesAddATip) {
    OnDialog(kDocStart, [](UiDriver& ui, Window& dialog) {
        HoverForTool(ui, dialog, 1023);
        const HWND tip = TipOf(dialog);
        // The pointer rests on a control that has its tip; messages to that one only.
        const HWND box = dialog.Control(1023);
        SendMessageW(box, WM_MOUSEHOVER, 0, 0);
        SendMessageW(box, WM_SETCURSOR, reinterpret_cast<WPARAM>(box), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        SendMessageW(box, WM_APP, 0, 0);
        EXPECT_EQ(ToolCount(tip), 1);
    });
}

TEST_F(HelpTipsTest, TextsFollowTheLanguageAtTheNextOpening) {
    OnPage([&](UiDriver& ui, Window& page) {
        for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese, kEnglish}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            ChooseLanguage(file);
            Repaint(page);
            const Window dialog = page.OpenDialog(MomentButton(kPageStart));
            for (const int row : {0, 8, 18}) {
                HoverForTool(ui, dialog, kHelps[row].control);
                EXPECT_EQ(Tools(TipOf(dialog)).at(dialog.Control(kHelps[row].control)).text,
                          SourceText(file, L"DOCUMENT", kHelps[row].key));
            }
            dialog.PressAndWaitClosed(IDCANCEL);
        }
    });
}

// What the plug-in asks of the system

TEST_F(HelpTipsTest, CreatesTheTooltipAndItsToolsAsTheSystemExpects) {
    struct Created {
        DWORD extended_style;
        std::wstring window_class;
        bool titled;
        DWORD style;
        int place[4];
        HWND parent;
        HMENU menu;
        HINSTANCE instance;
        LPVOID parameter;
        HWND window;
    };
    struct Sent {
        HWND window;
        UINT message;
        WPARAM wparam;
        LPARAM lparam;
    };
    std::vector<Created> created;
    std::vector<Sent> sent;
    TTTOOLINFOW added = {};
    rig::ImportHooks hooks;
    hooks.On(
        "USER32.dll", "CreateWindowExW", &CreateWindowExW,
        [&](auto original, DWORD extended_style, LPCWSTR window_class, LPCWSTR title, DWORD style, int x,
            int y, int width, int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) {
            const HWND window = original(extended_style, window_class, title, style, x, y, width, height,
                                         parent, menu, instance, parameter);
            created.push_back({extended_style,
                               window_class,
                               title != nullptr && *title != L'\0',
                               style,
                               {x, y, width, height},
                               parent,
                               menu,
                               instance,
                               parameter,
                               window});
            return window;
        });
    hooks.On("USER32.dll", "SendMessageW", &SendMessageW,
             [&](auto original, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
                 if (message >= TTM_ACTIVATE && message < TTM_ACTIVATE + 100 && IsTip(window)) {
                     sent.push_back({window, message, wparam, lparam});
                     if (message == TTM_ADDTOOLW) {
                         added = *reinterpret_cast<const TTTOOLINFOW*>(lparam);
                     }
                 }
                 return original(window, message, wparam, lparam);
             });
    const HMODULE module = StartHost().module();
    ASSERT_GE(hooks.Bound("CreateWindowExW"), 1);
    ASSERT_GE(hooks.Bound("SendMessageW"), 1);
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kPageEnd, [&](UiDriver& ui, Window& dialog) {
        const HWND tip = TipOf(dialog);
        ASSERT_EQ(
            std::count_if(created.begin(), created.end(), [](const Created& c) { return IsTip(c.window); }),
            1);
        const Created& made =
            *std::find_if(created.begin(), created.end(), [](const Created& c) { return IsTip(c.window); });
        EXPECT_EQ(made.extended_style, DWORD{WS_EX_TOPMOST});
        EXPECT_EQ(made.window_class, L"tooltips_class32");
        EXPECT_FALSE(made.titled);
        EXPECT_EQ(made.style, DWORD{WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP});
        EXPECT_THAT(made.place, testing::Each(CW_USEDEFAULT));
        EXPECT_EQ(made.parent, dialog.handle());
        EXPECT_EQ(made.menu, nullptr);
        EXPECT_EQ(made.instance, module);
        EXPECT_EQ(made.parameter, nullptr);
        EXPECT_EQ(made.window, tip);

        EXPECT_THAT(sent, IsEmpty()) << "before the pointer came";
        HoverForTool(ui, dialog, 1028);
        ASSERT_GE(sent.size(), 3u);
        EXPECT_EQ(sent[0].message, UINT{TTM_ADDTOOLW});
        EXPECT_EQ(sent[1].message, UINT{TTM_SETDELAYTIME});
        EXPECT_EQ(sent[1].wparam, WPARAM{TTDT_AUTOMATIC});
        EXPECT_EQ(sent[1].lparam, 1000);
        EXPECT_EQ(sent[2].message, UINT{TTM_SETMAXTIPWIDTH});
        EXPECT_EQ(sent[2].wparam, 0u);
        EXPECT_EQ(sent[2].lparam, 300);
        EXPECT_EQ(added.cbSize, 72u);
        EXPECT_EQ(added.uFlags, UINT{TTF_SUBCLASS});
        EXPECT_EQ(added.hwnd, dialog.Control(1028));
        EXPECT_EQ(added.uId, 0u);
        EXPECT_EQ(added.hinst, module);
    });
    StopHost();
}

// On the command box the help stands in front of the key filter, and both work.
TEST_F(HelpTipsTest, StandsInFrontOfTheKeyFilter) {
    struct Installed {
        int control;
        LONG_PTR procedure;
        LONG_PTR before;
    };
    std::vector<Installed> installed;
    rig::ImportHooks hooks;
    hooks.On("USER32.dll", "SetWindowLongPtrW", &SetWindowLongPtrW,
             [&](auto original, HWND window, int index, LONG_PTR value) {
                 const LONG_PTR before = original(window, index, value);
                 if (index == GWLP_WNDPROC) {
                     installed.push_back({GetDlgCtrlID(window), value, before});
                 }
                 return before;
             });
    StartHost();
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kDocStart, [&](UiDriver& ui, Window& dialog) {
        ASSERT_EQ(installed.size(), std::size(kHelps) + 1);
        std::vector<Installed> on_box;
        std::set<LONG_PTR> on_others;
        std::set<int> others;
        for (const Installed& one : installed) {
            if (one.control == 1016) {
                on_box.push_back(one);
            } else {
                on_others.insert(one.procedure);
                others.insert(one.control);
            }
        }
        EXPECT_EQ(others.size(), std::size(kHelps) - 1);
        EXPECT_EQ(on_others.size(), 1u) << "one procedure for all helped controls";
        ASSERT_EQ(on_box.size(), 2u);
        EXPECT_NE(on_box[0].procedure, *on_others.begin()) << "the filter comes first";
        EXPECT_EQ(on_box[1].procedure, *on_others.begin()) << "the help in front of it";
        EXPECT_EQ(on_box[1].before, on_box[0].procedure);

        HoverForTool(ui, dialog, 1016);
        EXPECT_EQ(Tools(TipOf(dialog)).at(dialog.Control(1016)).text,
                  L"Edit the command which needs to be sent in the input column.");
        dialog.TypeText(1016, L"1g2,3");
        EXPECT_EQ(dialog.Text(1016), L"123");
        EXPECT_EQ(dialog.Send(1016, WM_GETDLGCODE), DLGC_WANTALLKEYS);
    });
    StopHost();
}

// Messages reach what stood behind, with their result.
TEST_F(HelpTipsTest, PassesEverythingOn) {
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        EXPECT_NE(dialog.Send(IDOK, WM_GETDLGCODE) & DLGC_DEFPUSHBUTTON, 0);
        EXPECT_NE(dialog.Send(1029, WM_GETDLGCODE) & DLGC_RADIOBUTTON, 0);
        EXPECT_EQ(dialog.Send(1017, CB_GETCOUNT), 13);
        EXPECT_EQ(dialog.Send(1021, WM_GETTEXTLENGTH), 2);
        EXPECT_EQ(dialog.Send(1023, BM_GETCHECK), BST_CHECKED);
    });
}

// Lifetime

// Names of the plug-in's properties on a window.
std::vector<std::wstring> OwnProperties(HWND window) {
    std::vector<std::wstring> names;
    EnumPropsExW(
        window,
        [](HWND, LPWSTR name, HANDLE, ULONG_PTR parameter) -> BOOL {
            if (reinterpret_cast<std::uintptr_t>(name) > 0xFFFF && std::wstring(name).find(L"KVMR72.") == 0) {
                reinterpret_cast<std::vector<std::wstring>*>(parameter)->emplace_back(name);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&names));
    return names;
}

// Looks at each window of the thread when it has handled its last message.
class LastMessages {
  public:
    LastMessages() {
        seen_ = 0;
        left_.clear();
        hook_ = SetWindowsHookExW(WH_CALLWNDPROCRET, &LastMessages::Handled, nullptr, GetCurrentThreadId());
        EXPECT_NE(hook_, nullptr);
    }
    ~LastMessages() { UnhookWindowsHookEx(hook_); }
    LastMessages(const LastMessages&) = delete;
    LastMessages& operator=(const LastMessages&) = delete;

    int seen() const { return seen_; }
    // Properties that windows went away with.
    const std::vector<std::wstring>& left() const { return left_; }

  private:
    static LRESULT CALLBACK Handled(int code, WPARAM wparam, LPARAM lparam) {
        const auto& message = *reinterpret_cast<const CWPRETSTRUCT*>(lparam);
        if (code == HC_ACTION && message.message == WM_NCDESTROY) {
            ++seen_;
            for (std::wstring& name : OwnProperties(message.hwnd)) {
                left_.push_back(std::move(name));
            }
        }
        return CallNextHookEx(nullptr, code, wparam, lparam);
    }

    static inline int seen_ = 0;
    static inline std::vector<std::wstring> left_;
    HHOOK hook_;
};

TEST_F(HelpTipsTest, LeavesNothingBehindAfterManyOpenings) {
    const auto last_messages = std::make_unique<LastMessages>();
    OnPage([&](UiDriver& ui, Window& page) {
        const std::size_t tips = Tips(page).size();
        const int seen = last_messages->seen();
        constexpr int kOpenings = 50;
        for (int i = 0; i < kOpenings; ++i) {
            const Window dialog = page.OpenDialog(MomentButton(kMoments[i % 4]));
            EXPECT_EQ(Tips(page).size(), tips + 1);
            if (i % 10 == 0) {
                HoverForTool(ui, dialog, 1016);
                HoverForTool(ui, dialog, 1024);
            }
            EXPECT_THAT(OwnProperties(dialog.Control(1016)), testing::Not(IsEmpty()));
            dialog.PressAndWaitClosed(i % 2 == 0 ? IDOK : IDCANCEL);
            EXPECT_EQ(Tips(page).size(), tips);
        }
        EXPECT_GT(last_messages->seen() - seen, kOpenings * static_cast<int>(std::size(kHelps)));
    });
    EXPECT_THAT(last_messages->left(), IsEmpty());
}

// The second sheet is opened from within the first one's dialog, on the same thread.
TEST_F(HelpTipsTest, TwoDialogsDoNotDisturbEachOther) {
    HostSettings settings;
    settings.printer_name = L"Second printer";
    StartHost();
    auto second_host = std::make_unique<PluginHost>(rig::PluginPath(), settings);
    PluginHost& second_record = *second_host;
    const Bytes busy = RecordWith(BusyBlock());
    std::copy(busy.begin(), busy.end(), second_record.record_bytes().begin());
    SetRecord(busy);

    const UiThread ui_thread;
    bool returned = false;
    const std::function<void()> open_second = [&] {
        EXPECT_NO_THROW(second_record.OpenSheet(SheetKind::kDocument));
        returned = true;
    };
    const auto expect_works = [](const UiDriver& ui, const Window& dialog, int hovered, const wchar_t* text) {
        HoverForTool(ui, dialog, hovered);
        EXPECT_EQ(Tools(TipOf(dialog)).at(dialog.Control(hovered)).text, text);
        dialog.TypeText(1016, L"1g2,3");
        EXPECT_EQ(dialog.Text(1016), L"123");
        dialog.SelectCombo(1027, 2);
        EXPECT_EQ(dialog.ComboSelection(1027), 2);
    };
    OnDialog(kDocStart, [&](UiDriver& ui, Window& first) {
        HoverForTool(ui, first, 1016);
        ui_thread.Start(open_second);
        Sheet sheet = ui.WaitForSheet(settings.printer_name);
        const Window page = OperationPage(sheet);
        PostMessageW(page.Control(MomentButton(kPageEnd)), BM_CLICK, 0, 0);
        ui.WaitUntil([&] { return ui.WaitForDialog().handle() != first.handle(); }, "the second dialog");
        const Window second = ui.WaitForDialog();
        ASSERT_EQ(second.Title(), L"End Page Operation");
        ASSERT_NE(TipOf(first), TipOf(second));
        expect_works(ui, second, 1016, L"Edit the command which needs to be sent in the input column.");
        expect_works(ui, second, 1023, kHelps[9].english);
        EXPECT_EQ(ToolCount(TipOf(first)), 1);
        EXPECT_EQ(ToolCount(TipOf(second)), 2);
        SetWindowPos(first.handle(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        expect_works(ui, first, 1021, kHelps[8].english);
        SetWindowPos(second.handle(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        second.PressAndWaitClosed(IDCANCEL);
        sheet.PressCancel();
        ui.WaitUntil([&] { return returned; }, "the second sheet to return");
        expect_works(ui, first, 1016, L"Edit the command which needs to be sent in the input column.");
        expect_works(ui, first, 1024, kHelps[7].english);
        EXPECT_EQ(ToolCount(TipOf(first)), 3);
    });
    EXPECT_TRUE(second_record.GuardsIntact());
    second_host.reset();
}

}  // namespace
}  // namespace pages
