#include "printer_pages_bench.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "driven_sheet.h"
#include "files.h"
#include "measure.h"
#include "plugin_pages.h"
#include "resources/resource.h"

namespace {

constexpr NamedControl kPages[] = {{"Utility", IDC_UTILITY_PAPERS},
                                   {"Download", IDC_DOWNLOAD_PATH},
                                   {"Font", IDC_FONT_TREE},
                                   {"Version (printer)", IDC_VERSION_LINK}};

constexpr std::size_t kPaperCounts[] = {500, 10000};
constexpr std::size_t kLargeFile = 64 * 1024 * 1024;

// The server's own forms come first.
void MeasurePaperCounts(PluginHost& host, VirtualPrinter& printer) {
    const std::vector<Form> before = printer.Forms();
    for (const std::size_t count : kPaperCounts) {
        std::vector<Form> forms = before;
        for (std::size_t i = 0; i < count; ++i) {
            forms.push_back(WholeSheet(L"Custom Paper-" + std::to_wstring(i), 72000, 297000));
        }
        printer.SetForms(forms);
        std::vector<double> times;
        for (int i = 0; i < kRuns; ++i) {
            Drive(host, SheetKind::kPrinter, [&](Sheet& sheet) {
                const auto start = Clock::now();
                SelectPageWith(sheet, IDC_UTILITY_PAPERS);
                times.push_back(Since(start));
            });
        }
        const std::string name = "Utility page shown, " + std::to_string(count) + " paper sizes (median)";
        Report(name.c_str(), Median(times));
    }
    printer.SetForms(before);
}

std::size_t ResidentBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.WorkingSetSize;
}

// Memory while the file is handed to the spooler, before the virtual printer makes its own copy.
void MeasureLargeFile(PluginHost& host, VirtualPrinter& printer) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / L"kvmr72-large.jk";
    WriteWholeFile(file, std::vector<std::uint8_t>(kLargeFile, std::uint8_t{0x55}));
    std::size_t most = 0;
    printer.before_call = [&](const char* function) {
        if (std::string_view(function) == "WritePrinter") {
            most = std::max(most, ResidentBytes());
        }
    };
    Drive(host, SheetKind::kPrinter, [&](Sheet& sheet) {
        const Window page = SelectPageWith(sheet, IDC_DOWNLOAD_PATH);
        page.TypeText(IDC_DOWNLOAD_PATH, file.native());
        const std::size_t before = ResidentBytes();
        const auto start = Clock::now();
        page.Click(IDC_DOWNLOAD_SEND);
        Report("64 MB file: press to end of job", Since(start));
        const std::size_t grown = most > before ? most - before : 0;
        std::printf("64 MB file: %.1f MB more in memory while it is written\n",
                    static_cast<double>(grown) / (1024 * 1024));
    });
    printer.before_call = nullptr;
    std::filesystem::remove(file);
}

}  // namespace

void MeasurePrinterPages(PluginHost& host, VirtualPrinter& printer) {
    MeasurePages(host, SheetKind::kPrinter, kPages);
    MeasurePaperCounts(host, printer);
    MeasureLargeFile(host, printer);
}
