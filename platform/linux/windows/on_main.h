#pragma once

#include <type_traits>

#include "platform/linux/kernel/main_thread.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

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
