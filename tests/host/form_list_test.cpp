// The forms of the virtual printer's server: what is taken and what is refused, the buffer that lists them,
// and the file in which the user's own last.
#include "form_list.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "rig/environment.h"
#include "utf8.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kBuiltIn = 6;

Form Receipt(const wchar_t* name = L"Receipt") {
    return WholeSheet(name, 72000, 297000);
}

std::vector<Form> UserForms(const FormList& list) {
    return {list.forms().begin() + kBuiltIn, list.forms().end()};
}

// What is taken

TEST(FormListTest, StartsWithTheBuiltInForms) {
    const struct {
        const wchar_t* name;
        LONG width;
        LONG height;
    } kExpected[] = {{L"Letter", 215900, 279400},    {L"Legal", 215900, 355600},
                     {L"Executive", 184150, 266700}, {L"A4", 210000, 297000},
                     {L"A5", 148000, 210000},        {L"Envelope #10", 104775, 241300}};
    const FormList list;
    ASSERT_EQ(list.forms().size(), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        const Form& form = list.forms()[i];
        EXPECT_EQ(form.name, kExpected[i].name);
        EXPECT_EQ(form.flags, 1u);
        EXPECT_EQ(form.size.cx, kExpected[i].width);
        EXPECT_EQ(form.size.cy, kExpected[i].height);
        EXPECT_EQ(form.area.left, 0);
        EXPECT_EQ(form.area.top, 0);
        EXPECT_EQ(form.area.right, kExpected[i].width);
        EXPECT_EQ(form.area.bottom, kExpected[i].height);
    }
}

TEST(FormListTest, AddsBehindWhatThereIs) {
    FormList list;
    const Form narrow = {.name = L"Narrow", .size = {48000, 9}, .area = {1, 2, 47999, 8}};
    EXPECT_EQ(list.Add(Receipt()), 0u);
    EXPECT_EQ(list.Add(narrow), 0u);
    // Another spelling is another name.
    EXPECT_EQ(list.Add(Receipt(L"receipt")), 0u);
    EXPECT_EQ(list.Add(Receipt(L"a4")), 0u);
    EXPECT_EQ(UserForms(list), (std::vector<Form>{Receipt(), narrow, Receipt(L"receipt"), Receipt(L"a4")}));
}

TEST(FormListTest, ComparesEveryFieldOfAForm) {
    const Form form = {.name = L"F", .size = {10, 20}, .area = {1, 2, 9, 19}};
    EXPECT_TRUE(form == Form(form));
    for (LONG SIZEL::*side : {&SIZEL::cx, &SIZEL::cy}) {
        Form other = form;
        ++(other.size.*side);
        EXPECT_FALSE(form == other);
    }
    for (LONG RECTL::*edge : {&RECTL::left, &RECTL::top, &RECTL::right, &RECTL::bottom}) {
        Form other = form;
        ++(other.area.*edge);
        EXPECT_FALSE(form == other);
    }
    Form other = form;
    other.name = L"f";
    EXPECT_FALSE(form == other);
    other = form;
    other.flags = FORM_BUILTIN;
    EXPECT_FALSE(form == other);
}

TEST(FormListTest, RefusesANameThatThereIs) {
    FormList list;
    ASSERT_EQ(list.Add(Receipt()), 0u);
    EXPECT_EQ(list.Add(WholeSheet(L"Receipt", 1, 1)), 80u);
    EXPECT_EQ(list.Add(Receipt(L"A4")), 80u);
    EXPECT_EQ(UserForms(list), std::vector<Form>{Receipt()});
}

TEST(FormListTest, RefusesNamesThatNoFormCanHave) {
    FormList list;
    EXPECT_EQ(list.Add(Receipt(L"")), 1902u);
    EXPECT_EQ(list.Add(Receipt(L"01234567890123456789012345678901")), 1902u);
    Form cut = Receipt();
    cut.name = std::wstring(L"A\0B", 3);
    EXPECT_EQ(list.Add(cut), 1902u);
    EXPECT_TRUE(UserForms(list).empty());
    EXPECT_EQ(list.Add(Receipt(L"0123456789012345678901234567890")), 0u);
}

