// The captions of a page, of any table that names for each its control, its key in the language files and
// what it says in English.
#pragma once

#include <string>
#include <vector>

#include "page_fixture.h"

namespace pages {

// As the page shows them.
template <typename Captions>
std::vector<std::wstring> CaptionsOf(const Window& page, const Captions& captions) {
    std::vector<std::wstring> texts;
    for (const auto& caption : captions) {
        texts.push_back(page.Text(caption.control));
    }
    return texts;
}

// As a language file gives them.
template <typename Captions>
std::vector<std::wstring> SourceCaptions(const wchar_t* file, const wchar_t* section,
                                         const Captions& captions) {
    std::vector<std::wstring> texts;
    for (const auto& caption : captions) {
        texts.push_back(SourceText(file, section, caption.key));
    }
    return texts;
}

// Without any file.
template <typename Captions>
std::vector<std::wstring> DefaultCaptions(const Captions& captions) {
    std::vector<std::wstring> texts;
    for (const auto& caption : captions) {
        texts.emplace_back(caption.english);
    }
    return texts;
}

}  // namespace pages
