// Starting and stopping reads, as the trigger and the timers of the main window ask for. Results are 1 or an
// error code. All on the main thread, except that the barcode receive thread may call BarcodeTrigger.
#pragma once

#include "link/rfid_channel.h"
#include "platform/base.h"

// 1 for a press, 0 for a release. A press silences the sound that plays. The long-range laser with an aiming
// time aims first. 1 or ErrorSetBarcodeReader.
DWORD BarcodeTrigger(int pressed);

// Switches the laser's aiming beam on (and starts IDT_AIM_DURATION) or off, and starts decoding afterwards if
// asked to. 1 or ErrorSetBarcodeReader.
DWORD LaserAim(int startAfter, int on);

// Opens the RFID port, waits for the reader's greeting (six tries of 250 ms) and starts its receive thread.
// 1, ErrorRfidReaderOn or ErrorInitRfidReader; nothing stays open on an error. A channel that is still open
// is closed first; while one is being closed by its thread (RfidChannelInUse) a new read should not be
// started.
DWORD OpenRfidChannel();

// Sends the read command and starts IDT_RFID_READ; with 0 does nothing. 1, or ErrorSetRfidReader with the
// channel closed.
DWORD StartRfidRead(int start);
