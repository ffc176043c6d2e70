// The host's own tabs: "Layout" and "Paper/Quality" in the printing preferences, which show the driver's
// option items as they are at that moment, relabelled or not; "General" and "Ports" in the printer's
// properties. They are how the host learns whether the sheet was applied.
#pragma once

#include "intrface/print_oem.h"

#include <functional>
#include <string>

#include "driver_options.h"

struct HostTabContext {
    const DriverOptions* options = nullptr;
    std::wstring printer_name;
    std::wstring port_name;
    // A tab came to the front, so there is a sheet to see.
    std::function<void()> shown;
    // The sheet's pages were asked to apply; `closing` tells OK from Apply.
    std::function<void(bool closing)> applied;
    // All pages have had their turn after Apply (not after OK: the sheet is gone by then).
    std::function<void()> apply_finished;
    std::function<void()> cancelled;
};

// Each adds both tabs to a sheet that is being initialised; `context` must outlive the sheet. Gives the
// engine's answer for the last tab, 0 when a tab was not added.
LONG_PTR AddDocumentTabs(const PROPSHEETUI_INFO& info, const HostTabContext& context);
LONG_PTR AddPrinterTabs(const PROPSHEETUI_INFO& info, const HostTabContext& context);
