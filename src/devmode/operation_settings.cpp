#include "devmode/operation_settings.h"

#include <algorithm>

namespace {

// One moment's fields in the record, by name: the blocks hold the same settings in different orders.
struct BlockFields {
    std::uint8_t OEMDEV::*sendCommand;
    std::uint8_t OEMDEV::*feedToPosition;
    std::uint8_t (OEMDEV::*command)[kCommandSize];
    std::uint8_t OEMDEV::*commandLength;
    std::uint8_t OEMDEV::*cashDrawer;
    std::uint8_t OEMDEV::*cutPaper;
    std::uint8_t OEMDEV::*feed;
    std::uint8_t OEMDEV::*buzzerVolume;
    std::uint8_t OEMDEV::*herald;
    std::int32_t OEMDEV::*drawerOrHerald;
    std::uint8_t OEMDEV::*buzzer;
    std::uint8_t OEMDEV::*logo;
    std::uint8_t OEMDEV::*logoAlign;
    std::uint8_t OEMDEV::*logoPosition;
};

#define BLOCK_FIELDS(moment)                                                                              \
    {                                                                                                     \
        &OEMDEV::b##moment, &OEMDEV::b##moment##FeedToPosition, &OEMDEV::b##moment##_Cmd,                 \
            &OEMDEV::b##moment##_CmdLen, &OEMDEV::b##moment##_Cashdrawer, &OEMDEV::b##moment##_CutPaper,  \
            &OEMDEV::b##moment##_Feed, &OEMDEV::b##moment##_BuzzerVolume, &OEMDEV::b##moment##_Herald,    \
            &OEMDEV::dw##moment##_DrawerOrHerald, &OEMDEV::b##moment##_Buzzer, &OEMDEV::b##moment##_Logo, \
            &OEMDEV::b##moment##_LogoAlign, &OEMDEV::b##moment##_LogoPosition                             \
    }

constexpr BlockFields kBlocks[] = {
    BLOCK_FIELDS(DocStart),
    BLOCK_FIELDS(PageStart),
    BLOCK_FIELDS(PageEnd),
    BLOCK_FIELDS(DocEnd),
};
#undef BLOCK_FIELDS

const BlockFields& FieldsOf(Moment moment) noexcept {
    return kBlocks[static_cast<std::size_t>(moment)];
}

}  // namespace

OperationSettings ReadOperation(const OEMDEV& record, Moment moment) noexcept {
    const BlockFields& block = FieldsOf(moment);
    OperationSettings settings{};
    settings.sendCommand = record.*block.sendCommand;
    settings.feedToPosition = record.*block.feedToPosition;
    std::copy_n(record.*block.command, kCommandSize, settings.command.begin());
    settings.commandLength =
        static_cast<std::uint8_t>(std::min<std::size_t>(record.*block.commandLength, kCommandSize));
    settings.cashDrawer = record.*block.cashDrawer;
    settings.cutPaper = record.*block.cutPaper;
    settings.feed = record.*block.feed;
    settings.buzzerVolume = record.*block.buzzerVolume;
    settings.herald = record.*block.herald;
    settings.drawerOrHerald = record.*block.drawerOrHerald;
    settings.buzzer = record.*block.buzzer;
    settings.logo = record.*block.logo;
    settings.logoAlign = record.*block.logoAlign;
    settings.logoPosition = record.*block.logoPosition;
    return settings;
}

void WriteOperation(OEMDEV& record, Moment moment, const OperationSettings& settings) noexcept {
    const BlockFields& block = FieldsOf(moment);
    const std::size_t length = std::min<std::size_t>(settings.commandLength, kCommandSize);
    record.*block.sendCommand = settings.sendCommand;
    record.*block.feedToPosition = settings.feedToPosition;
    std::fill_n(record.*block.command, kCommandSize, std::uint8_t{0});
    std::copy_n(settings.command.begin(), length, record.*block.command);
    record.*block.commandLength = static_cast<std::uint8_t>(length);
    record.*block.cashDrawer = settings.cashDrawer;
    record.*block.cutPaper = settings.cutPaper;
    record.*block.feed = settings.feed;
    record.*block.buzzerVolume = settings.buzzerVolume;
    record.*block.herald = settings.herald;
    record.*block.drawerOrHerald = settings.drawerOrHerald;
    record.*block.buzzer = settings.buzzer;
    record.*block.logo = settings.logo;
    record.*block.logoAlign = settings.logoAlign;
    record.*block.logoPosition = settings.logoPosition;
}
