// What the tests of the Water Mark page's preview share: the frame's pixels, pictures and bitmap files made
// by hand, and the page with its file calls, messages and drawing objects watched.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "page_fixture.h"
#include "resources/resource.h"
#include "rig/environment.h"
#include "rig/import_hooks.h"

namespace pages::preview {

using Path = std::filesystem::path;
using Texts = std::vector<std::wstring>;

constexpr std::uint8_t kNone = 0;
constexpr std::uint8_t kImage = 1;
constexpr std::uint8_t kText = 2;

constexpr int kTiled = 9;

// Pictures: red, green, blue from the highest byte down, rows from the top

constexpr std::uint32_t kWhite = 0xFFFFFF;

struct Size {
    int width;
    int height;
    bool operator==(const Size&) const = default;
};

struct Box {
    int left;
    int top;
    int width;
    int height;
};

struct Picture {
    explicit Picture(Size area, std::uint32_t colour = kWhite)
        : size(area),
          pixels(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height), colour) {}

    std::uint32_t& At(int x, int y) {
        return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) +
                         static_cast<std::size_t>(x));
    }
    std::uint32_t At(int x, int y) const { return const_cast<Picture*>(this)->At(x, y); }
    void Fill(Box box, std::uint32_t colour) {
        for (int y = box.top; y < box.top + box.height; ++y) {
            for (int x = box.left; x < box.left + box.width; ++x) {
                At(x, y) = colour;
            }
        }
    }
    // The first `rows` rows of an image, each of its pixels as a block; the box is a multiple of them.
    void Fill(Box box, const Picture& image, int rows) {
        ASSERT_EQ(box.width % image.size.width, 0);
        ASSERT_EQ(box.height % rows, 0);
        const int width = box.width / image.size.width;
        const int height = box.height / rows;
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < image.size.width; ++x) {
                Fill({box.left + x * width, box.top + y * height, width, height}, image.At(x, y));
            }
        }
    }

    Size size;
    std::vector<std::uint32_t> pixels;
};

// Empty when they are the same.
inline std::string Difference(const Picture& expected, const Picture& shown) {
    if (expected.size != shown.size) {
        return "the sizes differ";
    }
    std::string first;
    int count = 0;
    for (int y = 0; y < expected.size.height; ++y) {
        for (int x = 0; x < expected.size.width; ++x) {
            if (expected.At(x, y) != shown.At(x, y) && ++count == 1) {
                char line[64] = {};
                std::snprintf(line, sizeof line, "(%d, %d): %06X instead of %06X", x, y,
                              static_cast<unsigned>(shown.At(x, y)),
                              static_cast<unsigned>(expected.At(x, y)));
                first = line;
            }
        }
    }
    return count == 0 ? "" : first + " and " + std::to_string(count - 1) + " more";
}

inline bool IsWhite(const Picture& picture) {
    return std::all_of(picture.pixels.begin(), picture.pixels.end(),
                       [](std::uint32_t pixel) { return pixel == kWhite; });
}

// What `draw` draws into a bitmap.
inline Picture Drawn(Size size, const std::function<void(HDC)>& draw) {
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size.width;
    info.bmiHeader.biHeight = -size.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HDC target = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateDIBSection(target, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ previous = SelectObject(target, bitmap);
    draw(target);
    GdiFlush();
    Picture picture(size);
    std::transform(static_cast<const std::uint32_t*>(bits),
                   static_cast<const std::uint32_t*>(bits) + picture.pixels.size(), picture.pixels.begin(),
                   [](std::uint32_t pixel) { return pixel & 0xFFFFFF; });
    SelectObject(target, previous);
    DeleteObject(bitmap);
    DeleteDC(target);
    return picture;
}

inline std::uint32_t Raised(std::uint32_t pixel, unsigned by) {
    std::uint32_t raised = 0;
    for (const unsigned shift : {0u, 8u, 16u}) {
        raised |= std::min((pixel >> shift & 0xFF) + by, 255u) << shift;
    }
    return raised;
}

// Bitmap files

inline void Put16(Bytes& bytes, std::size_t at, unsigned value) {
    bytes.at(at) = static_cast<std::uint8_t>(value & 0xFF);
    bytes.at(at + 1) = static_cast<std::uint8_t>(value >> 8 & 0xFF);
}

inline void Put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
    Put16(bytes, at, value & 0xFFFF);
    Put16(bytes, at + 2, value >> 16);
}

