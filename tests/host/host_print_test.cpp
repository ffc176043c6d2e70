// What the host program does with the jobs that its sheet sends to the printer.
#include <windows.h>

#include <winspool.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "plugin/default_record.h"
#include "program_fixture.h"
#include "system_printer.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

// A job as a default record with HRI below and the data that is played make it: the calls of WritePrinter one
// by one, bytes in hexadecimal, text in quotes.
struct PlayedJob {
    const char* document;
    const char* type;
    std::vector<const char*> writes;
};

constexpr char kEnd[] = "00";
constexpr char kCut[] = "0A 1D 56 42 00";
constexpr char kSample2D[] = "'01234567890123'";

// HRI font A, below; elements 3 dots wide, bars 163 high.
#define COMMANDS_1D(symbology) "1D 66 00 1D 48 02 1D 77 03 1D 68 A3 1D 6B " symbology
#define SIZE_1D(symbology) "1D 77 03 1D 68 A3 1D 6B " symbology
// Elements 2 dots wide, rows 100 high, composite rows 2, separator 1; HRI and identifiers as 1.
#define DATABAR_1D(kind) "1D 66 00 1D 48 00 1D 73 " kind " 02 64 02 01 02 01 01 1D 6B 0D"
// The same with a separator of 2 and 4 segments.
#define DATABAR_2D(kind) "1D 66 00 1D 48 00 1D 73 " kind " 02 64 02 02 04 01 01 1D 6B 0D"

const PlayedJob kPlayed[] = {
    {"Barcode", "UPC-A", {COMMANDS_1D("00"), "'123456789012'", kEnd, kCut}},
    {"Barcode", "UPC-E", {COMMANDS_1D("01"), "'01230000045'", kEnd, kCut}},
    {"Barcode", "EAN8", {COMMANDS_1D("03"), "'9638507'", kEnd, kCut}},
    {"Barcode", "EAN13", {COMMANDS_1D("02"), "'590123412345'", kEnd, kCut}},
    {"Barcode", "Code39", {COMMANDS_1D("04"), "'123ABC*'", kEnd, kCut}},
    {"Barcode", "ITF", {COMMANDS_1D("05"), "'12345678'", kEnd, kCut}},
    {"Barcode", "Codabar", {COMMANDS_1D("06"), "'A123456789A'", kEnd, kCut}},
    {"Barcode", "Code93", {COMMANDS_1D("48"), "00", SIZE_1D("48"), "06", "'123ABC'", kEnd, kCut}},
    {"Barcode", "Code128", {COMMANDS_1D("49"), "00", SIZE_1D("49"), "06", "'{A1234'", kEnd, kCut}},
    {"Barcode", "GS1 DataBar Omnidirectional", {DATABAR_1D("01"), "'0123456789012'", kEnd, kCut}},
    {"Barcode", "GS1 DataBar Truncated", {DATABAR_1D("02"), "'0123456789012'", kEnd, kCut}},
    {"Barcode", "GS1 DataBar Limited", {DATABAR_1D("05"), "'0123456789012'", kEnd, kCut}},
    {"Barcode", "GS1 DataBar Expanded", {DATABAR_1D("06"), "'(01)01234567890128'", kEnd, kCut}},
    // 30 rows, 3 columns, elements 3 by 3 dots, error correction 2.
    {"2Dcode", "PDF417", {"1D 70 01 01 1E 03 03 03 1D 71 02 1D 6B 0A", kSample2D, kEnd, kCut}},
    {"2Dcode", "GS1 DataBar Stacked", {DATABAR_2D("03"), "'0123456789012'", kEnd, kCut}},
    {"2Dcode", "GS1 DataBar Stacked Omnidirectional", {DATABAR_2D("04"), "'0123456789012'", kEnd, kCut}},
    {"2Dcode", "GS1 DataBar Expanded Stacked", {DATABAR_2D("07"), "'(01)01234567890128(10)AB'", kEnd, kCut}},
    // Elements 3 dots wide, Chinese, model 2, level M.
    {"2Dcode", "QR Code", {"1D 6F 00 03 00 02 1D 6B 0B 4D 41 2C", kSample2D, kEnd, kCut}},
    {"2Dcode", "Maxi Code", {"1D 71 00 1D 6B 0C", kSample2D, kEnd, kCut}},
};

