// Window procedures in front of a control's own, one for each purpose. What each replaced is kept with the
// control, not with the process, so two open sheets never share it; a slot is let go when its control goes.
#pragma once

#include <windows.h>

// Puts `procedure` in front of what the control has now. `slot` names the purpose and must live as long as
// the module. FALSE, and nothing changed, when the control has that slot already or the system refuses.
bool Subclass(HWND control, const wchar_t* slot, WNDPROC procedure) noexcept;

// What stood behind `slot`'s procedure; null for a control without that slot.
WNDPROC PreviousProcedure(HWND control, const wchar_t* slot) noexcept;

// Passes a message on to what stood behind `slot`'s procedure.
LRESULT CallPrevious(HWND control, const wchar_t* slot, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
