// Records that no version of the driver wrote: every byte may be anything. The pages must open on them, and
// OK in the settings dialog must leave everything outside its block alone and make the block a valid one.
#include <windows.h>

#include <prsht.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "operation_block.h"
#include "page_fixture.h"
#include "ui_thread.h"

namespace pages {
namespace {

constexpr unsigned kSeed = 0x5237;

// Answers every dialog that the window's thread opens, as soon as it waits for its user, without a second
// thread. A modal dialog that has nothing to do tells its owner.
class DialogAnswerer {
  public:
    // On the thread of `owner`. `answer` gets each dialog and ends it.
    DialogAnswerer(HWND owner, std::function<void(HWND)> answer) : owner_(owner), answer_(std::move(answer)) {
        active_ = this;
        previous_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(owner_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DialogAnswerer::Handle)));
    }
    ~DialogAnswerer() {
        SetWindowLongPtrW(owner_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_));
        active_ = nullptr;
    }
    DialogAnswerer(const DialogAnswerer&) = delete;
    DialogAnswerer& operator=(const DialogAnswerer&) = delete;

  private:
    static LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        DialogAnswerer& self = *active_;
        if (message == WM_ENTERIDLE && wparam == MSGF_DIALOGBOX) {
            self.answer_(reinterpret_cast<HWND>(lparam));
            return 0;
        }
        return CallWindowProcW(self.previous_, window, message, wparam, lparam);
    }

    static inline DialogAnswerer* active_ = nullptr;
    HWND owner_;
    std::function<void(HWND)> answer_;
    WNDPROC previous_ = nullptr;
};

// What OK without any change makes of a moment's block, item by item.
Bytes AfterOk(Bytes record, Moment moment) {
    const BlockOffsets& at = kBlockOffsets[moment];
    // Only 1 is checked.
    record[at.send_command] = record[at.send_command] == 1 ? 1 : 0;
    record[at.feed_to_position] = record[at.feed_to_position] == 1 ? 1 : 0;
    // What lies behind the command goes, and no command is longer than its room.
    record[at.command_length] = std::min<std::uint8_t>(record[at.command_length], kCommandRoom);
    for (std::size_t i = record[at.command_length]; i < kCommandRoom; ++i) {
        record[at.command + i] = 0;
    }
    record[at.feed] = std::min<std::uint8_t>(record[at.feed], 100);
    std::int32_t choice = 0;
    std::memcpy(&choice, &record[at.drawer_or_herald], sizeof choice);
    choice = choice == 0 ? 0 : 1;
    std::memcpy(&record[at.drawer_or_herald], &choice, sizeof choice);
    // No radio is checked for an alignment beyond its three, and then it counts as the last.
    record[at.logo_align] = std::min<std::uint8_t>(record[at.logo_align], 2);
    record[at.logo_position] = record[at.logo_position] == 0 ? 0 : 1;
    return record;
}

struct ListRange {
    std::size_t BlockOffsets::*item;
    std::uint8_t count;
};

constexpr ListRange kListRanges[] = {
    {&BlockOffsets::drawer, 13}, {&BlockOffsets::herald, 2}, {&BlockOffsets::cut, 3},
    {&BlockOffsets::buzzer, 6},  {&BlockOffsets::logo, 10},
};

