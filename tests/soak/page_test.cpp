// Both sheets opened, every page of them shown and painted, the dialogs behind their buttons opened, and all
// of it closed again, in a program that keeps the plug-in.
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "pages/open_file_hook.h"
#include "pages/operation_block.h"
#include "pages/printer_fixture.h"
#include "pages/water_mark_fixture.h"
#include "plugin_pages.h"
#include "soak/process_counts.h"
#include "soak/sheets.h"

namespace pages {
namespace {

constexpr int kDocumentPageCount = 6;

struct Picture {
    const wchar_t* name;
    std::uint8_t bits;
    std::uint32_t colours;
};
constexpr Picture kPictures[] = {{L"colour.bmp", 24, 0}, {L"grey.bmp", 8, 256}};

std::filesystem::path Folder() {
    return std::filesystem::temp_directory_path() / L"kvmr72-soak";
}

std::wstring PictureFile(int number) {
    return (Folder() / kPictures[static_cast<std::size_t>(number) % std::size(kPictures)].name).wstring();
}

constexpr int kFirstRounds = 3;

class PageSoakTest : public PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        std::error_code error;
        std::filesystem::create_directories(Folder(), error);
        for (const auto& [name, bits, colours] : kPictures) {
            rig::WriteBytes(Folder() / name, water_mark::BitmapFile(bits, colours));
        }
    }

    // A user's way through both sheets. What it changes differs from round to round.
    void UseEverything(int round) {
        // Remembers what was printed, so that it must not outlast the round.
        VirtualPrinter printer;
        HostSettings settings;
        settings.printer = printer.handle();
        PluginHost host(rig::PluginPath(), std::move(settings));
        UseDocumentSheet(host, round);
        UsePrinterSheet(host, round);
        EXPECT_TRUE(host.GuardsIntact());
        // The self test, and the logo.
        EXPECT_EQ(printer.Jobs().size(), 2u);
    }

    // The watermark is none, a picture and a text in turn.
    static void UseDocumentSheet(PluginHost& host, int round) {
        Bytes record(host.record_bytes().begin(), host.record_bytes().end());
        record[water_mark::kKindAt] = static_cast<std::uint8_t>(round % 3);
        water_mark::PutText(record, water_mark::kFileAt, water_mark::kFileUnits, PictureFile(round));
        water_mark::PutText(record, water_mark::kTextAt, water_mark::kTextUnits, L"Paid");
        std::ranges::copy(record, host.record_bytes().begin());
        UseSheet(host, SheetKind::kDocument, [&](UiDriver&, Sheet& sheet) {
            for (int page = 0; page < kDocumentPageCount; ++page) {
                Repaint(soak::PluginPage(sheet, page));
            }
            const Window operations = sheet.SelectPage(kOperationTab);
            const Window dialog = operations.OpenDialog(MomentButton(kMoments[round % 4]));
            Repaint(dialog);
            CloseDialog(dialog, round % 2 == 0 ? IDOK : IDCANCEL, operations);
            sheet.PressCancel();
        });
    }

    static void UsePrinterSheet(PluginHost& host, int round) {
        UseSheet(host, SheetKind::kPrinter, [&](UiDriver& ui, Sheet& sheet) {
            for (int page = 0; page < kPrinterTabCount; ++page) {
                Repaint(soak::PluginPage(sheet, page));
            }
            UseLogos(soak::PluginPage(sheet, kDownloadTab), round);
            const Window utility = soak::PluginPage(sheet, kUtilityTab);
            utility.Click(IDC_UTILITY_SELF_TEST);
            const Window table = OpenControlFont(ui, utility);
            SelectControlFontRow(table, L'A');
            const Window command = table.OpenDialog(IDC_CONTROL_TABLE_EDIT);
            command.TypeText(IDC_CONTROL_COMMAND_TEXT, L"1B 40");
            CloseDialog(command, IDOK, table);
            CloseDialog(table, IDCANCEL, utility);
            sheet.PressCancel();
        });
    }

    rig::ImportHooks hooks_;

  private:
    // A logo comes, is converted another way, is sent and goes.
    static void UseLogos(const Window& page, int round) {
        page.Click(IDC_LOGO_ADD);
        page.Click(round % 2 == 0 ? IDC_LOGO_GREY : IDC_LOGO_MONO);
        Repaint(page);
        page.SelectRow(IDC_LOGO_LIST, 0);
        page.Click(IDC_LOGO_DOWNLOAD);
        page.Click(IDC_LOGO_DELETE);
        Repaint(page);
    }
};

TEST_F(PageSoakTest, EveryPageOpenedAgainAndAgain) {
    int round = 0;
    std::atomic<int> boxes = 0;
    hooks_.On("comdlg32.dll", "GetOpenFileNameW", &GetOpenFileNameW, [&](auto, LPOPENFILENAMEW dialog) {
        const std::wstring path = PictureFile(round);
        dialog->lpstrFile[path.copy(dialog->lpstrFile, dialog->nMaxFile - 1)] = L'\0';
        return TRUE;
    });
    hooks_.On("USER32.dll", "MessageBoxW", &MessageBoxW, [&](auto, HWND, LPCWSTR, LPCWSTR, UINT) {
        ++boxes;
        return IDOK;
    });
    // What the plug-in has of memory; its library frees with these alone.
    std::atomic<int> blocks = 0;
    hooks_.On("msvcrt.dll", "malloc", &std::malloc, [&](auto original, std::size_t size) {
        ++blocks;
        return original(size);
    });
    hooks_.On("msvcrt.dll", "calloc", &std::calloc, [&](auto original, std::size_t count, std::size_t size) {
        ++blocks;
        return original(count, size);
    });
    hooks_.On("msvcrt.dll", "realloc", &std::realloc, [&](auto original, void* block, std::size_t size) {
        blocks += block == nullptr ? 1 : 0;
        return original(block, size);
    });
    hooks_.On("msvcrt.dll", "free", &std::free, [&](auto original, void* block) {
        blocks -= block != nullptr ? 1 : 0;
        original(block);
    });
    const rig::PluginDll kept;
    soak::LeakWatch watch(soak::kBlocksOfStaticTexts);
    int first_blocks = 0;
    for (const int times = soak::Times("KVMR72_SOAK", 9); round < times && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        UseEverything(round);
        EXPECT_EQ(boxes, 0) << "nobody asked for a message";
        watch.Count();
        // Texts of the first rounds' languages and pictures are kept on purpose.
        first_blocks = round < kFirstRounds ? blocks.load() : first_blocks;
        EXPECT_LE(blocks, first_blocks) << "memory is left behind";
    }
    EXPECT_GT(first_blocks, 0);
    EXPECT_EQ(watch.Growth(), "");
    std::printf("%s\n", watch.Report().c_str());
}

}  // namespace
}  // namespace pages
