// The command box of the Operation settings dialog: which keys it takes, what it leaves to the dialog, what
// its text stores and how a stored command comes back.
#include <windows.h>

#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "operation_block.h"
#include "page_fixture.h"
#include "real_input.h"
#include "ui_thread.h"

namespace pages {
namespace {

constexpr int kBox = 1016;

// The one box of a process-wide clipboard.
void SetClipboardText(const std::wstring& text) {
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    std::memcpy(GlobalLock(memory), text.c_str(), size);
    GlobalUnlock(memory);
    EXPECT_NE(SetClipboardData(CF_UNICODETEXT, memory), nullptr);
    CloseClipboard();
}

std::wstring ClipboardText() {
    std::wstring text;
    EXPECT_TRUE(OpenClipboard(nullptr));
    if (const HANDLE memory = GetClipboardData(CF_UNICODETEXT)) {
        text = static_cast<const wchar_t*>(GlobalLock(memory));
        GlobalUnlock(memory);
    }
    CloseClipboard();
    return text;
}

// What the clipboard holds after `keys`, which the dialog answers by changing it. Looking into it before that
// could keep the dialog from opening it.
std::wstring ClipboardTextAfter(const UiDriver& ui, const Window& dialog, const std::function<void()>& keys) {
    const DWORD before = GetClipboardSequenceNumber();
    keys();
    ui.WaitUntil([&] { return GetClipboardSequenceNumber() != before; }, "another text on the clipboard");
    Settle(dialog);
    return ClipboardText();
}

class CommandBoxTest : public OperationTest {
  protected:
    void SetUp() override {
        OperationTest::SetUp();
        block_ = BusyBlock();
        block_.command.clear();
        before_ = RecordWith(block_);
        SetRecord(before_);
    }

    // The dialog with an empty box that has the focus.
    void InBox(const std::function<void(UiDriver&, Window& dialog)>& script) {
        OnDialog(kDocStart, [&](UiDriver& ui, Window& dialog) {
            FocusForKeys(ui, dialog, kBox);
            script(ui, dialog);
        });
    }

    // Types an F behind everything that was typed before, and gives what stands before it.
    static std::wstring TextOnceTyped(const UiDriver& ui, const Window& dialog) {
        PressWith(VK_SHIFT, 'F');
        ui.WaitUntil([&] { return dialog.Text(kBox).find(L'F') != std::wstring::npos; }, "typed keys");
        const std::wstring text = dialog.Text(kBox);
        EXPECT_EQ(text.back(), L'F');
        return text.substr(0, text.size() - 1);
    }

    void ExpectStored(const std::vector<std::uint8_t>& command) {
        block_.command = command;
        EXPECT_EQ(Differences(With(before_, kDocStart, block_), Record()), "");
    }

  private:
    Block block_;
    Bytes before_;
};

TEST_F(CommandBoxTest, TakesHexadecimalKeys) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', VK_SPACE, 'A', 'B', 'C', 'D', 'E', 'F'});
        PressKey(VK_SPACE);
        for (const WORD key : {WORD{'A'}, WORD{'B'}, WORD{'C'}, WORD{'D'}, WORD{'E'}}) {
            PressWith(VK_SHIFT, key);
        }
        EXPECT_EQ(TextOnceTyped(ui, dialog), L"0123456789 abcdef ABCDE");
    });
    ExpectStored({});
}

TEST_F(CommandBoxTest, LeavesOutOtherKeys) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'G', VK_OEM_COMMA, 'Z', '1', VK_OEM_2, 'X', VK_OEM_PLUS, VK_OEM_1, '2'});
        PressWith(VK_SHIFT, 'G');
        PressWith(VK_SHIFT, '3');
        EXPECT_EQ(TextOnceTyped(ui, dialog), L"12");
    });
}

TEST_F(CommandBoxTest, TakesPointAndMinusWhichCountAsZero) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'1', VK_OEM_PERIOD, VK_SPACE, VK_OEM_MINUS, '5', VK_SPACE});
        EXPECT_EQ(TextOnceTyped(ui, dialog), L"1. -5 ");
        dialog.PressAndWaitClosed(IDOK);
    });
    ExpectStored({0x10, 0x05, 0x0F});
}

TEST_F(CommandBoxTest, BackspaceDeletes) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'1', '2', '3', VK_BACK, VK_BACK, '4'});
        EXPECT_EQ(TextOnceTyped(ui, dialog), L"14");
    });
}

