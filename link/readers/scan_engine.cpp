#include "link/readers/scan_engine.h"

#include <algorithm>

#include "link/await_reply.h"
#include "link/command_exchange.h"
#include "link/framing.h"
#include "link/probe_reply.h"
#include "link/serial_ports.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD EngineProbeDelay = 100;
constexpr DWORD DefaultsTime = 1000;  // an engine that takes its factory defaults restarts at 9600
constexpr DWORD DefaultsRate = 9600;
constexpr DWORD NewRateTime = 500;
constexpr int PacketTries = 2;

enum class Reaction { None, Refused, Taken };

// Looking for the two acknowledgement bytes anywhere would find them in other packets' data too.
bool BeginsWithAck(const ReaderReply& reply) {
    return reply.Length >= SsiReaderAck.size() &&
           std::equal(SsiReaderAck.begin(), SsiReaderAck.end(), reply.Bytes.begin());
}

constexpr DWORD NakCauseAt = 4;

// Only a whole packet: at a wrong speed an engine's bytes may look like anything.
bool IsNak(const ReaderReply& reply) {
    return reply.Length > NakCauseAt && reply.Bytes[1] == CMD_NAK &&
           IsWholePacket({reply.Bytes.data(), reply.Length});
}

// Sends a packet until it is acknowledged, twice at most: one acknowledgement may get lost.
Reaction SendTwice(HANDLE port, std::span<const BYTE> packet) {
    Reaction reaction = Reaction::None;
    for (int i = 0; i < PacketTries && reaction != Reaction::Taken; ++i) {
        ReaderReply reply;
        const bool answered = RequestReply(port, packet, reply);
        reaction = !answered              ? Reaction::None
                   : BeginsWithAck(reply) ? Reaction::Taken
                   : IsNak(reply)         ? Reaction::Refused
                                          : Reaction::None;
        if (reaction == Reaction::None) {
            Log(LogPriority::Warning, answered
                                          ? TEXT("the scan engine has answered a packet with something else")
                                          : TEXT("the scan engine has not answered a packet"));
        } else if (reaction == Reaction::Refused) {
            Log(LogPriority::Warning, TEXT("the scan engine has refused a packet: cause %u"),
                DWORD{reply.Bytes[NakCauseAt]});
        }
    }
    return reaction;
}

// A packet that changes the engine's rate. Without an answer it may have been taken all the same: the engine
// is then asked once more at its new rate.
bool SendRateChange(HANDLE port, std::span<const BYTE> packet, DWORD newRate) {
    const Reaction reaction = SendTwice(port, packet);
    if (reaction != Reaction::None) {
        return reaction == Reaction::Taken;
    }
    SetPortRate(port, newRate);
    ReaderReply reply;
    return RequestReply(port, packet, reply) && BeginsWithAck(reply);
}

}  // namespace

WORD ProbeScanEngine(HANDLE port) {
    SsiFrame frame;
    const std::size_t size = SealSsiPacket(SsiRequestRevision, frame);
    SetRts(port, true);
    if (!WritePort(port, frame.data(), static_cast<DWORD>(size))) {
        return 0;
    }
    SetRts(port, false);
    Sleep(EngineProbeDelay);
    ProbeAnswer buffer;
    const ReplyWindow window{port, IsWholePacket, ProbeWindow};
    for (;;) {
        const std::span<const BYTE> answer = window.Next(buffer);
        if (answer.empty()) {
            return 0;
        }
        switch (ParseRevisionReply(answer)) {
            case RevisionAnswer::NoRevision:
            case RevisionAnswer::Unknown:
                break;
            case RevisionAnswer::Unnamed:
                return 0;
            case RevisionAnswer::Laser:
                return DeviceLaser;
            case RevisionAnswer::Imager:
                return DeviceImager;
        }
    }
}

bool SetUpScanEngine(HANDLE port, const BarcodeReader& reader, std::span<const BYTE> lengths,
                     std::span<const BYTE> base) {
    if (!SendRateChange(port, SsiParameterDefaults, DefaultsRate)) {
        return false;
    }
    Sleep(DefaultsTime);
    SetPortLine(port, DefaultsRate);
    if (SendTwice(port, lengths) != Reaction::Taken || !SendRateChange(port, base, reader.WorkingRate)) {
        return false;
    }
    Sleep(NewRateTime);
    SetPortRate(port, reader.WorkingRate);
    return true;
}

ErrorCode CommandScanEngine(std::span<const BYTE> packet) {
    return SendReaderCommand(ShellState.BarcodePort, packet) ? Success : ErrorSetBarcodeReader;
}

ErrorCode StartDecoding() {
    // The hold is used up: its timer must not end that of the next press.
    KillTimer(ShellState.MainWindow, IDT_LASER_HOLD);
    ShellState.LaserHold = 0;
    return CommandScanEngine(SsiStartDecode);
}

ErrorCode StopDecoding() {
    return CommandScanEngine(SsiStopDecode);
}

bool DownloadRows(ParameterRows rows) {
    ParameterPacket packet;
    BuildParameterPacket(rows, packet);
    if (packet.Length <= EmptyParameterPacket) {
        return true;
    }
    const HANDLE port = ShellState.BarcodePort;
    SetPortTimeouts(port, MAXDWORD);
    return SendTwice(port, {packet.Bytes.data(), packet.Length}) == Reaction::Taken;
}

bool SendToScanEngine(HANDLE port, std::span<const BYTE> packet) {
    SsiFrame frame;
    const std::size_t size = SealSsiPacket(packet, frame);
    if (size == 0) {
        return false;
    }
    SetRts(port, true);
    if (!WriteWithRetries(port, frame.data(), static_cast<DWORD>(size))) {
        return false;
    }
    SetRts(port, false);
    return true;
}
