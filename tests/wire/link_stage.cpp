#include "tests/wire/link_stage.h"

#include "link/read_control.h"

LinkStage::LinkStage(Conversation::Complaint complain) : WireStage(std::move(complain)), timers_(clock_) {}

DWORD LinkStage::CallByName(const Words& words) {
    soundsBefore_ = SoundsStopped();
    return WireStage::CallByName(words);
}

void LinkStage::RunMainWindow() {
    for (const UINT_PTR id : timers_.TakeFired())
        result_ = HandleTimer(id);
}

void LinkStage::Expect(const Words& words, int line) {
    const std::string& what = At(words, 1);
    if (what == "no" && At(words, 2) == "timer") {
        Same(line, "timer " + At(words, 3), 0, timers_.PeriodOf(ToNumber(words[3])));
    } else if (what == "timer") {
        Same(line, "timer " + At(words, 2), ToNumber(At(words, 3)), timers_.PeriodOf(ToNumber(words[2])));
    } else if (what == "silenced") {
        Same(line, "sounds stopped", ToNumber(At(words, 2)),
             static_cast<std::uint64_t>(SoundsStopped() - soundsBefore_));
    } else {
        WireStage::Expect(words, line);
    }
}
