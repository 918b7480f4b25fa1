// The layer's clock for tests that wait without time passing.
#pragma once

#include <mutex>
#include <vector>

#include "platform/linux/kernel/clock.h"

namespace layer {

// A clock on which waiting costs nothing: a wait with a deadline that is not fulfilled moves the time to that
// deadline at once, stopping at every due time of the sources on the way and ending early when one of them
// has fulfilled it. A wait without a deadline really waits, and moves nothing.
class ManualClock : public Clock {
  public:
    std::uint64_t Now() override;
    bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                   std::uint64_t deadline, const std::function<bool()>& done) override;
    bool PollUntil(std::span<pollfd> files, std::uint64_t deadline) override;
    bool TakeUntil(sem_t& semaphore, std::uint64_t deadline) override;
    // Moves the time forward, running the sources as they become due.
    void Advance(std::uint64_t milliseconds);
    void AdvanceTo(std::uint64_t time);
    // A source that has been removed is not being run, and will not be.
    void AddSource(TimedSource& source);
    void RemoveSource(TimedSource& source);

  private:
    bool StepTowards(std::uint64_t limit);

    std::mutex mutex_;
    std::uint64_t now_ = 1000;
    std::recursive_mutex sources_mutex_;
    std::vector<TimedSource*> sources_;
};

}  // namespace layer
