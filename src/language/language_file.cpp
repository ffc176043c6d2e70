#include "language/language_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::uint32_t kSectionNames = 0xFFFFFFFF;
constexpr std::uint32_t kNoValue = 0xFFFFFFFF;

// What the profile functions skip around names and values; the old end-of-file mark is one of them.
bool IsBlank(Char16 unit) noexcept {
    return unit == ' ' || (unit >= '\t' && unit <= '\r') || unit == 0x1A;
}

bool IsLineEnd(Char16 unit) noexcept {
    return unit == '\n' || unit == '\r';
}

// Lower case of ASCII and Latin-1; everything else stands for itself.
Char16 Fold(Char16 unit) noexcept {
    const bool upper = (unit >= 'A' && unit <= 'Z') || (unit >= 0xC0 && unit <= 0xDE && unit != 0xD7);
    return upper ? static_cast<Char16>(unit + 0x20) : unit;
}

StringView16 Trim(StringView16 text) noexcept {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

StringView16 UpToZero(StringView16 text) noexcept {
    return text.substr(0, text.find(Char16{}));
}

StringView16 Unquote(StringView16 value) noexcept {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.front() == value.back()) {
        value.remove_prefix(1);
        value.remove_suffix(1);
    }
    return value;
}

// FNV-1a over the folded name, begun differently in each section.
std::uint32_t Hash(std::uint32_t scope, StringView16 name) noexcept {
    std::uint32_t hash = 2166136261u ^ (scope * 2654435761u);
    for (const Char16 unit : name) {
        hash = (hash ^ Fold(unit)) * 16777619u;
    }
    return hash;
}

bool EqualFolded(StringView16 folded, StringView16 name) noexcept {
    return std::equal(folded.begin(), folded.end(), name.begin(), name.end(),
                      [](Char16 left, Char16 right) { return left == Fold(right); });
}

}  // namespace

String16 DecodeLanguageFile(std::span<const std::byte> bytes, AnsiDecoder decodeAnsi) {
    if (bytes.size() > kMaxLanguageFileSize || bytes.empty()) {
        return {};
    }
    constexpr std::byte kFE{0xFE};
    constexpr std::byte kFF{0xFF};
    const bool littleEndian = bytes.size() >= 2 && bytes[0] == kFF && bytes[1] == kFE;
    const bool bigEndian = bytes.size() >= 2 && bytes[0] == kFE && bytes[1] == kFF;
    if (!littleEndian && !bigEndian) {
        return decodeAnsi(bytes);
    }
    bytes = bytes.subspan(2);
    String16 text(bytes.size() / 2, Char16{});
    const std::size_t low = littleEndian ? 0 : 1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<Char16>(std::to_integer<unsigned>(bytes[2 * i + low]) |
                                      std::to_integer<unsigned>(bytes[2 * i + 1 - low]) << 8);
    }
    return text;
}

LanguageFile::LanguageFile(String16 text) : text_(std::move(text)) {
    if (text_.size() > kMaxLanguageFileSize) {
        text_.clear();
    }
    // Lines before the first header belong to a section without a name.
    AddEntry(kSectionNames, StringView16(text_).substr(0, 0), sections_, 0);
    std::size_t begin = 0;
    while (begin < text_.size()) {
        std::size_t end = begin;
        while (end < text_.size() && !IsLineEnd(text_[end])) {
            ++end;
        }
        AddLine(begin, end);
        begin = end + 1;
    }
    std::sort(entries_.begin(), entries_.end(),
              [](const Entry& left, const Entry& right) { return left.order < right.order; });
}

void LanguageFile::AddLine(std::size_t begin, std::size_t end) {
    const StringView16 line = Trim(StringView16(text_).substr(begin, end - begin));
    if (line.empty() || line.front() == ';') {
        return;
    }
    if (line.front() == '[') {
        if (const std::size_t close = line.rfind(']'); close != StringView16::npos) {
            AddEntry(kSectionNames, UpToZero(Trim(line.substr(1, close - 1))), ++sections_, 0);
            return;
        }
    }
    const std::size_t equals = line.find('=');
    const StringView16 name = UpToZero(Trim(line.substr(0, equals)));
    if (name.empty()) {
        return;
    }
    if (equals == StringView16::npos) {
        AddEntry(sections_, name, kNoValue, 0);
        return;
    }
    const StringView16 value = Unquote(UpToZero(Trim(line.substr(equals + 1))));
    AddEntry(sections_, name, static_cast<std::uint32_t>(value.data() - text_.data()),
             static_cast<std::uint32_t>(value.size()));
}

// `name` is a part of text_, and is folded there.
void LanguageFile::AddEntry(std::uint32_t scope, StringView16 name, std::uint32_t value,
                            std::uint32_t value_length) {
    const auto offset = static_cast<std::size_t>(name.data() - text_.data());
    const std::uint64_t order = std::uint64_t{Hash(scope, name)} << 32 | offset;
    std::transform(name.begin(), name.end(), text_.begin() + static_cast<std::ptrdiff_t>(offset), Fold);
    entries_.push_back({order, scope, static_cast<std::uint32_t>(name.size()), value, value_length});
}

const LanguageFile::Entry* LanguageFile::Look(std::uint32_t scope, StringView16 name) const noexcept {
    const std::uint64_t hash = Hash(scope, name);
    auto entry = std::lower_bound(entries_.begin(), entries_.end(), hash << 32,
                                  [](const Entry& left, std::uint64_t order) { return left.order < order; });
    for (; entry != entries_.end() && entry->order >> 32 == hash; ++entry) {
        const auto offset = static_cast<std::size_t>(entry->order & 0xFFFFFFFF);
        if (entry->scope == scope &&
            EqualFolded(StringView16(text_).substr(offset, entry->name_length), name)) {
            return &*entry;
        }
    }
    return nullptr;
}

std::optional<StringView16> LanguageFile::Find(StringView16 section, StringView16 key) const noexcept {
    const Entry* header = Look(kSectionNames, Trim(section));
    const Entry* entry = header ? Look(header->value, Trim(key)) : nullptr;
    if (!entry || entry->value == kNoValue) {
        return std::nullopt;
    }
    return StringView16(text_).substr(entry->value, entry->value_length);
}
