#include "faults/fault_scenarios.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <utility>
#include <vector>

#include "plugin_pages.h"
#include "resources/resource.h"
#include "rig/environment.h"

namespace faults {
namespace {

constexpr wchar_t kDownloadFile[] = L"firmware.jk";
constexpr wchar_t kColourFile[] = L"colour.bmp";
constexpr wchar_t kGreyFile[] = L"grey.bmp";
constexpr wchar_t kMonoFile[] = L"mono.bmp";

enum DocumentPage { kMain, kWaterMark, kOperation, kCode1D, kCode2D, kDocumentPageCount = 6 };
enum PrinterPage { kUtility, kDownload, kFont, kVersion, kPrinterPageCount };

std::filesystem::path Folder() {
    return std::filesystem::temp_directory_path() / L"kvmr72-faults";
}

// A bitmap with a palette of greys, or in colour, with a pattern in it.
std::vector<std::uint8_t> MakeBitmap(unsigned bits, unsigned width, unsigned height) {
    const unsigned colours = bits > 8 ? 0 : 1u << bits;
    const unsigned row = (width * bits + 31) / 32 * 4;
    const unsigned offset = 54 + colours * 4;
    std::vector<std::uint8_t> file(offset + row * height);
    const auto put = [&file](std::size_t at, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i) {
            file[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    };
    file[0] = 'B';
    file[1] = 'M';
    put(2, static_cast<std::uint32_t>(file.size()));
    put(10, offset);
    put(14, 40);
    put(18, width);
    put(22, height);
    file[26] = 1;
    file[28] = static_cast<std::uint8_t>(bits);
    for (unsigned i = 0; i < colours; ++i) {
        put(54 + i * 4, i * 0xFF / (colours - 1) * 0x010101);
    }
    for (std::size_t i = offset; i < file.size(); ++i) {
        file[i] = static_cast<std::uint8_t>(i * 37);
    }
    return file;
}

void VisitAll(const Script& script, int count) {
    for (int page = 0; page < count; ++page) {
        script.Step("visit", [&] { script.Paint(script.Page(page)); });
    }
}

void VisitDocumentPages(const Script& script) {
    VisitAll(script, kDocumentPageCount);
}

void VisitPrinterPages(const Script& script) {
    VisitAll(script, kPrinterPageCount);
}

void ApplyDocumentPages(const Script& script) {
    VisitAll(script, kDocumentPageCount);
    script.Step("apply", [&] {
        script.Page(kMain).SelectCombo(IDC_MAIN_PAPER_SIZE, 1);
        script.Apply();
    });
}

void ApplyPrinterPages(const Script& script) {
    VisitAll(script, kPrinterPageCount);
    script.Step("apply", [&] { script.Apply(); });
}

void UseMainPage(const Script& script) {
    script.Step("layout", [&] {
        const Window page = script.Page(kMain);
        page.SelectCombo(IDC_MAIN_PAPER_SIZE, 2);
        for (const int control : {IDC_MAIN_AS_IMAGE_YES, IDC_MAIN_ROTATE_180, IDC_MAIN_AS_IMAGE_NO,
                                  IDC_MAIN_NORMAL, IDC_MAIN_ZOOM}) {
            if (page.IsEnabled(control) && page.IsVisible(control)) {
                page.Click(control);
            }
        }
        page.Focus(IDC_MAIN_SCALE);
        page.TypeText(IDC_MAIN_SCALE, L"80");
        page.SpinUp(IDC_MAIN_SCALE_SPIN);
    });
    script.Step("log", [&] { script.Page(kMain).Click(IDC_MAIN_LOG); });
    script.Step("log folder", [&] { script.Page(kMain).Click(IDC_MAIN_LOG_BROWSE); });
    script.Step("log viewer", [&] { script.Page(kMain).Click(IDC_MAIN_LOG_VIEWER); });
}

void SwitchLanguage(const Script& script) {
    VisitAll(script, kDocumentPageCount);
    script.Step("language", [&] {
        const Window page = script.Page(kMain);
        page.SelectCombo(IDC_MAIN_LANGUAGE, page.ComboSelection(IDC_MAIN_LANGUAGE) == 0 ? 1 : 0);
        script.Apply();
    });
    VisitAll(script, kDocumentPageCount);
}

void UseWaterMarkImage(const Script& script) {
    script.Step("image", [&] { script.Page(kWaterMark).Click(IDC_WATERMARK_USE_IMAGE); });
    for (const wchar_t* const file : {kColourFile, kGreyFile}) {
        script.Step("choose", [&] {
            script.calls().answers.file = ScenarioFile(file);
            const Window page = script.Page(kWaterMark);
            page.Click(IDC_WATERMARK_BROWSE);
            script.Paint(page);
        });
    }
    script.Step("place", [&] {
        const Window page = script.Page(kWaterMark);
        page.SelectCombo(IDC_WATERMARK_POSITION, 9);
        page.SetSlider(IDC_WATERMARK_SIZE, 40);
        page.SetSlider(IDC_WATERMARK_BRIGHTNESS, 99);
        script.Paint(page);
    });
    script.Step("apply", [&] { script.Apply(); });
}

void UseWaterMarkText(const Script& script) {
    script.Step("text", [&] {
        const Window page = script.Page(kWaterMark);
        page.Click(IDC_WATERMARK_USE_TEXT);
        page.SelectCombo(IDC_WATERMARK_TEXT, 3);
        page.SelectCombo(IDC_WATERMARK_FONT, 2);
        page.SelectCombo(IDC_WATERMARK_STYLE, 1);
        page.SetSlider(IDC_WATERMARK_ANGLE, 30);
        script.Paint(page);
    });
    script.Step("apply", [&] { script.Apply(); });
    script.Step("none", [&] { script.Page(kWaterMark).Click(IDC_WATERMARK_USE_NONE); });
}

void UseOperations(const Script& script) {
    for (const int button : {IDC_OPERATION_PAGE_DOC_START, IDC_OPERATION_PAGE_DOC_END}) {
        script.Step("operation", [&] {
            const Window page = script.Page(kOperation);
            script.InDialog([&] { SendNotifyMessageW(page.Control(button), BM_CLICK, 0, 0); }, page,
                            [&](const Window& dialog) {
                                dialog.Click(IDC_OPERATION_OPEN_DRAWER);
                                dialog.SelectCombo(IDC_OPERATION_DRAWER, 1);
                                dialog.SelectCombo(IDC_OPERATION_CUT, 1);
                                dialog.SelectCombo(IDC_OPERATION_BUZZER, 1);
                                dialog.Click(IDC_OPERATION_SEND_COMMAND);
                                dialog.TypeText(IDC_OPERATION_COMMAND, L"1B 40 C");
                                script.Paint(dialog);
                                dialog.Click(IDOK);
                            });
        });
    }
}

void PrintBarcodes(const Script& script) {
    constexpr std::pair<int, BarcodePage> kPages[] = {{kCode1D, k1DCode}, {kCode2D, k2DCode}};
    for (const auto& [index, controls] : kPages) {
        script.Step("open", [&, index = index] { script.Paint(script.Page(index)); });
        for (const int type : {0, 3, 5}) {
            script.Step("print", [&, index = index, controls = controls] {
                const Window page = script.Page(index);
                page.SelectCombo(controls.types, type);
                page.TypeText(controls.data, L"1234");
                page.Click(controls.print);
            });
        }
    }
}

void UseUtilityPage(const Script& script) {
    script.Step("open", [&] { script.Paint(script.Page(kUtility)); });
    script.Step("self test", [&] { script.Page(kUtility).Click(IDC_UTILITY_SELF_TEST); });
    for (const wchar_t* const height : {L"900", L"1500"}) {
        script.Step("save", [&] {
            const Window page = script.Page(kUtility);
            page.TypeText(IDC_UTILITY_FORM_NAME, L"Till");
            page.TypeText(IDC_UTILITY_WIDTH, L"580");
            page.TypeText(IDC_UTILITY_HEIGHT, height);
            page.Click(IDC_UTILITY_SAVE);
        });
    }
    script.Step("delete", [&] {
        const Window page = script.Page(kUtility);
        page.SelectList(IDC_UTILITY_PAPERS, 0);
        page.SelectList(IDC_UTILITY_PAPERS, 1);
        if (page.IsEnabled(IDC_UTILITY_DELETE)) {
            page.Click(IDC_UTILITY_DELETE);
        }
    });
}

void EditTheControlFont(const Script& script) {
    script.Step("table", [&] {
        const Window page = script.Page(kUtility);
        const auto open_table = [&page] {
            SendNotifyMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(IDC_UTILITY_CONTROL_FONT, BN_CLICKED),
                               reinterpret_cast<LPARAM>(page.Control(IDC_UTILITY_CONTROL_FONT)));
        };
        script.InDialog(open_table, page, [&](const Window& table) {
            SelectControlFontRow(table, L'A');
            const auto edit = [&table] {
                SendNotifyMessageW(table.Control(IDC_CONTROL_TABLE_EDIT), BM_CLICK, 0, 0);
            };
            script.InDialog(edit, table, [&](const Window& command) {
                command.TypeText(IDC_CONTROL_COMMAND_TEXT, L"1B 40");
                command.Click(IDOK);
            });
            script.Step("save", [&table] { table.Click(IDOK); });
        });
    });
}

void DownloadFile(const Script& script) {
    script.Step("browse", [&] {
        script.calls().answers.file = ScenarioFile(kDownloadFile);
        script.Page(kDownload).Click(IDC_DOWNLOAD_BROWSE);
    });
    script.Step("type",
                [&] { script.Page(kDownload).TypeText(IDC_DOWNLOAD_PATH, ScenarioFile(kDownloadFile)); });
    script.Step("send", [&] { script.Page(kDownload).Click(IDC_DOWNLOAD_SEND); });
    script.Step("clear", [&] { script.Page(kDownload).Click(IDC_LOGO_CLEAR); });
}

void UseLogos(const Script& script) {
    for (const wchar_t* const file : {kColourFile, kGreyFile, kMonoFile}) {
        script.Step("add", [&] {
            script.calls().answers.file = ScenarioFile(file);
            script.Page(kDownload).Click(IDC_LOGO_ADD);
            script.Paint(script.Page(kDownload));
        });
    }
    for (const int type : {IDC_LOGO_MONO, IDC_LOGO_GREY}) {
        script.Step("type", [&] {
            const Window page = script.Page(kDownload);
            page.Click(type);
            page.SelectRow(IDC_LOGO_LIST, 0);
            script.Paint(page);
        });
        script.Step("download", [&] { script.Page(kDownload).Click(IDC_LOGO_DOWNLOAD); });
    }
    script.Step("remove", [&] {
        const Window page = script.Page(kDownload);
        page.Click(IDC_LOGO_DELETE);
        script.Paint(page);
    });
}

// Grey ones are left out: they leave the job open, as they always did.
void SendLogosAsTheyAre(const Script& script) {
    for (const wchar_t* const file : {kColourFile, kMonoFile}) {
        script.Step("add", [&] {
            script.calls().answers.file = ScenarioFile(file);
            script.Page(kDownload).Click(IDC_LOGO_ADD);
        });
    }
    script.Step("download", [&] { script.Page(kDownload).Click(IDC_LOGO_DOWNLOAD); });
}

void FollowTheLink(const Script& script) {
    script.Step("version", [&] {
        const Window page = script.Page(kVersion);
        SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(IDC_VERSION_LINK, STN_CLICKED),
                     reinterpret_cast<LPARAM>(page.Control(IDC_VERSION_LINK)));
    });
}

constexpr ToldFault kToldByMain[] = {{"log viewer", "ShellExecuteW", L"Not fount LOGViewer!"}};
constexpr ToldFault kToldByWaterMark[] = {{"choose", "LoadImageW", L"The specified file does not exist!"}};
constexpr ToldFault kToldByUtility[] = {
    {"save", "AddFormW", L"Set custom paper size failed!"},
    {"save", "SetFormW", L"Set custom paper size failed!"},
};
constexpr ToldFault kToldByControlFont[] = {
    {"save", "WritePrivateProfileStringW", L"Please check if user has administrator privileges!"},
};
constexpr ToldFault kToldByDownload[] = {
    {"send", "CreateFileW", L"Fail to open the selected file!"},
    {"send", "GetFileType", L"Fail to open the selected file!"},
    {"send", "GetFileSize", L"Failed to get the size of the selected file!"},
    {"send", "malloc", L"Failed to Alloc the required memory!"},
    {"send", "SetFilePointer", L"Failed to set the file point to the head of the file!"},
    {"send", "ReadFile", L"Failed to get data from the file!"},
};

constexpr Scenario kScenarios[] = {
    {"first use", std::nullopt, nullptr, {}, true},
    {"load", std::nullopt, nullptr, {}},
    {"document sheet", SheetKind::kDocument, VisitDocumentPages, {}},
    {"document sheet applied", SheetKind::kDocument, ApplyDocumentPages, {}},
    {"printer sheet", SheetKind::kPrinter, VisitPrinterPages, {}},
    {"printer sheet applied", SheetKind::kPrinter, ApplyPrinterPages, {}},
    {"main", SheetKind::kDocument, UseMainPage, kToldByMain},
    {"language", SheetKind::kDocument, SwitchLanguage, {}},
    {"water mark image", SheetKind::kDocument, UseWaterMarkImage, kToldByWaterMark},
    {"water mark text", SheetKind::kDocument, UseWaterMarkText, {}},
    {"operation", SheetKind::kDocument, UseOperations, {}},
    {"barcodes", SheetKind::kDocument, PrintBarcodes, {}},
    {"utility", SheetKind::kPrinter, UseUtilityPage, kToldByUtility},
    {"control font", SheetKind::kPrinter, EditTheControlFont, kToldByControlFont},
    {"download", SheetKind::kPrinter, DownloadFile, kToldByDownload},
    {"logos", SheetKind::kPrinter, UseLogos, {}},
    {"logos as they are", SheetKind::kPrinter, SendLogosAsTheyAre, {}},
    {"version", SheetKind::kPrinter, FollowTheLink, {}},
};

}  // namespace

