// What the tests of the two barcode pages share: fonts as the record keeps them, a spooler that keeps what it
// is sent, message boxes, and a page without a sheet.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>
#include <winspool.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "help_reader.h"
#include "lone_dialog_page.h"
#include "page_fixture.h"
#include "real_input.h"
#include "rig/import_hooks.h"

namespace pages::barcode {

using Texts = std::vector<std::wstring>;
using Ids = std::vector<int>;
using Pieces = std::vector<Bytes>;

// The record

constexpr std::size_t kFonts1DAt = 596;
constexpr std::size_t kFont1DSize = 36;
constexpr std::size_t kFonts1D = 8;
constexpr std::size_t kFonts2DAt = 884;
constexpr std::size_t kFont2DSize = 24;
constexpr std::size_t kFonts2D = 2;

// Where a font's fields lie in it.
namespace at1 {
constexpr std::size_t kType = 0;
constexpr std::size_t kWidth = 1;
constexpr std::size_t kHeight = 4;
constexpr std::size_t kHriPosition = 8;
constexpr std::size_t kHriFont = 9;
constexpr std::size_t kFontWidth = 12;
constexpr std::size_t kFontHeight = 16;
constexpr std::size_t kGs1Width = 20;
constexpr std::size_t kGs1Row = 24;
constexpr std::size_t kGs1Composite = 28;
constexpr std::size_t kGs1Separator = 32;
constexpr std::size_t kGs1Hri = 33;
constexpr std::size_t kGs1Expanded = 34;
}  // namespace at1

namespace at2 {
constexpr std::size_t kType = 0;
constexpr std::size_t kPdfWidth = 1;
constexpr std::size_t kPdfHeight = 2;
constexpr std::size_t kPdfColumns = 3;
constexpr std::size_t kPdfRows = 4;
constexpr std::size_t kPdfEcc = 5;
constexpr std::size_t kGs1Width = 6;
constexpr std::size_t kGs1Row = 8;
constexpr std::size_t kGs1Composite = 12;
constexpr std::size_t kGs1Separator = 16;
constexpr std::size_t kGs1Segments = 17;
constexpr std::size_t kGs1Hri = 18;
constexpr std::size_t kGs1Expanded = 19;
constexpr std::size_t kQrWidth = 20;
constexpr std::size_t kQrLanguage = 21;
constexpr std::size_t kQrModel = 22;
constexpr std::size_t kQrEcc = 23;
}  // namespace at2

constexpr std::size_t Font1D(std::size_t font, std::size_t field) {
    return kFonts1DAt + font * kFont1DSize + field;
}

constexpr std::size_t Font2D(std::size_t font, std::size_t field) {
    return kFonts2DAt + font * kFont2DSize + field;
}

// Least significant byte first.
inline void PutInt(Bytes& record, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        record.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i) & 0xFF);
    }
}

// Every byte that is none of the fonts' an odd one.
inline Bytes OddRecord() {
    return FilledRecord([](std::size_t offset) { return static_cast<std::uint8_t>(offset * 7 + 131); });
}

// Printing

inline Bytes Ascii(std::string_view text) {
    return {text.begin(), text.end()};
}

// Line feed, feed to the cutter, cut.
inline const Bytes kCut = {0x0A, 0x1D, 0x56, 0x42, 0x00};

