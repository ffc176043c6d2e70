// The texts for the driver's print-density option, section "GPD".
#pragma once

#include "language/text_entry.h"

enum PrintDensityText : std::size_t { kDensityName, kDensityValue };

constexpr TextEntry kPrintDensityTexts[] = {
    {kNoControl, TEXT16("RC_DENSITY"), TEXT16("Print Density"), kLongCaption},
    {kNoControl, TEXT16("RC_DENSITY_INDEX"), TEXT16("Density"), kLongCaption},
};
