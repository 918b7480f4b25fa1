// What happens when the main thread hangs: in a library, or for a display that does not answer.
#pragma once

namespace layer {

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
