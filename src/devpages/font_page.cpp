// The Font page only shows: the printer's own fonts as a tree, each with the point size at which applications
// are offered it. The same fonts stand in a list that is never shown, where the two largest of font A have
// another size than in the tree.
#include "devpages/font_page.h"

#include <commctrl.h>

#include <iterator>
#include <span>
#include <string_view>
#include <utility>

#include "devpages/device_pages.h"
#include "intrface/win/handles.h"
#include "intrface/win/list_view.h"
#include "intrface/win/module.h"
#include "intrface/win/page.h"
#include "intrface/win/sheet_context.h"

namespace {

struct PrinterFont {
    const wchar_t* treeText;
    const wchar_t* name;
    const wchar_t* points;
};

constexpr PrinterFont kFontA[] = {
    {L"FontA11    9.5", L"FontA11", L"9.5"},  {L"FontA12    19.0", L"FontA12", L"19.0"},
    {L"FontA21    9.5", L"FontA21", L"9.5"},  {L"FontA22   19.0", L"FontA22", L"19.0"},
    {L"FontA24   38.5", L"FontA24", L"38.0"}, {L"FontA42   19.0", L"FontA42", L"19.0"},
    {L"FontA44   38.5", L"FontA44", L"38.0"},
};
constexpr PrinterFont kFontB[] = {
    {L"FontB11    7.0", L"FontB11", L"7.0"},  {L"FontB12    13.5", L"FontB12", L"13.5"},
    {L"FontB21    7.0", L"FontB21", L"7.0"},  {L"FontB22   13.5", L"FontB22", L"13.5"},
    {L"FontB24   27.0", L"FontB24", L"27.0"}, {L"FontB42   13.5", L"FontB42", L"13.5"},
    {L"FontB44   27.0", L"FontB44", L"27.0"},
};
constexpr PrinterFont kControlFont[] = {{L"Control    1.0", L"Control", L"1.0"}};

struct FontGroup {
    const wchar_t* name;
    std::span<const PrinterFont> fonts;
};
constexpr FontGroup kGroups[] = {{L"Font A", kFontA}, {L"Font B", kFontB}, {L"Control Font", kControlFont}};

// The images of the tree's levels.
constexpr int kIcons[] = {IDI_FONT_ROOT, IDI_FONT_GROUP, IDI_FONT_SIZE};
constexpr int kIconSize = 16;
enum Level { kRoot, kGroup, kSize };

constexpr int kPointColumn = 1;
constexpr ListColumn kColumns[] = {{L"Font Name", 120}, {L"Point", 60}};

struct ImageListTraits {
    using Handle = HIMAGELIST;
    static Handle None() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { ImageList_Destroy(handle); }
};
using ImageList = UniqueHandle<ImageListTraits>;

struct IconTraits {
    using Handle = HICON;
    static Handle None() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { DestroyIcon(handle); }
};
using Icon = UniqueHandle<IconTraits>;

LRESULT SendTree(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    return SendDlgItemMessageW(dialog, IDC_FONT_TREE, message, wParam, lParam);
}

// The tree does not own its images: the page gives them back.
void ReplaceImages(HWND dialog, ImageList images) noexcept {
    const ImageList previous(reinterpret_cast<HIMAGELIST>(
        SendTree(dialog, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images.Release()))));
}

ImageList LoadImages() noexcept {
    ImageList images(ImageList_Create(kIconSize, kIconSize, ILC_COLOR32 | ILC_MASK,
                                      static_cast<int>(std::size(kIcons)), 0));
    for (const int id : kIcons) {
        const Icon icon(static_cast<HICON>(
            LoadImageW(ghInstance, MAKEINTRESOURCEW(id), IMAGE_ICON, kIconSize, kIconSize, LR_DEFAULTCOLOR)));
        ImageList_ReplaceIcon(images.Get(), -1, icon.Get());
    }
    return images;
}

