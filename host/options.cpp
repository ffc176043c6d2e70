#include "options.h"

#include <algorithm>
#include <functional>

#include "utf8.h"

namespace {

constexpr wchar_t kDefaultPictures[] = L"pictures";

struct OptionRow {
    const wchar_t* name;
    const char* value;  // null: the option stands alone
    const char* help;   // further lines are indented by HelpText
    std::function<void(Options&, const std::wstring&)> apply;
};

void SetLanguage(Options& options, const std::wstring& value) {
    if (value != L"ENG" && value != L"CHN" && value != L"CHF") {
        throw UsageError("--language is ENG, CHN or CHF, not \"" + ToUtf8(value) + "\"");
    }
    options.language = value;
}

void SetSheet(Options& options, const std::wstring& value) {
    if (value != L"document" && value != L"printer") {
        throw UsageError("--sheet is document or printer, not \"" + ToUtf8(value) + "\"");
    }
    options.sheet = value == L"printer" ? SheetKind::kPrinter : SheetKind::kDocument;
}

void AddLogo(Options& options, const std::wstring& value) {
    constexpr std::size_t kMost = 9;
    if (options.logos.size() == kMost) {
        throw UsageError("--logo is given nine times at most");
    }
    options.logos.emplace_back(value);
}

const std::vector<OptionRow>& Rows() {
    static const std::vector<OptionRow> rows = {
        {L"--sheet", "document|printer",
         "the printing preferences, which is the default, or the properties of the\n"
         "printer, which leave the settings record alone",
         SetSheet},
        {L"--dll", "PATH", "the plug-in; otherwise KVMR72UI.dll beside this program",
         [](Options& options, const std::wstring& value) { options.dll = value; }},
        {L"--record", "FILE",
         "keep the settings record in FILE: read at start if it is there, written\n"
         "when the sheet ended with OK. A file that is no record is refused; one\n"
         "of another version's size is converted by the plug-in.",
         [](Options& options, const std::wstring& value) { options.record = value; }},
        {L"--language", "ENG|CHN|CHF",
         "choose the language, as the Main page does for the current user:\n"
         "English, Simplified Chinese or Traditional Chinese",
         SetLanguage},
        {L"--play", nullptr,
         "do not wait for a person: set paper size and zoom, watermarks, a drawer\n"
         "and a cut at document start; print every type of barcode; choose\n"
         "another language and go back, and press OK. With --sheet printer: print\n"
         "the self test; define, change and delete paper sizes; give a character\n"
         "of the control font a command, where the driver keeps that; download a\n"
         "file; convert, download and clear logos, and press OK",
         [](Options& options, const std::wstring&) { options.play = true; }},
        {L"--watermark", "BMP", "what --play chooses as image watermark; otherwise only a text is played",
         [](Options& options, const std::wstring& value) { options.watermark = value; }},
        {L"--download", "FILE", "what --play sends from the Download page; otherwise no file is sent",
         [](Options& options, const std::wstring& value) { options.download = value; }},
        {L"--logo", "BMP",
         "a logo that --play previews and sends from the Download page; given once\n"
         "for each, nine at most. Converted files are left beside them while the\n"
         "program runs",
         AddLogo},
        {L"--pictures", "DIR",
         "write a BMP of every page of the plug-in and of its dialogs into DIR,\n"
         "before a person or --play takes over; --play adds each watermark, each\n"
         "group of controls of the barcode pages, and the sheet right after the\n"
         "change of language, or the paper sizes, the file and each logo of the\n"
         "printer sheet",
         [](Options& options, const std::wstring& value) { options.pictures = value; }},
        {L"--headless", nullptr, "--play and --pictures, into the folder \"pictures\" unless one is named",
         [](Options& options, const std::wstring&) {
             options.play = true;
             if (!options.pictures) {
                 options.pictures = kDefaultPictures;
             }
         }},
        {L"--trace", "FILE", "write the plug-in's trace lines to FILE, UTF-8, those of its loading included",
         [](Options& options, const std::wstring& value) { options.trace = value; }},
        {L"--jobs", "DIR",
         "what the pages send to the printer goes into DIR: the bytes of each job\n"
         "(001-Barcode.prn) and every call of the spooler (spooler.txt)",
         [](Options& options, const std::wstring& value) { options.jobs = value; }},
        {L"--forms", "FILE",
         "keep the forms that the pages make (the user's own paper sizes) in FILE:\n"
         "read at start, written after each change; otherwise they go with the\n"
         "program",
         [](Options& options, const std::wstring& value) { options.forms = value; }},
        {L"--control-font", nullptr,
         "show what the Utility page hides: the button for the control font's table",
         [](Options& options, const std::wstring&) { options.control_font = true; }},
        {L"--prints", "FILE",
         "do not wait for a person: make the test prints that FILE lists, a line\n"
         "of a page (1D or 2D), a type and the data for each, divided by tabs",
         [](Options& options, const std::wstring& value) { options.prints = value; }},
        {L"--printer", "NAME",
         "a printer of this system stands behind the sheet; otherwise a virtual\n"
         "one, whose jobs are told on the console",
         [](Options& options, const std::wstring& value) { options.printer = value; }},
        {L"--show-record", "FILE",
         "print each field of the settings record in FILE with what it means, what\n"
         "is out of range and what the plug-in makes of that, and end. FILE is a\n"
         "record or anything that holds one, such as a saved DEVMODE",
         [](Options& options, const std::wstring& value) { options.show_record = value; }},
        {L"--help", nullptr, "print this and end",
         [](Options& options, const std::wstring&) { options.help = true; }},
        {L"--version", nullptr, "print the version and end",
         [](Options& options, const std::wstring&) { options.version = true; }},
    };
    return rows;
}

void CheckTogether(const Options& options) {
    const bool is_printer_sheet = options.sheet == SheetKind::kPrinter;
    const struct {
        const char* name;
        bool is_given;
        bool is_useless;
        const char* reason;
    } kRules[] = {
        {"--jobs", options.jobs.has_value(), options.printer.has_value(),
         "the virtual printer, not for --printer"},
        {"--forms", options.forms.has_value(), options.printer.has_value(),
         "the virtual printer, not for --printer"},
        {"--record", options.record.has_value(), is_printer_sheet, "the document sheet"},
        {"--watermark", options.watermark.has_value(), is_printer_sheet, "the document sheet"},
        {"--prints", options.prints.has_value(), is_printer_sheet, "the document sheet"},
        {"--download", options.download.has_value(), !is_printer_sheet, "the printer sheet"},
        {"--logo", !options.logos.empty(), !is_printer_sheet, "the printer sheet"},
        {"--control-font", options.control_font, !is_printer_sheet, "the printer sheet"},
    };
    for (const auto& rule : kRules) {
        if (rule.is_given && rule.is_useless) {
            throw UsageError(std::string(rule.name) + " is for " + rule.reason);
        }
    }
}

}  // namespace

