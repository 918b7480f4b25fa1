#include "link/packet_message.h"

#include <algorithm>

#include "link/ssi_packet.h"

namespace {

constexpr std::size_t CodeIdentifierSize = 1;

std::span<const BYTE> DataOf(std::span<const BYTE> packet, bool first) {
    const std::size_t skipped = SsiHeaderSize + (first ? 0 : CodeIdentifierSize);
    return packet.size() > skipped ? packet.subspan(skipped) : std::span<const BYTE>{};
}

}  // namespace

void ClearMessage(PacketMessage& message) {
    std::fill_n(message.Bytes.begin(), message.Length, BYTE{0});
    message.Length = 0;
    message.Pending = false;
    message.TooLong = false;
}

bool DropOverdue(PacketMessage& message, DWORD now) {
    if (!message.Pending || now - message.LastPacket < ContinuationTimeout) {
        return false;
    }
    ClearMessage(message);
    return true;
}

PacketStep AddPacket(PacketMessage& message, std::span<const BYTE> packet, DWORD now) {
    const std::span<const BYTE> data = DataOf(packet, message.Length == 0 && !message.TooLong);
    if (message.TooLong || message.Length + data.size() > MessageLimit) {
        // The rest is still taken, packet by packet, so that it isn't mistaken for another decode.
        ClearMessage(message);
        message.TooLong = true;
    } else {
        std::copy(data.begin(), data.end(), message.Bytes.begin() + message.Length);
        message.Length += static_cast<DWORD>(data.size());
    }
    message.LastPacket = now;
    message.Pending = packet.size() >= SsiHeaderSize && (packet[3] & SsiContinued) != 0;
    if (message.Pending) {
        return PacketStep::More;
    }
    if (message.TooLong || message.Length == 0) {
        ClearMessage(message);
        return PacketStep::Nothing;
    }
    return PacketStep::Complete;
}