// Every character on its own, as the keyboard of any country may bring it.
TEST_F(CommandBoxTest, TakesNoOtherCharacter) {
    constexpr std::wstring_view kTaken = L"0123456789abcdefABCDEF .-";
    const UiThread ui_thread;
    OnDialog(kDocStart, [&](UiDriver&, Window& dialog) {
        const HWND box = dialog.Control(kBox);
        const auto type = [&](wchar_t character) {
            SendMessageW(box, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"7e"));
            SendMessageW(box, EM_SETSEL, 2, 2);
            return SendMessageW(box, WM_CHAR, character, 1);
        };
        ui_thread.Do([&] {
            std::vector<wchar_t> characters;
            for (wchar_t character = 1; character < 0x180; ++character) {
                characters.push_back(character);
            }
            // Full-width digits and letters, Arabic digits, a Chinese character, half of a surrogate pair.
            for (const int character : {0xFF11, 0xFF21, 0xFF41, 0x0661, 0x4E2D, 0x0410, 0xD83D, 0xFFFF,
                                        0x0130 + '0', 0x0100 + 'A'}) {
                characters.push_back(static_cast<wchar_t>(character));
            }
            for (const wchar_t character : characters) {
                const LRESULT result = type(character);
                if (kTaken.find(character) != kTaken.npos) {
                    EXPECT_EQ(dialog.Text(kBox), std::wstring(L"7e") + character);
                } else if (character == 8) {
                    EXPECT_EQ(dialog.Text(kBox), L"7");
                } else {
                    EXPECT_EQ(dialog.Text(kBox), L"7e") << static_cast<unsigned>(character);
                    EXPECT_EQ(result, 1) << static_cast<unsigned>(character);
                }
            }
            type(0);
            EXPECT_EQ(dialog.Text(kBox), L"7e");
        });
    });
}

TEST_F(CommandBoxTest, KeepsAllKeysFromTheDialog) {
    OnDialog(kDocStart, [](UiDriver&, Window& dialog) {
        EXPECT_EQ(dialog.Send(kBox, WM_GETDLGCODE), DLGC_WANTALLKEYS);
        // Only this box does.
        EXPECT_EQ(dialog.Send(1021, WM_GETDLGCODE) & DLGC_WANTALLKEYS, 0);
    });
}

TEST_F(CommandBoxTest, EnterAndEscapeDoNotEndTheDialog) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'1', VK_RETURN, VK_ESCAPE, '2', VK_ESCAPE, VK_RETURN});
        EXPECT_EQ(TextOnceTyped(ui, dialog), L"12");
        EXPECT_TRUE(dialog.IsOpen());
        EXPECT_EQ(FocusOf(dialog), dialog.Control(kBox));
        // From another control they do.
        dialog.Focus(1021);
        WaitForFocus(ui, dialog, 1021);
        PressKey(VK_RETURN);
        dialog.WaitClosed();
    });
    ExpectStored({0x12, 0x0F});
}

TEST_F(CommandBoxTest, EscapeFromAnotherControlCancels) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'1', VK_ESCAPE});
        EXPECT_EQ(TextOnceTyped(ui, dialog), L"1");
        PressKey(VK_TAB);
        WaitForFocus(ui, dialog, 1025);
        PressKey(VK_ESCAPE);
        dialog.WaitClosed();
    });
    ExpectStored({});
}

TEST_F(CommandBoxTest, TabMovesToTheNextControl) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'4', VK_TAB});
        WaitForFocus(ui, dialog, 1025);
        EXPECT_EQ(dialog.Text(kBox), L"4");
        // In either direction: the box knows only the next one.
        dialog.Focus(kBox);
        WaitForFocus(ui, dialog, kBox);
        PressWith(VK_SHIFT, VK_TAB);
        WaitForFocus(ui, dialog, 1025);
        EXPECT_EQ(dialog.Text(kBox), L"4");
        // The others keep the dialog's own way.
        PressKey(VK_TAB);
        WaitForFocus(ui, dialog, 1017);
        PressWith(VK_SHIFT, VK_TAB);
        WaitForFocus(ui, dialog, 1025);
        PressWith(VK_SHIFT, VK_TAB);
        WaitForFocus(ui, dialog, kBox);
    });
}

