// The settings record: what the user has chosen for both readers, the feedback and the output. One instance
// for the whole run, all zero at start. Any thread reads it; words change one at a time, and nothing else is
// promised. The words are reached by name through settings/field.h.
#pragma once

#include <array>
#include <bit>

#include "platform/base.h"
#include "shell/relaxed.h"

// Bits of DeviceFlags: the readers that the terminal carries.
inline constexpr WORD Device1D = 1;
inline constexpr WORD DeviceLaser = 2;
inline constexpr WORD DeviceImager = 4;
inline constexpr WORD DeviceBarcodeMask = 7;
inline constexpr WORD DeviceRfid = 32;

inline constexpr std::size_t SymbologyWords = 260;
inline constexpr std::size_t GeneralWords = 170;

using SymbologyBlock = std::array<Relaxed<WORD>, SymbologyWords>;
using GeneralBlock = std::array<Relaxed<WORD>, GeneralWords>;

extern Relaxed<WORD> DeviceFlags;
extern SymbologyBlock SymbologySettings;  // laid out by the fitted barcode reader; all zero without one
extern GeneralBlock GeneralSettings;      // words from 110 on depend on the fitted barcode reader

// The blocks as they were when the settings sheet opened; all zero, and different in every word, before it
// has been opened once. The downloads send what differs from them.
extern SymbologyBlock SymbologySettingsBefore;
extern GeneralBlock GeneralSettingsBefore;
extern Relaxed<DWORD> SnapshotsTaken;

// In the order of their bits in DeviceFlags.
enum class ReaderType { None, Decoder1D, LongRangeLaser, Imager2D };
inline constexpr std::size_t ReaderTypes = 4;

// By ReaderType: the bit in DeviceFlags, and the short name that commands and programs use.
struct ReaderIdentity {
    WORD Bit;
    const char* Name;
};
inline constexpr std::array<ReaderIdentity, ReaderTypes> ReaderIdentities{{
    {0, "none"},
    {Device1D, "1d"},
    {DeviceLaser, "laser"},
    {DeviceImager, "imager"},
}};
static_assert(ReaderIdentities.back().Bit == 1 << (ReaderTypes - 2),
              "a reader type without its bit and name");

// The barcode reader that such flags name. Where several are set, the 1D reader comes before the laser and
// the laser before the imager.
constexpr ReaderType BarcodeReaderOf(DWORD deviceFlags) {
    const unsigned barcode = deviceFlags & DeviceBarcodeMask;
    return barcode == 0 ? ReaderType::None : static_cast<ReaderType>(1 + std::countr_zero(barcode));
}
// The one that DeviceFlags names.
ReaderType FittedReader();
bool HasBarcodeReader();
bool HasRfidReader();

// Copies both blocks to their Before copies.
void TakeSnapshots();
