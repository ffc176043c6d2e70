// Which lines stay when less is traced: the plug-in's own sources are part of this program, because the level
// is no export.
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "base/platform.h"
#include "devmode/devmode_record.h"
#include "devmode/oemdev.h"
#include "devpages/download_page.h"
#include "devpages/font_page.h"
#include "devpages/version_page.h"
#include "docpages/barcode_1d_page.h"
#include "docpages/barcode_2d_page.h"
#include "docpages/tab_captions.h"
#include "intrface/oem_ui.h"
#include "intrface/win/sheet_context.h"
#include "printer/barcode_commands.h"
#include "resources/resource.h"
#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"

namespace {

using rig::Lines;

// A line is written while the level is below its bound.
constexpr std::int32_t kVerbose = 2;
constexpr std::int32_t kWarning = 4;
constexpr std::int32_t kError = 5;

struct Line {
    std::int32_t bound;
    std::wstring text;
};

class Severities : public testing::Test {
  protected:
    void TearDown() override { gDebugLevel = built_in_; }

    // What `call` writes at one level.
    Lines At(std::int32_t level, const std::function<void()>& call) {
        gDebugLevel = level;
        trace_.TakeOwn();
        call();
        return trace_.TakeOwn();
    }

    // `call` writes these lines, each at the levels below its bound.
    void ExpectWritten(const std::vector<Line>& lines, const std::function<void()>& call) {
        for (const std::int32_t level : {1, 2, 3, 4, 5}) {
            Lines expected;
            for (const Line& line : lines) {
                if (level < line.bound) {
                    expected.push_back(line.text);
                }
            }
            EXPECT_EQ(At(level, call), expected) << level;
        }
    }