TEST(FormListTest, TakesFormsOfTheUserOnly) {
    FormList list;
    for (const DWORD flags : {1u, 2u, 4u, 0xFFFFFFFFu}) {
        EXPECT_EQ(list.Add(WholeSheet(L"Receipt", 1, 1, flags)), 87u) << flags;
    }
    ASSERT_EQ(list.Add(Receipt()), 0u);
    EXPECT_EQ(list.Set(L"Receipt", WholeSheet(L"Receipt", 1, 1, FORM_PRINTER)), 87u);
    EXPECT_EQ(UserForms(list), std::vector<Form>{Receipt()});
}

TEST(FormListTest, RefusesSizesThatNoFormCanHave) {
    constexpr LONG kMost = 0x7FFFFFFF;
    constexpr LONG kLeast = -kMost - 1;
    const struct {
        SIZEL size;
        RECTL area;
        bool taken;
    } kSheets[] = {
        {{1, 1}, {0, 0, 1, 1}, true},
        {{kMost, kMost}, {0, 0, kMost, kMost}, true},
        {{100, 200}, {99, 199, 100, 200}, true},
        {{0, 200}, {0, 0, 0, 200}, false},
        {{100, 0}, {0, 0, 100, 0}, false},
        {{-1, 200}, {-2, 0, -1, 200}, false},
        {{100, -1}, {0, -2, 100, -1}, false},
        {{kLeast, 200}, {0, 0, kLeast, 200}, false},
        {{100, 200}, {-1, 0, 100, 200}, false},
        {{100, 200}, {0, -1, 100, 200}, false},
        {{100, 200}, {0, 0, 101, 200}, false},
        {{100, 200}, {0, 0, 100, 201}, false},
        {{100, 200}, {100, 0, 100, 200}, false},
        {{100, 200}, {0, 200, 100, 200}, false},
        {{100, 200}, {60, 0, 50, 200}, false},
        {{100, 200}, {0, 60, 100, 50}, false},
        {{100, 200}, {0, 0, 0, 0}, false},
        {{100, 200}, {kLeast, kLeast, kMost, kMost}, false},
    };
    int number = 0;
    for (const auto& sheet : kSheets) {
        SCOPED_TRACE(number++);
        FormList list;
        const Form form = {.name = L"F", .size = sheet.size, .area = sheet.area};
        EXPECT_EQ(list.Add(form), sheet.taken ? 0u : 1903u);
        EXPECT_EQ(UserForms(list).size(), sheet.taken ? 1u : 0u);
        ASSERT_EQ(list.Add(Receipt()), 0u);
        Form changed = form;
        changed.name = L"Receipt";
        EXPECT_EQ(list.Set(L"Receipt", changed), sheet.taken ? 0u : 1903u);
        EXPECT_EQ(UserForms(list).back(), sheet.taken ? changed : Receipt());
    }
}

TEST(FormListTest, ChangesAFormInItsPlace) {
    FormList list;
    for (const wchar_t* name : {L"A", L"B", L"C"}) {
        ASSERT_EQ(list.Add(Receipt(name)), 0u);
    }
    const Form changed = {.name = L"B", .size = {58000, 1000}, .area = {1, 1, 57000, 999}};
    EXPECT_EQ(list.Set(L"B", changed), 0u);
    EXPECT_EQ(list.Set(L"b", Receipt(L"b")), 1902u);
    EXPECT_EQ(list.Set(L"", Receipt(L"")), 1902u);
    EXPECT_EQ(list.Set(L"C", Receipt(L"D")), 1902u) << "a form has one name";
    EXPECT_EQ(list.Set(L"A4", Receipt(L"A4")), 87u);
    EXPECT_EQ(UserForms(list), (std::vector<Form>{Receipt(L"A"), changed, Receipt(L"C")}));
    EXPECT_EQ(list.forms()[3].size.cx, 210000);
}

TEST(FormListTest, DeletesAForm) {
    FormList list;
    for (const wchar_t* name : {L"A", L"B", L"C"}) {
        ASSERT_EQ(list.Add(Receipt(name)), 0u);
    }
    EXPECT_EQ(list.Delete(L"B"), 0u);
    EXPECT_EQ(list.Delete(L"B"), 1902u);
    EXPECT_EQ(list.Delete(L""), 1902u);
    EXPECT_EQ(list.Delete(L"A5"), 87u);
    EXPECT_EQ(list.forms().size(), kBuiltIn + 2);
    EXPECT_EQ(UserForms(list), (std::vector<Form>{Receipt(L"A"), Receipt(L"C")}));
}

