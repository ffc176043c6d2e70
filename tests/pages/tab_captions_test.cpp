// A change of language relabels the tabs of sheets that are open: the document sheet's, and those of printer
// sheets of the same printer. The printer sheets are windows of the test, real dialogs with real tabs, or, at
// the end, the plug-in's own.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "page_fixture.h"
#include "rig/import_hooks.h"
#include "rig/test_desktop.h"
#include "rig/trace_capture.h"
#include "ui_thread.h"
#include "virtual_printer.h"

namespace pages {
namespace {

using rig::Lines;
using testing::ElementsAre;
using Texts = std::vector<std::wstring>;

constexpr int kMainTab = 2;
constexpr int kLanguageList = 1021;
constexpr int kTraditional = 2;  // its place in the list

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kPrinterTitle[] = L"Properties of KVM-R72 at the till";

const Texts kPrinterTabs = {L"General", L"Ports", L"one", L"two", L"three", L"four"};

Texts RelabelledPrinterTabs(const wchar_t* file) {
    return {L"General",
            L"Ports",
            SourceText(file, L"UTILITY", L"RC_UTILITYFORM"),
            SourceText(file, L"DOWNLOAD", L"RC_DOWNLOADFORM"),
            SourceText(file, L"FONT", L"RC_FONTFORM"),
            SourceText(file, L"VERSION", L"RC_VERSIONFORM")};
}

HWND AddChild(HWND parent, const wchar_t* window_class) {
    const HWND child = CreateWindowExW(0, window_class, L"", WS_CHILD | WS_VISIBLE, 0, 0, 100, 50, parent,
                                       nullptr, GetModuleHandleW(nullptr), nullptr);
    EXPECT_NE(child, nullptr);
    return child;
}

HWND AddTabs(HWND parent, const Texts& titles, const wchar_t* window_class = WC_TABCONTROLW) {
    const HWND tabs = AddChild(parent, window_class);
    for (std::size_t i = 0; i < titles.size(); ++i) {
        std::wstring title = titles[i];
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = title.data();
        EXPECT_EQ(SendMessageW(tabs, TCM_INSERTITEMW, i, reinterpret_cast<LPARAM>(&item)),
                  static_cast<LRESULT>(i));
    }
    return tabs;
}

// A top-level window that stands open beside the document sheet, with child windows in it. Lives and dies on
// the thread that makes it.
class Bystander {
  public:
    explicit Bystander(const std::wstring& title, const wchar_t* window_class = kDialogClass)
        : window_(CreateWindowExW(0, window_class, title.c_str(), WS_OVERLAPPEDWINDOW, 0, 0, 400, 300,
                                  nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)) {
        EXPECT_NE(window_, nullptr);
    }
    Bystander(const Bystander&) = delete;
    Bystander& operator=(const Bystander&) = delete;
    ~Bystander() { DestroyWindow(window_); }

    HWND AddChild(const wchar_t* window_class) const { return pages::AddChild(window_, window_class); }
    HWND AddTabs(const Texts& titles, const wchar_t* window_class = WC_TABCONTROLW) const {
        return pages::AddTabs(window_, titles, window_class);
    }
    HWND handle() const { return window_; }

  private:
    HWND window_;
};

Texts TitlesOf(HWND tabs) {
    Texts titles;
    const LRESULT count = SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        wchar_t text[100] = {};
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = static_cast<int>(std::size(text));
        EXPECT_TRUE(
            SendMessageW(tabs, TCM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item)));
        titles.emplace_back(text);
    }
    return titles;
}

class TabCaptionsTest : public PageTest {
  protected:
    // Changes to Traditional Chinese, on the sheet's thread.
    static void ApplyLanguage(const Window& page, const Sheet& sheet) {
        SendDlgItemMessageW(page.handle(), kLanguageList, CB_SETCURSEL, kTraditional, 0);
        SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kLanguageList, CBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(page.Control(kLanguageList)));
        SendMessageW(sheet.handle(), PSM_APPLY, 0, 0);
    }

    // Opens the document sheet in English, and on its thread: makes bystanders with `make`, changes to
    // Traditional Chinese, and has `check` look at them before they go.
    template <typename Made>
    void ChangeLanguageBeside(const std::function<Made()>& make,
                              const std::function<void(const Made&, const Sheet&)>& check) {
        const UiThread ui_thread;
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            const Window page = sheet.SelectPage(kMainTab);
            ui_thread.Do([&] {
                const Made made = make();
                trace_.Take();
                ApplyLanguage(page, sheet);
                check(made, sheet);
            });
            sheet.PressCancel();
        });
        EXPECT_EQ(rig::LanguageValue(L"LANGUAGE_KVMR72"), kTraditionalChinese);
    }

    // The tabs of one bystander with these titles and window class, after a change of language.
    Texts TabsAfterwards(const std::wstring& title, const wchar_t* window_class = kDialogClass,
                         const Texts& tabs = kPrinterTabs) {
        ChooseLanguage(kEnglish);
        using Made = std::pair<std::unique_ptr<Bystander>, HWND>;
        Texts titles;
        ChangeLanguageBeside<Made>(
            [&] {
                auto window = std::make_unique<Bystander>(title, window_class);
                const HWND handle = window->AddTabs(tabs);
                return Made(std::move(window), handle);
            },
            [&](const Made& made, const Sheet&) { titles = TitlesOf(made.second); });
        return titles;
    }

    rig::TraceCapture trace_;
};

