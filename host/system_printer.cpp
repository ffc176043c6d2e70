#include "system_printer.h"

#include <winspool.h>

#include <stdexcept>

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
