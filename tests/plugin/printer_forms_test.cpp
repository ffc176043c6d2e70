// The forms of a print server call by call: what reaches it, and what is made of its answers, also of those
// that no server should give. The plug-in's own source is part of this program, and the server is this
// file's.
#include "devpages/printer_forms.h"

#include <windows.h>

#include <winspool.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::wstring>;
using Names = std::vector<std::wstring>;

const HANDLE kPrinter = reinterpret_cast<HANDLE>(std::uintptr_t{0x1234567890});

constexpr std::size_t kFormSize = 40;
static_assert(sizeof(FORM_INFO_1W) == kFormSize);

constexpr DWORD kLargestList = 64 * 1024 * 1024;

struct ServerForm {
    std::wstring name;
    LONG width;
    LONG height;
};

struct Server {
    Calls calls;
    std::vector<ServerForm> forms;
    BOOL success = TRUE;  // what a call that does not fail gives
    bool fails = false;
    // Runs before the list is asked for; the number of the call, from 1.
    std::function<void(int)> before_list;
    int lists = 0;
    // In place of what is true.
    std::optional<DWORD> needed;
    std::optional<DWORD> count;
    std::optional<const wchar_t*> names;  // where they are said to lie; otherwise behind the structures
    bool names_end_the_list = false;      // the last one has no terminator
};
Server server;

std::wstring Named(const wchar_t* function, HANDLE printer) {
    return function + std::wstring(printer == kPrinter ? L"(printer" : L"(another handle");
}

std::wstring Shown(DWORD level, const BYTE* information) {
    const auto& form = *reinterpret_cast<const FORM_INFO_1W*>(information);
    const RECTL& area = form.ImageableArea;
    std::wstring text = std::to_wstring(level) + L", {" + std::to_wstring(form.Flags) + L", \"" + form.pName +
                        L"\", " + std::to_wstring(form.Size.cx) + L" x " + std::to_wstring(form.Size.cy) +
                        L", area";
    for (const LONG edge : {area.left, area.top, area.right, area.bottom}) {
        text += L' ' + std::to_wstring(edge);
    }
    return text + L"})";
}

BOOL Answer() {
    SetLastError(server.fails ? ERROR_ACCESS_DENIED : ERROR_SUCCESS);
    return server.fails ? FALSE : server.success;
}

std::size_t NamesSize() {
    std::size_t size = 0;
    for (const ServerForm& form : server.forms) {
        size += (form.name.size() + 1) * sizeof(wchar_t);
    }
    return size - (server.names_end_the_list && size != 0 ? sizeof(wchar_t) : 0);
}

// The structures, and the names behind them. All of the buffer is written to.
void Fill(BYTE* buffer, DWORD size) {
    std::memset(buffer, 0xCC, size);
    BYTE* name = buffer + server.forms.size() * kFormSize;
    for (std::size_t i = 0; i < server.forms.size(); ++i) {
        const ServerForm& form = server.forms[i];
        FORM_INFO_1W info = {};
        info.Flags = FORM_BUILTIN;
        info.pName = server.names ? const_cast<wchar_t*>(*server.names) : reinterpret_cast<wchar_t*>(name);
        info.Size = {form.width, form.height};
        std::memcpy(buffer + i * kFormSize, &info, sizeof info);
        const std::size_t wanted = (form.name.size() + 1) * sizeof(wchar_t);
        const std::size_t room = static_cast<std::size_t>(buffer + size - name);
        std::memcpy(name, form.name.c_str(), std::min(wanted, room));
        name += wanted;
    }
}

class PrinterFormsTest : public testing::Test {
  protected:
    void SetUp() override { server = {}; }

    static void ExpectForms(const std::vector<PaperForm>& forms) {
        ASSERT_EQ(forms.size(), server.forms.size());
        for (std::size_t i = 0; i < forms.size(); ++i) {
            ASSERT_EQ(forms[i].name, server.forms[i].name) << i;
            ASSERT_EQ(forms[i].width, server.forms[i].width) << i;
            ASSERT_EQ(forms[i].height, server.forms[i].height) << i;
        }
    }

    // Not told, and what was known before stays.
    static void ExpectUntold(const Calls& calls) {
        std::vector<PaperForm> forms = {{L"before", 1, 2}};
        EXPECT_FALSE(ReadForms(kPrinter, forms));
        EXPECT_EQ(server.calls, calls);
        ASSERT_EQ(forms.size(), 1u);
        EXPECT_EQ(forms[0].name, L"before");
    }
};

}  // namespace

