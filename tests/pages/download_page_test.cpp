// The Download page: what it says, all of it, and which file its upper group offers, takes and sends. In the
// real sheet with a virtual printer, and made alone where it is to be asked directly or to go at a bad
// moment.
#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <set>
#include <span>
#include <string_view>

#include "help_reader.h"
#include "lone_printer_page.h"
#include "open_file_hook.h"
#include "printer_fixture.h"
#include "real_input.h"

namespace pages {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Path = std::filesystem::path;
using Texts = std::vector<std::wstring>;
using Log = std::vector<std::string>;

constexpr int kTemplate = 113;
constexpr int kGroup = 1163;
constexpr int kNote = 1146;
constexpr int kPath = 1039;
constexpr int kBrowse = 1040;
constexpr int kSend = 1036;
constexpr int kLogos = 1041;

struct Caption {
    int control;
    const wchar_t* key;
    const wchar_t* english;  // null: what the English file says
    std::size_t length;      // in units, with the terminator
};

constexpr Caption kCaptions[] = {
    {kGroup, L"RC_STATIC_FWDOWNLOAD", L"File Download", 20},
    {kNote, L"RC_STATIC_DOWN_INFO",
     L"You can select various files to download to the printer, such as firmware files,font files", 256},
    {kBrowse, L"RC_BROWSE_FIREWARE", L"Browse", 20},
    {kSend, L"RC_DOWNLOAD_FIREWARE", L"Download", 20},
    {1164, L"RC_STATIC_LOGODOWNLOAD", L"Logo Download", 20},
    {1165, L"RC_STATIC_PREVIEW", L"Preview", 20},
    {1087, L"RC_ORIGINAL", L"Original", 20},
    {1061, L"RC_MONO", L"Transformation", 20},
    {1088, L"RC_GRAY", L"Gray", 20},
    {1166, L"RC_STATIC_HALFTONE", L"HalfTone", 20},
    {1089, L"RC_NONE", L"None", 20},
    {1090, L"RC_DITHERM3", L"Dither M3", 20},
    {1091, L"RC_DITHERM4", L"Dither M4", 20},
    {1092, L"RC_DIFFUSE", L"Error Diffuse", 20},
    {1167, L"RC_STATIC_CONANDBRIGHT", L"Contrast and Brightness", 50},
    {1147, L"RC_STATIC_CONTRA", L"Contrast:", 20},
    {1148, L"RC_STATIC_BRIGHT", L"Brightness:", 20},
    {1042, L"RC_LOGO_ADD", L"Add", 20},
    {1043, L"RC_LOGO_DELETE", L"Delete", 20},
    {1044, L"RC_LOGO_DOWNLOAD", L"Download all", 20},
    {1045, L"RC_LOGO_CLEARALLLOGOS", L"Clear All Logos", 20},
    {1149, L"RC_STATIC_DOWNOWNLOAD_NOTICE", L"Notice: Select the type of the logos before downloading.", 256},
};

// Of the list of logos; the control is the column's number.
constexpr Caption kColumns[] = {
    {0, L"RC_LOGOID", L"ID", 20}, {1, L"RC_LOGONAME", L"Name", 20}, {2, L"RC_LOGOPATH", L"Path", 20}};

constexpr Caption kHelps[] = {
    {kPath, L"CTEXT_EDIT_FIREWARE", L"Select the path of file that needs to be downloaded to printer.", 1024},
    {kBrowse, L"CTEXT_BROWSE_FIREWARE", L"Select the path of file that needs to be downloaded to printer.",
     1024},
    {kSend, L"CTEXT_DOWNLOAD_FIREWARE", L"Download the selected file to printer.", 1024},
    {1042, L"CTEXT_LOGO_ADD", L"Add one Logo to the list.", 1024},
    {1043, L"CTEXT_LOGO_DELETE", L"Delete one Logo from the list.", 1024},
    {1045, L"CTEXT_LOGO_CLEARALLLOGOS", L"Clear all the Logos in printer.", 1024},
    {1041, L"CTEXT_LIST_LOGO", nullptr, 1024},
    {1087, L"CTEXT_ORIGINAL", nullptr, 1024},
    {1061, L"CTEXT_MONO", nullptr, 1024},
    {1088, L"CTEXT_GRAY", nullptr, 1024},
    {1089, L"CTEXT_NONE", nullptr, 1024},
    {1090, L"CTEXT_DITHERM3", nullptr, 1024},
    {1091, L"CTEXT_DITHERM4", nullptr, 1024},
    {1092, L"CTEXT_DIFFUSE", nullptr, 1024},
    {1095, L"CTEXT_SLIDER_CONTRAST", nullptr, 1024},
    {1083, L"CTEXT_SLIDER_BRIGHTNESS", nullptr, 1024},
    {1044, L"CTEXT_LOGO_DOWNLOAD", nullptr, 1024},
};

constexpr const wchar_t* kLanguages[] = {kEnglish, kSimplifiedChinese, kTraditionalChinese};

std::wstring EnglishOf(const Caption& caption) {
    return caption.english != nullptr ? caption.english : SourceText(kEnglish, L"DOWNLOAD", caption.key);
}

std::wstring TitleOf(const Window& page, int column) {
    wchar_t text[1024] = {};
    LVCOLUMNW description = {};
    description.mask = LVCF_TEXT;
    description.pszText = text;
    description.cchTextMax = static_cast<int>(std::size(text));
    page.Send(kLogos, LVM_GETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&description));
    return text;
}

// Of the controls, then of the list's columns.
Texts CaptionsOf(const Window& page) {
    Texts texts;
    for (const Caption& caption : kCaptions) {
        texts.push_back(page.Text(caption.control));
    }
    for (const Caption& column : kColumns) {
        texts.push_back(TitleOf(page, column.control));
    }
    return texts;
}

