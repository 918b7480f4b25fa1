// Where an RFID tag keeps its user memory, and which blocks hold the wanted part of it. Pure; any thread.
#pragma once

#include <span>
#include <string_view>

#include "scan/scan_data.h"

struct TagGeometry {
    DWORD FirstBlock;  // of user memory
    DWORD EndBlock;    // one past the last
    DWORD BlockSize;   // bytes; 0 when the tag type is unknown
};

// The memory of the tag that reported itself with this line (type letter, UID text).
TagGeometry GeometryOfTag(std::string_view line);

struct TagRange {
    DWORD FirstBlock;  // first block to read
    DWORD EndBlock;    // one past the last block to read; equal to FirstBlock when nothing is to be read
    DWORD Offset;      // of the wanted bytes in what is read
    DWORD Count;       // wanted bytes
};

// The blocks that hold `maximumLength` bytes of user memory from byte `start` on, cut to the memory's end.
TagRange PlanTagRead(const TagGeometry& geometry, DWORD start, DWORD maximumLength);

// User memory gathered block by block, as text.
struct TagText {
    char Text[1025];  // room for the largest tag, and a zero
    DWORD Length;
};

// Adds a block's content, given as hexadecimal text: its bytes up to the first zero byte, as far as there is
// room. Text of odd length adds nothing.
void AppendTagBlock(TagText& memory, std::string_view hexadecimal);

// Copies the wanted part of what was gathered, as far as it goes, and ends it with a zero.
void CopyTagRange(const TagText& memory, const TagRange& range, std::span<char> to);
