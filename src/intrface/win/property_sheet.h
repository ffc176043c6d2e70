// What the document and the printer sheet have in common: the host's information block, its reasons, adding
// pages.
#pragma once

#include <windows.h>

#include "intrface/print_oem.h"

// The version of the information block that the sheets understand.
constexpr WORD kSheetInfoVersion = 0x0100;

// Traces the information block.
void DumpSheetInfo(const PROPSHEETUI_INFO& info) noexcept;

// Answers every reason but the initialisation, storing the result in the block.
void AnswerSheetReason(PROPSHEETUI_INFO& info, LPARAM lParam) noexcept;

// One page to add: its template, its title as shown on the tab, its procedure and creation parameter.
struct PageDescription {
    int templateId;
    const wchar_t* title;
    DLGPROC procedure;
    LPARAM parameter;
};

// Adds a page to the host's sheet; gives the host's handle for it, 0 or less when the host refused.
LONG_PTR AddPage(const PROPSHEETUI_INFO& info, const PageDescription& page) noexcept;

// Reports a page's success to the host and marks the page unchanged.
void ReportApplied(PFNCOMPROPSHEET callback, HANDLE sheet, LPARAM page, HWND dialog) noexcept;

// Tells the sheet that a page has something to apply.
void MarkChanged(HWND dialog) noexcept;
