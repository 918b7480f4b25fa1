#include "shell/error_messages.h"

#include "platform/base.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

struct ErrorText {
    ErrorCode code;
    LPCWSTR text;
};

constexpr ErrorText ErrorTexts[] = {
    {ErrorBarcodeReaderOn, TEXT("Failed to turn barcode reader on!!")},
    {ErrorRfidReaderOn, TEXT("Failed to turn RFID reader on!!")},
    {ErrorNoReader, TEXT("No reader device!!")},
    {ErrorSetBarcodeReader, TEXT("Failed to set barcode reader!!")},
    {ErrorSetRfidReader, TEXT("Failed to set RFID reader!!")},
    {ErrorReceive, TEXT("Failed to receive data from the reader!!")},
    {ErrorInitBarcodeReader, TEXT("Failed to initialize BC reader!!")},
    {ErrorInitRfidReader, TEXT("Failed to initialize RFID reader!!")},
    {ErrorReadIncomplete, TEXT("Reading isn't compeleted!!")},
    {ErrorSaveConfiguration, TEXT("Failed to save configuration")},
    {ErrorInitialize, TEXT("Failed to initialize Corvin!!")},
    {ErrorConfigure, TEXT("Failed to configure!!")},
    {ErrorSaveSettings, TEXT("Failed to save configuration")},
    {ErrorFirmwareRead, TEXT("Failed to read the firmware file!! (20025)")},
    {ErrorProgressDialog, TEXT("Failed to show the download progress!! (20026)")},
    {ErrorEnterDownload, TEXT("Can not enter download mode!!")},
    {ErrorEraseFlash, TEXT("Failed to erase the flash memory!!")},
    {ErrorDownload, TEXT("Error on downloading!!")},
    {ErrorOpenFirmwareFile, TEXT("Can't open the file!!")},
    {ErrorRebootReader, TEXT("Error on reboot barcode reader!!")},
    {FirmwareUpgradeDone, TEXT("Downloaded successfully!")},
};

}  // namespace

int ShowErrorMessage(HWND owner, ErrorCode code) {
    WCHAR caption[32];
    lstrcpyW(caption, code == FirmwareUpgradeDone ? TEXT("Firmware Upgrade") : TEXT("Error Msg"));

    WCHAR numbered[32];
    wsprintfW(numbered, TEXT("Error %u"), code);
    LPCWSTR text = numbered;
    for (const ErrorText& entry : ErrorTexts) {
        if (entry.code == code) {
            text = entry.text;
        }
    }

    Log(code == FirmwareUpgradeDone ? LogPriority::Notice : LogPriority::Error, TEXT("%s (%u)"), text, code);
    if (GetSystemMetrics(SM_CMONITORS) == 0) {
        // Nobody could ever answer. Who started the program learns it from the diary and the exit code.
        if (code != FirmwareUpgradeDone) {
            ShellState.ExitCode = 1;
        }
        return IDOK;
    }
    SetForegroundWindow(owner);
    return MessageBoxW(owner, text, caption, MB_OK);
}

void ReportError(ErrorCode code) {
    SendMessageW(ShellState.MainWindow, WM_SHOWERROR, code, 0);
}
