// The document sheet's pages.
#pragma once

#include <filesystem>

#include "plugin_host.h"

// Reports what showing, repainting, previewing and switching the language costs. `bitmap` becomes the image
// watermark.
void MeasureDocumentPages(PluginHost& host, const std::filesystem::path& bitmap);

// Reports what showing the page with the list of fonts costs, and how many faces it lists.
void MeasureFaces(PluginHost& host);

// Opens the sheet 200 times with all its pages and prints what the process holds of the system
// before and after.
void CountObjects(PluginHost& host);
