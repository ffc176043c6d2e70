// The Operation settings dialog: what it shows for a stored block, what each control switches, what OK,
// Cancel and Default do to the record, and its picture of the paper's end.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "operation_block.h"
#include "page_fixture.h"
#include "resources/resource.h"
#include "rig/import_hooks.h"
#include "ui_thread.h"

namespace pages {
namespace {

using testing::ElementsAreArray;

using ByteList = std::initializer_list<std::uint8_t>;

constexpr wchar_t kSection[] = L"DOCUMENT";

struct Caption {
    int control;
    const wchar_t* key;
    std::size_t room;  // with the terminator
    const wchar_t* english;
};

constexpr Caption kTitles[] = {
    {0, L"RC_DOCUMENT_STARTDOC", 50, L"Start Document Operation"},
    {0, L"RC_DOCUMENT_STARTPAGE", 50, L"Start Page Operation"},
    {0, L"RC_DOCUMENT_ENDPAGE", 50, L"End Page Operation"},
    {0, L"RC_DOCUMENT_ENDDOC", 50, L"End Document Operation"},
};

// "Right" has a placeholder for its default: language files are expected to bring the word.
constexpr Caption kCaptions[] = {
    {1015, L"RC_SEND_COMMAND", 50, L"Send Command      [Example:1D 56 42 00]"},
    {1025, L"RC_OPEN_DRAWER", 50, L"Open Drawer"},
    {1026, L"RC_ORDER_MESSENGER", 50, L"Herald"},
    {1121, L"RC_STATIC_OPERATION_BUZZER", 50, L"Buzzer:"},
    {1103, L"RC_STATIC_BUZZER_VOLUME", 50, L"Buzzer Volume:"},
    {1122, L"RC_STATIC_OPERATION_FEED", 50, L"Paper Feed:"},
    {1023, L"RC_FEEDTOPOSITION", 50, L"Feed to cut position before cut"},
    {1019, L"RC_PAPERCUT", 50, L"Paper Cut:"},
    {1123, L"RC_STATIC_OPERATION_LOGO", 50, L"Print Logo:"},
    {1124, L"RC_STATIC_OPERATION_ALIGN", 20, L"Align:"},
    {1029, L"RC_LEFT", 20, L"Left"},
    {1030, L"RC_CENTERED", 20, L"Centered"},
    {1031, L"RC_RIGHT", 20, L"Start Page Operation"},
    {1125, L"RC_STATIC_OPERATION_POSITION", 20, L"Position:"},
    {1033, L"RC_BEFORE_CUT", 20, L"Before Cut"},
    {1034, L"RC_AFTER_CUT", 20, L"After Cut"},
    {3, L"RC_OPERATION_DEFAULT", 20, L"Default"},
    {1, L"RC_OPERATION_OK", 20, L"OK"},
    {2, L"RC_OPERATION_CANCEL", 20, L"Cancel"},
};

struct List {
    int control;
    const wchar_t* key;  // followed by the item's number, from 1
    std::vector<std::wstring> english;
};

const List kDialogLists[] = {
    {1017,
     L"RC_OPENDRAWER",
     {L"No Cash Drawer", L"Cash Drawer #1 Waiting 10ms", L"Cash Drawer #1 Waiting 20ms",
      L"Cash Drawer #1 Waiting 40ms", L"Cash Drawer #1 Waiting 60ms", L"Cash Drawer #2 Waiting 10ms",
      L"Cash Drawer #2 Waiting 20ms", L"Cash Drawer #2 Waiting 40ms", L"Cash Drawer #2 Waiting 60ms",
      L"Cash Drawer #1+#2 Waiting 10ms", L"Cash Drawer #1+#2 Waiting 20ms", L"Cash Drawer #1+#2 Waiting 40ms",
      L"Cash Drawer #1+#2 Waiting 60ms"}},
    {1032, L"RC_ORDERMESSENGER", {L"Enable", L"Disable"}},
    {1027,
     L"RC_OPERATION_BUZZER",
     {L"Beep off", L"Beep one", L"Beep three", L"Beep five", L"Beep ten", L"Beep twenty"}},
    {1020, L"RC_PAPER_CUT", {L"No Cut", L"Partial Cut", L"Full Cut"}},
    {1028,
     L"RC_PRINT_LOGO",
     {L"Not Print Logo", L"Print Logo1", L"Print Logo2", L"Print Logo3", L"Print Logo4", L"Print Logo5",
      L"Print Logo6", L"Print Logo7", L"Print Logo8", L"Print Logo9"}},
};

constexpr int kLogoRadios[] = {1029, 1030, 1031, 1033, 1034};

std::wstring CommandText(const std::vector<std::uint8_t>& command) {
    std::wstring text;
    for (const std::uint8_t byte : command) {
        wchar_t pair[4] = {};
        swprintf(pair, std::size(pair), L"%02X ", byte);
        text += pair;
    }
    return text;
}

void SetText(const Window& dialog, int control, const std::wstring& text) {
    dialog.Send(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

// Everything that the dialog shows for a block; values that only a damaged record holds are left to their own
// tests.
void ExpectShows(const Window& dialog, const Block& block) {
    EXPECT_EQ(dialog.Text(1016), CommandText(block.command));
    EXPECT_EQ(dialog.IsChecked(1015), block.send_command == 1);
    EXPECT_EQ(dialog.IsEnabled(1016), block.send_command == 1);
    EXPECT_EQ(dialog.IsChecked(1023), block.feed_to_position == 1);
    EXPECT_EQ(dialog.ComboSelection(1017), block.drawer);
    EXPECT_EQ(dialog.ComboSelection(1032), block.herald);
    EXPECT_EQ(dialog.ComboSelection(1020), block.cut);
    EXPECT_EQ(dialog.ComboSelection(1027), block.buzzer);
    EXPECT_EQ(dialog.ComboSelection(1028), block.logo);
    EXPECT_EQ(dialog.SpinPosition(1022), block.feed);
    EXPECT_EQ(dialog.Text(1021), std::to_wstring(block.feed));
    EXPECT_EQ(dialog.SpinPosition(1035), block.volume);
    EXPECT_EQ(dialog.Text(1024), std::to_wstring(block.volume));
    EXPECT_EQ(dialog.IsEnabled(1024), block.buzzer != 0);
    EXPECT_EQ(dialog.IsEnabled(1035), block.buzzer != 0);
    const bool herald = block.drawer_or_herald != 0;
    EXPECT_EQ(dialog.IsChecked(1025), !herald);
    EXPECT_EQ(dialog.IsChecked(1026), herald);
    EXPECT_EQ(dialog.IsEnabled(1017), !herald);
    EXPECT_EQ(dialog.IsEnabled(1032), herald);
    EXPECT_EQ(dialog.IsChecked(1029), block.logo_align == 0);
    EXPECT_EQ(dialog.IsChecked(1030), block.logo_align == 1);
    EXPECT_EQ(dialog.IsChecked(1031), block.logo_align == 2);
    EXPECT_EQ(dialog.IsChecked(1033), block.logo_position == 0);
    EXPECT_EQ(dialog.IsChecked(1034), block.logo_position != 0);
    for (const int radio : kLogoRadios) {
        EXPECT_EQ(dialog.IsEnabled(radio), block.logo != 0) << radio;
    }
    // Whatever is chosen, these stay usable.
    for (const int control : {1015, 1025, 1026, 1027, 1021, 1022, 1023, 1020, 1028, 3, 1, 2}) {
        EXPECT_TRUE(dialog.IsEnabled(control)) << control;
    }
}

// Makes every choice as a person does: what depends on another choice is switched on for as long as it takes.
void Choose(const Window& dialog, const Block& block) {
    if (!dialog.IsChecked(1015)) {
        dialog.Click(1015);
    }
    dialog.TypeText(1016, CommandText(block.command));
    if (block.send_command == 0) {
        dialog.Click(1015);
    }
    if (dialog.IsChecked(1023) != (block.feed_to_position == 1)) {
        dialog.Click(1023);
    }
    dialog.Click(1025);
    dialog.SelectCombo(1017, block.drawer);
    dialog.Click(1026);
    dialog.SelectCombo(1032, block.herald);
    dialog.Click(block.drawer_or_herald == 0 ? 1025 : 1026);
    dialog.SelectCombo(1020, block.cut);
    dialog.TypeText(1021, std::to_wstring(block.feed));
    dialog.SelectCombo(1027, 1);
    dialog.TypeText(1024, std::to_wstring(block.volume));
    dialog.SelectCombo(1027, block.buzzer);
    dialog.SelectCombo(1028, 1);
    dialog.Click(1029 + block.logo_align);
    dialog.Click(1033 + block.logo_position);
    dialog.SelectCombo(1028, block.logo);
}

// Blocks that between them hold every value of every list and radio group and the ends of both ranges.
std::vector<Block> AllChoices() {
    std::vector<Block> blocks;
    for (std::uint8_t i = 0; i < 13; ++i) {
        Block block;
        block.send_command = i % 2;
        block.feed_to_position = i / 2 % 2;
        block.command.assign(i, static_cast<std::uint8_t>(0xF3 - i));
        block.drawer = i;
        block.cut = i % 3;
        block.feed = static_cast<std::uint8_t>(i == 12 ? 100 : i * 7);
        block.volume = static_cast<std::uint8_t>(i == 12 ? 255 : i * 20);
        block.herald = i / 3 % 2;
        block.drawer_or_herald = i / 4 % 2;
        block.buzzer = i % 6;
        block.logo = i % 10;
        block.logo_align = i % 3;
        block.logo_position = i / 5 % 2;
        blocks.push_back(block);
    }
    return blocks;
}

class OperationDialogTest : public OperationTest {
  protected:
    // Opens the sheet and compares every word of the dialog with what `text` gives for it.
    template <typename Text>
    void ExpectWords(Text text) {
        OnPage([&](UiDriver&, Window& page) {
            for (const Moment moment : kMoments) {
                const Window dialog = page.OpenDialog(MomentButton(moment));
                const Caption& title = kTitles[moment];
                EXPECT_EQ(dialog.Title(), text(title.key, title.room, title.english));
                for (const Caption& caption : kCaptions) {
                    EXPECT_EQ(dialog.Text(caption.control), text(caption.key, caption.room, caption.english))
                        << caption.control;
                }
                for (const List& list : kDialogLists) {
                    std::vector<std::wstring> items;
                    for (std::size_t i = 0; i < list.english.size(); ++i) {
                        const std::wstring key = list.key + std::to_wstring(i + 1);
                        items.push_back(text(key.c_str(), std::size_t{50}, list.english[i].c_str()));
                    }
                    EXPECT_THAT(dialog.ComboItems(list.control), ElementsAreArray(items)) << list.control;
                }
                dialog.PressAndWaitClosed(IDCANCEL);
            }
        });
    }
};

// Controls

enum class Kind { kCheckBox, kRadio, kDropList, kEdit, kNumber, kSpin, kStatic, kButton };

struct Control {
    int id;
    Kind kind;
};

constexpr Control kControls[] = {
    {1015, Kind::kCheckBox}, {1016, Kind::kEdit},   {1017, Kind::kDropList}, {1019, Kind::kStatic},
    {1020, Kind::kDropList}, {1021, Kind::kNumber}, {1022, Kind::kSpin},     {1023, Kind::kCheckBox},
    {1024, Kind::kNumber},   {1025, Kind::kRadio},  {1026, Kind::kRadio},    {1027, Kind::kDropList},
    {1028, Kind::kDropList}, {1029, Kind::kRadio},  {1030, Kind::kRadio},    {1031, Kind::kRadio},
    {1032, Kind::kDropList}, {1033, Kind::kRadio},  {1034, Kind::kRadio},    {1035, Kind::kSpin},
    {1103, Kind::kStatic},   {1121, Kind::kStatic}, {1122, Kind::kStatic},   {1123, Kind::kStatic},
    {1124, Kind::kStatic},   {1125, Kind::kStatic}, {1207, Kind::kStatic},   {1, Kind::kButton},
    {2, Kind::kButton},      {3, Kind::kButton},
};

Kind KindOf(HWND control) {
    wchar_t name[64] = {};
    GetClassNameW(control, name, static_cast<int>(std::size(name)));
    const std::wstring kind = name;
    const LONG_PTR style = GetWindowLongPtrW(control, GWL_STYLE);
    if (kind == UPDOWN_CLASSW) {
        return Kind::kSpin;
    }
    if (kind == L"ComboBox") {
        EXPECT_EQ(style & 3, CBS_DROPDOWNLIST);
        EXPECT_EQ(style & CBS_SORT, 0);
        return Kind::kDropList;
    }
    if (kind == L"Edit") {
        return (style & ES_NUMBER) != 0 ? Kind::kNumber : Kind::kEdit;
    }
    if (kind == L"Button") {
        switch (style & BS_TYPEMASK) {
            case BS_AUTOCHECKBOX:
                return Kind::kCheckBox;
            case BS_AUTORADIOBUTTON:
                return Kind::kRadio;
            default:
                return Kind::kButton;
        }
    }
    EXPECT_EQ(kind, L"Static");
    return Kind::kStatic;
}

TEST_F(OperationDialogTest, HasItsControls) {
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        for (const Control& control : kControls) {
            EXPECT_EQ(KindOf(dialog.Control(control.id)), control.kind) << control.id;
            EXPECT_EQ(dialog.IsVisible(control.id), control.id != 1103) << control.id;
        }
        EXPECT_EQ(reinterpret_cast<HWND>(dialog.Send(1022, UDM_GETBUDDY)), dialog.Control(1021));
        EXPECT_EQ(reinterpret_cast<HWND>(dialog.Send(1035, UDM_GETBUDDY)), dialog.Control(1024));
        EXPECT_EQ(dialog.Send(1021, EM_GETLIMITTEXT), 3);
        EXPECT_EQ(dialog.Send(1024, EM_GETLIMITTEXT), 3);
        EXPECT_EQ(LOWORD(SendMessageW(dialog.handle(), DM_GETDEFID, 0, 0)), IDOK);
    });
}

TEST_F(OperationDialogTest, IsModal) {
    OnPage([](UiDriver&, Window& page) {
        const HWND sheet = GetAncestor(page.handle(), GA_ROOT);
        const Window dialog = page.OpenDialog(MomentButton(kDocEnd));
        EXPECT_FALSE(IsWindowEnabled(sheet));
        EXPECT_EQ(GetWindow(dialog.handle(), GW_OWNER), sheet);
        dialog.PressAndWaitClosed(IDCANCEL);
        EXPECT_TRUE(IsWindowEnabled(sheet));
    });
}

// Words

TEST_F(OperationDialogTest, SpeaksTheChosenLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        ExpectWords([file](const wchar_t* key, std::size_t, const wchar_t*) {
            return SourceText(file, kSection, key);
        });
    }
}

TEST_F(OperationDialogTest, EnglishFileSaysWhatTheDefaultsSayButForRight) {
    ExpectWords([](const wchar_t* key, std::size_t, const wchar_t* english) {
        return std::wstring(std::wstring(key) == L"RC_RIGHT" ? L"Right" : english);
    });
}

TEST_F(OperationDialogTest, WithoutLanguageFileEveryWordIsItsDefault) {
    RemoveAllLanguageFiles();
    // The placeholder fills its room to the last letter but one.
    ExpectWords([](const wchar_t*, std::size_t room, const wchar_t* english) {
        return std::wstring(english).substr(0, room - 1);
    });
}

TEST_F(OperationDialogTest, TooLongWordsAreCutToTheirRoom) {
    const std::wstring tail(70, L'x');
    std::wstring file = L"[DOCUMENT]\r\n";
    const auto add = [&](const std::wstring& key) { file += key + L"=" + key + tail + L"\r\n"; };
    for (const Caption& caption : kTitles) {
        add(caption.key);
    }
    for (const Caption& caption : kCaptions) {
        add(caption.key);
    }
    for (const List& list : kDialogLists) {
        for (std::size_t i = 1; i <= list.english.size(); ++i) {
            add(list.key + std::to_wstring(i));
        }
    }
    StartHost();
    WriteUserFile(kEnglish, file);
    ExpectWords([&](const wchar_t* key, std::size_t room, const wchar_t*) {
        return (key + tail).substr(0, room - 1);
    });
}

// What it shows at first

TEST_F(OperationDialogTest, ShowsEveryStoredChoice) {
    SetRecord(RecordWith(BusyBlock()));
    const std::vector<Block> blocks = AllChoices();
    OnPage([&](UiDriver&, Window& page) {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            SCOPED_TRACE(i);
            const Window dialog = OpenWith(page, kMoments[i % 4], blocks[i]);
            ExpectShows(dialog, blocks[i]);
            dialog.PressAndWaitClosed(IDCANCEL);
        }
    });
}

