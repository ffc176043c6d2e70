// The command line of the host program.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// A wrong command line; the text says what is wrong, in UTF-8.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Options {
    std::optional<std::filesystem::path> dll;  // else KVMR72UI.dll beside the program
    std::optional<std::filesystem::path> record;
    std::optional<std::filesystem::path> pictures;
    std::optional<std::filesystem::path> watermark;
    std::optional<std::filesystem::path> trace;
    // At most one of the two; neither is a virtual printer without files.
    std::optional<std::filesystem::path> prints;
    std::optional<std::filesystem::path> jobs;  // folder of the virtual printer
    std::optional<std::wstring> printer;        // name of one of this system
    std::optional<std::wstring> language;       // ENG, CHN or CHF
    bool play = false;
    bool help = false;
    bool version = false;
};

// `arguments` without the program's name. Throws UsageError.
Options ParseOptions(const std::vector<std::wstring>& arguments);

// The whole of --help, UTF-8.
std::string HelpText();
