// The record of one scan, as a consumer reads it from its bytes, as one line of JSON.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "platform/base.h"

inline constexpr std::size_t RecordSize = 4232;

struct ScanRecord {
    BYTE Source;                      // 7: a barcode, 32: a tag
    BYTE CodeType;                    // 0: unknown
    std::span<const BYTE> Uid, Data;  // within the record's bytes
};

// None for bytes of another size, or whose length says more than they hold.
std::optional<ScanRecord> ReadRecord(std::span<const BYTE> record);

// An object without a line end: "channel", "source", "codeType" (the letter, or empty), "length", "uid",
// "text" (a byte is the character of the same number) and "hex". A record of another size, or whose length
// says more than it holds, gives "channel" and "error".
std::string RecordJson(const char* channel, std::span<const BYTE> record);
