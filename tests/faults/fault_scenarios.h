// What a person does with the plug-in, short enough to be done again for each call that can fail.
#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <span>
#include <string>

#include "faults/fault_calls.h"
#include "plugin_host.h"
#include "ui_driver.h"

namespace faults {

// Works a sheet whose pages may lack anything. In a run without a fault every step must succeed; otherwise
// what a step does not find ends that step alone.
class Script {
  public:
    Script(const UiDriver& driver, const Sheet& sheet, FaultCalls& calls, bool tolerates)
        : driver_(driver), sheet_(sheet), calls_(calls), tolerates_(tolerates) {}

    const Sheet& sheet() const { return sheet_; }
    FaultCalls& calls() const { return calls_; }
    // The n-th of the plug-in's pages, brought to the front.
    Window Page(int index) const;
    void Step(const char* name, const std::function<void()>& action) const;
    // Has `press` press what opens a dialog over the page; works it when it opens, and has it closed
    // afterwards.
    void InDialog(const std::function<void()>& press, const Window& page,
                  const std::function<void(const Window& dialog)>& work) const;
    void Paint(const Window& window) const;
    void Apply() const;

  private:
    std::optional<Window> OpenedDialog(HWND opener) const;
    void CloseDialog(const Window& dialog) const;
    void Ask(HWND window, UINT message) const;

    const UiDriver& driver_;
    const Sheet& sheet_;
    FaultCalls& calls_;
    bool tolerates_;
};

// Said to the user when a function fails in a step.
struct ToldFault {
    const char* step;
    const char* function;
    const wchar_t* text;
    // Which of the step's calls of the function says it, from 1; 0 when each does.
    int call = 0;
};

// What a step is there for. A run without a fault must come to it.
struct PlayedCall {
    const char* step;
    const char* function;
    int times = 1;  // at least
};

struct Scenario {
    const char* name;
    // No sheet: the plug-in is loaded, makes its object and a record, and goes.
    std::optional<SheetKind> sheet;
    void (*work)(const Script& script);
    std::span<const PlayedCall> played;
    std::span<const ToldFault> told;
    // The user has never seen the driver.
    bool is_first_use = false;
    // Done first in the printer's properties, which then stay open beside the sheet.
    void (*beside)(const Script& script) = nullptr;
};

std::span<const Scenario> Scenarios();
inline void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

// The files that the scenarios choose, in a folder of their own without what was made of them.
void MakeScenarioFiles();
std::wstring ScenarioFile(const wchar_t* name);

}  // namespace faults
