// What the two barcode pages do the same way: boxes with arrows for a font's numbers, groups in one place,
// and the test print.
#pragma once

#include <windows.h>

#include <cstdint>
#include <span>
#include <vector>

#include "intrface/win/page.h"
#include "intrface/win/sheet_context.h"
#include "printer/barcode_commands.h"
#include "printer/barcode_fonts.h"

// A control and where it stands, in pixels of the page at 96 dots an inch.
struct ControlPlace {
    int control;
    int x;
    int y;
};

// Moves controls; their size and their order stay. On a finer screen they stand as much further apart as the
// dialog's own controls do.
void MoveControls(HWND dialog, std::span<const ControlPlace> places) noexcept;

// Where a control ends behind the beginning of the label beside it, takes that part from the label, whose
// text stands at its right.
void CutLabelBehind(HWND dialog, int control, int label) noexcept;

void ShowControls(HWND dialog, std::span<const int> controls, bool isShown) noexcept;
void ShowControls(HWND dialog, std::span<const ControlPlace> places, bool isShown) noexcept;

// A box for a number: where it is typed, its arrows, and the label that tells its range (0 where the template
// does).
struct NumberControls {
    int edit;
    int spin;
    int rangeLabel;
};

// Gives box and arrows their limits.
void OpenNumber(HWND dialog, const NumberControls& controls, const NumberBox& box) noexcept;

// Limits of arrows and label for a range.
void SetNumberRange(HWND dialog, const NumberControls& controls, NumberRange range,
                    const Char16* rangeText) noexcept;

// Shows a number. The arrows go on from there, also where it lies outside their range.
void ShowNumber(HWND dialog, const NumberControls& controls, std::uint32_t number) noexcept;

// What a box holds, without a sign: the most that 32 bits count where it is more, 0 where it is no number.
std::uint32_t TypedNumber(HWND dialog, const NumberControls& controls) noexcept;

// After typing: shows what was stored of the number. Where that is another one the caret stands for going on
// to type: behind the number, or with it all selected where the box had been emptied.
void ShowStoredNumber(HWND dialog, const NumberControls& controls, std::uint32_t stored) noexcept;

// Only what is there can be printed.
void EnablePrint(HWND dialog, int dataBox, int printButton) noexcept;

// The text to print in the system's ANSI code page, as the printer gets it. May throw bad_alloc.
std::vector<std::uint8_t> TestData(HWND dialog, int dataBox);

// Sends a test print to the host's printer. Without one the job ends at its first call.
void SendTestPrint(const DocumentSheetContext& context, const wchar_t* name,
                   const CommandPieces& pieces) noexcept;

// Reports a barcode page's success. The host gets the sheet's spare handle for the page.
void ReportTestPageApplied(HWND dialog, const DocumentSheetContext& context) noexcept;

// A list whose selection, counted from `first`, is a byte of a font.
template <typename Font>
struct FontList {
    int list;
    std::uint8_t Font::*field;
    int first;
};

template <typename Font>
void ShowItem(HWND dialog, const FontList<Font>& row, const Font& font) noexcept {
    SelectItem(dialog, row.list, font.*row.field - row.first);
}

// Without a selection the font keeps what it has.
template <typename Font>
void TakeItem(HWND dialog, const FontList<Font>& row, Font& font) noexcept {
    const int kept = font.*row.field - row.first;
    font.*row.field = static_cast<std::uint8_t>(SelectedItem(dialog, row.list, kept) + row.first);
}
