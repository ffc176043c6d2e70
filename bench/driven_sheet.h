// A sheet worked by a script, and what is measured of either kind of sheet.
#pragma once

#include <functional>
#include <span>

#include "plugin_host.h"
#include "ui_driver.h"

// Opens a sheet, has `script` work it and cancels it unless the script closed it.
void Drive(PluginHost& host, SheetKind kind, const std::function<void(Sheet&)>& script);

// The median time of repainting a page that is as it was, in microseconds.
double Repaint(const Window& page);

// A page, known by a control that no other page of its sheet has.
struct NamedControl {
    const char* name;
    int control;
};

// Reports what showing each page for the first time and repainting it costs.
void MeasurePages(PluginHost& host, SheetKind kind, std::span<const NamedControl> pages);

// Opens the sheet 200 times with all its pages and prints what the process holds of the system before and
// after.
void CountObjects(PluginHost& host, SheetKind kind, const char* name);
