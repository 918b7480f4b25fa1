// What was loaded into a flash memory: bytes at addresses, with gaps.
#pragma once

#include <array>
#include <bitset>
#include <map>

#include "simulator/bytes.h"

namespace readers {

class MemoryImage {
  public:
    struct Segment {
        std::uint32_t Address;
        Bytes Content;
    };

    void Clear() { Pages.clear(); }
    bool Empty() const { return Pages.empty(); }
    // False, and nothing written, when the bytes would run over the end of the address space.
    // `changed` counts bytes that were there already with another value.
    bool Write(std::uint32_t address, std::span<const std::uint8_t> bytes, std::size_t& changed);

    // Everything held, in ascending order, neighbours joined.
    std::vector<Segment> Segments() const;
    // `length` bytes from `address`, gaps as in erased flash (FF).
    Bytes Flat(std::uint32_t address, std::size_t length) const;
    // Depends on every byte and its address.
    std::uint32_t Fingerprint() const;

  private:
    static constexpr std::uint32_t PageSize = 4096;
    struct Page {
        std::array<std::uint8_t, PageSize> Content;
        std::bitset<PageSize> Written;
    };
    std::map<std::uint32_t, Page> Pages;  // by address / PageSize
};

}  // namespace readers
