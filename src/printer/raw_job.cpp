#include "printer/raw_job.h"

#include <winspool.h>

#include <utility>

#include "printer/spooler_input.h"

RawJob::RawJob(HANDLE printer, const wchar_t* name) noexcept : printer_(printer) {
    DOC_INFO_1W document{};
    document.pDocName = SpoolerInput(name);
    document.pDatatype = SpoolerInput(L"RAW");
    isDocumentOpen_ = StartDocPrinterW(printer, 1, reinterpret_cast<BYTE*>(&document)) != 0;
    isPageOpen_ = isDocumentOpen_ && StartPagePrinter(printer);
    succeeded_ = isPageOpen_;
    if (!succeeded_) {
        End();
    }
}

bool RawJob::Write(std::span<const std::uint8_t> piece) noexcept {
    if (!isPageOpen_) {
        return false;
    }
    // The spooler refuses a null pointer even for no bytes.
    const std::uint8_t nothing = 0;
    const std::uint8_t* bytes = piece.empty() ? &nothing : piece.data();
    DWORD count = 0;
    if (!WritePrinter(printer_, SpoolerInput(bytes), static_cast<DWORD>(piece.size()), &count)) {
        succeeded_ = false;
        End();
        return false;
    }
    written_ += count;
    return true;
}

// What was started is ended, the page before the document, whether or not what lies between succeeded.
bool RawJob::End() noexcept {
    if (std::exchange(isPageOpen_, false) && !EndPagePrinter(printer_)) {
        succeeded_ = false;
    }
    if (std::exchange(isDocumentOpen_, false) && !EndDocPrinter(printer_)) {
        succeeded_ = false;
    }
    return succeeded_;
}

void RawJob::Abandon() noexcept {
    isPageOpen_ = false;
    isDocumentOpen_ = false;
    succeeded_ = false;
}

bool SendRawJob(HANDLE printer, const wchar_t* name, std::span<const std::vector<std::uint8_t>> pieces,
                std::uint64_t* written) noexcept {
    RawJob job(printer, name);
    for (const std::vector<std::uint8_t>& piece : pieces) {
        if (!job.Write(piece)) {
            break;
        }
    }
    const bool isSent = job.End();
    if (written != nullptr) {
        *written = job.Written();
    }
    return isSent;
}
