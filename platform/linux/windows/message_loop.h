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

// While one exists the main thread lets Qt paint, and no message, timer or carried call is handled.
class QuietTime {
  public:
    QuietTime();
    ~QuietTime();
    QuietTime(const QuietTime&) = delete;
    QuietTime& operator=(const QuietTime&) = delete;
};

// Timers of windows. The source is for tests: a manual clock that knows it wakes the main thread when one is
// due.
TimedSource& WindowTimers();
void KillTimersOf(HWND window);
// The next due timer as a message; each due one counts once however late it is.
bool TakeDueTimer(MSG& message);
// Milliseconds until the next one is due (0: now); -1 when there is none.
int UntilNextTimer();

}  // namespace layer
