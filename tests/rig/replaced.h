// Another function in the place of one that this program imports, while it lives:
//
//   extern "C" decltype(&ReadFile) __imp_ReadFile;
//   const Replaced read(__imp_ReadFile, &FailingRead);
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

namespace rig {

template <typename Function>
class Replaced {
  public:
    // `slot` is where the import table keeps the function.
    Replaced(Function*& slot, Function* replacement) : slot_(slot), real_(slot) { Put(replacement); }
    Replaced(const Replaced&) = delete;
    Replaced& operator=(const Replaced&) = delete;
    ~Replaced() { Put(real_); }

    Function* Real() const { return real_; }

  private:
    void Put(Function* function) {
        DWORD protection = 0;
        EXPECT_TRUE(VirtualProtect(&slot_, sizeof slot_, PAGE_READWRITE, &protection));
        slot_ = function;
        VirtualProtect(&slot_, sizeof slot_, protection, &protection);
    }

    Function*& slot_;
    Function* const real_;
};

}  // namespace rig
