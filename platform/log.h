// The program's diary, for whoever looks after the terminal, and the word to whoever has started it. Any
// thread.
#pragma once

#include "platform/base.h"

// How much a line matters; the numbers are those of the system's journal.
enum class LogPriority { Error = 3, Warning = 4, Notice = 5, Info = 6, Debug = 7 };

// Writes a line: on Linux to standard error, with the journal's prefix where the journal reads it; on Windows
// to the file vantrel.log of the terminal folder, and to standard error where there is one. Never waits for
// long, never fails.
void WriteLogLine(LogPriority priority, LPCWSTR text);
// Whether lines of priority Debug are wanted: VANTREL_LOG=debug, or asked for by WantDebugLines.
bool DebugLinesWanted();
void WantDebugLines();

// The program does what it was started for; `state` says it in a few words. A service manager that waits for
// that goes on, and shows the words.
void ReportReady(LPCWSTR state);
