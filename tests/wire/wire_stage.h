// Where a conversation plays: the reader link on scripted ports, with the manual clock, the main window's
// timers and recorded hand-overs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "link/command_exchange.h"
#include "tests/support/scripted_port.h"
#include "tests/wire/timer_double.h"
#include "tests/wire/wire_file.h"

class WireStage {
  public:
    explicit WireStage(Conversation::Complaint complain);
    ~WireStage();

    void Run(const WireCommand& command);
    // What was handed over must have been expected.
    void CheckEnd(int line);

  private:
    using Words = std::vector<std::string>;
    void Prepare(const Words& words);
    void Call(const WireCommand& command);
    DWORD CallByName(const Words& words);
    void Expect(const Words& words, int line);
    void ExpectMessage(const Words& words, int line);
    void Let(std::uint64_t milliseconds);
    void RunTimers();
    void Settle() const;
    void Same(int line, const std::string& what, std::uint64_t expected, std::uint64_t got);

    const Conversation::Complaint complain_;
    layer::ManualClock clock_;
    Conversation talk_;
    TimerDouble timers_;
    std::unique_ptr<ScriptedPorts> ports_;
    std::set<WireAct> watched_;
    int threadsBefore_;
    int soundsBefore_ = 0;
    DWORD result_ = 0;
    ReaderReply reply_{};
    std::string value_;
    WORD mask_ = 0;
};
