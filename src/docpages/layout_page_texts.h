// The Main page's texts, section "LAYOUT".
#pragma once

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kLayoutPageTitle = 0;

constexpr TextEntry kLayoutPageTexts[] = {
    {kNoControl, TEXT16("RC_LAYOUTFORM"), TEXT16("Main"), kShortCaption},
    {IDC_MAIN_DOCUMENT_GROUP, TEXT16("RC_DOCSETTING"), TEXT16("Document Setting"), kLongCaption},
    {IDC_MAIN_AS_IMAGE_LABEL, TEXT16("RC_PRINT_AS_IMAGE"), TEXT16("Print all text as graphics image:"),
     kLongCaption},
    {IDC_MAIN_AS_IMAGE_YES, TEXT16("RC_RADIO_ASGRAPHICSYES"), TEXT16("Yes"), kShortCaption},
    {IDC_MAIN_AS_IMAGE_NO, TEXT16("RC_RADIO_ASGRAPHICSNO"), TEXT16("No"), kShortCaption},
    {IDC_MAIN_ZOOM, TEXT16("RC_CHECK_ZOOM"), TEXT16("Zoom Printing"), kLongCaption},
    {IDC_MAIN_SCALE_LABEL, TEXT16("RC_SCALE"), TEXT16("Scale:"), kShortCaption},
    {IDC_MAIN_ROTATE_GROUP, TEXT16("RC_ROTATE"), TEXT16("Rotate"), kShortCaption},
    {IDC_MAIN_NORMAL, TEXT16("RC_RADIO_ROTATENOMAL"), TEXT16("Normal"), kShortCaption},
    {IDC_MAIN_ROTATE_180, TEXT16("RC_RADIO_ROTATE180"), TEXT16("Rotate by 180 Degrees"), kLongCaption},
    {IDC_MAIN_PAPER_SIZE_LABEL, TEXT16("RC_PAPERSIZE"), TEXT16("Paper Size:"), kShortCaption},
    {IDC_MAIN_LANGUAGE_LABEL, TEXT16("RC_LANGUAGE"), TEXT16("Language:"), kShortCaption},
    // The update button keeps the template's caption: it is never shown.
    {kNoControl, TEXT16("RC_BUTTON_UPDATE"), TEXT16("Update Language From Web"), kLongCaption},
    // Without a language file the log controls read as they always have.
    {IDC_MAIN_LOG_GROUP, TEXT16("RC_STATIC_LOG"), TEXT16("Main"), kShortCaption},
    {IDC_MAIN_LOG, TEXT16("RC_CHECK_LOG"), TEXT16("Main"), kShortCaption},
    {IDC_MAIN_LOG_BROWSE, TEXT16("RC_BUTTON_LOG"), TEXT16("Main"), kShortCaption},
    {IDC_MAIN_LOG_VIEWER, TEXT16("RC_BUTTON_VIEWER"), TEXT16("Main"), kShortCaption},
};

// Help texts, in the order in which the page looks for a helped control.
constexpr TextEntry kLayoutPageHelp[] = {
    {IDC_MAIN_AS_IMAGE_YES, TEXT16("CTEXT_RADIO_ASGRAPHICSYES"),
     TEXT16("All the data will be printed as a graphic image."), kHelpText},
    {IDC_MAIN_AS_IMAGE_NO, TEXT16("CTEXT_RADIO_ASGRAPHICSNO"),
     TEXT16("'All the data printed as a graphic image' will not be enabled."), kHelpText},
    {IDC_MAIN_ZOOM, TEXT16("CTEXT_CHECK_ZOOM"), TEXT16("This configures reduced print."), kHelpText},
    {IDC_MAIN_LOG_BROWSE, TEXT16("CTEXT_BUTTON_LOG"), TEXT16("Select the path of Log."), kHelpText},
    {IDC_MAIN_LOG_VIEWER, TEXT16("CTEXT_BUTTON_VIEWER"), TEXT16("View the log."), kHelpText},
    {IDC_MAIN_LOG, TEXT16("CTEXT_CHECK_LOG"), TEXT16("Record the driver ."), kHelpText},
    {IDC_MAIN_LOG_PATH, TEXT16("CTEXT_EDIT_LOG"), TEXT16("The driver log dirctory."), kHelpText},
    {IDC_MAIN_SCALE, TEXT16("CTEXT_SCALE"), TEXT16("This configures reduced print."), kHelpText},
    {IDC_MAIN_NORMAL, TEXT16("CTEXT_RADIO_ROTATENOMAL"),
     TEXT16("This configures print direction.The graphic shown on the right changes according to the "
            "selected setting."),
     kHelpText},
    {IDC_MAIN_ROTATE_180, TEXT16("CTEXT_RADIO_ROTATE180"),
     TEXT16("This configures print direction.The graphic shown on the right changes according to the "
            "selected setting."),
     kHelpText},
    {IDC_MAIN_PAPER_SIZE, TEXT16("CTEXT_PAPERSIZE"), TEXT16("Select the paper size from list."), kHelpText},
    {IDC_MAIN_LANGUAGE, TEXT16("CTEXT_LANGUAGE"),
     TEXT16("You can select a language used for this properties dialog box."), kHelpText},
    {kNoControl, TEXT16("CTEXT_BUTTON_UPDATE"), TEXT16("Update the language source."), kHelpText},
};
