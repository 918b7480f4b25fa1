// The main window's timers on the manual clock, for tests without a window.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "tests/support/manual_clock.h"

class TimerDouble : public layer::TimedSource {
  public:
    explicit TimerDouble(layer::ManualClock& clock);
    ~TimerDouble() override;

    void Set(UINT_PTR id, DWORD period);
    void Kill(UINT_PTR id);
    // The period of a running timer, or 0.
    DWORD PeriodOf(UINT_PTR id);
    // Timers that have fired and whose work waits, so that it is done outside the clock; oldest first.
    std::vector<UINT_PTR> TakeFired();

    std::uint64_t NextDue() override;
    void RunDue(std::uint64_t now) override;

  private:
    struct Timer {
        std::uint64_t Due;
        DWORD Period;
    };
    layer::ManualClock& clock_;
    std::mutex mutex_;
    std::map<UINT_PTR, Timer> running_;
    std::vector<UINT_PTR> fired_;
};

// How often the system has silenced the sound that plays.
int SoundsStopped();