// `textOf` each caption, in the same order.
template <typename TextOf>
Texts CaptionTexts(const TextOf& textOf) {
    Texts texts;
    std::transform(std::begin(kCaptions), std::end(kCaptions), std::back_inserter(texts), textOf);
    std::transform(std::begin(kColumns), std::end(kColumns), std::back_inserter(texts), textOf);
    return texts;
}

Texts SourceCaptions(const wchar_t* file) {
    return CaptionTexts(
        [file](const Caption& caption) { return SourceText(file, L"DOWNLOAD", caption.key); });
}

Texts DefaultCaptions() {
    return CaptionTexts(&EnglishOf);
}

// Also of a control that is switched off, which no pointer reaches.
std::wstring HelpWithPointerOver(const Window& page, int control) {
    const HWND window = page.Control(control);
    const POINT centre = CentreOf(window);
    SetCursorPos(centre.x, centre.y);
    SendMessageW(window, WM_MOUSEMOVE, 0, 0);
    return HelpTextOf(window);
}

// A call that a file is read with.
enum class FileCall { kNone, kSize, kPosition, kRead, kShortRead };

class DownloadPageTest : public PrinterPageTest {
  protected:
    void SetUp() override {
        PrinterPageTest::SetUp();
        std::filesystem::remove_all(folder_);
        ASSERT_TRUE(std::filesystem::create_directories(folder_));
        HookFiles();
        HookMemory();
        PrinterHost();
        for (const char* function : {"MessageBoxW", "CreateFileW", "CloseHandle", "GetFileSize", "ReadFile",
                                     "SetFilePointer", "malloc", "free"}) {
            ASSERT_GE(hooks_.Bound(function), 1) << function;
        }
        record_ = Record();
    }

    void TearDown() override {
        EXPECT_EQ(Differences(record_, Record()), "");
        PrinterPageTest::TearDown();
        EXPECT_THAT(open_, IsEmpty());
        EXPECT_THAT(large_blocks_, IsEmpty());
        std::filesystem::remove_all(folder_);
    }

    Path WriteFile(const std::wstring& name, const Bytes& bytes) const {
        rig::WriteBytes(folder_ / name, bytes);
        return folder_ / name;
    }

    void OpenPage(const std::function<void(UiDriver&, Sheet&, const Window& page)>& script) {
        OpenPrinterSheet([&](UiDriver& ui, Sheet& sheet) {
            script(ui, sheet, SelectPage(sheet, kDownloadTab));
            if (sheet.IsOpen()) {
                sheet.PressCancel();
            }
        });
    }

    Bytes Description() { return PrinterPageDescription(Host(), kTemplate); }

