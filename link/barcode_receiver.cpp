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

// The bytes of one read, behind what the read before left of a packet.
struct ReceiveBuffer {
    std::array<BYTE, SsiFrameLimit + ReadSize> Bytes;
    DWORD Kept = 0;
};

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

void HandOver(PacketMessage& message) {
    if (ReceiveHandlers.Barcode) {
        ReceiveHandlers.Barcode(message.Bytes.data(), message.Length);
    } else {
        ShellState.TransferBusy = 0;
    }
    ClearMessage(message);
}

DWORD TakeDecoderMessage(HANDLE, PacketMessage& message, std::span<const BYTE> bytes, bool) {
    ClearMessage(message);
    std::copy(bytes.begin(), bytes.end(), message.Bytes.begin());
    message.Length = static_cast<DWORD>(bytes.size());
    HandOver(message);
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
    while (ShellState.BarcodeThreadRun && ReceiveOnce(port, buffer, message)) {
    }
    PurgeComm(port, PURGE_RXABORT | PURGE_RXCLEAR);
    return 0;
}