TEST_F(OperationDialogTest, EachMomentShowsItsOwnBlock) {
    const std::vector<Block> blocks = AllChoices();
    constexpr std::size_t kChosen[] = {3, 5, 9, 12};
    Bytes record = RecordWith(BusyBlock());
    for (const Moment moment : kMoments) {
        PutBlock(record, moment, blocks[kChosen[moment]]);
    }
    SetRecord(record);
    OnPage([&](UiDriver&, Window& page) {
        for (const Moment moment : kMoments) {
            SCOPED_TRACE(moment);
            const Window dialog = page.OpenDialog(MomentButton(moment));
            ExpectShows(dialog, blocks[kChosen[moment]]);
            dialog.PressAndWaitClosed(IDCANCEL);
        }
    });
}

TEST_F(OperationDialogTest, ValuesBeyondAFlagOrChoice) {
    SetRecord(RecordWith(BusyBlock()));
    OnPage([&](UiDriver&, Window& page) {
        const auto open = [&](const std::function<void(Block&)>& change) {
            Block block = BusyBlock();
            change(block);
            return OpenWith(page, kPageEnd, block);
        };
        for (const std::uint8_t flag : ByteList{2, 128, 255}) {
            SCOPED_TRACE(flag);
            // Only 1 is set.
            const Window dialog = open([&](Block& block) {
                block.send_command = flag;
                block.feed_to_position = flag;
            });
            EXPECT_FALSE(dialog.IsChecked(1015));
            EXPECT_FALSE(dialog.IsEnabled(1016));
            EXPECT_EQ(dialog.Text(1016), L"1D 56 42 00 ");
            EXPECT_FALSE(dialog.IsChecked(1023));
            dialog.PressAndWaitClosed(IDCANCEL);
        }
        for (const std::int32_t choice : {2, 256, 0x01000000, -1, INT32_MIN}) {
            SCOPED_TRACE(choice);
            const Window dialog = open([&](Block& block) { block.drawer_or_herald = choice; });
            EXPECT_TRUE(dialog.IsChecked(1026));
            EXPECT_FALSE(dialog.IsChecked(1025));
            EXPECT_FALSE(dialog.IsEnabled(1017));
            EXPECT_TRUE(dialog.IsEnabled(1032));
            dialog.PressAndWaitClosed(IDCANCEL);
        }
        for (const std::uint8_t other : ByteList{3, 255}) {
            SCOPED_TRACE(other);
            const Window dialog = open([&](Block& block) {
                block.logo_align = other;
                block.logo_position = other;
            });
            for (const int radio : {1029, 1030, 1031}) {
                EXPECT_FALSE(dialog.IsChecked(radio)) << radio;
            }
            EXPECT_FALSE(dialog.IsChecked(1033));
            EXPECT_TRUE(dialog.IsChecked(1034));
            dialog.PressAndWaitClosed(IDCANCEL);
        }
        const Window dialog = open([](Block& block) { block.feed = 101; });
        EXPECT_EQ(dialog.SpinPosition(1022), 100);
        EXPECT_EQ(dialog.Text(1021), L"100");
        dialog.PressAndWaitClosed(IDCANCEL);
    });
}

