#include "print_list.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "files.h"
#include "plugin_pages.h"
#include "utf8.h"

namespace {

constexpr std::size_t kMaxFileSize = 16ULL * 1024 * 1024;

ListedPrint ReadLine(std::wstring_view line, const std::string& where) {
    const std::size_t first = line.find(L'\t');
    const std::size_t second = line.find(L'\t', first + 1);
    const std::wstring_view page = line.substr(0, first);
    if (first == std::wstring_view::npos || second == std::wstring_view::npos ||
        (page != L"1D" && page != L"2D")) {
        throw std::runtime_error(where + " is not \"1D\" or \"2D\", a type and the data, divided by tabs");
    }
    return {page == L"2D", std::wstring(line.substr(first + 1, second - first - 1)),
            std::wstring(line.substr(second + 1))};
}

int PositionOf(const Window& page, const BarcodePage& controls, const std::wstring& type) {
    const std::vector<std::wstring> types = page.ComboItems(controls.types);
    const auto found = std::find(types.begin(), types.end(), type);
    if (found == types.end()) {
        throw UiError("\"" + ToUtf8(type) + "\" is no type of \"" + ToUtf8(page.Title()) + "\"");
    }
    return static_cast<int>(found - types.begin());
}

}  // namespace

std::vector<ListedPrint> ReadPrintList(const std::filesystem::path& file) {
    const auto bytes = ReadWholeFile(file, kMaxFileSize);
    if (!bytes) {
        throw std::runtime_error("there is no file " + ToUtf8(file.native()));
    }
    const std::wstring text = FromUtf8({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    std::vector<ListedPrint> prints;
    std::size_t number = 1;
    // Editors mark UTF-8 and end lines as they like.
    for (std::size_t begin = text.starts_with(L'\xFEFF') ? 1 : 0; begin < text.size(); ++number) {
        const std::size_t end = std::min(text.find(L'\n', begin), text.size());
        std::wstring_view line = std::wstring_view(text).substr(begin, end - begin);
        if (line.ends_with(L'\r')) {
            line.remove_suffix(1);
        }
        prints.push_back(ReadLine(line, ToUtf8(file.native()) + ", line " + std::to_string(number)));
        begin = end + 1;
    }
    return prints;
}

void PrintTests(const UiDriver& driver, const Sheet& sheet, const std::vector<ListedPrint>& prints,
                VirtualPrinter* printer) {
    for (const bool is2D : {false, true}) {
        const BarcodePage& controls = is2D ? k2DCode : k1DCode;
        const Window page = SelectPageWith(sheet, controls.unique);
        for (const ListedPrint& print : prints) {
            if (print.is2D != is2D) {
                continue;
            }
            page.SelectCombo(controls.types, PositionOf(page, controls, print.type));
            page.TypeText(controls.data, print.data);
            if (page.Text(controls.data) != print.data) {
                throw UiError(ToUtf8(print.type) + ": the box does not take \"" + ToUtf8(print.data) + "\"");
            }
            if (!page.IsEnabled(controls.print)) {
                throw UiError(ToUtf8(print.type) + ": there is nothing to print");
            }
            if (printer != nullptr) {
                printer->LabelNextJob(print.type);
            }
            if (const auto message = PressForMessage(driver, sheet, page, controls.print)) {
                throw UiError(ToUtf8(print.type) + " \"" + ToUtf8(print.data) + "\": " + ToUtf8(*message));
            }
        }
    }
    sheet.PressOk();
}
