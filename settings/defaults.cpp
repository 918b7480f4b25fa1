#include "settings/defaults.h"

#include "settings/pages.h"
#include "shell/shell_state.h"

namespace {

constexpr std::size_t FirstRfidWord = 80;
constexpr std::size_t FirstReaderWord = 110;

bool Selects(DWORD mask, ResetGroup group) {
    return (mask & static_cast<DWORD>(group)) != 0;
}

void Reset(const Setting& setting, ReaderType type) {
    const SettingPlace& place = PlaceOf(setting, type);
    if (place.HasDefault) {
        *WordOf(setting, type) = place.Default;
    }
}

void ClearSymbologies() {
    for (Relaxed<WORD>& word : SymbologySettings) {
        word = 0;
    }
}

}  // namespace

void ResetSettings(DWORD mask) {
    const ReaderType type = FittedReader();
    const auto reset = [=](const Setting& setting) {
        if (Selects(mask, setting.Group)) {
            Reset(setting, type);
        }
    };
    if (Selects(mask, ResetGroup::BarcodeReader)) {
        ClearSymbologies();
    }
    ForEachSymbologyField(reset);
    ForEachGeneralField(reset);
}

void ResetNewer(const Setting& setting, DWORD fileVersion) {
    if (setting.Since > fileVersion) {
        Reset(setting, FittedReader());
    }
}

void ReconcileDeviceFlags(const WORD& detected) {
    const WORD barcode = detected & DeviceBarcodeMask;
    if (barcode != (DeviceFlags & DeviceBarcodeMask)) {
        // The RFID bit goes too, so that a reader behind another barcode reader starts from its defaults.
        DeviceFlags = barcode;
        if (barcode) {
            ResetSettings(static_cast<DWORD>(ResetGroup::BarcodeReader));
            ShellState.ReconfigureReaders = 1;
        } else {
            ClearSymbologies();
        }
    }
    const WORD rfid = detected & DeviceRfid;
    if (rfid == (DeviceFlags & DeviceRfid)) {
        return;
    }
    DeviceFlags = static_cast<WORD>((DeviceFlags & ~DeviceRfid) | rfid);
    if (rfid) {
        ResetSettings(static_cast<DWORD>(ResetGroup::Rfid));
        ShellState.ReconfigureReaders = 1;
        return;
    }
    for (std::size_t word = FirstRfidWord; word < FirstReaderWord; ++word) {
        GeneralSettings[word] = 0;
    }
}
