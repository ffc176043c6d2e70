// Stand-ins for the functions that one DLL of the process imports. They are in place before the DLL's entry
// point runs, and also answer its GetProcAddress. Everybody else keeps the real functions.
#pragma once

#include <memory>
#include <string>

class ModuleImports {
  public:
    // `module` is the file name of the DLL, which may be loaded or not; not the program that this is part of.
    explicit ModuleImports(std::wstring module);
    ModuleImports(const ModuleImports&) = delete;
    ModuleImports& operator=(const ModuleImports&) = delete;
    // Gives back the real functions. Of two objects that replace the same function of the same DLL, the later
    // one goes first.
    ~ModuleImports();

    // Replaces `function` of `dll` (file name with extension, any case) by one of the same type. Returns the
    // real one, null when `dll` has none of that name.
    template <typename Function>
    Function* Replace(const char* dll, const char* function, Function* replacement) {
        return reinterpret_cast<Function*>(ReplaceAny(dll, function, reinterpret_cast<void*>(replacement)));
    }

    // How often the loaded module's import table names the function and leads to the replacement, plus how
    // often the module has asked GetProcAddress for it.
    int Bound(const char* function) const;

  private:
    void* ReplaceAny(const char* dll, const char* function, void* replacement);

    struct State;
    std::unique_ptr<State> state_;
};
