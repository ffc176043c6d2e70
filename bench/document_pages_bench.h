// The document sheet's pages.
#pragma once

#include <filesystem>

#include "plugin_host.h"

// Reports what showing, repainting, previewing and switching the language costs. `bitmap` becomes the image
// watermark.
void MeasureDocumentPages(PluginHost& host, const std::filesystem::path& bitmap);

// Reports what showing the page with the list of fonts costs, and how many faces it lists.
void MeasureFaces(PluginHost& host);
