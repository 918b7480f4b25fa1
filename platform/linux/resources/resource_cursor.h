#pragma once

#include <algorithm>
#include <string>

#include "platform/linux/resources/resource_file.h"

namespace resource {

// Walks little-endian data. What lies beyond the end reads as 0 and makes Ok() false for good, so that a
// decoder may read a whole record and ask once.
class Cursor {
  public:
    explicit Cursor(Bytes data) : data_(data) {}

    bool Ok() const { return ok_; }
    std::size_t At() const { return at_; }
    std::size_t Left() const { return data_.size() - at_; }

    Bytes Take(std::size_t count) {
        if (!ok_ || count > Left()) {
            ok_ = false;
            return {};
        }
        at_ += count;
        return data_.subspan(at_ - count, count);
    }

    std::uint8_t U8() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::uint32_t U32() { return Number(4); }
    std::int16_t S16() { return static_cast<std::int16_t>(U16()); }
    std::int32_t S32() { return static_cast<std::int32_t>(U32()); }

    void Skip(std::size_t count) { Take(count); }

    // Records are padded from the start of the data; the last one's padding may be missing.
    void AlignTo(std::size_t unit) {
        if (at_ % unit != 0) {
            at_ += std::min(Left(), unit - at_ % unit);
        }
    }

    // A text with its ending 0. One without an end is an error.
    std::u16string Text() {
        std::u16string text;
        for (char16_t character = U16(); character != 0; character = U16()) {
            text += character;
        }
        return ok_ ? text : std::u16string();
    }

  private:
    std::uint32_t Number(std::size_t size) {
        std::uint32_t value = 0;
        Bytes bytes = Take(size);
        for (std::size_t i = bytes.size(); i > 0; --i) {
            value = value << 8 | std::to_integer<std::uint32_t>(bytes[i - 1]);
        }
        return value;
    }

    Bytes data_;
    std::size_t at_ = 0;
    bool ok_ = true;
};

}  // namespace resource
