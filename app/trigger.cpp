#include "app/main_window.h"

#include "link/read_control.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

void StartRfid() {
    ErrorCode result = OpenRfidChannel();
    if (result == Success) {
        result = StartRfidRead();
    }
    if (result != Success) {
        ReportError(result);
        return;
    }
    // The read may be over already; its thread has then taken back a mark that was not there yet. The
    // exchange keeps the look at the channel behind the mark.
    ShellState.RfidReadActive.Exchange(1);
    if (!RfidChannelInUse()) {
        ShellState.RfidReadActive = 0;
    }
}

void HandleTrigger(bool pressed) {
    ShellState.TriggerReleased = pressed ? 0 : 1;
    if ((!ShellState.BarcodeEnabled && !ShellState.RfidEnabled) || !ShellState.ReaderReady) {
        return;
    }
    // An error box is up: the program is about to end, and a reader that has failed would only fail again.
    if (ShellState.ErrorShown) {
        return;
    }
    if (!ShellState.TransferBusy) {
        if (ShellState.BarcodeEnabled) {
            const ErrorCode result = BarcodeTrigger(pressed ? 1 : 0);
            if (result != Success) {
                ReportError(result);
                return;
            }
        }
        ShellState.BarcodeReadActive = pressed ? 1 : 0;
    }
    if (ShellState.RfidEnabled && pressed && !ShellState.RfidReadActive && !RfidChannelInUse()) {
        StartRfid();
    }
}

// Of the last press or release that said its time.
DWORD LastTime = 0;

// A message that seems to be later than that comes from another clock, from one that was set back, or after
// weeks in which the milliseconds have run over.
constexpr DWORD LongestOvertaking = 60'000;

// A press that comes after its release was a short tap: it reads for a moment. A release that comes after the
// next press is that of a read which is over.
void HandleTimedTrigger(bool pressed, DWORD time) {
    const DWORD behind = LastTime - time;
    const bool late = time != 0 && LastTime != 0 && behind != 0 && behind <= LongestOvertaking;
    if (!late) {
        LastTime = time;
        HandleTrigger(pressed);
    } else if (pressed && ShellState.TriggerReleased) {
        HandleTrigger(true);
        HandleTrigger(false);
    }
}

}  // namespace

bool HandleTriggerMessage(UINT message, DWORD time) {
    // The ids are cleared when the program ends, so that no later message is taken for a trigger.
    if (message == 0) {
        return false;
    }
    if (message == ShellState.MsgUser1Down || message == ShellState.MsgUser2Down) {
        HandleTimedTrigger(true, time);
        return true;
    }
    if (message == ShellState.MsgUser1Up || message == ShellState.MsgUser2Up) {
        HandleTimedTrigger(false, time);
        return true;
    }
    return false;
}
