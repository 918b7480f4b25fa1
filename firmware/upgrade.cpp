#include "firmware/upgrade.h"

#include "firmware/decoder.h"
#include "firmware/transfer.h"
#include "link/parameter_download.h"
#include "link/serial_ports.h"
#include "platform/base.h"
#include "resources/resource.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

constexpr int RestartTries = 30;
constexpr DWORD RestartTimeout = 500;

// A dialog that has gone leaves its place to be painted, and nobody handles messages for a while. Right after
// it no window may be active yet.
void RepaintActiveWindow(HWND owner) {
    HWND active = GetActiveWindow();
    UpdateWindow(active ? active : owner);
}

// Says what goes on while nobody handles messages. Without memory for it things go on all the same.
class WaitWindow {
  public:
    WaitWindow(HWND owner, LPCWSTR text)
        : dialog_(CreateDialogParamW(ShellState.Instance, MAKEINTRESOURCEW(IDD_UPGRADE_WAIT), owner, nullptr,
                                     0)) {
        SetDlgItemTextW(dialog_, IDC_TEXT, text);
        SetWindowPos(dialog_, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
        Paint();
    }
    ~WaitWindow() { DestroyWindow(dialog_); }
    WaitWindow(const WaitWindow&) = delete;
    WaitWindow& operator=(const WaitWindow&) = delete;

    void Paint() const { UpdateWindow(dialog_); }

  private:
    HWND dialog_;
};

ErrorCode EraseDecoder(HWND owner) {
    const WaitWindow wait(owner, TEXT("The decoder is being erased. Do not turn the power off."));
    return EnterDownloadMode();
}

ErrorCode AwaitRestart(HWND owner) {
    const WaitWindow wait(owner, TEXT("The decoder is restarting. Do not turn the power off."));
    const HCURSOR cursor = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    ErrorCode answer = NoResult;
    for (int i = 0; i < RestartTries && answer == NoResult; ++i) {
        answer = QueryFirmwareVersion(ShellState.BarcodePort, RestartTimeout, {});
        wait.Paint();
    }
    SetCursor(cursor);
    return answer == Success ? Success : ErrorRebootReader;
}

ErrorCode LoadFile(HWND owner, HANDLE file) {
    // Before the decoder is touched: afterwards it needs a whole firmware.
    ErrorCode result = CheckFirmwareFile(file);
    if (result != Success) {
        return result;
    }
    result = EraseDecoder(owner);
    if (result != Success) {
        return result;
    }
    RepaintActiveWindow(owner);
    result = TransferFirmwareFile(owner, file);
    RepaintActiveWindow(owner);
    return result == Success ? AwaitRestart(owner) : result;
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

void Upgrade(HWND owner) {
    SetPortTimeouts(ShellState.BarcodePort, MAXDWORD);
    WCHAR path[FirmwarePathSize] = {};
    if (!Ask(owner, path)) {
        return;
    }
    RepaintActiveWindow(owner);
    const ErrorCode result = LoadFirmware(owner, path);
    if (result == Success) {
        static_cast<void>(Save1DSettings());  // the upgrade itself has worked, whatever comes of this
    }
    ShowErrorMessage(owner, result == Success ? FirmwareUpgradeDone : result);
}

}  // namespace

ErrorCode LoadFirmware(HWND owner, LPCWSTR path) {
    HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return ErrorOpenFirmwareFile;
    }
    const ErrorCode result = LoadFile(owner, file);
    CloseHandle(file);
    return result;
}

void UpgradeFirmware(HWND owner) {
    ShellState.UpgradeActive = 1;
    Upgrade(owner);
    ShellState.UpgradeActive = 0;
}
