// The printer sheet: what the host's calls are answered with, the pages that it is given, what is stored for
// the printer's port, and where the texts come from.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>
#include <winspool.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <set>
#include <tuple>

#include "lone_printer_page.h"
#include "printer_fixture.h"
#include "rig/guarded_record.h"

namespace pages {
namespace {

using rig::Hex;
using rig::Lines;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::IsSupersetOf;

constexpr HRESULT kFailed = static_cast<HRESULT>(0x80004005);

// In the order of the tabs.
struct PageCase {
    int dialog;
    const wchar_t* title;
    const wchar_t* section;
    const wchar_t* title_key;
};
constexpr PageCase kPages[] = {
    {114, L"Utility", L"UTILITY", L"RC_UTILITYFORM"},
    {113, L"Download", L"DOWNLOAD", L"RC_DOWNLOADFORM"},
    {119, L"Font", L"FONT", L"RC_FONTFORM"},
    {105, L"Version", L"VERSION", L"RC_VERSIONFORM"},
};

using Titles = std::vector<std::wstring>;

Titles TitlesIn(const wchar_t* file) {
    Titles titles;
    for (const PageCase& page : kPages) {
        titles.push_back(SourceText(file, page.section, page.title_key));
    }
    return titles;
}

Titles TitlesOf(const FakeSheet& sheet) {
    Titles titles;
    for (const FakeSheet::Call& call : sheet.calls) {
        titles.push_back(call.title);
    }
    return titles;
}

// What is stored for a port is the name of the chosen language's value as text, of whose terminator one byte
// counts.
constexpr wchar_t kPortText[] = L"LANGUAGE_KVMR72";
const Bytes kPortBytes = {'L', 0, 'A', 0, 'N', 0, 'G', 0, 'U', 0, 'A', 0, 'G', 0, 'E', 0,
                          '_', 0, 'K', 0, 'V', 0, 'M', 0, 'R', 0, '7', 0, '2', 0, 0};

HRESULT Initialize(PluginHost& host, FakeSheet& sheet) {
    EXPECT_EQ(host.CommonUIProp(OEMCUIP_PRNPROP), S_OK);
    return host.plugin().DevicePropertySheets(&sheet.info, 0);
}

class DeviceSheetTest : public PrinterPageTest {
  protected:
    Titles TitlesNow() {
        FakeSheet sheet;
        EXPECT_EQ(Initialize(PrinterHost(), sheet), S_OK);
        return TitlesOf(sheet);
    }
};

const wchar_t kEntryLine[] = L"UI:  IOemUI:DevicePropertySheets entry.\r\n";

std::wstring CalledLine(const void* info, std::uint64_t parameter) {
    return L"UI:  hrOEMDevicePropertySheets(" + Hex(info) + L", " + Hex(parameter) + L") entry\r\n";
}

// Trace and parameters

TEST_F(DeviceSheetTest, TracesTheInitialisationInOrder) {
    PrinterHost();
    FakeSheet sheet;
    sheet.info.Result = 77;
    sheet.info.Flags = 3;
    sheet.info.UserData = 0xFFFFFFFFFFFFFFFF;
    const PROPSHEETUI_INFO& info = sheet.info;
    const Lines expected = {
        kEntryLine, CalledLine(&info, 0xABCD), L"pPSUIInfo:\r\n",
        L"\tcbSize          = " + std::to_wstring(sizeof(PROPSHEETUI_INFO)) + L"\r\n",
        L"\tVersion         = 0x100\r\n", L"\tFlags           = 0x3\r\n", L"\tReason          = 0\r\n",
        L"\thComPropSheet   = " + Hex(info.hComPropSheet) + L"\r\n",
        L"\tpfnComPropSheet = " + Hex(reinterpret_cast<std::uintptr_t>(info.pfnComPropSheet)) + L"\r\n",
        L"\tlParamInit      = " + Hex(static_cast<std::uint64_t>(info.lParamInit)) + L"\r\n",
        L"\tUserData        = 0xffffffff\r\n", L"\tResult          = 0x4d\r\n",
        L"UI:  initialize device property sheet\r\n",
        // FakeSheet's fourth handle, as far as the line tells it.
        L"UI:  hrOEMDevicePropertySheets() pfnComPropSheet returned 19.\r\n"};
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_PRNPROP), S_OK);
    rig::TraceCapture trace;
    SetLastError(1234);
    EXPECT_EQ(Host().plugin().DevicePropertySheets(&sheet.info, 0xABCD), S_OK);
    EXPECT_THAT(trace.TakeOwn(), ElementsAreArray(expected));
}

