// What the host program does with the printer's properties: what is played there, the forms file, and what it
// says when a page refuses.
#include <windows.h>

#include <commctrl.h>
#include <winspool.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "play_printer.h"
#include "plugin_pages.h"
#include "program_fixture.h"
#include "rig/test_desktop.h"
#include "unit/logo_pictures.h"
#include "virtual_printer.h"

namespace {

using pages::Bytes;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

// Where the driver's rendering side reads the control font's table.
std::filesystem::path ControlFontFolder() {
    wchar_t windows[MAX_PATH] = {};
    GetWindowsDirectoryW(windows, static_cast<UINT>(std::size(windows)));
    return std::filesystem::path(windows) / L"system32" / L"spool" / L"drivers" / L"w32x86" / L"3";
}

constexpr char kToldForms[] =
    "Form added: Custom Paper-Till, 58 x 150 mm\r\n"
    "Form changed: Custom Paper-Till, 60 x 200 mm\r\n"
    "Form added: Custom Paper-Spare, 48 x 100 mm\r\n"
    "Form deleted: Custom Paper-Spare\r\n";
constexpr char kDefaultForm[] = "Form added: Custom Paper-R72, 72 x 297 mm\r\n";
constexpr char kSelfTest[] = "Printed: SELFTEST, 15 bytes\r\n";
constexpr char kKeptForms[] =
    "Custom Paper-R72\t72000\t297000\t0\t0\t72000\t297000\n"
    "Custom Paper-Till\t60000\t200000\t0\t0\t60000\t200000\n";

class HostPrinterTest : public HostProgramTest {
  protected:
    void SetUp() override {
        HostProgramTest::SetUp();
        RemoveControlFont();
    }
    void TearDown() override {
        RemoveControlFont();
        HostProgramTest::TearDown();
    }

