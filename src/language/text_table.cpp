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

void TextTable::ApplyToList(HWND combo, const ListTexts& list) const {
    const auto isShown = [&](std::size_t i) {
        wchar_t shown[kMessageText] = {};
        const auto index = static_cast<WPARAM>(i);
        return SendMessageW(combo, CB_GETLBTEXTLEN, index, 0) < static_cast<LRESULT>(kMessageText) &&
               SendMessageW(combo, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(shown)) != CB_ERR &&
               std::wstring_view(shown) == (*this)[list.first + i];
    };
    bool isSame = SendMessageW(combo, CB_GETCOUNT, 0, 0) == static_cast<LRESULT>(list.count);
    for (std::size_t i = 0; i < list.count && isSame; ++i) {
        isSame = isShown(i);
    }
    if (isSame) {
        return;
    }
    const LRESULT selected = SendMessageW(combo, CB_GETCURSEL, 0, 0);
    SendMessageW(combo, CB_RESETCONTENT, 0, 0);
    for (std::size_t i = 0; i < list.count; ++i) {
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>((*this)[list.first + i]));
    }
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
}

void ReloadTexts(HWND dialog, TextTable& captions, TextTable& help) {
    ReloadTexts(dialog, captions);
    help.LoadIfChanged();
}

void ReloadTexts(HWND dialog, TextTable& captions) {
    RefreshLanguageFile();
    captions.LoadIfChanged();
    captions.ApplyTo(dialog);
}

void SetTextIfChanged(HWND window, const wchar_t* text) {
    wchar_t shown[kMessageText] = {};
    GetWindowTextW(window, shown, kMessageText);
    if (std::wstring_view(shown) != text) {
        SetWindowTextW(window, text);
    }
}
