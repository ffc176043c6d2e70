// Commands that concern the printer itself, not what it prints.
#pragma once

#include "printer/command_pieces.h"

// Has the printer print its own test page. May throw bad_alloc.
CommandPieces SelfTestCommand();