    static void SetPath(const Window& page, const std::wstring& path) {
        page.Send(kPath, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    }

    // The printer's calls since the last look.
    Log TakeLog() {
        const Log all = printer().Log();
        const Log news(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end());
        seen_ = all.size();
        return news;
    }

    static Log JobLog(int number, const std::string& written) {
        return {
            "StartDocPrinterW(printer, 1, \"FIRMWARE\", output none, \"RAW\") -> " + std::to_string(number),
            "StartPagePrinter(printer) -> TRUE", "WritePrinter(printer, " + written,
            "EndPagePrinter(printer) -> TRUE", "EndDocPrinter(printer) -> TRUE"};
    }

    // One file, typed and sent: what the printer then has.
    void ExpectSent(const Window& page, const Path& path, const Bytes& bytes) {
        const std::size_t before = printer().Jobs().size();
        SetPath(page, path);
        page.Click(kSend);
        const std::vector<PrintJob> jobs = printer().Jobs();
        ASSERT_EQ(jobs.size(), before + 1);
        EXPECT_EQ(jobs.back().document, L"FIRMWARE");
        EXPECT_TRUE(jobs.back().printed);
        EXPECT_TRUE(jobs.back().bytes == bytes);
        EXPECT_THAT(boxes_, IsEmpty());
        EXPECT_THAT(open_, IsEmpty());
        EXPECT_THAT(large_blocks_, IsEmpty());
        EXPECT_EQ(page.Text(kPath), path.wstring());
    }

    // The text of a message of this number, and nothing sent.
    void ExpectRefused(const Window& page, const std::wstring& path, int number, const wchar_t* english) {
        SCOPED_TRACE(testing::PrintToString(path));
        boxes_.clear();
        TakeLog();
        SetPath(page, path);
        page.Click(kSend);
        const std::wstring key = L"MB_DOWNLOAD_ERROR" + std::to_wstring(number);
        ASSERT_EQ(boxes_.size(), 1u);
        EXPECT_EQ(boxes_[0].owner, page.handle());
        EXPECT_EQ(boxes_[0].title, SourceText(language_, L"MessageBox", L"MB_ERROR"));
        EXPECT_EQ(boxes_[0].text, SourceText(language_, L"MessageBox", key.c_str()));
        if (std::wstring_view(language_) == kEnglish) {
            EXPECT_EQ(boxes_[0].title, L"Error");
            EXPECT_EQ(boxes_[0].text, english);
        }
        EXPECT_EQ(boxes_[0].type, UINT{MB_OK}) << "no icon";
        EXPECT_THAT(TakeLog(), IsEmpty());
        EXPECT_EQ(page.Text(kPath), path) << "to be tried again";
        EXPECT_TRUE(page.IsEnabled(kSend));
        boxes_.clear();
    }

    // The user's language, and what the messages are compared with.
    void Speak(const wchar_t* file) {
        language_ = file;
        ChooseLanguage(file);
    }

    // A file that the chooser is answered with.
    void Choose(const std::wstring& path) {
        choose_ = [path](OPENFILENAMEW& dialog) -> BOOL {
            EXPECT_GT(dialog.nMaxFile, path.size());
            path.copy(dialog.lpstrFile, path.size());
            dialog.lpstrFile[path.size()] = L'\0';
            return TRUE;
        };
    }

    const Path folder_ = std::filesystem::temp_directory_path() / "kvmr72-download";
    const wchar_t* language_ = kEnglish;
    std::atomic<FileCall> failing_ = FileCall::kNone;
    // Blocks larger than this are refused.
    std::atomic<std::size_t> memory_ = static_cast<std::size_t>(-1);
    OpenFileHook open_file_{hooks_};
    std::vector<Chooser>& choosers_ = open_file_.choosers;
    std::function<BOOL(OPENFILENAMEW&)>& choose_ = open_file_.choose;
    std::set<HANDLE> open_;           // files of the test's folder that the plug-in has open
    std::set<void*> large_blocks_;    // of a megabyte and more that the plug-in has
    std::size_t peak_of_blocks_ = 0;  // how many at a time

  private:
    void HookFiles() {
        hooks_.On("KERNEL32.dll", "CreateFileW", &CreateFileW,
                  [this](auto original, LPCWSTR path, auto... arguments) {
                      const HANDLE file = original(path, arguments...);
                      if (file != INVALID_HANDLE_VALUE &&
                          std::wstring_view(path).find(folder_.wstring()) != std::wstring_view::npos) {
                          open_.insert(file);
                      }
                      return file;
                  });
        hooks_.On("KERNEL32.dll", "CloseHandle", &CloseHandle, [this](auto original, HANDLE handle) {
            open_.erase(handle);
            return original(handle);
        });
        hooks_.On("KERNEL32.dll", "GetFileSize", &GetFileSize,
                  [this](auto original, HANDLE file, LPDWORD high) {
                      if (failing_ == FileCall::kSize) {
                          SetLastError(ERROR_INVALID_FUNCTION);
                          return INVALID_FILE_SIZE;
                      }
                      return original(file, high);
                  });
        hooks_.On("KERNEL32.dll", "SetFilePointer", &SetFilePointer,
                  [this](auto original, HANDLE file, LONG low, PLONG high, DWORD method) {
                      if (failing_ == FileCall::kPosition) {
                          SetLastError(ERROR_SEEK);
                          return INVALID_SET_FILE_POINTER;
                      }
                      return original(file, low, high, method);
                  });
        hooks_.On("KERNEL32.dll", "ReadFile", &ReadFile,
                  [this](auto original, HANDLE file, LPVOID buffer, DWORD size, LPDWORD count,
                         LPOVERLAPPED overlapped) -> WINBOOL {
                      if (!open_.contains(file)) {
                          return original(file, buffer, size, count, overlapped);
                      }
                      if (failing_ == FileCall::kRead) {
                          SetLastError(ERROR_CRC);
                          return FALSE;
                      }
                      return original(file, buffer, size - (failing_ == FileCall::kShortRead ? 1 : 0), count,
                                      overlapped);
                  });
    }

    void HookMemory() {
        hooks_.On("msvcrt.dll", "malloc", static_cast<void*(WINAPI*)(std::size_t)>(&std::malloc),
                  [this](auto original, std::size_t size) -> void* {
                      void* const block = size > memory_ ? nullptr : original(size);
                      if (block != nullptr && size >= kLarge) {
                          large_blocks_.insert(block);
                          peak_of_blocks_ = std::max(peak_of_blocks_, large_blocks_.size());
                      }
                      return block;
                  });
        hooks_.On("msvcrt.dll", "free", static_cast<void(WINAPI*)(void*)>(&std::free),
                  [this](auto original, void* block) {
                      if (!large_blocks_.empty()) {
                          large_blocks_.erase(block);
                      }
                      original(block);
                  });
    }

    static constexpr std::size_t kLarge = std::size_t{1} << 20;

    Bytes record_;
    std::size_t seen_ = 0;
};

// Texts

TEST_F(DownloadPageTest, ShowsItsTextsInEveryLanguage) {
    for (const wchar_t* file : kLanguages) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
            EXPECT_EQ(sheet.TabTitles().at(3), SourceText(file, L"DOWNLOAD", L"RC_DOWNLOADFORM"));
            EXPECT_EQ(CaptionsOf(page), SourceCaptions(file));
            EXPECT_EQ(page.Text(kPath), L"");
        });
    }
}

TEST_F(DownloadPageTest, ShowsEnglishWithoutAnyFile) {
    RemoveAllLanguageFiles();
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(3), L"Download");
        EXPECT_EQ(CaptionsOf(page), DefaultCaptions());
        for (const Caption& help : kHelps) {
            EXPECT_EQ(HelpWithPointerOver(page, help.control), EnglishOf(help));
        }
    });
}

TEST_F(DownloadPageTest, CutsLongTexts) {
    std::wstring file = L"[DOWNLOAD]\r\n";
    for (const auto& table : {std::span<const Caption>(kCaptions), std::span<const Caption>(kColumns),
                              std::span<const Caption>(kHelps)}) {
        for (const Caption& caption : table) {
            file += caption.key + (L"=" + std::wstring(caption.key)) + std::wstring(1200, L'x') + L"\r\n";
        }
    }
    file += L"RC_DOWNLOADFORM=abcdefghijklmnopqrstuvwxyz\r\n";
    WriteUserFile(kEnglish, file);
    const auto cut = [](const Caption& caption) {
        return (caption.key + std::wstring(1200, L'x')).substr(0, caption.length - 1);
    };
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(3), L"abcdefghijklmnopqrs");
        EXPECT_EQ(CaptionsOf(page), CaptionTexts(cut));
        for (const Caption& help : kHelps) {
            EXPECT_EQ(HelpWithPointerOver(page, help.control), cut(help));
        }
    });
}

