// Windows hands keys to windows alone: no program can hold the key of one device there.
#include <cstdio>

#include "tools/trigger.h"

bool ReadBoundKey(const std::string&, BoundKey&) {
    return false;
}

int WatchDevices(const DeviceOptions&) {
    return 2;
}

int ListDevices() {
    std::fputs("vantrel-trigger: there are no input devices to choose from on Windows\n", stderr);
    return 1;
}
