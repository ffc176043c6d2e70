// The option items of the driver itself, as its host keeps them: an array with a tree level and a list of
// values per item. The plug-in reads them, relabels some and selects among them. Every text lies in a block
// exactly as long as the text with its terminator, because that is all a plug-in may count on.
#pragma once

#include "intrface/print_oem.h"

#include <span>
#include <string>
#include <vector>

#include "guarded_block.h"

// One option to build; without values it is a heading of the tree.
struct OptionSource {
    std::wstring name = {};
    BYTE level = 0;
    BYTE dm_pub_id = DMPUB_NONE;
    std::vector<std::wstring> values = {};
    LONG selected = 0;
};

// What the printer's driver brings: paper forms, a heading, print density, print quality.
std::vector<OptionSource> ReceiptDriverOptions();

class DriverOptions {
  public:
    explicit DriverOptions(std::span<const OptionSource> sources);

    // By position in ReceiptDriverOptions().
    static constexpr std::size_t kForms = 0;
    static constexpr std::size_t kHeading = 1;
    static constexpr std::size_t kDensity = 2;
    static constexpr std::size_t kQuality = 3;

    OPTITEM* items() const noexcept { return items_.As<OPTITEM>(); }
    DWORD count() const noexcept { return count_; }
    // Throws std::out_of_range.
    OPTITEM& item(std::size_t index) const;

    // What a list of the host shows for an item now, whoever owns the text. Headings have no values.
    std::wstring Name(std::size_t index) const;
    std::vector<std::wstring> Values(std::size_t index) const;

    // No text, item or value array was overrun.
    bool GuardsIntact() const noexcept;

  private:
    wchar_t* NewText(const std::wstring& text);
    OPTTYPE* NewValues(const OptionSource& source);

    DWORD count_;
    GuardedBlock items_;
    std::vector<GuardedBlock> blocks_;
};