TEST_F(DownloadPageTest, FollowsTheLanguageWhileItIsOpen) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        SetPath(page, L"C:\\till.jk");
        const POINT over_send = CentreOf(page.Control(kSend));
        ExpectHelp(ui, page, kSend, over_send, EnglishOf(kHelps[2]));
        for (const wchar_t* file : {kTraditionalChinese, kSimplifiedChinese}) {
            ChooseLanguage(file);
            Repaint(page);
            EXPECT_EQ(CaptionsOf(page), SourceCaptions(file));
            ExpectHelp(ui, page, kSend, over_send, SourceText(file, L"DOWNLOAD", kHelps[2].key));
        }
        WriteUserFile(kSimplifiedChinese, L"[DOWNLOAD]\r\nRC_BROWSE_FIREWARE=Find\r\n");
        Repaint(page);
        EXPECT_EQ(CaptionsOf(page), CaptionTexts([](const Caption& caption) {
                      return caption.control == kBrowse ? L"Find" : EnglishOf(caption);
                  }));
        EXPECT_EQ(page.Text(kPath), L"C:\\till.jk");
        EXPECT_FALSE(sheet.IsApplyEnabled());
    });
}

TEST_F(DownloadPageTest, EveryControlHasHelp) {
    OpenPage([&](UiDriver& ui, Sheet&, const Window& page) {
        for (const Caption& help : kHelps) {
            EXPECT_EQ(SourceText(kEnglish, L"DOWNLOAD", help.key), EnglishOf(help));
            EnableWindow(page.Control(help.control), TRUE);
            ExpectHelp(ui, page, help.control, CentreOf(page.Control(help.control)), EnglishOf(help));
        }
        EXPECT_EQ(HelpedBeside(page.Control(kPath)), std::size(kHelps));
    });
}

// The texts come with the sheet, not with the first paint.
TEST_F(DownloadPageTest, KnowsItsTextsBeforeItIsPainted) {
    ChooseLanguage(kTraditionalChinese);
    LonePrinterPage lone(Description(), printer().handle());
    ShowWindow(lone.sheet.handle, SW_HIDE);
    lone.Make();
    EXPECT_EQ(CaptionsOf(lone.Page()), SourceCaptions(kTraditionalChinese));
    for (const Caption& help : kHelps) {
        EXPECT_EQ(HelpWithPointerOver(lone.Page(), help.control),
                  SourceText(kTraditionalChinese, L"DOWNLOAD", help.key));
    }
}

// Places

TEST_F(DownloadPageTest, HasItsPlaceInTheSheet) {
    ExpectTemplate(Host().module(), kTemplate, 297, 224, L"Download");
}

TEST_F(DownloadPageTest, HasTheseControls) {
    constexpr DWORD kButton = WS_TABSTOP | BS_PUSHBUTTON;
    constexpr DWORD kButtonMask = WS_TABSTOP | BS_TYPEMASK | WS_DISABLED;
    constexpr DWORD kRadio = BS_AUTORADIOBUTTON | WS_DISABLED;
    constexpr DWORD kFirstRadio = kRadio | WS_GROUP;
    constexpr DWORD kRadioMask = BS_TYPEMASK | WS_DISABLED | WS_GROUP;
    constexpr DWORD kSlider = WS_TABSTOP | WS_DISABLED | TBS_HORZ | TBS_NOTICKS;
    constexpr DWORD kSliderMask = WS_TABSTOP | WS_DISABLED | TBS_VERT | TBS_NOTICKS;
    const struct {
        int control;
        const wchar_t* kind;
        DWORD style, mask;
    } controls[] = {
        {kGroup, WC_BUTTONW, BS_GROUPBOX, BS_TYPEMASK},
        {kNote, WC_STATICW, SS_LEFT | SS_NOPREFIX, SS_TYPEMASK | SS_NOPREFIX},
        {kPath, WC_EDITW, WS_TABSTOP | ES_AUTOHSCROLL,
         WS_TABSTOP | ES_AUTOHSCROLL | ES_READONLY | ES_MULTILINE},
        {kBrowse, WC_BUTTONW, WS_TABSTOP | BS_PUSHBUTTON, WS_TABSTOP | BS_TYPEMASK | WS_DISABLED},
        {kSend, WC_BUTTONW, WS_TABSTOP | BS_PUSHBUTTON | WS_DISABLED, WS_TABSTOP | BS_TYPEMASK | WS_DISABLED},
        {1164, WC_BUTTONW, WS_GROUP | BS_GROUPBOX, WS_GROUP | BS_TYPEMASK},
        {kLogos, WC_LISTVIEWW, WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS,
         WS_TABSTOP | LVS_TYPEMASK | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_EDITLABELS | WS_DISABLED},
        {1165, WC_BUTTONW, BS_GROUPBOX, BS_TYPEMASK},
        {1046, WC_STATICW, SS_OWNERDRAW, SS_TYPEMASK},
        {1042, WC_BUTTONW, kButton, kButtonMask},
        {1043, WC_BUTTONW, kButton, kButtonMask},
        {1044, WC_BUTTONW, kButton, kButtonMask},
        {1045, WC_BUTTONW, kButton, kButtonMask},
        {1087, WC_BUTTONW, kFirstRadio, kRadioMask},
        {1061, WC_BUTTONW, kRadio, kRadioMask},
        {1088, WC_BUTTONW, kRadio, kRadioMask},
        {1166, WC_BUTTONW, WS_GROUP | BS_GROUPBOX, WS_GROUP | BS_TYPEMASK},
        {1089, WC_BUTTONW, kFirstRadio, kRadioMask},
        {1090, WC_BUTTONW, kRadio, kRadioMask},
        {1091, WC_BUTTONW, kRadio, kRadioMask},
        {1092, WC_BUTTONW, kRadio, kRadioMask},
        {1167, WC_BUTTONW, WS_GROUP | BS_GROUPBOX, WS_GROUP | BS_TYPEMASK},
        {1147, WC_STATICW, SS_LEFT, SS_TYPEMASK},
        {1095, TRACKBAR_CLASSW, kSlider, kSliderMask},
        {1096, WC_STATICW, SS_RIGHT, SS_TYPEMASK},
        {1148, WC_STATICW, SS_LEFT, SS_TYPEMASK},
        {1083, TRACKBAR_CLASSW, kSlider, kSliderMask},
        {1086, WC_STATICW, SS_RIGHT, SS_TYPEMASK},
        {1149, WC_STATICW, SS_LEFT | SS_NOPREFIX, SS_TYPEMASK | SS_NOPREFIX},
    };
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    HWND child = GetWindow(lone.handle(), GW_CHILD);
    for (const auto& [control, kind, style, mask] : controls) {
        SCOPED_TRACE(control);
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(GetDlgCtrlID(child), control);
        wchar_t name[32] = {};
        GetClassNameW(child, name, 31);
        EXPECT_EQ(lstrcmpiW(name, kind), 0);
        EXPECT_EQ(static_cast<DWORD>(GetWindowLongPtrW(child, GWL_STYLE)) & mask, style);
        EXPECT_TRUE(IsWindowVisible(child));
        child = GetWindow(child, GW_HWNDNEXT);
    }
    EXPECT_EQ(child, nullptr);
}

