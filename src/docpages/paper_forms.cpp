#include "docpages/paper_forms.h"

#include "docpages/option_items.h"

namespace {

bool IsFormItem(const OPTITEM& item) noexcept {
    return item.DMPubID == DMPUB_FORMNAME && HasTextValues(item);
}

bool HasValue(const OPTITEM& item, LONG index) noexcept {
    return index >= 0 && index < item.pOptType->Count;
}

}  // namespace

void ListForms(const DocumentSheetContext& context, HWND list) noexcept {
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const OPTITEM& item : OptionItems(context)) {
        for (WORD i = 0; IsFormItem(item) && i < item.pOptType->Count; ++i) {
            // A form without a text keeps its place: the list's index is the option's selection.
            const wchar_t* const name = item.pOptType->pOptParam[i].pData;
            SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(IsOptionText(name) ? name : L""));
        }
    }
}

void ShowChosenForm(const DocumentSheetContext& context, HWND list) noexcept {
    LONG first = 0;
    for (const OPTITEM& item : OptionItems(context)) {
        if (!IsFormItem(item)) {
            continue;
        }
        if (HasValue(item, item.Sel)) {
            const LONG chosen = first + item.Sel;
            SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(chosen), 0);
        }
        first += item.pOptType->Count;
    }
}

void ChooseForm(const DocumentSheetContext& context, LONG index) noexcept {
    for (OPTITEM& item : OptionItems(context)) {
        // The host indexes its values with the selection.
        if (IsFormItem(item) && HasValue(item, index)) {
            item.Sel = index;
            item.Flags |= OPTIF_CHANGED;
            UpdateOption(context, item);
        }
    }
}
