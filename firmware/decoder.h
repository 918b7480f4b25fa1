// The conversation with the 1D reader's decoder about its firmware: version, download mode, erasing, frames.
// On the barcode port, whose reads must return at once (SetPortTimeouts with MAXDWORD) and which nobody else
// reads meanwhile. Main thread.
#pragma once

#include <span>

#include "firmware/firmware_frame.h"
#include "link/command_exchange.h"
#include "shell/error_messages.h"

// Whether the fitted reader is one whose firmware can be exchanged.
bool FirmwareUpgradable();

// Purges the port, writes the bytes as they are (up to three tries) and waits at most 2 s for a reply, which
// goes on until its CR, until 30 ms pass without a byte, or until its 100 bytes are there; leading zero bytes
// are dropped. False when nothing could be sent or nothing came.
[[nodiscard]] bool FirmwareExchange(HANDLE port, std::span<const BYTE> bytes, ReaderReply& reply);

// Asks for the version and waits `timeout` milliseconds for the answer. Success when anything came, NoResult
// when nothing did, ErrorSetBarcodeReader when the request cannot be sent. A version in the answer goes into
// `version` (which may be empty), cut to its size and without a zero; the caller clears it before.
[[nodiscard]] ErrorCode QueryFirmwareVersion(HANDLE port, DWORD timeout, std::span<BYTE> version);

// Switches the decoder into its download mode and lets it erase its flash. Success, ErrorSetBarcodeReader or
// ErrorEraseFlash.
[[nodiscard]] ErrorCode EnterDownloadMode();

// Sends a started frame, up to four times while the decoder asks for it again. Success or ErrorDownload.
[[nodiscard]] ErrorCode SendFirmwareFrame(FirmwareFrame& frame);
