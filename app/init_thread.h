// Initialisation: settings, readers, receive thread, message queue. Runs beside the message loop, since
// detection waits for the main window's timer.
#pragma once

#include "platform/kernel.h"

// Thread procedure without a parameter; always returns 0. A failure is shown and ends the program.
DWORD WINAPI InitThread(LPVOID);
