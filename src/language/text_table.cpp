#include "language/text_table.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "language/kept_text.h"
#include "language/text_lookup.h"

// Made once: others may be reading them.
TextTable::Row* TextTable::Rows() {
    if (Row* const rows = rows_.load()) {
        return rows;
    }
    auto made = std::make_unique<Row[]>(entries_.size());
    Row* others = nullptr;
    return rows_.compare_exchange_strong(others, made.get()) ? made.release() : others;
}

void TextTable::Load() {
    // What changes meanwhile is taken the next time.
    const std::uint32_t generation = LanguageGeneration();
    std::vector<const wchar_t*> texts;
    texts.reserve(entries_.size());
    for (const TextEntry& entry : entries_) {
        wchar_t text[kMessageText];
        LoadText(section_, entry.key, entry.english, text, std::min(entry.length, kMessageText));
        texts.push_back(KeepText(text));
    }
    std::ranges::copy(texts, Rows());
    generation_ = generation;
}

void TextTable::LoadIfChanged() {
    if (rows_.load() == nullptr || generation_ != LanguageGeneration()) {
        Load();
    }
}

const wchar_t* TextTable::operator[](std::size_t row) const noexcept {
    const Row* const rows = rows_.load();
    const wchar_t* const text = rows != nullptr ? rows[row].load() : nullptr;
    return text != nullptr ? text : entries_[row].english;
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
