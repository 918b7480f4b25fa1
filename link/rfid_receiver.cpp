#include "link/rfid_receiver.h"

#include <array>

#include "link/command_exchange.h"
#include "link/message_handlers.h"
#include "link/rfid_channel.h"
#include "link/rfid_text.h"
#include "link/serial_ports.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD ChunkSize = 20;
constexpr DWORD WaitPause = 10;  // a wait that keeps failing must not keep the processor busy

bool MayRun(DWORD channel) {
    return ShellState.RfidThreadRun && OwnsRfidChannel(channel);
}

// Waits for the next bytes; their number, 0 for another try.
DWORD WaitForBytes(HANDLE port, std::array<BYTE, ChunkSize>& chunk, bool& broken) {
    DWORD events = 0;
    if (!WaitCommEvent(port, &events, nullptr)) {
        DWORD errors = 0;
        COMSTAT status{};
        ClearCommError(port, &errors, &status);
        Sleep(WaitPause);
        return 0;
    }
    broken = (events & EV_BREAK) != 0;
    // Without that event it was woken by a change of the mask: what is there came before the read began.
    const bool received = (events & EV_RXCHAR) != 0;
    return received && !broken ? ReadPort(port, chunk.data(), ChunkSize) : 0;
}

void HandOver(HANDLE port, DWORD channel, const TagLine& line) {
    if (!BeginHandOver(channel)) {
        return;
    }
    KillTimer(ShellState.MainWindow, IDT_RFID_READ);
    SetCommMask(port, EV_BREAK);
    if (ReceiveHandlers.Rfid) {
        ReceiveHandlers.Rfid(line.Text.data(), line.Length);
    }
}

void ReceiveLine(HANDLE port, DWORD channel) {
    std::array<BYTE, ChunkSize> chunk;
    TagLine line;
    bool broken = false;
    while (MayRun(channel)) {
        const DWORD count = WaitForBytes(port, chunk, broken);
        if (broken) {
            return;
        }
        switch (CollectTagLine(line, {chunk.data(), count})) {
            case TagLineStep::More:
                break;
            case TagLineStep::Repeat:
                // Unsent, it ends by its time like a read that finds nothing.
                static_cast<void>(SendReaderCommand(port, "s"));
                break;
            case TagLineStep::Data:
                HandOver(port, channel, line);
                return;
            case TagLineStep::End:
                return;
        }
    }
}

}  // namespace

bool StartRfidReceiver(WORD deviceMask) {
    if ((deviceMask & DeviceRfid) == 0) {
        return true;
    }
    SetCommMask(ShellState.RfidPort, EV_BREAK);
    ShellState.RfidThreadRun = 1;
    const DWORD channel = BeginRfidChannel();
    HANDLE thread = CreateThread(nullptr, 0, RfidReceiveThread,
                                 reinterpret_cast<LPVOID>(static_cast<UINT_PTR>(channel)), 0, nullptr);
    if (thread == nullptr) {
        return false;
    }
    ShellState.RfidThread = thread;
    // The thread may have ended its channel before its handle was stored.
    if (!RfidChannelReading()) {
        if (const HANDLE ended = ShellState.RfidThread.Exchange(nullptr)) {
            CloseHandle(ended);
        }
    }
    return true;
}

void BeginRfidLines() {
    const HANDLE port = ShellState.RfidPort;
    PurgePort(port);
    SetCommMask(port, ReceiveEvents);
}

DWORD WINAPI RfidReceiveThread(LPVOID argument) {
    const DWORD channel = static_cast<DWORD>(reinterpret_cast<UINT_PTR>(argument));
    JoinRfidChannel(channel);
    ReceiveLine(RfidPortOfThisThread(), channel);
    // What the barcode port collected while its reader was off goes; while it is on, its own thread takes the
    // bytes, and a scan that is just coming in must not suffer from a tag read.
    if (CloseOwnRfidChannel(channel) && !ShellState.BarcodeEnabled) {
        PurgeComm(ShellState.BarcodePort, PURGE_RXABORT | PURGE_RXCLEAR);
    }
    JoinRfidChannel(0);
    return 0;
}
