#include "logo_page_bench.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "devpages/logo_file.h"
#include "devpages/logo_preview.h"
#include "driven_sheet.h"
#include "files.h"
#include "measure.h"
#include "plugin_pages.h"
#include "resources/resource.h"

namespace {

constexpr LogoTone kTone = {20, 10};

// A way to show and to send a logo, as the page's radio buttons have it.
struct Way {
    const char* name;
    int type;
    int halftone;  // 0 for a type without
    Halftone method;
};
constexpr Way kWays[] = {{"Original", IDC_LOGO_ORIGINAL, 0, Halftone::kNone},
                         {"None", IDC_LOGO_MONO, IDC_LOGO_NONE, Halftone::kNone},
                         {"Dither M3", IDC_LOGO_MONO, IDC_LOGO_DITHER_M3, Halftone::kDitherM3},
                         {"Dither M4", IDC_LOGO_MONO, IDC_LOGO_DITHER_M4, Halftone::kDitherM4},
                         {"Error Diffuse", IDC_LOGO_MONO, IDC_LOGO_DIFFUSE, Halftone::kErrorDiffuse},
                         {"Gray", IDC_LOGO_GREY, 0, Halftone::kNone}};

std::size_t ResidentBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.WorkingSetSize;
}

// As the plug-in writes a converted file.
void WriteFileAt(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    SetEndOfFile(file);
    CloseHandle(file);
}

std::string Line(const Way& way, const char* what) {
    return std::string("logo 1024 x 768, ") + way.name + ": " + what;
}

void MeasureRepaints(PluginHost& host, const std::filesystem::path& photo) {
    Drive(host, SheetKind::kPrinter, [&](Sheet& sheet) {
        const Window page = SelectPageWith(sheet, IDC_LOGO_LIST);
        page.ChooseFile(IDC_LOGO_ADD, photo);
        for (const Way& way : kWays) {
            page.Click(way.type);
            UpdateWindow(page.handle());
            if (way.halftone != 0) {
                page.Click(way.halftone);
            }
            Report(Line(way, "repaint").c_str(), Repaint(page));
        }
        page.Click(IDC_LOGO_DELETE);
    });
}

// The steps of a repaint, one after the other and with the plug-in's own code, into a window as large as the
// page's frame.
void MeasureSteps(const std::filesystem::path& photo) {
    const HWND frame = CreateWindowExW(0, L"Static", nullptr, WS_POPUP | WS_VISIBLE, 0, 0, 212, 99, nullptr,
                                       nullptr, GetModuleHandleW(nullptr), nullptr);
    LogoBuffers buffers;
    LogoPreview preview;
    std::wstring output;
    const auto time = [](const auto& work) { return Measure(kRuns, work); };
    Report("logo 1024 x 768: reading", time([&] { ReadLogoFile(photo.native(), buffers.source); }));
    for (const Way& way : kWays) {
        std::vector<std::uint8_t>* shown = &buffers.source;
        if (way.type != IDC_LOGO_ORIGINAL) {
            shown = &buffers.converted;
            const auto convert = [&] {
                if (way.type == IDC_LOGO_GREY) {
                    ConvertToGrey(buffers.source, kColourBits, kTone, buffers.converted);
                } else {
                    ConvertToMono(buffers.source, kColourBits, way.method, kTone, buffers.converted);
                }
            };
            Report(Line(way, "conversion").c_str(), time(convert));
            const std::filesystem::path file = ConvertedPath(photo.native());
            Report(Line(way, "file writing").c_str(), time([&] { WriteFileAt(file, buffers.converted); }));
            std::filesystem::remove(file);
        }
        Report(Line(way, "drawing").c_str(), time([&] { preview.Draw(frame, *shown); }));
    }
    DestroyWindow(frame);
}

// Nine logos that fill the printer's memory nearly. Memory at the end of each raster's making.
void MeasureSending(PluginHost& host, VirtualPrinter& printer, const std::filesystem::path& photo) {
    constexpr int kLogos = 9;
    constexpr std::uint32_t kRows = 84;
    constexpr std::size_t kHeightAt = 22;
    std::vector<std::uint8_t> logo;
    ReadLogoFile(photo.native(), logo);
    for (std::size_t i = 0; i < 4; ++i) {
        logo[kHeightAt + i] = static_cast<std::uint8_t>(kRows >> 8 * i & 0xFF);
    }
    logo.resize(54 + std::size_t{1024} * 3 * kRows);
    const std::filesystem::path folder = photo.parent_path();
    std::size_t most = 0;
    printer.before_call = [&](const char* function) {
        if (std::string_view(function) == "WritePrinter") {
            most = std::max(most, ResidentBytes());
        }
    };
    Drive(host, SheetKind::kPrinter, [&](Sheet& sheet) {
        const Window page = SelectPageWith(sheet, IDC_LOGO_LIST);
        for (int i = 0; i < kLogos; ++i) {
            const std::filesystem::path file = folder / (L"logo" + std::to_wstring(i) + L".bmp");
            WriteWholeFile(file, logo);
            page.ChooseFile(IDC_LOGO_ADD, file);
        }
        page.Click(IDC_LOGO_MONO);
        const std::size_t before = ResidentBytes();
        const auto start = Clock::now();
        page.Click(IDC_LOGO_DOWNLOAD);
        Report("nine logos of 1024 x 84: press to end of job", Since(start));
        const std::size_t grown = most > before ? most - before : 0;
        std::printf("nine logos: %.2f MB more in memory while they are sent\n",
                    static_cast<double>(grown) / (1024 * 1024));
        for (int i = 0; i < kLogos; ++i) {
            page.Click(IDC_LOGO_DELETE);
            std::filesystem::remove(folder / (L"logo" + std::to_wstring(i) + L".bmp"));
        }
    });
    printer.before_call = nullptr;
}

}  // namespace

void MeasureLogos(PluginHost& host, VirtualPrinter& printer, const std::filesystem::path& photo) {
    MeasureSteps(photo);
    MeasureRepaints(host, photo);
    MeasureSending(host, printer, photo);
}
