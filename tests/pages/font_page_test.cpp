// The Font page: a tree of the printer's fonts that only shows, and the list behind it that never does.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "lone_printer_page.h"
#include "printer_fixture.h"
#include "real_input.h"

namespace pages {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kTemplate = 119;
constexpr int kTree = 1069;
constexpr int kList = 1068;
constexpr int kNotice = 1150;

constexpr wchar_t kEnglishNotice[] = L"Select this font size in the application. ";
constexpr wchar_t kEnglishTitle[] = L"Printer Fonts and Font Sizes";

struct Branch {
    int level;
    std::wstring text;
    int image, selected_image;
    bool is_expanded;
    bool operator==(const Branch&) const = default;
};
void PrintTo(const Branch& branch, std::ostream* out) {
    *out << branch.level << " " << testing::PrintToString(branch.text) << " " << branch.image << "/"
         << branch.selected_image << (branch.is_expanded ? " expanded" : "");
}

Branch Root(const std::wstring& title) {
    return {0, title, 0, 0, true};
}
Branch Group(const wchar_t* text) {
    return {1, text, 1, 1, true};
}
Branch Leaf(const wchar_t* text) {
    return {2, text, 2, 2, false};
}

std::vector<Branch> WholeTree(const std::wstring& title) {
    return {Root(title),
            Group(L"Font A"),
            Leaf(L"FontA11    9.5"),
            Leaf(L"FontA12    19.0"),
            Leaf(L"FontA21    9.5"),
            Leaf(L"FontA22   19.0"),
            Leaf(L"FontA24   38.5"),
            Leaf(L"FontA42   19.0"),
            Leaf(L"FontA44   38.5"),
            Group(L"Font B"),
            Leaf(L"FontB11    7.0"),
            Leaf(L"FontB12    13.5"),
            Leaf(L"FontB21    7.0"),
            Leaf(L"FontB22   13.5"),
            Leaf(L"FontB24   27.0"),
            Leaf(L"FontB42   13.5"),
            Leaf(L"FontB44   27.0"),
            Group(L"Control Font"),
            Leaf(L"Control    1.0")};
}

using Row = std::vector<std::wstring>;
const std::vector<Row> kRows = {{L"FontA11", L"9.5"},  {L"FontA12", L"19.0"}, {L"FontA21", L"9.5"},
                                {L"FontA22", L"19.0"}, {L"FontA24", L"38.0"}, {L"FontA42", L"19.0"},
                                {L"FontA44", L"38.0"}, {L"FontB11", L"7.0"},  {L"FontB12", L"13.5"},
                                {L"FontB21", L"7.0"},  {L"FontB22", L"13.5"}, {L"FontB24", L"27.0"},
                                {L"FontB42", L"13.5"}, {L"FontB44", L"27.0"}, {L"Control", L"1.0"}};

HTREEITEM Next(const Window& page, WPARAM relation, HTREEITEM item = nullptr) {
    return reinterpret_cast<HTREEITEM>(
        page.Send(kTree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

void AddBranches(const Window& page, HTREEITEM first, int level, std::vector<Branch>& branches) {
    for (HTREEITEM item = first; item != nullptr; item = Next(page, TVGN_NEXT, item)) {
        wchar_t text[256] = {};
        TVITEMW asked = {};
        asked.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_STATE | TVIF_HANDLE;
        asked.hItem = item;
        asked.stateMask = TVIS_EXPANDED;
        asked.pszText = text;
        asked.cchTextMax = static_cast<int>(std::size(text));
        EXPECT_TRUE(page.Send(kTree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked)));
        branches.push_back(
            {level, text, asked.iImage, asked.iSelectedImage, (asked.state & TVIS_EXPANDED) != 0});
        AddBranches(page, Next(page, TVGN_CHILD, item), level + 1, branches);
    }
}

std::vector<Branch> TreeOf(const Window& page) {
    std::vector<Branch> branches;
    AddBranches(page, Next(page, TVGN_ROOT), 0, branches);
    return branches;
}

std::vector<Row> RowsOf(const Window& page) {
    std::vector<Row> rows;
    const LRESULT count = page.Send(kList, LVM_GETITEMCOUNT);
    for (LRESULT row = 0; row < count; ++row) {
        rows.emplace_back();
        for (const int column : {0, 1}) {
            wchar_t text[64] = {};
            LVITEMW asked = {};
            asked.iSubItem = column;
            asked.pszText = text;
            asked.cchTextMax = static_cast<int>(std::size(text));
            page.Send(kList, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&asked));
            rows.back().emplace_back(text);
        }
    }
    return rows;
}

Row ColumnsOf(const Window& page) {
    Row titles;
    for (WPARAM column = 0;; ++column) {
        wchar_t text[64] = {};
        LVCOLUMNW asked = {};
        asked.mask = LVCF_TEXT;
        asked.pszText = text;
        asked.cchTextMax = static_cast<int>(std::size(text));
        if (page.Send(kList, LVM_GETCOLUMNW, column, reinterpret_cast<LPARAM>(&asked)) == 0) {
            return titles;
        }
        titles.emplace_back(text);
    }
}

class FontPageTest : public PrinterPageTest {
  protected:
    void SetUp() override {
        PrinterPageTest::SetUp();
        hooks_.On("USER32.dll", "LoadImageW", &LoadImageW,
                  [this](auto original, HINSTANCE module, LPCWSTR name, UINT type, int width, int height,
                         UINT flags) {
                      const HANDLE image = original(module, name, type, width, height, flags);
                      if (type == IMAGE_ICON) {
                          loaded_.push_back(static_cast<int>(reinterpret_cast<INT_PTR>(name)));
                          icons_.insert(image);
                      }
                      return image;
                  });
        hooks_.On("USER32.dll", "DestroyIcon", &DestroyIcon, [this](auto original, HICON icon) {
            icons_.erase(icon);
            return original(icon);
        });
        hooks_.On(
            "USER32.dll", "SendDlgItemMessageW", &SendDlgItemMessageW,
            [this](auto original, HWND dialog, int control, UINT message, WPARAM wparam, LPARAM lparam) {
                if (control == kTree && message == TVM_SELECTITEM) {
                    selections_.emplace_back(wparam, reinterpret_cast<HTREEITEM>(lparam));
                }
                return original(dialog, control, message, wparam, lparam);
            });
        hooks_.On("comctl32.dll", "ImageList_Create", &ImageList_Create,
                  [this](auto original, auto... arguments) {
                      const HIMAGELIST list = refuses_lists_ ? nullptr : original(arguments...);
                      if (list != nullptr) {
                          lists_.insert(list);
                      }
                      return list;
                  });
        hooks_.On("comctl32.dll", "ImageList_Destroy", &ImageList_Destroy,
                  [this](auto original, HIMAGELIST list) {
                      lists_.erase(list);
                      return original(list);
                  });
        PrinterHost();
        for (const char* function : {"LoadImageW", "DestroyIcon", "ImageList_Create", "ImageList_Destroy"}) {
            ASSERT_GE(hooks_.Bound(function), 1) << function;
        }
        record_ = Record();
    }

    void TearDown() override {
        EXPECT_EQ(Differences(record_, Record()), "");
        EXPECT_THAT(printer().Jobs(), IsEmpty());
        EXPECT_THAT(boxes_, IsEmpty());
        PrinterPageTest::TearDown();
        EXPECT_THAT(lists_, IsEmpty()) << "of images";
        EXPECT_THAT(icons_, IsEmpty());
    }

    void OpenPage(const std::function<void(UiDriver&, Sheet&, const Window& page)>& script) {
        OpenPrinterSheet([&](UiDriver& ui, Sheet& sheet) {
            script(ui, sheet, SelectPage(sheet, kFontTab));
            if (sheet.IsOpen()) {
                sheet.PressCancel();
            }
        });
    }

    Bytes Description() { return PrinterPageDescription(Host(), kTemplate); }

    std::vector<int> loaded_;     // icons by number
    std::set<HANDLE> icons_;      // that live
    std::set<HIMAGELIST> lists_;  // that live
    bool refuses_lists_ = false;
    // What the page itself had the tree select or bring to its top.
    std::vector<std::pair<WPARAM, HTREEITEM>> selections_;

  private:
    Bytes record_;
};

// Texts

TEST_F(FontPageTest, ShowsItsTextsInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
            EXPECT_EQ(sheet.TabTitles().at(4), SourceText(file, L"FONT", L"RC_FONTFORM"));
            Repaint(page);
            EXPECT_EQ(TreeOf(page), WholeTree(SourceText(file, L"FONT", L"RC_RONT_TREETITLE")));
            EXPECT_EQ(page.Text(kNotice), SourceText(file, L"FONT", L"RC_STATIC_FONT_NOTICE"));
            EXPECT_EQ(RowsOf(page), kRows) << "in no language";
        });
    }
}

