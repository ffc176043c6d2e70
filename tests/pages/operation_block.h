// The operation blocks of the settings record by their offsets, written down here once more so that tests
// catch a field that moved, and the way to the settings dialog of each of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "page_fixture.h"

namespace pages {

// As the Operation page numbers them.
enum Moment { kDocStart, kPageStart, kPageEnd, kDocEnd };
constexpr Moment kMoments[] = {kDocStart, kPageStart, kPageEnd, kDocEnd};

constexpr std::size_t kCommandRoom = 128;

struct BlockOffsets {
    std::size_t send_command, feed_to_position, command, command_length, drawer, cut, feed, volume, herald,
        drawer_or_herald, buzzer, logo, logo_align, logo_position;
};

constexpr BlockOffsets kBlockOffsets[] = {
    {16, 17, 18, 146, 147, 148, 149, 156, 150, 152, 157, 158, 159, 160},
    {161, 162, 163, 291, 292, 293, 294, 295, 296, 300, 304, 305, 306, 307},
    {452, 453, 454, 582, 583, 584, 585, 586, 587, 588, 592, 593, 594, 595},
    {308, 309, 310, 438, 439, 440, 441, 442, 443, 444, 448, 449, 450, 451},
};

// One block's settings as the record stores them.
struct Block {
    std::uint8_t send_command = 0;
    std::uint8_t feed_to_position = 0;
    std::vector<std::uint8_t> command;  // up to kCommandRoom bytes; its size is the stored length
    std::uint8_t drawer = 0;
    std::uint8_t cut = 0;
    std::uint8_t feed = 0;
    std::uint8_t volume = 0;
    std::uint8_t herald = 0;
    std::int32_t drawer_or_herald = 0;
    std::uint8_t buzzer = 0;
    std::uint8_t logo = 0;
    std::uint8_t logo_align = 0;
    std::uint8_t logo_position = 0;
};

// Every control of the dialog usable, except the two of the choice that is not made.
inline Block BusyBlock() {
    Block block;
    block.send_command = 1;
    block.feed_to_position = 1;
    block.command = {0x1D, 0x56, 0x42, 0x00};
    block.drawer = 7;
    block.cut = 2;
    block.feed = 44;
    block.volume = 77;
    block.herald = 1;
    block.drawer_or_herald = 0;
    block.buzzer = 3;
    block.logo = 5;
    block.logo_align = 2;
    block.logo_position = 1;
    return block;
}

inline void PutBlock(Bytes& record, Moment moment, const Block& block) {
    const BlockOffsets& at = kBlockOffsets[moment];
    record[at.send_command] = block.send_command;
    record[at.feed_to_position] = block.feed_to_position;
    for (std::size_t i = 0; i < kCommandRoom; ++i) {
        record[at.command + i] = i < block.command.size() ? block.command[i] : std::uint8_t{0};
    }
    record[at.command_length] = static_cast<std::uint8_t>(block.command.size());
    record[at.drawer] = block.drawer;
    record[at.cut] = block.cut;
    record[at.feed] = block.feed;
    record[at.volume] = block.volume;
    record[at.herald] = block.herald;
    std::memcpy(&record[at.drawer_or_herald], &block.drawer_or_herald, sizeof block.drawer_or_herald);
    record[at.buzzer] = block.buzzer;
    record[at.logo] = block.logo;
    record[at.logo_align] = block.logo_align;
    record[at.logo_position] = block.logo_position;
}

// A record in which every byte differs from its neighbours, with `block` at each moment.
inline Bytes RecordWith(const Block& block) {
    Bytes record =
        FilledRecord([](std::size_t offset) { return static_cast<std::uint8_t>(offset * 37 + 11); });
    for (const Moment moment : kMoments) {
        PutBlock(record, moment, block);
    }
    return record;
}

inline Bytes With(Bytes record, Moment moment, const Block& block) {
    PutBlock(record, moment, block);
    return record;
}

constexpr int MomentButton(Moment moment) {
    return 1011 + moment;
}

// Behind the host's two tabs, Main and Water Mark.
constexpr int kOperationTab = 4;

// The page with the moments' buttons, whatever language its tab is in. The pages before it are not made: one
// that was shown takes part in OK and Apply.
inline Window OperationPage(const Sheet& sheet) {
    Window page = sheet.SelectPage(kOperationTab);
    if (!page.HasControl(MomentButton(kDocStart))) {
        throw UiError("the page does not have the moments' buttons");
    }
    return page;
}

// Tests that have one dialog open at a time.
class OperationTest : public PageTest {
  protected:
    // Opens the sheet on its Operation page. What the script leaves open is closed with OK, so that the host
    // keeps the record.
    SheetResult OnPage(const std::function<void(UiDriver&, Window& page)>& script) {
        return OpenSheet([&](UiDriver& ui, Sheet& sheet) {
            Window page = OperationPage(sheet);
            script(ui, page);
            if (sheet.IsOpen()) {
                sheet.PressOk();
            }
        });
    }

    // Opens a moment's dialog in a sheet of its own. A dialog that the script leaves open is cancelled.
    void OnDialog(Moment moment, const std::function<void(UiDriver&, Window& dialog)>& script) {
        OnPage([&](UiDriver& ui, Window& page) {
            Window dialog = page.OpenDialog(MomentButton(moment));
            script(ui, dialog);
            if (dialog.IsOpen()) {
                dialog.PressAndWaitClosed(IDCANCEL);
            }
        });
    }

    // Puts `block` into a moment of the record while the sheet is open, and opens the dialog on it.
    Window OpenWith(const Window& page, Moment moment, const Block& block) {
        SetRecord(With(Record(), moment, block));
        return page.OpenDialog(MomentButton(moment));
    }
};

}  // namespace pages
