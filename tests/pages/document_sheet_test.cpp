// The document sheet: what the host's calls are answered with, the pages that it is given, the activation
// context that they carry, and where their texts come from.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <set>

#include "page_fixture.h"
#include "rig/import_hooks.h"

namespace {

using pages::At;
using pages::Bytes;
using pages::ChooseLanguage;
using pages::FakeSheet;
using pages::kCallbackOffset;
using pages::kContextOffset;
using pages::kEnglish;
using pages::kFlagsOffset;
using pages::kHeaderSubTitleOffset;
using pages::kHeaderTitleOffset;
using pages::kIconOffset;
using pages::kInstanceOffset;
using pages::kParameterOffset;
using pages::kProcedureOffset;
using pages::kReferencesOffset;
using pages::kSimplifiedChinese;
using pages::kSizeOffset;
using pages::kTemplateOffset;
using pages::kTraditionalChinese;
using pages::SourceText;
using pages::WriteUserFile;
using rig::Hex;
using rig::Lines;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::IsSupersetOf;

constexpr HRESULT kFailed = static_cast<HRESULT>(0x80004005);

constexpr int kMainTemplate = 128;
constexpr int kWaterMarkTemplate = 131;
constexpr int kOperationTemplate = 103;
constexpr int kBarcode1DTemplate = 117;
constexpr int kBarcode2DTemplate = 118;
constexpr int kVersionTemplate = 105;

// In the order of the tabs.
struct PageCase {
    int dialog;
    const wchar_t* title;
    const wchar_t* section;
    const wchar_t* title_key;
};
constexpr PageCase kPages[] = {
    {kMainTemplate, L"Main", L"LAYOUT", L"RC_LAYOUTFORM"},
    {kWaterMarkTemplate, L"Water Mark", L"WATERMARK", L"RC_WATERMARKFORM"},
    {kOperationTemplate, L"Operation", L"OPERATION", L"RC_OPERATIONFORM"},
    {kBarcode1DTemplate, L"1D Code", L"1DCODE", L"RC_1DCODEFORM"},
    {kBarcode2DTemplate, L"2D Code", L"2DCODE", L"RC_2DCODEFORM"},
    {kVersionTemplate, L"Version", L"VERSION", L"RC_VERSIONFORM"},
};
constexpr const wchar_t* kHostTitles[] = {L"Layout", L"Paper/Quality"};

constexpr DWORD kTitleOnly = 0x0008;
constexpr DWORD kTitleAndContext = 0x4008;

class DocumentSheetTest : public pages::PageTest {
  protected:
    // Initialises a sheet by a direct call, as the host's engine does. The host's options are its own.
    HRESULT Initialize(FakeSheet& sheet) {
        EXPECT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
        return Host().plugin().DocumentPropertySheets(&sheet.info, 0);
    }

    std::wstring OperationTitle() {
        FakeSheet sheet;
        EXPECT_EQ(Initialize(sheet), S_OK);
        return sheet.PageOf(kOperationTemplate).title;
    }
};

const wchar_t kEntryLine[] = L"UI:  IOemUI:DocumentPropertySheets entry.\r\n";
const wchar_t kInvalidLine[] = L"ERROR UI:  hrOEMDocumentPropertySheets() ERROR_INVALID_PARAMETER.\r\n";

// The dump of a block as it is given to the plug-in.
Lines DumpOf(const PROPSHEETUI_INFO& info) {
    return {L"pPSUIInfo:\r\n",
            L"\tcbSize          = " + std::to_wstring(info.cbSize) + L"\r\n",
            L"\tVersion         = " + Hex(info.Version) + L"\r\n",
            L"\tFlags           = " + Hex(info.Flags) + L"\r\n",
            L"\tReason          = " + std::to_wstring(info.Reason) + L"\r\n",
            L"\thComPropSheet   = " + Hex(info.hComPropSheet) + L"\r\n",
            L"\tpfnComPropSheet = " + Hex(reinterpret_cast<std::uintptr_t>(info.pfnComPropSheet)) + L"\r\n",
            L"\tlParamInit      = " + Hex(static_cast<std::uint64_t>(info.lParamInit)) + L"\r\n",
            L"\tUserData        = " + Hex(info.UserData) + L"\r\n",
            L"\tResult          = " + Hex(info.Result) + L"\r\n"};
}

// Parameters

TEST_F(DocumentSheetTest, RefusesABlockOfAnotherVersion) {
    for (const WORD version : {WORD{0x0101}, WORD{0x00FF}, WORD{0}, WORD{0x0001}, WORD{0xFFFF}}) {
        SCOPED_TRACE(version);
        Host();
        FakeSheet sheet;
        sheet.info.Version = version;
        sheet.info.Result = 0xAB;
        rig::TraceCapture trace;
        SetLastError(1234);
        EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), kFailed);
        EXPECT_EQ(GetLastError(), 87u);
        EXPECT_THAT(trace.Take(), ElementsAre(kEntryLine, kInvalidLine));
        EXPECT_THAT(sheet.calls, IsEmpty());
        EXPECT_EQ(sheet.info.Result, 0xABu);
    }
}

