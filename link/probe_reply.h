// What the readers' answers to the detection's probes say.
#pragma once

#include <array>
#include <span>

#include "platform/base.h"

// A probe's answers come within so many milliseconds, and none is longer than the buffer.
inline constexpr DWORD ProbeWindow = 500;
using ProbeAnswer = std::array<BYTE, 512>;

enum class RevisionAnswer {
    NoRevision,  // not a revision reply
    Unnamed,     // a revision reply without a third field
    Laser,       // third field beginning with G or 07
    Imager,      // third field beginning with P
    Unknown,     // any other third field
};
// The answer to REQUEST_REVISION; its checksum is not verified.
RevisionAnswer ParseRevisionReply(std::span<const BYTE> bytes);

// The answer to the 1D reader's "SET": at least 60 bytes without "NG\r" before the first zero byte.
bool IsDecoderAnswer(std::span<const BYTE> bytes);

enum class RfidAnswer { None, AskAgain, Model90, Model100 };
// The answer to the RFID reader's "v"; leading zero bytes do not count.
RfidAnswer ParseRfidAnswer(std::span<const BYTE> bytes);