Bytes BytesOf(const std::string& text) {
    if (text.starts_with('\'')) {
        return {text.begin() + 1, text.end() - 1};
    }
    Bytes bytes;
    for (std::size_t at = 0; at < text.size(); at += 3) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(at, 2), nullptr, 16)));
    }
    return bytes;
}

std::string HexOf(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char hex[4];
        std::snprintf(hex, sizeof hex, " %02X", byte);
        text += hex;
    }
    return text;
}

// The files, the log and the console lines of all played jobs.
struct Expected {
    std::vector<std::pair<std::wstring, Bytes>> files;
    std::string log;
    std::string told;
};

Expected AllPlayed() {
    Expected expected;
    for (const PlayedJob& job : kPlayed) {
        const std::size_t number = expected.files.size() + 1;
        std::string type = job.type;
        std::replace(type.begin(), type.end(), ' ', '-');
        const std::string name =
            (number < 10 ? "00" : "0") + std::to_string(number) + "-" + job.document + "-" + type + ".prn";
        expected.log += "StartDocPrinterW(printer, 1, \"" + std::string(job.document) +
                        "\", output none, \"RAW\") -> " + std::to_string(number) +
                        "\nStartPagePrinter(printer) -> TRUE\n";
        Bytes bytes;
        for (const char* const write : job.writes) {
            const Bytes piece = BytesOf(write);
            const std::string size = std::to_string(piece.size());
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            expected.log += "WritePrinter(printer, " + size + " bytes:" + HexOf(piece) + ") -> TRUE, " +
                            size + " written\n";
        }
        expected.log += "EndPagePrinter(printer) -> TRUE\nEndDocPrinter(printer) -> TRUE\n";
        expected.told += "Printed: " + std::string(job.document) + " (" + job.type + "), " +
                         std::to_string(bytes.size()) + " bytes\r\n";
        expected.files.emplace_back(FromUtf8(name), bytes);
    }
    return expected;
}

class HostPrintTest : public HostProgramTest {
  protected:
    std::vector<std::pair<std::wstring, Bytes>> Jobs(const wchar_t* folder) const {
        std::vector<std::pair<std::wstring, Bytes>> jobs;
        for (const auto& entry : std::filesystem::directory_iterator(File(folder))) {
            if (entry.path().filename() != L"spooler.txt") {
                jobs.emplace_back(entry.path().filename().native(),
                                  rig::ReadBytes(entry.path()).value_or(Bytes()));
            }
        }
        std::sort(jobs.begin(), jobs.end());
        return jobs;
    }
};

TEST_F(HostPrintTest, PlaysEveryBarcodeIntoFiles) {
    const Expected expected = AllPlayed();
    ASSERT_EQ(expected.files.size(), 19u);
    const ProgramRun run = Run(L"--play --jobs \"made\\new jobs\"");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.output, StartsWith(expected.told + "Changed in the record:"));
    EXPECT_EQ(Text(L"made\\new jobs\\spooler.txt"), expected.log);
    const auto jobs = Jobs(L"made\\new jobs");
    ASSERT_EQ(jobs.size(), 19u);
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        EXPECT_EQ(ToUtf8(jobs[i].first), ToUtf8(expected.files[i].first));
        EXPECT_EQ(HexOf(jobs[i].second), HexOf(expected.files[i].second)) << ToUtf8(jobs[i].first);
    }
}

// The last types stay chosen, and the prints are the same whatever the first types were.
TEST_F(HostPrintTest, PlaysIntoWhatItPlayedBefore) {
    const Expected expected = AllPlayed();
    for (const wchar_t* arguments :
         {L"--play --record r.bin --jobs one", L"--play --record r.bin --jobs two"}) {
        ASSERT_EQ(Run(arguments).exit_code, 0u);
    }
    EXPECT_EQ(Jobs(L"one"), expected.files);
    EXPECT_EQ(Jobs(L"two"), expected.files);
}

