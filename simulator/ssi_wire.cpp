#include "simulator/ssi_wire.h"

#include <algorithm>
#include <utility>

namespace readers {
namespace {

constexpr std::size_t Header = 4;
constexpr std::uint8_t ExtendedPrefix = 0xF0;

}  // namespace

std::uint16_t SsiChecksum(std::span<const std::uint8_t> bytes) {
    unsigned sum = 0;
    for (std::uint8_t byte : bytes) {
        sum += byte;
    }
    return static_cast<std::uint16_t>(0x10000 - (sum & 0xFFFF));
}

Bytes SsiPacketOf(std::uint8_t opcode, std::uint8_t status, std::span<const std::uint8_t> data) {
    data = data.first(std::min(data.size(), LargestPacketData));
    Bytes packet = {static_cast<std::uint8_t>(Header + data.size()), opcode, 0x00, status};
    packet.insert(packet.end(), data.begin(), data.end());
    const std::uint16_t checksum = SsiChecksum(packet);
    packet.push_back(static_cast<std::uint8_t>(checksum >> 8));
    packet.push_back(static_cast<std::uint8_t>(checksum & 0xFF));
    return packet;
}

std::vector<Bytes> SsiDecodePackets(std::uint8_t codeId, std::span<const std::uint8_t> data,
                                    std::size_t packetData) {
    const std::size_t room = std::clamp<std::size_t>(packetData, 2, LargestPacketData) - 1;
    std::vector<Bytes> packets;
    do {
        const std::size_t count = std::min(room, data.size());
        Bytes content = {codeId};
        content.insert(content.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(count));
        data = data.subspan(count);
        packets.push_back(SsiPacketOf(DecodeData, data.empty() ? 0 : StatusContinued, content));
    } while (!data.empty());
    return packets;
}

std::vector<SsiReceived> SsiReceiver::Push(std::span<const std::uint8_t> bytes) {
    Pending.insert(Pending.end(), bytes.begin(), bytes.end());
    std::vector<SsiReceived> found;
    std::size_t at = 0;
    while (at < Pending.size()) {
        const std::size_t length = Pending[at];
        const auto start = Pending.begin() + static_cast<std::ptrdiff_t>(at);
        if (length < Header) {
            if (found.empty() || found.back().What != SsiReceived::Noise) {
                found.push_back({SsiReceived::Noise, {}});
            }
            found.back().Content.push_back(*start);
            ++at;
            continue;
        }
        if (Pending.size() - at < length + 2) {
            break;
        }
        const Bytes packet(start, start + static_cast<std::ptrdiff_t>(length));
        const unsigned sent = static_cast<unsigned>(Pending[at + length]) << 8 | Pending[at + length + 1];
        found.push_back(
            {SsiChecksum(packet) == sent ? SsiReceived::Packet : SsiReceived::BadChecksum, packet});
        at += length + 2;
    }
    Pending.erase(Pending.begin(), Pending.begin() + static_cast<std::ptrdiff_t>(at));
    return found;
}

Bytes SsiReceiver::Abandon() {
    return std::exchange(Pending, {});
}

std::optional<std::vector<SsiParameter>> SsiParametersOf(std::span<const std::uint8_t> packet) {
    if (packet.size() < Header + 1) {
        return std::nullopt;
    }
    std::vector<SsiParameter> parameters;
    for (std::size_t at = Header + 1; at < packet.size();) {
        const bool extended = packet[at] == ExtendedPrefix;
        const std::size_t value = at + (extended ? 2 : 1);
        if (value >= packet.size() || (!extended && packet[at] > ExtendedPrefix)) {
            return std::nullopt;
        }
        const unsigned number = extended ? 0xF000u + packet[at + 1] : packet[at];
        parameters.push_back({static_cast<std::uint16_t>(number), packet[value]});
        at = value + 1;
    }
    return parameters;
}

std::string SsiParameterName(std::uint16_t number) {
    const std::uint8_t low = number & 0xFF;
    return number >= 0xF000 ? HexText(Bytes{ExtendedPrefix, low}) : HexText(Bytes{low});
}

unsigned SsiRateOf(std::uint8_t baudCode) {
    switch (baudCode) {
        case 6:
            return 9600;
        case 7:
            return 19200;
        case 8:
            return 38400;
        case 9:
            return 57600;
        case 11:
            return 115200;
        default:
            return 0;
    }
}

}  // namespace readers
