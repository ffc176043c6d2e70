// The Version page's texts, section "VERSION".
#pragma once

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kVersionPageTitle = 0;
constexpr std::size_t kVersionPageLink = 7;

constexpr TextEntry kVersionPageTexts[] = {
    {kNoControl, TEXT16("RC_VERSIONFORM"), TEXT16("Version"), kShortCaption},
    {IDC_VERSION_NAME, TEXT16("RC_STATIC_VER1"), TEXT16("Printer Driver"), kNotice},
    {IDC_VERSION_COPYRIGHT, TEXT16("RC_STATIC_VER2"), TEXT16("Copyright (C) Kestrel"), kNotice},
    {IDC_VERSION_RIGHTS, TEXT16("RC_STATIC_VER3"), TEXT16("All rights reserved."), kNotice},
    {IDC_VERSION_PRODUCT, TEXT16("RC_STATIC_VER4"), TEXT16("Product information:"), kNotice},
    {IDC_VERSION_NUMBERS, TEXT16("RC_STATIC_VER5"), TEXT16("Install version: v1.0\nUI version: v1.0"),
     kNotice},
    {IDC_VERSION_ADDITIONAL, TEXT16("RC_STATIC_VER6"), TEXT16("Additional information:"), kNotice},
    {IDC_VERSION_LINK, TEXT16("RC_STATIC_VER7"), TEXT16("http://www.kestrel.example"), kNotice},
    {IDC_VERSION_WARNING, TEXT16("RC_STATIC_VER9"),
     TEXT16("Warning: This software is protected by copyright law. Copying, changing or distributing it, in "
            "whole or in part, without the written permission of Kestrel is prohibited and may lead to civil "
            "and criminal liability."),
     kNotice},
};
