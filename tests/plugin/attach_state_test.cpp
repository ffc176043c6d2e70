// What the choice of the language leaves for the rest of the plug-in, at the first attach of a process and at
// a later one. The plug-in's own sources are part of this program.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "intrface/win/module.h"
#include "language/language_setup.h"
#include "rig/environment.h"
#include "rig/replaced.h"

// The linker's names for this program's import slots.
extern "C" {
extern decltype(GetSystemDefaultLangID)* __imp_GetSystemDefaultLangID;
extern decltype(RegQueryValueExW)* __imp_RegQueryValueExW;
extern decltype(GetPrivateProfileStringW)* __imp_GetPrivateProfileStringW;
extern decltype(SetCursor)* __imp_SetCursor;
}

namespace {

using rig::Replaced;

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr wchar_t kLanguage[] = L"LANGUAGE_KVMR72";
constexpr wchar_t kFirstRun[] = L"IsFirstRun_KVMR72";
constexpr wchar_t kIndexFile[] = L"LANGUAGE_KVMR72.DAT";
constexpr wchar_t kEnglish[] = L"ENG_KVMR72.res";
constexpr wchar_t kSimplified[] = L"CHN_KVMR72.res";
constexpr wchar_t kTraditional[] = L"CHF_KVMR72.res";

// What an attach asked of the system, and what it is told.
struct Asked {
    WORD system_language = 1033;
    std::vector<std::wstring> values;
    std::vector<std::wstring> profiles;
    std::vector<HCURSOR> cursors;
};
Asked asked;

decltype(RegQueryValueExW)* real_query_value = nullptr;
decltype(GetPrivateProfileStringW)* real_profile_string = nullptr;

LANGID WINAPI SystemLanguageAsked() {
    return asked.system_language;
}

LSTATUS WINAPI ValueAsked(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                          LPDWORD bytes) {
    asked.values.emplace_back(name);
    return real_query_value(key, name, reserved, type, data, bytes);
}

DWORD WINAPI ProfileAsked(LPCWSTR section, LPCWSTR key, LPCWSTR missing, LPWSTR text, DWORD length,
                          LPCWSTR file) {
    asked.profiles.emplace_back(file);
    return real_profile_string(section, key, missing, text, length, file);
}

HCURSOR WINAPI CursorAsked(HCURSOR cursor) {
    asked.cursors.push_back(cursor);
    return nullptr;
}

class AttachState : public ::testing::Test {
  protected:
    void SetUp() override {
        rig::ResetToInstalled();
        gFirstAttach = true;
    }

    static void Attach(WORD system_language) {
        asked = {};
        asked.system_language = system_language;
        real_query_value = __imp_RegQueryValueExW;
        real_profile_string = __imp_GetPrivateProfileStringW;
        const Replaced language(__imp_GetSystemDefaultLangID, &SystemLanguageAsked);
        const Replaced value(__imp_RegQueryValueExW, &ValueAsked);
        const Replaced profile(__imp_GetPrivateProfileStringW, &ProfileAsked);
        const Replaced cursor(__imp_SetCursor, &CursorAsked);
        SetUpLanguage(GetModuleHandleW(nullptr));
    }

