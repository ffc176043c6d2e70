// The Download page's texts, section "DOWNLOAD".
#pragma once

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kDownloadPageTitle = 0;
constexpr std::size_t kDownloadPageOpenTitle = 1;
constexpr std::size_t kDownloadPageColumns = 2;  // three, of the list of logos

constexpr TextEntry kDownloadPageTexts[] = {
    {kNoControl, TEXT16("RC_DOWNLOADFORM"), TEXT16("Download"), kShortCaption},
    {kNoControl, TEXT16("RC_BROWSEBOX"), TEXT16("Open"), kShortCaption},
    {kNoControl, TEXT16("RC_LOGOID"), TEXT16("ID"), kShortCaption},
    {kNoControl, TEXT16("RC_LOGONAME"), TEXT16("Name"), kShortCaption},
    {kNoControl, TEXT16("RC_LOGOPATH"), TEXT16("Path"), kShortCaption},
    {IDC_DOWNLOAD_FILE_GROUP, TEXT16("RC_STATIC_FWDOWNLOAD"), TEXT16("File Download"), kShortCaption},
    {IDC_DOWNLOAD_NOTE, TEXT16("RC_STATIC_DOWN_INFO"),
     TEXT16("You can select various files to download to the printer, such as firmware files,font files"),
     kNotice},
    {IDC_DOWNLOAD_BROWSE, TEXT16("RC_BROWSE_FIREWARE"), TEXT16("Browse"), kShortCaption},
    {IDC_DOWNLOAD_SEND, TEXT16("RC_DOWNLOAD_FIREWARE"), TEXT16("Download"), kShortCaption},
    {IDC_LOGO_GROUP, TEXT16("RC_STATIC_LOGODOWNLOAD"), TEXT16("Logo Download"), kShortCaption},
    {IDC_LOGO_PREVIEW_GROUP, TEXT16("RC_STATIC_PREVIEW"), TEXT16("Preview"), kShortCaption},
    {IDC_LOGO_ORIGINAL, TEXT16("RC_ORIGINAL"), TEXT16("Original"), kShortCaption},
    {IDC_LOGO_MONO, TEXT16("RC_MONO"), TEXT16("Transformation"), kShortCaption},
    {IDC_LOGO_GREY, TEXT16("RC_GRAY"), TEXT16("Gray"), kShortCaption},
    {IDC_LOGO_HALFTONE_GROUP, TEXT16("RC_STATIC_HALFTONE"), TEXT16("HalfTone"), kShortCaption},
    {IDC_LOGO_NONE, TEXT16("RC_NONE"), TEXT16("None"), kShortCaption},
    {IDC_LOGO_DITHER_M3, TEXT16("RC_DITHERM3"), TEXT16("Dither M3"), kShortCaption},
    {IDC_LOGO_DITHER_M4, TEXT16("RC_DITHERM4"), TEXT16("Dither M4"), kShortCaption},
    {IDC_LOGO_DIFFUSE, TEXT16("RC_DIFFUSE"), TEXT16("Error Diffuse"), kShortCaption},
    {IDC_LOGO_TONE_GROUP, TEXT16("RC_STATIC_CONANDBRIGHT"), TEXT16("Contrast and Brightness"), kLongCaption},
    {IDC_LOGO_CONTRAST_LABEL, TEXT16("RC_STATIC_CONTRA"), TEXT16("Contrast:"), kShortCaption},
    {IDC_LOGO_BRIGHTNESS_LABEL, TEXT16("RC_STATIC_BRIGHT"), TEXT16("Brightness:"), kShortCaption},
    {IDC_LOGO_ADD, TEXT16("RC_LOGO_ADD"), TEXT16("Add"), kShortCaption},
    {IDC_LOGO_DELETE, TEXT16("RC_LOGO_DELETE"), TEXT16("Delete"), kShortCaption},
    {IDC_LOGO_DOWNLOAD, TEXT16("RC_LOGO_DOWNLOAD"), TEXT16("Download all"), kShortCaption},
    {IDC_LOGO_CLEAR, TEXT16("RC_LOGO_CLEARALLLOGOS"), TEXT16("Clear All Logos"), kShortCaption},
    {IDC_LOGO_NOTE, TEXT16("RC_STATIC_DOWNOWNLOAD_NOTICE"),
     TEXT16("Notice: Select the type of the logos before downloading."), kNotice},
};

