// The Main page alone, under a window that keeps what it is told: the lists of languages and forms, what each
// control leaves in the record and tells the sheet and the host, the log's folder and viewer, and what it
// answers to each message.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>
#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "layout_fixture.h"
#include "page_fixture.h"
#include "rig/import_hooks.h"
#include "sheet_window.h"

namespace pages::layout {
namespace {

using rig::Lines;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kTemplate = 128;

constexpr wchar_t kListFile[] = L"LANGUAGE_KVMR72.DAT";
constexpr wchar_t kFirstRunValue[] = L"IsFirstRun_KVMR72";

void WriteList(const std::wstring& text) {
    rig::WriteUtf16(rig::DriverFolder() / kListFile, text);
}

// The page, made as a sheet makes it but without one, so that each call of its procedure can be looked at.
class LoneMainPageTest : public PageTest {
  protected:
    struct Box {
        HWND owner;
        std::wstring text;
        std::wstring title;
        UINT flags;
        std::size_t sheet_messages;  // that came before it
        bool operator==(const Box&) const = default;
    };

    void SetUp() override {
        PageTest::SetUp();
        sheet_.Create();
        hooks_.On("USER32.dll", "MessageBoxW", &MessageBoxW,
                  [this](auto, HWND owner, LPCWSTR text, LPCWSTR title, UINT flags) -> int {
                      boxes_.push_back({owner, text, title, flags, sheet_.messages.size()});
                      return IDOK;
                  });
    }

    void TearDown() override {
        Unmake();
        PageTest::TearDown();
    }

    // Initialises a sheet anew, with the texts of the moment.
    void InitialiseSheet() {
        ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
        fake_.calls.clear();
        fake_.parameters.pOEMDM = Host().record_bytes().data();
        ASSERT_EQ(Host().plugin().DocumentPropertySheets(fake_.ForReason(PROPSHEETUI_REASON_INIT), 0), S_OK);
        const Bytes page = fake_.PageOf(kTemplate).page;
        ASSERT_EQ(page.size(), sizeof description_);
        std::memcpy(&description_, page.data(), sizeof description_);
        handle_ = fake_.HandleOf(kTemplate);
        fake_.calls.clear();
        Host().helper().ForgetCalls();
    }

    void Make() {
        Unmake();
        page_ = CreateDialogParamW(description_.hInstance, description_.pszTemplate, sheet_.handle,
                                   description_.pfnDlgProc, reinterpret_cast<LPARAM>(&description_));
        ASSERT_NE(page_, nullptr);
        sheet_.messages.clear();
    }

    void Unmake() {
        if (page_ != nullptr) {
            DestroyWindow(page_);
            page_ = nullptr;
        }
    }

    void OpenPage() {
        InitialiseSheet();
        Make();
    }

    void OpenPage(const Bytes& record) {
        Unmake();
        SetRecord(record);
        OpenPage();
    }

    // What the dialog procedure itself returns.
    INT_PTR Call(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        return description_.pfnDlgProc(page_, message, wparam, lparam);
    }

