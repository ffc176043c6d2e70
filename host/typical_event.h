// The event that users of the driver know best: open a cash drawer and cut when a document starts.
#pragma once

#include "ui_driver.h"

// Sets it on the Operation page of `sheet`.
void PlayTypicalEvent(const Sheet& sheet);
