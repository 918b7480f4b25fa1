// Joins the DECODE_DATA packets of one decode, resent ones included. Pure: the receiver brings the packets
// and the time.
//
// An engine sends a packet again, with the resend bit set, when it was refused or when no acknowledgement
// came. So a packet with that bit is the one that is missing, or a repetition of the one acknowledged last; a
// packet without it that follows a refusal belongs to another decode. Half a decode is never a scan: once a
// part has been dropped, what the engine still sends of it is taken and thrown away.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "platform/base.h"

inline constexpr std::size_t MessageLimit = 4096;   // bytes of one message
inline constexpr DWORD ContinuationTimeout = 2000;  // milliseconds between the packets of a message
inline constexpr DWORD EngineTries = 3;             // so often an engine sends a packet, then it gives up

// What packets with the resend bit may be the rest of.
enum class LostPart : BYTE {
    None,
    Possible,  // the reader was off: of a decode of then, unless one has come broken since
    Certain,   // of a part that has been dropped
};

struct PacketMessage {
    std::array<BYTE, MessageLimit + 1> Bytes{};  // zero beyond Length
    DWORD Length = 0;
    bool Pending = false;     // a continuation is awaited
    bool Discarding = false;  // the packets of this message are taken and dropped, up to the last one
    DWORD LastPacket = 0;     // tick of the packet that was taken last

    LostPart Lost = LostPart::None;
    bool Refused = false;          // the packet before was refused
    bool Doubtful = false;         // one that came broken since the last one taken got no answer
    DWORD Tries = 0;               // how often, at least, the packet under way has come broken or again
    bool FirstBroken = false;      // one without the resend bit came broken since the last one that was taken
    std::array<BYTE, 255> Last{};  // the packet acknowledged last, without its resend bit
    std::size_t LastSize = 0;
};

enum class PacketStep {
    More,      // a continuation is to come
    Complete,  // Bytes and Length hold a whole message
    Nothing,  // the last packet came, but there is nothing to hand over: empty, too long, rest of a lost part
    Repeated,  // nothing new, and no continuation is awaited
};

// Drops a part whose continuation is overdue; before any other call for a packet that arrives.
void DropOverdue(PacketMessage& message, DWORD now);
// Notes a packet that came broken and is refused, or whose acknowledgement could not be sent, by its status
// byte where that has come. Its resend continues the part, another first try does not. One that shows that
// the engine has given the decode up drops the part.
void NoteRefusal(PacketMessage& message, std::optional<BYTE> status);
// Notes one that needs no answer, since a whole packet follows it. Only a resend continues the part then.
void NotePassedOver(PacketMessage& message, std::optional<BYTE> status);
// Adds a verified packet (bytes 0 to L - 1) that has been acknowledged. The first brings its code identifier
// and data, the later ones their data only.
PacketStep AddPacket(PacketMessage& message, std::span<const BYTE> packet, DWORD now);
// The reader is switched off: drops the part, and what the engine still sends again of its decode.
void DropPart(PacketMessage& message);
// Forgets the bytes after they have been handed over.
void ClearMessage(PacketMessage& message);
