#include "language/text_table.h"

#include <algorithm>

#include "language/text_lookup.h"

void TextTable::Load() {
    std::vector<std::wstring> texts;
    texts.reserve(entries_.size());
    for (const TextEntry& entry : entries_) {
        wchar_t text[kMessageText];
        LoadText(section_, entry.key, entry.english, text, std::min(entry.length, kMessageText));
        texts.emplace_back(text);
    }
    texts_.swap(texts);
    generation_ = LanguageGeneration();
}

void TextTable::LoadIfChanged() {
    if (texts_.empty() || generation_ != LanguageGeneration()) {
        Load();
    }
}

const wchar_t* TextTable::operator[](std::size_t row) const noexcept {
    return row < texts_.size() ? texts_[row].c_str() : entries_[row].english;
}

void TextTable::ApplyTo(HWND dialog) const {
    for (std::size_t row = 0; row < entries_.size(); ++row) {
        if (entries_[row].control != kNoControl) {
            SetTextIfChanged(GetDlgItem(dialog, entries_[row].control), (*this)[row]);
        }
    }
}

void SetTextIfChanged(HWND window, const wchar_t* text) {
    wchar_t shown[kMessageText] = {};
    GetWindowTextW(window, shown, kMessageText);
    if (std::wstring_view(shown) != text) {
        SetWindowTextW(window, text);
    }
}
