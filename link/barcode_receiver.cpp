#include "link/barcode_receiver.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "link/command_exchange.h"
#include "link/framing.h"
#include "link/packet_message.h"
#include "link/readers/barcode_reader.h"
#include "link/reading.h"
#include "link/serial_ports.h"
#include "link/turn.h"
#include "settings/record.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD ReadSize = 4096;
constexpr DWORD WaitPause = 10;  // a wait that keeps failing must not keep the processor busy
constexpr DWORD PortStep = 10;
constexpr DWORD LongestPortUse = 2000;

// The number of the reading: odd while the reader is on, even while it is off. Only one thread at a time
// switches the reader.
std::atomic<DWORD> Reading{1};
thread_local DWORD MyReading = 0;

// The number of the thread that was created last.
std::atomic<DWORD> LastReceiver{0};

// The thread waits for bytes, reads or answers. Set before it looks at the reading, so that whoever has ended
// the reading and finds this false has the port for himself.
std::atomic<bool> PortInUse{false};

// Where a paused thread waits; made by the first one, never closed, null when the platform has no room for
// it.
HANDLE Gate() {
    static const HANDLE gate = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    return gate;
}

bool MayRun(DWORD receiver) {
    return ShellState.BarcodeThreadRun && (receiver == 0 || receiver == LastReceiver);
}

// Waits until the reader is on; false when the thread is to end.
bool PassGate(DWORD receiver) {
    for (;;) {
        MyReading = Reading;
        if (!MayRun(receiver)) {
            EventModify(Gate(), EVENT_SET);  // it may have been meant for the thread that came after
            return false;
        }
        if (MyReading & 1) {
            return true;
        }
        if (WaitForSingleObject(Gate(), INFINITE) != WAIT_OBJECT_0) {
            Sleep(WaitPause);
        }
    }
}

// The bytes of one read, behind what the read before left of a packet or a message.
struct ReceiveBuffer {
    std::array<BYTE, ReadSize> Bytes;
    DWORD Kept = 0;
};

class PortUse {
  public:
    PortUse() { PortInUse = true; }
    ~PortUse() { PortInUse = false; }
};

// One event: reads what is there and handles it. False on a break.
bool ReceiveOnce(HANDLE port, ReceiveBuffer& buffer, PacketMessage& message) {
    const PortUse use;
    if (!ReadingLasts()) {
        return true;
    }
    DWORD events = 0;
    if (!WaitCommEvent(port, &events, nullptr)) {
        // The reader has gone: whatever comes next is no rest of what has come.
        DropPart(message);
        buffer.Kept = 0;
        Sleep(WaitPause);
        return true;
    }
    if (events & EV_BREAK) {
        Log(LogPriority::Warning,
            TEXT("a break has ended the reading of the barcode port: the next press begins it anew"));
        return false;
    }
    if ((events & EV_RXCHAR) == 0 || !ReadingLasts()) {
        return true;  // woken by a change of the mask
    }
    const DWORD kept = buffer.Kept;
    const DWORD room = ReadSize - kept;
    const DWORD read = ReadPort(port, buffer.Bytes.data() + kept, room);
    buffer.Kept = 0;
    if (read == 0 && kept == 0) {
        // An event without bytes completes nothing: the part of a packet message that has come so far stays
        // where it is until its continuation comes or is overdue.
        return true;
    }
    const std::span<const BYTE> bytes(buffer.Bytes.data(), kept + read);
    const BarcodeReader* reader = FittedBarcodeReader();
    const DWORD rest = reader ? reader->Receive(port, message, bytes, read == room) : 0;
    std::copy(bytes.end() - rest, bytes.end(), buffer.Bytes.begin());
    buffer.Kept = rest;
    return true;
}

void Receive(DWORD receiver) {
    const HANDLE port = ShellState.BarcodePort;
    PurgeComm(port, PURGE_RXCLEAR);
    if (!SetCommMask(port, ReceiveEvents)) {
        return;
    }
    ReceiveBuffer buffer;
    PacketMessage message;
    if (receiver > 1) {
        message.Lost = LostPart::Possible;  // of the thread before
    }
    bool unbroken = true;
    while (unbroken && PassGate(receiver)) {
        while (unbroken && ReadingLasts() && MayRun(receiver)) {
            unbroken = ReceiveOnce(port, buffer, message);
        }
        DropPart(message);
        buffer.Kept = 0;
    }
    PurgeComm(port, PURGE_RXABORT | PURGE_RXCLEAR);
}

