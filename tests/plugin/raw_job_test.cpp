// Raw jobs call by call: what reaches the spooler, and what is still called when one of the calls fails. The
// plug-in's own source is part of this program.
#include "printer/raw_job.h"

#include <windows.h>

#include <winspool.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "rig/replaced.h"

// Where this program's import table keeps the spooler's functions.
extern "C" {
extern decltype(&EndDocPrinter) __imp_EndDocPrinter;
extern decltype(&EndPagePrinter) __imp_EndPagePrinter;
extern decltype(&StartDocPrinterW) __imp_StartDocPrinterW;
extern decltype(&StartPagePrinter) __imp_StartPagePrinter;
extern decltype(&WritePrinter) __imp_WritePrinter;
}

namespace {

using rig::Replaced;

using Pieces = std::vector<std::vector<std::uint8_t>>;
using Calls = std::vector<std::wstring>;

const HANDLE kPrinter = reinterpret_cast<HANDLE>(std::uintptr_t{0x1234567890});

constexpr int kNever = -1;

// The spooler that the job talks to.
struct Spooler {
    Calls calls;
    int failing = kNever;  // the call that fails, counted from 0
    DWORD firstJob = 1;    // what a started document gives
    BOOL success = TRUE;   // what the others give
    // What each write says that it took; all of its bytes where the list ends.
    std::vector<DWORD> taken;
    std::size_t writes = 0;
};
Spooler spooler;

bool Fails() {
    const bool fails = static_cast<int>(spooler.calls.size()) - 1 == spooler.failing;
    SetLastError(fails ? ERROR_ACCESS_DENIED : ERROR_SUCCESS);
    return fails;
}

std::wstring Named(const wchar_t* function, HANDLE printer) {
    return function + std::wstring(printer == kPrinter ? L"(printer" : L"(another handle");
}

std::wstring Quoted(const wchar_t* text) {
    return text == nullptr ? L"null" : L'"' + std::wstring(text) + L'"';
}

DWORD WINAPI StartDocument(HANDLE printer, DWORD level, LPBYTE information) {
    const auto& document = *reinterpret_cast<const DOC_INFO_1W*>(information);
    spooler.calls.push_back(Named(L"StartDocPrinterW", printer) + L", " + std::to_wstring(level) + L", {" +
                            Quoted(document.pDocName) + L", " + Quoted(document.pOutputFile) + L", " +
                            Quoted(document.pDatatype) + L"})");
    return Fails() ? 0 : spooler.firstJob;
}

BOOL WINAPI StartPage(HANDLE printer) {
    spooler.calls.push_back(Named(L"StartPagePrinter", printer) + L")");
    return Fails() ? FALSE : spooler.success;
}

BOOL WINAPI Write(HANDLE printer, LPVOID bytes, DWORD count, LPDWORD written) {
    std::wstring call = Named(L"WritePrinter", printer) + L", " + std::to_wstring(count) + L":";
    for (DWORD i = 0; i < std::min<DWORD>(count, 8); ++i) {
        call += L' ' + std::to_wstring(static_cast<const std::uint8_t*>(bytes)[i]);
    }
    call += bytes == nullptr ? L", null bytes" : L"";
    call += written == nullptr ? L", null count" : L"";
    spooler.calls.push_back(call + L")");
    const std::size_t index = spooler.writes++;
    if (written != nullptr) {
        *written = index < spooler.taken.size() ? spooler.taken[index] : count;
    }
    return Fails() ? FALSE : spooler.success;
}

BOOL WINAPI EndPage(HANDLE printer) {
    spooler.calls.push_back(Named(L"EndPagePrinter", printer) + L")");
    return Fails() ? FALSE : spooler.success;
}

BOOL WINAPI EndDocument(HANDLE printer) {
    spooler.calls.push_back(Named(L"EndDocPrinter", printer) + L")");
    return Fails() ? FALSE : spooler.success;
}

const std::wstring kStartDocument = L"StartDocPrinterW(printer, 1, {\"LOGO\", null, \"RAW\"})";
const std::wstring kStartPage = L"StartPagePrinter(printer)";
const std::wstring kFirst = L"WritePrinter(printer, 3: 29 107 0)";
const std::wstring kSecond = L"WritePrinter(printer, 1: 255)";
const std::wstring kThird = L"WritePrinter(printer, 2: 0 10)";
const std::wstring kEndPage = L"EndPagePrinter(printer)";
const std::wstring kEndDocument = L"EndDocPrinter(printer)";

class RawJobTest : public testing::Test {
  protected:
    void SetUp() override { spooler = {}; }

