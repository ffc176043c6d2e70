// The choice of language when the DLL is attached to a process: the per-user folder, the current language
// file, the user's copies of it and of the list of languages.
#pragma once

#include <windows.h>

#include <vector>

#include "base/platform.h"
#include "language/language_choice.h"
#include "language/language_list.h"

// Paths are empty where they do not fit; look-ups then give the English defaults.
extern wchar_t gUserFolder[kPathLength];                   // application data + "\Pavane\"
extern wchar_t gLanguageDat[kPathLength];                  // the user's list of languages
extern wchar_t gCurrentLanguageFile[kLanguageNameLength];  // such as "ENG_KVMR72.res"
extern wchar_t gLanguageFilePath[kPathLength];             // gUserFolder + gCurrentLanguageFile
extern WORD gSystemLangId;
extern wchar_t
    gSystemLanguageName[kLanguageNameLength];  // names "follow the system" in the list of languages
extern bool gFirstAttach;

// Everything that process attach does after its trace line. Keeps `module` in ghInstance. Failures fall back
// to English and are not reported.
void SetUpLanguage(HINSTANCE module) noexcept;

// Brings the user's copies of the list of languages, and of every language file that it names, up to the
// driver's, and reads the list. May throw bad_alloc.
std::vector<LanguageEntry> UpdateLanguages();

// gLanguageFilePath from gUserFolder and gCurrentLanguageFile.
void RebuildLanguageFilePath() noexcept;

// The per-user folder with a backslash behind, made if it is missing. FALSE, and empty, where it does not
// fit.
bool MakeUserFolder(wchar_t (&folder)[kPathLength]) noexcept;

bool Is64BitSystem() noexcept;

// The folder that holds the driver's own files, with a backslash behind. FALSE, and empty, where it does not
// fit.
bool DriverDirectory(wchar_t (&folder)[kPathLength]) noexcept;

// Copies the driver's file over the user's, unless the user's has the higher file version. Failures change
// nothing.
void CopyIfNotNewer(const wchar_t* driverFile, const wchar_t* userFile) noexcept;