TEST_F(DocumentSheetTest, RefusesAMissingBlock) {
    Host();
    rig::TraceCapture trace;
    SetLastError(1234);
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(nullptr, 0), kFailed);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_THAT(trace.Take(), ElementsAre(kEntryLine, kInvalidLine));
}

// Reasons

TEST_F(DocumentSheetTest, DumpsTheBlockBeforeItAnswers) {
    Host();
    PROPSHEETUI_INFO info = {};
    info.cbSize = 40;
    info.Version = 0x0100;
    info.Flags = 0x0003;
    info.Reason = 4;
    info.hComPropSheet = reinterpret_cast<HANDLE>(0x7FFF00001234ABCD);
    info.lParamInit = 0x11223344;
    info.UserData = 0xFFFFFFFFFFFFFFFF;
    info.Result = 0x100000000;
    rig::TraceCapture trace;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(&info, 0), S_OK);
    EXPECT_THAT(trace.Take(),
                ElementsAre(kEntryLine, L"pPSUIInfo:\r\n", L"\tcbSize          = 40\r\n",
                            L"\tVersion         = 0x100\r\n", L"\tFlags           = 0x3\r\n",
                            L"\tReason          = 4\r\n", L"\thComPropSheet   = 0x1234abcd\r\n",
                            L"\tpfnComPropSheet = 0\r\n", L"\tlParamInit      = 0x11223344\r\n",
                            L"\tUserData        = 0xffffffff\r\n", L"\tResult          = 0\r\n"));
}

TEST_F(DocumentSheetTest, TracesTheInitialisationInOrder) {
    HostSettings settings;
    settings.options = {{.name = L"Speed", .level = 2, .values = {L"Fast"}}};
    StartHost(settings);
    FakeSheet sheet;
    sheet.info.Result = 77;
    Lines expected = DumpOf(sheet.info);
    expected.insert(expected.begin(), kEntryLine);
    expected.push_back(L"UI:  initialize doc property sheet\r\n");
    // From the last page to the first; the line of the Main page stands for the Water Mark page too.
    expected.push_back(L"UI:  Init version property page\r\n");
    expected.push_back(L"UI:  Init 2DCode property page\r\n");
    expected.push_back(L"UI:  Init barcode property page\r\n");
    expected.push_back(L"UI:  Init operation property page\r\n");
    expected.push_back(L"UI:  Init LayoutPage property page\r\n");
    expected.push_back(L"UI:  Init LayoutPage property page\r\n");
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    rig::TraceCapture trace;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
    EXPECT_THAT(trace.Take(), ElementsAreArray(expected));
}

TEST_F(DocumentSheetTest, NamesItselfInTheHeader) {
    PROPSHEETUI_INFO_HEADER header;
    std::memset(&header, 0x5A, sizeof header);
    PROPSHEETUI_INFO_HEADER expected = header;
    FakeSheet sheet(PROPSHEETUI_REASON_GET_INFO_HEADER);
    sheet.info.Result = 77;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, reinterpret_cast<LPARAM>(&header)), S_OK);
    EXPECT_EQ(sheet.info.Result, 1u);
    EXPECT_STREQ(header.pTitle, L"OEM UI Page");
    expected.pTitle = header.pTitle;
    EXPECT_EQ(std::memcmp(&header, &expected, sizeof header), 0) << "only the title is the plug-in's";
    EXPECT_THAT(sheet.calls, IsEmpty());
}

