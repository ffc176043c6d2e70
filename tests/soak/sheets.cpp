#include "soak/sheets.h"

#include <gtest/gtest.h>

#include "plugin_pages.h"
#include "rig/test_desktop.h"

namespace soak {

SheetResult UseSheet(PluginHost& host, SheetKind kind, const std::function<void(UiDriver&, Sheet&)>& script) {
    SheetResult result;
    try {
        RunDriven([&] { result = host.OpenSheet(kind); },
                  [&](UiDriver& ui) {
                      rig::JoinOwnDesktop();
                      Sheet sheet = ui.WaitForSheet();
                      script(ui, sheet);
                      if (sheet.IsOpen()) {
                          ui.CloseEverything();
                      }
                  });
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
    }
    return result;
}

Window PluginPage(const Sheet& sheet, int index) {
    return sheet.SelectPage(kHostTabCount + index);
}

}  // namespace soak
