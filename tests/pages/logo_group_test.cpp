// The logos of the Download page: the list and its settings, which files it takes, what the sliders and radio
// buttons do, and every pixel of the preview. Made alone where messages or pixels are looked at, in the real
// sheet where mouse and keyboard are.
#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>
#include <string_view>

#include "lone_printer_page.h"
#include "open_file_hook.h"
#include "printer_fixture.h"
#include "real_input.h"
#include "rig/process_objects.h"
#include "water_mark_frame.h"

namespace pages {
namespace {

using preview::Difference;
using preview::Drawn;
using preview::Picture;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using Path = std::filesystem::path;
using Texts = std::vector<std::wstring>;

constexpr int kTemplate = 113;
constexpr int kList = 1041;
constexpr int kAdd = 1042;
constexpr int kDelete = 1043;
constexpr int kDownload = 1044;
constexpr int kClear = 1045;
constexpr int kFrame = 1046;
constexpr int kOriginal = 1087;
constexpr int kMono = 1061;
constexpr int kGrey = 1088;
constexpr int kNone = 1089;
constexpr int kDitherM3 = 1090;
constexpr int kDitherM4 = 1091;
constexpr int kDiffuse = 1092;
constexpr int kContrast = 1095;
constexpr int kContrastValue = 1096;
constexpr int kBrightness = 1083;
constexpr int kBrightnessValue = 1086;

constexpr int kTypes[] = {kOriginal, kMono, kGrey};
constexpr int kHalftones[] = {kNone, kDitherM3, kDitherM4, kDiffuse};
constexpr int kSliders[] = {kContrast, kBrightness};
constexpr const wchar_t* kLanguages[] = {kEnglish, kSimplifiedChinese, kTraditionalChinese};

// Bitmap files

void Put(Bytes& file, std::size_t size, std::uint32_t value) {
    for (std::size_t i = 0; i < size; ++i) {
        file.push_back(static_cast<std::uint8_t>(value >> 8 * i & 0xFF));
    }
}

// What a pixel has in the file: its index, or its blue, green and red from the lowest byte up. Rows count as
// they are stored.
using PixelAt = std::function<std::uint32_t(int x, int y)>;

// With as many colours in its palette as its pixels tell apart: grey ones, from black to white.
Bytes BitmapFile(int width, int height, unsigned bits, const PixelAt& pixel_at) {
    const std::uint32_t colours = bits > 8 ? 0 : 1u << bits;
    Bytes file = {'B', 'M'};
    Put(file, 8, 0);
    Put(file, 4, 54 + 4 * colours);
    Put(file, 4, 40);
    Put(file, 4, static_cast<std::uint32_t>(width));
    Put(file, 4, static_cast<std::uint32_t>(height));
    Put(file, 2, 1);
    Put(file, 2, bits);
    Put(file, 24, 0);
    for (std::uint32_t i = 0; i < colours; ++i) {
        Put(file, 4, i * 255 / (colours - 1) * 0x010101);
    }
    for (int y = 0; y < std::abs(height); ++y) {
        const std::size_t start = file.size();
        std::uint8_t packed = 0;
        for (int x = 0; x < width; ++x) {
            if (bits >= 8) {
                Put(file, bits / 8, pixel_at(x, y));
                continue;
            }
            const unsigned used = static_cast<unsigned>(x) * bits % 8;
            packed = static_cast<std::uint8_t>(packed | pixel_at(x, y) << (8 - bits - used));
            if (used + bits == 8 || x + 1 == width) {
                file.push_back(packed);
                packed = 0;
            }
        }
        file.resize(start + (file.size() - start + 3) / 4 * 4, 0);
    }
    return file;
}

Bytes Flat(int width, int height, unsigned bits, std::uint32_t pixel) {
    return BitmapFile(width, height, bits, [pixel](int, int) { return pixel; });
}

// Every pixel another one.
std::uint32_t Mixed(int x, int y) {
    return (static_cast<std::uint32_t>(x * 73 + y * 151) * 2654435761u) >> 8;
}
Bytes MixedFile(int width, int height, unsigned bits) {
    const std::uint32_t mask = bits >= 32 ? 0xFFFFFFFF : (1u << bits) - 1;
    return BitmapFile(width, height, bits, [mask](int x, int y) { return Mixed(x, y) & mask; });
}

// A file of only so many bytes, whose headers tell this size.
Bytes Front(int width, int height, std::size_t size) {
    Bytes file = Flat(8, 1, 1, 0);
    for (std::size_t i = 0; i < 4; ++i) {
        file[18 + i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(width) >> 8 * i & 0xFF);
        file[22 + i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(height) >> 8 * i & 0xFF);
    }
    file.resize(size, 0);
    return file;
}

// A picture of 1, 8 or 24 bits with its rows from the bottom.
Picture Decoded(const Bytes& file) {
    const int width = At<int>(file, 18);
    const int height = At<int>(file, 22);
    const unsigned bits = At<WORD>(file, 28);
    const std::size_t start = At<DWORD>(file, 10);
    const std::size_t row_bytes = (static_cast<std::size_t>(width) * bits + 31) / 32 * 4;
    Picture picture({width, height});
    for (int y = 0; y < height; ++y) {
        const std::size_t row = start + static_cast<std::size_t>(height - 1 - y) * row_bytes;
        for (int x = 0; x < width; ++x) {
            const auto column = static_cast<std::size_t>(x);
            if (bits == 24) {
                picture.At(x, y) = file.at(row + 3 * column) |
                                   static_cast<std::uint32_t>(file.at(row + 3 * column + 1)) << 8 |
                                   static_cast<std::uint32_t>(file.at(row + 3 * column + 2)) << 16;
            } else {
                const std::size_t index =
                    bits == 8 ? file.at(row + column) : file.at(row + column / 8) >> (7 - column % 8) & 1u;
                picture.At(x, y) = At<DWORD>(file, 54 + 4 * index) & 0xFFFFFF;
            }
        }
    }
    return picture;
}

// As the system stretches without averaging.
Picture Stretched(const Picture& picture, preview::Size size) {
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = picture.size.width;
    info.bmiHeader.biHeight = -picture.size.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    return Drawn(size, [&](HDC target) {
        SetStretchBltMode(target, COLORONCOLOR);
        StretchDIBits(target, 0, 0, size.width, size.height, 0, 0, picture.size.width, picture.size.height,
                      picture.pixels.data(), &info, DIB_RGB_COLORS, SRCCOPY);
    });
}

Path ConvertedOf(const Path& source) {
    const std::wstring path = source.wstring();
    return path.substr(0, path.size() - 4) + L"Temp.bmp";
}

Bytes BytesOf(const Path& path) {
    const auto bytes = rig::ReadBytes(path);
    EXPECT_TRUE(bytes) << path;
    return bytes.value_or(Bytes(1078 + 1024));
}

// What freed memory holds: whoever uses it follows addresses that there are not.
std::uint64_t SpoiltWord(std::size_t index) {
    return 0xDDDD'0000'0000'0000 + index * 0x1000;
}

void Spoil(void* block) {
    for (std::size_t i = 0; i < _msize(block) / sizeof(std::uint64_t); ++i) {
        static_cast<std::uint64_t*>(block)[i] = SpoiltWord(i);
    }
}

bool IsSpoilt(void* block) {
    for (std::size_t i = 0; i < _msize(block) / sizeof(std::uint64_t); ++i) {
        if (static_cast<const std::uint64_t*>(block)[i] != SpoiltWord(i)) {
            return false;
        }
    }
    return true;
}

class LogoGroupTest : public PrinterPageTest {
  protected:
    void SetUp() override {
        PrinterPageTest::SetUp();
        std::filesystem::remove_all(folder_);
        ASSERT_TRUE(std::filesystem::create_directories(folder_));
        HookFiles();
        HookDrawing();
        HookMemory();
        hooks_.On(
            "USER32.dll", "SendDlgItemMessageW", &SendDlgItemMessageW,
            [this](auto original, HWND dialog, int control, UINT message, WPARAM wparam, LPARAM lparam) {
                if (message == BM_SETDONTCLICK && wparam != 0) {
                    clicked_by_user_.insert(control);
                }
                return original(dialog, control, message, wparam, lparam);
            });
        PrinterHost();
        for (const char* function : {"MessageBoxW", "CreateFileW", "FillRect", "BitBlt", "StretchDIBits",
                                     "CreateCompatibleDC", "CreateCompatibleBitmap", "malloc", "free"}) {
            ASSERT_GE(hooks_.Bound(function), 1) << function;
        }
        record_ = Record();
        description_ = PrinterPageDescription(Host(), kTemplate);
    }

    void TearDown() override {
        EXPECT_EQ(Differences(record_, Record()), "");
        PrinterPageTest::TearDown();
        EXPECT_THAT(live_, IsEmpty()) << "device contexts or bitmaps were not given back";
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }

    // Page by page

