// The readers' serial ports: the barcode reader on "COM1:", the RFID reader on "COM2:". Nothing here takes a
// lock; the callers' order keeps two threads from configuring one port at a time.
#pragma once

#include "platform/serial.h"
#include "shell/relaxed.h"

// Selectors of OpenReaderPort: device masks.
inline constexpr DWORD BarcodePortSelector = 7;
inline constexpr DWORD RfidPortSelector = 32;

inline constexpr DWORD RfidWorkingRate = 57600;

// Events both receive threads wait for.
inline constexpr DWORD ReceiveEvents = EV_RXCHAR | EV_BREAK;

// Opens "COM1:" for BarcodePortSelector and "COM2:" for any other selector, exclusively, with reads that
// return at once and driver queues of 4096 bytes. Null on failure. The caller stores the handle.
[[nodiscard]] HANDLE OpenReaderPort(DWORD selector);

// Sets the bit rate (0 keeps it), 8 data bits, no parity, one stop bit, DTR and RTS control off. The
// platform's result.
BOOL SetPortLine(HANDLE port, DWORD rate);
// Sets the bit rate alone.
BOOL SetPortRate(HANDLE port, DWORD rate);
// The bit rate that is set; 0 when the port cannot tell.
DWORD PortRate(HANDLE port);

// Read interval in milliseconds, or MAXDWORD for reads that return at once. Writes time out after 200 ms on
// the handle that is stored as the barcode port and after 10 ms on any other. The platform's result.
BOOL SetPortTimeouts(HANDLE port, DWORD interval);

// Raises RTS and waits 100 ms, or waits 50 ms and drops it: the frame the packet readers want around a
// packet.
void SetRts(HANDLE port, bool on);
// Switches RTS control to enable without waiting; the line stays asserted.
BOOL RaiseRts(HANDLE port);

// Closes the port in the variable, clears the variable and the run flag of the thread that reads the port. Of
// two threads that close one variable only one closes the handle; the other, like a call with nothing open,
// gets FALSE.
BOOL CloseReaderPort(Relaxed<HANDLE>& port);

// How many calls that read, write or change the line of a port have failed so far. Who compares two counts
// knows whether silence came from the reader.
DWORD PortFailures();

// Throws away what is queued in both directions.
void PurgePort(HANDLE port);
// One read of at most `size` bytes; 0 when it fails or brings nothing.
DWORD ReadPort(HANDLE port, BYTE* buffer, DWORD size);
// One write; whether the platform accepted it and at least a byte of it went out.
[[nodiscard]] bool WritePort(HANDLE port, const BYTE* bytes, DWORD size);
// WritePort, up to three times.
[[nodiscard]] bool WriteWithRetries(HANDLE port, const BYTE* bytes, DWORD size);
