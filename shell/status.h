// What the running program tells of itself: the registered message, whose wParam says which value is wanted.
// The answer is the value; 0 is also what a program answers that does not know the question.
#pragma once

#include "platform/base.h"

inline constexpr LPCWSTR QueryStatusMessage = TEXT("WM_QUERYSTATUS");

enum class StatusValue : DWORD {
    Version = 1,         // 100 times the number: 129
    Run = 2,             // differs from one start of the program to the next; never 0
    Flags = 3,           // StatusFlags
    Devices = 4,         // the device flags of the settings record
    BarcodeRate = 5,     // bit/s; 0 while the port is closed
    RfidRate = 6,        // bit/s; 0 while the port is closed, as it is between two reads
    ScansBegun = 7,      // scans handed to the delivery since the start
    ScansDelivered = 8,  // of those, the ones that every channel has got
    SinceLastScan = 9,   // milliseconds; meaningless without a scan
    SinceStart = 10,     // milliseconds
    Keys = 11,           // KeysGoTo
};

enum StatusFlags : DWORD {
    StatusInitialized = 1,  // readers found, settings loaded
    StatusBarcodeOn = 2,    // the reader is switched on
    StatusRfidOn = 4,
    StatusBarcodeReading = 8,
    StatusRfidReading = 16,
    StatusTransferBusy = 32,  // a transfer from the barcode reader, or keys that are being consumed
    StatusSettingsOpen = 64,
    StatusApplying = 128,  // settings are on their way to the reader
    StatusUpgrading = 256,
    StatusError = 512,  // an error box is up
};