// Numbers

TEST_F(OperationDialogTest, NumbersHaveTheirRanges) {
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        int low = -1;
        int high = -1;
        dialog.Send(1022, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&low), reinterpret_cast<LPARAM>(&high));
        EXPECT_EQ(low, 0);
        EXPECT_EQ(high, 100);
        dialog.Send(1035, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&low), reinterpret_cast<LPARAM>(&high));
        EXPECT_EQ(low, 0);
        EXPECT_EQ(high, 255);
    });
}

struct Typed {
    const wchar_t* keys;
    const wchar_t* shown;
};

TEST_F(OperationDialogTest, TypedNumbersAreCappedAtOnce) {
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kPageStart, [](UiDriver&, Window& dialog) {
        for (const Typed& typed : {Typed{L"250", L"100"},
                                   {L"99", L"99"},
                                   {L"100", L"100"},
                                   {L"101", L"100"},
                                   {L"999", L"100"},
                                   {L"0", L"0"},
                                   {L"5x-7", L"57"},
                                   {L"", L"0"}}) {
            dialog.TypeText(1021, typed.keys);
            EXPECT_EQ(dialog.Text(1021), typed.shown) << testing::PrintToString(std::wstring(typed.keys));
            EXPECT_EQ(dialog.SpinPosition(1022), std::stoi(typed.shown));
        }
        for (const Typed& typed : {Typed{L"999", L"255"},
                                   {L"254", L"254"},
                                   {L"255", L"255"},
                                   {L"256", L"255"},
                                   {L"100", L"100"},
                                   {L"", L"0"}}) {
            dialog.TypeText(1024, typed.keys);
            EXPECT_EQ(dialog.Text(1024), typed.shown) << testing::PrintToString(std::wstring(typed.keys));
            EXPECT_EQ(dialog.SpinPosition(1035), std::stoi(typed.shown));
        }
    });
}

