// The RFID receive thread: one per RFID read, from the opened channel to one tag line.
#pragma once

#include "platform/kernel.h"

// Begins a channel on ShellState.RfidPort and creates its thread, running, when the mask has the RFID reader;
// ShellState.RfidThread holds it. 1, also without an RFID reader; 0 when the thread cannot be created. Main
// thread.
int StartRfidReceiver(WORD deviceMask);

// The thread's procedure. The argument is the number of the channel that the thread belongs to; null begins
// one on ShellState.RfidPort. Returns 0 after a line, a break, or once its channel has been closed.
DWORD WINAPI RfidReceiveThread(LPVOID channel);
