// Download of the settings into the barcode readers, by what differs from the snapshots: one SAVE command
// with a block of 30 bytes for the 1D reader, PARAM_SEND packets for the scan engines.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "link/framing.h"
#include "platform/base.h"
#include "settings/record.h"

using ParameterBlock = std::array<BYTE, 30>;

// Fills the block, which must be zero, from the current settings.
void Build1DParameterBlock(ParameterBlock& block);

// Sends the block when anything differs from the snapshots; the reader must answer OK, at the second try at
// the latest. One that does not answer at all is looked for at its other bit rates before that. The barcode
// receive thread must not read.
[[nodiscard]] bool Save1DSettings();

// True also when nothing differs; false when the reader did not acknowledge a packet, sent twice. The barcode
// receive thread must not read.
[[nodiscard]] bool DownloadLaserSettings();
[[nodiscard]] bool DownloadImagerSettings();

enum class LengthSymbology { Code39, Code93, Code11, Interleaved25, Industrial25, Codabar, Msi };

// The four bytes of a length entry: first parameter, its value, second parameter, its value, for the
// symbology on the page of a scan engine.
void LengthParameters(ReaderType page, LengthSymbology symbology, std::span<BYTE, 4> entry);

// The two values for a length mode (0 any, 1 one, 2 two, 3 range) and the settings "Value 2" and "Value 1".
std::array<BYTE, 2> LengthValues(WORD mode, BYTE value2, BYTE value1);

// One parameter packet, without checksum; every row fits, whatever has changed.
inline constexpr std::size_t EmptyParameterPacket = 5;  // length without an entry
struct ParameterPacket {
    std::array<BYTE, 255> Bytes;
    std::size_t Length;
};

enum class ParameterRows { Laser, ImagerFirst, ImagerSecond };

// Builds the packet of the rows whose settings differ from the snapshots.
void BuildParameterPacket(ParameterRows rows, ParameterPacket& packet);
