// Pictures of what the plug-in shows, for manuals and for the eye of whoever changed a page.
#pragma once

#include <filesystem>

#include "ui_driver.h"

// Writes into `folder`, which is made when it is missing, the sheet with each page of the plug-in in turn,
// the operation dialog at each of the four moments, and the control font's two dialogs. Nothing is set on the
// way; the Utility page makes its default paper size when it is first shown.
void TakePictures(const UiDriver& driver, const Sheet& sheet, const std::filesystem::path& folder);
