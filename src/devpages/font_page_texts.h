// The Font page's texts, section "FONT".
#pragma once

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kFontPageTitle = 0;
constexpr std::size_t kFontPageTreeTitle = 2;

constexpr TextEntry kFontPageTexts[] = {
    {kNoControl, TEXT16("RC_FONTFORM"), TEXT16("Font"), kShortCaption},
    {IDC_FONT_NOTICE, TEXT16("RC_STATIC_FONT_NOTICE"), TEXT16("Select this font size in the application. "),
     kNotice},
    {kNoControl, TEXT16("RC_RONT_TREETITLE"), TEXT16("Printer Fonts and Font Sizes"), kNotice},
};
