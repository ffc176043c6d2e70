// The Version page: its captions, which stay those of the sheet's assembly, and the link, which answers the
// mouse in an area of its own. In the real sheet, with real mouse messages.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "operation_block.h"
#include "page_fixture.h"
#include "real_input.h"
#include "rig/import_hooks.h"

namespace pages {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr int kVersionTab = 7;
constexpr int kTemplate = 105;
constexpr int kLink = 1115;
constexpr int kRule = 1116;

struct Caption {
    int control;
    const wchar_t* key;
    const wchar_t* english;
};

constexpr Caption kCaptions[] = {
    {1109, L"RC_STATIC_VER1", L"Printer Driver"},
    {1110, L"RC_STATIC_VER2", L"Copyright (C) Kestrel"},
    {1111, L"RC_STATIC_VER3", L"All rights reserved."},
    {1112, L"RC_STATIC_VER4", L"Product information:"},
    {1113, L"RC_STATIC_VER5", L"Install version: v1.0\nUI version: v1.0"},
    {1114, L"RC_STATIC_VER6", L"Additional information:"},
    {1115, L"RC_STATIC_VER7", L"http://www.kestrel.example"},
    {1117, L"RC_STATIC_VER9",
     L"Warning: This software is protected by copyright law. Copying, changing or distributing it, in whole "
     L"or in part, without the written permission of Kestrel is prohibited and may lead to civil and "
     L"criminal "
     L"liability."},
};

using Texts = std::vector<std::wstring>;

Texts TextsOf(const Window& page) {
    Texts texts;
    for (const Caption& caption : kCaptions) {
        texts.push_back(page.Text(caption.control));
    }
    return texts;
}

Texts SourceTexts(const wchar_t* file) {
    Texts texts;
    for (const Caption& caption : kCaptions) {
        texts.push_back(SourceText(file, L"VERSION", caption.key));
    }
    return texts;
}

Texts EnglishDefaults() {
    Texts texts;
    for (const Caption& caption : kCaptions) {
        texts.emplace_back(caption.english);
    }
    return texts;
}

// The link's area on an open page, in pixels of its client area.
RECT LinkArea(const Window& page, int characters) {
    RECT page_bounds = {};
    RECT page_client = {};
    RECT link_bounds = {};
    RECT link_client = {};
    GetWindowRect(page.handle(), &page_bounds);
    GetClientRect(page.handle(), &page_client);
    GetWindowRect(page.Control(kLink), &link_bounds);
    GetClientRect(page.Control(kLink), &link_client);
    const LONG left = link_bounds.left - page_bounds.left;
    const LONG top = page_client.bottom - (page_bounds.bottom - link_bounds.bottom) - 42;
    return {left, top, left + characters * 112 / 20, top + link_client.bottom - 33};
}

constexpr int kEnglishLinkLength = 26;

// Whether a control that is given a font is told to draw itself anew, each time. One at a time.
class FontWatch {
  public:
    explicit FontWatch(HWND control) : control_(control) {
        redraws_.clear();
        original_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&FontWatch::Procedure)));
    }
    FontWatch(const FontWatch&) = delete;
    FontWatch& operator=(const FontWatch&) = delete;
    ~FontWatch() { SetWindowLongPtrW(control_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(original_)); }

    const std::vector<bool>& redraws() const { return redraws_; }

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message == WM_SETFONT) {
            redraws_.push_back(LOWORD(lparam) != 0);
        }
        return CallWindowProcW(original_, window, message, wparam, lparam);
    }

    HWND control_;
    static inline WNDPROC original_ = nullptr;
    static inline std::vector<bool> redraws_;
};

class VersionPageTest : public PageTest {
  protected:
    struct Opened {
        std::wstring verb, file;
        bool plain;  // neither parameters nor folder
        int show;
    };

