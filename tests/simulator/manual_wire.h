// A wire without a line: what a reader sends is noted at once, time passes when the test says so.
#pragma once

#include <map>

#include "simulator/wire.h"

namespace readers {

class ManualWire : public Wire {
  public:
    explicit ManualWire(unsigned rate) : Speed(rate) {}

    void Send(Bytes message) override { Sent += (Sent.empty() ? "" : " | ") + HexText(message); }
    void WhenSent(std::function<void()> action) override { action(); }
    void DropQueue() override {}
    unsigned Rate() const override { return Speed; }
    void SetRate(unsigned rate) override { Speed = rate; }
    TimerId After(Milliseconds delay, std::function<void()> action) override {
        Timers[++LastTimer] = {Now + delay, std::move(action)};
        return LastTimer;
    }
    void Cancel(TimerId timer) override { Timers.erase(timer); }
    using Wire::Report;
    void Report(std::string_view name, std::string_view) override { LastEvent = name; }
    void Print(std::string_view) override {}
    FaultSet& Faults() override { return Armed; }

    void Pass(Milliseconds time) {
        const Milliseconds end = Now + time;
        for (;;) {
            auto next = Timers.end();
            for (auto timer = Timers.begin(); timer != Timers.end(); ++timer) {
                if (timer->second.first <= end &&
                    (next == Timers.end() || timer->second.first < next->second.first)) {
                    next = timer;
                }
            }
            if (next == Timers.end()) {
                break;
            }
            Now = std::max(Now, next->second.first);
            const auto action = std::move(next->second.second);
            Timers.erase(next);
            action();
        }
        Now = end;
    }
    std::string TakeSent() { return std::exchange(Sent, {}); }

    std::string LastEvent;

  private:
    unsigned Speed;
    std::string Sent;
    FaultSet Armed;
    Milliseconds Now{0};
    TimerId LastTimer = 0;
    std::map<TimerId, std::pair<Milliseconds, std::function<void()>>> Timers;
};

}  // namespace readers
