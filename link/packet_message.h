// Joins the DECODE_DATA packets of one decode. Pure: the receiver brings the packets and the time.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "platform/base.h"

inline constexpr std::size_t MessageLimit = 4096;   // bytes of one message
inline constexpr DWORD ContinuationTimeout = 2000;  // milliseconds between the packets of a message

struct PacketMessage {
    std::array<BYTE, MessageLimit + 1> Bytes{};  // zero beyond Length
    DWORD Length = 0;
    bool Pending = false;  // a continuation is awaited
    bool TooLong = false;  // beyond the limit: the rest is taken and dropped
    DWORD LastPacket = 0;  // tick of the packet before
};

enum class PacketStep {
    More,      // a continuation is to come
    Complete,  // Bytes and Length hold a whole message
    Nothing,   // the last packet came, but there is nothing to hand over: empty, or too long
};

// Drops a part whose continuation is overdue; whether there was one.
bool DropOverdue(PacketMessage& message, DWORD now);
// Adds a verified packet (bytes 0 to L - 1). The first brings its code identifier and data, the later ones
// their data only.
PacketStep AddPacket(PacketMessage& message, std::span<const BYTE> packet, DWORD now);
void ClearMessage(PacketMessage& message);
