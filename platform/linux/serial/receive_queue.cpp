#include "platform/linux/serial/receive_queue.h"

#include <vector>

namespace layer {

void ReceiveQueue::Add(std::span<const BYTE> raw, WireTrace* seen) {
    const std::size_t before = count_;
    for (const BYTE byte : raw) {
        const LineMarks::Result result = marks_.Take(byte);
        Broke |= result.broke;
        for (int i = 0; i < result.count && count_ < Size; ++i) {
            bytes_[(first_ + count_++) % Size] = result.bytes[i];
        }
    }
    if (seen != nullptr && count_ != before) {
        std::vector<BYTE> added;
        for (std::size_t at = before; at < count_; ++at) {
            added.push_back(bytes_[(first_ + at) % Size]);
        }
        seen->Received(added);
    }
}

DWORD ReceiveQueue::Take(BYTE* buffer, DWORD size) {
    const DWORD taken = static_cast<DWORD>(std::min<std::size_t>(size, count_));
    for (DWORD i = 0; i < taken; ++i) {
        buffer[i] = bytes_[(first_ + i) % Size];
    }
    first_ = (first_ + taken) % Size;
    count_ -= taken;
    return taken;
}

void ReceiveQueue::Clear() {
    marks_.Reset();
    count_ = 0;
}

}  // namespace layer
