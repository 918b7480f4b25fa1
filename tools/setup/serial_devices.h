// The machine's serial devices, and what keeps a program from them.
#pragma once

#include <string>
#include <vector>

struct SerialDevice {
    std::string Path;         // as the kernel names it, or as it was asked for
    std::string LastingName;  // the same under /dev/serial/by-id, or Path where it has none
    std::string Description;  // maker and model of the adapter; may be empty
};

// All devices with hardware behind them, in the order of their names.
std::vector<SerialDevice> FindSerialDevices();
// One that somebody has named.
SerialDevice NamedDevice(const std::string& path);

// Programs that have the device open or run on it, as "name (process 17)". Of other users' programs only
// those that run on it can be seen.
std::vector<std::string> Holders(const SerialDevice& device);
// What to do about the groups, and about programs that open or hold serial ports; a line each, none when
// nothing is in the way.
std::vector<std::string> Advice(const SerialDevice& device);
