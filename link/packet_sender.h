// Sending packets to the scan engines, with RTS around each.
#pragma once

#include <span>

#include "platform/serial.h"

// Sends a packet (given whole, without its checksum): RTS up, 100 ms, the bytes, 50 ms, RTS down; up to three
// tries of the write. False when every try failed, which leaves RTS up until the next packet, or when the
// length byte is wrong. Any thread: the main thread's trigger packets and the receive thread's
// acknowledgements meet here, and the second sender waits until the first has let go of the line.
[[nodiscard]] bool SendPacket(HANDLE port, std::span<const BYTE> packet);