// GS1 DataBar Expanded Stacked is played as a composite symbol, which takes no fewer than four segments.
TEST_F(HostPrintTest, PlaysACompositeSymbol) {
    constexpr std::size_t kSegments = 901;
    Bytes record = Record();
    record.at(kSegments) = 2;
    rig::WriteBytes(File(L"record.bin"), record);
    const ProgramRun run = Run(L"--play --record record.bin --jobs jobs");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    EXPECT_EQ(rig::ReadBytes(File(L"record.bin")).value_or(Bytes(1976)).at(kSegments), 4);
    const auto expected = AllPlayed().files;
    const auto jobs = Jobs(L"jobs");
    ASSERT_EQ(jobs.size(), 19u);
    EXPECT_EQ(jobs[16], expected[16]);
    // The two stacked types before it are as the record has them.
    Bytes two_segments = expected[14].second;
    two_segments.at(13) = 2;
    EXPECT_EQ(jobs[14].second, two_segments);
}

TEST_F(HostPrintTest, TellsWithoutFiles) {
    const ProgramRun run = Run(L"--play");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    EXPECT_THAT(run.output, StartsWith(AllPlayed().told + "Changed in the record:"));
    // Only what the test itself writes.
    for (const auto& entry : std::filesystem::directory_iterator(File(L"."))) {
        EXPECT_THAT(ToUtf8(entry.path().filename().native()), StartsWith("std"));
    }
}

TEST_F(HostPrintTest, FailsWithAFolderThatCannotBeMade) {
    rig::WriteBytes(File(L"jobs"), Bytes{1});
    const ProgramRun run = Run(L"--play --record record.bin --jobs jobs");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: cannot write "), HasSubstr("spooler.txt")));
    EXPECT_FALSE(std::filesystem::exists(File(L"record.bin")));
}

// Lists of test prints

TEST_F(HostPrintTest, PrintsAList) {
    const std::string list =
        "\xEF\xBB\xBF\x32\x44\tQR Code\tcaf\xC3\xA9\r\n1D\tCode39\tA B\n1D\tUPC-A\t01234567890\n2D\tMaxi "
        "Code\t\xE7\xA5\xA8";
    rig::WriteBytes(File(L"list.tsv"), Bytes(list.begin(), list.end()));
    const ProgramRun run = Run(L"--prints list.tsv --jobs jobs --record record.bin");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    // The 1D Code page first. Maxi Code gets what stands for a character that the code page has not.
    const auto joined = [](const char* commands, const std::string& data) {
        Bytes bytes = BytesOf(commands);
        bytes.insert(bytes.end(), data.begin(), data.end());
        const Bytes end = BytesOf("00 0A 1D 56 42 00");
        bytes.insert(bytes.end(), end.begin(), end.end());
        return bytes;
    };
    const std::vector<std::pair<std::wstring, Bytes>> expected = {
        {L"001-Barcode-Code39.prn", joined("1D 66 00 1D 48 00 1D 77 03 1D 68 A3 1D 6B 04", "A B")},
        {L"002-Barcode-UPC-A.prn", joined("1D 66 00 1D 48 00 1D 77 03 1D 68 A3 1D 6B 00", "01234567890")},
        {L"003-2Dcode-QR-Code.prn", joined("1D 6F 00 03 00 01 1D 6B 0B 4D 41 2C", "caf\xE9")},
        {L"004-2Dcode-Maxi-Code.prn", joined("1D 71 00 1D 6B 0C", "?")}};
    EXPECT_EQ(Jobs(L"jobs"), expected);
    const Bytes record = rig::ReadBytes(File(L"record.bin")).value_or(Bytes(1976));
    EXPECT_EQ(record.at(596), 0);
    EXPECT_EQ(record.at(884), 5);
}

TEST_F(HostPrintTest, FailsWithAListThatIsWrong) {
    struct Case {
        const char* list;
        const char* error;
    };
    for (const auto& [list, error] :
         {Case{"1D\tUPC-A\t01234567890\n3D\tUPC-A\t1\n", "list.tsv, line 2 is not"},
          Case{"1D UPC-A 01234567890\n", "list.tsv, line 1 is not"},
          Case{"1D\tUPC-A\n", "list.tsv, line 1 is not"}, Case{"\n", "list.tsv, line 1 is not"},
          Case{"2D\tUPC-A\t01234567890\n", "\"UPC-A\" is no type of \"2D Code\""},
          Case{"1D\tUPC-A\tABC\n", "UPC-A \"ABC\": BarCode data error!"},
          Case{"1D\tUPC-A\t\n", "UPC-A: there is nothing to print"},
          Case{"1D\tCode39\tA\tB\n", "Code39: the box does not take"}}) {
        SCOPED_TRACE(list);
        const std::string text = list;
        rig::WriteBytes(File(L"list.tsv"), Bytes(text.begin(), text.end()));
        const ProgramRun run = Run(L"--prints list.tsv --record record.bin");
        EXPECT_EQ(run.exit_code, 1u);
        EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: "), HasSubstr(error)));
        EXPECT_FALSE(std::filesystem::exists(File(L"record.bin")));
    }
    const ProgramRun run = Run(L"--prints missing.tsv");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_THAT(run.errors, AllOf(StartsWith("KVMR72Host: there is no file"), HasSubstr("missing.tsv")));
}