TEST_F(DownloadPageTest, TabGoesFromTheTopToTheBottom) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        SetPath(page, L"x");
        SetForegroundWindow(sheet.handle());
        ui.WaitUntil([&] { return GetForegroundWindow() == sheet.handle(); }, "the sheet in front");
        page.Focus(kPath);
        WaitForFocus(ui, page, kPath);
        // Of the lower group what is not greyed while it has no logos.
        for (const int control : {kBrowse, kSend, kLogos, 1042, 1043, 1044, 1045}) {
            PressKey(VK_TAB);
            WaitForFocus(ui, page, control);
        }
        PressKey(VK_TAB);
        ui.WaitUntil([&] { return !IsChild(page.handle(), FocusOf(page)); }, "the focus to leave the page");
    });
}

// The path

TEST_F(DownloadPageTest, OnlyAPathCanBeSent) {
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_FALSE(page.IsEnabled(kSend));
        page.TypeText(kPath, L"x");
        EXPECT_TRUE(page.IsEnabled(kSend));
        page.TypeText(kPath, L"");
        EXPECT_FALSE(page.IsEnabled(kSend));
        EXPECT_FALSE(sheet.IsApplyEnabled()) << "the sheet has nothing to apply";
    });
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(page.Text(kPath), L"") << "nothing was stored";
        EXPECT_FALSE(page.IsEnabled(kSend));
    });
}

TEST_F(DownloadPageTest, AnEmptyPathDoesNothing) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    TakeLog();
    EXPECT_EQ(lone.Use(kSend), TRUE);
    EXPECT_THAT(TakeLog(), IsEmpty());
    EXPECT_THAT(boxes_, IsEmpty());
}

// Browse

std::wstring Filter(std::initializer_list<const wchar_t*> texts) {
    std::wstring filter;
    for (const wchar_t* text : texts) {
        filter.append(text).push_back(L'\0');
    }
    return filter;
}

TEST_F(DownloadPageTest, OffersFilesInItsLanguage) {
    const std::wstring filters[] = {
        Filter({L"*.JK(Firmware)", L"*.JK", L"*.DAT(Data)", L"*.DAT", L"*.FNT(Font)", L"*.FNT", L"*.ZK(Font)",
                L"*.ZK", L"*.EEP(EEPROM)", L"*.EEP"}),
        Filter({L"*.JK(监控程序文件)", L"*.JK", L"*.DAT(监控程序文件)", L"*.DAT", L"*.FNT(字库文件)",
                L"*.FNT", L"*.ZK(字库文件)", L"*.ZK", L"*.EEP(EEPROM文件)", L"*.EEP"}),
        Filter({L"*.JK(監控程式文件)", L"*.JK", L"*.DAT(監控程式文件)", L"*.DAT", L"*.FNT(字庫文件)",
                L"*.FNT", L"*.ZK(字庫文件)", L"*.ZK", L"*.EEP(EEPROM文件)", L"*.EEP"})};
    choose_ = [](OPENFILENAMEW&) { return FALSE; };
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        // The language changes while the page is open.
        for (std::size_t i = 0; i < std::size(kLanguages); ++i) {
            ChooseLanguage(kLanguages[i]);
            Repaint(page);
            choosers_.clear();
            page.Click(kBrowse);
            ASSERT_EQ(choosers_.size(), 1u);
            EXPECT_EQ(choosers_[0].owner, page.handle());
            EXPECT_EQ(choosers_[0].title, SourceText(kLanguages[i], L"DOWNLOAD", L"RC_BROWSEBOX"));
            EXPECT_EQ(choosers_[0].filter, filters[i]);
            EXPECT_EQ(choosers_[0].start, L"");
            constexpr DWORD kExpected = OFN_FILEMUSTEXIST | OFN_NOCHANGEDIR;
            EXPECT_EQ(choosers_[0].flags & (kExpected | OFN_ALLOWMULTISELECT), kExpected);
        }
        EXPECT_EQ(page.Text(kPath), L"") << "cancelled";
        EXPECT_FALSE(page.IsEnabled(kSend));
    });
    RemoveAllLanguageFiles();
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        choosers_.clear();
        page.Click(kBrowse);
        ASSERT_EQ(choosers_.size(), 1u);
        EXPECT_EQ(choosers_[0].title, L"Open");
    });
}

