// The control font's table on the disk: the calls of the system, byte by byte what they leave in the file,
// and what is there after one of them fails. The plug-in's own sources are part of this program.
#include "devpages/control_font_file.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rig/environment.h"
#include "rig/replaced.h"

// Where this program's import table keeps the functions that the table calls.
extern "C" {
extern decltype(&DeleteFileW) __imp_DeleteFileW;
extern decltype(&GetPrivateProfileStringW) __imp_GetPrivateProfileStringW;
extern decltype(&GetWindowsDirectoryW) __imp_GetWindowsDirectoryW;
extern decltype(&WritePrivateProfileStringW) __imp_WritePrivateProfileStringW;
}

namespace {

using rig::Replaced;

using Path = std::filesystem::path;
using Row = std::pair<int, std::wstring>;

constexpr std::string_view kHeader = "[Character Translation Table]\r\n";

// What the table calls, and which of the writes fails.
struct System {
    std::vector<std::wstring> calls;
    int failing = -1;
    int writes = 0;
    UINT folder_length = 0;
    DWORD listed = 0;
    std::wstring list;
    std::vector<DWORD> list_rooms;
};
System watched;

std::wstring Quoted(const wchar_t* text) {
    return text == nullptr ? L"null" : L'"' + std::wstring(text) + L'"';
}

// Taken before any is replaced.
const auto real_delete = __imp_DeleteFileW;
const auto real_read = __imp_GetPrivateProfileStringW;
const auto real_write = __imp_WritePrivateProfileStringW;

BOOL WINAPI WatchedDelete(LPCWSTR path) {
    watched.calls.push_back(L"DeleteFileW(" + Quoted(path) + L")");
    return real_delete(path);
}

DWORD WINAPI WatchedRead(LPCWSTR section, LPCWSTR key, LPCWSTR otherwise, LPWSTR value, DWORD size,
                         LPCWSTR path) {
    watched.calls.push_back(L"GetPrivateProfileStringW(" + Quoted(section) + L", " + Quoted(key) + L", " +
                            Quoted(otherwise) + L", " + std::to_wstring(size) + L", " + Quoted(path) + L")");
    return real_read(section, key, otherwise, value, size, path);
}

BOOL WINAPI WatchedWrite(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path) {
    watched.calls.push_back(L"WritePrivateProfileStringW(" + Quoted(section) + L", " + Quoted(key) + L", " +
                            Quoted(value) + L", " + Quoted(path) + L")");
    if (watched.writes++ == watched.failing) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return real_write(section, key, value, path);
}

UINT WINAPI UnknownFolder(LPWSTR folder, UINT size) {
    std::fill_n(folder, size, L'x');
    std::copy_n(L"C:\\", 3, folder);
    folder[std::min(watched.folder_length, size - 1)] = L'\0';
    return watched.folder_length;
}

// A section whose keys never end.
DWORD WINAPI EndlessKeys(LPCWSTR section, LPCWSTR key, LPCWSTR otherwise, LPWSTR value, DWORD size,
                         LPCWSTR path) {
    if (key != nullptr) {
        return real_read(section, key, otherwise, value, size, path);
    }
    watched.list_rooms.push_back(size);
    for (DWORD i = 0; i < size; ++i) {
        value[i] = watched.list[i % watched.list.size()];
    }
    value[size - 1] = value[size - 2] = L'\0';
    return size - 2;
}

// A list of a length that no list in this room can have.
DWORD WINAPI KeysBeyondTheRoom(LPCWSTR, LPCWSTR key, LPCWSTR, LPWSTR value, DWORD size, LPCWSTR) {
    watched.list_rooms.push_back(size);
    std::fill_n(value, size, L'4');
    return key == nullptr ? watched.listed : 0;
}

Path TablePath() {
    return L"C:\\windows\\system32\\spool\\drivers\\w32x86\\3\\KVMR72CONTROL.dat";
}

int RowOf(char character) {
    return character - ' ';
}

std::wstring Hex(std::size_t byte) {
    constexpr std::wstring_view kDigits = L"0123456789ABCDEF";
    return {kDigits[byte / 16], kDigits[byte % 16]};
}

std::wstring KeyOfRow(int row) {
    return Hex(static_cast<std::size_t>(row) + 32);
}

std::wstring Pairs(std::size_t count) {
    std::wstring text;
    for (std::size_t i = 0; i < count; ++i) {
        text += Hex(i % 256) + L' ';
    }
    return text;
}

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t unit : text) {
        narrow += static_cast<char>(unit);
    }
    return narrow;
}