TEST_F(DocumentSheetTest, AnswersTheOtherReasons) {
    FakeSheet sheet;
    sheet.info.Result = 77;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(sheet.ForReason(PROPSHEETUI_REASON_DESTROY), 0), S_OK);
    EXPECT_EQ(sheet.info.Result, 1u);
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(sheet.ForReason(PROPSHEETUI_REASON_GET_ICON), 0), S_OK);
    EXPECT_EQ(sheet.info.Result, 0u);
    EXPECT_THAT(sheet.calls, IsEmpty());
}

TEST_F(DocumentSheetTest, LeavesTheResultOfAnUnknownReason) {
    FakeSheet sheet;
    sheet.info.Result = 77;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(sheet.ForReason(9), 0), S_OK);
    EXPECT_EQ(sheet.info.Result, 77u);
    EXPECT_THAT(sheet.calls, IsEmpty());
}

TEST_F(DocumentSheetTest, TakesOverTheResult) {
    for (const LRESULT value : {LRESULT{2}, LRESULT{0}, LRESULT{0x123456789ABCDEF0}, LRESULT{-1}}) {
        SETRESULT_INFO result = {};
        result.cbSize = sizeof result;
        result.Result = value;
        FakeSheet sheet(PROPSHEETUI_REASON_SET_RESULT);
        sheet.info.Result = 77;
        EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, reinterpret_cast<LPARAM>(&result)),
                  S_OK);
        EXPECT_EQ(sheet.info.Result, static_cast<ULONG_PTR>(value));
        EXPECT_THAT(sheet.calls, IsEmpty());
    }
}

// Pages

TEST_F(DocumentSheetTest, AddsItsPagesInTheOrderOfTheTabs) {
    FakeSheet sheet;
    ASSERT_EQ(Initialize(sheet), S_OK);
    EXPECT_THAT(sheet.Templates(), ElementsAre(128, 131, 103, 117, 118, 105));
    EXPECT_EQ(sheet.calls.size(), sheet.Templates().size()) << "the host is asked for nothing else";
}

TEST_F(DocumentSheetTest, DescribesItsPages) {
    FakeSheet sheet;
    ASSERT_EQ(Initialize(sheet), S_OK);
    std::set<std::uint64_t> procedures;
    std::set<std::uint64_t> parameters;
    for (const PageCase& expected : kPages) {
        SCOPED_TRACE(expected.dialog);
        const FakeSheet::Call call = sheet.PageOf(expected.dialog);
        EXPECT_EQ(call.sheet, &sheet);
        EXPECT_EQ(call.function, 1u);
        EXPECT_EQ(call.second, 0);
        EXPECT_EQ(call.title, expected.title);

        const Bytes& page = call.page;
        ASSERT_EQ(page.size(), 96u);
        EXPECT_EQ(At<DWORD>(page, kSizeOffset), 96u);
        EXPECT_EQ(At<DWORD>(page, kFlagsOffset), kTitleAndContext);
        EXPECT_EQ(At<HMODULE>(page, kInstanceOffset), Host().module());
        EXPECT_EQ(At<std::uint64_t>(page, kTemplateOffset), static_cast<std::uint64_t>(expected.dialog));
        EXPECT_EQ(At<std::uint64_t>(page, kIconOffset), 0u);
        EXPECT_EQ(At<std::uint64_t>(page, kCallbackOffset), 0u);
        EXPECT_EQ(At<std::uint64_t>(page, kReferencesOffset), 0u);
        EXPECT_EQ(At<std::uint64_t>(page, kHeaderTitleOffset), 0u);
        EXPECT_EQ(At<std::uint64_t>(page, kHeaderSubTitleOffset), 0u);
        EXPECT_NE(At<HANDLE>(page, kContextOffset), INVALID_HANDLE_VALUE);
        EXPECT_NE(At<HANDLE>(page, kContextOffset), nullptr);
        procedures.insert(At<std::uint64_t>(page, kProcedureOffset));
        parameters.insert(At<std::uint64_t>(page, kParameterOffset));
    }
    EXPECT_EQ(procedures.size(), std::size(kPages)) << "each page has a procedure of its own";
    EXPECT_EQ(procedures.count(0), 0u);
    EXPECT_EQ(parameters.size(), 1u) << "all pages have the context of the sheet";
}

