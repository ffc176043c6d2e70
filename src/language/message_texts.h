// The message texts of the document side, section "MessageBox".
#pragma once

#include "language/text_entry.h"

// Rows in the order of MessageTitle, then of DocumentMessage.
constexpr TextEntry kDocumentMessageTexts[] = {
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
};
