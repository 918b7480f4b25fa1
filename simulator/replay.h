// Plays the readers' side of a wire trace back (docs/wire-traces.md): what a reader sent is sent again, as
// long after the system's bytes before it as it was then. What the system sends must be what it sent then,
// piece by piece or joined; times of the system don't count.
#pragma once

#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "simulator/console.h"
#include "simulator/pseudo_terminal.h"

namespace readers {

// What happened on one port.
struct TraceEvent {
    enum class Kind { Opened, Closed, FromSystem, FromReader };
    Kind What;
    std::chrono::microseconds Time;
    Bytes Data;
    int LineNumber;
};

struct Trace {
    std::deque<TraceEvent> Com1, Com2;
};

// False with `problem` set where the text is no trace. Line states are read over.
bool ParseTrace(std::istream& text, Trace& trace, std::string& problem);

class Replay {
  public:
    Replay(EventLoop& loop, Console& console, const std::filesystem::path& terminal, Trace trace);
    ~Replay();

    // Makes the pseudo-terminals and their links, and says "ready". False with `problem` set.
    bool Start(std::string& problem);
    void Stop();
    // "state" prints how much is left of each port; anything but that and "quit" is an error.
    void Command(std::string_view text);
    // The system has sent something else than in the trace.
    bool Differed() const;
    // Nothing is left of either port.
    bool Finished() const;

  private:
    class Port;

    EventLoop& Loop;
    Console& Out;
    const std::filesystem::path Folder;
    std::unique_ptr<Port> Com1, Com2;
};

}  // namespace readers