TEST_F(DocumentSheetTest, GivesThePagesTheSheetContext) {
    FakeSheet sheet;
    ASSERT_EQ(Initialize(sheet), S_OK);
    // Sheet handle, a second handle that stays invalid, the host's parameters, its common parameters, its
    // callback, its helper.
    void* const* fields = At<void* const*>(sheet.PageOf(kMainTemplate).page, kParameterOffset);
    ASSERT_NE(fields, nullptr);
    EXPECT_EQ(fields[0], &sheet);
    EXPECT_EQ(fields[1], INVALID_HANDLE_VALUE);
    EXPECT_EQ(fields[2], &sheet.parameters);
    EXPECT_EQ(fields[3], &Host().common_ui());
    EXPECT_EQ(fields[4], reinterpret_cast<void*>(sheet.info.pfnComPropSheet));
    EXPECT_EQ(fields[5], static_cast<IPrintOemDriverUI*>(&Host().helper()));
}

// The host makes its own pages from its options while the plug-in's are added.
TEST_F(DocumentSheetTest, RelabelsTheDensityBeforeItAddsPages) {
    HostSettings settings;
    settings.options = {{.name = L"Level", .level = 2, .values = {L"Level Density 1", L"Level Density 2"}}};
    StartHost(settings);
    std::vector<std::wstring> first_values;
    std::vector<std::size_t> helper_calls;
    FakeSheet sheet;
    sheet.answer = [&](std::size_t) {
        first_values.emplace_back(Host().options().item(0).pOptType->pOptParam[0].pData);
        helper_calls.push_back(Host().helper().calls().size());
        return FakeSheet::kFirstPage;
    };
    ASSERT_EQ(Initialize(sheet), S_OK);
    ASSERT_FALSE(first_values.empty());
    EXPECT_THAT(first_values, Each(std::wstring(L"Density0")));
    EXPECT_THAT(helper_calls, Each(1u));
}

TEST_F(DocumentSheetTest, ResultsInTheHandleOfTheLastPage) {
    FakeSheet sheet;
    ASSERT_EQ(Initialize(sheet), S_OK);
    EXPECT_EQ(sheet.info.Result, static_cast<ULONG_PTR>(FakeSheet::kFirstPage) + sheet.calls.size() - 1);

    FakeSheet refusing;
    refusing.answer = [](std::size_t) { return LONG_PTR{-1}; };
    refusing.info.Result = 77;
    EXPECT_EQ(Initialize(refusing), S_OK);
    EXPECT_EQ(refusing.info.Result, static_cast<ULONG_PTR>(-1));
}

TEST_F(DocumentSheetTest, StandsBehindTheHostsTabsInTheRealSheet) {
    OpenSheet([](UiDriver&, Sheet& sheet) {
        EXPECT_THAT(sheet.TabTitles(), ElementsAre(L"Layout", L"Paper/Quality", L"Main", L"Water Mark",
                                                   L"Operation", L"1D Code", L"2D Code", L"Version"));
        sheet.PressCancel();
    });
    EXPECT_THAT(Host().sheet_reasons(), IsSupersetOf({WORD{0}, WORD{1}, WORD{2}}));
}

// The page's own procedure, on a window that is no sheet's

class OperationProcedureTest : public DocumentSheetTest {
  protected:
    // A dialog without a procedure, with the procedure of a page added to `sheet`.
    void Open(FakeSheet& sheet) {
        ASSERT_EQ(Initialize(sheet), S_OK);
        page_ = sheet.PageOf(kOperationTemplate).page;
        procedure_ = At<DLGPROC>(page_, kProcedureOffset);
        ASSERT_NE(procedure_, nullptr);
        struct {
            DLGTEMPLATE dialog;
            WORD menu, kind, title;
        } bare = {{WS_POPUP, 0, 0, 0, 0, 50, 50}, 0, 0, 0};
        window_ = CreateDialogIndirectParamW(
            GetModuleHandleW(nullptr), &bare.dialog, nullptr,
            [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
        ASSERT_NE(window_, nullptr);
    }

    void TearDown() override {
        if (window_ != nullptr) {
            DestroyWindow(window_);
        }
        DocumentSheetTest::TearDown();
    }

    INT_PTR Notify(UINT code) {
        NMHDR notification = {};
        notification.code = code;
        return procedure_(window_, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    }

    Bytes page_;
    DLGPROC procedure_ = nullptr;
    HWND window_ = nullptr;
};

TEST_F(OperationProcedureTest, AppliesForAHostWithoutACallback) {
    FakeSheet sheet;
    Open(sheet);
    if (HasFatalFailure()) {
        return;
    }
    EXPECT_EQ(procedure_(window_, WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(page_.data())), FALSE);
    sheet.calls.clear();
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, 99);
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
    EXPECT_EQ(GetWindowLongPtrW(window_, DWLP_MSGRESULT), PSNRET_NOERROR);
    EXPECT_EQ(sheet.calls.size(), 1u) << "with a callback, the success is reported";

    // The same page after a sheet whose host gave none.
    FakeSheet bare;
    bare.info.pfnComPropSheet = nullptr;
    ASSERT_EQ(Initialize(bare), S_OK);
    EXPECT_EQ(bare.info.Result, 0u);
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, 99);
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
    EXPECT_EQ(GetWindowLongPtrW(window_, DWLP_MSGRESULT), PSNRET_NOERROR);
    EXPECT_EQ(sheet.calls.size(), 1u);
    EXPECT_THAT(bare.calls, IsEmpty());
}

TEST_F(OperationProcedureTest, IsNotInitialisedWithoutADescription) {
    FakeSheet sheet;
    Open(sheet);
    if (HasFatalFailure()) {
        return;
    }
    sheet.calls.clear();
    EXPECT_EQ(procedure_(window_, WM_INITDIALOG, 0, 0), FALSE);
    EXPECT_EQ(GetWindowLongPtrW(window_, DWLP_USER), 0);
    // Nor does it act afterwards.
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_APPLY)), FALSE);
    EXPECT_THAT(sheet.calls, IsEmpty());
}

