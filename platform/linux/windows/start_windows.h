// The beginning and the end of everything with windows. Main thread.
#pragma once

namespace layer {

// Starts Qt and the message loop; once. The platform is the environment's (QT_QPA_PLATFORM), else X11 where
// DISPLAY is set, else Wayland where WAYLAND_DISPLAY is, else the frame buffer where there is one, else none
// (offscreen). The thread becomes the main thread.
void StartWindows();
// A signal has asked for the end.
bool EndRequested();
// SIGTERM, SIGINT, SIGHUP and the end of the session close the main window from now on; a second one ends the
// message loop.
void TakeSignals();

// Takes every notification icon away.
void RemoveNotificationIcons();

}  // namespace layer
