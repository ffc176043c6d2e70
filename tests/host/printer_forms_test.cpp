// The server's side of the virtual printer: what it tells of a printer, the forms and every error of their
// functions, and several printers of one server.
#include <windows.h>

#include <winspool.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "rig/environment.h"
#include "utf8.h"
#include "virtual_printer.h"

namespace {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

constexpr DWORD kUntouched = 0x20001234;
constexpr DWORD kNoNumber = 4711;

// What a call gave, and the last error behind it.
struct Given {
    BOOL result;
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

Form Receipt(const wchar_t* name = L"Receipt") {
    return WholeSheet(name, 72000, 297000);
}

class PrinterFormsTest : public testing::Test {
  protected:
    void Open(const std::optional<std::filesystem::path>& forms = std::nullopt) {
        printer_.reset();
        printer_ = std::make_unique<VirtualPrinter>(std::nullopt, L"KVMR72UI.dll", forms);
        handle_ = printer_->handle();
    }

    template <typename Call>
    Given Do(Call call) {
        SetLastError(kUntouched);
        const BOOL result = call();
        return {result, GetLastError()};
    }
    Given Tell(void* buffer, DWORD size, DWORD level = 2) {
        needed_ = kNoNumber;
        return Do([&] { return printer_->Tell(handle_, level, buffer, size, &needed_); });
    }
    Given List(void* buffer, DWORD size, DWORD level = 1) {
        needed_ = kNoNumber;
        count_ = kNoNumber;
        return Do([&] { return printer_->ListForms(handle_, level, buffer, size, &needed_, &count_); });
    }
    Given Make(const Form& form, DWORD level = 1) {
        const FORM_INFO_1W info = Info(form);
        return Do([&] { return printer_->MakeForm(handle_, level, &info); });
    }
    Given Change(const wchar_t* name, const Form& form, DWORD level = 1) {
        const FORM_INFO_1W info = Info(form);
        return Do([&] { return printer_->ChangeForm(handle_, name, level, &info); });
    }
    Given Remove(const wchar_t* name) {
        return Do([&] { return printer_->RemoveForm(handle_, name); });
    }

    std::vector<Form> UserForms() const {
        const std::vector<Form> forms = printer_->Forms();
        return {forms.begin() + 6, forms.end()};
    }
    std::string LastLine() const { return printer_->Log().back(); }

    static FORM_INFO_1W Info(const Form& form) {
        return {.Flags = form.flags,
                .pName = const_cast<wchar_t*>(form.name.c_str()),
                .Size = form.size,
                .ImageableArea = form.area};
    }

