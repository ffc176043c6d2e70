// A page of the printer side without a sheet.
#pragma once

#include <windows.h>

#include <prsht.h>

#include <string>

#include "lone_dialog_page.h"

namespace pages {

class LonePrinterPage : public LoneDialogPage {
  public:
    // What the host returned for the last page of the sheet.
    static constexpr LPARAM kLastPage = 0x4711;

    LonePrinterPage(const Bytes& description, HANDLE printer) : LoneDialogPage(description, printer) {
        context_ = {this, reinterpret_cast<void*>(kLastPage), reinterpret_cast<void*>(&Keep), &common_,
                    nullptr};
        SetContext(&context_);
    }
    ~LonePrinterPage() { Unmake(); }

    void LoseCallback() { context_.callback = nullptr; }
    void LoseCommonParameters() { context_.common = nullptr; }

    // Set-active and kill-active are acknowledged, apply is reported with the sheet's last page, and other
    // notifications are the platform's. A host without a callback is not told.
    void ExpectAnswersToTheSheet() {
        const SheetWindow::Message unchanged = {PSM_UNCHANGED, reinterpret_cast<WPARAM>(handle())};
        for (const UINT code : {PSN_SETACTIVE, PSN_KILLACTIVE}) {
            EXPECT_EQ(Notify(code), TRUE);
            EXPECT_EQ(NotifyResult(), 0);
        }
        for (const UINT code : {PSN_RESET, PSN_HELP, PSN_QUERYCANCEL, UINT{5}, TVN_SELCHANGEDW}) {
            EXPECT_EQ(Notify(code), FALSE);
            EXPECT_EQ(NotifyResult(), 0x77);
        }
        EXPECT_EQ(Ask(handle(), WM_NOTIFY, 0, 0), FALSE) << "without its header";
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

    void ExpectNothingWithoutParameter(const std::wstring& procedure) {
        LoneDialogPage::ExpectNothingWithoutParameter(procedure, WM_PAINT, 0);
    }

  private:
    // As the pages find it at their creation parameter.
    struct Context {
        void* sheet;
        void* last_page;
        void* callback;
        OEMCUIPPARAM* common;
        void* helper;
    };

    Context context_ = {};
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