    static bool IsUserFile(const wchar_t* name) {
        return std::filesystem::is_regular_file(rig::UserFolder() / name);
    }
};

TEST_F(AttachState, KeepsTheSystemsLanguageAndItsName) {
    const struct {
        WORD identifier;
        std::wstring name;
    } cases[] = {{2052, L"系统语言(System)"}, {1028, L"系統語言(System)"}, {3076, L"系統語言(System)"},
                 {4100, L"系統語言(System)"}, {1033, L"System Language"},  {5124, L"System Language"},
                 {0, L"System Language"}};
    for (const wchar_t* follow : {L"TRUE", L"FALSE"}) {
        rig::SetLanguageValue(kFirstRun, follow);
        for (const auto& [identifier, name] : cases) {
            // Longer than each name: its terminator must be written too.
            std::fill(std::begin(gSystemLanguageName), std::end(gSystemLanguageName), L'x');
            Attach(identifier);
            EXPECT_EQ(gSystemLangId, identifier);
            EXPECT_EQ(std::wstring(gSystemLanguageName, name.size()), name) << identifier;
            EXPECT_EQ(gSystemLanguageName[name.size()], L'\0') << identifier;
        }
    }
}

// Sheets build the path anew; until then look-ups stay with the file that the user had.
TEST_F(AttachState, FollowingTheSystemLeavesThePathOfTheFormerLanguage) {
    rig::SetLanguageValue(kLanguage, kTraditional);
    rig::SetLanguageValue(kFirstRun, L"TRUE");
    Attach(1033);
    EXPECT_EQ(gLanguageFilePath, (rig::UserFolder() / kTraditional).wstring());
    EXPECT_STREQ(gCurrentLanguageFile, kEnglish);
    EXPECT_EQ(rig::LanguageValue(kLanguage), kEnglish);
    EXPECT_TRUE(IsUserFile(kEnglish));
    EXPECT_FALSE(IsUserFile(kTraditional));
}

TEST_F(AttachState, FirstAttachKeepsFolderListAndPath) {
    rig::SetLanguageValue(kLanguage, kTraditional);
    rig::SetLanguageValue(kFirstRun, L"FALSE");
    Attach(2052);
    EXPECT_EQ(gUserFolder, rig::UserFolder().wstring() + L"\\");
    EXPECT_EQ(gLanguageDat, (rig::UserFolder() / kIndexFile).wstring());
    EXPECT_EQ(gLanguageFilePath, (rig::UserFolder() / kTraditional).wstring());
    EXPECT_STREQ(gCurrentLanguageFile, kTraditional);
    EXPECT_FALSE(gFirstAttach);
    EXPECT_THAT(asked.values, ElementsAre(kLanguage, kFirstRun));
}

TEST_F(AttachState, LaterAttachKeepsTheChoiceOfTheFirst) {
    rig::SetLanguageValue(kLanguage, kEnglish);
    rig::SetLanguageValue(kFirstRun, L"FALSE");
    Attach(2052);
    ASSERT_STREQ(gCurrentLanguageFile, kEnglish);
    rig::SetLanguageValue(kLanguage, kTraditional);
    // Were it made again, it would be the real one.
    CopyText(gUserFolder, L"C:\\elsewhere\\");
    Attach(2052);
    EXPECT_THAT(asked.values, ElementsAre(kFirstRun));
    EXPECT_THAT(asked.profiles, IsEmpty());
    EXPECT_STREQ(gUserFolder, L"C:\\elsewhere\\");
    EXPECT_EQ(gLanguageDat, (rig::UserFolder() / kIndexFile).wstring());
    EXPECT_EQ(gLanguageFilePath, (rig::UserFolder() / kEnglish).wstring());
    EXPECT_STREQ(gCurrentLanguageFile, kEnglish);
    EXPECT_EQ(rig::LanguageValue(kLanguage), kTraditional);
    EXPECT_FALSE(gFirstAttach);
}

TEST_F(AttachState, LaterAttachDoesEverythingElseAgain) {
    Attach(1033);
    ASSERT_STREQ(gCurrentLanguageFile, kEnglish);
    // As for a user whose settings were taken away meanwhile.
    rig::RemoveLanguageKey();
    rig::CreateLanguageKey();
    rig::RemoveUserFolder();
    ghInstance = nullptr;
    Attach(2052);
    EXPECT_EQ(ghInstance, GetModuleHandleW(nullptr));
    EXPECT_EQ(rig::LanguageValue(kFirstRun), L"TRUE");
    EXPECT_EQ(gSystemLangId, 2052);
    EXPECT_STREQ(gSystemLanguageName, L"系统语言(System)");
    EXPECT_STREQ(gCurrentLanguageFile, kSimplified);
    EXPECT_EQ(rig::LanguageValue(kLanguage), kSimplified);
    EXPECT_EQ(gLanguageFilePath, (rig::UserFolder() / kEnglish).wstring());
    EXPECT_TRUE(IsUserFile(kSimplified));
    EXPECT_FALSE(IsUserFile(kEnglish));
    EXPECT_THAT(asked.cursors, ElementsAre(LoadCursorW(nullptr, IDC_ARROW)));

    // The list comes before the folder is made again: at the next attach it is there.
    ASSERT_TRUE(std::filesystem::is_directory(rig::UserFolder()));
    EXPECT_FALSE(IsUserFile(kIndexFile));
    Attach(2052);
    EXPECT_TRUE(IsUserFile(kIndexFile));
}

}  // namespace