    void SetUp() override {
        PageTest::SetUp();
        hooks_.On("USER32.dll", "SetCursor", &SetCursor, [this](auto original, HCURSOR cursor) {
            const std::lock_guard lock(mutex_);
            cursors_.push_back(cursor);
            return original(cursor);
        });
        hooks_.On(
            "SHELL32.dll", "ShellExecuteW", &ShellExecuteW,
            [this](auto, HWND, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder, INT show) {
                const std::lock_guard lock(mutex_);
                opened_.push_back({verb, file, parameters == nullptr && folder == nullptr, show});
                return reinterpret_cast<HINSTANCE>(INT_PTR{42});
            });
        hooks_.On("GDI32.dll", "CreateFontW", &CreateFontW, [this](auto original, auto... arguments) {
            const std::lock_guard lock(mutex_);
            ++fonts_made_;
            const HFONT font = refuse_fonts_ ? nullptr : original(arguments...);
            if (font != nullptr) {
                fonts_.push_back(font);
            }
            return font;
        });
        hooks_.On("GDI32.dll", "DeleteObject", &DeleteObject, [this](auto original, HGDIOBJ object) {
            const std::lock_guard lock(mutex_);
            if (std::erase(fonts_, object) != 0 && FontOf(link_) == object) {
                ADD_FAILURE() << "the link still uses the font";
            }
            return original(object);
        });
        hooks_.On("KERNEL32.dll", "CreateFileW", &CreateFileW,
                  [this](auto original, LPCWSTR path, auto... arguments) {
                      const std::lock_guard lock(mutex_);
                      files_read_.emplace_back(path);
                      return original(path, arguments...);
                  });
        hooks_.On("USER32.dll", "SetPropW", &SetPropW,
                  [this](auto original, HWND window, LPCWSTR name, HANDLE value) {
                      return refuse_properties_ && IsVersionPage(window) ? FALSE
                                                                         : original(window, name, value);
                  });
        StartHost();
        for (const char* function :
             {"SetCursor", "ShellExecuteW", "CreateFontW", "CreateFileW", "SetPropW"}) {
            ASSERT_GE(hooks_.Bound(function), 1) << function;
        }
    }

    static bool IsVersionPage(HWND window) { return GetDlgItem(window, kLink) != nullptr; }

    static HFONT FontOf(HWND window) {
        return reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    }
    static LOGFONTW DescriptionOf(HFONT font) {
        LOGFONTW description = {};
        EXPECT_EQ(GetObjectW(font, sizeof description, &description), static_cast<int>(sizeof description));
        return description;
    }
    static bool IsUnderlined(const Window& page) {
        return DescriptionOf(FontOf(page.Control(kLink))).lfUnderline != 0;
    }

    // The cursors set and the addresses opened since the last call.
    std::vector<HCURSOR> TakeCursors() {
        const std::lock_guard lock(mutex_);
        return std::exchange(cursors_, {});
    }
    std::vector<Opened> TakeOpened() {
        const std::lock_guard lock(mutex_);
        return std::exchange(opened_, {});
    }
    std::vector<std::wstring> TakeFilesRead() {
        const std::lock_guard lock(mutex_);
        return std::exchange(files_read_, {});
    }
    int TakeFontsMade() {
        const std::lock_guard lock(mutex_);
        return std::exchange(fonts_made_, 0);
    }
    std::size_t LiveFonts() {
        const std::lock_guard lock(mutex_);
        return fonts_.size();
    }

    void OpenPage(const std::function<void(UiDriver&, const Window& page)>& script,
                  SheetKind kind = SheetKind::kDocument) {
        // The pointer of the desktop is away from the sheet: what the page is told is the test's.
        SetCursorPos(0, 0);
        OpenSheet(
            [&](UiDriver& ui, Sheet& sheet) {
                // The last tab of either sheet.
                const Window page =
                    sheet.SelectPage(kind == SheetKind::kDocument ? kVersionTab : sheet.TabCount() - 1);
                link_ = page.Control(kLink);
                TakeCursors();
                script(ui, page);
                EXPECT_FALSE(sheet.IsApplyEnabled());
                link_ = nullptr;
                sheet.PressCancel();
            },
            kind);
    }

    static void Tell(const Window& page, UINT message, POINT point) {
        SendMessageW(page.handle(), message, 0, MAKELPARAM(point.x, point.y));
    }

    const HCURSOR hand_ = LoadCursorW(nullptr, IDC_HAND);
    const HCURSOR arrow_ = LoadCursorW(nullptr, IDC_ARROW);
    std::atomic<bool> refuse_fonts_ = false;
    std::atomic<bool> refuse_properties_ = false;

