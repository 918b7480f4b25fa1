#include <algorithm>
#include <climits>
#include <mutex>
#include <vector>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

struct Timer {
    HWND Window;
    UINT_PTR Id;
    UINT Period;
    std::uint64_t Due;
};

struct TimerTable {
    std::mutex Mutex;
    std::vector<Timer> Timers;
};

TimerTable& Table() {
    static auto* table = new TimerTable;
    return *table;
}

std::uint64_t FirstDue() {
    TimerTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    std::uint64_t due = Forever;
    for (const Timer& timer : table.Timers) {
        due = std::min(due, timer.Due);
    }
    return due;
}

class Source : public TimedSource {
  public:
    std::uint64_t NextDue() override { return FirstDue(); }
    void RunDue(std::uint64_t) override { WakeMainThread(); }
};

}  // namespace

TimedSource& WindowTimers() {
    static Source source;
    return source;
}

void KillTimersOf(HWND window) {
    TimerTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    std::erase_if(table.Timers, [=](const Timer& timer) { return timer.Window == window; });
}

bool TakeDueTimer(MSG& message) {
    const std::uint64_t now = CurrentClock().Now();
    TimerTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    // Set by another thread while its window was going.
    std::erase_if(table.Timers, [](const Timer& timer) { return !IsOwnWindow(timer.Window); });
    const auto first = std::min_element(table.Timers.begin(), table.Timers.end(),
                                        [](const Timer& a, const Timer& b) { return a.Due < b.Due; });
    if (first == table.Timers.end() || first->Due > now) {
        return false;
    }
    message = MSG{};
    message.hwnd = first->Window;
    message.message = WM_TIMER;
    message.wParam = first->Id;
    first->Due = now + first->Period;
    return true;
}

int UntilNextTimer() {
    const std::uint64_t due = FirstDue();
    if (due == Forever) {
        return -1;
    }
    const std::uint64_t now = CurrentClock().Now();
    return due <= now ? 0 : static_cast<int>(std::min<std::uint64_t>(due - now, INT_MAX));
}

}  // namespace layer

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC) {
    layer::ParkAtEnd();
    if (!layer::IsOwnWindow(window)) {
        return 0;
    }
    // The platform's shortest and longest periods.
    const UINT period = std::clamp<UINT>(milliseconds, 10, INT_MAX);
    const layer::Timer timer{window, id, period, layer::CurrentClock().DeadlineAfter(period)};
    {
        layer::TimerTable& table = layer::Table();
        std::scoped_lock lock(table.Mutex);
        const auto running =
            std::find_if(table.Timers.begin(), table.Timers.end(),
                         [&](const layer::Timer& other) { return other.Window == window && other.Id == id; });
        if (running != table.Timers.end()) {
            *running = timer;
        } else {
            table.Timers.push_back(timer);
        }
    }
    layer::WakeMainThread();
    return id != 0 ? id : 1;
}

BOOL KillTimer(HWND window, UINT_PTR id) {
    layer::ParkAtEnd();
    layer::TimerTable& table = layer::Table();
    std::scoped_lock lock(table.Mutex);
    const auto killed = std::erase_if(
        table.Timers, [&](const layer::Timer& timer) { return timer.Window == window && timer.Id == id; });
    return killed != 0 ? TRUE : FALSE;
}
