// Waiting for what a reader answers, however the reads cut it.
#pragma once

#include <span>

#include "platform/kernel.h"
#include "platform/serial.h"

// Whether a reply is whole; asked of what has come so far, without its leading zero bytes.
using ReplyIsWhole = bool (*)(std::span<const BYTE>);

// A packet of a scan engine: as many bytes as its length says, with the right checksum.
bool IsWholePacket(std::span<const BYTE> reply);
// Text that ends with CR, or with LF.
bool EndsInCarriageReturn(std::span<const BYTE> reply);
bool EndsInLineFeed(std::span<const BYTE> reply);
// Only a pause says that the reply is over.
bool NeverWhole(std::span<const BYTE> reply);

// Collects one reply: until it is whole, until 30 ms pass without a byte, or until the buffer is full. Waits
// at most `timeout` milliseconds for its first byte, and a second longer for its last. The number of bytes; 0
// when nothing came. Reads of the port must return at once, and nobody else may read it.
DWORD AwaitReply(HANDLE port, ReplyIsWhole isWhole, DWORD timeout, std::span<BYTE> reply);

// The bytes behind the leading zero bytes.
std::span<const BYTE> WithoutLeadingZeros(std::span<const BYTE> bytes);

// The replies that come within a window of time, one after the other; the window opens when it is made.
struct ReplyWindow {
    HANDLE Port;
    ReplyIsWhole IsWhole;
    DWORD Milliseconds;
    DWORD Opened = GetTickCount();

    // The next one, in the buffer; empty when the window has closed.
    std::span<const BYTE> Next(std::span<BYTE> buffer) const;
};
