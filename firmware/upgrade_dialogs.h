// The two questions of the firmware upgrade: the warning and the choice of the file. Main thread.
#pragma once

#include <span>

#include "platform/window.h"

inline constexpr std::size_t FirmwarePathSize = 260;  // characters with the zero

// Dialog procedure of the warning, which names the decoder's present version: asks the decoder for it, so the
// barcode port's reads must return at once. Ends with IDOK ("Next") or IDCANCEL.
INT_PTR CALLBACK CautionDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// Lets the user choose a file: its folder (without the backslash at its end) and its name. 1, or 0 when the
// user cancelled. Both hold FirmwarePathSize characters.
int SelectFirmwareFile(HWND owner, std::span<WCHAR, FirmwarePathSize> folder,
                       std::span<WCHAR, FirmwarePathSize> name);
