// The printer behind the host's sheets: every function of the spooler that it stands in for, every error, its
// log and its files as a whole.
#include "virtual_printer.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "pages/page_fixture.h"
#include "plugin_pages.h"
#include "resources/resource.h"
#include "rig/environment.h"

namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

constexpr DWORD kUntouched = 0x20001234;

DOC_INFO_1W Document(const wchar_t* name, const wchar_t* output = nullptr, const wchar_t* type = L"RAW") {
    return {const_cast<wchar_t*>(name), const_cast<wchar_t*>(output), const_cast<wchar_t*>(type)};
}

// What a call gave: 0 with the last error, or its result with the last error as it was.
struct Given {
    DWORD result;
    DWORD error;
    bool operator==(const Given&) const = default;
};
constexpr Given kDone = {TRUE, kUntouched};

constexpr Given Failed(DWORD error) {
    return {FALSE, error};
}

std::ostream& operator<<(std::ostream& out, const Given& given) {
    return out << given.result << ", error " << given.error;
}

class VirtualPrinterTest : public testing::Test {
  protected:
    void SetUp() override {
        int number = 0;
        do {
            folder_ = std::filesystem::temp_directory_path() / (L"kvmr72 jobs " + std::to_wstring(++number));
        } while (std::filesystem::exists(folder_));
    }
    void TearDown() override {
        printer_.reset();
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }

    void Open(bool with_folder = false) {
        printer_.reset();
        printer_ = std::make_unique<VirtualPrinter>(with_folder ? std::optional(folder_) : std::nullopt);
        handle_ = printer_->handle();
    }

    template <typename Call>
    Given Do(Call call) {
        SetLastError(kUntouched);
        const auto result = static_cast<DWORD>(call());
        return {result, GetLastError()};
    }
    Given Start(const wchar_t* name = L"Doc") {
        const DOC_INFO_1W document = Document(name);
        return Do([&] { return printer_->StartDocument(handle_, 1, &document); });
    }
    Given StartPage() {
        return Do([&] { return printer_->StartPage(handle_); });
    }
    Given Write(const Bytes& bytes) {
        written_ = 77;
        return Do([&] {
            return printer_->Write(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &written_);
        });
    }
    Given EndPage() {
        return Do([&] { return printer_->EndPage(handle_); });
    }
    Given End() {
        return Do([&] { return printer_->EndDocument(handle_); });
    }
    Given Abort() {
        return Do([&] { return printer_->Abort(handle_); });
    }
    Given Close() {
        return Do([&] { return printer_->Close(handle_); });
    }

    void PrintWhole(const wchar_t* name, const Bytes& bytes) {
        Start(name);
        StartPage();
        Write(bytes);
        EndPage();
        End();
    }

    // Names and content of the folder's files, spooler.txt aside.
    std::vector<std::pair<std::wstring, Bytes>> Files() const {
        std::vector<std::pair<std::wstring, Bytes>> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            if (entry.is_regular_file() && entry.path().filename() != L"spooler.txt") {
                files.emplace_back(entry.path().filename().native(),
                                   rig::ReadBytes(entry.path()).value_or(Bytes()));
            }
        }
        std::sort(files.begin(), files.end());
        return files;
    }
    std::string LogFile() const {
        const Bytes bytes = rig::ReadBytes(folder_ / L"spooler.txt").value_or(Bytes());
        return {bytes.begin(), bytes.end()};
    }

    std::filesystem::path folder_;
    std::unique_ptr<VirtualPrinter> printer_;
    HANDLE handle_ = nullptr;
    DWORD written_ = 0;
};

// A job that goes well