    INT_PTR Notify(UINT code) {
        PSHNOTIFY notification = {};
        notification.hdr.hwndFrom = sheet_.handle;
        notification.hdr.code = code;
        SetWindowLongPtrW(page_, DWLP_MSGRESULT, 0x77);
        return Call(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    }

    LONG_PTR NotifyResult() const { return GetWindowLongPtrW(page_, DWLP_MSGRESULT); }

    INT_PTR Use(int control, int notification = BN_CLICKED) {
        return Call(WM_COMMAND, MAKEWPARAM(control, notification),
                    reinterpret_cast<LPARAM>(GetDlgItem(page_, control)));
    }

    Window Page() const { return {driver_, page_}; }
    SheetWindow::Message Changed() const { return {PSM_CHANGED, reinterpret_cast<WPARAM>(page_)}; }
    SheetWindow::Message Unchanged() const { return {PSM_UNCHANGED, reinterpret_cast<WPARAM>(page_)}; }

    UiDriver driver_{GetCurrentThreadId()};
    FakeSheet fake_;
    SheetWindow sheet_;
    PROPSHEETPAGEW description_ = {};
    LONG_PTR handle_ = 0;
    HWND page_ = nullptr;
    std::vector<Box> boxes_;
    rig::ImportHooks hooks_;
};

// Filling the page

TEST_F(LoneMainPageTest, ShowsItsCaptionsBeforeItIsPainted) {
    Host();
    for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese}) {
        ChooseLanguage(file);
        OpenPage(PlainRecord());
        EXPECT_EQ(CaptionsOf(Page()), SourceCaptions(file));
        EXPECT_THAT(Host().helper().calls(), IsEmpty()) << "each paint tells of the density option";
    }
}

// The bitmap of a static control, dot by dot.
Bytes DotsOf(HBITMAP bitmap) {
    BITMAP size = {};
    EXPECT_EQ(GetObjectW(bitmap, sizeof size, &size), static_cast<int>(sizeof size));
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size.bmWidth;
    info.bmiHeader.biHeight = size.bmHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    Bytes dots(static_cast<std::size_t>(size.bmWidth) * static_cast<std::size_t>(size.bmHeight) * 4);
    const HDC screen = GetDC(nullptr);
    EXPECT_EQ(
        GetDIBits(screen, bitmap, 0, static_cast<UINT>(size.bmHeight), dots.data(), &info, DIB_RGB_COLORS),
        size.bmHeight);
    ReleaseDC(nullptr, screen);
    return dots;
}

// Hidden like the radio buttons beside them.
TEST_F(LoneMainPageTest, HasAPictureOfEachDirection) {
    OpenPage();
    std::vector<Bytes> pictures;
    for (const auto& [control, resource] : {std::pair(1072, 129), std::pair(1074, 130)}) {
        SCOPED_TRACE(control);
        const auto shown =
            reinterpret_cast<HBITMAP>(SendDlgItemMessageW(page_, control, STM_GETIMAGE, IMAGE_BITMAP, 0));
        ASSERT_NE(shown, nullptr);
        const HBITMAP expected = LoadBitmapW(Host().module(), MAKEINTRESOURCEW(resource));
        ASSERT_NE(expected, nullptr);
        pictures.push_back(DotsOf(expected));
        EXPECT_EQ(DotsOf(shown), pictures.back());
        DeleteObject(expected);
    }
    EXPECT_NE(pictures[0], pictures[1]);
}

// Fields of another writer need not be terminated.
TEST_F(LoneMainPageTest, ReadsFieldsToTheirEndOnly) {
    const std::wstring form(kFormUnits, L'f');
    const std::wstring path(kLogPathUnits, L'p');
    const Bytes record = WithLogPath(WithForm(With(PlainRecord(), {{kScaleAt, 255}}), form), path);
    HostSettings settings;
    settings.options = {{.level = 1, .dm_pub_id = DMPUB_FORMNAME, .values = {L"f", form + L"f", form}}};
    StartHost(settings);
    OpenPage(record);
    EXPECT_EQ(Page().Text(kLogPath), path);
    EXPECT_EQ(Page().ComboSelection(kPaperSize), 1) << "the first that begins with the name";
    EXPECT_EQ(Page().Text(kScale), L"200");
    EXPECT_EQ(Differences(record, Record()), "");
    Use(kPaperSize, CBN_SELCHANGE);
    EXPECT_EQ(Differences(WithForm(record, form.substr(1)), Record()), "") << "cut, with its terminator";
}

TEST_F(LoneMainPageTest, ListsTheForms) {
    const OptionSource forms = {
        .level = 1, .dm_pub_id = DMPUB_FORMNAME, .values = {L"A4", L"B5", L"A4 small"}, .selected = 1};
    const OptionSource more = {
        .level = 1, .dm_pub_id = DMPUB_FORMNAME, .values = {L"Roll", L"Fold"}, .selected = 0};
    const OptionSource other = {.name = L"Quality", .level = 2, .values = {L"Fast", L"Fine"}};
    OptionSource beyond = forms;
    beyond.selected = 3;
    OptionSource before = forms;
    before.selected = -1;
    struct Case {
        const wchar_t* stored;
        std::vector<OptionSource> options;
        Texts items;
        int opened;
        int activated;
    };
    const Texts both = {L"A4", L"B5", L"A4 small", L"Roll", L"Fold"};
    const Case cases[] = {
        {L"", {other, forms}, forms.values, 1, 1},
        {L"A4", {forms, other}, forms.values, 0, 1},
        {L"A4 s", {forms}, forms.values, 2, 1},
        {L"a4 SMALL", {forms}, forms.values, 2, 1},
        {L"Letter", {forms}, forms.values, -1, 1},
        {L"Letter", {beyond}, forms.values, -1, -1},
        {L"A4 small", {beyond}, forms.values, 2, 2},
        {L"", {before}, forms.values, -1, -1},
        {L"", {other}, {}, -1, -1},
        {L"A4", {}, {}, -1, -1},
        {L"Fold", {forms, other, more}, both, 4, 3},
        {L"", {more, forms}, {L"Roll", L"Fold", L"A4", L"B5", L"A4 small"}, 3, 3},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        Unmake();
        HostSettings settings;
        settings.options = each.options;
        StartHost(settings);
        const Bytes record = WithForm(PlainRecord(), each.stored);
        OpenPage(record);
        EXPECT_EQ(Page().ComboItems(kPaperSize), each.items);
        EXPECT_EQ(Page().ComboSelection(kPaperSize), each.opened);
        Notify(PSN_SETACTIVE);
        EXPECT_EQ(Page().ComboSelection(kPaperSize), each.activated);
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_THAT(Host().helper().calls(), IsEmpty());
        // Without a selection option and record keep what they have.
        if (each.activated == -1) {
            Use(kPaperSize, CBN_SELCHANGE);
            Notify(PSN_APPLY);
            EXPECT_EQ(Differences(record, Record()), "");
            for (std::size_t i = 0; i < each.options.size(); ++i) {
                EXPECT_EQ(Host().options().item(i).Sel, each.options[i].selected);
            }
        }
    }
}

TEST_F(LoneMainPageTest, ChoosesInEveryFormItemThatHasTheForm) {
    HostSettings settings;
    settings.options = {
        {.level = 1, .dm_pub_id = DMPUB_FORMNAME, .values = {L"A4", L"B5", L"C6"}},
        {.name = L"Quality", .level = 2, .values = {L"Fast", L"Fine"}},
        {.level = 1, .dm_pub_id = DMPUB_FORMNAME, .values = {L"Roll", L"Fold"}},
    };
    StartHost(settings);
    OPTITEM* const items = Host().options().items();
    items[0].Flags = 0x40;
    wchar_t* const text = items[0].pOptType->pOptParam[1].pData;
    items[0].pOptType->pOptParam[1].pData = nullptr;
    const Bytes record = WithForm(PlainRecord(), L"A4");
    OpenPage(record);
    EXPECT_THAT(Page().ComboItems(kPaperSize), ElementsAre(L"A4", L"", L"C6", L"Roll", L"Fold"))
        << "a form without a text keeps its place";
    struct Case {
        int index;
        LONG first, second;
        const wchar_t* form;
        std::vector<const OPTITEM*> told;
    };
    const Case cases[] = {
        {2, 2, 0, L"C6", {&items[0]}},
        {1, 1, 1, L"", {&items[0], &items[2]}},
        {0, 0, 0, L"A4", {&items[0], &items[2]}},
        {4, 0, 0, L"Fold", {}},
    };
    for (const auto& use : {std::pair(0, "choice"), std::pair(1, "apply")}) {
        for (const Case& each : cases) {
            SCOPED_TRACE(each.index);
            SCOPED_TRACE(use.second);
            SetRecord(record);
            items[0].Sel = 0;
            items[2].Sel = 0;
            Host().helper().ForgetCalls();
            sheet_.messages.clear();
            SendDlgItemMessageW(page_, kPaperSize, CB_SETCURSEL, static_cast<WPARAM>(each.index), 0);
            use.first == 0 ? Use(kPaperSize, CBN_SELCHANGE) : Notify(PSN_APPLY);
            EXPECT_EQ(items[0].Sel, each.first);
            EXPECT_EQ(items[2].Sel, each.second);
            EXPECT_EQ(items[0].Flags, DWORD{0x40 | OPTIF_CHANGED});
            EXPECT_EQ(items[1].Flags, 0u);
            EXPECT_EQ(Differences(WithForm(record, each.form), Record()), "");
            std::vector<const OPTITEM*> told;
            for (const HelperCall& call : Host().helper().calls()) {
                told.push_back(call.option);
                EXPECT_EQ(call.context, Host().common_ui().poemuiobj);
                EXPECT_EQ(call.previous_selection, 0u);
                EXPECT_EQ(call.mode, DWORD{OEMCUIP_DOCPROP});
            }
            EXPECT_EQ(told, each.told);
            EXPECT_THAT(sheet_.messages, ElementsAre(use.first == 0 ? Changed() : Unchanged()));
        }
    }
    items[0].pOptType->pOptParam[1].pData = text;
}

// Languages

constexpr wchar_t kOddList[] =
    L"[LANGUAGE]\r\nCOUNT=3\r\n"
    L"Language0=0123456789012345678901234567890123456789012345678X\r\nINI0=ENG_KVMR72.res\r\nSYSLANG0=Two\r\n"
    L"INI1=ENG_KVMR72.res\r\nSYSLANG1=One\r\n"
    L"Language2=Two of three\r\nINI2=CHN_KVMR72.res\r\nSYSLANG2=system\r\n";
constexpr wchar_t kCut49[] = L"0123456789012345678901234567890123456789012345678";

const Texts kOddLanguages = {kCut49, L"English", L"Two of three", L"System Language"};
const Texts kNoLanguages = {L"System Language"};
const Texts kDefaultLanguages = {L"English", L"English", L"System Language"};

struct LanguageCase {
    const char* name;
    const wchar_t* list;  // the driver's list; null: the shipped one
    const wchar_t* current;
    const wchar_t* firstRun;  // null: no value
    const Texts* items;
    int selection;
};

const LanguageCase kLanguageCases[] = {
    {"by name", nullptr, kEnglish, L"FALSE", &kShippedLanguages, 0},
    {"the last", nullptr, kTraditionalChinese, L"FALSE", &kShippedLanguages, 2},
    {"the system's", nullptr, kEnglish, L"TRUE", &kShippedLanguages, 3},
    {"somewhere in it", nullptr, kEnglish, L"xTRUEx", &kShippedLanguages, 3},
    {"other case", nullptr, kEnglish, L"true", &kShippedLanguages, 0},
    {"nothing stored", nullptr, kEnglish, nullptr, &kShippedLanguages, 3},
    {"label not listed", nullptr, kSimplifiedChinese, L"TRUE", &kShippedLanguages, -1},
    {"file not listed", nullptr, L"ITA_KVMR72.res", L"FALSE", &kShippedLanguages, -1},
    {"neither listed nor stored", nullptr, L"ITA_KVMR72.res", nullptr, &kShippedLanguages, -1},
    {"compared exactly", nullptr, L"eng_KVMR72.res", L"FALSE", &kShippedLanguages, -1},
    {"count 0", L"[LANGUAGE]\r\nCOUNT=0\r\n", kEnglish, L"FALSE", &kNoLanguages, -1},
    {"count -1", L"[LANGUAGE]\r\nCOUNT=-1\r\n", kEnglish, L"FALSE", &kNoLanguages, -1},
    {"no number", L"[LANGUAGE]\r\nCOUNT=many\r\n", kEnglish, L"FALSE", &kNoLanguages, -1},
    {"no count", L"[LANGUAGE]\r\n", kEnglish, L"FALSE", &kDefaultLanguages, 0},
    {"empty count", L"[LANGUAGE]\r\nCOUNT=\r\n", kEnglish, L"TRUE", &kDefaultLanguages, 2},
    {"first of two, cut", kOddList, kEnglish, L"FALSE", &kOddLanguages, 0},
    {"label found as a beginning", kOddList, kEnglish, L"TRUE", &kOddLanguages, 2},
    {"label in other case", kOddList, kSimplifiedChinese, L"TRUE", &kOddLanguages, 3},
};

void SetFirstRun(const wchar_t* text) {
    RegDeleteKeyValueW(HKEY_CURRENT_USER, rig::kLanguageKey, kFirstRunValue);
    if (text != nullptr) {
        rig::SetLanguageValue(kFirstRunValue, text);
    }
}

TEST_F(LoneMainPageTest, ListsTheLanguages) {
    Host();
    for (const LanguageCase& each : kLanguageCases) {
        SCOPED_TRACE(each.name);
        rig::InstallLanguageFiles();
        if (each.list != nullptr) {
            WriteList(each.list);
        }
        ChooseLanguage(each.current);
        SetFirstRun(each.firstRun);
        OpenPage();
        EXPECT_EQ(Page().ComboItems(kLanguage), *each.items);
        EXPECT_EQ(Page().ComboSelection(kLanguage), each.selection);
        EXPECT_EQ(rig::LanguageValue(kLanguageValue), each.current);
        if (each.firstRun != nullptr) {
            EXPECT_EQ(rig::LanguageValue(kFirstRunValue), each.firstRun);
        } else if (each.selection >= 0) {
            EXPECT_EQ(rig::LanguageValue(kFirstRunValue), L"TRUE") << "stored for the next time";
            EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, rig::kLanguageKey, kFirstRunValue, RRF_RT_REG_SZ,
                                   nullptr, nullptr, nullptr),
                      ERROR_SUCCESS);
        } else {
            EXPECT_EQ(rig::LanguageValue(kFirstRunValue), std::nullopt);
        }
    }
    WriteList(L"[LANGUAGE]\r\nCOUNT=1000\r\n");
    ChooseLanguage(kEnglish);
    OpenPage();
    EXPECT_EQ(Page().ComboItems(kLanguage).size(), 101u) << "no list is longer than 100";
}