    std::unique_ptr<LonePrinterPage> MakePage() {
        auto lone = std::make_unique<LonePrinterPage>(description_, printer().handle());
        lone->Make();
        RedrawWindow(lone->sheet.handle, nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        return lone;
    }

    void OpenPage(const std::function<void(UiDriver&, Sheet&, const Window& page)>& script) {
        OpenPrinterSheet([&](UiDriver& ui, Sheet& sheet) {
            const Window page = SelectPage(sheet, kDownloadTab);
            SetForegroundWindow(sheet.handle());
            ui.WaitUntil([&] { return GetForegroundWindow() == sheet.handle(); }, "the sheet in front");
            script(ui, sheet, page);
            if (sheet.IsOpen()) {
                sheet.PressCancel();
            }
        });
    }

    // The page alone, as its own reasons to be painted have it; and what waits to be painted.
    static void Paint(const Window& page) {
        RedrawWindow(page.handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_NOCHILDREN | RDW_UPDATENOW);
        UpdateWindow(page.Control(kFrame));
    }
    static void PaintWhatIsDue(const Window& page) {
        UpdateWindow(page.handle());
        UpdateWindow(page.Control(kFrame));
    }

    Path Write(const std::wstring& name, const Bytes& bytes) const {
        rig::WriteBytes(folder_ / name, bytes);
        return folder_ / name;
    }

    // What the open-file dialog is answered with.
    void Choose(const Path& path) {
        choose_ = [text = path.wstring()](OPENFILENAMEW& dialog) -> BOOL {
            EXPECT_GT(dialog.nMaxFile, text.size());
            text.copy(dialog.lpstrFile, text.size());
            dialog.lpstrFile[text.size()] = L'\0';
            return TRUE;
        };
    }

    void Add(const Window& page, const Path& path) {
        Choose(path);
        page.Click(kAdd);
        PaintWhatIsDue(page);
    }
    Path AddFile(const Window& page, const std::wstring& name, const Bytes& bytes) {
        const Path path = Write(name, bytes);
        Add(page, path);
        return path;
    }

    // A row that is one already stays selected; none with -1.
    static void Select(const Window& page, int row) {
        LVITEMW item = {};
        item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        item.state = row < 0 ? 0 : item.stateMask;
        page.Send(kList, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
        PaintWhatIsDue(page);
    }
    static int Selected(const Window& page) {
        return static_cast<int>(page.Send(kList, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
    }

    static void SetTone(const Window& page, int slider, int value) {
        page.SetSlider(slider, value);
        PaintWhatIsDue(page);
    }
    static void Press(const Window& page, int button) {
        page.Click(button);
        PaintWhatIsDue(page);
    }

    static std::wstring Cell(const Window& page, int row, int column) {
        wchar_t text[1024] = {};
        LVITEMW item = {};
        item.iSubItem = column;
        item.pszText = text;
        item.cchTextMax = static_cast<int>(std::size(text));
        page.Send(kList, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
        return text;
    }
    // The cells of each row.
    static std::vector<Texts> Rows(const Window& page) {
        std::vector<Texts> rows;
        for (int row = 0; row < page.RowCount(kList); ++row) {
            rows.push_back({Cell(page, row, 0), Cell(page, row, 1), Cell(page, row, 2)});
        }
        return rows;
    }
    static Texts RowOf(int number, const Path& path) {
        return {std::to_wstring(number), path.filename().wstring(), path.wstring()};
    }

    template <std::size_t N>
    static std::vector<int> Checked(const Window& page, const int (&radios)[N]) {
        std::vector<int> checked;
        std::copy_if(std::begin(radios), std::end(radios), std::back_inserter(checked),
                     [&page](int radio) { return page.IsChecked(radio); });
        return checked;
    }
    // What the controls show of a row's settings.
    static void ExpectSettings(const Window& page, int halftone, int contrast, int brightness) {
        EXPECT_THAT(Checked(page, kHalftones), ElementsAre(halftone));
        EXPECT_EQ(page.SliderPosition(kContrast), contrast);
        EXPECT_EQ(page.Text(kContrastValue), std::to_wstring(contrast));
        EXPECT_EQ(page.SliderPosition(kBrightness), brightness);
        EXPECT_EQ(page.Text(kBrightnessValue), std::to_wstring(brightness));
    }
    static void ExpectEnabled(const Window& page, bool types, bool halftones, bool sliders) {
        for (const int radio : kTypes) {
            EXPECT_EQ(page.IsEnabled(radio), types) << radio;
        }
        for (const int radio : kHalftones) {
            EXPECT_EQ(page.IsEnabled(radio), halftones) << radio;
        }
        for (const int slider : kSliders) {
            EXPECT_EQ(page.IsEnabled(slider), sliders) << slider;
        }
    }

    // The text of a message, of this number in its file, and nothing else.
    void ExpectSaid(const Window& page, const wchar_t* language, int number, const std::wstring& english,
                    const wchar_t* title = L"MB_ERROR", const std::wstring& english_title = L"Error") {
        ASSERT_EQ(boxes_.size(), 1u);
        EXPECT_EQ(boxes_[0].owner, page.handle());
        const std::wstring key = L"MB_DOWNLOAD_ERROR" + std::to_wstring(number);
        const bool is_default = language == nullptr;
        EXPECT_EQ(boxes_[0].title, is_default ? english_title : SourceText(language, L"MessageBox", title));
        EXPECT_EQ(boxes_[0].text, is_default ? english : SourceText(language, L"MessageBox", key.c_str()));
        EXPECT_EQ(boxes_[0].type, UINT{MB_OK}) << "no icon";
        boxes_.clear();
    }

    // The frame

    static preview::Size FrameSize(const Window& page) {
        RECT area = {};
        GetClientRect(page.Control(kFrame), &area);
        return {area.right, area.bottom};
    }

    static Picture Shown(const Window& page) {
        const HWND frame = page.Control(kFrame);
        const HDC source = GetDC(frame);
        const preview::Size size = FrameSize(page);
        Picture picture = Drawn(size, [&](HDC target) {
            EXPECT_TRUE(BitBlt(target, 0, 0, size.width, size.height, source, 0, 0, SRCCOPY));
        });
        ReleaseDC(frame, source);
        return picture;
    }

    // Gives the frame a client area, beside the other controls.
    static void Resize(const LonePrinterPage& lone, preview::Size size) {
        constexpr UINT kFlags = SWP_NOZORDER | SWP_NOACTIVATE;
        const Window page = lone.Page();
        const HWND frame = page.Control(kFrame);
        RECT outer = {};
        GetWindowRect(frame, &outer);
        const preview::Size inner = FrameSize(page);
        SetWindowPos(lone.sheet.handle, nullptr, 0, 0, 1000, 700, kFlags);
        SetWindowPos(page.handle(), nullptr, 0, 0, 980, 660, kFlags | SWP_NOMOVE);
        SetWindowPos(frame, nullptr, 600, 10, size.width + outer.right - outer.left - inner.width,
                     size.height + outer.bottom - outer.top - inner.height, kFlags);
        ASSERT_EQ(FrameSize(page), size);
        RedrawWindow(lone.sheet.handle, nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    }

    // As when another window has wiped the picture.
    static void Smear(const Window& page) {
        const HWND frame = page.Control(kFrame);
        const HDC target = GetDC(frame);
        const preview::Size size = FrameSize(page);
        const RECT area = {0, 0, size.width, size.height};
        const HBRUSH brush = CreateSolidBrush(RGB(255, 0, 255));
        FillRect(target, &area, brush);
        DeleteObject(brush);
        ReleaseDC(frame, target);
    }

    static std::uint32_t SystemColour(int index) {
        const COLORREF colour = GetSysColor(index);
        return static_cast<std::uint32_t>(GetRValue(colour) << 16 | GetGValue(colour) << 8 |
                                          GetBValue(colour));
    }
    // A frame with a logo that shows no picture.
    static Picture Paper(const Window& page) {
        return Picture(FrameSize(page), SystemColour(COLOR_HIGHLIGHTTEXT));
    }
    // A frame without a logo.
    static Picture Background(const Window& page) {
        return Picture(FrameSize(page), SystemColour(COLOR_BTNFACE));
    }

    static void ExpectShows(const Window& page, const Picture& expected) {
        EXPECT_EQ(Difference(expected, Shown(page)), "");
    }
    // One row of pixels, each as a block.
    static void ExpectBlocks(const Window& page, const std::vector<std::uint32_t>& colours) {
        const preview::Size size = FrameSize(page);
        Picture row({static_cast<int>(colours.size()), 1});
        row.pixels = colours;
        Picture expected(size);
        expected.Fill({0, 0, size.width, size.height}, row, 1);
        ExpectShows(page, expected);
    }
    // Ones are white, zeros black.
    static void ExpectDots(const Window& page, std::string_view dots) {
        std::vector<std::uint32_t> colours;
        for (const char dot : dots) {
            colours.push_back(dot == '1' ? 0xFFFFFF : 0);
        }
        ExpectBlocks(page, colours);
    }

    const Path folder_ = std::filesystem::temp_directory_path() / L"kvmr72-logos \u6807";
    Bytes description_;
    OpenFileHook open_file_{hooks_};
    std::vector<Chooser>& choosers_ = open_file_.choosers;
    std::function<BOOL(OPENFILENAMEW&)>& choose_ = open_file_.choose;
    Texts written_;             // names of converted files, each time one is written
    bool keeps_freed_ = false;  // freed memory is spoilt and kept in ...
    std::vector<void*> freed_;
    std::set<void*> live_;                  // device contexts and bitmaps that the plug-in has
    long blocks_ = 0;                       // of memory that it has
    HWND watched_frame_ = nullptr;          // what the plug-in draws into its window ...
    std::vector<std::string> frame_calls_;  // ... is noted here
    std::vector<std::uintptr_t> brushes_;   // what it fills bitmaps with
    std::string refused_;                   // a drawing function that fails
    std::set<int> clicked_by_user_;         // radio buttons that were told not to click by themselves

  private:
    void HookFiles() {
        hooks_.On("KERNEL32.dll", "CreateFileW", &CreateFileW,
                  [this](auto original, LPCWSTR path, DWORD access, auto... arguments) {
                      const Path name = Path(path).filename();
                      if ((access & GENERIC_WRITE) != 0 && name.extension() == L".bmp") {
                          written_.push_back(name.wstring());
                      }
                      return original(path, access, arguments...);
                  });
    }

    void HookDrawing() {
        hooks_.On("USER32.dll", "FillRect", &FillRect,
                  [this](auto original, HDC dc, const RECT* area, HBRUSH brush) {
                      NoteFrameCall("FillRect", dc);
                      if (WindowFromDC(dc) == nullptr) {
                          brushes_.push_back(reinterpret_cast<std::uintptr_t>(brush));
                      }
                      return original(dc, area, brush);
                  });
        hooks_.On("GDI32.dll", "BitBlt", &BitBlt, [this](auto original, HDC dc, auto... arguments) {
            NoteFrameCall("BitBlt", dc);
            return refused_ == "BitBlt" ? FALSE : original(dc, arguments...);
        });
        hooks_.On("GDI32.dll", "StretchDIBits", &StretchDIBits,
                  [this](auto original, HDC dc, auto... arguments) {
                      NoteFrameCall("StretchDIBits", dc);
                      return refused_ == "StretchDIBits" ? 0 : original(dc, arguments...);
                  });
        hooks_.On("GDI32.dll", "CreateCompatibleDC", &CreateCompatibleDC, [this](auto original, HDC dc) {
            return refused_ == "CreateCompatibleDC" ? nullptr : Take(original(dc));
        });
        hooks_.On("GDI32.dll", "DeleteDC", &DeleteDC, [this](auto original, HDC dc) {
            live_.erase(dc);
            return original(dc);
        });
        hooks_.On("GDI32.dll", "CreateCompatibleBitmap", &CreateCompatibleBitmap,
                  [this](auto original, auto... arguments) {
                      return refused_ == "CreateCompatibleBitmap" ? nullptr : Take(original(arguments...));
                  });
        hooks_.On("GDI32.dll", "DeleteObject", &DeleteObject, [this](auto original, HGDIOBJ object) {
            live_.erase(object);
            return original(object);
        });
        hooks_.On("USER32.dll", "GetDC", &GetDC, [this](auto original, HWND window) {
            return refused_ == "GetDC" ? nullptr : Take(original(window));
        });
        hooks_.On("USER32.dll", "ReleaseDC", &ReleaseDC, [this](auto original, HWND window, HDC dc) {
            live_.erase(dc);
            return original(window, dc);
        });
    }

    void HookMemory() {
        hooks_.On("msvcrt.dll", "malloc", static_cast<void*(WINAPI*)(std::size_t)>(&std::malloc),
                  [this](auto original, std::size_t size) {
                      void* const block = original(size);
                      blocks_ += block != nullptr ? 1 : 0;
                      return block;
                  });
        hooks_.On("msvcrt.dll", "free", static_cast<void(WINAPI*)(void*)>(&std::free),
                  [this](auto original, void* block) {
                      blocks_ -= block != nullptr ? 1 : 0;
                      if (block != nullptr && keeps_freed_) {
                          freed_.push_back(block);
                          Spoil(block);
                          return;
                      }
                      original(block);
                  });
    }

    void NoteFrameCall(const char* function, HDC dc) {
        if (watched_frame_ != nullptr && WindowFromDC(dc) == watched_frame_) {
            frame_calls_.emplace_back(function);
        }
    }

    template <typename Handle>
    Handle Take(Handle handle) {
        if (handle != nullptr) {
            live_.insert(handle);
        }
        return handle;
    }

    Bytes record_;
};

// The start

TEST_F(LogoGroupTest, StartsEmpty) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    EXPECT_THAT(Rows(page), IsEmpty());
    ExpectEnabled(page, false, false, false);
    EXPECT_THAT(Checked(page, kTypes), ElementsAre(kOriginal));
    ExpectSettings(page, kNone, 0, 0);
    for (const int button : {kAdd, kDelete, kDownload, kClear}) {
        EXPECT_TRUE(page.IsEnabled(button)) << button;
    }
    ExpectShows(page, Background(page));
    EXPECT_THAT(lone->sheet.messages, IsEmpty());
}

TEST_F(LogoGroupTest, ItsSlidersGoTenTensEitherWay) {
    const auto lone = MakePage();
    for (const int slider : kSliders) {
        EXPECT_EQ(lone->Page().Send(slider, TBM_GETRANGEMIN), -100);
        EXPECT_EQ(lone->Page().Send(slider, TBM_GETRANGEMAX), 100);
        EXPECT_EQ(lone->Page().Send(slider, TBM_GETPOS), 0);
        EXPECT_EQ(lone->Page().Send(slider, TBM_GETPAGESIZE), 20);
        EXPECT_EQ(lone->Page().Send(slider, TBM_GETLINESIZE), 1);
        // In the middle from the start, not where the range was before.
        RECT thumb = {};
        RECT channel = {};
        lone->Page().Send(slider, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
        lone->Page().Send(slider, TBM_GETCHANNELRECT, 0, reinterpret_cast<LPARAM>(&channel));
        EXPECT_NEAR(thumb.left + thumb.right, channel.left + channel.right, 4);
    }
}

TEST_F(LogoGroupTest, ListsNumberNameAndPath) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    EXPECT_EQ(SendMessageW(reinterpret_cast<HWND>(page.Send(kList, LVM_GETHEADER)), HDM_GETITEMCOUNT, 0, 0),
              3);
    int column = 0;
    for (const int width : {40, 150, 300}) {
        EXPECT_EQ(page.Send(kList, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column++)), width);
    }
    EXPECT_EQ(page.Send(kList, LVM_GETEXTENDEDLISTVIEWSTYLE) & LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
}

// Add

TEST_F(LogoGroupTest, AsksForABitmap) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    choose_ = [](OPENFILENAMEW& dialog) {
        dialog.lpstrFile[0] = L'x';
        return FALSE;
    };
    for (const wchar_t* const language : kLanguages) {
        ChooseLanguage(language);
        Repaint(page);
        choosers_.clear();
        page.Click(kAdd);
        ASSERT_EQ(choosers_.size(), 1u);
        EXPECT_EQ(choosers_[0].owner, page.handle());
        EXPECT_EQ(choosers_[0].title, SourceText(language, L"DOWNLOAD", L"RC_BROWSEBOX"));
        EXPECT_EQ(choosers_[0].filter, std::wstring(L"*.bmp\0*.bmp\0", 12));
        EXPECT_EQ(choosers_[0].start, L"");
        constexpr DWORD kExpected = OFN_FILEMUSTEXIST | OFN_NOCHANGEDIR;
        EXPECT_EQ(choosers_[0].flags & (kExpected | OFN_ALLOWMULTISELECT), kExpected);
        EXPECT_THAT(Rows(page), IsEmpty()) << "cancelled";
    }
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_THAT(written_, IsEmpty());
    ExpectEnabled(page, false, false, false);
}

TEST_F(LogoGroupTest, AddsARowForEachFile) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const Path first = AddFile(page, L"shop.bmp", Flat(16, 1, 24, 0x808080));
    EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, first)));
    EXPECT_EQ(Selected(page), 0);
    ExpectEnabled(page, true, false, false);
    const Path second = AddFile(page, L"till.2 \u5E97.BMP", Flat(16, 1, 8, 7));
    // The same file may be in the list twice, and need not have an extension.
    Add(page, first);
    const Path third = AddFile(page, L"x", Flat(16, 1, 1, 1));
    EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, first), RowOf(2, second), RowOf(3, first), RowOf(4, third)));
    EXPECT_EQ(Selected(page), 3);
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_THAT(lone->sheet.messages, IsEmpty()) << "there is nothing to apply";
}