TEST_F(OperationDialogTest, ArrowsStopAtTheEnds) {
    Block block = BusyBlock();
    block.feed = 98;
    block.volume = 254;
    SetRecord(RecordWith(block));
    OnDialog(kDocEnd, [](UiDriver&, Window& dialog) {
        dialog.SpinUp(1022);
        EXPECT_EQ(dialog.Text(1021), L"99");
        dialog.SpinUp(1022, 3);
        EXPECT_EQ(dialog.Text(1021), L"100");
        dialog.SpinUp(1035, 3);
        EXPECT_EQ(dialog.Text(1024), L"255");
        dialog.SpinDown(1035);
        EXPECT_EQ(dialog.Text(1024), L"254");
        dialog.TypeText(1021, L"1");
        dialog.SpinDown(1022, 3);
        EXPECT_EQ(dialog.Text(1021), L"0");
        dialog.TypeText(1024, L"1");
        dialog.SpinDown(1035, 3);
        EXPECT_EQ(dialog.Text(1024), L"0");
    });
}

TEST_F(OperationDialogTest, OkTakesNumbersInRangeOnly) {
    Block block = BusyBlock();
    block.feed = 200;
    block.volume = 255;
    const Bytes before = RecordWith(block);
    SetRecord(before);
    OnDialog(kDocEnd, [](UiDriver&, Window& dialog) { dialog.PressAndWaitClosed(IDOK); });
    block.feed = 100;
    EXPECT_EQ(Differences(With(before, kDocEnd, block), Record()), "");
}

// What controls switch

TEST_F(OperationDialogTest, SendCommandEnablesTheBox) {
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        EXPECT_FALSE(dialog.IsEnabled(1016));
        dialog.Click(1015);
        EXPECT_TRUE(dialog.IsChecked(1015));
        EXPECT_TRUE(dialog.IsEnabled(1016));
        dialog.TypeText(1016, L"1B");
        dialog.Click(1015);
        EXPECT_FALSE(dialog.IsChecked(1015));
        EXPECT_FALSE(dialog.IsEnabled(1016));
        EXPECT_EQ(dialog.Text(1016), L"1B");
    });
}

TEST_F(OperationDialogTest, DrawerAndHeraldExcludeEachOther) {
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        Block block = BusyBlock();
        dialog.Click(1026);
        block.drawer_or_herald = 1;
        ExpectShows(dialog, block);
        dialog.Click(1025);
        block.drawer_or_herald = 0;
        ExpectShows(dialog, block);
    });
}

TEST_F(OperationDialogTest, BuzzerEnablesItsVolume) {
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        Block block = BusyBlock();
        for (const std::uint8_t buzzer : ByteList{0, 1, 0, 2, 3, 4, 5}) {
            SCOPED_TRACE(buzzer);
            dialog.SelectCombo(1027, buzzer);
            block.buzzer = buzzer;
            ExpectShows(dialog, block);
        }
    });
}

TEST_F(OperationDialogTest, LogoEnablesItsRadiosAndKeepsTheirChecks) {
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        Block block = BusyBlock();
        for (const std::uint8_t logo : ByteList{0, 1, 9, 0, 5}) {
            SCOPED_TRACE(logo);
            dialog.SelectCombo(1028, logo);
            block.logo = logo;
            ExpectShows(dialog, block);
        }
    });
}

// A list's selection can change without a word to the dialog, as with CB_SETCURSEL. The logo is looked at
// whatever its list reports, the buzzer only when a choice is reported.
TEST_F(OperationDialogTest, AnyReportOfTheLogoCountsButOnlyAChoiceOfTheBuzzer) {
    Block block = BusyBlock();
    block.logo = 0;
    block.buzzer = 0;
    SetRecord(RecordWith(block));
    OnDialog(kDocStart, [&block](UiDriver&, Window& dialog) {
        const auto report = [&dialog](int list, int notification) {
            const HWND control = dialog.Control(list);
            SendMessageW(dialog.handle(), WM_COMMAND, MAKEWPARAM(list, notification),
                         reinterpret_cast<LPARAM>(control));
        };
        ExpectShows(dialog, block);
        dialog.Send(1028, CB_SETCURSEL, 4);
        for (const int radio : kLogoRadios) {
            EXPECT_FALSE(dialog.IsEnabled(radio)) << radio;
        }
        report(1028, CBN_DROPDOWN);
        block.logo = 4;
        ExpectShows(dialog, block);

        dialog.Send(1027, CB_SETCURSEL, 2);
        report(1027, CBN_DROPDOWN);
        EXPECT_FALSE(dialog.IsEnabled(1024));
        EXPECT_FALSE(dialog.IsEnabled(1035));
        report(1027, CBN_SELCHANGE);
        block.buzzer = 2;
        ExpectShows(dialog, block);
    });
}

