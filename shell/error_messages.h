// Error codes and the message box that names them.
#pragma once

#include "platform/window.h"

// What operations of the reader link, the shell and the firmware upgrade return: Success or what failed.
enum ErrorCode : DWORD {
    NoResult = 0,  // neither: the user has cancelled, or nobody has answered
    Success = 1,
    ErrorBarcodeReaderOn = 20001,    // the barcode reader's port cannot be opened
    ErrorRfidReaderOn = 20002,       // the RFID reader's port cannot be opened
    ErrorNoReader = 20003,           // detection finds no reader
    ErrorSetBarcodeReader = 20011,   // a command to the barcode reader cannot be sent
    ErrorSetRfidReader = 20012,      // the RFID read command cannot be sent
    ErrorReceive = 20013,            // raised nowhere
    ErrorInitBarcodeReader = 20014,  // the settings download fails
    ErrorInitRfidReader = 20015,     // the RFID reader does not answer after power-on
    ErrorReadIncomplete = 20016,     // raised nowhere
    ErrorSaveConfiguration = 20021,  // raised nowhere
    ErrorInitialize = 20022,         // start-up or the settings sheet fails
    ErrorConfigure = 20023,          // raised nowhere
    ErrorSaveSettings = 20024,       // the settings file cannot be written on apply
    ErrorFirmwareRead = 20025,       // the firmware file cannot be read further
    ErrorProgressDialog = 20026,     // the progress dialog cannot be created
    ErrorEnterDownload = 20041,      // raised nowhere
    ErrorEraseFlash = 20042,         // the decoder does not confirm the erasing
    ErrorDownload = 20043,           // the firmware transfer fails
    ErrorOpenFirmwareFile = 20044,   // the firmware file cannot be opened
    ErrorRebootReader = 20045,       // the decoder does not come back after the transfer
    FirmwareUpgradeDone = 20049,     // no failure: the closing message of the upgrade
};

// Brings the owner to the foreground and shows the message of the code with an "OK" button; returns the
// message box's result once the user has dismissed it. Where there is no screen no box waits: the message is
// in the diary, and the program ends with code 1. Any thread; what happens next is the caller's business.
int ShowErrorMessage(HWND owner, ErrorCode code);

// Has the main window show that message and then close the program: WM_SHOWERROR. Any thread.
void ReportError(ErrorCode code);
