// The received bytes of a port that nobody has read yet. Not locked: the port's lock guards it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "platform/linux/serial/line_marks.h"
#include "platform/linux/serial/wire_trace.h"

namespace layer {

class ReceiveQueue {
  public:
    // A full read of 4096 bytes fits, and what a chunk may add.
    static constexpr std::size_t Size = 4096 + 512;

    // Takes bytes as the line discipline delivers them, marks and all; what does not fit is dropped. Hands
    // what the reader really sent to `seen`, where there is one.
    void Add(std::span<const BYTE> raw, WireTrace* seen);
    // How many raw bytes fit for certain: a mark may turn one into two.
    std::size_t Room() const { return (Size - count_) / 2; }
    std::size_t Count() const { return count_; }
    DWORD Take(BYTE* buffer, DWORD size);
    void Clear();
    // The line has been opened anew: a mark that was cut off has no end.
    void ForgetMark() { marks_.Reset(); }

    bool Broke = false;  // a break has come since this was last cleared

  private:
    LineMarks marks_;
    std::array<BYTE, Size> bytes_{};
    std::size_t first_ = 0, count_ = 0;
};

}  // namespace layer
