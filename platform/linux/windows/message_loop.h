// The main thread, which owns all windows: what is posted to it, the calls that are carried there, timers,
// quitting.
#pragma once

#include <functional>
#include <type_traits>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/thread.h"
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

// Runs the work on the main thread and waits for it; at once when called there. Before the main thread takes
// messages the call waits until it does; once the end of the program has begun, a call from another thread
// parks.
void RunOnMainThread(const std::function<void()>& work);
// The same without waiting.
void PostToMainThread(std::function<void()> work);

// Runs the function on the main thread and returns its result; how every window call of the layer is made.
template <class Function>
auto OnMain(Function&& function) -> decltype(function()) {
    using Result = decltype(function());
    ParkAtEnd();
    if constexpr (std::is_void_v<Result>) {
        RunOnMainThread([&] { function(); });
    } else {
        Result result{};
        RunOnMainThread([&] { result = function(); });
        return result;
    }
}

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
// What wakes the main thread for the next due timer, whichever thread sets it: a descriptor that is readable
// then (-1 when the system has none left), a look at what is due, and that it has been seen.
int OpenAlarm();
void ArmAlarm();
void ClearAlarm();

}  // namespace layer
