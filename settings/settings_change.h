// A change of settings as one program asks another for it: the device flags it was made for, then pairs of a
// word's number and its new value, all words little-endian. Words of the symbology block are numbered from 0,
// those of the general block after them.
#pragma once

#include <span>

#include "settings/record.h"

inline constexpr std::size_t RecordWords = SymbologyWords + GeneralWords;

// The registered message whose number comes with the change (WM_COPYDATA), and what is answered. 0, the
// answer of a program that does not know it, is none of them.
inline constexpr LPCWSTR ChangeSettingsMessage = TEXT("WM_CHANGESETTINGS");
enum class ChangeAnswer : int {
    Taken = 1,      // in the record and in the file, on its way to the readers
    Busy = 2,       // starting, reading, or sending other settings: ask again
    SheetOpen = 3,  // somebody edits the settings
    Refused = 4,    // no change for this terminal's readers
    NotSaved = 5,   // the file cannot be written; nothing has changed
};

// The word with that number, below RecordWords.
Relaxed<WORD>& RecordWord(std::size_t number);

// Whether the bytes are a change for the readers in DeviceFlags, every word of which exists.
bool IsChange(std::span<const BYTE> change);
// Puts a change that is one into the record, and ends the texts.
void TakeChange(std::span<const BYTE> change);