    std::unique_ptr<VirtualPrinter> printer_;
    HANDLE handle_ = nullptr;
    DWORD needed_ = 0;
    DWORD count_ = 0;
};

// What it tells of a printer

// A structure of 136 bytes; ten texts with their ends.
constexpr DWORD kDescription = 136 + 2 * (8 + 1 + 7 + 8 + 1 + 1 + 1 + 9 + 4 + 1);

TEST_F(PrinterFormsTest, TellsOfThePrinter) {
    static_assert(sizeof(PRINTER_INFO_2W) == 136);
    Open();
    EXPECT_EQ(Tell(nullptr, 0), Failed(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(needed_, kDescription);
    std::vector<PRINTER_INFO_2W> room(3);
    const auto* const first = reinterpret_cast<const char*>(room.data());
    const Bytes untouched(sizeof(PRINTER_INFO_2W) * 3);
    EXPECT_EQ(Tell(room.data(), kDescription - 1), Failed(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(needed_, kDescription);
    EXPECT_EQ(Bytes(first, first + untouched.size()), untouched);
    EXPECT_EQ(Tell(room.data(), kDescription), kDone);
    EXPECT_EQ(needed_, kDescription);
    EXPECT_EQ(Bytes(first + kDescription, first + untouched.size()), Bytes(untouched.size() - kDescription));

    const PRINTER_INFO_2W& info = room.front();
    const struct {
        const wchar_t* text;
        const wchar_t* expected;
    } kTexts[] = {{info.pPrinterName, L"KVM-R72"},
                  {info.pShareName, L""},
                  {info.pPortName, L"USB001"},
                  {info.pDriverName, L"KVM-R72"},
                  {info.pComment, L""},
                  {info.pLocation, L""},
                  {info.pSepFile, L""},
                  {info.pPrintProcessor, L"winprint"},
                  {info.pDatatype, L"RAW"},
                  {info.pParameters, L""}};
    for (const auto& [text, expected] : kTexts) {
        EXPECT_STREQ(text, expected);
        const auto* const place = reinterpret_cast<const char*>(text);
        EXPECT_GE(place, first + sizeof info);
        EXPECT_LT(place, first + kDescription);
    }
    EXPECT_EQ(info.pServerName, nullptr);
    EXPECT_EQ(info.pDevMode, nullptr);
    EXPECT_EQ(info.pSecurityDescriptor, nullptr);
    EXPECT_EQ(info.Attributes, 0x40u);
    EXPECT_EQ(info.Status, 0u);
    EXPECT_EQ(info.cJobs, 0u);
    EXPECT_EQ(printer_->Log(),
              (Lines{"GetPrinterW(printer, 2, null of 0 bytes) -> FALSE, error 122, 218 bytes needed",
                     "GetPrinterW(printer, 2, buffer of 217 bytes) -> FALSE, error 122, 218 bytes needed",
                     "GetPrinterW(printer, 2, buffer of 218 bytes) -> TRUE, \"KVM-R72\" on \"USB001\""}));
}

TEST_F(PrinterFormsTest, TellsWhatATestSays) {
    Open();
    printer_->Describe(handle_, {.name = L"\u4E2D", .port = L"COM1:", .driver = L""});
    std::vector<PRINTER_INFO_2W> room(3);
    EXPECT_EQ(Tell(room.data(), static_cast<DWORD>(3 * sizeof(PRINTER_INFO_2W))), kDone);
    EXPECT_STREQ(room.front().pPrinterName, L"\u4E2D");
    EXPECT_STREQ(room.front().pPortName, L"COM1:");
    EXPECT_STREQ(room.front().pDriverName, L"");
    EXPECT_THROW(printer_->Describe(nullptr, {}), std::invalid_argument);
}

TEST_F(PrinterFormsTest, TellsAtOneLevelOnly) {
    Open();
    std::vector<PRINTER_INFO_2W> room(3);
    for (const DWORD level : {0u, 1u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Tell(room.data(), sizeof(PRINTER_INFO_2W) * 3, level), Failed(ERROR_INVALID_LEVEL));
        EXPECT_EQ(needed_, kNoNumber);
    }
    EXPECT_EQ(LastLine(), "GetPrinterW(printer, 4294967295, buffer of 408 bytes) -> FALSE, error 124");
    EXPECT_EQ(Do([&] { return printer_->Tell(handle_, 2, room.data(), 408, nullptr); }),
              Failed(RPC_X_NULL_REF_POINTER));
    EXPECT_EQ(Tell(nullptr, 408), Failed(ERROR_INVALID_USER_BUFFER));
    EXPECT_EQ(room.front().pPrinterName, nullptr);
}

// Lists of forms

TEST_F(PrinterFormsTest, ListsTheForms) {
    Open();
    printer_->SetForms({WholeSheet(L"A4", 210000, 297000, FORM_BUILTIN), Receipt(L"\u4E2D")});
    constexpr DWORD kSize = 2 * 40 + 6 + 4;
    EXPECT_EQ(List(nullptr, 0), Failed(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(needed_, kSize);
    EXPECT_EQ(count_, 0u);
    FORM_INFO_1W room[3] = {};
    EXPECT_EQ(List(room, kSize - 1), Failed(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(needed_, kSize);
    EXPECT_EQ(count_, 0u);
    EXPECT_EQ(room[0].pName, nullptr);
    EXPECT_EQ(List(room, kSize), kDone);
    EXPECT_EQ(needed_, kSize);
    EXPECT_EQ(count_, 2u);
    EXPECT_STREQ(room[0].pName, L"A4");
    EXPECT_EQ(room[0].Flags, 1u);
    EXPECT_STREQ(room[1].pName, L"\u4E2D");
    EXPECT_EQ(room[1].Flags, 0u);
    EXPECT_EQ(room[1].Size.cx, 72000);
    EXPECT_EQ(room[1].ImageableArea.bottom, 297000);
    EXPECT_EQ(printer_->Log(),
              (Lines{"EnumFormsW(printer, 1, null of 0 bytes) -> FALSE, error 122, 90 bytes needed",
                     "EnumFormsW(printer, 1, buffer of 89 bytes) -> FALSE, error 122, 90 bytes needed",
                     "EnumFormsW(printer, 1, buffer of 90 bytes) -> TRUE, 2 forms"}));
    printer_->SetForms({});
    EXPECT_EQ(List(nullptr, 0), kDone);
    EXPECT_EQ(needed_, 0u);
    EXPECT_EQ(count_, 0u);
}

TEST_F(PrinterFormsTest, ListsAtOneLevelOnly) {
    Open();
    FORM_INFO_1W room[20] = {};
    for (const DWORD level : {0u, 2u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(List(room, sizeof room, level), Failed(ERROR_INVALID_LEVEL));
        EXPECT_EQ(needed_, kNoNumber);
        EXPECT_EQ(count_, kNoNumber);
    }
    DWORD number = kNoNumber;
    EXPECT_EQ(Do([&] { return printer_->ListForms(handle_, 1, nullptr, 0, nullptr, &number); }),
              Failed(RPC_X_NULL_REF_POINTER));
    EXPECT_EQ(Do([&] { return printer_->ListForms(handle_, 1, nullptr, 0, &number, nullptr); }),
              Failed(RPC_X_NULL_REF_POINTER));
    EXPECT_EQ(number, kNoNumber);
    EXPECT_EQ(List(nullptr, sizeof room), Failed(ERROR_INVALID_USER_BUFFER));
    EXPECT_EQ(count_, 0u);
}

// Changes

TEST_F(PrinterFormsTest, KeepsFormsAndEveryCall) {
    Open();
    const Form part = {.name = L"\u4E2D", .size = {10, 20}, .area = {1, 2, 9, 19}};
    EXPECT_EQ(Make(Receipt()), kDone);
    EXPECT_EQ(Make(part), kDone);
    EXPECT_EQ(UserForms(), (std::vector<Form>{Receipt(), part}));
    EXPECT_EQ(Change(L"Receipt", WholeSheet(L"Receipt", 5, 6)), kDone);
    EXPECT_EQ(UserForms(), (std::vector<Form>{WholeSheet(L"Receipt", 5, 6), part}));
    EXPECT_EQ(Remove(L"Receipt"), kDone);
    EXPECT_EQ(UserForms(), std::vector<Form>{part});
    EXPECT_EQ(printer_->Log(),
              (Lines{
                  "AddFormW(printer, 1, \"Receipt\", flags 0, 72000 x 297000, area 0 0 72000 297000) -> TRUE",
                  "AddFormW(printer, 1, \"\xE4\xB8\xAD\", flags 0, 10 x 20, area 1 2 9 19) -> TRUE",
                  "SetFormW(printer, \"Receipt\", 1, \"Receipt\", flags 0, 5 x 6, area 0 0 5 6) -> TRUE",
                  "DeleteFormW(printer, \"Receipt\") -> TRUE",
              }));
}

TEST_F(PrinterFormsTest, RefusesWhatTheListRefuses) {
    Open();
    ASSERT_EQ(Make(Receipt()), kDone);
    EXPECT_EQ(Make(Receipt()), Failed(ERROR_FILE_EXISTS));
    EXPECT_EQ(LastLine(),
              "AddFormW(printer, 1, \"Receipt\", flags 0, 72000 x 297000, area 0 0 72000 297000) -> FALSE, "
              "error 80");
    EXPECT_EQ(Make(WholeSheet(L"X", -1, 1)), Failed(ERROR_INVALID_FORM_SIZE));
    EXPECT_EQ(LastLine(), "AddFormW(printer, 1, \"X\", flags 0, -1 x 1, area 0 0 -1 1) -> FALSE, error 1903");
    EXPECT_EQ(Make(WholeSheet(L"X", 1, 1, FORM_BUILTIN)), Failed(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Change(L"X", Receipt(L"X")), Failed(ERROR_INVALID_FORM_NAME));
    EXPECT_EQ(Change(L"A4", Receipt(L"A4")), Failed(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Remove(L"X"), Failed(ERROR_INVALID_FORM_NAME));
    EXPECT_EQ(LastLine(), "DeleteFormW(printer, \"X\") -> FALSE, error 1902");
    EXPECT_EQ(Remove(L"A4"), Failed(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(UserForms(), std::vector<Form>{Receipt()});
    EXPECT_EQ(printer_->Forms().size(), 7u);
}

TEST_F(PrinterFormsTest, RefusesWrongArguments) {
    Open();
    ASSERT_EQ(Make(Receipt()), kDone);
    for (const DWORD level : {0u, 2u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Make(Receipt(L"X"), level), Failed(ERROR_INVALID_LEVEL));
        EXPECT_EQ(Change(L"Receipt", WholeSheet(L"Receipt", 1, 1), level), Failed(ERROR_INVALID_LEVEL));
    }
    EXPECT_EQ(LastLine(), "SetFormW(printer, \"Receipt\", 4294967295, unknown) -> FALSE, error 124");
    EXPECT_EQ(Do([&] { return printer_->MakeForm(handle_, 1, nullptr); }), Failed(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(LastLine(), "AddFormW(printer, 1, null) -> FALSE, error 87");
    EXPECT_EQ(Do([&] { return printer_->ChangeForm(handle_, L"Receipt", 1, nullptr); }),
              Failed(ERROR_INVALID_PARAMETER));
    FORM_INFO_1W nameless = Info(Receipt());
    nameless.pName = nullptr;
    EXPECT_EQ(Do([&] { return printer_->MakeForm(handle_, 1, &nameless); }), Failed(ERROR_INVALID_FORM_NAME));
    EXPECT_EQ(LastLine(),
              "AddFormW(printer, 1, none, flags 0, 72000 x 297000, area 0 0 72000 297000) -> FALSE, "
              "error 1902");
    EXPECT_EQ(Do([&] { return printer_->ChangeForm(handle_, L"Receipt", 1, &nameless); }),
              Failed(ERROR_INVALID_FORM_NAME));
    EXPECT_EQ(Change(nullptr, Receipt()), Failed(ERROR_INVALID_FORM_NAME));
    EXPECT_EQ(Remove(nullptr), Failed(ERROR_INVALID_FORM_NAME));
    EXPECT_EQ(LastLine(), "DeleteFormW(printer, none) -> FALSE, error 1902");
    EXPECT_EQ(UserForms(), std::vector<Form>{Receipt()});
}

TEST_F(PrinterFormsTest, RefusesHandlesThatAreNotItsOwn) {
    Open();
    ASSERT_EQ(Make(Receipt()), kDone);
    std::vector<PRINTER_INFO_2W> room(10);
    const auto size = static_cast<DWORD>(room.size() * sizeof(PRINTER_INFO_2W));
    const auto expect_refused = [&] {
        EXPECT_EQ(Tell(room.data(), size), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(List(room.data(), size), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(needed_, kNoNumber);
        EXPECT_EQ(count_, kNoNumber);
        EXPECT_EQ(Make(Receipt(L"X")), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Change(L"Receipt", WholeSheet(L"Receipt", 1, 1)), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Remove(L"Receipt"), Failed(ERROR_INVALID_HANDLE));
        EXPECT_EQ(UserForms(), std::vector<Form>{Receipt()});
    };
    const HANDLE own = handle_;
    for (const HANDLE foreign :
         {HANDLE{nullptr}, INVALID_HANDLE_VALUE, static_cast<HANDLE>(printer_.get())}) {
        handle_ = foreign;
        expect_refused();
    }
    handle_ = own;
    ASSERT_TRUE(printer_->Close(own));
    expect_refused();
    EXPECT_EQ(LastLine(), "DeleteFormW(printer, \"Receipt\") -> FALSE, error 6");
}

// Failures on demand

TEST_F(PrinterFormsTest, ChangesNeedTheRight) {
    Open();
    ASSERT_EQ(Make(Receipt()), kDone);
    printer_->AllowFormChanges(false);
    EXPECT_EQ(Make(Receipt(L"X")), Failed(ERROR_ACCESS_DENIED));
    EXPECT_EQ(Change(L"Receipt", WholeSheet(L"Receipt", 1, 1)), Failed(ERROR_ACCESS_DENIED));
    EXPECT_EQ(Remove(L"Receipt"), Failed(ERROR_ACCESS_DENIED));
    // Who may not change forms does not learn which there are.
    EXPECT_EQ(Remove(L"X"), Failed(ERROR_ACCESS_DENIED));
    EXPECT_EQ(LastLine(), "DeleteFormW(printer, \"X\") -> FALSE, error 5");
    EXPECT_EQ(UserForms(), std::vector<Form>{Receipt()});
    FORM_INFO_1W room[20];
    EXPECT_EQ(List(room, sizeof room), kDone);
    EXPECT_EQ(count_, 7u);
    printer_->AllowFormChanges(true);
    EXPECT_EQ(Remove(L"Receipt"), kDone);
}

TEST_F(PrinterFormsTest, FailsTheCallThatATestNames) {
    FORM_INFO_1W room[20];
    std::vector<PRINTER_INFO_2W> description(3);
    const std::function<Given()> kCalls[] = {
        [&] { return Tell(description.data(), sizeof(PRINTER_INFO_2W) * 3); },
        [&] { return List(room, sizeof room); },
        [&] { return Make(Receipt()); },
        [&] { return Change(L"Receipt", WholeSheet(L"Receipt", 1, 1)); },
        [&] { return Remove(L"Receipt"); },
    };
    for (int failing = 0; failing < 5; ++failing) {
        SCOPED_TRACE(failing);
        Open();
        printer_->FailCall(failing + 1, RPC_S_SERVER_UNAVAILABLE);
        std::vector<Given> given;
        for (const auto& call : kCalls) {
            given.push_back(call());
        }
        std::vector<Given> expected(5, kDone);
        expected[static_cast<std::size_t>(failing)] = Failed(1722);
        if (failing == 2) {
            expected[3] = expected[4] = Failed(ERROR_INVALID_FORM_NAME);
        }
        EXPECT_EQ(given, expected);
        EXPECT_EQ(UserForms().size(), failing == 4 ? 1u : 0u);
        EXPECT_THAT(printer_->Log().at(static_cast<std::size_t>(failing)),
                    testing::EndsWith(") -> FALSE, error 1722"));
    }
}

TEST_F(PrinterFormsTest, LetsOthersChangeTheFormsBetweenCalls) {
    Open();
    printer_->SetForms({Receipt(L"A")});
    Lines called;
    printer_->before_call = [&](const char* function) {
        called.push_back(function);
        SetLastError(ERROR_GEN_FAILURE);
        if (called.size() == 2) {
            printer_->SetForms({Receipt(L"A"), Receipt(L"BC")});
        }
    };
    FORM_INFO_1W room[3];
    EXPECT_EQ(List(room, 0), Failed(ERROR_INSUFFICIENT_BUFFER));
    ASSERT_EQ(needed_, 44u);
    EXPECT_EQ(List(room, 44), Failed(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(needed_, 90u);
    EXPECT_EQ(List(room, 90), kDone) << "the last error is the call's own";
    EXPECT_EQ(count_, 2u);
    const DOC_INFO_1W document = {};
    printer_->StartDocument(handle_, 1, &document);
    printer_->Close(nullptr);
    EXPECT_EQ(called, (Lines{"EnumFormsW", "EnumFormsW", "EnumFormsW", "StartDocPrinterW", "ClosePrinter"}));
}

// Whoever looks on

TEST_F(PrinterFormsTest, TellsOfEachChange) {
    Open();
    std::vector<std::pair<FormChange, Form>> told;
    printer_->on_form = [&](FormChange change, const Form& form) {
        told.emplace_back(change, form);
        SetLastError(ERROR_GEN_FAILURE);
    };
    EXPECT_EQ(Make(Receipt()), kDone);
    EXPECT_EQ(Change(L"Receipt", WholeSheet(L"Receipt", 5, 6)), kDone);
    EXPECT_EQ(Remove(L"Receipt"), kDone);
    Make(WholeSheet(L"X", 0, 0));
    Change(L"X", Receipt(L"X"));
    Remove(L"X");
    FORM_INFO_1W room[20];
    List(room, sizeof room);
    EXPECT_EQ(told, (std::vector<std::pair<FormChange, Form>>{
                        {FormChange::kAdded, Receipt()},
                        {FormChange::kChanged, WholeSheet(L"Receipt", 5, 6)},
                        {FormChange::kDeleted, {.name = L"Receipt"}},
                    }));
}

// Forms that last

TEST_F(PrinterFormsTest, KeepsFormsInAFile) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / L"kvmr72 kept forms.txt";
    std::error_code error;
    std::filesystem::remove_all(file, error);
    Open(file);
    EXPECT_EQ(Make(Receipt()), kDone);
    Open(file);
    EXPECT_EQ(UserForms(), std::vector<Form>{Receipt()});
    EXPECT_EQ(Change(L"Receipt", WholeSheet(L"Receipt", 5, 6)), kDone);
    Open(file);
    EXPECT_EQ(UserForms(), std::vector<Form>{WholeSheet(L"Receipt", 5, 6)});

    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(Remove(L"Receipt"), Failed(ERROR_WRITE_FAULT));
    EXPECT_EQ(LastLine(),
              "DeleteFormW(printer, \"Receipt\") -> FALSE, error 29, cannot write " + ToUtf8(file.native()));
    EXPECT_EQ(UserForms().size(), 1u);
    std::filesystem::remove(file);
    EXPECT_EQ(Remove(L"Receipt"), kDone);
    Open(file);
    EXPECT_TRUE(UserForms().empty());
    printer_.reset();

    rig::WriteBytes(file, Bytes{'x', '\n'});
    EXPECT_THROW(Open(file), std::runtime_error);
    // What failed does not stand in the way.
    Open();
    EXPECT_EQ(Make(Receipt()), kDone);
    std::filesystem::remove(file);
}

// Several printers of a server

TEST_F(PrinterFormsTest, HasFurtherPrinters) {
    Open();
    const HANDLE first = handle_;
    const HANDLE second = printer_->NewPrinter({.name = L"Kitchen", .port = L"LPT1:", .driver = L"KVM-R72"});
    EXPECT_NE(second, first);
    EXPECT_EQ(printer_->handle(), first);
    // Each has jobs of its own, numbered by the server.
    const DOC_INFO_1W documents[] = {{const_cast<wchar_t*>(L"One"), nullptr, nullptr},
                                     {const_cast<wchar_t*>(L"Two"), nullptr, nullptr}};
    EXPECT_EQ(printer_->StartDocument(first, 1, &documents[0]), 1u);
    EXPECT_EQ(printer_->StartDocument(second, 1, &documents[1]), 2u);
    DWORD written = 0;
    for (const HANDLE handle : {second, first}) {
        EXPECT_TRUE(printer_->StartPage(handle));
        EXPECT_TRUE(printer_->Write(handle, handle == first ? "1" : "2", 1, &written));
        EXPECT_TRUE(printer_->EndPage(handle));
    }
    EXPECT_TRUE(printer_->EndDocument(second));
    EXPECT_TRUE(printer_->EndDocument(first));
    ASSERT_EQ(printer_->Jobs().size(), 2u);
    EXPECT_EQ(printer_->Jobs()[0].document, L"Two");
    EXPECT_EQ(printer_->Jobs()[0].number, 2u);
    EXPECT_EQ(printer_->Jobs()[0].bytes, Bytes{'2'});
    EXPECT_EQ(printer_->Jobs()[1].document, L"One");
    EXPECT_EQ(printer_->Jobs()[1].bytes, Bytes{'1'});
    EXPECT_EQ(printer_->Log().at(1), "StartDocPrinterW(printer 2, 1, \"Two\", output none, none) -> 2");

    // The forms are the server's.
    EXPECT_EQ(Make(Receipt()), kDone);
    handle_ = second;
    EXPECT_EQ(Change(L"Receipt", WholeSheet(L"Receipt", 5, 6)), kDone);
    EXPECT_THAT(LastLine(), testing::StartsWith("SetFormW(printer 2, \"Receipt\", "));
    EXPECT_EQ(UserForms(), std::vector<Form>{WholeSheet(L"Receipt", 5, 6)});
    std::vector<PRINTER_INFO_2W> room(3);
    EXPECT_EQ(Tell(room.data(), sizeof(PRINTER_INFO_2W) * 3), kDone);
    EXPECT_STREQ(room.front().pPrinterName, L"Kitchen");
    EXPECT_STREQ(room.front().pPortName, L"LPT1:");

    // One that is closed leaves the other open.
    EXPECT_EQ(printer_->StartDocument(second, 1, &documents[1]), 3u);
    EXPECT_TRUE(printer_->Close(second));
    EXPECT_EQ(LastLine(), "job 3 was given up");
    EXPECT_EQ(Tell(room.data(), sizeof(PRINTER_INFO_2W) * 3), Failed(ERROR_INVALID_HANDLE));
    handle_ = first;
    EXPECT_EQ(Tell(room.data(), sizeof(PRINTER_INFO_2W) * 3), kDone);
}

TEST_F(PrinterFormsTest, GivesUpTheJobsOfAllPrintersAtItsEnd) {
    Open();
    int given_up = 0;
    printer_->on_job = [&](const PrintJob& job) { given_up += job.printed ? 0 : 1; };
    const DOC_INFO_1W document = {};
    printer_->StartDocument(handle_, 1, &document);
    printer_->StartDocument(printer_->NewPrinter({}), 1, &document);
    printer_.reset();
    EXPECT_EQ(given_up, 2);
}

}  // namespace
