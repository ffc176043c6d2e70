// The command line of the host program.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "plugin_host.h"

// A wrong command line; the text says what is wrong, in UTF-8.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Options {
    SheetKind sheet = SheetKind::kDocument;
    std::optional<std::filesystem::path> dll;  // else KVMR72UI.dll beside the program
    // For the document sheet, as are watermark and prints.
    std::optional<std::filesystem::path> record;
    std::optional<std::filesystem::path> pictures;
    std::optional<std::filesystem::path> watermark;
    std::optional<std::filesystem::path> download;  // for the printer sheet
    std::vector<std::filesystem::path> logos;       // for the printer sheet
    std::optional<std::filesystem::path> trace;
    std::optional<std::filesystem::path> prints;
    // Either folder and forms file of the virtual printer, or the name of a printer of this system; neither
    // is a virtual printer without files.
    std::optional<std::filesystem::path> jobs;
    std::optional<std::filesystem::path> forms;
    std::optional<std::wstring> printer;
    std::optional<std::wstring> language;              // ENG, CHN or CHF
    std::optional<std::filesystem::path> show_record;  // instead of opening a sheet
    bool control_font = false;
    bool play = false;
    bool help = false;
    bool version = false;
};

// `arguments` without the program's name. Throws UsageError.
Options ParseOptions(const std::vector<std::wstring>& arguments);

// The whole of --help, UTF-8.
std::string HelpText();
