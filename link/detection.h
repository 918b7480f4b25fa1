// Finds the fitted readers and the bit rates they answer at, and sets them up. Initialisation thread; the
// message loop must be running, since the power-up delays are timers of the main window.
#pragma once

#include "platform/serial.h"
#include "shell/error_messages.h"
#include "shell/relaxed.h"

// Milliseconds from the opening of the port, which switches a reader's power on, until it can be asked.
inline constexpr DWORD RfidProbeDelay = 200, BarcodeProbeDelay = 3200;

// The RFID reader's model, 100 or 90, as the last probe that found it told.
extern Relaxed<DWORD> RfidReaderModel;

// Probes both ports. 1 with the device mask (0: nobody answered), ErrorBarcodeReaderOn or ErrorRfidReaderOn
// with everything closed. On 1 the port of a barcode reader that was found is ShellState.BarcodePort, and
// that of an RFID reader ShellState.RfidPort when ReconfigureReaders is set; the others are closed.
[[nodiscard]] ErrorCode DetectReaders(WORD* deviceMask);

// Probes for every kind of barcode reader, at every rate; those that are asked alike are asked once. 0, or
// what was found: 1 (1D reader), 2 laser, 4 imager; a reader that needs RTS has it from then on.
WORD ProbeBarcodeReader(HANDLE port);
// Probes at every rate: an RFID reader at its working one first, a barcode reader at 115200, 38400 and 9600.
// `type`: 32 RFID reader, else the bit of a barcode reader that is asked in the same way. 0, or
// what was found: 1 (1D or RFID reader), 2 laser, 4 imager. Another rate than the working one sets
// ReconfigureReaders.
WORD ProbeReaderRates(HANDLE port, WORD type);
// One probe at one rate; result as above.
WORD ProbeReader(HANDLE port, DWORD rate, WORD type);

// Brings a detected reader into the system's configuration. `type`: 1, 2, 4 (on the barcode port) or 32 (on
// the RFID port). Whether the reader took everything; the port is then at its working rate. Initialisation
// thread.
[[nodiscard]] bool InitializeReader(HANDLE port, WORD type);
