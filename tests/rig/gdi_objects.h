// How many GDI objects (pens, bitmaps, device contexts and the like) the process has.
#pragma once

namespace rig {

int CountGdiObjects();

}  // namespace rig
