#include "app/init_thread.h"

#include "app/main_window.h"
#include "link/barcode_receiver.h"
#include "link/detection.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "platform/kernel.h"
#include "platform/log.h"
#include "scan/decode_record.h"
#include "settings/catalogue.h"
#include "settings/defaults.h"
#include "settings/general_fields.h"
#include "settings/record.h"
#include "settings/settings_file.h"
#include "shell/error_messages.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

constexpr LPCWSTR DataQueueName = TEXT("QuenraDataQueue");

bool DecoderSilent = false;  // the settings open without an answer of the 1D reader

constexpr UINT RfidPowerUp = 1200;  // milliseconds

// Opens the reader that the settings name, without looking for it. A terminal with an RFID reader alone has
// nothing to open now, but becomes ready like any other.
ErrorCode OpenStoredReader() {
    UINT powerUp = RfidPowerUp;
    if (const BarcodeReader* reader = FittedBarcodeReader()) {
        HANDLE port = OpenReaderPort(BarcodePortSelector);
        if (!port) {
            return ErrorBarcodeReaderOn;
        }
        ShellState.BarcodePort = port;
        SetPortLine(port, reader->WorkingRate);
        powerUp = reader->PowerUp;
        Log(LogPriority::Notice, TEXT("%s taken to be there, at %u bit/s: nothing was asked"), reader->Name,
            reader->WorkingRate);
    }
    SetTimer(ShellState.MainWindow, IDT_READER_READY, powerUp, nullptr);
    return Success;
}

// The settings are wanted although no barcode reader answers: those of the readers of the last run, else of
// the 1D reader, whose decoder may have lost its firmware, beside those of an RFID reader.
ErrorCode GoOnWithoutReader(int loaded, WORD rfid) {
    if (!loaded) {
        DeviceFlags = static_cast<WORD>(Device1D | rfid);
        ResetSettings(ResetAllGroups);
    } else {
        const WORD barcode = HasBarcodeReader() ? WORD{DeviceFlags} : Device1D;
        ReconcileDeviceFlags(
            static_cast<WORD>((barcode & DeviceBarcodeMask) | (DeviceFlags & DeviceRfid) | rfid));
    }
    if (ShellState.RfidPort) {
        CloseReaderPort(ShellState.RfidPort);
    }
    ShellState.ReconfigureReaders = 0;
    DecoderSilent = (DeviceFlags & Device1D) != 0;
    return OpenStoredReader();
}

void TellWhatIsLeftOut(WORD gone) {
    if (const BarcodeReader* reader = FindBarcodeReader(gone)) {
        Log(LogPriority::Warning, TEXT("the %s of the last run does not answer: its settings are dropped"),
            reader->Name);
    }
    if (gone & DeviceRfid) {
        Log(LogPriority::Warning,
            TEXT("the RFID reader of the last run does not answer: its settings are dropped"));
    }
}

ErrorCode FindReaders(int loaded) {
    if (loaded && !IsOn(general::CheckReaderStatus)) {
        return OpenStoredReader();
    }
    if (!loaded) {
        ShellState.ReconfigureReaders = 1;
    }
    WORD detected = 0;
    const ErrorCode result = DetectReaders(&detected);
    if (result != Success) {
        return result;
    }
    if (SettingsAsked && (detected & DeviceBarcodeMask) == 0) {
        return GoOnWithoutReader(loaded, detected & DeviceRfid);
    }
    if (detected == 0) {
        return ErrorNoReader;
    }
    if (loaded) {
        TellWhatIsLeftOut(static_cast<WORD>(DeviceFlags & ~detected));
        ReconcileDeviceFlags(detected);
    } else {
        DeviceFlags = detected;
        ResetSettings(ResetAllGroups);
    }
    return Success;
}

ErrorCode ConfigureReaders() {
    if (!ShellState.ReconfigureReaders) {
        return Success;
    }
    if (ShellState.BarcodePort &&
        !InitializeReader(ShellState.BarcodePort, DeviceFlags & DeviceBarcodeMask)) {
        return ErrorInitialize;
    }
    if (ShellState.RfidPort) {
        if (!InitializeReader(ShellState.RfidPort, DeviceFlags & DeviceRfid)) {
            return ErrorInitialize;
        }
        CloseReaderPort(ShellState.RfidPort);  // opened anew for every read
    }
    return Success;
}

// The queue, beside the event that tells of its records.
ErrorCode CreateDataQueue() {
    MSGQUEUEOPTIONS options = {};
    options.dwSize = sizeof options;
    options.dwMaxMessages = 1;
    options.cbMaxMessage = sizeof(DecodeRecord);
    options.bReadAccess = FALSE;
    HANDLE writer = CreateMsgQueue(DataQueueName, &options);
    options.bReadAccess = TRUE;
    HANDLE reader = CreateMsgQueue(DataQueueName, &options);
    ShellState.QueueWriter = writer;
    ShellState.QueueReader = reader;
    return writer && reader && ShellState.DecodeEventHandle ? Success : ErrorInitialize;
}

ErrorCode Initialize() {
    ShellState.InitDone = 0;
    ShellState.ReaderReady = 0;
    ShellState.ReconfigureReaders = 0;

    const int loaded = LoadSettings();
    if (loaded < 0) {
        // Saving would fail as well; nothing is reset that only could not be read.
        Log(LogPriority::Error, TEXT("the settings file cannot be opened or read"));
        return ErrorInitialize;
    }
    ErrorCode result = FindReaders(loaded);
    if (result == Success) {
        result = ConfigureReaders();
    }
    if (result != Success) {
        return result;
    }
    if (!StartBarcodeReceiver(DeviceFlags)) {
        return ErrorInitialize;
    }
    BuildPageLists();
    ShellState.SettingsSheet = nullptr;
    if (!SaveSettings()) {
        Log(LogPriority::Error, TEXT("the settings file cannot be made"));
        return ErrorInitialize;
    }
    return CreateDataQueue();
}

}  // namespace

bool SettingsAsked = false;

DWORD WINAPI InitThread(LPVOID) {
    HCURSOR previous = GetCursor();
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    const ErrorCode result = Initialize();
    HWND window = ShellState.MainWindow;
    if (result != Success) {
        SetCursor(previous);
        if (!ShellState.Closing) {
            ShowErrorMessage(window, result);
            SendMessageW(window, WM_DESTROY, 0, 0);
        }
        return 0;
    }
    // A second start that asks for the settings just now waits like any other until the first apply is over.
    ShellState.Applying = 1;
    ShellState.InitDone = 1;
    ReportReady(TEXT("The readers are ready"));
    SetWindowPos(window, HWND_TOP, 0, 0, 240, 294, SWP_NOACTIVATE | SWP_SHOWWINDOW);
    SetCursor(previous);  // before another thread keeps the pointer that it finds
    if (SettingsAsked || GetForegroundWindow() == window) {
        ShellState.Applying = 0;
        SendMessageW(window, WM_OPENSETTINGS, 0, 0);
        if (DecoderSilent) {
            PostMessageW(window, WM_OFFERUPGRADE, 0, 0);
        }
    } else {
        SendMessageW(window, WM_APPLYSETTINGS, 0, 0);
    }
    return 0;
}
