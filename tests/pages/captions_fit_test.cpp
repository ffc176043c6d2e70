// Nothing that a person reads is cut off: every caption, measured in its control's own font, fits the control
// in every language; no control lies on another one or outside its dialog.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "page_fixture.h"
#include "plugin_pages.h"
#include "utf8.h"
#include "virtual_printer.h"

namespace {

using pages::kEnglish;
using pages::kSimplifiedChinese;
using pages::kTraditionalChinese;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kHostTabs = 2;

// The DLL's templates, so that a new one is not forgotten here: pages are measured wherever they stand in the
// sheet, dialogs are opened by the buttons below.
constexpr int kDocumentPages[] = {128, 131, 103, 117, 118, 105};
constexpr int kPrinterPages[] = {114, 113, 119, 105};
constexpr int kOperationDialog = 104;
constexpr int kControlTable = 115;
constexpr int kControlCommand = 116;
constexpr int kDialogTemplates[] = {kOperationDialog, kControlTable, kControlCommand};

struct SheetCase {
    SheetKind kind;
    std::span<const int> pages;
};
constexpr SheetCase kSheets[] = {{SheetKind::kDocument, kDocumentPages},
                                 {SheetKind::kPrinter, kPrinterPages}};

constexpr int kOperationTab = kHostTabs + 2;

// The Operation page's buttons, each of which opens the dialog for its moment.
constexpr int kMomentButtons[] = {1011, 1012, 1013, 1014};

// Left of the text of a check box or radio button: the box, and the space behind it.
constexpr int kBoxWidth = 16;
// A push button's frame on either side.
constexpr int kButtonFrame = 3;

struct Language {
    const char* name;
    const wchar_t* file;  // null: no language file anywhere
};

constexpr Language kLanguages[] = {
    {"English", kEnglish},
    {"Simplified Chinese", kSimplifiedChinese},
    {"Traditional Chinese", kTraditionalChinese},
    {"defaults", nullptr},
};

bool IsClass(HWND control, const wchar_t* name) {
    wchar_t kind[64] = {};
    GetClassNameW(control, kind, 63);
    return lstrcmpiW(kind, name) == 0;
}

DWORD StyleOf(HWND control) {
    return static_cast<DWORD>(GetWindowLongPtrW(control, GWL_STYLE));
}

std::wstring TextOf(HWND control) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    text.resize(
        static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
    return text;
}

// Of a control with a region: as far as that goes.
SIZE ClientSize(HWND window) {
    RECT client = {};
    GetClientRect(window, &client);
    RECT region = {};
    if (GetWindowRgnBox(window, &region) != ERROR) {
        IntersectRect(&client, &client, &region);
    }
    return {client.right - client.left, client.bottom - client.top};
}

// In the coordinates of the parent's client area.
RECT Place(HWND control) {
    RECT place = {};
    GetWindowRect(control, &place);
    RECT region = {};
    if (GetWindowRgnBox(control, &region) != ERROR) {
        OffsetRect(&region, place.left, place.top);
        IntersectRect(&place, &place, &region);
    }
    MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

bool Contains(const RECT& outer, const RECT& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

bool IsGroupBox(HWND control) {
    return IsClass(control, WC_BUTTONW) && (StyleOf(control) & BS_TYPEMASK) == BS_GROUPBOX;
}

HWND BuddyOf(HWND control) {
    return IsClass(control, UPDOWN_CLASSW) ? reinterpret_cast<HWND>(SendMessageW(control, UDM_GETBUDDY, 0, 0))
                                           : nullptr;
}

// What text takes up in the font of a control; with a width, broken into lines there.
SIZE Measure(HWND control, const std::wstring& text, UINT format, LONG width = 0) {
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HDC dc = GetDC(control);
    const HGDIOBJ previous =
        SelectObject(dc, font != nullptr ? static_cast<HGDIOBJ>(font) : GetStockObject(SYSTEM_FONT));
    RECT bounds = {0, 0, width, 0};
    DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &bounds, format | DT_CALCRECT);
    SelectObject(dc, previous);
    ReleaseDC(control, dc);
    return {bounds.right, bounds.bottom};
}

std::string Describe(SIZE size) {
    return std::to_string(size.cx) + "x" + std::to_string(size.cy);
}

// Finds what a person would see cut off or covered in one dialog.
class Inspection {
  public:
    Inspection(std::string place, HWND dialog) : place_(std::move(place)), dialog_(dialog) {
        for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
             control = GetWindow(control, GW_HWNDNEXT)) {
            // The dialog itself may be hidden.
            if ((StyleOf(control) & WS_VISIBLE) != 0) {
                controls_.push_back(control);
            }
        }
    }

    std::vector<std::string> Problems() {
        for (const HWND control : controls_) {
            CheckCaption(control);
            CheckInside(control);
        }
        for (std::size_t i = 0; i < controls_.size(); ++i) {
            for (std::size_t j = i + 1; j < controls_.size(); ++j) {
                CheckApart(controls_[i], controls_[j]);
            }
        }
        return std::move(problems_);
    }

    std::size_t captions() const { return captions_; }

  private:
    void Report(HWND control, const std::wstring& text, const std::string& problem) {
        problems_.push_back(place_ + ", control " + std::to_string(GetDlgCtrlID(control)) + " \"" +
                            ToUtf8(text) + "\": " + problem);
    }

    void Require(HWND control, const std::wstring& text, SIZE needed, SIZE room) {
        ++captions_;
        if (needed.cx > room.cx || needed.cy > room.cy) {
            Report(control, text, "needs " + Describe(needed) + " and has " + Describe(room));
        }
    }

    void CheckCaption(HWND control) {
        if (IsClass(control, WC_STATICW)) {
            CheckStatic(control);
        } else if (IsClass(control, WC_BUTTONW)) {
            CheckButton(control);
        } else if (IsClass(control, WC_COMBOBOXW)) {
            CheckCombo(control);
        }
    }

    void CheckStatic(HWND control) {
        const DWORD style = StyleOf(control);
        const DWORD type = style & SS_TYPEMASK;
        const UINT prefix = (style & SS_NOPREFIX) != 0 ? DT_NOPREFIX : 0;
        const std::wstring text = TextOf(control);
        const SIZE room = ClientSize(control);
        if (text.empty()) {
            return;
        }
        if (type == SS_LEFT || type == SS_CENTER || type == SS_RIGHT) {
            Require(control, text, Measure(control, text, prefix | DT_WORDBREAK | DT_EXPANDTABS, room.cx),
                    room);
        } else if (type == SS_SIMPLE || type == SS_LEFTNOWORDWRAP) {
            Require(control, text, Measure(control, text, prefix | DT_EXPANDTABS), room);
        }
    }

    void CheckButton(HWND control) {
        const DWORD style = StyleOf(control);
        const DWORD type = style & BS_TYPEMASK;
        const std::wstring text = TextOf(control);
        if (text.empty() || type == BS_OWNERDRAW || (style & (BS_BITMAP | BS_ICON)) != 0) {
            return;
        }
        const bool pushed = type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON || (style & BS_PUSHLIKE) != 0;
        const int beside = pushed ? 2 * kButtonFrame : kBoxWidth;
        SIZE room = ClientSize(control);
        room.cx -= beside;
        const bool lines = (style & BS_MULTILINE) != 0;
        Require(control, text,
                lines ? Measure(control, text, DT_WORDBREAK, room.cx) : Measure(control, text, DT_SINGLELINE),
                room);
    }

    // Where the list drops down wider than it stands, only there must every item have room.
    void CheckCombo(HWND control) {
        SIZE room = ClientSize(control);
        room.cx = std::max(room.cx, static_cast<LONG>(SendMessageW(control, CB_GETDROPPEDWIDTH, 0, 0)));
        room.cx -= GetSystemMetrics(SM_CXVSCROLL) + 2 * GetSystemMetrics(SM_CXEDGE);
        const auto count = static_cast<int>(SendMessageW(control, CB_GETCOUNT, 0, 0));
        for (int i = 0; i < count; ++i) {
            const auto index = static_cast<WPARAM>(i);
            const LRESULT length = SendMessageW(control, CB_GETLBTEXTLEN, index, 0);
            std::wstring item(static_cast<std::size_t>(std::max<LRESULT>(length, 0)) + 1, L'\0');
            SendMessageW(control, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(item.data()));
            item.pop_back();
            Require(control, item, Measure(control, item, DT_SINGLELINE | DT_NOPREFIX), room);
        }
    }

    void CheckInside(HWND control) {
        RECT client = {};
        GetClientRect(dialog_, &client);
        if (!Contains(client, Place(control))) {
            Report(control, TextOf(control), "lies outside the dialog");
        }
    }

    void CheckApart(HWND one, HWND other) {
        const RECT first = Place(one);
        const RECT second = Place(other);
        RECT common = {};
        if (!IntersectRect(&common, &first, &second) || BuddyOf(one) == other || BuddyOf(other) == one ||
            (IsGroupBox(one) && Contains(first, second)) || (IsGroupBox(other) && Contains(second, first))) {
            return;
        }
        Report(
            one, TextOf(one),
            "lies on control " + std::to_string(GetDlgCtrlID(other)) + " \"" + ToUtf8(TextOf(other)) + "\"");
    }

    std::string place_;
    HWND dialog_;
    std::vector<HWND> controls_;
    std::vector<std::string> problems_;
    std::size_t captions_ = 0;
};

class CaptionsFitTest : public pages::PageTest {
  protected:
    void TearDown() override {
        StopHost();
        PageTest::TearDown();
    }

