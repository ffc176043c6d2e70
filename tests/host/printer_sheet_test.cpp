// The properties of a printer as the host opens them: its own tabs, what the plug-in is told, and sheets that
// are open side by side.
#include <windows.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pages/page_fixture.h"
#include "pages/ui_thread.h"
#include "resources/resource.h"
#include "rig/test_desktop.h"
#include "virtual_printer.h"

namespace {

using Titles = std::vector<std::wstring>;

constexpr int kPrinterBox = 9107;
constexpr int kPortBox = 9108;

using pages::Bytes;

class PrinterSheetTest : public pages::PageTest {
  protected:
    SheetResult OpenPrinterSheet(const std::function<void(UiDriver&, Sheet&)>& script) {
        PluginHost& host = Host();
        SheetResult result;
        try {
            RunDriven([&] { result = host.OpenSheet(SheetKind::kPrinter); },
                      [&](UiDriver& ui) {
                          rig::JoinOwnDesktop();
                          Sheet sheet = ui.WaitForSheet();
                          script(ui, sheet);
                      });
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what();
        }
        return result;
    }

    static Titles HostTabs(const Sheet& sheet) {
        Titles titles = sheet.TabTitles();
        titles.resize(std::min<std::size_t>(titles.size(), 2));
        return titles;
    }
};

TEST_F(PrinterSheetTest, StartsWithTheHostsTabs) {
    HostSettings settings;
    settings.printer_name = L"Kitchen \u4E2D";
    settings.port_name = L"COM3:";
    StartHost(std::move(settings));
    OpenPrinterSheet([](UiDriver&, Sheet& sheet) {
        EXPECT_EQ(sheet.Title(), L"Kitchen \u4E2D Properties");
        EXPECT_EQ(HostTabs(sheet), (Titles{L"General", L"Ports"}));
        const Window general = sheet.SelectPage(0);
        EXPECT_EQ(general.Text(kPrinterBox), L"Kitchen \u4E2D");
        EXPECT_FALSE(general.HasControl(kPortBox));
        const Window ports = sheet.SelectPage(1);
        EXPECT_EQ(ports.Text(kPortBox), L"COM3:");
        EXPECT_FALSE(ports.HasControl(kPrinterBox));
        sheet.PressCancel();
    });
}

TEST_F(PrinterSheetTest, TellsHowItEnded) {
    EXPECT_TRUE(OpenPrinterSheet([](UiDriver&, Sheet& sheet) { sheet.PressOk(); }).kept);
    EXPECT_FALSE(OpenPrinterSheet([](UiDriver&, Sheet& sheet) { sheet.PressCancel(); }).kept);
}

TEST_F(PrinterSheetTest, AsksForTheItemsThatThePluginAdds) {
    Host();
    rig::TraceCapture trace;
    OpenPrinterSheet([](UiDriver&, Sheet& sheet) { sheet.PressCancel(); });
    rig::Lines lines = trace.TakeOwn();
    std::erase_if(lines, [](const std::wstring& line) { return line.find(L"PropertyPage") == line.npos; });
    EXPECT_EQ(lines,
              (rig::Lines{L"UI:  hrOEMPropertyPage(2) entry.\r\n", L"UI:  Invoke hrPrinterPropertyPage\r\n",
                          L"UI:  hrPrinterPropertyPage() requesting 0 number of items.\r\n",
                          L"UI:  hrOEMPropertyPage(2) entry.\r\n", L"UI:  Invoke hrPrinterPropertyPage\r\n",
                          L"UI:  hrPrinterPropertyPage() fill out 0 items.\r\n"}));
}

TEST_F(PrinterSheetTest, GivesThePluginPrinterAndNoSettings) {
    VirtualPrinter printer;
    HostSettings settings;
    settings.printer = printer.handle();
    PluginHost& host = StartHost(std::move(settings));
    const Bytes before = Record();
    OpenPrinterSheet([&](UiDriver&, Sheet& sheet) {
        const OEMCUIPPARAM& given = host.common_ui();
        EXPECT_EQ(given.cbSize, 120u);
        EXPECT_NE(given.poemuiobj, nullptr);
        EXPECT_EQ(given.hPrinter, printer.handle());
        EXPECT_STREQ(given.pPrinterName, L"KVM-R72");
        EXPECT_EQ(given.hModule, host.module());
        EXPECT_NE(given.hOEMHeap, nullptr);
        EXPECT_EQ(given.pPublicDM, nullptr);
        EXPECT_EQ(given.pOEMDM, nullptr);
        EXPECT_EQ(given.pDrvOptItems, nullptr);
        EXPECT_EQ(given.cDrvOptItems, 0u);
        EXPECT_NE(given.pOEMOptItems, nullptr);
        EXPECT_EQ(given.cOEMOptItems, 0u);
        const OEMUIPSPARAM& for_sheet = host.sheet_parameters();
        EXPECT_EQ(for_sheet.cbSize, 88u);
        EXPECT_EQ(for_sheet.poemuiobj, given.poemuiobj);
        EXPECT_EQ(for_sheet.hPrinter, printer.handle());
        EXPECT_STREQ(for_sheet.pPrinterName, L"KVM-R72");
        EXPECT_EQ(for_sheet.hModule, host.module());
        EXPECT_EQ(for_sheet.hOEMHeap, given.hOEMHeap);
        EXPECT_EQ(for_sheet.pPublicDM, nullptr);
        EXPECT_EQ(for_sheet.pOEMDM, nullptr);
        EXPECT_EQ(for_sheet.dwFlags, 0u);
        sheet.PressOk();
    });
    EXPECT_EQ(pages::Differences(before, Record()), "");
    EXPECT_EQ(host.sheet_reasons().front(), 5u) << "before initialisation";
    EXPECT_EQ(host.sheet_reasons().back(), 2u) << "destroyed";
    EXPECT_EQ(std::count(host.sheet_reasons().begin(), host.sheet_reasons().end(), 0u), 1);

    // The printing preferences get theirs as before.
    OpenSheet([&](UiDriver&, Sheet& sheet) {
        EXPECT_EQ(sheet.Title(), L"KVM-R72 Printing Preferences");
        EXPECT_EQ(host.common_ui().pOEMDM, host.record_bytes().data());
        EXPECT_EQ(host.common_ui().pPublicDM, &host.public_devmode());
        EXPECT_EQ(host.common_ui().cDrvOptItems, 4u);
        EXPECT_EQ(host.common_ui().pOEMOptItems, nullptr);
        EXPECT_EQ(host.sheet_parameters().pOEMDM, host.record_bytes().data());
        EXPECT_EQ(host.sheet_parameters().pPublicDM, &host.public_devmode());
        sheet.PressCancel();
    });
}

// The printing preferences, and from there the properties of the same printer and of another, one above the
// other.
TEST_F(PrinterSheetTest, OpensBesideOtherSheets) {
    VirtualPrinter printer;
    HostSettings settings;
    settings.printer = printer.handle();
    StartHost(settings);
    HostSettings other = settings;
    other.printer = printer.NewPrinter({.name = L"Kitchen", .port = L"LPT1:", .driver = L"KVM-R72"});
    other.printer_name = L"Kitchen";
    PluginHost properties(rig::PluginPath(), settings);
    PluginHost kitchen(rig::PluginPath(), other);
    EXPECT_EQ(properties.module(), Host().module()) << "one plug-in, with an object for each host";
    EXPECT_NE(&properties.plugin(), &Host().plugin());

    SheetResult properties_result;
    SheetResult kitchen_result;
    const std::function<void()> open_properties = [&] {
        properties_result = properties.OpenSheet(SheetKind::kPrinter);
    };
    const std::function<void()> open_kitchen = [&] {
        kitchen_result = kitchen.OpenSheet(SheetKind::kPrinter);
    };
    const pages::UiThread ui_thread;
    const SheetResult result = OpenSheet([&](UiDriver& ui, Sheet& preferences) {
        ui_thread.Start(open_properties);
        const Sheet first = ui.WaitForSheet(L"KVM-R72 Properties");
        ui_thread.Start(open_kitchen);
        const Sheet second = ui.WaitForSheet(L"Kitchen Properties");
        EXPECT_EQ(preferences.Title(), L"KVM-R72 Printing Preferences");
        EXPECT_TRUE(IsWindowEnabled(preferences.handle()) && IsWindowEnabled(first.handle()));
        EXPECT_EQ(HostTabs(first), (Titles{L"General", L"Ports"}));
        EXPECT_EQ(second.SelectPage(0).Text(kPrinterBox), L"Kitchen");
        EXPECT_EQ(first.SelectPage(0).Text(kPrinterBox), L"KVM-R72");
        EXPECT_EQ(preferences.SelectPage(0).Title(), L"Layout");
        EXPECT_EQ(kitchen.common_ui().hPrinter, other.printer);
        EXPECT_EQ(properties.common_ui().hPrinter, settings.printer);
        EXPECT_EQ(Host().common_ui().pOEMDM, Host().record_bytes().data());
        second.PressOk();
        EXPECT_TRUE(first.IsOpen());
        first.PressCancel();
        EXPECT_TRUE(preferences.IsOpen());
        preferences.PressOk();
    });
    EXPECT_TRUE(result.kept);
    EXPECT_TRUE(kitchen_result.kept);
    EXPECT_FALSE(properties_result.kept);
    EXPECT_TRUE(properties.GuardsIntact() && kitchen.GuardsIntact());
}

}  // namespace
