#include "tests/support/stage_clock.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "platform/linux/kernel/thread.h"

namespace {

// How often the other threads have had a processor; nothing while one of them has it or is to get it.
std::optional<unsigned long> SwitchesAtRest() {
    const std::string main = std::to_string(getpid()), own = std::to_string(gettid());
    unsigned long switches = 0;
    std::error_code ended;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", ended)) {
        const std::string thread = task.path().filename();
        if (thread == main || thread == own) {
            continue;
        }
        std::ifstream status(task.path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("State:") && line.find("S (") == std::string::npos) {
                return std::nullopt;
            }
            if (const auto at = line.find("ctxt_switches:"); at != std::string::npos) {
                switches += std::stoul(line.substr(at + 14));
            }
        }
    }
    return switches;
}

}  // namespace

StageClock::StageClock() {
    AddSource(*this);
}

StageClock::~StageClock() {
    RemoveSource(*this);
}

std::optional<unsigned long> StageClock::Rest() {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::optional<unsigned long> before;
    while (std::chrono::steady_clock::now() < until) {
        // One that was seen waiting may have been woken by one that was looked at later: they are looked at
        // twice.
        const auto switches = SwitchesAtRest();
        if (switches && switches == before) {
            return switches;
        }
        before = switches;
        if (!switches) {
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    }
    return std::nullopt;
}

std::uint64_t StageClock::NextWake() {
    const std::lock_guard lock(waitersMutex_);
    std::uint64_t next = layer::Forever;
    for (const Waiter* waiter : waiters_) {
        next = std::min(next, waiter->Deadline);
    }
    return next;
}

bool StageClock::WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                           std::uint64_t deadline, const std::function<bool()>& done) {
    if (layer::OnMainThread() || deadline == layer::Forever) {
        return ManualClock::WaitUntil(lock, condition, deadline, done);
    }
    Waiter waiter{&condition, deadline};
    {
        const std::lock_guard waiters(waitersMutex_);
        waiters_.push_back(&waiter);
    }
    while (!done() && Now() < deadline) {
        condition.wait(lock);
    }
    const std::lock_guard waiters(waitersMutex_);
    std::erase(waiters_, &waiter);
    return done();
}

// Asked before each step of the time.
std::uint64_t StageClock::NextDue() {
    Rest();
    return NextWake();
}

bool StageClock::WakeDue(std::uint64_t now) {
    const std::lock_guard lock(waitersMutex_);
    bool due = false;
    for (const Waiter* waiter : waiters_) {
        if (waiter->Deadline <= now) {
            waiter->Changed->notify_all();
            due = true;
        }
    }
    return due;
}

void StageClock::RunDue(std::uint64_t now) {
    while (WakeDue(now) && Rest()) {
    }
}