  private:
    std::mutex mutex_;
    std::vector<HCURSOR> cursors_;
    std::vector<Opened> opened_;
    std::vector<HGDIOBJ> fonts_;
    std::vector<std::wstring> files_read_;
    int fonts_made_ = 0;
    std::atomic<HWND> link_ = nullptr;
    rig::ImportHooks hooks_;
};

// Captions

TEST_F(VersionPageTest, ShowsTheTextsOfItsLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage([&](UiDriver&, const Window& page) {
            EXPECT_EQ(TextsOf(page), SourceTexts(file));
            EXPECT_EQ(page.Text(kRule), std::wstring(63, L'_'));
            EXPECT_FALSE(page.HasControl(1118));
        });
    }
}

TEST_F(VersionPageTest, ShowsItsDefaultsWithoutALanguageFile) {
    RemoveAllLanguageFiles();
    OpenPage([&](UiDriver&, const Window& page) { EXPECT_EQ(TextsOf(page), EnglishDefaults()); });
}

TEST_F(VersionPageTest, CutsATextAfter255Characters) {
    std::wstring file = L"[VERSION]\r\n";
    Texts expected;
    for (const Caption& caption : kCaptions) {
        const std::wstring text = caption.key + std::wstring(300, L'x');
        file += std::wstring(caption.key) + L"=" + text + L"\r\n";
        expected.push_back(text.substr(0, 255));
    }
    WriteUserFile(kEnglish, file);
    OpenPage([&](UiDriver&, const Window& page) { EXPECT_EQ(TextsOf(page), expected); });
}

// What a repaint brings back are the texts of the assembly, even when another language has been chosen; the
// file that the other pages' texts come from is then the new one, and is read at once.
TEST_F(VersionPageTest, KeepsTheTextsOfTheAssembly) {
    OpenSheet([&](UiDriver& ui, Sheet& sheet) {
        const Window operation = OperationPage(sheet);
        const Window page = sheet.SelectPage(kVersionTab);
        Repaint(page);
        const auto expect_read = [&](const wchar_t* file, const std::wstring& title) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            for (const Caption& caption : kCaptions) {
                page.Send(caption.control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"?"));
            }
            TakeFilesRead();
            Repaint(page);
            Repaint(page);
            EXPECT_EQ(TextsOf(page), SourceTexts(kEnglish));
            EXPECT_FALSE(GetUpdateRect(page.handle(), nullptr, FALSE)) << "painted";
            EXPECT_THAT(TakeFilesRead(), ElementsAre((rig::UserFolder() / file).wstring()));
            // The page behind is not painted meanwhile, and its dialog finds the file read.
            PostMessageW(operation.Control(MomentButton(kPageEnd)), BM_CLICK, 0, 0);
            const Window dialog = ui.WaitForDialog();
            EXPECT_EQ(dialog.Title(), title);
            CloseDialog(dialog, IDCANCEL, page);
            EXPECT_THAT(TakeFilesRead(), IsEmpty());
        };
        for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese}) {
            ChooseLanguage(file);
            expect_read(file, SourceText(file, L"DOCUMENT", L"RC_DOCUMENT_ENDPAGE"));
        }
        WriteUserFile(kEnglish, L"[DOCUMENT]\r\nRC_DOCUMENT_ENDPAGE=From the file\r\n");
        rig::RemoveLanguageKey();
        expect_read(kEnglish, L"From the file");
        ChooseLanguage(kTraditionalChinese);
        Repaint(page);
        rig::RemoveLanguageKey();
        rig::CreateLanguageKey();
        expect_read(kEnglish, L"From the file");
        sheet.PressCancel();
    });
}

// The link