// The sheet is described before its pages are added, and the line of the first stands between.
TEST_F(DeviceSheetTest, TracesBeforeItAddsPages) {
    PrinterHost();
    FakeSheet sheet;
    rig::TraceCapture trace;
    Lines before;
    sheet.answer = [&](std::size_t n) {
        if (n == 0) {
            before = trace.TakeOwn();
        }
        return LONG_PTR{-2};
    };
    EXPECT_EQ(Initialize(Host(), sheet), S_OK);
    ASSERT_FALSE(before.empty());
    EXPECT_EQ(before.back(), L"UI:  initialize device property sheet\r\n");
    EXPECT_THAT(trace.TakeOwn(),
                ElementsAre(L"UI:  hrOEMDevicePropertySheets() pfnComPropSheet returned -2.\r\n"));
}

TEST_F(DeviceSheetTest, RefusesABlockOfAnotherVersion) {
    for (const WORD version : {WORD{0x0101}, WORD{0x00FF}, WORD{0}, WORD{0x0001}, WORD{0xFFFF}}) {
        SCOPED_TRACE(version);
        FakeSheet sheet;
        sheet.info.Version = version;
        sheet.info.Result = 0xAB;
        PrinterHost();
        rig::TraceCapture trace;
        SetLastError(1234);
        EXPECT_EQ(Host().plugin().DevicePropertySheets(&sheet.info, 5), kFailed);
        EXPECT_EQ(GetLastError(), 87u);
        EXPECT_THAT(trace.TakeOwn(),
                    ElementsAre(kEntryLine, CalledLine(&sheet.info, 5),
                                L"ERROR UI:  hrOEMDevicePropertySheets() ERROR_INVALID_PARAMETER.\r\n"));
        EXPECT_THAT(sheet.calls, IsEmpty());
        EXPECT_EQ(sheet.info.Result, 0xABu);
        EXPECT_THAT(printer().Log(), IsEmpty());
    }
    EXPECT_EQ(rig::LanguageValue(L"USB001"), std::nullopt);
}

// Only the initialisation asks for the printer, stores something or adds pages.
TEST_F(DeviceSheetTest, OtherReasonsTouchNothing) {
    PrinterHost();
    for (const WORD reason : {WORD{1}, WORD{2}, WORD{3}, WORD{4}, WORD{5}, WORD{9}}) {
        FakeSheet sheet(reason);
        EXPECT_EQ(Host().plugin().DevicePropertySheets(&sheet.info, 0), S_OK);
        EXPECT_THAT(sheet.calls, IsEmpty());
    }
    EXPECT_THAT(printer().Log(), IsEmpty());
    EXPECT_EQ(rig::LanguageValue(L"USB001"), std::nullopt);
}

// Pages

