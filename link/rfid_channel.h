// Who owns the RFID channel. A channel is one opening of the RFID port for one read. It has a number, so that
// a thread that is still ending cannot touch the channel of the next read. Only the main thread begins one.
#pragma once

#include "platform/serial.h"

// Closes the channel that is open, whatever it does: break, thread handle, port, timer IDT_RFID_READ; clears
// RfidReadActive and RfidThreadRun. Always 1. Safe with nothing open, and beside another thread's closing.
// Takes 50 ms, 150 ms with a thread. Main thread.
DWORD CloseRfidChannel();

// Whether a channel is open or still being closed: no new read may start yet.
bool RfidChannelInUse();

// Begins the channel of the port just opened; its number, never 0.
DWORD BeginRfidChannel();
// Makes the calling thread the channel's thread, for the functions below and RfidPortOfThisThread.
void JoinRfidChannel(DWORD channel);
// Whether the channel is still open.
bool OwnsRfidChannel(DWORD channel);
// Goes over from reading to handing over; false when the channel has been closed meanwhile.
bool BeginHandOver(DWORD channel);
// CloseRfidChannel for the channel's thread: only if nobody has closed that channel. Whether it did.
bool CloseOwnRfidChannel(DWORD channel);

// The RFID port, for the main thread and for the thread of the open channel; null for one whose channel is
// closed.
HANDLE RfidPortOfThisThread();