// What one applied choice leaves in the registry; the list is of the driver.
TEST_F(LoneMainPageTest, StoresTheLanguageOnApply) {
    constexpr wchar_t kSameTexts[] =
        L"[LANGUAGE]\r\nCOUNT=4\r\n"
        L"Language0=Name\r\nINI0=A.res\r\nSYSLANG0=System Language\r\n"
        L"Language1=Name\r\nINI1=B.res\r\nSYSLANG1=System Language\r\n"
        L"Language2=Both\r\nINI2=C.res\r\nSYSLANG2=Both\r\n"
        L"Language3=Last\r\nINI3=D.res\r\nSYSLANG3=Name\r\n";
    constexpr wchar_t kForeignLabels[] =
        L"[LANGUAGE]\r\nCOUNT=1\r\nLanguage0=Name\r\nINI0=A.res\r\nSYSLANG0=Other\r\n";
    struct Case {
        const wchar_t* list;
        int index;
        const wchar_t* file;
        const wchar_t* firstRun;
    };
    const Case cases[] = {
        {nullptr, 1, kSimplifiedChinese, L"FALSE"}, {nullptr, 2, kTraditionalChinese, L"FALSE"},
        {nullptr, 0, kEnglish, L"FALSE"},           {nullptr, 3, kEnglish, L"TRUE"},
        {kSameTexts, 3, L"D.res", L"FALSE"},        {kSameTexts, 0, L"D.res", L"TRUE"},
        {kSameTexts, 2, L"C.res", L"TRUE"},         {kSameTexts, 4, L"B.res", L"TRUE"},
        {kForeignLabels, 1, kEnglish, L"FALSE"},    {nullptr, -1, kEnglish, L"FALSE"},
    };
    Host();
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        rig::InstallLanguageFiles();
        if (each.list != nullptr) {
            WriteList(each.list);
        }
        ChooseLanguage(kEnglish);
        SetFirstRun(L"FALSE");
        OpenPage();
        SendDlgItemMessageW(page_, kLanguage, CB_SETCURSEL, static_cast<WPARAM>(each.index), 0);
        EXPECT_EQ(Notify(PSN_APPLY), TRUE);
        EXPECT_EQ(rig::LanguageValue(kLanguageValue), each.file);
        EXPECT_EQ(rig::LanguageValue(kFirstRunValue), each.firstRun);
    }
    rig::InstallLanguageFiles();
    OpenPage();
    rig::RemoveLanguageKey();
    SendDlgItemMessageW(page_, kLanguage, CB_SETCURSEL, 1, 0);
    EXPECT_EQ(Notify(PSN_APPLY), TRUE);
    EXPECT_FALSE(rig::LanguageKeyExists()) << "the key is opened, never made";
    EXPECT_EQ(CaptionsOf(Page()), SourceCaptions(kEnglish));
}

// What the host and the sheet are told, and what is stored, in the order in which it happens.
TEST_F(LoneMainPageTest, ReportsBeforeItStoresTheLanguage) {
    static std::function<void(const std::wstring&)> note;
    static decltype(fake_.info.pfnComPropSheet) host = nullptr;
    rig::TraceCapture trace;
    Texts events;
    const auto take_lines = [&] {
        for (const std::wstring& line : trace.TakeOwn()) {
            if (line.starts_with(L"UI:  Layout page callback PSN_APPLY")) {
                events.push_back(line);
            }
        }
    };
    note = [&](const std::wstring& event) {
        take_lines();
        events.push_back(event + L" with " + rig::LanguageValue(kLanguageValue).value_or(L""));
    };
    hooks_.On("ADVAPI32.dll", "RegSetValueExW", &RegSetValueExW,
              [](auto original, HKEY key, LPCWSTR name, auto... arguments) -> LSTATUS {
                  const LSTATUS status = original(key, name, arguments...);
                  note(std::wstring(L"stored ") + name);
                  return status;
              });
    sheet_.on_message = [](UINT message) { note(L"sheet " + std::to_wstring(message)); };
    host = fake_.info.pfnComPropSheet;
    fake_.info.pfnComPropSheet = [](HANDLE sheet, UINT function, LPARAM first, LPARAM second) -> LONG_PTR {
        if (note) {
            note(L"host " + std::to_wstring(function));
        }
        return host(sheet, function, first, second);
    };
    OpenPage(PlainRecord());
    SendDlgItemMessageW(page_, kLanguage, CB_SETCURSEL, 2, 0);
    trace.TakeOwn();
    events.clear();
    EXPECT_EQ(Notify(PSN_APPLY), TRUE);
    take_lines();
    const std::wstring old_language = std::wstring(L" with ") + kEnglish;
    const std::wstring new_language = std::wstring(L" with ") + kTraditionalChinese;
    EXPECT_THAT(events, ElementsAre(L"UI:  Layout page callback PSN_APPLY in\r\n",
                                    L"host " + std::to_wstring(CPSFUNC_SET_RESULT) + old_language,
                                    L"sheet " + std::to_wstring(PSM_UNCHANGED) + old_language,
                                    L"UI:  Layout page callback PSN_APPLY Language set in\r\n",
                                    L"stored LANGUAGE_KVMR72" + new_language,
                                    L"stored IsFirstRun_KVMR72" + new_language,
                                    L"UI:  Layout page callback PSN_APPLY Language set out\r\n"));
    note = nullptr;
    sheet_.on_message = nullptr;
}