TEST_F(TabCaptionsTest, RelabelsThePagesOfTheDocumentSheetOnly) {
    ChangeLanguageBeside<int>(
        [] { return 0; },
        [](int, const Sheet& sheet) {
            EXPECT_THAT(
                TitlesOf(reinterpret_cast<HWND>(SendMessageW(sheet.handle(), PSM_GETTABCONTROL, 0, 0))),
                ElementsAre(L"Layout", L"Paper/Quality",
                            SourceText(kTraditionalChinese, L"LAYOUT", L"RC_LAYOUTFORM"),
                            SourceText(kTraditionalChinese, L"WATERMARK", L"RC_WATERMARKFORM"),
                            SourceText(kTraditionalChinese, L"OPERATION", L"RC_OPERATIONFORM"),
                            SourceText(kTraditionalChinese, L"1DCODE", L"RC_1DCODEFORM"),
                            SourceText(kTraditionalChinese, L"2DCODE", L"RC_2DCODEFORM"),
                            SourceText(kTraditionalChinese, L"VERSION", L"RC_VERSIONFORM")));
        });
}

TEST_F(TabCaptionsTest, RelabelsTheLastFourTabsOfThePrintersSheets) {
    const Texts expected = RelabelledPrinterTabs(kTraditionalChinese);
    EXPECT_EQ(TabsAfterwards(kPrinterTitle), expected);
    EXPECT_EQ(TabsAfterwards(L"KVM-R72"), expected);
    // The name may stand anywhere in what is read of the title.
    EXPECT_EQ(TabsAfterwards(std::wstring(1017, L'x') + L"KVM-R72"), expected);
    // Only four tabs, all of the plug-in.
    EXPECT_EQ(TabsAfterwards(kPrinterTitle, kDialogClass, {L"a", L"b", L"c", L"d"}),
              Texts(expected.begin() + 2, expected.end()));
}

TEST_F(TabCaptionsTest, LeavesOtherWindowsAlone) {
    EXPECT_EQ(TabsAfterwards(L"Properties of KVM-R7"), kPrinterTabs) << "another printer";
    EXPECT_EQ(TabsAfterwards(L"Properties of kvm-r72"), kPrinterTabs) << "another printer";
    EXPECT_EQ(TabsAfterwards(L""), kPrinterTabs);
    EXPECT_EQ(TabsAfterwards(std::wstring(1018, L'x') + L"KVM-R72"), kPrinterTabs) << "its name is cut off";

    WNDCLASSW window_class = {};
    window_class.lpfnWndProc = &DefWindowProcW;
    window_class.hInstance = GetModuleHandleW(nullptr);
    for (const wchar_t* name : {L"A#32770", L"#32770A", L"#3277"}) {
        window_class.lpszClassName = name;
        RegisterClassW(&window_class);
        EXPECT_EQ(TabsAfterwards(kPrinterTitle, name), kPrinterTabs);
        UnregisterClassW(name, window_class.hInstance);
    }
}

// Every title has an empty name in it.
TEST_F(TabCaptionsTest, APrinterWithoutANameHasNoSheets) {
    HostSettings settings;
    settings.printer_name = L"";
    StartHost(settings);
    EXPECT_EQ(TabsAfterwards(kPrinterTitle), kPrinterTabs);
}

// Where a sheet has fewer tabs than pages of the plug-in, the last ones still are the plug-in's.
TEST_F(TabCaptionsTest, FewTabsAreNoHarm) {
    const Texts all = RelabelledPrinterTabs(kTraditionalChinese);
    EXPECT_EQ(TabsAfterwards(kPrinterTitle, kDialogClass, {L"a", L"b"}), (Texts{all[4], all[5]}));
    EXPECT_EQ(TabsAfterwards(kPrinterTitle, kDialogClass, {}), Texts());
}