inline std::string Describe(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        text += {' ', kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
    return text;
}

inline const HANDLE kPrinter = reinterpret_cast<HANDLE>(std::uintptr_t{0x1234567890});

// The spooler in the system's place. It keeps each call with all its arguments as a line.
struct Spooler {
    std::vector<std::string> calls;
    int failing = -1;  // the call that fails, counted from 0
    std::function<void()> on_start;

    bool Succeeds() const { return static_cast<int>(calls.size()) - 1 != failing; }
    void Add(const char* function, HANDLE printer, const std::string& arguments = {}) {
        const char* const handle = printer == kPrinter ? "printer" : printer == nullptr ? "null" : "another";
        calls.push_back(std::string(function) + ' ' + handle + arguments);
    }
};

inline std::string Narrow(const wchar_t* text) {
    return text == nullptr ? "null" : std::filesystem::path(text).string();
}

// The calls of a whole job.
inline std::vector<std::string> JobOf(const char* name, const Pieces& pieces) {
    std::vector<std::string> calls = {std::string("StartDocPrinterW printer 1 ") + name + " null RAW",
                                      "StartPagePrinter printer"};
    for (const Bytes& piece : pieces) {
        calls.push_back("WritePrinter printer" + Describe(piece));
    }
    calls.emplace_back("EndPagePrinter printer");
    calls.emplace_back("EndDocPrinter printer");
    return calls;
}

// What the same job comes to when a call of it fails: what was started is ended.
inline std::vector<std::string> JobFailingAt(std::vector<std::string> calls, std::size_t failing) {
    const std::size_t end_page = calls.size() - 2;
    if (failing >= end_page) {
        return calls;
    }
    std::vector<std::string> made(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(failing) + 1);
    if (failing > 1) {
        made.emplace_back("EndPagePrinter printer");
    }
    if (failing > 0) {
        made.emplace_back("EndDocPrinter printer");
    }
    return made;
}

struct Box {
    HWND owner;
    std::wstring title;
    std::wstring text;
    UINT type;
    bool operator==(const Box&) const = default;
};

// Controls

struct Caption {
    int control;
    const wchar_t* key;
    const wchar_t* english;
};

// A list of texts with numbered keys.
struct ListCaption {
    int list;
    const wchar_t* key;
    Texts english;
};

struct Place {
    int control;
    LONG x;
    LONG y;
    bool operator==(const Place&) const = default;
};
inline void PrintTo(const Place& place, std::ostream* out) {
    *out << place.control << " at " << place.x << ", " << place.y;
}

inline RECT BoundsOf(const Window& page, int control) {
    RECT bounds = {};
    GetWindowRect(page.Control(control), &bounds);
    MapWindowPoints(nullptr, page.handle(), reinterpret_cast<POINT*>(&bounds), 2);
    return bounds;
}

inline Place PlaceOf(const Window& page, int control) {
    const RECT bounds = BoundsOf(page, control);
    return {control, bounds.left, bounds.top};
}

// The page's controls in the order in which they lie above each other.
inline Ids ControlsOf(const Window& page) {
    Ids ids;
    for (HWND child = GetWindow(page.handle(), GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        ids.push_back(GetDlgCtrlID(child));
    }
    return ids;
}

// Of some controls, those that show.
inline Ids Visible(const Window& page, std::span<const int> ids) {
    Ids shown;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(shown),
                 [&](int id) { return page.IsVisible(id); });
    return shown;
}

inline Ids Enabled(const Window& page, std::span<const int> ids) {
    Ids enabled;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(enabled),
                 [&](int id) { return page.IsEnabled(id); });
    return enabled;
}

struct SpinRange {
    int least;
    int most;
    bool operator==(const SpinRange&) const = default;
};

inline SpinRange RangeOf(const Window& page, int spin) {
    SpinRange range = {};
    page.Send(spin, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&range.least),
              reinterpret_cast<LPARAM>(&range.most));
    return range;
}

// Where a template's pages stand in the real sheet, behind two tabs of the host.
constexpr int kTab1D = 5;
constexpr int kTab2D = 6;

// The tests

class BarcodeTest : public PageTest {
  protected:
    BarcodeTest(int tab, int dialog) : tab_(tab), template_(dialog) {}

