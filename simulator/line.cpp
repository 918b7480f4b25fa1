#include "simulator/line.h"

#include <algorithm>

namespace readers {
namespace {

std::chrono::microseconds WireTime(std::size_t bytes, unsigned rate) {
    return std::chrono::microseconds(bytes * 10'000'000 / rate);
}

}  // namespace

Line::Line(EventLoop& loop, Console& console, std::string name, std::filesystem::path link, unsigned rate)
    : Loop(loop),
      Out(console),
      PortName(std::move(name)),
      Port(loop, std::move(link),
           {[this] { PortOpened(); }, [this] { PortClosed(); },
            [this](std::span<const std::uint8_t> bytes) { Received(bytes); }}),
      ReaderRate(rate) {}

void Line::PortOpened() {
    Report("opened", std::to_string(Port.HostRate()));
    if (Fitted && Powered) {
        Fitted->PortOpened();
    }
}

void Line::PortClosed() {
    // A port is closed when its last byte has left.
    while (!Arriving.empty()) {
        HearFirst();
    }
    Report("closed", "");
    if (Fitted && Powered) {
        Fitted->PortClosed();
    }
}

void Line::HearFirst() {
    const Bytes bytes = std::move(Arriving.front().second);
    Loop.Cancel(Arriving.front().first);
    Arriving.pop_front();
    if (Fitted) {
        Fitted->Receive(bytes);
    }
}

void Line::Received(std::span<const std::uint8_t> bytes) {
    const unsigned host = Port.HostRate();
    const bool heard = Powered && host == ReaderRate;
    if (WireShown) {
        Print((heard ? "rx " : "rx-lost ") + PortName + ' ' + HexText(bytes));
    }
    if (heard && Fitted && (ReceiveTimed || !Arriving.empty())) {
        ReceiveFree = std::max(ReceiveFree, Clock::now()) + WireTime(bytes.size(), ReaderRate);
        const TimerId timer = Loop.At(ReceiveFree, [this] { HearFirst(); });
        Arriving.emplace_back(timer, Bytes(bytes.begin(), bytes.end()));
    } else if (heard && Fitted) {
        Fitted->Receive(bytes);
    } else if (Powered && Fitted) {
        Report("wrong-speed", "host=" + std::to_string(host) + " reader=" + std::to_string(ReaderRate) +
                                  " bytes=" + std::to_string(bytes.size()));
    }
}

void Line::Send(Bytes message) {
    if (!Powered || message.empty()) {
        return;
    }
    if (!Held.empty()) {
        message.insert(message.begin(), Held.begin(), Held.end());
        Held.clear();
    }
    if (Armed.Take("join")) {
        Held = std::move(message);
        return;
    }
    if (Armed.Take("mute")) {
        Print("lost " + PortName + " mute " + HexText(message));
        return;
    }
    if (const auto values = Armed.Take("flip")) {
        const auto offset = NumberOf(values->front()).value_or(0);
        if (offset < message.size()) {
            message[offset] ^= 0xFF;
        }
    }
    if (const auto values = Armed.Take("late")) {
        Outgoing.push_back({.Pause = Milliseconds(NumberOf(values->front()).value_or(0))});
    }
    const auto split = Armed.Take("split");
    const std::size_t at = split ? NumberOf(split->at(0)).value_or(0) : 0;
    if (split && at > 0 && at < message.size()) {
        const auto middle = message.begin() + static_cast<std::ptrdiff_t>(at);
        Outgoing.push_back({.Message = Bytes(message.begin(), middle)});
        Outgoing.push_back({.Pause = Milliseconds(NumberOf(split->at(1)).value_or(0))});
        Outgoing.push_back({.Message = Bytes(middle, message.end())});
    } else {
        Outgoing.push_back({.Message = std::move(message)});
    }
    Pump();
}

void Line::WhenSent(std::function<void()> action) {
    Outgoing.push_back({.Action = std::move(action)});
    Pump();
}

void Line::DropQueue() {
    Outgoing.clear();
    Held.clear();
    Cancel(Pending);
    Pending = 0;
}

void Line::Pump() {
    while (Pending == 0 && !Outgoing.empty()) {
        Item& next = Outgoing.front();
        if (next.Action) {
            const auto action = std::move(next.Action);
            Outgoing.pop_front();
            action();
            continue;
        }
        if (next.Message.empty()) {
            Pending = After(next.Pause, [this] {
                Pending = 0;
                Outgoing.pop_front();
                Pump();
            });
            return;
        }
        // It arrives at once when its last byte would: in pieces, a machine that is busy just then would tear
        // gaps into it that no line has.
        LineFree = std::max(LineFree, Clock::now()) + WireTime(next.Message.size(), ReaderRate);
        Pending = Loop.At(LineFree, [this] {
            Pending = 0;
            SendFirst();
            Pump();
        });
    }
}

void Line::SendFirst() {
    const Item item = std::move(Outgoing.front());
    Outgoing.pop_front();
    Bytes bytes = item.Message;
    const char* lost = nullptr;
    bool arrives = Port.IsOpen();
    if (!arrives) {
        lost = "closed";
    } else if (Port.HostRate() != ReaderRate) {
        lost = "speed";
        arrives = Armed.Take("garbage").has_value();
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>((byte << 3 | 0x85) ^ (byte >> 2));
        }
    }
    if (arrives && !Port.Write(bytes)) {
        lost = "overrun";
    }
    if (lost) {
        Print("lost " + PortName + ' ' + lost + ' ' + HexText(item.Message));
    } else if (WireShown) {
        Print("tx " + PortName + ' ' + HexText(item.Message));
    }
}

void Line::SetRate(unsigned rate) {
    if (rate != ReaderRate) {
        ReaderRate = rate;
        Report("rate", std::to_string(rate));
    }
}

TimerId Line::After(Milliseconds delay, std::function<void()> action) {
    return Loop.At(Clock::now() + delay, std::move(action));
}

void Line::Cancel(TimerId timer) {
    Loop.Cancel(timer);
}

void Line::Report(std::string_view name, std::string_view details) {
    Out.Event(name, PortName, details);
}

void Line::Print(std::string_view line) {
    Out.Print(line);
}

void Line::SetPower(bool on) {
    if (on == Powered) {
        return;
    }
    Powered = on;
    DropQueue();
    for (const auto& [timer, bytes] : Arriving) {
        Cancel(timer);
    }
    Arriving.clear();
    Report("power", on ? "on" : "off");
    if (Fitted) {
        on ? Fitted->PowerOn() : Fitted->PowerOff();
    }
}

std::string Line::State() const {
    return "line " + PortName + " device=" + (Port.Plugged() ? Port.Device() : "none") +
           " port=" + (Port.IsOpen() ? "open" : "closed") + " host-rate=" + std::to_string(Port.HostRate()) +
           " reader-rate=" + std::to_string(ReaderRate) + " power=" + (Powered ? "on" : "off");
}

}  // namespace readers
