#include "virtual_printer.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "files.h"
#include "text_packer.h"
#include "utf8.h"

namespace {

constexpr char kSpooler[] = "winspool.drv";
constexpr wchar_t kLogFile[] = L"spooler.txt";
constexpr DWORD kDocumentLevel = 1;
constexpr DWORD kPrinterLevel = 2;
constexpr DWORD kFormLevel = 1;
// Of a long write a line shows this many bytes, of a long name the file's name this many characters.
constexpr DWORD kShownBytes = 32;
constexpr std::size_t kLongestName = 64;

VirtualPrinter* active = nullptr;

std::string Quoted(const wchar_t* text) {
    if (text == nullptr) {
        return "none";
    }
    std::string quoted(1, '"');
    quoted += ToUtf8(text);
    quoted += '"';
    return quoted;
}

std::string ShownBytes(const void* bytes, DWORD size) {
    if (bytes == nullptr) {
        return " null";
    }
    std::string text;
    for (DWORD i = 0; i < std::min(size, kShownBytes); ++i) {
        char byte[4];
        std::snprintf(byte, sizeof byte, " %02X", static_cast<const std::uint8_t*>(bytes)[i]);
        text += byte;
    }
    return size > kShownBytes ? text + " ..." : text;
}

std::wstring FileNamePart(std::wstring_view text) {
    constexpr std::wstring_view kForbidden = L"<>:\"/\\|?*";
    // Halves of characters, also one that is cut here, are no part of a name either.
    constexpr wchar_t kFirstHalf = 0xD800;
    constexpr wchar_t kLastHalf = 0xDFFF;
    std::wstring part(text.substr(0, kLongestName));
    for (wchar_t& unit : part) {
        if (unit <= L' ') {
            unit = L'-';
        } else if (kForbidden.find(unit) != std::wstring_view::npos ||
                   (unit >= kFirstHalf && unit <= kLastHalf)) {
            unit = L'_';
        }
    }
    return part;
}

// The spooler's remote calls take no null where they give a number.
constexpr DWORD kNoPlaceForNumber = RPC_X_NULL_REF_POINTER;

Form FormOf(const FORM_INFO_1W& info) {
    return {.name = info.pName == nullptr ? L"" : info.pName,
            .flags = info.Flags,
            .size = info.Size,
            .area = info.ImageableArea};
}

// A structure of another level is not read.
std::string ShownForm(DWORD level, const FORM_INFO_1W* info) {
    std::string text = std::to_string(level) + ", ";
    if (info == nullptr) {
        return text + "null";
    }
    if (level != kFormLevel) {
        return text + "unknown";
    }
    const RECTL& area = info->ImageableArea;
    text += Quoted(info->pName) + ", flags " + std::to_string(info->Flags) + ", " +
            std::to_string(info->Size.cx) + " x " + std::to_string(info->Size.cy) + ", area";
    for (const LONG edge : {area.left, area.top, area.right, area.bottom}) {
        text += ' ' + std::to_string(edge);
    }
    return text;
}

DWORD CheckFormPointer(DWORD level, const FORM_INFO_1W* form) {
    if (level != kFormLevel) {
        return ERROR_INVALID_LEVEL;
    }
    return form == nullptr ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

std::string ShownBuffer(DWORD level, const void* buffer, DWORD size) {
    return ", " + std::to_string(level) + ", " + (buffer == nullptr ? "null" : "buffer") + " of " +
           std::to_string(size) + " bytes";
}

std::string ShownSize(DWORD needed) {
    return std::to_string(needed) + " bytes needed";
}

DWORD WINAPI StartDocPrinterStandIn(HANDLE printer, DWORD level, LPBYTE document) {
    return active->StartDocument(printer, level,
                                 static_cast<const DOC_INFO_1W*>(static_cast<const void*>(document)));
}

BOOL WINAPI StartPagePrinterStandIn(HANDLE printer) {
    return active->StartPage(printer);
}

BOOL WINAPI WritePrinterStandIn(HANDLE printer, LPVOID bytes, DWORD size, LPDWORD written) {
    return active->Write(printer, bytes, size, written);
}

BOOL WINAPI EndPagePrinterStandIn(HANDLE printer) {
    return active->EndPage(printer);
}

BOOL WINAPI EndDocPrinterStandIn(HANDLE printer) {
    return active->EndDocument(printer);
}

BOOL WINAPI AbortPrinterStandIn(HANDLE printer) {
    return active->Abort(printer);
}

BOOL WINAPI ClosePrinterStandIn(HANDLE printer) {
    return active->Close(printer);
}

BOOL WINAPI GetPrinterStandIn(HANDLE printer, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    return active->Tell(printer, level, buffer, size, needed);
}

BOOL WINAPI EnumFormsStandIn(HANDLE printer, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed,
                             LPDWORD count) {
    return active->ListForms(printer, level, buffer, size, needed, count);
}

BOOL WINAPI AddFormStandIn(HANDLE printer, DWORD level, LPBYTE form) {
    return active->MakeForm(printer, level, static_cast<const FORM_INFO_1W*>(static_cast<const void*>(form)));
}

BOOL WINAPI SetFormStandIn(HANDLE printer, LPWSTR name, DWORD level, LPBYTE form) {
    return active->ChangeForm(printer, name, level,
                              static_cast<const FORM_INFO_1W*>(static_cast<const void*>(form)));
}

BOOL WINAPI DeleteFormStandIn(HANDLE printer, LPWSTR name) {
    return active->RemoveForm(printer, name);
}

}  // namespace

std::wstring JobFileStem(const PrintJob& job) {
    std::wstring number = std::to_wstring(job.number);
    number.insert(0, 3 - std::min<std::size_t>(number.size(), 3), L'0');
    std::wstring stem = number + L"-" + FileNamePart(job.document);
    return job.label.empty() ? stem : stem + L"-" + FileNamePart(job.label);
}

VirtualPrinter::VirtualPrinter(std::optional<std::filesystem::path> folder, const std::wstring& plugin,
                               std::optional<std::filesystem::path> forms)
    : folder_(std::move(folder)), printers_(1), forms_(std::move(forms)), imports_(plugin) {
    if (active != nullptr) {
        throw std::logic_error("there is a virtual printer already");
    }
    if (folder_) {
        std::error_code error;
        std::filesystem::create_directories(*folder_, error);
        log_.open(*folder_ / kLogFile, std::ios::binary);
        if (!log_) {
            throw std::runtime_error("cannot write " + ToUtf8((*folder_ / kLogFile).native()));
        }
    }
    active = this;
    const auto stand_in = [this](const char* function, auto* replacement) {
        imports_.Replace(kSpooler, function, replacement);
    };
    stand_in("StartDocPrinterW", &StartDocPrinterStandIn);
    stand_in("StartPagePrinter", &StartPagePrinterStandIn);
    stand_in("WritePrinter", &WritePrinterStandIn);
    stand_in("EndPagePrinter", &EndPagePrinterStandIn);
    stand_in("EndDocPrinter", &EndDocPrinterStandIn);
    stand_in("AbortPrinter", &AbortPrinterStandIn);
    stand_in("ClosePrinter", &ClosePrinterStandIn);
    stand_in("GetPrinterW", &GetPrinterStandIn);
    stand_in("EnumFormsW", &EnumFormsStandIn);
    stand_in("AddFormW", &AddFormStandIn);
    stand_in("SetFormW", &SetFormStandIn);
    stand_in("DeleteFormW", &DeleteFormStandIn);
}

VirtualPrinter::~VirtualPrinter() {
    for (Printer& printer : printers_) {
        GiveUpJob(&printer);
    }
    active = nullptr;
}

HANDLE VirtualPrinter::handle() const noexcept {
    return const_cast<Printer*>(&printers_.front());
}

HANDLE VirtualPrinter::NewPrinter(PrinterDescription description) {
    const std::lock_guard lock(mutex_);
    // A member: it stays where it is as long as the printer.
    // cppcheck-suppress returnDanglingLifetime
    return &printers_.emplace_back(Printer{.description = std::move(description)});
}

void VirtualPrinter::Describe(HANDLE printer, PrinterDescription description) {
    const std::lock_guard lock(mutex_);
    Printer* const found = Find(printer);
    if (found == nullptr) {
        throw std::invalid_argument("no printer has this handle");
    }
    found->description = std::move(description);
}

std::vector<Form> VirtualPrinter::Forms() const {
    const std::lock_guard lock(mutex_);
    return forms_.forms();
}

void VirtualPrinter::SetForms(std::vector<Form> forms) {
    const std::lock_guard lock(mutex_);
    forms_.Replace(std::move(forms));
}

void VirtualPrinter::AllowFormChanges(bool allowed) {
    const std::lock_guard lock(mutex_);
    can_change_forms_ = allowed;
}

std::vector<PrintJob> VirtualPrinter::Jobs() const {
    const std::lock_guard lock(mutex_);
    return jobs_;
}

std::vector<std::string> VirtualPrinter::Log() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

void VirtualPrinter::FailCall(int n, DWORD error) {
    const std::lock_guard lock(mutex_);
    calls_to_failure_ = n;
    planned_error_ = error;
}

void VirtualPrinter::LabelNextJob(std::wstring label) {
    const std::lock_guard lock(mutex_);
    next_label_ = std::move(label);
}

DWORD VirtualPrinter::StartDocument(HANDLE printer, DWORD level, const DOC_INFO_1W* document) {
    const bool is_known = level == kDocumentLevel && document != nullptr;
    const std::string shown = is_known
                                  ? Quoted(document->pDocName) + ", output " + Quoted(document->pOutputFile) +
                                        ", " + Quoted(document->pDatatype)
                                  : (document == nullptr ? "null" : "unknown");
    DWORD number = 0;
    Answer("StartDocPrinterW", printer, ", " + std::to_string(level) + ", " + shown,
           [&](Printer& own) -> Outcome {
               if (level != kDocumentLevel) {
                   return {ERROR_INVALID_LEVEL};
               }
               if (document == nullptr) {
                   return {ERROR_INVALID_PARAMETER};
               }
               if (own.state != State::kIdle) {
                   return {ERROR_INVALID_PRINTER_STATE};
               }
               number = ++last_job_;
               own.job = {.number = number, .label = std::exchange(next_label_, {})};
               own.job.document = document->pDocName == nullptr ? L"" : document->pDocName;
               own.state = State::kDocument;
               return {ERROR_SUCCESS, std::to_string(number)};
           });
    return number;
}

BOOL VirtualPrinter::StartPage(HANDLE printer) {
    return Answer("StartPagePrinter", printer, "", [](Printer& own) -> Outcome {
        if (own.state != State::kDocument) {
            return {OrderError(own)};
        }
        own.state = State::kPage;
        return {};
    });
}

BOOL VirtualPrinter::Write(HANDLE printer, const void* bytes, DWORD size, DWORD* written) {
    const std::string shown = ", " + std::to_string(size) + " bytes:" + ShownBytes(bytes, size);
    return Answer("WritePrinter", printer, shown, [&](Printer& own) -> Outcome {
        if (written == nullptr) {
            return {ERROR_INVALID_PARAMETER};
        }
        if (own.state != State::kPage) {
            return {OrderError(own)};
        }
        *written = 0;
        if (bytes == nullptr && size != 0) {
            return {ERROR_INVALID_USER_BUFFER};
        }
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        own.job.bytes.insert(own.job.bytes.end(), first, first + size);
        *written = size;
        return {ERROR_SUCCESS, "TRUE, " + std::to_string(size) + " written"};
    });
}

BOOL VirtualPrinter::EndPage(HANDLE printer) {
    return Answer("EndPagePrinter", printer, "", [](Printer& own) -> Outcome {
        if (own.state != State::kPage) {
            return {OrderError(own)};
        }
        own.state = State::kDocument;
        return {};
    });
}

// A page that is still open ends with its document.
BOOL VirtualPrinter::EndDocument(HANDLE printer) {
    const bool ended = Answer("EndDocPrinter", printer, "", [this](Printer& own) -> Outcome {
        if (own.state == State::kIdle) {
            return {ERROR_SPL_NO_STARTDOC};
        }
        if (!FinishJob(own, true)) {
            return {ERROR_WRITE_FAULT};
        }
        return {};
    });
    if (!ended) {
        GiveUpJob(printer);
    }
    return ended;
}

BOOL VirtualPrinter::Abort(HANDLE printer) {
    const bool aborted = Answer("AbortPrinter", printer, "", [](Printer& own) -> Outcome {
        if (own.state == State::kIdle) {
            return {ERROR_SPL_NO_STARTDOC};
        }
        return {};
    });
    if (aborted) {
        GiveUpJob(printer);
    }
    return aborted;
}

BOOL VirtualPrinter::Close(HANDLE printer) {
    const bool closed = Answer("ClosePrinter", printer, "", [](Printer& own) -> Outcome {
        own.is_closed = true;
        return {};
    });
    if (closed) {
        GiveUpJob(printer);
    }
    return closed;
}

BOOL VirtualPrinter::Tell(HANDLE printer, DWORD level, void* buffer, DWORD size, DWORD* needed) {
    return Answer("GetPrinterW", printer, ShownBuffer(level, buffer, size), [&](Printer& own) -> Outcome {
        if (level != kPrinterLevel) {
            return {ERROR_INVALID_LEVEL};
        }
        if (needed == nullptr) {
            return {kNoPlaceForNumber};
        }
        const auto& [name, port, driver] = own.description;
        const std::wstring processor = L"winprint";
        const std::wstring datatype = L"RAW";
        const std::wstring none;
        std::size_t total = sizeof(PRINTER_INFO_2W);
        for (const auto* text :
             {&name, &none, &port, &driver, &none, &none, &none, &processor, &datatype, &none}) {
            total += TextPacker::SizeOf(*text);
        }
        *needed = static_cast<DWORD>(total);
        if (const DWORD error = CheckBuffer(buffer, size, *needed); error != ERROR_SUCCESS) {
            return {error, ShownSize(*needed)};
        }
        TextPacker packer(buffer, sizeof(PRINTER_INFO_2W));
        PRINTER_INFO_2W info = {};
        info.pPrinterName = packer.Put(name);
        info.pShareName = packer.Put(none);
        info.pPortName = packer.Put(port);
        info.pDriverName = packer.Put(driver);
        info.pComment = packer.Put(none);
        info.pLocation = packer.Put(none);
        info.pSepFile = packer.Put(none);
        info.pPrintProcessor = packer.Put(processor);
        info.pDatatype = packer.Put(datatype);
        info.pParameters = packer.Put(none);
        info.Attributes = PRINTER_ATTRIBUTE_LOCAL;
        packer.PutStructure(info);
        return {ERROR_SUCCESS, "TRUE, " + Quoted(name.c_str()) + " on " + Quoted(port.c_str())};
    });
}

BOOL VirtualPrinter::ListForms(HANDLE printer, DWORD level, void* buffer, DWORD size, DWORD* needed,
                               DWORD* count) {
    return Answer("EnumFormsW", printer, ShownBuffer(level, buffer, size), [&](Printer&) -> Outcome {
        if (level != kFormLevel) {
            return {ERROR_INVALID_LEVEL};
        }
        if (needed == nullptr || count == nullptr) {
            return {kNoPlaceForNumber};
        }
        *count = 0;
        if (const DWORD error = CopyForms(forms_.forms(), buffer, size, *needed); error != ERROR_SUCCESS) {
            return {error, ShownSize(*needed)};
        }
        *count = static_cast<DWORD>(forms_.forms().size());
        return {ERROR_SUCCESS, "TRUE, " + std::to_string(*count) + " forms"};
    });
}

BOOL VirtualPrinter::MakeForm(HANDLE printer, DWORD level, const FORM_INFO_1W* form) {
    return AnswerFormChange("AddFormW", printer, ", " + ShownForm(level, form), [&] {
        if (const DWORD error = CheckFormPointer(level, form); error != ERROR_SUCCESS) {
            return error;
        }
        const Form made = FormOf(*form);
        return Reported(forms_.Add(made), FormChange::kAdded, made);
    });
}

BOOL VirtualPrinter::ChangeForm(HANDLE printer, const wchar_t* name, DWORD level, const FORM_INFO_1W* form) {
    const std::string shown = ", " + Quoted(name) + ", " + ShownForm(level, form);
    return AnswerFormChange("SetFormW", printer, shown, [&] {
        if (const DWORD error = CheckFormPointer(level, form); error != ERROR_SUCCESS) {
            return error;
        }
        const Form changed = FormOf(*form);
        return Reported(forms_.Set(name == nullptr ? L"" : name, changed), FormChange::kChanged, changed);
    });
}

BOOL VirtualPrinter::RemoveForm(HANDLE printer, const wchar_t* name) {
    return AnswerFormChange("DeleteFormW", printer, ", " + Quoted(name), [&] {
        const Form deleted = {.name = name == nullptr ? L"" : name};
        return Reported(forms_.Delete(deleted.name), FormChange::kDeleted, deleted);
    });
}

DWORD VirtualPrinter::Reported(DWORD error, FormChange change, const Form& form) const {
    if (error == ERROR_SUCCESS && on_form) {
        on_form(change, form);
    }
    return error;
}

VirtualPrinter::Printer* VirtualPrinter::Find(HANDLE handle) noexcept {
    const auto found =
        std::ranges::find_if(printers_, [handle](const Printer& printer) { return &printer == handle; });
    return found == printers_.end() ? nullptr : &*found;
}

DWORD VirtualPrinter::OrderError(const Printer& printer) noexcept {
    return printer.state == State::kIdle ? ERROR_SPL_NO_STARTDOC : ERROR_INVALID_PRINTER_STATE;
}

// Answers a call and keeps a line about it. The last error changes only when the call fails.
bool VirtualPrinter::Answer(const char* function, HANDLE printer, const std::string& arguments,
                            const std::function<Outcome(Printer&)>& action) {
    const DWORD last_error = GetLastError();
    if (before_call) {
        before_call(function);
    }
    const std::lock_guard lock(mutex_);
    Outcome outcome;
    if (calls_to_failure_ > 0 && --calls_to_failure_ == 0) {
        outcome.error = planned_error_;
    } else {
        Printer* const own = Find(printer);
        outcome = own != nullptr && !own->is_closed ? action(*own) : Outcome{ERROR_INVALID_HANDLE};
    }
    const bool succeeded = outcome.error == ERROR_SUCCESS;
    std::string line = std::string(function) + "(" + Shown(printer) + arguments + ") -> ";
    if (!succeeded) {
        line += "FALSE, error " + std::to_string(outcome.error);
        line += outcome.told.empty() ? "" : ", ";
    } else if (outcome.told.empty()) {
        line += "TRUE";
    }
    AddLine(line + outcome.told);
    SetLastError(succeeded ? last_error : outcome.error);
    return succeeded;
}

// A change whose forms file cannot be written is not made.
bool VirtualPrinter::AnswerFormChange(const char* function, HANDLE printer, const std::string& arguments,
                                      const std::function<DWORD()>& action) {
    return Answer(function, printer, arguments, [&](Printer&) -> Outcome {
        if (!can_change_forms_) {
            return {ERROR_ACCESS_DENIED};
        }
        try {
            return {action()};
        } catch (const std::runtime_error& error) {
            return {ERROR_WRITE_FAULT, error.what()};
        }
    });
}

std::string VirtualPrinter::Shown(HANDLE printer) const {
    for (std::size_t i = 0; i < printers_.size(); ++i) {
        if (&printers_[i] == printer) {
            return i == 0 ? "printer" : "printer " + std::to_string(i + 1);
        }
    }
    char text[2 + 16 + 1];
    std::snprintf(text, sizeof text, "0x%llX",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(printer)));
    return printer == nullptr ? "null" : text;
}

