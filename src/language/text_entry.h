// One text of the user interface as a table row: which key of a section labels which control.
#pragma once

#include <cstddef>

#include "base/text.h"

// For texts that label no control: titles, list entries, message texts.
constexpr int kNoControl = 0;

// Room of a text, in units with its terminator: longer ones are cut.
constexpr std::size_t kShortCaption = 20;
constexpr std::size_t kLongCaption = 50;
constexpr std::size_t kNote = 100;
constexpr std::size_t kNotice = 256;
constexpr std::size_t kHelpText = 1024;
constexpr std::size_t kMessageText = 1024;

// A list's entries among a table's texts; their order is what the record stores.
struct ListTexts {
    std::size_t first;
    std::size_t count;
};

struct TextEntry {
    int control;
    const Char16* key;
    const Char16* english;  // what is shown when the language file lacks the key
    std::size_t length;
};
