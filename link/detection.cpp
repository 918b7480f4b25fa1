#include "link/detection.h"

#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "link/command_exchange.h"
#include "link/probe_reply.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/log.h"
#include "shell/shell_state.h"

Relaxed<DWORD> RfidReaderModel;

namespace {

constexpr DWORD ProbeStep = 10;
constexpr int RfidRepeats = 10;

void PowerUpDelay(UINT milliseconds) {
    SetTimer(ShellState.MainWindow, IDT_READER_READY, milliseconds, nullptr);
    while (!ShellState.ReaderReady) {
        Sleep(ProbeStep);
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
    ProbeAnswer buffer;
    ReplyWindow window{port, NeverWhole, ProbeWindow};
    int repeats = 0;
    for (;;) {
        const std::span<const BYTE> answer = window.Next(buffer);
        if (answer.empty()) {
            return 0;
        }
        switch (ParseRfidAnswer(answer)) {
            case RfidAnswer::None:
                break;
            case RfidAnswer::AskAgain:
                if (++repeats > RfidRepeats || !AskRfidReader(port)) {
                    return 0;
                }
                window.Opened = GetTickCount();
                break;
            case RfidAnswer::Model90:
                RfidReaderModel = 90;
                return 1;
            case RfidAnswer::Model100:
                RfidReaderModel = 100;
                return 1;
        }
    }
}

DWORD WorkingRate(WORD type, WORD found) {
    return type == DeviceRfid ? RfidWorkingRate : FindBarcodeReader(found)->WorkingRate;
}

// Looks for the readers of a port, once more when a call on it failed; false when none was found because of
// failures.
template <class Probe>
bool LookFor(Probe probe, WORD& found) {
    for (int tries = 0; tries < 2; ++tries) {
        const DWORD failures = PortFailures();
        found = probe();
        if (found != 0 || PortFailures() == failures) {
            return true;
        }
    }
    return false;
}

// Whether the reply to the command contains the mark; an empty mark takes any reply.
bool Confirmed(HANDLE port, std::string_view command, std::string_view mark) {
    ReaderReply reply;
    return RequestReply(port, command, reply) && ReplyContains(reply, mark);
}

bool InitializeRfidReader(HANDLE port) {
    const bool model100 = RfidReaderModel == 100;
    const std::string_view setup = model100 ? "wp0B08" : "wp0B80";
    const std::string_view setupMark = model100 ? "08" : "80";
    const bool configured = Confirmed(port, ".", {}) &&
                            (Confirmed(port, setup, setupMark) || Confirmed(port, setup, setupMark)) &&
                            Confirmed(port, "wp0E7F", "7F") && Confirmed(port, "wp0C03", "03") &&
                            Confirmed(port, "x", {});
    if (!configured) {
        Log(LogPriority::Warning, TEXT("the RFID reader has not confirmed its set-up"));
        return false;
    }
    Log(LogPriority::Info, TEXT("the RFID reader is set up"));
    SetPortRate(port, RfidWorkingRate);
    return true;
}

}  // namespace

ErrorCode DetectReaders(WORD* deviceMask) {
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

    PowerUpDelay(RfidProbeDelay);
    SetPortLine(rfidPort, 0);
    WORD rfid = 0, barcode = 0;
    if (!LookFor([&] { return ProbeReaderRates(rfidPort, DeviceRfid); }, rfid)) {
        CloseReaderPort(barcodePort);
        CloseReaderPort(rfidPort);
        return ErrorRfidReaderOn;
    }

    ShellState.ReaderReady = 0;
    PowerUpDelay(BarcodeProbeDelay);
    if (!LookFor([&] { return ProbeBarcodeReader(barcodePort); }, barcode)) {
        CloseReaderPort(barcodePort);
        CloseReaderPort(rfidPort);
        return ErrorBarcodeReaderOn;
    }
    const WORD mask = static_cast<WORD>((rfid != 0 ? DeviceRfid : 0) | barcode);

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

WORD ProbeBarcodeReader(HANDLE port) {
    SetPortLine(port, 0);
    decltype(BarcodeReader::Probe) asked = nullptr;
    for (const BarcodeReader* reader : BarcodeReaders()) {
        if (reader->Probe == std::exchange(asked, reader->Probe)) {
            continue;
        }
        if (const WORD found = ProbeReaderRates(port, reader->Bit)) {
            if (FindBarcodeReader(found)->KeepsRts) {
                RaiseRts(port);
            }
            return found;
        }
    }
    return 0;
}

WORD ProbeReaderRates(HANDLE port, WORD type) {
    constexpr std::array<DWORD, 3> RfidRates{RfidWorkingRate, 9600, 38400};
    constexpr std::array<DWORD, 3> BarcodeRates{115200, 38400, 9600};
    PurgePort(port);
    for (const DWORD rate : type == DeviceRfid ? RfidRates : BarcodeRates) {
        Log(LogPriority::Debug, TEXT("asking for the %s, or its kind, at %u bit/s"),
            type == DeviceRfid ? TEXT("RFID reader") : FindBarcodeReader(type)->Name, rate);
        if (const WORD found = ProbeReader(port, rate, type)) {
            Log(LogPriority::Notice, TEXT("%s found at %u bit/s"),
                type == DeviceRfid ? TEXT("RFID reader") : FindBarcodeReader(found)->Name, rate);
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
    if (type == DeviceRfid) {
        return ProbeRfidReader(port);
    }
    const BarcodeReader* reader = FindBarcodeReader(type);
    return reader ? reader->Probe(port) : WORD{0};
}

bool InitializeReader(HANDLE port, WORD type) {
    PurgePort(port);
    if (type == DeviceRfid) {
        return InitializeRfidReader(port);
    }
    const BarcodeReader* reader = FindBarcodeReader(type);
    return reader && reader->SetUp(port);
}
