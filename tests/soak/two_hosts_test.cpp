// Two programs with the plug-in, of one user and at once. The language in the registry, the user's copies of
// the language files and the control font's table are theirs in common; each changes all of them over and
// over. What is left is what one of them wrote, whole.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "pages/operation_block.h"
#include "pages/printer_fixture.h"
#include "plugin_pages.h"
#include "rig/test_desktop.h"
#include "soak/process_counts.h"
#include "soak/sheets.h"

namespace pages {
namespace {

constexpr char kSecondVariable[] = "KVMR72_SECOND_HOST";
constexpr wchar_t kStartEvent[] = L"kvmr72-soak-start";

constexpr const wchar_t* kLanguageFiles[] = {kEnglish, kSimplifiedChinese, kTraditionalChinese};
constexpr wchar_t kLanguageList[] = L"LANGUAGE_KVMR72.DAT";

// What each program gives the characters of the table.
constexpr wchar_t kCharacters[] = {L'A', L'B', L'a', L'~'};
constexpr const char* kKeys[] = {"41", "42", "61", "7E"};
constexpr const wchar_t* kCommands[] = {L"1B 40", L"1D 56 42 00 1B 70 00 19 FA"};
constexpr const char* kStored[] = {"1B 40", "1D 56 42 00 1B 70 00 19 FA"};

bool IsSecond() {
    return std::getenv(kSecondVariable) != nullptr;
}

std::filesystem::path ControlFontFile() {
    wchar_t windows[MAX_PATH] = {};
    GetWindowsDirectoryW(windows, MAX_PATH);
    return std::filesystem::path(windows) / L"system32\\spool\\drivers\\w32x86\\3\\KVMR72CONTROL.dat";
}

// Another process of this program, in the same test; it goes with its maker.
class SecondHost {
  public:
    SecondHost() {
        wchar_t program[1024] = {};
        GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
        std::wstring command =
            L"\"" + std::wstring(program) + L"\" --gtest_brief=1 --gtest_filter=TwoHostsTest.*";
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process = {};
        SetEnvironmentVariableA(kSecondVariable, "1");
        EXPECT_TRUE(CreateProcessW(program, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                   &startup, &process))
            << GetLastError();
        SetEnvironmentVariableA(kSecondVariable, nullptr);
        CloseHandle(process.hThread);
        process_ = process.hProcess;
    }
    ~SecondHost() {
        TerminateProcess(process_, 98);
        CloseHandle(process_);
    }
    SecondHost(const SecondHost&) = delete;
    SecondHost& operator=(const SecondHost&) = delete;

    bool HasEnded(DWORD patience) const { return WaitForSingleObject(process_, patience) == WAIT_OBJECT_0; }
    DWORD ExitCode() const {
        DWORD code = 0;
        GetExitCodeProcess(process_, &code);
        return code;
    }

  private:
    HANDLE process_ = nullptr;
};

class TwoHostsTest : public PageTest {
  protected:
    // The second program finds the machine as the first has it.
    void SetUp() override {
        if (IsSecond()) {
            rig::UseOwnDesktop();
            return;
        }
        PageTest::SetUp();
        std::error_code error;
        std::filesystem::create_directories(ControlFontFile().parent_path(), error);
        std::filesystem::remove(ControlFontFile(), error);
    }

    static void Work(int rounds) {
        soak::LeakWatch watch(soak::kBlocksOfStaticTexts);
        for (int round = 0; round < rounds && !HasFailure(); ++round) {
            WorkOnce(round);
            watch.Count();
        }
        if (rounds >= soak::LeakWatch::kFewestUses) {
            EXPECT_EQ(watch.Growth(), "");
            std::printf("%s program: %s\n", IsSecond() ? "second" : "first", watch.Report().c_str());
        }
    }

