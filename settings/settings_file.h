// The settings file: the whole record in 1100 bytes. Opened and closed within each load or save. Start-up
// thread and main thread, never both at once.
#pragma once

#include "platform/files.h"
#include "settings/settings_image.h"

// Opens the file for reading and writing, shared with nobody; with `create` other than 0 an empty one is
// made. nullptr on failure.
HANDLE OpenSettingsFile(int create);

// Reads the file into the record and brings a 1.0 file up to date: 1. Otherwise the record is as it was: 0
// where there is no file, or none of full length; -1 where there is one that cannot be opened or read.
int LoadSettings();

// Writes the record: 1; 0 when the file cannot be created, -1 when it could not be kept, so that the old one
// stays. Where nothing is chosen in ActiveDevice or DataOutput
// the file says so, and the record gets the first choice.
int SaveSettings();
