// The received bytes of a port that nobody has read yet, without the marks that a tty with PARMRK puts among
// them. Not locked: the port's lock guards it.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "platform/linux/serial/wire_trace.h"

namespace layer {

class ReceiveQueue {
  public:
    // A full read of 4096 bytes fits, and what a chunk may add.
    static constexpr std::size_t Size = 4096 + 512;

    // Takes bytes as the line discipline delivers them: a break is FF 00 00, a byte FF is doubled, a damaged
    // byte b is FF 00 b (it is passed on: the readers' framings have checks of their own). A mark may be cut
    // anywhere between two calls. What does not fit is dropped. Hands what the reader really sent to `seen`,
    // where there is one.
    void Add(std::span<const BYTE> raw, WireTrace* seen);
    // How many raw bytes fit for certain: a mark may turn one into two.
    std::size_t Room() const { return (Size - count_) / 2; }
    std::size_t Count() const { return count_; }
    DWORD Take(BYTE* buffer, DWORD size);
    void Clear();
    // The line has been opened anew: a mark that was cut off has no end.
    void ForgetMark() { mark_ = 0; }

    bool Broke = false;  // a break has come since this was last cleared

  private:
    void Put(BYTE byte);

    std::array<BYTE, Size> bytes_{};
    std::size_t count_ = 0;
    int mark_ = 0;  // of FF 00, the bytes that have come
};

}  // namespace layer
