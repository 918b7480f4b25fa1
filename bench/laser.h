// A long-range laser in the measuring program's hands, on a pseudo-terminal, so that the moment of a label's
// last byte is known.
#pragma once

#include <chrono>
#include <functional>
#include <string_view>
#include <vector>

#include "platform/base.h"
#include "tests/support/temporary_terminal.h"

// What the program waits by rule, in milliseconds: a packet ends with a pause; its acknowledgement, which
// leaves before the scan is delivered, has RTS raised before and held after it.
inline constexpr double MessageGap = 30, RtsLead = 100, RtsHold = 50;
inline constexpr double ByRule = MessageGap + RtsLead + RtsHold;

// Settings for a start that does not look for the readers.
void SaveLaserSettings();

// Decodes one label for each start.
class Laser {
  public:
    // Links it as COM1. Ends the program when there is no pseudo-terminal.
    explicit Laser(const TemporaryTerminal& terminal);
    int File() const { return master_; }
    int Starts() const { return starts_; }
    int Stops() const { return stops_; }

    // Takes what has arrived and acknowledges whole commands.
    void Listen();
    // Sends a label of at most 250 characters in one packet; the moment after the last byte.
    std::chrono::steady_clock::time_point SendLabel(std::string_view label);

  private:
    void Send(std::vector<BYTE> bytes);

    int master_ = -1, slave_ = -1;
    int starts_ = 0, stops_ = 0;
    std::vector<BYTE> pending_;
};

// Serves the reader until the condition holds; false after the time.
bool Serve(Laser& laser, int milliseconds, const std::function<bool()>& condition);