Window Script::Page(int index) const {
    const Window page = sheet_.CurrentIndex() == kHostTabCount + index
                            ? sheet_.CurrentPage()
                            : sheet_.SelectPage(kHostTabCount + index);
    return page;
}

void Script::Step(const char* name, const std::function<void()>& action) const {
    calls_.EnterStep(name);
    try {
        action();
    } catch (const UiError&) {
        if (!tolerates_) {
            throw;
        }
    }
    calls_.EnterStep("");
}

// Returns when the window's thread has dealt with what it was sent before.
void Script::Ask(HWND window, UINT message) const {
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window, message, 0, 0, SMTO_NORMAL, static_cast<UINT>(driver_.timeout().count()),
                        &answer);
}

// The question is answered when the press is dealt with, or from within the dialog that it opened. That one
// has switched off what it lies over.
std::optional<Window> Script::OpenedDialog(HWND opener) const {
    Ask(opener, WM_NULL);
    if (tolerates_ && IsWindowEnabled(GetAncestor(opener, GA_ROOT))) {
        return std::nullopt;
    }
    return driver_.WaitForDialog(opener);
}

void Script::InDialog(const std::function<void()>& press, const Window& page,
                      const std::function<void(const Window& dialog)>& work) const {
    press();
    const std::optional<Window> dialog = OpenedDialog(page.handle());
    if (!dialog) {
        return;
    }
    try {
        work(*dialog);
    } catch (const UiError&) {
        if (!tolerates_) {
            throw;
        }
    }
    CloseDialog(*dialog);
}

