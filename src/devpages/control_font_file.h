// The control font's table on the disk.
#pragma once

#include <windows.h>

#include <string>

#include "devpages/control_font.h"

// Goes through the system's functions for such files. Where the system does not say where Windows lies, or it
// lies too deep, there is no file: nothing is read, and every write fails.
class ControlFontFileOnDisk final : public ControlFontFile {
  public:
    // May throw bad_alloc.
    ControlFontFileOnDisk();

    std::wstring Keys() override;
    std::size_t Read(const wchar_t* key, std::span<wchar_t> value) noexcept override;
    void Remove() noexcept override;
    bool Write(const wchar_t* key, const wchar_t* value) noexcept override;

  private:
    std::wstring path_;
};
