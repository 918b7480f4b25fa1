// The settings file: the whole record in 1100 bytes.
#pragma once

#include <array>

#include "platform/base.h"
#include "platform/files.h"

// Opened and closed within each load or save, on the start-up thread and the main thread, never both at once.

// Opens the file for reading and writing, shared with nobody; with `create` other than 0 an empty one is
// made. nullptr on failure.
[[nodiscard]] HANDLE OpenSettingsFile(int create);

// Reads the file into the record and brings a 1.0 file up to date: 1. Otherwise the record is as it was: 0
// where there is no file, or none of full length; -1 where there is one that cannot be opened or read.
[[nodiscard]] int LoadSettings();

// Writes the record: 1; 0 when the file cannot be created, -1 when it could not be kept, so that the old one
// stays. Where nothing is chosen in ActiveDevice or DataOutput
// the file says so, and the record gets the first choice.
[[nodiscard]] int SaveSettings();

inline constexpr DWORD SettingsFileSize = 1100;

// The bytes of the file. Pure but for the record.
using SettingsImage = std::array<BYTE, SettingsFileSize>;

// Puts a file's bytes into the record: texts are ended, and what an older version lacks or wrote in another
// way is brought up to date.
void TakeSettingsImage(const SettingsImage& image);
// The record as a file of the present version.
void BuildSettingsImage(SettingsImage& image);
