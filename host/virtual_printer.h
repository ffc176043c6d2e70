// A printer without driver and paper: what the plug-in sends to its handle becomes jobs in memory and, when
// wanted, files. The spooler's functions that the plug-in imports lead here as long as one of these lives;
// the rest of the process keeps the real spooler.
//
//   VirtualPrinter printer;
//   PluginHost host(dll, {.printer = printer.handle()});
//   ...                                       // a person or a test prints from the sheet
//   printer.Jobs().at(0).bytes;
#pragma once

#include <windows.h>

#include <winspool.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "module_imports.h"

struct PrintJob {
    DWORD number = 0;            // from 1, what StartDocPrinterW returned
    std::wstring document = {};  // its name in the spooler's list
    std::wstring label = {};     // what the name of its file says besides
    std::vector<std::uint8_t> bytes = {};
    bool printed = false;  // ended as it should; otherwise aborted or never ended
};

// What the name of a job's file starts with: "001-Barcode", or "001-Barcode-UPC-A" with a label. Characters
// that a file name cannot have, and spaces, are replaced.
std::wstring JobFileStem(const PrintJob& job);

// One at a time. One thread prints, any may look on.
class VirtualPrinter {
  public:
    // With a folder, which is made when it is missing, each job leaves its bytes there when it ends
    // (001-Barcode.prn) or is given up (001-Barcode.prn.unfinished), and each call a line in spooler.txt,
    // which starts empty. `plugin` is the DLL's file name. Throws std::runtime_error when the folder cannot
    // be used.
    explicit VirtualPrinter(std::optional<std::filesystem::path> folder = std::nullopt,
                            const std::wstring& plugin = L"KVMR72UI.dll");
    // Gives up a job that was not ended.
    ~VirtualPrinter();
    VirtualPrinter(const VirtualPrinter&) = delete;
    VirtualPrinter& operator=(const VirtualPrinter&) = delete;

    // Valid in this process for the plug-in alone.
    HANDLE handle() const noexcept;
    // The jobs so far that have ended or were given up, in that order.
    std::vector<PrintJob> Jobs() const;
    // Every call so far: the lines of spooler.txt.
    std::vector<std::string> Log() const;

    // Lets one call fail with this error: the `n`-th from now on, where 1 is the next. It then does nothing,
    // except that a document whose end fails is given up.
    void FailCall(int n, DWORD error);
    // Puts this into the name of the next started job's file.
    void LabelNextJob(std::wstring label);
    // Told of each job that has ended or was given up, in the call that did it.
    std::function<void(const PrintJob&)> on_job;

    // The spooler's functions. Their order is held to strictly: some spoolers let pass what is written
    // outside a page, this one does not.
    DWORD StartDocument(HANDLE printer, DWORD level, const DOC_INFO_1W* document);
    BOOL StartPage(HANDLE printer);
    BOOL Write(HANDLE printer, const void* bytes, DWORD size, DWORD* written);
    BOOL EndPage(HANDLE printer);
    BOOL EndDocument(HANDLE printer);
    BOOL Abort(HANDLE printer);
    BOOL Close(HANDLE printer);

  private:
    enum class State { kIdle, kDocument, kPage };
    // A call's error, or 0 and what the log tells that it gave.
    struct Outcome {
        DWORD error = ERROR_SUCCESS;
        std::string told = "TRUE";
    };

    bool Answer(const char* function, HANDLE printer, const std::string& arguments,
                const std::function<Outcome()>& action);
    bool IsOwn(HANDLE printer) const noexcept;
    DWORD OrderError() const noexcept;
    std::string Shown(HANDLE printer) const;
    void AddLine(const std::string& line);
    bool FinishJob(bool printed);
    void GiveUpJob();

    // Also held while `on_job` runs, which may ask for the jobs.
    mutable std::recursive_mutex mutex_;
    std::optional<std::filesystem::path> folder_;
    std::ofstream log_;
    std::vector<std::string> lines_;
    std::vector<PrintJob> jobs_;
    PrintJob job_;  // the started one, or the last
    std::wstring next_label_;
    State state_ = State::kIdle;
    bool is_closed_ = false;
    int calls_to_failure_ = 0;  // 0: none is planned
    DWORD planned_error_ = ERROR_SUCCESS;
    ModuleImports imports_;
};
