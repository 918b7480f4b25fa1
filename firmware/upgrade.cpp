#include "firmware/upgrade.h"

#include "firmware/decoder.h"
#include "firmware/firmware_file.h"
#include "firmware/transfer.h"
#include "firmware/upgrade_dialogs.h"
#include "link/serial_ports.h"
#include "link/settings_download.h"
#include "platform/text.h"
#include "resources/resource.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD Cancelled = 0;
constexpr int RestartTries = 30;
constexpr DWORD RestartTimeout = 500;

// A dialog that has gone leaves its place to be painted, and nobody handles messages for a while.
void RepaintActiveWindow() {
    if (HWND active = GetActiveWindow()) {
        UpdateWindow(active);
    }
}

DWORD AwaitRestart() {
    const HCURSOR cursor = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    DWORD answer = 0;
    for (int i = 0; i < RestartTries && answer == 0; ++i) {
        answer = QueryFirmwareVersion(ShellState.BarcodePort, RestartTimeout, {});
    }
    SetCursor(cursor);
    return answer == Success ? Success : ErrorRebootReader;
}

DWORD LoadFile(HWND owner, HANDLE file) {
    // Before the decoder is touched: afterwards it needs a whole firmware.
    DWORD result = CheckFirmwareFile(file);
    if (result != Success) {
        return result;
    }
    result = EnterDownloadMode();
    if (result != Success) {
        return result;
    }
    RepaintActiveWindow();
    result = TransferFirmwareFile(owner, file);
    RepaintActiveWindow();
    return result == Success ? AwaitRestart() : result;
}

DWORD LoadPath(HWND owner, LPCWSTR path) {
    HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return ErrorOpenFirmwareFile;
    }
    const DWORD result = LoadFile(owner, file);
    CloseHandle(file);
    return result;
}

// Whether the user went on. The program may be closed while a dialog is up.
bool Ask(HWND owner, std::span<WCHAR, FirmwarePathSize> path) {
    if (DialogBoxParamW(ShellState.Instance, MAKEINTRESOURCEW(IDD_CAUTION), owner, CautionDlgProc, 0) !=
        IDOK) {
        return false;
    }
    WCHAR folder[FirmwarePathSize] = {};
    WCHAR name[FirmwarePathSize] = {};
    if (ShellState.Closing || !SelectFirmwareFile(owner, folder, name) || ShellState.Closing) {
        return false;
    }
    if (lstrlenW(folder) + 1 + lstrlenW(name) >= static_cast<int>(path.size())) {
        name[0] = 0;  // no path of the platform is that long: there is nothing to open
    }
    wsprintfW(path.data(), TEXT("%s\\%s"), folder, name);
    return true;
}

DWORD Upgrade(HWND owner) {
    SetPortTimeouts(ShellState.BarcodePort, MAXDWORD);
    WCHAR path[FirmwarePathSize] = {};
    if (!Ask(owner, path)) {
        return Cancelled;
    }
    RepaintActiveWindow();
    const DWORD result = LoadPath(owner, path);
    if (result == Success) {
        static_cast<void>(Save1DSettings());  // the upgrade itself has worked, whatever comes of this
    }
    ShowErrorMessage(owner, result == Success ? FirmwareUpgradeDone : result);
    return result;
}

}  // namespace

DWORD UpgradeFirmware(HWND owner) {
    ShellState.UpgradeActive = 1;
    const DWORD result = Upgrade(owner);
    ShellState.UpgradeActive = 0;
    return result;
}