TEST_F(FontPageTest, ShowsEnglishWithoutAnyFile) {
    RemoveAllLanguageFiles();
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(4), L"Font");
        EXPECT_EQ(page.Text(kNotice), kEnglishNotice);
        EXPECT_EQ(TreeOf(page), WholeTree(kEnglishTitle));
        Repaint(page);
        EXPECT_EQ(page.Text(kNotice), kEnglishNotice);
        EXPECT_EQ(TreeOf(page), WholeTree(kEnglishTitle));
    });
}

// Title, notice and the tree's root, as long as each may be.
TEST_F(FontPageTest, CutsLongTexts) {
    const std::wstring tail(300, L'x');
    WriteUserFile(kEnglish, L"[FONT]\r\nRC_FONTFORM=f" + tail + L"\r\nRC_STATIC_FONT_NOTICE=n" + tail +
                                L"\r\nRC_RONT_TREETITLE=t" + tail + L"\r\n");
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        Repaint(page);
        EXPECT_EQ(sheet.TabTitles().at(4), L"f" + tail.substr(0, 18));
        EXPECT_EQ(page.Text(kNotice), L"n" + tail.substr(0, 254));
        EXPECT_EQ(TreeOf(page)[0].text, L"t" + tail.substr(0, 254));
    });
}