    void SetUp() override {
        PageTest::SetUp();
        hooks_.On("USER32.dll", "GetDC", &GetDC, [this](auto original, HWND window) {
            return refuses_contexts_ ? nullptr : original(window);
        });
        hooks_.On("USER32.dll", "MessageBoxW", &MessageBoxW,
                  [this](auto original, HWND owner, LPCWSTR text, LPCWSTR title, UINT type) {
                      boxes_.push_back({owner, title, text, type});
                      if (shows_boxes_) {
                          return original(owner, text, title, type);
                      }
                      if (on_box_) {
                          on_box_();
                      }
                      return IDOK;
                  });
        hooks_.On("WINSPOOL.DRV", "StartDocPrinterW", &StartDocPrinterW,
                  [this](auto, HANDLE printer, DWORD level, LPBYTE information) -> DWORD {
                      const auto& document = *reinterpret_cast<const DOC_INFO_1W*>(information);
                      spooler_.Add("StartDocPrinterW", printer,
                                   ' ' + std::to_string(level) + ' ' + Narrow(document.pDocName) + ' ' +
                                       Narrow(document.pOutputFile) + ' ' + Narrow(document.pDatatype));
                      if (spooler_.on_start) {
                          spooler_.on_start();
                      }
                      return printer != nullptr && spooler_.Succeeds() ? 7 : 0;
                  });
        hooks_.On("WINSPOOL.DRV", "StartPagePrinter", &StartPagePrinter, [this](auto, HANDLE printer) {
            spooler_.Add("StartPagePrinter", printer);
            return spooler_.Succeeds() ? TRUE : FALSE;
        });
        hooks_.On("WINSPOOL.DRV", "WritePrinter", &WritePrinter,
                  [this](auto, HANDLE printer, LPVOID bytes, DWORD count, LPDWORD written) {
                      const auto* first = static_cast<const std::uint8_t*>(bytes);
                      spooler_.Add("WritePrinter", printer, Describe({first, first + count}));
                      // Whatever it says that it took: nobody looks.
                      *written = 0;
                      return spooler_.Succeeds() ? TRUE : FALSE;
                  });
        hooks_.On("WINSPOOL.DRV", "EndPagePrinter", &EndPagePrinter, [this](auto, HANDLE printer) {
            spooler_.Add("EndPagePrinter", printer);
            return spooler_.Succeeds() ? TRUE : FALSE;
        });
        hooks_.On("WINSPOOL.DRV", "EndDocPrinter", &EndDocPrinter, [this](auto, HANDLE printer) {
            spooler_.Add("EndDocPrinter", printer);
            return spooler_.Succeeds() ? TRUE : FALSE;
        });
        hooks_.On("GDI32.dll", "GetDeviceCaps", &GetDeviceCaps, [this](auto original, HDC dc, int index) {
            if (per_inch_ && index == LOGPIXELSX) {
                return static_cast<int>(per_inch_->x);
            }
            if (per_inch_ && index == LOGPIXELSY) {
                return static_cast<int>(per_inch_->y);
            }
            return original(dc, index);
        });
        HostSettings settings;
        settings.printer = kPrinter;
        StartHost(settings);
        for (const char* function : {"MessageBoxW", "StartDocPrinterW", "StartPagePrinter", "WritePrinter",
                                     "EndPagePrinter", "EndDocPrinter", "GetDeviceCaps"}) {
            ASSERT_EQ(hooks_.Bound(function), 1) << function;
        }
    }

    void OpenPage(const Bytes& record,
                  const std::function<void(UiDriver&, Sheet&, const Window& page)>& script) {
        SetRecord(record);
        OpenSheet([&](UiDriver& ui, Sheet& sheet) {
            script(ui, sheet, sheet.SelectPage(tab_));
            if (sheet.IsOpen()) {
                sheet.PressCancel();
            }
        });
    }

    // Does something that the user does: it leaves exactly `expected` in the record, and the sheet can be
    // applied.
    void Step(const Sheet& sheet, const Window& page, const std::string& name, const Bytes& expected,
              const std::function<void()>& action) {
        SCOPED_TRACE(name);
        ForgetChanges(sheet, page);
        action();
        Settle(page);
        EXPECT_EQ(Differences(expected, Record()), "");
        EXPECT_TRUE(sheet.IsApplyEnabled());
    }

