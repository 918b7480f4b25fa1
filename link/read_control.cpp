#include "link/read_control.h"

#include <array>
#include <utility>

#include "link/command_exchange.h"
#include "link/rfid_receiver.h"
#include "link/rfid_text.h"
#include "link/serial_ports.h"
#include "link/ssi_packet.h"
#include "platform/sound.h"
#include "settings/general_fields.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

constexpr UINT LaserHoldTime = 1000;
constexpr DWORD RfidRate = 57600;
constexpr int GreetingTries = 6;
constexpr DWORD GreetingWindow = 250;
constexpr DWORD GreetingReadSize = 20;
constexpr DWORD GreetingEndPause = 20;
constexpr DWORD GreetingEndLimit = 100;
constexpr DWORD ReceiverStartTime = 100;
constexpr DWORD PollStep = 10;
constexpr DWORD OldChannelLimit = 500;

// The channel was opened for the read that is about to start. Main thread.
bool ReceiverStarted = false;

void StopSound() {
    PlaySoundW(nullptr, nullptr, SND_ASYNC);
}

bool Send(std::span<const BYTE> command) {
    return SendReaderCommand(ShellState.BarcodePort, command) == 1;
}

bool AimsFirst() {
    return (DeviceFlags & DeviceLaser) != 0 && Value(general::AimDuration) != 0;
}

DWORD Result(bool sent) {
    return sent ? Success : ErrorSetBarcodeReader;
}

DWORD PressPacketReader() {
    if (AimsFirst() && ShellState.LaserHold == 0) {
        const DWORD result = LaserAim(0, 1);
        if (result == Success) {
            ShellState.LaserHold = 1;
        }
        return result;
    }
    // The hold is used up: its timer must not end that of the next press.
    KillTimer(ShellState.MainWindow, IDT_LASER_HOLD);
    ShellState.LaserHold = 0;
    return Result(Send(SsiStartDecode));
}

DWORD ReleasePacketReader() {
    if (AimsFirst()) {
        const DWORD result = LaserAim(0, 0);
        if (result != Success) {
            return result;
        }
        if (ShellState.LaserHold == 1) {
            SetTimer(ShellState.MainWindow, IDT_LASER_HOLD, LaserHoldTime, nullptr);
            return Success;
        }
    }
    return Result(Send(SsiStopDecode));
}

// The rest of the greeting's line must have passed before the receive thread starts: it would be taken for a
// tag.
void SkipGreeting(HANDLE port) {
    std::array<BYTE, GreetingReadSize> read;
    const DWORD start = GetTickCount();
    DWORD last = start;
    while (GetTickCount() - last < GreetingEndPause && GetTickCount() - start < GreetingEndLimit) {
        if (ReadPort(port, read.data(), GreetingReadSize)) {
            last = GetTickCount();
        } else {
            Sleep(PollStep);
        }
    }
}

bool AwaitGreeting(HANDLE port) {
    std::array<BYTE, GreetingReadSize> read;
    GreetingSearch search;
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < GreetingWindow) {
        const DWORD count = ReadPort(port, read.data(), GreetingReadSize);
        if (FindGreeting(search, {read.data(), count})) {
            return true;
        }
        Sleep(PollStep);
    }
    return false;
}

// Lets the channel before go. Its thread may be closing it, and does so without this thread's help.
void EndOldChannel() {
    if (ShellState.RfidPort != nullptr || RfidChannelInUse()) {
        CloseRfidChannel();
    }
    for (DWORD waited = 0; RfidChannelInUse() && waited < OldChannelLimit; waited += PollStep) {
        Sleep(PollStep);
    }
}

}  // namespace

DWORD BarcodeTrigger(int pressed) {
    if (pressed) {
        StopSound();
    }
    if (DeviceFlags & Device1D) {
        return Result(SendReaderCommand(ShellState.BarcodePort, pressed ? "ON" : "OFF") == 1);
    }
    return pressed ? PressPacketReader() : ReleasePacketReader();
}

DWORD LaserAim(int startAfter, int on) {
    if (on) {
        if (!Send(SsiAimOn)) {
            return ErrorSetBarcodeReader;
        }
        SetTimer(ShellState.MainWindow, IDT_AIM_DURATION, Value(general::AimDuration) * 100u, nullptr);
    } else {
        KillTimer(ShellState.MainWindow, IDT_AIM_DURATION);
        if (!Send(SsiAimOff)) {
            return ErrorSetBarcodeReader;
        }
    }
    return startAfter == 1 ? Result(Send(SsiStartDecode)) : Success;
}

DWORD OpenRfidChannel() {
    EndOldChannel();
    for (int i = 0; i < GreetingTries; ++i) {
        const HANDLE port = OpenReaderPort(RfidPortSelector);
        if (port == nullptr) {
            return ErrorRfidReaderOn;
        }
        ShellState.RfidPort = port;
        SetPortLine(port, RfidRate);
        if (AwaitGreeting(port)) {
            SkipGreeting(port);
            if (!StartRfidReceiver(DeviceFlags & DeviceRfid)) {
                CloseRfidChannel();
                return ErrorInitRfidReader;
            }
            ReceiverStarted = HasRfidReader();
            Sleep(ReceiverStartTime);
            return Success;
        }
        CloseReaderPort(ShellState.RfidPort);
    }
    return ErrorInitRfidReader;
}

DWORD StartRfidRead(int start) {
    if (!start) {
        return Success;
    }
    StopSound();
    const bool opened = std::exchange(ReceiverStarted, false);
    // A line may have ended the channel before the read began: a read without a tag, no failure.
    if (opened && !RfidChannelReading()) {
        return Success;
    }
    if (!SendReaderCommand(ShellState.RfidPort, "s")) {
        const bool ended = opened && !RfidChannelReading();
        CloseRfidChannel();
        return ended ? Success : ErrorSetRfidReader;
    }
    SetTimer(ShellState.MainWindow, IDT_RFID_READ, Value(general::RfidReadDuration) * 1000u + 500u, nullptr);
    return Success;
}