TEST(FormListTest, TakesAnyListFromATest) {
    FormList list;
    const std::vector<Form> forms = {WholeSheet(L"", -1, 0, 7), WholeSheet(L"", -1, 0, 7)};
    list.Replace(forms);
    EXPECT_EQ(list.forms(), forms);
}

// The buffer that lists them

// Two forms whose names take 2 and 4 units with their ends.
std::vector<Form> TwoForms() {
    return {{.name = L"A", .flags = FORM_BUILTIN, .size = {10, 20}, .area = {1, 2, 9, 19}},
            {.name = L"\u4E2D\u6587x", .size = {30, 40}, .area = {0, 0, 30, 40}}};
}
// Of a structure: the flags, a gap, the name's address, width and height, four edges.
constexpr DWORD kStructure = 4 + 4 + 8 + 8 + 16;
constexpr DWORD kTwoForms = 2 * kStructure + 4 + 8;

TEST(FormBufferTest, PutsNamesBehindTheStructures) {
    static_assert(sizeof(FORM_INFO_1W) == kStructure);
    // At an odd address, with an untouched byte behind the buffer.
    Bytes memory(1 + kTwoForms + 1, 0xEE);
    std::uint8_t* const buffer = memory.data() + 1;
    DWORD needed = 0;
    ASSERT_EQ(CopyForms(TwoForms(), buffer, kTwoForms, needed), 0u);
    EXPECT_EQ(needed, kTwoForms);
    EXPECT_EQ(memory.front(), 0xEE);
    EXPECT_EQ(memory.back(), 0xEE);

    FORM_INFO_1W forms[2];
    std::memcpy(forms, buffer, sizeof forms);
    EXPECT_EQ(forms[0].Flags, 1u);
    EXPECT_EQ(forms[0].Size.cx, 10);
    EXPECT_EQ(forms[0].Size.cy, 20);
    EXPECT_EQ(forms[0].ImageableArea.left, 1);
    EXPECT_EQ(forms[0].ImageableArea.top, 2);
    EXPECT_EQ(forms[0].ImageableArea.right, 9);
    EXPECT_EQ(forms[0].ImageableArea.bottom, 19);
    EXPECT_EQ(static_cast<void*>(forms[0].pName), buffer + 80);
    EXPECT_EQ(forms[1].Flags, 0u);
    EXPECT_EQ(forms[1].Size.cx, 30);
    EXPECT_EQ(forms[1].ImageableArea.bottom, 40);
    EXPECT_EQ(static_cast<void*>(forms[1].pName), buffer + 84);
    EXPECT_EQ(Bytes(buffer + 80, buffer + 92), (Bytes{'A', 0, 0, 0, 0x2D, 0x4E, 0x87, 0x65, 'x', 0, 0, 0}));
}

TEST(FormBufferTest, LeavesABufferThatIsTooSmallAlone) {
    for (const DWORD size : {DWORD{0}, DWORD{1}, DWORD{80}, kTwoForms - 1}) {
        Bytes memory(kTwoForms, 0xEE);
        DWORD needed = 0;
        EXPECT_EQ(CopyForms(TwoForms(), memory.data(), size, needed), 122u) << size;
        EXPECT_EQ(needed, kTwoForms);
        EXPECT_EQ(memory, Bytes(kTwoForms, 0xEE));
    }
    DWORD needed = 0;
    EXPECT_EQ(CopyForms(TwoForms(), nullptr, 0, needed), 122u);
    EXPECT_EQ(needed, kTwoForms);
    EXPECT_EQ(CopyForms(TwoForms(), nullptr, kTwoForms, needed), 1784u);
}

TEST(FormBufferTest, LeavesTheRestOfALargerBufferAlone) {
    Bytes memory(kTwoForms + 100, 0xEE);
    DWORD needed = 0;
    EXPECT_EQ(CopyForms(TwoForms(), memory.data(), kTwoForms + 100, needed), 0u);
    EXPECT_EQ(needed, kTwoForms);
    EXPECT_EQ(Bytes(memory.begin() + kTwoForms, memory.end()), Bytes(100, 0xEE));
}

TEST(FormBufferTest, NeedsNothingForNoForms) {
    DWORD needed = 7;
    EXPECT_EQ(CopyForms({}, nullptr, 0, needed), 0u);
    EXPECT_EQ(needed, 0u);
}

// The file

