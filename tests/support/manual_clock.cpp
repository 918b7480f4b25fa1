#include "tests/support/manual_clock.h"

#include <algorithm>

namespace layer {

std::uint64_t ManualClock::Now() {
    std::scoped_lock lock(mutex_);
    return now_;
}

bool ManualClock::WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                            std::uint64_t deadline, const std::function<bool()>& done) {
    while (!done()) {
        if (deadline == Forever) {
            condition.wait(lock);
            continue;
        }
        // The sources fulfil waits of others, so the caller's lock must be free meanwhile.
        lock.unlock();
        const bool moved = StepTowards(deadline);
        lock.lock();
        if (!moved) {
            return done();
        }
    }
    return true;
}

bool ManualClock::PollUntil(std::span<pollfd> files, std::uint64_t deadline) {
    for (;;) {
        if (poll(files.data(), files.size(), deadline == Forever ? -1 : 0) > 0) {
            return true;
        }
        if (deadline != Forever && !StepTowards(deadline)) {
            return poll(files.data(), files.size(), 0) > 0;
        }
    }
}

bool ManualClock::TakeUntil(sem_t& semaphore, std::uint64_t deadline) {
    if (deadline == Forever) {
        return sem_wait(&semaphore) == 0;
    }
    while (sem_trywait(&semaphore) != 0) {
        if (!StepTowards(deadline)) {
            return sem_trywait(&semaphore) == 0;
        }
    }
    return true;
}

void ManualClock::Advance(std::uint64_t milliseconds) {
    AdvanceTo(Now() + milliseconds);
}

void ManualClock::AdvanceTo(std::uint64_t time) {
    while (StepTowards(time)) {
    }
}

void ManualClock::AddSource(TimedSource& source) {
    std::scoped_lock lock(sources_mutex_);
    sources_.push_back(&source);
}

void ManualClock::RemoveSource(TimedSource& source) {
    std::scoped_lock lock(sources_mutex_);
    std::erase(sources_, &source);
}

// Moves to the next due time, or to the limit, and runs what is due there; false when the limit was reached
// before.
bool ManualClock::StepTowards(std::uint64_t limit) {
    std::scoped_lock sources(sources_mutex_);
    const std::uint64_t now = Now();
    if (now >= limit) {
        return false;
    }
    std::uint64_t next = limit;
    for (TimedSource* source : sources_) {
        const std::uint64_t due = source->NextDue();
        // What is due already cannot hold the time back.
        if (due > now) {
            next = std::min(next, due);
        }
    }
    {
        std::scoped_lock lock(mutex_);
        now_ = next;
    }
    for (TimedSource* source : sources_) {
        if (source->NextDue() <= next) {
            source->RunDue(next);
        }
    }
    return true;
}

}  // namespace layer
