// A language file or list of languages, from the disk into memory.
#pragma once

#include <optional>

#include "language/language_file.h"

// Nothing where the file cannot be read; an empty one where it is larger than any language file. Others may
// write, rename or delete it meanwhile. May throw bad_alloc.
std::optional<LanguageFile> ReadLanguageFile(const wchar_t* path);