    // The job of a call that fails, and what the spooler said that it took.
    void ExpectFailure(int failing, const Calls& expected, std::uint64_t taken) {
        spooler = {};
        spooler.failing = failing;
        std::uint64_t written = 999;
        EXPECT_FALSE(SendRawJob(kPrinter, L"LOGO", kPieces, &written)) << failing;
        EXPECT_EQ(spooler.calls, expected) << failing;
        EXPECT_EQ(written, taken) << failing;
        // Without a count there is nothing else.
        spooler = {};
        spooler.failing = failing;
        EXPECT_FALSE(SendRawJob(kPrinter, L"LOGO", kPieces)) << failing;
        EXPECT_EQ(spooler.calls, expected) << failing;
    }

    const Pieces kPieces = {{0x1D, 0x6B, 0x00}, {0xFF}, {0x00, 0x0A}};

  private:
    const Replaced<decltype(StartDocPrinterW)> startDocument_{__imp_StartDocPrinterW, StartDocument};
    const Replaced<decltype(StartPagePrinter)> startPage_{__imp_StartPagePrinter, StartPage};
    const Replaced<decltype(WritePrinter)> write_{__imp_WritePrinter, Write};
    const Replaced<decltype(EndPagePrinter)> endPage_{__imp_EndPagePrinter, EndPage};
    const Replaced<decltype(EndDocPrinter)> endDocument_{__imp_EndDocPrinter, EndDocument};
};

TEST_F(RawJobTest, EachPieceIsOneWrite) {
    EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", kPieces));
    EXPECT_EQ(spooler.calls,
              (Calls{kStartDocument, kStartPage, kFirst, kSecond, kThird, kEndPage, kEndDocument}));
}

TEST_F(RawJobTest, AJobWithoutPiecesIsAnEmptyPage) {
    std::uint64_t written = 999;
    EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", {}, &written));
    EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage, kEndPage, kEndDocument}));
    EXPECT_EQ(written, 0u);
}

// An empty file, or no data between a barcode's command and its end. The spooler takes no null pointer.
TEST_F(RawJobTest, AnEmptyPieceIsAWriteOfNoBytes) {
    EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", Pieces{{}, {0xFF}, {}}));
    EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage, L"WritePrinter(printer, 0:)", kSecond,
                                    L"WritePrinter(printer, 0:)", kEndPage, kEndDocument}));
}

// 16 MB and a byte, as a whole.
TEST_F(RawJobTest, ALongPieceIsNotDivided) {
    const Pieces pieces(1, std::vector<std::uint8_t>(0x1000001, 0x55));
    std::uint64_t written = 0;
    EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", pieces, &written));
    EXPECT_EQ(spooler.calls,
              (Calls{kStartDocument, kStartPage, L"WritePrinter(printer, 16777217: 85 85 85 85 85 85 85 85)",
                     kEndPage, kEndDocument}));
    EXPECT_EQ(written, 16777217u);
}