// What stays open in spite of its OK is cancelled.
void Script::CloseDialog(const Window& dialog) const {
    const HWND owner = GetWindow(dialog.handle(), GW_OWNER);
    if (dialog.IsOpen()) {
        PostMessageW(dialog.handle(), WM_COMMAND, IDCANCEL, 0);
    }
    dialog.WaitClosed();
    SendMessageW(owner, WM_NULL, 0, 0);
}

// Also when nothing has changed.
void Script::Apply() const {
    Ask(sheet_.handle(), PSM_APPLY);
}

void Script::Paint(const Window& window) const {
    RedrawWindow(window.handle(), nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    Ask(window.handle(), WM_NULL);
}

std::span<const Scenario> Scenarios() {
    return kScenarios;
}

std::wstring ScenarioFile(const wchar_t* name) {
    return (Folder() / name).wstring();
}

void MakeScenarioFiles() {
    std::error_code error;
    std::filesystem::create_directories(Folder(), error);
    std::vector<std::uint8_t> firmware(5000);
    for (std::size_t i = 0; i < firmware.size(); ++i) {
        firmware[i] = static_cast<std::uint8_t>(i);
    }
    rig::WriteBytes(ScenarioFile(kDownloadFile), firmware);
    rig::WriteBytes(ScenarioFile(kColourFile), MakeBitmap(24, 40, 24));
    rig::WriteBytes(ScenarioFile(kGreyFile), MakeBitmap(8, 33, 17));
    rig::WriteBytes(ScenarioFile(kMonoFile), MakeBitmap(1, 30, 16));
}

}  // namespace faults
