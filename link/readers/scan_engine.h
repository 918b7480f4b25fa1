// What the scan engines have in common: packets of the Simple Serial Interface.
#pragma once

#include "link/parameter_download.h"
#include "link/readers/barcode_reader.h"

// Asks for the revision; the bit of the engine that it names, or 0.
WORD ProbeScanEngine(HANDLE port);

// Factory defaults, then the lengths and the base parameters of the engine, whose last one is its bit rate.
[[nodiscard]] bool SetUpScanEngine(HANDLE port, const BarcodeReader& reader, std::span<const BYTE> lengths,
                                   std::span<const BYTE> base);

// Sends a packet to the fitted engine. Success or ErrorSetBarcodeReader.
[[nodiscard]] ErrorCode CommandScanEngine(std::span<const BYTE> packet);
// The trigger without aiming.
[[nodiscard]] ErrorCode StartDecoding();
[[nodiscard]] ErrorCode StopDecoding();

// Sends the packet of the rows that differ from the snapshots, if there are any; whether it was acknowledged.
[[nodiscard]] bool DownloadRows(ParameterRows rows);

// Sends a packet (given whole, without its checksum): RTS up, 100 ms, the bytes, 50 ms, RTS down; up to three
// tries of the write. False when every try failed, which leaves RTS up until the next packet, or when the
// length byte is wrong.
[[nodiscard]] bool SendToScanEngine(HANDLE port, std::span<const BYTE> packet);