Options ParseOptions(const std::vector<std::wstring>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto row = std::find_if(Rows().begin(), Rows().end(), [&](const OptionRow& candidate) {
            return candidate.name == arguments[i];
        });
        if (row == Rows().end()) {
            throw UsageError("unknown option \"" + ToUtf8(arguments[i]) + "\"");
        }
        std::wstring value;
        if (row->value != nullptr) {
            if (i + 1 == arguments.size() || arguments[i + 1].empty() ||
                arguments[i + 1].starts_with(L"--")) {
                throw UsageError(ToUtf8(row->name) + " needs a value: " + row->value);
            }
            value = arguments[++i];
        }
        row->apply(options, value);
    }
    CheckTogether(options);
    return options;
}

std::string HelpText() {
    constexpr std::size_t kColumn = 26;
    std::string text =
        "usage: KVMR72Host [OPTION...]\n"
        "\n"
        "Opens the printing preferences of the KVM-R72 receipt printer around its\n"
        "user-interface plug-in, as the driver does. When the sheet has ended with OK it\n"
        "prints what changed in the settings record, field by field. With --sheet printer\n"
        "it opens the printer's properties and tells of each change of a form.\n"
        "\n";
    for (const OptionRow& row : Rows()) {
        std::string line = "  " + ToUtf8(row.name);
        if (row.value != nullptr) {
            line += std::string(" ") + row.value;
        }
        line.resize(std::max(line.size() + 1, kColumn), ' ');
        for (const char* c = row.help; *c != '\0'; ++c) {
            line += *c;
            if (*c == '\n') {
                line.append(kColumn, ' ');
            }
        }
        text += line + "\n";
    }
    return text +
           "\n"
           "Exit codes: 0 done (Cancel included), 1 failed, 2 wrong command line, 99 hung and\n"
           "ended by the watchdog of --play.\n";
}
