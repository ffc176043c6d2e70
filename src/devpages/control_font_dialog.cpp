// Two dialogs, modal one above the other: the control font's table with a row for each character, and the
// command of one character. The table's file changes only on OK of the table. The dialogs are of one
// language; the messages' titles, and one message, are not.
#include "devpages/control_font_dialog.h"

#include <commctrl.h>

#include <iterator>
#include <string>

#include "devpages/control_font.h"
#include "devpages/control_font_file.h"
#include "intrface/win/activation_context.h"
#include "intrface/win/hex_key_filter.h"
#include "intrface/win/list_view.h"
#include "intrface/win/page.h"
#include "language/messages.h"
#include "resources/resource.h"

namespace {

constexpr wchar_t kDriverName[] = L"Printer Driver";

constexpr int kKeyColumn = 1;
constexpr int kCommandColumn = 2;

constexpr ListColumn kColumns[] = {{L"Char", 50}, {L"Hex", 50}, {L"Command", 450}};

struct Table {
    ControlFontFileOnDisk file;
    ControlFont font;
};

// One row on its way to the translator and back.
struct RowCommand {
    std::wstring character;
    std::wstring key;
    std::wstring text;
    ControlCommand command;
};

// What a dialog was opened with; null before it was told.
template <typename State>
State* StateOf(HWND dialog) noexcept {
    return reinterpret_cast<State*>(GetWindowLongPtrW(dialog, DWLP_USER));
}

// Keeps what the dialog is opened with; what it was told first stays.
template <typename State, typename Opened>
INT_PTR TakeState(HWND dialog, LPARAM state, Opened&& opened) {
    if (state != 0 && StateOf<State>(dialog) == nullptr) {
        SetWindowLongPtrW(dialog, DWLP_USER, state);
        if (State* const kept = StateOf<State>(dialog)) {
            opened(*kept);
        } else {
            // The system refuses: what the dialog would show is nobody's.
            EndDialog(dialog, IDCANCEL);
        }
    }
    return TRUE;
}

// The translator.

void TranslatorOpened(HWND dialog, const RowCommand& row) {
    SetDlgItemTextW(dialog, IDC_CONTROL_COMMAND_CHARACTER, row.character.c_str());
    SetDlgItemTextW(dialog, IDC_CONTROL_COMMAND_KEY, row.key.c_str());
    InstallHexKeyFilter(GetDlgItem(dialog, IDC_CONTROL_COMMAND_TEXT));
    // What is not read must not be typed.
    SendDlgItemMessageW(dialog, IDC_CONTROL_COMMAND_TEXT, EM_LIMITTEXT, kTypedControlLength, 0);
    SetDlgItemTextW(dialog, IDC_CONTROL_COMMAND_TEXT, row.text.c_str());
}

void TranslatorOk(HWND dialog, RowCommand& row) noexcept {
    wchar_t text[kTypedControlLength + 1] = {};
    GetDlgItemTextW(dialog, IDC_CONTROL_COMMAND_TEXT, text, static_cast<int>(std::size(text)));
    const auto command = ParseTypedControlCommand(text);
    if (!command) {
        ShowMessage(dialog, Message::kCommandLength, MessageTitle::kError, MessageIcon::kNone);
        return;
    }
    row.command = *command;
    EndDialog(dialog, IDOK);
}

INT_PTR HandleTranslator(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        return TakeState<RowCommand>(dialog, lParam,
                                     [&](const RowCommand& row) { TranslatorOpened(dialog, row); });
    }
    auto* const row = StateOf<RowCommand>(dialog);
    if (message != WM_COMMAND || row == nullptr) {
        return FALSE;
    }
    switch (LOWORD(wParam)) {
        case IDOK:
            TranslatorOk(dialog, *row);
            return TRUE;
        case IDCANCEL:
            EndDialog(dialog, IDCANCEL);
            return TRUE;
        default:
            return FALSE;
    }
}

INT_PTR CALLBACK ControlCommandDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleTranslator(dialog, message, wParam, lParam); });
}

// The table.

HWND RowsOf(HWND dialog) noexcept {
    return GetDlgItem(dialog, IDC_CONTROL_TABLE_ROWS);
}

void ShowCommand(HWND dialog, const ControlFont& font, int row) noexcept {
    SetCell(RowsOf(dialog), row, kCommandColumn, font.Command(row).c_str());
}

