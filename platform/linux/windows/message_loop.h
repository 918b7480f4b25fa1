// The main thread's messages: what is posted, what other threads have carried here, timers, quitting.
#pragma once

#include "platform/linux/kernel/clock.h"
#include "platform/window.h"

namespace layer {

// Begins to take messages; the main thread, once, after Qt has started.
void OpenMailbox();
// Makes the main thread look at its messages and timers. Any thread.
void WakeMainThread();
// Dispatches everything that is there (messages, due timers, input, carried calls) without waiting; for
// tests.
void PumpMessages();
// Takes a pending WM_QUIT back; for tests.
void ForgetQuit();

// What WM_QUIT ends by the way: the popup menu that is open, with nothing chosen, and the message boxes. Main
// thread.
void ClosePopup();
void CloseMessageBoxes();

// Between the two calls the main thread lets Qt paint, and no message, timer or carried call is handled.
void BeQuiet(bool quiet);

// Timers of windows. The source is for tests: a manual clock that knows it wakes the main thread when one is
// due.
TimedSource& WindowTimers();
void KillTimersOf(HWND window);
// The next due timer as a message; each due one counts once however late it is.
bool TakeDueTimer(MSG& message);
// Milliseconds until the next one is due (0: now); -1 when there is none.
int UntilNextTimer();

}  // namespace layer
