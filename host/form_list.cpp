#include "form_list.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "files.h"
#include "text_packer.h"
#include "utf8.h"

namespace {

// As the platform documents FORM_INFO_1.
constexpr std::size_t kLongestName = 31;

constexpr std::size_t kLargestFile = 1024ULL * 1024;

// In a file: what stands in for bytes that are no UTF-8, and so never for itself.
constexpr wchar_t kReplacement = L'\xFFFD';
// Of a character that a line cannot have: \u and four hexadecimal digits.
constexpr std::size_t kEscape = 6;

bool IsName(std::wstring_view name) {
    return !name.empty() && name.size() <= kLongestName && name.find(L'\0') == std::wstring_view::npos;
}

// Something can be printed on, and all of that lies on the sheet.
bool IsSheet(const Form& form) {
    const RECTL& area = form.area;
    return area.left >= 0 && area.top >= 0 && area.left < area.right && area.top < area.bottom &&
           area.right <= form.size.cx && area.bottom <= form.size.cy;
}

DWORD Check(const Form& form) {
    if (!IsName(form.name)) {
        return ERROR_INVALID_FORM_NAME;
    }
    if (form.flags != FORM_USER) {
        return ERROR_INVALID_PARAMETER;
    }
    return IsSheet(form) ? ERROR_SUCCESS : ERROR_INVALID_FORM_SIZE;
}

template <typename Forms>
auto Find(Forms& forms, std::wstring_view name) {
    return std::find_if(forms.begin(), forms.end(), [name](const Form& form) { return form.name == name; });
}

// --- The file

bool IsEscaped(wchar_t unit) {
    constexpr wchar_t kFirstHalf = 0xD800;
    constexpr wchar_t kLastHalf = 0xDFFF;
    return unit < L' ' || unit == L'\\' || unit == kReplacement || (unit >= kFirstHalf && unit <= kLastHalf);
}

std::string FileName(const std::wstring& name) {
    std::string text;
    for (const wchar_t unit : name) {
        if (IsEscaped(unit)) {
            char escape[kEscape + 1];
            std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(unit));
            text += escape;
        } else {
            text += ToUtf8({&unit, 1});
        }
    }
    return text;
}

std::string FileLine(const Form& form) {
    std::string line = FileName(form.name);
    for (const LONG number :
         {form.size.cx, form.size.cy, form.area.left, form.area.top, form.area.right, form.area.bottom}) {
        line += '\t' + std::to_string(number);
    }
    return line + '\n';
}

// Nothing for a text that FileName does not make.
std::optional<std::wstring> NameIn(std::string_view text) {
    const std::wstring read = FromUtf8(text);
    std::wstring name;
    for (std::size_t at = 0; at < read.size(); ++at) {
        if (read[at] != L'\\') {
            if (read[at] < L' ' || read[at] == kReplacement) {
                return std::nullopt;
            }
            name += read[at];
            continue;
        }
        const std::string escape = ToUtf8(std::wstring_view(read).substr(at, kEscape));
        std::uint16_t unit = 0;
        if (escape.size() != kEscape || escape[1] != 'u' ||
            std::from_chars(&escape[2], escape.data() + kEscape, unit, 16).ptr != escape.data() + kEscape) {
            return std::nullopt;
        }
        name += static_cast<wchar_t>(unit);
        at += kEscape - 1;
    }
    return name;
}

std::optional<LONG> NumberIn(std::string_view text) {
    LONG number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

std::optional<Form> FormIn(std::string_view line) {
    const std::size_t name_end = std::min(line.find('\t'), line.size());
    const auto name = NameIn(line.substr(0, name_end));
    line.remove_prefix(name_end);
    std::array<LONG, 6> numbers;
    for (LONG& number : numbers) {
        if (line.empty()) {
            return std::nullopt;
        }
        line.remove_prefix(1);
        const std::size_t end = std::min(line.find('\t'), line.size());
        const auto read = NumberIn(line.substr(0, end));
        if (!read) {
            return std::nullopt;
        }
        number = *read;
        line.remove_prefix(end);
    }
    if (!name || !line.empty()) {
        return std::nullopt;
    }
    const auto& [width, height, left, top, right, bottom] = numbers;
    return Form{.name = *name, .size = {width, height}, .area = {left, top, right, bottom}};
}

const char* Reason(DWORD error) {
    switch (error) {
        case ERROR_FILE_EXISTS:
            return " names a form that there is already";
        case ERROR_INVALID_FORM_NAME:
            return " has a name that no form can have";
        default:
            return " has a size that no form can have";
    }
}

}  // namespace

bool Form::operator==(const Form& other) const noexcept {
    return name == other.name && flags == other.flags && size.cx == other.size.cx &&
           size.cy == other.size.cy && area.left == other.area.left && area.top == other.area.top &&
           area.right == other.area.right && area.bottom == other.area.bottom;
}

