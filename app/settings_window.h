// Opening the settings sheet from the main window, and applying what was edited in it. Main thread; the apply
// thread works beside it.
#pragma once

#include "platform/window.h"

// Stops the reads and switches both readers off before the settings open; false when the barcode reader could
// not be stopped, which has been reported then.
[[nodiscard]] bool SwitchReadersOff();

// WM_OPENSETTINGS: closes an open sheet, stops the reads, shows the sheet. Nothing happens before
// initialisation has finished, and while the firmware upgrade, which belongs to the open sheet, runs.
void OpenSettings(HWND window);

// Closes an open sheet, starts the apply thread and hides the main window: the part of WM_APPLYSETTINGS
// behind the saving.
void SendSettings(HWND window);

// WM_APPLYSETTINGS: saves the settings, closes the sheet, starts the apply thread and hides the main window.
void ApplySettings(HWND window);