    // Starts the plug-in with a language that the user chose.
    void StartIn(const Language& language) {
        StopHost();
        if (language.file != nullptr) {
            pages::ChooseLanguage(language.file);
        } else {
            pages::RemoveAllLanguageFiles();
        }
        // Its forms are the paper sizes of a page.
        HostSettings settings;
        settings.printer = printer_.handle();
        StartHost(std::move(settings));
    }

    // Opens the Operation dialog, lets `spoil` put something wrong into it, and gives what is found then.
    std::vector<std::string> ProblemsOfSpoilt(const std::function<void(const Window& dialog)>& spoil) {
        std::vector<std::string> problems;
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            const Window dialog = sheet.SelectPage(kOperationTab).OpenDialog(kMomentButtons[0]);
            spoil(dialog);
            problems = Inspection("dialog", dialog.handle()).Problems();
        });
        return problems;
    }

  private:
    VirtualPrinter printer_;
};

std::string PlaceName(const std::string& dialog, const Language& language) {
    return dialog + " in " + language.name;
}

TEST_F(CaptionsFitTest, OnEveryPage) {
    for (const Language& language : kLanguages) {
        StartIn(language);
        for (const SheetCase& kind : kSheets) {
            const auto inspect = [&](UiDriver&, Sheet& sheet) {
                ASSERT_EQ(sheet.TabCount(), kHostTabs + static_cast<int>(kind.pages.size()));
                for (int tab = kHostTabs; tab < sheet.TabCount(); ++tab) {
                    const Window page = sheet.SelectPage(tab);
                    const int number = kind.pages[static_cast<std::size_t>(tab - kHostTabs)];
                    Inspection inspection(PlaceName("page " + std::to_string(number), language),
                                          page.handle());
                    EXPECT_THAT(inspection.Problems(), IsEmpty());
                    EXPECT_GT(inspection.captions(), 0u) << "nothing was measured";
                }
            };
            OpenSheet(inspect, kind.kind);
        }
        if (language.file != nullptr) {
            OpenSheet([&](UiDriver&, Sheet& sheet) {
                EXPECT_EQ(sheet.SelectPage(kOperationTab).Text(kMomentButtons[0]),
                          pages::SourceText(language.file, L"OPERATION", L"RC_STARTDOC"));
            });
        }
    }
}

