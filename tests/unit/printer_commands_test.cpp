// Commands for the printer itself, byte by byte and piece by piece: each piece is a write of its own.
#include "printer/printer_commands.h"

#include <gtest/gtest.h>

namespace {

TEST(PrinterCommands, SelfTest) {
    EXPECT_EQ(SelfTestCommand(), (CommandPieces{{0x1B, 0x63, 0x3B, 0x01},
                                                {0x1D, 0x28, 0x41, 0x02, 0x00, 0x00, 0x02},
                                                {0x1B, 0x63, 0x3B, 0x00}}));
}

TEST(PrinterCommands, ClearLogos) {
    EXPECT_EQ(
        ClearLogosCommand(),
        (CommandPieces{{0x1B, 0x63, 0x3B, 0x01}, {0x1C, 0x71, 0x00, 0x00, 0x0A}, {0x1B, 0x63, 0x3B, 0x00}}));
}

TEST(PrinterCommands, LogosBeginWithTheirNumber) {
    for (std::uint8_t count = 1; count <= 9; ++count) {
        EXPECT_EQ(LogosBegin(LogoRaster::kMono, count),
                  (CommandPieces{{0x1B, 0x63, 0x3B, 0x01}, {0x1C, 0x71, count}}));
        EXPECT_EQ(LogosBegin(LogoRaster::kGrey, count),
                  (CommandPieces{{0x1B, 0x63, 0x3B, 0x01}, {0x1C, 0x72, count}}));
    }
}

TEST(PrinterCommands, LogosEndWithALineFeed) {
    EXPECT_EQ(LogosEnd(), (CommandPieces{{0x0A}, {0x1B, 0x63, 0x3B, 0x00}}));
}

}  // namespace
