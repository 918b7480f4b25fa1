#include "platform/linux/serial/receive_queue.h"

#include <algorithm>

namespace layer {

void ReceiveQueue::Add(std::span<const BYTE> raw, WireTrace* seen) {
    const std::size_t before = count_;
    for (const BYTE byte : raw) {
        if ((mark_ == 0 && byte == 0xFF) || (mark_ == 1 && byte == 0)) {
            ++mark_;
            continue;
        }
        if (mark_ == 1 && byte != 0xFF) {
            Put(0xFF);  // no line discipline sends this; losing a byte would be worse than passing both on
        }
        if (mark_ == 2 && byte == 0) {
            Broke = true;
        } else {
            Put(byte);
        }
        mark_ = 0;
    }
    if (seen != nullptr) {
        seen->Received({bytes_.data() + before, count_ - before});
    }
}

void ReceiveQueue::Put(BYTE byte) {
    if (count_ < Size) {
        bytes_[count_++] = byte;
    }
}

DWORD ReceiveQueue::Take(BYTE* buffer, DWORD size) {
    const std::size_t taken = std::min<std::size_t>(size, count_);
    std::copy_n(bytes_.begin(), taken, buffer);
    std::copy(bytes_.begin() + taken, bytes_.begin() + count_, bytes_.begin());
    count_ -= taken;
    return static_cast<DWORD>(taken);
}

void ReceiveQueue::Clear() {
    mark_ = 0;
    count_ = 0;
}

}  // namespace layer
