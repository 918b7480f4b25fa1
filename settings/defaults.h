// Factory defaults, and keeping the record in step with the readers that are fitted. Start-up thread.
#pragma once

#include "settings/field.h"

inline constexpr DWORD ResetAllGroups = static_cast<DWORD>(ResetGroup::BarcodeReader) |
                                        static_cast<DWORD>(ResetGroup::Rfid) |
                                        static_cast<DWORD>(ResetGroup::General);

// Puts the fields of the groups in the mask (bits of ResetGroup) to their factory defaults for the readers
// in DeviceFlags. The barcode reader's group clears the whole symbology block first. Everything else,
// PrefixCode and SuffixCode among it, keeps its value.
void ResetSettings(DWORD mask);

// Gives a field that a settings file of that version did not have yet its default.
void ResetNewer(const Setting& setting, DWORD fileVersion);

// Takes over the device flags that the detection found (bits 0 to 2 and 5 count). Another barcode reader
// gets its defaults, and so does an RFID reader that was not there before or came with another barcode
// reader; both set ShellState.ReconfigureReaders. What belonged to a reader that is gone is cleared.
void ReconcileDeviceFlags(const WORD& detected);