Form WholeSheet(std::wstring name, LONG width, LONG height, DWORD flags) {
    return {.name = std::move(name), .flags = flags, .size = {width, height}, .area = {0, 0, width, height}};
}

std::vector<Form> BuiltInForms() {
    return {
        WholeSheet(L"Letter", 215900, 279400, FORM_BUILTIN),
        WholeSheet(L"Legal", 215900, 355600, FORM_BUILTIN),
        WholeSheet(L"Executive", 184150, 266700, FORM_BUILTIN),
        WholeSheet(L"A4", 210000, 297000, FORM_BUILTIN),
        WholeSheet(L"A5", 148000, 210000, FORM_BUILTIN),
        WholeSheet(L"Envelope #10", 104775, 241300, FORM_BUILTIN),
    };
}

FormList::FormList(std::optional<std::filesystem::path> file)
    : forms_(BuiltInForms()), file_(std::move(file)) {
    if (file_) {
        Read();
    }
}

DWORD FormList::Add(const Form& form) {
    if (const DWORD error = Check(form); error != ERROR_SUCCESS) {
        return error;
    }
    std::vector<Form> forms = forms_;
    if (Find(forms, form.name) != forms.end()) {
        return ERROR_FILE_EXISTS;
    }
    forms.push_back(form);
    Keep(std::move(forms));
    return ERROR_SUCCESS;
}

DWORD FormList::Set(std::wstring_view name, const Form& form) {
    std::vector<Form> forms = forms_;
    const auto found = Find(forms, name);
    // A form has one name; which would count if it were given two is not documented.
    if (found == forms.end() || form.name != name) {
        return ERROR_INVALID_FORM_NAME;
    }
    if (found->flags == FORM_BUILTIN) {
        return ERROR_INVALID_PARAMETER;
    }
    if (const DWORD error = Check(form); error != ERROR_SUCCESS) {
        return error;
    }
    *found = form;
    Keep(std::move(forms));
    return ERROR_SUCCESS;
}

DWORD FormList::Delete(std::wstring_view name) {
    std::vector<Form> forms = forms_;
    const auto found = Find(forms, name);
    if (found == forms.end()) {
        return ERROR_INVALID_FORM_NAME;
    }
    if (found->flags == FORM_BUILTIN) {
        return ERROR_INVALID_PARAMETER;
    }
    forms.erase(found);
    Keep(std::move(forms));
    return ERROR_SUCCESS;
}

void FormList::Read() {
    const auto bytes = ReadWholeFile(*file_, kLargestFile);
    if (!bytes) {
        // A file that cannot be written is better known now than when a form was changed.
        Keep(forms_);
        return;
    }
    std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    // Editors mark UTF-8 and end lines as they like.
    if (constexpr std::string_view kMark = "\xEF\xBB\xBF"; text.starts_with(kMark)) {
        text.remove_prefix(kMark.size());
    }
    for (int number = 1; !text.empty(); ++number) {
        const std::string where = ToUtf8(file_->native()) + ", line " + std::to_string(number);
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos) {
            throw std::runtime_error(where + " is not finished");
        }
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        const auto form = FormIn(line);
        if (!form) {
            throw std::runtime_error(where + " is not a name, width, height and four edges, divided by tabs");
        }
        DWORD error = Check(*form);
        if (error == ERROR_SUCCESS && Find(forms_, form->name) != forms_.end()) {
            error = ERROR_FILE_EXISTS;
        }
        if (error != ERROR_SUCCESS) {
            throw std::runtime_error(where + Reason(error));
        }
        forms_.push_back(*form);
    }
}

void FormList::Keep(std::vector<Form> forms) {
    if (file_) {
        std::string text;
        for (const Form& form : forms) {
            if (form.flags == FORM_USER) {
                text += FileLine(form);
            }
        }
        WriteWholeFile(*file_, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    forms_ = std::move(forms);
}

DWORD CopyForms(const std::vector<Form>& forms, void* buffer, DWORD size, DWORD& needed) {
    std::size_t total = forms.size() * sizeof(FORM_INFO_1W);
    for (const Form& form : forms) {
        total += TextPacker::SizeOf(form.name);
    }
    needed = static_cast<DWORD>(total);
    if (const DWORD error = CheckBuffer(buffer, size, needed); error != ERROR_SUCCESS) {
        return error;
    }
    TextPacker packer(buffer, forms.size() * sizeof(FORM_INFO_1W));
    for (std::size_t i = 0; i < forms.size(); ++i) {
        packer.PutStructure(FORM_INFO_1W{.Flags = forms[i].flags,
                                         .pName = packer.Put(forms[i].name),
                                         .Size = forms[i].size,
                                         .ImageableArea = forms[i].area},
                            i);
    }
    return ERROR_SUCCESS;
}
