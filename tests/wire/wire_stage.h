// Where a conversation plays: the reader link on scripted ports, with a manual clock and recorded hand-overs.
// What the main window does is the business of the stages derived from it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "link/command_exchange.h"
#include "tests/support/scripted_port.h"
#include "tests/support/stage_clock.h"
#include "tests/wire/wire_file.h"

class WireStage {
  public:
    explicit WireStage(Conversation::Complaint complain);
    virtual ~WireStage();
    WireStage(const WireStage&) = delete;
    WireStage& operator=(const WireStage&) = delete;

    void Run(const WireCommand& command);
    // What was handed over must have been expected.
    virtual void CheckEnd(int line);

  protected:
    using Words = std::vector<std::string>;
    virtual void Prepare(const Words& words);
    virtual DWORD CallByName(const Words& words);
    virtual void Expect(const Words& words, int line);
    // The main window: when its next timer is due, and what it does with messages and due timers.
    virtual std::uint64_t NextTimer() = 0;
    virtual void RunMainWindow() = 0;

    // Lets time pass, as the message loop of the main window would.
    void Let(std::uint64_t milliseconds);
    // Goes on until no other thread waits for a time to come and the reader has nothing to send.
    void Settle();
    void Same(int line, const std::string& what, std::uint64_t expected, std::uint64_t got);

    const Conversation::Complaint complain_;
    StageClock clock_;
    DWORD result_ = 0;

  private:
    void Call(const WireCommand& command);
    void ExpectMessage(const Words& words, int line);
    void Step(std::uint64_t limit);

    Conversation talk_;
    std::unique_ptr<ScriptedPorts> ports_;
    std::set<WireAct> watched_;
    ReaderReply reply_{};
    std::string value_;
    WORD mask_ = 0;
};

// One of the command's words; throws std::runtime_error when it is not there.
const std::string& At(const std::vector<std::string>& words, std::size_t index);
DWORD ToNumber(const std::string& word);

// The stage for a case, which whoever is compiled with wire_runner.cpp gives.
std::unique_ptr<WireStage> MakeStage(Conversation::Complaint complain);
