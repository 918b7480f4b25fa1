// A Wayland session of a test's own: sway without a screen, as an ordinary user.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

class SwaySession {
  public:
    // Starts it and makes it $WAYLAND_DISPLAY. `configuration`: lines of sway's own.
    explicit SwaySession(const std::string& configuration = "");
    ~SwaySession();
    SwaySession(const SwaySession&) = delete;
    SwaySession& operator=(const SwaySession&) = delete;

    // Opens a terminal that writes down what is typed into it, and waits until it is in front.
    void OpenTerminal();
    // What has been typed since the terminal opened, as its program gets it (Return as CR); waits until
    // `count` bytes have come, and a little longer in which nothing more should.
    std::string Typed(std::size_t count, int milliseconds = 10000);

  private:
    std::unique_ptr<ChildProcess> Run(const std::string& command);

    std::string folder_;  // the session's run-time folder
    std::unique_ptr<ChildProcess> sway_, terminal_;
};
