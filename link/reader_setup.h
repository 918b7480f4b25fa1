// Brings a detected reader into the system's configuration.
#pragma once

#include "platform/serial.h"

// `type`: 1, 2, 4 (on the barcode port) or 32 (on the RFID port). Whether the reader took everything; the
// port is then at its working rate. Initialisation thread.
[[nodiscard]] bool InitializeReader(HANDLE port, WORD type);