TEST_F(DownloadPageTest, TakesTheChosenPath) {
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const std::wstring& path : {std::wstring(L"C:\\till \u4E2D\u6587.jk"),
                                         L"C:\\" + std::wstring(1021, L'x'), std::wstring(L"x")}) {
            Choose(path);
            page.Click(kBrowse);
            EXPECT_EQ(page.Text(kPath), path);
            EXPECT_TRUE(page.IsEnabled(kSend));
        }
        // Not by mouse and key, nothing is sent yet.
        choose_ = [](OPENFILENAMEW& dialog) {
            dialog.lpstrFile[0] = L'y';
            return FALSE;
        };
        page.Click(kBrowse);
        EXPECT_EQ(page.Text(kPath), L"x");
        EXPECT_TRUE(page.IsEnabled(kSend));
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_THAT(printer().Jobs(), IsEmpty());
    });
}

// A path that is cut may be another file's.
TEST_F(DownloadPageTest, TakesNoMoreOfAPathThanItReads) {
    constexpr LRESULT kReadLength = 1024;
    for (const wchar_t* language : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        Speak(language);
        OpenPage([&](UiDriver&, Sheet&, const Window& page) {
            EXPECT_EQ(page.Send(kPath, EM_GETLIMITTEXT), kReadLength);
            page.TypeText(kPath, L"kept");
            for (const std::size_t length : {std::size_t{1025}, std::size_t{32000}}) {
                boxes_.clear();
                Choose(std::wstring(length, L'x'));
                page.Click(kBrowse);
                ASSERT_EQ(boxes_.size(), 1u);
                EXPECT_EQ(boxes_[0].owner, page.handle());
                EXPECT_EQ(boxes_[0].title, SourceText(language, L"MessageBox", L"MB_ERROR"));
                EXPECT_EQ(boxes_[0].text, SourceText(language, L"MessageBox", L"MB_PATH_ERROR1"));
                EXPECT_EQ(boxes_[0].type, UINT{MB_OK});
                EXPECT_EQ(page.Text(kPath), L"kept");
                EXPECT_TRUE(page.IsEnabled(kSend));
            }
        });
    }
}

// The system's own dialog. The current folder stays the program's.
TEST_F(DownloadPageTest, OpensTheSystemsDialog) {
    const Bytes content = {0x00, 0xFF, 0x1B};
    const Path file = WriteFile(L"till 1.jk", content);
    const Path folder = std::filesystem::current_path();
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        page.ChooseFile(kBrowse, file);
        Settle(page);
        EXPECT_EQ(page.Text(kPath), file.wstring());
        EXPECT_EQ(std::filesystem::current_path(), folder);
        page.Click(kSend);
        EXPECT_EQ(printer().Jobs().at(0).bytes, content);
    });
    EXPECT_EQ(std::filesystem::current_path(), folder);
}

TEST_F(DownloadPageTest, StaysUsableWithoutTheSystemsDialog) {
    hooks_.On("KERNEL32.dll", "LoadLibraryW", &LoadLibraryW, [](auto original, LPCWSTR name) -> HMODULE {
        return lstrcmpiW(name, L"comdlg32.dll") == 0 ? nullptr : original(name);
    });
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    EXPECT_EQ(lone.Use(kBrowse), TRUE);
    EXPECT_THAT(choosers_, IsEmpty());
    EXPECT_EQ(lone.Page().Text(kPath), L"");
    SetPath(lone.Page(), WriteFile(L"till.jk", {7}));
    lone.Use(kSend);
    EXPECT_EQ(printer().Jobs().size(), 1u);
}

// Sending

TEST_F(DownloadPageTest, SendsAFileAsOneWrite) {
    Bytes every_byte(256);
    for (std::size_t i = 0; i < every_byte.size(); ++i) {
        every_byte[i] = static_cast<std::uint8_t>(i);
    }
    const Path small = WriteFile(L"till.jk", {0x1B, 0x63, 0x3B, 0x01, 0x00, 0x0D, 0x0A, 0x1A});
    const Path all = WriteFile(L"all \u4E2D.dat", every_byte);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeLog();
        ExpectSent(page, small, {0x1B, 0x63, 0x3B, 0x01, 0x00, 0x0D, 0x0A, 0x1A});
        EXPECT_EQ(TakeLog(), JobLog(1, "8 bytes: 1B 63 3B 01 00 0D 0A 1A) -> TRUE, 8 written"));
        ExpectSent(page, all, every_byte);
        TakeLog();
        // Twice the same: the file is not kept.
        ExpectSent(page, WriteFile(L"till.jk", {0x42}), {0x42});
        EXPECT_EQ(TakeLog(), JobLog(3, "1 bytes: 42) -> TRUE, 1 written"));
    });
}

TEST_F(DownloadPageTest, SendsAnEmptyFileAsAWriteOfNoBytes) {
    const Path file = WriteFile(L"empty.jk", {});
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeLog();
        ExpectSent(page, file, {});
        EXPECT_EQ(TakeLog(), JobLog(1, "0 bytes:) -> TRUE, 0 written"));
    });
}

