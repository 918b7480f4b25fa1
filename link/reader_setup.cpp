#include "link/reader_setup.h"

#include <array>
#include <span>
#include <string_view>

#include "link/command_exchange.h"
#include "link/detection.h"
#include "link/serial_ports.h"
#include "link/settings_download.h"
#include "link/ssi_packet.h"
#include "settings/record.h"
#include "shell/error_messages.h"

namespace {

constexpr DWORD DefaultsTime = 1000;  // a scan engine that takes its factory defaults restarts at 9600
constexpr DWORD DefaultsRate = 9600;
constexpr DWORD NewRateTime = 500;
constexpr DWORD LaserRate = 38400;
constexpr DWORD ImagerRate = 115200;
constexpr DWORD RfidRate = 57600;

// All length parameters 0: any length. The imager has Code 11 (1C, 1D) as well.
constexpr std::array<BYTE, 29> LaserLengths{
    0x1D, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x12, 0, 0x13, 0, 0x1A, 0, 0x1B, 0, 0x16, 0, 0x17,
    0,    0x14,       0,       0x15,         0,    0x18, 0, 0x19, 0, 0x1E, 0, 0x1F, 0};
constexpr std::array<BYTE, 33> ImagerLengths{
    0x21, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x12, 0, 0x13, 0, 0x1A, 0, 0x1B, 0, 0x1C, 0, 0x1D, 0, 0x16,
    0,    0x17,       0,       0x14,         0,    0x15, 0, 0x18, 0, 0x19, 0, 0x1E, 0, 0x1F, 0};
// The last parameter is the bit rate: 08 stands for 38400, 0B for 115200.
constexpr std::array<BYTE, 15> LaserBase{0x0F, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x8A, 0x08, 0xEC,
                                         0x00, 0xEE,       0x01,    0x9B,         0x02, 0x9C, 0x08};
constexpr std::array<BYTE, 15> ImagerBase{0x0F, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x8A, 0x08, 0xEC,
                                          0x00, 0xEE,       0x01,    0x9B,         0x02, 0x9C, 0x0B};

bool Acknowledged(HANDLE port, std::span<const BYTE> packet) {
    ReaderReply reply;
    return RequestReply(port, packet, reply) && ReplyAcknowledges(reply);
}

DWORD InitializePacketReader(HANDLE port, bool laser) {
    if (!Acknowledged(port, SsiParameterDefaults)) {
        return 0;
    }
    Sleep(DefaultsTime);
    SetPortLine(port, DefaultsRate);
    const std::span<const BYTE> lengths =
        laser ? std::span<const BYTE>(LaserLengths) : std::span<const BYTE>(ImagerLengths);
    const std::span<const BYTE> base = laser ? LaserBase : ImagerBase;
    if (!Acknowledged(port, lengths) || !Acknowledged(port, base)) {
        return 0;
    }
    Sleep(NewRateTime);
    SetPortRate(port, laser ? LaserRate : ImagerRate);
    return Success;
}

// Whether the reply to the command contains the mark; an empty mark takes any reply.
bool Confirmed(HANDLE port, std::string_view command, std::string_view mark) {
    ReaderReply reply;
    return RequestReply(port, command, reply) && ReplyContains(reply, mark);
}

DWORD InitializeRfidReader(HANDLE port) {
    const bool model100 = RfidReaderModel == 100;
    const std::string_view setup = model100 ? "wp0B08" : "wp0B80";
    const std::string_view setupMark = model100 ? "08" : "80";
    const bool configured = Confirmed(port, ".", {}) &&
                            (Confirmed(port, setup, setupMark) || Confirmed(port, setup, setupMark)) &&
                            Confirmed(port, "wp0E7F", "7F") && Confirmed(port, "wp0C03", "03") &&
                            Confirmed(port, "x", {});
    if (!configured) {
        return ErrorInitRfidReader;
    }
    SetPortRate(port, RfidRate);
    return Success;
}

}  // namespace

DWORD InitializeReader(HANDLE port, WORD type) {
    PurgePort(port);
    switch (type) {
        case Device1D:
            return static_cast<DWORD>(Save1DSettings());
        case DeviceLaser:
        case DeviceImager:
            return InitializePacketReader(port, type == DeviceLaser);
        default:
            return InitializeRfidReader(port);
    }
}