// Activation context

// Watches or replaces what the activation context is made with; from before the plug-in is loaded.
class ActivationContextTest : public DocumentSheetTest {
  protected:
    void SetUp() override {
        DocumentSheetTest::SetUp();
        hooks_.On("KERNEL32.dll", "CreateActCtxW", &CreateActCtxW, [this](auto original, PCACTCTXW context) {
            created_.push_back({context->cbSize, context->dwFlags, context->lpSource,
                                reinterpret_cast<std::uintptr_t>(context->lpResourceName)});
            handles_.push_back(fail_ ? INVALID_HANDLE_VALUE : original(context));
            return handles_.back();
        });
        hooks_.On("KERNEL32.dll", "ReleaseActCtx", &ReleaseActCtx, [this](auto original, HANDLE context) {
            released_.push_back(context);
            return original(context);
        });
        hooks_.On("KERNEL32.dll", "GetModuleFileNameW", &GetModuleFileNameW,
                  [this](auto original, HMODULE module, LPWSTR path, DWORD size) -> DWORD {
                      if (module != GetModuleHandleW(L"KVMR72UI.dll")) {
                          return original(module, path, size);
                      }
                      path_sizes_.push_back(size);
                      if (no_path_) {
                          return 0;
                      }
                      if (cut_paths_ > 0) {
                          --cut_paths_;
                          std::fill_n(path, size, L'x');
                          path[size - 1] = L'\0';
                          return size;
                      }
                      return original(module, path, size);
                  });
    }

    DWORD FlagsOfNewSheet() {
        FakeSheet sheet;
        EXPECT_EQ(Initialize(sheet), S_OK);
        return At<DWORD>(sheet.PageOf(kOperationTemplate).page, kFlagsOffset);
    }

    // The calls that belong to one attempt to find the module's path.
    std::vector<std::vector<DWORD>> PathAttempts() const {
        std::vector<std::vector<DWORD>> attempts;
        for (const DWORD size : path_sizes_) {
            if (size == 260) {
                attempts.emplace_back();
            }
            EXPECT_FALSE(attempts.empty()) << "the first buffer holds 260 characters, not " << size;
            if (!attempts.empty()) {
                attempts.back().push_back(size);
            }
        }
        return attempts;
    }

    struct Created {
        ULONG size;
        DWORD flags;
        std::wstring source;
        std::uintptr_t resource;
    };
    std::vector<Created> created_;
    std::vector<HANDLE> handles_;
    std::vector<HANDLE> released_;
    std::vector<DWORD> path_sizes_;
    bool fail_ = false;
    bool no_path_ = false;
    int cut_paths_ = 0;
    rig::ImportHooks hooks_;
};