TEST_F(VirtualPrinterTest, KeepsAJobAndEveryCall) {
    Open();
    EXPECT_EQ(Start(L"Barcode"), (Given{1, kUntouched}));
    EXPECT_EQ(StartPage(), kDone);
    EXPECT_EQ(Write({0x1D, 0x66, 0x00}), kDone);
    EXPECT_EQ(written_, 3u);
    EXPECT_EQ(Write({0xFF}), kDone);
    EXPECT_EQ(written_, 1u);
    EXPECT_EQ(EndPage(), kDone);
    EXPECT_TRUE(printer_->Jobs().empty()) << "not before its end";
    EXPECT_EQ(End(), kDone);

    const auto jobs = printer_->Jobs();
    ASSERT_EQ(jobs.size(), 1u);
    EXPECT_EQ(jobs[0].number, 1u);
    EXPECT_EQ(jobs[0].document, L"Barcode");
    EXPECT_EQ(jobs[0].label, L"");
    EXPECT_EQ(jobs[0].bytes, (Bytes{0x1D, 0x66, 0x00, 0xFF}));
    EXPECT_TRUE(jobs[0].printed);
    EXPECT_EQ(printer_->Log(), (Lines{
                                   "StartDocPrinterW(printer, 1, \"Barcode\", output none, \"RAW\") -> 1",
                                   "StartPagePrinter(printer) -> TRUE",
                                   "WritePrinter(printer, 3 bytes: 1D 66 00) -> TRUE, 3 written",
                                   "WritePrinter(printer, 1 bytes: FF) -> TRUE, 1 written",
                                   "EndPagePrinter(printer) -> TRUE",
                                   "EndDocPrinter(printer) -> TRUE",
                               }));
}

TEST_F(VirtualPrinterTest, TellsWhatTheDocumentIs) {
    Open();
    const DOC_INFO_1W named = Document(L"\u4E2D", L"C:\\out.prn", L"EMF");
    printer_->StartDocument(handle_, 1, &named);
    printer_->EndDocument(handle_);
    const DOC_INFO_1W bare = Document(nullptr, nullptr, nullptr);
    printer_->StartDocument(handle_, 1, &bare);
    printer_->EndDocument(handle_);
    EXPECT_EQ(printer_->Log(),
              (Lines{
                  "StartDocPrinterW(printer, 1, \"\xE4\xB8\xAD\", output \"C:\\out.prn\", \"EMF\") -> 1",
                  "EndDocPrinter(printer) -> TRUE",
                  "StartDocPrinterW(printer, 1, none, output none, none) -> 2",
                  "EndDocPrinter(printer) -> TRUE",
              }));
    EXPECT_EQ(printer_->Jobs().at(1).document, L"");
}

TEST_F(VirtualPrinterTest, TakesSeveralPagesAndJobs) {
    Open();
    Start();
    for (const std::uint8_t byte : Bytes{1, 2}) {
        EXPECT_EQ(StartPage(), kDone);
        EXPECT_EQ(Write({byte}), kDone);
        EXPECT_EQ(EndPage(), kDone);
    }
    EXPECT_EQ(End(), kDone);
    EXPECT_EQ(Start(), (Given{2, kUntouched}));
    // A page that is still open ends with its document.
    EXPECT_EQ(StartPage(), kDone);
    EXPECT_EQ(End(), kDone);
    EXPECT_EQ(Start(), (Given{3, kUntouched}));
    EXPECT_EQ(StartPage(), kDone);
    EXPECT_EQ(End(), kDone);
    const auto jobs = printer_->Jobs();
    ASSERT_EQ(jobs.size(), 3u);
    EXPECT_EQ(jobs[0].bytes, (Bytes{1, 2}));
    EXPECT_TRUE(jobs[1].bytes.empty());
    EXPECT_TRUE(jobs[1].printed);
}

