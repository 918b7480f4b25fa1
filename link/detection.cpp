#include "link/detection.h"

#include <array>
#include <span>

#include "link/escape_frame.h"
#include "link/probe_reply.h"
#include "link/serial_ports.h"
#include "link/ssi_packet.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

Relaxed<DWORD> RfidReaderModel;

namespace {

constexpr UINT RfidPowerUp = 200;
constexpr UINT BarcodePowerUp = 3200;
constexpr DWORD ProbeWindow = 500;
constexpr DWORD ProbeDelay = 100;
constexpr DWORD ProbeReadSize = 100;
constexpr DWORD PollStep = 10;
constexpr DWORD BurstGap = 30;
constexpr int RfidRepeats = 10;

// What a reader sends without a pause counts as one answer, however the reads cut it.
struct Burst {
    std::array<BYTE, 512> Bytes;
    DWORD Length;
};

// Collects the next answer; false when the window that began at `start` ends without one.
bool ReadBurst(HANDLE port, DWORD start, Burst& burst) {
    burst.Length = 0;
    if (GetTickCount() - start >= 2 * ProbeWindow) {
        return false;  // of a line that never falls silent there would always be another one
    }
    DWORD last = 0;
    for (;;) {
        const DWORD room = static_cast<DWORD>(burst.Bytes.size()) - burst.Length;
        const DWORD count =
            ReadPort(port, burst.Bytes.data() + burst.Length, room < ProbeReadSize ? room : ProbeReadSize);
        const DWORD now = GetTickCount();
        if (count != 0) {
            burst.Length += count;
            last = now;
        }
        if (burst.Length == burst.Bytes.size() || (burst.Length != 0 && now - last >= BurstGap)) {
            return true;
        }
        if (burst.Length == 0 && now - start >= ProbeWindow) {
            return false;
        }
        // A line that never falls silent is no answer to wait for.
        if (now - start >= 2 * ProbeWindow) {
            return burst.Length != 0;
        }
        if (count == 0) {
            Sleep(PollStep);
        }
    }
}

std::span<const BYTE> BytesOf(const Burst& burst) {
    return {burst.Bytes.data(), burst.Length};
}

void PowerUpDelay(UINT milliseconds) {
    SetTimer(ShellState.MainWindow, IDT_READER_READY, milliseconds, nullptr);
    while (!ShellState.ReaderReady) {
        Sleep(PollStep);
    }
}

bool AskRfidReader(HANDLE port) {
    const BYTE command = 'v';
    return WritePort(port, &command, 1);
}

WORD ProbeRfidReader(HANDLE port) {
    if (!AskRfidReader(port)) {
        return 0;
    }
    DWORD start = GetTickCount();
    int repeats = 0;
    Burst burst;
    while (ReadBurst(port, start, burst)) {
        switch (ParseRfidAnswer(BytesOf(burst))) {
            case RfidAnswer::None:
                break;
            case RfidAnswer::AskAgain:
                if (++repeats > RfidRepeats || !AskRfidReader(port)) {
                    return 0;
                }
                start = GetTickCount();
                break;
            case RfidAnswer::Model90:
                RfidReaderModel = 90;
                return 1;
            case RfidAnswer::Model100:
                RfidReaderModel = 100;
                return 1;
        }
    }
    return 0;
}

WORD ProbePacketReader(HANDLE port) {
    SsiFrame frame;
    const std::size_t size = SealSsiPacket(SsiRequestRevision, frame);
    SetRts(port, true);
    if (!WritePort(port, frame.data(), static_cast<DWORD>(size))) {
        return 0;
    }
    SetRts(port, false);
    Sleep(ProbeDelay);
    const DWORD start = GetTickCount();
    Burst burst;
    while (ReadBurst(port, start, burst)) {
        switch (ParseRevisionReply(BytesOf(burst))) {
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
    return 0;
}

WORD ProbeDecoder(HANDLE port) {
    constexpr std::array<BYTE, 3> Command{'S', 'E', 'T'};
    EscFrame frame;
    const std::size_t size = BuildEscapeFrame(Command, frame);
    if (!WritePort(port, frame.data(), static_cast<DWORD>(size))) {
        return 0;
    }
    Sleep(ProbeDelay);
    const DWORD start = GetTickCount();
    Burst burst;
    while (ReadBurst(port, start, burst)) {
        if (IsDecoderAnswer(BytesOf(burst))) {
            return Device1D;
        }
    }
    return 0;
}

WORD ProbeBarcodeReader(HANDLE port) {
    SetPortLine(port, 0);
    if (ProbeReaderRates(port, Device1D) != 0) {
        RaiseRts(port);  // the 1D reader sleeps without it
        return Device1D;
    }
    return ProbeReaderRates(port, DeviceImager);
}

DWORD WorkingRate(WORD type, WORD found) {
    if (type == DeviceRfid) {
        return 57600;
    }
    return found == DeviceLaser ? 38400 : 115200;
}

}  // namespace

DWORD DetectReaders(WORD* deviceMask) {
    *deviceMask = 0;
    Relaxed<HANDLE> barcodePort = OpenReaderPort(BarcodePortSelector);
    if (barcodePort == nullptr) {
        return ErrorBarcodeReaderOn;
    }
    Relaxed<HANDLE> rfidPort = OpenReaderPort(RfidPortSelector);
    if (rfidPort == nullptr) {
        CloseReaderPort(barcodePort);
        return ErrorRfidReaderOn;
    }

    PowerUpDelay(RfidPowerUp);
    SetPortLine(rfidPort, 0);
    WORD mask = ProbeReaderRates(rfidPort, DeviceRfid) != 0 ? DeviceRfid : WORD{0};

    ShellState.ReaderReady = 0;
    PowerUpDelay(BarcodePowerUp);
    mask = static_cast<WORD>(mask | ProbeBarcodeReader(barcodePort));

    if (mask & DeviceBarcodeMask) {
        ShellState.BarcodePort = HANDLE{barcodePort};
    } else {
        CloseReaderPort(barcodePort);
    }
    if (ShellState.ReconfigureReaders && (mask & DeviceRfid)) {
        ShellState.RfidPort = HANDLE{rfidPort};
    } else {
        CloseReaderPort(rfidPort);
    }
    *deviceMask = mask;
    return Success;
}

WORD ProbeReaderRates(HANDLE port, WORD type) {
    constexpr std::array<DWORD, 3> RfidRates{57600, 9600, 38400};
    constexpr std::array<DWORD, 3> BarcodeRates{115200, 38400, 9600};
    PurgePort(port);
    for (const DWORD rate : type == DeviceRfid ? RfidRates : BarcodeRates) {
        if (const WORD found = ProbeReader(port, rate, type)) {
            if (rate != WorkingRate(type, found)) {
                ShellState.ReconfigureReaders = 1;
            }
            return found;
        }
    }
    return 0;
}

WORD ProbeReader(HANDLE port, DWORD rate, WORD type) {
    SetPortRate(port, rate);
    switch (type) {
        case DeviceRfid:
            return ProbeRfidReader(port);
        case Device1D:
            return ProbeDecoder(port);
        default:
            return ProbePacketReader(port);
    }
}
