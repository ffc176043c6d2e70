// Presses the buttons of the printer sheet that print, on a printer of the system. The printer and the file
// to download are named by real_spooler.py, which compares what arrives.
#include <windows.h>

#include <gtest/gtest.h>

#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "pages/page_fixture.h"
#include "resources/resource.h"
#include "rig/test_desktop.h"
#include "system_printer.h"

namespace {

std::wstring Named(const wchar_t* variable) {
    wchar_t value[1024] = {};
    EXPECT_NE(GetEnvironmentVariableW(variable, value, static_cast<DWORD>(std::size(value))), 0u)
        << "run by real_spooler.py";
    return value;
}

class RealSpoolerTest : public pages::PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        HostSettings settings;
        settings.printer_name = Named(L"KVMR72_PRINTER");
        printer_.emplace(settings.printer_name);
        settings.printer = printer_->handle();
        StartHost(std::move(settings));
    }

  private:
    std::optional<SystemPrinter> printer_;
};

// The pages tell nobody whether a job went through.
TEST_F(RealSpoolerTest, PrintsFromThePrinterSheet) {
    const std::wstring firmware = Named(L"KVMR72_FIRMWARE");
    RunDriven([&] { Host().OpenSheet(SheetKind::kPrinter); },
              [&](UiDriver& ui) {
                  rig::JoinOwnDesktop();
                  const Sheet sheet = ui.WaitForSheet();
                  sheet.SelectTab(L"Utility").Click(IDC_UTILITY_SELF_TEST);
                  const Window download = sheet.SelectTab(L"Download");
                  download.TypeText(IDC_DOWNLOAD_PATH, firmware);
                  download.Click(IDC_DOWNLOAD_SEND);
                  sheet.PressCancel();
              });
}

}  // namespace
