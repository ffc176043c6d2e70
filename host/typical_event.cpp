#include "typical_event.h"

#include "plugin_pages.h"
#include "resources/resource.h"

void PlayTypicalEvent(const Sheet& sheet) {
    // Positions in the dialog's lists: the same in every language.
    constexpr int kDrawer1For10Ms = 1;
    constexpr int kPartialCut = 1;
    const Window page = SelectPageWith(sheet, IDC_OPERATION_PAGE_DOC_START);
    const Window dialog = page.OpenDialog(IDC_OPERATION_PAGE_DOC_START);
    // The kept record may have chosen the herald instead.
    dialog.Click(IDC_OPERATION_OPEN_DRAWER);
    dialog.SelectCombo(IDC_OPERATION_DRAWER, kDrawer1For10Ms);
    dialog.SelectCombo(IDC_OPERATION_CUT, kPartialCut);
    dialog.PressAndWaitClosed(IDOK);
}
