#include "settings/record.h"

Relaxed<WORD> DeviceFlags;
SymbologyBlock SymbologySettings;
GeneralBlock GeneralSettings;
SymbologyBlock SymbologySettingsBefore;
GeneralBlock GeneralSettingsBefore;
Relaxed<DWORD> SnapshotsTaken;

ReaderType FittedReader() {
    return BarcodeReaderOf(DeviceFlags);
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