TEST_F(ActivationContextTest, ComesFromThePluginsOwnManifestAndIsMadeOnce) {
    Host();
    FakeSheet sheet;
    ASSERT_EQ(Initialize(sheet), S_OK);
    ASSERT_EQ(created_.size(), 1u);
    wchar_t path[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(Host().module(), path, MAX_PATH), 0u);
    EXPECT_EQ(created_[0].source, path);
    EXPECT_EQ(created_[0].size, sizeof(ACTCTXW));
    EXPECT_EQ(created_[0].flags, DWORD{ACTCTX_FLAG_RESOURCE_NAME_VALID});
    EXPECT_EQ(created_[0].resource, 2u);
    for (const FakeSheet::Call& call : sheet.calls) {
        EXPECT_EQ(At<HANDLE>(call.page, kContextOffset), handles_[0]);
    }

    FakeSheet second;
    ASSERT_EQ(Initialize(second), S_OK);
    EXPECT_EQ(created_.size(), 1u);
    EXPECT_EQ(At<HANDLE>(second.PageOf(kOperationTemplate).page, kContextOffset), handles_[0]);
    EXPECT_THAT(released_, IsEmpty());
}

TEST_F(ActivationContextTest, NamesVersionSixOfTheCommonControls) {
    FakeSheet sheet;
    ASSERT_EQ(Initialize(sheet), S_OK);
    ASSERT_EQ(handles_.size(), 1u);
    ULONG_PTR cookie = 0;
    ASSERT_TRUE(ActivateActCtx(handles_[0], &cookie));
    ACTCTX_SECTION_KEYED_DATA found = {};
    found.cbSize = sizeof found;
    EXPECT_TRUE(FindActCtxSectionStringW(0, nullptr, ACTIVATION_CONTEXT_SECTION_WINDOW_CLASS_REDIRECTION,
                                         L"SysListView32", &found));
    EXPECT_TRUE(DeactivateActCtx(0, cookie));
}

TEST_F(ActivationContextTest, IsReleasedOnceWhenThePluginLeaves) {
    Host();
    EXPECT_EQ(FlagsOfNewSheet(), kTitleAndContext);
    StopHost();
    ASSERT_EQ(handles_.size(), 1u);
    EXPECT_THAT(released_, ElementsAre(handles_[0]));
}

TEST_F(ActivationContextTest, IsNotReleasedWhenItWasNeverMade) {
    Host();
    StopHost();
    EXPECT_THAT(created_, IsEmpty());
    EXPECT_THAT(released_, IsEmpty());
}

TEST_F(ActivationContextTest, IsNotReleasedWhenItCouldNotBeMade) {
    Host();
    fail_ = true;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleOnly);
    StopHost();
    EXPECT_THAT(released_, IsEmpty());
}

TEST_F(ActivationContextTest, IsDoneWithoutWhereTheSystemRefusesAndTriedAgainLater) {
    Host();
    fail_ = true;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleOnly);
    const std::size_t tried = created_.size();
    EXPECT_GE(tried, 1u);
    EXPECT_EQ(FlagsOfNewSheet(), kTitleOnly);
    EXPECT_GT(created_.size(), tried);
    fail_ = false;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleAndContext);
    const std::size_t made = created_.size();
    EXPECT_EQ(FlagsOfNewSheet(), kTitleAndContext);
    EXPECT_EQ(created_.size(), made);
}

TEST_F(ActivationContextTest, AsksAgainWithDoubleRoomForALongPath) {
    Host();
    cut_paths_ = 3;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleAndContext);
    EXPECT_THAT(path_sizes_, ElementsAre(260u, 520u, 1040u, 2080u));
    ASSERT_EQ(created_.size(), 1u);
    wchar_t path[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(Host().module(), path, MAX_PATH), 0u);
    EXPECT_EQ(created_[0].source, path);
}

TEST_F(ActivationContextTest, GivesUpOnAPathThatFillsEveryBuffer) {
    Host();
    cut_paths_ = 1000000;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleOnly);
    EXPECT_THAT(created_, IsEmpty());
    const auto attempts = PathAttempts();
    EXPECT_FALSE(attempts.empty());
    EXPECT_THAT(attempts,
                Each(ElementsAre(260u, 520u, 1040u, 2080u, 4160u, 8320u, 16640u, 33280u, 66560u, 133120u)));
    cut_paths_ = 0;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleAndContext);
}

TEST_F(ActivationContextTest, GivesUpWhereTheSystemDoesNotSayThePath) {
    Host();
    no_path_ = true;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleOnly);
    EXPECT_THAT(created_, IsEmpty());
    EXPECT_THAT(PathAttempts(), Each(ElementsAre(260u)));
    no_path_ = false;
    EXPECT_EQ(FlagsOfNewSheet(), kTitleAndContext);
}

