// Who owns the RFID channel. A channel is one opening of the RFID port for one read. It has a number, so that
// a thread that is still ending cannot touch the channel of the next read. Only the main thread begins one.
#pragma once

#include "platform/serial.h"

// Closes the channel that is open, whatever it does: break, thread handle, port, timer IDT_RFID_READ; clears
// RfidReadActive and RfidThreadRun. Safe with nothing open, and beside its thread's own closing.
// Takes 50 ms, 150 ms with a thread. Main thread.
void CloseRfidChannel();

// The reader is switched off: from the return on, nothing more of a tag that is being handed over is typed,
// recorded, sounded or broadcast. CloseRfidChannel begins with it. Main thread.
void EndRfidReading();
// IDT_RFID_READ has fired: closes the channel, unless its line has come just before. Main thread.
void RfidReadOverdue();

// Whether a channel is open, handing over or still being closed by its thread: no new read may start yet.
// Main thread. A read that was started but is no longer in use has ended already.
bool RfidChannelInUse();

// Begins the channel of the port just opened; its number, never 0. Main thread.
DWORD BeginRfidChannel();
// Makes the calling thread the channel's thread, for RfidPortOfThisThread.
void JoinRfidChannel(DWORD channel);
// Whether nobody has closed the channel yet.
bool OwnsRfidChannel(DWORD channel);
// Whether the channel waits for its line: open and not yet handing over.
bool RfidChannelReading();
// Goes over from reading to handing over; false when the channel has been closed meanwhile.
bool BeginHandOver(DWORD channel);
// CloseRfidChannel for the channel's thread: only if nobody has closed that channel. Whether it did.
bool CloseOwnRfidChannel(DWORD channel);

// The RFID port; null for the thread of a channel that has been closed.
HANDLE RfidPortOfThisThread();
