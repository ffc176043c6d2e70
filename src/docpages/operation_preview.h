// Which picture of the paper's end stands for a choice.
#pragma once

#include "devmode/operation_settings.h"

// The bitmap resource for a moment, the feed-to-cut-position box and whether any cut is chosen.
int OperationPreviewBitmap(Moment moment, bool feedToPosition, bool cut) noexcept;
