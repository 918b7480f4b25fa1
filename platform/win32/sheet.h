// Property sheets by keys.
#pragma once

#include "platform/win32/wrapped.h"
// Behind <windows.h>.
#include <commctrl.h>
#include <prsht.h>

decltype(PropertySheetW) TerminalPropertySheetW;
decltype(GetMessagePos) TerminalGetMessagePos;

namespace layer {

// Offers a message to the sheet, as PSM_ISDIALOGMESSAGE does; whether it has taken it.
bool SheetTakes(HWND sheet, MSG* message);

}  // namespace layer