TEST_F(CommandBoxTest, PastesAnyText) {
    InBox([](UiDriver& ui, Window& dialog) {
        const std::wstring text = L"zz 1G\x4E2Dhello";
        SetClipboardText(text);
        PressWith(VK_CONTROL, 'V');
        ui.WaitUntil([&] { return !dialog.Text(kBox).empty(); }, "the pasted text");
        EXPECT_EQ(dialog.Text(kBox), text);
        dialog.PressAndWaitClosed(IDOK);
    });
    // z and z; 1 and G; the Chinese character and h; e and l; l and o.
    ExpectStored({0x00, 0x10, 0x00, 0xE0, 0x00});
}

TEST_F(CommandBoxTest, CopiesAndCuts) {
    InBox([](UiDriver& ui, Window& dialog) {
        PressKeys({'1', 'D', '5', '6'});
        EXPECT_EQ(TextOnceTyped(ui, dialog), L"1d56");
        SetClipboardText(L"other");
        dialog.Send(kBox, EM_SETSEL, 0, 2);
        EXPECT_EQ(ClipboardTextAfter(ui, dialog, [] { PressWith(VK_CONTROL, 'C'); }), L"1d");
        EXPECT_EQ(dialog.Text(kBox), L"1d56F");
        dialog.Send(kBox, EM_SETSEL, 2, 5);
        EXPECT_EQ(ClipboardTextAfter(ui, dialog, [] { PressWith(VK_CONTROL, 'X'); }), L"56F");
        EXPECT_EQ(dialog.Text(kBox), L"1d");
    });
}

TEST_F(CommandBoxTest, PastedCommandOf129BytesIsRefused) {
    InBox([](UiDriver& ui, Window& dialog) {
        std::wstring text;
        for (int i = 0; i < 129; ++i) {
            text += L"A ";
        }
        SetClipboardText(text);
        PressWith(VK_CONTROL, 'V');
        ui.WaitUntil([&] { return dialog.Text(kBox).size() == text.size(); }, "the pasted text");
        const MessageBoxInfo box = dialog.OpenMessageBox(IDOK);
        EXPECT_EQ(box.text, L"Command length error!");
        box.Press(IDOK);
        EXPECT_EQ(dialog.Text(kBox), text);
    });
    ExpectStored({});
}

// What is read of a longer text is its first 399 characters.
TEST_F(CommandBoxTest, PasteBeyondTheBoxKeepsItsBeginning) {
    InBox([](UiDriver& ui, Window& dialog) {
        SetClipboardText(std::wstring(397, L' ') + L"1D" + std::wstring(50, L'7'));
        PressWith(VK_CONTROL, 'V');
        ui.WaitUntil([&] { return !dialog.Text(kBox).empty(); }, "the pasted text");
        dialog.PressAndWaitClosed(IDOK);
    });
    ExpectStored({0x1D});
}

struct Reopened {
    const wchar_t* typed;
    std::vector<std::uint8_t> stored;
    const wchar_t* shown;
};

TEST_F(CommandBoxTest, ReopensInUpperCaseWithSingleBlanks) {
    const std::vector<Reopened> cases = {
        {L"1D 56 42 00", {0x1D, 0x56, 0x42, 0x00}, L"1D 56 42 00 "},
        {L"1d5642", {0x1D, 0x56, 0x42}, L"1D 56 42 "},
        {L"1D 5", {0x1D, 0x05}, L"1D 05 "},
        {L"1D5", {0x1D, 0x05}, L"1D 05 "},
        {L"123", {0x12, 0x03}, L"12 03 "},
        {L"   a    bC  d   ", {0x0A, 0xBC, 0x0D}, L"0A BC 0D "},
        {L"ff 00", {0xFF, 0x00}, L"FF 00 "},
        {L"    ", {}, L""},
        {L"-.", {0x00}, L"00 "},
        {L"0f 10", {0x0F, 0x10}, L"0F 10 "},
    };
    OnPage([&](UiDriver&, Window& page) {
        for (const Reopened& reopened : cases) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(reopened.typed)));
            Window dialog = page.OpenDialog(MomentButton(kDocStart));
            dialog.TypeText(kBox, reopened.typed);
            dialog.PressAndWaitClosed(IDOK);
            ExpectStored(reopened.stored);
            dialog = page.OpenDialog(MomentButton(kDocStart));
            EXPECT_EQ(dialog.Text(kBox), reopened.shown);
            // As it stands it stores the same again.
            dialog.PressAndWaitClosed(IDOK);
            ExpectStored(reopened.stored);
        }
    });
}

}  // namespace
}  // namespace pages
