// Sending commands to the readers, and the one request/reply exchange. The framing follows from the port and
// the fitted reader: escape frames for the 1D reader, SSI packets for the scan engines, plain text for RFID.
#pragma once

#include <array>
#include <cstring>
#include <span>
#include <string_view>

#include "platform/serial.h"

// Sends a command; up to three tries. Packets are given whole, without their checksum, and are sent with RTS
// raised (at least 150 ms). Text for the RFID port ends at its first zero byte. 1, or 0 when every try failed
// or the command does not fit its framing.
int SendReaderCommand(HANDLE port, std::span<const BYTE> command);
int SendReaderCommand(HANDLE port, std::string_view command);

inline constexpr DWORD ReplyLimit = 100;     // bytes of one reply
inline constexpr DWORD ReplyTimeout = 2000;  // milliseconds

// What the first read that brought anything brought, without its leading zero bytes.
struct ReaderReply {
    std::array<BYTE, ReplyLimit + 1> Bytes;  // followed by a zero
    DWORD Length;
};

// Purges the port, sends the command and waits at most 2 s for the reply. 1, or 0 when the command could not
// be sent or nothing came (the reply is then empty). A port whose receive thread runs would lose the reply to
// it, and reads must return at once (SetPortTimeouts with MAXDWORD).
int RequestReply(HANDLE port, std::span<const BYTE> command, ReaderReply& reply);
int RequestReply(HANDLE port, std::string_view command, ReaderReply& reply);

// Whether the mark occurs in the reply before its first zero byte.
bool ReplyContains(const ReaderReply& reply, std::string_view mark);
// Whether the bytes 04 D0 occur in the reply before its first zero byte.
bool ReplyAcknowledges(const ReaderReply& reply);

inline constexpr DWORD RegisterTextLimit = 20;  // characters of one RFID register (memory block)

// Reads a register of the RFID reader; on the RFID receive thread or while it does not read. 1 with the value
// (room for 20 characters and a zero), 0 when the reader failed three times or the value is longer, -1 when
// it is silent, says no, repeats a bare "S" more than ten times, or the calling thread's channel has been
// closed meanwhile. Without a 1 the value is left alone.
int ReadRfidRegister(BYTE number, char* value);