TEST_F(DeviceSheetTest, DescribesItsPages) {
    FakeSheet sheet;
    ASSERT_EQ(Initialize(PrinterHost(), sheet), S_OK);
    EXPECT_THAT(sheet.Templates(), ElementsAre(114, 113, 119, 105));
    ASSERT_EQ(sheet.calls.size(), 4u) << "the host is asked for nothing else";
    std::set<std::uint64_t> procedures;
    std::set<std::uint64_t> parameters;
    std::set<HANDLE> contexts;
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
        EXPECT_EQ(At<DWORD>(page, kFlagsOffset), 0x4008u) << "title and activation context";
        EXPECT_EQ(At<HMODULE>(page, kInstanceOffset), Host().module());
        EXPECT_EQ(At<std::uint64_t>(page, kTemplateOffset), static_cast<std::uint64_t>(expected.dialog));
        for (const std::size_t offset :
             {kIconOffset, kCallbackOffset, kReferencesOffset, kHeaderTitleOffset, kHeaderSubTitleOffset}) {
            EXPECT_EQ(At<std::uint64_t>(page, offset), 0u) << offset;
        }
        contexts.insert(At<HANDLE>(page, kContextOffset));
        procedures.insert(At<std::uint64_t>(page, kProcedureOffset));
        parameters.insert(At<std::uint64_t>(page, kParameterOffset));
    }
    EXPECT_EQ(procedures.size(), std::size(kPages)) << "each page has a procedure of its own";
    EXPECT_EQ(procedures.count(0), 0u);
    EXPECT_EQ(parameters.size(), 1u) << "all pages have the context of the sheet";
    ASSERT_EQ(contexts.size(), 1u);
    EXPECT_NE(*contexts.begin(), INVALID_HANDLE_VALUE);
    EXPECT_NE(*contexts.begin(), nullptr);
}

// The document side's pages carry the same context, which is made once.
TEST_F(DeviceSheetTest, SharesTheActivationContextWithTheDocumentSheet) {
    FakeSheet printer_sheet;
    ASSERT_EQ(Initialize(PrinterHost(), printer_sheet), S_OK);
    FakeSheet document_sheet;
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    ASSERT_EQ(Host().plugin().DocumentPropertySheets(&document_sheet.info, 0), S_OK);
    EXPECT_EQ(At<HANDLE>(printer_sheet.PageOf(113).page, kContextOffset),
              At<HANDLE>(document_sheet.PageOf(105).page, kContextOffset));
}

// Sheet, last page, the host's callback, its common parameters, its helper. The last page is known as soon as
// the host has given its handle.
TEST_F(DeviceSheetTest, FillsTheContextPageByPage) {
    FakeSheet sheet;
    std::vector<void*> last_pages;
    sheet.answer = [&](std::size_t n) {
        void* const* fields = At<void* const*>(sheet.calls[n].page, kParameterOffset);
        EXPECT_EQ(fields[0], &sheet);
        EXPECT_EQ(fields[2], reinterpret_cast<void*>(sheet.info.pfnComPropSheet));
        last_pages.push_back(fields[1]);
        return 0x5000 + static_cast<LONG_PTR>(n);
    };
    ASSERT_EQ(Initialize(PrinterHost(), sheet), S_OK);
    EXPECT_THAT(last_pages, ElementsAre(INVALID_HANDLE_VALUE, reinterpret_cast<void*>(0x5000),
                                        reinterpret_cast<void*>(0x5001), reinterpret_cast<void*>(0x5002)));
    void* const* fields = At<void* const*>(sheet.PageOf(114).page, kParameterOffset);
    EXPECT_EQ(fields[1], reinterpret_cast<void*>(0x5003));
    EXPECT_EQ(fields[3], &Host().common_ui());
    EXPECT_EQ(fields[4], static_cast<IPrintOemDriverUI*>(&Host().helper()));
    EXPECT_EQ(sheet.info.Result, 0x5003u);
}

TEST_F(DeviceSheetTest, ResultsInTheHandleOfTheLastPage) {
    FakeSheet sheet;
    ASSERT_EQ(Initialize(PrinterHost(), sheet), S_OK);
    EXPECT_EQ(sheet.info.Result, static_cast<ULONG_PTR>(FakeSheet::kFirstPage) + 3);

    // A host that refuses every page, or the last.
    for (const std::size_t refused : {std::size_t{0}, std::size_t{3}}) {
        FakeSheet refusing;
        refusing.info.Result = 77;
        refusing.answer = [&](std::size_t n) { return n < refused ? LONG_PTR{0x5000} : LONG_PTR{-1}; };
        EXPECT_EQ(Initialize(Host(), refusing), S_OK);
        EXPECT_THAT(refusing.Templates(), ElementsAre(114, 113, 119, 105)) << "each is offered";
        EXPECT_EQ(refusing.info.Result, static_cast<ULONG_PTR>(-1));
        void* const* fields = At<void* const*>(refusing.PageOf(114).page, kParameterOffset);
        EXPECT_EQ(fields[1], INVALID_HANDLE_VALUE);
    }

    FakeSheet without_callback;
    without_callback.info.pfnComPropSheet = nullptr;
    without_callback.info.Result = 77;
    EXPECT_EQ(Initialize(Host(), without_callback), S_OK);
    EXPECT_EQ(without_callback.info.Result, 0u);
}

