// The parts of vantrel-trigger.
#pragma once

#include <string>
#include <vector>

#include "platform/base.h"

// Tells the running program that trigger key 1 or 2 went down or came up, and when, in milliseconds; 0 says
// that the messages of this program come in order by themselves. False, said on standard error, when none
// runs.
[[nodiscard]] bool SendTrigger(DWORD key, bool down, DWORD time);

// A key of an input device and the trigger key that it stands for.
struct BoundKey {
    unsigned Code;
    DWORD Trigger;
};

struct DeviceOptions {
    std::vector<std::string> Devices;
    std::vector<BoundKey> Keys;
    bool Grab = false;
};

// Reads "KEY_NAME" or "KEY_NAME=2"; false when there is no such key.
[[nodiscard]] bool ReadBoundKey(const std::string& text, BoundKey& key);
// Holds the keys until a signal ends the program; then what was down comes up. The exit code.
int WatchDevices(const DeviceOptions& options);
// Prints the machine's input devices and their keys. The exit code.
int ListDevices();
