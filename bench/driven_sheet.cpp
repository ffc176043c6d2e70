#include "driven_sheet.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "measure.h"
#include "plugin_pages.h"
#include "rig/process_objects.h"

namespace {

constexpr int kOpenings = 200;

struct Objects {
    int gdi;
    int handles;
};

Objects ObjectsNow() {
    return {rig::CountGdiObjects(), rig::CountHandles()};
}

}  // namespace

void Drive(PluginHost& host, SheetKind kind, const std::function<void(Sheet&)>& script) {
    RunDriven([&] { host.OpenSheet(kind); },
              [&](UiDriver& ui) {
                  Sheet sheet = ui.WaitForSheet();
                  script(sheet);
                  if (sheet.IsOpen()) {
                      sheet.PressCancel();
                  }
              });
}

double Repaint(const Window& page) {
    return Measure(kPaints, [&] { SendMessageW(page.handle(), WM_PAINT, 0, 0); });
}

void MeasurePages(PluginHost& host, SheetKind kind, std::span<const NamedControl> pages) {
    std::map<std::string, std::vector<double>> shown;
    std::map<std::string, double> painted;
    for (int i = 0; i < kRuns; ++i) {
        Drive(host, kind, [&](Sheet& sheet) {
            for (int index = kHostTabCount; index < sheet.TabCount(); ++index) {
                const auto start = Clock::now();
                const Window page = sheet.SelectPage(index);
                const double time = Since(start);
                for (const NamedControl& named : pages) {
                    if (page.HasControl(named.control)) {
                        shown[named.name].push_back(time);
                        if (i == 0) {
                            painted[named.name] = Repaint(page);
                        }
                    }
                }
            }
        });
    }
    for (const NamedControl& named : pages) {
        const std::string name = std::string(named.name) + " page ";
        Report((name + "shown for the first time (median)").c_str(), Median(shown[named.name]));
        Report((name + "repainted, nothing changed (median)").c_str(), painted[named.name]);
    }
}

void CountObjects(PluginHost& host, SheetKind kind, const char* name) {
    const auto open = [&] {
        Drive(host, kind, [](Sheet& sheet) {
            for (int index = kHostTabCount; index < sheet.TabCount(); ++index) {
                sheet.SelectPage(index);
            }
        });
    };
    // What the system keeps of the first opening stays.
    open();
    const Objects before = ObjectsNow();
    for (int i = 0; i < kOpenings; ++i) {
        open();
    }
    const Objects after = ObjectsNow();
    std::printf("after %d openings of the %s with all pages: GDI objects %d -> %d, handles %d -> %d\n",
                kOpenings, name, before.gdi, after.gdi, before.handles, after.handles);
}
