// The layer's one clock. Sleep, GetTickCount, timers and every time-out go through it; tests install a manual
// one.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>

#include <poll.h>
#include <semaphore.h>

#include "platform/base.h"

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
    // Waits so long, and not until a tick of the clock.
    virtual void Pause(DWORD milliseconds);
    // Waits until one of the files is ready (their revents are filled in); false when the deadline has
    // passed.
    virtual bool PollUntil(std::span<pollfd> files, std::uint64_t deadline) = 0;
    // Takes one from a semaphore that processes share; false when the deadline has passed or a signal came.
    virtual bool TakeUntil(sem_t& semaphore, std::uint64_t deadline) = 0;
    // The deadline of a wait that begins now and must not end early; Forever for INFINITE.
    virtual std::uint64_t DeadlineAfter(DWORD milliseconds);
};

// The clock in force; the real one unless a test has installed another.
Clock& CurrentClock();
// Installs a clock for tests (null: the real one again). No other thread of the layer may run meanwhile.
void InstallClock(Clock* clock);

// A wait on real time that ends when it shall: the kernel brings an idle processor back some tenth of a
// millisecond late, and a scan has three waits behind its last byte. So the alarm is set earlier by what it
// came late in this thread so far (0.25 ms at most), and what may be left passes without sleep. The main
// thread, which no scan waits for, sleeps until the end.
class ExactWait {
  public:
    using Moment = std::chrono::steady_clock::time_point;

    explicit ExactWait(Moment end);
    // When the kernel shall wake the thread.
    Moment Alarm() const { return alarm_; }
    // To be called when it has, and at no other end of the wait: it returns when the wait's end has come.
    void Finish() const;

  private:
    const Moment end_, alarm_;
};

// Something with due times of its own on a manual clock: the timers, a scripted port. Both are called in the
// thread that moves the time, with no lock of the clock's caller held, and must not wait.
class TimedSource {
  public:
    virtual ~TimedSource() = default;
    virtual std::uint64_t NextDue() = 0;  // Forever when nothing is due
    virtual void RunDue(std::uint64_t now) = 0;
};

}  // namespace layer