// The command with its first bytes, as long as they are.
ControlCommand Holding(const std::vector<std::uint8_t>& bytes) {
    ControlCommand command{};
    std::copy(bytes.begin(), bytes.end(), command.bytes.begin());
    command.length = static_cast<std::uint8_t>(bytes.size());
    return command;
}

std::optional<std::string> FileText() {
    const auto bytes = rig::ReadBytes(TablePath());
    return bytes ? std::optional(std::string(bytes->begin(), bytes->end())) : std::nullopt;
}

void WriteText(const std::string& text) {
    rig::WriteBytes(TablePath(), std::vector<std::uint8_t>(text.begin(), text.end()));
}

// Without the blanks at the lines' ends: the system may or may not keep them when it writes a further key.
std::string Trimmed(std::string text) {
    for (std::size_t end = text.find(" \r"); end != std::string::npos; end = text.find(" \r")) {
        text.erase(end, 1);
    }
    return text;
}

void ExpectFile(const std::vector<Row>& rows) {
    const auto text = FileText();
    if (rows.empty()) {
        EXPECT_EQ(text, std::nullopt);
        return;
    }
    std::string expected(kHeader);
    for (const auto& [row, value] : rows) {
        expected += Narrow(KeyOfRow(row) + L'=' + value) + "\r\n";
    }
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(Trimmed(*text), Trimmed(expected));
}

void ExpectCommands(const ControlFont& font, const std::vector<Row>& rows) {
    std::array<std::wstring, 96> expected;
    for (const auto& [row, text] : rows) {
        expected[static_cast<std::size_t>(row)] = text;
    }
    for (int row = 0; row < 96; ++row) {
        EXPECT_EQ(font.Command(row), expected[static_cast<std::size_t>(row)]) << row;
    }
}

ControlFont Loaded() {
    ControlFontFileOnDisk file;
    ControlFont font;
    font.Load(file);
    return font;
}

bool Saved(const ControlFont& font) {
    ControlFontFileOnDisk file;
    return font.Save(file);
}

// All 96 characters, the one of row n with the byte n.
ControlFont FullFont() {
    ControlFont font;
    for (int row = 0; row < 96; ++row) {
        font.Store(row, Holding({static_cast<std::uint8_t>(row)}));
    }
    return font;
}

// Its first rows.
std::vector<Row> FullRows(int count) {
    std::vector<Row> rows;
    for (int row = 0; row < count; ++row) {
        rows.emplace_back(row, Hex(static_cast<std::size_t>(row)) + L' ');
    }
    return rows;
}

