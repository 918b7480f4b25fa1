#include "app/main_window.h"

#include "app/about_box.h"
#include "app/apply_settings.h"
#include "app/settings_window.h"
#include "app/shell_cleanup.h"
#include "app/tray_menu.h"
#include "app/trigger.h"
#include "link/barcode_receiver.h"
#include "link/read_control.h"
#include "platform/shell.h"
#include "resources/resource.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

void ReportError(DWORD code) {
    SendMessageW(ShellState.MainWindow, WM_SHOWERROR, code, 0);
}

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

// Every reported failure ends the program. Whatever else fails while the box is up has nothing to add.
void OnShowError(HWND window, DWORD code) {
    if (ShellState.ErrorShown.Exchange(1)) {
        return;
    }
    ShowErrorMessage(window, code);
    SendMessageW(window, WM_CLOSE, 0, 0);
}

void ToggleBarcodeReader() {
    if (ShellState.BarcodeEnabled) {
        ShellState.BarcodeEnabled = 0;
        SuspendThread(ShellState.BarcodeThread);
    } else {
        ShellState.BarcodeEnabled = 1;
        ResumeBarcodeReceiver();
    }
    if (ShellState.BarcodeReadActive) {
        const DWORD result = BarcodeTrigger(0);
        if (result != Success) {
            ReportError(result);
            return;
        }
        ShellState.BarcodeReadActive = 0;
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

// What was asked for while the apply thread had the reader's port; done when it has ended. Both readers are
// off then and their items unmarked, so that choosing one means to have it on.
struct {
    bool BarcodeOn, RfidOn, OpenSettings;
} Waiting;

void SwitchReader(UINT id) {
    const bool barcode = id == IDM_BC_READER;
    if (ShellState.Applying) {
        (barcode ? Waiting.BarcodeOn : Waiting.RfidOn) = true;
    } else if (barcode && BarcodeItemEnabled()) {
        ToggleBarcodeReader();
    } else if (!barcode && RfidItemEnabled()) {
        ToggleRfidReader();
    }
}

void OnSettingsApplied(HWND window) {
    ShellState.Applying = 0;
    if (ShellState.Closing || ShellState.ErrorShown) {
        return;
    }
    const auto waiting = Waiting;
    Waiting = {};
    if (waiting.BarcodeOn && !ShellState.BarcodeEnabled) {
        SwitchReader(IDM_BC_READER);
    }
    if (waiting.RfidOn && !ShellState.RfidEnabled) {
        SwitchReader(IDM_RFID_READER);
    }
    if (waiting.OpenSettings) {
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
                Waiting.OpenSettings = true;
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
    if (HandleTriggerMessage(message)) {
        return 0;
    }
    switch (message) {
        case WM_CREATE:
            OnCreate();
            return 0;
        case WM_TIMER:
            KillTimer(window, LOWORD(wParam));
            HandleTimer(LOWORD(wParam));
            return 0;
        case WM_OPENSETTINGS:
            if (ShellState.Applying) {
                Waiting.OpenSettings = true;
            } else {
                Waiting.OpenSettings = false;
                OpenSettings(window);
            }
            return 0;
        case WM_APPLYSETTINGS:
            ApplySettings(window);
            return 0;
        case WM_SETTINGSAPPLIED:
            OnSettingsApplied(window);
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
            OnShowError(window, static_cast<DWORD>(wParam));
            return 0;
        case WM_DESTROY:
            ShellCleanup();
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}
