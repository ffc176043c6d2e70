// What the printer does at one moment of a job, lifted out of the record's four differently ordered blocks.
#pragma once

#include <array>

#include "devmode/oemdev.h"

// In the order of the Operation page's buttons: the end of the page comes before the end of the document.
enum class Moment : std::uint8_t { kDocStart = 0, kPageStart = 1, kPageEnd = 2, kDocEnd = 3 };

constexpr std::int32_t kOpenDrawer = 0;
constexpr std::int32_t kHerald = 1;

constexpr std::uint8_t kMaxFeed = 100;  // millimetres
constexpr std::uint8_t kMaxBuzzerVolume = 255;

struct OperationSettings {
    std::uint8_t sendCommand;
    std::uint8_t feedToPosition;
    std::array<std::uint8_t, kCommandSize> command;
    std::uint8_t commandLength;  // 0 to 128 whatever the record held
    std::uint8_t cashDrawer;
    std::uint8_t cutPaper;
    std::uint8_t feed;
    std::uint8_t buzzerVolume;
    std::uint8_t herald;
    std::int32_t drawerOrHerald;
    std::uint8_t buzzer;
    std::uint8_t logo;
    std::uint8_t logoAlign;
    std::uint8_t logoPosition;
};

// Copies a moment's block out of the record, field by field. A command length beyond 128 reads as 128.
OperationSettings ReadOperation(const OEMDEV& record, Moment moment) noexcept;

// Copies every setting into the moment's block; command bytes behind the length become 0.
void WriteOperation(OEMDEV& record, Moment moment, const OperationSettings& settings) noexcept;
