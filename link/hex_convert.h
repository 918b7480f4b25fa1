// Hexadecimal text to bytes and back.
#pragma once

#include <span>

#include "platform/base.h"

inline constexpr int HexEncode = 41;
inline constexpr int HexDecode = 42;

// HexEncode: 1 to 2047 bytes become two upper-case digits each. Any other mode decodes: an even number of 2
// to 8192 characters becomes half as many bytes; characters are not checked. Returns the number of bytes
// written; 0, with nothing written, for another input length or an output that is too small. Input and output
// may be the same memory.
DWORD HexConvert(int mode, std::span<const BYTE> input, std::span<BYTE> output);
