#include "tests/wire/timer_double.h"

#include <atomic>
#include <utility>

#include "link/read_control.h"
#include "platform/sound.h"
#include "shell/shell_state.h"

namespace {

std::atomic<TimerDouble*> current{nullptr};
std::atomic<int> soundsStopped{0};

// What talks to a port takes time, and is done outside the clock.
bool TakesTime(UINT_PTR id) {
    return id == IDT_RFID_READ || id == IDT_AIM_DURATION;
}

}  // namespace

TimerDouble::TimerDouble(layer::ManualClock& clock) : clock_(clock) {
    current = this;
    clock_.AddSource(*this);
}

TimerDouble::~TimerDouble() {
    clock_.RemoveSource(*this);
    current = nullptr;
}

void TimerDouble::Set(UINT_PTR id, DWORD period) {
    const std::lock_guard lock(mutex_);
    running_[id] = {clock_.Now() + period, period};
}

void TimerDouble::Kill(UINT_PTR id) {
    const std::lock_guard lock(mutex_);
    running_.erase(id);
    std::erase(fired_, id);
}

DWORD TimerDouble::PeriodOf(UINT_PTR id) {
    const std::lock_guard lock(mutex_);
    const auto found = running_.find(id);
    return found == running_.end() ? 0 : found->second.Period;
}

std::vector<UINT_PTR> TimerDouble::TakeFired() {
    const std::lock_guard lock(mutex_);
    return std::exchange(fired_, {});
}

std::uint64_t TimerDouble::NextDue() {
    const std::lock_guard lock(mutex_);
    std::uint64_t next = layer::Forever;
    for (const auto& [id, timer] : running_)
        next = std::min(next, timer.Due);
    return next;
}

void TimerDouble::RunDue(std::uint64_t now) {
    std::vector<UINT_PTR> due;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [id, timer] : running_) {
            if (timer.Due <= now)
                due.push_back(id);
        }
        for (const UINT_PTR id : due)
            running_.erase(id);
    }
    for (const UINT_PTR id : due) {
        if (!TakesTime(id)) {
            static_cast<void>(HandleTimer(id));
            continue;
        }
        const std::lock_guard lock(mutex_);
        fired_.push_back(id);
    }
}

int SoundsStopped() {
    return soundsStopped;
}

UINT_PTR SetTimer(HWND, UINT_PTR id, UINT milliseconds, TIMERPROC) {
    if (TimerDouble* timers = current)
        timers->Set(id, milliseconds);
    return id;
}

BOOL KillTimer(HWND, UINT_PTR id) {
    if (TimerDouble* timers = current)
        timers->Kill(id);
    return TRUE;
}

BOOL PlaySoundW(LPCWSTR name, HMODULE, DWORD) {
    if (name == nullptr)
        ++soundsStopped;
    return TRUE;
}

// The pointer of a screen that nobody sees.
HCURSOR LoadCursorW(HINSTANCE, LPCWSTR) {
    return nullptr;
}

HCURSOR SetCursor(HCURSOR) {
    return nullptr;
}
