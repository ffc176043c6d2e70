#include "devpages/printer_port.h"

#include <winspool.h>

#include <algorithm>
#include <cstdint>

namespace {

constexpr DWORD kLevel = 2;

// Far more than any printer's description has.
constexpr DWORD kLargestDescription = 16 * 1024 * 1024;

// Whether a text lies in the block, its terminator included.
bool Lies(const wchar_t* text, const void* block, DWORD size) noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(block);
    const auto address = reinterpret_cast<std::uintptr_t>(text);
    if (address < first || address >= first + size || address % alignof(wchar_t) != 0) {
        return false;
    }
    const std::size_t room = (first + size - address) / sizeof(wchar_t);
    return std::find(text, text + room, L'\0') != text + room;
}

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
        GetPrinterW(printer, kLevel, static_cast<BYTE*>(description_.Get()), size, &needed) &&
        Lies(description->pPortName, description, size)) {
        name_ = description->pPortName;
    }
}
