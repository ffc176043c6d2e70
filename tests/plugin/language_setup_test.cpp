// What loading the DLL does to the user's language: registry, per-user folder and files, from every state in
// which a machine can be.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "rig/environment.h"
#include "rig/import_hooks.h"
#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Calls = std::vector<std::wstring>;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr wchar_t kLanguage[] = L"LANGUAGE_KVMR72";
constexpr wchar_t kFirstRun[] = L"IsFirstRun_KVMR72";
constexpr wchar_t kIndexFile[] = L"LANGUAGE_KVMR72.DAT";
constexpr wchar_t kEnglish[] = L"ENG_KVMR72.res";
constexpr wchar_t kSimplified[] = L"CHN_KVMR72.res";
constexpr wchar_t kTraditional[] = L"CHF_KVMR72.res";

// Stands between the DLL and the system: writes down the calls that count, and fakes what a test asks for.
class Watch {
  public:
    Watch() {
        WatchRegistry();
        WatchFiles();
        WatchShell();
        hooks_.On("KERNEL32.dll", "GetSystemDefaultLangID", &GetSystemDefaultLangID, [this](auto) {
            Add(L"language");
            return system_language;
        });
        hooks_.On("KERNEL32.dll", "GetSystemInfo", &GetSystemInfo, [this](auto original, SYSTEM_INFO* info) {
            original(info);
            info->wProcessorArchitecture = architecture;
        });
        hooks_.On("USER32.dll", "SetCursor", &SetCursor, [this](auto original, HCURSOR cursor) {
            Add(cursor == LoadCursorW(nullptr, IDC_ARROW) ? L"arrow" : L"another cursor");
            return original(cursor);
        });
    }

    Calls calls;
    WORD system_language = 1033;
    WORD architecture = PROCESSOR_ARCHITECTURE_AMD64;
    LSTATUS create_status = ERROR_SUCCESS;
    LSTATUS set_status = ERROR_SUCCESS;
    // What each opening of the key in turn gives instead of the registry's answer; behind its end, the last.
    std::vector<LSTATUS> open_status;
    // Takes the place of the user's application data.
    std::optional<std::wstring> application_data;
    bool shell_answers = true;
    bool shell_library_missing = false;
    // Files are copied and folders made only in the list of calls.
    bool pretend = false;
    bool copies_fail = false;

