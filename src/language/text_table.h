// The loaded texts of one table: filled when a sheet or dialog initialises, read when controls are labelled.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <span>

#include "language/text_entry.h"

// One instance a table and process: two sheets open at once show the same language, whichever threads they
// are on.
class TextTable {
  public:
    // `section` and `entries` must live as long as the table.
    constexpr TextTable(const wchar_t* section, std::span<const TextEntry> entries) noexcept
        : section_(section), entries_(entries) {}
    TextTable(const TextTable&) = delete;
    TextTable& operator=(const TextTable&) = delete;
    ~TextTable() { delete[] rows_.load(); }

    // Takes every text from the language file as last refreshed. May throw bad_alloc; the texts are then as
    // before.
    void Load();

    // Load, unless the texts are already those of the language file as last refreshed.
    void LoadIfChanged();

    // The text of a row; the English one before the first Load. Stays until the module goes.
    const wchar_t* operator[](std::size_t row) const noexcept;

    // Labels the dialog's controls, touching only those whose text differs.
    void ApplyTo(HWND dialog) const;

    // Makes the entries of a combo box those of a list, touching it only when they differ. What is selected
    // stays selected.
    void ApplyToList(HWND combo, const ListTexts& list) const;

    std::span<const TextEntry> Entries() const noexcept { return entries_; }
    const wchar_t* Section() const noexcept { return section_; }

  private:
    using Row = std::atomic<const wchar_t*>;

    Row* Rows();

    const wchar_t* section_;
    std::span<const TextEntry> entries_;
    // As many as entries, once the first Load has made them.
    std::atomic<Row*> rows_ = nullptr;
    std::atomic<std::uint32_t> generation_ = 0;
};

// What every page does when it is painted: takes the texts of the language as it is now, and labels the
// dialog's controls. May throw bad_alloc.
void ReloadTexts(HWND dialog, TextTable& captions, TextTable& help);
void ReloadTexts(HWND dialog, TextTable& captions);

// Sets a window's text unless it shows that text already, which would repaint it for nothing.
void SetTextIfChanged(HWND window, const wchar_t* text);
