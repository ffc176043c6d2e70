// The control font's table out of a file that anybody may have written.
#include "devpages/control_font.h"

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz_input.h"

namespace {

struct Pair {
    String16 key;
    String16 foldedKey;
    String16 value;
};

String16 Lowered(String16 text) {
    for (Char16& unit : text) {
        if (unit >= TEXT16('A') && unit <= TEXT16('Z')) {
            unit = static_cast<Char16>(unit + 32);
        }
    }
    return text;
}

// Looks keys up without case and answers with the first, as the platform does.
class MemoryFile final : public ControlFontFile {
  public:
    MemoryFile(bool exaggerates, std::size_t writes) : exaggerates_(exaggerates), writes_(writes) {}

    void Add(const String16& key, const String16& value) { pairs_.push_back({key, Lowered(key), value}); }

    const Pair* Find(const String16& key) const {
        const auto pair =
            std::find_if(pairs_.begin(), pairs_.end(),
                         [folded = Lowered(key)](const Pair& each) { return each.foldedKey == folded; });
        return pair == pairs_.end() ? nullptr : &*pair;
    }

    String16 Keys() override {
        String16 keys;
        for (const Pair& pair : pairs_) {
            keys += pair.key;
            keys += Char16{};
        }
        return keys;
    }

    std::size_t Read(const Char16* key, std::span<Char16> value) noexcept override {
        const Pair* const pair = Find(key);
        if (pair == nullptr) {
            return 0;
        }
        // One that exaggerates leaves out the terminator too where it is out of room.
        const std::size_t room = value.size() - (exaggerates_ ? 0 : 1);
        const std::size_t length = std::min(pair->value.size(), room);
        std::copy_n(pair->value.begin(), length, value.begin());
        if (length < value.size()) {
            value[length] = Char16{};
        }
        return exaggerates_ ? value.size() + 1 : length;
    }

    void Remove() noexcept override { pairs_.clear(); }

    bool Write(const Char16* key, const Char16* value) noexcept override {
        if (pairs_.size() == writes_) {
            return false;
        }
        Add(key, value);
        return true;
    }

    std::size_t Size() const { return pairs_.size(); }

  private:
    std::vector<Pair> pairs_;
    bool exaggerates_;
    std::size_t writes_;
};

MemoryFile FileOf(FuzzBytes bytes, bool exaggerates) {
    MemoryFile file(exaggerates, kControlFontRows);
    String16 line;
    const auto end_line = [&] {
        const std::size_t equals = line.find(TEXT16('='));
        const String16 key = line.substr(0, equals);
        if (equals != String16::npos && !key.empty() && key.find(Char16{}) == String16::npos) {
            file.Add(key, line.substr(equals + 1));
        }
        line.clear();
    };
    for (const Char16 unit : NarrowText(bytes)) {
        if (unit == TEXT16('\n')) {
            end_line();
        } else {
            line += unit;
        }
    }
    end_line();
    return file;
}

// A row's key counts as it is spelled; 399 units of its value do, up to a zero.
String16 PlainCommand(const MemoryFile& file, const String16& key) {
    const Pair* const pair = file.Find(key);
    if (pair == nullptr || pair->key != key) {
        return {};
    }
    return pair->value.substr(0, std::min<std::size_t>(399, pair->value.find(Char16{})));
}

}  // namespace

void FuzzControlFont(FuzzBytes bytes) {
    const std::uint8_t behaviour = TakeByte(bytes);
    MemoryFile file = FileOf(bytes, behaviour % 2 == 1);
    ControlFont font;
    font.Load(file);
    std::size_t rows = 0;
    for (int row = 0; row < kControlFontRows; ++row) {
        Require(font.Command(row) == PlainCommand(file, ControlFont::Key(row)),
                "a row has another command than its file");
        rows += font.Command(row).empty() ? 0u : 1u;
    }

    MemoryFile saved(false, kControlFontRows);
    Require(font.Save(saved) && saved.Size() == rows, "rows are not saved");
    ControlFont again;
    again.Load(saved);
    for (int row = 0; row < kControlFontRows; ++row) {
        Require(again.Command(row) == font.Command(row), "a row changes when it is saved and loaded");
        if (const auto command = ParseControlCommand(font.Command(row))) {
            font.Store(row, *command);
            Require(ParseControlCommand(font.Command(row)) == command, "a stored row is another command");
        } else {
            font.Delete(row);
            Require(font.Command(row).empty(), "a deleted row has a command");
        }
    }

    MemoryFile full(false, behaviour / 2);
    const bool isSaved = font.Save(full);
    Require(full.Size() <= behaviour / 2u && (isSaved || full.Size() == behaviour / 2u),
            "a file that is full is written on");
}
