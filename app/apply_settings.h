// The apply thread: brings the barcode reader into line with the settings, then switches the readers on.
#pragma once

#include "platform/kernel.h"

// Thread procedure without a parameter; ends with exit code 2255. A refused configuration is shown and ends
// the program. When it has worked, WM_SETTINGSAPPLIED is sent to the main window.
DWORD WINAPI ApplySettingsThread(LPVOID);
