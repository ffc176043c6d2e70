// The Main page in the real sheet: its controls and texts, what each control leaves in the record, and a
// change of language.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <filesystem>
#include <functional>
#include <string>
#include <tuple>

#include "help_reader.h"
#include "layout_fixture.h"
#include "page_fixture.h"
#include "real_input.h"

namespace pages::layout {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

struct Help {
    int control;
    const wchar_t* key;
    const wchar_t* english;
};

constexpr Help kHelps[] = {
    {kYes, L"CTEXT_RADIO_ASGRAPHICSYES", L"All the data will be printed as a graphic image."},
    {kNo, L"CTEXT_RADIO_ASGRAPHICSNO", L"'All the data printed as a graphic image' will not be enabled."},
    {kZoom, L"CTEXT_CHECK_ZOOM", L"This configures reduced print."},
    {kScale, L"CTEXT_SCALE", L"This configures reduced print."},
    {kNormal, L"CTEXT_RADIO_ROTATENOMAL",
     L"This configures print direction.The graphic shown on the right changes according to the selected "
     L"setting."},
    {kRotate180, L"CTEXT_RADIO_ROTATE180",
     L"This configures print direction.The graphic shown on the right changes according to the selected "
     L"setting."},
    {kPaperSize, L"CTEXT_PAPERSIZE", L"Select the paper size from list."},
    {kLanguage, L"CTEXT_LANGUAGE", L"You can select a language used for this properties dialog box."},
    {kLog, L"CTEXT_CHECK_LOG", L"Record the driver ."},
    {kLogPath, L"CTEXT_EDIT_LOG", L"The driver log dirctory."},
    {kBrowse, L"CTEXT_BUTTON_LOG", L"Select the path of Log."},
    {kViewer, L"CTEXT_BUTTON_VIEWER", L"View the log."},
};

class MainPageTest : public PageTest {
  protected:
    void OpenPage(const std::function<void(UiDriver&, Sheet&, const Window&)>& script) {
        OpenSheet([&](UiDriver& ui, Sheet& sheet) { script(ui, sheet, sheet.SelectPage(2)); });
    }

    void ExpectRecord(const Bytes& expected, const char* after) {
        EXPECT_EQ(Differences(expected, Record()), "") << after;
    }
};

TEST_F(MainPageTest, ShowsItsControlsInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        ChooseLanguage(file);
        OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
            EXPECT_EQ(sheet.TabTitles().at(2), SourceText(file, L"LAYOUT", L"RC_LAYOUTFORM"));
            EXPECT_EQ(CaptionsOf(page), SourceCaptions(file));
            EXPECT_EQ(page.Text(kUpdate), L"Update Language From Web");
            for (const int control : {1124, kNormal, kRotate180, 1072, 1074, kUpdate}) {
                EXPECT_FALSE(page.IsVisible(control)) << control;
            }
            for (const int control : {1119, 1120, kYes, kNo, kZoom, kScaleLabel, kScale, kSpin, 1122, 1123,
                                      kPaperSize, kLanguage, 1209, kLog, kLogPath, kBrowse, kViewer}) {
                EXPECT_TRUE(page.IsVisible(control)) << control;
            }
            const auto style = GetWindowLongPtrW(page.Control(kScale), GWL_STYLE);
            EXPECT_EQ(style & (ES_NUMBER | ES_RIGHT), ES_NUMBER | ES_RIGHT);
            EXPECT_EQ(page.Send(kSpin, UDM_GETBUDDY), reinterpret_cast<LRESULT>(page.Control(kScale)));
            sheet.PressCancel();
        });
    }
}

TEST_F(MainPageTest, ShowsItsDefaultsWithoutAnyFile) {
    Host();
    RemoveAllLanguageFiles();
    OpenPage([](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(2), L"Main");
        EXPECT_EQ(CaptionsOf(page), DefaultCaptions());
        EXPECT_THAT(page.ComboItems(kLanguage), ElementsAre(L"English", L"English", L"System Language"));
        EXPECT_EQ(page.ComboSelection(kLanguage), 0);
        sheet.PressCancel();
    });
}

