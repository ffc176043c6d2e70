// KVMR72Host: the desk of whoever works on the plug-in or with its records. It opens the plug-in's pages in a
// real sheet, lets a person or --play work them, and tells what that did to the record.
//
// The order of Run is the order in which a driver's host works.
#include <windows.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "files.h"
#include "options.h"
#include "pictures.h"
#include "play.h"
#include "play_printer.h"
#include "plugin_host.h"
#include "plugin_pages.h"
#include "print_list.h"
#include "record_fields.h"
#include "resources/resource.h"
#include "show_record.h"
#include "system_printer.h"
#include "trace_capture.h"
#include "ui_driver.h"
#include "utf8.h"
#include "virtual_printer.h"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// Far above any record: only keeps a wrong file from being read whole.
constexpr std::size_t kLargestRecordFile = 65536;

constexpr wchar_t kLanguageKey[] = L"SOFTWARE\\KESTREL\\LANGUAGE";
constexpr wchar_t kLanguageValue[] = L"LANGUAGE_KVMR72";
constexpr wchar_t kFollowSystemValue[] = L"IsFirstRun_KVMR72";

// Above any file in which records travel between people: saved DEVMODEs, a spooler's files.
constexpr std::size_t kLargestShownFile = 16ULL * 1024 * 1024;

using RecordCopy = std::array<std::uint8_t, kOemRecordSize>;

std::filesystem::path ProgramFolder() {
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    while (length == path.size()) {
        path.resize(path.size() * 2);
        length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    }
    path.resize(length);
    return std::filesystem::path(path).parent_path();
}

void SetLanguageValue(const wchar_t* name, const std::wstring& value) {
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    const LSTATUS status =
        RegSetKeyValueW(HKEY_CURRENT_USER, kLanguageKey, name, REG_SZ, value.c_str(), size);
    if (status != ERROR_SUCCESS) {
        throw HostError("cannot store the language in the registry: error " + std::to_string(status));
    }
}

// The plug-in reads the choice when it is loaded; while the other value is TRUE it would follow the system
// instead.
void ChooseLanguage(const std::wstring& language) {
    SetLanguageValue(kLanguageValue, language + L"_KVMR72.res");
    SetLanguageValue(kFollowSystemValue, L"FALSE");
}

// A device or a pipe may keep its reader waiting for ever.
std::optional<std::vector<std::uint8_t>> ReadRecordFile(const std::filesystem::path& path,
                                                        std::size_t limit) {
    if (IsDevice(path)) {
        throw HostError(ToUtf8(path.native()) + " is no file but a device or a pipe");
    }
    return ReadWholeFile(path, limit);
}

// What is written at the end is tried at the start: else what a person did in the sheet would be lost. The
// file itself stays as it is; WriteWholeFile, too, writes beside it.
void CheckWritable(const std::filesystem::path& path) {
    constexpr DWORD kNeverReplaced = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool is_replaced = attributes == INVALID_FILE_ATTRIBUTES || (attributes & kNeverReplaced) == 0;
    const std::wstring beside = path.native() + L"." + std::to_wstring(GetCurrentProcessId()) + L".part";
    HANDLE file = INVALID_HANDLE_VALUE;
    if (is_replaced && !IsDevice(path)) {
        file = CreateFileW(beside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE,
                           nullptr);
    }
    if (file == INVALID_HANDLE_VALUE) {
        throw HostError("cannot write " + ToUtf8(path.native()));
    }
    CloseHandle(file);
}

void LoadStoredRecord(PluginHost& host, const std::filesystem::path& file) {
    const auto stored = ReadRecordFile(file, kLargestRecordFile);
    if (!stored) {
        return;
    }
    try {
        host.LoadRecord(*stored);
    } catch (const HostError& error) {
        throw HostError(ToUtf8(file.native()) + " is not a settings record: " + error.what());
    }
    if (stored->size() != kOemRecordSize) {
        std::printf("Converted a record of %zu bytes.\n", stored->size());
    }
}

void PrintJobLine(const PrintJob& job) {
    const std::string label = job.label.empty() ? "" : " (" + ToUtf8(job.label) + ")";
    std::printf("%s: %s%s, %zu bytes\n", job.printed ? "Printed" : "Not printed",
                ToUtf8(job.document).c_str(), label.c_str(), job.bytes.size());
    // A person looks on while the sheet is open.
    std::fflush(stdout);
}

void PrintFormLine(FormChange change, const Form& form) {
    const std::string name = ToUtf8(form.name);
    constexpr double kPerMillimetre = 1000;
    switch (change) {
        case FormChange::kAdded:
        case FormChange::kChanged:
            std::printf("Form %s: %s, %.10g x %.10g mm\n", change == FormChange::kAdded ? "added" : "changed",
                        name.c_str(), form.size.cx / kPerMillimetre, form.size.cy / kPerMillimetre);
            break;
        case FormChange::kDeleted:
            std::printf("Form deleted: %s\n", name.c_str());
            break;
    }
    std::fflush(stdout);
}

// What --play may take, and each print of a list.
constexpr std::chrono::seconds kPlayTime(60);
constexpr std::chrono::seconds kPrintTime(1);