TEST_F(LogoGroupTest, ConvertsAFileAsItsTypeAsksWhenItIsAdded) {
    const struct {
        int type;
        unsigned bits;
        int converted;  // bits of the converted file; 0: there is none
    } cases[] = {{kOriginal, 24, 1}, {kOriginal, 8, 1}, {kOriginal, 1, 0}, {kMono, 24, 1},
                 {kMono, 8, 1},      {kMono, 1, 0},     {kGrey, 24, 8},    {kGrey, 8, 8},
                 {kGrey, 1, 8},      {kGrey, 4, 0},     {kMono, 4, 0}};
    for (const auto& [type, bits, converted] : cases) {
        SCOPED_TRACE(testing::Message() << type << ", " << bits << " bits");
        const auto lone = MakePage();
        const Window page = lone->Page();
        const Path other = AddFile(page, L"other.bmp", Flat(8, 1, 1, 0));
        Press(page, type);
        // Nothing is painted: it is there when the row is.
        ShowWindow(lone->sheet.handle, SW_HIDE);
        const Path path = Write(L"shop.bmp", MixedFile(40, 9, bits));
        std::filesystem::remove(ConvertedOf(path));
        Choose(path);
        lone->Use(kAdd);
        ASSERT_EQ(page.RowCount(kList), 2);
        ASSERT_EQ(std::filesystem::exists(ConvertedOf(path)), converted != 0);
        if (converted != 0) {
            EXPECT_EQ(At<WORD>(BytesOf(ConvertedOf(path)), 28), converted);
        }
        EXPECT_THAT(boxes_, IsEmpty());
    }
}

// A new row of the Transformation type is dithered, all others are not.
TEST_F(LogoGroupTest, ANewRowHasFreshSettings) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
    ExpectSettings(page, kNone, 0, 0);
    Press(page, kGrey);
    SetTone(page, kContrast, 11);
    SetTone(page, kBrightness, -12);
    AddFile(page, L"1.bmp", Flat(16, 1, 24, 0x808080));
    ExpectSettings(page, kNone, 0, 0);
    Press(page, kMono);
    AddFile(page, L"2.bmp", Flat(16, 1, 24, 0x808080));
    ExpectSettings(page, kDitherM3, 0, 0);
    Press(page, kDiffuse);
    AddFile(page, L"3.bmp", Flat(16, 1, 24, 0x808080));
    ExpectSettings(page, kDitherM3, 0, 0);
    Press(page, kOriginal);
    AddFile(page, L"4.bmp", Flat(16, 1, 24, 0x808080));
    ExpectSettings(page, kNone, 0, 0);
}

TEST_F(LogoGroupTest, TakesPicturesUpToItsLargestSize) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const struct {
        int width, height;
        bool is_taken;
    } cases[] = {{1024, 768, true},  {1025, 768, false},    {1024, 769, false},
                 {1024, -768, true}, {1024, -769, false},   {1025, 1, false},
                 {1, 769, false},    {1, INT32_MIN, false}, {INT32_MAX, 1, false}};
    for (const auto& [width, height, is_taken] : cases) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        const int rows = page.RowCount(kList);
        AddFile(page, L"size.bmp", Front(width, height, 62));
        if (is_taken) {
            EXPECT_THAT(boxes_, IsEmpty());
            EXPECT_EQ(page.RowCount(kList), rows + 1);
        } else {
            ExpectSaid(page, kEnglish, 3, L"");
            EXPECT_EQ(page.RowCount(kList), rows);
        }
    }
}

TEST_F(LogoGroupTest, TellsWhyAFileIsNotTaken) {
    for (const wchar_t* const language :
         {kEnglish, kSimplifiedChinese, kTraditionalChinese, static_cast<const wchar_t*>(nullptr)}) {
        if (language != nullptr) {
            ChooseLanguage(language);
        } else {
            RemoveAllLanguageFiles();
        }
        description_ = PrinterPageDescription(Host(), kTemplate);
        const auto lone = MakePage();
        const Window page = lone->Page();
        Add(page, folder_ / L"missing.bmp");
        ExpectSaid(page, language, 1, L"Fail to open the selected file!");
        Add(page, folder_);
        ExpectSaid(page, language, 1, L"Fail to open the selected file!");
        AddFile(page, L"short.bmp", Front(8, 1, 61));
        ExpectSaid(page, language, 2, L"Failed to get data from the file!");
        AddFile(page, L"empty.bmp", {});
        ExpectSaid(page, language, 2, L"Failed to get data from the file!");
        AddFile(page, L"wide.bmp", Flat(1025, 1, 24, 0));
        ExpectSaid(page, language, 3,
                   L"The image is too big to be selected.\nthe width must be less than 1024 Byte,and the "
                   L"height must be less than 768 Byte!");
        EXPECT_THAT(Rows(page), IsEmpty());
        ExpectEnabled(page, false, false, false);
        EXPECT_THAT(written_, IsEmpty());
        AddFile(page, L"62.bmp", Front(8, 1, 62));
        EXPECT_THAT(boxes_, IsEmpty());
        ASSERT_EQ(page.RowCount(kList), 1);
        for (int rows = 1; rows < 9; ++rows) {
            Add(page, folder_ / L"62.bmp");
        }
        ASSERT_EQ(page.RowCount(kList), 9);
        choosers_.clear();
        Add(page, folder_ / L"62.bmp");
        ExpectSaid(page, language, 4,
                   L"The total counts of the logos is 9,\nplease delete some logos before selecting another "
                   L"logo!",
                   L"MB_INFORMATION", L"Information");
        EXPECT_THAT(choosers_, IsEmpty()) << "it is said before a file is chosen";
        EXPECT_EQ(page.RowCount(kList), 9);
        Press(page, kDelete);
        Add(page, folder_ / L"62.bmp");
        EXPECT_THAT(boxes_, IsEmpty());
        EXPECT_EQ(page.RowCount(kList), 9);
    }
}

