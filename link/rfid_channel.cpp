#include "link/rfid_channel.h"

#include <array>
#include <atomic>

#include "link/command_exchange.h"
#include "link/reading.h"
#include "link/rfid_text.h"
#include "link/serial_ports.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD BreakTime = 100;
constexpr DWORD SettleTime = 50;
constexpr DWORD ChunkSize = 20;
constexpr DWORD FailedWaitPause = 10;  // a wait that keeps failing must not keep the processor busy

// One word, so that a step is taken by one thread alone: the channel's number and what it is doing.
enum Phase : DWORD { Idle = 0, ReadingLine = 1, HandingOver = 2, ClosingByThread = 3 };
constexpr DWORD PhaseMask = 3;
constexpr DWORD NumberStep = 4;

std::atomic<DWORD> Channel{Idle};
DWORD LastNumber = 0;
thread_local DWORD ThreadChannel = 0;

DWORD NumberIn(DWORD state) {
    return state & ~PhaseMask;
}

bool Step(DWORD from, DWORD to) {
    return Channel.compare_exchange_strong(from, to);
}

// Whether nobody has closed the channel yet.
bool OwnsRfidChannel(DWORD channel) {
    return NumberIn(Channel) == channel;
}

bool OwnsChannelOfThisThread() {
    return OwnsRfidChannel(ThreadChannel);
}

// Makes the calling thread the channel's thread, for RfidPortOfThisThread.
void JoinRfidChannel(DWORD channel) {
    ThreadChannel = channel;
    JoinReading(channel != 0 ? OwnsChannelOfThisThread : nullptr);
}

// Goes over from reading to handing over; false when the channel has been closed meanwhile.
bool BeginHandOver(DWORD channel) {
    return Step(channel | ReadingLine, channel | HandingOver);
}

void CloseHandles() {
    if (HANDLE thread = ShellState.RfidThread.Exchange(nullptr)) {
        const HANDLE port = ShellState.RfidPort;
        SetCommBreak(port);
        Sleep(BreakTime);
        CloseHandle(thread);
        ClearCommBreak(port);
    }
    CloseReaderPort(ShellState.RfidPort);
}

// CloseRfidChannel for the channel's thread: only if nobody has closed that channel. Whether it did.
bool CloseOwnRfidChannel(DWORD channel) {
    if (!Step(channel | ReadingLine, channel | ClosingByThread) &&
        !Step(channel | HandingOver, channel | ClosingByThread)) {
        return false;
    }
    CloseHandles();
    KillTimer(ShellState.MainWindow, IDT_RFID_READ);
    Sleep(SettleTime);
    ShellState.RfidThreadRun = 0;
    // In this order: who marks a read as active after this finds the channel idle and takes the mark back.
    // The exchange keeps the mark's end behind the step; a plain store could be seen before it.
    Step(channel | ClosingByThread, Idle);
    ShellState.RfidReadActive.Exchange(0);
    return true;
}

bool ChannelMayRun(DWORD channel) {
    return ShellState.RfidThreadRun && OwnsRfidChannel(channel);
}

// Waits for the next bytes; their number, 0 for another try.
DWORD WaitForBytes(HANDLE port, std::array<BYTE, ChunkSize>& chunk, bool& broken) {
    DWORD events = 0;
    if (!WaitCommEvent(port, &events, nullptr)) {
        DWORD errors = 0;
        COMSTAT status{};
        ClearCommError(port, &errors, &status);
        Sleep(FailedWaitPause);
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
    line.Greeting = RfidGreeting;
    bool broken = false;
    while (ChannelMayRun(channel)) {
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

void EndRfidReading() {
    // A channel that its thread is closing is left to it; the handles that are still there are taken by only
    // one of the two.
    DWORD state = Channel;
    while ((state & PhaseMask) != ClosingByThread && !Channel.compare_exchange_weak(state, Idle)) {
    }
    FinishReadingStep();
}

void RfidReadOverdue() {
    DWORD state = Channel;
    while ((state & PhaseMask) <= ReadingLine) {
        if (Channel.compare_exchange_weak(state, Idle)) {
            CloseRfidChannel();
            return;
        }
    }
}

void CloseRfidChannel() {
    EndRfidReading();
    CloseHandles();
    KillTimer(ShellState.MainWindow, IDT_RFID_READ);
    Sleep(SettleTime);
    ShellState.RfidReadActive = 0;
    ShellState.RfidThreadRun = 0;
}

bool RfidChannelInUse() {
    return Channel != Idle;
}

bool RfidChannelReading() {
    return (Channel & PhaseMask) == ReadingLine;
}

DWORD BeginRfidChannel() {
    LastNumber += NumberStep;
    if (LastNumber == 0) {
        LastNumber = NumberStep;
    }
    Channel = LastNumber | ReadingLine;
    return LastNumber;
}

HANDLE RfidPortOfThisThread() {
    const HANDLE port = ShellState.RfidPort;
    return ThreadChannel == 0 || OwnsRfidChannel(ThreadChannel) ? port : nullptr;
}

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
