// The firmware upgrade of the 1D reader's decoder, with all its windows. Main thread.
#pragma once

#include "platform/window.h"
#include "shell/error_messages.h"

// Leads through the whole upgrade and returns when it is over; the owner (the settings sheet) owns every
// window shown. NoResult when the user cancelled it, Success, or the error code that has been shown. The
// settings sheet stays while ShellState.UpgradeActive is set, and may be gone afterwards when the program has
// ended.
ErrorCode UpgradeFirmware(HWND owner);
