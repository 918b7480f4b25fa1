#include "link/read_control.h"

#include <array>
#include <utility>

#include "link/barcode_receiver.h"
#include "link/command_exchange.h"
#include "link/readers/barcode_reader.h"
#include "link/reading.h"
#include "link/rfid_channel.h"
#include "link/rfid_text.h"
#include "link/serial_ports.h"
#include "platform/sound.h"
#include "settings/general_fields.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

constexpr int GreetingTries = 6;
constexpr DWORD GreetingWindow = 250;
constexpr DWORD GreetingEndWindow = 250;
constexpr DWORD ReceiverStartTime = 100;
constexpr DWORD ChannelStep = 10;
constexpr DWORD OldChannelLimit = 500;

// The channel was opened for the read that is about to start. Main thread.
bool ReceiverStarted = false;

void StopSound() {
    PlaySoundW(nullptr, nullptr, SND_ASYNC);
}

// Waits for the greeting and for the end of its line; whether the reader has announced itself. A line that
// does not end counts after a while.
bool AwaitGreeting(HANDLE port) {
    std::array<BYTE, ReplyLimit> read;
    GreetingSearch search;
    ReplyWindow window{port, EndsInLineFeed, GreetingWindow};
    for (;;) {
        const bool found = search.Found;
        const std::span<const BYTE> came = window.Next(read);
        if (came.empty()) {
            return found;
        }
        if (FindGreeting(search, came)) {
            RfidGreeting = search.Tail;
            return true;
        }
        if (search.Found && !found) {
            window = {port, EndsInLineFeed, GreetingEndWindow};
        }
    }
}

// Lets the channel before go. Its thread may be closing it, and does so without this thread's help.
void EndOldChannel() {
    if (ShellState.RfidPort != nullptr || RfidChannelInUse()) {
        CloseRfidChannel();
    }
    for (DWORD waited = 0; RfidChannelInUse() && waited < OldChannelLimit; waited += ChannelStep) {
        Sleep(ChannelStep);
    }
}

}  // namespace

ErrorCode BarcodeTrigger(bool pressed) {
    if (pressed) {
        StopSound();
    }
    const BarcodeReader* reader = FittedBarcodeReader();
    if (!reader || (pressed && !RenewBarcodeReceiver())) {
        return ErrorSetBarcodeReader;
    }
    return pressed ? reader->Press() : reader->Release();
}

void RestartBarcodeRead() {
    const ReadingStep step;
    if (!step) {
        return;
    }
    const auto wanted = [] { return ShellState.TriggerReleased == 0 && ReadingLasts(); };
    // The main thread's press or release may go out before a command that was chosen without it, so the last
    // look is behind the last command. A reader that has gone shows at the next press.
    bool on = true;
    do {
        on = !on;
        static_cast<void>(BarcodeTrigger(on));
    } while (on != wanted());
}

ErrorCode OpenRfidChannel() {
    EndOldChannel();
    for (int i = 0; i < GreetingTries; ++i) {
        const HANDLE port = OpenReaderPort(RfidPortSelector);
        if (port == nullptr) {
            return ErrorRfidReaderOn;
        }
        ShellState.RfidPort = port;
        SetPortLine(port, RfidWorkingRate);
        if (AwaitGreeting(port)) {
            if (!StartRfidReceiver(DeviceFlags & DeviceRfid)) {
                CloseRfidChannel();
                return ErrorInitRfidReader;
            }
            ReceiverStarted = HasRfidReader();
            Sleep(ReceiverStartTime);
            return Success;
        }
        Log(LogPriority::Warning, TEXT("the RFID reader has not announced itself"));
        CloseReaderPort(ShellState.RfidPort);
    }
    return ErrorInitRfidReader;
}

ErrorCode StartRfidRead() {
    StopSound();
    const bool opened = std::exchange(ReceiverStarted, false);
    // A break may have ended the channel before the read began: a read without a tag, no failure.
    if (opened && !RfidChannelReading()) {
        return Success;
    }
    BeginRfidLines();
    if (!SendReaderCommand(ShellState.RfidPort, "s")) {
        const bool ended = opened && !RfidChannelReading();
        CloseRfidChannel();
        return ended ? Success : ErrorSetRfidReader;
    }
    SetTimer(ShellState.MainWindow, IDT_RFID_READ, Value(general::RfidReadDuration) * 1000u + 500u, nullptr);
    return Success;
}

ErrorCode HandleTimer(UINT_PTR id) {
    switch (id) {
        case IDT_READER_READY:
            ShellState.ReaderReady = 1;
            break;
        case IDT_RFID_READ:
            RfidReadOverdue();
            break;
        case IDT_AIM_DURATION:
            ShellState.LaserHold = 0;
            return LaserAim(true, false);
        case IDT_DELIVERY_BUSY:
            ShellState.TransferBusy = 0;
            break;
        case IDT_UPGRADE_KEY:
            ShellState.UpgradeKeyArmed = 0;
            break;
        case IDT_LASER_HOLD:
            ShellState.LaserHold = 0;
            break;
        case IDT_CONTINUATION:
            ContinuationOverdue();
            break;
        default:
            break;
    }
    return Success;
}
