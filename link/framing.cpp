#include "link/framing.h"

#include <algorithm>

namespace {

constexpr std::size_t WakeBytes = 30;
constexpr BYTE EscapeByte = 0x1B;
constexpr BYTE EndByte = 0x0D;

constexpr std::size_t ChecksumSize = 2;

// Whether as many bytes are there as the first one says, and a checksum.
bool IsWhole(std::span<const BYTE> bytes) {
    return !bytes.empty() && bytes[0] >= SsiHeaderSize && bytes.size() >= bytes[0] + ChecksumSize;
}

// The length of the whole packet that begins with the first byte, without its checksum; 0 when none does.
std::size_t PacketLength(std::span<const BYTE> bytes) {
    if (!IsWhole(bytes)) {
        return 0;
    }
    const std::size_t length = bytes[0];
    const WORD expected = SsiChecksum(bytes.first(length));
    return bytes[length] == expected >> 8 && bytes[length + 1] == (expected & 0xFF) ? length : 0;
}

// Whether the checksum of a whole one is wrong by what a resend bit makes that came the other way round.
bool ResendBitInDoubt(std::span<const BYTE> bytes) {
    const std::size_t length = bytes[0];
    const int wrong =
        static_cast<WORD>(bytes[length] << 8 | bytes[length + 1]) - SsiChecksum(bytes.first(length));
    return wrong == ((bytes[3] & SsiResent) != 0 ? 1 : -1);
}

}  // namespace

std::size_t BuildEscapeFrame(std::span<const BYTE> command, EscFrame& frame) {
    if (command.size() > EscapeCommandLimit) {
        return 0;
    }
    auto next = std::fill_n(frame.begin(), WakeBytes, BYTE{0xFF});
    *next++ = EscapeByte;
    next = std::copy(command.begin(), command.end(), next);
    *next++ = EndByte;
    return static_cast<std::size_t>(next - frame.begin());
}

WORD SsiChecksum(std::span<const BYTE> bytes) {
    unsigned sum = 0;
    for (const BYTE value : bytes) {
        sum += value;
    }
    return static_cast<WORD>(0u - sum);
}

std::size_t SealSsiPacket(std::span<const BYTE> packet, SsiFrame& frame) {
    if (packet.empty()) {
        return 0;
    }
    const std::size_t length = packet[0];
    if (length < SsiHeaderSize || length > packet.size()) {
        return 0;
    }
    std::copy_n(packet.begin(), length, frame.begin());
    const WORD checksum = SsiChecksum(packet.first(length));
    frame[length] = static_cast<BYTE>(checksum >> 8);
    frame[length + 1] = static_cast<BYTE>(checksum & 0xFF);
    return length + ChecksumSize;
}

SsiPiece NextSsiPacket(std::span<const BYTE> bytes) {
    if (const std::size_t length = PacketLength(bytes)) {
        return {bytes[1] == DECODE_DATA ? SsiFinding::Decode : SsiFinding::Other, bytes.first(length),
                length + ChecksumSize};
    }
    for (std::size_t at = 1; at + 1 < bytes.size(); ++at) {
        if (bytes[at + 1] == DECODE_DATA && PacketLength(bytes.subspan(at)) != 0) {
            return {SsiFinding::Noise, bytes.first(at), at};
        }
    }
    return {SsiFinding::Rest, bytes, bytes.size()};
}

BrokenDecode FindBrokenDecode(std::span<const BYTE> bytes) {
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const bool fromReader = at == 1 || (at + 1 < bytes.size() && bytes[at + 1] == SsiReader);
        if (bytes[at] == DECODE_DATA && fromReader) {
            const std::span<const BYTE> packet = bytes.subspan(at == 0 ? bytes.size() : at - 1);
            const bool whole = IsWhole(packet);
            const bool known = at + 2 < bytes.size() && !(whole && ResendBitInDoubt(packet));
            return {true, whole, known ? std::optional(bytes[at + 2]) : std::nullopt};
        }
    }
    return {};
}