TEST_F(ActivationContextTest, IsMissedByThePageInTheRealSheetWithoutHarm) {
    Host();
    fail_ = true;
    OpenSheet([](UiDriver&, Sheet& sheet) {
        EXPECT_EQ(sheet.SelectTab(L"Operation").Text(1011), L"Start of Document");
        sheet.PressOk();
    });
}

// Language

TEST_F(DocumentSheetTest, CutsALongTitle) {
    Host();
    WriteUserFile(kEnglish, L"[OPERATION]\r\nRC_OPERATIONFORM=abcdefghijklmnopqrstuvwxyz1234\r\n");
    EXPECT_EQ(OperationTitle(), L"abcdefghijklmnopqrs");
    WriteUserFile(kEnglish, L"[OPERATION]\r\nRC_OPERATIONFORM=abcdefghijklmnopqrs\r\n");
    EXPECT_EQ(OperationTitle(), L"abcdefghijklmnopqrs");
}

TEST_F(DocumentSheetTest, FollowsTheRegistryFromSheetToSheet) {
    Host();
    EXPECT_EQ(OperationTitle(), L"Operation");
    ChooseLanguage(kSimplifiedChinese);
    EXPECT_EQ(OperationTitle(), L"操作");
    ChooseLanguage(kTraditionalChinese);
    EXPECT_EQ(OperationTitle(), L"操作");
    WriteUserFile(kTraditionalChinese, L"[OPERATION]\r\nRC_OPERATIONFORM=動作\r\n");
    EXPECT_EQ(OperationTitle(), L"動作");
    ChooseLanguage(kEnglish);
    EXPECT_EQ(OperationTitle(), L"Operation");
}

TEST_F(DocumentSheetTest, FallsBackToTheEnglishFileWithoutAValue) {
    ChooseLanguage(kSimplifiedChinese);
    Host();
    WriteUserFile(kEnglish, L"[OPERATION]\r\nRC_OPERATIONFORM=From the file\r\n");
    EXPECT_EQ(OperationTitle(), L"操作");
    rig::RemoveLanguageKey();
    EXPECT_EQ(OperationTitle(), L"From the file");
    ChooseLanguage(kSimplifiedChinese);
    EXPECT_EQ(OperationTitle(), L"操作");
    rig::RemoveLanguageKey();
    rig::CreateLanguageKey();
    EXPECT_EQ(OperationTitle(), L"From the file");
}

TEST_F(DocumentSheetTest, FallsBackToEnglishWithoutAFile) {
    ChooseLanguage(kSimplifiedChinese);
    Host();
    pages::RemoveAllLanguageFiles();
    EXPECT_EQ(OperationTitle(), L"Operation");
    pages::InstallUserFile(kSimplifiedChinese);
    EXPECT_EQ(OperationTitle(), L"操作");
    WriteUserFile(kSimplifiedChinese, L"[OTHER]\r\nRC_OPERATIONFORM=Elsewhere\r\n");
    EXPECT_EQ(OperationTitle(), L"Operation");
}

TEST_F(DocumentSheetTest, ShowsTheChosenLanguageInTheRealSheet) {
    ChooseLanguage(kSimplifiedChinese);
    std::vector<std::wstring> expected(std::begin(kHostTitles), std::end(kHostTitles));
    for (const PageCase& page : kPages) {
        expected.push_back(SourceText(kSimplifiedChinese, page.section, page.title_key));
    }
    EXPECT_EQ(expected[4], L"操作");
    OpenSheet([&](UiDriver&, Sheet& sheet) {
        EXPECT_EQ(sheet.TabTitles(), expected);
        sheet.PressCancel();
    });
}

// Counts how the plug-in reads language files.
class LanguageFileReadingTest : public DocumentSheetTest {
  protected:
    void SetUp() override {
        DocumentSheetTest::SetUp();
        hooks_.On("KERNEL32.dll", "CreateFileW", &CreateFileW,
                  [this](auto original, LPCWSTR path, auto... arguments) {
                      const std::wstring name = path;
                      if (name.size() > 4 && _wcsicmp(name.c_str() + name.size() - 4, L".res") == 0) {
                          ++opened_;
                      }
                      return original(path, arguments...);
                  });
        hooks_.On("KERNEL32.dll", "ReadFile", &ReadFile, [this](auto original, auto... arguments) {
            ++read_;
            return original(arguments...);
        });
        hooks_.On("KERNEL32.dll", "GetPrivateProfileStringW", &GetPrivateProfileStringW,
                  [this](auto original, auto... arguments) {
                      ++profile_calls_;
                      return original(arguments...);
                  });
        Host();
        ASSERT_EQ(hooks_.Bound("CreateFileW"), 1);
        ASSERT_EQ(hooks_.Bound("ReadFile"), 1);
        Forget();
    }

