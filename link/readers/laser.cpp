// The 1D long-range laser: a scan engine that can aim before it decodes.
#include "link/barcode_receiver.h"
#include "link/parameter_download.h"
#include "link/read_control.h"
#include "link/readers/scan_engine.h"
#include "settings/general_fields.h"
#include "shell/shell_state.h"

namespace {

constexpr UINT HoldTime = 1000;

// All length parameters 0: any length.
constexpr std::array<BYTE, 29> Lengths{0x1D, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x12, 0, 0x13, 0, 0x1A,
                                       0,    0x1B,       0,       0x16,         0,    0x17, 0, 0x14, 0, 0x15,
                                       0,    0x18,       0,       0x19,         0,    0x1E, 0, 0x1F, 0};
// The last parameter is the bit rate: 08 stands for 38400.
constexpr std::array<BYTE, 15> Base{0x0F, PARAM_SEND, SsiHost, SsiPermanent, 0xFF, 0x8A, 0x08, 0xEC,
                                    0x00, 0xEE,       0x01,    0x9B,         0x02, 0x9C, 0x08};

bool AimsFirst() {
    return Value(general::AimDuration) != 0;
}

bool SetUp(HANDLE port) {
    return SetUpScanEngine(port, LaserReader, Lengths, Base);
}

ErrorCode Press() {
    if (!AimsFirst() || ShellState.LaserHold != 0) {
        return StartDecoding();
    }
    const ErrorCode result = LaserAim(false, true);
    if (result == Success) {
        ShellState.LaserHold = 1;
    }
    return result;
}

ErrorCode Release() {
    if (AimsFirst()) {
        const ErrorCode result = LaserAim(false, false);
        if (result != Success) {
            return result;
        }
        if (ShellState.LaserHold == 1) {
            SetTimer(ShellState.MainWindow, IDT_LASER_HOLD, HoldTime, nullptr);
            return Success;
        }
    }
    return StopDecoding();
}

}  // namespace

ErrorCode LaserAim(bool startAfter, bool on) {
    if (on) {
        const ErrorCode result = CommandScanEngine(SsiAimOn);
        if (result != Success) {
            return result;
        }
        SetTimer(ShellState.MainWindow, IDT_AIM_DURATION, Value(general::AimDuration) * 100u, nullptr);
    } else {
        KillTimer(ShellState.MainWindow, IDT_AIM_DURATION);
        const ErrorCode result = CommandScanEngine(SsiAimOff);
        if (result != Success) {
            return result;
        }
    }
    return startAfter ? CommandScanEngine(SsiStartDecode) : Success;
}

bool DownloadLaserSettings() {
    return DownloadRows(ParameterRows::Laser);
}

constinit const BarcodeReader LaserReader{
    .Name = TEXT("1D long-range laser"),
    .Bit = DeviceLaser,
    .Protocol = ReaderProtocol::Packets,
    .WorkingRate = 38400,
    .PowerUp = 1200,
    .MessageGap = 30,
    .KeepsRts = false,
    .Upgradable = false,
    .Probe = ProbeScanEngine,
    .SetUp = SetUp,
    .Send = SendToScanEngine,
    .WholeReply = IsWholePacket,
    .Press = Press,
    .Release = Release,
    .Download = DownloadLaserSettings,
    .Receive = TakePackets,
};
