#include "system_printer.h"

#include <winspool.h>

#include <stdexcept>
#include <vector>

#include "utf8.h"

SystemPrinter::SystemPrinter(const std::wstring& name) {
    std::wstring changeable = name;
    if (!OpenPrinterW(changeable.data(), &handle_, nullptr)) {
        throw std::runtime_error("cannot open the printer \"" + ToUtf8(name) + "\": error " +
                                 std::to_string(GetLastError()));
    }
}

SystemPrinter::~SystemPrinter() {
    ClosePrinter(handle_);
}

std::wstring SystemPrinter::PortName() const {
    constexpr DWORD kLevel = 2;
    DWORD size = 0;
    GetPrinterW(handle_, kLevel, nullptr, 0, &size);
    // Whole structures, for their alignment.
    std::vector<PRINTER_INFO_2W> info(size / sizeof(PRINTER_INFO_2W) + 1);
    if (!GetPrinterW(handle_, kLevel, reinterpret_cast<BYTE*>(info.data()), size, &size) ||
        info.front().pPortName == nullptr) {
        return {};
    }
    return info.front().pPortName;
}