TEST_F(VersionPageTest, FindsTheLinkToThePixel) {
    OpenPage([&](UiDriver&, const Window& page) {
        const RECT area = LinkArea(page, kEnglishLinkLength);
        EXPECT_EQ(area.right - area.left, 145);
        ASSERT_GT(area.bottom - area.top, 4);
        struct Point {
            POINT at;
            bool inside;
        };
        const LONG x = (area.left + area.right) / 2;
        const LONG y = (area.top + area.bottom) / 2;
        const Point points[] = {
            {{x, y}, true},
            {{area.left, y}, true},
            {{area.left - 1, y}, false},
            {{area.right - 1, y}, true},
            {{area.right, y}, false},
            {{x, area.top}, true},
            {{x, area.top - 1}, false},
            {{x, area.bottom - 1}, true},
            {{x, area.bottom}, false},
            {{area.left, area.top}, true},
            {{area.right, area.bottom}, false},
            {{-1, y}, false},
            {{x, -1}, false},
        };
        bool was_inside = false;
        for (const Point& point : points) {
            SCOPED_TRACE(std::to_string(point.at.x) + ", " + std::to_string(point.at.y));
            Tell(page, WM_MOUSEMOVE, point.at);
            EXPECT_EQ(IsUnderlined(page), point.inside);
            if (point.inside) {
                EXPECT_THAT(TakeCursors(), ElementsAre(hand_));
            } else if (was_inside) {
                EXPECT_THAT(TakeCursors(), ElementsAre(arrow_));
            } else {
                EXPECT_THAT(TakeCursors(), IsEmpty());
            }
            EXPECT_EQ(TakeFontsMade(), point.inside == was_inside ? 0 : 1);
            was_inside = point.inside;
            Tell(page, WM_LBUTTONUP, point.at);
            EXPECT_THAT(TakeCursors(), ElementsAre(point.inside ? hand_ : arrow_));
            EXPECT_EQ(TakeOpened().size(), point.inside ? 1u : 0u);
        }
    });
}

// 5.6 pixels a character whatever the font; the fraction goes.
TEST_F(VersionPageTest, IsAsWideAsItsTextIsLong) {
    struct Width {
        std::size_t characters;
        LONG pixels;
    };
    for (const Width& width : {Width{0, 0}, Width{1, 5}, Width{27, 151}, Width{50, 280}, Width{255, 1428}}) {
        SCOPED_TRACE(width.characters);
        const std::wstring link(width.characters, L'i');
        WriteUserFile(kEnglish, L"[VERSION]\r\nRC_STATIC_VER7=" + link + L"\r\n");
        OpenPage([&](UiDriver&, const Window& page) {
            const RECT area = LinkArea(page, 0);
            const LONG y = (area.top + area.bottom) / 2;
            const LONG right = area.left + width.pixels;
            Tell(page, WM_MOUSEMOVE, {right, y});
            EXPECT_FALSE(IsUnderlined(page));
            Tell(page, WM_LBUTTONUP, {right, y});
            EXPECT_THAT(TakeOpened(), IsEmpty());
            Tell(page, WM_MOUSEMOVE, {right - 1, y});
            EXPECT_EQ(IsUnderlined(page), width.characters != 0);
            Tell(page, WM_LBUTTONUP, {right - 1, y});
            const std::vector<Opened> opened = TakeOpened();
            ASSERT_EQ(opened.size(), width.characters != 0 ? 1u : 0u);
            if (!opened.empty()) {
                EXPECT_EQ(opened[0].file, link);
            }
        });
    }
}

TEST_F(VersionPageTest, AnswersEveryMouseMessageThatIsNoClick) {
    OpenPage([&](UiDriver&, const Window& page) {
        const RECT area = LinkArea(page, kEnglishLinkLength);
        const POINT inside = {area.left + 3, area.top + 3};
        const POINT outside = {area.left + 3, area.bottom + 3};
        for (const UINT message :
             std::initializer_list<UINT>{WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN,
                                         WM_RBUTTONUP, WM_RBUTTONDBLCLK}) {
            SCOPED_TRACE(message);
            for (int i = 0; i < 3; ++i) {
                Tell(page, message, inside);
                EXPECT_TRUE(IsUnderlined(page));
            }
            EXPECT_THAT(TakeCursors(), ElementsAre(hand_, hand_, hand_));
            EXPECT_EQ(TakeFontsMade(), 1) << "underlined once";
            for (int i = 0; i < 3; ++i) {
                Tell(page, message, outside);
                EXPECT_FALSE(IsUnderlined(page));
            }
            EXPECT_THAT(TakeCursors(), ElementsAre(arrow_));
            EXPECT_EQ(TakeFontsMade(), 1) << "plain once";
        }
        // None but these.
        for (const UINT message :
             std::initializer_list<UINT>{WM_MBUTTONDOWN, WM_MBUTTONUP, WM_XBUTTONUP, WM_MOUSEHOVER}) {
            Tell(page, message, inside);
            EXPECT_FALSE(IsUnderlined(page));
        }
        EXPECT_THAT(TakeCursors(), IsEmpty());
        EXPECT_THAT(TakeOpened(), IsEmpty());
    });
}

