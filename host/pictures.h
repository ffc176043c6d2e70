// Pictures of what the plug-in shows, for manuals and for the eye of whoever changed a page.
#pragma once

#include <filesystem>

#include "ui_driver.h"

// Writes into `folder`, which is made when it is missing, the sheet with each page of the plug-in in turn and
// the operation dialog at each of the four moments. Nothing is changed on the way.
void TakePictures(const Sheet& sheet, const std::filesystem::path& folder);