TEST_F(DownloadPageTest, SendsALargeFileWholeAndHoldsItOnce) {
    Bytes content(std::size_t{64} << 20);
    std::uint32_t value = 7;
    for (std::uint8_t& byte : content) {
        value = value * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(value >> 24);
    }
    const Path file = WriteFile(L"large.fnt", content);
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        TakeLog();
        peak_of_blocks_ = 0;
        ExpectSent(page, file, content);
        EXPECT_EQ(peak_of_blocks_, 1u);
        const Log log = TakeLog();
        ASSERT_EQ(log.size(), 5u);
        EXPECT_TRUE(log[2].starts_with("WritePrinter(printer, 67108864 bytes:")) << log[2];
    });
}

// Nobody else has the file while it is read, and it is closed before the printer gets it.
TEST_F(DownloadPageTest, ClosesTheFileBeforeItIsSent) {
    const Path file = WriteFile(L"till.jk", {1, 2, 3});
    int calls = 0;
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        printer().before_call = [&](const char*) {
            ++calls;
            EXPECT_THAT(open_, IsEmpty());
            rig::WriteBytes(file, Bytes{9});
        };
        ExpectSent(page, file, {1, 2, 3});
        printer().before_call = nullptr;
    });
    EXPECT_EQ(calls, 5);
}

// A failing job ends silently, and can be tried again.
TEST_F(DownloadPageTest, EndsAJobSilentlyWhenACallFails) {
    const Path file = WriteFile(L"till.jk", Bytes(std::size_t{2} << 20, 0x55));
    // The calls that are still made when one of them fails.
    const std::vector<std::vector<const char*>> calls = {
        {"StartDocPrinterW"},
        {"StartDocPrinterW", "StartPagePrinter", "EndDocPrinter"},
        {"StartDocPrinterW", "StartPagePrinter", "WritePrinter", "EndPagePrinter", "EndDocPrinter"},
        {"StartDocPrinterW", "StartPagePrinter", "WritePrinter", "EndPagePrinter", "EndDocPrinter"},
        {"StartDocPrinterW", "StartPagePrinter", "WritePrinter", "EndPagePrinter", "EndDocPrinter"},
    };
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        SetPath(page, file);
        for (std::size_t failing = 0; failing < calls.size(); ++failing) {
            SCOPED_TRACE(failing);
            TakeLog();
            printer().FailCall(static_cast<int>(failing) + 1, ERROR_ACCESS_DENIED);
            page.Click(kSend);
            Log made;
            for (const std::string& line : TakeLog()) {
                if (line.find('(') != std::string::npos) {
                    made.push_back(line.substr(0, line.find('(')));
                }
            }
            EXPECT_THAT(made, ElementsAreArray(calls[failing]));
            EXPECT_THAT(boxes_, IsEmpty());
            EXPECT_THAT(open_, IsEmpty());
            EXPECT_THAT(large_blocks_, IsEmpty());
            EXPECT_EQ(page.Text(kPath), file.wstring());
            EXPECT_TRUE(page.IsEnabled(kSend));
        }
        ExpectSent(page, file, Bytes(std::size_t{2} << 20, 0x55));
    });
}

TEST_F(DownloadPageTest, SendsNothingWithoutAPrinter) {
    const Path file = WriteFile(L"till.jk", {1});
    const Bytes description = Description();
    for (const HANDLE handle : {HANDLE{nullptr}, INVALID_HANDLE_VALUE, reinterpret_cast<HANDLE>(0x7777)}) {
        LonePrinterPage lone(description, handle);
        lone.Make();
        SetPath(lone.Page(), file);
        TakeLog();
        EXPECT_EQ(lone.Use(kSend), TRUE);
        EXPECT_EQ(TakeLog().size(), 1u) << "refused by the first call";
        lone.LoseCommonParameters();
        EXPECT_EQ(lone.Use(kSend), TRUE);
    }
    EXPECT_THAT(printer().Jobs(), IsEmpty());
    EXPECT_THAT(boxes_, IsEmpty());
}

// Files that cannot be sent

TEST_F(DownloadPageTest, TellsWhyAFileIsNotSent) {
    const Path file = WriteFile(L"till.jk", Bytes(std::size_t{3} << 20, 0x55));
    on_box_ = [&] {
        EXPECT_THAT(open_, IsEmpty()) << "the file is closed while the message is open";
        EXPECT_THAT(large_blocks_, IsEmpty());
    };
    for (const wchar_t* language : kLanguages) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(language)));
        Speak(language);
        OpenPage([&](UiDriver&, Sheet&, const Window& page) {
            ExpectRefused(page, folder_ / L"missing.jk", 1, L"Fail to open the selected file!");
            ExpectRefused(page, folder_, 1, L"Fail to open the selected file!");
            const HANDLE locked =
                CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
            ASSERT_NE(locked, INVALID_HANDLE_VALUE);
            ExpectRefused(page, file, 1, L"Fail to open the selected file!");
            CloseHandle(locked);
            failing_ = FileCall::kSize;
            ExpectRefused(page, file, 8, L"Failed to get the size of the selected file!");
            failing_ = FileCall::kPosition;
            ExpectRefused(page, file, 10, L"Failed to set the file point to the head of the file!");
            failing_ = FileCall::kRead;
            ExpectRefused(page, file, 2, L"Failed to get data from the file!");
            failing_ = FileCall::kShortRead;
            ExpectRefused(page, file, 2, L"Failed to get data from the file!");
            failing_ = FileCall::kNone;
            memory_ = std::size_t{2} << 20;
            ExpectRefused(page, file, 9, L"Failed to Alloc the required memory!");
            memory_ = static_cast<std::size_t>(-1);
            ExpectSent(page, file, Bytes(std::size_t{3} << 20, 0x55));
        });
    }
}

