// The firmware upgrade of the 1D reader's decoder, with all its windows. Main thread.
#pragma once

#include "platform/window.h"
#include "shell/error_messages.h"

// Leads through the whole upgrade and returns when it is over; the owner (the settings sheet) owns every
// window shown, those of a failure too. The
// settings sheet stays while ShellState.UpgradeActive is set, and may be gone afterwards when the program has
// ended.
void UpgradeFirmware(HWND owner);

// The upgrade without its questions and its last word, on a port whose reads return at once: checks the file,
// has the decoder erase its flash, sends the file and waits for the restart. Success, or the error code.
ErrorCode LoadFirmware(HWND owner, LPCWSTR path);