// Language

TEST_F(DeviceSheetTest, KeepsItsOrderInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        FakeSheet sheet;
        ASSERT_EQ(Initialize(PrinterHost(), sheet), S_OK);
        EXPECT_THAT(sheet.Templates(), ElementsAre(114, 113, 119, 105));
        EXPECT_EQ(TitlesOf(sheet), TitlesIn(file));
        OpenPrinterSheet([&](UiDriver&, Sheet& real) {
            Titles expected = {L"General", L"Ports"};
            const Titles own = TitlesIn(file);
            expected.insert(expected.end(), own.begin(), own.end());
            EXPECT_EQ(real.TabTitles(), expected);
            real.PressCancel();
        });
    }
    EXPECT_THAT(Host().sheet_reasons(), IsSupersetOf({WORD{0}, WORD{1}, WORD{2}}));
}

TEST_F(DeviceSheetTest, CutsLongTitles) {
    PrinterHost();
    std::wstring file;
    for (const PageCase& page : kPages) {
        file += std::wstring(L"[") + page.section + L"]\r\n" + page.title_key + L"=" + page.title +
                L" abcdefghijklmnopqrstuvwxyz\r\n";
    }
    WriteUserFile(kEnglish, file);
    EXPECT_THAT(TitlesNow(), ElementsAre(L"Utility abcdefghijk", L"Download abcdefghij",
                                         L"Font abcdefghijklmn", L"Version abcdefghijk"));
}

TEST_F(DeviceSheetTest, FollowsTheRegistryFromSheetToSheet) {
    EXPECT_THAT(TitlesNow(), ElementsAre(L"Utility", L"Download", L"Font", L"Version"));
    ChooseLanguage(kSimplifiedChinese);
    EXPECT_EQ(TitlesNow(), TitlesIn(kSimplifiedChinese));
    ChooseLanguage(kTraditionalChinese);
    EXPECT_EQ(TitlesNow(), TitlesIn(kTraditionalChinese));
    WriteUserFile(kEnglish, L"[UTILITY]\r\nRC_UTILITYFORM=From the file\r\n");
    const Titles from_file = {L"From the file", L"Download", L"Font", L"Version"};
    rig::RemoveLanguageKey();
    EXPECT_EQ(TitlesNow(), from_file) << "no key";
    EXPECT_FALSE(rig::LanguageKeyExists()) << "nor is one made";
    rig::CreateLanguageKey();
    EXPECT_EQ(TitlesNow(), from_file) << "no value";
    ChooseLanguage(kSimplifiedChinese);
    EXPECT_EQ(TitlesNow(), TitlesIn(kSimplifiedChinese));
    RemoveAllLanguageFiles();
    EXPECT_THAT(TitlesNow(), ElementsAre(L"Utility", L"Download", L"Font", L"Version"));
}

// The real sheet

// Nothing on this side has a place in the record.
TEST_F(DeviceSheetTest, LeavesTheRecordAsItIs) {
    PrinterHost();
    const Bytes odd =
        FilledRecord([](std::size_t offset) { return static_cast<std::uint8_t>(offset * 7 + 131); });
    SetRecord(odd);
    const DEVMODEW public_before = Host().public_devmode();
    for (const bool is_kept : {true, false}) {
        OpenPrinterSheet([&](UiDriver&, Sheet& sheet) {
            for (const PrinterTab tab : {kUtilityTab, kDownloadTab, kFontTab, kVersionTab}) {
                Repaint(SelectPage(sheet, tab));
                EXPECT_FALSE(sheet.IsApplyEnabled());
            }
            if (is_kept) {
                sheet.PressOk();
            } else {
                sheet.PressCancel();
            }
        });
        EXPECT_EQ(Differences(odd, Record()), "");
    }
    EXPECT_EQ(std::memcmp(&public_before, &Host().public_devmode(), sizeof public_before), 0);
    EXPECT_THAT(printer().Jobs(), IsEmpty());
    EXPECT_THAT(boxes_, IsEmpty());
}