class OpenFile {
  public:
    OpenFile(DWORD access, DWORD share)
        : handle_(CreateFileW(TablePath().c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << GetLastError();
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { CloseHandle(handle_); }

  private:
    HANDLE handle_;
};

class ControlFontFileTest : public testing::Test {
  protected:
    void SetUp() override {
        Clean();
        std::filesystem::create_directories(TablePath().parent_path());
        watched = {};
    }
    void TearDown() override { Clean(); }

  private:
    static void Clean() {
        SetFileAttributesW(TablePath().c_str(), FILE_ATTRIBUTE_NORMAL);
        std::error_code error;
        std::filesystem::remove_all(TablePath().parent_path(), error);
        EXPECT_FALSE(error) << error.message();
    }
};

class WatchedControlFontFileTest : public ControlFontFileTest {
  private:
    const Replaced<decltype(DeleteFileW)> delete_{__imp_DeleteFileW, WatchedDelete};
    const Replaced<decltype(GetPrivateProfileStringW)> read_{__imp_GetPrivateProfileStringW, WatchedRead};
    const Replaced<decltype(WritePrivateProfileStringW)> write_{__imp_WritePrivateProfileStringW,
                                                                WatchedWrite};
};

const std::wstring kPathArgument =
    L"\"C:\\windows\\system32\\spool\\drivers\\w32x86\\3\\KVMR72CONTROL.dat\")";
const std::wstring kDeletion = L"DeleteFileW(" + kPathArgument;
const std::wstring kSectionArgument = L"(\"Character Translation Table\", ";

std::wstring Reading(const std::wstring& key) {
    return L"GetPrivateProfileStringW" + kSectionArgument + key + L", \"\", " +
           (key == L"null" ? L"1024, " : L"400, ") + kPathArgument;
}

std::wstring Writing(const std::wstring& key, const std::wstring& value) {
    return L"WritePrivateProfileStringW" + kSectionArgument + L'"' + key + L"\", \"" + value + L"\", " +
           kPathArgument;
}

TEST_F(WatchedControlFontFileTest, ReadsEachKeyThatIsThere) {
    WriteText(std::string(kHeader) + "7F=1c\r\n4a=01\r\n20=1B 40\r\n041=02\r\n");
    ExpectCommands(Loaded(), {{0, L"1B 40"}, {95, L"1c"}});
    EXPECT_EQ(watched.calls,
              (std::vector<std::wstring>{Reading(L"null"), Reading(L"\"20\""), Reading(L"\"7F\"")}));
}

TEST_F(WatchedControlFontFileTest, DeletesThenWritesEachRowOnce) {
    ControlFont font;
    font.Store(95, Holding({0xFF}));
    font.Store(0, Holding({0x1B, 0x40}));
    font.Store(RowOf('A'), Holding({0x00}));
    WriteText(std::string(kHeader) + "42=old\r\n[Other]\r\n41=other\r\n");
    EXPECT_TRUE(Saved(font));
    EXPECT_EQ(watched.calls, (std::vector<std::wstring>{kDeletion, Writing(L"20", L"1B 40 "),
                                                        Writing(L"41", L"00 "), Writing(L"7F", L"FF ")}));
    ExpectFile({{0, L"1B 40 "}, {RowOf('A'), L"00 "}, {95, L"FF "}});
}

TEST_F(WatchedControlFontFileTest, NoCommandIsOnlyADeletion) {
    WriteText(std::string(kHeader) + "42=1B\r\n");
    EXPECT_TRUE(Saved(ControlFont()));
    EXPECT_EQ(watched.calls, (std::vector<std::wstring>{kDeletion}));
    ExpectFile({});
    // Also where there was none.
    EXPECT_TRUE(Saved(ControlFont()));
    ExpectFile({});
}

TEST_F(WatchedControlFontFileTest, AWriteThatFailsIsTheLast) {
    const ControlFont font = FullFont();
    for (const int failing : {0, 1, 40, 95}) {
        SCOPED_TRACE(failing);
        WriteText(std::string(kHeader) + "20=old\r\n7F=old\r\n");
        watched = {};
        watched.failing = failing;
        EXPECT_FALSE(Saved(font));
        EXPECT_EQ(watched.calls.front(), kDeletion);
        EXPECT_EQ(watched.calls.size(), static_cast<std::size_t>(failing) + 2);
        ExpectFile(FullRows(failing));
        ExpectCommands(font, FullRows(96));
        // The next attempt writes them all.
        EXPECT_TRUE(Saved(font));
        ExpectFile(FullRows(96));
    }
}

TEST_F(ControlFontFileTest, BytesOfOneRow) {
    ControlFont font;
    font.Store(RowOf('A'), Holding({0x1B, 0x40}));
    EXPECT_TRUE(Saved(font));
    EXPECT_EQ(FileText(), "[Character Translation Table]\r\n41=1B 40 \r\n");
    EXPECT_TRUE(Saved(font));
    EXPECT_EQ(FileText(), "[Character Translation Table]\r\n41=1B 40 \r\n");
}

TEST_F(ControlFontFileTest, BytesOfAllRows) {
    EXPECT_TRUE(Saved(FullFont()));
    ExpectFile(FullRows(96));
    const auto text = FileText();
    ASSERT_TRUE(text.has_value());
    // Behind the last row nothing was written.
    EXPECT_TRUE(text->ends_with("\r\n7F=5F \r\n"));
}

TEST_F(ControlFontFileTest, CommandsOfEveryLengthComeBack) {
    for (const std::size_t length : {0u, 1u, 2u, 127u, 128u}) {
        SCOPED_TRACE(length);
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = 0; i < length; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(i * 5 + 251));
        }
        ControlFont font;
        font.Store(RowOf('J'), Holding(bytes));
        EXPECT_TRUE(Saved(font));
        EXPECT_EQ(ParseControlCommand(Loaded().Command(RowOf('J'))), Holding(bytes));
        EXPECT_EQ(FileText().has_value(), length != 0);
    }
}