bool CreateReceiver() {
    if (Gate() == nullptr) {
        return false;
    }
    ShellState.BarcodeThreadRun = 1;
    const DWORD receiver = ++LastReceiver;
    HANDLE thread = CreateThread(nullptr, 0, BarcodeReceiveThread,
                                 reinterpret_cast<LPVOID>(static_cast<UINT_PTR>(receiver)), 0, nullptr);
    if (thread == nullptr) {
        return false;
    }
    ShellState.BarcodeThread = thread;
    return true;
}

}  // namespace

void HandOver(PacketMessage& message) {
    PortInUse = false;
    if (!ReceiveHandlers.Barcode) {
        ShellState.TransferBusy = 0;
    } else if (ReadingLasts()) {
        ReceiveHandlers.Barcode(message.Bytes.data(), message.Length);
    }
    PortInUse = true;
    ClearMessage(message);
}

DWORD TakeDecoderMessage(HANDLE, PacketMessage& message, std::span<const BYTE> bytes, bool filled) {
    const auto last = filled ? std::find(bytes.rbegin(), bytes.rend(), '\r') : bytes.rend();
    const auto end = last == bytes.rend() ? bytes.end() : last.base();
    ClearMessage(message);
    std::copy(bytes.begin(), end, message.Bytes.begin());
    message.Length = static_cast<DWORD>(end - bytes.begin());
    HandOver(message);
    return static_cast<DWORD>(bytes.end() - end);
}

bool StartBarcodeReceiver(WORD deviceMask) {
    if ((deviceMask & DeviceBarcodeMask) == 0) {
        return true;
    }
    PauseBarcodeReceiver();
    return CreateReceiver();
}

bool RenewBarcodeReceiver() {
    static Turn renewing;
    if (!renewing.TryTake()) {
        return true;  // another thread looks after it
    }
    const HANDLE thread = ShellState.BarcodeThread;
    const bool ended = thread != nullptr && WaitForSingleObject(thread, 0) == WAIT_OBJECT_0;
    const bool created = ended && CreateReceiver();
    if (created) {
        CloseHandle(thread);
    }
    renewing.Give();
    return created || !ended;
}

void PauseBarcodeReceiver() {
    Log(LogPriority::Debug, TEXT("the barcode reader is off"));
    Reading += Reading & 1;
    ShellState.TransferBusy = 0;
    FinishReadingStep();
    SetCommMask(ShellState.BarcodePort, ReceiveEvents);  // wakes the thread
}

void EndBarcodeReceiver() {
    PauseBarcodeReceiver();
    ShellState.BarcodeThreadRun = 0;
    EventModify(Gate(), EVENT_SET);
}

void AwaitPausedReceiver() {
    for (DWORD waited = 0; PortInUse && waited < LongestPortUse; waited += PortStep) {
        // It may have been about to wait when it was woken before.
        SetCommMask(ShellState.BarcodePort, ReceiveEvents);
        Sleep(PortStep);
    }
}

void ResumeBarcodeReceiver() {
    if (ShellState.Closing) {
        return;  // the end has come while settings were being applied
    }
    static_cast<void>(RenewBarcodeReceiver());  // the next press tries again, and tells a failure
    KillTimer(ShellState.MainWindow, IDT_CONTINUATION);
    KillTimer(ShellState.MainWindow, IDT_DELIVERY_BUSY);
    PurgeComm(ShellState.BarcodePort, PURGE_RXCLEAR);
    SetCommMask(ShellState.BarcodePort, ReceiveEvents);  // forgets a break of then
    ShellState.TransferBusy = 0;
    Log(LogPriority::Debug, TEXT("the barcode reader is on"));
    Reading += 1 + (Reading & 1);
    EventModify(Gate(), EVENT_SET);
}

DWORD WINAPI BarcodeReceiveThread(LPVOID number) {
    JoinReading([] { return MyReading == Reading; });
    Receive(static_cast<DWORD>(reinterpret_cast<UINT_PTR>(number)));
    JoinReading(nullptr);
    return 0;
}
