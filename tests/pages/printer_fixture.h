// What the tests of the printer side share: the printer properties around a virtual printer, and a record of
// the message boxes that its pages show.
//
//   class UtilityPageTest : public pages::PrinterPageTest {};
//
//   TEST_F(UtilityPageTest, PrintsTheSelfTest) {
//       OpenPrinterSheet([&](UiDriver&, Sheet& sheet) {
//           SelectPage(sheet, kUtilityTab).Click(1036);
//       });
//       EXPECT_EQ(printer().Jobs().size(), 1u);
//   }
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "page_fixture.h"
#include "rig/import_hooks.h"
#include "virtual_printer.h"

namespace pages {

// The plug-in's pages are the last four of the sheet.
enum PrinterTab { kUtilityTab, kDownloadTab, kFontTab, kVersionTab };
constexpr int kPrinterTabCount = 4;

// A page of the plug-in's, brought to the front.
inline Window SelectPage(const Sheet& sheet, PrinterTab tab) {
    return sheet.SelectPage(sheet.TabCount() - kPrinterTabCount + tab);
}

struct ShownBox {
    HWND owner;
    std::wstring title;
    std::wstring text;
    UINT type;
};

class PrinterPageTest : public PageTest {
  protected:
    // Made before the plug-in is loaded: its calls of the spooler lead to the virtual printer.
    void SetUp() override {
        PageTest::SetUp();
        hooks_.On("USER32.dll", "MessageBoxW", &MessageBoxW,
                  [this](auto original, HWND owner, LPCWSTR text, LPCWSTR title, UINT type) {
                      boxes_.push_back({owner, title, text, type});
                      if (on_box_) {
                          on_box_();
                      }
                      return shows_boxes_ ? original(owner, text, title, type) : IDOK;
                  });
        printer_ = std::make_unique<VirtualPrinter>();
    }

    void TearDown() override {
        StopHost();
        printer_.reset();
        PageTest::TearDown();
    }

    VirtualPrinter& printer() { return *printer_; }

    // The host, with the virtual printer behind it; the first call loads the plug-in.
    PluginHost& PrinterHost() {
        if (!is_started_) {
            is_started_ = true;
            HostSettings settings;
            settings.printer = printer_->handle();
            StartHost(std::move(settings));
        }
        return Host();
    }

    SheetResult OpenPrinterSheet(const std::function<void(UiDriver&, Sheet&)>& script) {
        PrinterHost();
        return OpenSheet(script, SheetKind::kPrinter);
    }

    // Message boxes so far. They do not open, and count as answered with OK, unless `shows_boxes_` is set.
    std::vector<ShownBox> boxes_;
    bool shows_boxes_ = false;
    // Runs in place of the box, or before it.
    std::function<void()> on_box_;
    // For hooks of a test's own, set before the plug-in is loaded.
    rig::ImportHooks hooks_;

  private:
    std::unique_ptr<VirtualPrinter> printer_;
    bool is_started_ = false;
};

}  // namespace pages
