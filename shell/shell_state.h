// The shell's global record: the handles and run flags that the shell, the reader link and the delivery
// share. It starts all zero. Flags hold 0 or 1. Whatever two threads touch is Relaxed; the rest is the main
// thread's.
#pragma once

#include "platform/controls.h"
#include "platform/shell.h"
#include "shell/relaxed.h"

// Private messages of the main window; sent, but for those that close or replace the settings sheet from
// inside it.
inline constexpr UINT WM_SHOWERROR = WM_USER + 1;      // wParam: error code; shows it and closes the program
inline constexpr UINT WM_TRAYNOTIFY = WM_USER + 2;     // lParam: mouse message on the notification icon
inline constexpr UINT WM_OPENSETTINGS = WM_USER + 4;   // opens the settings sheet
inline constexpr UINT WM_APPLYSETTINGS = WM_USER + 8;  // saves, downloads, hides the main window
inline constexpr UINT WM_SETTINGSAPPLIED =
    WM_USER + 9;  // the apply thread has ended: what waited for it goes on

// Timers of the main window; one-shot.
inline constexpr UINT_PTR IDT_READER_READY = 921;   // reader power-up delay is over
inline constexpr UINT_PTR IDT_RFID_READ = 922;      // RFID read time is over
inline constexpr UINT_PTR IDT_AIM_DURATION = 923;   // laser: aiming done, decode
inline constexpr UINT_PTR IDT_DELIVERY_BUSY = 924;  // typed keys have been consumed
inline constexpr UINT_PTR IDT_UPGRADE_KEY = 925;    // second key of the upgrade sequence is late
inline constexpr UINT_PTR IDT_LASER_HOLD = 926;     // laser: aim hold after an early release is over
inline constexpr UINT_PTR IDT_CONTINUATION = 927;   // the rest of a packet message has not come

inline constexpr LPCWSTR WindowClassName = TEXT("Vantrel");
inline constexpr LPCWSTR WindowTitle = TEXT("Vantrel v1.29");

struct ShellRecord {
    HINSTANCE Instance;  // for all resource loads
    Relaxed<HWND> MainWindow;
    HICON AppIcon;
    HIMAGELIST StateImages;  // of the settings trees
    Relaxed<HWND> EditorDialog;
    Relaxed<HWND> AboutDialog;
    Relaxed<HWND> SettingsSheet;
    HMENU TrayMenu;     // the popup while one exists
    HMENU TrayMenuBar;  // the loaded menu that it belongs to
    NOTIFYICONDATAW TrayIconData;
    SHMENUBARINFO MenuBarInfo;

    Relaxed<UINT> MsgUser1Down, MsgUser1Up, MsgUser2Down, MsgUser2Up;
    Relaxed<UINT> MsgDecode;

    Relaxed<DWORD> ReaderReady;  // the reader power-up delay has elapsed
    Relaxed<DWORD> InitDone;     // initialisation has finished without error
    Relaxed<WORD> ReconfigureReaders;

    Relaxed<HANDLE> QueueWriter, QueueReader;  // the two ends of the data message queue
    Relaxed<HANDLE> DecodeEventHandle;
    Relaxed<HANDLE> VibratorSemaphore;

    Relaxed<HANDLE> BarcodePort, RfidPort;      // 0 while closed
    Relaxed<HANDLE> BarcodeThread, RfidThread;  // 0 when none
    Relaxed<DWORD> BarcodeThreadRun, RfidThreadRun;
    Relaxed<DWORD> BarcodeReadActive, RfidReadActive;
    Relaxed<DWORD> BarcodeEnabled, RfidEnabled;  // the reader is switched on

    Relaxed<DWORD> TriggerReleased;  // 1 while no trigger key is held down
    Relaxed<BYTE> TransferBusy;      // a reader transfer or a keyboard delivery is in progress
    Relaxed<BYTE> LaserHold;         // the laser's aiming beam was switched on and decoding has not started
    DWORD UpgradeKeyArmed;           // the first key of the upgrade sequence was seen

    Relaxed<DWORD> ScansBegun, ScansDelivered;  // since the start
    Relaxed<DWORD> LastScanTick;                // when the last of them began

    Relaxed<DWORD> Applying;  // the apply thread runs; openings of the settings and reader switches wait
    Relaxed<DWORD> SettingsApplied;  // the reader holds what the record says, until a sheet opens
    DWORD SheetClosing;              // the sheet has been told to close by one of its buttons
    DWORD EditorLoops;               // the loop of an editor runs, inside a notification of the sheet's tree
    DWORD ReopenSettings;            // the settings were asked for meanwhile; they open when it has ended
    DWORD UpgradeActive;             // the firmware upgrade runs: the sheet that owns it stays
    Relaxed<DWORD> ErrorShown;       // an error box is up and the program ends after it
    Relaxed<DWORD> ExitCode;         // of the program, when it ends now
    Relaxed<DWORD> Closing;  // everything is being released: failures of other threads are no news any more

    WCHAR EditorText[11];  // the open editor's result
    INT EditorMax, EditorMin;
};

inline constinit ShellRecord ShellState{};
