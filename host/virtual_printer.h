// A printer without driver and paper, and the print server that it belongs to: what the plug-in sends to its
// handle becomes jobs in memory and, when wanted, files; the forms that it makes are kept. The spooler's
// functions that the plug-in imports lead here as long as one of these lives; the rest of the process keeps
// the real spooler.
//
//   VirtualPrinter printer;
//   PluginHost host(dll, {.printer = printer.handle()});
//   ...                                       // a person or a test prints from the sheet
//   printer.Jobs().at(0).bytes;
#pragma once

#include <windows.h>

#include <winspool.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "form_list.h"
#include "module_imports.h"

struct PrintJob {
    DWORD number = 0;            // from 1, what StartDocPrinterW returned
    std::wstring document = {};  // its name in the spooler's list
    std::wstring label = {};     // what the name of its file says besides
    std::vector<std::uint8_t> bytes = {};
    bool printed = false;  // ended as it should; otherwise aborted or never ended
};

// What the spooler tells of a printer.
struct PrinterDescription {
    std::wstring name = L"KVM-R72";
    std::wstring port = L"USB001";
    std::wstring driver = L"KVM-R72";
};

// What became of a form.
enum class FormChange { kAdded, kChanged, kDeleted };

// What the name of a job's file starts with: "001-Barcode", or "001-Barcode-UPC-A" with a label. Characters
// that a file name cannot have, and spaces, are replaced.
std::wstring JobFileStem(const PrintJob& job);

// One at a time. One thread prints, any may look on.
class VirtualPrinter {
  public:
    // With a folder, which is made when it is missing, each job leaves its bytes there when it ends
    // (001-Barcode.prn) or is given up (001-Barcode.prn.unfinished), and each call a line in spooler.txt,
    // which starts empty. `plugin` is the DLL's file name. With a forms file the user's forms last, as
    // FormList says. Throws std::runtime_error when the folder or the forms file cannot be used.
    explicit VirtualPrinter(std::optional<std::filesystem::path> folder = std::nullopt,
                            const std::wstring& plugin = L"KVMR72UI.dll",
                            std::optional<std::filesystem::path> forms = std::nullopt);
    // Gives up a job that was not ended.
    ~VirtualPrinter();
    VirtualPrinter(const VirtualPrinter&) = delete;
    VirtualPrinter& operator=(const VirtualPrinter&) = delete;

    // Valid in this process for the plug-in alone.
    HANDLE handle() const noexcept;
    // A further printer of the same server: it has the same forms and puts its jobs behind those of the
    // others. The first is "printer" in the log, this one "printer 2" and so on.
    HANDLE NewPrinter(PrinterDescription description);
    // What GetPrinterW tells from now on. Throws std::invalid_argument for a handle that is no printer's
    // here.
    void Describe(HANDLE printer, PrinterDescription description);

    // The server's forms; giving it others asks nobody, and leaves the forms file alone.
    std::vector<Form> Forms() const;
    void SetForms(std::vector<Form> forms);
    // Without the right to change forms the user can still read them.
    void AllowFormChanges(bool allowed);
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
    // Told of each change of a form, in the call that made it; of a deleted form only its name.
    std::function<void(FormChange, const Form&)> on_form;
    // Runs before each call with the function's name: what another user of the server does meanwhile.
    std::function<void(const char* function)> before_call;

    // The spooler's functions. Their order is held to strictly: some spoolers let pass what is written
    // outside a page, this one does not.
    DWORD StartDocument(HANDLE printer, DWORD level, const DOC_INFO_1W* document);
    BOOL StartPage(HANDLE printer);
    BOOL Write(HANDLE printer, const void* bytes, DWORD size, DWORD* written);
    BOOL EndPage(HANDLE printer);
    BOOL EndDocument(HANDLE printer);
    BOOL Abort(HANDLE printer);
    BOOL Close(HANDLE printer);
    // Level 2: what only a driver or an administrator sets is none or empty.
    BOOL Tell(HANDLE printer, DWORD level, void* buffer, DWORD size, DWORD* needed);
    // Level 1.
    BOOL ListForms(HANDLE printer, DWORD level, void* buffer, DWORD size, DWORD* needed, DWORD* count);
    BOOL MakeForm(HANDLE printer, DWORD level, const FORM_INFO_1W* form);
    BOOL ChangeForm(HANDLE printer, const wchar_t* name, DWORD level, const FORM_INFO_1W* form);
    BOOL RemoveForm(HANDLE printer, const wchar_t* name);

  private:
    enum class State { kIdle, kDocument, kPage };
    // Its address is the printer's handle: an address of this program's own cannot be another printer's.
    struct Printer {
        PrinterDescription description = {};
        State state = State::kIdle;
        PrintJob job = {};  // the started one, or the last
        bool is_closed = false;
    };
    // A call's error, or 0, and what the log tells besides.
    struct Outcome {
        DWORD error = ERROR_SUCCESS;
        std::string told = {};
    };

    bool Answer(const char* function, HANDLE printer, const std::string& arguments,
                const std::function<Outcome(Printer&)>& action);
    bool AnswerFormChange(const char* function, HANDLE printer, const std::string& arguments,
                          const std::function<DWORD()>& action);
    DWORD Reported(DWORD error, FormChange change, const Form& form) const;
    Printer* Find(HANDLE handle) noexcept;
    static DWORD OrderError(const Printer& printer) noexcept;
    std::string Shown(HANDLE printer) const;
    void AddLine(const std::string& line);
    bool FinishJob(Printer& printer, bool printed);
    void GiveUpJob(HANDLE printer);

    // Also held while a call tells of a job or a form: who is told may ask for the jobs or the forms.
    mutable std::recursive_mutex mutex_;
    std::optional<std::filesystem::path> folder_;
    std::ofstream log_;
    std::vector<std::string> lines_;
    std::deque<Printer> printers_;  // never moved
    std::vector<PrintJob> jobs_;
    DWORD last_job_ = 0;
    std::wstring next_label_;
    FormList forms_;
    bool can_change_forms_ = true;
    int calls_to_failure_ = 0;  // 0: none is planned
    DWORD planned_error_ = ERROR_SUCCESS;
    ModuleImports imports_;
};