TEST_F(VersionPageTest, ShowsTheLinkInFontsOfItsOwn) {
    OpenPage([&](UiDriver&, const Window& page) {
        const FontWatch watch(page.Control(kLink));
        const RECT area = LinkArea(page, kEnglishLinkLength);
        const auto expect_font = [&](BYTE underlined) {
            const LOGFONTW font = DescriptionOf(FontOf(page.Control(kLink)));
            EXPECT_EQ(font.lfHeight, 13);
            EXPECT_EQ(font.lfWidth, 0);
            EXPECT_EQ(font.lfEscapement, 0);
            EXPECT_EQ(font.lfOrientation, 0);
            EXPECT_EQ(font.lfWeight, 400);
            EXPECT_EQ(font.lfItalic, 0);
            EXPECT_EQ(font.lfUnderline, underlined);
            EXPECT_EQ(font.lfStrikeOut, 0);
            EXPECT_EQ(font.lfCharSet, DEFAULT_CHARSET);
            EXPECT_EQ(font.lfPitchAndFamily & 0xF0, FF_SWISS);
            EXPECT_STREQ(font.lfFaceName, L"MS Shell Dlg");
        };
        const HFONT before = FontOf(page.Control(kLink));
        Tell(page, WM_MOUSEMOVE, {area.left, area.bottom});
        EXPECT_EQ(FontOf(page.Control(kLink)), before) << "never hovered";
        Tell(page, WM_MOUSEMOVE, {area.left, area.top});
        expect_font(TRUE);
        Tell(page, WM_MOUSEMOVE, {area.left, area.bottom});
        expect_font(FALSE);
        EXPECT_THAT(watch.redraws(), ElementsAre(true, true)) << "to be drawn anew with each font";
        // No other control.
        for (const Caption& caption : kCaptions) {
            EXPECT_EQ(FontOf(page.Control(caption.control)) == before, caption.control != kLink)
                << caption.control;
        }
    });
}

TEST_F(VersionPageTest, OpensTheAddressOfTheAssembly) {
    WriteUserFile(kEnglish, L"[VERSION]\r\nRC_STATIC_VER7=http://first.example\r\n");
    OpenPage([&](UiDriver&, const Window& page) {
        WriteUserFile(kEnglish, L"[VERSION]\r\nRC_STATIC_VER7=http://second.example/of/another/length\r\n");
        Repaint(page);
        const RECT area = LinkArea(page, 20);
        const LONG y = area.top + 1;
        Tell(page, WM_LBUTTONDOWN, {area.right - 1, y});
        EXPECT_THAT(TakeOpened(), IsEmpty()) << "on the button's release";
        Tell(page, WM_LBUTTONUP, {area.right, y});
        EXPECT_THAT(TakeOpened(), IsEmpty());
        Tell(page, WM_LBUTTONUP, {area.right - 1, y});
        const std::vector<Opened> opened = TakeOpened();
        ASSERT_EQ(opened.size(), 1u);
        EXPECT_EQ(opened[0].verb, L"open");
        EXPECT_EQ(opened[0].file, L"http://first.example");
        EXPECT_TRUE(opened[0].plain);
        EXPECT_EQ(opened[0].show, SW_SHOW);
    });
}

// The pointer is over the static text, which lets the mouse through to the page.
TEST_F(VersionPageTest, AnswersTheRealPointer) {
    OpenPage([&](UiDriver& ui, const Window& page) {
        const RECT area = LinkArea(page, kEnglishLinkLength);
        const auto move = [&](LONG x, LONG y, bool underlined) {
            POINT point = {x, y};
            ClientToScreen(page.handle(), &point);
            int moves = 0;
            ui.WaitUntil(
                [&] {
                    MovePointer({point.x + moves++ % 2, point.y});
                    Settle(page);
                    return IsUnderlined(page) == underlined;
                },
                underlined ? "the underline" : "the underline to go");
        };
        move((area.left + area.right) / 2, (area.top + area.bottom) / 2, true);
        EXPECT_EQ(TakeCursors().back(), hand_);
        INPUT button = {};
        button.type = INPUT_MOUSE;
        for (const DWORD flag : std::initializer_list<DWORD>{MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP}) {
            button.mi.dwFlags = flag;
            ASSERT_EQ(SendInput(1, &button, sizeof button), 1u);
        }
        std::vector<Opened> opened;
        ui.WaitUntil(
            [&] {
                opened = TakeOpened();
                return !opened.empty();
            },
            "the address to open");
        EXPECT_EQ(opened[0].file, L"http://www.kestrel.example");
        move((area.left + area.right) / 2, area.bottom + 12, false);
        EXPECT_EQ(TakeCursors().back(), arrow_);
    });
}