// They are of one language.
TEST_F(CaptionsFitTest, InTheDialogsOfTheControlFont) {
    StartIn(kLanguages[0]);
    OpenSheet(
        [&](UiDriver& ui, Sheet& sheet) {
            const Window table = OpenControlFont(ui, sheet.SelectPage(kHostTabs));
            EXPECT_THAT(Inspection("table", table.handle()).Problems(), IsEmpty());
            const HWND rows = table.Control(1048);
            LRESULT columns = 0;
            for (WPARAM column = 0; column < 3; ++column) {
                columns += SendMessageW(rows, LVM_GETCOLUMNWIDTH, column, 0);
            }
            EXPECT_LE(columns, ClientSize(rows).cx);
            SelectControlFontRow(table, L'A');
            const Window command = table.OpenDialog(1016);
            EXPECT_THAT(Inspection("command", command.handle()).Problems(), IsEmpty());
            pages::CloseDialog(command, IDCANCEL, table);
            pages::CloseDialog(table, IDCANCEL, sheet);
        },
        SheetKind::kPrinter);
}

// The barcode pages show another group of controls for each kind of type.
TEST_F(CaptionsFitTest, InEveryGroupOfTheBarcodePages) {
    struct Group {
        int tab;
        int list;
        int type;
        int composite;
    };
    constexpr Group kGroups[] = {{kHostTabs + 3, 1022, 4, 1100}, {kHostTabs + 3, 1022, 12, 1100},
                                 {kHostTabs + 4, 1202, 0, 1098}, {kHostTabs + 4, 1202, 3, 1098},
                                 {kHostTabs + 4, 1202, 4, 1098}, {kHostTabs + 4, 1202, 5, 1098}};
    for (const Language& language : kLanguages) {
        StartIn(language);
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            for (const Group& group : kGroups) {
                const Window page = sheet.SelectPage(group.tab);
                page.SelectCombo(group.list, group.type);
                SendMessageW(page.Control(group.composite), BM_CLICK, 0, 0);
                Inspection inspection(
                    PlaceName("tab " + std::to_string(group.tab) + " with type " + std::to_string(group.type),
                              language),
                    page.handle());
                EXPECT_THAT(inspection.Problems(), IsEmpty());
            }
            sheet.PressCancel();
        });
    }
}