std::wstring FileOfVersion(const wchar_t* version, const wchar_t* from) {
    std::wstring text = std::wstring(L"[FROM]\r\nWHO=") + from + L"\r\n[LANGUAGE]\r\nCOUNT=0\r\n";
    return version == nullptr ? text : text + L"[FILEVER]\r\nINIVERSION=" + version + L"\r\n";
}

// The list and a language file follow the same rule.
TEST_F(LoneMainPageTest, BringsTheUsersFilesUpToTheDrivers) {
    struct Case {
        const wchar_t* driver;
        const wchar_t* user;
        bool copied;
    };
    const Case cases[] = {
        {L"2", L"1", true},        {L"2", L"2", true},          {L"1", L"2", false},
        {nullptr, L"99999", true}, {nullptr, L"100000", false}, {L"0", nullptr, true},
        {L"-1", nullptr, false},   {nullptr, nullptr, true},
    };
    Host();
    for (const wchar_t* file : {kListFile, kEnglish}) {
        const std::filesystem::path driver = rig::DriverFolder() / file;
        const std::filesystem::path user = rig::UserFolder() / file;
        for (const Case& each : cases) {
            SCOPED_TRACE(driver);
            SCOPED_TRACE(&each - cases);
            rig::InstallLanguageFiles();
            rig::WriteUtf16(driver, FileOfVersion(each.driver, L"driver"));
            rig::WriteUtf16(user, FileOfVersion(each.user, L"user"));
            if (file != kListFile) {
                InstallUserFile(kListFile);
            }
            const auto expected = rig::ReadBytes(each.copied ? driver : user);
            OpenPage();
            EXPECT_EQ(rig::ReadBytes(user), expected);
        }
        rig::InstallLanguageFiles();
        rig::WriteUtf16(user, FileOfVersion(L"1", L"user"));
        const auto kept = rig::ReadBytes(user);
        // Nobody may write to it: for whoever runs the tests an attribute need not be in the way.
        const HANDLE held =
            CreateFileW(user.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        OpenPage();
        EXPECT_EQ(Page().ComboItems(kLanguage).size(), file == kListFile ? 1u : 4u) << "it is used as it is";
        CloseHandle(held);
        EXPECT_EQ(rig::ReadBytes(user), kept);
        DeleteFileW(driver.c_str());
        OpenPage();
        EXPECT_EQ(rig::ReadBytes(user), kept) << "nothing to copy";
        rig::InstallLanguageFiles();
        DeleteFileW(user.c_str());
        OpenPage();
        EXPECT_EQ(rig::ReadBytes(user), rig::ReadBytes(driver)) << "none yet";
    }
}

// The list first, then each language in its order, all before the page says that it initialises.
TEST_F(LoneMainPageTest, CopiesEveryListedLanguage) {
    constexpr wchar_t kInitialises[] = L"UI:  Initialize Layout page callback function\r\n";
    Texts copies;
    rig::TraceCapture trace;
    Lines lines;
    bool is32Bit = false;
    hooks_.On("KERNEL32.dll", "CopyFileW", &CopyFileW,
              [&](auto original, LPCWSTR from, LPCWSTR to, BOOL keep) -> BOOL {
                  copies.emplace_back(from);
                  copies.emplace_back(to);
                  EXPECT_FALSE(keep);
                  for (const std::wstring& line : trace.TakeOwn()) {
                      EXPECT_NE(line, kInitialises);
                  }
                  return original(from, to, keep);
              });
    hooks_.On("KERNEL32.dll", "GetSystemInfo", &GetSystemInfo, [&](auto original, LPSYSTEM_INFO info) {
        original(info);
        if (is32Bit) {
            info->wProcessorArchitecture = PROCESSOR_ARCHITECTURE_INTEL;
        }
    });
    Host();
    WriteList(
        L"[LANGUAGE]\r\nCOUNT=5\r\nINI0=CHF_KVMR72.res\r\nINI1=..\\OUT.res\r\nINI2=OWN.res\r\n"
        L"INI3=CHF_KVMR72.res\r\nINI4=MISSING.res\r\n");
    rig::WriteUtf16(rig::DriverFolder() / L"OWN.res", L"own");
    rig::WriteUtf16(rig::DriverFolder().parent_path() / L"OUT.res", L"out");
    DeleteFileW((rig::UserFolder().parent_path() / L"OUT.res").c_str());
    rig::RemoveUserFolder();
    InitialiseSheet();
    const std::wstring user = rig::UserFolder().wstring() + L"\\";
    const auto expected = [&](const std::wstring& folder) {
        Texts texts;
        for (const wchar_t* file : {kListFile, kTraditionalChinese, L"OWN.res", L"MISSING.res"}) {
            texts.push_back(L"C:\\windows" + folder + file);
            texts.push_back(user + file);
        }
        return texts;
    };
    trace.TakeOwn();
    copies.clear();
    Make();
    // Without the folder the list cannot be copied yet; the languages of the defaults make it.
    EXPECT_TRUE(std::filesystem::is_directory(rig::UserFolder()));
    copies.clear();
    trace.TakeOwn();
    Make();
    EXPECT_EQ(copies, expected(L"\\system32\\spool\\drivers\\x64\\3\\"));
    lines = trace.TakeOwn();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), kInitialises), 1);
    EXPECT_EQ(rig::ReadBytes(rig::UserFolder() / L"OWN.res"),
              rig::ReadBytes(rig::DriverFolder() / L"OWN.res"));
    EXPECT_FALSE(std::filesystem::exists(rig::UserFolder() / kSimplifiedChinese)) << "it is not in the list";
    EXPECT_FALSE(std::filesystem::exists(rig::UserFolder().parent_path() / L"OUT.res"));
    is32Bit = true;
    copies.clear();
    Make();
    ASSERT_FALSE(copies.empty());
    EXPECT_EQ(copies[0], L"C:\\windows\\system32\\spool\\drivers\\w32x86\\3\\LANGUAGE_KVMR72.DAT");
    DeleteFileW((rig::DriverFolder() / L"OWN.res").c_str());
    DeleteFileW((rig::DriverFolder().parent_path() / L"OUT.res").c_str());
}

// Commands

