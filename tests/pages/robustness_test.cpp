// What a careless host, a damaged record or a failing system sends to the page and its dialog: nothing of it
// may end the program that prints, and nothing is stored that the user did not choose.
#include "page_fixture.h"

#include "resources/resource.h"
#include "rig/import_hooks.h"

namespace {

using pages::Bytes;
using testing::ElementsAre;

class RobustnessTest : public pages::PageTest {
  protected:
    void OpenPage(const std::function<void(const Window& page)>& script) {
        OpenSheet([&](UiDriver&, Sheet& sheet) {
            script(sheet.SelectTab(L"Operation"));
            sheet.PressCancel();
        });
    }
    void OpenDialog(const std::function<void(const Window& dialog)>& script) {
        OpenPage([&](const Window& page) {
            const Window dialog = page.OpenDialog(IDC_OPERATION_PAGE_DOC_START);
            script(dialog);
            if (dialog.IsOpen()) {
                pages::CloseDialog(dialog, IDCANCEL, page);
            }
        });
    }
};

TEST_F(RobustnessTest, ANotificationWithoutItsBlockIsIgnored) {
    OpenPage([](const Window& page) {
        EXPECT_EQ(SendMessageW(page.handle(), WM_NOTIFY, 0, 0), 0);
        EXPECT_TRUE(page.IsEnabled(IDC_OPERATION_PAGE_DOC_START));
    });
}

TEST_F(RobustnessTest, ADrawingWithoutItsBlockIsIgnored) {
    OpenDialog([](const Window& dialog) {
        SendMessageW(dialog.handle(), WM_DRAWITEM, IDC_OPERATION_PREVIEW, 0);
        EXPECT_TRUE(dialog.IsOpen());
    });
}

TEST_F(RobustnessTest, ASecondInitialisationChangesNothing) {
    const Bytes before = Record();
    OpenDialog([](const Window& dialog) {
        dialog.SelectCombo(IDC_OPERATION_CUT, 2);
        for (const LPARAM parameter : {LPARAM{0}, LPARAM{1}}) {
            SendMessageW(dialog.handle(), WM_INITDIALOG, 0, parameter);
            EXPECT_TRUE(dialog.IsOpen());
            EXPECT_EQ(dialog.ComboItems(IDC_OPERATION_CUT).size(), 3u);
            EXPECT_EQ(dialog.ComboSelection(IDC_OPERATION_CUT), 2);
        }
    });
    EXPECT_EQ(pages::Differences(before, Record()), "");
}

// The system refuses to keep the dialog's buffer: what the dialog would show is not the record.
TEST_F(RobustnessTest, ADialogThatCannotBeFilledClosesAndStoresNothing) {
    rig::ImportHooks hooks;
    bool refuse = false;
    hooks.On("USER32.dll", "SetWindowLongPtrW", &SetWindowLongPtrW, [&](auto original, auto... arguments) {
        const auto [window, index, value] = std::tuple(arguments...);
        const bool isBuffer = index == DWLP_USER && GetDlgItem(window, IDC_OPERATION_PREVIEW) != nullptr;
        return refuse && isBuffer ? LONG_PTR{0} : original(arguments...);
    });
    StartHost();
    ASSERT_GE(hooks.Bound("SetWindowLongPtrW"), 1);
    SetRecord(pages::FilledRecord([](std::size_t offset) { return static_cast<std::uint8_t>(offset * 7); }));
    const Bytes before = Record();
    OpenPage([&](const Window& page) {
        refuse = true;
        page.Click(IDC_OPERATION_PAGE_DOC_START);
        EXPECT_TRUE(IsWindowEnabled(GetParent(page.handle()))) << "no dialog is left in front of the sheet";
    });
    EXPECT_EQ(pages::Differences(before, Record()), "");
}

// Offsets in the start-of-document block: cut 148, buzzer 157, logo 158.
TEST_F(RobustnessTest, AChoiceBeyondItsListCountsAsOneThatIsOn) {
    StartHost();
    Bytes record = Record();
    record[148] = record[157] = record[158] = 77;
    SetRecord(record);
    OpenDialog([](const Window& dialog) {
        EXPECT_EQ(dialog.ComboSelection(IDC_OPERATION_BUZZER), -1);
        for (const int control : {IDC_OPERATION_VOLUME, IDC_OPERATION_VOLUME_SPIN, IDC_OPERATION_ALIGN_LEFT,
                                  IDC_OPERATION_ALIGN_CENTERED, IDC_OPERATION_ALIGN_RIGHT,
                                  IDC_OPERATION_BEFORE_CUT, IDC_OPERATION_AFTER_CUT}) {
            EXPECT_TRUE(dialog.IsEnabled(control)) << control;
        }
    });
}

TEST_F(RobustnessTest, ArrowKeysMoveBetweenDrawerAndHeraldOnly) {
    OpenDialog([](const Window& dialog) {
        const HWND drawer = dialog.Control(IDC_OPERATION_OPEN_DRAWER);
        const HWND herald = dialog.Control(IDC_OPERATION_USE_HERALD);
        EXPECT_EQ(GetNextDlgGroupItem(dialog.handle(), drawer, FALSE), herald);
        EXPECT_EQ(GetNextDlgGroupItem(dialog.handle(), herald, FALSE), drawer);
    });
}

TEST_F(RobustnessTest, TabGoesFromTopToBottom) {
    OpenDialog([](const Window& dialog) {
        dialog.Click(IDC_OPERATION_SEND_COMMAND);
        dialog.SelectCombo(IDC_OPERATION_BUZZER, 1);
        dialog.SelectCombo(IDC_OPERATION_LOGO, 1);
        std::vector<int> order;
        HWND control = dialog.Control(IDC_OPERATION_SEND_COMMAND);
        do {
            order.push_back(GetDlgCtrlID(control));
            control = GetNextDlgTabItem(dialog.handle(), control, FALSE);
        } while (control != dialog.Control(IDC_OPERATION_SEND_COMMAND) && order.size() < 30);
        EXPECT_THAT(order, ElementsAre(1015, 1016, 1025, 1017, 1027, 1024, 1021, 1023, 1020, 1028, 1029, 1033,
                                       3, 1, 2));
    });
}

TEST_F(RobustnessTest, AnEmptiedNumberGoesOnBehindItsZero) {
    OpenDialog([](const Window& dialog) {
        dialog.TypeText(IDC_OPERATION_FEED, L"");
        EXPECT_EQ(dialog.Text(IDC_OPERATION_FEED), L"0");
        dialog.AppendText(IDC_OPERATION_FEED, L"7");
        EXPECT_EQ(dialog.Text(IDC_OPERATION_FEED), L"7");
    });
}

TEST_F(RobustnessTest, ConstantOptionTextsAreReplacedNotWritten) {
    HostSettings settings;
    settings.options = {{.name = L"Level", .level = 2, .values = {L"Level Density 1", L"Level Density 2"}}};
    PluginHost& host = StartHost(std::move(settings));
    constexpr wchar_t kConstant[] = L"Level Density 1";
    void* const page = VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    ASSERT_NE(page, nullptr);
    std::memcpy(page, kConstant, sizeof kConstant);
    DWORD old = 0;
    ASSERT_TRUE(VirtualProtect(page, 4096, PAGE_READONLY, &old));
    OPTPARAM& value = host.options().items()[0].pOptType->pOptParam[0];
    wchar_t* const kept = value.pData;
    value.pData = static_cast<wchar_t*>(page);
    ASSERT_EQ(host.CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    pages::FakeSheet sheet;
    EXPECT_EQ(host.plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
    EXPECT_STREQ(value.pData, L"Density0");
    EXPECT_STREQ(static_cast<wchar_t*>(page), kConstant);
    value.pData = kept;
    VirtualFree(page, 0, MEM_RELEASE);
}

}  // namespace