TEST_F(OperationDialogTest, RadioGroupsAreApart) {
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        Block block = BusyBlock();
        for (std::uint8_t align = 0; align < 3; ++align) {
            for (std::uint8_t position = 0; position < 2; ++position) {
                dialog.Click(1029 + align);
                dialog.Click(1033 + position);
                block.logo_align = align;
                block.logo_position = position;
                ExpectShows(dialog, block);
            }
        }
    });
}

// OK and Cancel

TEST_F(OperationDialogTest, OkStoresEveryChoice) {
    Bytes expected = RecordWith(BusyBlock());
    SetRecord(expected);
    const std::vector<Block> blocks = AllChoices();
    OnPage([&](UiDriver&, Window& page) {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            SCOPED_TRACE(i);
            const Moment moment = kMoments[i % 4];
            const Window dialog = page.OpenDialog(MomentButton(moment));
            Choose(dialog, blocks[i]);
            ExpectShows(dialog, blocks[i]);
            EXPECT_EQ(Differences(expected, Record()), "") << "stored before OK";
            dialog.PressAndWaitClosed(IDOK);
            PutBlock(expected, moment, blocks[i]);
            EXPECT_EQ(Differences(expected, Record()), "");
        }
    });
}

TEST_F(OperationDialogTest, OkWithoutAChangeKeepsTheBlock) {
    Bytes expected = RecordWith(BusyBlock());
    SetRecord(expected);
    const std::vector<Block> blocks = AllChoices();
    OnPage([&](UiDriver&, Window& page) {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            SCOPED_TRACE(i);
            const Moment moment = kMoments[(i + 1) % 4];
            PutBlock(expected, moment, blocks[i]);
            OpenWith(page, moment, blocks[i]).PressAndWaitClosed(IDOK);
            EXPECT_EQ(Differences(expected, Record()), "");
        }
    });
}

TEST_F(OperationDialogTest, OkMakesFlagsAndChoicesPlain) {
    Block block = BusyBlock();
    block.send_command = 2;
    block.feed_to_position = 255;
    block.drawer_or_herald = -5;
    block.logo_align = 9;
    block.logo_position = 77;
    const Bytes before = RecordWith(block);
    SetRecord(before);
    OnDialog(kPageStart, [](UiDriver&, Window& dialog) { dialog.PressAndWaitClosed(IDOK); });
    block.send_command = 0;
    block.feed_to_position = 0;
    block.drawer_or_herald = 1;
    block.logo_align = 2;
    block.logo_position = 1;
    EXPECT_EQ(Differences(With(before, kPageStart, block), Record()), "");
}

TEST_F(OperationDialogTest, CommandIsStoredWhetherSentOrNot) {
    Block block = BusyBlock();
    const Bytes before = RecordWith(block);
    SetRecord(before);
    OnDialog(kPageEnd, [](UiDriver&, Window& dialog) {
        dialog.TypeText(1016, L"aB 7");
        dialog.Click(1015);
        dialog.PressAndWaitClosed(IDOK);
    });
    block.send_command = 0;
    block.command = {0xAB, 0x07};
    EXPECT_EQ(Differences(With(before, kPageEnd, block), Record()), "");
}

TEST_F(OperationDialogTest, ShorterCommandLeavesNothingOfTheOldOne) {
    Block block = BusyBlock();
    block.command.assign(kCommandRoom, 0xEE);
    const Bytes before = RecordWith(block);
    SetRecord(before);
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        EXPECT_EQ(dialog.Text(1016).size(), kCommandRoom * 3);
        dialog.TypeText(1016, L"1");
        dialog.PressAndWaitClosed(IDOK);
    });
    block.command = {0x01};
    EXPECT_EQ(Differences(With(before, kDocStart, block), Record()), "");
}

TEST_F(OperationDialogTest, EmptyCommandHasLengthZero) {
    Block block = BusyBlock();
    const Bytes before = RecordWith(block);
    SetRecord(before);
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        dialog.TypeText(1016, L"");
        dialog.PressAndWaitClosed(IDOK);
    });
    block.command.clear();
    EXPECT_EQ(Differences(With(before, kDocStart, block), Record()), "");
}

TEST_F(OperationDialogTest, CancelKeepsEverything) {
    const Bytes before = RecordWith(BusyBlock());
    SetRecord(before);
    OnPage([&](UiDriver&, Window& page) {
        for (const Moment moment : kMoments) {
            Window dialog = page.OpenDialog(MomentButton(moment));
            Choose(dialog, AllChoices()[6]);
            dialog.PressAndWaitClosed(IDCANCEL);
            EXPECT_EQ(Differences(before, Record()), "") << moment;
            // The next one starts from the record, not from what was dropped.
            dialog = page.OpenDialog(MomentButton(moment));
            ExpectShows(dialog, BusyBlock());
            PostMessageW(dialog.handle(), WM_CLOSE, 0, 0);
            dialog.WaitClosed();
            EXPECT_EQ(Differences(before, Record()), "") << moment;
        }
    });
}

// Command length

TEST_F(OperationDialogTest, Accepts128CommandBytes) {
    Block block = BusyBlock();
    const Bytes before = RecordWith(block);
    SetRecord(before);
    std::vector<std::uint8_t> command(kCommandRoom);
    for (std::size_t i = 0; i < command.size(); ++i) {
        command[i] = static_cast<std::uint8_t>(i * 5 + 1);
    }
    OnDialog(kDocEnd, [&](UiDriver&, Window& dialog) {
        dialog.TypeText(1016, CommandText(command));
        dialog.PressAndWaitClosed(IDOK);
    });
    block.command = command;
    EXPECT_EQ(Differences(With(before, kDocEnd, block), Record()), "");
}

