#include "app/settings_window.h"

#include "link/barcode_receiver.h"
#include "link/read_control.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "settings/catalogue.h"
#include "settings/record.h"
#include "settings/settings_file.h"
#include "shell/error_messages.h"
#include "shell/log.h"
#include "shell/shell_state.h"
#include "ui/settings_sheet.h"

namespace {

bool StopBarcodeRead() {
    const ErrorCode result = BarcodeTrigger(0);
    if (result != Success) {
        ReportError(result);
        return false;
    }
    return true;
}

void CloseSheet() {
    if (HWND sheet = ShellState.SettingsSheet.Exchange(nullptr)) {
        DestroyWindow(sheet);
    }
}

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

// The apply thread: brings the barcode reader into line with the settings, then switches the readers on. A
// refused configuration is shown and ends the program. When it has worked, WM_SETTINGSAPPLIED is sent to the
// main window.
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

}  // namespace

bool SwitchReadersOff() {
    if (ShellState.BarcodeEnabled || ShellState.RfidEnabled) {
        ShellState.RfidReadActive = 0;
        ShellState.BarcodeReadActive = 0;
        if (ShellState.BarcodeEnabled) {
            PauseBarcodeReceiver();
            if (!StopBarcodeRead()) {
                return false;
            }
        }
        if (ShellState.RfidPort) {
            CloseRfidChannel();
        }
        ShellState.RfidEnabled = 0;
        ShellState.BarcodeEnabled = 0;
    }
    return true;
}

void OpenSettings(HWND window) {
    if (!ShellState.InitDone || ShellState.ErrorShown || ShellState.Closing) {
        return;
    }
    if (ShellState.UpgradeActive) {
        SetForegroundWindow(window);
        return;
    }
    if (ShellState.EditorLoops) {
        // The editor runs inside a notification of the tree that would go with the sheet.
        ShellState.ReopenSettings = 1;
        if (HWND editor = ShellState.EditorDialog.Exchange(nullptr)) {
            EndDialog(editor, IDCANCEL);
        }
        return;
    }
    CloseSheet();
    SetForegroundWindow(window);
    ShowWindow(window, SW_SHOWNORMAL);
    ShellState.RfidReadActive = 0;
    ShellState.BarcodeReadActive = 0;
    if (ShellState.BarcodeEnabled) {
        PauseBarcodeReceiver();
    }
    if (ShellState.RfidPort) {
        CloseRfidChannel();
    }
    if (ShellState.BarcodeEnabled && !StopBarcodeRead()) {
        return;
    }
    if (!ShowSettingsSheet(window) || !ShellState.SettingsSheet) {
        ReportError(ErrorInitialize);
    }
}

void ApplySettings(HWND window) {
    if (!SaveSettings()) {
        ReportError(ErrorSaveSettings);
        return;
    }
    SendSettings(window);
}

void SendSettings(HWND window) {
    CloseSheet();
    ShellState.Applying = 1;
    HANDLE thread = CreateThread(nullptr, 0, ApplySettingsThread, nullptr, 0, nullptr);
    if (!thread) {
        ShellState.Applying = 0;
        ReportError(ErrorInitBarcodeReader);
        return;
    }
    CloseHandle(thread);
    ShowWindow(window, SW_HIDE);
}
