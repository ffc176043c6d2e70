// A page of the printer side made as a sheet makes it but without one, so that its procedure can be asked
// directly and can go at any moment.
#pragma once

#include <windows.h>

#include <prsht.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "page_fixture.h"
#include "sheet_window.h"

namespace pages {

// Sheet and host parameters are this object's, so that two can be open at once.
class LonePrinterPage {
  public:
    struct Call {
        HANDLE sheet;
        UINT function;
        LPARAM first;
        LPARAM second;
        bool operator==(const Call&) const = default;
    };

    // What the host returned for the last page of the sheet.
    static constexpr LPARAM kLastPage = 0x4711;

    // With the page's description as the plug-in gave it to the host.
    LonePrinterPage(const Bytes& description, HANDLE printer) {
        sheet.Create();
        std::memcpy(&page_, description.data(), std::min(description.size(), sizeof page_));
        common_.cbSize = sizeof common_;
        common_.hPrinter = printer;
        context_ = {this, reinterpret_cast<void*>(kLastPage), reinterpret_cast<void*>(&Keep), &common_,
                    nullptr};
        page_.lParam = reinterpret_cast<LPARAM>(&context_);
    }
    LonePrinterPage(const LonePrinterPage&) = delete;
    LonePrinterPage& operator=(const LonePrinterPage&) = delete;
    ~LonePrinterPage() { Unmake(); }

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

    void LoseCallback() { context_.callback = nullptr; }
    void LoseCommonParameters() { context_.common = nullptr; }

    // Set-active and kill-active are acknowledged, apply is reported with the sheet's last page, and other
    // notifications are the platform's. A host without a callback is not told.
    void ExpectAnswersToTheSheet() {
        const SheetWindow::Message unchanged = {PSM_UNCHANGED, reinterpret_cast<WPARAM>(handle_)};
        for (const UINT code : {PSN_SETACTIVE, PSN_KILLACTIVE}) {
            EXPECT_EQ(Notify(code), TRUE);
            EXPECT_EQ(NotifyResult(), 0);
        }
        for (const UINT code : {PSN_RESET, PSN_HELP, PSN_QUERYCANCEL, UINT{5}, TVN_SELCHANGEDW}) {
            EXPECT_EQ(Notify(code), FALSE);
            EXPECT_EQ(NotifyResult(), 0x77);
        }
        EXPECT_EQ(Ask(handle_, WM_NOTIFY, 0, 0), FALSE) << "without its header";
        EXPECT_THAT(calls, testing::IsEmpty());
        EXPECT_THAT(sheet.messages, testing::IsEmpty());
        EXPECT_EQ(Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
        EXPECT_EQ(NotifyResult(), PSNRET_NOERROR);
        EXPECT_THAT(calls, testing::ElementsAre(Call{this, CPSFUNC_SET_RESULT, kLastPage, CPSUI_OK}));
        EXPECT_THAT(sheet.messages, testing::ElementsAre(unchanged));
        LoseCallback();
        sheet.messages.clear();
        EXPECT_EQ(Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
        EXPECT_EQ(NotifyResult(), PSNRET_NOERROR);
        EXPECT_EQ(calls.size(), 1u);
        EXPECT_THAT(sheet.messages, testing::ElementsAre(unchanged));
    }

    // Every message before the page has its parameter, when it was told of none, and after it is gone, is
    // ignored with a line that names `procedure`.
    void ExpectNothingWithoutParameter(const std::wstring& procedure) {
        Make();
        const HWND window = MakeTemplate();
        ASSERT_NE(window, nullptr);
        const std::wstring line = L"ERROR UI:  " + procedure + L" : GetWindowLongPtr Failed ";
        const std::wstring missing = line + L"(0)\r\n";
        rig::TraceCapture trace;
        const auto expect_ignored = [&](const std::wstring& traced) {
            for (UINT message = 0; message < 0x10000; message += message < 0x800 ? 1 : 0x1F) {
                SetLastError(ERROR_ALREADY_EXISTS);
                EXPECT_EQ(Ask(window, message), FALSE) << message;
                EXPECT_EQ(trace.TakeOwn(), message == WM_INITDIALOG ? rig::Lines() : rig::Lines{traced})
                    << message;
            }
        };
        expect_ignored(missing);
        PROPSHEETPAGEW without = {};
        EXPECT_EQ(Ask(window, WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(&without)), FALSE);
        EXPECT_EQ(Ask(window, WM_PAINT), FALSE);
        EXPECT_THAT(trace.TakeOwn(), testing::ElementsAre(missing));
        DestroyWindow(window);
        trace.TakeOwn();
        expect_ignored(line + L"(1400)\r\n");
    }

    SheetWindow sheet;
    std::vector<Call> calls;

  private:
    // As the pages find it at their creation parameter.
    struct Context {
        void* sheet;
        void* last_page;
        void* callback;
        OEMCUIPPARAM* common;
        void* helper;
    };

    static LONG_PTR CALLBACK Keep(HANDLE sheet, UINT function, LPARAM first, LPARAM second) {
        static_cast<LonePrinterPage*>(sheet)->calls.push_back({sheet, function, first, second});
        return 1;
    }

    UiDriver driver_{GetCurrentThreadId()};
    PROPSHEETPAGEW page_ = {};
    OEMCUIPPARAM common_ = {};
    Context context_ = {};
    HWND handle_ = nullptr;
};

// The description of a printer page as the host gets it.
inline Bytes PrinterPageDescription(PluginHost& host, int dialog) {
    FakeSheet sheet;
    EXPECT_EQ(host.CommonUIProp(OEMCUIP_PRNPROP), S_OK);
    EXPECT_EQ(host.plugin().DevicePropertySheets(&sheet.info, 0), S_OK);
    return sheet.PageOf(dialog).page;
}

// A template's size in dialog units, its title and font.
inline void ExpectTemplate(HMODULE module, int number, short width, short height, const std::wstring& title) {
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(number), RT_DIALOG);
    ASSERT_NE(resource, nullptr);
    const auto* const bytes = static_cast<const std::uint8_t*>(LockResource(LoadResource(module, resource)));
    const Bytes dialog(bytes, bytes + SizeofResource(module, resource));
    EXPECT_EQ(At<WORD>(dialog, 0), 1) << "an extended template";
    EXPECT_EQ(At<WORD>(dialog, 2), 0xFFFF);
    EXPECT_EQ(At<short>(dialog, 22), width);
    EXPECT_EQ(At<short>(dialog, 24), height);
    EXPECT_EQ(At<WORD>(dialog, 26), 0) << "no menu";
    EXPECT_EQ(At<WORD>(dialog, 28), 0) << "no class of its own";
    // With their terminators; in between the font's size, weight and kind.
    constexpr wchar_t kFace[] = L"MS Shell Dlg";
    const std::size_t title_size = (title.size() + 1) * sizeof(wchar_t);
    ASSERT_GE(dialog.size(), 30 + title_size + 6 + sizeof kFace);
    EXPECT_EQ(std::memcmp(dialog.data() + 30, title.c_str(), title_size), 0);
    EXPECT_EQ(At<WORD>(dialog, 30 + title_size), 8) << "points";
    EXPECT_EQ(std::memcmp(dialog.data() + 30 + title_size + 6, kFace, sizeof kFace), 0);
}

}  // namespace pages
