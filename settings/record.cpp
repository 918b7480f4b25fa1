#include "settings/record.h"

#include <bit>

Relaxed<WORD> DeviceFlags;
SymbologyBlock SymbologySettings;
GeneralBlock GeneralSettings;
SymbologyBlock SymbologySettingsBefore;
GeneralBlock GeneralSettingsBefore;
Relaxed<DWORD> SnapshotsTaken;

ReaderType FittedReader() {
    const unsigned barcode = DeviceFlags & DeviceBarcodeMask;
    return barcode == 0 ? ReaderType::None : static_cast<ReaderType>(1 + std::countr_zero(barcode));
}

bool HasBarcodeReader() {
    return (DeviceFlags & DeviceBarcodeMask) != 0;
}

bool HasRfidReader() {
    return (DeviceFlags & DeviceRfid) != 0;
}

void TakeSnapshots() {
    for (std::size_t i = 0; i < SymbologyWords; ++i) {
        SymbologySettingsBefore[i] = SymbologySettings[i];
    }
    for (std::size_t i = 0; i < GeneralWords; ++i) {
        GeneralSettingsBefore[i] = GeneralSettings[i];
    }
    SnapshotsTaken = 1;
}
