// The printer-properties sheet.
#pragma once

#include "intrface/win/sheet_context.h"

// Answers the host's call for each reason. E_FAIL with last error 87 for a block that is null or of another
// version.
HRESULT hrOEMDevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam,
                                  DeviceSheetContext* pSheetContext) noexcept;