// Memory

// The plug-in's own heap, from before it is loaded.
class DeviceSheetMemoryTest : public DeviceSheetTest {
  protected:
    void SetUp() override {
        DeviceSheetTest::SetUp();
        hooks_.On("msvcrt.dll", "malloc", static_cast<void*(WINAPI*)(std::size_t)>(&std::malloc),
                  [this](auto original, std::size_t size) -> void* {
                      ++allocations_;
                      void* const block = allocations_ == failing_ ? nullptr : original(size);
                      live_ += block != nullptr ? 1 : 0;
                      return block;
                  });
        hooks_.On("msvcrt.dll", "free", static_cast<void(WINAPI*)(void*)>(&std::free),
                  [this](auto original, void* block) {
                      live_ -= block != nullptr ? 1 : 0;
                      original(block);
                  });
        hooks_.On("KERNEL32.dll", "GlobalAlloc", &GlobalAlloc,
                  [this](auto original, UINT flags, SIZE_T size) {
                      const HGLOBAL block = original(flags, size);
                      ++global_blocks_;
                      return block;
                  });
        hooks_.On("KERNEL32.dll", "GlobalFree", &GlobalFree, [this](auto original, HGLOBAL block) {
            --global_blocks_;
            return original(block);
        });
        PrinterHost();
        for (const char* function : {"malloc", "free", "GlobalAlloc", "GlobalFree"}) {
            ASSERT_GE(hooks_.Bound(function), 1) << function;
        }
    }

    static constexpr int kNever = -1;
    int failing_ = kNever;  // the allocation that fails, counted from 1
    int allocations_ = 0;
    int live_ = 0;
    int global_blocks_ = 0;
};

