// Version 6 of the common controls for every page and dialog, whatever the host's own manifest says.
#pragma once

#include <windows.h>

// The process-wide activation context made from the plug-in's manifest; INVALID_HANDLE_VALUE where the system
// refuses, and then the next call tries again. For any thread.
HANDLE CommonControlsContext() noexcept;

// Gives the context back; the next CommonControlsContext makes a new one.
void ReleaseCommonControlsContext() noexcept;

// DialogBoxParamW with a template of the plug-in's, inside the context.
INT_PTR RunDialog(int templateId, HWND owner, DLGPROC procedure, LPARAM parameter) noexcept;

// CreateWindowExW without menu and creation data, at the default place, inside the context.
HWND CreateControl(DWORD extendedStyle, const wchar_t* windowClass, DWORD style, HWND parent) noexcept;

// Makes the classes of the common controls known to dialog templates.
void RegisterCommonControls() noexcept;
