#include "simulator/memory_image.h"

namespace readers {

bool MemoryImage::Write(std::uint32_t address, std::span<const std::uint8_t> bytes, std::size_t& changed) {
    changed = 0;
    if (std::uint64_t{address} + bytes.size() > 0x1'0000'0000) {
        return false;
    }
    for (std::uint8_t byte : bytes) {
        Page& page = Pages[address / PageSize];
        const std::uint32_t at = address % PageSize;
        if (page.Written[at] && page.Content[at] != byte) {
            ++changed;
        }
        page.Content[at] = byte;
        page.Written[at] = true;
        ++address;
    }
    return true;
}

std::vector<MemoryImage::Segment> MemoryImage::Segments() const {
    std::vector<Segment> segments;
    for (const auto& [number, page] : Pages) {
        for (std::uint32_t at = 0; at < PageSize; ++at) {
            if (!page.Written[at]) {
                continue;
            }
            const std::uint32_t address = number * PageSize + at;
            if (segments.empty() ||
                std::uint64_t{segments.back().Address} + segments.back().Content.size() != address) {
                segments.push_back({address, {}});
            }
            segments.back().Content.push_back(page.Content[at]);
        }
    }
    return segments;
}

Bytes MemoryImage::Flat(std::uint32_t address, std::size_t length) const {
    Bytes bytes(length, 0xFF);
    for (std::size_t i = 0; i < length; ++i) {
        const std::uint64_t where = std::uint64_t{address} + i;
        const auto page = Pages.find(static_cast<std::uint32_t>(where / PageSize));
        if (page != Pages.end() && page->second.Written[where % PageSize]) {
            bytes[i] = page->second.Content[where % PageSize];
        }
    }
    return bytes;
}

std::uint32_t MemoryImage::Fingerprint() const {
    std::uint32_t hash = 2166136261u;
    const auto mix = [&hash](std::uint8_t byte) { hash = (hash ^ byte) * 16777619u; };
    for (const Segment& segment : Segments()) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            mix(static_cast<std::uint8_t>(segment.Address >> shift));
        }
        for (std::uint8_t byte : segment.Content) {
            mix(byte);
        }
    }
    return hash;
}

}  // namespace readers