TEST_F(TabCaptionsTest, FindsOneTabControlInAPrinterSheetOfAnyClassName) {
    WNDCLASSEXW tab_class = {};
    tab_class.cbSize = sizeof tab_class;
    ASSERT_TRUE(GetClassInfoExW(nullptr, WC_TABCONTROLW, &tab_class));
    tab_class.hInstance = GetModuleHandleW(nullptr);
    tab_class.lpszClassName = L"Till.SysTabControl32.2";
    ASSERT_TRUE(RegisterClassExW(&tab_class));
    struct Made {
        std::unique_ptr<Bystander> window;
        HWND first, second;
    };
    ChangeLanguageBeside<Made>(
        [&] {
            Made made;
            made.window = std::make_unique<Bystander>(kPrinterTitle);
            made.window->AddChild(WC_BUTTONW);
            made.first = made.window->AddTabs(kPrinterTabs, tab_class.lpszClassName);
            made.second = made.window->AddTabs(kPrinterTabs);
            return made;
        },
        [&](const Made& made, const Sheet&) {
            EXPECT_EQ(TitlesOf(made.first), RelabelledPrinterTabs(kTraditionalChinese));
            EXPECT_EQ(TitlesOf(made.second), kPrinterTabs) << "one control is a sheet's";
        });
    UnregisterClassW(tab_class.lpszClassName, tab_class.hInstance);
}

// Of a class's name 200 characters are looked at.
TEST_F(TabCaptionsTest, LooksAtTheStartOfALongClassName) {
    WNDCLASSEXW tab_class = {};
    tab_class.cbSize = sizeof tab_class;
    ASSERT_TRUE(GetClassInfoExW(nullptr, WC_TABCONTROLW, &tab_class));
    tab_class.hInstance = GetModuleHandleW(nullptr);
    const std::wstring control(WC_TABCONTROLW);
    const std::wstring within = std::wstring(200 - control.size(), L'x') + control;
    const std::wstring beyond = L"x" + within;
    for (const std::wstring& name : {within, beyond}) {
        tab_class.lpszClassName = name.c_str();
        ASSERT_TRUE(RegisterClassExW(&tab_class));
        using Made = std::pair<std::unique_ptr<Bystander>, HWND>;
        ChangeLanguageBeside<Made>(
            [&] {
                auto window = std::make_unique<Bystander>(kPrinterTitle);
                const HWND tabs = window->AddTabs(kPrinterTabs, name.c_str());
                return Made(std::move(window), tabs);
            },
            [&](const Made& made, const Sheet&) {
                EXPECT_EQ(TitlesOf(made.second),
                          name == within ? RelabelledPrinterTabs(kTraditionalChinese) : kPrinterTabs);
            });
        UnregisterClassW(name.c_str(), tab_class.hInstance);
        ChooseLanguage(kEnglish);
    }
}

// A text goes to a tab by its address, which means nothing elsewhere.
TEST_F(TabCaptionsTest, LeavesWindowsOfOtherProgramsAlone) {
    rig::ImportHooks hooks;
    HWND foreign = nullptr;
    hooks.On("USER32.dll", "GetWindowThreadProcessId", &GetWindowThreadProcessId,
             [&](auto original, HWND window, DWORD* process) {
                 const DWORD thread = original(window, process);
                 if (process != nullptr && window == foreign) {
                     ++*process;
                 }
                 return thread;
             });
    StartHost();
    ASSERT_EQ(hooks.Bound("GetWindowThreadProcessId"), 1);
    using Made = std::pair<std::unique_ptr<Bystander>, HWND>;
    ChangeLanguageBeside<Made>(
        [&] {
            auto window = std::make_unique<Bystander>(kPrinterTitle);
            foreign = window->handle();
            const HWND tabs = window->AddTabs(kPrinterTabs);
            return Made(std::move(window), tabs);
        },
        [&](const Made& made, const Sheet&) { EXPECT_EQ(TitlesOf(made.second), kPrinterTabs); });
    StopHost();
}