class FormFileTest : public testing::Test {
  protected:
    void SetUp() override {
        int number = 0;
        do {
            folder_ = std::filesystem::temp_directory_path() / (L"kvmr72 forms " + std::to_wstring(++number));
        } while (!std::filesystem::create_directory(folder_));
        file_ = folder_ / L"forms \u4E2D.txt";
    }
    void TearDown() override {
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }

    void Write(std::string_view text) const { rig::WriteBytes(file_, Bytes(text.begin(), text.end())); }
    std::string Text() const {
        const auto bytes = rig::ReadBytes(file_);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "no file";
    }
    std::string ErrorOfReading() const {
        try {
            const FormList list(file_);
            ADD_FAILURE() << "accepted";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return {};
    }

    std::filesystem::path folder_;
    std::filesystem::path file_;
};

TEST_F(FormFileTest, IsMadeWhenItIsMissing) {
    EXPECT_EQ(FormList(file_).forms(), BuiltInForms());
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(FormList(file_).forms(), BuiltInForms());
}

TEST_F(FormFileTest, IsWrittenAfterEachChange) {
    FormList list(file_);
    list.Add(Receipt());
    EXPECT_EQ(Text(), "Receipt\t72000\t297000\t0\t0\t72000\t297000\n");
    list.Add({.name = L"Custom Paper-\u4E2D", .size = {10, 20}, .area = {1, 2, 9, 19}});
    EXPECT_EQ(Text(),
              "Receipt\t72000\t297000\t0\t0\t72000\t297000\n"
              "Custom Paper-\xE4\xB8\xAD\t10\t20\t1\t2\t9\t19\n");
    list.Set(L"Receipt", WholeSheet(L"Receipt", 5, 6));
    EXPECT_EQ(Text(),
              "Receipt\t5\t6\t0\t0\t5\t6\n"
              "Custom Paper-\xE4\xB8\xAD\t10\t20\t1\t2\t9\t19\n");
    list.Delete(L"Receipt");
    EXPECT_EQ(Text(), "Custom Paper-\xE4\xB8\xAD\t10\t20\t1\t2\t9\t19\n");
    // What is refused changes nothing.
    list.Add(WholeSheet(L"X", 0, 0));
    list.Delete(L"A4");
    EXPECT_EQ(Text(), "Custom Paper-\xE4\xB8\xAD\t10\t20\t1\t2\t9\t19\n");
    // Nothing of it is left lying about.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 1);
}

TEST_F(FormFileTest, BringsTheFormsBack) {
    std::vector<Form> forms;
    {
        FormList list(file_);
        for (const wchar_t* name :
             {L"Receipt", L" ", L"tab\tline\nreturn\r\x01", L"C:\\u0041\\", L"\xD83D\xDE00", L"\xDE00\xD83D",
              L"\xFFFD\xFFFE\x7F", L"\xFEFF", L"0123456789012345678901234567890"}) {
            ASSERT_EQ(list.Add({.name = name, .size = {2147483647, 20}, .area = {1, 2, 9, 19}}), 0u);
        }
        forms = list.forms();
    }
    EXPECT_EQ(FormList(file_).forms(), forms);
    EXPECT_THAT(Text(), testing::HasSubstr("\ntab\\u0009line\\u000Areturn\\u000D\\u0001\t2147483647\t20\t"));
    EXPECT_THAT(Text(), testing::HasSubstr("\nC:\\u005Cu0041\\u005C\t"));
}

TEST_F(FormFileTest, MayBeWrittenByAnEditor) {
    Write(
        "\xEF\xBB\xBFReceipt\t72000\t297000\t0\t0\t72000\t297000\r\n\xF0\x9F\x98\x80\t5\t6\t0\t1\t2\t3\r\n");
    EXPECT_EQ(
        UserForms(FormList(file_)),
        (std::vector<Form>{Receipt(), {.name = L"\xD83D\xDE00", .size = {5, 6}, .area = {0, 1, 2, 3}}}));
}

TEST_F(FormFileTest, NamesTheLineThatIsNoForm) {
    const std::string good = "Receipt\t72000\t297000\t0\t0\t72000\t297000\n";
    constexpr char kNoForm[] = " is not a name, width, height and four edges, divided by tabs";
    constexpr char kNoName[] = " has a name that no form can have";
    constexpr char kNoSize[] = " has a size that no form can have";
    constexpr char kTwice[] = " names a form that there is already";
    const struct {
        std::string line;
        const char* reason;
    } kLines[] = {
        {"\n", kNoForm},
        {"X\n", kNoForm},
        {"X\t1\t1\t0\t0\t1\n", kNoForm},
        {"X\t1\t1\t0\t0\t1\t\n", kNoForm},
        {"X\t1\t1\t0\t0\t1\t1\t\n", kNoForm},
        {"X\t1\t1\t0\t0\t1\t1\t1\n", kNoForm},
        {"X 1 1 0 0 1 1\n", kNoForm},
        {"X\t1\t1\t\t0\t1\t1\n", kNoForm},
        {"X\t1\t1\t0\t0\t1\t1x\n", kNoForm},
        {"X\t 1\t1\t0\t0\t1\t1\n", kNoForm},
        {"X\t+1\t1\t0\t0\t1\t1\n", kNoForm},
        {"X\t0x1\t1\t0\t0\t1\t1\n", kNoForm},
        {"X\t2147483648\t1\t0\t0\t1\t1\n", kNoForm},
        {"X\t99999999999999999999\t1\t0\t0\t1\t1\n", kNoForm},
        {"\\\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"\\u\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"\\u004\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"\\u004x\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"\\x0041\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"\\u\xE4\xB8\xAD\x31\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"a\x01\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {std::string("a\0b\t1\t1\t0\t0\t1\t1\n", 16), kNoForm},
        {"\xFF\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"\xE4\xB8\t1\t1\t0\t0\t1\t1\n", kNoForm},
        {"\t1\t1\t0\t0\t1\t1\n", kNoName},
        {"\\u0000\t1\t1\t0\t0\t1\t1\n", kNoName},
        {"01234567890123456789012345678901\t1\t1\t0\t0\t1\t1\n", kNoName},
        {"X\t-1\t1\t0\t0\t1\t1\n", kNoSize},
        {"X\t1\t1\t0\t0\t1\t2\n", kNoSize},
        {"Receipt\t1\t1\t0\t0\t1\t1\n", kTwice},
        {"A4\t1\t1\t0\t0\t1\t1\n", kTwice},
        {"X\t1\t1\t0\t0\t1\t1", " is not finished"},
        {"X\t1\t1\t0", " is not finished"},
        {"X\t1\t1\t0\t0\t1\t1\r", " is not finished"},
    };
    for (const auto& [line, reason] : kLines) {
        SCOPED_TRACE(line);
        Write(good + line);
        EXPECT_EQ(ErrorOfReading(), ToUtf8(file_.native()) + ", line 2" + reason);
        EXPECT_EQ(Text(), good + line) << "a refused file is left alone";
    }
    Write(kLines[1].line + good);
    EXPECT_EQ(ErrorOfReading(), ToUtf8(file_.native()) + ", line 1" + kNoForm);
}

TEST_F(FormFileTest, HasALimit) {
    rig::WriteBytes(file_, Bytes(1024 * 1024 + 1, 'x'));
    EXPECT_EQ(ErrorOfReading(), ToUtf8(file_.native()) + " has more than 1048576 bytes");
}

TEST_F(FormFileTest, HasToBeWritable) {
    file_ = folder_ / L"missing" / L"forms.txt";
    EXPECT_EQ(ErrorOfReading(), "cannot write " + ToUtf8(file_.native()));
    EXPECT_FALSE(std::filesystem::exists(folder_ / L"missing"));
}

TEST_F(FormFileTest, AChangeThatCannotBeWrittenIsNotMade) {
    FormList list(file_);
    ASSERT_EQ(list.Add(Receipt()), 0u);
    std::filesystem::remove(file_);
    std::filesystem::create_directory(file_);
    EXPECT_THROW(list.Add(Receipt(L"Other")), std::runtime_error);
    EXPECT_THROW(list.Set(L"Receipt", WholeSheet(L"Receipt", 1, 1)), std::runtime_error);
    EXPECT_THROW(list.Delete(L"Receipt"), std::runtime_error);
    EXPECT_EQ(UserForms(list), std::vector<Form>{Receipt()});
}

TEST_F(FormFileTest, IsLeftAloneByWhatATestGives) {
    FormList list(file_);
    ASSERT_EQ(list.Add(Receipt()), 0u);
    const std::string before = Text();
    list.Replace({});
    EXPECT_EQ(Text(), before);
}

}  // namespace