HTREEITEM AddBranch(HWND dialog, HTREEITEM parent, const wchar_t* text, Level level) noexcept {
    TVINSERTSTRUCTW branch{};
    branch.hParent = parent;
    branch.hInsertAfter = TVI_LAST;
    branch.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    branch.item.pszText = ListText(text);
    branch.item.iImage = level;
    branch.item.iSelectedImage = level;
    return reinterpret_cast<HTREEITEM>(
        SendTree(dialog, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&branch)));
}

void Expand(HWND dialog, HTREEITEM branch) noexcept {
    SendTree(dialog, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(branch));
}

void FillTree(HWND dialog) noexcept {
    SendTree(dialog, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    const HTREEITEM root = AddBranch(dialog, TVI_ROOT, kFontPageTexts[kFontPageTreeTitle].english, kRoot);
    for (const FontGroup& group : kGroups) {
        const HTREEITEM branch = AddBranch(dialog, root, group.name, kGroup);
        for (const PrinterFont& font : group.fonts) {
            AddBranch(dialog, branch, font.treeText, kSize);
        }
        Expand(dialog, branch);
    }
    Expand(dialog, root);
    SendTree(dialog, TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(root));
}

void FillList(HWND list) noexcept {
    SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
    AddColumns(list, kColumns);
    int row = 0;
    for (const FontGroup& group : kGroups) {
        for (const PrinterFont& font : group.fonts) {
            AddRow(list, row, font.name);
            SetCell(list, row, kPointColumn, font.points);
            ++row;
        }
    }
}

void PageOpened(HWND dialog) {
    FontPageTexts().ApplyTo(dialog);
    ReplaceImages(dialog, LoadImages());
    FillTree(dialog);
    FillList(GetDlgItem(dialog, IDC_FONT_LIST));
}

void ShowTreeTitle(HWND dialog) noexcept {
    wchar_t shown[kNotice] = {};
    TVITEMW root{};
    root.mask = TVIF_TEXT;
    root.hItem = reinterpret_cast<HTREEITEM>(SendTree(dialog, TVM_GETNEXTITEM, TVGN_ROOT, 0));
    root.pszText = shown;
    root.cchTextMax = static_cast<int>(std::size(shown));
    const wchar_t* const title = FontPageTexts()[kFontPageTreeTitle];
    if (SendTree(dialog, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&root)) &&
        std::wstring_view(shown) != title) {
        root.pszText = ListText(title);
        SendTree(dialog, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&root));
    }
}

void PagePainted(HWND dialog) {
    ReloadTexts(dialog, FontPageTexts());
    ShowTreeTitle(dialog);
}

INT_PTR HandleMessage(HWND dialog, UINT message, LPARAM lParam) {
    const auto* context = PageContext<DeviceSheetContext>(
        dialog, message, lParam, L"ERROR UI:  SupportedFontPropPageProc : GetWindowLongPtr Failed (%d)\r\n");
    if (context == nullptr) {
        return FALSE;
    }
    switch (message) {
        case WM_INITDIALOG:
            if (MarkPage(dialog, DevicePage::kFont)) {
                PageOpened(dialog);
            }
            return FALSE;
        case WM_PAINT:
            PagePainted(dialog);
            return FALSE;
        case WM_DESTROY:
            ReplaceImages(dialog, ImageList());
            return FALSE;
        case WM_NOTIFY:
            return AnswerSheet(dialog, lParam, [&] { ReportDeviceApplied(dialog, *context); });
        case WM_NCDESTROY:
            UnmarkPage(dialog);
            return FALSE;
        default:
            return FALSE;
    }
}

constinit TextTable gTexts(L"FONT", kFontPageTexts);

}  // namespace

TextTable& FontPageTexts() noexcept {
    return gTexts;
}

INT_PTR CALLBACK SupportedFontPropPageProc(HWND dialog, UINT message, WPARAM, LPARAM lParam) {
    return GuardDialog([&] { return HandleMessage(dialog, message, lParam); });
}