// A host may have tabs within its sheet: each tab control is the sheet's own as far as can be told.
TEST_F(TabCaptionsTest, RelabelsEveryTabControlOfTheDocumentSheet) {
    const Texts more = {L"a", L"b", L"c", L"d", L"e", L"f", L"g", L"h"};
    const UiThread ui_thread;
    OpenSheet([&](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectPage(kMainTab);
        ui_thread.Do([&] {
            // In front of the sheet's own, and behind all that it has.
            const HWND first = AddTabs(sheet.handle(), more);
            const HWND last = AddTabs(sheet.handle(), more);
            SetWindowPos(first, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
            SetWindowPos(last, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
            ApplyLanguage(page, sheet);
            const Texts all =
                TitlesOf(reinterpret_cast<HWND>(SendMessageW(sheet.handle(), PSM_GETTABCONTROL, 0, 0)));
            const auto expect_relabelled = [&](HWND tabs) {
                Texts expected = {L"a", L"b"};
                expected.insert(expected.end(), all.begin() + 2, all.end());
                EXPECT_EQ(TitlesOf(tabs), expected);
                EXPECT_EQ(expected[2], SourceText(kTraditionalChinese, L"LAYOUT", L"RC_LAYOUTFORM"));
                DestroyWindow(tabs);
            };
            expect_relabelled(first);
            expect_relabelled(last);
        });
        sheet.PressCancel();
    });
}

// The document sheet first, in the language as it is stored then; the printer's sheets after it, in the
// language as it is stored by that time; then the page.
TEST_F(TabCaptionsTest, LooksTheLanguageUpForEachSheet) {
    static std::vector<std::string> searches;
    static HWND document = nullptr;
    static HWND main = nullptr;
    static bool is_watched = false;
    searches.clear();
    is_watched = false;
    rig::ImportHooks hooks;
    hooks.On("USER32.dll", "EnumChildWindows", &EnumChildWindows,
             [](auto original, HWND parent, auto... arguments) -> WINBOOL {
                 if (is_watched) {
                     searches.emplace_back(parent == document ? "document" : "printer");
                 }
                 return original(parent, arguments...);
             });
    hooks.On("USER32.dll", "EnumWindows", &EnumWindows, [](auto original, auto... arguments) -> WINBOOL {
        if (is_watched) {
            searches.emplace_back("windows");
            ChooseLanguage(kSimplifiedChinese);
        }
        return original(arguments...);
    });
    hooks.On("USER32.dll", "SendMessageW", &SendMessageW,
             [](auto original, HWND window, UINT message, auto... arguments) -> LRESULT {
                 if (is_watched && window == main && message == WM_PAINT) {
                     searches.emplace_back("paint");
                     ChooseLanguage(kTraditionalChinese);
                 }
                 return original(window, message, arguments...);
             });
    StartHost();
    for (const char* function : {"EnumChildWindows", "EnumWindows", "SendMessageW"}) {
        ASSERT_GE(hooks.Bound(function), 1) << function;
    }
    const UiThread ui_thread;
    OpenSheet([&](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectPage(kMainTab);
        document = sheet.handle();
        main = page.handle();
        ui_thread.Do([&] {
            const Bystander window(kPrinterTitle);
            const HWND tabs = window.AddTabs(kPrinterTabs);
            is_watched = true;
            ApplyLanguage(page, sheet);
            is_watched = false;
            EXPECT_THAT(searches, ElementsAre("document", "windows", "printer", "paint"));
            EXPECT_EQ(TitlesOf(tabs), RelabelledPrinterTabs(kSimplifiedChinese));
            EXPECT_EQ(
                TitlesOf(reinterpret_cast<HWND>(SendMessageW(sheet.handle(), PSM_GETTABCONTROL, 0, 0)))[2],
                SourceText(kTraditionalChinese, L"LAYOUT", L"RC_LAYOUTFORM"));
        });
        sheet.PressCancel();
    });
    StopHost();
}

// A printer sheet on a thread of its own, which answers messages or sleeps.
class ElsewhereSheet {
  public:
    explicit ElsewhereSheet(bool answers)
        : thread_([this, answers] {
              rig::JoinOwnDesktop();
              const Bystander window(kPrinterTitle);
              tabs_ = window.AddTabs(kPrinterTabs);
              SetEvent(made_);
              if (answers) {
                  // A wait that ends for each message, and then for the end.
                  MSG message = {};
                  while (MsgWaitForMultipleObjects(1, &end_, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0) {
                      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                          DispatchMessageW(&message);
                      }
                  }
              } else {
                  // Not for ever, or whoever waits for it would not come back to say so.
                  wasWaitedFor_ = WaitForSingleObject(end_, kSleep) != WAIT_OBJECT_0;
              }
              titles_ = TitlesOf(tabs_);
          }) {
        EXPECT_EQ(WaitForSingleObject(made_, 10000), WAIT_OBJECT_0);
    }
    ElsewhereSheet(const ElsewhereSheet&) = delete;
    ElsewhereSheet& operator=(const ElsewhereSheet&) = delete;
    ~ElsewhereSheet() {
        if (thread_.joinable()) {
            End();
        }
        CloseHandle(made_);
        CloseHandle(end_);
    }

    HWND tabs() const { return tabs_; }
    // Its tabs' titles at its end.
    Texts End() {
        SetEvent(end_);
        thread_.join();
        EXPECT_FALSE(wasWaitedFor_);
        return titles_;
    }

  private:
    static constexpr DWORD kSleep = 8000;

    HANDLE made_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE end_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HWND tabs_ = nullptr;
    bool wasWaitedFor_ = false;
    Texts titles_;
    // Goes first.
    std::thread thread_;
};

TEST_F(TabCaptionsTest, RelabelsSheetsOfOtherThreads) {
    ElsewhereSheet sheet(true);
    ChangeLanguageBeside<int>([] { return 0; }, [](int, const Sheet&) {});
    EXPECT_EQ(sheet.End(), RelabelledPrinterTabs(kTraditionalChinese));
}

// The other thread may wait for this very sheet. Its sheet is given up at the first message that is not
// answered in time; the others get their texts.
TEST_F(TabCaptionsTest, DoesNotWaitForThreadsThatDoNotAnswer) {
    struct Asked {
        UINT message, flags, patience;
        bool operator==(const Asked&) const = default;
    };
    ElsewhereSheet asleep(false);
    std::vector<Asked> asked;
    rig::ImportHooks hooks;
    hooks.On("USER32.dll", "SendMessageTimeoutW", &SendMessageTimeoutW,
             [&](auto original, HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                 UINT patience, PDWORD_PTR result) -> LRESULT {
                 if (window == asleep.tabs()) {
                     asked.push_back({message, flags, patience});
                 }
                 return original(window, message, wparam, lparam, flags, patience, result);
             });
    StartHost();
    ASSERT_EQ(hooks.Bound("SendMessageTimeoutW"), 1);
    struct Made {
        std::unique_ptr<Bystander> before, after;
        HWND tabs_before, tabs_after;
    };
    ChangeLanguageBeside<Made>(
        [] {
            Made made;
            made.before = std::make_unique<Bystander>(kPrinterTitle);
            made.tabs_before = made.before->AddTabs(kPrinterTabs);
            made.after = std::make_unique<Bystander>(kPrinterTitle);
            made.tabs_after = made.after->AddTabs(kPrinterTabs);
            SetWindowPos(made.before->handle(), HWND_TOP, 0, 0, 0, 0,
                         SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
            SetWindowPos(made.after->handle(), HWND_BOTTOM, 0, 0, 0, 0,
                         SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
            return made;
        },
        [&](const Made& made, const Sheet& sheet) {
            EXPECT_EQ(asleep.End(), kPrinterTabs);
            EXPECT_EQ(TitlesOf(made.tabs_before), RelabelledPrinterTabs(kTraditionalChinese));
            EXPECT_EQ(TitlesOf(made.tabs_after), RelabelledPrinterTabs(kTraditionalChinese));
            EXPECT_EQ(
                TitlesOf(reinterpret_cast<HWND>(SendMessageW(sheet.handle(), PSM_GETTABCONTROL, 0, 0)))[2],
                SourceText(kTraditionalChinese, L"LAYOUT", L"RC_LAYOUTFORM"));
        });
    EXPECT_THAT(asked, ElementsAre(Asked{TCM_GETITEMCOUNT, SMTO_ABORTIFHUNG, 500}));
    StopHost();
}

// Sheets of one printer, of another and a message box, all open at once.
// A thread that was given up at a text may still be reading it.
TEST_F(TabCaptionsTest, LeavesTheTextToAThreadThatIsSlow) {
    static WNDPROC real = nullptr;
    static std::wstring read;
    ElsewhereSheet slow(true);
    real = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
        slow.tabs(), GWLP_WNDPROC,
        reinterpret_cast<LONG_PTR>(
            static_cast<WNDPROC>([](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
                if (message == TCM_SETITEMW) {
                    Sleep(1000);
                    const auto& item = *reinterpret_cast<const TCITEMW*>(lparam);
                    read = item.mask == TCIF_TEXT && item.pszText != nullptr ? item.pszText : L"gone";
                }
                return CallWindowProcW(real, window, message, wparam, lparam);
            }))));
    ASSERT_NE(real, nullptr);
    ChangeLanguageBeside<int>([] { return 0; }, [](int, const Sheet&) {});
    Texts expected = kPrinterTabs;
    expected[2] = SourceText(kTraditionalChinese, L"UTILITY", L"RC_UTILITYFORM");
    EXPECT_EQ(slow.End(), expected);
    EXPECT_EQ(read, expected[2]);
}

TEST_F(TabCaptionsTest, FindsItsSheetsAmongOthersAndTracesTheSearch) {
    struct Made {
        std::unique_ptr<Bystander> one, other, same;
        HWND tabs_of_one, tabs_of_other, tabs_of_same;
    };
    const std::wstring other_title = L"Properties of KVM-R80";
    const std::wstring same_title = L"KVM-R72 in the kitchen";
    ChangeLanguageBeside<Made>(
        [&] {
            Made made;
            made.one = std::make_unique<Bystander>(kPrinterTitle);
            made.one->AddChild(WC_STATICW);
            made.tabs_of_one = made.one->AddTabs(kPrinterTabs);
            made.one->AddChild(WC_STATICW);
            made.other = std::make_unique<Bystander>(other_title);
            made.tabs_of_other = made.other->AddTabs(kPrinterTabs);
            made.same = std::make_unique<Bystander>(same_title);
            made.tabs_of_same = made.same->AddTabs(kPrinterTabs);
            return made;
        },
        [&](const Made& made, const Sheet&) {
            EXPECT_EQ(TitlesOf(made.tabs_of_one), RelabelledPrinterTabs(kTraditionalChinese));
            EXPECT_EQ(TitlesOf(made.tabs_of_other), kPrinterTabs);
            EXPECT_EQ(TitlesOf(made.tabs_of_same), RelabelledPrinterTabs(kTraditionalChinese));

            const Lines lines = trace_.TakeOwn();
            // The lines from a dialog's title to the end of its search, the line before it included.
            const auto search_of = [&](const std::wstring& title) {
                const auto found = std::find(lines.begin(), lines.end(), title);
                if (found - lines.begin() < 2) {
                    ADD_FAILURE() << "the title was not traced";
                    return Lines();
                }
                const auto out = std::find(found, lines.end(), L"UI:  EnumWindowsProc out\r\n");
                return Lines(found - 2, out == lines.end() ? out : out + 1);
            };
            const std::wstring in = L"UI:  EnumWindowsProc in\r\n";
            const std::wstring text = L"UI:  EnumWindowsProc GetWindowText\r\n";
            const std::wstring out = L"UI:  EnumWindowsProc out\r\n";
            const std::wstring child = L"UI:  EnumWindowsProc1 in\r\n";
            EXPECT_EQ(search_of(other_title), (Lines{in, text, other_title, out}));
            EXPECT_EQ(search_of(same_title),
                      (Lines{in, text, same_title, child, L"UI:  EnumWindowsProc1 out 1\r\n", out}));
            EXPECT_EQ(search_of(kPrinterTitle),
                      (Lines{in, text, kPrinterTitle, child, L"UI:  EnumWindowsProc1 out 2\r\n", child,
                             L"UI:  EnumWindowsProc1 out 1\r\n", out}));
            // Each top-level window is looked at, and only dialogs further.
            EXPECT_GT(std::count(lines.begin(), lines.end(), in),
                      std::count(lines.begin(), lines.end(), out));
            EXPECT_EQ(std::count(lines.begin(), lines.end(), text),
                      std::count(lines.begin(), lines.end(), out));
        });
}

TEST_F(TabCaptionsTest, CutsLongTitlesAndFallsBackToEnglish) {
    using Made = std::pair<std::unique_ptr<Bystander>, HWND>;
    ChangeLanguageBeside<Made>(
        [&] {
            // Now, since opening the page brought the user's copies up to date.
            WriteUserFile(kTraditionalChinese,
                          L"[UTILITY]\r\nRC_UTILITYFORM=\"abcdefghijklmnopqrstuvwxyz0123\"\r\n");
            auto window = std::make_unique<Bystander>(kPrinterTitle);
            const HWND tabs = window->AddTabs(kPrinterTabs);
            return Made(std::move(window), tabs);
        },
        [](const Made& made, const Sheet&) {
            EXPECT_THAT(TitlesOf(made.second), ElementsAre(L"General", L"Ports", L"abcdefghijklmnopqrs",
                                                           L"Download", L"Font", L"Version"));
        });
}

// The plug-in's own printer sheets

constexpr int kUtilityTab = 2;
constexpr int kDownloadTab = 3;
constexpr int kFontTab = 4;
constexpr int kVersionTab = 5;

constexpr int kDownloadBrowse = 1040;
constexpr int kDownloadSend = 1036;
constexpr int kFontNotice = 1150;
constexpr int kVersionName = 1109;
constexpr int kSelfTestNote = 1151;

// Reads a page's texts of one language: utility, download, font.
Texts PageTextsIn(const wchar_t* file) {
    return {SourceText(file, L"UTILITY", L"RC_STATIC_SELFTEST"),
            SourceText(file, L"DOWNLOAD", L"RC_BROWSE_FIREWARE"),
            SourceText(file, L"FONT", L"RC_STATIC_FONT_NOTICE")};
}

// The pages of a printer sheet, each made by bringing it to the front once.
struct PrinterPages {
    explicit PrinterPages(const Sheet& sheet)
        : utility(sheet.SelectPage(kUtilityTab)),
          download(sheet.SelectPage(kDownloadTab)),
          font(sheet.SelectPage(kFontTab)),
          version(sheet.SelectPage(kVersionTab)) {
        // The host's page covers them.
        sheet.SelectPage(0);
    }

    Texts TextsOf() const {
        return {utility.Text(kSelfTestNote), download.Text(kDownloadBrowse), font.Text(kFontNotice)};
    }

    Window utility, download, font, version;
};

class OpenSheetsTest : public TabCaptionsTest {
  protected:
    void TearDown() override {
        StopHost();
        printer_.reset();
        TabCaptionsTest::TearDown();
    }

    // Opens the printing preferences of the first printer and, above them, the properties of these printers,
    // by name. What the script leaves open is closed, from the last to the first.
    void OpenBeside(const Texts& names,
                    const std::function<void(UiDriver&, Sheet& document, const Window& main,
                                             std::vector<Sheet>& sheets)>& script) {
        HostSettings settings;
        settings.printer = printer_->handle();
        StartHost(settings);
        std::vector<std::unique_ptr<PluginHost>> hosts;
        std::vector<std::function<void()>> openings;
        for (const std::wstring& name : names) {
            HostSettings own = settings;
            own.printer_name = name;
            own.printer = name == settings.printer_name
                              ? printer_->handle()
                              : printer_->NewPrinter({.name = name, .port = L"LPT1:", .driver = L"KVM-R72"});
            hosts.push_back(std::make_unique<PluginHost>(rig::PluginPath(), own));
            openings.emplace_back([host = hosts.back().get()] { host->OpenSheet(SheetKind::kPrinter); });
        }
        const UiThread ui_thread;
        OpenSheet([&](UiDriver& ui, Sheet& document) {
            const Window main = document.SelectPage(kMainTab);
            std::vector<Sheet> sheets;
            for (std::size_t i = 0; i < names.size(); ++i) {
                ui_thread.Start(openings[i]);
                // Titles repeat: the new sheet is the one that was not there.
                ui.WaitUntil(
                    [&] {
                        const Sheet sheet = ui.WaitForSheet(names[i] + L" Properties");
                        const auto is_known = [&](const Sheet& known) {
                            return known.handle() == sheet.handle();
                        };
                        if (std::any_of(sheets.begin(), sheets.end(), is_known)) {
                            return false;
                        }
                        sheets.push_back(sheet);
                        return true;
                    },
                    "another sheet");
            }
            script(ui, document, main, sheets);
            for (auto sheet = sheets.rbegin(); sheet != sheets.rend(); ++sheet) {
                sheet->PressCancel();
            }
            document.PressCancel();
        });
        for (const auto& host : hosts) {
            EXPECT_TRUE(host->GuardsIntact());
        }
    }

    // As a person does.
    static void Choose(const Sheet& document, const Window& main, int language) {
        main.SelectCombo(kLanguageList, language);
        document.PressApply();
    }

    std::unique_ptr<VirtualPrinter> printer_ = std::make_unique<VirtualPrinter>();
};

const Texts kEnglishPrinterTabs = {L"General", L"Ports", L"Utility", L"Download", L"Font", L"Version"};

TEST_F(OpenSheetsTest, RelabelsTheSheetOfItsPrinterAndNotOfAnother) {
    OpenBeside({L"KVM-R72", L"Kitchen"}, [&](UiDriver&, Sheet& document, const Window& main,
                                             std::vector<Sheet>& sheets) {
        const PrinterPages own(sheets[0]);
        const PrinterPages others(sheets[1]);
        EXPECT_EQ(sheets[0].TabTitles(), kEnglishPrinterTabs);
        EXPECT_EQ(sheets[1].TabTitles(), kEnglishPrinterTabs);
        EXPECT_EQ(own.TextsOf(), PageTextsIn(kEnglish));
        for (const auto& [language, file] :
             {std::pair(1, kSimplifiedChinese), std::pair(2, kTraditionalChinese)}) {
            Choose(document, main, language);
            EXPECT_EQ(document.TabTitles()[kMainTab], SourceText(file, L"LAYOUT", L"RC_LAYOUTFORM"));
            EXPECT_EQ(sheets[0].TabTitles(), RelabelledPrinterTabs(file));
            EXPECT_EQ(sheets[1].TabTitles(), kEnglishPrinterTabs) << "another printer's";
            // Though none of them can be seen.
            EXPECT_EQ(own.TextsOf(), PageTextsIn(file));
            EXPECT_EQ(others.TextsOf(), PageTextsIn(kEnglish));
        }
        EXPECT_EQ(own.version.Text(kVersionName), SourceText(kEnglish, L"VERSION", L"RC_STATIC_VER1"))
            << "as when its sheet was assembled";
        // Once painted, a page is in the language that the user has chosen, whatever its tab says.
        sheets[1].SelectPage(kDownloadTab);
        Repaint(others.download);
        EXPECT_EQ(others.download.Text(kDownloadBrowse),
                  SourceText(kTraditionalChinese, L"DOWNLOAD", L"RC_BROWSE_FIREWARE"));
    });
}

// Nothing but the sheet itself tells which windows are its pages.
TEST_F(OpenSheetsTest, RelabelsEachSheetOfItsPrinter) {
    OpenBeside({L"KVM-R72", L"KVM-R72"},
               [&](UiDriver&, Sheet& document, const Window& main, std::vector<Sheet>& sheets) {
                   const PrinterPages first(sheets[0]);
                   const PrinterPages second(sheets[1]);
                   Choose(document, main, kTraditional);
                   for (const Sheet& sheet : sheets) {
                       EXPECT_EQ(sheet.TabTitles(), RelabelledPrinterTabs(kTraditionalChinese));
                   }
                   EXPECT_EQ(first.TextsOf(), PageTextsIn(kTraditionalChinese));
                   EXPECT_EQ(second.TextsOf(), PageTextsIn(kTraditionalChinese));
                   sheets[1].PressCancel();
                   sheets.pop_back();
                   Choose(document, main, 1);
                   EXPECT_EQ(sheets[0].TabTitles(), RelabelledPrinterTabs(kSimplifiedChinese));
                   EXPECT_EQ(first.TextsOf(), PageTextsIn(kSimplifiedChinese));
               });
}

TEST_F(OpenSheetsTest, PagesThatWereNotShownComeInTheNewLanguage) {
    OpenBeside({L"KVM-R72"}, [&](UiDriver&, Sheet& document, const Window& main, std::vector<Sheet>& sheets) {
        const Window font = sheets[0].SelectPage(kFontTab);
        sheets[0].SelectPage(0);
        Choose(document, main, kTraditional);
        EXPECT_EQ(sheets[0].TabTitles(), RelabelledPrinterTabs(kTraditionalChinese));
        EXPECT_EQ(font.Text(kFontNotice), SourceText(kTraditionalChinese, L"FONT", L"RC_STATIC_FONT_NOTICE"));
        // They are in it when they are painted for the first time.
        for (const int tab : {kUtilityTab, kDownloadTab}) {
            Repaint(sheets[0].SelectPage(tab));
        }
        EXPECT_EQ(PrinterPages(sheets[0]).TextsOf(), PageTextsIn(kTraditionalChinese));
    });
}

// What a page says afterwards is in the new language too.
TEST_F(OpenSheetsTest, MessagesFollowTheLanguage) {
    OpenBeside({L"KVM-R72"}, [&](UiDriver&, Sheet& document, const Window& main, std::vector<Sheet>& sheets) {
        const Window download = sheets[0].SelectPage(kDownloadTab);
        Choose(document, main, kTraditional);
        download.TypeText(1039, L"C:\\missing.jk");
        const MessageBoxInfo box = download.OpenMessageBox(kDownloadSend);
        EXPECT_EQ(box.title, SourceText(kTraditionalChinese, L"MessageBox", L"MB_ERROR"));
        EXPECT_EQ(box.text, SourceText(kTraditionalChinese, L"MessageBox", L"MB_DOWNLOAD_ERROR1"));
        box.Press(IDOK);
        Settle(download);
    });
}

// Each tab, and after it its page, in the order of the tabs.
TEST_F(OpenSheetsTest, PaintsEachPageAfterItsTab) {
    struct Sent {
        HWND window;
        UINT message;
        WPARAM wparam;
        bool operator==(const Sent&) const = default;
    };
    std::vector<Sent> sent;
    rig::ImportHooks hooks;
    hooks.On("USER32.dll", "SendMessageTimeoutW", &SendMessageTimeoutW,
             [&](auto original, HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                 UINT patience, PDWORD_PTR result) -> LRESULT {
                 sent.push_back({window, message, wparam});
                 return original(window, message, wparam, lparam, flags, patience, result);
             });
    OpenBeside({L"KVM-R72"}, [&](UiDriver&, Sheet& document, const Window& main, std::vector<Sheet>& sheets) {
        EXPECT_EQ(hooks.Bound("SendMessageTimeoutW"), 1);
        const auto tabs = reinterpret_cast<HWND>(SendMessageW(sheets[0].handle(), PSM_GETTABCONTROL, 0, 0));
        const PrinterPages pages(sheets[0]);
        sent.clear();
        Choose(document, main, kTraditional);
        std::erase_if(sent, [&](const Sent& message) {
            return message.window != tabs && GetParent(message.window) != sheets[0].handle();
        });
        EXPECT_THAT(sent, ElementsAre(Sent{tabs, TCM_GETITEMCOUNT, 0}, Sent{tabs, TCM_SETITEMW, 2},
                                      Sent{pages.utility.handle(), WM_PAINT, 0}, Sent{tabs, TCM_SETITEMW, 3},
                                      Sent{pages.download.handle(), WM_PAINT, 0}, Sent{tabs, TCM_SETITEMW, 4},
                                      Sent{pages.font.handle(), WM_PAINT, 0}, Sent{tabs, TCM_SETITEMW, 5},
                                      Sent{pages.version.handle(), WM_PAINT, 0}));
    });
    StopHost();
}

}  // namespace
}  // namespace pages