// Each allocation in turn. The sheet opens with all pages or with the host's own alone.
TEST_F(DeviceSheetMemoryTest, OpensWithoutMemory) {
    ChooseLanguage(kSimplifiedChinese);
    bool is_reached = true;
    int without_pages = 0;
    for (int failing = 1; is_reached && failing < 10000; ++failing) {
        SCOPED_TRACE(failing);
        // So that the language file is read each time.
        ChooseLanguage(kEnglish);
        TitlesNow();
        ChooseLanguage(kSimplifiedChinese);
        FakeSheet sheet;
        sheet.info.Result = 77;
        ASSERT_EQ(Host().CommonUIProp(OEMCUIP_PRNPROP), S_OK);
        allocations_ = 0;
        failing_ = failing;
        const HRESULT result = Host().plugin().DevicePropertySheets(&sheet.info, 0);
        is_reached = allocations_ >= failing;
        failing_ = kNever;
        EXPECT_EQ(result, S_OK);
        EXPECT_EQ(global_blocks_, 0);
        if (sheet.calls.empty()) {
            EXPECT_EQ(sheet.info.Result, 0u);
            ++without_pages;
        } else {
            EXPECT_THAT(sheet.Templates(), ElementsAre(114, 113, 119, 105));
            EXPECT_EQ(sheet.info.Result, static_cast<ULONG_PTR>(FakeSheet::kFirstPage) + 3);
        }
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(without_pages, 0);
    EXPECT_EQ(TitlesNow(), TitlesIn(kSimplifiedChinese));
}

TEST_F(DeviceSheetMemoryTest, LeavesNothingBehind) {
    int after_first = 0;
    for (int opening = 0; opening < 100; ++opening) {
        OpenPrinterSheet([&](UiDriver&, Sheet& sheet) {
            for (const PrinterTab tab : {kUtilityTab, kDownloadTab, kFontTab, kVersionTab}) {
                SelectPage(sheet, tab);
            }
            sheet.PressCancel();
        });
        EXPECT_EQ(global_blocks_, 0);
        if (opening == 0) {
            after_first = live_;
        }
    }
    EXPECT_EQ(live_, after_first);
}

// The printer's port

// A spooler in the system's place, which describes one printer as the test says.
class PrinterPortTest : public PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        hooks_.On("WINSPOOL.DRV", "GetPrinterW", &GetPrinterW,
                  [this](auto, HANDLE printer, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
                      calls_.push_back("ask " + std::to_string(level) + " " + std::to_string(size));
                      EXPECT_EQ(printer, kPrinter);
                      EXPECT_EQ(buffer == nullptr, size == 0);
                      *needed = told_;
                      if (size == 0 || refuses_) {
                          SetLastError(size == 0 ? ERROR_INSUFFICIENT_BUFFER : ERROR_ACCESS_DENIED);
                          return FALSE;
                      }
                      EXPECT_EQ(size, told_);
                      EXPECT_TRUE(std::all_of(buffer, buffer + size, [](BYTE value) { return value == 0; }));
                      if (fill_) {
                          fill_(buffer, size);
                      }
                      return TRUE;
                  });
        hooks_.On("KERNEL32.dll", "GlobalAlloc", &GlobalAlloc,
                  [this](auto original, UINT flags, SIZE_T size) -> HGLOBAL {
                      calls_.push_back("allocate " + std::to_string(size));
                      EXPECT_EQ(flags & (GMEM_ZEROINIT | GMEM_MOVEABLE), UINT{GMEM_ZEROINIT});
                      if (refuses_memory_) {
                          return nullptr;
                      }
                      // With nothing behind it, so that a look past its end is a crash.
                      block_ = std::make_unique<rig::GuardedRecord>(size);
                      static_cast<void>(original);
                      return block_->data();
                  });
        hooks_.On("KERNEL32.dll", "GlobalFree", &GlobalFree, [this](auto original, HGLOBAL block) {
            if (block_ != nullptr && block == block_->data()) {
                calls_.emplace_back("free");
                EXPECT_TRUE(block_->Intact());
                block_.reset();
                return HGLOBAL{nullptr};
            }
            return original(block);
        });
        hooks_.On("ADVAPI32.dll", "RegSetValueExW", &RegSetValueExW,
                  [this](auto original, HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* bytes,
                         DWORD size) {
                      if (is_opening_) {
                          written_.emplace_back(name);
                          calls_.emplace_back("write");
                          EXPECT_EQ(type, DWORD{REG_SZ});
                          EXPECT_EQ(Bytes(bytes, bytes + size), kPortBytes);
                      }
                      return original(key, name, reserved, type, bytes, size);
                  });
        hooks_.On("ADVAPI32.dll", "RegOpenKeyExW", &RegOpenKeyExW,
                  [this](auto original, auto... arguments) -> LONG {
                      return refuses_key_ ? ERROR_ACCESS_DENIED : original(arguments...);
                  });
        HostSettings settings;
        settings.printer = kPrinter;
        StartHost(settings);
        for (const char* function : {"GetPrinterW", "GlobalAlloc", "GlobalFree", "RegSetValueExW"}) {
            ASSERT_EQ(hooks_.Bound(function), 1) << function;
        }
    }

    void TearDown() override {
        EXPECT_EQ(block_, nullptr);
        PageTest::TearDown();
    }

    // A description with this port behind its structure.
    void Describe(const std::wstring& port) {
        told_ = static_cast<DWORD>(sizeof(PRINTER_INFO_2W) + (port.size() + 1) * sizeof(wchar_t));
        fill_ = [port](BYTE* buffer, DWORD) {
            auto* const text = reinterpret_cast<wchar_t*>(buffer + sizeof(PRINTER_INFO_2W));
            port.copy(text, port.size());
            reinterpret_cast<PRINTER_INFO_2W*>(buffer)->pPortName = text;
        };
    }

    // Opens a sheet, which has its pages whatever becomes of the port.
    void Open() {
        calls_.clear();
        written_.clear();
        FakeSheet sheet;
        sheet.answer = [this](std::size_t) {
            calls_.emplace_back("add");
            return LONG_PTR{5};
        };
        is_opening_ = true;
        EXPECT_EQ(Initialize(Host(), sheet), S_OK);
        is_opening_ = false;
        EXPECT_THAT(sheet.Templates(), ElementsAre(114, 113, 119, 105));
        EXPECT_EQ(sheet.info.Result, 5u);
    }

    // The port counts as empty: its value is the key's own.
    void ExpectNoPort() {
        Open();
        EXPECT_THAT(written_, ElementsAre(L""));
        EXPECT_EQ(rig::LanguageValue(L""), kPortText);
        rig::RemoveLanguageKey();
        ChooseLanguage(kEnglish);
    }

    static inline const HANDLE kPrinter = reinterpret_cast<HANDLE>(std::uintptr_t{0x1234567890});
    DWORD told_ = 0;  // bytes that the description needs
    std::function<void(BYTE* buffer, DWORD size)> fill_;
    bool refuses_ = false;
    bool refuses_memory_ = false;
    bool refuses_key_ = false;
    std::vector<std::string> calls_;
    std::vector<std::wstring> written_;
    rig::ImportHooks hooks_;

  private:
    std::unique_ptr<rig::GuardedRecord> block_;
    bool is_opening_ = false;
};

