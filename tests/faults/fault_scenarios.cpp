#include "faults/fault_scenarios.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string_view>
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
    // The group of the first font closed and opened again, and a font in it chosen.
    script.Step("tree", [&] {
        const Window page = script.Page(kFont);
        const auto next = [&page](WPARAM which, LRESULT item) {
            return page.Send(IDC_FONT_TREE, TVM_GETNEXTITEM, which, item);
        };
        const LRESULT group = next(TVGN_CHILD, next(TVGN_ROOT, 0));
        page.Send(IDC_FONT_TREE, TVM_EXPAND, TVE_COLLAPSE, group);
        page.Send(IDC_FONT_TREE, TVM_EXPAND, TVE_EXPAND, group);
        page.Send(IDC_FONT_TREE, TVM_SELECTITEM, TVGN_CARET, next(TVGN_CHILD, group));
        script.Paint(page);
    });
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
    script.Step("no log viewer", [&] {
        script.calls().answers.finds_programs = false;
        script.Page(kMain).Click(IDC_MAIN_LOG_VIEWER);
    });
    script.Step("help", [&] {
        const Window page = script.Page(kMain);
        RECT area = {};
        GetWindowRect(page.Control(IDC_MAIN_LOG), &area);
        script.calls().answers.pointer = {area.left, area.top};
        page.Send(IDC_MAIN_LOG, WM_MOUSEMOVE);
    });
}

void SwitchLanguage(const Script& script) {
    VisitAll(script, kDocumentPageCount);
    // A language file without a byte-order mark is in the system's code page.
    script.Step("file", [&] {
        constexpr std::string_view kText = "[MAIN]\r\n";
        rig::WriteBytes(rig::UserFolder() / L"ENG_KVMR72.res",
                        std::vector<std::uint8_t>(kText.begin(), kText.end()));
        script.Paint(script.Page(kMain));
    });
    script.Step("language", [&] {
        const Window page = script.Page(kMain);
        page.SelectCombo(IDC_MAIN_LANGUAGE, page.ComboSelection(IDC_MAIN_LANGUAGE) == 0 ? 1 : 0);
        script.Apply();
    });
    VisitAll(script, kDocumentPageCount);
}

