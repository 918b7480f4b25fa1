#include "link/barcode_receiver.h"

#include <algorithm>
#include <array>

#include "link/command_exchange.h"
#include "link/message_handlers.h"
#include "link/packet_message.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "link/ssi_packet.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD ReadSize = 4096;
constexpr DWORD WaitPause = 10;  // a wait that keeps failing must not keep the processor busy

// 1 from a packet that announces another one until that one comes or is overdue; whoever changes it back has
// decided which.
Relaxed<DWORD> AwaitingContinuation;

// The bytes of one read, behind what the read before left of a packet.
struct ReceiveBuffer {
    std::array<BYTE, SsiFrameLimit + ReadSize> Bytes;
    DWORD Kept = 0;
};

void HandOver(PacketMessage& message) {
    if (ReceiveHandlers.Barcode) {
        ReceiveHandlers.Barcode(message.Bytes.data(), message.Length);
    } else {
        ShellState.TransferBusy = 0;
    }
    ClearMessage(message);
}

// Beginning of any packet of a decode.
void BeginPacket(PacketMessage& message) {
    ShellState.TransferBusy = 1;
    if (AwaitingContinuation.Exchange(0)) {
        KillTimer(ShellState.MainWindow, IDT_CONTINUATION);
        DropOverdue(message, GetTickCount());
    } else {
        // Nothing was awaited, or the main window has given it up.
        ClearMessage(message);
    }
}

void DropMessage(PacketMessage& message) {
    ClearMessage(message);
    ShellState.TransferBusy = 0;
}

void RefusePacket(HANDLE port, PacketMessage& message) {
    BeginPacket(message);
    SendReaderCommand(port, SsiHostNak);
    DropMessage(message);
}

void TakePacket(HANDLE port, PacketMessage& message, std::span<const BYTE> packet) {
    BeginPacket(message);
    if (!SendReaderCommand(port, SsiHostAck)) {
        DropMessage(message);
        return;
    }
    switch (AddPacket(message, packet, GetTickCount())) {
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
            DropMessage(message);
            break;
    }
}

bool IsDecodeData(std::span<const BYTE> bytes) {
    return bytes.size() > 1 && bytes[1] == DECODE_DATA;
}

// One event: reads what is there and handles it. False on a break.
bool ReceiveOnce(HANDLE port, ReceiveBuffer& buffer, PacketMessage& message) {
    DWORD events = 0;
    if (!WaitCommEvent(port, &events, nullptr)) {
        Sleep(WaitPause);
        return true;
    }
    if (events & EV_BREAK) {
        return false;
    }
    if ((events & EV_RXCHAR) == 0) {
        return true;  // woken by a change of the mask
    }
    const DWORD kept = buffer.Kept;
    const DWORD read = ReadPort(port, buffer.Bytes.data() + kept, ReadSize);
    buffer.Kept = 0;
    if (read == 0 && kept == 0) {
        // An event without bytes completes nothing: the part of a packet message that has come so far stays
        // where it is until its continuation comes or is overdue.
        return true;
    }
    const std::span<const BYTE> bytes(buffer.Bytes.data(), kept + read);
    const BarcodeReader* reader = FittedBarcodeReader();
    const DWORD rest = reader ? reader->Receive(port, message, bytes, read == ReadSize) : 0;
    std::copy(bytes.end() - rest, bytes.end(), buffer.Bytes.begin());
    buffer.Kept = rest;
    return true;
}

}  // namespace

DWORD TakeDecoderMessage(HANDLE, PacketMessage& message, std::span<const BYTE> bytes, bool) {
    ClearMessage(message);
    std::copy(bytes.begin(), bytes.end(), message.Bytes.begin());
    message.Length = static_cast<DWORD>(bytes.size());
    HandOver(message);
    return 0;
}

DWORD TakePackets(HANDLE port, PacketMessage& message, std::span<const BYTE> bytes, bool filled) {
    while (!bytes.empty()) {
        const SsiPiece piece = NextSsiPacket(bytes);
        switch (piece.Finding) {
            case SsiFinding::Decode:
                TakePacket(port, message, piece.Packet);
                break;
            case SsiFinding::Corrupt:
                RefusePacket(port, message);
                break;
            case SsiFinding::Incomplete:
                if (filled) {
                    return static_cast<DWORD>(bytes.size());
                }
                if (IsDecodeData(bytes)) {
                    RefusePacket(port, message);
                }
                break;
            case SsiFinding::Other:
            case SsiFinding::Noise:
                break;
        }
        bytes = bytes.subspan(piece.Size);
    }
    return 0;
}

int StartBarcodeReceiver(WORD deviceMask) {
    if ((deviceMask & DeviceBarcodeMask) == 0) {
        return 1;
    }
    ShellState.BarcodeThreadRun = 1;
    HANDLE thread = CreateThread(nullptr, 0, BarcodeReceiveThread, nullptr, CREATE_SUSPENDED, nullptr);
    if (thread == nullptr) {
        return 0;
    }
    ShellState.BarcodeThread = thread;
    return 1;
}

void ResumeBarcodeReceiver() {
    if (!ShellState.TransferBusy) {
        PurgeComm(ShellState.BarcodePort, PURGE_RXCLEAR);
    }
    ResumeThread(ShellState.BarcodeThread);
}

DWORD WINAPI BarcodeReceiveThread(LPVOID) {
    const HANDLE port = ShellState.BarcodePort;
    PurgeComm(port, PURGE_RXCLEAR);
    if (!SetCommMask(port, ReceiveEvents)) {
        return 0;
    }
    ReceiveBuffer buffer;
    PacketMessage message;
    AwaitingContinuation = 0;
    while (ShellState.BarcodeThreadRun && ReceiveOnce(port, buffer, message)) {
    }
    PurgeComm(port, PURGE_RXABORT | PURGE_RXCLEAR);
    return 0;
}

void ContinuationOverdue() {
    if (AwaitingContinuation.Exchange(0)) {
        ShellState.TransferBusy = 0;
    }
}
