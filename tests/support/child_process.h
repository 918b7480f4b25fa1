// Programs that a test starts.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

using Moment = std::chrono::steady_clock::time_point;
inline Moment In(int milliseconds) {
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}
// Milliseconds until then; 0 when it has passed.
int LeftUntil(Moment moment);

// A running program with its standard input and output in the test's hands; standard error stays the test's.
class ChildProcess {
  public:
    // `environment` adds to the test's own, "NAME=VALUE". Aborts the test program when nothing can be
    // started.
    explicit ChildProcess(const std::vector<std::string>& command,
                          const std::vector<std::string>& environment = {});
    // Kills it when it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Id() const { return id_; }
    void WriteLine(const std::string& line);
    void CloseInput();
    // The next line of its output without the line end; none when it ends or the time passes.
    std::optional<std::string> ReadLine(int milliseconds = 10000);
    void Signal(int number);
    // Its exit code, or 128 and the signal's number; none when it still runs after the time.
    std::optional<int> Wait(int milliseconds = 10000);

  private:
    pid_t id_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string pending_;
    std::optional<int> result_;
};
