// The RFID channel: one opening of the RFID port for one read, with a thread that receives one tag line. It
// has a number, so that a thread that is still ending cannot touch the channel of the next read. Only the
// main thread begins one.
#pragma once

#include "link/rfid_text.h"
#include "platform/kernel.h"
#include "platform/serial.h"
#include "shell/relaxed.h"

// How the reader's greeting ends, once one has come whole. Written by the main thread.
inline Relaxed<LineTail> RfidGreeting;

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
// Whether the channel waits for its line: open and not yet handing over.
bool RfidChannelReading();

// The RFID port; null for the thread of a channel that has been closed.
HANDLE RfidPortOfThisThread();

// Begins a channel on ShellState.RfidPort and creates its thread when the mask has the RFID reader;
// ShellState.RfidThread holds it. The thread takes no line before BeginRfidLines. True also without an RFID
// reader; false when the thread cannot be created. Main thread.
[[nodiscard]] bool StartRfidReceiver(WORD deviceMask);

// The read command is about to be sent: what has come so far is thrown away, and the thread listens from now
// on. Main thread.
void BeginRfidLines();

// The thread's procedure. The argument is the number of the channel that the thread belongs to. Returns 0
// after a line, a break, or once its channel has been closed.
DWORD WINAPI RfidReceiveThread(LPVOID channel);
