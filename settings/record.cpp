#include "settings/record.h"

Relaxed<WORD> DeviceFlags;
SymbologyBlock SymbologySettings;
GeneralBlock GeneralSettings;
SymbologyBlock SymbologySettingsBefore;
GeneralBlock GeneralSettingsBefore;

ReaderType FittedReader() {
    const WORD flags = DeviceFlags;
    if (flags & Device1D)
        return ReaderType::Decoder1D;
    if (flags & DeviceLaser)
        return ReaderType::LongRangeLaser;
    if (flags & DeviceImager)
        return ReaderType::Imager2D;
    return ReaderType::None;
}

bool HasBarcodeReader() {
    return (DeviceFlags & DeviceBarcodeMask) != 0;
}

bool HasRfidReader() {
    return (DeviceFlags & DeviceRfid) != 0;
}

void TakeSnapshots() {
    for (std::size_t i = 0; i < SymbologyWords; ++i)
        SymbologySettingsBefore[i] = SymbologySettings[i];
    for (std::size_t i = 0; i < GeneralWords; ++i)
        GeneralSettingsBefore[i] = GeneralSettings[i];
}