TEST_F(RawJobTest, NamesOfTheJobs) {
    const struct {
        const wchar_t* name;
        std::wstring shown;
    } jobs[] = {
        {kBarcodeJob, L"\"Barcode\""},   {kBarcode2DJob, L"\"2Dcode\""}, {kSelfTestJob, L"\"SELFTEST\""},
        {kFirmwareJob, L"\"FIRMWARE\""}, {kLogoJob, L"\"LOGO\""},
    };
    for (const auto& job : jobs) {
        spooler = {};
        EXPECT_TRUE(SendRawJob(kPrinter, job.name, Pieces{{0xFF}}));
        EXPECT_EQ(spooler.calls, (Calls{L"StartDocPrinterW(printer, 1, {" + job.shown + L", null, \"RAW\"})",
                                        kStartPage, kSecond, kEndPage, kEndDocument}));
    }
}

// A printer that is paused for raw jobs, or no right to print.
TEST_F(RawJobTest, NothingFollowsADocumentThatDoesNotStart) {
    ExpectFailure(0, {kStartDocument}, 0);
}

TEST_F(RawJobTest, APageThatDoesNotStartIsNotEnded) {
    ExpectFailure(1, {kStartDocument, kStartPage, kEndDocument}, 0);
}

// The pieces before the failing one stay in the job.
TEST_F(RawJobTest, AFailedWriteIsTheLast) {
    ExpectFailure(2, {kStartDocument, kStartPage, kFirst, kEndPage, kEndDocument}, 0);
    ExpectFailure(3, {kStartDocument, kStartPage, kFirst, kSecond, kEndPage, kEndDocument}, 3);
    ExpectFailure(4, {kStartDocument, kStartPage, kFirst, kSecond, kThird, kEndPage, kEndDocument}, 4);
}

TEST_F(RawJobTest, ADocumentEndsAlsoWhenItsPageDoesNot) {
    ExpectFailure(5, {kStartDocument, kStartPage, kFirst, kSecond, kThird, kEndPage, kEndDocument}, 6);
}

TEST_F(RawJobTest, ADocumentThatDoesNotEndHasFailed) {
    ExpectFailure(6, {kStartDocument, kStartPage, kFirst, kSecond, kThird, kEndPage, kEndDocument}, 6);
}

// Whoever needs every byte to be taken compares the count: the job itself has succeeded.
TEST_F(RawJobTest, FewerBytesThanGivenAreNoFailure) {
    spooler.taken = {2, 0, 1};
    std::uint64_t written = 999;
    EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", kPieces, &written));
    EXPECT_EQ(written, 3u);
    EXPECT_EQ(spooler.calls,
              (Calls{kStartDocument, kStartPage, kFirst, kSecond, kThird, kEndPage, kEndDocument}));
    spooler = {};
    spooler.taken = {0, 0, 0};
    EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", kPieces, &written));
    EXPECT_EQ(written, 0u);
}

TEST_F(RawJobTest, CountsAddUpBeyond32Bits) {
    spooler.taken = {0xFFFFFFFF, 0xFFFFFFFF, 2};
    std::uint64_t written = 0;
    EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", kPieces, &written));
    EXPECT_EQ(written, 0x200000000u);
}

TEST_F(RawJobTest, AnythingButZeroIsSuccess) {
    for (const int success : {2, -1, 0x10000}) {
        spooler = {};
        spooler.firstJob = 0xFFFFFFFF;
        spooler.success = success;
        EXPECT_TRUE(SendRawJob(kPrinter, L"LOGO", kPieces)) << success;
        EXPECT_EQ(spooler.calls.size(), 7u) << success;
    }
}

// Jobs that are written as they go

TEST_F(RawJobTest, AJobStartsWithItsObjectAndEndsWithIt) {
    {
        RawJob job(kPrinter, L"LOGO");
        EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage}));
        EXPECT_TRUE(job.Write(kPieces[0]));
        EXPECT_TRUE(job.Write(kPieces[1]));
        EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage, kFirst, kSecond}));
        EXPECT_EQ(job.Written(), 4u);
    }
    EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage, kFirst, kSecond, kEndPage, kEndDocument}));
}

