// A language file against a plain reading, line by line, anew for each question.
#include "language/language_file.h"

#include <optional>
#include <vector>

#include "fuzz_input.h"

namespace {

struct Line {
    String16 section;  // as they stand there
    String16 name;
    String16 foldedSection;
    String16 foldedName;
    std::optional<String16> value;
    std::size_t header;  // the number of the header it stands below
};

String16 FromAnsi(std::span<const std::byte> bytes) {
    String16 text;
    for (const std::byte byte : bytes) {
        text.push_back(static_cast<Char16>(byte));
    }
    return text;
}

// FF FE before units with their low byte first, FE FF the other way round.
String16 PlainText(FuzzBytes bytes) {
    const unsigned mark = bytes.size() < 2 ? 0u : bytes[0] * 256u + bytes[1];
    if (mark == 0xFFFE) {
        return WideText(bytes.subspan(2));
    }
    if (mark != 0xFEFF) {
        return NarrowText(bytes);
    }
    String16 text = WideText(bytes.subspan(2));
    for (Char16& unit : text) {
        unit = static_cast<Char16>((unit & 255) * 256 + unit / 256);
    }
    return text;
}

bool IsBlank(Char16 unit) {
    return unit == 32 || (unit >= 9 && unit <= 13) || unit == 26;
}

String16 Trimmed(const String16& text) {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && IsBlank(text[begin])) {
        ++begin;
    }
    while (end > begin && IsBlank(text[end - 1])) {
        --end;
    }
    return text.substr(begin, end - begin);
}

String16 UpToZero(const String16& text) {
    return text.substr(0, text.find(Char16{}));
}

// Latin letters are the same large and small; a division sign has no small one.
String16 Folded(String16 text) {
    for (Char16& unit : text) {
        const bool isLarge = (unit >= 65 && unit <= 90) || (unit >= 192 && unit <= 222 && unit != 215);
        unit = static_cast<Char16>(isLarge ? unit + 32 : unit);
    }
    return text;
}

String16 Unquoted(const String16& value) {
    const bool isQuoted =
        value.size() >= 2 && (value[0] == 34 || value[0] == 39) && value.front() == value.back();
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

std::vector<Line> PlainLines(const String16& text) {
    std::vector<Line> lines;
    String16 section;
    std::size_t header = 0;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find_first_of(String16{10, 13}, begin), text.size());
        const String16 line = Trimmed(text.substr(begin, end - begin));
        begin = end + 1;
        if (line.empty() || line[0] == TEXT16(';')) {
            continue;
        }
        const std::size_t close = line.rfind(TEXT16(']'));
        if (line[0] == TEXT16('[') && close != String16::npos) {
            section = UpToZero(Trimmed(line.substr(1, close - 1)));
            ++header;
            // The header itself: a section may have no lines.
            lines.push_back({section, {}, Folded(section), {}, std::nullopt, header});
            continue;
        }
        const std::size_t equals = line.find(TEXT16('='));
        const String16 name = UpToZero(Trimmed(line.substr(0, equals)));
        if (name.empty()) {
            continue;
        }
        lines.push_back({section, name, Folded(section), Folded(name), std::nullopt, header});
        if (equals != String16::npos) {
            lines.back().value = Unquoted(UpToZero(Trimmed(line.substr(equals + 1))));
        }
    }
    return lines;
}

std::optional<String16> PlainFind(const std::vector<Line>& lines, const String16& section,
                                  const String16& key) {
    const String16 wantedSection = Folded(Trimmed(section));
    const String16 wantedKey = Folded(Trimmed(key));
    std::optional<std::size_t> header;
    if (wantedSection.empty()) {
        header = 0;
    }
    for (const Line& line : lines) {
        if (!header && line.foldedSection == wantedSection) {
            header = line.header;
        }
        if (header == line.header && !line.name.empty() && line.foldedName == wantedKey) {
            return line.value;
        }
    }
    return std::nullopt;
}

void CheckFind(const LanguageFile& file, const std::vector<Line>& lines, const String16& section,
               const String16& key) {
    const auto found = file.Find(section, key);
    const auto expected = PlainFind(lines, section, key);
    Require(found.has_value() == expected.has_value(), "a key is found, or not, against the file");
    Require(!found || *found == *expected, "a key has another value than in the file");
}

String16 OtherCase(String16 text) {
    for (Char16& unit : text) {
        const bool isLetter = (unit >= 65 && unit <= 90) || (unit >= 97 && unit <= 122);
        unit = static_cast<Char16>(isLetter ? unit ^ 32 : unit);
    }
    return text;
}

}  // namespace

void FuzzLanguageFile(FuzzBytes bytes) {
    const String16 text = DecodeLanguageFile(std::as_bytes(bytes), FromAnsi);
    Require(text == PlainText(bytes), "a file is decoded otherwise");
    const LanguageFile file(text);
    const std::vector<Line> lines = PlainLines(text);

    // Each question reads all lines: of many lines only some are asked for.
    constexpr std::size_t kAsked = 12;
    const std::size_t step = lines.size() / kAsked + 1;
    for (std::size_t i = 0; i < lines.size(); i += step) {
        const Line& line = lines[i];
        CheckFind(file, lines, line.section, line.name);
        CheckFind(file, lines, OtherCase(line.section), TEXT16(" ") + OtherCase(line.name) + TEXT16("\t"));
        CheckFind(file, lines, lines[(i + step) % lines.size()].section, line.name);
        CheckFind(file, lines, line.section, line.name + TEXT16("x"));
    }
    CheckFind(file, lines, {}, TEXT16("Language0"));
    CheckFind(file, lines, text.substr(0, 8), text.substr(0, 4));
}
