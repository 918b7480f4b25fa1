// The record of one scan, as a consumer reads it from its bytes, as one line of JSON.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "platform/base.h"

inline constexpr std::size_t RecordSize = 4232;

// An object without a line end: "channel", "source", "codeType" (the letter, or empty), "length", "uid",
// "text" (a byte is the character of the same number) and "hex". A record of another size, or whose length
// says more than it holds, gives "channel" and "error".
std::string RecordJson(const char* channel, std::span<const BYTE> record);