// A record by what is on: I as image (i: another value than 1), R rotated, Z zoom, L log, W watermark.
Bytes RecordOf(const std::string& on) {
    constexpr std::pair<char, Edit> kEdits[] = {{'I', {kPrintAsImageAt, 1}}, {'i', {kPrintAsImageAt, 7}},
                                                {'R', {kRotateAt, 1}},       {'Z', {kZoomAt, 1}},
                                                {'L', {kLogAt, 1}},          {'W', {kWaterMarkAt, 2}}};
    Bytes record = PlainRecord();
    for (const auto& [letter, edit] : kEdits) {
        if (on.find(letter) != std::string::npos) {
            record = With(record, {edit});
        }
    }
    return record;
}

// What the page shows: Y "Yes" chosen, E "Yes" and "No" enabled, S the scale enabled, L the log enabled.
std::string ShownOn(const Window& page) {
    std::string shown;
    EXPECT_NE(page.IsChecked(kYes), page.IsChecked(kNo));
    shown += page.IsChecked(kYes) ? "Y" : "";
    EXPECT_EQ(page.IsEnabled(kYes), page.IsEnabled(kNo));
    shown += page.IsEnabled(kYes) ? "E" : "";
    EXPECT_EQ(page.IsEnabled(kScale), page.IsEnabled(kSpin));
    EXPECT_EQ(page.IsEnabled(kScale), page.IsEnabled(kScaleLabel));
    shown += page.IsEnabled(kScale) ? "S" : "";
    EXPECT_EQ(page.IsEnabled(kLogPath), page.IsEnabled(kBrowse));
    EXPECT_EQ(page.IsEnabled(kLogPath), page.IsEnabled(kViewer));
    shown += page.IsEnabled(kLogPath) ? "L" : "";
    return shown;
}

struct CommandCase {
    const char* name;
    int control;
    int notification;
    bool checked;  // the control itself when it reports
    const char* before;
    const char* after;
    const char* shown;
    bool changed;  // told the sheet
    int box;       // -1 none; else how much the sheet was told before it
};

const CommandCase kCommands[] = {
    {"yes", kYes, BN_CLICKED, true, "", "I", "YE", true, -1},
    {"no", kNo, BN_CLICKED, true, "I", "", "E", true, -1},
    {"normal", kNormal, BN_CLICKED, true, "IR", "I", "YE", true, -1},
    {"normal with zoom", kNormal, BN_CLICKED, true, "IRZ", "IZ", "YS", true, -1},
    {"normal with a watermark", kNormal, BN_CLICKED, true, "IRW", "IW", "Y", true, -1},
    {"rotate", kRotate180, BN_CLICKED, true, "", "IR", "Y", true, 0},
    {"rotate as image", kRotate180, BN_CLICKED, true, "I", "IR", "Y", true, -1},
    {"zoom", kZoom, BN_CLICKED, true, "", "IZ", "YS", true, 1},
    {"zoom as image", kZoom, BN_CLICKED, true, "i", "iZ", "YS", true, -1},
    {"no zoom", kZoom, BN_CLICKED, false, "IZ", "I", "YE", true, -1},
    {"no zoom, rotated", kZoom, BN_CLICKED, false, "IZR", "IR", "Y", true, -1},
    {"no zoom, watermark", kZoom, BN_CLICKED, false, "IZW", "IW", "Y", true, -1},
    {"log", kLog, BN_CLICKED, true, "", "L", "EL", true, -1},
    {"no log", kLog, BN_CLICKED, false, "L", "", "E", true, -1},
    {"language", kLanguage, CBN_SELCHANGE, false, "", "", "E", true, -1},
    {"arrows", kSpin, 5, false, "", "", "E", true, -1},
    {"language opened", kLanguage, CBN_DROPDOWN, false, "", "", "E", false, -1},
    {"form opened", kPaperSize, CBN_DROPDOWN, false, "", "", "E", false, -1},
    {"scale typed", kScale, EN_CHANGE, false, "", "", "E", false, -1},
    {"zoom focused", kZoom, BN_SETFOCUS, true, "", "", "E", false, -1},
    {"log focused", kLog, BN_SETFOCUS, true, "", "", "E", false, -1},
    {"browse focused", kBrowse, BN_SETFOCUS, false, "L", "L", "EL", false, -1},
    {"update", kUpdate, BN_CLICKED, false, "", "", "E", false, -1},
};

TEST_F(LoneMainPageTest, ShowsTheRecord) {
    struct Case {
        const char* on;
        const char* shown;
    };
    const Case cases[] = {{"", "E"},   {"I", "YE"}, {"i", "E"}, {"IZ", "YS"}, {"Z", "S"},
                          {"IR", "Y"}, {"IW", "Y"}, {"W", ""},  {"L", "EL"},  {"IZRWL", "YSL"}};
    InitialiseSheet();
    for (const Case& each : cases) {
        SCOPED_TRACE(each.on);
        const std::string on = each.on;
        SetRecord(RecordOf(on));
        Make();
        EXPECT_EQ(ShownOn(Page()), each.shown);
        EXPECT_EQ(Page().IsChecked(kZoom), on.find('Z') != std::string::npos);
        EXPECT_EQ(Page().IsChecked(kRotate180), on.find('R') != std::string::npos);
        EXPECT_EQ(Page().IsChecked(kNormal), on.find('R') == std::string::npos);
        EXPECT_EQ(Page().IsChecked(kLog), on.find('L') != std::string::npos);
        EXPECT_EQ(Page().Text(kScale), L"50");
        EXPECT_EQ(Differences(RecordOf(on), Record()), "");
        EXPECT_THAT(sheet_.messages, IsEmpty());
    }
    const Bytes odd = With(PlainRecord(), {{kZoomAt, 2}, {kRotateAt, 255}, {kLogAt, 2}, {kWaterMarkAt, 9}});
    SetRecord(odd);
    Make();
    EXPECT_EQ(ShownOn(Page()), "") << "other values force, but are not shown as on";
    EXPECT_FALSE(Page().IsChecked(kZoom));
    EXPECT_TRUE(Page().IsChecked(kNormal));
    EXPECT_FALSE(Page().IsChecked(kLog));
    EXPECT_EQ(Differences(odd, Record()), "");
    int low = 0;
    int high = 0;
    SendDlgItemMessageW(page_, kSpin, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&low),
                        reinterpret_cast<LPARAM>(&high));
    EXPECT_EQ(low, 10);
    EXPECT_EQ(high, 200);
    EXPECT_EQ(SendDlgItemMessageW(page_, kScale, EM_GETLIMITTEXT, 0, 0), 3);
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(LoneMainPageTest, FollowsItsControls) {
    InitialiseSheet();
    for (const CommandCase& each : kCommands) {
        SCOPED_TRACE(each.name);
        SetRecord(RecordOf(each.before));
        Make();
        boxes_.clear();
        if (each.control == kNormal || each.control == kRotate180) {
            CheckRadioButton(page_, kNormal, kRotate180, each.control);
        } else if (each.control == kYes || each.control == kNo) {
            CheckRadioButton(page_, kYes, kNo, each.control);
        } else if (each.control == kZoom || each.control == kLog) {
            CheckDlgButton(page_, each.control, each.checked ? BST_CHECKED : BST_UNCHECKED);
        }
        Use(each.control, each.notification);
        EXPECT_EQ(Differences(RecordOf(each.after), Record()), "");
        EXPECT_EQ(ShownOn(Page()), each.shown);
        EXPECT_EQ(sheet_.messages, std::vector(each.changed ? 1 : 0, Changed()));
        if (each.box < 0) {
            EXPECT_THAT(boxes_, IsEmpty());
        } else {
            EXPECT_THAT(boxes_,
                        ElementsAre(Box{page_, kAsImageText, L"Information", MB_OK | MB_ICONINFORMATION,
                                        static_cast<std::size_t>(each.box)}));
        }
        EXPECT_THAT(Host().helper().calls(), IsEmpty());
    }
}

