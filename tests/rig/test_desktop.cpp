#include "rig/test_desktop.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace rig {
namespace {

HDESK own_desktop = nullptr;

}  // namespace

void UseOwnDesktop() {
    const std::wstring name = L"kvmr72-test-" + std::to_wstring(GetCurrentProcessId());
    own_desktop = CreateDesktopW(name.c_str(), nullptr, nullptr, 0, GENERIC_ALL, nullptr);
    ASSERT_NE(own_desktop, nullptr) << GetLastError();
    JoinOwnDesktop();
}

void JoinOwnDesktop() {
    EXPECT_TRUE(SetThreadDesktop(own_desktop)) << GetLastError();
}

}  // namespace rig
