// The 2D imager: a scan engine.
#include "link/barcode_receiver.h"
#include "link/parameter_download.h"
#include "link/readers/scan_engine.h"

namespace {

// All length parameters 0: any length. It has Code 11 (1C, 1D) as well.
constexpr std::array<BYTE, 33> Lengths{
    0x21, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x12, 0, 0x13, 0, 0x1A, 0, 0x1B, 0, 0x1C, 0, 0x1D, 0, 0x16,
    0,    0x17,       0,       0x14,         0,    0x15, 0, 0x18, 0, 0x19, 0, 0x1E, 0, 0x1F, 0};
// The last parameter is the bit rate: 0B stands for 115200.
constexpr std::array<BYTE, 15> Base{0x0F, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x8A, 0x08, 0xEC,
                                    0x00, 0xEE,       0x01,    0x9B,         0x02, 0x9C, 0x0B};

bool SetUp(HANDLE port) {
    return SetUpScanEngine(port, ImagerReader, Lengths, Base);
}

}  // namespace

bool DownloadImagerSettings() {
    return DownloadRows(ParameterRows::ImagerFirst) && DownloadRows(ParameterRows::ImagerSecond);
}

constinit const BarcodeReader ImagerReader{
    .Name = TEXT("2D imager"),
    .Bit = DeviceImager,
    .Protocol = ReaderProtocol::Packets,
    .WorkingRate = 115200,
    .PowerUp = 3200,
    .MessageGap = 30,
    .KeepsRts = false,
    .Upgradable = false,
    .Probe = ProbeScanEngine,
    .SetUp = SetUp,
    .Send = SendToScanEngine,
    .WholeReply = IsWholePacket,
    .Press = StartDecoding,
    .Release = StopDecoding,
    .Download = DownloadImagerSettings,
    .Receive = TakePackets,
};