class HostileRecordsTest : public OperationTest {
  protected:
    // Opens a sheet on the first record, then for each record repaints the Operation page, opens the dialog
    // at each moment, presses OK and applies.
    void Survive(const std::vector<Bytes>& records, const std::string& name) {
        SCOPED_TRACE(name);
        ASSERT_FALSE(records.empty());
        const UiThread ui_thread;
        SetRecord(records.front());
        std::size_t dialogs = 0;
        const SheetResult result = OpenSheet([&](UiDriver&, Sheet& sheet) {
            const Window page = OperationPage(sheet);
            ui_thread.Do([&] {
                const DialogAnswerer answerer(sheet.handle(), [&](HWND dialog) {
                    if (GetDlgItem(dialog, 1016) == nullptr) {
                        ADD_FAILURE() << "an unexpected dialog";
                        EndDialog(dialog, IDCANCEL);
                        return;
                    }
                    ++dialogs;
                    if (dialogs % 8 == 0) {
                        RedrawWindow(dialog, nullptr, nullptr,
                                     RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
                    }
                    // What depends on the record is the picture; the rest of a repaint takes most of the
                    // time.
                    SendMessageW(dialog, WM_PAINT, 0, 0);
                    SendMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
                });
                for (std::size_t i = 0; i < records.size() && !HasFailure(); ++i) {
                    SCOPED_TRACE("record " + std::to_string(i));
                    Bytes expected = records[i];
                    SetRecord(expected);
                    RedrawWindow(page.handle(), nullptr, nullptr,
                                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
                    EXPECT_EQ(Differences(expected, Record()), "") << "painting";
                    for (const Moment moment : kMoments) {
                        SCOPED_TRACE(moment);
                        SendMessageW(page.Control(MomentButton(moment)), BM_CLICK, 0, 0);
                        expected = AfterOk(std::move(expected), moment);
                        EXPECT_EQ(Differences(expected, Record()), "");
                        EXPECT_TRUE(Host().RecordGuardsIntact());
                    }
                    SendMessageW(sheet.handle(), PSM_APPLY, 0, 0);
                    EXPECT_EQ(Differences(expected, Record()), "") << "applying";
                }
                EXPECT_TRUE(HasFailure() || dialogs == records.size() * std::size(kMoments));
            });
            sheet.PressOk();
        });
        EXPECT_TRUE(result.kept);
        EXPECT_TRUE(Host().GuardsIntact());
    }

    static Bytes Filled(std::uint8_t value) { return Bytes(kOemRecordSize, value); }
};

std::vector<Bytes> RandomRecords(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    std::vector<Bytes> records(count, Bytes(kOemRecordSize));
    for (Bytes& record : records) {
        for (std::uint8_t& byte : record) {
            byte = static_cast<std::uint8_t>(random());
        }
    }
    return records;
}

// 500 in all, each sheet open for a part of them.
class RandomRecordsTest : public HostileRecordsTest, public testing::WithParamInterface<unsigned> {};

TEST_P(RandomRecordsTest, AnyByteAnywhere) {
    const unsigned seed = kSeed + GetParam();
    Survive(RandomRecords(seed, 20), "seed " + std::to_string(seed));
}

INSTANTIATE_TEST_SUITE_P(Parts, RandomRecordsTest, testing::Range(0u, 25u));

TEST_F(HostileRecordsTest, OneByteEverywhere) {
    Survive({Filled(0x00), Filled(0xFF), Filled(0x01), Filled(0x7F), Filled(0x80), Filled(0xFE)},
            "one byte everywhere");
}

// Texts that fill their fields with no terminator in them, ordinary letters and halves of surrogate pairs.
TEST_F(HostileRecordsTest, TextsWithoutTerminator) {
    struct Text {
        std::size_t offset;
        std::size_t units;
    };
    constexpr Text kTexts[] = {{1000, 125}, {1252, 16}, {1284, 50}, {1398, 32}, {1464, 256}};
    std::vector<Bytes> records;
    for (const std::uint16_t unit : std::initializer_list<std::uint16_t>{'A', 0x4E2D, 0xD800, 0xFFFF}) {
        Bytes record = RecordWith(BusyBlock());
        for (const Text& text : kTexts) {
            for (std::size_t i = 0; i < text.units; ++i) {
                std::memcpy(&record[text.offset + 2 * i], &unit, sizeof unit);
            }
        }
        records.push_back(record);
    }
    Survive(records, "texts without terminator");
}

TEST_F(HostileRecordsTest, EveryCommandLengthAroundItsEdges) {
    std::vector<Bytes> records;
    for (const int length : {0, 1, 2, 63, 64, 127, 128, 129, 130, 192, 254, 255}) {
        Bytes record = RecordWith(BusyBlock());
        for (const Moment moment : kMoments) {
            const BlockOffsets& at = kBlockOffsets[moment];
            record[at.command_length] = static_cast<std::uint8_t>(length);
            std::fill_n(record.begin() + static_cast<std::ptrdiff_t>(at.command), kCommandRoom,
                        std::uint8_t{0xC3});
        }
        records.push_back(record);
    }
    Survive(records, "command lengths");
}

// A command length beyond the room shows the room's bytes and nothing of what lies behind them.
TEST_F(HostileRecordsTest, TooLongCommandShowsItsRoomOnly) {
    Bytes record = RecordWith(BusyBlock());
    std::wstring expected;
    for (std::size_t i = 0; i < kCommandRoom; ++i) {
        record[kBlockOffsets[kPageEnd].command + i] = 0x5A;
        expected += L"5A ";
    }
    record[kBlockOffsets[kPageEnd].command_length] = 255;
    SetRecord(record);
    OnDialog(kPageEnd, [&](UiDriver&, Window& dialog) { EXPECT_EQ(dialog.Text(1016), expected); });
}

// What a list does not have shows as no choice, and is kept as it is until there is one.
TEST_F(HostileRecordsTest, ValuesBeyondAListShowAsNoSelection) {
    Bytes record = RecordWith(BusyBlock());
    for (const ListRange& list : kListRanges) {
        record[kBlockOffsets[kDocEnd].*list.item] = list.count;
    }
    SetRecord(record);
    OnDialog(kDocEnd, [&](UiDriver&, Window& dialog) {
        for (const int list : {1017, 1032, 1020, 1027, 1028}) {
            EXPECT_EQ(dialog.ComboSelection(list), -1) << list;
        }
        dialog.SelectCombo(1020, 1);
        dialog.PressAndWaitClosed(IDOK);
    });
    record[kBlockOffsets[kDocEnd].cut] = 1;
    EXPECT_EQ(Differences(record, Record()), "");
}

// Random values, but each in its range: OK must give back the very same record.
TEST_F(HostileRecordsTest, ValuesInRangeComeBackAsTheyWere) {
    std::mt19937 random(kSeed);
    const auto below = [&random](unsigned count) { return static_cast<std::uint8_t>(random() % count); };
    std::vector<Bytes> records = RandomRecords(kSeed, 20);
    for (Bytes& record : records) {
        for (const Moment moment : kMoments) {
            Block block;
            block.send_command = below(2);
            block.feed_to_position = below(2);
            block.command.resize(random() % (kCommandRoom + 1));
            for (std::uint8_t& byte : block.command) {
                byte = below(256);
            }
            block.drawer = below(13);
            block.cut = below(3);
            block.feed = below(101);
            block.volume = below(256);
            block.herald = below(2);
            block.drawer_or_herald = below(2);
            block.buzzer = below(6);
            block.logo = below(10);
            block.logo_align = below(3);
            block.logo_position = below(2);
            PutBlock(record, moment, block);
            ASSERT_EQ(Differences(record, AfterOk(record, moment)), "");
        }
    }
    Survive(records, "seed " + std::to_string(kSeed));
}

}  // namespace
}  // namespace pages
