#include "printer/printer_commands.h"

namespace {

// The printer takes commands that concern itself between these two.
constexpr std::uint8_t kOpen[] = {0x1B, 0x63, 0x3B, 0x01};
constexpr std::uint8_t kClose[] = {0x1B, 0x63, 0x3B, 0x00};

// GS ( A: two bytes follow, the sheet to print on (0: the roll) and what to print (2: the printer's state).
constexpr std::uint8_t kTestPrint[] = {0x1D, 0x28, 0x41, 0x02, 0x00, 0x00, 0x02};

// FS q and FS r: the number of logos follows, then each with its size and raster, then a line feed.
constexpr std::uint8_t kFileSeparator = 0x1C;
constexpr std::uint8_t kMonoLogos = 0x71;
constexpr std::uint8_t kGreyLogos = 0x72;
constexpr std::uint8_t kLineFeed[] = {0x0A};
constexpr std::uint8_t kNoLogos[] = {kFileSeparator, kMonoLogos, 0x00, 0x00, 0x0A};

template <std::size_t N>
std::vector<std::uint8_t> Piece(const std::uint8_t (&bytes)[N]) {
    return {bytes, bytes + N};
}

}  // namespace

CommandPieces SelfTestCommand() {
    return {Piece(kOpen), Piece(kTestPrint), Piece(kClose)};
}

CommandPieces ClearLogosCommand() {
    return {Piece(kOpen), Piece(kNoLogos), Piece(kClose)};
}

CommandPieces LogosBegin(LogoRaster raster, std::size_t count) {
    const std::uint8_t kind = raster == LogoRaster::kGrey ? kGreyLogos : kMonoLogos;
    return {Piece(kOpen), {kFileSeparator, kind, static_cast<std::uint8_t>(count)}};
}

CommandPieces LogosEnd() {
    return {Piece(kLineFeed), Piece(kClose)};
}