// What cannot be converted is taken all the same: what of it is sent is decided then.
TEST_F(LogoGroupTest, TakesFilesThatAreNoPictures) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    for (const int type : kTypes) {
        AddFile(page, L"text.bmp", Bytes(100, 0));
        Press(page, type);
        Bytes noise = Front(16, 1, 3000);
        std::fill(noise.begin() + 26, noise.end(), std::uint8_t{0xCC});
        AddFile(page, L"noise.bmp", noise);
        AddFile(page, L"flat.bmp", Front(0, 0, 62));
        AddFile(page, L"negative.bmp", Front(-5, 3, 62));
        for (int rows = page.RowCount(kList); rows > 0; --rows) {
            Press(page, kDelete);
        }
        ASSERT_EQ(page.RowCount(kList), 0);
    }
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_THAT(written_, IsEmpty());
}

TEST_F(LogoGroupTest, ChoosesInTheSystemsDialog) {
    const Path path = Write(L"shop 1.bmp", Flat(16, 1, 24, 0x808080));
    const Path folder = std::filesystem::current_path();
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        page.ChooseFile(kAdd, path);
        Settle(page);
        EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, path)));
        EXPECT_EQ(std::filesystem::current_path(), folder);
        EXPECT_FALSE(sheet.IsApplyEnabled());
    });
    OpenPage([&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_THAT(Rows(page), IsEmpty()) << "the list lasts as long as the page";
    });
}

// Delete

// A row goes with its settings and its converted file; the source stays.
TEST_F(LogoGroupTest, DeletesTheSelectedRow) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    std::vector<Path> paths;
    for (int i = 0; i < 5; ++i) {
        paths.push_back(AddFile(page, std::to_wstring(i) + L".bmp", Flat(16, 1, 24, 0x808080)));
        Press(page, kMono);
        Press(page, kHalftones[i % 4]);
        SetTone(page, kContrast, 10 * i - 20);
        SetTone(page, kBrightness, 5 - i);
    }
    const auto expect_row = [&](int row, int i) {
        SCOPED_TRACE(row);
        Select(page, row);
        ExpectSettings(page, kHalftones[i % 4], 10 * i - 20, 5 - i);
    };
    const auto delete_row = [&](int row, const Path& path) {
        Select(page, row);
        EXPECT_TRUE(std::filesystem::exists(ConvertedOf(path)));
        page.Focus(kAdd);
        Press(page, kDelete);
        EXPECT_FALSE(std::filesystem::exists(ConvertedOf(path)));
        EXPECT_TRUE(std::filesystem::exists(path));
        EXPECT_EQ(GetFocus(), page.Control(kList));
    };
    delete_row(2, paths[2]);
    EXPECT_THAT(Rows(page),
                ElementsAre(RowOf(1, paths[0]), RowOf(2, paths[1]), RowOf(3, paths[3]), RowOf(4, paths[4])));
    EXPECT_EQ(Selected(page), 2) << "the one behind it";
    ExpectSettings(page, kHalftones[3], 10, 2);
    expect_row(0, 0);
    expect_row(1, 1);
    expect_row(2, 3);
    expect_row(3, 4);
    delete_row(0, paths[0]);
    EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, paths[1]), RowOf(2, paths[3]), RowOf(3, paths[4])));
    EXPECT_EQ(Selected(page), 0);
    ExpectSettings(page, kHalftones[1], -10, 4);
    expect_row(1, 3);
    expect_row(2, 4);
    delete_row(2, paths[4]);
    EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, paths[1]), RowOf(2, paths[3])));
    EXPECT_EQ(Selected(page), 1) << "the last one now";
    ExpectSettings(page, kHalftones[3], 10, 2);
    expect_row(0, 1);
    ExpectEnabled(page, true, true, true);
    // The record that is left free does not come back.
    AddFile(page, L"new.bmp", Flat(16, 1, 24, 0x808080));
    ExpectSettings(page, kDitherM3, 0, 0);
    delete_row(2, folder_ / L"new.bmp");
    delete_row(1, paths[3]);
    delete_row(0, paths[1]);
    EXPECT_THAT(Rows(page), IsEmpty());
    ExpectEnabled(page, false, false, false);
    EXPECT_THAT(Checked(page, kTypes), ElementsAre(kMono)) << "the type stays";
    ExpectShows(page, Background(page));
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(LogoGroupTest, DeletesNothingWithoutASelection) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    page.Focus(kAdd);
    lone->Use(kDelete);
    EXPECT_EQ(GetFocus(), page.Control(kAdd));
    const Path path = AddFile(page, L"shop.bmp", Flat(16, 1, 24, 0x808080));
    Select(page, -1);
    Press(page, kDelete);
    EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, path)));
    EXPECT_TRUE(std::filesystem::exists(ConvertedOf(path)));
    ExpectEnabled(page, true, false, false);
    EXPECT_THAT(boxes_, IsEmpty());
}

// Files that someone else removed, or holds, do not keep a row.
TEST_F(LogoGroupTest, DeletesRowsWhoseFilesAreGoneOrHeld) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const Path gone = AddFile(page, L"gone.bmp", Flat(16, 1, 24, 0x808080));
    const Path held = AddFile(page, L"held.bmp", Flat(16, 1, 24, 0x808080));
    const HANDLE holder = CreateFileW(ConvertedOf(held).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    Press(page, kDelete);
    CloseHandle(holder);
    EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, gone)));
    std::filesystem::remove(gone);
    std::filesystem::remove(ConvertedOf(gone));
    Press(page, kDelete);
    EXPECT_THAT(Rows(page), IsEmpty());
    EXPECT_THAT(boxes_, IsEmpty());
}

// Settings

TEST_F(LogoGroupTest, ASelectedRowShowsItsSettings) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
    Press(page, kMono);
    for (const int halftone : {kDitherM4, kDiffuse, kNone, kDitherM3}) {
        Press(page, halftone);
        SetTone(page, kContrast, -100);
        SetTone(page, kBrightness, 100);
        AddFile(page, L"1.bmp", Flat(16, 1, 24, 0x808080));
        SetTone(page, kContrast, 7);
        Select(page, 0);
        ExpectSettings(page, halftone, -100, 100);
        Select(page, 1);
        ExpectSettings(page, kDitherM3, 7, 0);
        Press(page, kDelete);
    }
    // Each slider belongs to its own setting, and the rest of a row stays.
    SetTone(page, kContrast, 0);
    ExpectSettings(page, kDitherM3, 0, 100);
    SetTone(page, kBrightness, -1);
    ExpectSettings(page, kDitherM3, 0, -1);
    Press(page, kGrey);
    ExpectSettings(page, kDitherM3, 0, -1);
}

TEST_F(LogoGroupTest, NothingIsSetWithoutASelectedRow) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const auto move = [&](int slider) {
        page.Send(slider, TBM_SETPOS, TRUE, 33);
        NMHDR released = {page.Control(slider), static_cast<UINT_PTR>(slider),
                          static_cast<UINT>(NM_RELEASEDCAPTURE)};
        lone->Ask(page.handle(), WM_NOTIFY, static_cast<WPARAM>(slider), reinterpret_cast<LPARAM>(&released));
        for (const int code : {TB_THUMBPOSITION, TB_ENDTRACK}) {
            lone->Ask(page.handle(), WM_HSCROLL, static_cast<WPARAM>(code),
                      reinterpret_cast<LPARAM>(page.Control(slider)));
        }
    };
    for (const int slider : kSliders) {
        move(slider);
    }
    EXPECT_EQ(page.Text(kContrastValue), L"0");
    EXPECT_EQ(page.Text(kBrightnessValue), L"0");
    AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
    Press(page, kGrey);
    Select(page, -1);
    ExpectEnabled(page, true, false, false);
    ExpectShows(page, Background(page));
    for (const int slider : kSliders) {
        move(slider);
    }
    lone->Use(kDiffuse);
    EXPECT_EQ(page.Text(kContrastValue), L"0");
    EXPECT_EQ(page.Text(kBrightnessValue), L"0");
    EXPECT_THAT(lone->sheet.messages, IsEmpty());
    Select(page, 0);
    ExpectSettings(page, kNone, 0, 0);
}