constexpr std::size_t kWidthAt = 18;
constexpr std::size_t kHeightAt = 22;

// Headers, a palette of `colours` entries and rows of zeros.
inline Bytes EmptyFile(int width, int height, unsigned bits, unsigned colours) {
    const std::size_t stride = (static_cast<std::size_t>(width) * bits + 31) / 32 * 4;
    const std::size_t offset = 54 + std::size_t{colours} * 4;
    Bytes file(offset + stride * static_cast<std::size_t>(height));
    file[0] = 'B';
    file[1] = 'M';
    Put32(file, 2, static_cast<std::uint32_t>(file.size()));
    Put32(file, 10, static_cast<std::uint32_t>(offset));
    Put32(file, 14, 40);
    Put32(file, kWidthAt, static_cast<std::uint32_t>(width));
    Put32(file, kHeightAt, static_cast<std::uint32_t>(height));
    Put16(file, 26, 1);
    Put16(file, 28, bits);
    return file;
}

inline void PutColour(Bytes& file, std::size_t at, std::uint32_t colour) {
    for (std::size_t i = 0; i < 3; ++i) {
        file.at(at + i) = static_cast<std::uint8_t>(colour >> 8 * i & 0xFF);
    }
}

inline Bytes FileOf(const Picture& picture) {
    const auto [width, height] = picture.size;
    Bytes file = EmptyFile(width, height, 24, 0);
    const auto stride = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            PutColour(
                file,
                54 + static_cast<std::size_t>(height - 1 - y) * stride + static_cast<std::size_t>(x) * 3,
                picture.At(x, y));
        }
    }
    return file;
}

// One colour in 8 bits: as the palette has it.
inline Bytes PlainFile8(int width, int height, std::uint32_t colour) {
    Bytes file = EmptyFile(width, height, 8, 256);
    PutColour(file, 54, colour);
    return file;
}

// Twelve pixels of twelve colours.
inline Picture Image4x3() {
    Picture image({4, 3});
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        image.pixels[i] = static_cast<std::uint32_t>(0x10C020 + i * 0x0B0507);
    }
    return image;
}

struct Said {
    std::wstring text;
    std::wstring title;
    UINT icon;
    bool operator==(const Said&) const = default;
};
inline void PrintTo(const Said& said, std::ostream* out) {
    *out << testing::PrintToString(said.text);
}

inline Said Error(const wchar_t* text) {
    return {text, L"Error", MB_ICONERROR};
}

