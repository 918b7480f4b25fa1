// Waiting in real time, since what is waited for happens in other programs.
#pragma once

#include <chrono>
#include <thread>

inline void Pause(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// Whether the condition comes to hold within the time.
template <class Condition>
bool Within(int milliseconds, const Condition& condition) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= until) {
            return false;
        }
        Pause(20);
    }
    return true;
}
