// Stand-ins for the functions that a DLL imports: to watch its calls, to fake the system around it, to make a
// call fail. They are in place before the DLL's entry point runs, and also answer its GetProcAddress.
// Everybody else in the process keeps the real functions.
//
//   ImportHooks hooks;                                  // of KVMR72UI.dll
//   int opened = 0;
//   hooks.On("ADVAPI32.dll", "RegOpenKeyExW", &RegOpenKeyExW, [&](auto original, auto... arguments) {
//       return ++opened == 2 ? ERROR_ACCESS_DENIED : original(arguments...);
//   });
//   PluginDll plugin;
//   ASSERT_EQ(hooks.Bound("RegOpenKeyExW"), 1);         // the DLL really calls through the hook
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "module_imports.h"

namespace rig {

class ImportHooks {
  public:
    // `module` is the file name of the DLL to watch.
    explicit ImportHooks(const wchar_t* module = L"KVMR72UI.dll") : imports_(module) {}
    ImportHooks(const ImportHooks&) = delete;
    ImportHooks& operator=(const ImportHooks&) = delete;

    // Replaces `function` of `dll` (file name with extension, any case) by a function of the same type. The
    // real one goes to `*original` unless that is null.
    template <typename Function>
    void Hook(const char* dll, const char* function, Function* replacement, Function** original = nullptr) {
        Function* const real = imports_.Replace(dll, function, replacement);
        EXPECT_NE(real, nullptr) << dll << " has no " << function;
        if (original != nullptr) {
            *original = real;
        }
    }

    // Replaces it by `action(original, arguments...)`; the third argument only tells the type. One written
    // lambda serves one hook at a time, because each becomes one plain function.
    template <typename Result, typename... Arguments, typename Action>
    void On(const char* dll, const char* function, Result(WINAPI* type)(Arguments...), Action action) {
        using Stub = ActionStub<Action, Result, Arguments...>;
        static_cast<void>(type);
        ASSERT_EQ(Stub::action, nullptr) << "this lambda is already in use for a hook";
        Stub::action = new Action(std::move(action));
        actions_.emplace_back(Stub::action, [](Action* kept) {
            Stub::action = nullptr;
            delete kept;
        });
        Hook(dll, function, &Stub::Call, &Stub::original);
    }

    // As of ModuleImports.
    int Bound(const char* function) const { return imports_.Bound(function); }

  private:
    template <typename Action, typename Result, typename... Arguments>
    struct ActionStub {
        static inline Action* action = nullptr;
        static inline Result(WINAPI* original)(Arguments...) = nullptr;
        static Result WINAPI Call(Arguments... arguments) { return (*action)(original, arguments...); }
    };

    std::vector<std::shared_ptr<void>> actions_;
    // Goes first: until then an action may be called.
    ModuleImports imports_;
};

}  // namespace rig
