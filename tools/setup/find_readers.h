// Which reader is at the other end of a serial device.
#pragma once

#include <string>
#include <vector>

#include "platform/base.h"

struct FoundReader {
    WORD Device = 0;      // a bit of DeviceFlags; 0: nobody answered
    DWORD Rate = 0;       // bits per second that it answered at
    DWORD RfidModel = 0;  // 90 or 100
    bool Opened = false;
};

// Asks all devices at once, as the system does when it starts: an RFID reader, then the barcode readers, at
// each of their rates. Takes up to 12 s. What stands at the other end gets bytes that only readers
// understand.
std::vector<FoundReader> AskDevices(const std::vector<std::string>& paths);
// What a reader is called, with its rate.
std::string Describe(const FoundReader& reader);
