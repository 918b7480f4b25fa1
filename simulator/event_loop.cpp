#include "simulator/event_loop.h"

#include <poll.h>

#include <cerrno>
#include <ctime>
#include <system_error>
#include <vector>

namespace readers {

void EventLoop::Watch(int descriptor, short events, std::function<void(short)> handler) {
    Descriptors[descriptor] = Watched{events, std::move(handler)};
}

void EventLoop::Unwatch(int descriptor) {
    Descriptors.erase(descriptor);
}

TimerId EventLoop::At(Clock::time_point when, std::function<void()> action) {
    const TimerId timer = ++LastTimer;
    Timers.emplace(std::pair(when, timer), std::move(action));
    Deadlines.emplace(timer, when);
    return timer;
}

void EventLoop::Cancel(TimerId timer) {
    const auto deadline = Deadlines.find(timer);
    if (deadline != Deadlines.end()) {
        Timers.erase({deadline->second, timer});
        Deadlines.erase(deadline);
    }
}

void EventLoop::RunDueTimers() {
    while (Running && !Timers.empty() && Timers.begin()->first.first <= Clock::now()) {
        auto due = Timers.extract(Timers.begin());
        Deadlines.erase(due.key().second);
        due.mapped()();
    }
}

void EventLoop::Run() {
    Running = true;
    std::vector<pollfd> polled;
    while (Running) {
        polled.clear();
        for (const auto& [descriptor, watched] : Descriptors) {
            polled.push_back({descriptor, watched.Events, 0});
        }
        timespec wait{};
        if (!Timers.empty()) {
            const auto left = Timers.begin()->first.first - Clock::now();
            const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(left).count();
            if (ns > 0) {
                wait.tv_sec = ns / 1'000'000'000;
                wait.tv_nsec = ns % 1'000'000'000;
            }
        }
        const int ready = ppoll(polled.data(), polled.size(), Timers.empty() ? nullptr : &wait, nullptr);
        if (ready < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "poll");
        }
        for (const pollfd& entry : polled) {
            // A handler may have taken this descriptor out, or stopped the loop.
            const auto found = Descriptors.find(entry.fd);
            if (!Running || ready <= 0 || entry.revents == 0 || found == Descriptors.end()) {
                continue;
            }
            const auto handler = found->second.Handler;
            handler(entry.revents);
        }
        RunDueTimers();
    }
}

}  // namespace readers
