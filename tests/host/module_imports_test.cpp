// Several objects may stand in for functions of one DLL: the virtual printer for the spooler, a test for
// others.
#include "module_imports.h"

#include <windows.h>

#include <shlobj.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "rig/environment.h"
#include "rig/plugin_dll.h"

namespace {

using testing::AllOf;
using testing::Contains;

std::vector<std::string> calls;

VOID WINAPI FirstTrace(LPCWSTR) {
    calls.emplace_back("first");
}

VOID WINAPI SecondTrace(LPCWSTR) {
    calls.emplace_back("second");
}

BOOL WINAPI NoFolder(HWND, LPWSTR, int, BOOL) {
    calls.emplace_back("folder");
    return FALSE;
}

class ModuleImportsTest : public testing::Test {
  protected:
    void SetUp() override {
        rig::ResetToInstalled();
        calls.clear();
    }
};

TEST_F(ModuleImportsTest, GiveTheRealFunction) {
    ModuleImports imports(L"KVMR72UI.dll");
    const auto real =
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "OutputDebugStringW"));
    ASSERT_NE(real, nullptr);
    EXPECT_EQ(reinterpret_cast<void*>(imports.Replace("kernel32.dll", "OutputDebugStringW", &FirstTrace)),
              real);
    EXPECT_EQ(imports.Replace("kernel32.dll", "OutputDebugStringX", &FirstTrace), nullptr);
    EXPECT_EQ(imports.Bound("OutputDebugStringW"), 0) << "no such DLL is loaded";
}

TEST_F(ModuleImportsTest, TheLaterOneStandsInFrontAndGivesBackTheEarlier) {
    const rig::PluginDll plugin;
    ModuleImports first(L"KVMR72UI.dll");
    first.Replace("kernel32.dll", "OutputDebugStringW", &FirstTrace);
    {
        ModuleImports second(L"kvmr72ui.DLL");
        second.Replace("kernel32.dll", "OutputDebugStringW", &SecondTrace);
        plugin.CreateFactory();
        EXPECT_EQ(calls, std::vector<std::string>{"second"});
    }
    plugin.CreateFactory();
    EXPECT_EQ(calls, (std::vector<std::string>{"second", "first"}));
}

// The DLL asks GetProcAddress for this one when it is loaded.
TEST_F(ModuleImportsTest, EachAnswersForItsFunctionsWhicheverGoesFirst) {
    auto first = std::make_unique<ModuleImports>(L"KVMR72UI.dll");
    ModuleImports second(L"KVMR72UI.dll");
    first->Replace("kernel32.dll", "OutputDebugStringW", &FirstTrace);
    second.Replace("shell32.dll", "SHGetSpecialFolderPathW", &NoFolder);
    {
        const rig::PluginDll plugin;
        EXPECT_EQ(first->Bound("OutputDebugStringW"), 1);
        EXPECT_EQ(first->Bound("SHGetSpecialFolderPathW"), 0);
        EXPECT_EQ(second.Bound("SHGetSpecialFolderPathW"), 1);
        EXPECT_THAT(calls, AllOf(Contains("first"), Contains("folder")));
        first.reset();
        calls.clear();
        plugin.CreateFactory();
        EXPECT_TRUE(calls.empty());
    }
    const rig::PluginDll again;
    EXPECT_EQ(second.Bound("SHGetSpecialFolderPathW"), 2);
    EXPECT_THAT(calls, AllOf(testing::SizeIs(testing::Gt(0u)), testing::Each("folder")));
}

TEST_F(ModuleImportsTest, ForgetADllThatIsUnloaded) {
    ModuleImports first(L"KVMR72UI.dll");
    first.Replace("kernel32.dll", "OutputDebugStringW", &FirstTrace);
    { const rig::PluginDll plugin; }
    // Neither touches what is no longer there.
    { ModuleImports second(L"KVMR72UI.dll"); }
    first.Replace("shell32.dll", "SHGetSpecialFolderPathW", &NoFolder);
    EXPECT_EQ(first.Bound("SHGetSpecialFolderPathW"), 0);
    const rig::PluginDll again;
    EXPECT_EQ(first.Bound("OutputDebugStringW"), 2);
    EXPECT_EQ(first.Bound("SHGetSpecialFolderPathW"), 1);
}

}  // namespace
