// One thread, one poll: descriptors, timers, and the wish to stop.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace readers {

using Clock = std::chrono::steady_clock;
using TimerId = std::uint64_t;  // 0 is no timer

class EventLoop {
  public:
    // `handler` gets the events that poll reported. One handler per descriptor; a second call replaces it.
    void Watch(int descriptor, short events, std::function<void(short)> handler);
    void Unwatch(int descriptor);

    TimerId At(Clock::time_point when, std::function<void()> action);
    void Cancel(TimerId timer);

    // Until Stop(). Timers that are due at the same time run in the order in which they were set.
    void Run();
    void Stop() { Running = false; }

  private:
    struct Watched {
        short Events;
        std::function<void(short)> Handler;
    };

    void RunDueTimers();

    std::map<int, Watched> Descriptors;
    std::map<std::pair<Clock::time_point, TimerId>, std::function<void()>> Timers;
    std::map<TimerId, Clock::time_point> Deadlines;
    TimerId LastTimer = 0;
    bool Running = false;
};

}  // namespace readers
