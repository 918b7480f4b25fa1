// A bare X server of a test's own.
#pragma once

#include <csignal>
#include <memory>
#include <string>

#include "tests/support/child_process.h"

class XServer {
  public:
    // Runs Xvfb on a free display, or on the given one (":7"), and makes it $DISPLAY.
    explicit XServer(const std::string& display = "");
    ~XServer();
    // It takes what comes, and does nothing any more.
    void Stop() { process_->Signal(SIGSTOP); }
    const std::string& Name() const { return name_; }

  private:
    std::unique_ptr<ChildProcess> process_;
    std::string name_;
};