// On the printer side

// The same page there: the texts of its sheet's assembly, and a link of its own.
TEST_F(VersionPageTest, IsTheSameInThePrinterSheet) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        const Bytes record = Record();
        OpenPage(
            [&](UiDriver&, const Window& page) {
                EXPECT_EQ(TextsOf(page), SourceTexts(file));
                ChooseLanguage(kEnglish);
                for (const Caption& caption : kCaptions) {
                    page.Send(caption.control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"?"));
                }
                Repaint(page);
                EXPECT_EQ(TextsOf(page), SourceTexts(file)) << "as when the sheet was assembled";
                const std::wstring link = SourceText(file, L"VERSION", L"RC_STATIC_VER7");
                const RECT area = LinkArea(page, static_cast<int>(link.size()));
                EXPECT_FALSE(IsUnderlined(page));
                Tell(page, WM_MOUSEMOVE, {area.left, area.top});
                EXPECT_TRUE(IsUnderlined(page));
                Tell(page, WM_LBUTTONUP, {area.right - 1, area.top});
                Tell(page, WM_LBUTTONUP, {area.right, area.top});
                const std::vector<Opened> opened = TakeOpened();
                ASSERT_EQ(opened.size(), 1u);
                EXPECT_EQ(opened[0].file, link);
                Tell(page, WM_MOUSEMOVE, {area.left, area.bottom});
                EXPECT_FALSE(IsUnderlined(page));
            },
            SheetKind::kPrinter);
        EXPECT_EQ(LiveFonts(), 0u);
        EXPECT_EQ(Differences(record, Record()), "");
    }
}

// Fonts

TEST_F(VersionPageTest, KeepsOneFontAtATimeAndNoneAfterwards) {
    for (const bool ends_underlined : {true, false}) {
        OpenPage([&](UiDriver&, const Window& page) {
            EXPECT_EQ(LiveFonts(), 0u);
            const RECT area = LinkArea(page, kEnglishLinkLength);
            for (int i = 0; i < 50; ++i) {
                Tell(page, WM_MOUSEMOVE, {area.left, area.top});
                EXPECT_EQ(LiveFonts(), 1u);
                Tell(page, WM_MOUSEMOVE, {area.left, area.bottom});
                EXPECT_EQ(LiveFonts(), 1u);
            }
            EXPECT_EQ(TakeFontsMade(), 100);
            if (ends_underlined) {
                Tell(page, WM_MOUSEMOVE, {area.left, area.top});
                EXPECT_EQ(TakeFontsMade(), 1);
            }
        });
        EXPECT_EQ(LiveFonts(), 0u);
    }
    // A page starts without the underline, and the first move over the link brings it.
    for (int opening = 0; opening < 5; ++opening) {
        OpenPage([&](UiDriver&, const Window& page) {
            EXPECT_FALSE(IsUnderlined(page));
            const RECT area = LinkArea(page, kEnglishLinkLength);
            Tell(page, WM_MOUSEMOVE, {area.left, area.top});
            EXPECT_TRUE(IsUnderlined(page));
        });
        EXPECT_EQ(LiveFonts(), 0u);
    }
}