TEST_F(VirtualPrinterTest, ALongWriteIsKeptWholeAndShownInPart) {
    Open();
    Start();
    StartPage();
    EXPECT_EQ(Write(Bytes(32, 0xAB)), kDone);
    EXPECT_EQ(Write(Bytes(100000, 0xCD)), kDone);
    EXPECT_EQ(written_, 100000u);
    End();
    const Bytes bytes = printer_->Jobs().at(0).bytes;
    ASSERT_EQ(bytes.size(), 100032u);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0xCD), 100000);
    std::string shown[2];
    for (int i = 0; i < 32; ++i) {
        shown[0] += " AB";
        shown[1] += " CD";
    }
    EXPECT_EQ(printer_->Log().at(2), "WritePrinter(printer, 32 bytes:" + shown[0] + ") -> TRUE, 32 written");
    EXPECT_EQ(printer_->Log().at(3),
              "WritePrinter(printer, 100000 bytes:" + shown[1] + " ...) -> TRUE, 100000 written");
}

// Calls that the spooler refuses

TEST_F(VirtualPrinterTest, RefusesCallsInAWrongOrder) {
    Open();
    EXPECT_EQ(StartPage(), Failed(ERROR_SPL_NO_STARTDOC));
    EXPECT_EQ(Write({1}), Failed(ERROR_SPL_NO_STARTDOC));
    EXPECT_EQ(written_, 77u);
    EXPECT_EQ(EndPage(), Failed(ERROR_SPL_NO_STARTDOC));
    EXPECT_EQ(End(), Failed(ERROR_SPL_NO_STARTDOC));
    EXPECT_EQ(Abort(), Failed(ERROR_SPL_NO_STARTDOC));

    Start();
    EXPECT_EQ(Start(), Failed(ERROR_INVALID_PRINTER_STATE));
    EXPECT_EQ(Write({2}), Failed(ERROR_INVALID_PRINTER_STATE));
    EXPECT_EQ(written_, 77u);
    EXPECT_EQ(EndPage(), Failed(ERROR_INVALID_PRINTER_STATE));

    EXPECT_EQ(StartPage(), kDone);
    EXPECT_EQ(Start(), Failed(ERROR_INVALID_PRINTER_STATE));
    EXPECT_EQ(StartPage(), Failed(ERROR_INVALID_PRINTER_STATE));
    EXPECT_EQ(Write({3}), kDone);

    EXPECT_EQ(EndPage(), kDone);
    EXPECT_EQ(EndPage(), Failed(ERROR_INVALID_PRINTER_STATE));
    EXPECT_EQ(Write({4}), Failed(ERROR_INVALID_PRINTER_STATE));
    EXPECT_EQ(End(), kDone);
    EXPECT_EQ(End(), Failed(ERROR_SPL_NO_STARTDOC));

    // None of that disturbed the job, or counted as one.
    ASSERT_EQ(printer_->Jobs().size(), 1u);
    EXPECT_EQ(printer_->Jobs()[0].bytes, Bytes{3});
    EXPECT_EQ(Start(), (Given{2, kUntouched}));
    EXPECT_EQ(printer_->Log().at(0), "StartPagePrinter(printer) -> FALSE, error 3003");
    EXPECT_EQ(printer_->Log().at(6),
              "StartDocPrinterW(printer, 1, \"Doc\", output none, \"RAW\") -> FALSE, error 1906");
}