// Printers of the system

TEST_F(HostPrintTest, FailsWithAPrinterThatThereIsNot) {
    const ProgramRun run = Run(L"--play --record record.bin --printer \"No such printer\"");
    EXPECT_EQ(run.exit_code, 1u);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "KVMR72Host: cannot open the printer \"No such printer\": error 1801\r\n");
    EXPECT_FALSE(std::filesystem::exists(File(L"record.bin")));
}

// A printer of the system that writes each of its jobs into a file.
class FilePrinter {
  public:
    FilePrinter(std::wstring name, const std::filesystem::path& file) {
        rig::WriteBytes(file.parent_path() / L"none.ppd", Bytes{});
        std::wstring description = (file.parent_path() / L"none.ppd").native();
        DRIVER_INFO_3W driver = {};
        driver.cVersion = 3;
        driver.pName = name.data();
        driver.pEnvironment = const_cast<wchar_t*>(L"Windows x64");
        driver.pDriverPath = const_cast<wchar_t*>(L"wineps.drv");
        driver.pConfigFile = const_cast<wchar_t*>(L"wineps.drv");
        driver.pDataFile = description.data();
        EXPECT_TRUE(AddPrinterDriverExW(nullptr, 3, reinterpret_cast<BYTE*>(&driver),
                                        APD_COPY_NEW_FILES | APD_COPY_FROM_DIRECTORY))
            << GetLastError();
        PRINTER_INFO_2W printer = {};
        std::wstring port = UnixName(file);
        printer.pPrinterName = name.data();
        printer.pPortName = port.data();
        printer.pDriverName = name.data();
        printer.pPrintProcessor = const_cast<wchar_t*>(L"WinPrint");
        printer.pDatatype = const_cast<wchar_t*>(L"RAW");
        handle_ = AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&printer));
        EXPECT_NE(handle_, nullptr) << GetLastError();
    }
    ~FilePrinter() {
        EXPECT_TRUE(DeletePrinter(handle_));
        ClosePrinter(handle_);
    }
    FilePrinter(const FilePrinter&) = delete;
    FilePrinter& operator=(const FilePrinter&) = delete;

  private:
    // The spooler's ports are named as the system beneath names its files.
    static std::wstring UnixName(const std::filesystem::path& file) {
        using UnixFileName = char*(CDECL*)(const wchar_t*);
        const auto unix_file_name = reinterpret_cast<UnixFileName>(reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
        char* const name = unix_file_name(file.c_str());
        std::wstring wide = FromUtf8(name);
        HeapFree(GetProcessHeap(), 0, name);
        return wide;
    }

    HANDLE handle_ = nullptr;
};

TEST_F(HostPrintTest, PrintsOnAPrinterOfTheSystem) {
    // The file must be there: its name is looked up.
    rig::WriteBytes(File(L"paper.bin"), Bytes{});
    const FilePrinter printer(L"Receipts 2", File(L"paper.bin"));
    EXPECT_THAT(ToUtf8(SystemPrinter(L"Receipts 2").PortName()), testing::EndsWith("/paper.bin"));
    const ProgramRun run = Run(L"--play --printer \"Receipts 2\"");
    EXPECT_EQ(run.exit_code, 0u) << run.errors;
    EXPECT_THAT(run.output, StartsWith("Changed in the record:")) << "the virtual printer tells";
    // Each job replaces the one before.
    EXPECT_EQ(rig::ReadBytes(File(L"paper.bin")), AllPlayed().files.back().second);
}

}  // namespace
