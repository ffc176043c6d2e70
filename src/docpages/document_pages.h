// The table of the document sheet's pages.
#pragma once

#include <windows.h>

#include <span>

#include "intrface/win/sheet_context.h"
#include "language/text_table.h"

struct DocumentPageEntry {
    DocumentPage page;
    int templateId;
    TextTable& (*texts)() noexcept;
    std::size_t titleRow;
    DLGPROC procedure;
    const wchar_t* traceLine;
};

// In the order of the tabs.
std::span<const DocumentPageEntry> DocumentPages() noexcept;

// The host's own two tabs come first.
constexpr int kFirstDocumentTab = 2;
