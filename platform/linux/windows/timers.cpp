#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/linux/kernel/posix.h"
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
    Descriptor Alarm;
    std::uint64_t AlarmAt = Forever;
};

TimerTable& Table() {
    static auto* table = new TimerTable;
    return *table;
}

// Under the mutex, like SetAlarm.
std::uint64_t FirstDue(const TimerTable& table) {
    std::uint64_t due = Forever;
    for (const Timer& timer : table.Timers) {
        due = std::min(due, timer.Due);
    }
    return due;
}

// Sets the main thread's waking without waking it.
void SetAlarm(TimerTable& table, std::uint64_t due) {
    if (std::exchange(table.AlarmAt, due) == due) {
        return;
    }
    itimerspec when{};
    if (due != Forever) {
        const std::uint64_t now = CurrentClock().Now(), left = due > now ? due - now : 0;
        when.it_value.tv_sec = static_cast<time_t>(left / 1000);
        when.it_value.tv_nsec = left != 0 ? static_cast<long>(left % 1000) * 1'000'000 : 1;  // 0 is never
    }
    timerfd_settime(table.Alarm.Number(), 0, &when, nullptr);
}

class Source : public TimedSource {
  public:
    std::uint64_t NextDue() override {
        std::scoped_lock lock(Table().Mutex);
        return FirstDue(Table());
    }
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

int OpenAlarm() {
    TimerTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    table.Alarm = Descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    return table.Alarm.Number();
}

void ArmAlarm() {
    TimerTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    SetAlarm(table, FirstDue(table));
}

void ClearAlarm() {
    TimerTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    std::uint64_t times;
    // One that has been set anew meanwhile is not due.
    if (read(table.Alarm.Number(), &times, sizeof times) > 0) {
        table.AlarmAt = Forever;
    }
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
        layer::SetAlarm(table, std::min(table.AlarmAt, timer.Due));
    }
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