TEST_F(DownloadPageTest, ShowsItsMessageInARealBox) {
    shows_boxes_ = true;
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        SetPath(page, folder_ / L"missing.jk");
        const MessageBoxInfo box = page.OpenMessageBox(kSend);
        EXPECT_EQ(box.title, L"Error");
        EXPECT_EQ(box.text, L"Fail to open the selected file!");
        EXPECT_THAT(box.buttons, ElementsAre(IDOK));
        EXPECT_FALSE(IsWindowEnabled(GetParent(page.handle()))) << "modal to the sheet";
        box.Press(IDOK);
        Settle(page);
    });
}

// What is read of the path ends at 1024 characters.
TEST_F(DownloadPageTest, ReadsSoMuchOfALongPath) {
    std::wstring path = folder_.wstring();
    const std::wstring name = L"\\till.jk";
    while (path.size() + name.size() < 1024) {
        path += L'\\';
    }
    path.resize(1024 - name.size());
    path += name;
    WriteFile(L"till.jk", {5});
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        ExpectSent(page, path, {5});
        ExpectRefused(page, path.substr(0, 1024 - name.size()) + L"\\" + name, 1,
                      L"Fail to open the selected file!");
        ExpectRefused(page, std::wstring(30000, L'x'), 1, L"Fail to open the selected file!");
    });
}

// Its procedure

TEST_F(DownloadPageTest, ReportsToSheetAndHost) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    lone.ExpectAnswersToTheSheet();
}

TEST_F(DownloadPageTest, IgnoresMessagesWithoutItsParameter) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.ExpectNothingWithoutParameter(L"DevicePropPageProc");
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_THAT(choosers_, IsEmpty());
}

TEST_F(DownloadPageTest, ActsOnItsOwnNotificationsOnly) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    choose_ = [](OPENFILENAMEW&) { return FALSE; };
    SetPath(lone.Page(), folder_ / L"missing.jk");
    for (const int notification : {BN_SETFOCUS, BN_KILLFOCUS, BN_DBLCLK, 0x300, 0x100}) {
        for (const int control : {kSend, kBrowse}) {
            EXPECT_EQ(lone.Use(control, notification), TRUE);
        }
    }
    for (const int control : {IDOK, IDCANCEL, kGroup, kNote, 0, kLogos, 1046, 1095, 1149}) {
        EXPECT_EQ(lone.Use(control), FALSE) << control;
    }
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_THAT(choosers_, IsEmpty());
}

// Whatever a program sends it.
TEST_F(DownloadPageTest, TakesAnyMessage) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    for (UINT message = 0; message < 0x10000; message += message < 0x800 ? 1 : 0x1F) {
        if (message != WM_INITDIALOG && message != WM_NCDESTROY) {
            lone.Ask(lone.handle(), message);
        }
    }
    SetPath(lone.Page(), WriteFile(L"till.jk", {1}));
    lone.Use(kSend);
    EXPECT_EQ(printer().Jobs().size(), 1u);
}

TEST_F(DownloadPageTest, MayBeInitialisedTwice) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    SetPath(lone.Page(), WriteFile(L"till.jk", {1}));
    EXPECT_EQ(lone.Ask(lone.handle(), WM_INITDIALOG, 0, lone.Description()), FALSE);
    EXPECT_EQ(CaptionsOf(lone.Page()), DefaultCaptions());
    lone.Use(kSend);
    EXPECT_EQ(printer().Jobs().size(), 1u);
}

// A host may close its sheet under an open dialog or message.
TEST_F(DownloadPageTest, MayGoWhileItsDialogOrMessageIsOpen) {
    const Bytes description = Description();
    LonePrinterPage choosing(description, printer().handle());
    choosing.Make();
    choose_ = [&](OPENFILENAMEW& dialog) {
        choosing.Unmake();
        dialog.lpstrFile[0] = L'x';
        return TRUE;
    };
    SendDlgItemMessageW(choosing.handle(), kBrowse, BM_CLICK, 0, 0);
    EXPECT_EQ(choosers_.size(), 1u);

    LonePrinterPage telling(description, printer().handle());
    telling.Make();
    on_box_ = [&] { telling.Unmake(); };
    SetPath(telling.Page(), folder_ / L"missing.jk");
    SendDlgItemMessageW(telling.handle(), kSend, BM_CLICK, 0, 0);
    EXPECT_EQ(boxes_.size(), 1u);

    LonePrinterPage sending(description, printer().handle());
    sending.Make();
    SetPath(sending.Page(), WriteFile(L"till.jk", {1, 2}));
    printer().before_call = [&](const char*) { sending.Unmake(); };
    SendDlgItemMessageW(sending.handle(), kSend, BM_CLICK, 0, 0);
    printer().before_call = nullptr;
    EXPECT_EQ(printer().Jobs().at(0).bytes, (Bytes{1, 2}));
}

TEST_F(DownloadPageTest, TwoSheetsKeepToTheirOwn) {
    const HANDLE other = printer().NewPrinter({.name = L"Kitchen"});
    const Bytes description = Description();
    LonePrinterPage one(description, printer().handle());
    LonePrinterPage two(description, other);
    one.Make();
    two.Make();
    SetPath(one.Page(), WriteFile(L"one.jk", {1}));
    SetPath(two.Page(), WriteFile(L"two.jk", {2}));
    TakeLog();
    one.Use(kSend);
    two.Use(kSend);
    const Log log = TakeLog();
    ASSERT_EQ(log.size(), 10u);
    EXPECT_EQ(log[2], "WritePrinter(printer, 1 bytes: 01) -> TRUE, 1 written");
    EXPECT_EQ(log[7], "WritePrinter(printer 2, 1 bytes: 02) -> TRUE, 1 written");
}

}  // namespace
}  // namespace pages
