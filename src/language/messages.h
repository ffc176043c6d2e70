// Message boxes in the chosen language.
#pragma once

#include <windows.h>

#include "language/text_table.h"

// Also rows of the message tables.
enum class MessageTitle { kInformation, kWarning, kError };

// The messages of the document side, as rows of its table behind the titles.
enum class DocumentMessage {
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
};

// The icon of the title's kind, or none.
enum class MessageIcon { kOfTitle, kNone };

// The document side's titles and messages; its sheet loads them.
TextTable& DocumentMessages() noexcept;

// Shows a message box with an OK button only.
void ShowMessage(HWND owner, const wchar_t* text, MessageTitle title, MessageIcon icon) noexcept;
void ShowMessage(HWND owner, DocumentMessage message, MessageTitle title, MessageIcon icon) noexcept;