constexpr TextEntry kDownloadPageHelp[] = {
    {IDC_DOWNLOAD_PATH, TEXT16("CTEXT_EDIT_FIREWARE"),
     TEXT16("Select the path of file that needs to be downloaded to printer."), kHelpText},
    {IDC_DOWNLOAD_BROWSE, TEXT16("CTEXT_BROWSE_FIREWARE"),
     TEXT16("Select the path of file that needs to be downloaded to printer."), kHelpText},
    {IDC_DOWNLOAD_SEND, TEXT16("CTEXT_DOWNLOAD_FIREWARE"), TEXT16("Download the selected file to printer."),
     kHelpText},
    {IDC_LOGO_LIST, TEXT16("CTEXT_LIST_LOGO"),
     TEXT16("List shows the Logos to be downloaded to printer, 9 at most. Select one Logo from the list to "
            "preview it and to set its halftone, contrast and brightness."),
     kHelpText},
    {IDC_LOGO_ORIGINAL, TEXT16("CTEXT_ORIGINAL"),
     TEXT16("Download the Logos without adjusting halftone, contrast or brightness."), kHelpText},
    {IDC_LOGO_MONO, TEXT16("CTEXT_MONO"),
     TEXT16("Convert the Logos to black and white before downloading. The halftone, contrast and brightness "
            "of each Logo can be set after selecting this item."),
     kHelpText},
    {IDC_LOGO_GREY, TEXT16("CTEXT_GRAY"),
     TEXT16("Convert the Logos to gray images before downloading. The contrast and brightness of each Logo "
            "can be set after selecting this item."),
     kHelpText},
    {IDC_LOGO_NONE, TEXT16("CTEXT_NONE"),
     TEXT16("Convert the selected Logo to black and white without halftone. Suitable for text and line "
            "drawings."),
     kHelpText},
    {IDC_LOGO_DITHER_M3, TEXT16("CTEXT_DITHERM3"),
     TEXT16("Convert the selected Logo to black and white with halftone Dither M3."), kHelpText},
    {IDC_LOGO_DITHER_M4, TEXT16("CTEXT_DITHERM4"),
     TEXT16("Convert the selected Logo to black and white with halftone Dither M4."), kHelpText},
    {IDC_LOGO_DIFFUSE, TEXT16("CTEXT_DIFFUSE"),
     TEXT16("Convert the selected Logo to black and white with halftone Error Diffuse. Suitable for "
            "photographs."),
     kHelpText},
    {IDC_LOGO_CONTRAST, TEXT16("CTEXT_SLIDER_CONTRAST"),
     TEXT16("Set the contrast of the selected Logo, available range is -100 to 100."), kHelpText},
    {IDC_LOGO_BRIGHTNESS, TEXT16("CTEXT_SLIDER_BRIGHTNESS"),
     TEXT16("Set the brightness of the selected Logo, available range is -100 to 100."), kHelpText},
    {IDC_LOGO_ADD, TEXT16("CTEXT_LOGO_ADD"), TEXT16("Add one Logo to the list."), kHelpText},
    {IDC_LOGO_DELETE, TEXT16("CTEXT_LOGO_DELETE"), TEXT16("Delete one Logo from the list."), kHelpText},
    {IDC_LOGO_DOWNLOAD, TEXT16("CTEXT_LOGO_DOWNLOAD"),
     TEXT16("Download all the Logos in the list to printer. The Logos stored in the printer before will be "
            "replaced."),
     kHelpText},
    {IDC_LOGO_CLEAR, TEXT16("CTEXT_LOGO_CLEARALLLOGOS"), TEXT16("Clear all the Logos in printer."),
     kHelpText},
};