// What nobody edits is written as it was read, also what is no command.
TEST_F(ControlFontFileTest, RowsStayAsRead) {
    const std::wstring lone = L"8 8 8" + std::wstring(200, L'7');
    WriteText(std::string(kHeader) + "41=1b40\r\n42=1 B\r\n43=zz,!?\r\n44=" + Narrow(Pairs(129)) +
              "\r\n45=" + Narrow(lone) + "\r\n46=\r\n");
    const ControlFont font = Loaded();
    const std::wstring tooLong = Pairs(129);
    const std::vector<Row> rows = {{RowOf('A'), L"1b40"},
                                   {RowOf('B'), L"1 B"},
                                   {RowOf('C'), L"zz,!?"},
                                   {RowOf('D'), tooLong.substr(0, tooLong.size() - 1)},
                                   {RowOf('E'), lone}};
    ExpectCommands(font, rows);
    EXPECT_TRUE(Saved(font));
    ExpectFile(rows);
    ExpectCommands(Loaded(), rows);
}

TEST_F(ControlFontFileTest, LongValuesAreCutAt399) {
    for (const std::size_t length : {398u, 399u, 400u, 5000u}) {
        SCOPED_TRACE(length);
        WriteText(std::string(kHeader) + "41=" + std::string(length, '7') + "\r\n42=1C\r\n");
        const std::vector<Row> rows = {{RowOf('A'), std::wstring(std::min<std::size_t>(length, 399), L'7')},
                                       {RowOf('B'), L"1C"}};
        const ControlFont font = Loaded();
        ExpectCommands(font, rows);
        EXPECT_TRUE(Saved(font));
        ExpectFile(rows);
    }
}

TEST_F(ControlFontFileTest, KeysAreFoundOnlyAsTheyAreSpelled) {
    WriteText(std::string(kHeader) +
              "4a=01\r\n041=02\r\n0x42=03\r\n1F=04\r\n80=05\r\n4=06\r\n433=07\r\n7f=08\r\n");
    ExpectCommands(Loaded(), {});
    // A spelling in front of the right one hides it; behind it, it changes nothing.
    WriteText(std::string(kHeader) + "4a=01\r\n4A=02\r\n4B=03\r\n4b=04\r\n");
    ExpectCommands(Loaded(), {{RowOf('K'), L"03"}});
    // None of them outlives a save.
    EXPECT_TRUE(Saved(Loaded()));
    ExpectFile({{RowOf('K'), L"03"}});
}

TEST_F(ControlFontFileTest, OtherSectionsAreNotRead) {
    WriteText("41=01\r\n[Other]\r\n42=02\r\n" + std::string(kHeader) + "43=03\r\n[Third]\r\n44=04\r\n");
    ExpectCommands(Loaded(), {{RowOf('C'), L"03"}});
    EXPECT_TRUE(Saved(Loaded()));
    ExpectFile({{RowOf('C'), L"03"}});
}

TEST_F(ControlFontFileTest, Utf16IsReadToo) {
    rig::WriteUtf16(TablePath(), L"[Character Translation Table]\r\n41=1B 40\r\n");
    ExpectCommands(Loaded(), {{RowOf('A'), L"1B 40"}});
    EXPECT_TRUE(Saved(Loaded()));
    ExpectFile({{RowOf('A'), L"1B 40"}});
}

