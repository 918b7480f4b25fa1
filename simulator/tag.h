// Tags in the field of the RFID reader: type letter, UID, user memory in blocks.
#pragma once

#include "simulator/bytes.h"

namespace readers {

struct TagGeometry {
    std::uint32_t FirstBlock;
    std::uint32_t EndBlock;   // one past the last
    std::uint32_t BlockSize;  // bytes; 0: no user memory
    bool operator==(const TagGeometry&) const = default;
};

struct Tag {
    char Type;
    std::string Uid;  // as the reader reports it
    TagGeometry Geometry;
    Bytes Memory;  // the whole user memory
};

// The layout of the user memory; of the "V" family by the second byte of the UID.
TagGeometry GeometryOf(char type, std::string_view uid);

// A tag whose memory begins with `content` (the rest is zero), or without content holds a readable pattern.
// Nothing when there is more content than memory.
std::optional<Tag> MakeTag(char type, std::string_view uid, const std::optional<Bytes>& content);

// A block as hexadecimal text. Nothing for a block that the tag does not have.
std::optional<std::string> BlockText(const Tag& tag, std::uint32_t block);

}  // namespace readers
