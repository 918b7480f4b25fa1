// The notification icon's menu. Main thread.
#pragma once

#include "platform/window.h"

// Whether the menu's reader items can be chosen: the reader is fitted, "Active Device" includes it, and the
// settings sheet, which keeps both readers off, is not open.
bool BarcodeItemEnabled();
bool RfidItemEnabled();

// Loads the menu afresh, marks its reader items and tracks it; the chosen command arrives as WM_COMMAND.
void ShowTrayMenu(HWND window);
// Destroys the menu, if there is one.
void DestroyTrayMenu();
