#include "play_printer.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "devpages/control_font.h"
#include "plugin_pages.h"
#include "resources/resource.h"
#include "utf8.h"

namespace {

class Visit {
  public:
    Visit(const UiDriver& driver, const Sheet& sheet, const Options& options)
        : driver_(driver), sheet_(sheet), options_(options) {}

    void PrintSelfTest() const { Press(UtilityPage(), IDC_UTILITY_SELF_TEST, L"the self test"); }

    void KeepPaperSizes() const {
        constexpr wchar_t kKept[] = L"Till";
        constexpr wchar_t kSpare[] = L"Spare";
        const Window page = UtilityPage();
        SavePaper(page, kKept, L"580", L"1500");
        SavePaper(page, kKept, L"600", L"2000");
        SavePaper(page, kSpare, L"480", L"1000");
        SelectPaper(page, kSpare);
        TakePicture(sheet_, L"utility-paper-sizes");
        Press(page, IDC_UTILITY_DELETE, L"the paper size");
    }

    void GiveCommandToCharacter() const {
        if (!std::filesystem::is_directory(ControlFontFolder())) {
            return;
        }
        const Window table = OpenControlFont(driver_, UtilityPage());
        SelectControlFontRow(table, L'A');
        const Window command = table.OpenDialog(IDC_CONTROL_TABLE_EDIT);
        // Initialises the printer.
        command.TypeText(IDC_CONTROL_COMMAND_TEXT, L"1B 40");
        command.PressAndWaitClosed(IDOK);
        TakePicture(table, L"control-font-changed");
        // Closes the table, or has it say why not.
        PostMessageW(table.Control(IDOK), BM_CLICK, 0, 0);
        driver_.WaitUntil([&] { return !table.IsOpen() || !IsWindowEnabled(table.handle()); },
                          "the control font's table to close");
        if (table.IsOpen()) {
            throw UiError("the control font is refused: " + ToUtf8(driver_.WaitForMessageBox().text));
        }
    }

    void Download() const {
        if (!options_.download) {
            return;
        }
        const Window page = SelectPageWith(sheet_, IDC_DOWNLOAD_PATH);
        page.ChooseFile(IDC_DOWNLOAD_BROWSE, std::filesystem::absolute(*options_.download));
        TakePicture(sheet_, L"download-file");
        Press(page, IDC_DOWNLOAD_SEND, L"the file");
    }

    // Each logo as it is, in black and white and in grey; the two converted kinds are sent.
    void SendLogos() const {
        if (options_.logos.empty()) {
            return;
        }
        const Window page = SelectPageWith(sheet_, IDC_LOGO_LIST);
        for (const auto& logo : options_.logos) {
            const int rows = page.RowCount(IDC_LOGO_LIST);
            page.ChooseFile(IDC_LOGO_ADD, std::filesystem::absolute(logo));
            if (page.RowCount(IDC_LOGO_LIST) == rows) {
                throw UiError("the logo " + ToUtf8(logo.native()) +
                              " is refused: " + ToUtf8(driver_.WaitForMessageBox().text));
            }
        }
        LookAtLogos(page, L"original");
        page.Click(IDC_LOGO_MONO);
        SetTones(page);
        LookAtLogos(page, L"mono");
        Press(page, IDC_LOGO_DOWNLOAD, L"the download of logos");
        page.Click(IDC_LOGO_GREY);
        LookAtLogos(page, L"grey");
        Press(page, IDC_LOGO_DOWNLOAD, L"the download of logos");
        Press(page, IDC_LOGO_CLEAR, L"to clear the logos");
        // The converted files go with their rows.
        while (page.RowCount(IDC_LOGO_LIST) > 0) {
            page.SelectRow(IDC_LOGO_LIST, 0);
            Press(page, IDC_LOGO_DELETE, L"to delete a logo");
        }
    }

  private:
    static std::filesystem::path ControlFontFolder() {
        wchar_t windows[MAX_PATH] = {};
        GetWindowsDirectoryW(windows, static_cast<UINT>(std::size(windows)));
        return std::filesystem::path(std::wstring(windows) + kControlFontPath).parent_path();
    }

    Window UtilityPage() const { return SelectPageWith(sheet_, IDC_UTILITY_PAPERS); }

    void Press(const Window& page, int button, const std::wstring& what) const {
        if (const auto message = PressForMessage(driver_, sheet_, page, button)) {
            throw UiError(ToUtf8(what) + " is refused: " + ToUtf8(*message));
        }
    }

    // Under the name behind the prefix that all of these paper sizes have, in tenths of a millimetre.
    void SavePaper(const Window& page, const wchar_t* name, const wchar_t* width,
                   const wchar_t* height) const {
        page.TypeText(IDC_UTILITY_FORM_NAME, name);
        page.TypeText(IDC_UTILITY_WIDTH, width);
        page.TypeText(IDC_UTILITY_HEIGHT, height);
        Press(page, IDC_UTILITY_SAVE, std::wstring(L"the paper size ") + name);
    }

    void SelectPaper(const Window& page, const std::wstring& name) const {
        const std::vector<std::wstring> papers = page.ListItems(IDC_UTILITY_PAPERS);
        const auto found = std::find_if(papers.begin(), papers.end(), [&name](const std::wstring& paper) {
            return paper == L"Custom Paper-" + name;
        });
        if (found == papers.end()) {
            throw UiError("the paper size " + ToUtf8(name) + " is not listed");
        }
        page.SelectList(IDC_UTILITY_PAPERS, static_cast<int>(found - papers.begin()));
    }

    // The halftones by turns, each with a little more light than the one before.
    void SetTones(const Window& page) const {
        constexpr int kHalftones[] = {IDC_LOGO_DIFFUSE, IDC_LOGO_DITHER_M4, IDC_LOGO_DITHER_M3,
                                      IDC_LOGO_NONE};
        for (int row = 0; row < page.RowCount(IDC_LOGO_LIST); ++row) {
            page.SelectRow(IDC_LOGO_LIST, row);
            // The preview tells whether there is something to set.
            UpdateWindow(page.handle());
            if (page.IsEnabled(IDC_LOGO_NONE)) {
                page.Click(kHalftones[static_cast<std::size_t>(row) % std::size(kHalftones)]);
                page.SetSlider(IDC_LOGO_CONTRAST, 20);
                page.SetSlider(IDC_LOGO_BRIGHTNESS, 10 * row);
            }
        }
    }

    void LookAtLogos(const Window& page, const std::wstring& type) const {
        for (int row = 0; row < page.RowCount(IDC_LOGO_LIST); ++row) {
            page.SelectRow(IDC_LOGO_LIST, row);
            TakePicture(sheet_, L"download-logo-" + type + L"-" + std::to_wstring(row + 1));
        }
    }

    void TakePicture(const Window& window, const std::wstring& name) const {
        if (options_.pictures) {
            window.Screenshot(*options_.pictures / (name + L".bmp"));
        }
    }

    const UiDriver& driver_;
    const Sheet& sheet_;
    const Options& options_;
};

}  // namespace

void PlayPrinter(const UiDriver& driver, const Sheet& sheet, const Options& options) {
    const Visit visit(driver, sheet, options);
    visit.PrintSelfTest();
    visit.KeepPaperSizes();
    visit.GiveCommandToCharacter();
    visit.Download();
    visit.SendLogos();
    sheet.PressOk();
}
