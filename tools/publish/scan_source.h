// Where scans come from: the terminal's broadcasts, written to the store before they are answered, so that a
// scan that was taken is safe; and the program's own counter, which tells what was missed.
#pragma once

#include <functional>

#include "tools/publish/publish_options.h"
#include "tools/publish/scan_store.h"

// Takes scans until the program is told to end, calling `stored` after each; the exit code. Main thread.
int TakeScans(const PublishOptions& options, ScanStore& store, std::function<void()> stored);