TEST_F(PrinterPortTest, StoresItsValueBesideTheLanguageEachTime) {
    Describe(L"USB001");
    ChooseLanguage(kSimplifiedChinese);
    const std::string size = std::to_string(told_);
    for (int opening = 0; opening < 2; ++opening) {
        Open();
        EXPECT_THAT(calls_, ElementsAre("ask 2 0", "allocate " + size, "ask 2 " + size, "write", "free",
                                        "add", "add", "add", "add"));
        EXPECT_THAT(written_, ElementsAre(L"USB001"));
        EXPECT_EQ(rig::LanguageValue(L"USB001"), kPortText);
        EXPECT_EQ(rig::LanguageValue(L"LANGUAGE_KVMR72"), kSimplifiedChinese);
        rig::SetLanguageValue(L"USB001", L"something else");
    }
}

TEST_F(PrinterPortTest, EachPortHasAValue) {
    for (const wchar_t* port : {L"LPT1:", L"192.168.0.7", L"\\\\server\\till 1", L"\u6536\u94F6\u53F0"}) {
        Describe(port);
        Open();
        EXPECT_THAT(written_, ElementsAre(port));
        EXPECT_EQ(rig::LanguageValue(port), kPortText);
    }
    const std::wstring long_port(10000, L'x');
    Describe(long_port);
    Open();
    EXPECT_THAT(written_, ElementsAre(long_port));
}

TEST_F(PrinterPortTest, IsEmptyWhereTheSpoolerDoesNotTell) {
    // The first call: no size, one that holds no description, one that no description has.
    for (const DWORD size : {DWORD{0}, DWORD{1}, DWORD{sizeof(PRINTER_INFO_2W) - 1}, DWORD{0xFFFFFFFF}}) {
        SCOPED_TRACE(size);
        told_ = size;
        ExpectNoPort();
        EXPECT_THAT(calls_, ElementsAre("ask 2 0", "write", "add", "add", "add", "add"));
    }
    // The second call, and the memory for it.
    Describe(L"USB001");
    refuses_ = true;
    ExpectNoPort();
    EXPECT_EQ(calls_.at(4), "free");
    refuses_ = false;
    refuses_memory_ = true;
    ExpectNoPort();
    EXPECT_EQ(calls_.size(), 7u);
    refuses_memory_ = false;
    Describe(L"");
    ExpectNoPort();
}

