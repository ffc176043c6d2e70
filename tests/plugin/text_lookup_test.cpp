// The texts of the current language: what is read and when it is read again. The plug-in's own sources are
// part of this program.
#include "language/text_lookup.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "intrface/win/handles.h"
#include "intrface/win/module.h"
#include "language/kept_text.h"
#include "language/language_file.h"
#include "language/language_setup.h"
#include "language/text_table.h"
#include "rig/environment.h"

namespace {

constexpr wchar_t kLanguage[] = L"LANGUAGE_KVMR72";
constexpr wchar_t kEnglish[] = L"ENG_KVMR72.res";
constexpr wchar_t kSimplified[] = L"CHN_KVMR72.res";

class TextLookup : public ::testing::Test {
  protected:
    void SetUp() override {
        rig::ResetToInstalled();
        gFirstAttach = true;
        SetUpLanguage(GetModuleHandleW(nullptr));
        rig::RemoveUserFolder();
        std::filesystem::create_directories(rig::UserFolder());
        // From here on the state is known: English, and its file missing.
        rig::SetLanguageValue(kLanguage, kEnglish);
        RefreshLanguageFile();
        ASSERT_EQ(Caption(), L"default");
        ASSERT_FALSE(RefreshLanguageFile());
        generation_ = LanguageGeneration();
    }

    void TearDown() override { rig::RemoveUserFolder(); }

    static std::filesystem::path Path(const wchar_t* name = kEnglish) { return rig::UserFolder() / name; }

    static void Write(const std::wstring& value, const wchar_t* name = kEnglish) {
        rig::WriteUtf16(Path(name), L"[LAYOUT]\r\nRC_SCALE=" + value + L"\r\n");
    }

    static std::wstring Text(const wchar_t* section, const wchar_t* key,
                             const wchar_t* missing = L"default") {
        wchar_t text[1024];
        const std::size_t length = LoadText(section, key, missing, text);
        EXPECT_EQ(length, wcsnlen(text, 1024));
        return text;
    }

    static std::wstring Caption() { return Text(L"LAYOUT", L"RC_SCALE"); }

    // A refresh that finds something new counts one generation on.
    void ExpectChange() {
        EXPECT_TRUE(RefreshLanguageFile());
        EXPECT_EQ(LanguageGeneration(), ++generation_);
    }
    void ExpectNoChange() {
        EXPECT_FALSE(RefreshLanguageFile());
        EXPECT_EQ(LanguageGeneration(), generation_);
    }

    std::uint32_t generation_ = 0;
};

TEST_F(TextLookup, KeepsTheModule) {
    EXPECT_EQ(ghInstance, GetModuleHandleW(nullptr));
    EXPECT_FALSE(gFirstAttach);
}

TEST_F(TextLookup, ReadsTheCurrentLanguagesFile) {
    Write(L"Scale");
    Write(L"\u7F29\u653E", kSimplified);
    ExpectChange();
    EXPECT_EQ(Caption(), L"Scale");
    EXPECT_EQ(Text(L"layout", L"rc_scale"), L"Scale");
    EXPECT_EQ(Text(L"LAYOUT", L"RC_OTHER"), L"default");
    EXPECT_EQ(Text(L"OTHER", L"RC_SCALE"), L"default");
    rig::SetLanguageValue(kLanguage, kSimplified);
    EXPECT_EQ(Caption(), L"Scale") << "nothing changes before the refresh";
    ExpectChange();
    EXPECT_EQ(Caption(), L"\u7F29\u653E");
    EXPECT_STREQ(gCurrentLanguageFile, kSimplified);
    EXPECT_EQ(gLanguageFilePath, Path(kSimplified).wstring());
}

TEST_F(TextLookup, LooksUpWithoutTheDisk) {
    Write(L"Scale");
    ExpectChange();
    std::filesystem::remove(Path());
    rig::RemoveLanguageKey();
    EXPECT_EQ(Caption(), L"Scale");
    EXPECT_EQ(Text(L"LAYOUT", L"RC_OTHER"), L"default");
}

TEST_F(TextLookup, OpensNoFileThatIsAsItWas) {
    Write(L"Scale");
    ExpectChange();
    // Whoever opened the file now would be refused.
    const FileHandle lock(CreateFileW(Path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(lock);
    ExpectNoChange();
    EXPECT_EQ(Caption(), L"Scale");
}

TEST_F(TextLookup, SeesAnotherSize) {
    Write(L"Scale");
    ExpectChange();
    WIN32_FILE_ATTRIBUTE_DATA before;
    ASSERT_TRUE(GetFileAttributesExW(Path().c_str(), GetFileExInfoStandard, &before));
    Write(L"Longer");
    const FileHandle file(CreateFileW(Path().c_str(), FILE_WRITE_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                      nullptr));
    ASSERT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &before.ftLastWriteTime));
    ExpectChange();
    EXPECT_EQ(Caption(), L"Longer");
    ExpectNoChange();
}

TEST_F(TextLookup, SeesAnotherTime) {
    Write(L"Scale");
    ExpectChange();
    Write(L"SCALE");
    FILETIME time{0, 0x01D00000};
    {
        const FileHandle file(CreateFileW(Path().c_str(), FILE_WRITE_ATTRIBUTES,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                          nullptr));
        ASSERT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &time));
    }
    ExpectChange();
    EXPECT_EQ(Caption(), L"SCALE");
    ExpectNoChange();
}

