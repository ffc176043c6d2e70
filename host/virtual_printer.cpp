#include "virtual_printer.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "files.h"
#include "utf8.h"

namespace {

constexpr char kSpooler[] = "winspool.drv";
constexpr wchar_t kLogFile[] = L"spooler.txt";
constexpr DWORD kDocumentLevel = 1;
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

}  // namespace

std::wstring JobFileStem(const PrintJob& job) {
    std::wstring number = std::to_wstring(job.number);
    number.insert(0, 3 - std::min<std::size_t>(number.size(), 3), L'0');
    std::wstring stem = number + L"-" + FileNamePart(job.document);
    return job.label.empty() ? stem : stem + L"-" + FileNamePart(job.label);
}

VirtualPrinter::VirtualPrinter(std::optional<std::filesystem::path> folder, const std::wstring& plugin)
    : folder_(std::move(folder)), imports_(plugin) {
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
}

VirtualPrinter::~VirtualPrinter() {
    GiveUpJob();
    active = nullptr;
}

HANDLE VirtualPrinter::handle() const noexcept {
    // An address of this program's own cannot be another printer's handle.
    return const_cast<VirtualPrinter*>(this);
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
    const bool started =
        Answer("StartDocPrinterW", printer, ", " + std::to_string(level) + ", " + shown, [&]() -> Outcome {
            if (level != kDocumentLevel) {
                return {ERROR_INVALID_LEVEL};
            }
            if (document == nullptr) {
                return {ERROR_INVALID_PARAMETER};
            }
            if (state_ != State::kIdle) {
                return {ERROR_INVALID_PRINTER_STATE};
            }
            job_ = {.number = job_.number + 1, .label = std::exchange(next_label_, {})};
            job_.document = document->pDocName == nullptr ? L"" : document->pDocName;
            state_ = State::kDocument;
            return {ERROR_SUCCESS, std::to_string(job_.number)};
        });
    return started ? job_.number : 0;
}

BOOL VirtualPrinter::StartPage(HANDLE printer) {
    return Answer("StartPagePrinter", printer, "", [this]() -> Outcome {
        if (state_ != State::kDocument) {
            return {OrderError()};
        }
        state_ = State::kPage;
        return {};
    });
}

BOOL VirtualPrinter::Write(HANDLE printer, const void* bytes, DWORD size, DWORD* written) {
    const std::string shown = ", " + std::to_string(size) + " bytes:" + ShownBytes(bytes, size);
    return Answer("WritePrinter", printer, shown, [&]() -> Outcome {
        if (written == nullptr) {
            return {ERROR_INVALID_PARAMETER};
        }
        if (state_ != State::kPage) {
            return {OrderError()};
        }
        *written = 0;
        if (bytes == nullptr && size != 0) {
            return {ERROR_INVALID_USER_BUFFER};
        }
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        job_.bytes.insert(job_.bytes.end(), first, first + size);
        *written = size;
        return {ERROR_SUCCESS, "TRUE, " + std::to_string(size) + " written"};
    });
}

BOOL VirtualPrinter::EndPage(HANDLE printer) {
    return Answer("EndPagePrinter", printer, "", [this]() -> Outcome {
        if (state_ != State::kPage) {
            return {OrderError()};
        }
        state_ = State::kDocument;
        return {};
    });
}

// A page that is still open ends with its document.
BOOL VirtualPrinter::EndDocument(HANDLE printer) {
    const bool ended = Answer("EndDocPrinter", printer, "", [this]() -> Outcome {
        if (state_ == State::kIdle) {
            return {ERROR_SPL_NO_STARTDOC};
        }
        if (!FinishJob(true)) {
            return {ERROR_WRITE_FAULT};
        }
        return {};
    });
    if (!ended && IsOwn(printer)) {
        GiveUpJob();
    }
    return ended;
}

BOOL VirtualPrinter::Abort(HANDLE printer) {
    const bool aborted = Answer("AbortPrinter", printer, "", [this]() -> Outcome {
        if (state_ == State::kIdle) {
            return {ERROR_SPL_NO_STARTDOC};
        }
        return {};
    });
    if (aborted) {
        GiveUpJob();
    }
    return aborted;
}

BOOL VirtualPrinter::Close(HANDLE printer) {
    const bool closed = Answer("ClosePrinter", printer, "", [this]() -> Outcome {
        is_closed_ = true;
        return {};
    });
    if (closed) {
        GiveUpJob();
    }
    return closed;
}

bool VirtualPrinter::IsOwn(HANDLE printer) const noexcept {
    return printer == handle() && !is_closed_;
}

DWORD VirtualPrinter::OrderError() const noexcept {
    return state_ == State::kIdle ? ERROR_SPL_NO_STARTDOC : ERROR_INVALID_PRINTER_STATE;
}

// Answers a call and keeps a line about it. The last error changes only when the call fails.
bool VirtualPrinter::Answer(const char* function, HANDLE printer, const std::string& arguments,
                            const std::function<Outcome()>& action) {
    const DWORD last_error = GetLastError();
    const std::lock_guard lock(mutex_);
    Outcome outcome;
    if (calls_to_failure_ > 0 && --calls_to_failure_ == 0) {
        outcome.error = planned_error_;
    } else {
        outcome = IsOwn(printer) ? action() : Outcome{ERROR_INVALID_HANDLE};
    }
    const bool succeeded = outcome.error == ERROR_SUCCESS;
    AddLine(std::string(function) + "(" + Shown(printer) + arguments + ") -> " +
            (succeeded ? outcome.told : "FALSE, error " + std::to_string(outcome.error)));
    SetLastError(succeeded ? last_error : outcome.error);
    return succeeded;
}

std::string VirtualPrinter::Shown(HANDLE printer) const {
    if (printer == handle()) {
        return "printer";
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
bool VirtualPrinter::FinishJob(bool printed) {
    if (folder_) {
        const std::wstring name = JobFileStem(job_) + (printed ? L".prn" : L".prn.unfinished");
        try {
            WriteWholeFile(*folder_ / name, job_.bytes);
        } catch (const std::exception& error) {
            AddLine(error.what());
            if (printed) {
                return false;
            }
        }
    }
    state_ = State::kIdle;
    job_.printed = printed;
    jobs_.push_back(job_);
    job_.bytes.clear();
    if (on_job) {
        // Who is told may print again, which moves the jobs.
        const PrintJob finished = jobs_.back();
        on_job(finished);
    }
    return true;
}

void VirtualPrinter::GiveUpJob() {
    const DWORD last_error = GetLastError();
    const std::lock_guard lock(mutex_);
    if (state_ != State::kIdle) {
        AddLine("job " + std::to_string(job_.number) + " was given up");
        FinishJob(false);
    }
    SetLastError(last_error);
}
