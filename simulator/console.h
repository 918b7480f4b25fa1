// Commands come in on standard input, a line each; lines go out on standard output. Neither ever blocks the
// readers: output that nobody reads is kept, up to a limit.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "simulator/event_loop.h"

namespace readers {

class Console {
  public:
    explicit Console(EventLoop& loop);

    void Print(std::string_view line);
    // "event NAME PORT details"
    void Event(std::string_view name, std::string_view port, std::string_view details);

    // `command` gets each line without its end; `end` runs once when the input has ended.
    void Listen(std::function<void(std::string_view)> command, std::function<void()> end);
    // No further command until that time has passed.
    void Pause(std::chrono::milliseconds time);
    // Writes what is left, for at most a second.
    void Flush();

  private:
    void ReadInput();
    void RunCommands();
    void WriteSome();

    EventLoop& Loop;
    std::string Output;
    std::string Input;
    std::deque<std::string> Commands;
    std::function<void(std::string_view)> OnCommand;
    std::function<void()> OnEnd;
    bool Ended = false;
    bool Paused = false;
    bool OutputGone = false;
    bool OutputLost = false;
};

}  // namespace readers