TEST_F(LoneMainPageTest, TakesTheArrowsPosition) {
    const Bytes record = PlainRecord();
    OpenPage(record);
    const auto scroll = [&](int control) {
        Call(WM_VSCROLL, SB_ENDSCROLL, reinterpret_cast<LPARAM>(GetDlgItem(page_, control)));
    };
    std::uint8_t last = 50;
    for (const std::uint8_t position : std::initializer_list<std::uint8_t>{200, 150, 101, 10, 99}) {
        SendDlgItemMessageW(page_, kSpin, UDM_SETPOS32, 0, position);
        scroll(kLanguage);
        Call(WM_VSCROLL, SB_ENDSCROLL, 0);
        EXPECT_EQ(Differences(With(record, {{kScaleAt, last}}), Record()), "");
        sheet_.messages.clear();
        position % 2 == 0 ? scroll(kSpin) : static_cast<void>(Use(kSpin, 0));
        EXPECT_EQ(Differences(With(record, {{kScaleAt, position}}), Record()), "");
        EXPECT_THAT(sheet_.messages, ElementsAre(Changed()));
        last = position;
    }
}

TEST_F(LoneMainPageTest, ReadsTheTypedScaleWithItsSign) {
    const Bytes record = PlainRecord();
    OpenPage(record);
    for (const auto& [typed, scale] : {std::pair(L"-5", 10), std::pair(L"-99", 10), std::pair(L"88", 88),
                                       std::pair(L"4294967295", 10), std::pair(L"9x", 10)}) {
        SetDlgItemTextW(page_, kScale, typed);
        sheet_.messages.clear();
        Use(kScale, EN_KILLFOCUS);
        EXPECT_EQ(Differences(With(record, {{kScaleAt, static_cast<std::uint8_t>(scale)}}), Record()), "")
            << std::filesystem::path(typed);
        EXPECT_EQ(Page().Text(kScale), std::to_wstring(scale));
        EXPECT_THAT(sheet_.messages, ElementsAre(Changed()));
    }
}

// The log's folder and viewer

class LogFolderTest : public LoneMainPageTest {
  protected:
    void SetUp() override {
        LoneMainPageTest::SetUp();
        hooks_.On("KERNEL32.dll", "GetProcAddress", &GetProcAddress,
                  [this](auto original, HMODULE module, LPCSTR name) -> FARPROC {
                      if (reinterpret_cast<ULONG_PTR>(name) >> 16 == 0) {
                          return original(module, name);
                      }
                      const std::string function = name;
                      if (function == missing_) {
                          return nullptr;
                      }
                      if (function == "SHBrowseForFolderW") {
                          return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&LogFolderTest::Browse));
                      }
                      if (function == "SHGetPathFromIDListW") {
                          return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&LogFolderTest::PathOf));
                      }
                      return original(module, name);
                  });
        hooks_.On("ole32.dll", "CoTaskMemFree", &CoTaskMemFree, [this](auto original, LPVOID memory) {
            EXPECT_EQ(memory, chosen_);
            ++freed_;
            original(memory);
        });
        now_ = this;
    }

    static PIDLIST_ABSOLUTE WINAPI Browse(LPBROWSEINFOW info) {
        ++now_->browsed_;
        EXPECT_EQ(info->hwndOwner, now_->page_);
        EXPECT_STREQ(info->lpszTitle, L"");
        EXPECT_EQ(info->ulFlags, UINT{BIF_RETURNONLYFSDIRS});
        EXPECT_EQ(info->pidlRoot, nullptr);
        EXPECT_EQ(now_->sheet_.messages.size(), 1u) << "the sheet is told first";
        now_->chosen_ = now_->cancel_ ? nullptr : CoTaskMemAlloc(2);
        return static_cast<PIDLIST_ABSOLUTE>(now_->chosen_);
    }

    // The platform's callers lend room for MAX_PATH units.
    static BOOL WINAPI PathOf(PCIDLIST_ABSOLUTE list, LPWSTR path) {
        EXPECT_EQ(list, now_->chosen_);
        now_->path_.copy(path, MAX_PATH - 1);
        path[std::min<std::size_t>(now_->path_.size(), MAX_PATH - 1)] = L'\0';
        return now_->has_path_;
    }

    static inline LogFolderTest* now_ = nullptr;
    std::string missing_;
    bool cancel_ = false;
    BOOL has_path_ = TRUE;
    std::wstring path_ = L"D:\\New logs";
    void* chosen_ = nullptr;
    int browsed_ = 0;
    int freed_ = 0;
};

