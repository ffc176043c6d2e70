// What the process holds of the system, counted one by one: not every system keeps the counts.
#pragma once

namespace rig {

// Pens, bitmaps, device contexts and the like.
int CountGdiObjects();

// Windows, menus, icons and cursors.
int CountUserObjects();

// Of all kinds: files, keys, events, threads.
int CountHandles();

}  // namespace rig
