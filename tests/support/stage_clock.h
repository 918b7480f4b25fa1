// A manual clock for a program of several threads: the main thread alone moves the time, step by step, and
// never before every other thread waits for something. What the threads do then comes in the same order each
// time.
#pragma once

#include <optional>

#include "tests/support/manual_clock.h"

class StageClock : public layer::ManualClock, private layer::TimedSource {
  public:
    StageClock();
    ~StageClock() override;

    bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                   std::uint64_t deadline, const std::function<bool()>& done) override;
    // Lets the other threads do all they can do without time passing. How often they have had a processor up
    // to now, which grows with whatever they do; nothing when one of them neither waits nor ends.
    static std::optional<unsigned long> Rest();
    // The earliest deadline of another thread's wait, or Forever.
    std::uint64_t NextWake();

  private:
    struct Waiter {
        std::condition_variable* Changed;
        std::uint64_t Deadline;
    };
    std::uint64_t NextDue() override;
    void RunDue(std::uint64_t now) override;
    // Wakes the threads whose time has come; false when there is none.
    bool WakeDue(std::uint64_t now);

    std::mutex waitersMutex_;
    std::vector<Waiter*> waiters_;
};
