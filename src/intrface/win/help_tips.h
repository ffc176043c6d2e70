// Hover help: a tooltip for each helped control of a dialog.
#pragma once

#include <windows.h>

#include "language/text_table.h"

// How long the pointer rests before a tip shows, in milliseconds, and where its text wraps, in pixels.
constexpr int kTipDelay = 1000;
constexpr int kTipWidth = 300;

// Creates the dialog's tooltip window and puts `procedure` in front of every control that the help texts
// name. `procedure` is the dialog's own: it calls HandleHelp with the same texts.
void AttachHelp(HWND dialog, const TextTable& help, WNDPROC procedure) noexcept;

// The help procedure's work for one message: shows the control's text as a tip once the pointer moves over
// it, and passes the message on. 0 for a control that the texts do not name.
LRESULT HandleHelp(const TextTable& help, HWND control, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