TEST_F(OperationDialogTest, Refuses129CommandBytesAndStaysOpen) {
    const Bytes before = RecordWith(BusyBlock());
    SetRecord(before);
    const std::wstring text = CommandText(std::vector<std::uint8_t>(129, 0x20));
    OnPage([&](UiDriver&, Window& page) {
        for (const Moment moment : kMoments) {
            Window dialog = page.OpenDialog(MomentButton(moment));
            SetText(dialog, 1016, text);
            dialog.SelectCombo(1017, 3);
            const MessageBoxInfo box = dialog.OpenMessageBox(IDOK);
            EXPECT_EQ(box.text, L"Command length error!");
            EXPECT_EQ(box.title, L"Error");
            EXPECT_THAT(box.buttons, testing::ElementsAre(IDOK));
            EXPECT_EQ(GetWindow(box.window.handle(), GW_OWNER), dialog.handle());
            box.Press(IDOK);
            EXPECT_TRUE(dialog.IsOpen());
            EXPECT_TRUE(IsWindowEnabled(dialog.handle()));
            EXPECT_EQ(dialog.Text(1016), text);
            EXPECT_EQ(Differences(before, Record()), "") << moment;
            dialog.PressAndWaitClosed(IDCANCEL);
            EXPECT_EQ(Differences(before, Record()), "") << moment;
        }
    });
}

TEST_F(OperationDialogTest, RefusesALongCommandThatIsNotSentToo) {
    Block block = BusyBlock();
    block.send_command = 0;
    const Bytes before = RecordWith(block);
    SetRecord(before);
    OnDialog(kDocStart, [&](UiDriver&, Window& dialog) {
        SetText(dialog, 1016, std::wstring(258, L'7'));
        dialog.OpenMessageBox(IDOK).Press(IDOK);
        // Mended, it is taken.
        SetText(dialog, 1016, std::wstring(256, L'7'));
        dialog.PressAndWaitClosed(IDOK);
    });
    block.command.assign(kCommandRoom, 0x77);
    EXPECT_EQ(Differences(With(before, kDocStart, block), Record()), "");
}

TEST_F(OperationDialogTest, RefusesInTheChosenLanguage) {
    for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese}) {
        ChooseLanguage(file);
        OnDialog(kDocStart, [&](UiDriver&, Window& dialog) {
            SetText(dialog, 1016, std::wstring(258, L'7'));
            const MessageBoxInfo box = dialog.OpenMessageBox(IDOK);
            EXPECT_EQ(box.text, SourceText(file, L"MessageBox", L"MB_OPERATION_ERROR1"));
            EXPECT_EQ(box.title, SourceText(file, L"MessageBox", L"MB_ERROR"));
            EXPECT_NE(box.text, L"Command length error!");
            box.Press(IDOK);
        });
    }
    RemoveAllLanguageFiles();
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        SetText(dialog, 1016, std::wstring(258, L'7'));
        const MessageBoxInfo box = dialog.OpenMessageBox(IDOK);
        EXPECT_EQ(box.text, L"Command length error!");
        EXPECT_EQ(box.title, L"Error");
        box.Press(IDOK);
    });
}

// The box is read to its 399th character.
TEST_F(OperationDialogTest, ReadsTheBoxTo399Characters) {
    Block block = BusyBlock();
    const Bytes before = RecordWith(block);
    SetRecord(before);
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        SetText(dialog, 1016, std::wstring(397, L' ') + L"1D56");
        dialog.PressAndWaitClosed(IDOK);
    });
    block.command = {0x1D};
    EXPECT_EQ(Differences(With(before, kDocStart, block), Record()), "");
}

// Default

Block DefaultBlock(Moment moment) {
    Block block;
    block.drawer = moment == kDocStart ? 12 : 0;
    block.feed_to_position = moment == kDocEnd ? 1 : 0;
    block.cut = moment == kDocEnd ? 1 : 0;
    return block;
}

TEST_F(OperationDialogTest, DefaultIsTheFactoryOperation) {
    Block busy = BusyBlock();
    busy.drawer_or_herald = 1;
    busy.logo_align = 1;
    Bytes expected = RecordWith(busy);
    SetRecord(expected);
    OnPage([&](UiDriver&, Window& page) {
        for (const Moment moment : kMoments) {
            SCOPED_TRACE(moment);
            Window dialog = page.OpenDialog(MomentButton(moment));
            dialog.Click(3);
            ExpectShows(dialog, DefaultBlock(moment));
            EXPECT_EQ(Differences(expected, Record()), "") << "stored before OK";
            dialog.PressAndWaitClosed(IDCANCEL);
            EXPECT_EQ(Differences(expected, Record()), "") << "stored by Cancel";
            dialog = page.OpenDialog(MomentButton(moment));
            ExpectShows(dialog, busy);
            dialog.Click(3);
            dialog.PressAndWaitClosed(IDOK);
            PutBlock(expected, moment, DefaultBlock(moment));
            EXPECT_EQ(Differences(expected, Record()), "");
        }
    });
}

TEST_F(OperationDialogTest, DefaultsCanBeChangedAgain) {
    const Bytes before = RecordWith(BusyBlock());
    SetRecord(before);
    OnDialog(kDocEnd, [](UiDriver&, Window& dialog) {
        dialog.Click(3);
        Choose(dialog, AllChoices()[5]);
        ExpectShows(dialog, AllChoices()[5]);
        dialog.PressAndWaitClosed(IDOK);
    });
    EXPECT_EQ(Differences(With(before, kDocEnd, AllChoices()[5]), Record()), "");
}

// The picture of the paper's end

using Pixels = std::vector<std::uint32_t>;

struct Size {
    int width;
    int height;
};

Size ClientSize(HWND window) {
    RECT area = {};
    GetClientRect(window, &area);
    return {area.right, area.bottom};
}

// What `draw` draws into a memory picture.
template <typename Draw>
Pixels DrawnPixels(Size size, Draw draw) {
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
    Pixels pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    std::copy_n(static_cast<const std::uint32_t*>(bits), pixels.size(), pixels.begin());
    for (std::uint32_t& pixel : pixels) {
        pixel &= 0x00FFFFFF;
    }
    SelectObject(target, previous);
    DeleteObject(bitmap);
    DeleteDC(target);
    return pixels;
}

Pixels FramePixels(const Window& dialog) {
    const HWND frame = dialog.Control(1207);
    const Size size = ClientSize(frame);
    const HDC source = GetDC(frame);
    Pixels pixels = DrawnPixels(size, [&](HDC target) {
        EXPECT_TRUE(BitBlt(target, 0, 0, size.width, size.height, source, 0, 0, SRCCOPY));
    });
    ReleaseDC(frame, source);
    return pixels;
}

