// The simulated readers of a test's terminal: vantrel-readers and what it tells.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/child_process.h"

class Readers {
  public:
    // Starts the program with these options and waits until both ports are there.
    explicit Readers(const std::vector<std::string>& options);

    // Runs a command and waits for the end of its answer; the test fails when it is refused. The answer's
    // lines.
    std::vector<std::string> Command(const std::string& command);

    // Waits until a line that contains the text has come since the last Forget; false after the time.
    bool Saw(std::string_view text, int milliseconds = 5000);
    // How many such lines have come since the last Forget, without waiting.
    int Count(std::string_view text);
    // What came up to now is not looked at any more.
    void Forget();
    // Everything since the start, for the report of a failure.
    std::string Log() const;

  private:
    bool TakeLine(int milliseconds);

    std::unique_ptr<ChildProcess> process_;
    std::vector<std::string> lines_;
    std::size_t from_ = 0;
};
