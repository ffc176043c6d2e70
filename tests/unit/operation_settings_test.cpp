// The four operation blocks by their raw offsets: what is read comes from exactly these bytes, what is
// written goes to exactly these bytes.
#include "devmode/operation_settings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "record_bytes.h"

namespace {

struct Block {
    Moment moment;
    const char* name;
    std::size_t sendCommand;
    std::size_t feedToPosition;
    std::size_t command;
    std::size_t commandLength;
    std::size_t cashDrawer;
    std::size_t cutPaper;
    std::size_t feed;
    std::size_t herald;
    std::size_t buzzerVolume;
    std::size_t drawerOrHerald;
    std::size_t buzzer;
    std::size_t logo;
    std::size_t logoAlign;
    std::size_t logoPosition;
};

// The end of the page is moment 2 though its block is the record's last.
constexpr Block kBlocks[] = {
    {static_cast<Moment>(0), "start of document", 16, 17, 18, 146, 147, 148, 149, 150, 156, 152, 157, 158,
     159, 160},
    {static_cast<Moment>(1), "start of page", 161, 162, 163, 291, 292, 293, 294, 296, 295, 300, 304, 305, 306,
     307},
    {static_cast<Moment>(2), "end of page", 452, 453, 454, 582, 583, 584, 585, 587, 586, 588, 592, 593, 594,
     595},
    {static_cast<Moment>(3), "end of document", 308, 309, 310, 438, 439, 440, 441, 443, 442, 444, 448, 449,
     450, 451},
};

constexpr int kLengths[] = {0, 1, 2, 127, 128, 129, 200, 255};

// Bytes that differ within every 256 neighbours, hence within a block.
RecordBytes DistinctBytes() {
    RecordBytes bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 151 + 89);
    }
    return bytes;
}

// Settings of 14 values that differ from each other and from their command.
OperationSettings DistinctSettings(std::uint8_t length) {
    OperationSettings settings{};
    settings.sendCommand = 1;
    settings.feedToPosition = 2;
    for (std::size_t i = 0; i < kCommandSize; ++i) {
        settings.command[i] = static_cast<std::uint8_t>(0x40 + i);
    }
    settings.commandLength = length;
    settings.cashDrawer = 12;
    settings.cutPaper = 3;
    settings.feed = 100;
    settings.buzzerVolume = 0xFF;
    settings.herald = 4;
    settings.drawerOrHerald = static_cast<std::int32_t>(0xF8E7D6C5);
    settings.buzzer = 5;
    settings.logo = 9;
    settings.logoAlign = 6;
    settings.logoPosition = 7;
    return settings;
}

std::string Differences(const RecordBytes& actual, const RecordBytes& expected) {
    std::string text;
    for (std::size_t i = 0; i < kRecordBytes; ++i) {
        if (actual[i] != expected[i]) {
            text += "byte " + std::to_string(i) + " is " + std::to_string(actual[i]) + " instead of " +
                    std::to_string(expected[i]) + "; ";
        }
    }
    return text;
}

TEST(OperationSettingsTest, MomentsHaveTheOrderOfTheButtons) {
    EXPECT_EQ(static_cast<int>(Moment::kDocStart), 0);
    EXPECT_EQ(static_cast<int>(Moment::kPageStart), 1);
    EXPECT_EQ(static_cast<int>(Moment::kPageEnd), 2);
    EXPECT_EQ(static_cast<int>(Moment::kDocEnd), 3);
    EXPECT_EQ(kOpenDrawer, 0);
    EXPECT_EQ(kHerald, 1);
    EXPECT_EQ(kMaxFeed, 100);
    EXPECT_EQ(kMaxBuzzerVolume, 255);
}

