// What a fuzz target insists on, in every kind of build.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <span>

inline void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// Takes a fuzzer's bytes apart; zeros behind their end.
class Choices {
  public:
    Choices(const std::uint8_t* bytes, std::size_t size) : left_(bytes, size) {}
    bool Empty() const { return left_.empty(); }
    std::uint8_t Byte() {
        if (left_.empty()) {
            return 0;
        }
        const std::uint8_t byte = left_.front();
        left_ = left_.subspan(1);
        return byte;
    }
    std::span<const std::uint8_t> Bytes(std::size_t most) {
        const auto taken = left_.first(most < left_.size() ? most : left_.size());
        left_ = left_.subspan(taken.size());
        return taken;
    }

  private:
    std::span<const std::uint8_t> left_;
};
