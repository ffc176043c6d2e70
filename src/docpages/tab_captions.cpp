#include "docpages/tab_captions.h"

#include <commctrl.h>

#include <iterator>
#include <memory>
#include <new>
#include <string_view>

#include "devpages/device_pages.h"
#include "docpages/document_pages.h"
#include "intrface/win/nothrow_new.h"
#include "language/text_lookup.h"

wchar_t gPrinterName[kPathLength];
HWND gSheetWindow = nullptr;

namespace {

constexpr std::size_t kClassLength = 200;
constexpr std::size_t kTitleLength = 1024;

// The name of a window's class, up to the length that is looked at.
class ClassName {
  public:
    explicit ClassName(HWND window) noexcept {
        GetClassNameW(window, name_, static_cast<int>(std::size(name_)));
    }

    std::wstring_view Text() const noexcept { return name_; }

  private:
    wchar_t name_[kClassLength + 1] = {};
};

bool IsTabControl(HWND window) noexcept {
    return ClassName(window).Text().find(WC_TABCONTROLW) != std::wstring_view::npos;
}

bool IsDialog(HWND window) noexcept {
    return ClassName(window).Text() == L"#32770";
}

// A window of another thread may belong to one that waits for this very sheet.
constexpr UINT kPatience = 500;  // milliseconds

// FALSE when the window's thread does not answer.
bool Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& answer) noexcept {
    DWORD_PTR result = 0;
    const bool isAnswered =
        SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kPatience, &result) != 0;
    answer = static_cast<LRESULT>(result);
    return isAnswered;
}

// A tab's text goes by pointer, which means nothing to another process.
bool IsOfThisProcess(HWND window) noexcept {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process == GetCurrentProcessId();
}

struct TabText : NothrowNew {
    TCITEMW item;
    wchar_t title[kShortCaption];
};

// Makes a page's title the text of a tab. FALSE when the control's thread does not answer, and without
// memory.
template <typename Page>
bool SetTab(HWND tabs, int index, const Page& page) noexcept {
    std::unique_ptr<TabText> text(new (std::nothrow) TabText{});
    if (text == nullptr) {
        return false;
    }
    const TextTable& texts = page.texts();
    const TextEntry& entry = texts.Entries()[page.titleRow];
    LoadText(texts.Section(), entry.key, entry.english, text->title);
    text->item.mask = TCIF_TEXT;
    text->item.pszText = text->title;
    LRESULT answer = 0;
    const bool isAnswered =
        Ask(tabs, TCM_SETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&text->item), answer);
    if (!isAnswered) {
        // The thread may be at it, or come to it later: the text is its own from now on.
        static_cast<void>(text.release());
    }
    return isAnswered;
}

// The page then loads its texts anew. FALSE when its thread does not answer; a page that was never shown has
// no window.
bool RepaintPage(HWND page) noexcept {
    LRESULT answer = 0;
    return page == nullptr || Ask(page, WM_PAINT, 0, 0, answer);
}

}  // namespace

void RelabelSheets(HWND page) noexcept {
    gSheetWindow = GetParent(page);
    EnumChildWindows(gSheetWindow, RelabelDocumentTabs, 0);
    EnumWindows(FindPrinterSheets, 0);
}

BOOL CALLBACK RelabelDocumentTabs(HWND window, LPARAM) noexcept {
    if (!IsTabControl(window)) {
        return TRUE;
    }
    RefreshLanguageFile();
    int index = kFirstDocumentTab;
    for (const DocumentPageEntry& page : DocumentPages()) {
        SetTab(window, index, page);
        ++index;
    }
    return TRUE;
}

BOOL CALLBACK FindPrinterSheets(HWND window, LPARAM) noexcept {
    TRACE_VERBOSE(L"UI:  EnumWindowsProc in\r\n");
    if (!IsDialog(window)) {
        return TRUE;
    }
    TRACE_VERBOSE(L"UI:  EnumWindowsProc GetWindowText\r\n");
    wchar_t title[kTitleLength + 1] = {};
    // Unlike GetWindowText it does not ask the window's thread.
    InternalGetWindowText(window, title, static_cast<int>(std::size(title)));
    OutputDebugStringW(title);
    const bool isOfPrinter =
        gPrinterName[0] != L'\0' && std::wstring_view(title).find(gPrinterName) != std::wstring_view::npos;
    if (isOfPrinter && window != gSheetWindow && IsOfThisProcess(window)) {
        EnumChildWindows(window, RelabelPrinterTabs, 0);
    }
    TRACE_VERBOSE(L"UI:  EnumWindowsProc out\r\n");
    return TRUE;
}

BOOL CALLBACK RelabelPrinterTabs(HWND window, LPARAM) noexcept {
    TRACE_VERBOSE(L"UI:  EnumWindowsProc1 in\r\n");
    if (!IsTabControl(window)) {
        TRACE_VERBOSE(L"UI:  EnumWindowsProc1 out 2\r\n");
        return TRUE;
    }
    RefreshLanguageFile();
    LRESULT count = 0;
    bool isAnswered = Ask(window, TCM_GETITEMCOUNT, 0, 0, count);
    int index = static_cast<int>(count) - static_cast<int>(DevicePages().size());
    for (const DevicePageEntry& entry : DevicePages()) {
        isAnswered = isAnswered && SetTab(window, index, entry) &&
                     RepaintPage(FindPage(GetAncestor(window, GA_ROOT), entry.page));
        ++index;
    }
    TRACE_VERBOSE(L"UI:  EnumWindowsProc1 out 1\r\n");
    return FALSE;
}
