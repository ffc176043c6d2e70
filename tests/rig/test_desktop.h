// A desktop of this process's own: windows, keyboard and mouse of tests that run at the same time do not
// meet.
#pragma once

namespace rig {

// At the start of a test program that sends input, before it makes a window.
void UseOwnDesktop();
// At the start of each further thread that makes windows or sends input.
void JoinOwnDesktop();

}  // namespace rig
