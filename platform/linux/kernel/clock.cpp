#include "platform/linux/kernel/clock.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <ctime>
#include <thread>

#include "platform/kernel.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

using std::chrono::nanoseconds, std::chrono::microseconds, std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;
using SteadyTime = steady_clock::time_point;

constexpr nanoseconds LongestLead = microseconds(250);

// By how much this thread's alarms are set too early.
thread_local nanoseconds Lead{0};

// The kernel's monotonic clock, so that ticks of several programs can be compared.
class RealClock : public Clock {
  public:
    std::uint64_t Now() override {
        return static_cast<std::uint64_t>(std::chrono::floor<Milliseconds>(SinceStart()).count());
    }

    std::uint64_t DeadlineAfter(DWORD milliseconds) override {
        if (milliseconds == INFINITE) {
            return Forever;
        }
        if (milliseconds == 0) {
            return Now();  // who only looks does not wait for the next tick
        }
        return static_cast<std::uint64_t>(std::chrono::ceil<Milliseconds>(SinceStart()).count()) +
               milliseconds;
    }

    bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                   std::uint64_t deadline, const std::function<bool()>& done) override {
        while (!done()) {
            if (deadline == Forever) {
                condition.wait(lock);
            } else if (deadline <= Now()) {
                return false;  // who only looks does not sleep
            } else if (condition.wait_until(lock, SteadyTime(Milliseconds(deadline))) ==
                       std::cv_status::timeout) {
                return done();
            }
        }
        return true;
    }

    void Pause(DWORD milliseconds) override {
        if (milliseconds == INFINITE) {
            Clock::Pause(milliseconds);
        } else {
            const ExactWait wait(steady_clock::now() + Milliseconds(milliseconds));
            std::this_thread::sleep_until(wait.Alarm());
            wait.Finish();
        }
    }

    bool PollUntil(std::span<pollfd> files, std::uint64_t deadline) override {
        for (;;) {
            int timeout = -1;
            if (deadline != Forever) {
                const std::uint64_t now = Now();
                const std::uint64_t left = deadline > now ? deadline - now : 0;
                timeout = left > INT_MAX ? INT_MAX : static_cast<int>(left);
            }
            const int ready = poll(files.data(), files.size(), timeout);
            if (ready > 0) {
                return true;
            }
            if (ready < 0 && errno != EINTR) {
                return false;
            }
            if (ready == 0 && deadline != Forever && Now() >= deadline) {
                return false;
            }
        }
    }

    bool TakeUntil(sem_t& semaphore, std::uint64_t deadline) override {
        if (deadline == Forever) {
            return sem_wait(&semaphore) == 0;
        }
        timespec until{};
        until.tv_sec = static_cast<time_t>(deadline / 1000);
        until.tv_nsec = static_cast<long>(deadline % 1000) * 1'000'000;
        return sem_clockwait(&semaphore, CLOCK_MONOTONIC, &until) == 0;
    }

  private:
    static std::chrono::steady_clock::duration SinceStart() {
        return std::chrono::steady_clock::now().time_since_epoch();
    }
};

RealClock TheRealClock;
std::atomic<Clock*> Installed{nullptr};

}  // namespace

std::uint64_t Clock::DeadlineAfter(DWORD milliseconds) {
    return milliseconds == INFINITE ? Forever : Now() + milliseconds;
}

void Clock::Pause(DWORD milliseconds) {
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    WaitUntil(lock, condition, DeadlineAfter(milliseconds), [] { return false; });
}

ExactWait::ExactWait(Moment end) : end_(end), alarm_(OnMainThread() ? end : end - Lead) {}

void ExactWait::Finish() const {
    constexpr int weight = 8;  // of what is known against what is new
    Lead = std::clamp(Lead + std::clamp(steady_clock::now() - end_, -LongestLead, LongestLead) / weight,
                      nanoseconds{}, LongestLead);
    while (steady_clock::now() < end_) {
    }
}

Clock& CurrentClock() {
    Clock* clock = Installed.load(std::memory_order_acquire);
    return clock != nullptr ? *clock : TheRealClock;
}

void InstallClock(Clock* clock) {
    Installed.store(clock, std::memory_order_release);
}

}  // namespace layer

void Sleep(DWORD milliseconds) {
    layer::ParkAtEnd();
    layer::CurrentClock().Pause(milliseconds);
    layer::ParkAtEnd();
}

DWORD GetTickCount() {
    layer::ParkAtEnd();
    return static_cast<DWORD>(layer::CurrentClock().Now());
}
