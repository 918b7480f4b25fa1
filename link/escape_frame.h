// Framing of commands to the 1D reader: 30 bytes FF to wake it, ESC, the command, CR.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "platform/base.h"

inline constexpr std::size_t EscapeCommandLimit = 226;  // longest command in bytes
inline constexpr std::size_t EscapeOverhead = 32;       // bytes around the command

using EscFrame = std::array<BYTE, EscapeCommandLimit + EscapeOverhead>;

// Builds the frame around the command; the number of bytes to send, or 0 when the command is too long.
std::size_t BuildEscapeFrame(std::span<const BYTE> command, EscFrame& frame);