TEST_F(LogFolderTest, TakesTheChosenFolder) {
    const Bytes record = With(PlainRecord(), {{kLogAt, 1}});
    for (const std::wstring& path : {path_, L"D:\\" + std::wstring(252, L'p'), std::wstring()}) {
        OpenPage(record);
        path_ = path;
        Use(kBrowse);
        EXPECT_EQ(Page().Text(kLogPath), path);
        EXPECT_EQ(Differences(WithLogPath(record, path), Record()), "");
        EXPECT_THAT(sheet_.messages, ElementsAre(Changed()));
    }
    EXPECT_EQ(browsed_, 3);
    EXPECT_EQ(freed_, 3);
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(LogFolderTest, KeepsTheFolderOtherwise) {
    const Bytes record = With(PlainRecord(), {{kLogAt, 1}});
    const auto expect_kept = [&](const char* why, int browsed) {
        browsed_ = 0;
        Unmake();
        OpenPage(record);
        Use(kBrowse);
        EXPECT_EQ(browsed_, browsed) << why;
        EXPECT_EQ(Page().Text(kLogPath), L"C:\\Logs") << why;
        EXPECT_EQ(Differences(record, Record()), "") << why;
        EXPECT_THAT(sheet_.messages, ElementsAre(Changed())) << why;
    };
    cancel_ = true;
    expect_kept("cancelled", 1);
    EXPECT_EQ(freed_, 0);
    cancel_ = false;
    has_path_ = FALSE;
    expect_kept("no path", 1);
    EXPECT_EQ(freed_, 1);
    has_path_ = TRUE;
    EXPECT_THAT(boxes_, IsEmpty());
    for (const std::size_t length : {256u, 259u}) {
        path_ = std::wstring(length, L'p');
        expect_kept("too long", 1);
        EXPECT_THAT(boxes_,
                    ElementsAre(Box{page_, L"The path is too long!", L"Error", MB_OK | MB_ICONERROR, 1}));
        boxes_.clear();
    }
    EXPECT_EQ(freed_, 3);
    path_ = L"D:\\";
    for (const auto& [function, browsed] :
         {std::pair("SHBrowseForFolderW", 0), std::pair("SHGetPathFromIDListW", 1)}) {
        Unmake();
        StopHost();
        missing_ = function;
        rig::TraceCapture trace;
        Host();
        const std::wstring line = browsed == 0 ? L"UI:  SHBrowseForFolderFunc failed.\r\n"
                                               : L"UI:  SHGetPathFromIDListFunc failed.\r\n";
        const Lines lines = trace.Take();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1);
        expect_kept(function, browsed);
    }
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(LoneMainPageTest, StartsTheViewer) {
    struct Started {
        HWND owner;
        std::wstring verb, program, parameters;
        bool hasDirectory;
        INT show;
        bool operator==(const Started&) const = default;
    };
    std::vector<Started> started;
    DWORD error = 0;
    bool isVersion50 = false;
    std::wstring system = L"C:\\windows\\system32";
    hooks_.On("SHELL32.dll", "ShellExecuteW", &ShellExecuteW,
              [&](auto, HWND owner, LPCWSTR verb, LPCWSTR program, LPCWSTR parameters, LPCWSTR directory,
                  INT show) -> HINSTANCE {
                  EXPECT_EQ(GetLastError(), 0u) << "an older error is not the viewer's";
                  started.push_back({owner, verb, program, parameters, directory != nullptr, show});
                  SetLastError(error);
                  return reinterpret_cast<HINSTANCE>(ULONG_PTR{error == 0 ? 42u : error});
              });
    hooks_.On("KERNEL32.dll", "GetSystemDirectoryW", &GetSystemDirectoryW,
              [&](auto, LPWSTR path, UINT length) -> UINT {
                  EXPECT_GT(length, system.size());
                  path[system.copy(path, length - 1)] = L'\0';
                  SetLastError(ERROR_FILE_NOT_FOUND);
                  return static_cast<UINT>(system.size());
              });
    hooks_.On("KERNEL32.dll", "VerifyVersionInfoW", &VerifyVersionInfoW,
              [&](auto, LPOSVERSIONINFOEXW version, DWORD types, DWORDLONG) -> WINBOOL {
                  EXPECT_EQ(version->dwMajorVersion, 5u);
                  EXPECT_EQ(version->dwMinorVersion, 0u);
                  EXPECT_EQ(types, DWORD{VER_MAJORVERSION | VER_MINORVERSION});
                  return isVersion50;
              });
    struct Case {
        const wchar_t* system;
        std::wstring path;
        DWORD error;
        bool isVersion50;
        const wchar_t* program;
        bool says;
    };
    const Case cases[] = {
        {L"C:\\windows\\system32", L"C:\\Logs", 0, false, L"C:\\VELDDriverlog\\VELDDriverlogViewer.exe",
         false},
        {L"E:\\winnt\\system32", L"C:\\My logs", 2, false, L"E:\\VELDDriverlog\\VELDDriverlogViewer.exe",
         true},
        {L"C:\\windows\\system32", L"", 2, false, L"C:\\VELDDriverlog\\VELDDriverlogViewer.exe", true},
        {L"C:\\windows\\system32", L"x", 2, true, L"C:\\VELDDriverlog\\VELDDriverlogViewer.exe", false},
        {L"C:\\windows\\system32", L"x", 3, false, L"C:\\VELDDriverlog\\VELDDriverlogViewer.exe", false},
        {L"C:\\windows\\system32", L"x", 5, false, L"C:\\VELDDriverlog\\VELDDriverlogViewer.exe", false},
        {L"C:\\windows\\system32", std::wstring(256, L'p'), 0, false,
         L"C:\\VELDDriverlog\\VELDDriverlogViewer.exe", false},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        const Bytes record = WithLogPath(With(PlainRecord(), {{kLogAt, 1}}), each.path);
        system = each.system;
        error = each.error;
        isVersion50 = each.isVersion50;
        OpenPage(record);
        started.clear();
        boxes_.clear();
        Use(kViewer);
        EXPECT_THAT(started, ElementsAre(Started{page_, L"open", each.program,
                                                 L"\"R72\" \"" + each.path + L"\"", false, SW_SHOW}));
        if (each.says) {
            EXPECT_THAT(boxes_, ElementsAre(Box{page_, L"Not fount LOGViewer!", L"Error", MB_OK, 0}));
        } else {
            EXPECT_THAT(boxes_, IsEmpty());
        }
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_THAT(sheet_.messages, IsEmpty());
    }
}

// Messages and notifications

Lines LayoutLines(const Lines& lines) {
    Lines own;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(own),
                 [](const std::wstring& line) { return line.starts_with(L"UI:  Layout page"); });
    return own;
}

