// Nothing that a person reads is cut off: every caption, measured in its control's own font, fits the control
// in every language, as do lists' columns, items of lists and the ends of a number's range; no control lies
// on another one, on a group's caption or outside its dialog. Who uses the keyboard gets everywhere, from top
// to bottom.
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
constexpr int kRows = 1048;  // the table's list
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
// On either side of a column's title.
constexpr int kColumnMargin = 6;
// Left of a group's caption.
constexpr int kGroupCaptionLeft = 9;
// In the caption of a dialog: its only button, and the margin of the text.
constexpr int kTitleMargin = 4;

// Controls that the tests of the inspection spoil.
constexpr int kDocumentGroup = 1119;
constexpr int kAsImageYes = 1061;
constexpr int kCutList = 1020;
constexpr int kCutRadios[] = {1033, 1034};
constexpr int kFeed = 1021;
constexpr int kFeedSpin = 1022;
constexpr int kPapers = 1094;
constexpr int kPrint = 1036;

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

// The kinds that are one of several to be chosen.
bool IsRadio(HWND control) {
    const DWORD type = StyleOf(control) & BS_TYPEMASK;
    return IsClass(control, WC_BUTTONW) && (type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON);
}

// What a person uses. Arrows count with the box beside them, whose arrow keys work them; a box that only
// shows is not used.
bool IsUsed(HWND control) {
    if (IsClass(control, WC_EDITW)) {
        return (StyleOf(control) & ES_READONLY) == 0;
    }
    return !IsClass(control, WC_STATICW) && !IsGroupBox(control) && !IsClass(control, UPDOWN_CLASSW);
}

HWND BuddyOf(HWND control) {
    return IsClass(control, UPDOWN_CLASSW) ? reinterpret_cast<HWND>(SendMessageW(control, UDM_GETBUDDY, 0, 0))
                                           : nullptr;
}

// What text takes up in a font; with a width, broken into lines there.
SIZE MeasureIn(HWND control, HFONT font, const std::wstring& text, UINT format, LONG width = 0) {
    const HDC dc = GetDC(control);
    const HGDIOBJ previous =
        SelectObject(dc, font != nullptr ? static_cast<HGDIOBJ>(font) : GetStockObject(SYSTEM_FONT));
    RECT bounds = {0, 0, width, 0};
    DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &bounds, format | DT_CALCRECT);
    SelectObject(dc, previous);
    ReleaseDC(control, dc);
    return {bounds.right, bounds.bottom};
}

// In the control's own font.
SIZE Measure(HWND control, const std::wstring& text, UINT format, LONG width = 0) {
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    return MeasureIn(control, font, text, format, width);
}

void SetStyle(HWND control, DWORD style, bool isOn) {
    const DWORD before = StyleOf(control);
    SetWindowLongPtrW(control, GWL_STYLE, static_cast<LONG_PTR>(isOn ? before | style : before & ~style));
}

// Whether two controls stand side by side: more than half of the lower one's height is shared.
bool IsOneRow(const RECT& one, const RECT& other) {
    const LONG shared = std::min(one.bottom, other.bottom) - std::max(one.top, other.top);
    return 2 * shared > std::min(one.bottom - one.top, other.bottom - other.top);
}

// Has every visible control of a dialog enabled: what is disabled for now has to be found by keyboard later.
class AllEnabled {
  public:
    explicit AllEnabled(const std::vector<HWND>& controls) {
        for (const HWND control : controls) {
            if (!IsWindowEnabled(control)) {
                // As a style, nobody is told and nothing is painted.
                SetStyle(control, WS_DISABLED, false);
                disabled_.push_back(control);
            }
        }
    }
    AllEnabled(const AllEnabled&) = delete;
    AllEnabled& operator=(const AllEnabled&) = delete;
    ~AllEnabled() {
        for (const HWND control : disabled_) {
            SetStyle(control, WS_DISABLED, true);
        }
    }

