// The lower group of the Download page: logos for the printer's memory, their list, settings and preview.
// What they are lasts as long as the page.
#pragma once

#include <windows.h>

// Each belongs to a message of the page; FALSE from those that answer means that it is not the group's. All
// may throw bad_alloc.
void LogoGroupOpened(HWND dialog);
bool LogoControlUsed(HWND dialog, HANDLE printer, int control, int notification);
bool LogoNotified(HWND dialog, const NMHDR& header);
void LogoSliderMoved(HWND dialog, HWND slider, int code);
void LogoGroupPainted(HWND dialog);
bool LogoFrameUncovered(HWND dialog, const DRAWITEMSTRUCT& item);
void LogoGroupClosed(HWND dialog) noexcept;
