// The barcode receive thread: waits for bytes on the barcode port and turns them into messages.
#pragma once

#include <span>

#include "link/packet_message.h"
#include "platform/kernel.h"

// Creates the thread, suspended, when the mask has a barcode reader; ShellState.BarcodeThread holds it. 1,
// also without a barcode reader; 0 when the thread cannot be created.
int StartBarcodeReceiver(WORD deviceMask);

// Lets the thread run when its reader is switched on. What the port collected while it was off is thrown
// away: a scan of then would be typed into whatever is in front now.
void ResumeBarcodeReceiver();

// The thread's procedure; returns 0 on a break, on an event mask that cannot be set, or once
// ShellState.BarcodeThreadRun is cleared and its wait ends. May be run on any thread.
DWORD WINAPI BarcodeReceiveThread(LPVOID);

// How one read of the port becomes messages, which are handed over. `filled`: the read filled its buffer, so
// that its end may be the beginning of a packet that goes on in the next one. Returns how many bytes at the
// end are to be kept for that. On the receive thread.
using TakeBytes = DWORD (*)(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled);
// The 1D reader: a read is a message.
DWORD TakeDecoderMessage(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled);

// Hands a whole message over and forgets it.
void HandOver(PacketMessage& message);
