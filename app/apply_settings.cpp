#include "app/apply_settings.h"

#include "link/barcode_receiver.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "settings/catalogue.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD ApplyExitCode = 2255;

// "Active Device" may still name a reader that has gone since it was chosen: switched on, the first press of
// the trigger would fail on it and end the program.
void SwitchReadersOn() {
    ApplyActiveDevice();
    if (!HasBarcodeReader()) {
        ShellState.BarcodeEnabled = 0;
    }
    if (!HasRfidReader()) {
        ShellState.RfidEnabled = 0;
    }
}

}  // namespace

DWORD WINAPI ApplySettingsThread(LPVOID) {
    HCURSOR previous = GetCursor();
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    while (!ShellState.ReaderReady) {
        Sleep(10);
    }
    AwaitPausedReceiver();
    const bool downloaded = DownloadSettings();
    SetCursor(previous);
    if (!downloaded) {
        if (!ShellState.Closing) {
            ShowErrorMessage(ShellState.MainWindow, ErrorInitBarcodeReader);
            SendMessageW(ShellState.MainWindow, WM_DESTROY, 0, 0);
        }
        return ApplyExitCode;
    }
    ShellState.SettingsApplied = 1;
    if (const BarcodeReader* reader = FittedBarcodeReader()) {
        Log(LogPriority::Info, TEXT("the %s is set up"), reader->Name);
    }
    SwitchReadersOn();
    if (ShellState.BarcodeEnabled) {
        SetPortTimeouts(ShellState.BarcodePort, FittedBarcodeReader()->MessageGap);
        ResumeBarcodeReceiver();
    }
    SendMessageW(ShellState.MainWindow, WM_SETTINGSAPPLIED, 0, 0);
    return ApplyExitCode;
}
