#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/linux/resources/resource_file.h"

// Puts compiled resources together byte by byte, also such as no resource compiler would write.
class ResourceBytes {
  public:
    ResourceBytes& U8(unsigned value) {
        bytes_.push_back(static_cast<std::byte>(value & 0xFF));
        return *this;
    }
    ResourceBytes& U16(unsigned value) { return U8(value).U8(value >> 8); }
    ResourceBytes& U32(std::uint32_t value) { return U16(value & 0xFFFF).U16(value >> 16); }
    ResourceBytes& Text(std::u16string_view text) {
        for (char16_t character : text) {
            U16(character);
        }
        return U16(0);
    }
    ResourceBytes& Align() {
        while (bytes_.size() % 4 != 0) {
            U8(0);
        }
        return *this;
    }
    ResourceBytes& Append(resource::Bytes bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    // A whole entry of a resource file, whose length field may lie.
    ResourceBytes& Entry(resource::Type type, unsigned number, resource::Bytes data, std::uint32_t said) {
        Align().U32(said).U32(32);
        U16(0xFFFF).U16(static_cast<unsigned>(type)).U16(0xFFFF).U16(number);
        U32(0).U16(0).U16(0x0409).U32(0).U32(0);
        return Append(data).Align();
    }
    ResourceBytes& Entry(resource::Type type, unsigned number, resource::Bytes data) {
        return Entry(type, number, data, static_cast<std::uint32_t>(data.size()));
    }
    // A file with this data as its only entry.
    std::vector<std::byte> File(resource::Type type, unsigned number) const {
        return ResourceBytes().Entry(type, number, bytes_).bytes_;
    }
    const std::vector<std::byte>& Data() const { return bytes_; }

  private:
    std::vector<std::byte> bytes_;
};
