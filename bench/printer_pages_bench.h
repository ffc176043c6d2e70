// The printer sheet's pages.
#pragma once

#include "plugin_host.h"
#include "virtual_printer.h"

// Reports what showing and repainting the pages costs, with few, many and very many paper sizes on the
// server, and what memory sending a large file takes. `printer` is the one behind the host.
void MeasurePrinterPages(PluginHost& host, VirtualPrinter& printer);
