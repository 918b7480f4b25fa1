#include "link/packet_message.h"

#include <algorithm>
#include <utility>

#include "link/framing.h"

namespace {

constexpr std::size_t CodeIdentifierSize = 1;

BYTE StatusOf(std::span<const BYTE> packet) {
    return packet.size() >= SsiHeaderSize ? packet[3] : BYTE{0};
}

std::span<const BYTE> DataOf(std::span<const BYTE> packet, bool first) {
    const std::size_t skipped = SsiHeaderSize + (first ? 0 : CodeIdentifierSize);
    return packet.size() > skipped ? packet.subspan(skipped) : std::span<const BYTE>{};
}

// The bytes of a packet as they were sent first.
BYTE FirstSent(std::span<const BYTE> packet, std::size_t at) {
    return at == 3 ? static_cast<BYTE>(packet[at] & ~SsiResent) : packet[at];
}

bool RepeatsLast(const PacketMessage& message, std::span<const BYTE> packet) {
    if (message.FirstBroken || packet.size() != message.LastSize) {
        return false;
    }
    for (std::size_t at = 0; at < packet.size(); ++at) {
        if (FirstSent(packet, at) != message.Last[at]) {
            return false;
        }
    }
    return true;
}

void KeepAsLast(PacketMessage& message, std::span<const BYTE> packet) {
    message.LastSize = std::min(packet.size(), message.Last.size());
    for (std::size_t at = 0; at < message.LastSize; ++at) {
        message.Last[at] = FirstSent(packet, at);
    }
}

bool BelongsToLostPart(const PacketMessage& message) {
    return message.Lost == LostPart::Certain || (message.Lost == LostPart::Possible && !message.FirstBroken);
}

PacketStep Join(PacketMessage& message, std::span<const BYTE> packet) {
    const std::span<const BYTE> data = DataOf(packet, message.Length == 0);
    if (!message.Discarding && message.Length + data.size() <= MessageLimit) {
        std::copy(data.begin(), data.end(), message.Bytes.begin() + message.Length);
        message.Length += static_cast<DWORD>(data.size());
    } else if (!message.Discarding) {
        ClearMessage(message);
        message.Discarding = true;
    }
    message.Pending = (StatusOf(packet) & SsiContinued) != 0;
    if (message.Pending) {
        return PacketStep::More;
    }
    if (message.Discarding || message.Length == 0) {
        ClearMessage(message);
        return PacketStep::Nothing;
    }
    return PacketStep::Complete;
}

// The engine sends each packet so often. Behind a refused one only its resend is surely of the same decode.
void NoteBroken(PacketMessage& message, std::optional<BYTE> status) {
    const bool first = status && (*status & SsiResent) == 0;
    const bool surelyResent = status && !first;
    message.Tries = first ? 1 : message.Tries + 1;
    if (message.Pending && (message.Tries >= EngineTries || (message.Refused && !surelyResent))) {
        DropPart(message);
    }
    message.FirstBroken |= first;
}

}  // namespace

void ClearMessage(PacketMessage& message) {
    std::fill_n(message.Bytes.begin(), message.Length, BYTE{0});
    message.Length = 0;
    message.Pending = false;
    message.Discarding = false;
}

void DropPart(PacketMessage& message) {
    message.Lost = message.Pending ? LostPart::Certain : std::max(message.Lost, LostPart::Possible);
    message.FirstBroken = false;
    ClearMessage(message);
}

void DropOverdue(PacketMessage& message, DWORD now) {
    if (message.Pending && now - message.LastPacket >= ContinuationTimeout) {
        message.Lost = LostPart::Certain;
        ClearMessage(message);
    }
}

void NoteRefusal(PacketMessage& message, std::optional<BYTE> status) {
    NoteBroken(message, status);
    message.Refused = true;
}

void NotePassedOver(PacketMessage& message, std::optional<BYTE> status) {
    NoteBroken(message, status);
    message.Doubtful = true;
}

PacketStep AddPacket(PacketMessage& message, std::span<const BYTE> packet, DWORD now) {
    const bool resent = (StatusOf(packet) & SsiResent) != 0;
    const bool afterRefusal = std::exchange(message.Refused, false);
    const bool doubtful = std::exchange(message.Doubtful, false) && !afterRefusal;
    message.LastPacket = now;
    if (resent && RepeatsLast(message, packet)) {
        ++message.Tries;
        if (!message.Pending && (StatusOf(packet) & SsiContinued) != 0) {
            // Its part has been dropped meanwhile, and the rest is still to come.
            message.Pending = message.Discarding = true;
        }
        return message.Pending ? PacketStep::More : PacketStep::Repeated;
    }
    const bool mayBeTail = !resent && doubtful && message.Pending;
    if (!resent && (afterRefusal || doubtful)) {
        ClearMessage(message);
    }
    if (!message.Pending) {
        message.Discarding = mayBeTail || (resent && BelongsToLostPart(message));
        message.Lost = LostPart::None;
    }
    message.FirstBroken = false;
    message.Tries = 0;
    KeepAsLast(message, packet);
    return Join(message, packet);
}
