// The ways of vantrel-watch to get at scans. Each prints a line per scan until it has seen enough.
#pragma once

#include "platform/base.h"

struct WatchOptions {
    DWORD Count = 0;           // scans to print; 0: no end
    DWORD TimeoutSeconds = 0;  // without a scan; 0: wait for ever
};

// Both return the program's exit code: 0 when Count scans have been seen, 1 when none came in time or the
// terminal's objects cannot be had.
int WatchEvent(const WatchOptions& options);
int WatchMessages(const WatchOptions& options);