TEST_F(VersionPageTest, DoesWithoutAFontOrAPropertyWhenTheSystemRefuses) {
    OpenPage([&](UiDriver&, const Window& page) {
        const RECT area = LinkArea(page, kEnglishLinkLength);
        const HFONT before = FontOf(page.Control(kLink));
        refuse_fonts_ = true;
        Tell(page, WM_MOUSEMOVE, {area.left, area.top});
        EXPECT_EQ(FontOf(page.Control(kLink)), before);
        EXPECT_THAT(TakeCursors(), ElementsAre(hand_));
        Tell(page, WM_LBUTTONUP, {area.left, area.top});
        EXPECT_EQ(TakeOpened().size(), 1u);
        refuse_fonts_ = false;
        refuse_properties_ = true;
        Tell(page, WM_MOUSEMOVE, {area.left, area.top});
        EXPECT_EQ(LiveFonts(), 0u) << "nobody would free it";
        EXPECT_EQ(FontOf(page.Control(kLink)), before);
        refuse_properties_ = false;
        Tell(page, WM_MOUSEMOVE, {area.left, area.top});
        EXPECT_TRUE(IsUnderlined(page));
        refuse_properties_ = true;
        Tell(page, WM_MOUSEMOVE, {area.left, area.bottom});
        EXPECT_FALSE(IsUnderlined(page));
        EXPECT_EQ(LiveFonts(), 0u);
        refuse_properties_ = false;
    });
    EXPECT_EQ(LiveFonts(), 0u);
}

// The page's procedure, on a window that is no sheet's

class VersionProcedureTest : public PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
        ASSERT_EQ(Host().plugin().DocumentPropertySheets(&sheet_.info, 0), S_OK);
        page_ = sheet_.PageOf(kTemplate).page;
        procedure_ = At<DLGPROC>(page_, 40);
        ASSERT_NE(procedure_, nullptr);
        struct {
            DLGTEMPLATE dialog;
            WORD menu, kind, title;
        } bare = {{WS_POPUP, 0, 0, 0, 0, 50, 50}, 0, 0, 0};
        window_ = CreateDialogIndirectParamW(
            GetModuleHandleW(nullptr), &bare.dialog, nullptr,
            [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
        ASSERT_NE(window_, nullptr);
    }

    void TearDown() override {
        DestroyWindow(window_);
        PageTest::TearDown();
    }

    INT_PTR Notify(UINT code) {
        NMHDR notification = {};
        notification.code = code;
        return procedure_(window_, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    }

    FakeSheet sheet_;
    Bytes page_;
    DLGPROC procedure_ = nullptr;
    HWND window_ = nullptr;
};

TEST_F(VersionProcedureTest, AnswersMessages) {
    EXPECT_EQ(procedure_(window_, WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(page_.data())), FALSE);
    sheet_.calls.clear();
    for (const UINT code : {PSN_APPLY, PSN_KILLACTIVE, PSN_SETACTIVE}) {
        SetWindowLongPtrW(window_, DWLP_MSGRESULT, 99);
        EXPECT_EQ(Notify(code), TRUE) << code;
        EXPECT_EQ(GetWindowLongPtrW(window_, DWLP_MSGRESULT), 0) << code;
    }
    for (const UINT code : {PSN_RESET, PSN_HELP, PSN_QUERYCANCEL, NM_CLICK, UINT{0}}) {
        EXPECT_EQ(Notify(code), FALSE) << code;
    }
    EXPECT_EQ(procedure_(window_, WM_NOTIFY, 0, 0), FALSE);
    EXPECT_THAT(sheet_.calls, IsEmpty()) << "the page has nothing to report";

    for (const int control : {0, 1, 1109, kLink}) {
        EXPECT_EQ(procedure_(window_, WM_COMMAND, MAKEWPARAM(control, 0), 0), TRUE) << control;
        EXPECT_EQ(procedure_(window_, WM_COMMAND, MAKEWPARAM(control, 1), 0), FALSE) << control;
        EXPECT_EQ(procedure_(window_, WM_COMMAND, MAKEWPARAM(control, 0x8000), 0), FALSE) << control;
    }
    for (const UINT message :
         std::initializer_list<UINT>{WM_PAINT, WM_MOUSEMOVE, WM_LBUTTONUP, WM_SIZE, WM_SETFONT}) {
        EXPECT_EQ(procedure_(window_, message, 0, 0), FALSE) << message;
    }
}

// The printer side's page has nothing to report either.
TEST_F(VersionProcedureTest, AnswersThePrinterSheet) {
    FakeSheet sheet;
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_PRNPROP), S_OK);
    ASSERT_EQ(Host().plugin().DevicePropertySheets(&sheet.info, 0), S_OK);
    page_ = sheet.PageOf(kTemplate).page;
    procedure_ = At<DLGPROC>(page_, 40);
    EXPECT_EQ(procedure_(window_, WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(page_.data())), FALSE);
    sheet.calls.clear();
    for (const UINT code : {PSN_APPLY, PSN_KILLACTIVE, PSN_SETACTIVE}) {
        SetWindowLongPtrW(window_, DWLP_MSGRESULT, 99);
        EXPECT_EQ(Notify(code), TRUE) << code;
        EXPECT_EQ(GetWindowLongPtrW(window_, DWLP_MSGRESULT), 0) << code;
    }
    EXPECT_EQ(Notify(static_cast<UINT>(PSN_RESET)), FALSE);
    EXPECT_THAT(sheet.calls, IsEmpty());
}

