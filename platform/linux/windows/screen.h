// What stands behind Qt: a display server with or without a window manager, a frame buffer, nothing.
#pragma once

namespace layer {

// Somebody can see what is shown and answer it.
bool ScreenIsSeen();
// Tests see without a screen, too.
void SeeWithoutAScreen();
// The descriptor of Qt's connection to the X server, -1 without one.
int DisplayConnection();
// The display server gives the focus to one window of all programs.
bool FocusIsReal();
// Keeps a strip of this height at the bottom of the screen free of windows; 0 gives it back.
void ReserveStrip(int height);

}  // namespace layer
