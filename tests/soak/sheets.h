// Sheets of hosts that a test makes itself, one or more at a time.
#pragma once

#include <functional>

#include "plugin_host.h"
#include "ui_driver.h"

namespace soak {

// Opens a sheet on this thread and works it from a second one. An error of the script fails the test.
SheetResult UseSheet(PluginHost& host, SheetKind kind, const std::function<void(UiDriver&, Sheet&)>& script);

// Without looking for the page's controls: an index behind the host's tabs.
Window PluginPage(const Sheet& sheet, int index);

}  // namespace soak