BOOL WINAPI EnumFormsW(HANDLE printer, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed,
                       LPDWORD count) {
    if (server.before_list) {
        server.before_list(++server.lists);
    }
    server.calls.push_back(Named(L"EnumFormsW", printer) + L", " + std::to_wstring(level) + L", " +
                           (buffer == nullptr ? L"null" : std::to_wstring(size)) + L")");
    const std::size_t wanted = server.forms.size() * kFormSize + NamesSize();
    *needed = server.needed.value_or(static_cast<DWORD>(wanted));
    *count = 0;
    if (server.fails || wanted > size) {
        SetLastError(server.fails ? ERROR_ACCESS_DENIED : ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    Fill(buffer, size);
    *count = server.count.value_or(static_cast<DWORD>(server.forms.size()));
    return Answer();
}

BOOL WINAPI AddFormW(HANDLE printer, DWORD level, LPBYTE form) {
    server.calls.push_back(Named(L"AddFormW", printer) + L", " + Shown(level, form));
    return Answer();
}

BOOL WINAPI SetFormW(HANDLE printer, LPWSTR name, DWORD level, LPBYTE form) {
    server.calls.push_back(Named(L"SetFormW", printer) + L", \"" + name + L"\", " + Shown(level, form));
    return Answer();
}

BOOL WINAPI DeleteFormW(HANDLE printer, LPWSTR name) {
    server.calls.push_back(Named(L"DeleteFormW", printer) + L", \"" + name + L"\")");
    return Answer();
}

namespace {

const std::wstring kAsked = L"EnumFormsW(printer, 1, 40)";

std::wstring Read(std::size_t size) {
    return L"EnumFormsW(printer, 1, " + std::to_wstring(size) + L")";
}

// Reading

TEST_F(PrinterFormsTest, AsksHowMuchAndReadsThat) {
    server.forms = {{L"A4", 210000, 297000}, {L"Custom Paper-R72", 72000, 297000}, {L"x", -1, INT32_MAX}};
    std::vector<PaperForm> forms = {{L"before", 1, 2}};
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    // Three forms; names of 2, 16 and 1 characters, and their ends.
    EXPECT_EQ(server.calls, (Calls{kAsked, Read(3 * 40 + 2 * (3 + 17 + 2))}));
    ExpectForms(forms);
}

TEST_F(PrinterFormsTest, NoFormsAtAll) {
    std::vector<PaperForm> forms = {{L"before", 1, 2}};
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    EXPECT_EQ(server.calls, Calls{kAsked});
    EXPECT_TRUE(forms.empty());
}

TEST_F(PrinterFormsTest, OneFormOfEveryLength) {
    for (std::size_t length = 0; length <= 300; ++length) {
        server = {};
        server.forms = {{std::wstring(length, L'n'), 1, 2}};
        std::vector<PaperForm> forms;
        ASSERT_TRUE(ReadForms(kPrinter, forms)) << length;
        ASSERT_EQ(server.calls, (Calls{kAsked, Read(40 + 2 * (length + 1))})) << length;
        ExpectForms(forms);
    }
}

TEST_F(PrinterFormsTest, TenThousandForms) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < 10000; ++i) {
        const std::size_t length = i % 2 == 0 ? 300 : 1;
        server.forms.push_back(
            {std::wstring(length, static_cast<wchar_t>(L'A' + i % 26)), static_cast<LONG>(i), 7});
        size += kFormSize + 2 * (length + 1);
    }
    std::vector<PaperForm> forms;
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    EXPECT_EQ(server.calls, (Calls{kAsked, Read(size)}));
    ExpectForms(forms);
}

// Half characters are names to the server, so they are to us.
TEST_F(PrinterFormsTest, NamesAsTheServerHasThem) {
    server.forms = {{L"\xD83D", 1, 1}, {L"\xDE00\xD83D", 2, 2}, {L"\x5B9A\x5236", 3, 3}, {L" ", 4, 4}};
    std::vector<PaperForm> forms;
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    ExpectForms(forms);
}

TEST_F(PrinterFormsTest, AServerThatRefuses) {
    server.forms = {{L"A4", 210000, 297000}};
    server.fails = true;
    ExpectUntold({kAsked, Read(46)});
    server.calls.clear();
    server.needed = 0;
    ExpectUntold({kAsked});
}

// What is needed is what the buffer has, or less: nothing that a larger one would mend.
TEST_F(PrinterFormsTest, NeedsNoMoreThanItGot) {
    for (const DWORD needed : {DWORD{1}, DWORD{39}, DWORD{40}}) {
        server = {};
        server.fails = true;
        server.needed = needed;
        ExpectUntold({kAsked});
    }
    server = {};
    server.fails = true;
    server.needed = 41;
    ExpectUntold({kAsked, Read(41)});
}

TEST_F(PrinterFormsTest, RefusesToReadMoreThanAnyServerHas) {
    server.fails = true;
    for (const DWORD needed : {kLargestList + 1, DWORD{0x80000000}, DWORD{0xFFFFFFFF}}) {
        server.calls.clear();
        server.needed = needed;
        ExpectUntold({kAsked});
    }
    server.calls.clear();
    server.needed = kLargestList;
    ExpectUntold({kAsked, Read(kLargestList)});
}

TEST_F(PrinterFormsTest, AListThatGrowsMeanwhile) {
    server.forms = {{L"A4", 210000, 297000}};
    server.before_list = [](int list) {
        if (list == 2) {
            server.forms.push_back({L"A5", 148000, 210000});
        }
    };
    ExpectUntold({kAsked, Read(46)});
    // By a character of a name only.
    server = {};
    server.forms = {{L"A4", 210000, 297000}};
    server.before_list = [](int list) { server.forms[0].name += list == 2 ? L"x" : L""; };
    ExpectUntold({kAsked, Read(46)});
}

TEST_F(PrinterFormsTest, AListThatShrinksMeanwhile) {
    server.forms = {{L"A4", 210000, 297000}, {L"A5", 148000, 210000}};
    server.before_list = [](int list) {
        if (list == 2) {
            server.forms.erase(server.forms.begin());
        }
    };
    std::vector<PaperForm> forms;
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    ExpectForms(forms);
    server.before_list = [](int list) {
        if (list == 4) {
            server.forms.clear();
        }
    };
    server.lists = 2;
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    EXPECT_TRUE(forms.empty());
}

// Answers that no server should give

TEST_F(PrinterFormsTest, MoreFormsThanTheListHasRoomFor) {
    for (const DWORD count : {DWORD{3}, DWORD{1000}, DWORD{0x80000000}, DWORD{0xFFFFFFFF}}) {
        server = {};
        server.forms = {{L"A4", 210000, 297000}, {L"A5", 148000, 210000}};
        server.count = count;
        std::vector<PaperForm> forms = {{L"before", 1, 2}};
        EXPECT_TRUE(ReadForms(kPrinter, forms)) << count;
        EXPECT_TRUE(forms.empty()) << count;
    }
    // Nor in the place of the first question.
    server = {};
    server.count = 2;
    std::vector<PaperForm> forms = {{L"before", 1, 2}};
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    EXPECT_TRUE(forms.empty());
}

TEST_F(PrinterFormsTest, FewerFormsThanTheListHas) {
    server.forms = {{L"A4", 210000, 297000}, {L"A5", 148000, 210000}};
    server.count = 1;
    std::vector<PaperForm> forms;
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    server.forms.pop_back();
    ExpectForms(forms);
}

TEST_F(PrinterFormsTest, FormsWithoutAName) {
    server.forms = {{L"A4", 210000, 297000}};
    server.names = nullptr;
    std::vector<PaperForm> forms;
    EXPECT_TRUE(ReadForms(kPrinter, forms));
    server.forms[0].name.clear();
    ExpectForms(forms);
}

TEST_F(PrinterFormsTest, NamesThatLieElsewhere) {
    static const wchar_t kElsewhere[] = L"Custom Paper-elsewhere";
    const auto wild = [](std::uintptr_t address) { return reinterpret_cast<const wchar_t*>(address); };
    for (const wchar_t* name : {kElsewhere, wild(1), wild(0x10000), wild(~std::uintptr_t{1})}) {
        server = {};
        server.forms = {{L"A4", 210000, 297000}};
        server.names = name;
        std::vector<PaperForm> forms;
        EXPECT_TRUE(ReadForms(kPrinter, forms));
        server.forms[0].name.clear();
        ExpectForms(forms);
    }
}

TEST_F(PrinterFormsTest, ANameThatDoesNotEnd) {
    for (std::size_t length = 1; length <= 100; ++length) {
        server = {};
        server.forms = {{L"A4", 1, 2}, {std::wstring(length, L'n'), 3, 4}};
        server.names_end_the_list = true;
        std::vector<PaperForm> forms;
        ASSERT_TRUE(ReadForms(kPrinter, forms));
        ASSERT_EQ(server.calls.back(), Read(2 * 40 + 2 * (3 + length)));
        ExpectForms(forms);
    }
}

TEST_F(PrinterFormsTest, AnythingButZeroIsSuccess) {
    server.forms = {{L"A4", 210000, 297000}};
    for (const BOOL success : {2, -1, 0x10000}) {
        server.success = success;
        std::vector<PaperForm> forms;
        EXPECT_TRUE(ReadForms(kPrinter, forms));
        EXPECT_TRUE(AddPaper(kPrinter, L"A", {1, 2}));
        EXPECT_TRUE(RewritePaper(kPrinter, L"A", {1, 2}));
        EXPECT_TRUE(DeletePaper(kPrinter, L"A"));
    }
}

// Changing

TEST_F(PrinterFormsTest, AddsAWholeSheetOfTheUsers) {
    EXPECT_TRUE(AddPaper(kPrinter, L"Custom Paper-Shop", {410, 32760}));
    EXPECT_EQ(server.calls, (Calls{L"AddFormW(printer, 1, {0, \"Custom Paper-Shop\", 41000 x 3276000, area 0 "
                                   L"0 41000 3276000})"}));
    server = {};
    server.fails = true;
    EXPECT_FALSE(AddPaper(kPrinter, L"", {720, 2970}));
    EXPECT_EQ(server.calls,
              (Calls{L"AddFormW(printer, 1, {0, \"\", 72000 x 297000, area 0 0 72000 297000})"}));
}

TEST_F(PrinterFormsTest, RewritesAFormUnderItsOwnName) {
    EXPECT_TRUE(RewritePaper(kPrinter, L"My Custom Paper-A4", {411, 254}));
    EXPECT_EQ(
        server.calls,
        (Calls{L"SetFormW(printer, \"My Custom Paper-A4\", 1, {0, \"My Custom Paper-A4\", 41100 x 25400, "
               L"area 0 0 41100 25400})"}));
    server = {};
    server.fails = true;
    EXPECT_FALSE(RewritePaper(kPrinter, L"n", {720, 2970}));
    EXPECT_EQ(server.calls,
              (Calls{L"SetFormW(printer, \"n\", 1, {0, \"n\", 72000 x 297000, area 0 0 72000 297000})"}));
}

TEST_F(PrinterFormsTest, DeletesByName) {
    EXPECT_TRUE(DeletePaper(kPrinter, L"Custom Paper-Shop"));
    EXPECT_EQ(server.calls, Calls{L"DeleteFormW(printer, \"Custom Paper-Shop\")"});
    server = {};
    server.fails = true;
    EXPECT_FALSE(DeletePaper(kPrinter, L""));
    EXPECT_EQ(server.calls, Calls{L"DeleteFormW(printer, \"\")"});
}

TEST_F(PrinterFormsTest, LongNamesWhole) {
    const std::wstring name(300, L'n');
    EXPECT_TRUE(AddPaper(kPrinter, name, {410, 254}));
    EXPECT_TRUE(RewritePaper(kPrinter, name, {410, 254}));
    EXPECT_TRUE(DeletePaper(kPrinter, name));
    const std::wstring form = L"1, {0, \"" + name + L"\", 41000 x 25400, area 0 0 41000 25400})";
    EXPECT_EQ(server.calls,
              (Calls{L"AddFormW(printer, " + form, L"SetFormW(printer, \"" + name + L"\", " + form,
                     L"DeleteFormW(printer, \"" + name + L"\")"}));
}

// The handle is the host's, whatever it is; the server says what it makes of it.
TEST_F(PrinterFormsTest, AnyHandleIsTheServersToJudge) {
    server.fails = true;
    std::vector<PaperForm> forms;
    for (const HANDLE handle : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        server.calls.clear();
        EXPECT_FALSE(ReadForms(handle, forms));
        EXPECT_FALSE(AddPaper(handle, L"n", {410, 254}));
        EXPECT_FALSE(RewritePaper(handle, L"n", {410, 254}));
        EXPECT_FALSE(DeletePaper(handle, L"n"));
        EXPECT_EQ(server.calls.size(), 4u);
        for (const std::wstring& call : server.calls) {
            EXPECT_NE(call.find(L"(another handle"), std::wstring::npos);
        }
    }
}

}  // namespace