class WaterMarkTest : public PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        wchar_t folder[MAX_PATH + 1] = {};
        ASSERT_NE(GetTempPathW(static_cast<DWORD>(std::size(folder)), folder), 0u);
        usersTemporaryFolder_ = folder;
        RemoveFiles();
        ASSERT_TRUE(std::filesystem::create_directories(temporaryFolder_));
        SetEnvironmentVariableW(L"TMP", temporaryFolder_.c_str());
        HookMessagesAndDialogs();
        HookFiles();
        HookDrawing();
        OEMDEV& record = StartHost().record();
        ASSERT_EQ(hooks_.Bound("MessageBoxW"), 1);
        ASSERT_EQ(hooks_.Bound("LoadImageW"), 1);
        record.bPrintAsImage = 1;
        record.iWaterMarkType = kImage;
        record.iWaterMarkPosition = 0;
        record.iWaterMarkSize = 100;
        record.iWaterMarkBrightness = 0;
    }

    void TearDown() override {
        PageTest::TearDown();
        EXPECT_THAT(live_, testing::IsEmpty())
            << "device contexts, bitmaps, fonts or files were not given back";
        SetEnvironmentVariableW(L"TMP", usersTemporaryFolder_.c_str());
        RemoveFiles();
    }

    // Opens the sheet on the page. What the script leaves open is cancelled.
    void OnPage(const std::function<void(const Window& page)>& script) {
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            const Window page = sheet.SelectTab(L"Water Mark");
            // The first paint comes when the sheet has nothing else to do.
            Repaint(page);
            script(page);
            if (sheet.IsOpen()) {
                sheet.PressCancel();
            }
        });
    }

    OEMDEV& Stored() { return Host().record(); }

    Path Write(const wchar_t* name, const Bytes& bytes) {
        rig::WriteBytes(folder_ / name, bytes);
        return folder_ / name;
    }

    void Store(const Path& file) { CopyInto(Stored().WaterMarkPicName, file.wstring()); }
    template <std::size_t N>
    static void CopyInto(wchar_t (&field)[N], const std::wstring& text) {
        ASSERT_LT(text.size(), N);
        std::fill(std::copy(text.begin(), text.end(), field), std::end(field), L'\0');
    }

    // Two ways in which the user has a bitmap read.
    void ChooseImage(const Window& page, const Path& stored) {
        Store(stored);
        page.Click(IDC_WATERMARK_USE_IMAGE);
    }
    void Browse(const Window& page, const Path& file) {
        chosen_ = file;
        page.Click(IDC_WATERMARK_BROWSE);
    }

    static void SelectPosition(const Window& page, int position) {
        page.SelectCombo(IDC_WATERMARK_POSITION, position);
    }

    static Size FrameSize(const Window& page) {
        RECT area = {};
        GetClientRect(page.Control(IDC_WATERMARK_PREVIEW), &area);
        return {area.right, area.bottom};
    }

    static Picture Shown(const Window& page) {
        const HWND frame = page.Control(IDC_WATERMARK_PREVIEW);
        const HDC source = GetDC(frame);
        const Size size = FrameSize(page);
        Picture picture = Drawn(size, [&](HDC target) {
            EXPECT_TRUE(BitBlt(target, 0, 0, size.width, size.height, source, 0, 0, SRCCOPY));
        });
        ReleaseDC(frame, source);
        return picture;
    }

    // Gives the frame a client area, beside the other controls and with room around it.
    static void Resize(const Window& page, Size size) {
        constexpr UINT kFlags = SWP_NOZORDER | SWP_NOACTIVATE;
        const HWND frame = page.Control(IDC_WATERMARK_PREVIEW);
        RECT outer = {};
        GetWindowRect(frame, &outer);
        const Size inner = FrameSize(page);
        SetWindowPos(GetAncestor(page.handle(), GA_ROOT), nullptr, 0, 0, 1000, 700, kFlags);
        SetWindowPos(page.handle(), nullptr, 0, 0, 980, 660, kFlags | SWP_NOMOVE);
        SetWindowPos(frame, nullptr, 450, 10, size.width + outer.right - outer.left - inner.width,
                     size.height + outer.bottom - outer.top - inner.height, kFlags);
        ASSERT_EQ(FrameSize(page), size);
        Repaint(page);
    }

    // As when another window has wiped the picture.
    static void Smear(const Window& page) {
        const HWND frame = page.Control(IDC_WATERMARK_PREVIEW);
        const HDC target = GetDC(frame);
        const Size size = FrameSize(page);
        const RECT area = {0, 0, size.width, size.height};
        const HBRUSH brush = CreateSolidBrush(RGB(255, 0, 255));
        FillRect(target, &area, brush);
        DeleteObject(brush);
        ReleaseDC(frame, target);
        EXPECT_EQ(Difference(Picture(size, 0xFF00FF), Shown(page)), "");
    }

    static void Paint(const Window& page) { SendMessageW(page.handle(), WM_PAINT, 0, 0); }

    static void ExpectShows(const Window& page, const Picture& expected) {
        EXPECT_EQ(Difference(expected, Shown(page)), "");
    }
    static void ExpectWhite(const Window& page) { EXPECT_TRUE(IsWhite(Shown(page))); }
    // One image, of one colour, in a box of the frame.
    static void ExpectBox(const Window& page, Box box, std::uint32_t colour) {
        Picture expected(FrameSize(page));
        expected.Fill(box, colour);
        ExpectShows(page, expected);
    }

    void ExpectSaid(std::initializer_list<const wchar_t*> errors) {
        std::vector<Said> expected;
        std::transform(errors.begin(), errors.end(), std::back_inserter(expected), Error);
        EXPECT_THAT(said_, testing::ElementsAreArray(expected));
        said_.clear();
    }

    // Has each drawing call of these functions fail once: the frame is white then, and right after the next
    // repaint. `check` looks at more, both times.
    void ExpectOutlivesFailures(const Window& page, std::initializer_list<const char*> functions,
                                const std::function<void(bool isRight)>& check) {
        constexpr std::uint8_t kBrightness = 7;
        Stored().iWaterMarkBrightness = kBrightness;
        Paint(page);
        const Picture right = Shown(page);
        ASSERT_FALSE(IsWhite(right));
        for (const char* const function : functions) {
            for (int call = 1;; ++call) {
                SCOPED_TRACE(testing::Message() << function << ", call " << call);
                // Something else, so that it is drawn anew.
                Stored().iWaterMarkBrightness = 0;
                Paint(page);
                Stored().iWaterMarkBrightness = kBrightness;
                Smear(page);
                for (const Path& file : TemporaryFiles()) {
                    std::filesystem::remove(file);
                }
                refused_ = function;
                callsToRefusal_ = call;
                Paint(page);
                refused_.clear();
                if (callsToRefusal_ > 0) {
                    EXPECT_GT(call, 1) << "it is not called";
                    ExpectShows(page, right);
                    break;
                }
                ExpectWhite(page);
                check(false);
                Paint(page);
                ExpectShows(page, right);
                check(true);
            }
        }
        ExpectSaid({});
    }

    std::vector<Path> TemporaryFiles() const {
        std::vector<Path> files;
        for (const auto& entry : std::filesystem::directory_iterator(temporaryFolder_)) {
            files.push_back(entry.path());
        }
        return files;
    }

    const Path folder_ = L"C:\\pictures \u6C34\u5370";
    const Path temporaryFolder_ = folder_ / L"temp";
    rig::ImportHooks hooks_;
    std::vector<Said> said_;
    Path chosen_;
    // What the plug-in does with bitmap files: "load", "read", "write" or "copy", and the file's name.
    Texts fileCalls_;
    int drawings_ = 0;  // bitmaps and fonts made
    int stretched_ = 0;
    Path lateFile_;  // on a server that is gone: opening it fails after a while
    bool refusesWriting_ = false;
    bool hasTemporaryFolder_ = true;
    std::multiset<void*> live_;
    // Each picture that was loaded from a file, and what is done before the system does it.
    struct Load {
        HINSTANCE module;
        Path file;
        UINT type;
        int width, height;
        UINT flags;
        bool operator==(const Load&) const = default;
    };
    std::vector<Load> loads_;
    std::function<void(const Path&)> onLoad_;
    std::vector<LOGFONTW> fonts_;
    int dotsPerInch_ = 0;  // of the screen, from top to bottom; 0: as it is

  private:
    // TRUE at the call that is to fail.
    bool Refuses(const std::string& function) { return function == refused_ && --callsToRefusal_ == 0; }

    void HookMessagesAndDialogs() {
        hooks_.On("USER32.dll", "MessageBoxW", &MessageBoxW,
                  [this](auto, HWND, const wchar_t* text, const wchar_t* title, UINT type) {
                      said_.push_back({text, title, type});
                      return IDOK;
                  });
        hooks_.On("comdlg32.dll", "GetOpenFileNameW", decltype (&GetOpenFileNameW)(nullptr),
                  [this](auto, OPENFILENAMEW* dialog) -> BOOL {
                      const std::wstring path = chosen_.wstring();
                      EXPECT_LT(path.size(), dialog->nMaxFile);
                      path.copy(dialog->lpstrFile, path.size());
                      dialog->lpstrFile[path.size()] = L'\0';
                      return TRUE;
                  });
    }

    void HookFiles() {
        hooks_.On("KERNEL32.dll", "CreateFileW", &CreateFileW, [this](auto original, auto... arguments) {
            const auto [path, access, share, security, disposition, flags, pattern] =
                std::tuple(arguments...);
            const bool writes = (access & GENERIC_WRITE) != 0;
            const bool isBitmap = NoteFileCall(writes ? L"write " : L"read ", path);
            if (path == lateFile_.wstring()) {
                Sleep(600);
                SetLastError(ERROR_BAD_NETPATH);
                return INVALID_HANDLE_VALUE;
            }
            if (isBitmap && writes && refusesWriting_) {
                SetLastError(ERROR_ACCESS_DENIED);
                return INVALID_HANDLE_VALUE;
            }
            const HANDLE file = original(arguments...);
            return file == INVALID_HANDLE_VALUE ? file : Take(file);
        });
        hooks_.On("KERNEL32.dll", "CloseHandle", &CloseHandle, [this](auto original, HANDLE handle) {
            Give(handle);
            return original(handle);
        });
        hooks_.On("KERNEL32.dll", "CopyFileW", &CopyFileW, [this](auto original, auto... arguments) {
            NoteFileCall(L"copy ", std::get<0>(std::tuple(arguments...)));
            return original(arguments...);
        });
        hooks_.On("USER32.dll", "LoadImageW", &LoadImageW, [this](auto original, auto... arguments) {
            const auto [module, name, type, width, height, flags] = std::tuple(arguments...);
            if ((flags & LR_LOADFROMFILE) == 0) {
                return original(arguments...);
            }
            NoteFileCall(L"load ", name);
            loads_.push_back({module, name, type, width, height, flags});
            if (onLoad_) {
                onLoad_(name);
            }
            return Take(original(arguments...));
        });
        hooks_.On("KERNEL32.dll", "GetTempPathW", &GetTempPathW, [this](auto original, auto... arguments) {
            return hasTemporaryFolder_ ? original(arguments...) : DWORD{0};
        });
    }

    void HookDrawing() {
        hooks_.On("GDI32.dll", "CreateCompatibleDC", &CreateCompatibleDC, [this](auto original, HDC dc) {
            return Refuses("CreateCompatibleDC") ? nullptr : Take(original(dc));
        });
        // What is put back into a device context is none of the plug-in's.
        hooks_.On("GDI32.dll", "SelectObject", &SelectObject, [this](auto original, HDC dc, HGDIOBJ object) {
            const bool isOwn = live_.count(object) != 0;
            return isOwn && Refuses("SelectObject") ? nullptr : original(dc, object);
        });
        hooks_.On("GDI32.dll", "PatBlt", &PatBlt, [this](auto original, auto... arguments) {
            return Refuses("PatBlt") ? FALSE : original(arguments...);
        });
        hooks_.On("GDI32.dll", "GetTextExtentPoint32W", &GetTextExtentPoint32W,
                  [this](auto original, auto... arguments) {
                      return Refuses("GetTextExtentPoint32W") ? FALSE : original(arguments...);
                  });
        hooks_.On("GDI32.dll", "TextOutW", &TextOutW, [this](auto original, auto... arguments) {
            return Refuses("TextOutW") ? FALSE : original(arguments...);
        });
        hooks_.On("GDI32.dll", "StretchBlt", &StretchBlt, [this](auto original, auto... arguments) {
            ++stretched_;
            return Refuses("StretchBlt") ? FALSE : original(arguments...);
        });
        hooks_.On("GDI32.dll", "BitBlt", &BitBlt, [this](auto original, auto... arguments) {
            return Refuses("BitBlt") ? FALSE : original(arguments...);
        });
        hooks_.On("GDI32.dll", "GetDeviceCaps", &GetDeviceCaps, [this](auto original, HDC dc, int index) {
            return index == LOGPIXELSY && dotsPerInch_ != 0 ? dotsPerInch_ : original(dc, index);
        });
        hooks_.On("GDI32.dll", "CreateDIBSection", &CreateDIBSection,
                  [this](auto original, auto... arguments) {
                      ++drawings_;
                      return Take(original(arguments...));
                  });
        hooks_.On("GDI32.dll", "CreateFontIndirectW", &CreateFontIndirectW,
                  [this](auto original, const LOGFONTW* font) {
                      ++drawings_;
                      fonts_.push_back(*font);
                      return Take(original(font));
                  });
        hooks_.On("USER32.dll", "GetDC", &GetDC,
                  [this](auto original, HWND window) { return Take(original(window)); });
        hooks_.On("USER32.dll", "ReleaseDC", &ReleaseDC, [this](auto original, HWND window, HDC dc) {
            Give(dc);
            return original(window, dc);
        });
        hooks_.On("GDI32.dll", "DeleteDC", &DeleteDC, [this](auto original, HDC dc) {
            Give(dc);
            return original(dc);
        });
        hooks_.On("GDI32.dll", "DeleteObject", &DeleteObject, [this](auto original, HGDIOBJ object) {
            Give(object);
            return original(object);
        });
    }

    template <typename Handle>
    Handle Take(Handle handle) {
        if (handle != nullptr) {
            live_.insert(handle);
        }
        return handle;
    }
    void Give(void* handle) {
        if (const auto found = live_.find(handle); found != live_.end()) {
            live_.erase(found);
        }
    }

    bool NoteFileCall(const wchar_t* what, const Path& path) {
        const bool isBitmap = path.extension() == L".bmp";
        if (isBitmap) {
            fileCalls_.push_back(what + path.filename().wstring());
        }
        return isBitmap;
    }

    void RemoveFiles() {
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
        ASSERT_FALSE(std::filesystem::exists(folder_, error));
    }

    Path usersTemporaryFolder_;
    std::string refused_;
    int callsToRefusal_ = 0;
};

}  // namespace pages::preview
