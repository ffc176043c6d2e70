#include "printer/raw_job.h"

#include <winspool.h>

#include "printer/spooler_input.h"

namespace {

using Pieces = std::span<const std::vector<std::uint8_t>>;

bool WritePieces(HANDLE printer, Pieces pieces, std::uint64_t& written) noexcept {
    for (const std::vector<std::uint8_t>& piece : pieces) {
        // The spooler refuses a null pointer even for no bytes.
        const std::uint8_t nothing = 0;
        const std::uint8_t* bytes = piece.empty() ? &nothing : piece.data();
        DWORD count = 0;
        if (!WritePrinter(printer, SpoolerInput(bytes), static_cast<DWORD>(piece.size()), &count)) {
            return false;
        }
        written += count;
    }
    return true;
}

// What was started is ended, whether or not what lies between succeeded.
bool SendPage(HANDLE printer, Pieces pieces, std::uint64_t& written) noexcept {
    if (!StartPagePrinter(printer)) {
        return false;
    }
    const bool isWritten = WritePieces(printer, pieces, written);
    return EndPagePrinter(printer) && isWritten;
}

bool SendDocument(HANDLE printer, const wchar_t* name, Pieces pieces, std::uint64_t& written) noexcept {
    DOC_INFO_1W document{};
    document.pDocName = SpoolerInput(name);
    document.pDatatype = SpoolerInput(L"RAW");
    if (StartDocPrinterW(printer, 1, reinterpret_cast<BYTE*>(&document)) == 0) {
        return false;
    }
    const bool isSent = SendPage(printer, pieces, written);
    return EndDocPrinter(printer) && isSent;
}

}  // namespace

bool SendRawJob(HANDLE printer, const wchar_t* name, Pieces pieces, std::uint64_t* written) noexcept {
    std::uint64_t count = 0;
    const bool isSent = SendDocument(printer, name, pieces, count);
    if (written != nullptr) {
        *written = count;
    }
    return isSent;
}