// The plug-in's bitmap, stretched over a picture of the frame's size.
Pixels BitmapPixels(HMODULE module, int id, Size size) {
    const HBITMAP bitmap = LoadBitmapW(module, MAKEINTRESOURCEW(id));
    BITMAP shape = {};
    EXPECT_EQ(GetObjectW(bitmap, sizeof shape, &shape), static_cast<int>(sizeof shape)) << id;
    const HDC source = CreateCompatibleDC(nullptr);
    const HGDIOBJ previous = SelectObject(source, bitmap);
    Pixels pixels = DrawnPixels(size, [&](HDC target) {
        SetStretchBltMode(target, COLORONCOLOR);
        EXPECT_TRUE(StretchBlt(target, 0, 0, size.width, size.height, source, 0, 0, shape.bmWidth,
                               shape.bmHeight, SRCCOPY));
    });
    SelectObject(source, previous);
    DeleteDC(source);
    DeleteObject(bitmap);
    return pixels;
}

// As when another window has wiped the picture.
void Smear(const Window& dialog) {
    const HWND frame = dialog.Control(1207);
    const HDC target = GetDC(frame);
    const Size size = ClientSize(frame);
    const RECT area = {0, 0, size.width, size.height};
    const HBRUSH brush = CreateSolidBrush(RGB(255, 0, 255));
    FillRect(target, &area, brush);
    DeleteObject(brush);
    ReleaseDC(frame, target);
    const Pixels smeared = FramePixels(dialog);
    EXPECT_TRUE(std::all_of(smeared.begin(), smeared.end(), [](std::uint32_t p) { return p == 0xFF00FF; }));
}

// By moment; then feed and cut, feed, cut, neither.
constexpr int kPreviews[][4] = {
    {143, 144, 145, 149},
    {146, 147, 148, 149},
    {140, 141, 142, 139},
    {136, 137, 138, 139},
};

int Preview(Moment moment, bool feed, int cut) {
    return kPreviews[moment][(feed ? 0 : 2) + (cut != 0 ? 0 : 1)];
}

class OperationPreviewTest : public OperationTest {
  protected:
    // The number of the bitmap that the frame shows; 0 for anything else.
    int Shown(const Window& dialog) {
        const Pixels shown = FramePixels(dialog);
        if (pictures_.empty()) {
            const Size size = ClientSize(dialog.Control(1207));
            for (int id = 136; id <= 149; ++id) {
                pictures_.push_back(BitmapPixels(Host().module(), id, size));
            }
        }
        const auto found = std::find(pictures_.begin(), pictures_.end(), shown);
        return found == pictures_.end() ? 0 : 136 + static_cast<int>(found - pictures_.begin());
    }
    const std::vector<Pixels>& pictures() const { return pictures_; }

  private:
    std::vector<Pixels> pictures_;
};

TEST_F(OperationPreviewTest, ShowsTheStoredChoice) {
    SetRecord(RecordWith(BusyBlock()));
    OnPage([&](UiDriver&, Window& page) {
        for (const Moment moment : kMoments) {
            for (const bool feed : {true, false}) {
                for (const std::uint8_t cut : ByteList{0, 1, 2}) {
                    Block block = BusyBlock();
                    block.feed_to_position = feed ? 1 : 0;
                    block.cut = cut;
                    const Window dialog = OpenWith(page, moment, block);
                    Repaint(dialog);
                    EXPECT_EQ(Shown(dialog), Preview(moment, feed, cut));
                    dialog.PressAndWaitClosed(IDCANCEL);
                }
            }
        }
        // All fourteen can be told apart, or the above would say little.
        EXPECT_EQ(std::set<Pixels>(pictures().begin(), pictures().end()).size(), 14u);
    });
}

TEST_F(OperationPreviewTest, FollowsTheChoiceAtOnce) {
    SetRecord(RecordWith(BusyBlock()));
    OnPage([&](UiDriver&, Window& page) {
        for (const Moment moment : kMoments) {
            const Window dialog = page.OpenDialog(MomentButton(moment));
            Repaint(dialog);
            EXPECT_EQ(Shown(dialog), Preview(moment, true, 2));
            for (const int cut : {0, 1, 2}) {
                Smear(dialog);
                dialog.SelectCombo(1020, cut);
                EXPECT_EQ(Shown(dialog), Preview(moment, true, cut));
                Smear(dialog);
                dialog.Click(1023);
                EXPECT_EQ(Shown(dialog), Preview(moment, false, cut));
                Smear(dialog);
                dialog.Click(1023);
                EXPECT_EQ(Shown(dialog), Preview(moment, true, cut));
            }
            dialog.Click(3);
            EXPECT_EQ(Shown(dialog), Preview(moment, moment == kDocEnd, moment == kDocEnd ? 1 : 0));
            dialog.PressAndWaitClosed(IDCANCEL);
        }
    });
}

TEST_F(OperationPreviewTest, ComesBackAfterItWasCovered) {
    SetRecord(RecordWith(BusyBlock()));
    OnDialog(kPageEnd, [&](UiDriver&, Window& dialog) {
        Repaint(dialog);
        ASSERT_EQ(Shown(dialog), 140);
        Smear(dialog);
        Repaint(dialog);
        EXPECT_EQ(Shown(dialog), 140) << "the dialog and all its controls repainted";
        Smear(dialog);
        RedrawWindow(dialog.Control(1207), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
        SendMessageW(dialog.handle(), WM_NULL, 0, 0);
        EXPECT_EQ(Shown(dialog), 140) << "only the frame repainted";
        Smear(dialog);
        const RECT part = {0, 0, ClientSize(dialog.handle()).width, ClientSize(dialog.handle()).height};
        RedrawWindow(dialog.handle(), &part, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        SendMessageW(dialog.handle(), WM_NULL, 0, 0);
        EXPECT_EQ(Shown(dialog), 140) << "repainted without erasing";
        Smear(dialog);
        ShowWindow(dialog.handle(), SW_HIDE);
        ShowWindow(dialog.handle(), SW_SHOW);
        Repaint(dialog);
        EXPECT_EQ(Shown(dialog), 140) << "hidden and shown";
    });
}

TEST_F(OperationPreviewTest, PaintingAnswersTrue) {
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        const auto procedure = reinterpret_cast<DLGPROC>(GetWindowLongPtrW(dialog.handle(), DWLP_DLGPROC));
        ASSERT_NE(procedure, nullptr);
        EXPECT_EQ(procedure(dialog.handle(), WM_PAINT, 0, 0), TRUE);
        EXPECT_EQ(procedure(dialog.handle(), WM_ERASEBKGND, 0, 0), FALSE);
    });
}

