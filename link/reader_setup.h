// Brings a detected reader into the system's configuration.
#pragma once

#include "platform/serial.h"

// `type`: 1, 2, 4 (on the barcode port) or 32 (on the RFID port). 1 for success; 0 (barcode readers) or
// ErrorInitRfidReader for failure. The port is left at the reader's working rate. Initialisation thread.
DWORD InitializeReader(HANDLE port, WORD type);
