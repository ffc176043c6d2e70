// The sheets of two printers, open at once in one program, each on a thread of its own, as a desktop shell
// opens them. Each record gets what its own user chose; texts come in a language that either may change.
#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>
#include <set>
#include <thread>

#include "pages/hostile_records.h"
#include "plugin_pages.h"
#include "rig/test_desktop.h"
#include "soak/process_counts.h"
#include "soak/sheets.h"

namespace pages {
namespace {

constexpr int kDocumentPageCount = 6;
constexpr int kPrinterPageCount = 4;

constexpr int kCutList = IDC_OPERATION_CUT;
constexpr int kFeed = IDC_OPERATION_FEED;
constexpr int kLanguages = 3;

struct User {
    const wchar_t* printer;
    const wchar_t* text;
    std::uint8_t cut;
    std::uint8_t first_feed;
};
constexpr User kUsers[] = {{L"Till in front", L"Paid", 1, 10}, {L"Kitchen", L"Order", 2, 60}};

class TwoPrintersTest : public PageTest {
  protected:
    // On the user's own thread.
    void Work(const User& user, int rounds) {
        rig::JoinOwnDesktop();
        HostSettings settings;
        settings.printer_name = user.printer;
        PluginHost host(rig::PluginPath(), std::move(settings));
        for (int round = 0; round < rounds && !failed_; ++round) {
            const std::string what =
                "user " + std::to_string(&user - kUsers) + ", round " + std::to_string(round);
            EditTheRecord(host, user, round, what);
            if (round % 4 == 3) {
                LookAtThePrinter(host, what);
            }
            Require(host.GuardsIntact(), what + ": something wrote outside of what it was lent");
        }
    }

    void EditTheRecord(PluginHost& host, const User& user, int round, const std::string& what) {
        const Moment moment = kMoments[round % 4];
        Block block = BusyBlock();
        Bytes expected = RecordWith(block);
        expected[kKind] = 2;
        PutText(expected, kText, kTextUnits, user.text);
        std::ranges::copy(expected, host.record_bytes().begin());
        block.cut = user.cut;
        block.feed = static_cast<std::uint8_t>(user.first_feed + round % 30);
        UseSheet(host, SheetKind::kDocument, [&](UiDriver&, Sheet& sheet) {
            std::wstring face;
            for (int index = 0; index < kDocumentPageCount; ++index) {
                const Window page = soak::PluginPage(sheet, index);
                Repaint(page);
                if (page.HasControl(kWaterMarkPicture)) {
                    face = page.Text(kWaterMarkFonts);
                }
            }
            const Window page = sheet.SelectPage(kOperationTab);
            const Window dialog = page.OpenDialog(MomentButton(moment));
            dialog.SelectCombo(kCutList, block.cut);
            dialog.TypeText(kFeed, std::to_wstring(block.feed));
            CloseDialog(dialog, IDOK, page);
            soak::PluginPage(sheet, 0).SelectCombo(IDC_MAIN_LANGUAGE, (round + user.cut) % kLanguages);
            sheet.PressApply();
            const auto& options = host.options();
            const auto form = static_cast<std::size_t>(options.item(DriverOptions::kForms).Sel);
            PutBlock(expected, moment, block);
            expected = AfterApply(expected, options.Values(DriverOptions::kForms).at(form), face);
            sheet.PressOk();
        });
        const Bytes record(host.record_bytes().begin(), host.record_bytes().end());
        Require(record == expected, what + ":\n" + Differences(expected, record));
    }

    void LookAtThePrinter(PluginHost& host, const std::string& what) {
        UseSheet(host, SheetKind::kPrinter, [&](UiDriver&, Sheet& sheet) {
            Require(sheet.TabCount() == kHostTabCount + kPrinterPageCount, what + ": pages are missing");
            for (int index = 0; index < kPrinterPageCount; ++index) {
                Repaint(soak::PluginPage(sheet, index));
            }
            sheet.PressCancel();
        });
    }

    void Require(bool holds, const std::string& otherwise) {
        if (!holds) {
            const std::lock_guard lock(mutex_);
            failed_ = true;
            failures_ += otherwise + "\n";
        }
    }

    std::string failures_;

  private:
    std::mutex mutex_;
    std::atomic<bool> failed_ = false;
};

TEST_F(TwoPrintersTest, EachRecordGetsItsOwnUsersValues) {
    const int rounds = soak::Times("KVMR72_SOAK", 6);
    {
        const rig::PluginDll kept;
        std::vector<std::thread> threads;
        for (const User& user : kUsers) {
            threads.emplace_back([&] { Work(user, rounds); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    EXPECT_EQ(failures_, "");
}

}  // namespace
}  // namespace pages
