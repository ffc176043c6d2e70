#include "devpages/printer_forms.h"

#include <winspool.h>

#include <cstddef>
#include <span>
#include <string_view>

#include "intrface/win/spooler_text.h"
#include "printer/spooler_input.h"

namespace {

constexpr DWORD kLevel = 1;
constexpr DWORD kUserForm = 0;

// Far more than any server has: 10 000 forms with names of 300 characters take a tenth.
constexpr DWORD kLargestList = 64 * 1024 * 1024;

// The first `count` of the list, which takes up `size` bytes; a count that it has no room for is not
// believed.
std::vector<PaperForm> FormsIn(std::span<const FORM_INFO_1W> list, std::size_t size, DWORD count) {
    std::vector<PaperForm> forms;
    if (count > size / sizeof(FORM_INFO_1W)) {
        return forms;
    }
    forms.reserve(count);
    for (const FORM_INFO_1W& form : list.first(count)) {
        const std::wstring_view name = TextIn(list.data(), list.size_bytes(), form.pName);
        forms.push_back({std::wstring(name), form.Size.cx, form.Size.cy});
    }
    return forms;
}

FORM_INFO_1W FormOf(const std::wstring& formName, PaperSize size) noexcept {
    const FormGeometry geometry = GeometryOf(size);
    FORM_INFO_1W form{};
    form.Flags = kUserForm;
    form.pName = SpoolerInput(formName.c_str());
    form.Size = {geometry.width, geometry.height};
    form.ImageableArea = {geometry.left, geometry.top, geometry.right, geometry.bottom};
    return form;
}

}  // namespace

bool ReadForms(HANDLE printer, std::vector<PaperForm>& forms) {
    // Too small for any list but an empty one: asks for the size.
    FORM_INFO_1W none{};
    DWORD size = 0;
    DWORD count = 0;
    if (EnumFormsW(printer, kLevel, reinterpret_cast<BYTE*>(&none), sizeof none, &size, &count)) {
        forms = FormsIn({&none, 1}, sizeof none, count);
        return true;
    }
    if (size <= sizeof none || size > kLargestList) {
        return false;
    }
    // Whole forms, for their alignment, and names behind them. What lies behind `size` stays zero and ends
    // the last name, whatever was written there.
    std::vector<FORM_INFO_1W> list(size / sizeof none + 2);
    DWORD needed = 0;
    count = 0;
    if (!EnumFormsW(printer, kLevel, reinterpret_cast<BYTE*>(list.data()), size, &needed, &count)) {
        return false;
    }
    forms = FormsIn(list, size, count);
    return true;
}

bool AddPaper(HANDLE printer, const std::wstring& formName, PaperSize size) noexcept {
    FORM_INFO_1W form = FormOf(formName, size);
    return AddFormW(printer, kLevel, reinterpret_cast<BYTE*>(&form)) != FALSE;
}

bool RewritePaper(HANDLE printer, const std::wstring& formName, PaperSize size) noexcept {
    FORM_INFO_1W form = FormOf(formName, size);
    return SetFormW(printer, SpoolerInput(formName.c_str()), kLevel, reinterpret_cast<BYTE*>(&form)) != FALSE;
}

bool DeletePaper(HANDLE printer, const std::wstring& formName) noexcept {
    return DeleteFormW(printer, SpoolerInput(formName.c_str())) != FALSE;
}