// Made as a sheet makes it, and not painted yet.
TEST_F(VersionProcedureTest, ShowsItsCaptionsBeforeItIsPainted) {
    ChooseLanguage(kTraditionalChinese);
    FakeSheet sheet;
    ASSERT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
    Bytes bytes = sheet.PageOf(kTemplate).page;
    const auto& description = *reinterpret_cast<const PROPSHEETPAGEW*>(bytes.data());
    const HWND page = CreateDialogParamW(description.hInstance, description.pszTemplate, window_,
                                         description.pfnDlgProc, reinterpret_cast<LPARAM>(bytes.data()));
    ASSERT_NE(page, nullptr);
    EXPECT_FALSE(IsWindowVisible(page)) << "what is not seen is not painted";
    const UiDriver driver(GetCurrentThreadId());
    EXPECT_EQ(TextsOf({driver, page}), SourceTexts(kTraditionalChinese));
    DestroyWindow(page);
}

// The template's size, title and font.
TEST_F(VersionProcedureTest, HasItsPlaceInTheSheet) {
    const HMODULE module = Host().module();
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(kTemplate), RT_DIALOG);
    ASSERT_NE(resource, nullptr);
    const auto* const bytes = static_cast<const std::uint8_t*>(LockResource(LoadResource(module, resource)));
    const Bytes dialog(bytes, bytes + SizeofResource(module, resource));
    EXPECT_EQ(At<WORD>(dialog, 0), 1) << "an extended template";
    EXPECT_EQ(At<WORD>(dialog, 2), 0xFFFF);
    EXPECT_EQ(At<short>(dialog, 22), 281);
    EXPECT_EQ(At<short>(dialog, 24), 194);
    EXPECT_EQ(At<WORD>(dialog, 26), 0) << "no menu";
    EXPECT_EQ(At<WORD>(dialog, 28), 0) << "no class of its own";
    // With their terminators; in between the font's size, weight and kind.
    constexpr wchar_t kTitle[] = L"Version";
    constexpr wchar_t kFace[] = L"MS Shell Dlg";
    ASSERT_GE(dialog.size(), 30 + sizeof kTitle + 6 + sizeof kFace);
    EXPECT_EQ(std::memcmp(dialog.data() + 30, kTitle, sizeof kTitle), 0);
    EXPECT_EQ(At<WORD>(dialog, 30 + sizeof kTitle), 8) << "points";
    EXPECT_EQ(std::memcmp(dialog.data() + 30 + sizeof kTitle + 6, kFace, sizeof kFace), 0);
}

TEST_F(VersionProcedureTest, IgnoresMessagesWithoutItsParameter) {
    for (const UINT message : std::initializer_list<UINT>{WM_COMMAND, WM_PAINT, WM_MOUSEMOVE, WM_LBUTTONUP}) {
        rig::TraceCapture trace;
        EXPECT_EQ(procedure_(window_, message, 0, 0), FALSE);
        EXPECT_THAT(trace.TakeOwn(),
                    ElementsAre(L"ERROR UI:  DeviceVersionPropPageProc : GetWindowLongPtr Failed (0)\r\n"));
    }
    rig::TraceCapture trace;
    EXPECT_EQ(Notify(PSN_APPLY), FALSE);
    EXPECT_THAT(trace.TakeOwn(), Not(IsEmpty()));
    EXPECT_EQ(procedure_(window_, WM_INITDIALOG, 0, 0), FALSE);
    EXPECT_EQ(Notify(PSN_APPLY), FALSE);
}

}  // namespace
}  // namespace pages