// Only what the user lets go of counts. However often that is told, a picture is converted once.
TEST_F(LogoGroupTest, ASliderCountsWhenItIsReleased) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
    Press(page, kGrey);
    const SheetWindow::Message changed = {PSM_CHANGED, reinterpret_cast<WPARAM>(page.handle())};
    const auto scroll = [&](int slider, int code) {
        EXPECT_EQ(lone->Ask(page.handle(), WM_HSCROLL, static_cast<WPARAM>(code),
                            reinterpret_cast<LPARAM>(page.Control(slider))),
                  TRUE);
    };
    int position = 1;
    for (const int slider : kSliders) {
        const int value = slider == kContrast ? kContrastValue : kBrightnessValue;
        const auto expect_told = [&](int told, const std::function<void()>& release) {
            lone->sheet.messages.clear();
            written_.clear();
            release();
            EXPECT_EQ(page.Text(value), std::to_wstring(told));
            EXPECT_THAT(lone->sheet.messages, Each(changed));
            EXPECT_FALSE(lone->sheet.messages.empty());
            PaintWhatIsDue(page);
            EXPECT_THAT(written_, ElementsAre(L"0Temp.bmp", L"0Temp.bmp"));
        };
        lone->sheet.messages.clear();
        written_.clear();
        page.Send(slider, TBM_SETPOS, TRUE, ++position);
        for (const int code :
             {TB_LINEUP, TB_LINEDOWN, TB_PAGEUP, TB_PAGEDOWN, TB_THUMBTRACK, TB_TOP, TB_BOTTOM}) {
            scroll(slider, code);
        }
        PaintWhatIsDue(page);
        EXPECT_EQ(page.Text(value), L"0");
        EXPECT_THAT(lone->sheet.messages, IsEmpty());
        EXPECT_THAT(written_, IsEmpty());
        NMHDR released = {page.Control(slider), static_cast<UINT_PTR>(slider),
                          static_cast<UINT>(NM_RELEASEDCAPTURE)};
        const auto release = [&] {
            EXPECT_EQ(lone->Ask(page.handle(), WM_NOTIFY, static_cast<WPARAM>(slider),
                                reinterpret_cast<LPARAM>(&released)),
                      TRUE);
        };
        expect_told(position, [&] {
            release();
            EXPECT_EQ(lone->sheet.messages.size(), 1u);
        });
        for (const int code : {TB_THUMBPOSITION, TB_ENDTRACK}) {
            page.Send(slider, TBM_SETPOS, TRUE, -++position);
            expect_told(-position, [&] { scroll(slider, code); });
        }
        page.Send(slider, TBM_SETPOS, TRUE, ++position);
        expect_told(position, [&] {
            scroll(slider, TB_THUMBPOSITION);
            scroll(slider, TB_ENDTRACK);
            release();
        });
    }
}

TEST_F(LogoGroupTest, RadioButtonsLeaveTheSheetUnchanged) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
    for (const int type : {kMono, kGrey, kOriginal, kMono}) {
        Press(page, type);
    }
    for (const int halftone : kHalftones) {
        Press(page, halftone);
    }
    EXPECT_THAT(lone->sheet.messages, IsEmpty());
}

// Newer systems have a radio button report a click when it gets the focus.
TEST_F(LogoGroupTest, OnlyTheUserClicksItsRadioButtons) {
    const auto lone = MakePage();
    for (const int radio : kTypes) {
        EXPECT_TRUE(clicked_by_user_.contains(radio)) << radio;
    }
    for (const int radio : kHalftones) {
        EXPECT_TRUE(clicked_by_user_.contains(radio)) << radio;
    }
}

void PressLeftButton(bool down) {
    INPUT input = {};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = down ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_LEFTUP;
    EXPECT_EQ(SendInput(1, &input, sizeof input), 1u);
}

TEST_F(LogoGroupTest, TheMouseDragsASlider) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
        page.Click(kGrey);
        Settle(page);
        ui.WaitUntil([&] { return page.IsEnabled(kContrast); }, "the slider");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        const HWND slider = page.Control(kContrast);
        RECT thumb = {};
        page.Send(kContrast, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
        POINT start = {(thumb.left + thumb.right) / 2, (thumb.top + thumb.bottom) / 2};
        MapWindowPoints(slider, nullptr, &start, 1);
        MovePointer(start);
        PressLeftButton(true);
        Settle(page);
        written_.clear();
        for (int step = 1; step <= 10; ++step) {
            MovePointer({start.x + 2 * step, start.y});
            Settle(page);
        }
        ui.WaitUntil([&] { return page.SliderPosition(kContrast) > 0; }, "the thumb");
        EXPECT_EQ(page.Text(kContrastValue), L"0") << "it is held";
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_THAT(written_, IsEmpty());
        PressLeftButton(false);
        ui.WaitUntil([&] { return sheet.IsApplyEnabled(); }, "the sheet to be told");
        Settle(page);
        // Asking for it could paint once more than the page wants.
        ui.WaitUntil([&] { return !GetUpdateRect(page.handle(), nullptr, FALSE); }, "the page to be painted");
        Settle(page);
        EXPECT_EQ(page.Text(kContrastValue), std::to_wstring(page.SliderPosition(kContrast)));
        // However often the release is told.
        EXPECT_THAT(written_, ElementsAre(L"0Temp.bmp", L"0Temp.bmp"))
            << "when it is set and when it is shown";
        // The setting is the row's.
        AddFile(page, L"1.bmp", Flat(16, 1, 24, 0x808080));
        const int moved = page.SliderPosition(kContrast);
        EXPECT_EQ(moved, 0);
        page.SelectRow(kList, 0);
        EXPECT_GT(page.SliderPosition(kContrast), 0);
    });
}

TEST_F(LogoGroupTest, KeysMoveASlider) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
        page.Click(kGrey);
        ui.WaitUntil([&] { return page.IsEnabled(kBrightness); }, "the slider");
        page.Focus(kBrightness);
        WaitForFocus(ui, page, kBrightness);
        const auto press = [&](WORD key, const wchar_t* expected) {
            PressKey(key);
            ui.WaitUntil([&] { return page.Text(kBrightnessValue) == expected; }, "the value");
        };
        press(VK_RIGHT, L"1");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        press(VK_NEXT, L"21");
        press(VK_LEFT, L"20");
        press(VK_HOME, L"-100");
        press(VK_END, L"100");
        press(VK_PRIOR, L"80");
        EXPECT_EQ(page.Text(kContrastValue), L"0");
    });
}

// From the list on, with all of its controls.
TEST_F(LogoGroupTest, TabGoesFromTheListToTheSliders) {
    OpenPage([&](UiDriver& ui, Sheet&, const Window& page) {
        AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
        page.Click(kMono);
        ui.WaitUntil([&] { return page.IsEnabled(kNone); }, "the radio buttons");
        page.Focus(kList);
        WaitForFocus(ui, page, kList);
        for (const int control : {kAdd, kDelete, kDownload, kClear, kMono, kNone, kContrast, kBrightness}) {
            PressKey(VK_TAB);
            WaitForFocus(ui, page, control);
        }
        EXPECT_THAT(Checked(page, kTypes), ElementsAre(kMono)) << "moving through changes nothing";
        EXPECT_THAT(Checked(page, kHalftones), ElementsAre(kNone));
        // Arrows stay among the buttons of one group.
        page.Focus(kNone);
        WaitForFocus(ui, page, kNone);
        PressKey(VK_UP);
        WaitForFocus(ui, page, kDiffuse);
    });
}

// A control that is switched off would keep the keyboard to itself.
TEST_F(LogoGroupTest, TheKeyboardGoesToTheListWhenItsControlIsSwitchedOff) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x808080));
    AddFile(page, L"1.bmp", Flat(16, 1, 1, 1));
    Press(page, kMono);
    Select(page, 0);
    page.Focus(kBrightness);
    Select(page, 1);
    EXPECT_FALSE(page.IsEnabled(kBrightness));
    EXPECT_EQ(GetFocus(), page.Control(kList));
}

// Every row's converted file is of the type that would be sent.
TEST_F(LogoGroupTest, ATypeConvertsEveryRow) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    for (int i = 0; i < 3; ++i) {
        AddFile(page, std::to_wstring(i) + L".bmp", Flat(16, 1, 24, 0x828282));
    }
    const auto expect_bits = [&](int bits) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(At<WORD>(BytesOf(folder_ / (std::to_wstring(i) + L"Temp.bmp")), 28), bits);
        }
    };
    expect_bits(1);
    Press(page, kGrey);
    expect_bits(8);
    // As each row is set, also where nobody looks.
    SetTone(page, kBrightness, 20);
    Select(page, 0);
    Press(page, kMono);
    expect_bits(1);
    Press(page, kGrey);
    EXPECT_EQ(BytesOf(folder_ / L"0Temp.bmp").at(1078), 0x82);
    EXPECT_EQ(BytesOf(folder_ / L"2Temp.bmp").at(1078), 0x82 + 20);
    Press(page, kOriginal);
    expect_bits(1);
}

// The preview

TEST_F(LogoGroupTest, SwitchesOnWhatCounts) {
    const struct {
        int type;
        unsigned bits;
        bool halftones, sliders;
    } cases[] = {{kOriginal, 24, false, false}, {kOriginal, 8, false, false}, {kOriginal, 1, false, false},
                 {kMono, 24, true, true},       {kMono, 8, true, true},       {kMono, 1, false, false},
                 {kMono, 4, false, false},      {kMono, 16, false, false},    {kMono, 32, false, false},
                 {kGrey, 24, false, true},      {kGrey, 8, false, true},      {kGrey, 1, false, true},
                 {kGrey, 4, false, false},      {kGrey, 16, false, false},    {kGrey, 32, false, false}};
    const auto lone = MakePage();
    const Window page = lone->Page();
    for (const auto& [type, bits, halftones, sliders] : cases) {
        SCOPED_TRACE(testing::Message() << type << ", " << bits << " bits");
        AddFile(page, L"x.bmp", MixedFile(16, 1, bits));
        Press(page, type);
        ExpectEnabled(page, true, halftones, sliders);
        Select(page, -1);
        ExpectEnabled(page, true, false, false);
        Select(page, 0);
        ExpectEnabled(page, true, halftones, sliders);
        Press(page, kDelete);
    }
    // A text is none of these, whatever stands where bitmaps have their bits.
    Bytes text = MixedFile(16, 1, 24);
    text[0] = 'b';
    AddFile(page, L"x.bmp", text);
    for (const int type : kTypes) {
        Press(page, type);
        ExpectEnabled(page, true, false, false);
        ExpectShows(page, Paper(page));
    }
}

// Sixteen pixels in a row, each of level 130, and what each method makes of that.
TEST_F(LogoGroupTest, ShowsEachHalftone) {
    const struct {
        unsigned bits;
        int halftone;
        const char* dots;
    } cases[] = {{8, kNone, "0000000000000000"},     {24, kNone, "0000000000000000"},
                 {8, kDitherM3, "1010101010101010"}, {24, kDitherM3, "1110101011101010"},
                 {8, kDitherM4, "1110101010101010"}, {24, kDitherM4, "1110101010101010"},
                 {8, kDiffuse, "0101010101010101"},  {24, kDiffuse, "0101010101010101"}};
    const auto lone = MakePage();
    const Window page = lone->Page();
    Resize(*lone, {160, 40});
    AddFile(page, L"8.bmp", Flat(16, 1, 8, 130));
    AddFile(page, L"24.bmp", Flat(16, 1, 24, 0x828282));
    Press(page, kMono);
    for (const auto& [bits, halftone, dots] : cases) {
        SCOPED_TRACE(dots);
        Select(page, bits == 8 ? 0 : 1);
        Smear(page);
        Press(page, halftone);
        ExpectDots(page, dots);
    }
    // Brighter by 20, 150 is above the dark third of the matrix: 0, 32, 8, 2, 34, 10 of its first row.
    Select(page, 0);
    Press(page, kDitherM3);
    SetTone(page, kBrightness, 20);
    ExpectDots(page, "1110111011101110");
}

