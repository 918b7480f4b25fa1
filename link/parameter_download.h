// Download of the settings into the scan engines: PARAM_SEND packets with what differs from the snapshots.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "link/ssi_packet.h"
#include "settings/record.h"

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