    // Does something that neither changes the record nor the sheet's state.
    void Look(const Sheet& sheet, const Window& page, const std::string& name,
              const std::function<void()>& action) {
        SCOPED_TRACE(name);
        const Bytes before = Record();
        ForgetChanges(sheet, page);
        action();
        Settle(page);
        EXPECT_EQ(Differences(before, Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
    }

    // Letters and signs typed in the place of a box's number are not taken.
    void ExpectDigitsOnly(const Sheet& sheet, const Window& page, int edit) {
        SCOPED_TRACE(edit);
        const std::wstring number = page.Text(edit);
        Look(sheet, page, "letters", [&] {
            page.Send(edit, EM_SETSEL, 0, -1);
            page.AppendText(edit, L"x-");
        });
        EXPECT_EQ(page.Text(edit), number);
    }

    // What printing brings about: these calls, no message, no change of the record.
    void ExpectJob(const Window& page, int button, const std::vector<std::string>& calls) {
        const Bytes before = Record();
        spooler_.calls.clear();
        page.Click(button);
        EXPECT_EQ(spooler_.calls, calls);
        EXPECT_THAT(boxes_, testing::IsEmpty());
        EXPECT_EQ(Differences(before, Record()), "");
    }

    void ExpectRefused(const Window& page, int button, const wchar_t* title = L"Error",
                       const wchar_t* text = L"BarCode data error!") {
        const Bytes before = Record();
        spooler_.calls.clear();
        boxes_.clear();
        page.Click(button);
        EXPECT_THAT(boxes_, testing::ElementsAre(Box{page.handle(), title, text, MB_OK}));
        EXPECT_THAT(spooler_.calls, testing::IsEmpty());
        EXPECT_EQ(Differences(before, Record()), "");
        boxes_.clear();
    }

    static void ForgetChanges(const Sheet& sheet, const Window& page) {
        SendMessageW(sheet.handle(), PSM_UNCHANGED, reinterpret_cast<WPARAM>(page.handle()), 0);
        EXPECT_FALSE(sheet.IsApplyEnabled());
    }

    // Makes the sheet the one that the keyboard works on, and a control of the page the one in it.
    static void FocusForTyping(const UiDriver& ui, const Sheet& sheet, const Window& page, int control) {
        SetForegroundWindow(sheet.handle());
        ui.WaitUntil([&] { return GetForegroundWindow() == sheet.handle(); }, "the sheet in front");
        page.Focus(control);
        WaitForFocus(ui, page, control);
    }

    // With the real keyboard. Returns when the thread has used the keys up: it draws only when it has no
    // input.
    static void Type(const UiDriver& ui, const Window& page, std::initializer_list<WORD> keys) {
        PressKeys(keys);
        const RECT corner = {0, 0, 1, 1};
        InvalidateRect(page.handle(), &corner, FALSE);
        ui.WaitUntil([&] { return !GetUpdateRect(page.handle(), nullptr, FALSE); }, "the keys to be used");
        Settle(page);
    }

    // The controls that TAB reaches from `first` on until it leaves the page.
    static Ids TabOrder(const UiDriver& ui, const Sheet& sheet, const Window& page, int first) {
        Ids order = {first};
        FocusForTyping(ui, sheet, page, first);
        for (int i = 0; i < 40; ++i) {
            const HWND before = FocusOf(page);
            PressKey(VK_TAB);
            ui.WaitUntil([&] { return FocusOf(page) != before; }, "the focus to go on");
            const HWND focus = FocusOf(page);
            if (!IsChild(page.handle(), focus)) {
                return order;
            }
            order.push_back(GetDlgCtrlID(focus));
        }
        return order;
    }

    // Of a control whose middle may lie below another window.
    static void ExpectHelpOf(const UiDriver& ui, const Window& page, int control, const std::wstring& text) {
        RECT area = {};
        GetWindowRect(page.Control(control), &area);
        ExpectHelp(ui, page, control, {area.left + 6, area.top + 6}, text);
    }

    // The template's size in dialog units, title and font.
    void ExpectTemplate(short width, short height, const std::wstring& title) {
        const HMODULE module = Host().module();
        const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(template_), RT_DIALOG);
        ASSERT_NE(resource, nullptr);
        const auto* const bytes =
            static_cast<const std::uint8_t*>(LockResource(LoadResource(module, resource)));
        const Bytes dialog(bytes, bytes + SizeofResource(module, resource));
        EXPECT_EQ(At<WORD>(dialog, 0), 1) << "an extended template";
        EXPECT_EQ(At<WORD>(dialog, 2), 0xFFFF);
        EXPECT_EQ(At<short>(dialog, 22), width);
        EXPECT_EQ(At<short>(dialog, 24), height);
        EXPECT_EQ(At<WORD>(dialog, 26), 0) << "no menu";
        EXPECT_EQ(At<WORD>(dialog, 28), 0) << "no class of its own";
        // With their terminators; in between the font's size, weight and kind.
        constexpr wchar_t kFace[] = L"MS Shell Dlg";
        const std::size_t title_size = (title.size() + 1) * sizeof(wchar_t);
        ASSERT_GE(dialog.size(), 30 + title_size + 6 + sizeof kFace);
        EXPECT_EQ(std::memcmp(dialog.data() + 30, title.c_str(), title_size), 0);
        EXPECT_EQ(At<WORD>(dialog, 30 + title_size), 8) << "points";
        EXPECT_EQ(std::memcmp(dialog.data() + 30 + title_size + 6, kFace, sizeof kFace), 0);
    }

    // The description of the page as the host gets it.
    Bytes Description() {
        FakeSheet sheet;
        sheet.parameters.pOEMDM = Host().record_bytes().data();
        EXPECT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
        EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
        return sheet.PageOf(template_).page;
    }

    const int tab_;
    const int template_;
    Spooler spooler_;
    std::vector<Box> boxes_;
    bool shows_boxes_ = false;
    std::function<void()> on_box_;
    // The screen's dots per inch across and down, in the place of its own.
    std::optional<POINT> per_inch_;
    bool refuses_contexts_ = false;
    rig::ImportHooks hooks_;
};

// A page with a record of its own too.
class LonePage : public LoneDialogPage {
  public:
    LonePage(const Bytes& description, Bytes settings, HANDLE printer = kPrinter)
        : LoneDialogPage(description, printer), record(std::move(settings)) {
        parameters_.cbSize = sizeof parameters_;
        parameters_.pOEMDM = record.data();
        context_ = {
            this, INVALID_HANDLE_VALUE, &parameters_, &common_, reinterpret_cast<void*>(&Keep), nullptr, {}};
        SetContext(&context_);
    }
    ~LonePage() { Unmake(); }

