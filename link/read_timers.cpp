#include "link/read_timers.h"

#include "link/packet_receiver.h"
#include "link/read_control.h"
#include "shell/shell_state.h"

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
