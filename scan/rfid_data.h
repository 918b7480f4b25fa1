// From an RFID reader's tag report to a delivered scan.
#pragma once

#include "scan/scan_data.h"

// One tag report: type letter and UID text, ended by a zero within 24 bytes (the length is not used). Reads
// the wanted part of the tag's memory block by block, gives the read feedback and delivers the scan; a block
// that cannot be read ends the data, not the scan. Returns 1, or 0 for a line that is empty or too long,
// which is not delivered. RFID receive thread, which must not be reading the port meanwhile; shows the wait
// cursor.
int HandleRfidData(const char* line, DWORD length);