TEST_F(CaptionsFitTest, InTheOperationDialogAtEveryMoment) {
    for (const Language& language : kLanguages) {
        StartIn(language);
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            const Window page = sheet.SelectPage(kOperationTab);
            for (const int button : kMomentButtons) {
                const Window dialog = page.OpenDialog(button);
                Inspection inspection(PlaceName("dialog " + std::to_string(kOperationDialog) + " of button " +
                                                    std::to_string(button),
                                                language),
                                      dialog.handle());
                EXPECT_THAT(inspection.Problems(), IsEmpty());
                if (language.file != nullptr) {
                    EXPECT_EQ(dialog.Text(IDCANCEL),
                              pages::SourceText(language.file, L"DOCUMENT", L"RC_OPERATION_CANCEL"));
                }
                // Of 19 captions and 34 list items; not every moment shows all.
                EXPECT_GT(inspection.captions(), 40u) << "little was measured";
                pages::CloseDialog(dialog, IDCANCEL, page);
            }
        });
    }
}

TEST_F(CaptionsFitTest, NoTemplateIsForgotten) {
    std::set<int> templates;
    const auto add = [](HMODULE, LPCWSTR, LPWSTR name, LONG_PTR parameter) -> BOOL {
        EXPECT_TRUE(IS_INTRESOURCE(name));
        reinterpret_cast<std::set<int>*>(parameter)->insert(
            static_cast<int>(reinterpret_cast<ULONG_PTR>(name)));
        return TRUE;
    };
    ASSERT_TRUE(EnumResourceNamesW(Host().module(), RT_DIALOG, add, reinterpret_cast<LONG_PTR>(&templates)));
    std::set<int> measured(std::begin(kDialogTemplates), std::end(kDialogTemplates));
    for (const SheetCase& kind : kSheets) {
        measured.insert(kind.pages.begin(), kind.pages.end());
    }
    EXPECT_EQ(templates, measured);
}

// The inspection itself finds what it is for

TEST_F(CaptionsFitTest, FindsCaptionsThatAreTooLong) {
    struct Spoilt {
        int control;
        std::size_t length;  // characters that a person would see cut off, none of which may wrap
    };
    // Label, check box, radio button, push button.
    for (const Spoilt& spoilt : {Spoilt{1122, 40}, Spoilt{1015, 80}, Spoilt{1029, 12}, Spoilt{1, 20}}) {
        const std::wstring text(spoilt.length, L'W');
        const auto problems = ProblemsOfSpoilt([&](const Window& dialog) {
            dialog.Send(spoilt.control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
        });
        EXPECT_THAT(problems, ElementsAre(HasSubstr("control " + std::to_string(spoilt.control) + " \"" +
                                                    ToUtf8(text) + "\": needs ")));
    }
}

TEST_F(CaptionsFitTest, FindsALabelThatWrapsOutOfItsOnlyLine) {
    const auto problems = ProblemsOfSpoilt([](const Window& dialog) {
        const wchar_t* const text = L"Paper Feed before the paper is cut and after it:";
        dialog.Send(1122, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    });
    EXPECT_THAT(problems, ElementsAre(HasSubstr("control 1122 ")));
}

TEST_F(CaptionsFitTest, FindsAListItemThatIsTooLong) {
    const std::wstring text(60, L'W');
    const auto problems = ProblemsOfSpoilt([&](const Window& dialog) {
        dialog.Send(1020, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    });
    EXPECT_THAT(problems, ElementsAre(HasSubstr("control 1020 \"" + ToUtf8(text) + "\": needs ")));
}

TEST_F(CaptionsFitTest, FindsControlsOnOneAnotherAndOutside) {
    const auto move = [](const Window& dialog, int control, int x, int y) {
        SetWindowPos(dialog.Control(control), nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    };
    const auto covered = ProblemsOfSpoilt([&](const Window& dialog) {
        const RECT place = Place(dialog.Control(1));
        move(dialog, 2, place.left, place.top);
    });
    EXPECT_THAT(covered, ElementsAre(HasSubstr("lies on control ")));
    const auto outside = ProblemsOfSpoilt([&](const Window& dialog) {
        move(dialog, 2, ClientSize(dialog.handle()).cx - 10, Place(dialog.Control(2)).top);
    });
    EXPECT_THAT(outside, ElementsAre(HasSubstr("control 2 \"Cancel\": lies outside the dialog")));
}

}  // namespace
