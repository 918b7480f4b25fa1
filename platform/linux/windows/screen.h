// What stands behind Qt: a display server with or without a window manager, a frame buffer, nothing.
#pragma once

namespace layer {

// Somebody can see what is shown and answer it.
bool ScreenIsSeen();
// Tests see without a screen, too.
void SeeWithoutAScreen();
// Whether a window manager runs on the X display; asked anew every time. On X11 only.
bool WindowManagerRuns();
// The display server gives the focus to one window of all programs.
bool FocusIsReal();
// Keeps a strip of this height at the bottom of the screen free of windows; 0 gives it back.
void ReserveStrip(int height);

}  // namespace layer
