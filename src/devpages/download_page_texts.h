// The Download page's texts, section "DOWNLOAD".
#pragma once

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kDownloadPageTitle = 0;
constexpr std::size_t kDownloadPageOpenTitle = 1;

constexpr TextEntry kDownloadPageTexts[] = {
    {kNoControl, TEXT16("RC_DOWNLOADFORM"), TEXT16("Download"), kShortCaption},
    {kNoControl, TEXT16("RC_BROWSEBOX"), TEXT16("Open"), kShortCaption},
    {IDC_DOWNLOAD_FILE_GROUP, TEXT16("RC_STATIC_FWDOWNLOAD"), TEXT16("File Download"), kShortCaption},
    {IDC_DOWNLOAD_NOTE, TEXT16("RC_STATIC_DOWN_INFO"),
     TEXT16("You can select various files to download to the printer, such as firmware files,font files"),
     kNotice},
    {IDC_DOWNLOAD_BROWSE, TEXT16("RC_BROWSE_FIREWARE"), TEXT16("Browse"), kShortCaption},
    {IDC_DOWNLOAD_SEND, TEXT16("RC_DOWNLOAD_FIREWARE"), TEXT16("Download"), kShortCaption},
};

constexpr TextEntry kDownloadPageHelp[] = {
    {IDC_DOWNLOAD_PATH, TEXT16("CTEXT_EDIT_FIREWARE"),
     TEXT16("Select the path of file that needs to be downloaded to printer."), kHelpText},
    {IDC_DOWNLOAD_BROWSE, TEXT16("CTEXT_BROWSE_FIREWARE"),
     TEXT16("Select the path of file that needs to be downloaded to printer."), kHelpText},
    {IDC_DOWNLOAD_SEND, TEXT16("CTEXT_DOWNLOAD_FIREWARE"), TEXT16("Download the selected file to printer."),
     kHelpText},
};