// Levels 10, 100 and 200 with a contrast of 50: 0, 50 / (155 / 255) = 82, 150 / (155 / 255) = 246.
TEST_F(LogoGroupTest, ShowsGreyAsItIsSet) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    Resize(*lone, {120, 40});
    const std::uint32_t levels[] = {10, 100, 200};
    AddFile(page, L"8.bmp", BitmapFile(3, 1, 8, [&levels](int x, int) { return levels[x]; }));
    // As black and white at first: of these levels, whose mean is 103, the last is white.
    Press(page, kMono);
    Press(page, kNone);
    ExpectDots(page, "001");
    Press(page, kGrey);
    ExpectBlocks(page, {0x0A0A0A, 0x646464, 0xC8C8C8});
    SetTone(page, kContrast, 50);
    ExpectBlocks(page, {0x000000, 0x525252, 0xF6F6F6});
    SetTone(page, kBrightness, 20);
    ExpectBlocks(page, {0x141414, 0x666666, 0xFFFFFF});
    // (10 x 114 + 100 x 587 + 200 x 299) / 1000, and with 20, 102 and 255 in their places.
    AddFile(page, L"24.bmp", Flat(3, 1, 24, 0xC8640A));
    ExpectBlocks(page, {0x777777, 0x777777, 0x777777});
    SetTone(page, kContrast, 50);
    SetTone(page, kBrightness, 20);
    ExpectBlocks(page, {0x8A8A8A, 0x8A8A8A, 0x8A8A8A});
    AddFile(page, L"1.bmp", BitmapFile(3, 1, 1, [](int x, int) { return x == 1 ? 0u : 1u; }));
    ExpectBlocks(page, {0xFFFFFF, 0x000000, 0xFFFFFF});
    SetTone(page, kContrast, -50);
    ExpectBlocks(page, {0xCDCDCD, 0x323232, 0xCDCDCD});
    Press(page, kOriginal);
    ExpectBlocks(page, {0xFFFFFF, 0x000000, 0xFFFFFF});
}

// As they are, from the bottom or from the top, with the colours that the file names.
TEST_F(LogoGroupTest, ShowsOriginalsOfEveryDepth) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    Resize(*lone, {120, 40});
    const auto expect = [&](const std::wstring& name, const Bytes& file, std::vector<std::uint32_t> top,
                            std::vector<std::uint32_t> bottom) {
        SCOPED_TRACE(testing::PrintToString(name));
        AddFile(page, name, file);
        for (const int type : {kOriginal, kMono, kGrey}) {
            Press(page, type);
            const bool converts = file[28] == 24 || file[28] == 8;
            if (type == kOriginal || (type == kMono && !converts)) {
                Picture image({static_cast<int>(top.size()), 2});
                std::copy(top.begin(), top.end(), image.pixels.begin());
                std::copy(bottom.begin(), bottom.end(),
                          image.pixels.begin() + static_cast<std::ptrdiff_t>(top.size()));
                Picture expected(FrameSize(page));
                expected.Fill({0, 0, 120, 40}, image, 2);
                ExpectShows(page, expected);
            } else if (type == kGrey && !converts && file[28] != 1) {
                ExpectShows(page, Paper(page));
            }
        }
        Press(page, kOriginal);
        Press(page, kDelete);
    };
    const auto row_by_row = [](int, int y) { return y == 0 ? 1u : 0u; };
    expect(L"1.bmp", BitmapFile(2, 2, 1, row_by_row), {0, 0}, {0xFFFFFF, 0xFFFFFF});
    expect(L"top.bmp", BitmapFile(2, -2, 1, row_by_row), {0xFFFFFF, 0xFFFFFF}, {0, 0});
    Bytes coloured = BitmapFile(2, 2, 1, row_by_row);
    const std::uint8_t palette[] = {0x11, 0x22, 0x33, 0, 0x44, 0x55, 0x66, 0};
    std::copy(std::begin(palette), std::end(palette), coloured.begin() + 54);
    expect(L"coloured.bmp", coloured, {0x332211, 0x332211}, {0x665544, 0x665544});
    expect(L"4.bmp", BitmapFile(3, 2, 4, [](int x, int y) { return static_cast<std::uint32_t>(x + 5 * y); }),
           {0x555555, 0x666666, 0x777777}, {0x000000, 0x111111, 0x222222});
    expect(L"8.bmp", BitmapFile(1, 2, 8, [](int, int y) { return y == 0 ? 17u : 200u; }), {0xC8C8C8},
           {0x111111});
    // Five bits each of red, green and blue; the brightest are 255.
    expect(L"16.bmp", BitmapFile(1, 2, 16, [](int, int y) { return y == 0 ? 0x7C1Fu : 0x03E0u; }), {0x00FF00},
           {0xFF00FF});
    expect(L"24.bmp",
           BitmapFile(2, 2, 24,
                      [](int x, int y) { return y == 0   ? 0x123456u
                                                : x == 0 ? 0x0000FFu
                                                         : 0xFF0000u; }),
           {0x0000FF, 0xFF0000}, {0x123456, 0x123456});
    expect(L"32.bmp", BitmapFile(1, 2, 32, [](int, int y) { return y == 0 ? 0xAB123456u : 0x00FEDCBAu; }),
           {0xFEDCBA}, {0x123456});
}

// A picture of each depth, stretched without averaging to the frame as it stands in the page. What it is
// converted to is in the file beside it.
TEST_F(LogoGroupTest, StretchesAPictureOverTheWholeFrame) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    int shown = 0;
    for (const preview::Size size : {preview::Size{61, 43}, preview::Size{400, 300}, preview::Size{3, 200}}) {
        for (const unsigned bits : {1u, 8u, 24u}) {
            const Path path = AddFile(page, L"x.bmp", MixedFile(size.width, size.height, bits));
            for (const int type : kTypes) {
                Press(page, type);
                const bool isConverted = page.IsEnabled(kContrast);
                for (const int halftone : kHalftones) {
                    if (halftone != kNone && !page.IsEnabled(halftone)) {
                        continue;
                    }
                    SCOPED_TRACE(testing::Message() << bits << " bits, " << type << ", " << halftone);
                    Smear(page);
                    lone->Use(halftone);
                    Paint(page);
                    const Bytes file = BytesOf(isConverted ? ConvertedOf(path) : path);
                    if (isConverted) {
                        EXPECT_EQ(At<WORD>(file, 28), type == kMono ? 1 : 8);
                    }
                    ExpectShows(page, Stretched(Decoded(file), FrameSize(page)));
                    ++shown;
                }
            }
            Press(page, kDelete);
        }
    }
    EXPECT_EQ(shown, 3 * (3 + 2 * (1 + 4 + 1)));
    // In a frame that is larger than it was.
    const Bytes file = MixedFile(40, 30, 24);
    AddFile(page, L"x.bmp", file);
    Press(page, kOriginal);
    Resize(*lone, {300, 150});
    ExpectShows(page, Stretched(Decoded(file), {300, 150}));
}

// Each repaint reads and converts the file anew.
TEST_F(LogoGroupTest, FollowsTheFile) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    Resize(*lone, {120, 40});
    const Path path = AddFile(page, L"x.bmp", Flat(3, 1, 24, 0x102030));
    ExpectBlocks(page, {0x102030, 0x102030, 0x102030});
    Write(L"x.bmp", Flat(3, 1, 24, 0xFFFFFF));
    Paint(page);
    ExpectBlocks(page, {0xFFFFFF, 0xFFFFFF, 0xFFFFFF});
    Press(page, kGrey);
    written_.clear();
    Write(L"x.bmp", Flat(3, 1, 8, 5));
    Paint(page);
    ExpectBlocks(page, {0x050505, 0x050505, 0x050505});
    Paint(page);
    EXPECT_THAT(written_, ElementsAre(L"xTemp.bmp", L"xTemp.bmp"));
    // Another depth than it had, then not even a bitmap, then nothing at all, and back.
    Write(L"x.bmp", Flat(3, 1, 4, 15));
    Paint(page);
    ExpectShows(page, Paper(page));
    ExpectEnabled(page, true, false, false);
    for (const int type : kTypes) {
        Press(page, type);
        for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{20}}) {
            Write(L"x.bmp", Front(3, 1, length));
            Smear(page);
            Paint(page);
            ExpectShows(page, Paper(page));
        }
        std::filesystem::remove(path);
        Smear(page);
        Paint(page);
        ExpectShows(page, Paper(page));
        ExpectEnabled(page, true, false, false);
    }
    Write(L"x.bmp", Flat(3, 1, 24, 0x808080));
    Paint(page);
    ExpectBlocks(page, {0x808080, 0x808080, 0x808080});
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(page.RowCount(kList), 1);
}

// Pixels that a file lacks are black; what could not be a logo at all shows nothing.
TEST_F(LogoGroupTest, ShowsWhatThereIsOfADamagedFile) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    Resize(*lone, {120, 40});
    Bytes file = Flat(4, 2, 24, 0xFFFFFF);
    file.resize(file.size() - 12);
    const Path path = AddFile(page, L"x.bmp", file);
    Picture halves(FrameSize(page));
    halves.Fill({0, 0, 120, 20}, 0);
    for (const int type : kTypes) {
        Press(page, type);
        if (type == kMono) {
            // White is above the mean of white and black.
            Press(page, kNone);
        }
        ExpectShows(page, halves);
    }
    const auto expect_nothing = [&](const std::function<void(Bytes&)>& spoil) {
        Bytes spoilt = Flat(4, 2, 24, 0xFFFFFF);
        spoil(spoilt);
        rig::WriteBytes(path, spoilt);
        for (const int type : kTypes) {
            Press(page, type);
            Smear(page);
            Paint(page);
            ExpectShows(page, Paper(page));
        }
    };
    expect_nothing([](Bytes& bytes) { bytes[30] = 1; });                    // compressed
    expect_nothing([](Bytes& bytes) { bytes[30] = 3; });                    // and with masks
    expect_nothing([](Bytes& bytes) { bytes[18] = 0; });                    // no width
    expect_nothing([](Bytes& bytes) { bytes[22] = 0; });                    // no rows
    expect_nothing([](Bytes& bytes) { bytes[21] = 0x80; });                 // a negative width
    expect_nothing([](Bytes& bytes) { bytes[20] = bytes[21] = 0x7F; });     // a huge one
    expect_nothing([](Bytes& bytes) { bytes[24] = bytes[25] = 0x7F; });     // a huge height
    expect_nothing([](Bytes& bytes) { bytes[22] = 0, bytes[25] = 0x80; });  // the lowest number
    expect_nothing([](Bytes& bytes) { bytes[1] = 'A'; });                   // another type
}

