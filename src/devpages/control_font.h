// The control font: a font of the printer in which each character stands for a command. The table keeps the
// commands as the hexadecimal text of its file, so that a row that nobody edits is saved as it was read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/text.h"

// A row for each character from the blank to 127.
constexpr int kControlFontRows = 96;

constexpr std::size_t kControlCommandSize = 128;

// Room for a value of the file with its terminator; the platform cuts a longer one.
constexpr std::size_t kControlValueRoom = 400;

// What the translator's box is read for.
constexpr std::size_t kTypedControlLength = 400;

// Behind the Windows directory, whatever the running system's driver directory is: the rendering side reads
// the file there.
inline constexpr const Char16* kControlFontPath =
    TEXT16("\\system32\\spool\\drivers\\w32x86\\3\\KVMR72CONTROL.dat");
inline constexpr const Char16* kControlFontSection = TEXT16("Character Translation Table");

// The same in all languages. What the translator says of a long command is a text of the language file, and
// ends with "!".
inline constexpr const Char16* kStoredCommandTooLong = TEXT16("Command length error");
inline constexpr const Char16* kControlFontDenied =
    TEXT16("Please check if user has administrator privileges!");

// The bytes behind the length are 0.
struct ControlCommand {
    std::array<std::uint8_t, kControlCommandSize> bytes;
    std::uint8_t length;

    bool operator==(const ControlCommand&) const = default;
};

// The command that a text stands for; nothing where it is longer than a command can be.
std::optional<ControlCommand> ParseControlCommand(StringView16 text) noexcept;

// The same for what the translator's box holds, of which the first 400 characters count.
std::optional<ControlCommand> ParseTypedControlCommand(StringView16 text) noexcept;

// Two upper-case digits and a blank for each byte. May throw bad_alloc.
String16 ControlCommandText(const ControlCommand& command);

// The row that is brought into view with a selected one: the row above it from the third on.
int RowToShow(int selected) noexcept;

// The table's section in its file, as the platform's profile functions know it.
class ControlFontFile {
  public:
    // The section's keys as they are spelled, in the file's order, each with a terminator; empty without
    // file. May throw bad_alloc.
    virtual String16 Keys() = 0;

    // Fills `value` with the value of `key` and its terminator, cut to the room. Gives the number of units
    // without the terminator, 0 without such a key.
    virtual std::size_t Read(const Char16* key, std::span<Char16> value) noexcept = 0;

    // Deletes the whole file, where there is one.
    virtual void Remove() noexcept = 0;

    virtual bool Write(const Char16* key, const Char16* value) noexcept = 0;

  protected:
    ~ControlFontFile() = default;
};

// Rows count from 0, as the list's; a row that is not there (-1: nothing is selected) has empty texts and
// takes nothing.
class ControlFont {
  public:
    static bool HasRow(int row) noexcept;

    // The character itself.
    static String16 Character(int row);

    // Its code in upper-case hexadecimal digits, also its key in the file.
    static String16 Key(int row);

    // Reads all rows. A key counts only as it is spelled here, although the platform looks keys up without
    // case: where another spelling stands before it, the platform's answer is that one's value, and the row
    // is empty. May throw bad_alloc.
    void Load(ControlFontFile& file);

    // Deletes the file and writes each row that has a command, from the first on. FALSE at the first write
    // that fails: the rows before it are in the file, the old ones are gone.
    bool Save(ControlFontFile& file) const;

    // As read from the file, or as stored since.
    const String16& Command(int row) const noexcept;

    // May throw bad_alloc.
    void Store(int row, const ControlCommand& command);

    // The character stays, without command.
    void Delete(int row) noexcept;

  private:
    std::array<String16, kControlFontRows> commands_;
};
