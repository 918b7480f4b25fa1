// The stage of the conversations in this folder: the reader link alone, with timers but without a window.
#pragma once

#include "tests/wire/timer_double.h"
#include "tests/wire/wire_stage.h"

class LinkStage : public WireStage {
  public:
    explicit LinkStage(Conversation::Complaint complain);

  private:
    DWORD CallByName(const Words& words) override;
    void Expect(const Words& words, int line) override;
    std::uint64_t NextTimer() override { return timers_.NextDue(); }
    void RunMainWindow() override;

    TimerDouble timers_;
    int soundsBefore_ = 0;
};
