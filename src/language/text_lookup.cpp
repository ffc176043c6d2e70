#include "language/text_lookup.h"

#include <windows.h>

#include <exception>
#include <optional>
#include <utility>

#include "intrface/win/lock.h"
#include "language/language_file.h"
#include "language/language_reader.h"
#include "language/language_setup.h"
#include "language/registry_choice.h"

namespace {

// What one look at the disk tells of a file.
struct FileStamp {
    bool exists = false;
    std::uint64_t time = 0;
    std::uint64_t size = 0;

    bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!path[0] || !GetFileAttributesExW(path, GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
        return {};
    }
    const auto join = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    return {true, join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime),
            join(data.nFileSizeHigh, data.nFileSizeLow)};
}

class LanguageTexts {
  public:
    // TRUE when another file, or another state of it, became current.
    bool Refresh(const wchar_t* path) noexcept {
        const FileStamp stamp = StampOf(path);
        const bool known = path_known_ && FieldText(path_) == path && stamp == stamp_;
        if (known && readable_) {
            return false;
        }
        // A file that could not be read is tried again each time, but counts as a change once.
        const bool wasReadable = std::exchange(readable_, Read(path, stamp));
        if (known && wasReadable == readable_) {
            return false;
        }
        path_known_ = true;
        CopyText(path_, path);
        stamp_ = stamp;
        ++generation_;
        return true;
    }

    std::optional<StringView16> Find(StringView16 section, StringView16 key) const noexcept {
        return file_.Find(section, key);
    }

    std::uint32_t Generation() const noexcept { return generation_; }

  private:
    // FALSE, and no texts, when a file that exists cannot be read now.
    bool Read(const wchar_t* path, const FileStamp& stamp) noexcept {
        try {
            file_ = LanguageFile();
            if (!stamp.exists) {
                return true;
            }
            auto file = ReadLanguageFile(path);
            if (file) {
                file_ = std::move(*file);
            }
            return file.has_value();
        } catch (const std::exception&) {
            return false;
        }
    }

    LanguageFile file_;
    wchar_t path_[kPathLength] = {};
    FileStamp stamp_;
    bool path_known_ = false;
    bool readable_ = false;
    std::uint32_t generation_ = 0;
};

// Of the texts, and of the names of their file.
Lock gLock;
LanguageTexts gTexts;

}  // namespace

bool RefreshLanguageFile() noexcept {
    const LockScope scope(gLock);
    wchar_t name[kLanguageValueLength];
    ReadLanguageValue(OpenLanguageKey(), kLanguageValue, name);
    CopyText(gCurrentLanguageFile, UsableLanguageName(name));
    RebuildLanguageFilePath();
    return gTexts.Refresh(gLanguageFilePath);
}

std::uint32_t LanguageGeneration() noexcept {
    const LockScope scope(gLock);
    return gTexts.Generation();
}

std::size_t LoadText(const wchar_t* section, const wchar_t* key, const wchar_t* englishDefault,
                     wchar_t* buffer, std::size_t length) noexcept {
    const LockScope scope(gLock);
    const auto text = gTexts.Find(section, key);
    return CopyText(buffer, length, text ? *text : StringView16(englishDefault));
}
