// Calls carried to the main thread, which owns all windows.
#pragma once

#include <functional>
#include <type_traits>

#include "platform/linux/kernel/thread.h"

namespace layer {

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

}  // namespace layer
