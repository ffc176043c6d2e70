// Plays the download of logos through the real page and keeps what else is gone afterwards:
//
//   logo_jobs FOLDER
//
// of photo.bmp, drawing.bmp and text.bmp in the folder. It gets there
//   jobs/002-LOGO.prn ...    the jobs, with the log of the spooler
//   shown/002-LOGO/ ...      the converted files as they are when that job ends: what the page shows
//   reference/2-photo.bmp .. what they must be, worked out the plain way; 3-... of the grey job
#include <windows.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <string>

#include "files.h"
#include "options.h"
#include "play_printer.h"
#include "plugin_host.h"
#include "unit/logo_reference.h"
#include "virtual_printer.h"

namespace {

using Path = std::filesystem::path;
using reference::Bytes;

constexpr std::size_t kLargestFile = 1 << 20;

// What the play sets for each logo; a halftone of -1: none is used.
struct Played {
    const wchar_t* name;
    int halftone;
    int contrast;
    int brightness;
};
constexpr Played kPlayed[] = {{L"photo", 3, 20, 0}, {L"drawing", 2, 20, 10}, {L"text", -1, 0, 0}};

Path ProgramFolder() {
    wchar_t path[1024] = {};
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return Path(path).parent_path();
}

void WriteReferences(const Path& folder) {
    std::filesystem::create_directories(folder / L"reference");
    for (const auto& [name, halftone, contrast, brightness] : kPlayed) {
        const Path file = std::wstring(name) + L".bmp";
        const Bytes source = ReadWholeFile(folder / file, kLargestFile).value();
        if (halftone >= 0) {
            WriteWholeFile(folder / L"reference" / (L"2-" + file.native()),
                           reference::MonoFile(source, halftone, contrast, brightness));
        }
        WriteWholeFile(folder / L"reference" / (L"3-" + file.native()),
                       reference::GreyFile(source, contrast, brightness));
    }
}

void PlayLogos(const Path& folder) {
    Options options;
    VirtualPrinter printer(folder / L"jobs");
    printer.on_job = [&folder](const PrintJob& job) {
        const Path shown = folder / L"shown" / JobFileStem(job);
        std::filesystem::create_directories(shown);
        for (const Played& logo : kPlayed) {
            const Path converted = folder / (std::wstring(logo.name) + L"Temp.bmp");
            if (std::filesystem::exists(converted)) {
                std::filesystem::copy_file(converted, shown / (std::wstring(logo.name) + L".bmp"));
            }
        }
    };
    for (const Played& logo : kPlayed) {
        options.logos.push_back(folder / (std::wstring(logo.name) + L".bmp"));
    }
    HostSettings settings;
    settings.printer = printer.handle();
    PluginHost host(ProgramFolder() / L"KVMR72UI.dll", std::move(settings));
    RunDriven([&] { host.OpenSheet(SheetKind::kPrinter); },
              [&](UiDriver& driver) { PlayPrinter(driver, driver.WaitForSheet(), options); });
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    try {
        const Path folder = argc == 2 ? std::filesystem::absolute(argv[1]) : Path();
        WriteReferences(folder);
        PlayLogos(folder);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "logo_jobs: %s\n", error.what());
        return 1;
    }
}