// The root is English until the page is painted; the notice is not.
TEST_F(FontPageTest, TheRootFollowsTheLanguageFromTheFirstPaint) {
    WriteUserFile(kTraditionalChinese, L"[FONT]\r\nRC_RONT_TREETITLE=root\r\nRC_STATIC_FONT_NOTICE=note\r\n");
    ChooseLanguage(kTraditionalChinese);
    LonePrinterPage lone(Description(), printer().handle());
    // Not shown yet.
    ShowWindow(lone.sheet.handle, SW_HIDE);
    lone.Make();
    const Window page = lone.Page();
    EXPECT_EQ(TreeOf(page), WholeTree(kEnglishTitle));
    EXPECT_EQ(page.Text(kNotice), L"note");
    EXPECT_EQ(lone.Ask(lone.handle(), WM_PAINT), FALSE) << "the platform paints";
    EXPECT_EQ(TreeOf(page), WholeTree(L"root"));
    EXPECT_EQ(page.Text(kNotice), L"note");
}

TEST_F(FontPageTest, FollowsTheLanguageWhileItIsOpen) {
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const wchar_t* file : {kTraditionalChinese, kSimplifiedChinese}) {
            ChooseLanguage(file);
            Repaint(page);
            EXPECT_EQ(TreeOf(page), WholeTree(SourceText(file, L"FONT", L"RC_RONT_TREETITLE")));
            EXPECT_EQ(page.Text(kNotice), SourceText(file, L"FONT", L"RC_STATIC_FONT_NOTICE"));
        }
        WriteUserFile(kSimplifiedChinese, L"[FONT]\r\nRC_FONTFORM=x\r\n");
        Repaint(page);
        EXPECT_EQ(TreeOf(page), WholeTree(kEnglishTitle)) << "the file has none";
        EXPECT_EQ(page.Text(kNotice), kEnglishNotice);
        EXPECT_FALSE(sheet.IsApplyEnabled());
    });
}

// Tree and list

TEST_F(FontPageTest, ShowsItsTreeFromTheRoot) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(page.Send(kTree, TVM_GETCOUNT), 19);
        EXPECT_EQ(TreeOf(page), WholeTree(SourceText(kEnglish, L"FONT", L"RC_RONT_TREETITLE")));
        EXPECT_EQ(Next(page, TVGN_FIRSTVISIBLE), Next(page, TVGN_ROOT));
        // Not left to where the tree stands after it was expanded.
        EXPECT_THAT(selections_, ElementsAre(std::pair(WPARAM{TVGN_FIRSTVISIBLE}, Next(page, TVGN_ROOT))));
        EXPECT_TRUE(page.IsVisible(kTree));
        EXPECT_TRUE(page.IsEnabled(kTree));
    });
}