// With the real pointer, in the language that the page was painted in last.
TEST_F(MainPageTest, TwelveControlsHaveHelp) {
    SetRecord(With(PlainRecord(), {{kPrintAsImageAt, 1}, {kLogAt, 1}}));
    OpenPage([&](UiDriver& ui, Sheet&, const Window& page) {
        // The rotation is hidden, and in front of nothing else.
        for (const int radio : {kNormal, kRotate180}) {
            ShowWindow(page.Control(radio), SW_SHOWNA);
        }
        for (const wchar_t* file : {kEnglish, kSimplifiedChinese}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            ChooseLanguage(file);
            Repaint(page);
            for (const Help& help : kHelps) {
                // A disabled control gets no pointer: zoom has either "Yes" or the scale enabled.
                if (help.control == kScale) {
                    page.Click(kZoom);
                }
                const std::wstring text = SourceText(file, L"LAYOUT", help.key);
                ExpectHelp(ui, page, help.control, CentreOf(page.Control(help.control)), text);
                if (file == kEnglish) {
                    EXPECT_EQ(text, help.english);
                }
            }
            page.Click(kZoom);
            EXPECT_EQ(HelpedBeside(page.Control(kZoom)), std::size(kHelps));
        }
    });
}

TEST_F(MainPageTest, BoundsTheTypedScaleWhenItIsLeft) {
    const Bytes record = With(PlainRecord(), {{kPrintAsImageAt, 1}, {kZoomAt, 1}, {kScaleAt, 50}});
    SetRecord(record);
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.Text(kScale), L"50");
        bool isFirst = true;
        for (const auto& [typed, left, shown] :
             {std::tuple(L"250", 100, L"100"), std::tuple(L"5", 10, L"10"), std::tuple(L"100", 100, L"100"),
              std::tuple(L"101", 100, L"100"), std::tuple(L"", 10, L"10"), std::tuple(L"77", 77, L"77"),
              std::tuple(L"0", 10, L"10"), std::tuple(L"1234", 100, L"100"), std::tuple(L"9", 10, L"10")}) {
            SCOPED_TRACE(std::filesystem::path(typed));
            page.Focus(kScale);
            const Bytes before = Record();
            page.TypeText(kScale, typed);
            EXPECT_EQ(page.Text(kScale), std::wstring(typed).substr(0, 3));
            ExpectRecord(before, "typing");
            EXPECT_EQ(sheet.IsApplyEnabled(), !isFirst);
            page.Focus(kZoom);
            EXPECT_EQ(page.Text(kScale), shown);
            EXPECT_EQ(page.SpinPosition(kSpin), left);
            ExpectRecord(With(record, {{kScaleAt, static_cast<std::uint8_t>(left)}}), "leaving");
            EXPECT_TRUE(sheet.IsApplyEnabled());
            isFirst = false;
        }
        sheet.PressCancel();
    });
    ExpectRecord(record, "cancel");
}

TEST_F(MainPageTest, TakesTheScaleUpTo200ByTheArrows) {
    const Bytes record =
        WithForm(With(PlainRecord(), {{kPrintAsImageAt, 1}, {kZoomAt, 1}, {kScaleAt, 198}}), L"72mm x 297mm");
    SetRecord(record);
    const auto scaled = [&](std::uint8_t scale) { return With(record, {{kScaleAt, scale}}); };
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_FALSE(sheet.IsApplyEnabled());
        page.SpinUp(kSpin);
        ExpectRecord(scaled(199), "one step");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        page.SpinUp(kSpin, 3);
        ExpectRecord(scaled(200), "the end");
        EXPECT_EQ(page.Text(kScale), L"200");
        page.Focus(kScale);
        SendMessageW(sheet.handle(), PSM_APPLY, 0, 0);
        ExpectRecord(scaled(200), "applied without leaving");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        page.Focus(kZoom);
        ExpectRecord(scaled(100), "leaving");
        page.TypeText(kScale, L"12");
        page.SpinDown(kSpin, 4);
        ExpectRecord(scaled(10), "the other end");
        sheet.PressCancel();
    });
}

// Enter presses OK while the box has the focus.
TEST_F(MainPageTest, TakesTheTypedScaleThatIsAppliedWithoutLeaving) {
    struct Case {
        const wchar_t* typed;
        std::uint8_t kept;
    };
    const Bytes record = WithForm(With(PlainRecord(), {{kPrintAsImageAt, 1}, {kZoomAt, 1}}), L"72mm x 297mm");
    SetRecord(record);
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        page.Focus(kScale);
        for (const Case& each : {Case{L"44", 44}, Case{L"250", 100}, Case{L"", 10}}) {
            page.TypeText(kScale, each.typed);
            SendMessageW(sheet.handle(), PSM_APPLY, 0, 0);
            ExpectRecord(With(record, {{kScaleAt, each.kept}}), "apply");
            EXPECT_EQ(page.Text(kScale), std::to_wstring(each.kept));
            EXPECT_FALSE(sheet.IsApplyEnabled());
        }
        SetForegroundWindow(sheet.handle());
        WaitForFocus(ui, page, kScale);
        page.TypeText(kScale, L"77");
        PressKey(VK_RETURN);
        sheet.WaitClosed();
    });
    ExpectRecord(With(record, {{kScaleAt, 77}}), "Enter");
}