SheetResult OpenSheet(PluginHost& host, const Options& options, VirtualPrinter* printer) {
    SheetResult result;
    const auto open = [&] { result = host.OpenSheet(options.sheet); };
    const auto prints = options.prints ? ReadPrintList(*options.prints) : std::vector<ListedPrint>();
    const auto script = [&](UiDriver& driver) {
        const Sheet sheet = driver.WaitForSheet();
        if (options.control_font) {
            ShowControlFont(SelectPageWith(sheet, IDC_UTILITY_PAPERS));
        }
        if (options.pictures) {
            TakePictures(driver, sheet, *options.pictures);
        }
        if (options.prints) {
            PrintTests(driver, sheet, prints, printer);
        } else if (options.play && options.sheet == SheetKind::kPrinter) {
            PlayPrinter(driver, sheet, options);
        } else if (options.play) {
            Play(driver, sheet, options, printer);
        }
    };
    if (options.play || options.prints) {
        RunDriven(open, script, kPlayTime + kPrintTime * prints.size());
    } else if (options.pictures || options.control_font) {
        RunThenHandOver(open, script);
    } else {
        open();
    }
    return result;
}

void PrintChanges(RecordBytes before, RecordBytes after) {
    const std::vector<FieldChange> changes = CompareRecords(before, after);
    if (changes.empty()) {
        std::puts("Nothing changed in the record.");
        return;
    }
    std::puts("Changed in the record:");
    std::size_t width = 0;
    for (const FieldChange& change : changes) {
        width = std::max(width, change.name.size());
    }
    for (const FieldChange& change : changes) {
        std::printf("  %-*s  %s -> %s\n", static_cast<int>(width), change.name.c_str(), change.before.c_str(),
                    change.after.c_str());
    }
}

void WriteTrace(const TraceCapture& trace, const std::filesystem::path& file) {
    std::string text;
    for (const std::wstring& line : trace.Lines()) {
        text += ToUtf8(line);
    }
    WriteWholeFile(file, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void ShowRecord(const std::filesystem::path& file) {
    const auto bytes = ReadRecordFile(file, kLargestShownFile);
    if (!bytes) {
        throw HostError("there is no file " + ToUtf8(file.native()));
    }
    try {
        std::fputs(DescribeRecords(*bytes).c_str(), stdout);
    } catch (const NoRecordError& error) {
        throw HostError(ToUtf8(file.native()) + " holds no whole settings record: " + error.what());
    }
}

void RunSheet(const Options& options) {
    std::vector<std::filesystem::path> played = options.logos;
    for (const auto& file : {options.watermark, options.download}) {
        if (file) {
            played.push_back(*file);
        }
    }
    for (const auto& file : played) {
        if (!std::filesystem::is_regular_file(file)) {
            throw HostError("there is no file " + ToUtf8(file.native()));
        }
    }
    const std::filesystem::path dll =
        options.dll ? std::filesystem::absolute(*options.dll) : ProgramFolder() / L"KVMR72UI.dll";
    HostSettings settings;
    std::optional<SystemPrinter> system_printer;
    std::optional<VirtualPrinter> virtual_printer;
    if (options.printer) {
        system_printer.emplace(*options.printer);
        settings.printer_name = *options.printer;
        settings.printer = system_printer->handle();
        settings.port_name = system_printer->PortName();
    } else {
        virtual_printer.emplace(options.jobs, dll.filename(), options.forms);
        virtual_printer->on_job = PrintJobLine;
        virtual_printer->on_form = PrintFormLine;
        settings.printer = virtual_printer->handle();
    }
    PluginHost host(dll, std::move(settings));
    if (options.record) {
        LoadStoredRecord(host, *options.record);
    }
    RecordCopy before = {};
    std::ranges::copy(host.record_bytes(), before.begin());

    const SheetResult result = OpenSheet(host, options, virtual_printer ? &*virtual_printer : nullptr);

    if (!host.GuardsIntact()) {
        throw HostError("the plug-in wrote outside the record or an option's text");
    }
    if (options.sheet == SheetKind::kPrinter) {
        return;
    }
    if (!result.kept) {
        std::puts("Cancelled: the record stays as it was.");
        return;
    }
    PrintChanges(before, host.record_bytes());
    if (options.record) {
        WriteWholeFile(*options.record, host.record_bytes());
    }
}

void Run(const Options& options) {
    for (const auto& file : {options.trace, options.record}) {
        if (file) {
            CheckWritable(*file);
        }
    }
    if (options.language) {
        ChooseLanguage(*options.language);
    }
    if (!options.trace) {
        RunSheet(options);
        return;
    }
    const TraceCapture trace;
    try {
        RunSheet(options);
    } catch (...) {
        // What was traced up to a failure is wanted most of all.
        WriteTrace(trace, *options.trace);
        throw;
    }
    WriteTrace(trace, *options.trace);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    SetConsoleOutputCP(CP_UTF8);
    try {
        const Options options = ParseOptions({argv + 1, argv + argc});
        if (options.help) {
            std::fputs(HelpText().c_str(), stdout);
        } else if (options.version) {
            std::puts("KVMR72Host " KVMR72_VERSION);
        } else if (options.show_record) {
            ShowRecord(*options.show_record);
        } else {
            Run(options);
        }
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
            throw HostError("cannot write the output");
        }
        return 0;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "KVMR72Host: %s\nTry KVMR72Host --help.\n", error.what());
        return kExitUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "KVMR72Host: %s\n", error.what());
        return kExitFailed;
    }
}