// Brush value 15 under it, and one blit into the frame: nothing flickers.
TEST_F(LogoGroupTest, DrawsIntoTheFrameOnce) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"x.bmp", MixedFile(40, 30, 24));
    watched_frame_ = page.Control(kFrame);
    for (const int type : kTypes) {
        Press(page, type);
        frame_calls_.clear();
        brushes_.clear();
        Paint(page);
        EXPECT_THAT(frame_calls_, ElementsAre("BitBlt"));
        EXPECT_THAT(brushes_, ElementsAre(15u));
        // Uncovered, it comes back as it was, from memory.
        const Picture before = Shown(page);
        written_.clear();
        Smear(page);
        InvalidateRect(watched_frame_, nullptr, TRUE);
        UpdateWindow(watched_frame_);
        ExpectShows(page, before);
        EXPECT_THAT(frame_calls_, ElementsAre("BitBlt", "BitBlt"));
        EXPECT_THAT(written_, IsEmpty());
    }
    Select(page, -1);
    frame_calls_.clear();
    Smear(page);
    Paint(page);
    ExpectShows(page, Background(page));
    EXPECT_THAT(frame_calls_, ElementsAre("FillRect"));
}

TEST_F(LogoGroupTest, TheSheetShowsThePreview) {
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        const Path path = AddFile(page, L"x.bmp", MixedFile(40, 30, 24));
        page.Click(kMono);
        ui.WaitUntil([&] { return page.IsEnabled(kDiffuse); }, "the radio buttons");
        page.Click(kDiffuse);
        Settle(page);
        const Picture expected = [&] {
            Repaint(page);
            return Stretched(Decoded(BytesOf(ConvertedOf(path))), FrameSize(page));
        }();
        ExpectShows(page, expected);
        // Another page in between.
        SelectPage(sheet, kFontTab);
        SelectPage(sheet, kDownloadTab);
        Repaint(page);
        ExpectShows(page, expected);
        EXPECT_EQ(Selected(page), 0);
        ExpectSettings(page, kDiffuse, 0, 0);
    });
}

TEST_F(LogoGroupTest, OutlivesDrawingThatFails) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"x.bmp", MixedFile(40, 30, 24));
    Press(page, kGrey);
    const Picture right = Shown(page);
    for (const char* const function :
         {"GetDC", "CreateCompatibleDC", "CreateCompatibleBitmap", "StretchDIBits", "BitBlt"}) {
        SCOPED_TRACE(function);
        // Another area asks for another bitmap.
        Resize(*lone, {100, 30});
        refused_ = function;
        Resize(*lone, {120, 40});
        Paint(page);
        refused_.clear();
        Paint(page);
        ExpectShows(page, Stretched(Decoded(BytesOf(folder_ / L"xTemp.bmp")), {120, 40}));
    }
    Resize(*lone, right.size);
    ExpectShows(page, right);
}

TEST_F(LogoGroupTest, GivesBackWhatItTakes) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    constexpr int kFiles = 3;
    for (int i = 0; i < kFiles; ++i) {
        AddFile(page, std::to_wstring(i) + L".bmp", MixedFile(24, 20, i == 0 ? 24 : i == 1 ? 8 : 1));
    }
    // A change of type converts every row.
    const auto use = [&](int times) {
        for (int i = 0; i < times; ++i) {
            if (i % 10 == 0) {
                lone->Use(kTypes[i / 10 % 3]);
            }
            Select(page, i % kFiles);
        }
    };
    use(30);
    const long blocks = blocks_;
    const std::size_t live = live_.size();
    const int handles = rig::CountHandles();
    use(990);
    EXPECT_EQ(blocks_, blocks);
    EXPECT_EQ(live_.size(), live);
    EXPECT_EQ(rig::CountHandles(), handles);
    const long with_rows = blocks_;
    for (int i = 0; i < 20; ++i) {
        AddFile(page, L"x.bmp", MixedFile(24, 20, 24));
        Press(page, kDelete);
    }
    EXPECT_LE(blocks_, with_rows + 2);
    EXPECT_EQ(rig::CountHandles(), handles);
}

TEST_F(LogoGroupTest, APageGivesBackEverything) {
    const auto use = [&] {
        const auto lone = MakePage();
        AddFile(lone->Page(), L"x.bmp", MixedFile(24, 20, 24));
        Press(lone->Page(), kMono);
    };
    use();
    const long blocks = blocks_;
    const int handles = rig::CountHandles();
    for (int i = 0; i < 5; ++i) {
        use();
    }
    EXPECT_EQ(blocks_, blocks);
    EXPECT_EQ(rig::CountHandles(), handles);
    EXPECT_THAT(live_, IsEmpty());
}

// Its procedure

// A host may close its sheet under an open dialog, a message or a job.
TEST_F(LogoGroupTest, MayGoAtAnyMoment) {
    const Path path = Write(L"x.bmp", MixedFile(24, 20, 24));
    const Path wide = Write(L"wide.bmp", Flat(1025, 1, 24, 0));
    const auto press = [](const LonePrinterPage& lone, int button) {
        SendDlgItemMessageW(lone.handle(), button, BM_CLICK, 0, 0);
        EXPECT_FALSE(IsWindow(lone.handle()));
    };
    for (const Path& chosen : {path, wide, folder_ / L"missing.bmp"}) {
        const auto lone = MakePage();
        choose_ = [&](OPENFILENAMEW& dialog) -> BOOL {
            lone->Unmake();
            const std::wstring text = chosen.wstring();
            text.copy(dialog.lpstrFile, text.size());
            return TRUE;
        };
        press(*lone, kAdd);
    }
    boxes_.clear();
    {
        const auto lone = MakePage();
        on_box_ = [&] { lone->Unmake(); };
        Choose(wide);
        press(*lone, kAdd);
        EXPECT_EQ(boxes_.size(), 1u);
    }
    {
        const auto lone = MakePage();
        on_box_ = [&] { lone->Unmake(); };
        press(*lone, kDownload);
        EXPECT_EQ(boxes_.size(), 2u);
    }
    {
        const auto lone = MakePage();
        on_box_ = nullptr;
        for (int i = 0; i < 9; ++i) {
            Add(lone->Page(), path);
        }
        on_box_ = [&] { lone->Unmake(); };
        press(*lone, kAdd);
        EXPECT_EQ(boxes_.size(), 3u);
    }
    on_box_ = nullptr;
    for (const int button : {kDownload, kClear}) {
        const auto lone = MakePage();
        Add(lone->Page(), path);
        Add(lone->Page(), path);
        Press(lone->Page(), kMono);
        const std::size_t jobs = printer().Jobs().size();
        printer().before_call = [&](const char*) {
            lone->Unmake();
            // What the page had is somebody else's now.
            std::vector<Bytes> others(64, Bytes(64, 0xDD));
        };
        press(*lone, button);
        printer().before_call = nullptr;
        ASSERT_EQ(printer().Jobs().size(), jobs + 1);
        EXPECT_TRUE(printer().Jobs().back().printed);
        // Two logos of 32 x 24 dots with their sizes, between 10 and 5 bytes.
        EXPECT_EQ(printer().Jobs().back().bytes.size(), button == kDownload ? 7u + 2 * (4 + 96) + 5 : 13u);
    }
    {
        const auto lone = MakePage();
        Add(lone->Page(), path);
        Press(lone->Page(), kGrey);
        lone->sheet.on_message = [&](UINT) { lone->Unmake(); };
        SendDlgItemMessageW(lone->handle(), kContrast, TBM_SETPOS, TRUE, 5);
        NMHDR released = {GetDlgItem(lone->handle(), kContrast), kContrast,
                          static_cast<UINT>(NM_RELEASEDCAPTURE)};
        SendMessageW(lone->handle(), WM_NOTIFY, kContrast, reinterpret_cast<LPARAM>(&released));
        EXPECT_FALSE(IsWindow(lone->handle()));
    }
    EXPECT_EQ(boxes_.size(), 3u);
}

// More may be added while one dialog is open.
TEST_F(LogoGroupTest, StaysAtNineWhenTwoDialogsAreOpen) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const Path path = Write(L"x.bmp", Flat(16, 1, 24, 0x808080));
    for (int i = 0; i < 8; ++i) {
        Add(page, path);
    }
    int depth = 0;
    choose_ = [&](OPENFILENAMEW& dialog) -> BOOL {
        if (++depth == 1) {
            lone->Use(kAdd);
        }
        const std::wstring text = path.wstring();
        text.copy(dialog.lpstrFile, text.size());
        dialog.lpstrFile[text.size()] = L'\0';
        return TRUE;
    };
    lone->Use(kAdd);
    EXPECT_EQ(depth, 2);
    EXPECT_EQ(page.RowCount(kList), 9);
}

