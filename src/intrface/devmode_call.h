// The host's calls about the private settings record.
#pragma once

#include "intrface/print_oem.h"

// Sizes (1), defaults (2), converts (3) or merges (4) a record. E_FAIL with last error 87 for a null block or
// another mode; otherwise S_OK, also where the block names no record.
HRESULT hrDevModeRecord(DWORD dwMode, POEMDMPARAM pOemDMParam) noexcept;
