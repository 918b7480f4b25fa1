// Starting and stopping reads, as the trigger and the timers of the main window ask for. All on the main
// thread, but for RestartBarcodeRead.
#pragma once

#include "link/rfid_channel.h"
#include "shell/error_messages.h"

// A press or a release. A press silences the sound that plays. The long-range laser with an aiming
// time aims first. Success or ErrorSetBarcodeReader.
[[nodiscard]] ErrorCode BarcodeTrigger(bool pressed);

// Starts the read anew for as long as a trigger key is held; without one, or with the reader switched off
// meanwhile, it is left off. Barcode receive thread.
void RestartBarcodeRead();

// Switches the laser's aiming beam on (and starts IDT_AIM_DURATION) or off, and starts decoding afterwards if
// asked to. Success or ErrorSetBarcodeReader.
[[nodiscard]] ErrorCode LaserAim(bool startAfter, bool on);

// Opens the RFID port, waits for the reader's greeting (six tries of 250 ms) and starts its receive thread.
// Success, ErrorRfidReaderOn or ErrorInitRfidReader; nothing stays open on an error. A channel that is still
// open is closed first; while one is being closed by its thread (RfidChannelInUse) a new read should not be
// started.
[[nodiscard]] ErrorCode OpenRfidChannel();

// Sends the read command and starts IDT_RFID_READ. Success, or ErrorSetRfidReader with the channel closed.
[[nodiscard]] ErrorCode StartRfidRead();

// Acts on the expiry of a timer of the main window (nearly all of them are the reader link's), which has been
// killed already. Success or a code to report. Unknown ids are ignored.
[[nodiscard]] ErrorCode HandleTimer(UINT_PTR id);
