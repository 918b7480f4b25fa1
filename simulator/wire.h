// What a simulated reader sees of the world: its wire, time, and somebody who listens to its reports.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "simulator/bytes.h"
#include "simulator/event_loop.h"
#include "simulator/faults.h"

namespace readers {

using Milliseconds = std::chrono::milliseconds;

class Wire {
  public:
    virtual ~Wire() = default;

    // Queues one message; it leaves at the reader's own speed, after what is queued already.
    virtual void Send(Bytes message) = 0;
    // Runs `action` when everything queued so far has left.
    virtual void WhenSent(std::function<void()> action) = 0;
    // Forgets what has not left yet, actions included.
    virtual void DropQueue() = 0;

    virtual unsigned Rate() const = 0;
    virtual void SetRate(unsigned rate) = 0;

    virtual TimerId After(Milliseconds delay, std::function<void()> action) = 0;
    virtual void Cancel(TimerId timer) = 0;

    // Prints "event NAME PORT details".
    virtual void Report(std::string_view name, std::string_view details) = 0;
    // Prints a line as it is.
    virtual void Print(std::string_view line) = 0;

    virtual FaultSet& Faults() = 0;

    // Sends the answer to a command, unless the faults "reply" and "no-reply" say otherwise.
    void Answer(Bytes message);
    void Report(std::string_view name) { Report(name, ""); }
};

// A timer of which at most one is set.
class Timer {
  public:
    explicit Timer(Wire& wire) : Owner(wire) {}
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() { Stop(); }

    void Start(Milliseconds delay, std::function<void()> action);
    void Stop();
    bool Set() const { return Id != 0; }

  private:
    Wire& Owner;
    TimerId Id = 0;
};

// A reader at its end of the wire.
class Reader {
  public:
    virtual ~Reader() = default;

    // Bytes that arrived at the reader's own speed.
    virtual void Receive(std::span<const std::uint8_t> bytes) = 0;
    // The other side opened or closed its port.
    virtual void PortOpened() {}
    virtual void PortClosed() {}
    // Power goes: everything that is not kept in flash memory is forgotten. Power comes back.
    virtual void PowerOff() = 0;
    virtual void PowerOn() = 0;

    // A command of the user. `rest` is the line after its first word. False when this reader does not know
    // it; `problem` is set when it knows the command and cannot do it.
    virtual bool Command(std::string_view word, std::string_view rest, std::string& problem) = 0;
    // Lines that describe the state and the parameters held.
    virtual std::vector<std::string> State() const = 0;
    virtual std::vector<std::string> Parameters() const = 0;
};

}  // namespace readers