    rig::TraceCapture trace_;
    rig::ComRef<IOemUI> object_{new (std::nothrow) IOemUI};
    const std::int32_t built_in_ = gDebugLevel;
};

TEST_F(Severities, InformationThatIsNotGivenIsAWarning) {
    DWORD answer = 0;
    DWORD needed = 0;
    ExpectWritten(
        {{kVerbose, L"UI:  IOemUI::GetInfo(2) entry.\r\r\n"},
         {kWarning, L"UI:  IOemUI::GetInfo() exit pcbNeeded is NULL! ERROR_INVALID_PARAMETER\r\r\n"}},
        [&] { object_->GetInfo(2, &answer, 4, &needed); });
    ExpectWritten(
        {{kVerbose, L"UI:  IOemUI::GetInfo(1) entry.\r\r\n"},
         {kWarning, L"UI:  IOemUI::GetInfo() exit pcbNeeded is NULL! ERROR_INVALID_PARAMETER\r\r\n"}},
        [&] { object_->GetInfo(1, &answer, 4, nullptr); });
    ExpectWritten({{kVerbose, L"UI:  IOemUI::GetInfo(1) entry.\r\r\n"},
                   {kWarning, L"UI:  IOemUI::GetInfo() exit insufficient buffer!\r\r\n"}},
                  [&] { object_->GetInfo(1, &answer, 3, &needed); });
    ExpectWritten({{kVerbose, L"UI:  IOemUI::GetInfo(4) entry.\r\r\n"},
                   {kWarning, L"UI:  IOemUI::GetInfo() exit mode not supported.\r\r\n"}},
                  [&] { object_->GetInfo(4, &answer, 4, &needed); });
    ExpectWritten({{kVerbose, L"UI:  IOemUI::GetInfo(3) entry.\r\r\n"},
                   {kVerbose, L"UI:  IOemUI::GetInfo() exit S_OK, (*pBuffer is 0x1).\r\r\n"}},
                  [&] { object_->GetInfo(3, &answer, 4, &needed); });
}

TEST_F(Severities, AnUnknownInterfaceIsAWarning) {
    ExpectWritten({{kVerbose, L"UI:  IOemUI:QueryInterface entry.\r\n\r\n"},
                   {kWarning, L"UI:  IOemUI:No Interface. Return NULL.\r\n"}},
                  [&] {
                      void* found = nullptr;
                      object_->QueryInterface(kIidPrintOemDriverUI, &found);
                  });
}

TEST_F(Severities, AnInvalidParameterIsAnErrorAndItsValuesAreVerbose) {
    ExpectWritten({{kVerbose, L"UI:  IOemUI:DevMode(7, 0) entry.\r\n"},
                   {kError, L"ERROR UI:  DevMode() ERROR_INVALID_PARAMETER.\r\n"},
                   {kVerbose, L"UI:  \tdwMode = 7, pOemDMParam = 0.\r\n"}},
                  [&] { object_->DevMode(7, nullptr); });
    ExpectWritten({{kVerbose, L"UI:  IOemUI:CommonUIProp entry.\r\n"},
                   {kVerbose, L"UI:  hrOEMPropertyPage(3) entry.\r\n"},
                   {kError, L"ERROR UI:  hrOEMPropertyPage() ERROR_INVALID_PARAMETER.\r\n"},
                   {kVerbose, L"UI:  \tdwMode = 3, pOEMUIParam = 0.\r\n"}},
                  [&] { object_->CommonUIProp(3, nullptr); });
}

TEST_F(Severities, ASheetWithoutItsBlockIsAnError) {
    ExpectWritten({{kVerbose, L"UI:  IOemUI:DocumentPropertySheets entry.\r\n"},
                   {kError, L"ERROR UI:  hrOEMDocumentPropertySheets() ERROR_INVALID_PARAMETER.\r\n"}},
                  [&] { object_->DocumentPropertySheets(nullptr, 0); });
    ExpectWritten({{kVerbose, L"UI:  IOemUI:DevicePropertySheets entry.\r\n"},
                   {kVerbose, L"UI:  hrOEMDevicePropertySheets(0, 0) entry\r\n"},
                   {kError, L"ERROR UI:  hrOEMDevicePropertySheets() ERROR_INVALID_PARAMETER.\r\n"}},
                  [&] { object_->DevicePropertySheets(nullptr, 0); });
}

TEST_F(Severities, AForeignRecordIsAWarningAndAnUnknownOneAnError) {
    OEMDEV in{};
    OEMDEV out{};
    SetDefaultOEMDev(&in);
    SetDefaultOEMDev(&out);
    ExpectWritten({{kError, L"ERROR UI:  ConvertOEMDevmode() invalid parameters.\r\n"}},
                  [&] { ConvertOEMDevmode(nullptr, &out); });
    in.dmOEMExtra.dwSignature = 0x12345678;
    ExpectWritten({{kWarning, L"UI:  Unknown DEVMODE signature, pOEMDMIn ignored.\r\n"}},
                  [&] { ConvertOEMDevmode(&in, &out); });
    const std::wstring unknown = L"ERROR UI:  Dump(POEMDEV) unknown private OEM DEVMODE.\r\n";
    ExpectWritten({{kError, unknown}}, [&] { Dump(&in); });
    ExpectWritten({{kError, unknown}}, [] { Dump(nullptr); });
    SetDefaultOEMDev(&in);
    in.dmOEMExtra.dwSize = 600;
    ExpectWritten({{kVerbose, L"UI:  Converting private OEM Devmode.\r\n"},
                   {kVerbose, L"UI:  pOEMDevIn:\r\n"},
                   {kError, unknown}},
                  [&] { ConvertOEMDevmode(&in, &out); });
}

TEST_F(Severities, DumpsAreVerbose) {
    OEMDEV record{};
    SetDefaultOEMDev(&record);
    EXPECT_EQ(At(1, [&] { Dump(&record); }).size(), 16u);
    EXPECT_EQ(At(2, [&] { Dump(&record); }), Lines{});

    OEMDMPARAM block{};
    EXPECT_EQ(At(1, [&] { object_->DevMode(OEMDM_SIZE, &block); }).size(), 11u);
    EXPECT_EQ(At(2, [&] { object_->DevMode(OEMDM_SIZE, &block); }), Lines{});

    PROPSHEETUI_INFO info{};
    info.Version = 0x0100;
    info.Reason = PROPSHEETUI_REASON_DESTROY;
    EXPECT_EQ(At(1, [&] { object_->DocumentPropertySheets(&info, 0); }).size(), 11u);
    EXPECT_EQ(At(2, [&] { object_->DocumentPropertySheets(&info, 0); }), Lines{});
}

TEST_F(Severities, APrinterSheetIsVerbose) {
    PROPSHEETUI_INFO info{};
    info.Version = 0x0100;
    info.Reason = PROPSHEETUI_REASON_INIT;
    EXPECT_EQ(At(1, [&] { object_->DevicePropertySheets(&info, 0); }).size(), 14u);
    EXPECT_EQ(At(2, [&] { object_->DevicePropertySheets(&info, 0); }), Lines{});
}

TEST_F(Severities, APageWithoutItsParameterIsAnError) {
    const HWND dialog = CreateWindowExW(0, L"#32770", L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr,
                                        GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(dialog, nullptr);
    const struct {
        DLGPROC procedure;
        std::wstring name;
    } pages[] = {{download_page::DevicePropPageProc, L"DevicePropPageProc"},
                 {SupportedFontPropPageProc, L"SupportedFontPropPageProc"},
                 {DeviceVersionPropPageProc, L"DeviceVersionPropPageProc"}};
    for (const auto& [procedure, name] : pages) {
        ExpectWritten({{kError, L"ERROR UI:  " + name + L" : GetWindowLongPtr Failed (0)\r\n"}},
                      [procedure = procedure, dialog] { procedure(dialog, WM_COMMAND, 0, 0); });
    }
    DestroyWindow(dialog);
}

// What the search traces goes with the level; the titles of the dialogs it looks at do not.
TEST_F(Severities, TitlesOfDialogsAreWrittenAtEveryLevel) {
    const HWND dialog = CreateWindowExW(0, L"#32770", L"Properties of a till", WS_OVERLAPPED, 0, 0, 10, 10,
                                        nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(dialog, nullptr);
    constexpr std::int32_t kAlways = 100;
    ExpectWritten({{kVerbose, L"UI:  EnumWindowsProc in\r\n"},
                   {kVerbose, L"UI:  EnumWindowsProc GetWindowText\r\n"},
                   {kAlways, L"Properties of a till"},
                   {kVerbose, L"UI:  EnumWindowsProc out\r\n"}},
                  [&] { EXPECT_TRUE(FindPrinterSheets(dialog, 0)); });
    DestroyWindow(dialog);
}

// Without a printer the job ends at its first call, which writes nothing.
TEST_F(Severities, TestPrints) {
    OEMDEV record = {};
    record.Barcode1D[0].bElementWidth = 3;
    record.Barcode2D[0].bType2D = kQrCode;
    OEMUIPSPARAM parameters = {};
    parameters.pOEMDM = &record;
    DocumentSheetContext context;
    context.lParamInit = &parameters;
    struct Page {
        DLGPROC procedure;
        int data;
        int print;
        std::vector<Line> lines;
    };
    const std::vector<Line> check = {
        {kVerbose, L"UI:  CheckBarcodeData() entry!\r\n"},
        {kVerbose, L"UI:  CheckBarcodeData() Idex = 0!\r\n"},
        {kVerbose, L"UI:  CheckBarcodeData() 00000000000000000000000!\r\n"},
        {kVerbose, L"UI:  CheckBarcodeData() 1111111111111111111111!\r\n"},
        {kVerbose, L"UI:  CheckBarcodeData() 22222222222222222!\r\n"},
    };
    Page pages[] = {{BarcodePropPageProc, IDC_BARCODE1D_DATA, IDC_BARCODE1D_PRINT, check},
                    {Barcode2DPropPageProc,
                     IDC_BARCODE2D_DATA,
                     IDC_BARCODE2D_PRINT,
                     {{kVerbose, L"UI:  CheckBarcodeData() entry!\r\n"},
                      {kVerbose, L"UI:  CheckBarcodeData() Idex = 17!\r\n"}}}};
    pages[0].lines.insert(pages[0].lines.begin(), {kVerbose, L"UI:  barcode() entry!\r\n"});
    pages[1].lines.insert(pages[1].lines.begin(), {kVerbose, L"UI:  bar2Dcode() entry!\r\n"});
    for (const Page& page : pages) {
        const HWND dialog = CreateWindowExW(0, L"#32770", L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr,
                                            GetModuleHandleW(nullptr), nullptr);
        ASSERT_NE(dialog, nullptr);
        CreateWindowExW(0, L"Edit", L"123456789012", WS_CHILD, 0, 0, 9, 9, dialog,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(page.data)), nullptr, nullptr);
        SetWindowLongPtrW(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(&context));
        ExpectWritten(page.lines, [&] {
            EXPECT_TRUE(
                page.procedure(dialog, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(page.print), BN_CLICKED), 0));
        });
        DestroyWindow(dialog);
    }
}

}  // namespace
