// The barcode receive thread: waits for bytes on the barcode port and turns them into messages.
#pragma once

#include <span>

#include "link/packet_message.h"
#include "platform/kernel.h"

// Creates the thread, paused, when the mask has a barcode reader; ShellState.BarcodeThread holds it. True
// also without a barcode reader; false when the thread cannot be created. Start-up.
[[nodiscard]] bool StartBarcodeReceiver(WORD deviceMask);

// The reader is switched off: from the return on, nothing more of what the thread has in hand is typed,
// recorded, sounded or broadcast. The thread pauses before it reads from the port again; it may still be
// ending an acknowledgement or a call of another program. Main thread; never waits for the thread.
void PauseBarcodeReceiver();

// Waits until a paused thread leaves the port alone, 2 s at most: replies that arrive later are the caller's.
// Not on the main thread, which the receive thread may need to get there.
void AwaitPausedReceiver();

// The reader is switched on, by any thread. What the port collected while it was off is thrown away: a scan
// of then would be typed into whatever is in front now.
void ResumeBarcodeReceiver();

// Starts the thread anew when it has ended; a break ends it. False when it cannot be created. Any thread.
[[nodiscard]] bool RenewBarcodeReceiver();

// The end of the program: pauses the thread for good and lets it end by itself. Main thread.
void EndBarcodeReceiver();

// The thread's procedure; returns 0 on a break, on an event mask that cannot be set, or once
// ShellState.BarcodeThreadRun is cleared and its wait ends. The argument is the number of the thread, which
// ends when another one has been created since; null: none. May be run on any thread.
DWORD WINAPI BarcodeReceiveThread(LPVOID number);

// How one read of the port becomes messages, which are handed over. `filled`: the read filled its buffer, so
// that its end may be the beginning of a message that goes on in the next one. Returns how many bytes at the
// end are to be kept for that. On the receive thread.
using TakeBytes = DWORD (*)(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled);
// The 1D reader: a read is a message; a full one ends with its last CR.
DWORD TakeDecoderMessage(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled);

// The scan engines: packets are checked, acknowledged or refused, and joined.
DWORD TakePackets(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled);
// The continuation of a packet message is overdue: gives the trigger free again. The main window calls it
// when IDT_CONTINUATION has fired; the receive thread itself drops the part before it takes another packet.
void ContinuationOverdue();

// Hands a whole message over and forgets it.
void HandOver(PacketMessage& message);