  private:
    std::vector<HWND> disabled_;
};

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
            ((StyleOf(control) & WS_VISIBLE) != 0 ? controls_ : hidden_).push_back(control);
        }
    }

    std::vector<std::string> Problems() {
        CheckTitle();
        for (const HWND control : controls_) {
            CheckCaption(control);
            CheckInside(control);
        }
        // What comes to be shown has been translated like the rest.
        for (const HWND control : hidden_) {
            CheckCaption(control);
        }
        for (std::size_t i = 0; i < controls_.size(); ++i) {
            for (std::size_t j = i + 1; j < controls_.size(); ++j) {
                CheckApart(controls_[i], controls_[j]);
            }
        }
        CheckKeyboard();
        CheckTabOrder();
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
        } else if (IsClass(control, WC_LISTBOXW)) {
            CheckListBox(control);
        } else if (IsClass(control, WC_LISTVIEWW)) {
            CheckColumns(control);
        } else if (IsClass(control, UPDOWN_CLASSW)) {
            CheckNumber(control);
        } else if (IsClass(control, TRACKBAR_CLASSW)) {
            CheckSlider(control);
        }
    }

    // Of a dialog; a page's title is its tab.
    void CheckTitle() {
        NONCLIENTMETRICSW metrics = {};
        metrics.cbSize = sizeof metrics;
        const std::wstring title = TextOf(dialog_);
        if ((StyleOf(dialog_) & WS_CHILD) != 0 ||
            !SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) {
            return;
        }
        const HFONT font = CreateFontIndirectW(&metrics.lfCaptionFont);
        const SIZE needed = MeasureIn(dialog_, font, title, DT_SINGLELINE);
        DeleteObject(font);
        Require(dialog_, title, {needed.cx, 0},
                {ClientSize(dialog_).cx - metrics.iCaptionWidth - 2 * kTitleMargin, 0});
    }

    // Items that are wider can be read where the list scrolls as far as they go.
    void CheckListBox(HWND control) {
        SIZE room = ClientSize(control);
        room.cx = std::max(room.cx, static_cast<LONG>(SendMessageW(control, LB_GETHORIZONTALEXTENT, 0, 0)));
        const auto count = static_cast<int>(SendMessageW(control, LB_GETCOUNT, 0, 0));
        for (int i = 0; i < count; ++i) {
            const auto index = static_cast<WPARAM>(i);
            const LRESULT length = SendMessageW(control, LB_GETTEXTLEN, index, 0);
            std::wstring item(static_cast<std::size_t>(std::max<LRESULT>(length, 0)) + 1, L'\0');
            SendMessageW(control, LB_GETTEXT, index, reinterpret_cast<LPARAM>(item.data()));
            item.pop_back();
            Require(control, item, Measure(control, item, DT_SINGLELINE | DT_NOPREFIX), room);
        }
    }

    // Each title fits its column. All columns fit the list, or it scrolls to them.
    void CheckColumns(HWND control) {
        const auto header = reinterpret_cast<HWND>(SendMessageW(control, LVM_GETHEADER, 0, 0));
        const auto count = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
        LONG all = 0;
        for (int i = 0; i < count; ++i) {
            wchar_t title[256] = {};
            HDITEMW column = {};
            column.mask = HDI_TEXT | HDI_WIDTH;
            column.pszText = title;
            column.cchTextMax = static_cast<int>(std::size(title)) - 1;
            SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
            all += column.cxy;
            Require(control, title, Measure(header, title, DT_SINGLELINE | DT_NOPREFIX),
                    {column.cxy - 2 * kColumnMargin, ClientSize(header).cy});
        }
        const LONG room = ClientSize(control).cx;
        if ((StyleOf(control) & LVS_NOSCROLL) != 0 && all > room) {
            Report(control, {},
                   "has columns of " + std::to_string(all) + " and shows " + std::to_string(room));
        }
    }

    // The box beside arrows shows both ends of their range.
    void CheckNumber(HWND control) {
        const HWND box = BuddyOf(control);
        if (box == nullptr) {
            Report(control, {}, "has no box");
            return;
        }
        int ends[2] = {};
        SendMessageW(control, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&ends[0]),
                     reinterpret_cast<LPARAM>(&ends[1]));
        RECT room = {};
        SendMessageW(box, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
        for (const int end : ends) {
            const std::wstring number = std::to_wstring(end);
            Require(box, number, Measure(box, number, DT_SINGLELINE | DT_NOPREFIX | DT_EDITCONTROL),
                    {room.right - room.left, room.bottom - room.top});
        }
    }

    // So does the text behind a slider.
    void CheckSlider(HWND control) {
        const HWND value = GetWindow(control, GW_HWNDNEXT);
        if (!IsClass(value, WC_STATICW) || !IsOneRow(Place(control), Place(value))) {
            Report(control, {}, "has no text behind it");
            return;
        }
        for (const UINT end : {UINT{TBM_GETRANGEMIN}, UINT{TBM_GETRANGEMAX}}) {
            const std::wstring number = std::to_wstring(SendMessageW(control, end, 0, 0));
            Require(value, number, Measure(value, number, DT_SINGLELINE), ClientSize(value));
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

    // Where a group's caption stands in its frame.
    static RECT CaptionOfGroup(HWND group) {
        const RECT place = Place(group);
        const SIZE size = Measure(group, TextOf(group), DT_SINGLELINE);
        return {place.left + kGroupCaptionLeft, place.top, place.left + kGroupCaptionLeft + size.cx,
                place.top + size.cy};
    }

    // Members lie within their group's frame, and leave its caption free.
    static bool IsMember(HWND group, HWND control) {
        const RECT caption = CaptionOfGroup(group);
        const RECT place = Place(control);
        RECT common = {};
        return IsGroupBox(group) && Contains(Place(group), place) &&
               !IntersectRect(&common, &caption, &place);
    }

    void CheckApart(HWND one, HWND other) {
        const RECT first = Place(one);
        const RECT second = Place(other);
        RECT common = {};
        if (!IntersectRect(&common, &first, &second) || BuddyOf(one) == other || BuddyOf(other) == one ||
            IsMember(one, other) || IsMember(other, one)) {
            return;
        }
        Report(
            one, TextOf(one),
            "lies on control " + std::to_string(GetDlgCtrlID(other)) + " \"" + ToUtf8(TextOf(other)) + "\"");
    }

    // As the dialog moves the focus: TAB from stop to stop, and the arrow keys within a stop's radio buttons.
    std::set<HWND> Reached() const {
        std::set<HWND> reached;
        const HWND first = GetNextDlgTabItem(dialog_, nullptr, FALSE);
        HWND stop = first;
        // Each control is a stop once at the most.
        for (std::size_t i = 0; stop != nullptr && i < controls_.size(); ++i) {
            reached.insert(stop);
            if (IsRadio(stop)) {
                for (HWND radio = GetNextDlgGroupItem(dialog_, stop, FALSE);
                     IsRadio(radio) && reached.insert(radio).second;
                     radio = GetNextDlgGroupItem(dialog_, radio, FALSE)) {
                }
            }
            stop = GetNextDlgTabItem(dialog_, stop, FALSE);
            if (stop == first) {
                break;
            }
        }
        return reached;
    }

    // The dialog has to be shown: nothing of a hidden one is reached.
    void CheckKeyboard() {
        const AllEnabled enabled(controls_);
        const std::set<HWND> reached = Reached();
        for (const HWND control : controls_) {
            if (IsUsed(control) && !reached.contains(control)) {
                Report(control, TextOf(control), "is not reached by keyboard");
            }
        }
    }

    // A stop of TAB: a control, or radio buttons that are one choice.
    struct Stop {
        HWND control;
        RECT place;
    };

    std::vector<Stop> Stops() const {
        std::vector<Stop> stops;
        bool isChoice = false;
        for (const HWND control : controls_) {
            const bool continues = isChoice && IsRadio(control) && (StyleOf(control) & WS_GROUP) == 0;
            const RECT place = Place(control);
            if (continues) {
                UnionRect(&stops.back().place, &stops.back().place, &place);
            } else if (IsUsed(control)) {
                stops.push_back({control, place});
            }
            isChoice = IsRadio(control);
        }
        return stops;
    }

    // From a stop TAB goes on in the same row to the right, or further down, or to the top of a column on the
    // right; and through a group without leaving it in between.
    void CheckTabOrder() {
        const std::vector<Stop> stops = Stops();
        for (std::size_t i = 1; i < stops.size(); ++i) {
            const RECT& from = stops[i - 1].place;
            const RECT& to = stops[i].place;
            const bool isBack =
                IsOneRow(from, to) ? to.left < from.left : to.top < from.top && to.left < from.right;
            if (isBack) {
                Report(stops[i].control, TextOf(stops[i].control),
                       "comes behind control " + std::to_string(GetDlgCtrlID(stops[i - 1].control)) +
                           ", which lies further on");
            }
        }
        for (const HWND group : controls_) {
            const auto isIn = [&](const Stop& stop) {
                return IsGroupBox(group) && Contains(Place(group), stop.place);
            };
            const auto first = std::ranges::find_if(stops, isIn);
            const auto end = std::find_if_not(first, stops.end(), isIn);
            if (std::find_if(end, stops.end(), isIn) != stops.end()) {
                Report(group, TextOf(group), "is left and entered again by TAB");
            }
        }
    }

    std::string place_;
    HWND dialog_;
    std::vector<HWND> controls_;  // the visible ones, in the order of TAB
    std::vector<HWND> hidden_;
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

    // The same with a page of a sheet.
    std::vector<std::string> ProblemsOfSpoiltPage(SheetKind kind, int tab,
                                                  const std::function<void(const Window& page)>& spoil) {
        StartIn(kLanguages[0]);
        std::vector<std::string> problems;
        OpenSheet(
            [&](UiDriver&, Sheet& sheet) {
                const Window page = sheet.SelectPage(tab);
                spoil(page);
                problems = Inspection("page", page.handle()).Problems();
            },
            kind);
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
            // Nobody has to scroll sideways to read a command.
            const HWND rows = table.Control(kRows);
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

// A record from elsewhere may hold choices that no button stands for: none shows as chosen, and the keyboard
// has to get to them all the same.
TEST_F(CaptionsFitTest, WhereNoButtonOfAChoiceIsChosen) {
    constexpr std::size_t kKind = 1250;      // of watermark
    constexpr std::size_t kAlignment = 159;  // of the logo at the document's start
    StartIn(kLanguages[0]);
    auto record = Record();
    record[kKind] = record[kAlignment] = 7;
    SetRecord(record);
    OpenSheet([&](UiDriver&, Sheet& sheet) {
        EXPECT_THAT(Inspection("Water Mark", sheet.SelectPage(kHostTabs + 1).handle()).Problems(), IsEmpty());
        const Window page = sheet.SelectPage(kOperationTab);
        const Window dialog = page.OpenDialog(kMomentButtons[0]);
        EXPECT_THAT(Inspection("dialog", dialog.handle()).Problems(), IsEmpty());
        pages::CloseDialog(dialog, IDCANCEL, page);
    });
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

TEST_F(CaptionsFitTest, FindsControlsOnTheCaptionOfTheirGroup) {
    const auto problems = ProblemsOfSpoiltPage(SheetKind::kDocument, kHostTabs, [](const Window& page) {
        const HWND yes = page.Control(kAsImageYes);
        const RECT place = Place(yes);
        const RECT group = Place(page.Control(kDocumentGroup));
        SetWindowPos(yes, nullptr, group.left + kGroupCaptionLeft, group.top + 2, place.right - place.left,
                     place.bottom - place.top, SWP_NOZORDER);
    });
    EXPECT_THAT(problems, testing::Contains(HasSubstr("lies on control")));
}

TEST_F(CaptionsFitTest, FindsATitleThatIsTooLong) {
    const auto problems = ProblemsOfSpoilt(
        [](const Window& dialog) { SetWindowTextW(dialog.handle(), std::wstring(100, L'W').c_str()); });
    EXPECT_THAT(problems, ElementsAre(HasSubstr("needs ")));
}

TEST_F(CaptionsFitTest, FindsANumberThatItsBoxDoesNotShow) {
    const auto problems =
        ProblemsOfSpoilt([](const Window& dialog) { dialog.Send(kFeedSpin, UDM_SETRANGE32, 0, 1000000000); });
    EXPECT_THAT(problems,
                ElementsAre(HasSubstr("control " + std::to_string(kFeed) + " \"1000000000\": needs ")));
}

TEST_F(CaptionsFitTest, FindsAnItemBeyondWhereItsListScrolls) {
    const std::wstring text(40, L'W');
    const auto problems = ProblemsOfSpoiltPage(SheetKind::kPrinter, kHostTabs, [&](const Window& page) {
        page.Send(kPapers, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        page.Send(kPapers, LB_SETHORIZONTALEXTENT, 0);
    });
    EXPECT_THAT(problems, ElementsAre(HasSubstr("\"" + ToUtf8(text) + "\": needs ")));
}

TEST_F(CaptionsFitTest, FindsColumnsThatAreTooNarrowOrTooMany) {
    std::vector<std::string> narrow;
    std::vector<std::string> many;
    StartIn(kLanguages[0]);
    OpenSheet(
        [&](UiDriver& ui, Sheet& sheet) {
            const Window table = OpenControlFont(ui, sheet.SelectPage(kHostTabs));
            const HWND rows = table.Control(kRows);
            SendMessageW(rows, LVM_SETCOLUMNWIDTH, 2, 30);
            narrow = Inspection("table", table.handle()).Problems();
            SendMessageW(rows, LVM_SETCOLUMNWIDTH, 2, 1000);
            SetStyle(rows, LVS_NOSCROLL, true);
            many = Inspection("table", table.handle()).Problems();
            SetStyle(rows, LVS_NOSCROLL, false);
            pages::CloseDialog(table, IDCANCEL, sheet);
        },
        SheetKind::kPrinter);
    EXPECT_THAT(narrow, ElementsAre(HasSubstr("\"Command\": needs ")));
    EXPECT_THAT(many, ElementsAre(HasSubstr("has columns of 1100 and shows ")));
}

TEST_F(CaptionsFitTest, FindsControlsThatTheKeyboardDoesNotReach) {
    // A list, and both radio buttons of a choice.
    const auto list =
        ProblemsOfSpoilt([](const Window& dialog) { SetStyle(dialog.Control(kCutList), WS_TABSTOP, false); });
    EXPECT_THAT(list, ElementsAre(HasSubstr("is not reached by keyboard")));
    const auto radios = ProblemsOfSpoilt([](const Window& dialog) {
        for (const int radio : kCutRadios) {
            SetStyle(dialog.Control(radio), WS_TABSTOP, false);
        }
    });
    EXPECT_THAT(radios, ElementsAre(HasSubstr("is not reached"), HasSubstr("is not reached")));
}

TEST_F(CaptionsFitTest, FindsATabOrderThatGoesBack) {
    const auto move_behind = [](const Window& dialog, int control, HWND before) {
        SetWindowPos(dialog.Control(control), before, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
    };
    // OK, which stands left of Cancel, and then the list of cuts, which stands above both.
    const auto left =
        ProblemsOfSpoilt([&](const Window& dialog) { move_behind(dialog, IDOK, dialog.Control(IDCANCEL)); });
    EXPECT_THAT(left, ElementsAre(HasSubstr("control 1 \"OK\": comes behind control 2")));
    const auto up = ProblemsOfSpoilt(
        [&](const Window& dialog) { move_behind(dialog, kCutList, dialog.Control(IDCANCEL)); });
    EXPECT_THAT(up, ElementsAre(HasSubstr("comes behind control 2")));
    const auto out = ProblemsOfSpoiltPage(SheetKind::kDocument, kHostTabs + 3,
                                          [&](const Window& page) { move_behind(page, kPrint, HWND_TOP); });
    EXPECT_THAT(out, testing::Contains(HasSubstr("is left and entered again by TAB")));
}

}  // namespace
