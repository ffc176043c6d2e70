// The message texts, section "MessageBox".
#pragma once

#include "language/text_entry.h"

// Rows in the order of MessageTitle, then of Message.
constexpr TextEntry kMessageTexts[] = {
    {kNoControl, TEXT16("MB_INFORMATION"), TEXT16("Information"), kMessageText},
    {kNoControl, TEXT16("MB_WARNING"), TEXT16("Warning"), kMessageText},
    {kNoControl, TEXT16("MB_ERROR"), TEXT16("Error"), kMessageText},
    {kNoControl, TEXT16("MB_1DCODE_ERROR1"), TEXT16("BarCode data error!"), kMessageText},
    {kNoControl, TEXT16("MB_2DCODE_ERROR1"), TEXT16("BarCode data error!"), kMessageText},
    {kNoControl, TEXT16("MB_WATERMARK_ERROR1"), TEXT16("The specified file does not exist!"), kMessageText},
    {kNoControl, TEXT16("MB_WATERMARK_ERROR2"), TEXT16("Please check if user has administrator privileges!"),
     kMessageText},
    {kNoControl, TEXT16("MB_WATERMARK_ERROR4"), TEXT16("The bitmap you selected is too big!"), kMessageText},
    {kNoControl, TEXT16("MB_WATERMARK_ERROR5"), TEXT16("Make sure the specified bitmap is 1/8/24/ bits!"),
     kMessageText},
    {kNoControl, TEXT16("MB_WATERMARK_ERROR6"), TEXT16("No filename is specified!"), kMessageText},
    {kNoControl, TEXT16("MB_WATERMARK_INFORMATION1"), TEXT16("All Text will be printed as graphics image!"),
     kMessageText},
    {kNoControl, TEXT16("MB_LAYOUT_INFORMATION1"), TEXT16("All Text will be printed as graphics image!"),
     kMessageText},
    {kNoControl, TEXT16("MB_LAYOUT_VIEWER"), TEXT16("Not fount LOGViewer!"), kMessageText},
    {kNoControl, TEXT16("MB_OPERATION_ERROR1"), TEXT16("Command length error!"), kMessageText},
    {kNoControl, TEXT16("MB_UTILITY_ERROR1"), TEXT16("Set custom paper size failed!"), kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR1"), TEXT16("Fail to open the selected file!"), kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR2"), TEXT16("Failed to get data from the file!"), kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR3"),
     TEXT16("The image is too big to be selected.\nthe width must be less than 1024 Byte,and the height must "
            "be less than 768 Byte!"),
     kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR4"),
     TEXT16("The total counts of the logos is 9,\nplease delete some logos before selecting another logo!"),
     kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR5"), TEXT16("Please select logos first!"), kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR6"), TEXT16("Failed to get the size of logo!"), kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR7"), TEXT16("The total sizes of all the logos is greater 96K!"),
     kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR8"), TEXT16("Failed to get the size of the selected file!"),
     kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR9"), TEXT16("Failed to Alloc the required memory!"), kMessageText},
    {kNoControl, TEXT16("MB_DOWNLOAD_ERROR10"),
     TEXT16("Failed to set the file point to the head of the file!"), kMessageText},
    {kNoControl, TEXT16("MB_PATH_ERROR1"), TEXT16("The path is too long!"), kMessageText},
};
