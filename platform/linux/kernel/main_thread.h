// Calls carried to the main thread, which owns all windows.
#pragma once

#include <functional>

namespace layer {

// Runs the work on the main thread and waits for it; at once when called there. Before the main thread takes
// messages the call waits until it does; once the end of the program has begun, a call from another thread
// parks.
void RunOnMainThread(const std::function<void()>& work);
// The same without waiting.
void PostToMainThread(std::function<void()> work);

}  // namespace layer