TEST_F(FontPageTest, HasAListThatIsNeverShown) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_FALSE(page.IsVisible(kList));
        EXPECT_EQ(ColumnsOf(page), (Row{L"Font Name", L"Point"}));
        EXPECT_EQ(RowsOf(page), kRows);
        EXPECT_EQ(page.Send(kList, LVM_GETEXTENDEDLISTVIEWSTYLE) & LVS_EX_FULLROWSELECT,
                  LVS_EX_FULLROWSELECT);
        Repaint(page);
        EXPECT_FALSE(page.IsVisible(kList));
    });
}

TEST_F(FontPageTest, SelectingChangesNothing) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        const std::vector<Branch> before = TreeOf(page);
        for (HTREEITEM item = Next(page, TVGN_ROOT); item != nullptr;
             item = Next(page, TVGN_NEXTVISIBLE, item)) {
            page.Send(kTree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
            EXPECT_EQ(Next(page, TVGN_CARET), item);
        }
        SetForegroundWindow(sheet.handle());
        ui.WaitUntil([&] { return GetForegroundWindow() == sheet.handle(); }, "the sheet in front");
        page.Focus(kTree);
        WaitForFocus(ui, page, kTree);
        PressKeys({VK_HOME, VK_DOWN, VK_DOWN, VK_END});
        ui.WaitUntil([&] { return Next(page, TVGN_CARET) == Next(page, TVGN_LASTVISIBLE); }, "the last font");
        EXPECT_EQ(TreeOf(page), before);
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(RowsOf(page), kRows);
    });
}

// Pictures

TEST_F(FontPageTest, HasAPictureForEachLevel) {
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_THAT(loaded_, ElementsAre(125, 126, 127));
        EXPECT_THAT(icons_, IsEmpty()) << "the list of images has copies";
        const auto list = reinterpret_cast<HIMAGELIST>(page.Send(kTree, TVM_GETIMAGELIST, TVSIL_NORMAL));
        ASSERT_THAT(lists_, ElementsAre(list));
        EXPECT_EQ(ImageList_GetImageCount(list), 3);
        int width = 0;
        int height = 0;
        EXPECT_TRUE(ImageList_GetIconSize(list, &width, &height));
        EXPECT_EQ(width, 16);
        EXPECT_EQ(height, 16);
        IMAGEINFO image = {};
        EXPECT_TRUE(ImageList_GetImageInfo(list, 0, &image));
        EXPECT_NE(image.hbmMask, nullptr) << "masked";
        EXPECT_EQ(page.Send(kTree, TVM_GETIMAGELIST, TVSIL_STATE), 0);
    });
    EXPECT_THAT(lists_, IsEmpty()) << "gone with the page";
}

// The icons differ, and each leaves something of its background to be seen.
TEST_F(FontPageTest, ItsPicturesAreThreeDifferentOnes) {
    std::set<Bytes> pictures;
    for (const int number : {125, 126, 127}) {
        SCOPED_TRACE(number);
        const auto icon = static_cast<HICON>(
            LoadImageW(Host().module(), MAKEINTRESOURCEW(number), IMAGE_ICON, 16, 16, LR_DEFAULTCOLOR));
        ASSERT_NE(icon, nullptr);
        const HDC dc = CreateCompatibleDC(nullptr);
        BITMAPINFO format = {};
        format.bmiHeader = {.biSize = sizeof(BITMAPINFOHEADER),
                            .biWidth = 16,
                            .biHeight = 16,
                            .biPlanes = 1,
                            .biBitCount = 32,
                            .biCompression = BI_RGB,
                            .biSizeImage = 0,
                            .biXPelsPerMeter = 0,
                            .biYPelsPerMeter = 0,
                            .biClrUsed = 0,
                            .biClrImportant = 0};
        void* bits = nullptr;
        const HBITMAP bitmap = CreateDIBSection(dc, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
        ASSERT_NE(bitmap, nullptr);
        const HGDIOBJ before = SelectObject(dc, bitmap);
        // A background that no icon has.
        constexpr COLORREF kBackground = RGB(255, 0, 255);
        const HBRUSH brush = CreateSolidBrush(kBackground);
        const RECT whole = {0, 0, 16, 16};
        FillRect(dc, &whole, brush);
        EXPECT_TRUE(DrawIconEx(dc, 0, 0, icon, 16, 16, 0, nullptr, DI_NORMAL));
        GdiFlush();
        int shown = 0;
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x) {
                shown += GetPixel(dc, x, y) == kBackground ? 0 : 1;
            }
        }
        EXPECT_GT(shown, 30);
        EXPECT_LT(shown, 250);
        const auto* const pixels = static_cast<const std::uint8_t*>(bits);
        pictures.emplace(pixels, pixels + std::size_t{16} * 16 * 4);
        SelectObject(dc, before);
        DeleteObject(bitmap);
        DeleteObject(brush);
        DeleteDC(dc);
        DestroyIcon(icon);
    }
    EXPECT_EQ(pictures.size(), 3u);
}