TEST_F(TextLookup, SeesAnotherLanguageOfTheSameTimeAndSize) {
    for (const wchar_t* name : {kEnglish, kSimplified}) {
        Write(name, name);
        const FileHandle file(
            CreateFileW(Path(name).c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        const FILETIME time{0, 0x01D00000};
        ASSERT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &time));
    }
    ExpectChange();
    EXPECT_EQ(Caption(), kEnglish);
    rig::SetLanguageValue(kLanguage, kSimplified);
    ExpectChange();
    EXPECT_EQ(Caption(), kSimplified);
}

TEST_F(TextLookup, SeesFilesComeAndGo) {
    Write(L"Scale");
    ExpectChange();
    std::filesystem::remove(Path());
    ExpectChange();
    EXPECT_EQ(Caption(), L"default");
    ExpectNoChange();
    Write(L"Scale");
    ExpectChange();
    EXPECT_EQ(Caption(), L"Scale");
}

TEST_F(TextLookup, TriesALockedFileAgain) {
    Write(L"Scale");
    {
        const FileHandle lock(
            CreateFileW(Path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(lock);
        ExpectChange();
        EXPECT_EQ(Caption(), L"default");
        ExpectNoChange();
        ExpectNoChange();
    }
    ExpectChange();
    EXPECT_EQ(Caption(), L"Scale");
    ExpectNoChange();
}

TEST_F(TextLookup, ReadsAFileThatAnotherProgramHasOpen) {
    Write(L"Scale");
    const FileHandle other(CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(other);
    ExpectChange();
    EXPECT_EQ(Caption(), L"Scale");
}

TEST_F(TextLookup, AnythingElseInItsPlaceGivesTheDefaults) {
    std::filesystem::create_directory(Path());
    RefreshLanguageFile();
    EXPECT_EQ(Caption(), L"default");
    std::filesystem::remove(Path());
    rig::WriteBytes(Path(), {});
    ExpectChange();
    EXPECT_EQ(Caption(), L"default");
}

TEST_F(TextLookup, AFileBeyondTheLimitGivesTheDefaults) {
    std::wstring large = L"[LAYOUT]\r\nRC_SCALE=Scale\r\n;";
    large.resize(kMaxLanguageFileSize / sizeof(wchar_t) - 1, L'x');
    rig::WriteUtf16(Path(), large);
    ASSERT_EQ(std::filesystem::file_size(Path()), kMaxLanguageFileSize);
    ExpectChange();
    EXPECT_EQ(Caption(), L"Scale");
    rig::WriteUtf16(Path(), large + L'x');
    ExpectChange();
    EXPECT_EQ(Caption(), L"default");
}

TEST_F(TextLookup, ReadsEveryEncoding) {
    const auto write = [](std::string_view bytes) {
        rig::WriteBytes(Path(), {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    };
    using namespace std::string_view_literals;
    write("[LAYOUT]\nRC_SCALE=ansi\n");
    ExpectChange();
    EXPECT_EQ(Caption(), L"ansi");
    // Whatever the code page makes of the byte, the platform's own conversion makes the same.
    write("[LAYOUT]\nRC_SCALE=\xC4\xE3!\n");
    ExpectChange();
    wchar_t expected[8] = {};
    MultiByteToWideChar(CP_ACP, 0, "\xC4\xE3!", -1, expected, 8);
    EXPECT_EQ(Caption(), expected);
    write("\xFE\xFF\0[\0L\0A\0Y\0O\0U\0T\0]\0\n\0R\0C\0_\0S\0C\0A\0L\0E\0=\x4E\x2D"sv);
    ExpectChange();
    EXPECT_EQ(Caption(), L"\u4E2D");
}

TEST_F(TextLookup, UnusableNamesAreEnglish) {
    Write(L"Scale");
    rig::WriteUtf16(rig::UserFolder().parent_path() / L"outside.res", L"[LAYOUT]\r\nRC_SCALE=outside\r\n");
    ExpectChange();
    for (const std::wstring& name :
         {std::wstring(L"..\\outside.res"), std::wstring(L""), std::wstring(30, L'n'),
          std::wstring(127, L'n'), std::wstring(128, L'n'), std::wstring(5000, L'n')}) {
        rig::SetLanguageValue(kLanguage, name);
        ExpectNoChange();
        EXPECT_EQ(Caption(), L"Scale");
        EXPECT_STREQ(gCurrentLanguageFile, kEnglish);
    }
    rig::RemoveLanguageKey();
    ExpectNoChange();
    EXPECT_EQ(Caption(), L"Scale");
    std::filesystem::remove(rig::UserFolder().parent_path() / L"outside.res");
}

TEST_F(TextLookup, WithoutAUserFolderThereAreTheDefaults) {
    Write(L"Scale");
    ExpectChange();
    const std::wstring folder = gUserFolder;
    gUserFolder[0] = 0;
    ExpectChange();
    EXPECT_EQ(Caption(), L"default");
    EXPECT_STREQ(gLanguageFilePath, L"");
    wcscpy(gUserFolder, folder.c_str());
    ExpectChange();
    EXPECT_EQ(Caption(), L"Scale");
}

TEST_F(TextLookup, AnEmptyTextIsNoDefault) {
    Write(L"");
    ExpectChange();
    EXPECT_EQ(Caption(), L"");
}

TEST_F(TextLookup, CutsWhatIsLonger) {
    Write(L"abcdefghijklmnopqrstuvwxyz1234");
    ExpectChange();
    wchar_t text[21];
    wmemset(text, L'#', 21);
    EXPECT_EQ(LoadText(L"LAYOUT", L"RC_SCALE", L"default", text, 20), 19u);
    EXPECT_STREQ(text, L"abcdefghijklmnopqrs");
    EXPECT_EQ(text[20], L'#');
    EXPECT_EQ(LoadText(L"LAYOUT", L"missing", L"default", text, 4), 3u);
    EXPECT_STREQ(text, L"def");
    EXPECT_EQ(LoadText(L"LAYOUT", L"RC_SCALE", L"default", text, 1), 0u);
    EXPECT_STREQ(text, L"");
    text[0] = L'#';
    EXPECT_EQ(LoadText(L"LAYOUT", L"RC_SCALE", L"default", text, 0), 0u);
    EXPECT_EQ(text[0], L'#');
}

// The platform's profile functions are the judge: random files of the signs that matter, read by both.
TEST_F(TextLookup, AgreesWithTheProfileFunctions) {
    constexpr std::wstring_view kSigns = L"[]]==\r\n\n\n   \taAbBs\"'\"'\x1A\x4E2D\v\0s[]\n";
    constexpr const wchar_t* kPieces[] = {L"\n[s]\n", L"\na=", L"b=\""};
    constexpr const wchar_t* kSections[] = {L"",  L"s", L"a",      L"A",   L"ab",
                                            L"]", L"[", L"\x4E2D", L"a a", L"s "};
    constexpr const wchar_t* kKeys[] = {L"a",      L"b",   L"ab", L"A", L"s",  L"[", L"]",
                                        L"\x4E2D", L"a a", L"[s", L"'", L"\"", L" b"};
    std::srand(20240607);
    const auto below = [](std::size_t bound) { return static_cast<std::size_t>(std::rand()) % bound; };
    int found = 0;
    for (int round = 0; round < 100; ++round) {
        std::wstring text;
        for (std::size_t count = below(90); count != 0; --count) {
            const std::size_t choice = below(24);
            if (choice < std::size(kPieces)) {
                text += kPieces[choice];
            } else {
                text += kSigns[below(kSigns.size())];
            }
        }
        // Another name each time: the platform may remember a file for a moment.
        const std::wstring name = L"random" + std::to_wstring(round) + L".res";
        rig::WriteUtf16(Path(name.c_str()), text);
        rig::SetLanguageValue(kLanguage, name);
        RefreshLanguageFile();
        for (const wchar_t* section : kSections) {
            for (const wchar_t* key : kKeys) {
                wchar_t expected[256];
                GetPrivateProfileStringW(section, key, L"default", expected, 256, Path(name.c_str()).c_str());
                ASSERT_EQ(Text(section, key), expected) << round << " [" << section << "] " << key;
                found += std::wstring_view(expected) != L"default";
            }
        }
    }
    EXPECT_GT(found, 100) << "the files must hold something to agree on";
}

constexpr TextEntry kRows[] = {{kNoControl, L"RC_SCALE", L"default", 128},
                               {kNoControl, L"RC_OTHER", L"other", 128}};

// Takes the place of memory that was given back.
void FillFreedMemory() {
    std::vector<std::wstring> filling;
    for (std::size_t length = 8; length < 64; ++length) {
        filling.insert(filling.end(), 50, std::wstring(length, L'X'));
    }
}

// A sheet on another thread, or the host behind an option's text, may still be showing it.
TEST_F(TextLookup, ATextStaysWhenTheLanguageChanges) {
    const std::wstring first = L"Scale of the page, in per cent";
    const std::wstring second = L"Another text of the same key, and a longer one";
    TextTable table(L"LAYOUT", kRows);
    EXPECT_STREQ(table[0], L"default");
    Write(first);
    RefreshLanguageFile();
    table.LoadIfChanged();
    const wchar_t* const shown = table[0];
    EXPECT_EQ(shown, first);
    EXPECT_STREQ(table[1], L"other");
    Write(second);
    RefreshLanguageFile();
    EXPECT_EQ(table[0], first) << "nothing changes before the load";
    table.LoadIfChanged();
    FillFreedMemory();
    EXPECT_EQ(table[0], second);
    EXPECT_EQ(shown, first);
    // There is one of each, however often the language changes.
    Write(first);
    RefreshLanguageFile();
    table.LoadIfChanged();
    EXPECT_EQ(table[0], shown);
    EXPECT_EQ(KeepText(first), shown);
    EXPECT_TRUE(IsKeptText(shown));
    EXPECT_FALSE(IsKeptText(first.c_str()));
}

// A letter a hundred times, and a number: each is a text of its own.
std::wstring NumberedText(std::size_t number) {
    return std::wstring(100, static_cast<wchar_t>(L'a' + number % 26)) + std::to_wstring(number);
}

bool IsNumberedText(const std::wstring& text) {
    return text.size() > 100 && text == NumberedText(std::wcstoul(text.c_str() + 100, nullptr, 10));
}

// Two printers' sheets, each on a thread of its own: one takes up another language while the other is
// labelled.
TEST_F(TextLookup, ThreadsSeeOneLanguageOrTheOther) {
    Write(NumberedText(0));
    RefreshLanguageFile();
    TextTable table(L"LAYOUT", kRows);
    std::atomic<bool> ends = false;
    std::atomic<int> seen = 0;
    std::atomic<int> broken = 0;
    const auto show = [&] {
        while (!ends) {
            table.LoadIfChanged();
            const std::wstring shown = table[0];
            broken += IsNumberedText(shown) && IsNumberedText(Caption()) ? 0 : 1;
            ++seen;
        }
    };
    std::array<std::thread, 2> sheets = {std::thread(show), std::thread(show)};
    for (std::size_t i = 1; i <= 200 || seen < 200; ++i) {
        // In one call, so that no sheet finds half a file.
        const auto next = Path(L"next.res");
        Write(NumberedText(i), next.filename().c_str());
        MoveFileExW(next.c_str(), Path().c_str(), MOVEFILE_REPLACE_EXISTING);
        RefreshLanguageFile();
    }
    ends = true;
    for (std::thread& sheet : sheets) {
        sheet.join();
    }
    EXPECT_EQ(broken, 0);
}

TEST(KeptTexts, ThreadsGetTheSameTexts) {
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kTexts = 20000;
    std::array<std::vector<const wchar_t*>, kThreads> kept;
    std::vector<std::thread> threads;
    for (std::vector<const wchar_t*>& own : kept) {
        threads.emplace_back([&own] {
            for (std::size_t i = 0; i < kTexts; ++i) {
                own.push_back(KeepText(NumberedText(i)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::vector<const wchar_t*>& own : kept) {
        EXPECT_TRUE(own == kept[0]);
    }
    EXPECT_EQ(kept[0][kTexts - 1], NumberedText(kTexts - 1));
}

}  // namespace
