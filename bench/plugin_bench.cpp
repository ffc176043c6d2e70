// What the plug-in costs the program that prints: attaching the DLL, assembling and opening both sheets,
// showing and repainting their pages, switching the language, previews, test prints, downloads. Beside it,
// in the same run, what a single profile call costs and what loading every text with one such call a key
// would; the last column is the ratio to that.
//
//   plugin_bench PLUGIN_DLL LANGUAGE_FILE BITMAP
//   plugin_bench PLUGIN_DLL LANGUAGE_FILE          only the list of fonts
#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "document_pages_bench.h"
#include "driven_sheet.h"
#include "logo_page_bench.h"
#include "measure.h"
#include "plugin_host.h"
#include "printer_pages_bench.h"
#include "ui_driver.h"
#include "virtual_printer.h"

namespace {

// The texts of one document sheet with all its pages, which a profile call a key would have to fetch.
constexpr int kSheetKeys = 450;

// Takes the time at which the sheet's message loop starts to run.
Clock::time_point gLoopStarted;
constexpr UINT kLoopMark = WM_APP + 72;

LRESULT CALLBACK LoopMarkSeen(int code, WPARAM wParam, LPARAM lParam) {
    const auto* message = reinterpret_cast<const MSG*>(lParam);
    if (code == HC_ACTION && message->message == kLoopMark && message->hwnd == nullptr) {
        gLoopStarted = Clock::now();
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

void MeasureAttach(const std::filesystem::path& dll) {
    // Programs that show print dialogs have the shell loaded; its own load is not the plug-in's cost.
    LoadLibraryW(L"shell32.dll");
    std::vector<double> times;
    for (int i = 0; i < kRuns + 1; ++i) {
        const auto start = Clock::now();
        const HMODULE module = LoadLibraryW(dll.c_str());
        times.push_back(Microseconds(Clock::now() - start).count());
        FreeLibrary(module);
    }
    Report("attach, first time in a process", times.front());
    times.erase(times.begin());
    Report("attach, later times (median)", Median(times));
}

LONG_PTR APIENTRY IgnorePage(HANDLE, UINT, LPARAM, LPARAM) {
    return 1;
}

// One kind of sheet, and the plug-in's call for it.
struct SheetCall {
    SheetKind kind;
    const char* name;
    DWORD mode;
    HRESULT (STDMETHODCALLTYPE IPrintOemUI::*assemble)(PPROPSHEETUI_INFO info, LPARAM parameter);
};
constexpr SheetCall kDocumentSheet = {SheetKind::kDocument, "document sheet", OEMCUIP_DOCPROP,
                                      &IPrintOemUI::DocumentPropertySheets};
constexpr SheetCall kPrinterSheet = {SheetKind::kPrinter, "printer sheet", OEMCUIP_PRNPROP,
                                     &IPrintOemUI::DevicePropertySheets};

void MeasureAssembly(PluginHost& host, const SheetCall& sheet) {
    OEMUIPSPARAM parameter{};
    parameter.cbSize = sizeof parameter;
    parameter.pOEMDM = &host.record();
    PROPSHEETUI_INFO info{};
    info.cbSize = sizeof info;
    info.Version = PROPSHEETUI_INFO_VERSION;
    info.pfnComPropSheet = IgnorePage;
    info.lParamInit = reinterpret_cast<LPARAM>(&parameter);
    host.CommonUIProp(sheet.mode);
    Report((std::string(sheet.name) + " assembled by the plug-in (median)").c_str(),
           Measure(kRuns, [&] { (host.plugin().*sheet.assemble)(&info, 0); }));
}

void MeasureSheet(PluginHost& host, const SheetCall& sheet) {
    std::vector<double> opened;
    const HHOOK hook = SetWindowsHookExW(WH_GETMESSAGE, LoopMarkSeen, nullptr, GetCurrentThreadId());
    for (int i = 0; i < kRuns; ++i) {
        PostThreadMessageW(GetCurrentThreadId(), kLoopMark, 0, 0);
        const auto start = Clock::now();
        RunDriven([&] { host.OpenSheet(sheet.kind); }, [](UiDriver& ui) { ui.WaitForSheet().PressCancel(); });
        opened.push_back(Microseconds(gLoopStarted - start).count());
    }
    UnhookWindowsHookEx(hook);
    Report((std::string(sheet.name) + " open, call to message loop (median)").c_str(), Median(opened));
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: plugin_bench PLUGIN_DLL LANGUAGE_FILE [BITMAP]\n");
        return 2;
    }
    wchar_t text[1024];
    const double call = Measure(
        kRuns, [&] { GetPrivateProfileStringW(L"OPERATION", L"RC_STARTDOC", L"", text, 1024, argv[2]); });
    SetBase(call * kSheetKeys);
    std::printf("%-58s %13s   %8s\n", "", "median", "ratio");
    Report("one profile call", call);
    Report("a profile call for each of a sheet's 450 keys", call * kSheetKeys);
    if (argc == 3) {
        PluginHost host(argv[1]);
        MeasureFaces(host);
        return 0;
    }
    MeasureAttach(argv[1]);
    VirtualPrinter printer(std::nullopt, std::filesystem::path(argv[1]).filename());
    HostSettings settings;
    settings.printer = printer.handle();
    PluginHost host(argv[1], std::move(settings));
    for (const SheetCall& sheet : {kDocumentSheet, kPrinterSheet}) {
        MeasureAssembly(host, sheet);
        MeasureSheet(host, sheet);
    }
    MeasureDocumentPages(host, argv[3]);
    MeasurePrinterPages(host, printer);
    MeasureLogos(host, printer, argv[3]);
    for (const SheetCall& sheet : {kDocumentSheet, kPrinterSheet}) {
        CountObjects(host, sheet.kind, sheet.name);
    }
    return 0;
}
