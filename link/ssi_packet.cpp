#include "link/ssi_packet.h"

#include <algorithm>

namespace {

constexpr std::size_t ChecksumSize = 2;

bool ChecksumMatches(std::span<const BYTE> bytes, std::size_t length) {
    const WORD expected = SsiChecksum(bytes.first(length));
    return bytes[length] == expected >> 8 && bytes[length + 1] == (expected & 0xFF);
}

}  // namespace

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
    const std::size_t all = bytes.size();
    if (all < 2) {
        return {SsiFinding::Incomplete, {}, all};
    }
    const std::size_t length = bytes[0];
    const bool decode = bytes[1] == DECODE_DATA;
    if (length < SsiHeaderSize) {
        return {decode ? SsiFinding::Corrupt : SsiFinding::Noise, {}, all};
    }
    if (all < length + ChecksumSize) {
        return {SsiFinding::Incomplete, {}, all};
    }
    if (ChecksumMatches(bytes, length)) {
        return {decode ? SsiFinding::Decode : SsiFinding::Other, bytes.first(length), length + ChecksumSize};
    }
    // The length of something that is no packet says nothing about where the next one begins.
    return decode ? SsiPiece{SsiFinding::Corrupt, {}, length + ChecksumSize}
                  : SsiPiece{SsiFinding::Noise, {}, all};
}
