// What is to happen on the wires, step by step, and whether it does. The scripted ports tell it what the
// system does and get from it what the readers send.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "tests/support/manual_clock.h"

enum class WireAct {
    // The system's acts.
    Write,
    FailWrite,  // the next write fails
    Rts,        // value 0 or 1
    Dtr,
    Rate,
    Purge,     // value: the flags
    Interval,  // value: the read interval that is set
    Mask,
    Open,
    FailOpen,  // the port cannot be opened
    Close,
    LineBreak,  // value 0 or 1
    // The reader's acts.
    Receive,
    ReceiveBreak,
    Unplug,
    Plug,
    Nothing,  // time passes; only at the end
};

struct WireStep {
    WireAct Act = WireAct::Nothing;
    int Port = 1;
    std::vector<BYTE> Bytes = {};
    DWORD Value = 0;
    // Time since the step before: of a reader's act the time after which it happens (Least); of a system's
    // act what it must be, when Timed.
    bool Timed = false;
    std::uint64_t Least = 0, Most = 0;
    int Line = 0;  // of the script
};

// How a script writes an act, and what value stands behind it.
struct WireActForm {
    enum Values { None, OnOff, Decimal, Hexadecimal };
    WireAct Act;
    std::string Words;
    Values Value = None;
};
inline const WireActForm WireActForms[] = {
    {WireAct::Write, ">"},
    {WireAct::FailWrite, "> fails"},
    {WireAct::Receive, "<"},
    {WireAct::ReceiveBreak, "! break"},
    {WireAct::Unplug, "! unplugged"},
    {WireAct::Plug, "! plugged"},
    {WireAct::Rts, "^ rts", WireActForm::OnOff},
    {WireAct::Dtr, "^ dtr", WireActForm::OnOff},
    {WireAct::LineBreak, "^ break", WireActForm::OnOff},
    {WireAct::Rate, "@ rate", WireActForm::Decimal},
    {WireAct::Purge, "@ purge", WireActForm::Decimal},
    {WireAct::Interval, "@ interval", WireActForm::Decimal},
    {WireAct::Mask, "@ mask", WireActForm::Hexadecimal},
    {WireAct::FailOpen, "@ open fails"},
    {WireAct::Open, "@ open"},
    {WireAct::Close, "@ close"},
};

// " 04 D0": a blank in front of each.
std::string Hex(const std::vector<BYTE>& bytes);

// What has arrived at a port and was not read yet.
struct WireInput {
    std::deque<BYTE> Bytes;
    std::uint64_t LastArrival = 0;
    bool Broke = false;
    bool Unplugged = false;
};

class Conversation : public layer::TimedSource {
  public:
    using Complaint = std::function<void(int line, const std::string& what)>;
    Conversation(layer::ManualClock& clock, Complaint complain);
    ~Conversation() override;

    // Acts that are not watched pass without a step.
    void Watch(std::set<WireAct> acts);
    // Begins with the steps; what the system does outside a conversation is not looked at.
    void Begin(std::vector<WireStep> steps, int line);
    // Ends it: complains about steps that have not happened.
    void End();
    // For the ports. All with Mutex held through Lock.
    using Lock = std::unique_lock<std::mutex>;
    Lock Acquire() { return Lock(mutex_); }
    std::condition_variable& Changed() { return changed_; }
    layer::ManualClock& Time() { return clock_; }
    bool AnythingLeft() const { return !steps_.empty() && !failed_; }
    WireInput& InputOf(int port) { return inputs_[port]; }
    // The system has done something; false when the script lets it fail.
    bool Did(WireStep act);
    // Waits until `done`, or `deadline` of the clock; in the main thread the script moves the time meanwhile.
    // False when the time has come, or when nothing is left that could fulfil the wait.
    bool Wait(Lock& lock, std::uint64_t deadline, const std::function<bool()>& done);

    // When the reader acts next, if that is the next thing to happen; else Forever.
    std::uint64_t NextArrival();

    std::uint64_t NextDue() override;
    void RunDue(std::uint64_t now) override;

  private:
    std::uint64_t Due() const;
    void Deliver(std::uint64_t now);
    void Complain(int line, const std::string& what);

    layer::ManualClock& clock_;
    const Complaint complain_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::set<WireAct> watched_;
    std::deque<WireStep> steps_;
    std::uint64_t last_ = 0;  // when the step before happened
    int line_ = 0;
    bool active_ = false, failed_ = false;
    std::map<int, WireInput> inputs_;
};
