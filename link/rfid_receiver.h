// The RFID receive thread: one per RFID read, from the opened channel to one tag line.
#pragma once

#include "platform/kernel.h"

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
