// The logos of an open Download page, and sending them.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "devpages/logo_file.h"
#include "devpages/logo_rules.h"
#include "language/messages.h"

struct Logo {
    std::wstring path;
    LogoSettings settings;
    bool isConverted = false;  // its converted file was written while it was in the list
};

// In the order of the list, which is that of their numbers in the printer.
using Logos = std::vector<Logo>;

// Writes a logo's converted file as its type asks for. `output` gets the path of the result. Never throws.
LogoStatus ConvertLogo(const Logo& logo, LogoType type, std::wstring& output, LogoBuffers& buffers) noexcept;

// Brings a logo's converted file up to date. Where the type asks for none, the one of another type goes, so
// that its size is not taken for the logo's; a file that was there before the logo stays. Never throws.
void KeepConverted(Logo& logo, LogoType type, LogoBuffers& buffers) noexcept;

// Removes a logo's converted file. Never throws.
void DeleteConverted(const Logo& logo) noexcept;

// What keeps the logos from being sent: there are none, a size cannot be told, or the printer's memory is too
// small. The size of a logo is that of its converted file, or of its own where there is none.
std::optional<Message> ReasonNotToSend(const Logos& logos);

// Sends all logos as one job. Nothing is reported: the spooler's failures and a logo that cannot be made into
// a raster end the job. One whose file is not black and white where that is to be sent leaves the spooler's
// page and document as they are. May throw bad_alloc; the job is ended then.
void SendLogos(HANDLE printer, const Logos& logos, LogoType type);
