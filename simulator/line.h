// One serial line: a pseudo-terminal whose other end is the terminal's COM port.
//
// What is sent leaves at the speed of the reader, ten bits a byte, in bursts of a UART's buffer. Nothing
// passes in either direction unless both sides are set to the same speed. Bytes that a closed port would not
// have heard do not wait for its next opening.
#pragma once

#include <deque>

#include "simulator/console.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/wire.h"

namespace readers {

class Line : public Wire {
  public:
    // `link` is the name under which the terminal finds the port.
    Line(EventLoop& loop, Console& console, std::string name, std::filesystem::path link, unsigned rate);

    // The reader at this end; none is a silent line.
    void Attach(Reader* reader) { Fitted = reader; }

    void Send(Bytes message) override;
    void WhenSent(std::function<void()> action) override;
    void DropQueue() override;
    unsigned Rate() const override { return ReaderRate; }
    void SetRate(unsigned rate) override;
    TimerId After(Milliseconds delay, std::function<void()> action) override;
    void Cancel(TimerId timer) override;
    using Wire::Report;
    void Report(std::string_view name, std::string_view details) override;
    void Print(std::string_view line) override;
    FaultSet& Faults() override { return Armed; }

    void SetPower(bool on);
    // Whether the reader hears the other side's bytes only after the time that they need on a wire.
    void CountReceiveTime(bool on) { ReceiveTimed = on; }
    void ShowWire(bool on) { WireShown = on; }
    const std::string& Name() const { return PortName; }
    PseudoTerminal& Terminal() { return Port; }
    std::string State() const;

  private:
    struct Item {
        Bytes Message{};
        Milliseconds Pause{0};
        std::function<void()> Action{};
    };

    void Queue(Bytes message);
    void Pump();
    void SendFirst();
    void PortOpened();
    void PortClosed();
    void Received(std::span<const std::uint8_t> bytes);
    void HearFirst();

    EventLoop& Loop;
    Console& Out;
    const std::string PortName;
    PseudoTerminal Port;
    unsigned ReaderRate;
    Reader* Fitted = nullptr;
    FaultSet Armed;

    bool Powered = true;
    bool WireShown = true;
    bool ReceiveTimed = false;

    std::deque<Item> Outgoing;
    Bytes Held;  // the message that waits to be joined
    TimerId Pending = 0;
    Clock::time_point LineFree{};
    std::deque<std::pair<TimerId, Bytes>> Arriving;  // still on the wire to the reader
    Clock::time_point ReceiveFree{};
};

}  // namespace readers
