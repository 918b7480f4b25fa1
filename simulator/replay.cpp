#include "simulator/replay.h"

#include <algorithm>
#include <istream>
#include <sstream>

namespace readers {

namespace {

constexpr std::string_view Head = "# vantrel wire trace 1";

std::chrono::microseconds MicrosecondsOf(double seconds) {
    return std::chrono::microseconds(static_cast<std::int64_t>(seconds * 1e6 + 0.5));
}

// False when the line is none of a trace; an event without a kind that counts here is read over.
bool ParseLine(const std::string& line, int number, Trace& trace) {
    std::istringstream words(line);
    double seconds = 0;
    std::string port, what, rest;
    if (!(words >> seconds >> port >> what) || seconds < 0 || (port != "COM1" && port != "COM2")) {
        return false;
    }
    TraceEvent event{TraceEvent::Kind::Opened, MicrosecondsOf(seconds), {}, number};
    if (what == "<" || what == ">") {
        std::getline(words, rest);
        const auto bytes = BytesFromHex(rest);
        if (!bytes || bytes->empty()) {
            return false;
        }
        event.Data = *bytes;
        event.What = what == "<" ? TraceEvent::Kind::FromReader : TraceEvent::Kind::FromSystem;
    } else if (what == "close") {
        event.What = TraceEvent::Kind::Closed;
    } else if (what != "open") {
        return true;
    }
    (port == "COM1" ? trace.Com1 : trace.Com2).push_back(std::move(event));
    return true;
}

}  // namespace

bool ParseTrace(std::istream& text, Trace& trace, std::string& problem) {
    std::string line;
    if (!std::getline(text, line) || line != Head) {
        problem = "no wire trace: its first line is not \"" + std::string(Head) + '"';
        return false;
    }
    for (int number = 2; std::getline(text, line); ++number) {
        if (!line.empty() && line.front() != '#' && !ParseLine(line, number, trace)) {
            problem = "line " + std::to_string(number) + " is none of a wire trace";
            return false;
        }
    }
    return true;
}

class Replay::Port {
  public:
    Port(EventLoop& loop, Console& console, std::string name, const std::filesystem::path& link,
         std::deque<TraceEvent> events)
        : Loop(loop),
          Out(console),
          Name(std::move(name)),
          Events(std::move(events)),
          Total(Events.size()),
          Device(
              loop, link,
              {[this] { Happened(TraceEvent::Kind::Opened); }, [this] { Happened(TraceEvent::Kind::Closed); },
               [this](std::span<const std::uint8_t> bytes) { Received(bytes); }}) {}

    PseudoTerminal& Terminal() { return Device; }
    bool Differs() const { return Different; }
    bool Empty() const { return Events.empty(); }
    std::string State() const {
        return "replay " + Name + ' ' + std::to_string(Total - Events.size()) + '/' + std::to_string(Total) +
               (Different ? " differs" : "");
    }

  private:
    // Openings and closings that come while something else is due wait; the system may do both more often
    // than then.
    void Happened(TraceEvent::Kind kind) {
        if (!Events.empty() && Events.front().What == kind) {
            Pass();
        }
        Advance();
    }

    void Received(std::span<const std::uint8_t> bytes) {
        Unmatched.insert(Unmatched.end(), bytes.begin(), bytes.end());
        Advance();
    }

    // The front event has happened: what follows is timed from here.
    void Pass() {
        Base = Clock::now() - Events.front().Time;
        Events.pop_front();
    }

    void Advance() {
        while (!Different && !Events.empty() && Pending == 0) {
            const TraceEvent& next = Events.front();
            if (next.What == TraceEvent::Kind::FromReader) {
                Pending = Loop.At(Base + next.Time, [this] { SendNext(); });
                return;
            }
            if (next.What == TraceEvent::Kind::FromSystem) {
                if (!TakeFromSystem()) {
                    return;
                }
            } else if ((next.What == TraceEvent::Kind::Opened) == Device.IsOpen()) {
                Pass();
            } else {
                return;
            }
        }
        if (Events.empty() && !Unmatched.empty()) {
            Differ(0, {});
        }
    }

    void SendNext() {
        Pending = 0;
        Device.Write(Events.front().Data);
        Pass();
        Advance();
    }

    // True when the next event's bytes have all come.
    bool TakeFromSystem() {
        const TraceEvent& next = Events.front();
        const std::size_t common = std::min(Unmatched.size(), next.Data.size());
        if (!std::equal(Unmatched.begin(), Unmatched.begin() + static_cast<std::ptrdiff_t>(common),
                        next.Data.begin())) {
            Differ(next.LineNumber, next.Data);
            return false;
        }
        if (common < next.Data.size()) {
            return false;
        }
        Unmatched.erase(Unmatched.begin(), Unmatched.begin() + static_cast<std::ptrdiff_t>(common));
        Pass();
        return true;
    }

    void Differ(int line, const Bytes& expected) {
        Different = true;
        Out.Print("event differs " + Name + " line " + std::to_string(line) + " expected " +
                  HexText(expected) + " got " + HexText(Unmatched));
    }

    EventLoop& Loop;
    Console& Out;
    const std::string Name;
    std::deque<TraceEvent> Events;
    const std::size_t Total;
    Clock::time_point Base = Clock::now();
    Bytes Unmatched;
    TimerId Pending = 0;
    bool Different = false;
    PseudoTerminal Device;
};

Replay::Replay(EventLoop& loop, Console& console, const std::filesystem::path& terminal, Trace trace)
    : Loop(loop),
      Out(console),
      Folder(terminal),
      Com1(std::make_unique<Port>(loop, console, "com1", terminal / "COM1", std::move(trace.Com1))),
      Com2(std::make_unique<Port>(loop, console, "com2", terminal / "COM2", std::move(trace.Com2))) {}

Replay::~Replay() {
    Stop();
}

bool Replay::Start(std::string& problem) {
    if (!MakeTerminalFolder(Folder, problem) || !Com1->Terminal().Plug(problem) ||
        !Com2->Terminal().Plug(problem)) {
        Stop();
        return false;
    }
    Out.Print("ready com1=" + Com1->Terminal().Device() + " com2=" + Com2->Terminal().Device());
    return true;
}

void Replay::Stop() {
    Com1->Terminal().Unplug();
    Com2->Terminal().Unplug();
}

void Replay::Command(std::string_view text) {
    if (text == "quit") {
        Loop.Stop();
    } else if (text == "state") {
        Out.Print(Com1->State());
        Out.Print(Com2->State());
    } else {
        Out.Print("error a replay takes no commands but state and quit");
        return;
    }
    Out.Print("ok");
}

bool Replay::Differed() const {
    return Com1->Differs() || Com2->Differs();
}

bool Replay::Finished() const {
    return Com1->Empty() && Com2->Empty();
}

}  // namespace readers
