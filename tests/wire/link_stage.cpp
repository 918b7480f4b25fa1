// The stage of the conversations in this folder: the reader link alone. In place of the main window there are
// its timers, on the manual clock, and a count of the sounds that were stopped.
#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <utility>

#include "link/read_control.h"
#include "platform/sound.h"
#include "shell/shell_state.h"
#include "tests/wire/wire_stage.h"

namespace {

struct Timer {
    std::uint64_t Due;
    DWORD Period;
};
std::mutex TimersMutex;
std::map<UINT_PTR, Timer> Running;
std::vector<UINT_PTR> Fired;  // whose work waits until it can be done outside the clock; oldest first
std::atomic<int> SoundsStopped = 0;
std::atomic<bool> ReleaseAtSound = false;

// What talks to a port takes time.
bool TakesTime(UINT_PTR id) {
    return id == IDT_RFID_READ || id == IDT_AIM_DURATION;
}

class LinkStage : public WireStage, private layer::TimedSource {
  public:
    explicit LinkStage(Conversation::Complaint complain) : WireStage(std::move(complain)) {
        Running.clear();
        Fired.clear();
        ReleaseAtSound = false;
        clock_.AddSource(*this);
    }
    ~LinkStage() override { clock_.RemoveSource(*this); }

  private:
    void Prepare(const Words& words) override {
        if (words[0] == "release")
            ReleaseAtSound = true;
        else
            WireStage::Prepare(words);
    }
    DWORD CallByName(const Words& words) override {
        SoundsStopped = 0;
        return WireStage::CallByName(words);
    }
    std::uint64_t NextTimer() override { return NextDue(); }
    void RunMainWindow() override;
    void Expect(const Words& words, int line) override;

    std::uint64_t NextDue() override;
    void RunDue(std::uint64_t now) override;
};

void LinkStage::RunMainWindow() {
    std::unique_lock lock(TimersMutex);
    const auto fired = std::exchange(Fired, {});
    lock.unlock();
    for (const UINT_PTR id : fired)
        result_ = HandleTimer(id);
}

void LinkStage::Expect(const Words& words, int line) {
    const std::string& what = At(words, 1);
    const bool none = what == "no" && At(words, 2) == "timer";
    if (none || what == "timer") {
        const std::string& id = At(words, none ? 3 : 2);
        const std::lock_guard lock(TimersMutex);
        const auto found = Running.find(ToNumber(id));
        Same(line, "timer " + id, none ? 0 : ToNumber(At(words, 3)),
             found == Running.end() ? 0 : found->second.Period);
    } else if (what == "silenced") {
        Same(line, "sounds stopped", ToNumber(At(words, 2)), static_cast<std::uint64_t>(SoundsStopped));
    } else {
        WireStage::Expect(words, line);
    }
}

std::uint64_t LinkStage::NextDue() {
    const std::lock_guard lock(TimersMutex);
    std::uint64_t next = layer::Forever;
    for (const auto& [id, timer] : Running)
        next = std::min(next, timer.Due);
    return next;
}

void LinkStage::RunDue(std::uint64_t now) {
    std::vector<UINT_PTR> due;
    {
        const std::lock_guard lock(TimersMutex);
        for (const auto& [id, timer] : Running) {
            if (timer.Due <= now)
                (TakesTime(id) ? Fired : due).push_back(id);
        }
        std::erase_if(Running, [&](const auto& timer) { return timer.second.Due <= now; });
    }
    for (const UINT_PTR id : due)
        static_cast<void>(HandleTimer(id));
}

}  // namespace

UINT_PTR SetTimer(HWND, UINT_PTR id, UINT milliseconds, TIMERPROC) {
    const std::lock_guard lock(TimersMutex);
    Running[id] = {layer::CurrentClock().Now() + milliseconds, milliseconds};
    return id;
}

BOOL KillTimer(HWND, UINT_PTR id) {
    const std::lock_guard lock(TimersMutex);
    Running.erase(id);
    std::erase(Fired, id);
    return TRUE;
}

BOOL PlaySoundW(LPCWSTR name, HMODULE, DWORD) {
    SoundsStopped += name == nullptr ? 1 : 0;
    if (ReleaseAtSound.exchange(false)) {
        ShellState.TriggerReleased = 1;
        static_cast<void>(BarcodeTrigger(false));
    }
    return TRUE;
}

// The pointer of a screen that nobody sees.
HCURSOR LoadCursorW(HINSTANCE, LPCWSTR) {
    return nullptr;
}

HCURSOR SetCursor(HCURSOR) {
    return nullptr;
}

std::unique_ptr<WireStage> MakeStage(Conversation::Complaint complain) {
    return std::make_unique<LinkStage>(std::move(complain));
}
