#include "link/barcode_receiver.h"

#include <algorithm>

#include "link/command_exchange.h"
#include "link/framing.h"
#include "link/reading.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

// 1 from a packet that announces another one until that one comes or is overdue; whoever changes it back has
// decided which.
Relaxed<DWORD> AwaitingContinuation;

// Beginning of any packet of a decode; what TransferBusy was.
BYTE BeginPacket(PacketMessage& message) {
    const BYTE busy = ShellState.TransferBusy.Exchange(1);
    const bool awaited = AwaitingContinuation.Exchange(0) != 0;
    if (awaited) {
        KillTimer(ShellState.MainWindow, IDT_CONTINUATION);
    }
    DropOverdue(message, GetTickCount());
    return awaited ? BYTE{0} : busy;
}

// The packet counts as not received, and the engine will send it again.
void LeaveToResend(PacketMessage& message, std::optional<BYTE> status) {
    NoteRefusal(message, status);
    ShellState.TransferBusy = 0;
}

void RefusePacket(HANDLE port, PacketMessage& message, const BrokenDecode& broken) {
    BeginPacket(message);
    // What else has come is the rest of the broken packet; the resend begins a clean line.
    PurgeComm(port, PURGE_RXCLEAR);
    Log(LogPriority::Warning, TEXT("a packet of the barcode reader was refused: %s"),
        broken.Whole ? TEXT("its checksum is wrong") : TEXT("a part of it has not come"));
    static_cast<void>(SendReaderCommand(port, SsiHostNak));  // unsent, the engine resends by its own time
    LeaveToResend(message, broken.Status);
}

void TakePacket(HANDLE port, PacketMessage& message, std::span<const BYTE> packet) {
    const BYTE busyBefore = BeginPacket(message);
    if (!SendReaderCommand(port, SsiHostAck)) {
        Log(LogPriority::Warning, TEXT("a packet of the barcode reader could not be acknowledged"));
        LeaveToResend(message, packet[3]);
        return;
    }
    const PacketStep step = AddPacket(message, packet, GetTickCount());
    if (!ReadingLasts()) {
        ShellState.TransferBusy = 0;  // the reader was switched off meanwhile
        return;
    }
    switch (step) {
        case PacketStep::More:
            AwaitingContinuation = 1;
            if (!SetTimer(ShellState.MainWindow, IDT_CONTINUATION, ContinuationTimeout, nullptr)) {
                ShellState.TransferBusy = 0;  // nobody else would free the trigger
            }
            break;
        case PacketStep::Complete:
            HandOver(message);
            break;
        case PacketStep::Nothing:
            Log(LogPriority::Warning, TEXT("a decode without data, too long or incomplete was dropped"));
            ShellState.TransferBusy = 0;
            break;
        case PacketStep::Repeated:
            Log(LogPriority::Debug, TEXT("the barcode reader has repeated a packet"));
            // The scan before may still keep the trigger busy; its time may have run out meanwhile.
            if (busyBefore == 0) {
                ShellState.TransferBusy = 0;
            }
            break;
    }
}

}  // namespace

DWORD TakePackets(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled) {
    while (!bytes.empty() && ReadingLasts()) {
        const SsiPiece piece = NextSsiPacket(bytes);
        const BrokenDecode broken = FindBrokenDecode(piece.Bytes);
        switch (piece.Finding) {
            case SsiFinding::Decode:
                TakePacket(port, message, piece.Bytes);
                break;
            case SsiFinding::Other:
                break;
            case SsiFinding::Noise:
                // No refusal: what was broken has been sent again by itself.
                if (broken.Found) {
                    NotePassedOver(message, broken.Status);
                }
                break;
            case SsiFinding::Rest:
                if (filled) {
                    return static_cast<DWORD>(std::min(bytes.size(), SsiFrameLimit));
                }
                if (broken.Found) {
                    RefusePacket(port, message, broken);
                }
                break;
        }
        bytes = bytes.subspan(piece.Size);
    }
    return 0;
}

void ContinuationOverdue() {
    if (AwaitingContinuation.Exchange(0)) {
        Log(LogPriority::Warning, TEXT("the rest of a decode has not come: it was dropped"));
        ShellState.TransferBusy = 0;
    }
}