TEST_F(ControlFontFileTest, FilesThatAreNoTable) {
    std::string noise;
    for (std::uint32_t i = 0, value = 1; i < 100000; ++i, value = value * 1664525 + 1013904223) {
        noise += static_cast<char>(value >> 24);
    }
    for (const std::string& text :
         {std::string(), std::string(kHeader), std::string("\0", 1), std::string("\xFF\xFE"),
          std::string("="), std::string("[[[]]]\n=\n=\n"), noise, std::string(1000000, '='),
          std::string(1000000, '['), "[Character Translation Table]" + std::string(100000, '\n')}) {
        WriteText(text);
        ExpectCommands(Loaded(), {});
        EXPECT_TRUE(Saved(Loaded()));
        ExpectFile({});
    }
    // Without the last line's end.
    WriteText(std::string(kHeader) + "41=1B");
    ExpectCommands(Loaded(), {{RowOf('A'), L"1B"}});
}

TEST_F(ControlFontFileTest, ManyForeignKeysHideNone) {
    std::string text(kHeader);
    for (int i = 0; i < 2000; ++i) {
        text += "foreign" + std::to_string(i) + "=1\r\n";
    }
    WriteText("20=wrong\r\n" + text + "20=1B\r\n7F=1C\r\n");
    ExpectCommands(Loaded(), {{0, L"1B"}, {95, L"1C"}});
}

// The list's length at the room's edge: one unit less would be cut.
TEST_F(ControlFontFileTest, KeyListsAtTheEdgeOfTheRoom) {
    for (std::size_t length = 1010; length <= 1030; ++length) {
        SCOPED_TRACE(length);
        // A key with its terminator, and 41 with its own.
        WriteText(std::string(kHeader) + std::string(length - 4, 'x') + "=1\r\n41=1B\r\n");
        ExpectCommands(Loaded(), {{RowOf('A'), L"1B"}});
    }
}

TEST_F(ControlFontFileTest, AnEndlessKeyListIsReadUpToSixteenMillionUnits) {
    WriteText(std::string(kHeader) + "41=1B\r\n42=1C\r\n");
    const Replaced<decltype(GetPrivateProfileStringW)> read(__imp_GetPrivateProfileStringW, EndlessKeys);
    watched.list = std::wstring(
        L"foreign\0"
        L"41\0",
        11);
    // What could not be listed is not taken for an empty table: a save would delete it.
    ExpectCommands(Loaded(), {{RowOf('A'), L"1B"}});
    EXPECT_EQ(watched.list_rooms,
              (std::vector<DWORD>{1024, 2048, 4096, 8192, 16384, 32768, 65536, 131072, 262144, 524288,
                                  1048576, 2097152, 4194304, 8388608, 16777216}));
}

TEST_F(ControlFontFileTest, ALengthBeyondTheRoomIsNotBelieved) {
    const Replaced<decltype(GetPrivateProfileStringW)> read(__imp_GetPrivateProfileStringW,
                                                            KeysBeyondTheRoom);
    for (const DWORD listed : {0x1000000ul, 0x1000001ul, 0x7FFFFFFFul, 0xFFFFFFFFul}) {
        watched = {};
        watched.listed = listed;
        ControlFontFileOnDisk file;
        EXPECT_LE(file.Keys().size(), 0x1000000u) << listed;
        EXPECT_EQ(watched.list_rooms.size(), 15u);
    }
}

