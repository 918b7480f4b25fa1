// Code type letters and their display names. Pure; any thread.
#pragma once

#include <span>

#include "scan/scan_data.h"

// Writes the code type letter for a packet reader's numeric code identifier; an identifier that stands for no
// code type leaves the letter unchanged (preset it to 0).
void CodeIdToLetter(BYTE identifier, BYTE& letter);

// Writes the zero-terminated display name of the scan's code type (28 characters at most), cut to the buffer.
// The 1D reader's names cover every letter ("Unknown"); a letter that no packet reader has leaves the buffer
// unchanged (preset it to an empty text).
void CodeTypeName(ReaderFamily family, const ScanData& scan, std::span<char> name);
