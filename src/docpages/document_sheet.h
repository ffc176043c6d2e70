// The document sheet: loads the texts of its pages, relabels the driver's density option, adds the pages.
#pragma once

#include "intrface/win/sheet_context.h"

// Answers the host's call for each reason. E_FAIL with last error 87 for a block that is null or of another
// version.
HRESULT hrOEMDocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam,
                                    DocumentSheetContext* pSheetContext) noexcept;
