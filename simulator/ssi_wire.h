// The packets of the scan engines: length, opcode, source, status, data, checksum.
#pragma once

#include "simulator/bytes.h"

namespace readers {

enum SsiOpcode : std::uint8_t {
    RequestRevision = 0xA3,
    ReplyRevision = 0xA4,
    AimOff = 0xC4,
    AimOn = 0xC5,
    ParamSend = 0xC6,
    ParamDefaults = 0xC8,
    CmdAck = 0xD0,
    CmdNak = 0xD1,
    StartDecode = 0xE4,
    StopDecode = 0xE5,
    DecodeData = 0xF3,
};

inline constexpr std::uint8_t StatusResent = 0x01;
inline constexpr std::uint8_t StatusContinued = 0x02;
inline constexpr std::uint8_t StatusPermanent = 0x08;
inline constexpr std::uint8_t SourceHost = 0x04;
inline constexpr std::uint8_t NakResend = 0x01;
inline constexpr std::uint8_t NakUnknown = 0x02;
inline constexpr std::size_t LargestPacketData = 251;  // the length byte counts 4 bytes of header as well

// The two checksum bytes for the bytes before them.
std::uint16_t SsiChecksum(std::span<const std::uint8_t> bytes);

// A packet as the reader sends it (source 0), checksum included. At most LargestPacketData bytes of data.
Bytes SsiPacketOf(std::uint8_t opcode, std::uint8_t status, std::span<const std::uint8_t> data);

// A decode as packets: each begins with the code identifier and holds at most `packetData` bytes of data
// (2 to LargestPacketData) with it; all but the last are marked as continued.
std::vector<Bytes> SsiDecodePackets(std::uint8_t codeId, std::span<const std::uint8_t> data,
                                    std::size_t packetData = LargestPacketData);

struct SsiReceived {
    enum Kind { Packet, BadChecksum, Noise } What;
    Bytes Content;  // packets: without the checksum, at least 4 bytes
};

// Finds packets in what arrives, however it is cut.
class SsiReceiver {
  public:
    std::vector<SsiReceived> Push(std::span<const std::uint8_t> bytes);
    // The line fell silent: what was begun and not finished is returned as noise, if anything.
    Bytes Abandon();
    bool Waiting() const { return !Pending.empty(); }

  private:
    Bytes Pending;
};

struct SsiParameter {
    std::uint16_t Number;  // extended ones are 0xF000 + number
    std::uint8_t Value;
    bool operator==(const SsiParameter&) const = default;
};

// The entries of a PARAM_SEND packet (without checksum). Nothing when the beep code is missing or an entry is
// cut.
std::optional<std::vector<SsiParameter>> SsiParametersOf(std::span<const std::uint8_t> packet);

// "08" or "F0 52"
std::string SsiParameterName(std::uint16_t number);

// The bit rate of a baud code (the value of parameter 9C); 0 when there is none.
unsigned SsiRateOf(std::uint8_t baudCode);

}  // namespace readers
