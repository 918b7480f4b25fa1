#include "app/main_window.h"

#include <utility>

#include "app/settings_window.h"
#include "firmware/upgrade.h"
#include "link/barcode_receiver.h"
#include "link/read_control.h"
#include "platform/shell.h"
#include "resources/resource.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

void OnCreate() {
    ShellState.MsgUser1Down = RegisterWindowMessageW(TEXT("WM_USER1DOWN"));
    ShellState.MsgUser1Up = RegisterWindowMessageW(TEXT("WM_USER1UP"));
    ShellState.MsgUser2Down = RegisterWindowMessageW(TEXT("WM_USER2DOWN"));
    ShellState.MsgUser2Up = RegisterWindowMessageW(TEXT("WM_USER2UP"));
    ShellState.MsgDecode = RegisterWindowMessageW(TEXT("WM_DECODE"));
    ShellState.DecodeEventHandle = CreateEventW(nullptr, FALSE, FALSE, TEXT("DecodeEvent"));
    ShellState.AppIcon = LoadIconW(ShellState.Instance, MAKEINTRESOURCEW(IDI_TRAY));
}

INT_PTR CALLBACK AboutDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowTextW(dialog, WindowTitle);
            SetDlgItemTextW(dialog, IDC_TEXT, TEXT("Vantrel 1.29\nBarcode and RFID reader utility"));
            ShellState.AboutDialog = dialog;
            SetWindowPos(dialog, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
            return 1;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK) {
                EndDialog(dialog, IDOK);
                ShellState.AboutDialog = nullptr;
            }
            return 1;
        case WM_CLOSE:
            EndDialog(dialog, IDCANCEL);
            ShellState.AboutDialog = nullptr;
            return 1;
        default:
            return 0;
    }
}

// Shows the About box modally, or brings the open one to the front.
void ShowAboutBox() {
    if (HWND open = ShellState.AboutDialog) {
        SetActiveWindow(open);
        return;
    }
    DialogBoxParamW(ShellState.Instance, MAKEINTRESOURCEW(IDD_ABOUT), GetActiveWindow(), AboutDlgProc, 0);
}

// Ends an open About box as if it had been cancelled.
void CloseAboutBox() {
    if (HWND open = ShellState.AboutDialog.Exchange(nullptr)) {
        EndDialog(open, IDCANCEL);
    }
}

// Every reported failure ends the program. Whatever else fails while the box is up has nothing to add.
void OnShowError(HWND window, ErrorCode code) {
    if (ShellState.ErrorShown.Exchange(1)) {
        return;
    }
    ShowErrorMessage(window, code);
    SendMessageW(window, WM_CLOSE, 0, 0);
}

void ToggleBarcodeReader() {
    if (ShellState.BarcodeEnabled) {
        ShellState.BarcodeEnabled = 0;
        PauseBarcodeReceiver();
    } else {
        ShellState.BarcodeEnabled = 1;
        ResumeBarcodeReceiver();
    }
    if (ShellState.BarcodeReadActive) {
        ShellState.BarcodeReadActive = 0;
        const ErrorCode result = BarcodeTrigger(0);
        if (result != Success) {
            ReportError(result);
        }
    }
}

// A read that is under way ends with the reader: its channel left open would keep the next read from opening
// it.
void ToggleRfidReader() {
    ShellState.RfidEnabled = ShellState.RfidEnabled ? 0 : 1;
    ShellState.RfidReadActive = 0;
    if (!ShellState.RfidEnabled && ShellState.RfidPort) {
        CloseRfidChannel();
    }
}

// The settings were asked for while the apply thread had the reader's port; they open when it has ended.
bool OpenSettingsWaits = false;

// While settings are applied both readers are off and their items unmarked: choosing one means to have it on,
// and that is what the apply thread does with every reader whose item can be chosen.
void SwitchReader(UINT id) {
    if (ShellState.Applying) {
        return;
    }
    if (id == IDM_BC_READER && BarcodeItemEnabled()) {
        ToggleBarcodeReader();
    } else if (id == IDM_RFID_READER && RfidItemEnabled()) {
        ToggleRfidReader();
    }
}

void OnSettingsApplied(HWND window) {
    ShellState.Applying = 0;
    if (ShellState.Closing || ShellState.ErrorShown) {
        return;
    }
    if (std::exchange(OpenSettingsWaits, false)) {
        SendMessageW(window, WM_OPENSETTINGS, 0, 0);
    }
}

void OnSettingsCommand(HWND window) {
    if (SwitchReadersOff()) {
        SendMessageW(window, WM_OPENSETTINGS, 0, 0);
    }
}

void OnCommand(HWND window, UINT id) {
    if (!ShellState.InitDone) {
        return;
    }
    if (id != IDM_ABOUT) {
        CloseAboutBox();
    }
    switch (id) {
        case IDM_SETTINGS:
            if (ShellState.Applying) {
                OpenSettingsWaits = true;
            } else {
                OnSettingsCommand(window);
            }
            break;
        case IDM_BC_READER:
        case IDM_RFID_READER:
            SwitchReader(id);
            break;
        case IDM_ABOUT:
            ShowAboutBox();
            break;
        case IDM_EXIT:
            SendMessageW(window, WM_CLOSE, 0, 0);
            break;
        default:
            break;
    }
}

}  // namespace

LRESULT CALLBACK MainWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (HandleTriggerMessage(message, static_cast<DWORD>(wParam))) {
        return 0;
    }
    LRESULT answer = 0;
    if (HandleRequest(window, message, wParam, lParam, answer)) {
        return answer;
    }
    switch (message) {
        case WM_CREATE:
            OnCreate();
            return 0;
        case WM_TIMER:
            KillTimer(window, LOWORD(wParam));
            if (const ErrorCode result = HandleTimer(LOWORD(wParam)); result != Success) {
                ShellState.BarcodeReadActive = 0;
                ReportError(result);
            }
            return 0;
        case WM_OPENSETTINGS:
            if (ShellState.Applying) {
                OpenSettingsWaits = true;
            } else {
                OpenSettingsWaits = false;
                OpenSettings(window);
            }
            return 0;
        case WM_APPLYSETTINGS:
            ApplySettings(window);
            return 0;
        case WM_SETTINGSAPPLIED:
            OnSettingsApplied(window);
            return 0;
        case WM_OFFERUPGRADE:
            if (HWND sheet = ShellState.SettingsSheet; sheet && !ShellState.UpgradeActive) {
                UpgradeFirmware(sheet);
            }
            return 0;
        case WM_COMMAND:
            OnCommand(window, LOWORD(wParam));
            return 0;
        case WM_TRAYNOTIFY:
            if (lParam == WM_LBUTTONDOWN && ShellState.InitDone) {
                ShowTrayMenu(window);
            }
            return 0;
        case WM_SHOWERROR:
            OnShowError(window, static_cast<ErrorCode>(wParam));
            return 0;
        case WM_DESTROY:
            // Not found any more: a start that comes now is the first one.
            SetWindowTextW(window, TEXT(""));
            ShellCleanup();
            PostQuitMessage(static_cast<int>(ShellState.ExitCode));
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}
