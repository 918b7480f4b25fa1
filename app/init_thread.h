// Initialisation: settings, readers, receive thread, message queue. Runs beside the message loop, since
// detection waits for the main window's timer.
#pragma once

#include "platform/kernel.h"

// The settings open at the end, whatever the readers answer; where the 1D reader does not, its firmware
// upgrade is offered as well. Set before the thread starts.
extern bool SettingsAsked;

// Thread procedure without a parameter; always returns 0. A failure is shown and ends the program.
DWORD WINAPI InitThread(LPVOID);