TEST_F(WatchedControlFontFileTest, WithoutWindowsDirectoryThereIsNoFile) {
    const Replaced<decltype(GetWindowsDirectoryW)> folder(__imp_GetWindowsDirectoryW, UnknownFolder);
    WriteText(std::string(kHeader) + "41=1B\r\n");
    for (const UINT length : {0u, 260u, 261u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(length);
        watched = {};
        watched.folder_length = length;
        ExpectCommands(Loaded(), {});
        ControlFont font;
        font.Store(0, Holding({0x01}));
        EXPECT_FALSE(Saved(font));
        EXPECT_EQ(watched.calls, std::vector<std::wstring>());
        EXPECT_EQ(FileText(), std::string(kHeader) + "41=1B\r\n");
    }
}

// A path has 259 units; 50 of them stand behind the directory.
TEST_F(WatchedControlFontFileTest, AVeryLongWindowsDirectory) {
    const Replaced<decltype(GetWindowsDirectoryW)> folder(__imp_GetWindowsDirectoryW, UnknownFolder);
    for (const UINT length : {210u, 211u, 259u}) {
        SCOPED_TRACE(length);
        watched.folder_length = length;
        watched.calls.clear();
        ExpectCommands(Loaded(), {});
        EXPECT_FALSE(Saved(FullFont()));
        EXPECT_EQ(watched.calls, std::vector<std::wstring>());
    }
    // The longest that leaves the path room.
    watched.folder_length = 209;
    EXPECT_FALSE(Saved(FullFont()));
    EXPECT_EQ(watched.calls.size(), 2u);
}

TEST_F(ControlFontFileTest, AMissingFileIsEmptyAndIsMade) {
    ExpectCommands(Loaded(), {});
    EXPECT_TRUE(Saved(Loaded()));
    ExpectFile({});
    EXPECT_TRUE(Saved(FullFont()));
    ExpectFile(FullRows(96));
}

TEST_F(ControlFontFileTest, AMissingFolderIsNotMade) {
    std::filesystem::remove(TablePath().parent_path());
    ExpectCommands(Loaded(), {});
    EXPECT_FALSE(Saved(FullFont()));
    EXPECT_FALSE(std::filesystem::exists(TablePath().parent_path()));
}

TEST_F(ControlFontFileTest, AFolderInItsPlace) {
    std::filesystem::create_directory(TablePath());
    ExpectCommands(Loaded(), {});
    EXPECT_FALSE(Saved(FullFont()));
    EXPECT_TRUE(std::filesystem::is_directory(TablePath()));
    EXPECT_TRUE(std::filesystem::is_empty(TablePath()));
}

// It cannot be deleted. Whether it can be written to depends on who runs this: some systems let an
// administrator.
TEST_F(ControlFontFileTest, AReadOnlyFile) {
    const std::string text = std::string(kHeader) + "41=1B\r\n42=1C\r\n43=1D\r\n";
    WriteText(text);
    ASSERT_TRUE(SetFileAttributesW(TablePath().c_str(), FILE_ATTRIBUTE_READONLY));
    ControlFont font = Loaded();
    ExpectCommands(font, {{RowOf('A'), L"1B"}, {RowOf('B'), L"1C"}, {RowOf('C'), L"1D"}});
    font.Store(RowOf('A'), Holding({0x07}));
    font.Delete(RowOf('C'));
    const HANDLE writable =
        CreateFileW(TablePath().c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (writable == INVALID_HANDLE_VALUE) {
        EXPECT_FALSE(Saved(font));
        EXPECT_EQ(FileText(), text);
    } else {
        CloseHandle(writable);
        EXPECT_TRUE(Saved(font));
        // What was not deleted with the file is still there.
        ExpectFile({{RowOf('A'), L"07"}, {RowOf('B'), L"1C"}, {RowOf('C'), L"1D"}});
    }
}

// An editor that lets others read.
TEST_F(ControlFontFileTest, AFileThatOthersMayReadOnly) {
    const std::string text = std::string(kHeader) + "41=1B\r\n42=1C\r\n";
    WriteText(text);
    {
        const OpenFile open(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
        ExpectCommands(Loaded(), {{RowOf('A'), L"1B"}, {RowOf('B'), L"1C"}});
    }
    ControlFont font = Loaded();
    font.Store(RowOf('A'), Holding({0x07}));
    {
        const OpenFile open(GENERIC_READ, FILE_SHARE_READ);
        EXPECT_FALSE(Saved(font));
        EXPECT_EQ(FileText(), text);
    }
    // Once it is free the same table is saved.
    EXPECT_TRUE(Saved(font));
    ExpectFile({{RowOf('A'), L"07 "}, {RowOf('B'), L"1C"}});
}

TEST_F(ControlFontFileTest, AFileThatNobodyElseMayOpen) {
    const std::string text = std::string(kHeader) + "41=1B\r\n";
    WriteText(text);
    {
        const OpenFile open(GENERIC_READ | GENERIC_WRITE, 0);
        ExpectCommands(Loaded(), {});
        EXPECT_FALSE(Saved(FullFont()));
    }
    EXPECT_EQ(FileText(), text);
}

}  // namespace
