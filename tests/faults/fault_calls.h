// Every call of the plug-in into the platform that can fail, counted, and made to fail one by one: a scenario
// is run once to count its calls and then again with call 1, 2, 3 ... failing as the platform says that it
// fails.
//
//   FaultCalls calls(printer, {.first = 7});   // before the plug-in is loaded
//   ... the scenario ...
//   calls.failed();                            // "CreateFileW (error 5) at +0x1f00"
//   calls.Left();                              // what the plug-in made and has not given back
#pragma once

#include <windows.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rig/import_hooks.h"
#include "virtual_printer.h"

namespace faults {

// Which calls fail: `count` of them from the `first`, which counts from 1; 0 lets all succeed.
struct FaultPlan {
    int first = 0;
    int count = 1;
    // Only calls for memory are counted, and fail.
    bool memory_only = false;
};

// What the system would ask the user, or the user's mouse and keyboard, is answered in their place.
struct Answers {
    std::wstring file;    // chosen in the dialog for opening a file
    std::wstring folder;  // chosen in the dialog for a folder
    POINT pointer = {};   // where the mouse is, on the screen
    int held_key = 0;     // the only key that is down
    bool finds_programs = true;
};

// A function and the step it is called in.
using StepCall = std::pair<std::string, std::string>;

class FaultCalls {
  public:
    // The spooler's calls go to `printer` and fail there.
    FaultCalls(VirtualPrinter& printer, const FaultPlan& plan);
    FaultCalls(const FaultCalls&) = delete;
    FaultCalls& operator=(const FaultCalls&) = delete;
    ~FaultCalls();

    // How many calls there were, and how many of them for memory.
    int calls() const;
    int memory_calls() const;
    // The first call that failed and its error, as "CreateFileW (error 5) at +0x1f00"; empty when none did.
    std::string failed() const;
    // The name of what is being done, kept with the call that fails in it.
    void EnterStep(const char* step);
    // The function that failed first, the step it failed in, and which of the step's calls of that function
    // it was, from 1.
    std::string_view failed_function() const;
    std::string_view failed_step() const;
    int failed_call() const;
    // What was called, outside of any step too, and how often in a step at most.
    std::map<StepCall, int> called() const;

    // What was made and not given back, as "GetDC" or "malloc of 24 bytes at +0x1f00", and how often.
    std::map<std::string, int> Left() const;
    // Texts of the message boxes, which do not open and count as answered with OK.
    std::vector<std::wstring> boxes() const;
    // Blocks that the plug-in gave back without having them.
    int stray_frees() const;

    Answers answers;

    // For the stand-ins. Counts a call; TRUE when it is to fail.
    static bool Counts(const char* function, DWORD error, bool is_memory, const void* caller);
    static void Opened(const char* function);
    static void Closed(const char* function);

  private:
    rig::ImportHooks hooks_;
};

// A function that the plug-in imports or asks for by name, as "KERNEL32.dll!ReadFile".
using FunctionName = std::string;
// Those that can fail here, and those that cannot or whose failure changes nothing but what is shown.
std::vector<FunctionName> FallibleFunctions();
std::vector<FunctionName> HarmlessFunctions();
// Those that the plug-in asks for by name.
bool IsFoundByName(const FunctionName& function);
// Those of the linked-in runtime, of which the plug-in's own sources know nothing.
std::vector<FunctionName> RuntimeFunctions();

}  // namespace faults