void UseWaterMarkImage(const Script& script) {
    script.Step("image", [&] {
        const Window page = script.Page(kWaterMark);
        page.Click(IDC_WATERMARK_USE_IMAGE);
        script.Paint(page);
    });
    constexpr std::pair<const char*, const wchar_t*> kFiles[] = {{"choose colour", kColourFile},
                                                                 {"choose grey", kGreyFile}};
    for (const auto& [step, file] : kFiles) {
        script.Step(step, [&, file = file] {
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

void FillDocumentStart(const Script& script, const Window& dialog) {
    dialog.Click(IDC_OPERATION_OPEN_DRAWER);
    dialog.SelectCombo(IDC_OPERATION_DRAWER, 1);
    dialog.SelectCombo(IDC_OPERATION_CUT, 1);
    dialog.SelectCombo(IDC_OPERATION_BUZZER, 1);
    dialog.Click(IDC_OPERATION_SEND_COMMAND);
    dialog.TypeText(IDC_OPERATION_COMMAND, L"1B 40 C");
    script.Paint(dialog);
}

void FillPageStart(const Script&, const Window& dialog) {
    dialog.Click(IDC_OPERATION_USE_HERALD);
    dialog.SelectCombo(IDC_OPERATION_HERALD, 1);
    dialog.SelectCombo(IDC_OPERATION_LOGO, 2);
    dialog.Click(IDC_OPERATION_ALIGN_RIGHT);
    dialog.Click(IDC_OPERATION_AFTER_CUT);
    dialog.TypeText(IDC_OPERATION_FEED, L"12");
    dialog.SelectCombo(IDC_OPERATION_BUZZER, 1);
    dialog.SpinUp(IDC_OPERATION_VOLUME_SPIN);
}

// TAB leaves the command's box.
void FillPageEnd(const Script& script, const Window& dialog) {
    dialog.Click(IDC_OPERATION_FEED_TO_POSITION);
    dialog.Click(IDC_OPERATION_SEND_COMMAND);
    dialog.Focus(IDC_OPERATION_COMMAND);
    script.calls().answers.held_key = VK_TAB;
    dialog.Send(IDC_OPERATION_COMMAND, WM_CHAR, VK_TAB, 1);
    script.calls().answers.held_key = 0;
}

void FillDocumentEnd(const Script& script, const Window& dialog) {
    dialog.Click(IDC_OPERATION_DEFAULT);
    script.Paint(dialog);
}

struct OperationMoment {
    const char* step;
    int button;
    void (*fill)(const Script& script, const Window& dialog);
};
constexpr OperationMoment kMoments[] = {
    {"document start", IDC_OPERATION_PAGE_DOC_START, FillDocumentStart},
    {"page start", IDC_OPERATION_PAGE_PAGE_START, FillPageStart},
    {"page end", IDC_OPERATION_PAGE_PAGE_END, FillPageEnd},
    {"document end", IDC_OPERATION_PAGE_DOC_END, FillDocumentEnd},
};

void UseOperations(const Script& script) {
    for (const OperationMoment& moment : kMoments) {
        script.Step(moment.step, [&] {
            const Window page = script.Page(kOperation);
            const auto press = [&] { SendNotifyMessageW(page.Control(moment.button), BM_CLICK, 0, 0); };
            script.InDialog(press, page, [&](const Window& dialog) {
                moment.fill(script, dialog);
                dialog.Click(IDOK);
            });
        });
    }
}

struct PrintedType {
    int type;
    const wchar_t* data;
};
constexpr PrintedType kPrinted1D[] = {{0, L"12345678901"}, {8, L"{A1234"}, {12, L"01234567890123"}};
constexpr PrintedType kPrinted2D[] = {{0, L"1234"}, {3, L"01234567890123"}, {4, L"1234"}, {5, L"1234"}};

void PrintTypes(const Script& script, int index, const BarcodePage& controls,
                std::span<const PrintedType> types) {
    for (const PrintedType& printed : types) {
        script.Step("print", [&] {
            const Window page = script.Page(index);
            page.SelectCombo(controls.types, printed.type);
            page.TypeText(controls.data, printed.data);
            page.Click(controls.print);
        });
    }
}

// The second font of each page; its last type has the group of GS1 DataBar.
void PrintBarcodes1D(const Script& script) {
    script.Step("open", [&] { script.Paint(script.Page(kCode1D)); });
    script.Step("font", [&] {
        const Window page = script.Page(kCode1D);
        page.SelectCombo(IDC_BARCODE1D_FONT, 1);
        page.SelectCombo(IDC_BARCODE1D_TYPE, 4);
        page.SelectCombo(IDC_BARCODE1D_HRI_POSITION, 2);
        page.Click(IDC_BARCODE1D_HRI_FONT_B);
        page.TypeText(IDC_BARCODE1D_HEIGHT, L"90");
        page.SpinUp(IDC_BARCODE1D_WIDTH_SPIN);
    });
    PrintTypes(script, kCode1D, k1DCode, kPrinted1D);
    script.Step("composite", [&] {
        const Window page = script.Page(kCode1D);
        page.Click(IDC_BARCODE1D_GS1_COMPOSITE);
        page.TypeText(IDC_BARCODE1D_GS1_COMPOSITE_ROW, L"5");
        page.SelectCombo(IDC_BARCODE1D_GS1_HRI, 1);
        page.SelectCombo(IDC_BARCODE1D_GS1_EXPANDED, 1);
        script.Paint(page);
    });
}

void PrintBarcodes2D(const Script& script) {
    script.Step("open", [&] { script.Paint(script.Page(kCode2D)); });
    script.Step("font", [&] {
        const Window page = script.Page(kCode2D);
        page.SelectCombo(IDC_BARCODE2D_FONT, 1);
        page.SelectCombo(IDC_BARCODE2D_PDF_ECC, 2);
        page.TypeText(IDC_BARCODE2D_PDF_ROWS, L"30");
    });
    PrintTypes(script, kCode2D, k2DCode, kPrinted2D);
    script.Step("composite", [&] {
        const Window page = script.Page(kCode2D);
        page.SelectCombo(IDC_BARCODE2D_TYPE, 3);
        page.TypeText(IDC_BARCODE2D_GS1_SEGMENTS, L"2");
        page.Click(IDC_BARCODE2D_GS1_COMPOSITE);
        page.SelectCombo(IDC_BARCODE2D_GS1_HRI, 1);
        script.Paint(page);
    });
    script.Step("qr", [&] {
        const Window page = script.Page(kCode2D);
        page.SelectCombo(IDC_BARCODE2D_TYPE, 4);
        page.SelectCombo(IDC_BARCODE2D_QR_LANGUAGE, 1);
        page.SelectCombo(IDC_BARCODE2D_QR_MODEL, 1);
        page.SelectCombo(IDC_BARCODE2D_QR_ECC, 2);
        page.SpinUp(IDC_BARCODE2D_QR_WIDTH_SPIN);
    });
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
            SelectControlFontRow(table, L'B');
            script.InDialog(edit, table, [](const Window& command) { command.Click(IDOK); });
            SelectControlFontRow(table, L'A');
            table.Click(IDC_CONTROL_TABLE_DELETE);
            script.InDialog(edit, table, [](const Window& command) {
                command.TypeText(IDC_CONTROL_COMMAND_TEXT, L"1D 56");
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

void AddLogo(const Script& script, const wchar_t* file) {
    script.Step("add", [&] {
        script.calls().answers.file = ScenarioFile(file);
        script.Page(kDownload).Click(IDC_LOGO_ADD);
        script.Paint(script.Page(kDownload));
    });
}

void UseLogos(const Script& script) {
    for (const wchar_t* const file : {kColourFile, kGreyFile, kMonoFile}) {
        AddLogo(script, file);
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

void SetUpALogo(const Script& script) {
    AddLogo(script, kColourFile);
    script.Step("type", [&] {
        script.Page(kDownload).Click(IDC_LOGO_MONO);
        script.Paint(script.Page(kDownload));
    });
    for (const int halftone : {IDC_LOGO_NONE, IDC_LOGO_DITHER_M3, IDC_LOGO_DITHER_M4, IDC_LOGO_DIFFUSE}) {
        script.Step("halftone", [&] {
            script.Page(kDownload).Click(halftone);
            script.Paint(script.Page(kDownload));
        });
    }
    for (const int slider : {IDC_LOGO_CONTRAST, IDC_LOGO_BRIGHTNESS}) {
        script.Step("tone", [&] {
            script.Page(kDownload).SetSlider(slider, 30);
            script.Paint(script.Page(kDownload));
        });
    }
    script.Step("original", [&] {
        script.Page(kDownload).Click(IDC_LOGO_ORIGINAL);
        script.Paint(script.Page(kDownload));
    });
}

// Grey ones are left out: they leave the job open, as they always did.
void SendLogosAsTheyAre(const Script& script) {
    AddLogo(script, kColourFile);
    AddLogo(script, kMonoFile);
    script.Step("download", [&] { script.Page(kDownload).Click(IDC_LOGO_DOWNLOAD); });
}

// The link answers the mouse in an area that begins this far above the page's bottom.
LPARAM PointOnLink(const Window& page) {
    constexpr LONG kAboveBottom = 42;
    constexpr LONG kWithin = 3;
    RECT bounds = {};
    RECT client = {};
    RECT link = {};
    GetWindowRect(page.handle(), &bounds);
    GetClientRect(page.handle(), &client);
    GetWindowRect(page.Control(IDC_VERSION_LINK), &link);
    return MAKELPARAM(link.left - bounds.left + kWithin,
                      client.bottom - (bounds.bottom - link.bottom) - kAboveBottom + kWithin);
}

void FollowTheLink(const Script& script) {
    constexpr LPARAM kElsewhere = 0;
    const auto tell = [&](UINT message, bool is_on_link) {
        const Window page = script.Page(kVersion);
        SendMessageW(page.handle(), message, 0, is_on_link ? PointOnLink(page) : kElsewhere);
    };
    script.Step("hover", [&] { tell(WM_MOUSEMOVE, true); });
    script.Step("follow", [&] { tell(WM_LBUTTONUP, true); });
    script.Step("leave", [&] { tell(WM_MOUSEMOVE, false); });
}

constexpr wchar_t kNoViewer[] = L"Not fount LOGViewer!";
constexpr wchar_t kNoPrivileges[] = L"Please check if user has administrator privileges!";
constexpr wchar_t kNotThere[] = L"The specified file does not exist!";
constexpr wchar_t kOtherDepth[] = L"Make sure the specified bitmap is 1/8/24/ bits!";
constexpr wchar_t kNotOpened[] = L"Fail to open the selected file!";
constexpr wchar_t kNotRead[] = L"Failed to get data from the file!";

constexpr ToldFault kToldByMain[] = {
    {"log viewer", "ShellExecuteW", kNoViewer},
    {"no log viewer", "ShellExecuteW", kNoViewer},
    {"no log viewer", "VerifyVersionInfoW", kNoViewer},
};
// The chosen file is copied, or brought to 24 bits; the repaint that follows reads it and does that again,
// and looks at the copy before it loads it.
constexpr ToldFault kToldByWaterMark[] = {
    {"choose colour", "GetTempPathW", kNoPrivileges, 1},
    {"choose colour", "CreateFileW", kOtherDepth, 1},
    {"choose colour", "CreateFileW", kNoPrivileges, 2},
    {"choose colour", "CreateFileW", kNotThere, 3},
    {"choose colour", "CreateFileW", kNotThere, 4},
    {"choose colour", "CreateFileW", kNoPrivileges, 5},
    {"choose colour", "CreateFileW", kNotThere, 6},
    {"choose colour", "ReadFile", kOtherDepth, 1},
    {"choose colour", "ReadFile", kNotThere, 2},
    {"choose colour", "ReadFile", kNotThere, 3},
    {"choose colour", "ReadFile", kNotThere, 4},
    {"choose colour", "GetFileSizeEx", kNotThere},
    {"choose colour", "CopyFileW", kOtherDepth, 1},
    {"choose colour", "CopyFileW", kNotThere, 2},
    {"choose colour", "SetFileAttributesW", kOtherDepth, 1},
    {"choose colour", "SetFileAttributesW", kNotThere, 2},
    {"choose colour", "LoadImageW", kNotThere},
    {"choose grey", "CreateFileW", kNoPrivileges, 2},
    {"choose grey", "CreateFileW", kNoPrivileges, 5},
    {"choose grey", "WriteFile", kOtherDepth, 1},
    {"choose grey", "WriteFile", kNotThere, 2},
    {"choose grey", "LoadImageW", kNotThere},
};
constexpr ToldFault kToldByUtility[] = {
    {"save", "AddFormW", L"Set custom paper size failed!"},
    {"save", "SetFormW", L"Set custom paper size failed!"},
};
constexpr ToldFault kToldByControlFont[] = {{"save", "WritePrivateProfileStringW", kNoPrivileges}};
constexpr ToldFault kToldByDownload[] = {
    {"send", "CreateFileW", kNotOpened},
    {"send", "GetFileType", kNotOpened},
    {"send", "GetFileSize", L"Failed to get the size of the selected file!"},
    {"send", "malloc", L"Failed to Alloc the required memory!"},
    {"send", "SetFilePointer", L"Failed to set the file point to the head of the file!"},
    {"send", "ReadFile", kNotRead},
};
// Later calls convert and show what was added, which the user sees.
constexpr ToldFault kToldByLogos[] = {
    {"add", "CreateFileW", kNotOpened, 1},
    {"add", "GetFileType", kNotOpened, 1},
    {"add", "ReadFile", kNotRead, 1},
};
// The converted file of the first logo has its size; the second has none and is asked for its own.
constexpr ToldFault kToldByLogosAsTheyAre[] = {
    {"add", "CreateFileW", kNotOpened, 1},
    {"add", "GetFileType", kNotOpened, 1},
    {"add", "ReadFile", kNotRead, 1},
    {"download", "GetFileAttributesExW", L"Failed to get the size of logo!", 3},
};

// A text for each of the sheet's tabs; of the printer's sheet their number, and for each a text and a
// repaint.
constexpr int kRelabelled = kDocumentPageCount + 1 + 2 * kPrinterPageCount;
constexpr PlayedCall kPlayedByLanguage[] = {{"file", "MultiByteToWideChar"},
                                            {"language", "SendMessageTimeoutW", kRelabelled}};
constexpr PlayedCall kPlayedByMain[] = {{"log folder", "SHBrowseForFolderW"}, {"help", "GetCursorPos"}};
constexpr PlayedCall kPlayedByOperation[] = {{"document start", "DialogBoxParamW"},
                                             {"page start", "DialogBoxParamW"},
                                             {"page end", "PostMessageW"},
                                             {"document end", "DialogBoxParamW"}};
constexpr PlayedCall kPlayedByBarcodes[] = {{"print", "WritePrinter"}};
constexpr PlayedCall kPlayedByUtility[] = {{"self test", "WritePrinter"}, {"delete", "DeleteFormW"}};
constexpr PlayedCall kPlayedByDownload[] = {
    {"browse", "GetOpenFileNameW"}, {"send", "WritePrinter"}, {"clear", "WritePrinter"}};
constexpr PlayedCall kPlayedByLogos[] = {{"download", "WritePrinter"}, {"remove", "DeleteFileW"}};
constexpr PlayedCall kPlayedBySetUp[] = {{"halftone", "SetEndOfFile"}, {"tone", "SetEndOfFile"}};
constexpr PlayedCall kPlayedByLogosAsTheyAre[] = {{"download", "WritePrinter"}};
constexpr PlayedCall kPlayedByVersion[] = {
    {"hover", "CreateFontW"}, {"follow", "ShellExecuteW"}, {"leave", "CreateFontW"}};

constexpr Scenario kScenarios[] = {
    {"first use", std::nullopt, nullptr, {}, {}, true},
    {"load", std::nullopt, nullptr, {}, {}},
    {"document sheet", SheetKind::kDocument, VisitDocumentPages, {}, {}},
    {"document sheet applied", SheetKind::kDocument, ApplyDocumentPages, {}, {}},
    {"printer sheet", SheetKind::kPrinter, VisitPrinterPages, {}, {}},
    {"printer sheet applied", SheetKind::kPrinter, ApplyPrinterPages, {}, {}},
    {"main", SheetKind::kDocument, UseMainPage, kPlayedByMain, kToldByMain},
    {"language", SheetKind::kDocument, SwitchLanguage, kPlayedByLanguage, {}, false, VisitPrinterPages},
    {"water mark image", SheetKind::kDocument, UseWaterMarkImage, {}, kToldByWaterMark},
    {"water mark text", SheetKind::kDocument, UseWaterMarkText, {}, {}},
    {"operation", SheetKind::kDocument, UseOperations, kPlayedByOperation, {}},
    {"barcodes 1D", SheetKind::kDocument, PrintBarcodes1D, kPlayedByBarcodes, {}},
    {"barcodes 2D", SheetKind::kDocument, PrintBarcodes2D, kPlayedByBarcodes, {}},
    {"utility", SheetKind::kPrinter, UseUtilityPage, kPlayedByUtility, kToldByUtility},
    {"control font", SheetKind::kPrinter, EditTheControlFont, {}, kToldByControlFont},
    {"download", SheetKind::kPrinter, DownloadFile, kPlayedByDownload, kToldByDownload},
    {"logos", SheetKind::kPrinter, UseLogos, kPlayedByLogos, kToldByLogos},
    {"logo settings", SheetKind::kPrinter, SetUpALogo, kPlayedBySetUp, kToldByLogos},
    {"logos as they are", SheetKind::kPrinter, SendLogosAsTheyAre, kPlayedByLogosAsTheyAre,
     kToldByLogosAsTheyAre},
    {"version", SheetKind::kPrinter, FollowTheLink, kPlayedByVersion, {}},
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
    std::filesystem::remove_all(Folder(), error);
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