    Calls CallsOf(const std::wstring& kind) const {
        Calls found;
        std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                     [&](const std::wstring& call) { return call.starts_with(kind + L" "); });
        return found;
    }

    // How often the DLL has loaded the shell more than it has freed it.
    int shell_libraries = 0;

    // Searches that found something, and those given back.
    int searches_found = 0;
    int searches_closed = 0;

    // The shell has none of these functions.
    void MissShellFunctions(std::vector<std::string> names) {
        missing_functions_ = std::move(names);
        hooks_.On("KERNEL32.dll", "GetProcAddress", &GetProcAddress,
                  [this](auto original, HMODULE module, LPCSTR name) {
                      const bool missing = std::find(missing_functions_.begin(), missing_functions_.end(),
                                                     name) != missing_functions_.end();
                      return missing ? FARPROC{} : original(module, name);
                  });
    }

  private:
    void Add(const std::wstring& call) { calls.push_back(call); }

    void WatchRegistry() {
        hooks_.On("ADVAPI32.dll", "RegOpenKeyExW", &RegOpenKeyExW,
                  [this](auto original, HKEY root, LPCWSTR name, DWORD options, REGSAM access, HKEY* key) {
                      const std::size_t turn = opened_++;
                      EXPECT_EQ(root, HKEY_CURRENT_USER);
                      EXPECT_STREQ(name, L"SOFTWARE\\KESTREL\\LANGUAGE\\");
                      EXPECT_EQ(access, static_cast<REGSAM>(KEY_ALL_ACCESS));
                      LSTATUS status = ERROR_SUCCESS;
                      if (!open_status.empty()) {
                          status = open_status[std::min(turn, open_status.size() - 1)];
                      }
                      if (status == ERROR_SUCCESS) {
                          status = original(root, name, options, access, key);
                      }
                      Add(status == ERROR_SUCCESS ? L"open" : L"open fails");
                      return status;
                  });
        hooks_.On("ADVAPI32.dll", "RegCreateKeyExW", &RegCreateKeyExW,
                  [this](auto original, HKEY root, LPCWSTR name, DWORD reserved, LPWSTR kind, DWORD options,
                         REGSAM access, const LPSECURITY_ATTRIBUTES security, HKEY* key, DWORD* disposition) {
                      EXPECT_EQ(root, HKEY_CURRENT_USER);
                      EXPECT_STREQ(name, L"SOFTWARE\\KESTREL\\LANGUAGE\\");
                      const LSTATUS status = create_status != ERROR_SUCCESS
                                                 ? create_status
                                                 : original(root, name, reserved, kind, options, access,
                                                            security, key, disposition);
                      Add(status == ERROR_SUCCESS ? L"create" : L"create fails");
                      return status;
                  });
        hooks_.On("ADVAPI32.dll", "RegCloseKey", &RegCloseKey, [this](auto original, HKEY key) {
            Add(L"close");
            return original(key);
        });
        hooks_.On("ADVAPI32.dll", "RegQueryValueExW", &RegQueryValueExW,
                  [this](auto original, HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                         DWORD* bytes) {
                      Add(std::wstring(L"get ") + name);
                      const DWORD room = *bytes;
                      const LSTATUS status = original(key, name, reserved, type, data, bytes);
                      if (status == ERROR_SUCCESS && *bytes <= room) {
                          // Nobody promises that text ends where the value ends.
                          std::memset(data + *bytes, 'x', room - *bytes);
                      }
                      return status;
                  });
        hooks_.On(
            "ADVAPI32.dll", "RegSetValueExW", &RegSetValueExW,
            [this](auto original, HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                   DWORD bytes) {
                EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
                const std::wstring text(reinterpret_cast<const wchar_t*>(data));
                Add(std::wstring(L"set ") + name + L"=" + text + L", " + std::to_wstring(bytes) + L" bytes");
                return set_status != ERROR_SUCCESS ? set_status
                                                   : original(key, name, reserved, type, data, bytes);
            });
    }

    void WatchFiles() {
        hooks_.On("KERNEL32.dll", "FindFirstFileW", &FindFirstFileW,
                  [this](auto original, LPCWSTR name, WIN32_FIND_DATAW* found) {
                      Add(std::wstring(L"find ") + name);
                      const HANDLE search = original(name, found);
                      searches_found += search != INVALID_HANDLE_VALUE;
                      return search;
                  });
        hooks_.On("KERNEL32.dll", "FindClose", &FindClose, [this](auto original, HANDLE search) {
            EXPECT_NE(search, INVALID_HANDLE_VALUE);
            const BOOL closed = original(search);
            searches_closed += closed;
            return closed;
        });
        hooks_.On("KERNEL32.dll", "CreateDirectoryW", &CreateDirectoryW,
                  [this](auto original, LPCWSTR name, SECURITY_ATTRIBUTES* security) {
                      Add(std::wstring(L"folder ") + name);
                      return pretend ? TRUE : original(name, security);
                  });
        hooks_.On("KERNEL32.dll", "CopyFileW", &CopyFileW,
                  [this](auto original, LPCWSTR from, LPCWSTR to, BOOL keep) {
                      EXPECT_FALSE(keep) << "an old copy must not stop the new one";
                      Add(std::wstring(L"copy ") + from + L" to " + to);
                      if (copies_fail) {
                          SetLastError(ERROR_ACCESS_DENIED);
                          return FALSE;
                      }
                      return pretend ? TRUE : original(from, to, keep);
                  });
        hooks_.On("KERNEL32.dll", "GetPrivateProfileStringW", &GetPrivateProfileStringW,
                  [this](auto original, LPCWSTR section, LPCWSTR key, LPCWSTR missing, LPWSTR text,
                         DWORD length, LPCWSTR file) {
                      Add(std::wstring(L"profile ") + section + L"/" + key + L" of " + file);
                      return original(section, key, missing, text, length, file);
                  });
    }

    void WatchShell() {
        hooks_.On("SHELL32.dll", "SHGetSpecialFolderPathW", &SHGetSpecialFolderPathW,
                  [this](auto original, HWND owner, LPWSTR path, int folder, BOOL create) {
                      EXPECT_EQ(folder, 26);
                      EXPECT_FALSE(create);
                      Add(L"application data");
                      if (!shell_answers) {
                          wcscpy(path, L"C:\\half an answer");
                          return FALSE;
                      }
                      if (application_data) {
                          wcscpy(path, application_data->c_str());
                          return TRUE;
                      }
                      return original(owner, path, folder, create);
                  });
        hooks_.On("KERNEL32.dll", "LoadLibraryW", &LoadLibraryW,
                  [this](auto original, LPCWSTR name) -> HMODULE {
                      if (_wcsicmp(name, L"shell32.dll")) {
                          return original(name);
                      }
                      EXPECT_STREQ(name, L"Shell32.dll");
                      const HMODULE module = shell_library_missing ? nullptr : original(name);
                      shell_libraries += module != nullptr;
                      shell_ = module;
                      return module;
                  });
        hooks_.On("KERNEL32.dll", "FreeLibrary", &FreeLibrary, [this](auto original, HMODULE module) {
            shell_libraries -= module == shell_;
            return original(module);
        });
    }

    rig::ImportHooks hooks_;
    std::size_t opened_ = 0;
    HMODULE shell_ = nullptr;
    std::vector<std::string> missing_functions_;
};

