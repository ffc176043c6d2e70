// The tabs of the plug-in's pages in a printer sheet: always its last four.
#pragma once

#include <iterator>

#include "base/text.h"

struct PrinterTab {
    const Char16* section;
    const Char16* titleKey;
    const Char16* english;
};

constexpr PrinterTab kPrinterTabs[] = {
    {TEXT16("UTILITY"), TEXT16("RC_UTILITYFORM"), TEXT16("Utility")},
    {TEXT16("DOWNLOAD"), TEXT16("RC_DOWNLOADFORM"), TEXT16("Download")},
    {TEXT16("FONT"), TEXT16("RC_FONTFORM"), TEXT16("Font")},
    {TEXT16("VERSION"), TEXT16("RC_VERSIONFORM"), TEXT16("Version")},
};
