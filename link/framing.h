// How commands and packets are framed on the line of the barcode reader. Pure; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "platform/base.h"

// Commands to the 1D reader: 30 bytes FF to wake it, ESC, the command, CR.
inline constexpr std::size_t EscapeCommandLimit = 226;  // longest command in bytes
inline constexpr std::size_t EscapeOverhead = 32;       // bytes around the command

using EscFrame = std::array<BYTE, EscapeCommandLimit + EscapeOverhead>;

// Builds the frame around the command; the number of bytes to send, or 0 when the command is too long.
std::size_t BuildEscapeFrame(std::span<const BYTE> command, EscFrame& frame);

// Packets of the scan engines' Simple Serial Interface: building, checksums, and finding packets in a read.
//   byte 0 length L of the packet without its checksum, 1 opcode, 2 source, 3 status, 4.. data,
//   L and L + 1 checksum: the negated 16-bit sum of bytes 0 to L - 1, high byte first.
inline constexpr BYTE REQUEST_REVISION = 0xA3;
inline constexpr BYTE REPLY_REVISION = 0xA4;
inline constexpr BYTE AIM_OFF = 0xC4;
inline constexpr BYTE AIM_ON = 0xC5;
inline constexpr BYTE PARAM_SEND = 0xC6;
inline constexpr BYTE PARAM_DEFAULTS = 0xC8;
inline constexpr BYTE CMD_ACK = 0xD0;
inline constexpr BYTE CMD_NAK = 0xD1;
inline constexpr BYTE START_DECODE = 0xE4;
inline constexpr BYTE STOP_DECODE = 0xE5;
inline constexpr BYTE DECODE_DATA = 0xF3;

inline constexpr BYTE SsiHost = 0x04;              // source of what we send
inline constexpr BYTE SsiReader = 0x00;            // source of what an engine sends
inline constexpr BYTE SsiResent = 0x01;            // status: sent again, after a refusal or a missing answer
inline constexpr BYTE SsiContinued = 0x02;         // status: more packets of this decode follow
inline constexpr BYTE SsiPermanent = 0x08;         // status of the parameter packets we send
inline constexpr BYTE SsiNakCauseResend = 0x01;    // cause we give with CMD_NAK
inline constexpr std::size_t SsiHeaderSize = 4;    // smallest L
inline constexpr std::size_t SsiFrameLimit = 257;  // longest packet with its checksum

// Packets without data, and our refusal; the sender adds the checksum.
inline constexpr std::array<BYTE, 4> SsiStartDecode{4, START_DECODE, SsiHost, 0};
inline constexpr std::array<BYTE, 4> SsiStopDecode{4, STOP_DECODE, SsiHost, 0};
inline constexpr std::array<BYTE, 4> SsiAimOn{4, AIM_ON, SsiHost, 0};
inline constexpr std::array<BYTE, 4> SsiAimOff{4, AIM_OFF, SsiHost, 0};
inline constexpr std::array<BYTE, 4> SsiHostAck{4, CMD_ACK, SsiHost, 0};
inline constexpr std::array<BYTE, 5> SsiHostNak{5, CMD_NAK, SsiHost, 0, SsiNakCauseResend};
inline constexpr std::array<BYTE, 4> SsiRequestRevision{4, REQUEST_REVISION, SsiHost, 0};
inline constexpr std::array<BYTE, 4> SsiParameterDefaults{4, PARAM_DEFAULTS, SsiHost, 0};
// How a reader's acknowledgement begins.
inline constexpr std::array<BYTE, 4> SsiReaderAck{4, CMD_ACK, 0, 0};

WORD SsiChecksum(std::span<const BYTE> bytes);

using SsiFrame = std::array<BYTE, SsiFrameLimit>;

// Copies the packet (its first byte is L, and at least L bytes must be there) and adds the checksum. The
// number of bytes to send, L + 2, or 0 for an L below 4 or beyond the bytes given.
std::size_t SealSsiPacket(std::span<const BYTE> packet, SsiFrame& frame);

enum class SsiFinding {
    Decode,  // a whole DECODE_DATA packet
    Other,   // a whole packet with another opcode
    Noise,   // no packet, but a whole DECODE_DATA packet follows it
    Rest,    // no packet up to the end
};

struct SsiPiece {
    SsiFinding Finding;
    std::span<const BYTE> Bytes;  // of a packet 0 to L - 1, else what was found
    std::size_t Size;             // bytes to skip
};

// Looks at what begins with the first byte; at least one byte. Behind something that is no packet only a
// DECODE_DATA packet counts, at the next place where length and checksum are right.
SsiPiece NextSsiPacket(std::span<const BYTE> bytes);

// What bytes that are no packet look like.
struct BrokenDecode {
    bool Found = false;          // a broken DECODE_DATA packet or a part of one
    bool Whole = false;          // as long as its first byte says
    std::optional<BYTE> Status;  // its status byte, where that has come and its resend bit is not in doubt
};
BrokenDecode FindBrokenDecode(std::span<const BYTE> bytes);