class LanguageSetUp : public ::testing::Test {
  protected:
    void SetUp() override { rig::ResetToInstalled(); }

    static void Load() {
        rig::PluginDll dll;
        ASSERT_NE(dll.module(), nullptr);
    }

    static std::optional<Bytes> UserFile(const wchar_t* name) {
        return rig::ReadBytes(rig::UserFolder() / name);
    }
    static std::optional<Bytes> DriverFile(const wchar_t* name) {
        return rig::ReadBytes(rig::DriverFolder() / name);
    }

    static void WriteUserFile(const wchar_t* name, const std::wstring& text) {
        std::filesystem::create_directories(rig::UserFolder());
        rig::WriteUtf16(rig::UserFolder() / name, text);
    }

    static void SetDriverVersion(const wchar_t* name, int version) {
        rig::WriteUtf16(rig::DriverFolder() / name,
                        L"[FILEVER]\r\nINIVERSION=" + std::to_wstring(version) + L"\r\n[X]\r\nof=driver\r\n");
    }

    static std::wstring UserVersion(int version) {
        return L"[FILEVER]\r\nINIVERSION=" + std::to_wstring(version) + L"\r\n[X]\r\nof=user\r\n";
    }

    static std::vector<std::wstring> UserFiles() {
        std::vector<std::wstring> names;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(rig::UserFolder(), error)) {
            names.push_back(entry.path().filename().wstring());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(LanguageSetUp, MakesEverythingOnAFreshEnglishSystem) {
    Watch watch;
    Load();
    EXPECT_EQ(rig::LanguageValue(kLanguage), kEnglish);
    EXPECT_EQ(rig::LanguageValue(kFirstRun), L"TRUE");
    EXPECT_THAT(UserFiles(), ElementsAre(kEnglish, kIndexFile));
    EXPECT_EQ(UserFile(kEnglish), DriverFile(kEnglish));
    EXPECT_EQ(UserFile(kIndexFile), DriverFile(kIndexFile));
}

TEST_F(LanguageSetUp, GoesStepByStepOnAFreshSystem) {
    const std::wstring folder = rig::UserFolder().wstring();
    const std::wstring driver = rig::DriverFolder().wstring();
    Watch watch;
    watch.system_language = 2052;
    Load();
    EXPECT_THAT(
        watch.calls,
        ElementsAre(L"application data", L"find " + folder, L"folder " + folder, L"open fails", L"create",
                    L"close", L"open", L"profile LANGUAGE/CUR_INI of " + folder + L"\\LANGUAGE_KVMR72.DAT",
                    L"set LANGUAGE_KVMR72=ENG_KVMR72.res, 29 bytes", L"get IsFirstRun_KVMR72",
                    L"set IsFirstRun_KVMR72=TRUE, 9 bytes", L"language",
                    L"set LANGUAGE_KVMR72=CHN_KVMR72.res, 29 bytes", L"close",
                    L"copy " + driver + L"\\LANGUAGE_KVMR72.DAT to " + folder + L"\\LANGUAGE_KVMR72.DAT",
                    L"application data", L"find " + folder,
                    L"copy " + driver + L"\\CHN_KVMR72.res to " + folder + L"\\CHN_KVMR72.res", L"arrow"));
}

TEST_F(LanguageSetUp, GoesStepByStepTheSecondTime) {
    const std::wstring folder = rig::UserFolder().wstring();
    const std::wstring driver = rig::DriverFolder().wstring();
    Load();
    rig::SetLanguageValue(kFirstRun, L"FALSE");
    rig::SetLanguageValue(kLanguage, kTraditional);
    Watch watch;
    Load();
    EXPECT_THAT(
        watch.calls,
        ElementsAre(L"application data", L"find " + folder, L"open", L"get LANGUAGE_KVMR72",
                    L"get IsFirstRun_KVMR72", L"language", L"close", L"application data", L"find " + folder,
                    L"copy " + driver + L"\\CHF_KVMR72.res to " + folder + L"\\CHF_KVMR72.res", L"arrow"));
}

TEST_F(LanguageSetUp, TakesTheListsLanguageWhenItMakesTheKey) {
    WriteUserFile(kIndexFile, L"[LANGUAGE]\r\nCUR_INI=CHF_KVMR72.res\r\n");
    Watch watch;
    Load();
    EXPECT_THAT(watch.CallsOf(L"set"), ElementsAre(L"set LANGUAGE_KVMR72=CHF_KVMR72.res, 29 bytes",
                                                   L"set IsFirstRun_KVMR72=TRUE, 9 bytes",
                                                   L"set LANGUAGE_KVMR72=ENG_KVMR72.res, 29 bytes"));
}

TEST_F(LanguageSetUp, CutsAListsLanguageToTheRoomOfItsName) {
    // 30 units with the terminator.
    for (const std::size_t length : {29u, 30u, 40u}) {
        rig::RemoveLanguageKey();
        std::wstring name;
        while (name.size() < length) {
            name.push_back(static_cast<wchar_t>(L'a' + name.size() % 26));
        }
        WriteUserFile(kIndexFile, L"[LANGUAGE]\r\nCUR_INI=" + name + L"\r\n");
        Watch watch;
        Load();
        EXPECT_EQ(watch.CallsOf(L"set").at(0), L"set LANGUAGE_KVMR72=abcdefghijklmnopqrstuvwxyzabc, 59 bytes")
            << length;
    }
}

TEST_F(LanguageSetUp, GivesBackEverySearch) {
    {
        // The folder is made, and then found.
        Watch watch;
        Load();
        EXPECT_EQ(watch.searches_found, 1);
        EXPECT_EQ(watch.searches_closed, 1);
    }
    Watch watch;
    Load();
    EXPECT_EQ(watch.searches_found, 2);
    EXPECT_EQ(watch.searches_closed, 2);
}

TEST_F(LanguageSetUp, RefusesAListThatLeadsElsewhere) {
    for (const wchar_t* name : {L"..\\..\\x.res", L"C:\\x.res", L""}) {
        rig::RemoveLanguageKey();
        WriteUserFile(kIndexFile, std::wstring(L"[LANGUAGE]\r\nCUR_INI=") + name + L"\r\n");
        Watch watch;
        watch.system_language = 2052;
        Load();
        EXPECT_EQ(watch.CallsOf(L"set").at(0), L"set LANGUAGE_KVMR72=ENG_KVMR72.res, 29 bytes") << name;
    }
}

TEST_F(LanguageSetUp, LeavesAListThatIsThere) {
    WriteUserFile(kIndexFile, L"[FILEVER]\r\nINIVERSION=0\r\n");
    const auto before = UserFile(kIndexFile);
    Load();
    EXPECT_EQ(UserFile(kIndexFile), before);
}

TEST_F(LanguageSetUp, AKeyWithoutValuesFollowsTheSystem) {
    rig::CreateLanguageKey();
    WriteUserFile(kIndexFile, L"[LANGUAGE]\r\nCUR_INI=CHF_KVMR72.res\r\n");
    Watch watch;
    watch.system_language = 2052;
    Load();
    EXPECT_THAT(watch.CallsOf(L"profile"), IsEmpty()) << "the list counts only when the key had to be made";
    EXPECT_EQ(rig::LanguageValue(kFirstRun), L"TRUE");
    EXPECT_EQ(rig::LanguageValue(kLanguage), kSimplified);
    EXPECT_EQ(UserFile(kSimplified), DriverFile(kSimplified));
}

TEST_F(LanguageSetUp, AKeyWithoutItsLanguageIsEnglish) {
    rig::SetLanguageValue(kFirstRun, L"FALSE");
    Watch watch;
    watch.system_language = 2052;
    Load();
    EXPECT_EQ(rig::LanguageValue(kLanguage), std::nullopt);
    EXPECT_THAT(UserFiles(), ElementsAre(kEnglish, kIndexFile));
}

struct SystemCase {
    WORD identifier;
    const wchar_t* file;
};

class LanguageOfTheSystem : public LanguageSetUp, public ::testing::WithParamInterface<SystemCase> {};

TEST_P(LanguageOfTheSystem, IsTakenWhileItIsFollowed) {
    rig::SetLanguageValue(kLanguage, L"OLD.res");
    rig::SetLanguageValue(kFirstRun, L"TRUE");
    Watch watch;
    watch.system_language = GetParam().identifier;
    Load();
    EXPECT_EQ(rig::LanguageValue(kLanguage), GetParam().file);
    EXPECT_EQ(rig::LanguageValue(kFirstRun), L"TRUE");
    std::vector<std::wstring> files{GetParam().file, kIndexFile};
    EXPECT_EQ(UserFiles(), files);
    EXPECT_EQ(UserFile(GetParam().file), DriverFile(GetParam().file));
}

TEST_P(LanguageOfTheSystem, IsTakenFromAnyValueThatHoldsTrue) {
    rig::SetLanguageValue(kFirstRun, L"untrue: xTRUEx");
    Watch watch;
    watch.system_language = GetParam().identifier;
    Load();
    EXPECT_EQ(rig::LanguageValue(kLanguage), GetParam().file);
    EXPECT_EQ(rig::LanguageValue(kFirstRun), L"untrue: xTRUEx");
}

TEST_P(LanguageOfTheSystem, IsIgnoredOnceTheUserHasChosen) {
    for (const wchar_t* chosen : {kEnglish, kSimplified, kTraditional}) {
        rig::RemoveUserFolder();
        rig::SetLanguageValue(kLanguage, chosen);
        rig::SetLanguageValue(kFirstRun, L"FALSE");
        Watch watch;
        watch.system_language = GetParam().identifier;
        Load();
        EXPECT_THAT(watch.CallsOf(L"set"), IsEmpty());
        EXPECT_EQ(UserFile(chosen), DriverFile(chosen));
        EXPECT_EQ(UserFiles().size(), 2u);
    }
}

INSTANTIATE_TEST_SUITE_P(Systems, LanguageOfTheSystem,
                         ::testing::Values(SystemCase{1033, kEnglish}, SystemCase{2052, kSimplified},
                                           SystemCase{1028, kTraditional}, SystemCase{3076, kTraditional},
                                           SystemCase{4100, kTraditional}, SystemCase{5124, kEnglish}));

struct VersionCase {
    const char* name;
    std::wstring user;
    int driver;  // -1: without a version, -2: no file
    bool replaced;
};

class LanguageFileVersions : public LanguageSetUp, public ::testing::WithParamInterface<VersionCase> {};

TEST_P(LanguageFileVersions, DecideWhichCopyStays) {
    WriteUserFile(kEnglish, GetParam().user);
    if (GetParam().driver >= 0) {
        SetDriverVersion(kEnglish, GetParam().driver);
    } else if (GetParam().driver == -1) {
        rig::WriteUtf16(rig::DriverFolder() / kEnglish, L"[X]\r\nof=driver\r\n");
    } else {
        rig::RemoveLanguageFiles();
    }
    const auto before = UserFile(kEnglish);
    Watch watch;
    Load();
    EXPECT_EQ(UserFile(kEnglish), GetParam().replaced ? DriverFile(kEnglish) : before);
}

INSTANTIATE_TEST_SUITE_P(
    Copies, LanguageFileVersions,
    ::testing::Values(VersionCase{"Older", L"[FILEVER]\nINIVERSION=6\n", 7, true},
                      VersionCase{"Equal", L"[FILEVER]\nINIVERSION=7\n", 7, true},
                      VersionCase{"Newer", L"[FILEVER]\nINIVERSION=8\n", 7, false},
                      VersionCase{"WithoutVersion", L"[X]\nINIVERSION=8\n", 0, true},
                      VersionCase{"Empty", L"", 0, true},
                      VersionCase{"DriverWithoutVersion", L"[FILEVER]\nINIVERSION=99999\n", -1, true},
                      VersionCase{"NewerThanAnyDriver", L"[FILEVER]\nINIVERSION=100000\n", -1, false},
                      VersionCase{"NoDriverFile", L"[FILEVER]\nINIVERSION=1\n", -2, false}),
    [](const auto& version) { return version.param.name; });

TEST_F(LanguageSetUp, LeavesAReadOnlyCopy) {
    WriteUserFile(kEnglish, UserVersion(0));
    const auto before = UserFile(kEnglish);
    const std::wstring path = (rig::UserFolder() / kEnglish).wstring();
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    // An administrator's copy could succeed.
    Watch watch;
    watch.copies_fail = true;
    Load();
    EXPECT_EQ(watch.CallsOf(L"copy").size(), 2u);
    EXPECT_EQ(UserFile(kEnglish), before);
    EXPECT_TRUE(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_THAT(UserFiles(), ElementsAre(kEnglish));
}

TEST_F(LanguageSetUp, CopiesReadOnlyDriverFilesAgainAndAgain) {
    for (const wchar_t* name : {kEnglish, kIndexFile}) {
        SetFileAttributesW((rig::DriverFolder() / name).c_str(), FILE_ATTRIBUTE_READONLY);
    }
    Watch watch;
    Load();
    Load();
    EXPECT_EQ(UserFile(kEnglish), DriverFile(kEnglish));
    EXPECT_EQ(UserFile(kIndexFile), DriverFile(kIndexFile));
}

TEST_F(LanguageSetUp, LoadsWithoutDriverFiles) {
    rig::RemoveLanguageFiles();
    Watch watch;
    watch.system_language = 2052;
    Load();
    EXPECT_THAT(UserFiles(), IsEmpty());
    EXPECT_TRUE(std::filesystem::is_directory(rig::UserFolder()));
    EXPECT_EQ(rig::LanguageValue(kLanguage), kSimplified);
}

TEST_F(LanguageSetUp, LoadsWithFoldersAndFilesInEachOthersPlace) {
    std::filesystem::create_directories(rig::UserFolder() / kEnglish);
    std::filesystem::create_directories(rig::UserFolder() / kIndexFile);
    Watch watch;
    Load();
    EXPECT_TRUE(std::filesystem::is_directory(rig::UserFolder() / kEnglish));
    rig::RemoveUserFolder();
    rig::WriteUtf16(rig::UserFolder(), L"a file");
    Load();
    EXPECT_TRUE(std::filesystem::is_regular_file(rig::UserFolder()));
    std::filesystem::remove(rig::UserFolder());
}

TEST_F(LanguageSetUp, UnusableLanguagesAreEnglish) {
    const std::wstring names[] = {L"",
                                  L"..\\x.res",
                                  L"C:\\windows\\win.ini",
                                  L"sub/x.res",
                                  L"x.res:stream",
                                  L"..",
                                  std::wstring(30, L'n'),
                                  std::wstring(127, L'n'),
                                  std::wstring(128, L'n'),
                                  std::wstring(20000, L'n')};
    for (const std::wstring& name : names) {
        rig::RemoveUserFolder();
        rig::SetLanguageValue(kLanguage, name);
        rig::SetLanguageValue(kFirstRun, L"FALSE");
        Watch watch;
        watch.system_language = 2052;
        Load();
        EXPECT_THAT(UserFiles(), ElementsAre(kEnglish, kIndexFile)) << name;
        EXPECT_EQ(watch.CallsOf(L"copy").size(), 2u) << name;
        EXPECT_EQ(rig::LanguageValue(kLanguage), name);
    }
}

TEST_F(LanguageSetUp, TheLongestUsableLanguageIsTaken) {
    const std::wstring name(29, L'n');
    SetDriverVersion(name.c_str(), 1);
    rig::SetLanguageValue(kLanguage, name);
    rig::SetLanguageValue(kFirstRun, L"FALSE");
    Load();
    EXPECT_EQ(UserFile(name.c_str()), DriverFile(name.c_str()));
    EXPECT_NE(UserFile(name.c_str()), std::nullopt);
    std::filesystem::remove(rig::DriverFolder() / name);
}

TEST_F(LanguageSetUp, ValuesNeedNoTerminatorAndNoWholeUnits) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(kTraditional);
    // All units, and the half terminator that the driver itself counts.
    for (const std::size_t count : {28u, 29u}) {
        rig::RemoveUserFolder();
        rig::SetLanguageValueBytes(kLanguage, REG_SZ, std::span(bytes, count));
        rig::SetLanguageValue(kFirstRun, L"FALSE");
        Watch watch;
        Load();
        EXPECT_THAT(UserFiles(), ElementsAre(kTraditional, kIndexFile)) << count;
    }
}

TEST_F(LanguageSetUp, ValuesOfAnotherTypeAreMissing) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(kTraditional);
    rig::SetLanguageValueBytes(kLanguage, REG_BINARY, std::span(bytes, sizeof kTraditional));
    rig::SetLanguageValueBytes(kFirstRun, REG_DWORD, Bytes{0, 0, 0, 0});
    Watch watch;
    watch.system_language = 1028;
    Load();
    EXPECT_EQ(rig::LanguageValue(kFirstRun), L"TRUE");
    EXPECT_EQ(rig::LanguageValue(kLanguage), kTraditional);
}

TEST_F(LanguageSetUp, AKeyThatCannotBeOpenedLeavesTheSystemsLanguage) {
    rig::SetLanguageValue(kLanguage, kTraditional);
    Watch watch;
    watch.open_status = {ERROR_ACCESS_DENIED};
    watch.system_language = 2052;
    Load();
    EXPECT_THAT(watch.CallsOf(L"open"), ElementsAre(L"open fails", L"open fails"));
    EXPECT_THAT(watch.calls, Contains(L"create"));
    EXPECT_THAT(watch.CallsOf(L"set"), IsEmpty());
    EXPECT_THAT(watch.CallsOf(L"profile"), IsEmpty());
    EXPECT_THAT(UserFiles(), ElementsAre(kSimplified, kIndexFile));
    EXPECT_EQ(rig::LanguageValue(kLanguage), kTraditional);
}

TEST_F(LanguageSetUp, AKeyThatOpensTheSecondTimeIsFilled) {
    rig::SetLanguageValue(kLanguage, kTraditional);
    Watch watch;
    watch.open_status = {ERROR_BUSY, ERROR_SUCCESS};
    Load();
    EXPECT_EQ(rig::LanguageValue(kLanguage), kEnglish);
    EXPECT_EQ(std::count(watch.calls.begin(), watch.calls.end(), L"close"), 2)
        << "the created and the opened key";
}

TEST_F(LanguageSetUp, AKeyThatCannotBeMadeIsTriedAgainAndLeft) {
    Watch watch;
    watch.create_status = ERROR_ACCESS_DENIED;
    Load();
    EXPECT_EQ(Calls(watch.calls.begin() + 3, watch.calls.begin() + 7),
              (Calls{L"open fails", L"create fails", L"open fails", L"language"}));
    EXPECT_FALSE(rig::LanguageKeyExists());
    EXPECT_THAT(watch.calls, Not(Contains(L"close")));
    EXPECT_THAT(UserFiles(), ElementsAre(kEnglish, kIndexFile));
}

TEST_F(LanguageSetUp, ValuesThatCannotBeStoredChangeNothingElse) {
    Watch watch;
    watch.set_status = ERROR_ACCESS_DENIED;
    watch.system_language = 4100;
    Load();
    EXPECT_EQ(rig::LanguageValue(kLanguage), std::nullopt);
    EXPECT_THAT(UserFiles(), ElementsAre(kTraditional, kIndexFile));
}

struct ProcessorCase {
    WORD architecture;
    const wchar_t* folder;
};

TEST_F(LanguageSetUp, TheProcessorChoosesTheDriverDirectory) {
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    for (const ProcessorCase& processor :
         {ProcessorCase{PROCESSOR_ARCHITECTURE_AMD64, L"x64"},
          ProcessorCase{PROCESSOR_ARCHITECTURE_IA64, L"x64"},
          ProcessorCase{PROCESSOR_ARCHITECTURE_INTEL, L"w32x86"}, ProcessorCase{12, L"w32x86"}}) {
        Watch watch;
        watch.pretend = true;
        watch.architecture = processor.architecture;
        Load();
        const std::wstring folder =
            std::wstring(windows) + L"\\system32\\spool\\drivers\\" + processor.folder + L"\\3\\";
        const std::wstring user = rig::UserFolder().wstring() + L"\\";
        EXPECT_THAT(watch.CallsOf(L"copy"),
                    ElementsAre(L"copy " + folder + kIndexFile + L" to " + user + kIndexFile,
                                L"copy " + folder + kEnglish + L" to " + user + kEnglish))
            << processor.architecture;
    }
}

// The folder's name takes 8 units, the list's 19 and the language's 14; a path has room for 259.
TEST_F(LanguageSetUp, WhatDoesNotFitIsLeftOut) {
    struct Case {
        std::size_t length;
        std::size_t folders;
        std::size_t copies;
    };
    for (const Case& one : {Case{232, 2, 2}, Case{233, 2, 1}, Case{237, 2, 1}, Case{238, 2, 0},
                            Case{251, 2, 0}, Case{252, 0, 0}, Case{259, 0, 0}}) {
        rig::RemoveLanguageKey();
        Watch watch;
        watch.pretend = true;
        watch.application_data = L"C:\\" + std::wstring(one.length - 3, L'a');
        Load();
        const std::wstring folder = *watch.application_data + L"\\Pavane";
        EXPECT_EQ(watch.CallsOf(L"find"), Calls(one.folders, L"find " + folder)) << one.length;
        EXPECT_EQ(watch.CallsOf(L"folder"), Calls(one.folders, L"folder " + folder)) << one.length;
        const Calls copies = watch.CallsOf(L"copy");
        ASSERT_EQ(copies.size(), one.copies) << one.length;
        if (one.copies) {
            EXPECT_THAT(copies.back(), ::testing::EndsWith(L" to " + folder + L"\\" + kEnglish));
        }
        EXPECT_EQ(watch.CallsOf(L"profile").size(), one.length <= 232 ? 1u : 0u) << one.length;
        EXPECT_EQ(rig::LanguageValue(kLanguage), kEnglish);
        EXPECT_EQ(rig::LanguageValue(kFirstRun), L"TRUE");
    }
}

TEST_F(LanguageSetUp, WithoutTheShellsAnswerTheFolderIsAtTheDrivesRoot) {
    Watch watch;
    watch.pretend = true;
    watch.shell_answers = false;
    Load();
    EXPECT_THAT(watch.CallsOf(L"find"), ElementsAre(L"find \\Pavane", L"find \\Pavane"));
    EXPECT_THAT(watch.CallsOf(L"folder"), ElementsAre(L"folder \\Pavane", L"folder \\Pavane"));
    EXPECT_THAT(watch.CallsOf(L"copy").back(), ::testing::EndsWith(L" to \\Pavane\\ENG_KVMR72.res"));
}

TEST_F(LanguageSetUp, EachMissingShellFunctionIsTraced) {
    struct Case {
        std::vector<std::string> missing;
        rig::Lines lines;
        std::size_t folders;
    };
    const std::wstring attach = L"UI:  Process attach.\r\n";
    const std::wstring folder = L"UI:  SHGetSpecialFolderPathFunc failed.\r\n";
    const std::wstring browse = L"UI:  SHBrowseForFolderFunc failed.\r\n";
    const std::wstring list = L"UI:  SHGetPathFromIDListFunc failed.\r\n";
    const Case cases[] = {
        {{}, {attach}, 0},
        {{"SHGetSpecialFolderPathW"}, {folder, attach}, 2},
        {{"SHBrowseForFolderW"}, {browse, attach}, 0},
        {{"SHGetPathFromIDListW"}, {list, attach}, 0},
        {{"SHGetPathFromIDListW", "SHBrowseForFolderW", "SHGetSpecialFolderPathW"},
         {folder, browse, list, attach},
         2},
    };
    for (const Case& one : cases) {
        Watch watch;
        watch.pretend = true;
        watch.MissShellFunctions(one.missing);
        rig::TraceCapture trace;
        rig::PluginDll dll;
        EXPECT_EQ(trace.Take(), one.lines);
        EXPECT_EQ(std::count(watch.calls.begin(), watch.calls.end(), L"find \\Pavane"),
                  static_cast<std::ptrdiff_t>(one.folders));
        EXPECT_EQ(watch.shell_libraries, 1);
        EXPECT_TRUE(dll.Unload());
        EXPECT_EQ(watch.shell_libraries, 0) << "given back when the DLL leaves";
    }
}

TEST_F(LanguageSetUp, AMissingShellIsTraced) {
    Watch watch;
    watch.pretend = true;
    watch.shell_library_missing = true;
    rig::TraceCapture trace;
    rig::PluginDll dll;
    EXPECT_EQ(trace.Take(), (rig::Lines{L"UI:  LoadLibraryW failed.\r\n", L"UI:  Process attach.\r\n"}));
    EXPECT_THAT(watch.CallsOf(L"find"), ElementsAre(L"find \\Pavane", L"find \\Pavane"));
    EXPECT_TRUE(dll.Unload());
    EXPECT_EQ(watch.shell_libraries, 0);
}

TEST_F(LanguageSetUp, LoadsWithAnyFileInPlaceOfTheUsers) {
    Bytes noise(300000);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : noise) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    for (const bool marked : {false, true}) {
        if (marked) {
            noise[0] = 0xFF;
            noise[1] = 0xFE;
        }
        WriteUserFile(kEnglish, L"");
        rig::WriteBytes(rig::UserFolder() / kEnglish, noise);
        rig::WriteBytes(rig::UserFolder() / kIndexFile, noise);
        Load();
        EXPECT_EQ(UserFile(kEnglish), DriverFile(kEnglish)) << "noise has no version";
        EXPECT_EQ(UserFile(kIndexFile), noise);
    }
}

}  // namespace