TEST_F(LoneMainPageTest, AnswersTheSheet) {
    const Bytes record = With(PlainRecord(), {{kPrintAsImageAt, 1}, {kRotateAt, 2}, {kZoomAt, 3}});
    const Bytes formed = WithForm(record, L"72mm x 297mm");
    OpenPage(record);
    rig::TraceCapture trace;
    constexpr wchar_t kIn[] = L"UI:  Layout page callback WM_NOTIFY in\r\n";
    EXPECT_EQ(Notify(PSN_SETACTIVE), TRUE);
    EXPECT_EQ(NotifyResult(), 0);
    EXPECT_THAT(trace.Take(), ElementsAre(kIn, L"UI:  Layout page callback WM_NOTIFY out\r\n"));
    EXPECT_EQ(Notify(PSN_KILLACTIVE), TRUE);
    EXPECT_EQ(NotifyResult(), FALSE);
    EXPECT_THAT(trace.Take(), ElementsAre(kIn));
    for (const UINT code : {PSN_RESET, PSN_HELP, PSN_QUERYCANCEL, NM_CLICK, 0u}) {
        EXPECT_EQ(Notify(code), FALSE) << code;
        EXPECT_EQ(NotifyResult(), 0x77) << code;
        EXPECT_THAT(trace.Take(), ElementsAre(kIn));
    }
    EXPECT_THAT(fake_.calls, IsEmpty());
    EXPECT_THAT(sheet_.messages, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
    EXPECT_EQ(Notify(PSN_APPLY), TRUE);
    EXPECT_EQ(NotifyResult(), PSNRET_NOERROR);
    EXPECT_THAT(LayoutLines(trace.Take()),
                ElementsAre(kIn, L"UI:  Layout page callback PSN_APPLY in\r\n",
                            L"UI:  Layout page callback PSN_APPLY Language set in\r\n",
                            L"UI:  Layout page callback PSN_APPLY Language set out\r\n"));
    ASSERT_EQ(fake_.calls.size(), 1u);
    EXPECT_EQ(fake_.calls[0].sheet, &fake_);
    EXPECT_EQ(fake_.calls[0].function, UINT{CPSFUNC_SET_RESULT});
    EXPECT_EQ(fake_.calls[0].first, handle_);
    EXPECT_EQ(fake_.calls[0].second, 1);
    EXPECT_THAT(sheet_.messages, ElementsAre(Unchanged()));
    EXPECT_EQ(Differences(With(formed, {{kRotateAt, 0}}), Record()), "") << "normal is checked";
    CheckRadioButton(page_, kNormal, kRotate180, kRotate180);
    Notify(PSN_APPLY);
    EXPECT_EQ(Differences(With(formed, {{kRotateAt, 1}}), Record()), "");
    CheckDlgButton(page_, kRotate180, BST_UNCHECKED);
    SetRecord(record);
    Notify(PSN_APPLY);
    EXPECT_EQ(Differences(formed, Record()), "") << "neither";
    trace.Take();
    for (const auto& [log, line] : {std::pair<std::uint8_t, const wchar_t*>(0, L"0"), {1, L"1"}}) {
        for (const int notification : {BN_SETFOCUS, BN_CLICKED}) {
            SetRecord(With(record, {{kLogAt, log}}));
            Use(kLog, notification);
            EXPECT_THAT(trace.Take(), ElementsAre(L"check_log1:  LOGRecord = " + std::wstring(line) + L"\n"));
        }
    }
}

TEST_F(LoneMainPageTest, FollowsTheRecordWhenItComesToTheFront) {
    OpenPage(PlainRecord());
    const Window page = Page();
    for (const std::size_t forcing : {kZoomAt, kRotateAt, kWaterMarkAt}) {
        const Bytes forced = With(PlainRecord(), {{forcing, 2}});
        SetRecord(forced);
        Notify(PSN_SETACTIVE);
        EXPECT_TRUE(page.IsChecked(kYes)) << forcing;
        EXPECT_FALSE(page.IsChecked(kNo)) << forcing;
        EXPECT_FALSE(page.IsEnabled(kYes)) << forcing;
        EXPECT_FALSE(page.IsEnabled(kNo)) << forcing;
        EXPECT_EQ(Differences(forced, Record()), "");
        SetRecord(PlainRecord());
        Notify(PSN_SETACTIVE);
        EXPECT_TRUE(page.IsEnabled(kYes)) << forcing;
        EXPECT_TRUE(page.IsEnabled(kNo)) << forcing;
        EXPECT_TRUE(page.IsChecked(kYes)) << "the choice stays as shown";
    }
    EXPECT_THAT(boxes_, IsEmpty());
}

TEST_F(LoneMainPageTest, ReloadsWhatChangedWhenItIsPainted) {
    int reads = 0;
    hooks_.On("KERNEL32.dll", "CreateFileW", &CreateFileW, [&](auto original, auto... arguments) -> HANDLE {
        ++reads;
        return original(arguments...);
    });
    OpenPage(PlainRecord());
    EXPECT_EQ(Call(WM_PAINT), FALSE);
    reads = 0;
    Host().helper().ForgetCalls();
    rig::TraceCapture trace;
    EXPECT_EQ(Call(WM_PAINT), FALSE);
    EXPECT_EQ(reads, 0) << "nothing has changed";
    EXPECT_THAT(trace.Take(),
                ElementsAre(L"GPDIndex       = Density0\r\n", L"GPDIndex       = Density1\r\n",
                            L"GPDIndex       = Density2\r\n", L"GPDIndex       = Density3\r\n",
                            L"GPDIndex       = Density4\r\n", L"GPDIndex       =1111 Density4\r\n"));
    ASSERT_EQ(Host().helper().calls().size(), 1u);
    EXPECT_EQ(Host().helper().calls()[0].option, &Host().options().item(DriverOptions::kDensity));
    ChooseLanguage(kSimplifiedChinese);
    SetDlgItemTextW(page_, kZoom, L"?");
    EXPECT_EQ(CaptionsOf(Page())[0], L"Document Setting");
    Call(WM_PAINT);
    EXPECT_EQ(CaptionsOf(Page()), SourceCaptions(kSimplifiedChinese));
    EXPECT_EQ(Page().Text(kUpdate), L"Update Language From Web");
    EXPECT_EQ(Host().options().Name(DriverOptions::kDensity), L"打印浓度");
    EXPECT_GT(reads, 0);
    rig::RemoveLanguageKey();
    WriteUserFile(kEnglish,
                  L"[LAYOUT]\r\nRC_SCALE=0123456789012345678901234567890\r\nRC_DOCSETTING="
                  L"01234567890123456789012345678901234567890123456789012345\r\n");
    Call(WM_PAINT);
    Texts expected = DefaultCaptions();
    expected[0] = kCut49;
    expected[5] = L"0123456789012345678";
    EXPECT_EQ(CaptionsOf(Page()), expected) << "English without a key, cut to the captions' lengths";
    EXPECT_THAT(sheet_.messages, IsEmpty());
    EXPECT_EQ(Differences(PlainRecord(), Record()), "");
}

TEST_F(LoneMainPageTest, IgnoresMessagesWithoutItsParameter) {
    const Bytes record = PlainRecord();
    rig::TraceCapture trace;
    const std::wstring missing = L"ERROR UI:  LayoutPropPageProc : GetWindowLongPtr Failed (0)\r\n";
    OpenPage(record);
    Lines lines = trace.Take();
    const auto initialised =
        std::find(lines.begin(), lines.end(), L"UI:  Initialize Layout page callback function\r\n");
    ASSERT_NE(initialised, lines.end());
    EXPECT_EQ(*(initialised - 1), missing) << "the font comes before the parameter";
    EXPECT_EQ(std::count(initialised, lines.end(), missing), 0);
    EXPECT_EQ(GetWindowLongPtrW(page_, DWLP_USER), description_.lParam);
    EXPECT_EQ(Call(WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(&description_)), FALSE);
    SetWindowLongPtrW(page_, DWLP_USER, 0);
    sheet_.messages.clear();
    trace.Take();
    const auto expect_ignored = [&](INT_PTR result) {
        EXPECT_EQ(result, FALSE);
        EXPECT_THAT(trace.Take(), ElementsAre(missing));
    };
    CheckDlgButton(page_, kZoom, BST_CHECKED);
    expect_ignored(Use(kZoom));
    expect_ignored(Use(kYes));
    expect_ignored(Notify(PSN_APPLY));
    expect_ignored(Call(WM_PAINT));
    expect_ignored(Call(WM_SYSCOMMAND, SC_MOVE));
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_THAT(fake_.calls, IsEmpty());
    EXPECT_THAT(sheet_.messages, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(LoneMainPageTest, LeavesSystemCommandsAndIconsToTheSystem) {
    std::vector<SheetWindow::Message> passed;
    OpenPage();
    hooks_.On("USER32.dll", "DefWindowProcW", &DefWindowProcW,
              [&](auto, HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
                  EXPECT_EQ(window, page_);
                  EXPECT_EQ(lparam, 34);
                  passed.push_back({message, wparam});
                  return 5;
              });
    EXPECT_EQ(Call(WM_SYSCOMMAND, SC_MOVE, 34), 5);
    EXPECT_EQ(Call(WM_SETICON, ICON_BIG, 34), 5);
    EXPECT_THAT(passed, ElementsAre(SheetWindow::Message{WM_SYSCOMMAND, SC_MOVE},
                                    SheetWindow::Message{WM_SETICON, ICON_BIG}));
}

// Without a record the page still opens, for the language.
TEST_F(LoneMainPageTest, SurvivesAHostWithoutARecord) {
    const Bytes record = PlainRecord();
    OpenPage(record);
    Unmake();
    fake_.parameters.pOEMDM = nullptr;
    Host().common_ui().pOEMDM = nullptr;
    Host().common_ui().pPrinterName = nullptr;
    Make();
    EXPECT_EQ(Page().ComboItems(kLanguage), kShippedLanguages);
    for (const int control : {kYes, kZoom, kLog, kBrowse, kViewer, kSpin}) {
        Use(control);
    }
    Call(WM_PAINT);
    EXPECT_EQ(Notify(PSN_SETACTIVE), TRUE);
    SendDlgItemMessageW(page_, kLanguage, CB_SETCURSEL, 1, 0);
    EXPECT_EQ(Notify(PSN_APPLY), TRUE);
    EXPECT_EQ(rig::LanguageValue(kLanguageValue), kSimplifiedChinese);
    EXPECT_THAT(boxes_, IsEmpty());
    EXPECT_EQ(Differences(record, Record()), "");
}

}  // namespace
}  // namespace pages::layout