TEST_F(FontPageTest, DoesWithoutPicturesWhenTheSystemRefuses) {
    refuses_lists_ = true;
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(TreeOf(page), WholeTree(SourceText(kEnglish, L"FONT", L"RC_RONT_TREETITLE")));
        EXPECT_EQ(page.Send(kTree, TVM_GETIMAGELIST, TVSIL_NORMAL), 0);
    });
}

// Places

TEST_F(FontPageTest, HasItsPlaceInTheSheet) {
    ExpectTemplate(Host().module(), kTemplate, 297, 205, L"Font");
}

TEST_F(FontPageTest, HasThreeControlsWithoutHelp) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    std::vector<int> controls;
    for (HWND child = GetWindow(lone.handle(), GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        controls.push_back(GetDlgCtrlID(child));
    }
    EXPECT_THAT(controls, ElementsAre(kNotice, kTree, kList));
    RECT page = {};
    RECT tree = {};
    GetClientRect(lone.handle(), &page);
    GetWindowRect(GetDlgItem(lone.handle(), kTree), &tree);
    MapWindowPoints(nullptr, lone.handle(), reinterpret_cast<POINT*>(&tree), 2);
    EXPECT_TRUE(tree.left > 0 && tree.top > 0 && tree.right < page.right && tree.bottom < page.bottom);
    HWND tip = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM found) -> BOOL {
            wchar_t name[64] = {};
            GetClassNameW(window, name, 63);
            if (std::wstring_view(name) == TOOLTIPS_CLASSW && GetWindow(window, GW_OWNER) != nullptr &&
                GetDlgItem(GetWindow(window, GW_OWNER), kTree) != nullptr) {
                *reinterpret_cast<HWND*>(found) = window;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&tip));
    EXPECT_EQ(tip, nullptr);
}

// Its procedure

TEST_F(FontPageTest, ReportsToSheetAndHost) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    lone.ExpectAnswersToTheSheet();
}

TEST_F(FontPageTest, IgnoresMessagesWithoutItsParameter) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.ExpectNothingWithoutParameter(L"SupportedFontPropPageProc");
}

TEST_F(FontPageTest, TakesAnyMessage) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    for (UINT message = 0; message < 0x10000; message += message < 0x800 ? 1 : 0x1F) {
        if (message != WM_INITDIALOG && message != WM_DESTROY && message != WM_NCDESTROY) {
            lone.Ask(lone.handle(), message);
        }
    }
    EXPECT_EQ(TreeOf(lone.Page()), WholeTree(SourceText(kEnglish, L"FONT", L"RC_RONT_TREETITLE")));
}

TEST_F(FontPageTest, FillsItselfOnce) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    EXPECT_EQ(lone.Ask(lone.handle(), WM_INITDIALOG, 0, lone.Description()), FALSE);
    EXPECT_EQ(TreeOf(lone.Page()).size(), 19u);
    EXPECT_EQ(RowsOf(lone.Page()), kRows);
    EXPECT_EQ(ColumnsOf(lone.Page()).size(), 2u);
    EXPECT_EQ(lists_.size(), 1u);
}

// A page painted after somebody emptied its tree.
TEST_F(FontPageTest, PaintsAnEmptyTree) {
    LonePrinterPage lone(Description(), printer().handle());
    lone.Make();
    SendDlgItemMessageW(lone.handle(), kTree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    EXPECT_EQ(lone.Ask(lone.handle(), WM_PAINT), FALSE);
    EXPECT_THAT(TreeOf(lone.Page()), IsEmpty());
}

TEST_F(FontPageTest, LeavesNothingBehind) {
    const Bytes description = Description();
    for (int i = 0; i < 100; ++i) {
        LonePrinterPage lone(description, printer().handle());
        lone.Make();
        EXPECT_EQ(lists_.size(), 1u);
        EXPECT_THAT(icons_, IsEmpty());
        lone.Unmake();
        EXPECT_THAT(lists_, IsEmpty());
    }
    EXPECT_EQ(loaded_.size(), 300u);
}

}  // namespace
}  // namespace pages