// What the spooler says is not trusted: a text lies in its block and ends there.
TEST_F(PrinterPortTest, IsEmptyWhereItsNameIsNotInTheDescription) {
    static const wchar_t kElsewhere[] = L"elsewhere";
    const auto place = [this](const std::function<void*(BYTE * buffer, DWORD size)>& where, DWORD extra) {
        told_ = sizeof(PRINTER_INFO_2W) + extra;
        fill_ = [where](BYTE* buffer, DWORD size) {
            std::fill(buffer + sizeof(PRINTER_INFO_2W), buffer + size, BYTE{'x'});
            reinterpret_cast<PRINTER_INFO_2W*>(buffer)->pPortName =
                static_cast<wchar_t*>(where(buffer, size));
        };
        ExpectNoPort();
    };
    place([](BYTE*, DWORD) { return nullptr; }, 20);
    place([](BYTE*, DWORD) { return const_cast<wchar_t*>(kElsewhere); }, 20);
    place([](BYTE*, DWORD) { return reinterpret_cast<void*>(std::uintptr_t{8}); }, 20);
    place([](BYTE*, DWORD) { return reinterpret_cast<void*>(~std::uintptr_t{0}); }, 20);
    place([](BYTE* buffer, DWORD) { return buffer - 2; }, 20);
    place([](BYTE* buffer, DWORD size) { return buffer + size; }, 20);
    place([](BYTE* buffer, DWORD size) { return buffer + size + 64; }, 20);
    // Without an end: a whole text, the last unit, half of it.
    place([](BYTE* buffer, DWORD) { return buffer + sizeof(PRINTER_INFO_2W); }, 20);
    place([](BYTE* buffer, DWORD size) { return buffer + size - 2; }, 20);
    place([](BYTE* buffer, DWORD size) { return buffer + size - 1; }, 20);
    place([](BYTE* buffer, DWORD size) { return buffer + size - 1; }, 21);
}

TEST_F(PrinterPortTest, SpeaksEnglishWithoutTheKey) {
    ChooseLanguage(kSimplifiedChinese);
    Describe(L"USB001");
    refuses_key_ = true;
    FakeSheet sheet;
    EXPECT_EQ(Initialize(Host(), sheet), S_OK);
    refuses_key_ = false;
    EXPECT_EQ(TitlesOf(sheet), TitlesIn(kEnglish));
    EXPECT_EQ(rig::LanguageValue(L"USB001"), std::nullopt);
}

// A port may have any name, the language's own value included: the language was read before.
TEST_F(PrinterPortTest, IsStoredAfterTheLanguageWasRead) {
    ChooseLanguage(kTraditionalChinese);
    Describe(L"LANGUAGE_KVMR72");
    FakeSheet sheet;
    EXPECT_EQ(Initialize(Host(), sheet), S_OK);
    EXPECT_EQ(TitlesOf(sheet), TitlesIn(kTraditionalChinese));
    EXPECT_EQ(rig::LanguageValue(L"LANGUAGE_KVMR72"), kPortText);
}

// With the host's virtual printer and its real sheet.
TEST_F(DeviceSheetTest, StoresThePortOfTheHostsPrinter) {
    const HANDLE kitchen = printer().NewPrinter({.name = L"Kitchen", .port = L"COM3:"});
    OpenPrinterSheet([](UiDriver&, Sheet& sheet) { sheet.PressCancel(); });
    EXPECT_EQ(rig::LanguageValue(L"USB001"), kPortText);
    EXPECT_EQ(rig::LanguageValue(L"COM3:"), std::nullopt);
    const std::vector<std::string> log = printer().Log();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_TRUE(log[0].starts_with("GetPrinterW(printer, 2, null of 0 bytes) -> FALSE, error 122")) << log[0];
    EXPECT_TRUE(log[1].starts_with("GetPrinterW(printer, 2, buffer of ")) << log[1];
    EXPECT_NE(log[1].find(" -> "), std::string::npos);
    EXPECT_EQ(log[1].find("FALSE"), std::string::npos);

    HostSettings settings;
    settings.printer = kitchen;
    StartHost(settings);
    FakeSheet sheet;
    EXPECT_EQ(Initialize(Host(), sheet), S_OK);
    EXPECT_EQ(rig::LanguageValue(L"COM3:"), kPortText);
    for (const int failing : {1, 2}) {
        rig::RemoveLanguageKey();
        rig::CreateLanguageKey();
        printer().FailCall(failing, ERROR_INVALID_HANDLE);
        FakeSheet again;
        EXPECT_EQ(Initialize(Host(), again), S_OK);
        EXPECT_EQ(rig::LanguageValue(L"COM3:"), std::nullopt);
        EXPECT_EQ(again.calls.size(), 4u);
    }
}

}  // namespace
}  // namespace pages
