#include "host_tabs.h"

#include <prsht.h>

#include "host_ids.h"

namespace {

// One list on a tab: which option item it shows.
struct OptionList {
    int label;
    int combo;
    std::size_t option;
};

constexpr OptionList kLists[] = {
    {IDC_HOST_FORMS_LABEL, IDC_HOST_FORMS, DriverOptions::kForms},
    {IDC_HOST_DENSITY_LABEL, IDC_HOST_DENSITY, DriverOptions::kDensity},
    {IDC_HOST_QUALITY_LABEL, IDC_HOST_QUALITY, DriverOptions::kQuality},
};

constexpr UINT kApplyFinished = WM_APP;

bool IsShown(HWND tab, const OptionList& list, const DriverOptions& options) {
    return GetDlgItem(tab, list.combo) != nullptr && list.option < options.count();
}

// The plug-in may have relabelled or selected since the tab was last seen.
void ShowOptions(HWND tab, const DriverOptions& options) {
    for (const OptionList& list : kLists) {
        if (!IsShown(tab, list, options)) {
            continue;
        }
        SetDlgItemTextW(tab, list.label, options.Name(list.option).c_str());
        SendDlgItemMessageW(tab, list.combo, CB_RESETCONTENT, 0, 0);
        for (const std::wstring& value : options.Values(list.option)) {
            SendDlgItemMessageW(tab, list.combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(value.c_str()));
        }
        const LONG selected = options.item(list.option).Sel;
        SendDlgItemMessageW(tab, list.combo, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
    }
}

void TakeSelection(HWND tab, int combo, const DriverOptions& options) {
    for (const OptionList& list : kLists) {
        if (list.combo == combo && IsShown(tab, list, options)) {
            OPTITEM& item = options.item(list.option);
            item.Sel = static_cast<LONG>(SendDlgItemMessageW(tab, combo, CB_GETCURSEL, 0, 0));
            item.Flags |= OPTIF_CHANGED;
            PropSheet_Changed(GetParent(tab), tab);
        }
    }
}

// A tab without these boxes stays as it is.
void ShowPrinter(HWND tab, const HostTabContext& context) {
    SetDlgItemTextW(tab, IDC_HOST_PRINTER, context.printer_name.c_str());
    SetDlgItemTextW(tab, IDC_HOST_PORT, context.port_name.c_str());
}

INT_PTR AnswerNotification(HWND tab, const HostTabContext& context, const PSHNOTIFY& notification) {
    switch (notification.hdr.code) {
        case PSN_SETACTIVE:
            ShowOptions(tab, *context.options);
            ShowPrinter(tab, context);
            context.shown();
            break;
        case PSN_APPLY: {
            const bool closing = notification.lParam != 0;
            context.applied(closing);
            if (!closing) {
                // Posted, so that it comes when the pages behind this one have applied as well.
                PostMessageW(tab, kApplyFinished, 0, 0);
            }
            break;
        }
        case PSN_RESET:
            context.cancelled();
            break;
        default:
            return FALSE;
    }
    SetWindowLongPtrW(tab, DWLP_MSGRESULT, 0);
    return TRUE;
}

INT_PTR CALLBACK HostTabProc(HWND tab, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(tab, DWLP_USER, reinterpret_cast<const PROPSHEETPAGEW*>(lparam)->lParam);
        return TRUE;
    }
    const auto* context = reinterpret_cast<const HostTabContext*>(GetWindowLongPtrW(tab, DWLP_USER));
    if (context == nullptr) {
        return FALSE;
    }
    switch (message) {
        case WM_COMMAND:
            if (HIWORD(wparam) == CBN_SELCHANGE) {
                TakeSelection(tab, LOWORD(wparam), *context->options);
                return TRUE;
            }
            return FALSE;
        case WM_NOTIFY:
            return AnswerNotification(tab, *context, *reinterpret_cast<const PSHNOTIFY*>(lparam));
        case kApplyFinished:
            context->apply_finished();
            return TRUE;
        default:
            return FALSE;
    }
}

LONG_PTR AddTab(const PROPSHEETUI_INFO& info, const HostTabContext& context, WORD dialog) {
    PROPSHEETPAGEW page = {};
    page.dwSize = sizeof page;
    page.hInstance = GetModuleHandleW(nullptr);
    page.pszTemplate = MAKEINTRESOURCEW(dialog);
    page.pfnDlgProc = HostTabProc;
    page.lParam = reinterpret_cast<LPARAM>(&context);
    return info.pfnComPropSheet(info.hComPropSheet, CPSFUNC_ADD_PROPSHEETPAGEW,
                                reinterpret_cast<LPARAM>(&page), 0);
}

}  // namespace

LONG_PTR AddDocumentTabs(const PROPSHEETUI_INFO& info, const HostTabContext& context) {
    return AddTab(info, context, IDD_HOST_LAYOUT) > 0 ? AddTab(info, context, IDD_HOST_QUALITY) : 0;
}

LONG_PTR AddPrinterTabs(const PROPSHEETUI_INFO& info, const HostTabContext& context) {
    return AddTab(info, context, IDD_HOST_GENERAL) > 0 ? AddTab(info, context, IDD_HOST_PORTS) : 0;
}
