// The forms of a print server, which are paper sizes by name: built-in ones that stay as they are, and the
// user's own. What is refused, and with which error, is what the platform says of its spooler's forms; names
// are compared unit for unit.
#pragma once

#include <windows.h>

#include <winspool.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// In thousandths of a millimetre.
struct Form {
    std::wstring name = {};
    DWORD flags = FORM_USER;
    SIZEL size = {};
    RECTL area = {};  // what can be printed on

    bool operator==(const Form& other) const noexcept;
};

// A sheet that can be printed on everywhere.
Form WholeSheet(std::wstring name, LONG width, LONG height, DWORD flags = FORM_USER);

// What every server starts with.
std::vector<Form> BuiltInForms();

class FormList {
  public:
    // With a file the user's forms are read from it and each change is written to it; it is made when it is
    // missing. Its lines are a name, width, height and the left, top, right and bottom edge of what can be
    // printed on, divided by tabs, in UTF-8. Throws std::runtime_error that names the line that is no form
    // of a user's, or the file when it cannot be used.
    explicit FormList(std::optional<std::filesystem::path> file = std::nullopt);

    // Built-in ones first, then the user's in the order in which they were added.
    const std::vector<Form>& forms() const noexcept { return forms_; }
    // Takes any list as it is, and leaves the file alone.
    void Replace(std::vector<Form> forms) { forms_ = std::move(forms); }

    // Each gives the platform's error, ERROR_SUCCESS when it is done. Throws std::runtime_error, with the
    // list as before, when the file cannot be written.
    DWORD Add(const Form& form);
    DWORD Set(std::wstring_view name, const Form& form);
    DWORD Delete(std::wstring_view name);

  private:
    void Read();
    void Keep(std::vector<Form> forms);

    std::vector<Form> forms_;
    std::optional<std::filesystem::path> file_;
};

// Fills a buffer as EnumFormsW does at level 1: the structures, and their names behind them. `needed` is the
// size in either case. ERROR_INSUFFICIENT_BUFFER, and an untouched buffer, when it is too small.
DWORD CopyForms(const std::vector<Form>& forms, void* buffer, DWORD size, DWORD& needed);
