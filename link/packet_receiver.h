// What the scan engines send: packets are checked, acknowledged or refused, joined and handed over.
#pragma once

#include "link/barcode_receiver.h"

// TakeBytes of the scan engines. On the receive thread.
DWORD TakePackets(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled);

// The continuation of a packet message is overdue: gives the trigger free again. The main window calls it
// when IDT_CONTINUATION has fired; the receive thread itself drops the part before it takes another packet.
void ContinuationOverdue();