    void Forget() { opened_ = read_ = profile_calls_ = 0; }
    void ExpectReads(int count) {
        EXPECT_EQ(opened_, count);
        EXPECT_EQ(read_, count);
        EXPECT_EQ(profile_calls_, 0);
        Forget();
    }

    std::atomic<int> opened_ = 0;
    std::atomic<int> read_ = 0;
    std::atomic<int> profile_calls_ = 0;
    rig::ImportHooks hooks_;
};

TEST_F(LanguageFileReadingTest, ReadsTheFileOnceForASheet) {
    OperationTitle();
    ExpectReads(1);
    ChooseLanguage(kSimplifiedChinese);
    OperationTitle();
    ExpectReads(1);
}

TEST_F(LanguageFileReadingTest, ReadsNothingOnAnUnchangedRepaint) {
    OpenSheet([this](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectTab(L"Operation");
        ExpectReads(1);
        for (int i = 0; i < 5; ++i) {
            pages::Repaint(page);
        }
        ExpectReads(0);
        const Window dialog = page.OpenDialog(1011);
        pages::Repaint(dialog);
        pages::CloseDialog(dialog, IDCANCEL, page);
        ExpectReads(0);
        sheet.PressCancel();
    });
}

TEST_F(LanguageFileReadingTest, ReadsAgainOnceWhenAnotherLanguageIsChosen) {
    OpenSheet([this](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectTab(L"Operation");
        pages::Repaint(page);
        Forget();
        ChooseLanguage(kTraditionalChinese);
        pages::Repaint(page);
        EXPECT_EQ(page.Text(1011), L"文件開始");
        pages::Repaint(page);
        ExpectReads(1);
        sheet.PressCancel();
    });
}

TEST_F(LanguageFileReadingTest, ReadsAgainWhenTheFileHasAnotherSize) {
    OpenSheet([this](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectTab(L"Operation");
        pages::Repaint(page);
        Forget();
        WriteUserFile(kEnglish, L"[OPERATION]\r\nRC_STARTDOC=Begin\r\n");
        pages::Repaint(page);
        EXPECT_EQ(page.Text(1011), L"Begin");
        pages::Repaint(page);
        ExpectReads(1);
        sheet.PressCancel();
    });
}

void SetWriteTime(const wchar_t* file, WORD year) {
    const SYSTEMTIME time = {.wYear = year,
                             .wMonth = 3,
                             .wDayOfWeek = 0,
                             .wDay = 4,
                             .wHour = 5,
                             .wMinute = 6,
                             .wSecond = 7,
                             .wMilliseconds = 0};
    FILETIME written = {};
    ASSERT_TRUE(SystemTimeToFileTime(&time, &written));
    const HANDLE handle = ::CreateFileW((rig::UserFolder() / file).c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(SetFileTime(handle, nullptr, nullptr, &written));
    CloseHandle(handle);
}

TEST_F(LanguageFileReadingTest, ReadsAgainWhenTheFileHasAnotherTime) {
    WriteUserFile(kEnglish, L"[OPERATION]\r\nRC_STARTDOC=Begin\r\n");
    SetWriteTime(kEnglish, 2019);
    OpenSheet([this](UiDriver&, Sheet& sheet) {
        const Window page = sheet.SelectTab(L"Operation");
        EXPECT_EQ(page.Text(1011), L"Begin");
        pages::Repaint(page);
        Forget();
        WriteUserFile(L"later.tmp", L"[OPERATION]\r\nRC_STARTDOC=Start\r\n");
        SetWriteTime(L"later.tmp", 2020);
        pages::ReplaceUserFile(kEnglish, L"later.tmp");
        pages::Repaint(page);
        EXPECT_EQ(page.Text(1011), L"Start");
        ExpectReads(1);
        sheet.PressCancel();
    });
}

}  // namespace
