// One line of the diary from a format of wsprintfW. What was scanned never stands in it. Any thread.
#pragma once

#include "platform/base.h"
#include "platform/log.h"

// The line has at most 1,023 characters.
template <typename... Arguments>
void Log(LogPriority priority, LPCWSTR format, Arguments... arguments) {
    if (priority == LogPriority::Debug && !DebugLinesWanted()) {
        return;
    }
    if constexpr (sizeof...(Arguments) == 0) {
        WriteLogLine(priority, format);
    } else {
        WCHAR line[1024];
        wsprintfW(line, format, arguments...);
        WriteLogLine(priority, line);
    }
}
