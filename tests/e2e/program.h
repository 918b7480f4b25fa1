// The real programs, run by a test.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

// Starts one of the project's programs, or one of the machine. It dies with the test, whatever becomes of
// that.
std::unique_ptr<ChildProcess> StartProgram(const std::string& name,
                                           const std::vector<std::string>& arguments = {},
                                           const std::vector<std::string>& environment = {});
// Runs it to its end; its exit code, -1 when it has not ended in 20 s. `output` gets what it has printed.
int RunProgram(const std::string& name, const std::vector<std::string>& arguments,
               std::string* output = nullptr);

// The system itself.
class Vantrel {
  public:
    explicit Vantrel(const std::vector<std::string>& environment = {},
                     const std::vector<std::string>& arguments = {});

    pid_t Id() const { return process_->Id(); }
    // Waits until its window can be reached by other programs.
    bool IsThere(int milliseconds = 10000) const;
    // SIGTERM is the end of a session, on Windows too.
    void Signal(int number);
    // Its exit code; -1 when it still runs after the time.
    int Ended(int milliseconds = 10000) { return process_->Wait(milliseconds).value_or(-1); }
    // Ends it as a session would, and tells whether it went with code 0.
    bool End();

  private:
    std::unique_ptr<ChildProcess> process_;
};

// The trigger key: "down", "up", or "press" with milliseconds; false when no program took it.
bool Trigger(const std::vector<std::string>& words);
// Processor time a process has used, in clock ticks.
long ProcessorTicks(pid_t process);
