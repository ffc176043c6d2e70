// Pages of a sheet without looking for their controls.
#pragma once

#include "plugin_pages.h"
#include "ui_driver.h"

namespace soak {

// The plug-in's page of an index, behind the host's tabs.
inline Window PluginPage(const Sheet& sheet, int index) {
    return sheet.SelectPage(kHostTabCount + index);
}

}  // namespace soak