TEST_F(RawJobTest, AJobEndsOnce) {
    const Calls whole = {kStartDocument, kStartPage, kFirst, kEndPage, kEndDocument};
    {
        RawJob job(kPrinter, L"LOGO");
        EXPECT_TRUE(job.Write(kPieces[0]));
        EXPECT_TRUE(job.End());
        EXPECT_TRUE(job.End()) << "what became of it stays";
        EXPECT_FALSE(job.Write(kPieces[1])) << "it is at its end";
        EXPECT_EQ(job.Written(), 3u);
        EXPECT_TRUE(job.End());
        EXPECT_EQ(spooler.calls, whole);
    }
    EXPECT_EQ(spooler.calls, whole);
}

TEST_F(RawJobTest, AnAbandonedJobIsNotEnded) {
    {
        RawJob job(kPrinter, L"LOGO");
        EXPECT_TRUE(job.Write(kPieces[0]));
        job.Abandon();
        EXPECT_FALSE(job.Write(kPieces[1]));
        EXPECT_FALSE(job.End());
        job.Abandon();
        EXPECT_EQ(job.Written(), 3u);
    }
    EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage, kFirst}));
}

TEST_F(RawJobTest, AbandoningAJobThatEndedChangesNothing) {
    {
        RawJob job(kPrinter, L"LOGO");
        EXPECT_TRUE(job.End());
        job.Abandon();
        EXPECT_FALSE(job.End());
    }
    EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage, kEndPage, kEndDocument}));
}

// Whichever call fails, the others that belong to it follow at once, and none later.
TEST_F(RawJobTest, AJobThatFailedIsAtItsEnd) {
    const struct {
        int failing;
        std::uint64_t written;
        Calls calls;
    } cases[] = {
        {0, 0, {kStartDocument}},
        {1, 0, {kStartDocument, kStartPage, kEndDocument}},
        {2, 0, {kStartDocument, kStartPage, kFirst, kEndPage, kEndDocument}},
        {3, 3, {kStartDocument, kStartPage, kFirst, kSecond, kEndPage, kEndDocument}},
    };
    for (const auto& [failing, written, calls] : cases) {
        SCOPED_TRACE(failing);
        spooler = {};
        spooler.failing = failing;
        {
            RawJob job(kPrinter, L"LOGO");
            EXPECT_EQ(job.Write(kPieces[0]), failing > 2);
            EXPECT_FALSE(job.Write(kPieces[1]));
            EXPECT_EQ(spooler.calls, calls);
            EXPECT_FALSE(job.Write(kPieces[2]));
            EXPECT_FALSE(job.End());
            job.Abandon();
            EXPECT_FALSE(job.End());
            EXPECT_EQ(job.Written(), written);
        }
        EXPECT_EQ(spooler.calls, calls);
    }
}

TEST_F(RawJobTest, AnEndThatFailsHasFailedForGood) {
    for (const int failing : {3, 4}) {
        SCOPED_TRACE(failing);
        spooler = {};
        spooler.failing = failing;
        RawJob job(kPrinter, L"LOGO");
        EXPECT_TRUE(job.Write(kPieces[0]));
        EXPECT_FALSE(job.End());
        EXPECT_FALSE(job.End());
        EXPECT_EQ(spooler.calls, (Calls{kStartDocument, kStartPage, kFirst, kEndPage, kEndDocument}));
    }
}

// The system's own spooler refuses what is no printer.
TEST(RawJobSpoolerTest, HandlesThatAreNoPrinter) {
    const HANDLE handles[] = {nullptr, INVALID_HANDLE_VALUE,
                              reinterpret_cast<HANDLE>(std::uintptr_t{0x7777})};
    for (const HANDLE handle : handles) {
        std::uint64_t written = 999;
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(SendRawJob(handle, kBarcodeJob, Pieces{{0x0A}}, &written)) << handle;
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE}) << handle;
        EXPECT_EQ(written, 0u) << handle;
    }
}

}  // namespace
