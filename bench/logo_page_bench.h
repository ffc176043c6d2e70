// Logos on the Download page.
#pragma once

#include <filesystem>

#include "plugin_host.h"
#include "virtual_printer.h"

// Reports what a repaint of the preview costs with a photo of the largest size, whole and in its steps, for
// each way to convert it, and what memory sending all logos takes. `printer` is the one behind the host;
// `photo` is a bitmap of 24 bits a pixel and 1024 x 768 pixels.
void MeasureLogos(PluginHost& host, VirtualPrinter& printer, const std::filesystem::path& photo);