    static void RemoveControlFont() {
        std::error_code error;
        std::filesystem::remove_all(ControlFontFolder(), error);
    }
    void Write(const wchar_t* name, const std::string& text) const {
        rig::WriteBytes(File(name), Bytes(text.begin(), text.end()));
    }
    std::vector<std::wstring> FilesIn(const wchar_t* folder) const {
        std::vector<std::wstring> names;
        for (const auto& entry : std::filesystem::directory_iterator(File(folder))) {
            names.push_back(entry.path().filename().native());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(HostPrinterTest, PlaysInEveryLanguage) {
    std::filesystem::create_directories(ControlFontFolder());
    Bytes firmware(70000);
    for (std::size_t i = 0; i < firmware.size(); ++i) {
        firmware[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    }
    rig::WriteBytes(File(L"new.jk"), firmware);
    std::vector<Bytes> pictures[2];
    for (const wchar_t* const language : {L"ENG", L"CHN", L"CHF"}) {
        SCOPED_TRACE(ToUtf8(language));
        const std::wstring name = language;
        const ProgramRun run =
            Run(L"--sheet printer --headless --language " + name + L" --pictures " + name + L" --jobs " +
                name + L".jobs --forms " + name + L".txt --trace " + name + L".trace --download new.jk");
        EXPECT_EQ(run.exit_code, 0u);
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.output,
                  std::string(kDefaultForm) + kSelfTest + kToldForms + "Printed: FIRMWARE, 70000 bytes\r\n");
        EXPECT_EQ(Text((name + L".txt").c_str()), kKeptForms);
        const std::wstring jobs = name + L".jobs";
        EXPECT_EQ(FilesIn(jobs.c_str()),
                  (std::vector<std::wstring>{L"001-SELFTEST.prn", L"002-FIRMWARE.prn", L"spooler.txt"}));
        EXPECT_EQ(rig::ReadBytes(File(jobs.c_str()) / L"001-SELFTEST.prn"),
                  (Bytes{0x1B, 0x63, 0x3B, 0x01, 0x1D, 0x28, 0x41, 0x02, 0x00, 0x00, 0x02, 0x1B, 0x63, 0x3B,
                         0x00}));
        EXPECT_EQ(rig::ReadBytes(File(jobs.c_str()) / L"002-FIRMWARE.prn"), firmware);
        EXPECT_THAT(Text((jobs + L"\\spooler.txt").c_str()),
                    AllOf(StartsWith("GetPrinterW(printer, 2, "),
                          HasSubstr("\nDeleteFormW(printer, \"Custom Paper-Spare\") -> TRUE\n")));
        EXPECT_THAT(Text((name + L".trace").c_str()),
                    HasSubstr("UI:  IOemUI:DevicePropertySheets entry.\r\n"));
        // The plug-in ends a byte with a blank, the system a section with an empty line or not.
        const Bytes table = rig::ReadBytes(ControlFontFolder() / L"KVMR72CONTROL.dat").value_or(Bytes());
        EXPECT_THAT(std::string(table.begin(), table.end()),
                    StartsWith("[Character Translation Table]\r\n41=1B 40 \r\n"));
        EXPECT_EQ(FilesIn(language),
                  (std::vector<std::wstring>{L"control-font-changed.bmp", L"control-font-command.bmp",
                                             L"control-font-table.bmp", L"download-file.bmp", L"download.bmp",
                                             L"font.bmp", L"utility-paper-sizes.bmp", L"utility.bmp",
                                             L"version.bmp"}));
        pictures[0].push_back(rig::ReadBytes(File(language) / L"utility.bmp").value_or(Bytes()));
        pictures[1].push_back(rig::ReadBytes(File(language) / L"download-file.bmp").value_or(Bytes()));
    }
    for (const auto& of_page : pictures) {
        EXPECT_FALSE(of_page[0] == of_page[1] || of_page[1] == of_page[2] || of_page[0] == of_page[2]);
    }
}

TEST_F(HostPrinterTest, KeepsPaperSizesBeyondItsEnd) {
    ASSERT_EQ(Run(L"--sheet printer --play --forms forms.txt").output,
              std::string(kDefaultForm) + kSelfTest + kToldForms);
    EXPECT_EQ(Text(L"forms.txt"), kKeptForms);
    // What is there is changed, and what another program has left as well.
    Write(L"forms.txt", std::string("Custom Paper-Spare\t41000\t25400\t0\t0\t41000\t25400\n") + kKeptForms);
    const ProgramRun run = Run(L"--sheet printer --play --forms forms.txt");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    EXPECT_EQ(run.output, std::string(kSelfTest) +
                              "Form changed: Custom Paper-Till, 58 x 150 mm\r\n"
                              "Form changed: Custom Paper-Till, 60 x 200 mm\r\n"
                              "Form changed: Custom Paper-Spare, 48 x 100 mm\r\n"
                              "Form deleted: Custom Paper-Spare\r\n");
    EXPECT_EQ(Text(L"forms.txt"), kKeptForms);
}

TEST_F(HostPrinterTest, LeavesAloneWhatItIsNotTold) {
    const ProgramRun run = Run(L"--sheet printer --play");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    EXPECT_EQ(run.output, std::string(kDefaultForm) + kSelfTest + kToldForms);
    EXPECT_FALSE(std::filesystem::exists(ControlFontFolder())) << "no driver, no table";
    for (const auto& entry : std::filesystem::directory_iterator(File(L"."))) {
        EXPECT_THAT(ToUtf8(entry.path().filename().native()), StartsWith("std"));
    }
}

TEST_F(HostPrinterTest, RefusesAFormsFileThatIsNone) {
    const std::string text = std::string(kKeptForms) + "Custom Paper-Half\t72000\t2970";
    Write(L"forms.txt", text);
    for (const wchar_t* const sheet : {L"printer", L"document"}) {
        const ProgramRun run = Run(std::wstring(L"--play --forms forms.txt --sheet ") + sheet);
        EXPECT_EQ(run.exit_code, 1u);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "KVMR72Host: forms.txt, line 3 is not finished\r\n");
        EXPECT_EQ(Text(L"forms.txt"), text);
    }
}

TEST_F(HostPrinterTest, FailsWithoutTheFileToDownload) {
    const ProgramRun run = Run(L"--sheet printer --play --forms forms.txt --download missing.jk");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "KVMR72Host: there is no file missing.jk\r\n");
    EXPECT_FALSE(std::filesystem::exists(File(L"forms.txt")));
}

// Logos

// Black where x + y is even, white elsewhere. That is what these make of it as well: error diffusion with
// more contrast, which is set for the first logo, and no halftone with more light, which is set for the
// fourth.
int Chequers(int x, int y) {
    return (x + y) % 2 * 255;
}
// Of 8 x 8 pixels.
Bytes ChequersFile(unsigned bits) {
    if (bits != 1) {
        return pictures::File(8, 8, bits,
                              [](int x, int y, int) { return static_cast<std::uint8_t>(Chequers(x, y)); });
    }
    Bytes file = pictures::Front(8, 8, 1);
    const Bytes palette = {0, 0, 0, 0, 255, 255, 255, 0};
    std::copy(palette.begin(), palette.end(), file.begin() + 54);
    for (int y = 0; y < 8; ++y) {
        const std::uint8_t row = y % 2 == 0 ? 0x55 : 0xAA;
        file.insert(file.end(), {row, 0, 0, 0});
    }
    return file;
}

// The rows in the file are from the bottom: the left column is white on top.
Bytes MonoJob(std::size_t count) {
    Bytes job = {0x1B, 0x63, 0x3B, 0x01, 0x1C, 0x71, static_cast<std::uint8_t>(count)};
    for (std::size_t i = 0; i < count; ++i) {
        job.insert(job.end(), {4, 0, 1, 0, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA});
        job.insert(job.end(), 24, 0);
    }
    job.insert(job.end(), {0x0A, 0x1B, 0x63, 0x3B, 0x00});
    return job;
}

// Each of the eight rows in four planes of a byte. Black that became a level of 16 to 31 lacks the last of
// them.
Bytes GreyJob(const std::vector<int>& black) {
    Bytes job = {0x1B, 0x63, 0x3B, 0x01, 0x1C, 0x72, static_cast<std::uint8_t>(black.size())};
    for (const int level : black) {
        job.insert(job.end(), {1, 0, 1, 0, 4, 0});
        for (int y = 0; y < 8; ++y) {
            const std::uint8_t dark = y % 2 == 0 ? 0x55 : 0xAA;
            job.insert(job.end(), {dark, dark, dark, level < 16 ? dark : std::uint8_t{0}});
        }
    }
    job.insert(job.end(), {0x0A, 0x1B, 0x63, 0x3B, 0x00});
    return job;
}

TEST_F(HostPrinterTest, PlaysLogos) {
    rig::WriteBytes(File(L"colours.bmp"), ChequersFile(24));
    rig::WriteBytes(File(L"black and white.bmp"), ChequersFile(1));
    rig::WriteBytes(File(L"\u7070.bmp"), ChequersFile(8));
    const ProgramRun run = Run(
        L"--sheet printer --headless --jobs jobs --logo colours.bmp --logo \"black and white.bmp\" --logo "
        L"\"black and white.bmp\" --logo \u7070.bmp");
    EXPECT_EQ(run.exit_code, 0u);
    EXPECT_EQ(run.errors, "");
    // Frames and commands, and four logos of 4 + 32 bytes and of 6 + 32.
    EXPECT_EQ(run.output, std::string(kDefaultForm) + kSelfTest + kToldForms +
                              "Printed: LOGO, 156 bytes\r\n"
                              "Printed: LOGO, 164 bytes\r\n"
                              "Printed: SELFTEST, 13 bytes\r\n");
    EXPECT_EQ(FilesIn(L"jobs"),
              (std::vector<std::wstring>{L"001-SELFTEST.prn", L"002-LOGO.prn", L"003-LOGO.prn",
                                         L"004-SELFTEST.prn", L"spooler.txt"}));
    EXPECT_EQ(rig::ReadBytes(File(L"jobs") / L"002-LOGO.prn"), MonoJob(4));
    EXPECT_EQ(rig::ReadBytes(File(L"jobs") / L"003-LOGO.prn"), GreyJob({0, 0, 0, 30}));
    EXPECT_EQ(rig::ReadBytes(File(L"jobs") / L"004-SELFTEST.prn"),
              (Bytes{0x1B, 0x63, 0x3B, 0x01, 0x1C, 0x71, 0x00, 0x00, 0x0A, 0x1B, 0x63, 0x3B, 0x00}));
    std::vector<std::wstring> expected;
    for (const wchar_t* const type : {L"grey", L"mono", L"original"}) {
        for (const wchar_t* const number : {L"1", L"2", L"3", L"4"}) {
            expected.push_back(std::wstring(L"download-logo-") + type + L"-" + number + L".bmp");
        }
    }
    expected.emplace_back(L"download.bmp");
    std::vector<std::wstring> pictures = FilesIn(L"pictures");
    std::erase_if(pictures, [](const std::wstring& name) { return !name.starts_with(L"download"); });
    EXPECT_EQ(pictures, expected);
    // Nothing is left beside the logos.
    std::vector<std::wstring> left = FilesIn(L".");
    std::erase_if(left, [](const std::wstring& name) { return name.starts_with(L"std"); });
    EXPECT_EQ(left, (std::vector<std::wstring>{L"black and white.bmp", L"colours.bmp", L"jobs", L"pictures",
                                               L"\u7070.bmp"}));
}

TEST_F(HostPrinterTest, TellsWhyALogoIsRefused) {
    rig::WriteBytes(File(L"good.bmp"), ChequersFile(24));
    rig::WriteBytes(File(L"wide.bmp"), pictures::Front(1025, 1, 8));
    const ProgramRun run = Run(L"--sheet printer --play --logo good.bmp --logo wide.bmp");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_THAT(run.output, testing::Not(HasSubstr("LOGO")));
    EXPECT_THAT(run.errors,
                StartsWith("KVMR72Host: the logo wide.bmp is refused: The image is too big to be selected."));
}

TEST_F(HostPrinterTest, TellsWhyLogosAreNotSent) {
    // Converted to black and white 62 + 128 x 768 bytes.
    rig::WriteBytes(File(L"large.bmp"),
                    pictures::File(1024, 768, 8, [](int, int, int) { return std::uint8_t{7}; }));
    const ProgramRun run = Run(L"--sheet printer --play --logo large.bmp");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_EQ(run.errors,
              "KVMR72Host: the download of logos is refused: The total sizes of all the logos is greater "
              "96K!\r\n");
}

TEST_F(HostPrinterTest, FailsWithoutALogo) {
    rig::WriteBytes(File(L"good.bmp"), ChequersFile(24));
    for (const wchar_t* const logos :
         {L" --logo good.bmp --logo missing.bmp", L" --logo missing.bmp --logo good.bmp"}) {
        const ProgramRun run = Run(std::wstring(L"--sheet printer --play") + logos);
        EXPECT_EQ(run.exit_code, 1u);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "KVMR72Host: there is no file missing.bmp\r\n");
    }
    const ProgramRun run = Run(L"--play --logo good.bmp");
    EXPECT_EQ(run.exit_code, 2u);
    EXPECT_EQ(run.errors, "KVMR72Host: --logo is for the printer sheet\r\nTry KVMR72Host --help.\r\n");
}

TEST_F(HostPrinterTest, ToldOfAPrinterOfTheSystemThatThereIsNot) {
    const ProgramRun run = Run(L"--sheet printer --play --printer \"No such printer\"");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_EQ(run.errors, "KVMR72Host: cannot open the printer \"No such printer\": error 1801\r\n");
}

// Pages that refuse

class PlayPrinterTest : public HostPrinterTest {
  protected:
    // Plays the properties of `printer`; gives the error, or nothing.
    std::string ErrorOfPlaying(const VirtualPrinter& printer) {
        HostSettings settings;
        settings.printer = printer.handle();
        PluginHost& host = StartHost(std::move(settings));
        try {
            RunDriven([&] { host.OpenSheet(SheetKind::kPrinter); },
                      [&](UiDriver& ui) {
                          rig::JoinOwnDesktop();
                          PlayPrinter(ui, ui.WaitForSheet(), {});
                      });
        } catch (const UiError& error) {
            return error.what();
        }
        return {};
    }
};

TEST_F(PlayPrinterTest, TellsWhatAPageSays) {
    const std::string reason =
        ToUtf8(pages::SourceText(pages::kEnglish, L"MessageBox", L"MB_UTILITY_ERROR1"));
    VirtualPrinter printer;
    printer.SetForms({WholeSheet(L"Custom Paper-R72", 72000, 297000)});
    printer.AllowFormChanges(false);
    EXPECT_EQ(ErrorOfPlaying(printer), "the paper size Till is refused: " + reason);
    EXPECT_EQ(printer.Forms().size(), 1u);
    printer.AllowFormChanges(true);
    EXPECT_EQ(ErrorOfPlaying(printer), "");
    EXPECT_EQ(printer.Forms(), (std::vector<Form>{WholeSheet(L"Custom Paper-R72", 72000, 297000),
                                                  WholeSheet(L"Custom Paper-Till", 60000, 200000)}));
}

// The page says nothing when the server does not tell of its forms.
TEST_F(PlayPrinterTest, MissesAPaperSizeThatWasNotSaved) {
    VirtualPrinter printer;
    std::vector<Form> forms = BuiltInForms();
    forms.push_back(WholeSheet(L"Custom Paper-R72", 72000, 297000));
    printer.SetForms(forms);
    printer.before_call = [&](const char* function) {
        if (printer.Jobs().size() == 1 && std::string(function) == "EnumFormsW") {
            printer.FailCall(1, RPC_S_SERVER_UNAVAILABLE);
        }
    };
    EXPECT_EQ(ErrorOfPlaying(printer), "the paper size Spare is not listed");
}

TEST_F(PlayPrinterTest, TellsWhenTheTableCannotBeWritten) {
    std::filesystem::create_directories(ControlFontFolder());
    // A folder is in the file's place.
    std::filesystem::create_directory(ControlFontFolder() / L"KVMR72CONTROL.dat");
    VirtualPrinter printer;
    EXPECT_EQ(ErrorOfPlaying(printer),
              "the control font is refused: Please check if user has administrator privileges!");
}

// The page hides its button, the program shows it to a person.
TEST_F(PlayPrinterTest, ShowsTheWayToTheControlFont) {
    constexpr int kButton = 1045;
    constexpr int kTableRows = 1048;
    const VirtualPrinter printer;
    HostSettings settings;
    settings.printer = printer.handle();
    PluginHost& host = StartHost(std::move(settings));
    RunDriven([&] { host.OpenSheet(SheetKind::kPrinter); },
              [&](UiDriver& ui) {
                  rig::JoinOwnDesktop();
                  const Sheet sheet = ui.WaitForSheet();
                  const Window page = SelectPageWith(sheet, kButton);
                  EXPECT_FALSE(page.IsVisible(kButton));
                  ShowControlFont(page);
                  for (HWND control = GetWindow(page.handle(), GW_CHILD); control != nullptr;
                       control = GetWindow(control, GW_HWNDNEXT)) {
                      EXPECT_TRUE(IsWindowVisible(control)) << GetDlgCtrlID(control);
                  }
                  const Window table = page.OpenDialog(kButton);
                  EXPECT_EQ(table.Send(kTableRows, LVM_GETITEMCOUNT), 96);
                  table.PressAndWaitClosed(IDCANCEL);
                  sheet.PressCancel();
              });
}

}  // namespace