// The focus goes when the sheet does, and that must not bound what was applied a moment before.
TEST_F(MainPageTest, KeepsTheArrowsScaleWhenEnterClosesTheSheet) {
    const Bytes record =
        WithForm(With(PlainRecord(), {{kPrintAsImageAt, 1}, {kZoomAt, 1}, {kScaleAt, 199}}), L"72mm x 297mm");
    SetRecord(record);
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        SetForegroundWindow(sheet.handle());
        page.Focus(kScale);
        WaitForFocus(ui, page, kScale);
        page.SpinUp(kSpin);
        PressKey(VK_RETURN);
        sheet.WaitClosed();
    });
    ExpectRecord(With(record, {{kScaleAt, 200}}), "Enter");
}

TEST_F(MainPageTest, ZoomPrintsAsImage) {
    const Bytes record = PlainRecord();
    SetRecord(record);
    OpenPage([&](UiDriver& ui, Sheet& sheet, const Window& page) {
        const auto expect_zoom = [&](bool on, bool as_image) {
            EXPECT_EQ(page.IsChecked(kZoom), on);
            for (const int control : {kScale, kSpin, kScaleLabel}) {
                EXPECT_EQ(page.IsEnabled(control), on) << control;
            }
            for (const int control : {kYes, kNo}) {
                EXPECT_EQ(page.IsEnabled(control), !on) << control;
            }
            EXPECT_EQ(page.IsChecked(kYes), as_image);
            EXPECT_EQ(page.IsChecked(kNo), !as_image);
        };
        EXPECT_FALSE(page.IsChecked(kYes));
        EXPECT_TRUE(page.IsChecked(kNo));
        const MessageBoxInfo box = page.OpenMessageBox(kZoom);
        EXPECT_EQ(box.title, L"Information");
        EXPECT_EQ(box.text, kAsImageText);
        EXPECT_THAT(box.buttons, ElementsAre(IDOK));
        box.Press(IDOK);
        Settle(page);
        expect_zoom(true, true);
        ExpectRecord(With(record, {{kPrintAsImageAt, 1}, {kZoomAt, 1}}), "zoom on");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        page.Click(kZoom);
        expect_zoom(false, true);
        ExpectRecord(With(record, {{kPrintAsImageAt, 1}}), "zoom off");
        page.Click(kZoom);
        expect_zoom(true, true);
        ExpectRecord(With(record, {{kPrintAsImageAt, 1}, {kZoomAt, 1}}), "again, without a message");
        page.Click(kZoom);
        page.Click(kNo);
        EXPECT_TRUE(page.IsChecked(kNo));
        EXPECT_FALSE(page.IsChecked(kYes));
        ExpectRecord(record, "no");
        page.Click(kYes);
        ExpectRecord(With(record, {{kPrintAsImageAt, 1}}), "yes");
        page.Click(kNo);
        page.OpenMessageBox(kZoom).Press(IDOK);
        static_cast<void>(ui);
        sheet.PressCancel();
    });
    ExpectRecord(record, "cancel");
}

// The removed watermark takes printing as image with it; the page learns of it once, when it comes back.
TEST_F(MainPageTest, FollowsTheWaterMark) {
    constexpr int kNoWaterMark = 1077;
    Host();
    Bytes record = With(Record(), {{kPrintAsImageAt, 1}, {kWaterMarkAt, 2}});
    SetRecord(record);
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_TRUE(page.IsChecked(kYes));
        EXPECT_FALSE(page.IsEnabled(kYes));
        EXPECT_FALSE(page.IsEnabled(kNo));
        sheet.SelectPage(3).Click(kNoWaterMark);
        sheet.SelectPage(2);
        EXPECT_TRUE(page.IsChecked(kNo));
        EXPECT_FALSE(page.IsChecked(kYes));
        EXPECT_TRUE(page.IsEnabled(kYes));
        EXPECT_TRUE(page.IsEnabled(kNo));
        page.Click(kYes);
        sheet.SelectPage(4);
        sheet.SelectPage(2);
        EXPECT_TRUE(page.IsChecked(kYes)) << "the signal is used up";
        EXPECT_FALSE(page.IsChecked(kNo));
        sheet.PressCancel();
    });
}

