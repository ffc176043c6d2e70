// The plug-in comes and goes with every job of a host that lives all day.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "intrface/print_oem.h"
#include "pages/page_fixture.h"
#include "rig/import_hooks.h"
#include "soak/process_counts.h"

namespace {

class LoadTest : public pages::PageTest {
  protected:
    // Every call that a host makes without opening a sheet.
    static void CallEverything(PluginHost& host) {
        host.MakeDefaultRecord();
        const pages::Bytes stored(host.record_bytes().begin(), host.record_bytes().end());
        host.LoadRecord(stored);
        EXPECT_EQ(host.CommonUIProp(OEMCUIP_DOCPROP), S_OK);
        EXPECT_EQ(host.CommonUIProp(OEMCUIP_PRNPROP), S_OK);
        pages::FakeSheet document;
        EXPECT_EQ(host.plugin().DocumentPropertySheets(&document.info, 0), S_OK);
        EXPECT_EQ(document.calls.size(), 6u);
        EXPECT_EQ(host.plugin().DocumentPropertySheets(document.ForReason(PROPSHEETUI_REASON_DESTROY), 0),
                  S_OK);
        pages::FakeSheet printer;
        EXPECT_EQ(host.plugin().DevicePropertySheets(&printer.info, 0), S_OK);
        EXPECT_EQ(printer.calls.size(), 4u);
        EXPECT_EQ(host.plugin().DevicePropertySheets(printer.ForReason(PROPSHEETUI_REASON_DESTROY), 0), S_OK);
        ULONG size = 0;
        FLONG flags = 0;
        EXPECT_EQ(
            host.plugin().QueryColorProfile(nullptr, nullptr, nullptr, nullptr, 0, nullptr, &size, &flags),
            E_FAIL);
    }
};

TEST_F(LoadTest, NothingStaysOfAPluginThatWent) {
    soak::LeakWatch watch;
    const int times = soak::Times("KVMR72_SOAK", 12);
    for (int i = 0; i < times && !HasFailure(); ++i) {
        CallEverything(StartHost());
        StopHost();
        watch.Count();
    }
    EXPECT_EQ(watch.Growth(), "");
    std::printf("%s\n", watch.Report().c_str());
}

// An exception is the first use that the linked-in runtime makes of memory and of a thread's own.
TEST_F(LoadTest, NothingStaysOfAnException) {
    soak::LeakWatch watch;
    const int times = soak::Times("KVMR72_SOAK", 12);
    for (int i = 0; i < times && !HasFailure(); ++i) {
        int refused = 0;
        {
            rig::ImportHooks hooks;
            bool refuses = false;
            hooks.On("msvcrt.dll", "malloc", &std::malloc, [&](auto original, std::size_t size) -> void* {
                return refuses && ++refused ? nullptr : original(size);
            });
            PluginHost& host = StartHost();
            EXPECT_EQ(host.CommonUIProp(OEMCUIP_DOCPROP), S_OK);
            pages::FakeSheet sheet;
            refuses = true;
            EXPECT_EQ(host.plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
            refuses = false;
            EXPECT_TRUE(sheet.calls.empty()) << "no memory, no page";
            StopHost();
        }
        EXPECT_GT(refused, 0);
        watch.Count();
    }
    EXPECT_EQ(watch.Growth(), "");
    std::printf("%s\n", watch.Report().c_str());
}

}  // namespace
