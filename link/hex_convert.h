// Hexadecimal text to bytes and back.
#pragma once

#include "platform/base.h"

inline constexpr int HexEncode = 41;
inline constexpr int HexDecode = 42;
inline constexpr DWORD HexEncodeLimit = 2047;  // bytes
inline constexpr DWORD HexDecodeLimit = 8192;  // characters

// HexEncode: 1 to 2047 bytes become two upper-case digits each. Any other mode decodes: an even number of 2
// to 8192 characters becomes half as many bytes; the characters are not checked. Returns the number of bytes
// written, for which the output has room; 0, with nothing written, for another input length. No terminator.
// Input and output may be the same memory.
DWORD HexConvert(int mode, const BYTE* input, BYTE* output, DWORD length);
