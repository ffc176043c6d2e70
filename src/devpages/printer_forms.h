// The forms of the print server that a printer belongs to. They change at once for everybody who prints
// there.
//
// The handle is the host's; null or a stale one fails.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "devpages/paper_sizes.h"

// All forms in the server's order, built-in ones too. FALSE, and `forms` as before, when the server does not
// tell: also when its list grew between asking how large it is and reading it. May throw bad_alloc.
bool ReadForms(HANDLE printer, std::vector<PaperForm>& forms);

// A new form of the user's.
bool AddPaper(HANDLE printer, const std::wstring& formName, PaperSize size) noexcept;

// Gives the form of this name another size.
bool RewritePaper(HANDLE printer, const std::wstring& formName, PaperSize size) noexcept;

bool DeletePaper(HANDLE printer, const std::wstring& formName) noexcept;