TEST_F(MainPageTest, ChoosesTheForm) {
    const Bytes record = PlainRecord();
    SetRecord(record);
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        OPTITEM& forms = Host().options().item(DriverOptions::kForms);
        Host().helper().ForgetCalls();
        EXPECT_THAT(page.ComboItems(kPaperSize), ElementsAreArray(Host().options().Values(0)));
        EXPECT_EQ(page.ComboSelection(kPaperSize), 0);
        page.SelectCombo(kPaperSize, 3);
        EXPECT_EQ(forms.Sel, 3);
        EXPECT_EQ(forms.Flags, DWORD{OPTIF_CHANGED});
        ExpectRecord(WithForm(record, L"48mm x 210mm"), "choice");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        // Each paint tells of the density option.
        std::vector<HelperCall> calls = Host().helper().calls();
        std::erase_if(calls, [&](const HelperCall& call) { return call.option != &forms; });
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].method, "DrvUpdateUISetting");
        EXPECT_EQ(calls[0].context, Host().common_ui().poemuiobj);
        EXPECT_EQ(calls[0].previous_selection, 0u);
        EXPECT_EQ(calls[0].mode, DWORD{OEMCUIP_DOCPROP});
        sheet.SelectPage(0);
        forms.Sel = 1;
        sheet.SelectPage(2);
        EXPECT_EQ(page.ComboSelection(kPaperSize), 1) << "what another page chose";
        ExpectRecord(WithForm(record, L"48mm x 210mm"), "coming back");
        sheet.PressOk();
    });
    ExpectRecord(WithForm(record, L"72mm x 3276mm"), "OK");
    EXPECT_EQ(Host().options().item(DriverOptions::kForms).Sel, 1);
}

TEST_F(MainPageTest, SwitchesTheLogOn) {
    const Bytes record = PlainRecord();
    SetRecord(record);
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        const auto expect_log = [&](bool on) {
            EXPECT_EQ(page.IsChecked(kLog), on);
            for (const int control : {kLogPath, kBrowse, kViewer}) {
                EXPECT_EQ(page.IsEnabled(control), on) << control;
            }
            EXPECT_NE(GetWindowLongPtrW(page.Control(kLogPath), GWL_STYLE) & ES_READONLY, 0);
            EXPECT_EQ(page.Text(kLogPath), L"C:\\Logs");
        };
        expect_log(false);
        page.Click(kLog);
        expect_log(true);
        ExpectRecord(With(record, {{kLogAt, 1}}), "log on");
        EXPECT_TRUE(sheet.IsApplyEnabled());
        page.Click(kLog);
        expect_log(false);
        ExpectRecord(record, "log off");
        sheet.PressCancel();
    });
}

TEST_F(MainPageTest, ShowsANewLanguageAtOnce) {
    OpenPage([&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.ComboItems(kLanguage), kShippedLanguages);
        EXPECT_EQ(page.ComboSelection(kLanguage), 0);
        EXPECT_FALSE(sheet.IsApplyEnabled());
        page.SelectCombo(kLanguage, 2);
        EXPECT_TRUE(sheet.IsApplyEnabled());
        EXPECT_EQ(CaptionsOf(page), SourceCaptions(kEnglish)) << "the choice waits for Apply";
        EXPECT_EQ(rig::LanguageValue(kLanguageValue), kEnglish);
        sheet.PressApply();
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(CaptionsOf(page), SourceCaptions(kTraditionalChinese));
        EXPECT_EQ(sheet.TabTitles().at(2), L"基本設定");
        EXPECT_EQ(Host().options().Name(DriverOptions::kDensity), L"列印濃度");
        EXPECT_THAT(Host().options().Values(DriverOptions::kDensity),
                    ElementsAre(L"濃度0", L"濃度1", L"濃度2", L"濃度3", L"濃度4"));
        const MessageBoxInfo box = page.OpenMessageBox(kZoom);
        EXPECT_EQ(box.title, L"資訊");
        EXPECT_EQ(box.text, L"所有文字都會列印為影像！");
        box.Press(IDOK);
        Settle(page);
        EXPECT_EQ(page.ComboItems(kLanguage), kShippedLanguages);
        page.SelectCombo(kLanguage, 0);
        sheet.PressApply();
        EXPECT_EQ(CaptionsOf(page), SourceCaptions(kEnglish));
        EXPECT_EQ(Host().options().Name(DriverOptions::kDensity), L"Print Density");
        sheet.PressCancel();
    });
}

}  // namespace
}  // namespace pages::layout
