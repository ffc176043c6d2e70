// A command for the printer as it is sent.
#pragma once

#include <cstdint>
#include <vector>

// One piece is one write call, also when it is empty.
using CommandPieces = std::vector<std::vector<std::uint8_t>>;