    // No settings, as from a host that has none.
    void LoseRecord() {
        parameters_.pOEMDM = nullptr;
        common_.pOEMDM = nullptr;
    }
    void LoseCallback() { context_.callback = nullptr; }
    void LoseCommonParameters() { context_.common = nullptr; }

    Bytes record;

  private:
    // As the pages find it at their creation parameter. What follows is none of these pages' business.
    struct Context {
        void* sheet;
        void* page;
        OEMUIPSPARAM* parameters;
        OEMCUIPPARAM* common;
        void* callback;
        void* helper;
        std::uint8_t rest[512];
    };

    OEMUIPSPARAM parameters_ = {};
    Context context_ = {};
};

// What both pages' procedures do with a call, whatever their controls are.
class LoneBarcodeTest : public BarcodeTest {
  protected:
    using BarcodeTest::BarcodeTest;

    // After one report of success. Activation is answered, other notifications are the platform's, and a host
    // without a callback is not told.
    static void ExpectAnswersToTheSheet(LonePage& lone) {
        const SheetWindow::Message unchanged = {PSM_UNCHANGED, reinterpret_cast<WPARAM>(lone.handle())};
        for (const UINT code : {PSN_SETACTIVE, PSN_KILLACTIVE}) {
            EXPECT_EQ(lone.Notify(code), TRUE);
            EXPECT_EQ(lone.NotifyResult(), 0);
        }
        for (const UINT code : {PSN_RESET, PSN_HELP, PSN_QUERYCANCEL, UINT{5}, UDN_DELTAPOS}) {
            EXPECT_EQ(lone.Notify(code), FALSE);
            EXPECT_EQ(lone.NotifyResult(), 0x77);
        }
        EXPECT_EQ(lone.calls.size(), 1u);
        lone.LoseCallback();
        lone.sheet.messages.clear();
        EXPECT_EQ(lone.Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
        EXPECT_THAT(lone.sheet.messages, testing::ElementsAre(unchanged));
    }

    // `procedure` is the page's name in the trace.
    void ExpectNothingWithoutParameter(LonePage& lone, const std::wstring& procedure, int print_button) {
        const Bytes record = lone.record;
        lone.ExpectNothingWithoutParameter(procedure, WM_COMMAND, MAKEWPARAM(print_button, BN_CLICKED));
        EXPECT_THAT(spooler_.calls, testing::IsEmpty());
        EXPECT_THAT(boxes_, testing::IsEmpty());
        EXPECT_EQ(Differences(record, lone.record), "");
    }

    // Every message, and controls that it has, and some that it has not, that tell of anything.
    void ExpectTakesAnyMessage(LonePage& lone) {
        lone.Make();
        const Bytes record = lone.record;
        for (UINT message = 0; message < 0x10000; message += message < 0x800 ? 1 : 0x1F) {
            if (message != WM_INITDIALOG && message != WM_SYSCOMMAND && message != WM_SETICON) {
                EXPECT_EQ(lone.Ask(lone.handle(), message), FALSE) << message;
            }
        }
        for (int control = 1000; control < 1320; ++control) {
            for (const int notification : {2, 0x200, 0x400, 0x8000}) {
                lone.Use(control, notification);
            }
        }
        EXPECT_EQ(lone.Use(1, BN_CLICKED), FALSE);
        EXPECT_EQ(Differences(record, lone.record), "");
        EXPECT_THAT(lone.sheet.messages, testing::IsEmpty());
        EXPECT_THAT(spooler_.calls, testing::IsEmpty());
    }

    // The page goes while the message about its data is open.
    void ExpectGoesFromItsMessage(LonePage& lone, int data, const wchar_t* refused, int print_button) {
        lone.Make();
        const Bytes record = lone.record;
        lone.Page().TypeText(data, refused);
        on_box_ = [&] { lone.Unmake(); };
        EXPECT_EQ(lone.Use(print_button), TRUE);
        EXPECT_EQ(boxes_.size(), 1u);
        EXPECT_FALSE(IsWindow(lone.handle()));
        EXPECT_THAT(spooler_.calls, testing::IsEmpty());
        EXPECT_EQ(Differences(record, lone.record), "");
    }

    // The message about its data in a real box.
    static void ExpectRealBox(const Window& page, int data, const wchar_t* refused, int print_button) {
        page.TypeText(data, refused);
        const MessageBoxInfo box = page.OpenMessageBox(print_button);
        EXPECT_EQ(box.title, L"Error");
        EXPECT_EQ(box.text, L"BarCode data error!");
        EXPECT_THAT(box.buttons, testing::ElementsAre(IDOK));
        box.Press(IDOK);
        EXPECT_TRUE(page.IsEnabled(print_button));
    }

    // Each call of the job fails in turn; nobody is told, and the next print starts afresh.
    void ExpectSilentEnds(const Window& page, int print_button, const std::vector<std::string>& whole) {
        for (std::size_t failing = 0; failing < whole.size(); ++failing) {
            SCOPED_TRACE(failing);
            spooler_.failing = static_cast<int>(failing);
            ExpectJob(page, print_button, JobFailingAt(whole, failing));
        }
        spooler_.failing = -1;
        ExpectJob(page, print_button, whole);
    }
};

}  // namespace pages::barcode
