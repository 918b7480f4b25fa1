// From a barcode reader's message to a delivered scan.
#pragma once

#include <span>

#include "scan/scan_data.h"

inline constexpr BYTE EscapeByte = 0x1B;  // begins a 1D reader's message

// Takes a 1D reader's message apart: ESC, code type letter, three length digits, data, CR. Bytes before the
// ESC and behind the data are ignored. 1, or 0 for a message without ESC or CR, without a length from 1 to
// 999, or with a zero byte (or its end, or the next message) inside the declared data; the scan is then of no
// use. Pure.
int Parse1DMessage(std::span<const BYTE> message, ScanData& scan);

// The messages behind the first one: what comes while a scan is being delivered is read together. Empty when
// there is none. Pure.
std::span<const BYTE> Next1DMessages(std::span<const BYTE> messages);

// Drops the three-character code identifier that the 1D reader puts in front of EAN-128 data. Data that is
// shorter stays whole. Pure.
void DropCodeIdentifier(ScanData& scan);

// Takes a packet reader's joined message apart: code identifier, data (cut to MaximumScanLength). No check is
// made; the message has at least one byte. Pure.
void ParsePacketMessage(std::span<const BYTE> message, ScanData& scan);

// A complete message of the barcode reader, or several of the 1D reader: checks each, gives the read feedback
// and delivers the scan. 1 when a scan was delivered, 0 when all were dropped, without any sign to the user
// but a line in the diary, also because the reader has been switched off. Barcode receive thread; returns
// when the delivery is over.
int HandleBarcodeData(const BYTE* message, DWORD length);
