#include "link/rfid_channel.h"

#include <atomic>

#include "link/reading.h"
#include "link/serial_ports.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD BreakTime = 100;
constexpr DWORD SettleTime = 50;

// One word, so that a step is taken by one thread alone: the channel's number and what it is doing.
enum Phase : DWORD { Idle = 0, Reading = 1, HandingOver = 2, ClosingByThread = 3 };
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

bool OwnsChannelOfThisThread() {
    return OwnsRfidChannel(ThreadChannel);
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
    while ((state & PhaseMask) <= Reading) {
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
    return (Channel & PhaseMask) == Reading;
}

DWORD BeginRfidChannel() {
    LastNumber += NumberStep;
    if (LastNumber == 0) {
        LastNumber = NumberStep;
    }
    Channel = LastNumber | Reading;
    return LastNumber;
}

void JoinRfidChannel(DWORD channel) {
    ThreadChannel = channel;
    JoinReading(channel != 0 ? OwnsChannelOfThisThread : nullptr);
}

bool OwnsRfidChannel(DWORD channel) {
    return NumberIn(Channel) == channel;
}

bool BeginHandOver(DWORD channel) {
    return Step(channel | Reading, channel | HandingOver);
}

bool CloseOwnRfidChannel(DWORD channel) {
    if (!Step(channel | Reading, channel | ClosingByThread) &&
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

HANDLE RfidPortOfThisThread() {
    const HANDLE port = ShellState.RfidPort;
    return ThreadChannel == 0 || OwnsRfidChannel(ThreadChannel) ? port : nullptr;
}
