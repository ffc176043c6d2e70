// A page made as a sheet makes it but without one, so that its procedure can be asked directly and can go at
// any moment.
#pragma once

#include <windows.h>

#include <prsht.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "page_fixture.h"
#include "sheet_window.h"

namespace pages {

// Sheet and host parameters are this object's, so that two can be open at once. What the page finds behind
// its parameter is the derived class's.
class LoneDialogPage {
  public:
    struct Call {
        HANDLE sheet;
        UINT function;
        LPARAM first;
        LPARAM second;
        bool operator==(const Call&) const = default;
    };

    LoneDialogPage(const LoneDialogPage&) = delete;
    LoneDialogPage& operator=(const LoneDialogPage&) = delete;

    void Make() {
        handle_ = CreateDialogParamW(page_.hInstance, page_.pszTemplate, sheet.handle, page_.pfnDlgProc,
                                     reinterpret_cast<LPARAM>(&page_));
        EXPECT_NE(handle_, nullptr);
        ShowWindow(handle_, SW_SHOWNA);
        EnableWindow(handle_, TRUE);
        sheet.messages.clear();
    }
    void Unmake() {
        if (IsWindow(handle_)) {
            DestroyWindow(handle_);
        }
    }

    // The page's template without its procedure, in the same sheet.
    HWND MakeTemplate() const {
        return CreateDialogParamW(
            page_.hInstance, page_.pszTemplate, sheet.handle,
            [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
    }

    INT_PTR Ask(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const {
        return page_.pfnDlgProc(window, message, wparam, lparam);
    }
    INT_PTR Notify(UINT code) const {
        PSHNOTIFY notification = {};
        notification.hdr.hwndFrom = sheet.handle;
        notification.hdr.code = code;
        SetWindowLongPtrW(handle_, DWLP_MSGRESULT, 0x77);
        return Ask(handle_, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    }
    LONG_PTR NotifyResult() const { return GetWindowLongPtrW(handle_, DWLP_MSGRESULT); }

    INT_PTR Use(int control, int notification = BN_CLICKED) const {
        return Ask(handle_, WM_COMMAND, MAKEWPARAM(control, notification),
                   reinterpret_cast<LPARAM>(GetDlgItem(handle_, control)));
    }

    HWND handle() const { return handle_; }
    Window Page() const { return {driver_, handle_}; }
    LPARAM Description() const { return reinterpret_cast<LPARAM>(&page_); }

    // Every message before the page has its parameter, when it was told of none, and after it is gone, is
    // ignored with a line that names `procedure`. `message` is one that would do something.
    void ExpectNothingWithoutParameter(const std::wstring& procedure, UINT message, WPARAM wparam) {
        Make();
        const HWND window = MakeTemplate();
        ASSERT_NE(window, nullptr);
        const std::wstring line = L"ERROR UI:  " + procedure + L" : GetWindowLongPtr Failed ";
        const std::wstring missing = line + L"(0)\r\n";
        rig::TraceCapture trace;
        const auto expect_ignored = [&](const std::wstring& traced) {
            for (UINT any = 0; any < 0x10000; any += any < 0x800 ? 1 : 0x1F) {
                SetLastError(ERROR_ALREADY_EXISTS);
                EXPECT_EQ(Ask(window, any), FALSE) << any;
                EXPECT_EQ(trace.TakeOwn(), any == WM_INITDIALOG ? rig::Lines() : rig::Lines{traced}) << any;
            }
        };
        expect_ignored(missing);
        PROPSHEETPAGEW without = {};
        EXPECT_EQ(Ask(window, WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(&without)), FALSE);
        EXPECT_EQ(Ask(window, message, wparam), FALSE);
        EXPECT_THAT(trace.TakeOwn(), testing::ElementsAre(missing));
        DestroyWindow(window);
        trace.TakeOwn();
        expect_ignored(line + L"(1400)\r\n");
    }

    SheetWindow sheet;
    std::vector<Call> calls;

  protected:
    // With the page's description as the plug-in gave it to the host.
    LoneDialogPage(const Bytes& description, HANDLE printer) {
        sheet.Create();
        std::memcpy(&page_, description.data(), std::min(description.size(), sizeof page_));
        common_.cbSize = sizeof common_;
        common_.hPrinter = printer;
    }
    // The page must not outlive what lies behind its parameter: derived classes unmake it.
    ~LoneDialogPage() = default;

    void SetContext(void* context) { page_.lParam = reinterpret_cast<LPARAM>(context); }

    static LONG_PTR CALLBACK Keep(HANDLE sheet, UINT function, LPARAM first, LPARAM second) {
        static_cast<LoneDialogPage*>(sheet)->calls.push_back({sheet, function, first, second});
        return 1;
    }

    OEMCUIPPARAM common_ = {};

  private:
    UiDriver driver_{GetCurrentThreadId()};
    PROPSHEETPAGEW page_ = {};
    HWND handle_ = nullptr;
};

}  // namespace pages
