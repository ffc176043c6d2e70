// The user's own paper sizes: forms of the print server, known by their names. What the Utility page lists,
// shows, rewrites and deletes, and which sizes it takes.
//
// The page counts in tenths of a millimetre, a form in thousandths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/text.h"

inline constexpr Char16 kPaperPrefix[] = TEXT16("Custom Paper-");

// Made where the server has none; can be rewritten but not deleted.
inline constexpr Char16 kDefaultPaper[] = TEXT16("Custom Paper-R72");

// The box of the name, which holds the name without prefix: how much can be typed there, and how much of what
// it holds is read. A listed name may be longer than both.
constexpr int kTypedNameLength = 18;
constexpr std::size_t kReadNameLength = 255;

// An edit with arrows. Both ends belong to the range.
struct PaperSizeBox {
    std::int32_t least;
    std::int32_t most;
    int digits;               // how many can be typed
    const Char16* rangeText;  // the same in all languages
};
inline constexpr PaperSizeBox kPaperWidth = {410, 720, 3, TEXT16("[ 410 - 720 (0.1mm) ]")};
inline constexpr PaperSizeBox kPaperHeight = {254, 32760, 5, TEXT16("[ 254 - 32760 (0.1mm) ]")};

struct PaperSize {
    std::int32_t width;
    std::int32_t height;

    bool operator==(const PaperSize&) const = default;
};

// Of the default paper when it is made.
inline constexpr PaperSize kDefaultPaperSize = {720, 2970};

// What an edit stands for.
struct TypedSize {
    std::int32_t size;  // in range
    bool isReplaced;    // the edit shows `size` from now on; else it keeps what was typed, leading zeros too
};

// Takes the number as GetDlgItemInt reads it with a sign: 0 where the text is none or too large for 32 bits.
// It is compared without sign: a negative number is a very large one.
TypedSize ClampPaperSize(const PaperSizeBox& box, std::int32_t typed) noexcept;

// A form of the server, in thousandths of a millimetre.
struct PaperForm {
    String16 name;
    std::int32_t width;
    std::int32_t height;
};

struct FormGeometry {
    std::int32_t width;
    std::int32_t height;
    // What can be printed on: the whole sheet.
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;

    bool operator==(const FormGeometry&) const = default;
};

// Of a size in range.
FormGeometry GeometryOf(PaperSize size) noexcept;

// Whole tenths; a form's rest is not shown.
PaperSize SizeOf(const PaperForm& form) noexcept;

// A form is the page's when the prefix stands anywhere in its name, in this spelling.
bool IsCustomPaper(StringView16 formName) noexcept;

bool IsDefaultPaper(StringView16 formName) noexcept;

// The name as its box shows it: without as many units as the prefix has, wherever the prefix stands.
// Nothing of a shorter name.
StringView16 ShownName(StringView16 formName) noexcept;

// The name of a new form.
String16 FormNameOf(StringView16 shownName);

// The page's list: the default paper, then the others as the server has them.
std::vector<PaperForm> CustomPapersOf(std::vector<PaperForm> forms);

// The server's form of exactly this name; null where there is none.
const PaperForm* FindForm(std::span<const PaperForm> forms, StringView16 formName) noexcept;

// The form that is rewritten when this name is saved: the first of the page's that is shown as it, unit for
// unit. Null: a new one is added, at the end of the list.
const PaperForm* FormToRewrite(std::span<const PaperForm> forms, StringView16 shownName) noexcept;

// The entry to select when one was removed from a list and `left` stay: the one that moved up, or the new
// last one.
std::optional<std::size_t> SelectionAfterDelete(std::size_t removed, std::size_t left) noexcept;

// Goes by the list's selection, never by what the name's box holds.
bool CanDelete(std::optional<StringView16> selectedName) noexcept;
