// Sending commands to the readers, and the one request/reply exchange. The framing follows from the port and
// the fitted reader: escape frames for the 1D reader, SSI packets for the scan engines, plain text for RFID.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "link/await_reply.h"
#include "platform/serial.h"

// Sends a command; up to three tries. Packets are given whole, without their checksum, and are sent with RTS
// raised (at least 150 ms). Text for the RFID port ends at its first zero byte. False when every try failed
// or the command does not fit its framing. Any thread: the trigger's commands and what the barcode receive
// thread sends meet here, and the second sender waits until the reader is ready for it.
[[nodiscard]] bool SendReaderCommand(HANDLE port, std::span<const BYTE> command);
[[nodiscard]] bool SendReaderCommand(HANDLE port, std::string_view command);

inline constexpr DWORD ReplyLimit = 100;     // bytes of one reply
inline constexpr DWORD ReplyTimeout = 2000;  // milliseconds

// One reply, without its leading zero bytes.
struct ReaderReply {
    std::array<BYTE, ReplyLimit + 1> Bytes;  // followed by a zero
    DWORD Length;
};

// AwaitReply into a reply; false when no byte came, not even a zero.
[[nodiscard]] bool CollectReply(HANDLE port, ReplyIsWhole isWhole, DWORD timeout, ReaderReply& reply);

// Purges the port, sends the command and waits at most 2 s for the reply, which is whole when the reader's
// framing says so or after 30 ms without a byte. False when the command could not be sent or nothing came
// (the reply is then empty). A port whose receive thread runs would lose the reply to it, and reads must
// return at once (SetPortTimeouts with MAXDWORD).
[[nodiscard]] bool RequestReply(HANDLE port, std::span<const BYTE> command, ReaderReply& reply);
[[nodiscard]] bool RequestReply(HANDLE port, std::string_view command, ReaderReply& reply);

// Whether the mark occurs in the reply before its first zero byte.
bool ReplyContains(const ReaderReply& reply, std::string_view mark);

inline constexpr DWORD RegisterTextLimit = 20;  // characters of one RFID register (memory block)

// Reads a register of the RFID reader, a block of so many bytes; on the RFID receive thread or while it does
// not read. 1 with the value (room for 20 characters and a zero), 0 when the reader failed three times or the
// value is longer, -1 when it is silent, says no, repeats a bare "S" more than ten times, or the calling
// thread's channel has been closed meanwhile. Without a 1 the value is left alone.
[[nodiscard]] int ReadRfidRegister(BYTE number, DWORD blockSize, char* value);
