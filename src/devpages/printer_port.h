// The port that a printer is connected to.
#pragma once

#include <windows.h>

#include "intrface/win/handles.h"

// What the spooler says of a printer, asked once and given back at the end.
class PrinterPort {
  public:
    // The handle is the host's; null or a stale one has no port.
    explicit PrinterPort(HANDLE printer) noexcept;

    // Such as "USB001"; empty when the spooler does not tell.
    const wchar_t* Name() const noexcept { return name_; }

  private:
    GlobalBlock description_;
    const wchar_t* name_ = L"";
};
