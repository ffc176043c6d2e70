#include "devpages/printer_port.h"

#include <winspool.h>

#include "intrface/win/spooler_text.h"

namespace {

constexpr DWORD kLevel = 2;

// Far more than any printer's description has.
constexpr DWORD kLargestDescription = 16 * 1024 * 1024;

}  // namespace

PrinterPort::PrinterPort(HANDLE printer) noexcept {
    DWORD size = 0;
    GetPrinterW(printer, kLevel, nullptr, 0, &size);
    if (size < sizeof(PRINTER_INFO_2W) || size > kLargestDescription) {
        return;
    }
    description_.Reset(GlobalAlloc(GPTR, size));
    auto* const description = static_cast<PRINTER_INFO_2W*>(description_.Get());
    DWORD needed = 0;
    if (description != nullptr &&
        GetPrinterW(printer, kLevel, static_cast<BYTE*>(description_.Get()), size, &needed)) {
        name_ = TextIn(description, size, description->pPortName).data();
    }
}
