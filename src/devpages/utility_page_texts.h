// The Utility page's texts, section "UTILITY".
#pragma once

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kUtilityPageTitle = 0;

constexpr TextEntry kUtilityPageTexts[] = {
    {kNoControl, TEXT16("RC_UTILITYFORM"), TEXT16("Utility"), kShortCaption},
    {IDC_UTILITY_SELF_TEST, TEXT16("RC_SELFTEST"), TEXT16("SelfTest"), kShortCaption},
    {IDC_UTILITY_SELF_TEST_NOTE, TEXT16("RC_STATIC_SELFTEST"), TEXT16("Print a self-test page"),
     kLongCaption},
    {IDC_UTILITY_CHECK_NOTE, TEXT16("RC_STATIC_CHECKCOMM"),
     TEXT16("Check that communication settings is correct first"), kNote},
    {IDC_UTILITY_PAPERS_GROUP, TEXT16("RC_STATIC_CUSTOMSIZE"), TEXT16("User Defined Paper Size"),
     kLongCaption},
    {IDC_UTILITY_DELETE, TEXT16("RC_BUTTON_DELETE"), TEXT16("Delete Paper Size"), kShortCaption},
    {IDC_UTILITY_SAVE, TEXT16("RC_BUTTON_SAVE"), TEXT16("Save Paper Size"), kLongCaption},
    {IDC_UTILITY_FORM_NAME_LABEL, TEXT16("RC_STATIC_FORMNAME"), TEXT16("Form Name:"), kShortCaption},
    {IDC_UTILITY_WIDTH_LABEL, TEXT16("RC_STATIC_FORMWIDTH"), TEXT16("Width:"), kLongCaption},
    {IDC_UTILITY_HEIGHT_LABEL, TEXT16("RC_STATIC_FORMHEIGHT"), TEXT16("Height:"), kShortCaption},
};

constexpr TextEntry kUtilityPageHelp[] = {
    {IDC_UTILITY_SELF_TEST, TEXT16("CTEXT_SELFTEST"), TEXT16("Print Self-test page."), kHelpText},
    {IDC_UTILITY_PAPERS, TEXT16("CTEXT_LIST_PAPERSIZE"),
     TEXT16(
         "List shows the user defined paper size. You can select one paper size from the list and edit its "
         "name, width and height, and you can also define a new paper size."),
     kHelpText},
    {IDC_UTILITY_DELETE, TEXT16("CTEXT_BUTTON_DELETE"),
     TEXT16("Delete the selected user defined paper size in the list."), kHelpText},
    {IDC_UTILITY_SAVE, TEXT16("CTEXT_BUTTON_SAVE"),
     TEXT16("Save user defined paper size. The user defined paper size will be saved if this button is "
            "clicked. If the paper size you edited is already in the list, then the width and height of the "
            "paper size will be rewritten."),
     kHelpText},
    {IDC_UTILITY_FORM_NAME, TEXT16("CTEXT_EDIT_FORMNAME"),
     TEXT16("Specify the name of paper size you want to save. The maximum length of the name is 18 "
            "characters."),
     kHelpText},
    {IDC_UTILITY_WIDTH, TEXT16("CTEXT_EDIT_WIDTH"), TEXT16("Specify the paper width."), kHelpText},
    {IDC_UTILITY_HEIGHT, TEXT16("CTEXT_EDIT_HEIGHT"), TEXT16("Specify the paper height."), kHelpText},
};