    // The plug-in comes and goes.
    static void WorkOnce(int round) {
        SCOPED_TRACE(std::string(IsSecond() ? "second" : "first") + " program, round " +
                     std::to_string(round));
        VirtualPrinter printer;
        HostSettings settings;
        settings.printer = printer.handle();
        PluginHost host(rig::PluginPath(), std::move(settings));
        UseSheet(host, SheetKind::kDocument, [&](UiDriver&, Sheet& sheet) {
            const Window page = soak::PluginPage(sheet, 0);
            page.SelectCombo(IDC_MAIN_LANGUAGE, (round + (IsSecond() ? 1 : 0)) % 3);
            sheet.PressApply();
            Repaint(page);
            sheet.PressOk();
        });
        UseSheet(host, SheetKind::kPrinter, [&](UiDriver& ui, Sheet& sheet) {
            const Window page = soak::PluginPage(sheet, 0);
            const Window table = OpenControlFont(ui, page);
            for (const wchar_t character : kCharacters) {
                SelectControlFontRow(table, character);
                const Window command = table.OpenDialog(IDC_CONTROL_TABLE_EDIT);
                command.TypeText(IDC_CONTROL_COMMAND_TEXT, kCommands[IsSecond() ? 1 : 0]);
                CloseDialog(command, IDOK, table);
            }
            CloseDialog(table, IDOK, page);
            sheet.PressCancel();
        });
        EXPECT_TRUE(host.GuardsIntact());
    }

    static void ExpectTheLanguageWhole() {
        const auto language = rig::LanguageValue(L"LANGUAGE_KVMR72");
        ASSERT_TRUE(language.has_value());
        EXPECT_THAT(*language, testing::AnyOf(kEnglish, kSimplifiedChinese, kTraditionalChinese));
        EXPECT_EQ(rig::LanguageValue(L"IsFirstRun_KVMR72"), L"FALSE");
        // The value of the port holds the name of the choice.
        EXPECT_EQ(rig::LanguageValue(L"USB001"), L"LANGUAGE_KVMR72");
    }

    static void ExpectTheFilesWhole() {
        std::vector<std::filesystem::path> names(std::begin(kLanguageFiles), std::end(kLanguageFiles));
        names.emplace_back(kLanguageList);
        for (const auto& name : names) {
            EXPECT_EQ(rig::ReadBytes(rig::UserFolder() / name), rig::ReadBytes(rig::LanguageSource() / name))
                << name;
        }
    }

    // Of one program or the other, row by row.
    static void ExpectTheTableWhole() {
        const auto bytes = rig::ReadBytes(ControlFontFile()).value_or(Bytes());
        std::istringstream file(std::string(bytes.begin(), bytes.end()));
        std::string line;
        ASSERT_TRUE(std::getline(file, line));
        EXPECT_EQ(line, "[Character Translation Table]\r");
        for (const std::string key : kKeys) {
            ASSERT_TRUE(std::getline(file, line)) << key;
            // The system may or may not keep a blank at a line's end when it writes a further key.
            line.erase(line.find_last_not_of(" \r") + 1);
            EXPECT_THAT(line, testing::AnyOf(key + "=" + kStored[0], key + "=" + kStored[1]));
        }
        EXPECT_FALSE(std::getline(file, line)) << line;
    }
};

TEST_F(TwoHostsTest, WhatBothChangeStaysWhole) {
    const int rounds = soak::Times("KVMR72_SOAK", 4);
    const HANDLE start = CreateEventW(nullptr, TRUE, FALSE, kStartEvent);
    ASSERT_NE(start, nullptr);
    if (IsSecond()) {
        SetEvent(start);
        Work(rounds);
        CloseHandle(start);
        return;
    }
    const SecondHost second;
    ASSERT_EQ(WaitForSingleObject(start, 30000), WAIT_OBJECT_0) << "the second program does not start";
    Work(rounds);
    constexpr DWORD kPatience = 60000;
    ASSERT_TRUE(second.HasEnded(kPatience)) << "the second program does not end";
    EXPECT_EQ(second.ExitCode(), 0u);
    CloseHandle(start);
    ExpectTheLanguageWhole();
    ExpectTheFilesWhole();
    ExpectTheTableWhole();
}

}  // namespace
}  // namespace pages
