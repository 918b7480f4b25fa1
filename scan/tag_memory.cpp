#include "scan/tag_memory.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "link/command_exchange.h"
#include "link/hex_convert.h"

TagGeometry GeometryOfTag(std::string_view line) {
    if (line.empty()) {
        return {0, 0, 0};
    }
    switch (line[0]) {
        case 'I':
            return {5, 16, 4};
        case 'M':
            return {0, 255, 4};
        case 'S':
            return {4, 15, 2};
        case 'V': {
            // The second byte of the UID names the chip's maker.
            const std::string_view maker = line.size() >= 5 ? line.substr(3, 2) : std::string_view{};
            if (maker == "16") {
                return {0, 35, 4};
            }
            if (maker == "05") {
                return {3, 64, 8};
            }
            if (maker == "04") {
                return {0, 28, 4};
            }
            return {0, 64, 4};
        }
        default:
            return {0, 0, 0};
    }
}

TagRange PlanTagRead(const TagGeometry& geometry, DWORD start, DWORD maximumLength) {
    const DWORD total = (geometry.EndBlock - geometry.FirstBlock) * geometry.BlockSize;
    if (maximumLength == 0 || start >= total) {
        return {geometry.FirstBlock, geometry.FirstBlock, 0, 0};
    }
    const DWORD count = std::min(maximumLength, total - start);
    const DWORD first = geometry.FirstBlock + start / geometry.BlockSize;
    const DWORD last = geometry.FirstBlock + (start + count - 1) / geometry.BlockSize;
    return {first, last + 1, start % geometry.BlockSize, count};
}

void AppendTagBlock(TagText& memory, std::string_view hexadecimal) {
    if (hexadecimal.size() > RegisterTextLimit) {
        return;
    }
    std::array<BYTE, RegisterTextLimit> text{};
    std::array<BYTE, RegisterTextLimit / 2 + 1> bytes{};
    std::copy(hexadecimal.begin(), hexadecimal.end(), text.begin());
    HexConvert(HexDecode, text.data(), bytes.data(), static_cast<DWORD>(hexadecimal.size()));
    // The decoded bytes lie in a cleared buffer that is longer than they can be: the zero is always there.
    const std::size_t room = sizeof memory.Text - 1 - memory.Length;
    const std::size_t length =
        std::min<std::size_t>(std::find(bytes.begin(), bytes.end(), BYTE{0}) - bytes.begin(), room);
    std::memcpy(memory.Text + memory.Length, bytes.data(), length);
    memory.Length += static_cast<DWORD>(length);
}

void CopyTagRange(const TagText& memory, const TagRange& range, std::span<char> to) {
    if (to.empty()) {
        return;
    }
    std::size_t length = 0;
    if (range.Offset < memory.Length) {
        length = std::min<std::size_t>({range.Count, memory.Length - range.Offset, to.size() - 1});
        std::memcpy(to.data(), memory.Text + range.Offset, length);
    }
    to[length] = '\0';
}
