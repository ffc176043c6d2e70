// The control font's two dialogs as a user works them, and the file that they leave: the table of all
// characters, and the translator of one.
#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "printer_fixture.h"
#include "real_input.h"
#include "rig/process_objects.h"
#include "ui_thread.h"

namespace pages {
namespace {

// On the Utility page, never visible.
constexpr int kControlFont = 1045;

// The table.
constexpr int kEdit = 1016;
constexpr int kDelete = 1036;
constexpr int kDriver = 1047;
constexpr int kRows = 1048;
constexpr wchar_t kTableTitle[] = L"Control Font Character Translation Table";

// The translator.
constexpr int kCharacter = 1047;
constexpr int kKey = 1048;
constexpr int kCommand = 1052;
constexpr wchar_t kTranslatorTitle[] = L"Control Font Character Translator";

constexpr wchar_t kDenied[] = L"Please check if user has administrator privileges!";

using Path = std::filesystem::path;
using Row = std::pair<int, std::wstring>;

Path TablePath() {
    return L"C:\\windows\\system32\\spool\\drivers\\w32x86\\3\\KVMR72CONTROL.dat";
}

int RowOf(char character) {
    return character - ' ';
}

std::wstring Hex(std::size_t byte) {
    constexpr std::wstring_view kDigits = L"0123456789ABCDEF";
    return {kDigits[byte / 16], kDigits[byte % 16]};
}

std::wstring KeyOfRow(int row) {
    return Hex(static_cast<std::size_t>(row) + 32);
}

// Each with the number of its row.
std::vector<Row> FirstRows(int count) {
    std::vector<Row> rows;
    for (int row = 0; row < count; ++row) {
        rows.emplace_back(row, Hex(static_cast<std::size_t>(row)) + L' ');
    }
    return rows;
}

std::wstring Repeated(std::wstring_view piece, std::size_t count) {
    std::wstring text;
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t unit : text) {
        narrow += static_cast<char>(unit);
    }
    return narrow;
}

std::string FileOf(const std::vector<Row>& rows) {
    std::string text = "[Character Translation Table]\r\n";
    for (const auto& [row, value] : rows) {
        text += Narrow(KeyOfRow(row) + L'=' + value) + "\r\n";
    }
    return text;
}

void WriteText(const std::string& text) {
    rig::WriteBytes(TablePath(), std::vector<std::uint8_t>(text.begin(), text.end()));
}

std::optional<std::string> FileText() {
    const auto bytes = rig::ReadBytes(TablePath());
    return bytes ? std::optional(std::string(bytes->begin(), bytes->end())) : std::nullopt;
}

// Without the blanks at the lines' ends: the system may or may not keep them when it writes a further key.
std::string Trimmed(std::string text) {
    for (std::size_t end = text.find(" \r"); end != std::string::npos; end = text.find(" \r")) {
        text.erase(end, 1);
    }
    return text;
}

void ExpectFile(const std::vector<Row>& rows) {
    const auto text = FileText();
    if (rows.empty()) {
        EXPECT_EQ(text, std::nullopt);
        return;
    }
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(Trimmed(*text), Trimmed(FileOf(rows)));
}

std::wstring Cell(const Window& table, int row, int column) {
    std::wstring text(6000, L'\0');
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = static_cast<int>(text.size());
    const LRESULT length =
        table.Send(kRows, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// All rows, with these commands and no others.
void ExpectTable(const Window& table, const std::vector<Row>& rows) {
    std::vector<std::wstring> commands(96);
    for (const auto& [row, text] : rows) {
        commands[static_cast<std::size_t>(row)] = text;
    }
    EXPECT_EQ(table.Send(kRows, LVM_GETITEMCOUNT), 96);
    for (int row = 0; row < 96; ++row) {
        EXPECT_EQ(Cell(table, row, 0), std::wstring(1, static_cast<wchar_t>(row + 32))) << row;
        EXPECT_EQ(Cell(table, row, 1), KeyOfRow(row)) << row;
        EXPECT_EQ(Cell(table, row, 2), commands[static_cast<std::size_t>(row)]) << row;
    }
}

int Selected(const Window& table) {
    return static_cast<int>(table.Send(kRows, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}

// -1 for none.
void Select(const Window& table, int row) {
    LVITEMW item = {};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    table.Send(kRows, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
    if (row >= 0) {
        item.state = item.stateMask;
        table.Send(kRows, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    }
    ASSERT_EQ(Selected(table), row);
}

int TopRow(const Window& table) {
    return static_cast<int>(table.Send(kRows, LVM_GETTOPINDEX));
}

void ScrollTo(const Window& table, int row) {
    // From below it becomes the first one in sight.
    table.Send(kRows, LVM_ENSUREVISIBLE, 95, FALSE);
    table.Send(kRows, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
}

bool IsInSight(const Window& table, int row) {
    const int top = TopRow(table);
    return row >= top && row < top + static_cast<int>(table.Send(kRows, LVM_GETCOUNTPERPAGE));
}

// A place inside the row, for the mouse.
LPARAM PlaceOf(const Window& table, int row) {
    RECT area = {};
    area.left = LVIR_BOUNDS;
    table.Send(kRows, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&area));
    return MAKELPARAM(area.left + 70, (area.top + area.bottom) / 2);
}

void DoubleClickAt(const Window& table, LPARAM place) {
    const HWND list = table.Control(kRows);
    for (const UINT message :
         std::initializer_list<UINT>{WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP}) {
        PostMessageW(list, message, message == WM_LBUTTONUP ? 0 : MK_LBUTTON, place);
    }
}

Window TranslatorOf(const UiDriver& ui, const Window& table) {
    ui.WaitUntil([&] { return !IsWindowEnabled(table.handle()); }, "the translator");
    const Window translator = ui.WaitForDialog();
    EXPECT_EQ(translator.Title(), kTranslatorTitle);
    return translator;
}

Window OpenTranslator(const UiDriver& ui, const Window& table, int row) {
    Select(table, row);
    PostMessageW(table.Control(kEdit), BM_CLICK, 0, 0);
    return TranslatorOf(ui, table);
}

void SetText(const Window& dialog, int control, const std::wstring& text) {
    dialog.Send(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

// The text as if typed. Of a long one only the end is: the system's box is slow.
void EnterCommand(const Window& translator, std::wstring_view text) {
    const std::size_t pasted = text.size() < 20 ? 0 : text.size() - 3;
    SetText(translator, kCommand, std::wstring(text.substr(0, pasted)));
    translator.Send(kCommand, EM_SETSEL, pasted, static_cast<LPARAM>(pasted));
    translator.AppendText(kCommand, text.substr(pasted));
    EXPECT_EQ(translator.Text(kCommand), text);
}

// Enters a command for a character, with OK.
void Translate(const UiDriver& ui, const Window& table, int row, std::wstring_view command) {
    const Window translator = OpenTranslator(ui, table, row);
    EnterCommand(translator, command);
    translator.PressAndWaitClosed(IDOK);
}

void Press(const Window& dialog, int button) {
    dialog.Click(button);
    EXPECT_TRUE(dialog.IsOpen());
}

std::vector<int> TabStops(const Window& dialog) {
    std::vector<int> stops;
    HWND control = nullptr;
    while (stops.size() < 20) {
        control = GetNextDlgTabItem(dialog.handle(), control, FALSE);
        const int id = GetDlgCtrlID(control);
        if (!stops.empty() && id == stops.front()) {
            break;
        }
        stops.push_back(id);
    }
    return stops;
}

LONG_PTR StyleOf(const Window& dialog, int control) {
    return GetWindowLongPtrW(dialog.Control(control), GWL_STYLE);
}

RECT AreaOf(const Window& dialog, HWND control) {
    RECT area = {};
    GetWindowRect(control, &area);
    MapWindowPoints(nullptr, dialog.handle(), reinterpret_cast<POINT*>(&area), 2);
    return area;
}

// No two controls touch, and all lie inside.
void ExpectTidy(const Window& dialog) {
    std::vector<HWND> controls;
    for (HWND child = GetWindow(dialog.handle(), GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        controls.push_back(child);
    }
    RECT client = {};
    GetClientRect(dialog.handle(), &client);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const RECT area = AreaOf(dialog, controls[i]);
        RECT common = {};
        EXPECT_TRUE(IntersectRect(&common, &area, &client) && EqualRect(&common, &area)) << i;
        EXPECT_TRUE(IsWindowVisible(controls[i]) && IsWindowEnabled(controls[i])) << i;
        for (std::size_t j = 0; j < i; ++j) {
            const RECT other = AreaOf(dialog, controls[j]);
            EXPECT_FALSE(IntersectRect(&common, &area, &other)) << i << " and " << j;
        }
    }
}

std::wstring LabelOf(const Window& dialog, int control) {
    wchar_t text[100] = {};
    GetWindowTextW(GetWindow(dialog.Control(control), GW_HWNDPREV), text, 100);
    return text;
}

class ControlFontDialogTest : public PrinterPageTest {
  protected:
    void SetUp() override {
        Clean();
        std::filesystem::create_directories(TablePath().parent_path());
        PrinterPageTest::SetUp();
        hooks_.On("KERNEL32.dll", "WritePrivateProfileStringW", &WritePrivateProfileStringW,
                  [this](auto original, auto... arguments) {
                      const bool fails = writes_++ == failing_;
                      SetLastError(ERROR_ACCESS_DENIED);
                      return fails ? FALSE : original(arguments...);
                  });
        hooks_.On("KERNEL32.dll", "DeleteFileW", &DeleteFileW, [this](auto original, LPCWSTR path) {
            deletions_ += Path(path) == TablePath();
            return original(path);
        });
    }

    void TearDown() override {
        PrinterPageTest::TearDown();
        Clean();
    }

    // The Utility page; nothing that is done there changes the record.
    void OnUtilityPage(const std::function<void(UiDriver&, Window& page)>& script) {
        PrinterHost();
        const Bytes before = Record();
        OpenPrinterSheet([&](UiDriver& ui, Sheet& sheet) {
            Window page = SelectPage(sheet, kUtilityTab);
            script(ui, page);
            EXPECT_FALSE(sheet.IsApplyEnabled());
        });
        EXPECT_EQ(Differences(before, Record()), "");
        EXPECT_EQ(printer().Jobs().size(), 0u);
    }

    static void PressControlFont(const Window& page) {
        PostMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kControlFont, BN_CLICKED),
                     reinterpret_cast<LPARAM>(page.Control(kControlFont)));
    }

    static Window OpenTable(const UiDriver& ui, const Window& page) {
        PressControlFont(page);
        const Window table = ui.WaitForDialog();
        EXPECT_EQ(table.Title(), kTableTitle);
        return table;
    }

    void OnTable(const std::function<void(UiDriver&, Window& table)>& script) {
        OnUtilityPage([&](UiDriver& ui, Window& page) {
            Window table = OpenTable(ui, page);
            script(ui, table);
            if (table.IsOpen()) {
                table.PressAndWaitClosed(IDCANCEL);
            }
        });
    }

    // The one box since the last time.
    void ExpectBox(const Window& owner, const std::wstring& title, const std::wstring& text, UINT type) {
        ASSERT_EQ(boxes_.size(), 1u);
        EXPECT_EQ(boxes_[0].owner, owner.handle());
        EXPECT_EQ(boxes_[0].title, title);
        EXPECT_EQ(boxes_[0].text, text);
        EXPECT_EQ(boxes_[0].type, type);
        boxes_.clear();
    }

    int writes_ = 0;
    int deletions_ = 0;
    // The write that fails, counted from 0.
    int failing_ = -1;

  private:
    static void Clean() {
        SetFileAttributesW(TablePath().c_str(), FILE_ATTRIBUTE_NORMAL);
        std::error_code error;
        std::filesystem::remove_all(TablePath().parent_path(), error);
        EXPECT_FALSE(error) << error.message();
    }
};

TEST_F(ControlFontDialogTest, ShowsEveryCharacter) {
    OnUtilityPage([&](UiDriver& ui, Window& page) {
        EXPECT_FALSE(page.IsVisible(kControlFont));
        const HWND sheet = GetAncestor(page.handle(), GA_ROOT);
        const Window table = OpenTable(ui, page);
        EXPECT_EQ(GetWindow(table.handle(), GW_OWNER), sheet);
        EXPECT_FALSE(IsWindowEnabled(sheet));
        ExpectTable(table, {});
        EXPECT_EQ(Selected(table), -1);
        table.PressAndWaitClosed(IDCANCEL);
        EXPECT_TRUE(IsWindowEnabled(sheet));
    });
    ExpectFile({});
}

TEST_F(ControlFontDialogTest, TableIsLaidOut) {
    OnTable([](UiDriver& ui, Window& table) {
        EXPECT_EQ(table.Text(kDriver), L"Printer Driver");
        EXPECT_EQ(LabelOf(table, kDriver), L"Driver Name:");
        EXPECT_NE(StyleOf(table, kDriver) & ES_READONLY, 0);
        EXPECT_EQ(table.Text(kEdit), L"Edit");
        EXPECT_EQ(table.Text(kDelete), L"Delete");
        EXPECT_EQ(table.Text(IDOK), L"OK");
        EXPECT_EQ(table.Text(IDCANCEL), L"Cancel");
        EXPECT_EQ(StyleOf(table, kRows) & LVS_TYPEMASK, LVS_REPORT);
        EXPECT_NE(StyleOf(table, kRows) & LVS_SINGLESEL, 0);
        EXPECT_EQ(table.Send(kRows, LVM_GETEXTENDEDLISTVIEWSTYLE), LVS_EX_FULLROWSELECT);
        const auto header = reinterpret_cast<HWND>(table.Send(kRows, LVM_GETHEADER));
        EXPECT_EQ(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0), 3);
        const std::pair<const wchar_t*, int> columns[] = {{L"Char", 50}, {L"Hex", 50}, {L"Command", 450}};
        for (WPARAM column = 0; column < 3; ++column) {
            wchar_t title[40] = {};
            LVCOLUMNW description = {};
            description.mask = LVCF_TEXT | LVCF_WIDTH;
            description.pszText = title;
            description.cchTextMax = 40;
            table.Send(kRows, LVM_GETCOLUMNW, column, reinterpret_cast<LPARAM>(&description));
            EXPECT_EQ(std::wstring(description.pszText), columns[column].first);
            EXPECT_EQ(description.cx, columns[column].second);
        }
        // All columns are in sight.
        EXPECT_EQ(StyleOf(table, kRows) & WS_HSCROLL, 0);
        EXPECT_EQ(TabStops(table), (std::vector<int>{kRows, kEdit, kDelete, IDOK, IDCANCEL}));
        WaitForFocus(ui, table, kRows);
        ExpectTidy(table);
    });
}

TEST_F(ControlFontDialogTest, TranslatorIsLaidOut) {
    WriteText(FileOf({{RowOf('A'), L"1b40"}}));
    OnTable([](UiDriver& ui, Window& table) {
        const Window translator = OpenTranslator(ui, table, RowOf('A'));
        EXPECT_EQ(GetWindow(translator.handle(), GW_OWNER), table.handle());
        EXPECT_FALSE(IsWindowEnabled(table.handle()));
        EXPECT_EQ(translator.Text(kCharacter), L"A");
        EXPECT_EQ(LabelOf(translator, kCharacter), L"Char");
        EXPECT_NE(StyleOf(translator, kCharacter) & ES_READONLY, 0);
        EXPECT_EQ(translator.Text(kKey), L"41");
        EXPECT_EQ(LabelOf(translator, kKey), L"Hex");
        EXPECT_NE(StyleOf(translator, kKey) & ES_READONLY, 0);
        EXPECT_EQ(translator.Text(kCommand), L"1B 40 ");
        EXPECT_EQ(LabelOf(translator, kCommand), L"Command");
        EXPECT_EQ(StyleOf(translator, kCommand) & (ES_READONLY | ES_MULTILINE), ES_MULTILINE);
        EXPECT_EQ(translator.Text(IDOK), L"OK");
        EXPECT_EQ(translator.Text(IDCANCEL), L"Cancel");
        EXPECT_EQ(TabStops(translator), (std::vector<int>{kCommand, IDOK, IDCANCEL}));
        WaitForFocus(ui, translator, kCommand);
        ExpectTidy(translator);
        translator.PressAndWaitClosed(IDCANCEL);
    });
}

// The dialogs are of one language.
TEST_F(ControlFontDialogTest, LooksTheSameInEveryLanguage) {
    for (const wchar_t* language : {kSimplifiedChinese, kTraditionalChinese}) {
        ChooseLanguage(language);
        OnTable([](UiDriver& ui, Window& table) {
            EXPECT_EQ(table.Text(kDriver), L"Printer Driver");
            EXPECT_EQ(LabelOf(table, kDriver), L"Driver Name:");
            EXPECT_EQ(table.Text(kEdit), L"Edit");
            EXPECT_EQ(table.Text(kDelete), L"Delete");
            EXPECT_EQ(table.Text(IDOK), L"OK");
            EXPECT_EQ(table.Text(IDCANCEL), L"Cancel");
            Repaint(table);
            EXPECT_EQ(table.Text(kEdit), L"Edit");
            const Window translator = OpenTranslator(ui, table, 0);
            EXPECT_EQ(LabelOf(translator, kCharacter), L"Char");
            EXPECT_EQ(LabelOf(translator, kKey), L"Hex");
            EXPECT_EQ(LabelOf(translator, kCommand), L"Command");
            EXPECT_EQ(translator.Text(IDOK), L"OK");
            EXPECT_EQ(translator.Text(IDCANCEL), L"Cancel");
            translator.PressAndWaitClosed(IDCANCEL);
        });
    }
}

TEST_F(ControlFontDialogTest, ShowsCommandsAsTheyStandInTheFile) {
    const std::wstring lone = Repeated(L"8 ", 199) + L'8';
    const std::vector<Row> rows = {{0, L"1B 40"},         {RowOf('A'), L"1b40"},
                                   {RowOf('B'), L"1 B"},  {RowOf('C'), L"zz - ."},
                                   {RowOf('D'), lone},    {RowOf('E'), std::wstring(399, L'7')},
                                   {RowOf('&'), L"26&&"}, {95, L"FF"}};
    WriteText(FileOf(rows) + "4a=01\r\n041=02\r\n80=03\r\n1F=04\r\n");
    OnTable([&](UiDriver&, Window& table) { ExpectTable(table, rows); });
    // Cancel writes nothing.
    EXPECT_EQ(writes_ + deletions_, 0);
}

TEST_F(ControlFontDialogTest, SavesRowsThatNobodyEditedAsTheyWere) {
    const std::vector<Row> rows = {
        {0, L"1B 40"}, {RowOf('A'), L"1b40"}, {RowOf('C'), L"zz - ."}, {RowOf('E'), std::wstring(399, L'7')}};
    WriteText("[Other]\r\n41=9\r\n" + FileOf(rows) + "4a=01\r\n041=02\r\n46=" + std::string(5000, '6') +
              "\r\n");
    std::vector<Row> read = rows;
    read.emplace_back(RowOf('F'), std::wstring(399, L'6'));
    OnTable([&](UiDriver&, Window& table) {
        ExpectTable(table, read);
        table.PressAndWaitClosed(IDOK);
    });
    EXPECT_EQ(deletions_, 1);
    EXPECT_EQ(writes_, 5);
    ExpectFile(read);
}

TEST_F(ControlFontDialogTest, SavesAnEditedRowInPairs) {
    WriteText(FileOf({{RowOf('A'), L"1b40"}, {RowOf('B'), L"1b40"}, {RowOf('C'), L"1 B"}}));
    OnTable([&](UiDriver& ui, Window& table) {
        for (const char character : {'A', 'C'}) {
            OpenTranslator(ui, table, RowOf(character)).PressAndWaitClosed(IDOK);
        }
        Translate(ui, table, 95, L"1d 5");
        ExpectTable(
            table,
            {{RowOf('A'), L"1B 40 "}, {RowOf('B'), L"1b40"}, {RowOf('C'), L"01 0B "}, {95, L"1D 05 "}});
        EXPECT_EQ(writes_ + deletions_, 0);
        table.PressAndWaitClosed(IDOK);
    });
    EXPECT_EQ(deletions_, 1);
    EXPECT_EQ(writes_, 4);
    ExpectFile({{RowOf('A'), L"1B 40 "}, {RowOf('B'), L"1b40"}, {RowOf('C'), L"01 0B "}, {95, L"1D 05 "}});
    // The last row keeps its blank.
    EXPECT_TRUE(FileText()->ends_with("\r\n7F=1D 05 \r\n"));
}

TEST_F(ControlFontDialogTest, BytesOfTheFirstCommand) {
    OnTable([](UiDriver& ui, Window& table) {
        Translate(ui, table, RowOf('A'), L"1b40");
        table.PressAndWaitClosed(IDOK);
    });
    EXPECT_EQ(FileText(), "[Character Translation Table]\r\n41=1B 40 \r\n");
}

TEST_F(ControlFontDialogTest, AllRowsInTheirOrder) {
    OnTable([](UiDriver& ui, Window& table) {
        for (int row = 95; row >= 0; --row) {
            Translate(ui, table, row, Hex(static_cast<std::size_t>(row)));
        }
        ExpectTable(table, FirstRows(96));
        table.PressAndWaitClosed(IDOK);
    });
    ExpectFile(FirstRows(96));
    OnTable([](UiDriver& ui, Window& table) {
        const Window last = OpenTranslator(ui, table, 95);
        EXPECT_EQ(last.Text(kCharacter), L"\x7F");
        EXPECT_EQ(last.Text(kKey), L"7F");
        EXPECT_EQ(last.Text(kCommand), L"5F ");
        last.PressAndWaitClosed(IDCANCEL);
        const Window first = OpenTranslator(ui, table, 0);
        EXPECT_EQ(first.Text(kCharacter), L" ");
        EXPECT_EQ(first.Text(kKey), L"20");
        EXPECT_EQ(first.Text(kCommand), L"00 ");
        first.PressAndWaitClosed(IDCANCEL);
    });
}

TEST_F(ControlFontDialogTest, NoCommandLeavesNoFile) {
    WriteText(FileOf({{0, L"1B"}, {RowOf('A'), L"1C"}, {95, L"1D"}}));
    OnTable([](UiDriver& ui, Window& table) {
        for (const int row : {0, 95}) {
            Select(table, row);
            Press(table, kDelete);
        }
        Translate(ui, table, RowOf('A'), L"");
        ExpectTable(table, {});
        table.PressAndWaitClosed(IDOK);
    });
    EXPECT_EQ(deletions_, 1);
    EXPECT_EQ(writes_, 0);
    ExpectFile({});
}

TEST_F(ControlFontDialogTest, CancelKeepsTheFile) {
    const std::string text = FileOf({{RowOf('A'), L"1b40"}}) + "4a=01\r\n[Other]\r\n41=2";
    WriteText(text);
    const auto change = [](const UiDriver& ui, const Window& table) {
        Translate(ui, table, RowOf('A'), L"77");
        Select(table, RowOf('A'));
        Press(table, kDelete);
        Translate(ui, table, RowOf('B'), L"78");
    };
    OnTable([&](UiDriver& ui, Window& table) {
        change(ui, table);
        table.PressAndWaitClosed(IDCANCEL);
    });
    EXPECT_EQ(FileText(), text);
    OnTable([&](UiDriver& ui, Window& table) {
        // What was cancelled is forgotten.
        ExpectTable(table, {{RowOf('A'), L"1b40"}});
        change(ui, table);
        PostMessageW(table.handle(), WM_SYSCOMMAND, SC_CLOSE, 0);
        table.WaitClosed();
    });
    EXPECT_EQ(FileText(), text);
    EXPECT_EQ(writes_ + deletions_, 0);
}

TEST_F(ControlFontDialogTest, NothingHappensWithoutASelectedRow) {
    WriteText(FileOf({{0, L"1B"}, {95, L"1C"}}));
    OnTable([&](UiDriver& ui, Window& table) {
        Select(table, -1);
        ScrollTo(table, 40);
        const int top = TopRow(table);
        for (const int button : {kEdit, kDelete}) {
            table.Focus(button);
            Press(table, button);
            EXPECT_TRUE(IsWindowEnabled(table.handle()));
            EXPECT_EQ(FocusOf(table), table.Control(button));
        }
        // The rows' captions are no row.
        DoubleClickAt(table, MAKELPARAM(70, 5));
        NMITEMACTIVATE click = {};
        click.hdr = {table.Control(kRows), kRows, static_cast<UINT>(NM_DBLCLK)};
        click.iItem = -1;
        SendMessageW(table.handle(), WM_NOTIFY, kRows, reinterpret_cast<LPARAM>(&click));
        Settle(table);
        EXPECT_TRUE(IsWindowEnabled(table.handle()));
        EXPECT_EQ(TopRow(table), top);
        ExpectTable(table, {{0, L"1B"}, {95, L"1C"}});
        EXPECT_EQ(ui.WaitForDialog().handle(), table.handle());
    });
    EXPECT_EQ(boxes_.size(), 0u);
}

TEST_F(ControlFontDialogTest, StrayMessagesChangeNothing) {
    WriteText(FileOf({{0, L"1B"}, {95, L"1C"}}));
    OnTable([&](UiDriver& ui, Window& table) {
        const auto disturb = [](const Window& dialog) {
            SendMessageW(dialog.handle(), WM_INITDIALOG, 0, 0);
            SendMessageW(dialog.handle(), WM_INITDIALOG, 0, 1);
            SendMessageW(dialog.handle(), WM_NOTIFY, kRows, 0);
            SendMessageW(dialog.handle(), WM_COMMAND, 0, 0);
            SendMessageW(dialog.handle(), WM_COMMAND, MAKEWPARAM(kCommand, EN_CHANGE), 0);
            SendMessageW(dialog.handle(), WM_COMMAND, 0xFFFF, -1);
        };
        Select(table, 0);
        disturb(table);
        // Of another control, or another notification of the list.
        NMITEMACTIVATE click = {};
        for (const auto& [id, code] : std::vector<std::pair<int, UINT>>{
                 {kEdit, static_cast<UINT>(NM_DBLCLK)}, {kRows, static_cast<UINT>(NM_CLICK)}}) {
            click.hdr = {table.Control(kRows), static_cast<UINT_PTR>(id), code};
            SendMessageW(table.handle(), WM_NOTIFY, kRows, reinterpret_cast<LPARAM>(&click));
        }
        EXPECT_TRUE(IsWindowEnabled(table.handle()));
        ExpectTable(table, {{0, L"1B"}, {95, L"1C"}});
        const Window translator = OpenTranslator(ui, table, 95);
        disturb(translator);
        EXPECT_EQ(translator.Text(kCommand), L"1C ");
        translator.PressAndWaitClosed(IDOK);
        ExpectTable(table, {{0, L"1B"}, {95, L"1C "}});
        table.PressAndWaitClosed(IDOK);
    });
    ExpectFile({{0, L"1B"}, {95, L"1C "}});
}

TEST_F(ControlFontDialogTest, EditKeepsTheRowInSight) {
    OnTable([](UiDriver& ui, Window& table) {
        for (const int button : {IDOK, IDCANCEL}) {
            for (const auto& [row, top] :
                 std::vector<std::pair<int, int>>{{0, 0}, {1, 1}, {2, 1}, {3, 2}, {40, 39}, {70, 69}}) {
                SCOPED_TRACE(row);
                // From below: the row that is shown becomes the first in sight.
                ScrollTo(table, 76);
                const Window translator = OpenTranslator(ui, table, row);
                translator.PressAndWaitClosed(button);
                EXPECT_EQ(TopRow(table), top);
                EXPECT_EQ(Selected(table), row);
                WaitForFocus(ui, table, kRows);
            }
        }
    });
}

TEST_F(ControlFontDialogTest, DeleteKeepsTheRowInSight) {
    WriteText(FileOf(FirstRows(96)));
    OnTable([](UiDriver& ui, Window& table) {
        std::vector<Row> rows;
        for (const auto& [row, text] : FirstRows(96)) {
            rows.emplace_back(row, text.substr(0, 2));
        }
        for (const auto& [row, top] :
             std::vector<std::pair<int, int>>{{0, 0}, {1, 1}, {2, 1}, {3, 2}, {40, 39}, {70, 69}}) {
            SCOPED_TRACE(row);
            ScrollTo(table, 76);
            Select(table, row);
            table.Focus(kDelete);
            Press(table, kDelete);
            EXPECT_EQ(TopRow(table), top);
            EXPECT_EQ(Selected(table), row);
            WaitForFocus(ui, table, kRows);
            rows[static_cast<std::size_t>(row)].second.clear();
            ExpectTable(table, rows);
        }
        // The last one, from above: the one before it comes into sight.
        ScrollTo(table, 0);
        Select(table, 95);
        Press(table, kDelete);
        EXPECT_TRUE(IsInSight(table, 94));
        // Again: there is nothing to delete, and the row stays.
        Press(table, kDelete);
        rows[95].second.clear();
        ExpectTable(table, rows);
        table.PressAndWaitClosed(IDOK);
    });
    std::vector<Row> left;
    for (const Row& row : FirstRows(96)) {
        if (row.first > 3 && row.first != 40 && row.first != 70 && row.first != 95) {
            left.push_back(row);
        }
    }
    ExpectFile(left);
}

TEST_F(ControlFontDialogTest, DoubleClickOpensTheTranslator) {
    WriteText(FileOf({{RowOf('F'), L"1B 40"}}));
    OnTable([](UiDriver& ui, Window& table) {
        const int row = RowOf('F');
        for (const int button : {IDCANCEL, IDOK}) {
            ScrollTo(table, row);
            ASSERT_EQ(TopRow(table), row);
            DoubleClickAt(table, PlaceOf(table, row));
            const Window translator = TranslatorOf(ui, table);
            EXPECT_EQ(translator.Text(kCharacter), L"F");
            EXPECT_EQ(translator.Text(kKey), L"46");
            EXPECT_EQ(translator.Text(kCommand), L"1B 40 ");
            translator.TypeText(kCommand, L"1c");
            translator.PressAndWaitClosed(button);
            EXPECT_EQ(Cell(table, row, 2), button == IDOK ? L"1C " : L"1B 40");
            EXPECT_EQ(Selected(table), row);
            // The list stays where it is.
            EXPECT_EQ(TopRow(table), row);
        }
    });
}

TEST_F(ControlFontDialogTest, TranslatorCancelledKeepsTheRow) {
    WriteText(FileOf({{RowOf('A'), L"1b40"}}));
    OnTable([](UiDriver& ui, Window& table) {
        Window translator = OpenTranslator(ui, table, RowOf('A'));
        translator.TypeText(kCommand, L"77");
        translator.PressAndWaitClosed(IDCANCEL);
        ExpectTable(table, {{RowOf('A'), L"1b40"}});
        translator = OpenTranslator(ui, table, RowOf('A'));
        translator.TypeText(kCommand, L"77");
        PostMessageW(translator.handle(), WM_SYSCOMMAND, SC_CLOSE, 0);
        translator.WaitClosed();
        ExpectTable(table, {{RowOf('A'), L"1b40"}});
    });
}

TEST_F(ControlFontDialogTest, CommandsOfEveryLength) {
    OnTable([&](UiDriver& ui, Window& table) {
        const struct {
            std::wstring typed;
            std::wstring stored;
        } commands[] = {
            {L"", L""},
            {L"    ", L""},
            {L"5", L"05 "},
            {L"-.", L"00 "},
            {L"1b40", L"1B 40 "},
            {L"1 B", L"01 0B "},
            {L"123", L"12 03 "},
            {Repeated(L"aB ", 128), Repeated(L"AB ", 128)},
            {Repeated(L"7f", 128), Repeated(L"7F ", 128)},
            {Repeated(L"9 ", 128), Repeated(L"09 ", 128)},
            {L"  " + Repeated(L"01 ", 127) + L"  F", Repeated(L"01 ", 127) + L"0F "},
        };
        for (const auto& command : commands) {
            SCOPED_TRACE(testing::PrintToString(command.typed));
            Translate(ui, table, RowOf('K'), command.typed);
            EXPECT_EQ(Cell(table, RowOf('K'), 2), command.stored);
            const Window translator = OpenTranslator(ui, table, RowOf('K'));
            EXPECT_EQ(translator.Text(kCommand), command.stored);
            translator.PressAndWaitClosed(IDOK);
            EXPECT_EQ(Cell(table, RowOf('K'), 2), command.stored);
        }
        table.PressAndWaitClosed(IDOK);
    });
    EXPECT_EQ(boxes_.size(), 0u);
    ExpectFile({{RowOf('K'), Repeated(L"01 ", 127) + L"0F "}});
}

TEST_F(ControlFontDialogTest, TypedCommandThatIsTooLong) {
    for (const wchar_t* language : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        ChooseLanguage(language);
        WriteText(FileOf({{RowOf('A'), L"1b40"}}));
        OnTable([&](UiDriver& ui, Window& table) {
            Window translator = OpenTranslator(ui, table, RowOf('A'));
            for (const std::wstring& typed :
                 {Repeated(L"8 ", 129), Repeated(L"77", 129), Repeated(L"aB ", 129), Repeated(L"1 ", 200)}) {
                EnterCommand(translator, typed);
                Press(translator, IDOK);
                ExpectBox(translator, SourceText(language, L"MessageBox", L"MB_ERROR"),
                          SourceText(language, L"MessageBox", L"MB_OPERATION_ERROR1"), MB_OK);
                EXPECT_EQ(translator.Text(kCommand), typed);
            }
            // A byte less is stored.
            EnterCommand(translator, Repeated(L"8 ", 128));
            translator.PressAndWaitClosed(IDOK);
            EXPECT_EQ(Cell(table, RowOf('A'), 2), Repeated(L"08 ", 128));
            translator = OpenTranslator(ui, table, RowOf('A'));
            EnterCommand(translator, Repeated(L"8 ", 129));
            Press(translator, IDOK);
            boxes_.clear();
            translator.PressAndWaitClosed(IDCANCEL);
            EXPECT_EQ(Cell(table, RowOf('A'), 2), Repeated(L"08 ", 128));
        });
    }
    RemoveAllLanguageFiles();
    OnTable([&](UiDriver& ui, Window& table) {
        const Window translator = OpenTranslator(ui, table, RowOf('A'));
        EnterCommand(translator, Repeated(L"8 ", 129));
        Press(translator, IDOK);
        ExpectBox(translator, L"Error", L"Command length error!", MB_OK);
        translator.PressAndWaitClosed(IDCANCEL);
    });
}

// The table says it in other words, the same in all languages, and does not open the translator.
TEST_F(ControlFontDialogTest, StoredCommandThatIsTooLong) {
    const std::vector<Row> rows = {{RowOf('A'), Repeated(L"AB ", 128) + L"A"},
                                   {RowOf('B'), Repeated(L"8 ", 199) + L'8'},
                                   {RowOf('C'), std::wstring(399, L'7')},
                                   {RowOf('D'), Repeated(L"77", 128) + L"7"}};
    WriteText(FileOf(rows) + "45=" + std::string(5000, '7') + "\r\n");
    std::vector<Row> read = rows;
    read.emplace_back(RowOf('E'), std::wstring(399, L'7'));
    for (const wchar_t* language : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        ChooseLanguage(language);
        OnTable([&](UiDriver&, Window& table) {
            ExpectTable(table, read);
            const std::wstring title = SourceText(language, L"MessageBox", L"MB_ERROR");
            for (const Row& row : read) {
                SCOPED_TRACE(row.first);
                ScrollTo(table, 76);
                Select(table, row.first);
                table.Focus(kEdit);
                const int top = TopRow(table);
                Press(table, kEdit);
                ExpectBox(table, title, L"Command length error", MB_OK);
                EXPECT_TRUE(IsWindowEnabled(table.handle()));
                // That was all.
                EXPECT_EQ(TopRow(table), top);
                EXPECT_EQ(FocusOf(table), table.Control(kEdit));
            }
            ExpectTable(table, read);
        });
    }
    RemoveAllLanguageFiles();
    OnTable([&](UiDriver&, Window& table) {
        Select(table, RowOf('A'));
        Press(table, kEdit);
        ExpectBox(table, L"Error", L"Command length error", MB_OK);
        // It is saved as it was read, and can be deleted.
        Select(table, RowOf('C'));
        Press(table, kDelete);
        table.PressAndWaitClosed(IDOK);
    });
    read.erase(read.begin() + 2);
    ExpectFile(read);
}

TEST_F(ControlFontDialogTest, DoubleClickOnACommandThatIsTooLong) {
    WriteText(FileOf({{0, Repeated(L"8 ", 199)}}));
    OnTable([&](UiDriver& ui, Window& table) {
        DoubleClickAt(table, PlaceOf(table, 0));
        ui.WaitUntil([&] { return !boxes_.empty(); }, "the message");
        Settle(table);
        ExpectBox(table, L"Error", L"Command length error", MB_OK);
        EXPECT_TRUE(IsWindowEnabled(table.handle()));
    });
}

// 128 bytes and blanks, or what stands behind the 399th character: no part of the command.
TEST_F(ControlFontDialogTest, StoredCommandAtTheLimit) {
    const std::string limit = Narrow(Repeated(L"AB ", 128));
    WriteText(FileOf({}) + "41=" + limit + "\r\n42=" + limit + std::string(16, ' ') + "77 77\r\n");
    OnTable([&](UiDriver& ui, Window& table) {
        for (const char character : {'A', 'B'}) {
            const Window translator = OpenTranslator(ui, table, RowOf(character));
            EXPECT_EQ(translator.Text(kCommand), Repeated(L"AB ", 128));
            translator.PressAndWaitClosed(IDOK);
            EXPECT_EQ(Cell(table, RowOf(character), 2), Repeated(L"AB ", 128));
        }
    });
    EXPECT_EQ(boxes_.size(), 0u);
}

TEST_F(ControlFontDialogTest, TextBeyond400CharactersIsNotRead) {
    OnTable([&](UiDriver& ui, Window& table) {
        Window translator = OpenTranslator(ui, table, 3);
        SetText(translator, kCommand, L"1D" + std::wstring(397, L' ') + L"5" + std::wstring(600, L'7'));
        translator.PressAndWaitClosed(IDOK);
        EXPECT_EQ(Cell(table, 3, 2), L"1D 05 ");
        translator = OpenTranslator(ui, table, 3);
        SetText(translator, kCommand, L"1E" + std::wstring(398, L' ') + std::wstring(600, L'7'));
        translator.PressAndWaitClosed(IDOK);
        EXPECT_EQ(Cell(table, 3, 2), L"1E ");
        translator = OpenTranslator(ui, table, 3);
        SetText(translator, kCommand, std::wstring(5000, L' '));
        translator.PressAndWaitClosed(IDOK);
        EXPECT_EQ(Cell(table, 3, 2), L"");
        translator = OpenTranslator(ui, table, 3);
        SetText(translator, kCommand, std::wstring(5000, L'1'));
        Press(translator, IDOK);
        ExpectBox(translator, L"Error", L"Command length error!", MB_OK);
        // No more can be typed than is read.
        SetText(translator, kCommand, std::wstring(398, L' '));
        translator.Send(kCommand, EM_SETSEL, 398, 398);
        translator.AppendText(kCommand, L"12345");
        EXPECT_EQ(translator.Text(kCommand), std::wstring(398, L' ') + L"12");
        // Pasted text is read as it is: what is no digit counts as 0.
        SetText(translator, kCommand, L"zz 1G\r\n\x4E2D\xD83D\xDE00 g");
        translator.PressAndWaitClosed(IDOK);
        // z and z; 1 and G; the line's end; the Chinese character and half of a pair; the other half; g.
        EXPECT_EQ(Cell(table, 3, 2), L"00 10 00 00 00 00 ");
    });
}

TEST_F(ControlFontDialogTest, AFailingWriteKeepsTheTableOpen) {
    const std::vector<Row> all = FirstRows(96);
    for (const int failing : {0, 1, 40, 95}) {
        SCOPED_TRACE(failing);
        WriteText(FileOf(all));
        OnTable([&](UiDriver& ui, Window& table) {
            Translate(ui, table, 0, L"00");
            writes_ = deletions_ = 0;
            failing_ = failing;
            Press(table, IDOK);
            ExpectBox(table, L"Error", kDenied, MB_OK | MB_ICONERROR);
            EXPECT_EQ(writes_, failing + 1);
            EXPECT_EQ(deletions_, 1);
            // The old file is gone; the rows before the failing one are in the new.
            ExpectFile(FirstRows(failing));
            // Nothing of the table is lost, and what is edited now is saved with the rest.
            Translate(ui, table, 95, L"99");
            writes_ = 0;
            failing_ = -1;
            table.PressAndWaitClosed(IDOK);
        });
        std::vector<Row> saved = all;
        saved[95].second = L"99";
        ExpectFile(saved);
        EXPECT_EQ(boxes_.size(), 0u);
    }
}

TEST_F(ControlFontDialogTest, AFailingWriteThenCancel) {
    WriteText(FileOf(FirstRows(96)));
    OnTable([&](UiDriver&, Window& table) {
        failing_ = 40;
        Press(table, IDOK);
        ExpectBox(table, L"Error", kDenied, MB_OK | MB_ICONERROR);
        table.PressAndWaitClosed(IDCANCEL);
    });
    ExpectFile(FirstRows(40));
}

TEST_F(ControlFontDialogTest, TheDeniedMessageIsTheSameInAllLanguages) {
    for (const wchar_t* language : {kSimplifiedChinese, kTraditionalChinese}) {
        ChooseLanguage(language);
        OnTable([&](UiDriver& ui, Window& table) {
            Translate(ui, table, 0, L"1");
            failing_ = writes_;
            Press(table, IDOK);
            ExpectBox(table, SourceText(language, L"MessageBox", L"MB_ERROR"), kDenied, MB_OK | MB_ICONERROR);
        });
    }
}

TEST_F(ControlFontDialogTest, TheMessageIsABoxAboveTheTable) {
    std::filesystem::create_directory(TablePath());
    shows_boxes_ = true;
    OnTable([&](UiDriver& ui, Window& table) {
        ExpectTable(table, {});
        Translate(ui, table, 0, L"1");
        const MessageBoxInfo box = table.OpenMessageBox(IDOK);
        EXPECT_EQ(box.title, L"Error");
        EXPECT_EQ(box.text, kDenied);
        EXPECT_EQ(box.buttons, std::vector<int>{IDOK});
        box.Press(IDOK);
        EXPECT_TRUE(table.IsOpen());
        EXPECT_EQ(Cell(table, 0, 2), L"01 ");
        // Without commands there is nothing to write.
        Select(table, 0);
        Press(table, kDelete);
        table.PressAndWaitClosed(IDOK);
    });
    EXPECT_TRUE(std::filesystem::is_directory(TablePath()));
}

TEST_F(ControlFontDialogTest, AMissingFolderIsNotMade) {
    std::filesystem::remove(TablePath().parent_path());
    OnTable([&](UiDriver& ui, Window& table) {
        ExpectTable(table, {});
        Translate(ui, table, 0, L"1");
        Press(table, IDOK);
        ExpectBox(table, L"Error", kDenied, MB_OK | MB_ICONERROR);
    });
    EXPECT_FALSE(std::filesystem::exists(TablePath().parent_path()));
}

TEST_F(ControlFontDialogTest, AFileThatAnotherProgramHolds) {
    const std::string text = FileOf({{RowOf('A'), L"1b40"}, {95, L"1C"}});
    WriteText(text);
    OnTable([&](UiDriver& ui, Window& table) {
        ExpectTable(table, {{RowOf('A'), L"1b40"}, {95, L"1C"}});
        Translate(ui, table, 0, L"1");
        const HANDLE held = CreateFileW(TablePath().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        Press(table, IDOK);
        ExpectBox(table, L"Error", kDenied, MB_OK | MB_ICONERROR);
        CloseHandle(held);
        EXPECT_EQ(FileText(), text);
        table.PressAndWaitClosed(IDOK);
    });
    ExpectFile({{0, L"01 "}, {RowOf('A'), L"1b40"}, {95, L"1C"}});
}

TEST_F(ControlFontDialogTest, EnterInTheListSaves) {
    WriteText(FileOf({{RowOf('A'), L"1b40"}}) + "4a=01\r\n");
    OnTable([](UiDriver& ui, Window& table) {
        FocusForKeys(ui, table, kRows);
        PressKey(VK_RETURN);
        table.WaitClosed();
    });
    EXPECT_EQ(deletions_, 1);
    ExpectFile({{RowOf('A'), L"1b40"}});
}

TEST_F(ControlFontDialogTest, EscapeInTheListCancels) {
    OnTable([](UiDriver& ui, Window& table) {
        Translate(ui, table, 0, L"1");
        FocusForKeys(ui, table, kRows);
        PressKey(VK_ESCAPE);
        table.WaitClosed();
    });
    EXPECT_EQ(writes_ + deletions_, 0);
}

TEST_F(ControlFontDialogTest, TheKeyboardAlone) {
    OnTable([](UiDriver& ui, Window& table) {
        FocusForKeys(ui, table, kRows);
        // The first row, then the third.
        PressKey(VK_HOME);
        PressKeys({VK_DOWN, VK_DOWN});
        PressKeys({VK_TAB});
        WaitForFocus(ui, table, kEdit);
        EXPECT_EQ(Selected(table), 2);
        PressKey(VK_RETURN);
        const Window translator = TranslatorOf(ui, table);
        WaitForFocus(ui, translator, kCommand);
        EXPECT_EQ(translator.Text(kCharacter), L"\"");
        PressKeys({'1', 'B', VK_RETURN, 'G', VK_ESCAPE, '4', '0'});
        ui.WaitUntil([&] { return translator.Text(kCommand).ends_with(L'0'); }, "typed keys");
        EXPECT_EQ(translator.Text(kCommand), L"1b40");
        EXPECT_TRUE(translator.IsOpen());
        PressKey(VK_TAB);
        WaitForFocus(ui, translator, IDOK);
        PressKey(VK_TAB);
        WaitForFocus(ui, translator, IDCANCEL);
        PressKey(VK_TAB);
        WaitForFocus(ui, translator, kCommand);
        PressKey(VK_TAB);
        WaitForFocus(ui, translator, IDOK);
        EXPECT_EQ(translator.Text(kCommand), L"1b40");
        PressKey(VK_RETURN);
        translator.WaitClosed();
        // Back in the list, at the row; Enter there is OK again.
        WaitForFocus(ui, table, kRows);
        EXPECT_EQ(Selected(table), 2);
        EXPECT_EQ(Cell(table, 2, 2), L"1B 40 ");
        PressKeys({VK_DOWN, VK_UP, VK_TAB, VK_TAB});
        WaitForFocus(ui, table, kDelete);
        PressKey(VK_SPACE);
        WaitForFocus(ui, table, kRows);
        EXPECT_EQ(Cell(table, 2, 2), L"");
        PressKey(VK_DOWN);
        PressKeys({VK_TAB, VK_TAB, VK_TAB});
        WaitForFocus(ui, table, IDOK);
        PressKey(VK_TAB);
        WaitForFocus(ui, table, IDCANCEL);
        PressKey(VK_TAB);
        WaitForFocus(ui, table, kRows);
        PressKey(VK_RETURN);
        table.WaitClosed();
    });
    ExpectFile({});
}

TEST_F(ControlFontDialogTest, EscapeOnAButtonOfTheTranslatorCancelsIt) {
    OnTable([](UiDriver& ui, Window& table) {
        const Window translator = OpenTranslator(ui, table, 0);
        FocusForKeys(ui, translator, kCommand);
        PressKeys({'1', VK_TAB});
        WaitForFocus(ui, translator, IDOK);
        PressKey(VK_ESCAPE);
        translator.WaitClosed();
        WaitForFocus(ui, table, kRows);
        EXPECT_EQ(Cell(table, 0, 2), L"");
    });
}

// Every character on its own, as the keyboard of any country may bring it.
TEST_F(ControlFontDialogTest, TheTranslatorTakesHexadecimalCharacters) {
    constexpr std::wstring_view kTaken = L"0123456789abcdefABCDEF .-";
    OnTable([&](UiDriver& ui, Window& table) {
        const Window translator = OpenTranslator(ui, table, 0);
        EXPECT_EQ(translator.Send(kCommand, WM_GETDLGCODE), DLGC_WANTALLKEYS);
        for (wchar_t character = 1; character < 0x180; ++character) {
            SetText(translator, kCommand, L"7e");
            translator.Send(kCommand, EM_SETSEL, 2, 2);
            translator.Send(kCommand, WM_CHAR, character, 1);
            const std::wstring text = translator.Text(kCommand);
            if (kTaken.find(character) != kTaken.npos) {
                EXPECT_EQ(text, std::wstring(L"7e") + character);
            } else {
                EXPECT_EQ(text, character == 8 ? L"7" : L"7e") << static_cast<unsigned>(character);
            }
        }
        translator.PressAndWaitClosed(IDCANCEL);
    });
}

// Two tables would save one over the other.
TEST_F(ControlFontDialogTest, OpensOneTableAtATime) {
    OnUtilityPage([&](UiDriver& ui, Window& page) {
        const Window table = OpenTable(ui, page);
        PressControlFont(page);
        Settle(page);
        const HWND first = FindWindowW(L"#32770", kTableTitle);
        EXPECT_EQ(first, table.handle());
        EXPECT_EQ(FindWindowExW(nullptr, first, L"#32770", kTableTitle), nullptr);
        table.PressAndWaitClosed(IDCANCEL);
        OpenTable(ui, page).PressAndWaitClosed(IDCANCEL);
    });
}

// Counts what the plug-in takes from the heap, and refuses it on demand.
class ControlFontMemoryTest : public ControlFontDialogTest {
  protected:
    void SetUp() override {
        ControlFontDialogTest::SetUp();
        hooks_.On("msvcrt.dll", "malloc", static_cast<void*(WINAPI*)(std::size_t)>(&std::malloc),
                  [this](auto original, std::size_t size) {
                      void* const block = allocations_++ == refused_ ? nullptr : original(size);
                      live_ += block != nullptr;
                      return block;
                  });
        hooks_.On("msvcrt.dll", "free", static_cast<void(WINAPI*)(void*)>(&std::free),
                  [this](auto original, void* block) {
                      live_ -= block != nullptr;
                      original(block);
                  });
    }

    // One from now on, counted from 0; -1 for none.
    void Refuse(int number) {
        allocations_ = 0;
        refused_ = number;
    }

    int allocations_ = 0;
    int live_ = 0;

  private:
    int refused_ = -1;
};

// OK must never store a table that was not read.
TEST_F(ControlFontMemoryTest, ATableThatCannotBeReadIsNotShown) {
    std::vector<Row> rows;
    for (int row = 0; row < 96; ++row) {
        rows.emplace_back(row, L"1B 40 0A 0D 1B 21 00 " + Hex(static_cast<std::size_t>(row)));
    }
    WriteText(FileOf(rows));
    const UiThread ui_thread;
    OnUtilityPage([&](UiDriver& ui, Window& page) {
        EXPECT_GT(hooks_.Bound("malloc"), 0);
        allocations_ = 0;
        OpenTable(ui, page).PressAndWaitClosed(IDCANCEL);
        const int needed = allocations_;
        // A row each, and more.
        EXPECT_GT(needed, 96);
        int notShown = 0;
        const auto isOpen = [] { return FindWindowW(L"#32770", kTableTitle) != nullptr; };
        for (int number = 0; number < needed; number += number < 5 || number > needed - 5 ? 1 : 7) {
            SCOPED_TRACE(number);
            std::atomic<bool> returned = false;
            const std::function<void()> press = [&] {
                SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kControlFont, BN_CLICKED), 0);
                returned = true;
            };
            Refuse(number);
            ui_thread.Start(press);
            ui.WaitUntil([&] { return returned.load() || isOpen(); }, "the table or its refusal");
            Refuse(-1);
            notShown += returned;
            if (!returned) {
                const Window table = ui.WaitForDialog();
                ExpectTable(table, rows);
                table.PressAndWaitClosed(IDOK);
                ui.WaitUntil([&] { return returned.load(); }, "the table's end");
            }
        }
        EXPECT_GT(notShown, 10);
    });
    ExpectFile(rows);
}

// A command that the table could not take is as it was, and nothing else is lost.
TEST_F(ControlFontMemoryTest, ACommandThatCannotBeStoredIsNot) {
    std::wstring expected = Repeated(L"0A ", 100) + L"0B";
    const std::wstring other = expected;
    WriteText(FileOf({{0, expected}, {95, other}}));
    const UiThread ui_thread;
    int stored = 0;
    OnTable([&](UiDriver& ui, Window& table) {
        Select(table, 0);
        for (int number = 0; number < 20; ++number) {
            SCOPED_TRACE(number);
            std::atomic<bool> returned = false;
            const std::function<void()> press = [&] {
                SendMessageW(table.handle(), WM_COMMAND, MAKEWPARAM(kEdit, BN_CLICKED), 0);
                returned = true;
            };
            // Half of them on the way in, half on the way back.
            Refuse(number % 2 == 0 ? number / 2 : -1);
            ui_thread.Start(press);
            ui.WaitUntil([&] { return returned.load() || !IsWindowEnabled(table.handle()); },
                         "the translator or its refusal");
            Refuse(-1);
            const std::wstring typed = Repeated(Hex(static_cast<std::size_t>(number)) + L' ', 128);
            if (!returned) {
                const Window translator = TranslatorOf(ui, table);
                SetText(translator, kCommand, typed);
                Refuse(number % 2 == 0 ? -1 : number / 2);
                translator.PressAndWaitClosed(IDOK);
                ui.WaitUntil([&] { return returned.load(); }, "the translator's end");
                Refuse(-1);
            }
            const std::wstring shown = Cell(table, 0, 2);
            EXPECT_TRUE(shown == expected || shown == typed) << testing::PrintToString(shown);
            stored += shown == typed;
            expected = shown;
        }
        table.PressAndWaitClosed(IDOK);
    });
    // Some of either kind.
    EXPECT_GT(stored, 0);
    EXPECT_LT(stored, 20);
    ExpectFile({{0, expected}, {95, other}});
}

TEST_F(ControlFontMemoryTest, OpeningsLeaveNothingBehind) {
    WriteText(FileOf(FirstRows(3)));
    OnUtilityPage([&](UiDriver& ui, Window& page) {
        const auto use = [&] {
            const Window table = OpenTable(ui, page);
            Translate(ui, table, 0, L"1B 40");
            table.PressAndWaitClosed(IDOK);
        };
        for (int i = 0; i < 5; ++i) {
            use();
        }
        const int live = live_;
        const int handles = rig::CountHandles();
        for (int i = 0; i < 100; ++i) {
            use();
        }
        EXPECT_EQ(live_, live);
        // The system's own threads may hold some.
        EXPECT_LT(rig::CountHandles(), handles + 50);
    });
}

}  // namespace
}  // namespace pages
