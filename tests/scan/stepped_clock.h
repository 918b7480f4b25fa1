// A clock that moves only when the test says so; waits really wait for it.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/linux/kernel/clock.h"

class SteppedClock : public layer::Clock {
  public:
    std::uint64_t Now() override { return now_; }
    bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                   std::uint64_t deadline, const std::function<bool()>& done) override {
        ++waits_;
        while (!done() && now_ < deadline) {
            condition.wait_for(lock, std::chrono::milliseconds(1));
        }
        return done();
    }
    bool PollUntil(std::span<pollfd>, std::uint64_t) override { return false; }
    bool TakeUntil(sem_t&, std::uint64_t) override { return false; }

    void AdvanceTo(std::uint64_t time) { now_ = time; }
    // Blocks until that many waits have begun.
    void AwaitWaits(int count) const {
        while (waits_ < count) {
            std::this_thread::yield();
        }
    }

  private:
    std::atomic<std::uint64_t> now_ = 0;
    std::atomic<int> waits_ = 0;
};
