// The tabs of open sheets in a language just chosen: the host draws them once, from the titles that the pages
// were added with.
#pragma once

#include <windows.h>

#include "base/platform.h"

// The printer whose printing preferences are open, as the host named it; cut to the buffer.
extern wchar_t gPrinterName[kPathLength];

// The frame of the document sheet, set just before its tabs are relabelled.
extern HWND gSheetWindow;

// Relabels the plug-in's tabs in the sheet of a page, then in every printer sheet of the same printer that
// this process has open. UI thread only.
void RelabelSheets(HWND page) noexcept;

// For each child window of the document sheet: relabels it if it is a tab control. Goes on to the next child.
BOOL CALLBACK RelabelDocumentTabs(HWND window, LPARAM parameter) noexcept;

// For each top-level window: has its tabs relabelled if it is a printer sheet of the printer.
BOOL CALLBACK FindPrinterSheets(HWND window, LPARAM parameter) noexcept;

// For each child window of a printer sheet: relabels it if it is a tab control, and then ends the search.
BOOL CALLBACK RelabelPrinterTabs(HWND window, LPARAM parameter) noexcept;