TEST(OperationSettingsTest, ReadTakesEachValueFromItsByte) {
    for (const Block& block : kBlocks) {
        for (const int length : kLengths) {
            SCOPED_TRACE(testing::Message() << block.name << ", length " << length);
            RecordBytes bytes = DistinctBytes();
            bytes[block.commandLength] = static_cast<std::uint8_t>(length);
            const OEMDEV record = RecordOf(bytes);
            const OperationSettings settings = ReadOperation(record, block.moment);

            EXPECT_EQ(settings.sendCommand, bytes[block.sendCommand]);
            EXPECT_EQ(settings.feedToPosition, bytes[block.feedToPosition]);
            EXPECT_EQ(settings.commandLength, std::min(length, 128));
            for (std::size_t i = 0; i < settings.commandLength; ++i) {
                EXPECT_EQ(settings.command.at(i), bytes[block.command + i]) << "command byte " << i;
            }
            EXPECT_EQ(settings.cashDrawer, bytes[block.cashDrawer]);
            EXPECT_EQ(settings.cutPaper, bytes[block.cutPaper]);
            EXPECT_EQ(settings.feed, bytes[block.feed]);
            EXPECT_EQ(settings.buzzerVolume, bytes[block.buzzerVolume]);
            EXPECT_EQ(settings.herald, bytes[block.herald]);
            const std::uint32_t choice = bytes[block.drawerOrHerald] |
                                         static_cast<std::uint32_t>(bytes[block.drawerOrHerald + 1]) << 8 |
                                         static_cast<std::uint32_t>(bytes[block.drawerOrHerald + 2]) << 16 |
                                         static_cast<std::uint32_t>(bytes[block.drawerOrHerald + 3]) << 24;
            EXPECT_EQ(static_cast<std::uint32_t>(settings.drawerOrHerald), choice);
            EXPECT_EQ(settings.buzzer, bytes[block.buzzer]);
            EXPECT_EQ(settings.logo, bytes[block.logo]);
            EXPECT_EQ(settings.logoAlign, bytes[block.logoAlign]);
            EXPECT_EQ(settings.logoPosition, bytes[block.logoPosition]);
            EXPECT_EQ(Differences(BytesOf(record), bytes), "");
        }
    }
}

TEST(OperationSettingsTest, WriteTouchesTheBlockAndNothingElse) {
    for (const Block& block : kBlocks) {
        for (const int length : kLengths) {
            for (const RecordBytes& before : {DistinctBytes(), Filled(0x00), Filled(0xEE)}) {
                SCOPED_TRACE(testing::Message() << block.name << ", length " << length);
                const auto kept = static_cast<std::size_t>(std::min(length, 128));
                RecordBytes expected = before;
                expected[block.sendCommand] = 1;
                expected[block.feedToPosition] = 2;
                for (std::size_t i = 0; i < 128; ++i) {
                    expected[block.command + i] = static_cast<std::uint8_t>(i < kept ? 0x40 + i : 0);
                }
                expected[block.commandLength] = static_cast<std::uint8_t>(kept);
                expected[block.cashDrawer] = 12;
                expected[block.cutPaper] = 3;
                expected[block.feed] = 100;
                expected[block.buzzerVolume] = 0xFF;
                expected[block.herald] = 4;
                PutInt(expected, block.drawerOrHerald, 0xF8E7D6C5);
                expected[block.buzzer] = 5;
                expected[block.logo] = 9;
                expected[block.logoAlign] = 6;
                expected[block.logoPosition] = 7;

                OEMDEV record = RecordOf(before);
                WriteOperation(record, block.moment, DistinctSettings(static_cast<std::uint8_t>(length)));
                EXPECT_EQ(Differences(BytesOf(record), expected), "");
            }
        }
    }
}

TEST(OperationSettingsTest, WhatWasReadIsWrittenBack) {
    for (const Block& block : kBlocks) {
        RecordBytes bytes = DistinctBytes();
        bytes[block.commandLength] = 128;
        OEMDEV record = RecordOf(bytes);
        WriteOperation(record, block.moment, ReadOperation(record, block.moment));
        EXPECT_EQ(Differences(BytesOf(record), bytes), "") << block.name;
    }
}

}  // namespace
