// Error codes and the message box that names them.
#pragma once

#include "platform/window.h"

// Operations of the reader link, the shell and the firmware upgrade return Success or one of these codes.
inline constexpr DWORD Success = 1;

inline constexpr DWORD ErrorBarcodeReaderOn = 20001;    // the barcode reader's port cannot be opened
inline constexpr DWORD ErrorRfidReaderOn = 20002;       // the RFID reader's port cannot be opened
inline constexpr DWORD ErrorNoReader = 20003;           // detection finds no reader
inline constexpr DWORD ErrorSetBarcodeReader = 20011;   // a command to the barcode reader cannot be sent
inline constexpr DWORD ErrorSetRfidReader = 20012;      // the RFID read command cannot be sent
inline constexpr DWORD ErrorReceive = 20013;            // raised nowhere
inline constexpr DWORD ErrorInitBarcodeReader = 20014;  // the settings download fails
inline constexpr DWORD ErrorInitRfidReader = 20015;     // the RFID reader does not answer after power-on
inline constexpr DWORD ErrorReadIncomplete = 20016;     // raised nowhere
inline constexpr DWORD ErrorSaveConfiguration = 20021;  // raised nowhere
inline constexpr DWORD ErrorInitialize = 20022;         // start-up or the settings sheet fails
inline constexpr DWORD ErrorConfigure = 20023;          // raised nowhere
inline constexpr DWORD ErrorSaveSettings = 20024;       // the settings file cannot be written on apply
inline constexpr DWORD ErrorFirmwareRead = 20025;       // the firmware file cannot be read further
inline constexpr DWORD ErrorProgressDialog = 20026;     // the progress dialog cannot be created
inline constexpr DWORD ErrorEnterDownload = 20041;      // raised nowhere
inline constexpr DWORD ErrorEraseFlash = 20042;         // the decoder does not confirm the erasing
inline constexpr DWORD ErrorDownload = 20043;           // the firmware transfer fails
inline constexpr DWORD ErrorOpenFirmwareFile = 20044;   // the firmware file cannot be opened
inline constexpr DWORD ErrorRebootReader = 20045;       // the decoder does not come back after the transfer
inline constexpr DWORD FirmwareUpgradeDone = 20049;     // no failure: the closing message of the upgrade

// Brings the owner to the foreground and shows the message of the code with an "OK" button; returns the
// message box's result once the user has dismissed it. Where there is no screen no box waits: the message is
// in the diary, and the program ends with code 1. Any thread; what happens next is the caller's business.
int ShowErrorMessage(HWND owner, DWORD code);
