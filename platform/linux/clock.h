// The layer's one clock. Sleep, GetTickCount, timers and every time-out go through it; tests install a manual
// one.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace layer {

inline constexpr std::uint64_t Forever = ~std::uint64_t{0};

class Clock {
  public:
    virtual ~Clock() = default;
    // Milliseconds since the clock's start, never going back. Any thread.
    virtual std::uint64_t Now() = 0;
    // Waits on the condition with its mutex held until `done` holds or the deadline (a value of Now, or
    // Forever) has passed; says whether `done` holds. Every time-out of the layer is this wait, except those
    // on a real tty.
    virtual bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                           std::uint64_t deadline, const std::function<bool()>& done) = 0;
};

// The clock in force; the real one unless a test has installed another.
Clock& CurrentClock();
// Installs a clock for tests (null: the real one again). No other thread of the layer may run meanwhile.
void InstallClock(Clock* clock);

// A clock on which waiting costs nothing: a wait with a deadline that is not fulfilled moves the time to that
// deadline at once. A wait without a deadline really waits.
class ManualClock : public Clock {
  public:
    std::uint64_t Now() override;
    bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                   std::uint64_t deadline, const std::function<bool()>& done) override;
    // Moves the time forward, and tells the listener (the timers, a scripted port) about it.
    void Advance(std::uint64_t milliseconds);
    void AdvanceTo(std::uint64_t time);

  private:
    std::mutex mutex_;
    std::uint64_t now_ = 1000;
};

}  // namespace layer