TEST_F(LogoGroupTest, TakesForeignAndMissingParameters) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"x.bmp", Flat(16, 1, 24, 0x808080));
    Press(page, kGrey);
    lone->sheet.messages.clear();
    written_.clear();
    for (const UINT message :
         {UINT{WM_NOTIFY}, UINT{WM_DRAWITEM}, UINT{WM_HSCROLL}, UINT{WM_COMMAND}, UINT{WM_VSCROLL}}) {
        for (const WPARAM wparam : {WPARAM{0}, static_cast<WPARAM>(-1), WPARAM{TB_ENDTRACK}}) {
            lone->Ask(page.handle(), message, wparam, 0);
        }
    }
    EXPECT_EQ(lone->Ask(page.handle(), WM_DRAWITEM, 0, 0), FALSE);
    // A scroll bar that is none of the sliders, and a window that is none.
    for (const HWND window : {page.Control(kAdd), page.handle(), reinterpret_cast<HWND>(0x7777)}) {
        lone->Ask(page.handle(), WM_HSCROLL, TB_ENDTRACK, reinterpret_cast<LPARAM>(window));
    }
    DRAWITEMSTRUCT item = {};
    item.CtlID = kAdd;
    EXPECT_EQ(lone->Ask(page.handle(), WM_DRAWITEM, kAdd, reinterpret_cast<LPARAM>(&item)), FALSE);
    item.CtlID = kFrame;
    EXPECT_EQ(lone->Ask(page.handle(), WM_DRAWITEM, kFrame, reinterpret_cast<LPARAM>(&item)), TRUE);
    // Notifications of others, by their number or their sender.
    for (const int control : {kAdd, kContrastValue, kFrame, 0}) {
        NMLISTVIEW change = {};
        change.hdr = {page.Control(kAdd), static_cast<UINT_PTR>(control),
                      static_cast<UINT>(NM_RELEASEDCAPTURE)};
        EXPECT_EQ(lone->Ask(page.handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&change)), FALSE);
        change.hdr.code = static_cast<UINT>(LVN_ITEMCHANGED);
        change.uNewState = LVIS_SELECTED;
        EXPECT_EQ(lone->Ask(page.handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&change)), FALSE);
    }
    // As short as it may be, from somebody who is not the list.
    NMHDR bare = {page.handle(), kList, static_cast<UINT>(LVN_ITEMCHANGED)};
    EXPECT_EQ(lone->Ask(page.handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&bare)), FALSE);
    for (const int notification : {BN_SETFOCUS, BN_KILLFOCUS, BN_DBLCLK, 0x300}) {
        for (const int control : {kAdd, kDelete, kDownload, kClear, kMono, kDiffuse}) {
            EXPECT_EQ(lone->Use(control, notification), FALSE);
        }
    }
    EXPECT_THAT(lone->sheet.messages, IsEmpty());
    EXPECT_EQ(page.RowCount(kList), 1);
    EXPECT_THAT(printer().Jobs(), IsEmpty());
}

TEST_F(LogoGroupTest, MayBeInitialisedTwice) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const Path path = AddFile(page, L"x.bmp", Flat(16, 1, 24, 0x808080));
    EXPECT_EQ(lone->Ask(lone->handle(), WM_INITDIALOG, 0, lone->Description()), FALSE);
    EXPECT_THAT(Rows(page), ElementsAre(RowOf(1, path)));
    EXPECT_EQ(page.Send(kList, LVM_GETCOLUMNWIDTH, 3), 0) << "three columns";
    Press(page, kDelete);
    EXPECT_THAT(Rows(page), IsEmpty());
}

TEST_F(LogoGroupTest, TwoSheetsKeepToTheirOwn) {
    const auto one = MakePage();
    const auto two = MakePage();
    const Path first = AddFile(one->Page(), L"one.bmp", MixedFile(16, 9, 24));
    const Path second = AddFile(two->Page(), L"two.bmp", MixedFile(16, 9, 8));
    Press(one->Page(), kGrey);
    Press(two->Page(), kMono);
    Press(two->Page(), kDitherM4);
    SetTone(one->Page(), kContrast, 30);
    AddFile(two->Page(), L"three.bmp", MixedFile(16, 9, 1));
    EXPECT_THAT(Rows(one->Page()), ElementsAre(RowOf(1, first)));
    EXPECT_THAT(Rows(two->Page()), ElementsAre(RowOf(1, second), RowOf(2, folder_ / L"three.bmp")));
    Select(two->Page(), 0);
    ExpectSettings(one->Page(), kNone, 30, 0);
    ExpectSettings(two->Page(), kDitherM4, 0, 0);
    Paint(one->Page());
    ExpectShows(one->Page(), Stretched(Decoded(BytesOf(ConvertedOf(first))), FrameSize(one->Page())));
    ExpectShows(two->Page(), Stretched(Decoded(BytesOf(ConvertedOf(second))), FrameSize(two->Page())));
    one->Unmake();
    Press(two->Page(), kDelete);
    EXPECT_EQ(two->Page().RowCount(kList), 1);
}

// What is set is converted at once, not only when it is painted.
TEST_F(LogoGroupTest, ASettingCountsBeforeThePageIsPainted) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x828282));
    AddFile(page, L"1.bmp", Flat(16, 1, 24, 0x828282));
    Press(page, kGrey);
    Select(page, 0);
    page.Send(kBrightness, TBM_SETPOS, TRUE, 20);
    NMHDR released = {page.Control(kBrightness), static_cast<UINT_PTR>(kBrightness),
                      static_cast<UINT>(NM_RELEASEDCAPTURE)};
    lone->Ask(page.handle(), WM_NOTIFY, static_cast<WPARAM>(kBrightness),
              reinterpret_cast<LPARAM>(&released));
    EXPECT_EQ(BytesOf(folder_ / L"0Temp.bmp").at(1078), 0x82 + 20);
    LVITEMW item = {};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = item.stateMask;
    page.Send(kList, LVM_SETITEMSTATE, 1, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(BytesOf(folder_ / L"0Temp.bmp").at(1078), 0x82 + 20);
}

// A grey file of 121 KB must not count for a logo of 15 KB that is sent as it is.
TEST_F(LogoGroupTest, AFileOfAnotherTypeGoes) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const Path path = AddFile(page, L"0.bmp", MixedFile(600, 200, 1));
    for (const int type : {kMono, kOriginal}) {
        Press(page, kGrey);
        EXPECT_TRUE(std::filesystem::exists(ConvertedOf(path)));
        Press(page, type);
        EXPECT_FALSE(std::filesystem::exists(ConvertedOf(path)));
    }
}

// But one that was there before the logo was is its owner's.
TEST_F(LogoGroupTest, AFileThatWasThereBeforeStays) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    Write(L"0Temp.bmp", Bytes{1, 2, 3});
    AddFile(page, L"0.bmp", MixedFile(16, 2, 1));
    Press(page, kMono);
    EXPECT_EQ(BytesOf(folder_ / L"0Temp.bmp"), (Bytes{1, 2, 3}));
}

TEST_F(LogoGroupTest, DeleteLeavesTheFilesOfOtherRows) {
    const auto lone = MakePage();
    const Window page = lone->Page();
    const Path first = AddFile(page, L"0.bmp", Flat(16, 1, 24, 0x828282));
    const Path itsConverted = ConvertedOf(first);
    Press(page, kGrey);
    Add(page, first);
    SetTone(page, kBrightness, 20);
    Add(page, itsConverted);
    Select(page, 1);
    page.Click(kDelete);
    EXPECT_TRUE(std::filesystem::exists(itsConverted)) << "another row's source";
    EXPECT_EQ(BytesOf(itsConverted).at(1078), 0x82) << "with the settings of the row that is left";
    Select(page, 1);
    page.Click(kDelete);
    Select(page, 0);
    page.Click(kDelete);
    EXPECT_FALSE(std::filesystem::exists(itsConverted));
    EXPECT_TRUE(std::filesystem::exists(first));
}

// Takes a page away when a message of its sheet or its controls is about to be heard.
class Destroyer {
  public:
    Destroyer(LonePrinterPage& page, UINT message)
        : hook_(SetWindowsHookExW(WH_CALLWNDPROC, &Heard, nullptr, GetCurrentThreadId())) {
        page_ = &page;
        message_ = message;
    }
    Destroyer(const Destroyer&) = delete;
    Destroyer& operator=(const Destroyer&) = delete;
    ~Destroyer() { UnhookWindowsHookEx(hook_); }

    bool HasStruck() const { return page_ == nullptr; }

  private:
    static LRESULT CALLBACK Heard(int code, WPARAM wparam, LPARAM lparam) {
        const auto& heard = *reinterpret_cast<const CWPSTRUCT*>(lparam);
        if (code == HC_ACTION && page_ != nullptr && heard.message == message_ &&
            (heard.hwnd == page_->sheet.handle || IsChild(page_->handle(), heard.hwnd))) {
            std::exchange(page_, nullptr)->Unmake();
        }
        return CallNextHookEx(nullptr, code, wparam, lparam);
    }

    static inline LonePrinterPage* page_ = nullptr;
    static inline UINT message_ = 0;
    const HHOOK hook_;
};

// Others hear what the page sends, and may close the sheet then.
TEST_F(LogoGroupTest, ThePageMayGoInAnyMessage) {
    const Path path = Write(L"0.bmp", Flat(16, 1, 24, 0x808080));
    const auto add = [&](LonePrinterPage& lone) {
        choose_ = [text = path.wstring()](OPENFILENAMEW& dialog) -> BOOL {
            text.copy(dialog.lpstrFile, dialog.nMaxFile);
            return TRUE;
        };
        lone.Use(kAdd);
    };
    const auto release = [](LonePrinterPage& lone) {
        SendDlgItemMessageW(lone.handle(), kBrightness, TBM_SETPOS, TRUE, 20);
        lone.Ask(lone.handle(), WM_HSCROLL, TB_ENDTRACK,
                 reinterpret_cast<LPARAM>(GetDlgItem(lone.handle(), kBrightness)));
    };
    const auto repaint = [](LonePrinterPage& lone) {
        RedrawWindow(lone.handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_NOCHILDREN | RDW_UPDATENOW);
    };
    // With the keyboard on a setting that the type now chosen switches off.
    const auto choose_original = [](LonePrinterPage& lone) {
        SetFocus(GetDlgItem(lone.handle(), kDiffuse));
        CheckRadioButton(lone.handle(), kOriginal, kGrey, kOriginal);
        lone.Ask(lone.handle(), WM_COMMAND, MAKEWPARAM(kOriginal, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(lone.handle(), kOriginal)));
        EXPECT_EQ(GetFocus(), GetDlgItem(lone.handle(), kDiffuse));
    };
    const struct {
        UINT message;
        std::function<void(LonePrinterPage&)> prepare;
        std::function<void(LonePrinterPage&)> act;
    } kCases[] = {{LVM_INSERTITEMW, add, add},
                  {LVM_SETITEMTEXTW, add, add},
                  {PSM_CHANGED, add, release},
                  {WM_KILLFOCUS, choose_original, repaint}};
    for (const auto& the_case : kCases) {
        const auto lone = MakePage();
        add(*lone);
        lone->Use(kMono);
        repaint(*lone);
        the_case.prepare(*lone);
        keeps_freed_ = true;
        const Destroyer destroyer(*lone, the_case.message);
        the_case.act(*lone);
        keeps_freed_ = false;
        EXPECT_TRUE(destroyer.HasStruck()) << the_case.message;
        EXPECT_TRUE(std::ranges::all_of(freed_, &IsSpoilt)) << the_case.message;
        std::ranges::for_each(std::exchange(freed_, {}), &std::free);
        EXPECT_FALSE(IsWindow(lone->handle()));
    }
}

}  // namespace
}  // namespace pages
