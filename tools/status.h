// The running program's state, as it answers for itself.
#pragma once

#include <optional>
#include <string>

#include "shell/status.h"

struct ProgramStatus {
    DWORD Run = 0;
    DWORD Version = 0;
    DWORD Flags = 0;
    DWORD Devices = 0;
    DWORD BarcodeRate = 0, RfidRate = 0;
    // Delivered is asked before Begun: where they are equal nothing was on its way in between.
    DWORD ScansDelivered = 0, ScansBegun = 0;
    DWORD Keys = 0;
    DWORD SinceLastScan = 0, SinceStart = 0;  // milliseconds
};

// None when no program runs, or when it does not answer within seconds. Any thread.
std::optional<ProgramStatus> AskStatus();

// One object, without a line end.
std::string StatusJson(const ProgramStatus& status);

// Prints it; the exit code of vantrel-watch --status.
int PrintStatus();