void VirtualPrinter::AddLine(const std::string& line) {
    lines_.push_back(line);
    if (folder_) {
        // Each line at once: a crash is when the log is wanted most.
        log_ << line << '\n' << std::flush;
    }
}

// False when the job's file cannot be written: it is then not ended yet.
bool VirtualPrinter::FinishJob(Printer& printer, bool printed) {
    PrintJob& job = printer.job;
    if (folder_) {
        const std::wstring name = JobFileStem(job) + (printed ? L".prn" : L".prn.unfinished");
        try {
            WriteWholeFile(*folder_ / name, job.bytes);
        } catch (const std::exception& error) {
            AddLine(error.what());
            if (printed) {
                return false;
            }
        }
    }
    printer.state = State::kIdle;
    job.printed = printed;
    jobs_.push_back(job);
    job.bytes.clear();
    if (on_job) {
        // Who is told may print again, which moves the jobs.
        const PrintJob finished = jobs_.back();
        on_job(finished);
    }
    return true;
}

void VirtualPrinter::GiveUpJob(HANDLE printer) {
    const DWORD last_error = GetLastError();
    const std::lock_guard lock(mutex_);
    Printer* const own = Find(printer);
    if (own != nullptr && own->state != State::kIdle) {
        AddLine("job " + std::to_string(own->job.number) + " was given up");
        FinishJob(*own, false);
    }
    SetLastError(last_error);
}
