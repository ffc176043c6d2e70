// Message boxes in the chosen language.
#pragma once

#include <windows.h>

#include "language/text_table.h"

// Also rows of the message table.
enum class MessageTitle { kInformation, kWarning, kError };

// Rows of the message table behind the titles.
enum class Message {
    kBarcode1D = 3,
    kBarcode2D,
    kWaterMarkMissing,
    kWaterMarkDenied,
    kWaterMarkTooBig,
    kWaterMarkDepth,
    kWaterMarkNoName,
    kWaterMarkAsImage,
    kLayoutAsImage,
    kLayoutViewer,
    kCommandLength,
    kPaperSize,
    kFileOpen,
    kFileRead,
    kLogoTooBig,
    kLogoCount,
    kLogoNone,
    kLogoSize,
    kLogoTotal,
    kFileSize,
    kFileMemory,
    kFileStart,
    kPathTooLong,
    kCount,
};

// The icon of the title's kind, or none.
enum class MessageIcon { kOfTitle, kNone };

// The titles and messages of both sheets; each loads them.
TextTable& Messages() noexcept;

// Shows a message box with an OK button only.
void ShowMessage(HWND owner, const wchar_t* text, MessageTitle title, MessageIcon icon) noexcept;
void ShowMessage(HWND owner, Message message, MessageTitle title, MessageIcon icon) noexcept;
