// The ways of vantrel-watch to get at scans. Each prints a line per scan until it has seen enough.
#pragma once

#include <string>

#include "platform/base.h"

struct WatchOptions {
    DWORD Count = 0;           // scans to print; 0: no end
    DWORD TimeoutSeconds = 0;  // without a scan; 0: wait for ever
};

// Both return the program's exit code: 0 when Count scans have been seen, 1 when none came in time or the
// terminal's objects cannot be had, or the lines cannot be written.
int WatchEvent(const WatchOptions& options);
int WatchMessages(const WatchOptions& options);

// Prints a line at once; false, said on standard error, when it cannot be written.
[[nodiscard]] bool PrintLine(const std::string& line);
