// The beginning and the end of everything with windows, and the watch over it. Main thread.
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

// Around the connection to a display: one that takes it and says nothing for 15 s ends the program with code
// 1 and a word. Main thread.
void AwaitDisplay();
void DisplayHasCome();

// From now on the message loop has to turn twice in each period: the one that a service manager gives, which
// is told, or a minute. When it does not, the display is given up, which ends the program in order if it is
// what the main thread waits for; 5 s later the program crashes. Main thread, once, when the message loop is
// open.
void WatchMainThread();
// Tells that the program lives. Whoever keeps the main thread for long calls it.
void TellWatchdog();
// The main thread is to tell it within 15 s. May be called by a signal's handler.
void HurryMainThread();

}  // namespace layer
