// Commands that concern the printer itself, not what it prints.
#pragma once

#include <cstddef>

#include "printer/command_pieces.h"

// Nothing here fails but for lack of memory, which throws bad_alloc.

// Has the printer print its own test page.
CommandPieces SelfTestCommand();

// Has the printer forget the logos that it keeps.
CommandPieces ClearLogosCommand();

enum class LogoRaster { kMono, kGrey };

// A download of logos: what comes before the rasters of `count` logos (1 to 9), and what comes behind.
CommandPieces LogosBegin(LogoRaster raster, std::size_t count);
CommandPieces LogosEnd();
