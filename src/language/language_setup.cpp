#include "language/language_setup.h"

#include <shlobj.h>

#include <algorithm>

#include "intrface/win/handles.h"
#include "intrface/win/module.h"
#include "intrface/win/shell_functions.h"
#include "language/language_reader.h"
#include "language/registry_choice.h"

HINSTANCE ghInstance = nullptr;

wchar_t gUserFolder[kPathLength];
wchar_t gLanguageDat[kPathLength];
wchar_t gCurrentLanguageFile[kLanguageNameLength];
wchar_t gLanguageFilePath[kPathLength];
WORD gSystemLangId = 0;
wchar_t gSystemLanguageName[kLanguageNameLength];
bool gFirstAttach = true;

namespace {

// A driver without a version always replaces, a user's copy without one is always replaced.
constexpr int kDriverVersionDefault = 99999;
constexpr int kUserVersionDefault = 0;

bool Exists(const wchar_t* path) noexcept {
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

bool IsTooLarge(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA file;
    return GetFileAttributesExW(path, GetFileExInfoStandard, &file) &&
           (file.nFileSizeHigh != 0 || file.nFileSizeLow > kMaxLanguageFileSize);
}

void ChooseLanguageFile(StringView16 name) noexcept {
    CopyText(gCurrentLanguageFile, UsableLanguageName(name));
}

// Reads the stored choice. A key that had to be made takes the choice of the list of languages.
RegistryKey ReadChoice() noexcept {
    RegistryKey key = OpenLanguageKey();
    if (key) {
        wchar_t name[kLanguageValueLength];
        ReadLanguageValue(key, kLanguageValue, name);
        ChooseLanguageFile(name);
        return key;
    }
    CreateLanguageKey();
    key = OpenLanguageKey();
    ChooseLanguageFile(kEnglishFile);
    if (key) {
        // Without a path the profile functions would look into a file of another folder.
        if (gLanguageDat[0]) {
            wchar_t name[kLanguageNameLength];
            GetPrivateProfileStringW(L"LANGUAGE", L"CUR_INI", kEnglishFile.data(), name,
                                     static_cast<DWORD>(kLanguageNameLength), gLanguageDat);
            ChooseLanguageFile(name);
        }
        WriteLanguageValue(key, kLanguageValue, gCurrentLanguageFile);
    }
    return key;
}

void FollowSystem(const RegistryKey& key) noexcept {
    wchar_t isFirstRun[kLanguageValueLength];
    if (!ReadLanguageValue(key, kFirstRunValue, isFirstRun)) {
        CopyText(isFirstRun, L"TRUE");
        WriteLanguageValue(key, kFirstRunValue, isFirstRun);
    }
    gSystemLangId = GetSystemDefaultLangID();
    const SystemLanguage language = LanguageOfSystem(gSystemLangId);
    CopyText(gSystemLanguageName, language.label);
    if (FollowsSystem(isFirstRun)) {
        CopyText(gCurrentLanguageFile, language.file);
        WriteLanguageValue(key, kLanguageValue, gCurrentLanguageFile);
    }
}

bool DriverFile(wchar_t (&path)[kPathLength], StringView16 name) noexcept {
    wchar_t folder[kPathLength];
    return DriverDirectory(folder) && JoinText(path, {folder, name});
}

void CopyLanguageList() noexcept {
    wchar_t driverFile[kPathLength];
    if (gLanguageDat[0] && !Exists(gLanguageDat) && DriverFile(driverFile, kLanguageListFile)) {
        CopyFileW(driverFile, gLanguageDat, FALSE);
    }
}

void CopyLanguageFile(StringView16 name) noexcept {
    wchar_t folder[kPathLength];
    wchar_t userFile[kPathLength];
    wchar_t driverFile[kPathLength];
    if (MakeUserFolder(folder) && JoinText(userFile, {folder, name}) && DriverFile(driverFile, name)) {
        CopyIfNotNewer(driverFile, userFile);
    }
}

}  // namespace

void SetUpLanguage(HINSTANCE module) noexcept {
    RegistryKey key;
    if (gFirstAttach) {
        if (MakeUserFolder(gUserFolder)) {
            JoinText(gLanguageDat, {gUserFolder, kLanguageListFile});
        }
        key = ReadChoice();
        RebuildLanguageFilePath();
        gFirstAttach = false;
    } else {
        key = OpenLanguageKey();
    }
    ghInstance = module;
    FollowSystem(key);
    key.Reset();
    CopyLanguageList();
    CopyLanguageFile(gCurrentLanguageFile);
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
}

std::vector<LanguageEntry> UpdateLanguages() {
    wchar_t driverFile[kPathLength];
    if (gLanguageDat[0] && DriverFile(driverFile, kLanguageListFile)) {
        CopyIfNotNewer(driverFile, gLanguageDat);
    }
    std::vector<LanguageEntry> languages =
        ReadLanguageList(ReadLanguageFile(gLanguageDat).value_or(LanguageFile()));
    for (auto entry = languages.begin(); entry != languages.end(); ++entry) {
        const auto isSame = [&](const LanguageEntry& other) { return other.file == entry->file; };
        if (UsableLanguageName(entry->file) == StringView16(entry->file) &&
            std::none_of(languages.begin(), entry, isSame)) {
            CopyLanguageFile(entry->file);
        }
    }
    return languages;
}

void RebuildLanguageFilePath() noexcept {
    if (gUserFolder[0]) {
        JoinText(gLanguageFilePath, {gUserFolder, gCurrentLanguageFile});
    } else {
        gLanguageFilePath[0] = 0;
    }
}

bool MakeUserFolder(wchar_t (&folder)[kPathLength]) noexcept {
    // Where the shell does not answer, the folder lies at the root of the current drive.
    wchar_t applicationData[kPathLength];
    SpecialFolderPath(CSIDL_APPDATA, applicationData);
    if (!JoinText(folder, {applicationData, L"\\Pavane\\"})) {
        return false;
    }
    const std::size_t end = FieldText(folder).size() - 1;
    folder[end] = 0;
    WIN32_FIND_DATAW found;
    if (!FileSearch(FindFirstFileW(folder, &found))) {
        CreateDirectoryW(folder, nullptr);
    }
    folder[end] = L'\\';
    return true;
}

bool Is64BitSystem() noexcept {
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    return system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64 ||
           system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_IA64;
}

bool DriverDirectory(wchar_t (&folder)[kPathLength]) noexcept {
    wchar_t windows[kPathLength];
    const UINT length = GetWindowsDirectoryW(windows, static_cast<UINT>(kPathLength));
    if (length == 0 || length >= kPathLength) {
        folder[0] = 0;
        return false;
    }
    return JoinText(folder, {windows, Is64BitSystem() ? L"\\system32\\spool\\drivers\\x64\\3\\"
                                                      : L"\\system32\\spool\\drivers\\w32x86\\3\\"});
}

void CopyIfNotNewer(const wchar_t* driverFile, const wchar_t* userFile) noexcept {
    // Without the driver's file there is nothing to compare: the copy fails by itself.
    if (Exists(userFile) && Exists(driverFile)) {
        // The profile functions read a file whole, of any size.
        const auto version = [](const wchar_t* file, int missing) {
            return IsTooLarge(file)
                       ? missing
                       : static_cast<int>(GetPrivateProfileIntW(L"FILEVER", L"INIVERSION", missing, file));
        };
        const int driverVersion = version(driverFile, kDriverVersionDefault);
        if (!ReplacesUserCopy(driverVersion, version(userFile, kUserVersionDefault))) {
            return;
        }
    }
    CopyFileW(driverFile, userFile, FALSE);
}