void TableOpened(HWND dialog, const ControlFont& font) {
    SetDlgItemTextW(dialog, IDC_CONTROL_TABLE_DRIVER, kDriverName);
    AddColumns(RowsOf(dialog), kColumns);
    for (int row = 0; ControlFont::HasRow(row); ++row) {
        AddRow(RowsOf(dialog), row, ControlFont::Character(row).c_str());
        SetCell(RowsOf(dialog), row, kKeyColumn, ControlFont::Key(row).c_str());
        ShowCommand(dialog, font, row);
    }
}

// Leaves the user in the list, with the row in sight.
void ReturnToRow(HWND dialog, int row) noexcept {
    SendMessageW(RowsOf(dialog), LVM_ENSUREVISIBLE, static_cast<WPARAM>(RowToShow(row)), FALSE);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(RowsOf(dialog)), TRUE);
}

// TRUE when the translator was opened for the selected row.
bool EditRow(HWND dialog, Table& table, int row) {
    if (!ControlFont::HasRow(row)) {
        return false;
    }
    const auto command = ParseControlCommand(table.font.Command(row));
    if (!command) {
        ShowMessage(dialog, kStoredCommandTooLong, MessageTitle::kError, MessageIcon::kNone);
        return false;
    }
    RowCommand edited = {ControlFont::Character(row), ControlFont::Key(row), ControlCommandText(*command),
                         *command};
    if (RunDialog(IDD_CONTROL_COMMAND, dialog, ControlCommandDlgProc, reinterpret_cast<LPARAM>(&edited)) ==
        IDOK) {
        table.font.Store(row, edited.command);
        ShowCommand(dialog, table.font, row);
    }
    return true;
}

void EditClicked(HWND dialog, Table& table) {
    const int row = SelectedRow(RowsOf(dialog));
    if (EditRow(dialog, table, row)) {
        ReturnToRow(dialog, row);
    }
}

void DeleteClicked(HWND dialog, Table& table) noexcept {
    const int row = SelectedRow(RowsOf(dialog));
    if (ControlFont::HasRow(row)) {
        table.font.Delete(row);
        ShowCommand(dialog, table.font, row);
        ReturnToRow(dialog, row);
    }
}

void TableOk(HWND dialog, Table& table) {
    if (table.font.Save(table.file)) {
        EndDialog(dialog, IDOK);
    } else {
        ShowMessage(dialog, kControlFontDenied, MessageTitle::kError, MessageIcon::kOfTitle);
    }
}

INT_PTR TableCommand(HWND dialog, Table& table, int control) {
    switch (control) {
        case IDC_CONTROL_TABLE_EDIT:
            EditClicked(dialog, table);
            return TRUE;
        case IDC_CONTROL_TABLE_DELETE:
            DeleteClicked(dialog, table);
            return TRUE;
        case IDOK:
            TableOk(dialog, table);
            return TRUE;
        case IDCANCEL:
            EndDialog(dialog, IDCANCEL);
            return TRUE;
        default:
            return FALSE;
    }
}

INT_PTR HandleTable(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        return TakeState<Table>(dialog, lParam, [&](const Table& table) { TableOpened(dialog, table.font); });
    }
    auto* const table = StateOf<Table>(dialog);
    if (table == nullptr) {
        return FALSE;
    }
    switch (message) {
        case WM_COMMAND:
            return TableCommand(dialog, *table, LOWORD(wParam));
        case WM_NOTIFY: {
            const auto* const header = reinterpret_cast<const NMHDR*>(lParam);
            if (header != nullptr && header->idFrom == IDC_CONTROL_TABLE_ROWS && header->code == NM_DBLCLK) {
                EditRow(dialog, *table, SelectedRow(RowsOf(dialog)));
                return TRUE;
            }
            return FALSE;
        }
        default:
            return FALSE;
    }
}

INT_PTR CALLBACK ControlFontDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return GuardDialog([&] { return HandleTable(dialog, message, wParam, lParam); });
}

}  // namespace

void EditControlFont(HWND owner) {
    Table table;
    // Before the dialog opens: OK must never save a table that could not be read whole.
    table.font.Load(table.file);
    RunDialog(IDD_CONTROL_TABLE, owner, ControlFontDlgProc, reinterpret_cast<LPARAM>(&table));
}
