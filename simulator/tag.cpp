#include "simulator/tag.h"

#include <algorithm>

namespace readers {

TagGeometry GeometryOf(char type, std::string_view uid) {
    const std::string_view maker = uid.size() >= 4 ? uid.substr(2, 2) : "";
    switch (type) {
        case 'I':
            return {5, 16, 4};
        case 'M':
            return {0, 255, 4};
        case 'S':
            return {4, 15, 2};
        case 'V':
            if (maker == "16") {
                return {0, 35, 4};
            }
            if (maker == "05") {
                return {3, 64, 8};
            }
            return {0, maker == "04" ? 28u : 64u, 4};
        default:
            return {0, 0, 0};
    }
}

std::optional<Tag> MakeTag(char type, std::string_view uid, const std::optional<Bytes>& content) {
    Tag tag{type, std::string(uid), GeometryOf(type, uid), {}};
    const std::size_t size = (tag.Geometry.EndBlock - tag.Geometry.FirstBlock) * tag.Geometry.BlockSize;
    if (content && content->size() > size) {
        return std::nullopt;
    }
    tag.Memory.assign(size, 0);
    if (content) {
        std::copy(content->begin(), content->end(), tag.Memory.begin());
        return tag;
    }
    // Letters that tell where a byte comes from: no two neighbours alike, a period that fits no block size.
    for (std::size_t i = 0; i < size; ++i) {
        tag.Memory[i] = static_cast<std::uint8_t>('0' + i % 73);
    }
    return tag;
}

std::optional<std::string> BlockText(const Tag& tag, std::uint32_t block) {
    const TagGeometry& shape = tag.Geometry;
    if (block < shape.FirstBlock || block >= shape.EndBlock) {
        return std::nullopt;
    }
    const auto first = static_cast<std::ptrdiff_t>((block - shape.FirstBlock) * shape.BlockSize);
    const auto end = first + static_cast<std::ptrdiff_t>(shape.BlockSize);
    std::string text = HexText(Bytes(tag.Memory.begin() + first, tag.Memory.begin() + end));
    std::erase(text, ' ');
    return text;
}

}  // namespace readers
