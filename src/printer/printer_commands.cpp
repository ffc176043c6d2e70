#include "printer/printer_commands.h"

namespace {

// The printer takes commands that concern itself between these two.
constexpr std::uint8_t kOpen[] = {0x1B, 0x63, 0x3B, 0x01};
constexpr std::uint8_t kClose[] = {0x1B, 0x63, 0x3B, 0x00};

// GS ( A: two bytes follow, the sheet to print on (0: the roll) and what to print (2: the printer's state).
constexpr std::uint8_t kTestPrint[] = {0x1D, 0x28, 0x41, 0x02, 0x00, 0x00, 0x02};

template <std::size_t N>
std::vector<std::uint8_t> Piece(const std::uint8_t (&bytes)[N]) {
    return {bytes, bytes + N};
}

}  // namespace

CommandPieces SelfTestCommand() {
    return {Piece(kOpen), Piece(kTestPrint), Piece(kClose)};
}
