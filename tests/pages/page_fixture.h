// What the page tests share: a user's machine with a chosen language, the host with the built plug-in in it,
// and a second thread that works the sheet while the host sits in its modal loop.
//
//   class OperationPageTest : public pages::PageTest {};
//
//   TEST_F(OperationPageTest, OpensTheDialog) {
//       OpenSheet([](UiDriver&, Sheet& sheet) {
//           Window page = sheet.SelectTab(L"Operation");
//           EXPECT_EQ(page.OpenDialog(1011).Title(), L"Start Document Operation");
//       });
//   }
#pragma once

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "plugin_host.h"
#include "rig/environment.h"
#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"
#include "ui_driver.h"

namespace pages {

constexpr wchar_t kEnglish[] = L"ENG_KVMR72.res";
constexpr wchar_t kSimplifiedChinese[] = L"CHN_KVMR72.res";
constexpr wchar_t kTraditionalChinese[] = L"CHF_KVMR72.res";

using Bytes = std::vector<std::uint8_t>;

// Each test starts with the driver freshly installed, English chosen by the user (not by the system), all
// three language files in the per-user folder, and the plug-in not loaded. It ends with a check that nothing
// wrote outside the memory that the host lent and that the plug-in left the process.
class PageTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Loads the plug-in; import hooks and trace captures that are to see process attach are set up before.
    PluginHost& StartHost(HostSettings settings = {});
    // The started host, which the first call starts.
    PluginHost& Host();
    // Ends the host and unloads the plug-in.
    void StopHost();

    // Opens the printing preferences, or the other sheet, and lets `script` work it. What the script leaves
    // open is cancelled. An error of the script fails the test.
    SheetResult OpenSheet(const std::function<void(UiDriver&, Sheet&)>& script,
                          SheetKind kind = SheetKind::kDocument);

    Bytes Record();
    void SetRecord(const Bytes& bytes);

  private:
    std::unique_ptr<PluginHost> host_;
};

// The user's choice: the registry value that sheets and repaints look at.
void ChooseLanguage(const wchar_t* file);
// Puts a language file of the sources into the per-user folder, or one of the test's own content.
void InstallUserFile(const wchar_t* file);
void WriteUserFile(const wchar_t* file, const std::wstring& text);
// Gives a file of the per-user folder another name, in place of the one that has it: a repaint in between
// sees the old file or the new one, nothing else.
void ReplaceUserFile(const wchar_t* file, const wchar_t* by);
// No language file anywhere, so that every text is its English default.
void RemoveAllLanguageFiles();

// A text of a language file of the sources as the platform's own profile functions read it; a test fails when
// there is none.
std::wstring SourceText(const wchar_t* file, const wchar_t* section, const wchar_t* key);

// A record with the header of this version and every other byte the function's value for its offset.
Bytes FilledRecord(const std::function<std::uint8_t(std::size_t offset)>& value);
// The bytes at which two records differ, as "offset: before -> after" lines; empty when they are the same.
std::string Differences(const Bytes& before, const Bytes& after);

// Repaints a window and its controls at once, as when it was uncovered.
void Repaint(const Window& window);
// Returns when the window's thread has dealt with what it was doing.
void Settle(const Window& window);

// Opens a host's sheet on this thread and works it from a second one. An error of the script fails the test.
SheetResult UseSheet(PluginHost& host, SheetKind kind, const std::function<void(UiDriver&, Sheet&)>& script);

// Presses a button that closes a dialog, and waits until `owner` has dealt with the dialog's result: the
// window is gone before that.
void CloseDialog(const Window& dialog, int button, const Window& owner);

// A sheet engine in the place of the real one, for calls of DocumentPropertySheets that look at every byte.
// It hands out made-up page handles and keeps what it was told.
class FakeSheet {
  public:
    struct Call {
        HANDLE sheet;
        UINT function;
        LPARAM first;
        LPARAM second;
        // For a page that is added: the description's bytes (as many as its size field says) and its title.
        Bytes page;
        std::wstring title;
    };
    static constexpr LONG_PTR kFirstPage = 0x1234567800000010;

    explicit FakeSheet(WORD reason = PROPSHEETUI_REASON_INIT);
    FakeSheet(const FakeSheet&) = delete;
    FakeSheet& operator=(const FakeSheet&) = delete;

    // The same block again for another reason.
    PROPSHEETUI_INFO* ForReason(WORD reason);
    // The numbers of the templates of the added pages, in the order added.
    std::vector<int> Templates() const;
    // The call that added the page of a template; a test fails, and gets an empty call, when there is none.
    Call PageOf(int dialog) const;
    // What that call was answered with.
    LONG_PTR HandleOf(int dialog) const;

    PROPSHEETUI_INFO info = {};
    OEMUIPSPARAM parameters = {};
    std::vector<Call> calls;
    // What the n-th added page is answered with; by default kFirstPage and following.
    std::function<LONG_PTR(std::size_t n)> answer;

  private:
    static LONG_PTR CALLBACK Callback(HANDLE sheet, UINT function, LPARAM first, LPARAM second);
};

// Where a page description's fields lie on a 64-bit system.
constexpr std::size_t kSizeOffset = 0;
constexpr std::size_t kFlagsOffset = 4;
constexpr std::size_t kInstanceOffset = 8;
constexpr std::size_t kTemplateOffset = 16;
constexpr std::size_t kIconOffset = 24;
constexpr std::size_t kProcedureOffset = 40;
constexpr std::size_t kParameterOffset = 48;
constexpr std::size_t kCallbackOffset = 56;
constexpr std::size_t kReferencesOffset = 64;
constexpr std::size_t kHeaderTitleOffset = 72;
constexpr std::size_t kHeaderSubTitleOffset = 80;
constexpr std::size_t kContextOffset = 88;

// A field of a page description as FakeSheet keeps it.
template <typename Field>
Field At(const Bytes& bytes, std::size_t offset) {
    Field field = {};
    EXPECT_LE(offset + sizeof field, bytes.size());
    if (offset + sizeof field <= bytes.size()) {
        std::memcpy(&field, bytes.data() + offset, sizeof field);
    }
    return field;
}

}  // namespace pages
