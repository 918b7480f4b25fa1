// What stands behind Qt: a display server with or without a window manager, a frame buffer, nothing.
#pragma once

namespace layer {

// The display server gives the focus to one window of all programs.
bool FocusIsReal();
// Keeps a strip of this height at the bottom of the screen free of windows; 0 gives it back.
void ReserveStrip(int height);

}  // namespace layer