TEST_F(OperationPreviewTest, EveryPaintGivesBackWhatItTook) {
    rig::ImportHooks hooks;
    std::multiset<HGDIOBJ> live;
    int loaded = 0;
    const auto take = [&live](auto handle) {
        if (handle != nullptr) {
            live.insert(handle);
        }
        return handle;
    };
    const auto give = [&live](HGDIOBJ handle) {
        if (const auto found = live.find(handle); found != live.end()) {
            live.erase(found);
        }
    };
    hooks.On("USER32.dll", "LoadBitmapW", &LoadBitmapW, [&](auto original, auto... arguments) {
        ++loaded;
        return take(original(arguments...));
    });
    hooks.On("GDI32.dll", "CreateCompatibleDC", &CreateCompatibleDC,
             [&](auto original, auto... arguments) { return take(original(arguments...)); });
    hooks.On("USER32.dll", "GetDC", &GetDC,
             [&](auto original, auto... arguments) { return take(original(arguments...)); });
    hooks.On("GDI32.dll", "DeleteDC", &DeleteDC, [&](auto original, HDC dc) {
        give(dc);
        return original(dc);
    });
    hooks.On("GDI32.dll", "DeleteObject", &DeleteObject, [&](auto original, HGDIOBJ object) {
        give(object);
        return original(object);
    });
    hooks.On("USER32.dll", "ReleaseDC", &ReleaseDC, [&](auto original, HWND window, HDC dc) {
        give(dc);
        return original(window, dc);
    });
    StartHost();
    SetRecord(RecordWith(BusyBlock()));
    const UiThread ui_thread;
    OnDialog(kDocEnd, [&](UiDriver&, Window& dialog) {
        ui_thread.Do([&] {
            for (int i = 0; i < 150; ++i) {
                RedrawWindow(dialog.handle(), nullptr, nullptr,
                             RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
                SendMessageW(dialog.Control(1023), BM_CLICK, 0, 0);
            }
        });
        EXPECT_EQ(Shown(dialog), 136);
    });
    EXPECT_GE(loaded, 300);
    EXPECT_THAT(live, testing::IsEmpty());
    StopHost();
}

TEST_F(OperationPreviewTest, DoesWithoutAPictureWhenTheSystemRefuses) {
    rig::ImportHooks hooks;
    bool bitmap_fails = false;
    bool dc_fails = false;
    int bitmaps = 0;
    int dcs = 0;
    hooks.On("USER32.dll", "LoadBitmapW", &LoadBitmapW, [&](auto original, auto... arguments) {
        const HBITMAP bitmap = bitmap_fails ? nullptr : original(arguments...);
        bitmaps += bitmap != nullptr ? 1 : 0;
        return bitmap;
    });
    hooks.On("GDI32.dll", "CreateCompatibleDC", &CreateCompatibleDC, [&](auto original, auto... arguments) {
        const HDC dc = dc_fails ? nullptr : original(arguments...);
        dcs += dc != nullptr ? 1 : 0;
        return dc;
    });
    hooks.On("GDI32.dll", "DeleteObject", &DeleteObject, [&](auto original, HGDIOBJ object) {
        bitmaps -= object != nullptr ? 1 : 0;
        return original(object);
    });
    hooks.On("GDI32.dll", "DeleteDC", &DeleteDC, [&](auto original, HDC dc) {
        dcs -= dc != nullptr ? 1 : 0;
        return original(dc);
    });
    StartHost();
    ASSERT_EQ(hooks.Bound("LoadBitmapW"), 1);
    OnDialog(kDocEnd, [&](UiDriver&, Window& dialog) {
        Repaint(dialog);
        for (const bool bitmap : {true, false}) {
            bitmap_fails = bitmap;
            dc_fails = !bitmap;
            Repaint(dialog);
            dialog.Click(1023);
            EXPECT_EQ(Shown(dialog), 0);
        }
        bitmap_fails = dc_fails = false;
        Repaint(dialog);
        EXPECT_NE(Shown(dialog), 0);
    });
    EXPECT_EQ(bitmaps, 0);
    EXPECT_EQ(dcs, 0);
    StopHost();
}

// Trace

constexpr wchar_t kTraceLine[] = L"UI:  OperationDlgProc\r\n";
constexpr wchar_t kTracedText[] = L"UI:  OperationDlgProc str=";

TEST_F(OperationDialogTest, TracesEveryMessage) {
    const UiThread ui_thread;
    OnDialog(kDocStart, [&](UiDriver&, Window& dialog) {
        // On the dialog's own thread no other message gets between.
        ui_thread.Do([&] {
            rig::TraceCapture trace;
            for (const UINT message : {UINT{WM_APP + 5}, UINT{WM_NULL}, UINT{WM_TIMER}, UINT{WM_USER + 77}}) {
                SendMessageW(dialog.handle(), message, 0, 0);
                EXPECT_THAT(trace.Take(), testing::ElementsAre(kTraceLine)) << message;
            }
            SendMessageW(dialog.handle(), WM_COMMAND, MAKEWPARAM(1021, EN_UPDATE), 0);
            EXPECT_THAT(trace.Take(), testing::ElementsAre(kTraceLine));
        });
    });
}

// The line is 260 units at most, so a long command is cut and its line end lost.
TEST_F(OperationDialogTest, TracesTheCommandText) {
    SetRecord(RecordWith(BusyBlock()));
    const DWORD ui_thread = GetCurrentThreadId();
    OnPage([&](UiDriver&, Window& page) {
        for (const std::size_t length : {0u, 1u, 4u, 77u, 78u, 128u}) {
            Block block = BusyBlock();
            block.command.assign(length, 0xA7);
            rig::TraceCapture trace;
            const Window dialog = OpenWith(page, kPageStart, block);
            SendMessageW(dialog.handle(), WM_NULL, 0, 0);
            const rig::Lines lines = trace.TakeOf(ui_thread);
            const std::wstring whole = kTracedText + CommandText(block.command) + L"\r\n";
            EXPECT_EQ(std::count(lines.begin(), lines.end(), whole.substr(0, 260)), 1) << length;
            EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                    [](const std::wstring& line) { return line.find(L"str=") != line.npos; }),
                      1);
            const auto text_line = std::find(lines.begin(), lines.end(), whole.substr(0, 260));
            EXPECT_NE(std::find(lines.begin(), text_line, kTraceLine), text_line)
                << "the message's own line comes first";
            dialog.PressAndWaitClosed(IDCANCEL);
        }
    });
}

}  // namespace
}  // namespace pages