TEST_F(VirtualPrinterTest, RefusesHandlesThatAreNotItsOwn) {
    Open();
    Start();
    StartPage();
    const HANDLE own = handle_;
    const struct {
        HANDLE handle;
        const char* shown;
    } kForeign[] = {
        {nullptr, "null"},
        {INVALID_HANDLE_VALUE, "0xFFFFFFFFFFFFFFFF"},
        {reinterpret_cast<HANDLE>(std::uintptr_t{0x7777}), "0x7777"},
    };
    Lines expected = printer_->Log();
    for (const auto& foreign : kForeign) {
        SCOPED_TRACE(foreign.shown);
        handle_ = foreign.handle;
        EXPECT_EQ(Start(), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(StartPage(), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Write({1}), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(written_, 77u);
        EXPECT_EQ(EndPage(), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(End(), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Abort(), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Close(), Failed(ERROR_INVALID_HANDLE));
        const std::string shown = foreign.shown;
        for (const std::string& call :
             {"StartDocPrinterW(" + shown + ", 1, \"Doc\", output none, \"RAW\")",
              "StartPagePrinter(" + shown + ")", "WritePrinter(" + shown + ", 1 bytes: 01)",
              "EndPagePrinter(" + shown + ")", "EndDocPrinter(" + shown + ")", "AbortPrinter(" + shown + ")",
              "ClosePrinter(" + shown + ")"}) {
            expected.push_back(call + " -> FALSE, error 6");
        }
    }
    EXPECT_EQ(printer_->Log(), expected);
    // The job goes on.
    handle_ = own;
    EXPECT_EQ(Write({2}), kDone);
    EXPECT_EQ(End(), kDone);
    EXPECT_EQ(printer_->Jobs().at(0).bytes, Bytes{2});
}

TEST_F(VirtualPrinterTest, RefusesOtherLevelsAndNullPointers) {
    Open();
    const DOC_INFO_1W document = Document(L"Doc");
    for (const DWORD level : {0u, 2u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Do([&] { return printer_->StartDocument(handle_, level, &document); }),
                  Failed(ERROR_INVALID_LEVEL));
    }
    EXPECT_EQ(Do([&] { return printer_->StartDocument(handle_, 1, nullptr); }),
              Failed(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Start(), (Given{1, kUntouched}));
    StartPage();
    EXPECT_EQ(Do([&] { return printer_->Write(handle_, "a", 1, nullptr); }), Failed(ERROR_INVALID_PARAMETER));
    written_ = 77;
    EXPECT_EQ(Do([&] { return printer_->Write(handle_, nullptr, 1, &written_); }),
              Failed(ERROR_INVALID_USER_BUFFER));
    EXPECT_EQ(written_, 0u);
    EXPECT_EQ(Write({}), kDone);
    EXPECT_EQ(written_, 0u);
    End();
    EXPECT_TRUE(printer_->Jobs().at(0).bytes.empty());
    EXPECT_EQ(printer_->Log(), (Lines{
                                   "StartDocPrinterW(printer, 0, unknown) -> FALSE, error 124",
                                   "StartDocPrinterW(printer, 2, unknown) -> FALSE, error 124",
                                   "StartDocPrinterW(printer, 4294967295, unknown) -> FALSE, error 124",
                                   "StartDocPrinterW(printer, 1, null) -> FALSE, error 87",
                                   "StartDocPrinterW(printer, 1, \"Doc\", output none, \"RAW\") -> 1",
                                   "StartPagePrinter(printer) -> TRUE",
                                   "WritePrinter(printer, 1 bytes: 61) -> FALSE, error 87",
                                   "WritePrinter(printer, 1 bytes: null) -> FALSE, error 1784",
                                   "WritePrinter(printer, 0 bytes: null) -> TRUE, 0 written",
                                   "EndDocPrinter(printer) -> TRUE",
                               }));
}

// Jobs that do not end

TEST_F(VirtualPrinterTest, AbortGivesTheJobUp) {
    Open();
    Start();
    StartPage();
    Write({9});
    EXPECT_EQ(Abort(), kDone);
    ASSERT_EQ(printer_->Jobs().size(), 1u);
    EXPECT_FALSE(printer_->Jobs()[0].printed);
    EXPECT_EQ(printer_->Jobs()[0].bytes, Bytes{9});
    EXPECT_EQ(printer_->Log().at(3), "AbortPrinter(printer) -> TRUE");
    EXPECT_EQ(printer_->Log().at(4), "job 1 was given up");
    EXPECT_EQ(Write({1}), Failed(ERROR_SPL_NO_STARTDOC));
    EXPECT_EQ(Start(), (Given{2, kUntouched}));
}

TEST_F(VirtualPrinterTest, AClosedHandleIsGone) {
    Open();
    EXPECT_EQ(Start(), (Given{1, kUntouched}));
    EXPECT_EQ(Close(), kDone);
    ASSERT_EQ(printer_->Jobs().size(), 1u);
    EXPECT_FALSE(printer_->Jobs()[0].printed);
    EXPECT_EQ(Start(), Failed(ERROR_INVALID_HANDLE));
    EXPECT_EQ(End(), Failed(ERROR_INVALID_HANDLE));
    EXPECT_EQ(Close(), Failed(ERROR_INVALID_HANDLE));
    EXPECT_EQ(printer_->Log(),
              (Lines{
                  "StartDocPrinterW(printer, 1, \"Doc\", output none, \"RAW\") -> 1",
                  "ClosePrinter(printer) -> TRUE",
                  "job 1 was given up",
                  "StartDocPrinterW(printer, 1, \"Doc\", output none, \"RAW\") -> FALSE, error 6",
                  "EndDocPrinter(printer) -> FALSE, error 6",
                  "ClosePrinter(printer) -> FALSE, error 6",
              }));
}

// Failures on demand

TEST_F(VirtualPrinterTest, FailsTheCallThatATestNames) {
    const std::function<Given()> kCalls[] = {[this] { return Start(); },    [this] { return StartPage(); },
                                             [this] { return Write({1}); }, [this] { return Write({2}); },
                                             [this] { return EndPage(); },  [this] { return End(); }};
    // What follows a failing call: the calls after it as in the state that it left.
    constexpr DWORD kNone = ERROR_SPL_NO_STARTDOC;
    constexpr DWORD kState = ERROR_INVALID_PRINTER_STATE;
    const std::vector<Given> kAfter[] = {
        {Failed(kNone), Failed(kNone), Failed(kNone), Failed(kNone), Failed(kNone)},
        {Failed(kState), Failed(kState), Failed(kState), kDone},
        {kDone, kDone, kDone},
        {kDone, kDone},
        {kDone},
        {},
    };
    const Bytes kKept[] = {{}, {}, {2}, {1}, {1, 2}, {1, 2}};
    for (int failing = 0; failing < 6; ++failing) {
        SCOPED_TRACE(failing);
        Open();
        printer_->FailCall(failing + 1, ERROR_ACCESS_DENIED);
        std::vector<Given> given;
        for (const auto& call : kCalls) {
            given.push_back(call());
        }
        std::vector<Given> expected(static_cast<std::size_t>(failing), kDone);
        if (failing > 0) {
            expected[0] = {1, kUntouched};
        }
        expected.push_back(Failed(ERROR_ACCESS_DENIED));
        expected.insert(expected.end(), kAfter[failing].begin(), kAfter[failing].end());
        EXPECT_EQ(given, expected);
        EXPECT_THAT(printer_->Log().at(static_cast<std::size_t>(failing)),
                    testing::EndsWith(") -> FALSE, error 5"));
        const auto jobs = printer_->Jobs();
        ASSERT_EQ(jobs.size(), failing == 0 ? 0u : 1u);
        if (!jobs.empty()) {
            EXPECT_EQ(jobs[0].bytes, kKept[failing]);
            EXPECT_EQ(jobs[0].printed, failing != 5);
        }
        // Once only, and the printer is free again.
        PrintWhole(L"Next", {7});
        EXPECT_TRUE(printer_->Jobs().back().printed);
        EXPECT_EQ(printer_->Jobs().back().bytes, Bytes{7});
    }
}

TEST_F(VirtualPrinterTest, CountsFromTheMomentOfThePlan) {
    Open();
    PrintWhole(L"Doc", {1});
    printer_->FailCall(1, ERROR_NOT_READY);
    EXPECT_EQ(Start(), Failed(ERROR_NOT_READY));
    EXPECT_EQ(Start(), (Given{2, kUntouched}));
    // What would have been refused anyway fails as planned.
    printer_->FailCall(1, ERROR_NOT_READY);
    EXPECT_EQ(EndPage(), Failed(ERROR_NOT_READY));
    EXPECT_EQ(EndPage(), Failed(ERROR_INVALID_PRINTER_STATE));
}

// Files

TEST_F(VirtualPrinterTest, LeavesJobsAndLogInTheFolder) {
    folder_ /= L"made";  // with its parent
    Open(true);
    EXPECT_EQ(LogFile(), "");
    Start(L"Barcode");
    StartPage();
    Write({0x1D, 0x0A});
    EXPECT_TRUE(Files().empty()) << "not before its end";
    EndPage();
    End();
    PrintWhole(L"2Dcode", {});
    Start(L"Barcode");
    StartPage();
    Write({5});
    const std::string three_jobs =
        "StartDocPrinterW(printer, 1, \"Barcode\", output none, \"RAW\") -> 1\n"
        "StartPagePrinter(printer) -> TRUE\n"
        "WritePrinter(printer, 2 bytes: 1D 0A) -> TRUE, 2 written\n"
        "EndPagePrinter(printer) -> TRUE\n"
        "EndDocPrinter(printer) -> TRUE\n"
        "StartDocPrinterW(printer, 1, \"2Dcode\", output none, \"RAW\") -> 2\n"
        "StartPagePrinter(printer) -> TRUE\n"
        "WritePrinter(printer, 0 bytes: null) -> TRUE, 0 written\n"
        "EndPagePrinter(printer) -> TRUE\n"
        "EndDocPrinter(printer) -> TRUE\n"
        "StartDocPrinterW(printer, 1, \"Barcode\", output none, \"RAW\") -> 3\n"
        "StartPagePrinter(printer) -> TRUE\n"
        "WritePrinter(printer, 1 bytes: 05) -> TRUE, 1 written\n";
    EXPECT_EQ(LogFile(), three_jobs) << "every line at once";
    printer_.reset();
    EXPECT_EQ(LogFile(), three_jobs + "job 3 was given up\n");
    EXPECT_THAT(Files(), ElementsAre(std::pair(std::wstring(L"001-Barcode.prn"), Bytes{0x1D, 0x0A}),
                                     std::pair(std::wstring(L"002-2Dcode.prn"), Bytes{}),
                                     std::pair(std::wstring(L"003-Barcode.prn.unfinished"), Bytes{5})));
    // Another run begins anew.
    Open(true);
    EXPECT_EQ(LogFile(), "");
    PrintWhole(L"Barcode", {6});
    EXPECT_EQ(Files().at(0).second, Bytes{6});
}

TEST_F(VirtualPrinterTest, AnAbortedJobIsKeptAsUnfinished) {
    Open(true);
    Start();
    StartPage();
    Write({1});
    Abort();
    EXPECT_THAT(Files(), ElementsAre(std::pair(std::wstring(L"001-Doc.prn.unfinished"), Bytes{1})));
}

TEST_F(VirtualPrinterTest, AJobWhoseFileCannotBeWrittenDoesNotEnd) {
    Open(true);
    std::filesystem::create_directory(folder_ / L"001-Doc.prn");
    Start();
    StartPage();
    Write({1});
    EndPage();
    EXPECT_EQ(End(), Failed(ERROR_WRITE_FAULT));
    ASSERT_EQ(printer_->Jobs().size(), 1u);
    EXPECT_FALSE(printer_->Jobs()[0].printed);
    EXPECT_THAT(Files(), ElementsAre(std::pair(std::wstring(L"001-Doc.prn.unfinished"), Bytes{1})));
    const Lines log = printer_->Log();
    ASSERT_EQ(log.size(), 7u);
    EXPECT_THAT(log[4],
                testing::AllOf(testing::StartsWith("cannot write "), testing::EndsWith("001-Doc.prn")));
    EXPECT_EQ(log[5], "EndDocPrinter(printer) -> FALSE, error 29");
    EXPECT_EQ(log[6], "job 1 was given up");
    // Nor when nothing can be written at all.
    std::filesystem::create_directory(folder_ / L"002-Doc.prn.unfinished");
    Start();
    Abort();
    EXPECT_EQ(printer_->Jobs().size(), 2u);
    EXPECT_EQ(Start(), (Given{3, kUntouched}));
}

TEST_F(VirtualPrinterTest, NeedsAFolderThatCanBeWritten) {
    rig::WriteBytes(folder_, Bytes{1});  // a file is in its place
    try {
        Open(true);
        ADD_FAILURE() << "opened";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::StartsWith("cannot write "));
        EXPECT_THAT(error.what(), testing::EndsWith("spooler.txt"));
    }
    EXPECT_EQ(rig::ReadBytes(folder_), Bytes{1});
    // What failed does not stand in the way.
    Open();
    EXPECT_EQ(Start(), (Given{1, kUntouched}));
}

TEST_F(VirtualPrinterTest, NamesFilesAfterTheJob) {
    const struct {
        DWORD number;
        const wchar_t* document;
        const wchar_t* label;
        const wchar_t* stem;
    } kNames[] = {
        {1, L"Barcode", L"", L"001-Barcode"},
        {99, L"Barcode", L"UPC-A", L"099-Barcode-UPC-A"},
        {999, L"LOGO", L"", L"999-LOGO"},
        {1000, L"LOGO", L"", L"1000-LOGO"},
        {2, L"a b\tc", L"GS1 DataBar", L"002-a-b-c-GS1-DataBar"},
        {3, L"<>:\"/\\|?*", L"../x", L"003-_________-.._x"},
        {4, L"", L"", L"004-"},
        {5, L"\u4E2D\u6587.", L"", L"005-\u4E2D\u6587."},
        {6, L"0123456789012345678901234567890123456789012345678901234567890123456789", L"",
         L"006-0123456789012345678901234567890123456789012345678901234567890123"},
        // A character of two halves, whole and cut in the middle.
        {7, L"\xD83D\xDE00", L"", L"007-__"},
        {8, L"012345678901234567890123456789012345678901234567890123456789012\xD83D\xDE00", L"",
         L"008-012345678901234567890123456789012345678901234567890123456789012_"},
    };
    for (const auto& name : kNames) {
        EXPECT_EQ(JobFileStem({.number = name.number, .document = name.document, .label = name.label}),
                  name.stem);
    }
}

TEST_F(VirtualPrinterTest, LabelsOneJob) {
    Open(true);
    printer_->LabelNextJob(L"UPC-A");
    EXPECT_EQ(End(), Failed(ERROR_SPL_NO_STARTDOC));
    PrintWhole(L"Barcode", {1});
    PrintWhole(L"Barcode", {2});
    EXPECT_THAT(Files(), ElementsAre(std::pair(std::wstring(L"001-Barcode-UPC-A.prn"), Bytes{1}),
                                     std::pair(std::wstring(L"002-Barcode.prn"), Bytes{2})));
    EXPECT_EQ(printer_->Jobs().at(0).label, L"UPC-A");
    EXPECT_EQ(printer_->Jobs().at(1).label, L"");
}

// Whoever looks on

TEST_F(VirtualPrinterTest, TellsOfEachJob) {
    Open();
    Lines told;
    printer_->on_job = [&](const PrintJob& job) {
        told.push_back(std::to_string(job.number) + (job.printed ? " printed " : " given up ") +
                       std::to_string(job.bytes.size()) + " of " + std::to_string(printer_->Jobs().size()));
        SetLastError(ERROR_GEN_FAILURE);
    };
    Start();
    StartPage();
    Write({1, 2});
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(End(), kDone) << "the last error is the call's own";
    Start();
    EXPECT_EQ(Abort(), kDone);
    EXPECT_EQ(told, (Lines{"1 printed 2 of 1", "2 given up 0 of 2"}));
}

TEST_F(VirtualPrinterTest, IsTheOnlyOne) {
    Open();
    EXPECT_THROW(VirtualPrinter(), std::logic_error);
    EXPECT_EQ(Start(), (Given{1, kUntouched}));
}

// Behind the plug-in

class PluginPrinterTest : public pages::PageTest {
  protected:
    // Presses Print on the 1D Code page.
    void Print() {
        OpenSheet([](UiDriver&, Sheet& sheet) {
            SelectPageWith(sheet, IDC_BARCODE1D_GENERAL_GROUP).Click(IDC_BARCODE1D_PRINT);
            sheet.PressCancel();
        });
    }
    void StartHostWith(const VirtualPrinter& printer) {
        HostSettings settings;
        settings.printer = printer.handle();
        StartHost(std::move(settings));
    }
};

constexpr char kStart[] = "StartDocPrinterW(printer, 1, \"Barcode\", output none, \"RAW\") -> ";

TEST_F(PluginPrinterTest, GetsWhatThePluginPrints) {
    VirtualPrinter printer;
    StartHostWith(printer);
    Print();
    EXPECT_EQ(printer.Log(),
              (Lines{
                  std::string(kStart) + "1",
                  "StartPagePrinter(printer) -> TRUE",
                  "WritePrinter(printer, 15 bytes: 1D 66 00 1D 48 00 1D 77 03 1D 68 A3 1D 6B 00) -> TRUE, 15 "
                  "written",
                  "WritePrinter(printer, 12 bytes: 31 32 33 34 35 36 37 38 39 30 31 32) -> TRUE, 12 written",
                  "WritePrinter(printer, 1 bytes: 00) -> TRUE, 1 written",
                  "WritePrinter(printer, 5 bytes: 0A 1D 56 42 00) -> TRUE, 5 written",
                  "EndPagePrinter(printer) -> TRUE",
                  "EndDocPrinter(printer) -> TRUE",
              }));
    ASSERT_EQ(printer.Jobs().size(), 1u);
    EXPECT_EQ(printer.Jobs()[0].bytes.size(), 33u);
    // The plug-in ends what it has started, also when the spooler fails.
    printer.FailCall(4, ERROR_ACCESS_DENIED);
    Print();
    const Lines log = printer.Log();
    ASSERT_EQ(log.size(), 14u);
    EXPECT_EQ(log[11],
              "WritePrinter(printer, 12 bytes: 31 32 33 34 35 36 37 38 39 30 31 32) -> FALSE, error 5");
    EXPECT_EQ(log[12], "EndPagePrinter(printer) -> TRUE");
    EXPECT_EQ(log[13], "EndDocPrinter(printer) -> TRUE");
}

TEST_F(PluginPrinterTest, StandsInForAPluginThatIsLoaded) {
    Host();
    VirtualPrinter printer;
    Print();
    EXPECT_EQ(printer.Log(),
              Lines{"StartDocPrinterW(null, 1, \"Barcode\", output none, \"RAW\") -> FALSE, error 6"})
        << "the host gave no printer";
}

TEST_F(PluginPrinterTest, LeavesOtherModulesAndLaterCallsToTheSpooler) {
    {
        VirtualPrinter other(std::nullopt, L"KVMR73UI.dll");
        StartHostWith(other);
        Print();
        EXPECT_TRUE(other.Log().empty());
    }
    auto printer = std::make_unique<VirtualPrinter>();
    StartHostWith(*printer);
    SetLastError(kUntouched);
    EXPECT_FALSE(StartPagePrinter(nullptr) && EndDocPrinter(printer->handle())) << "this program's own calls";
    EXPECT_TRUE(printer->Log().empty());
    Print();
    EXPECT_EQ(printer->Jobs().size(), 1u);
    printer.reset();
    // Refused by the real spooler, which knows no such handle.
    Print();
    VirtualPrinter next;
    Print();
    EXPECT_EQ(next.Log().size(), 1u);
    EXPECT_TRUE(next.Jobs().empty());
}

}  // namespace
