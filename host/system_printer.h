// A printer of this system, open for printing.
#pragma once

#include <windows.h>

#include <string>

class SystemPrinter {
  public:
    // Throws std::runtime_error when there is no printer of that name or it cannot be opened.
    explicit SystemPrinter(const std::wstring& name);
    ~SystemPrinter();
    SystemPrinter(const SystemPrinter&) = delete;
    SystemPrinter& operator=(const SystemPrinter&) = delete;

    HANDLE handle() const noexcept { return handle_; }
    // Empty when the spooler does not tell.
    std::wstring PortName() const;

  private:
    HANDLE handle_ = nullptr;
};
