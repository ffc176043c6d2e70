// Records of any bytes in the document sheet, and what is to be seen of some of them.
#include "hostile_records.h"

namespace pages {
namespace {

constexpr unsigned kSeed = 0x5237;

struct ListRange {
    std::size_t BlockOffsets::*item;
    std::uint8_t count;
};

constexpr ListRange kListRanges[] = {
    {&BlockOffsets::drawer, 13}, {&BlockOffsets::herald, 2}, {&BlockOffsets::cut, 3},
    {&BlockOffsets::buzzer, 6},  {&BlockOffsets::logo, 10},
};

// 100 in all, in parts: what fails is named by its seed.
class RandomRecordsTest : public HostileRecordsTest, public testing::WithParamInterface<unsigned> {};

TEST_P(RandomRecordsTest, AnyByteAnywhere) {
    const unsigned seed = kSeed + GetParam();
    Survive(RandomRecords(seed, 10), "seed " + std::to_string(seed));
}

INSTANTIATE_TEST_SUITE_P(Parts, RandomRecordsTest, testing::Range(0u, 10u));

TEST_F(HostileRecordsTest, OneByteEverywhere) {
    Survive({Filled(0x00), Filled(0xFF), Filled(0x01), Filled(0x7F), Filled(0x80), Filled(0xFE)},
            "one byte everywhere");
}

// Texts that fill their fields with no terminator in them, ordinary letters and halves of surrogate pairs.
TEST_F(HostileRecordsTest, TextsWithoutTerminator) {
    std::vector<Bytes> records;
    for (const std::uint16_t unit : std::initializer_list<std::uint16_t>{'A', 0x4E2D, 0xD800, 0xFFFF}) {
        Bytes record = RecordWith(BusyBlock());
        for (const TextField& text : kTextFields) {
            for (std::size_t i = 0; i < text.units; ++i) {
                std::memcpy(&record[text.offset + 2 * i], &unit, sizeof unit);
            }
        }
        for (const std::uint8_t kind : {std::uint8_t{1}, std::uint8_t{2}}) {
            record[kKind] = kind;
            records.push_back(record);
        }
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

// Random values, but each in its range: OK and applying must give back the very same record.
TEST_F(HostileRecordsTest, ValuesInRangeComeBackAsTheyWere) {
    std::mt19937 random(kSeed);
    const auto below = [&random](unsigned count) { return static_cast<std::uint8_t>(random() % count); };
    std::vector<Bytes> records = RandomRecords(kSeed, 10);
    for (Bytes& record : records) {
        record[kPrintAsImage] = 1;
        record[kKind] = below(3);
        PutText(record, kPictureName, kPictureNameUnits, L"C:\\shop\\logo.bmp");
        PutText(record, kText, kTextUnits, L"Paid");
        record[kFontSize] = static_cast<std::uint8_t>(8 + below(65));
        const std::int32_t angle = static_cast<std::int32_t>(random() % 361);
        std::memcpy(&record[kAngle], &angle, sizeof angle);
        record[kSize] = below(101);
        record[kRotate] = below(2);
        record[kZoom] = below(2);
        const std::wstring form = Host().options().Values(DriverOptions::kForms).front();
        PutText(record, kFormName, kFormNameUnits, form);
        PutText(record, kFace, kFaceUnits, L"Tahoma");
        ASSERT_EQ(Differences(record, AfterApply(record, form, L"Tahoma")), "");
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
    EXPECT_EQ(Differences(records.back(), Record()), "");
}

}  // namespace
}  // namespace pages
