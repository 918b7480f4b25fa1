#include "app/main_window.h"

#include "link/barcode_receiver.h"
#include "link/read_control.h"
#include "link/rfid_channel.h"
#include "link/serial_ports.h"
#include "platform/kernel.h"
#include "platform/serial.h"
#include "scan/read_feedback.h"
#include "shell/shell_state.h"

namespace {

// Without a mask no event comes any more and the thread's wait returns.
void ReleaseReceiver(HANDLE port, Relaxed<HANDLE>& thread) {
    if (thread) {
        SetCommMask(port, 0);
        Sleep(100);
        if (HANDLE released = thread.Exchange(nullptr)) {
            CloseHandle(released);
        }
    }
}

void ClosePort(Relaxed<HANDLE>& port, Relaxed<DWORD>& enabled) {
    if (port) {
        enabled = 0;
        CloseReaderPort(port);
    }
}

void CloseQueueEnd(Relaxed<HANDLE>& queue) {
    if (HANDLE released = queue.Exchange(nullptr)) {
        CloseMsgQueue(released);
    }
}

void DestroyWindows() {
    DestroyTrayMenu();
    if (HWND sheet = ShellState.SettingsSheet.Exchange(nullptr)) {
        DestroyWindow(sheet);
    }
    if (HWND editor = ShellState.EditorDialog.Exchange(nullptr)) {
        EndDialog(editor, IDCANCEL);
    }
}

}  // namespace

void ShellCleanup() {
    ShellState.Closing = 1;
    EndBarcodeReceiver();
    EndRfidReading();
    if (ShellState.BarcodeReadActive && !ShellState.TriggerReleased) {
        static_cast<void>(BarcodeTrigger(false));  // nobody else would put out the laser's beam
    }
    ReleaseReceiver(ShellState.BarcodePort, ShellState.BarcodeThread);
    ReleaseReceiver(ShellState.RfidPort, ShellState.RfidThread);
    ClosePort(ShellState.BarcodePort, ShellState.BarcodeEnabled);
    ClosePort(ShellState.RfidPort, ShellState.RfidEnabled);
    EndVibration();
    DestroyWindows();
    CloseQueueEnd(ShellState.QueueReader);
    CloseQueueEnd(ShellState.QueueWriter);
    if (HANDLE event = ShellState.DecodeEventHandle.Exchange(nullptr)) {
        CloseHandle(event);
    }

    ShellState.RfidReadActive = 0;
    ShellState.RfidThreadRun = 0;
    ShellState.BarcodeReadActive = 0;
    ShellState.BarcodeThreadRun = 0;
    // No later message is taken for a trigger.
    ShellState.MsgUser1Down = 0;
    ShellState.MsgUser1Up = 0;
    ShellState.MsgUser2Down = 0;
    ShellState.MsgUser2Up = 0;

    if (ShellState.TrayIconData.hWnd) {
        Shell_NotifyIconW(NIM_DELETE, &ShellState.TrayIconData);
        ShellState.TrayIconData.hWnd = nullptr;
    }
    if (ShellState.StateImages) {
        ImageList_Destroy(ShellState.StateImages);
        ShellState.StateImages = nullptr;
    }
    if (ShellState.AppIcon) {
        DestroyIcon(ShellState.AppIcon);
        ShellState.AppIcon = nullptr;
    }
}
